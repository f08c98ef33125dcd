using System.Text;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Formats.Html;

/// <summary>Saves HTML pages: the first to the output, further parts of a split document beside it,
/// with pictures and the style sheet where the options say.</summary>
internal sealed class HtmlWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Html;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = Options(options);
        var dir = path != null ? Path.GetDirectoryName(path)! : null;
        var stem = path != null ? Path.GetFileNameWithoutExtension(path) : "document";
        HtmlResources res;
        if (o.ExportImagesAsBase64) res = new HtmlResources(HtmlResources.Mode.Base64, stem);
        else
        {
            var folder = !string.IsNullOrEmpty(o.ImagesFolder) ? Path.GetFullPath(o.ImagesFolder) : dir;
            if (folder == null && !ResourceOutput.HasCallbacks(o.ImageSavingCallback, o.ResourceSavingCallback))
                throw new ArgumentException("Saving HTML with pictures to a stream needs ExportImagesAsBase64 or an ImagesFolder.", nameof(options));
            var alias = !string.IsNullOrEmpty(o.ImagesFolderAlias) ? o.ImagesFolderAlias
                : folder == null ? ""
                : dir != null && folder != dir ? Path.GetRelativePath(dir, folder).Replace('\\', '/')
                : folder != dir ? new Uri(folder + "/").AbsoluteUri : "";
            var files = new ResourceOutput(document, folder, name => string.IsNullOrEmpty(alias) ? name : alias.TrimEnd('/') + "/" + name,
                o.ImageSavingCallback, o.ResourceSavingCallback, "HTML");
            res = new HtmlResources(HtmlResources.Mode.Files, stem, files);
        }
        var renderer = new HtmlRenderer(document, o, res);
        var pages = renderer.Render();
        if (pages.Count > 1 && dir == null && o.DocumentPartSavingCallback == null)
            throw new ArgumentException("A document split into several pages can only be saved to a file.", nameof(options));
        string? cssLink = null;
        if (o.CssStyleSheetType == CssStyleSheetType.External)
            cssLink = ExternalSheet(document, o, renderer.Css.Sheet(BodyCss(document)), dir, stem);
        var enc = o.Encoding ?? new UTF8Encoding(false);
        for (int i = 0; i < pages.Count; i++)
        {
            var html = Page(document, o, renderer.Css, pages[i], cssLink, enc.WebName, i > 0 ? $"{stem} ({i + 1})" : stem, renderer.HasTextWatermark);
            var bytes = enc.GetBytes(html);
            if (i == 0) output.Write(bytes);
            else WritePart(document, o, bytes, dir, $"{stem}-{i}{(path != null ? Path.GetExtension(path) : ".html")}");
        }
        return new SaveOutputParameters("text/html");
    }

    /// <summary>Writes the style sheet where the options and callbacks say; returns how the page links to it.</summary>
    private static string ExternalSheet(Document document, HtmlSaveOptions o, string sheet, string? dir, string stem)
    {
        var cssName = !string.IsNullOrEmpty(o.CssStyleSheetFileName) ? o.CssStyleSheetFileName : stem + ".css";
        var cssPath = Path.IsPathRooted(cssName) ? cssName : dir != null ? Path.Combine(dir, cssName) : null;
        var link = cssPath == null ? cssName.Replace('\\', '/')
            : dir != null ? Path.GetRelativePath(dir, cssPath).Replace('\\', '/') : new Uri(cssPath).AbsoluteUri;
        var args = new CssSavingArgs(document);
        o.CssSavingCallback?.CssSaving(args);
        if (!args.IsExportNeeded) return link;
        if (cssPath == null && args.CssStream == null && o.ResourceSavingCallback == null)
            throw new ArgumentException("An external style sheet saved beside a stream needs a rooted CssStyleSheetFileName.", nameof(o));
        return ResourceOutput.Place(document, o.ResourceSavingCallback, Path.GetFileName(cssName), link, new UTF8Encoding(false).GetBytes(sheet),
            args.CssStream, args.KeepCssStreamOpen, cssPath != null ? Path.GetDirectoryName(cssPath) : null, "an HTML style sheet");
    }

    /// <summary>Writes a further part of a split page beside the first, or where the callback says.</summary>
    private static void WritePart(Document document, HtmlSaveOptions o, byte[] bytes, string? dir, string name)
    {
        var args = new DocumentPartSavingArgs(document, name);
        o.DocumentPartSavingCallback?.DocumentPartSaving(args);
        if (args.DocumentPartStream is { } target) ResourceOutput.WriteTo(target, bytes, args.KeepDocumentPartStreamOpen);
        else if (dir != null) File.WriteAllBytes(Path.Combine(dir, args.DocumentPartFileName), bytes);
        else throw new ArgumentException("A document split into several pages can only be saved to a file, or to streams a document part saving callback gives.", nameof(o));
    }

    internal static HtmlSaveOptions Options(SaveOptions options) =>
        options as HtmlSaveOptions ?? throw new ArgumentException("HTML is saved with HtmlSaveOptions.", nameof(options));

    internal static string BodyCss(Document doc)
    {
        var f = doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal).Font;
        return $"font-family:'{f.Name.Replace("'", "")}';font-size:{HtmlRenderer.Pt(f.Size)};";
    }

    /// <summary>A whole page around one rendered body.</summary>
    internal static string Page(Document doc, HtmlSaveOptions o, CssRules css, string body, string? cssLink, string charset, string title, bool watermark)
    {
        bool x = o.HtmlVersion == HtmlVersion.Xhtml;
        var sb = new StringBuilder(body.Length + 1024);
        if (x)
        {
            sb.Append("<?xml version=\"1.0\" encoding=\"").Append(charset).Append("\"?>\n");
            sb.Append("<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" \"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n");
            sb.Append("<html xmlns=\"http://www.w3.org/1999/xhtml\"><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=").Append(charset).Append("\" />");
        }
        else sb.Append("<!DOCTYPE html>\n<html><head><meta charset=\"").Append(charset).Append("\">");
        sb.Append("<title>").Append(HtmlRenderer.Attr(title)).Append("</title>");
        switch (o.CssStyleSheetType)
        {
            case CssStyleSheetType.External when cssLink != null:
                sb.Append("<link rel=\"stylesheet\" type=\"text/css\" href=\"").Append(HtmlRenderer.Attr(cssLink)).Append('"').Append(x ? " />" : ">");
                break;
            case CssStyleSheetType.Embedded:
                sb.Append("<style type=\"text/css\">\n").Append(css.Sheet(BodyCss(doc))).Append("</style>");
                break;
        }
        if (watermark) sb.Append("<style type=\"text/css\">").Append(HtmlRenderer.WatermarkRule).Append("</style>");
        sb.Append("</head>");
        sb.Append(o.CssStyleSheetType == CssStyleSheetType.Inline ? "<body style=\"" + HtmlRenderer.Attr(BodyCss(doc)) + "\">" : "<body>");
        if (o.PrettyFormat) sb.Append('\n');
        sb.Append(body);
        if (o.PrettyFormat) sb.Append('\n');
        sb.Append("</body></html>\n");
        return sb.ToString();
    }
}
