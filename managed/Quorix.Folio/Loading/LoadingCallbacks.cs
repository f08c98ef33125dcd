namespace Quorix.Folio.Loading;

/// <summary>How far a load has come.</summary>
public sealed class DocumentLoadingArgs
{
    internal DocumentLoadingArgs(double estimatedProgress) { EstimatedProgress = estimatedProgress; }

    /// <summary>The part of the load done so far, in percent from 0 to 100; estimated from the input read.</summary>
    public double EstimatedProgress { get; }
}

/// <summary>Told how a load progresses; set on <see cref="LoadOptions.ProgressCallback"/>. To cancel the
/// load, throw from <see cref="Notify"/> (an <see cref="OperationCanceledException"/> says so best): the
/// exception reaches the caller and no document is made.</summary>
public interface IDocumentLoadingCallback
{
    /// <summary>Called at the start (0), as the input is read, and at the end (100), each time with more done.</summary>
    void Notify(DocumentLoadingArgs args);
}

/// <summary>The kind of an external resource a document refers to.</summary>
public enum ResourceType
{
    /// <summary>A picture.</summary>
    Image = 0,
    /// <summary>A style sheet of an HTML page.</summary>
    CssStyleSheet = 1,
    /// <summary>Another document, such as a frame of a page.</summary>
    Document = 2,
}

/// <summary>What the loader does with an external resource after the callback.</summary>
public enum ResourceLoadingAction
{
    /// <summary>Load it as the loader would without a callback, from <see cref="ResourceLoadingArgs.Uri"/>.</summary>
    Default = 0,
    /// <summary>Leave it out.</summary>
    Skip = 1,
    /// <summary>Use the bytes given with <see cref="ResourceLoadingArgs.SetData"/>.</summary>
    UserProvided = 2,
}

/// <summary>An external resource the loader is about to fetch.</summary>
public sealed class ResourceLoadingArgs
{
    internal ResourceLoadingArgs(ResourceType resourceType, string originalUri, string uri)
    {
        ResourceType = resourceType;
        OriginalUri = originalUri;
        Uri = uri;
    }

    /// <summary>The kind of resource.</summary>
    public ResourceType ResourceType { get; }

    /// <summary>The reference as the document writes it.</summary>
    public string OriginalUri { get; }

    /// <summary>Where the loader will look for it, the reference made absolute where it can be; a callback
    /// may point it elsewhere for <see cref="ResourceLoadingAction.Default"/>.</summary>
    public string Uri { get; set; }

    internal byte[]? Data { get; private set; }

    /// <summary>The resource's bytes, used when the callback returns <see cref="ResourceLoadingAction.UserProvided"/>.</summary>
    public void SetData(byte[] data)
    {
        ArgumentNullException.ThrowIfNull(data);
        Data = data;
    }
}

/// <summary>Decides how each external resource of a document is obtained while it loads (pictures of
/// HTML and Markdown, their style sheets, linked pictures of DOCX); set on
/// <see cref="LoadOptions.ResourceLoadingCallback"/>. An exception thrown here ends the load.</summary>
public interface IResourceLoadingCallback
{
    /// <summary>Called once for each external reference, before anything is read.</summary>
    ResourceLoadingAction ResourceLoading(ResourceLoadingArgs args);
}
