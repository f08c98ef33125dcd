using System.Text;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Formats.Html;

/// <summary>MHTML: the HTML page and its pictures (and style sheet) as parts of one MIME message.</summary>
internal sealed class MhtmlWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Mhtml;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = HtmlWriter.Options(options);
        var stem = path != null ? Path.GetFileNameWithoutExtension(path) : "document";
        var res = new HtmlResources(HtmlResources.Mode.Collect, stem);
        var renderer = new HtmlRenderer(document, o, res);
        var pages = renderer.Render();
        if (pages.Count > 1) throw new ArgumentException("MHTML holds one page: save it without DocumentSplitCriteria.", nameof(options));
        string? cssLink = null;
        if (o.CssStyleSheetType == CssStyleSheetType.External)
        {
            cssLink = "styles.css";
            res.Collected.Add(new HtmlResource(cssLink, "text/css", Encoding.UTF8.GetBytes(renderer.Css.Sheet(HtmlWriter.BodyCss(document)))));
        }
        var html = HtmlWriter.Page(document, o, renderer.Css, pages[0], cssLink, "utf-8", stem, renderer.HasTextWatermark);
        var boundary = "----=_NextPart_" + Guid.NewGuid().ToString("N");
        var sb = new StringBuilder(html.Length * 2);
        sb.Append("MIME-Version: 1.0\r\nContent-Type: multipart/related; type=\"text/html\"; boundary=\"").Append(boundary).Append("\"\r\n\r\n");
        sb.Append("This is a multi-part message in MIME format.\r\n");
        Part(sb, boundary, "text/html; charset=\"utf-8\"", stem + ".html", Encoding.UTF8.GetBytes(html));
        foreach (var r in res.Collected) Part(sb, boundary, r.ContentType, r.Name, r.Bytes);
        sb.Append("\r\n--").Append(boundary).Append("--\r\n");
        output.Write(Encoding.ASCII.GetBytes(sb.ToString()));
        return new SaveOutputParameters("multipart/related");
    }

    private static void Part(StringBuilder sb, string boundary, string type, string location, byte[] bytes)
    {
        sb.Append("\r\n--").Append(boundary).Append("\r\nContent-Type: ").Append(type)
          .Append("\r\nContent-Transfer-Encoding: base64\r\nContent-Location: ").Append(location).Append("\r\n\r\n");
        var b64 = Convert.ToBase64String(bytes);
        for (int i = 0; i < b64.Length; i += 76) sb.Append(b64, i, Math.Min(76, b64.Length - i)).Append("\r\n");
    }
}
