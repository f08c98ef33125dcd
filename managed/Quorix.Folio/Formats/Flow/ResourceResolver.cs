using Quorix.Folio.Loading;

namespace Quorix.Folio.Formats.Flow;

/// <summary>Finds the bytes a document refers to: data URIs, files relative to the document, or
/// parts of the same archive, as the load's resource loading callback decides. Nothing is fetched from
/// the network. A resource that cannot be had is reported as a warning of the load.</summary>
internal sealed class ResourceResolver
{
    private readonly string? baseDir;
    private readonly Func<string, byte[]?>? local;
    private readonly IResourceLoadingCallback? callback;
    private readonly WarningLog warnings;
    private readonly WarningSource source;

    public ResourceResolver(LoadOptions options, Document document, WarningSource source, Func<string, byte[]?>? local = null)
    {
        this.local = local;
        this.source = source;
        callback = options.ResourceLoadingCallback;
        warnings = document.Warnings;
        var b = options.BaseUri;
        if (string.IsNullOrEmpty(b)) return;
        if (Uri.TryCreate(b, UriKind.Absolute, out var u) && u.IsFile) b = u.LocalPath;
        else if (u != null && !u.IsFile) return;
        baseDir = Directory.Exists(b) ? b : Path.GetDirectoryName(Path.GetFullPath(b));
    }

    /// <summary>The bytes, or null when the reference is not local, cannot be read, or the callback skips it.</summary>
    public byte[]? Get(string reference, ResourceType type = ResourceType.Image)
    {
        if (string.IsNullOrWhiteSpace(reference)) return null;
        reference = reference.Trim();
        var uri = reference;
        if (callback != null)
        {
            var args = new ResourceLoadingArgs(type, reference, Absolute(reference));
            ResourceLoadingAction action;
            try
            {
                action = callback.ResourceLoading(args);
            }
            catch (Exception e) when (UserCode.Tag(e)) { throw; }
            switch (action)
            {
                case ResourceLoadingAction.Skip:
                    return null;
                case ResourceLoadingAction.UserProvided:
                    return args.Data ?? throw new InvalidOperationException(
                        $"The resource loading callback chose UserProvided for \"{reference}\" but gave no data with SetData.");
                case ResourceLoadingAction.Default:
                    if (args.Uri != args.OriginalUri && args.Uri != Absolute(reference)) uri = args.Uri;
                    break;
                default:
                    throw new ArgumentOutOfRangeException(nameof(action), action, "The resource loading callback returned an unknown action.");
            }
        }
        var bytes = Fetch(uri);
        if (bytes == null)
            warnings.Add(WarningType.DataLoss, source, $"The {Name(type)} \"{uri}\" could not be loaded.");
        return bytes;
    }

    private static string Name(ResourceType type) => type switch
    {
        ResourceType.CssStyleSheet => "style sheet",
        ResourceType.Document => "document",
        _ => "image",
    };

    /// <summary>The reference as a full path when it is relative to the base folder; otherwise as written.</summary>
    private string Absolute(string reference)
    {
        if (reference.StartsWith("data:", StringComparison.OrdinalIgnoreCase) || baseDir == null) return reference;
        if (Uri.TryCreate(reference, UriKind.Absolute, out var u) && u.Scheme.Length > 1) return reference;
        return Path.GetFullPath(Path.Combine(baseDir, Uri.UnescapeDataString(reference.Split('#', '?')[0])));
    }

    private byte[]? Fetch(string reference)
    {
        if (reference.StartsWith("data:", StringComparison.OrdinalIgnoreCase)) return DataUri(reference);
        if (local?.Invoke(reference) is { } found) return found;
        string path;
        if (Uri.TryCreate(reference, UriKind.Absolute, out var u) && u.Scheme.Length > 1)
        {
            if (!u.IsFile) return null;
            path = u.LocalPath;
        }
        else
        {
            if (baseDir == null) return null;
            var clean = Uri.UnescapeDataString(reference.Split('#', '?')[0]);
            path = Path.Combine(baseDir, clean);
        }
        try
        {
            return File.Exists(path) ? File.ReadAllBytes(path) : null;
        }
        catch (IOException) { return null; }
        catch (UnauthorizedAccessException) { return null; }
    }

    private static byte[]? DataUri(string uri)
    {
        int comma = uri.IndexOf(',');
        if (comma < 0) return null;
        var head = uri[5..comma];
        var data = uri[(comma + 1)..];
        try
        {
            if (head.EndsWith(";base64", StringComparison.OrdinalIgnoreCase))
                return Convert.FromBase64String(data.Replace(" ", "").Replace("\n", "").Replace("\r", ""));
            return System.Text.Encoding.UTF8.GetBytes(Uri.UnescapeDataString(data));
        }
        catch (FormatException) { return null; }
    }
}
