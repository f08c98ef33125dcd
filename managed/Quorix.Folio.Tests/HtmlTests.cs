using System.Text;

using Quorix.Folio.Loading;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class HtmlLoadTests
{
    private static Document Html(string html, LoadOptions? o = null) =>
        new Document(new MemoryStream(Encoding.UTF8.GetBytes(html)), o ?? new HtmlLoadOptions());

    private static Paragraph[] Paras(Document d) => d.FirstSection!.Body!.Paragraphs.ToArray();

    private static string Text(Node n) => n.GetText().TrimEnd('\r', '\f', '\a');

    [Fact]
    public void CascadeGivesFormattingInSpecificityOrder()
    {
        var d = Html(@"<html><head><style>
            p { color: #00f; font-size: 14pt }
            .warn { color: red; font-weight: bold }
            #one { color: rgb(0, 128, 0) }
            div .deep { font-style: italic }
            @media print { p { color: black } }
            </style></head><body>
            <p class='warn' id='one'>a</p><p class='warn'>b</p><p>c</p>
            <div><p class='deep'>d</p></div><p class='deep'>e</p>
            <p class='warn' style='color:#123456;font-weight:normal'>f</p></body></html>");
        var runs = Paras(d).Select(p => p.Runs[0]).ToArray();
        Assert.Equal(new[] { "008000", "FF0000", "0000FF", "0000FF", "0000FF", "123456" }, runs.Select(r => r.Font.ColorHex));
        Assert.Equal(new[] { true, true, false, false, false, false }, runs.Select(r => r.Font.Bold));
        Assert.Equal(new[] { false, false, false, true, false, false }, runs.Select(r => r.Font.Italic));
        Assert.Equal(14, runs[2].Font.Size);
        Assert.Equal(LoadFormat.Html, d.OriginalLoadFormat);
    }

    [Fact]
    public void WhiteSpaceCollapsesAndStaysOutsideLinks()
    {
        var d = Html("<p>\n  Plain   and <b>bold</b>\n with a <a href='https://x.org/'>link</a> .  </p><pre>  keep\n   this</pre>");
        var p = Paras(d);
        Assert.Equal("Plain and bold with a link .", Text(p[0]).Replace("\u0013 HYPERLINK \"https://x.org/\" \u0014", "").Replace("\u0015", ""));
        Assert.Equal(new[] { "  keep", "   this" }, p.Skip(1).Select(x => Text(x)));
        Assert.Equal("HTML Preformatted", p[1].ParagraphFormat.StyleName);
    }

    [Fact]
    public void BlocksListsAndHeadings()
    {
        var d = Html("<h2>T</h2><ol start='3'><li>x<ul><li>in</li></ul></li><li>y</li></ol><blockquote>q</blockquote><div style='text-align:center;margin-left:20pt'>c</div><p style='display:none'>gone</p><script>var a;</script>");
        var p = Paras(d);
        Assert.Equal(new[] { "T", "x", "in", "y", "q", "c" }, p.Select(x => Text(x)));
        Assert.Equal(StyleIdentifier.Heading2, p[0].ParagraphFormat.StyleIdentifier);
        Assert.Equal("3.", p[1].ListLabel.LabelString);
        Assert.Equal(1, p[2].ListFormat.ListLevelNumber);
        Assert.Equal(NumberStyle.Bullet, p[2].ListFormat.ListLevel!.NumberStyle);
        Assert.Equal("4.", p[3].ListLabel.LabelString);
        Assert.Equal(StyleIdentifier.Quote, p[4].ParagraphFormat.StyleIdentifier);
        Assert.Equal(ParagraphAlignment.Center, p[5].ParagraphFormat.Alignment);
        Assert.Equal(20, p[5].ParagraphFormat.LeftIndent);
    }

    [Fact]
    public void TablesKeepSpansAndHeadingRows()
    {
        var d = Html("<table><thead><tr><th colspan='2'>h</th><th>z</th></tr></thead><tr><td rowspan='2'>a</td><td>b</td><td>c</td></tr><tr><td>d</td><td>e</td></tr></table>");
        var t = d.FirstSection!.Body!.Tables[0];
        Assert.True(t.Rows[0].RowFormat.HeadingFormat);
        Assert.Equal(2, t.Rows[0].Cells[0].Span);
        Assert.Equal(CellMerge.First, t.Rows[1].Cells[0].CellFormat.VerticalMerge);
        Assert.Equal(CellMerge.Previous, t.Rows[2].Cells[0].CellFormat.VerticalMerge);
        Assert.Equal(new[] { "", "d", "e" }, t.Rows[2].Cells.ToArray().Select(c => Text(c)));
    }

    [Fact]
    public void PicturesFromDataUrisAndFilesNotesAndCharsets()
    {
        var png = TestSupport.Png(8, 4);
        var dir = TestSupport.TempDir();
        File.WriteAllBytes(Path.Combine(dir, "p.png"), png);
        var page = Path.Combine(dir, "page.html");
        File.WriteAllText(page, $"<p><img src='data:image/png;base64,{Convert.ToBase64String(png)}' alt='inline'><img src='p.png' width='16'><img src='http://x/y.png' alt='far'>" +
            "T<a href='#fn1' role='doc-noteref'><sup>1</sup></a></p><section role='doc-endnotes'><ol><li id='fn1' role='doc-endnote'><p>Note <a href='#r' role='doc-backlink'>back</a></p></li></ol></section>");
        var d = new Document(page);
        var shapes = d.GetChildNodes(NodeType.Shape, true).OfType<Drawing.Shape>().ToArray();
        Assert.Equal(2, shapes.Length);
        Assert.Equal(png, shapes[0].ImageData.ImageBytes);
        Assert.Equal(12, shapes[1].Width);
        Assert.Contains("HYPERLINK \"http://x/y.png\"", d.GetText());
        var note = Assert.Single(d.GetChildNodes(NodeType.Footnote, true).OfType<Notes.Footnote>());
        Assert.Equal("Note", note.GetText().Trim());
        Assert.Single(Paras(d));
        Directory.Delete(dir, true);

        var latin = Encoding.Latin1.GetBytes("<html><head><meta charset='iso-8859-1'></head><body><p>caf\u00e9</p></body></html>");
        Assert.Equal("caf\u00e9", Text(Paras(new Document(new MemoryStream(latin)))[0]));
    }
}

public class HtmlSaveTests
{
    private static Document Sample()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("Running head");
        b.MoveToDocumentEnd();
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Chapter one");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.Write("Some ");
        b.Font.Bold = true;
        b.Write("bold");
        b.Font.Bold = false;
        b.Font.ColorHex = "C00000";
        b.Write(" red");
        b.Font.ColorHex = "auto";
        b.InsertFootnote(Notes.FootnoteType.Footnote, "A note.");
        b.InsertImage(TestSupport.Png(4, 4));
        b.Writeln();
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("first");
        b.ListFormat.ListIndent();
        b.Writeln("nested");
        b.ListFormat.RemoveNumbers();
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Chapter two");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.StartTable();
        b.InsertCell(); b.Write("a");
        b.InsertCell(); b.Write("b");
        b.EndRow();
        b.EndTable();
        return doc;
    }

    private static string Save(Document d, HtmlSaveOptions o) => Encoding.UTF8.GetString(TestSupport.ToBytes(d, o));

    [Fact]
    public void CssGoesInlineEmbeddedOrExternal()
    {
        var doc = Sample();
        var inline = Save(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true });
        Assert.DoesNotContain("<style", inline);
        Assert.Contains("style=\"color:#C00000;\"", inline);

        var embedded = Save(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true, CssStyleSheetType = CssStyleSheetType.Embedded });
        Assert.Matches("<style type=\"text/css\">[^<]*\\.q\\d+\\{color:#C00000;\\}", embedded);
        Assert.DoesNotContain(" style=\"", embedded);

        var dir = TestSupport.TempDir();
        var path = Path.Combine(dir, "out.html");
        doc.Save(path, new HtmlSaveOptions { CssStyleSheetType = CssStyleSheetType.External, ExportImagesAsBase64 = true });
        Assert.Contains("href=\"out.css\"", File.ReadAllText(path));
        Assert.Contains("color:#C00000;", File.ReadAllText(Path.Combine(dir, "out.css")));
        Directory.Delete(dir, true);
        Assert.Throws<ArgumentException>(() => Save(doc, new HtmlSaveOptions { CssStyleSheetType = CssStyleSheetType.External, ExportImagesAsBase64 = true }));
    }

    [Fact]
    public void PicturesAsFilesOrDataUris()
    {
        var doc = Sample();
        Assert.Contains("src=\"data:image/png;base64,", Save(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true }));
        // Pictures need somewhere to go: a stream alone is not enough.
        Assert.Throws<ArgumentException>(() => Save(doc, new HtmlSaveOptions()));
        var dir = TestSupport.TempDir();
        var path = Path.Combine(dir, "page.html");
        doc.Save(path);
        Assert.Contains("src=\"page.001.png\"", File.ReadAllText(path));
        Assert.Equal(TestSupport.Png(4, 4), File.ReadAllBytes(Path.Combine(dir, "page.001.png")));
        doc.Save(path, new HtmlSaveOptions { ImagesFolder = Path.Combine(dir, "img"), ImagesFolderAlias = "http://cdn/x" });
        Assert.Contains("src=\"http://cdn/x/page.001.png\"", File.ReadAllText(path));
        Assert.True(File.Exists(Path.Combine(dir, "img", "page.001.png")));
        Directory.Delete(dir, true);
    }

    [Fact]
    public void HeadersFootersListsAndSplitting()
    {
        var doc = Sample();
        var html = Save(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true });
        Assert.Contains("<header>", html);
        Assert.DoesNotContain("Running head", Save(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true, ExportHeadersFootersMode = ExportHeadersFootersMode.None }));
        Assert.Matches("<ol><li[^>]*>first<ol><li[^>]*>nested</li></ol></li></ol>", html);
        var asText = Save(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true, ExportListLabels = ExportListLabels.AsInlineText });
        Assert.DoesNotContain("<ol>", asText.Split("footnotes")[0]);
        Assert.Contains(">1. first<", asText);

        var dir = TestSupport.TempDir();
        var path = Path.Combine(dir, "book.html");
        doc.Save(path, new HtmlSaveOptions { ExportImagesAsBase64 = true, DocumentSplitCriteria = DocumentSplitCriteria.HeadingParagraph, DocumentSplitHeadingLevel = 1 });
        Assert.Contains("Chapter one", File.ReadAllText(path));
        Assert.DoesNotContain("Chapter two", File.ReadAllText(path));
        Assert.Contains("Chapter two", File.ReadAllText(Path.Combine(dir, "book-1.html")));
        Directory.Delete(dir, true);
    }

    [Fact]
    public void XhtmlIsWellFormedXml()
    {
        var x = Save(Sample(), new HtmlSaveOptions { ExportImagesAsBase64 = true, HtmlVersion = HtmlVersion.Xhtml, CssStyleSheetType = CssStyleSheetType.Embedded });
        using var reader = System.Xml.XmlReader.Create(new StringReader(x), new System.Xml.XmlReaderSettings { DtdProcessing = System.Xml.DtdProcessing.Ignore });
        var root = System.Xml.Linq.XDocument.Load(reader).Root!;
        Assert.Equal("html", root.Name.LocalName);
    }

    [Fact]
    public void OurHtmlLoadsBackWithTheSameStructure()
    {
        var doc = Sample();
        var back = new Document(new MemoryStream(TestSupport.ToBytes(doc, new HtmlSaveOptions { ExportImagesAsBase64 = true, ExportHeadersFootersMode = ExportHeadersFootersMode.None })));
        string Outline(Document d) => string.Join("|", d.FirstSection!.Body!.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>()
            .Where(p => p.ParentNode is not Notes.Footnote)
            .Select(p => $"{p.ParagraphFormat.StyleIdentifier}:{p.IsListItem}:{p.ListFormat.ListLevelNumber}:{p.GetText().Trim('\r', '\f', '\a').Split('\u0002')[0]}"));
        Assert.Equal(Outline(doc).Replace("ListParagraph", "Normal"), Outline(back));
        Assert.True(back.FirstSection!.Body!.Paragraphs[1].Runs.ToArray().Single(r => r.Text == "bold").Font.Bold);
        Assert.Equal("A note.", back.GetChildNodes(NodeType.Footnote, true)[0].GetText().Trim());
        Assert.Single(back.GetChildNodes(NodeType.Shape, true));
    }
}
