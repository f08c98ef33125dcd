using Quorix.Folio.Drawing;

namespace Quorix.Folio.Saving;

/// <summary>How far a save has come.</summary>
public sealed class DocumentSavingArgs
{
    internal DocumentSavingArgs(double estimatedProgress) { EstimatedProgress = estimatedProgress; }

    /// <summary>The part of the save done so far, in percent from 0 to 100; an estimate.</summary>
    public double EstimatedProgress { get; }
}

/// <summary>Told how a save progresses; set on <see cref="SaveOptions.ProgressCallback"/>. To cancel the
/// save, throw from <see cref="Notify"/> (an <see cref="OperationCanceledException"/> says so best): the
/// exception reaches the caller, a file being saved is left as it was, and the document is unchanged.</summary>
public interface IDocumentSavingCallback
{
    /// <summary>Called at the start (0), as the writer goes on, and at the end (100), each time with more done.</summary>
    void Notify(DocumentSavingArgs args);
}

/// <summary>A picture about to be written beside a page (HTML) or a text (Markdown).</summary>
public sealed class ImageSavingArgs
{
    internal ImageSavingArgs(Document document, ShapeBase currentShape, string imageFileName)
    {
        Document = document;
        CurrentShape = currentShape;
        ImageFileName = imageFileName;
    }

    /// <summary>The document being saved.</summary>
    public Document Document { get; }

    /// <summary>The shape whose picture is written.</summary>
    public ShapeBase CurrentShape { get; }

    /// <summary>Whether the shape has a picture to write.</summary>
    public bool IsImageAvailable => CurrentShape is Shape { HasImage: true };

    /// <summary>The picture's file name, without a folder; the output refers to it by this name. A callback may rename it.</summary>
    public string ImageFileName
    {
        get => imageFileName;
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            if (value.IndexOfAny(new[] { '/', '\\' }) >= 0 || value is "." or "..")
                throw new ArgumentException("An image file name names a file, not a folder: use ImagesFolder for that.", nameof(value));
            imageFileName = value;
        }
    }

    private string imageFileName = "";

    /// <summary>A stream to write the picture to instead of a file; null to write the file.</summary>
    public Stream? ImageStream { get; set; }

    /// <summary>Whether <see cref="ImageStream"/> is left open after the picture was written; it is closed by default.</summary>
    public bool KeepImageStreamOpen { get; set; }
}

/// <summary>Chooses the name of each picture file a save writes, or takes the picture into a stream of
/// its own; set on <see cref="HtmlSaveOptions.ImageSavingCallback"/> or <see cref="MarkdownSaveOptions.ImageSavingCallback"/>.
/// Not called for pictures embedded as data URIs, nor for those an MHTML or EPUB file holds itself.</summary>
public interface IImageSavingCallback
{
    /// <summary>Called once for each distinct picture, before it is written.</summary>
    void ImageSaving(ImageSavingArgs args);
}

/// <summary>A file about to be written beside the output (a picture or a style sheet).</summary>
public sealed class ResourceSavingArgs
{
    internal ResourceSavingArgs(Document document, string resourceFileName, string resourceFileUri)
    {
        Document = document;
        ResourceFileName = resourceFileName;
        ResourceFileUri = resourceFileUri;
    }

    /// <summary>The document being saved.</summary>
    public Document Document { get; }

    /// <summary>The resource's file name, without a folder.</summary>
    public string ResourceFileName { get; }

    /// <summary>How the output refers to the resource; a callback may point it elsewhere (a web address,
    /// say). The bytes still go to the file, or to <see cref="ResourceStream"/> when one is given.</summary>
    public string ResourceFileUri
    {
        get => resourceFileUri;
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            resourceFileUri = value;
        }
    }

    private string resourceFileUri = "";

    /// <summary>A stream to write the resource to instead of a file; null to write the file.</summary>
    public Stream? ResourceStream { get; set; }

    /// <summary>Whether <see cref="ResourceStream"/> is left open after the resource was written; it is closed by default.</summary>
    public bool KeepResourceStreamOpen { get; set; }
}

/// <summary>Decides where each resource file of a save goes and how the output refers to it; set on
/// <see cref="HtmlSaveOptions.ResourceSavingCallback"/> or <see cref="MarkdownSaveOptions.ResourceSavingCallback"/>.
/// For a picture it is called after the image saving callback, with the name that one chose.</summary>
public interface IResourceSavingCallback
{
    /// <summary>Called once for each resource, before it is written.</summary>
    void ResourceSaving(ResourceSavingArgs args);
}

/// <summary>The external style sheet of an HTML page, about to be written.</summary>
public sealed class CssSavingArgs
{
    internal CssSavingArgs(Document document) { Document = document; }

    /// <summary>The document being saved.</summary>
    public Document Document { get; }

    /// <summary>A stream to write the style sheet to instead of its file; null to write the file.</summary>
    public Stream? CssStream { get; set; }

    /// <summary>Whether <see cref="CssStream"/> is left open after the sheet was written; it is closed by default.</summary>
    public bool KeepCssStreamOpen { get; set; }

    /// <summary>Whether the sheet is written at all; the page links to it either way.</summary>
    public bool IsExportNeeded { get; set; } = true;
}

/// <summary>Takes the external style sheet of an HTML save; set on <see cref="HtmlSaveOptions.CssSavingCallback"/>.</summary>
public interface ICssSavingCallback
{
    /// <summary>Called once, before the style sheet is written.</summary>
    void CssSaving(CssSavingArgs args);
}

/// <summary>A font about to be written beside an output that embeds fonts.</summary>
public sealed class FontSavingArgs
{
    /// <summary>Describes one font to be written.</summary>
    public FontSavingArgs(Document document, string fontFamilyName, bool bold, bool italic, string fontFileName)
    {
        Document = document;
        FontFamilyName = fontFamilyName;
        Bold = bold;
        Italic = italic;
        FontFileName = fontFileName;
    }

    /// <summary>The document being saved.</summary>
    public Document Document { get; }

    /// <summary>The family of the font.</summary>
    public string FontFamilyName { get; }

    /// <summary>Whether the face is bold.</summary>
    public bool Bold { get; }

    /// <summary>Whether the face is italic.</summary>
    public bool Italic { get; }

    /// <summary>The font's file name, without a folder; a callback may rename it.</summary>
    public string FontFileName { get; set; }

    /// <summary>A stream to write the font to instead of a file; null to write the file.</summary>
    public Stream? FontStream { get; set; }

    /// <summary>Whether <see cref="FontStream"/> is left open after the font was written.</summary>
    public bool KeepFontStreamOpen { get; set; }

    /// <summary>Whether the font is written at all.</summary>
    public bool IsExportNeeded { get; set; } = true;
}

/// <summary>Decides where each font file of a save goes. No writer of this engine exports font files yet.</summary>
public interface IFontSavingCallback
{
    /// <summary>Called once for each font, before it is written.</summary>
    void FontSaving(FontSavingArgs args);
}

/// <summary>One part of a document split into several outputs (HTML split by sections or headings).</summary>
public sealed class DocumentPartSavingArgs
{
    internal DocumentPartSavingArgs(Document document, string documentPartFileName)
    {
        Document = document;
        this.documentPartFileName = documentPartFileName;
    }

    /// <summary>The document being saved.</summary>
    public Document Document { get; }

    /// <summary>The part's file name, without a folder; a callback may rename it.</summary>
    public string DocumentPartFileName
    {
        get => documentPartFileName;
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            if (value.IndexOfAny(new[] { '/', '\\' }) >= 0 || value is "." or "..")
                throw new ArgumentException("A document part file name names a file, not a folder.", nameof(value));
            documentPartFileName = value;
        }
    }

    private string documentPartFileName;

    /// <summary>A stream to write the part to instead of a file; null to write the file.</summary>
    public Stream? DocumentPartStream { get; set; }

    /// <summary>Whether <see cref="DocumentPartStream"/> is left open after the part was written; it is closed by default.</summary>
    public bool KeepDocumentPartStreamOpen { get; set; }
}

/// <summary>Decides where each further part of a split HTML save goes; set on
/// <see cref="HtmlSaveOptions.DocumentPartSavingCallback"/>. The first part always goes to the save's own output.</summary>
public interface IDocumentPartSavingCallback
{
    /// <summary>Called once for each part after the first, before it is written.</summary>
    void DocumentPartSaving(DocumentPartSavingArgs args);
}

/// <summary>One page of a save that writes a file per page.</summary>
public sealed class PageSavingArgs
{
    /// <summary>Describes one page to be written.</summary>
    public PageSavingArgs(Document document, int pageIndex, string pageFileName)
    {
        Document = document;
        PageIndex = pageIndex;
        PageFileName = pageFileName;
    }

    /// <summary>The document being saved.</summary>
    public Document Document { get; }

    /// <summary>The page's index from 0.</summary>
    public int PageIndex { get; }

    /// <summary>The page's file name; a callback may rename it.</summary>
    public string PageFileName { get; set; }

    /// <summary>A stream to write the page to instead of a file; null to write the file.</summary>
    public Stream? PageStream { get; set; }

    /// <summary>Whether <see cref="PageStream"/> is left open after the page was written.</summary>
    public bool KeepPageStreamOpen { get; set; }
}

/// <summary>Decides where each page after the first of a page-per-file save (PNG, JPEG, BMP) goes; set
/// on <see cref="ImageSaveOptions.PageSavingCallback"/>. The first page goes to the save's own output.</summary>
public interface IPageSavingCallback
{
    /// <summary>Called once for each page, before it is written.</summary>
    void PageSaving(PageSavingArgs args);
}
