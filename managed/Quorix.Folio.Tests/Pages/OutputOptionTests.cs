using Quorix.Folio.Saving;
using SkiaSharp;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Options of the page formats: page sets, resolution, and options refused rather than ignored.</summary>
public class OutputOptionTests
{
    private static Document ThreePages()
    {
        var b = new DocumentBuilder();
        b.Write("one");
        b.InsertBreak(BreakType.PageBreak);
        b.Write("two");
        b.InsertBreak(BreakType.PageBreak);
        b.Write("three");
        return b.Document;
    }

    [Fact]
    public void PageSetsChooseAndOrderPages()
    {
        Assert.Equal(new[] { 0, 1, 2 }, PageSet.All.Resolve(3));
        Assert.Equal(new[] { 1, 3 }, PageSet.Even.Resolve(5));
        Assert.Equal(new[] { 0, 2, 4 }, PageSet.Odd.Resolve(5));
        Assert.Equal(new[] { 2, 0 }, new PageSet(2, 0, 2, 9).Resolve(3));
        Assert.Equal(new[] { 1, 2 }, new PageSet(new PageRange(1, int.MaxValue)).Resolve(3));
        Assert.Throws<ArgumentOutOfRangeException>(() => new PageRange(2, 1));
    }

    [Fact]
    public void APdfHoldsThePagesOfItsPageSet()
    {
        var doc = ThreePages();
        var path = Path.GetTempFileName() + ".pdf";
        try
        {
            doc.Save(path, new PdfSaveOptions { PageSet = new PageSet(2, 0) });
            var text = PdfToolTests.Run("pdftotext", path, "-").Out;
            Assert.True(text.IndexOf("three") < text.IndexOf("one") && !text.Contains("two"), text);
            Assert.Throws<ArgumentException>(() => doc.Save(new MemoryStream(), new PdfSaveOptions { PageSet = new PageSet(7) }));
        }
        finally { File.Delete(path); }
    }

    [Theory]
    [InlineData(72f, 1f)]
    [InlineData(150f, 1f)]
    [InlineData(96f, 0.5f)]
    public void ImagesHaveThePixelSizeOfResolutionAndScale(float dpi, float scale)
    {
        var doc = ThreePages();
        var ms = new MemoryStream();
        doc.Save(ms, new ImageSaveOptions(SaveFormat.Png) { Resolution = dpi, Scale = scale, PageSet = new PageSet(1) });
        using var bitmap = SKBitmap.Decode(ms.ToArray());
        var info = doc.GetPageInfo(1);
        Assert.Equal((int)Math.Round(info.WidthInPoints / 72 * dpi * scale), bitmap.Width);
        Assert.Equal((int)Math.Round(info.HeightInPoints / 72 * dpi * scale), bitmap.Height);
        // Something dark was drawn on the white page: the text.
        Assert.Contains(Enumerable.Range(0, bitmap.Height).SelectMany(y => Enumerable.Range(0, bitmap.Width).Select(x => bitmap.GetPixel(x, y))), p => p.Red < 128);
    }

    [Fact]
    public void JpegAndSvgAreWrittenByExtension()
    {
        var doc = ThreePages();
        var dir = Directory.CreateTempSubdirectory("qf-out-");
        try
        {
            doc.Save(Path.Combine(dir.FullName, "p.jpg"));
            doc.Save(Path.Combine(dir.FullName, "p.svg"));
            var jpg = File.ReadAllBytes(Path.Combine(dir.FullName, "p.jpg"));
            Assert.Equal(new byte[] { 0xFF, 0xD8 }, jpg[..2]);
            var svg = System.Xml.Linq.XDocument.Load(Path.Combine(dir.FullName, "p.svg"));
            Assert.Equal("svg", svg.Root!.Name.LocalName);
            Assert.Equal("612", svg.Root.Attribute("width")!.Value);
        }
        finally { dir.Delete(true); }
    }

    public static TheoryData<string, Action<PdfSaveOptions>> Refused => new()
    {
        { "OutlineOptions", o => o.OutlineOptions.HeadingsOutlineLevels = 2 },
        { "EncryptionDetails", o => o.EncryptionDetails = new PdfEncryptionDetails("u", "o") },
        { "ExportDocumentStructure", o => o.ExportDocumentStructure = true },
        { "PdfUa1", o => o.Compliance = PdfCompliance.PdfUa1 },
        { "EmbedFullFonts", o => o.EmbedFullFonts = true },
        { "EmbedNone", o => o.FontEmbeddingMode = PdfFontEmbeddingMode.EmbedNone },
    };

    [Theory]
    [MemberData(nameof(Refused))]
    public void OptionsThePdfBackendCannotHonourAreRefusedAndNothingIsWritten(string named, Action<PdfSaveOptions> set)
    {
        var o = new PdfSaveOptions();
        set(o);
        var path = Path.Combine(Path.GetTempPath(), $"qf-{Guid.NewGuid():N}.pdf");
        var e = Assert.Throws<NotSupportedException>(() => ThreePages().Save(path, o));
        Assert.Contains(named, e.Message);
        Assert.False(File.Exists(path));
    }

    [Fact]
    public void PdfA2bIsMarkedInTheFile()
    {
        var ms = new MemoryStream();
        ThreePages().Save(ms, new PdfSaveOptions { Compliance = PdfCompliance.PdfA2b });
        var raw = System.Text.Encoding.Latin1.GetString(ms.ToArray());
        Assert.Contains("pdfaid:part", raw);
    }

    [Fact]
    public void ImageFormatsWithoutAnEncoderAreRefused()
    {
        Assert.Throws<UnsupportedFileFormatException>(() => new ImageSaveOptions(SaveFormat.Docx));
        Assert.Throws<UnsupportedFileFormatException>(() => ThreePages().Save("x.webp"));
    }
}

/// <summary>Inline pictures take their place in the line and reach every output.</summary>
public class InlineImageTests
{
    private static byte[] RedSquare()
    {
        using var bitmap = new SKBitmap(20, 20);
        bitmap.Erase(SKColors.Red);
        using var data = SKImage.FromBitmap(bitmap).Encode(SKEncodedImageFormat.Png, 100);
        return data.ToArray();
    }

    [Fact]
    public void APictureSitsOnTheBaselineAndPushesTheTextAside()
    {
        var b = new DocumentBuilder();
        b.Write("before ");
        b.InsertImage(RedSquare(), 72, 48);
        b.Write(" after");
        var doc = b.Document;
        var page = doc.PageLayout.Pages[0];
        var image = Assert.Single(page.Items.OfType<Quorix.Folio.Layout.ImageItem>());
        Assert.Equal((72.0, 48.0), (image.Width, image.Height));
        var after = page.Items.OfType<Quorix.Folio.Layout.GlyphRun>().Single(r => r.Text.Contains("after"));
        Assert.True(after.X + after.Xs[0] >= image.X + image.Width);
        Assert.InRange(after.Y - (image.Y + image.Height), -0.01, 0.01); // the picture's bottom is the baseline

        var ms = new MemoryStream();
        doc.Save(ms, new ImageSaveOptions(SaveFormat.Png) { Resolution = 72 });
        using var png = SKBitmap.Decode(ms.ToArray());
        var centre = png.GetPixel((int)(image.X + 36), (int)(image.Y + 24));
        Assert.Equal(SKColors.Red, centre);

        var path = Path.Combine(Path.GetTempPath(), $"qf-{Guid.NewGuid():N}.pdf");
        try
        {
            doc.Save(path);
            var list = PdfToolTests.Run("pdfimages", "-list", path).Out;
            Assert.Contains(" 20    20 ", list);
        }
        finally { File.Delete(path); }
    }
}

public class ParagraphFrameTests
{
    [Fact]
    public void ShadingAndBordersFrameTheParagraphsLines()
    {
        var b = new DocumentBuilder();
        b.Writeln("plain");
        var p = b.CurrentParagraph;
        b.Write(string.Concat(Enumerable.Repeat("framed words ", 60)));
        p.ParagraphFormat.Shading.BackgroundPatternColorHex = "FFFF00";
        p.ParagraphFormat.GetBorder(BorderType.Bottom).LineStyle = LineStyle.Single;
        p.ParagraphFormat.LeftIndent = 20;
        var items = b.Document.PageLayout.Pages[0].Items;
        var fills = items.OfType<Quorix.Folio.Layout.FillItem>().ToList();
        var lines = LayoutProbe.Lines(b.Document, 0).Where(l => l.Text.StartsWith("framed")).ToList();
        Assert.True(lines.Count >= 3);
        Assert.Equal(lines.Count, fills.Count);
        Assert.All(fills, f => Assert.Equal(0xFFFFFF00u, f.Color));
        double margin = b.Document.FirstSection!.PageSetup.LeftMargin;
        Assert.All(fills, f => Assert.InRange(f.X - margin, 19.99, 20.01));
        var rule = Assert.Single(items.OfType<Quorix.Folio.Layout.LineItem>());
        Assert.True(rule.Y1 > lines[^1].Y && Math.Abs(rule.Y1 - rule.Y2) < 0.01);
        // The plain paragraph above has neither.
        Assert.True(fills.Min(f => f.Y) > LayoutProbe.Lines(b.Document, 0)[0].Y);
    }
}
