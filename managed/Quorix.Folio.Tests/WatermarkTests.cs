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
