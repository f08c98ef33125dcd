using BitMiracle.LibTiff.Classic;
using Quorix.Folio.Saving;
using SkiaSharp;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Pages as pictures: BMP, multi-page TIFF, colour modes, and the further pages of a
/// page-per-file format sent where a page saving callback says.</summary>
public class ImageOutputTests
{
    private static Document Pages(int count)
    {
        var b = new DocumentBuilder();
        for (int i = 0; i < count; i++)
        {
            if (i > 0) b.InsertBreak(BreakType.PageBreak);
            b.Font.ColorHex = i % 2 == 0 ? "FF0000" : "0000FF";
            b.Font.Size = 40;
            b.Write($"page {i}");
        }
        return b.Document;
    }

    private static byte[] Save(Document doc, ImageSaveOptions o)
    {
        var ms = new MemoryStream();
        doc.Save(ms, o);
        return ms.ToArray();
    }

    [Fact]
    public void ABmpHasThePixelsOfThePngOfTheSamePage()
    {
        var doc = Pages(2);
        var bmp = Save(doc, new ImageSaveOptions(SaveFormat.Bmp) { Resolution = 50, PageSet = new PageSet(1) });
        var png = Save(doc, new ImageSaveOptions(SaveFormat.Png) { Resolution = 50, PageSet = new PageSet(1) });
        Assert.Equal("BM", System.Text.Encoding.ASCII.GetString(bmp, 0, 2));
        Assert.Equal(bmp.Length, BitConverter.ToInt32(bmp, 2));
        using var fromBmp = SKBitmap.Decode(bmp);
        using var fromPng = SKBitmap.Decode(png);
        Assert.Equal((fromPng.Width, fromPng.Height), (fromBmp.Width, fromBmp.Height));
        Assert.Equal((int)Math.Round(612 * 50 / 72.0), fromBmp.Width);
        int differing = 0, blue = 0;
        for (int y = 0; y < fromPng.Height; y++)
            for (int x = 0; x < fromPng.Width; x++)
            {
                SKColor a = fromPng.GetPixel(x, y), b = fromBmp.GetPixel(x, y);
                if (Math.Abs(a.Red - b.Red) + Math.Abs(a.Green - b.Green) + Math.Abs(a.Blue - b.Blue) > 3) differing++;
                if (b.Blue > 150 && b.Red < 100) blue++;
            }
        Assert.Equal(0, differing);
        Assert.True(blue > 20, "the second page's blue text is in the picture");
        Assert.Equal(SaveFormat.Bmp, FileFormatUtil.ExtensionToSaveFormat(".bmp"));
    }

    [Fact]
    public void ATiffHoldsEveryPageOfThePageSetInItsOrder()
    {
        var doc = Pages(4);
        var bytes = Save(doc, new ImageSaveOptions(SaveFormat.Tiff) { Resolution = 30, PageSet = new PageSet(3, 0, 2) });
        using var tiff = Tiff.ClientOpen("t", "r", new MemoryStream(bytes), new TiffStream())!;
        Assert.Equal(3, tiff.NumberOfDirectories());
        var reds = new List<bool>();
        for (short d = 0; d < 3; d++)
        {
            tiff.SetDirectory(d);
            int w = tiff.GetField(TiffTag.IMAGEWIDTH)[0].ToInt(), h = tiff.GetField(TiffTag.IMAGELENGTH)[0].ToInt();
            Assert.Equal((255, 330), (w, h));
            Assert.Equal(Compression.LZW, (Compression)tiff.GetField(TiffTag.COMPRESSION)[0].ToInt());
            var raster = new int[w * h];
            Assert.True(tiff.ReadRGBAImage(w, h, raster));
            reds.Add(raster.Count(p => Tiff.GetR(p) > 150 && Tiff.GetB(p) < 100) > 10);
        }
        // Pages 3, 0 and 2, in the page set's order: 3 blue, 0 and 2 red.
        Assert.Equal(new[] { false, true, true }, reds);
    }

    [Fact]
    public void FaxCompressionAndColourModesKeepOnlyTheColoursTheyName()
    {
        var doc = Pages(2);
        var fax = Save(doc, new ImageSaveOptions(SaveFormat.Tiff) { Resolution = 40, TiffCompression = TiffCompression.Ccitt4 });
        using (var tiff = Tiff.ClientOpen("t", "r", new MemoryStream(fax), new TiffStream())!)
        {
            Assert.Equal(2, tiff.NumberOfDirectories());
            Assert.Equal(1, tiff.GetField(TiffTag.BITSPERSAMPLE)[0].ToInt());
            Assert.Equal(Compression.CCITTFAX4, (Compression)tiff.GetField(TiffTag.COMPRESSION)[0].ToInt());
        }
        using var grey = SKBitmap.Decode(Save(doc, new ImageSaveOptions(SaveFormat.Png) { Resolution = 40, ImageColorMode = ImageColorMode.Grayscale }));
        using var bw = SKBitmap.Decode(Save(doc, new ImageSaveOptions(SaveFormat.Png) { Resolution = 40, ImageColorMode = ImageColorMode.BlackAndWhite }));
        var greys = grey.Pixels;
        Assert.All(greys, p => Assert.True(p.Red == p.Green && p.Green == p.Blue));
        Assert.Contains(greys, p => p.Red is > 20 and < 235);
        Assert.All(bw.Pixels, p => Assert.True(p.Red == p.Green && p.Green == p.Blue && p.Red is 0 or 255));
        Assert.Contains(bw.Pixels, p => p.Red == 0);
    }

    private sealed class Collect : IPageSavingCallback
    {
        public readonly List<(int Index, string Name, MemoryStream Stream)> Pages = new();
        public bool ToStreams = true;

        public void PageSaving(PageSavingArgs args)
        {
            var ms = new MemoryStream();
            Pages.Add((args.PageIndex, args.PageFileName, ms));
            if (ToStreams)
            {
                args.PageStream = ms;
                args.KeepPageStreamOpen = true;
            }
            else args.PageFileName = $"renamed-{args.PageIndex}.jpg";
        }
    }

    [Fact]
    public void FurtherPagesGoWhereThePageSavingCallbackSends()
    {
        var doc = Pages(3);
        var collect = new Collect();
        var first = Save(doc, new ImageSaveOptions(SaveFormat.Png) { Resolution = 20, PageSet = new PageSet(0, 2), PageSavingCallback = collect });
        Assert.Equal(new[] { 2 }, collect.Pages.Select(p => p.Index));
        Assert.Equal("page_2.png", collect.Pages[0].Name);
        using (var a = SKBitmap.Decode(first))
        using (var c = SKBitmap.Decode(collect.Pages[0].Stream.ToArray()))
        {
            Assert.Equal(a.Width, c.Width);
            Assert.True(collect.Pages[0].Stream.CanRead, "a stream kept open stays open");
        }

        // Saving to a file: further pages are files beside it, named by the callback.
        var dir = Directory.CreateTempSubdirectory();
        try
        {
            var files = new Collect { ToStreams = false };
            doc.Save(Path.Combine(dir.FullName, "out.jpg"), new ImageSaveOptions(SaveFormat.Jpeg) { Resolution = 20, PageSavingCallback = files });
            Assert.Equal(new[] { "out_1.jpg", "out_2.jpg" }, files.Pages.Select(p => p.Name));
            Assert.Equal(new[] { "out.jpg", "renamed-1.jpg", "renamed-2.jpg" }, dir.GetFiles().Select(f => f.Name).Order());
            Assert.All(dir.GetFiles(), f => Assert.NotNull(SKBitmap.Decode(f.FullName)));
        }
        finally { dir.Delete(true); }

        // Saving to a stream, a page the callback sends nowhere is an error, not a lost page.
        var ex = Assert.Throws<InvalidOperationException>(() => Save(doc, new ImageSaveOptions(SaveFormat.Bmp) { Resolution = 10, PageSavingCallback = new Collect { ToStreams = false } }));
        Assert.Contains("Page 1 has nowhere to go", ex.Message);
    }

    [Fact]
    public void XpsAndUnknownPictureFormatsAreRefusedByName()
    {
        var ex = Assert.Throws<UnsupportedFileFormatException>(() => Pages(1).Save("x.xps"));
        Assert.Contains("XPS", ex.Message);
        Assert.Throws<UnsupportedFileFormatException>(() => new ImageSaveOptions(SaveFormat.Svg));
        Assert.Throws<UnsupportedFileFormatException>(() => Pages(1).Save("x.gif"));
    }
}
