using Quorix.Folio.Layout;
using Quorix.Folio.Drawing;
using Quorix.Folio.LowCode;

namespace Quorix.Folio.Tests;

public class WatermarkTests
{
    private static Document TwoSections()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("Body text of the first page.");
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.PageSetup.DifferentFirstPageHeaderFooter = true;
        b.MoveToHeaderFooter(HeaderFooterType.HeaderFirst);
        b.Write("first-page header");
        b.MoveToDocumentEnd();
        b.Write("Second section.");
        return doc;
    }

    private static int Count(Document d, Func<Node, bool> what) =>
        d.Sections.ToArray().SelectMany(s => s.HeadersFooters.ToArray()).Sum(h => CountIn(h, what));

    private static int CountIn(CompositeNode root, Func<Node, bool> what)
    {
        int n = 0;
        for (Node? x = root.FirstChild; x != null; x = x.NextPreOrder(root)) if (what(x)) n++;
        return n;
    }

    [Fact]
    public void TextWatermarkGoesIntoEveryHeaderAndSurvivesDocx()
    {
        var doc = TwoSections();
        Assert.Equal(WatermarkType.None, doc.Watermark.Type);
        doc.Watermark.SetText("DRAFT <1>", new TextWatermarkOptions { FontFamily = "Arial", ColorHex = "ff0000", Layout = WatermarkLayout.Horizontal });
        Assert.Equal(WatermarkType.Text, doc.Watermark.Type);
        // Primary headers of both sections, and the second section's first-page header.
        Assert.Equal(3, Count(doc, n => n.IsOpaque));
        // The watermark is no text of the header.
        Assert.Equal("first-page header", doc.Sections[1].HeadersFooters[HeaderFooterType.HeaderFirst]!.GetText().Trim());
        var docx = TestSupport.ToBytes(doc);
        var header = TestSupport.Part(docx, "word/header1.xml");
        Assert.Contains("string=\"DRAFT &lt;1&gt;\"", header);
        Assert.Contains("fillcolor=\"#FF0000\"", header);
        Assert.DoesNotContain("rotation", header);
        var back = new Document(new MemoryStream(docx));
        Assert.Equal(WatermarkType.Text, back.Watermark.Type);
        // Setting again replaces, and removing leaves the headers' own text.
        back.Watermark.SetText("FINAL");
        Assert.Equal(3, Count(back, n => n.IsOpaque));
        back.Watermark.Remove();
        Assert.Equal(WatermarkType.None, back.Watermark.Type);
        Assert.Equal("first-page header", back.Sections[1].HeadersFooters[HeaderFooterType.HeaderFirst]!.GetText().Trim());
        Assert.Throws<ArgumentException>(() => back.Watermark.SetText(""));
        Assert.Throws<ArgumentException>(() => new TextWatermarkOptions { ColorHex = "red" });
        Assert.Throws<ArgumentOutOfRangeException>(() => new TextWatermarkOptions { FontSize = -3 });
    }

    [Fact]
    public void ImageWatermarkIsABehindTextPictureScaledToThePage()
    {
        var doc = TwoSections();
        var png = TestSupport.Png(40, 20);
        doc.Watermark.SetImage(png, new ImageWatermarkOptions { Scale = 2, IsWashout = false });
        Assert.Equal(WatermarkType.Image, doc.Watermark.Type);
        var shape = (Shape)doc.Sections[0].HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetChildNodes(NodeType.Shape, true)[0];
        Assert.Equal((60.0, 30.0), (shape.Width, shape.Height));
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/header1.xml");
        Assert.Contains("behindDoc=\"1\"", xml);
        Assert.Contains("name=\"WordPictureWatermark", xml);
        Assert.DoesNotContain("<a:lum", xml);

        doc.Watermark.SetImage(png);
        shape = (Shape)doc.Sections[0].HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetChildNodes(NodeType.Shape, true)[0];
        var ps = doc.Sections[0].PageSetup;
        Assert.Equal(ps.PageWidth - ps.LeftMargin - ps.RightMargin, shape.Width, 3);
        Assert.Contains("<a:lum", TestSupport.Part(TestSupport.ToBytes(doc), "word/header1.xml"));
        Assert.Equal(3, Count(doc, n => n is Shape));
        Assert.Throws<ArgumentException>(() => doc.Watermark.SetImage(new byte[] { 1, 2, 3 }));
        // A refused picture leaves the watermark there was.
        Assert.Equal(WatermarkType.Image, doc.Watermark.Type);
    }

    [Fact]
    public void WatermarkerWorksOnFiles()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var input = Path.Combine(dir, "in.docx");
            TwoSections().Save(input);
            Watermarker.SetText(input, Path.Combine(dir, "text.docx"), "SECRET");
            Assert.Equal(WatermarkType.Text, new Document(Path.Combine(dir, "text.docx")).Watermark.Type);
            var image = Path.Combine(dir, "logo.png");
            File.WriteAllBytes(image, TestSupport.Png(8, 8));
            Watermarker.SetImage(input, Path.Combine(dir, "image.docx"), image, new ImageWatermarkOptions { Scale = 1 });
            Assert.Equal(WatermarkType.Image, new Document(Path.Combine(dir, "image.docx")).Watermark.Type);
            var output = new MemoryStream();
            Watermarker.SetText(File.OpenRead(input), output, SaveFormat.Docx, "STREAMED", null);
            Assert.Contains("STREAMED", TestSupport.Part(output.ToArray(), "word/header1.xml"));
        }
        finally { Directory.Delete(dir, true); }
    }

    // LibreOffice takes the shape for a watermark of its own (word art named as such, with our text)
    // and draws it in the middle of the page. Word art goes to PDF as outlines, not text, so the page
    // is checked for ink where only the watermark can put any.
    [Fact]
    public void LibreOfficeShowsTheTextWatermarkOnThePage()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = new Document();
            new DocumentBuilder(doc).Writeln("Ordinary body text.");
            doc.Save(Path.Combine(dir, "plain.docx"));
            doc.Watermark.SetText("CONFIDENTIAL");
            doc.Save(Path.Combine(dir, "marked.docx"));
            var (code, _, err) = TestSupport.Run("/usr/bin/soffice",
                $"--headless --norestore -env:UserInstallation=file://{dir}/profile --convert-to pdf --outdir \"{dir}\" \"{dir}/marked.docx\" \"{dir}/plain.docx\"",
                timeoutMs: 300000);
            Assert.True(code == 0, err);
            (code, _, err) = TestSupport.Run("/usr/bin/soffice",
                $"--headless --norestore -env:UserInstallation=file://{dir}/profile --convert-to odt --outdir \"{dir}\" \"{dir}/marked.docx\"",
                timeoutMs: 300000);
            Assert.True(code == 0, err);
            var styles = TestSupport.Part(File.ReadAllBytes(Path.Combine(dir, "marked.odt")), "styles.xml");
            Assert.Matches("<draw:custom-shape[^>]*draw:name=\"PowerPlusWaterMarkObject1\"[^>]*><text:p[^>]*>CONFIDENTIAL</text:p>", styles);
            Assert.Contains("fontwork", styles);
            var (pc, text, perr) = TestSupport.Run("/usr/bin/pdftotext", $"\"{dir}/marked.pdf\" -");
            Assert.True(pc == 0, perr);
            Assert.Contains("Ordinary body text.", text);
            Assert.True(CentreInk(dir, "marked") > 50 * CentreInk(dir, "plain") + 20);
        }
        finally { Directory.Delete(dir, true); }
    }

    // ---- the watermark in outputs that draw it themselves ----

    private static Document Marked(Action<Document> mark)
    {
        var doc = TwoSections();
        mark(doc);
        return doc;
    }

    private static double FirstLineY(Document doc) =>
        doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().First(g => g.Text.Contains("Body")).Y;

    [Fact]
    public void TextWatermarkIsDrawnTurnedAndFadedBehindEveryPageOfTheLayout()
    {
        var plain = TwoSections();
        var doc = Marked(d => d.Watermark.SetText("CONFIDENTIAL", new TextWatermarkOptions { ColorHex = "FF0000" }));
        foreach (var page in doc.PageLayout.Pages)
        {
            var turned = Assert.Single(page.Items.OfType<TurnedItems>());
            Assert.Equal(315, turned.Degrees);
            var run = Assert.IsType<GlyphRun>(Assert.Single(turned.Items));
            Assert.Equal("CONFIDENTIAL", run.Text);
            // Red at half opacity.
            Assert.Equal(0x80FF0000u, run.Color);
            // Centred on the text area, and under the page's text.
            var ps = doc.Sections[page.SectionIndex].PageSetup;
            Assert.Equal((ps.LeftMargin + ps.PageWidth - ps.RightMargin) / 2, turned.X, 1);
            Assert.Equal((ps.TopMargin + ps.PageHeight - ps.BottomMargin) / 2, turned.Y, 1);
            Assert.True(page.Items.IndexOf(turned) < page.Items.FindIndex(i => i is GlyphRun));
        }
        // It takes no room: the body starts where it does without it.
        Assert.Equal(FirstLineY(plain), FirstLineY(doc), 2);
        // The same after the shape went through DOCX, and for a horizontal one.
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(315, back.PageLayout.Pages[0].Items.OfType<TurnedItems>().Single().Degrees);
        back.Watermark.SetText("FLAT", new TextWatermarkOptions { Layout = WatermarkLayout.Horizontal, IsSemitransparent = false });
        var flat = back.PageLayout.Pages[0].Items.OfType<TurnedItems>().Single();
        Assert.Equal((0.0, 0xFFC0C0C0u), (flat.Degrees, ((GlyphRun)flat.Items[0]).Color));
    }

    [Fact]
    public void PictureWatermarkFloatsWashedOutInTheMiddleOfThePage()
    {
        var plain = TwoSections();
        var doc = Marked(d => d.Watermark.SetImage(TestSupport.Png(40, 20), new ImageWatermarkOptions { Scale = 3 }));
        foreach (var d in new[] { doc, TestSupport.RoundTrip(doc) })
        {
            var pic = Assert.Single(d.PageLayout.Pages[0].Items.OfType<ImageItem>());
            var ps = d.FirstSection!.PageSetup;
            Assert.Equal((90.0, 45.0, true), (pic.Width, pic.Height, pic.Washout));
            Assert.Equal((ps.LeftMargin + ps.PageWidth - ps.RightMargin - 90) / 2, pic.X, 1);
            Assert.Equal((ps.TopMargin + ps.PageHeight - ps.BottomMargin - 45) / 2, pic.Y, 1);
            Assert.Equal(FirstLineY(plain), FirstLineY(d), 2);
        }
        doc.Watermark.SetImage(TestSupport.Png(40, 20), new ImageWatermarkOptions { Scale = 1, IsWashout = false });
        Assert.False(doc.PageLayout.Pages[0].Items.OfType<ImageItem>().Single().Washout);
    }

    [Fact]
    public void OurPdfHasInkInTheMiddleOfThePageOnlyWithTheWatermark()
    {
        if (!TestSupport.HasTool("/usr/bin/pdftoppm")) return;
        var dir = TestSupport.TempDir();
        try
        {
            var doc = new Document();
            new DocumentBuilder(doc).Writeln("Ordinary body text.");
            doc.Save(Path.Combine(dir, "plain.pdf"));
            doc.Watermark.SetText("CONFIDENTIAL");
            doc.Save(Path.Combine(dir, "marked.pdf"));
            Assert.True(CentreInk(dir, "marked") > 50 * CentreInk(dir, "plain") + 20);
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void HtmlShowsTheWatermarkAsOneFixedElementBehindThePage()
    {
        var doc = Marked(d => d.Watermark.SetText("DRAFT & <X>", new TextWatermarkOptions { FontFamily = "Arial", ColorHex = "00AA00" }));
        var options = new Saving.HtmlSaveOptions { ExportHeadersFootersMode = Saving.ExportHeadersFootersMode.None, ExportImagesAsBase64 = true };
        var html = System.Text.Encoding.UTF8.GetString(TestSupport.ToBytes(doc, options));
        // Both sections have the same watermark: one element, before the text, whatever headers are exported.
        var div = Assert.Single(System.Text.RegularExpressions.Regex.Matches(html, "<div class=\"watermark\" data-watermark=\"([^\"]*)\"[^>]*></div>"));
        Assert.Equal("DRAFT &amp; &lt;X&gt;", div.Groups[1].Value);
        // The text comes from the style sheet, so that text readers do not take it for a paragraph.
        Assert.Contains(".watermark::before{content:attr(data-watermark)}", html[..html.IndexOf("</head>", StringComparison.Ordinal)]);
        Assert.True(div.Index < html.IndexOf("Body text", StringComparison.Ordinal));
        foreach (var css in new[] { "position:fixed", "rotate(315deg)", "opacity:0.5", "color:#00AA00", "font-family:&#39;Arial&#39;", "z-index:-1" })
            Assert.Contains(css, div.Value);
        // A picture watermark: an image faded the same way, not a picture in the header's text.
        doc.Watermark.SetImage(TestSupport.Png(4, 4));
        html = System.Text.Encoding.UTF8.GetString(TestSupport.ToBytes(doc, new Saving.HtmlSaveOptions { ExportImagesAsBase64 = true }));
        var img = Assert.Single(System.Text.RegularExpressions.Regex.Matches(html, "<img[^>]*>"));
        Assert.Contains("class=\"watermark\"", img.Value);
        Assert.Contains("opacity:0.3", img.Value);
        Assert.DoesNotContain("<img", html[html.IndexOf("<header>", StringComparison.Ordinal)..]);
    }

    [Fact]
    public void RtfWritesTheWatermarkAsAShapeBehindTheText()
    {
        var doc = Marked(d => d.Watermark.SetText("SECRET", new TextWatermarkOptions { ColorHex = "0000FF", FontFamily = "Arial" }));
        var rtf = TestSupport.ToText(doc, SaveFormat.Rtf);
        // Every header that has the watermark: both primaries and the first-page one.
        Assert.Equal(3, System.Text.RegularExpressions.Regex.Matches(rtf, @"\{\\shp\{").Count);
        foreach (var prop in new[] { "{\\sn gtextUNICODE}{\\sv SECRET}", "{\\sn gtextFont}{\\sv Arial}", "{\\sn rotation}{\\sv 20643840}",
                                     "{\\sn fillColor}{\\sv 16711680}", "{\\sn fillOpacity}{\\sv 32768}", "{\\sn fBehindDocument}{\\sv 1}" })
            Assert.Contains(prop, rtf);
        // Our reader skips the shape: the text stays the document's own.
        var back = new Document(new MemoryStream(TestSupport.ToBytes(doc, SaveFormat.Rtf)));
        Assert.DoesNotContain("SECRET", back.GetText());
        Assert.Contains("Body text of the first page.", back.GetText());

        doc.Watermark.SetImage(TestSupport.Png(4, 4));
        rtf = TestSupport.ToText(doc, SaveFormat.Rtf);
        Assert.Contains("{\\sp{\\sn pib}{\\sv {\\pict\\pngblip", rtf);
        Assert.Contains("{\\sn pictureBrightness}", rtf);
    }

    // LibreOffice reads the RTF shape as word art and draws it in the middle of the page.
    [Fact]
    public void LibreOfficeShowsTheWatermarkOfOurRtf()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = new Document();
            new DocumentBuilder(doc).Writeln("Ordinary body text.");
            doc.Save(Path.Combine(dir, "plain.rtf"));
            doc.Watermark.SetText("CONFIDENTIAL");
            doc.Save(Path.Combine(dir, "marked.rtf"));
            var (code, _, err) = TestSupport.Run("/usr/bin/soffice",
                $"--headless --norestore -env:UserInstallation=file://{dir}/profile --convert-to pdf --outdir \"{dir}\" \"{dir}/marked.rtf\" \"{dir}/plain.rtf\"",
                timeoutMs: 300000);
            Assert.True(code == 0, err);
            Assert.True(CentreInk(dir, "marked") > 50 * CentreInk(dir, "plain") + 20);
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void WordML2003KeepsTheTextWatermarkAsWordArt()
    {
        var doc = Marked(d => d.Watermark.SetText("ARCHIVE", new TextWatermarkOptions { FontFamily = "Arial", ColorHex = "336699", Layout = WatermarkLayout.Horizontal }));
        var xml = TestSupport.ToText(doc, SaveFormat.WordML);
        Assert.Equal(3, System.Text.RegularExpressions.Regex.Matches(xml, "<v:textpath [^>]*string=\"ARCHIVE\"").Count);
        Assert.Contains("fillcolor=\"#336699\"", xml);
        System.Xml.Linq.XDocument.Parse(xml);
        var back = new Document(new MemoryStream(TestSupport.ToBytes(doc, SaveFormat.WordML)));
        Assert.Equal(WatermarkType.Text, back.Watermark.Type);
        Assert.DoesNotContain("ARCHIVE", back.GetText());
        var mark = WatermarkMark.In(back.FirstSection!.HeadersFooters[HeaderFooterType.HeaderPrimary])!;
        Assert.Equal(("ARCHIVE", "Arial", "336699", 0.0, 0.5), (mark.Text, mark.FontFamily, mark.ColorHex, mark.Rotation, mark.Opacity));
    }

    /// <summary>Dark pixels in the middle third of the first page, rendered small in grey.</summary>
    private static int CentreInk(string dir, string name)
    {
        var (code, _, err) = TestSupport.Run("/usr/bin/pdftoppm", $"-gray -r 30 -f 1 -l 1 \"{dir}/{name}.pdf\" \"{dir}/{name}\"");
        Assert.True(code == 0, err);
        var pgm = File.ReadAllBytes(Directory.GetFiles(dir, name + "*.pgm").Single());
        // "P5 width height maxval" and one byte a pixel.
        int pos = 0, fields = 0;
        var header = new int[3];
        while (fields < 4)
        {
            while (char.IsWhiteSpace((char)pgm[pos])) pos++;
            int start = pos;
            while (!char.IsWhiteSpace((char)pgm[pos])) pos++;
            if (fields > 0) header[fields - 1] = int.Parse(System.Text.Encoding.ASCII.GetString(pgm, start, pos - start));
            fields++;
        }
        pos++;
        int w = header[0], h = header[1], dark = 0;
        for (int y = h / 3; y < 2 * h / 3; y++)
            for (int x = w / 3; x < 2 * w / 3; x++)
                if (pgm[pos + y * w + x] < 245) dark++;
        return dark;
    }
}
