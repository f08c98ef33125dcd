using System.Text;
using Quorix.Folio.Package;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Formats.Html;

/// <summary>EPUB 3: the document as XHTML pages (cut at headings unless the options say otherwise), its
/// pictures and style sheet, a navigation document from the headings, and the package description.</summary>
internal sealed class EpubWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Epub;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var src = HtmlWriter.Options(options);
        // Books are XHTML with one style sheet; a book without cuts is one long page.
        var o = new HtmlSaveOptions(SaveFormat.Epub)
        {
            HtmlVersion = HtmlVersion.Xhtml,
            CssStyleSheetType = CssStyleSheetType.External,
            ExportHeadersFootersMode = ExportHeadersFootersMode.None,
            ExportListLabels = src.ExportListLabels,
            DocumentSplitCriteria = src.DocumentSplitCriteria == DocumentSplitCriteria.None ? DocumentSplitCriteria.HeadingParagraph : src.DocumentSplitCriteria,
            DocumentSplitHeadingLevel = src.DocumentSplitCriteria == DocumentSplitCriteria.None ? 1 : src.DocumentSplitHeadingLevel,
        };
        var title = path != null ? Path.GetFileNameWithoutExtension(path) : "Document";
        var res = new HtmlResources(HtmlResources.Mode.Collect, "image");
        var renderer = new HtmlRenderer(document, o, res);
        var pages = renderer.Render();
        var zip = new ZipWriter(output, 6);
        zip.AddStored("mimetype", Encoding.ASCII.GetBytes("application/epub+zip"));
        zip.Add("META-INF/container.xml", Encoding.UTF8.GetBytes(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<container version=\"1.0\" xmlns=\"urn:oasis:names:tc:opendocument:xmlns:container\">" +
            "<rootfiles><rootfile full-path=\"OEBPS/content.opf\" media-type=\"application/oebps-package+xml\"/></rootfiles></container>"));
        var manifest = new StringBuilder();
        var spine = new StringBuilder();
        for (int i = 0; i < pages.Count; i++)
        {
            var name = $"part{i + 1:000}.xhtml";
            var page = HtmlWriter.Page(document, o, renderer.Css, pages[i], "styles.css", "utf-8", title, renderer.HasTextWatermark);
            // EPUB pages are XHTML5: no DTD.
            page = page.Replace("<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" \"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">", "<!DOCTYPE html>");
            zip.Add("OEBPS/" + name, Encoding.UTF8.GetBytes(page));
            manifest.Append("<item id=\"p").Append(i + 1).Append("\" href=\"").Append(name).Append("\" media-type=\"application/xhtml+xml\"/>");
            spine.Append("<itemref idref=\"p").Append(i + 1).Append("\"/>");
        }
        zip.Add("OEBPS/styles.css", Encoding.UTF8.GetBytes(renderer.Css.Sheet(HtmlWriter.BodyCss(document))));
        manifest.Append("<item id=\"css\" href=\"styles.css\" media-type=\"text/css\"/>");
        for (int i = 0; i < res.Collected.Count; i++)
        {
            var r = res.Collected[i];
            zip.Add("OEBPS/" + r.Name, r.Bytes);
            manifest.Append("<item id=\"img").Append(i + 1).Append("\" href=\"").Append(r.Name).Append("\" media-type=\"").Append(r.ContentType).Append("\"/>");
        }
        zip.Add("OEBPS/nav.xhtml", Encoding.UTF8.GetBytes(Nav(renderer.Headings, title)));
        manifest.Append("<item id=\"nav\" href=\"nav.xhtml\" media-type=\"application/xhtml+xml\" properties=\"nav\"/>");
        var opf = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<package xmlns=\"http://www.idpf.org/2007/opf\" version=\"3.0\" unique-identifier=\"uid\">");
        opf.Append("<metadata xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><dc:identifier id=\"uid\">urn:uuid:").Append(Guid.NewGuid())
           .Append("</dc:identifier><dc:title>").Append(HtmlRenderer.Attr(title)).Append("</dc:title><dc:language>en</dc:language>")
           .Append("<meta property=\"dcterms:modified\">").Append(DateTime.UtcNow.ToString("yyyy-MM-ddTHH:mm:ssZ")).Append("</meta></metadata>");
        opf.Append("<manifest>").Append(manifest).Append("</manifest><spine>").Append(spine).Append("</spine></package>");
        zip.Add("OEBPS/content.opf", Encoding.UTF8.GetBytes(opf.ToString()));
        zip.Finish();
        return new SaveOutputParameters("application/epub+zip");
    }

    private static string Nav(List<List<(int Level, string Text, string Id)>> headings, string title)
    {
        var sb = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" xmlns:epub=\"http://www.idpf.org/2007/ops\"><head><title>");
        sb.Append(HtmlRenderer.Attr(title)).Append("</title></head><body><nav epub:type=\"toc\" id=\"toc\"><ol>");
        bool any = false;
        for (int i = 0; i < headings.Count; i++)
            foreach (var (_, text, id) in headings[i])
            {
                sb.Append("<li><a href=\"part").Append((i + 1).ToString("000")).Append(".xhtml#").Append(id).Append("\">").Append(HtmlRenderer.Attr(text.Length > 0 ? text : "Section")).Append("</a></li>");
                any = true;
            }
        // A navigation document needs at least one entry.
        if (!any) sb.Append("<li><a href=\"part001.xhtml\">").Append(HtmlRenderer.Attr(title)).Append("</a></li>");
        return sb.Append("</ol></nav></body></html>").ToString();
    }
}
