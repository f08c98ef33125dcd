using BitMiracle.LibTiff.Classic;
using Quorix.Folio.Formats;
using Quorix.Folio.Layout;
using Quorix.Folio.Saving;
using SkiaSharp;

namespace Quorix.Folio.Rendering;

/// <summary>Pages as PNG, JPEG or BMP pictures: the page set's first page to the save's output, and
/// the further ones where a page saving callback sends them.</summary>
internal sealed class ImageDocumentWriter : IDocumentWriter
{
    public ImageDocumentWriter(SaveFormat format) { Format = format; }

    public SaveFormat Format { get; }

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as ImageSaveOptions ?? new ImageSaveOptions(Format);
        var (pages, indexes) = FixedPages.SelectIndexes(document, o);
        var mime = WritePage(pages[indexes[0]], o, output);
        if (o.PageSavingCallback is not { } callback) return new SaveOutputParameters(mime);
        string ext = FileFormatUtil.SaveFormatToExtension(Format);
        string stem = path != null ? Path.GetFileNameWithoutExtension(path) : "page";
        for (int i = 1; i < indexes.Count; i++)
        {
            int index = indexes[i];
            var args = new PageSavingArgs(document, index, $"{stem}_{index}{ext}");
            callback.PageSaving(args);
            if (args.PageStream is { } stream)
            {
                try { WritePage(pages[index], o, stream); }
                finally { if (!args.KeepPageStreamOpen) stream.Dispose(); }
                continue;
            }
            if (path == null)
                throw new InvalidOperationException($"Page {index} has nowhere to go: saving to a stream, the page saving callback must set PageStream.");
            using var file = File.Create(Path.Combine(Path.GetDirectoryName(path) ?? "", args.PageFileName));
            WritePage(pages[index], o, file);
        }
        return new SaveOutputParameters(mime);
    }

    private string WritePage(LayoutPage page, ImageSaveOptions o, Stream output)
    {
        using var bitmap = PageRaster.Render(page, o);
        if (Format == SaveFormat.Bmp)
        {
            BmpContainer.Write(bitmap, o.HorizontalResolution, o.VerticalResolution, output);
            return "image/bmp";
        }
        using var image = SKImage.FromBitmap(bitmap);
        var (format, mime) = Format == SaveFormat.Jpeg ? (SKEncodedImageFormat.Jpeg, "image/jpeg") : (SKEncodedImageFormat.Png, "image/png");
        using var data = image.Encode(format, Format == SaveFormat.Jpeg ? o.JpegQuality : 100)
            ?? throw new InvalidOperationException($"The page could not be encoded as {Format}.");
        data.SaveTo(output);
        return mime;
    }
}

/// <summary>Every page of the page set in one TIFF, a directory per page.</summary>
internal sealed class TiffDocumentWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Tiff;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as ImageSaveOptions ?? new ImageSaveOptions(SaveFormat.Tiff);
        var (pages, indexes) = FixedPages.SelectIndexes(document, o);
        bool fax = o.TiffCompression is TiffCompression.Rle or TiffCompression.Ccitt3 or TiffCompression.Ccitt4;
        var mode = fax ? ImageColorMode.BlackAndWhite : o.ImageColorMode;
        // The TIFF library seeks back to link directories; the save's output need not seek.
        var buffer = new MemoryStream();
        using (var tiff = Tiff.ClientOpen("pages.tif", "w", buffer, new TiffStream())
            ?? throw new InvalidOperationException("The TIFF writer could not be started."))
        {
            for (int p = 0; p < indexes.Count; p++)
            {
                using var bitmap = PageRaster.Render(pages[indexes[p]], o);
                WriteDirectory(tiff, bitmap, o, mode, p, indexes.Count);
            }
        }
        // Closing the TIFF closed the buffer too; its bytes stay readable.
        output.Write(buffer.ToArray());
        return new SaveOutputParameters("image/tiff");
    }

    private static void WriteDirectory(Tiff tiff, SKBitmap bitmap, ImageSaveOptions o, ImageColorMode mode, int page, int pageCount)
    {
        int w = bitmap.Width, h = bitmap.Height;
        bool bilevel = mode == ImageColorMode.BlackAndWhite, grey = mode == ImageColorMode.Grayscale;
        tiff.SetField(TiffTag.SUBFILETYPE, FileType.PAGE);
        tiff.SetField(TiffTag.PAGENUMBER, page, pageCount);
        tiff.SetField(TiffTag.IMAGEWIDTH, w);
        tiff.SetField(TiffTag.IMAGELENGTH, h);
        tiff.SetField(TiffTag.BITSPERSAMPLE, bilevel ? 1 : 8);
        tiff.SetField(TiffTag.SAMPLESPERPIXEL, bilevel || grey ? 1 : 3);
        // Fax pages are white with black marks, as fax readers expect.
        tiff.SetField(TiffTag.PHOTOMETRIC, bilevel ? Photometric.MINISWHITE : grey ? Photometric.MINISBLACK : Photometric.RGB);
        tiff.SetField(TiffTag.PLANARCONFIG, PlanarConfig.CONTIG);
        tiff.SetField(TiffTag.COMPRESSION, o.TiffCompression switch
        {
            TiffCompression.None => Compression.NONE,
            TiffCompression.Rle => Compression.CCITTRLE,
            TiffCompression.Ccitt3 => Compression.CCITTFAX3,
            TiffCompression.Ccitt4 => Compression.CCITTFAX4,
            _ => Compression.LZW,
        });
        tiff.SetField(TiffTag.ROWSPERSTRIP, o.TiffCompression == TiffCompression.Ccitt4 ? h : Math.Max(1, 65536 / Math.Max(1, w * 3)));
        tiff.SetField(TiffTag.XRESOLUTION, (double)o.HorizontalResolution);
        tiff.SetField(TiffTag.YRESOLUTION, (double)o.VerticalResolution);
        tiff.SetField(TiffTag.RESOLUTIONUNIT, ResUnit.INCH);
        var pixels = bitmap.GetPixelSpan();
        var row = new byte[bilevel ? (w + 7) / 8 : grey ? w : 3 * w];
        for (int y = 0; y < h; y++)
        {
            var line = pixels.Slice(y * bitmap.RowBytes, 4 * w);
            if (bilevel)
            {
                Array.Clear(row);
                for (int x = 0; x < w; x++)
                    if (PageRaster.OverWhite(line, x, 0) < 128) row[x >> 3] |= (byte)(0x80 >> (x & 7));
            }
            else if (grey)
            {
                for (int x = 0; x < w; x++) row[x] = PageRaster.OverWhite(line, x, 0);
            }
            else
            {
                for (int x = 0; x < w; x++)
                    for (int c = 0; c < 3; c++) row[3 * x + c] = PageRaster.OverWhite(line, x, c);
            }
            if (!tiff.WriteScanline(row, y)) throw new InvalidOperationException($"The TIFF writer failed on row {y} of page {page + 1}.");
        }
        tiff.WriteDirectory();
    }
}

/// <summary>A laid-out page drawn into pixels, in the colours the options keep.</summary>
internal static class PageRaster
{
    public static SKBitmap Render(LayoutPage page, ImageSaveOptions o)
    {
        float sx = o.HorizontalResolution / 72f * o.Scale, sy = o.VerticalResolution / 72f * o.Scale;
        int w = Math.Max(1, (int)Math.Round(page.Width * sx)), h = Math.Max(1, (int)Math.Round(page.Height * sy));
        if ((long)w * h > 400_000_000) throw new ArgumentException($"A {w}x{h} pixel page is too large; lower the resolution or scale.");
        var bitmap = new SKBitmap(new SKImageInfo(w, h, SKColorType.Rgba8888, SKAlphaType.Premul));
        using (var canvas = new SKCanvas(bitmap))
        {
            canvas.Clear(new SKColor(o.PaperColor));
            canvas.Scale(sx, sy);
            using var painter = new PagePainter();
            painter.Paint(canvas, page, withLinks: false);
            canvas.Flush();
        }
        if (o.ImageColorMode != ImageColorMode.None) Recolour(bitmap, o.ImageColorMode);
        return bitmap;
    }

    /// <summary>Greys each pixel by its brightness, or splits it to black or white at half brightness; alpha is kept.</summary>
    private static void Recolour(SKBitmap bitmap, ImageColorMode mode)
    {
        var pixels = bitmap.GetPixelSpan();
        for (int y = 0; y < bitmap.Height; y++)
        {
            var line = pixels.Slice(y * bitmap.RowBytes, 4 * bitmap.Width);
            for (int x = 0; x < line.Length; x += 4)
            {
                int a = line[x + 3];
                int luma = (299 * line[x] + 587 * line[x + 1] + 114 * line[x + 2]) / 1000;
                // Premultiplied: half brightness of an opaque pixel is half of its alpha.
                byte v = mode == ImageColorMode.Grayscale ? (byte)luma : luma * 2 >= a ? (byte)a : (byte)0;
                line[x] = line[x + 1] = line[x + 2] = v;
            }
        }
    }

    /// <summary>Channel c (0 red, 1 green, 2 blue) of pixel x of a premultiplied RGBA row, laid over white.</summary>
    public static byte OverWhite(ReadOnlySpan<byte> row, int x, int c) => (byte)(row[4 * x + c] + 255 - row[4 * x + 3]);
}

/// <summary>The BMP file container around a page's pixels: 24-bit rows over white, bottom row first.
/// Skia encodes no BMP, and the format is a header and the rows as they are.</summary>
internal static class BmpContainer
{
    public static void Write(SKBitmap bitmap, float dpiX, float dpiY, Stream output)
    {
        int w = bitmap.Width, h = bitmap.Height, stride = (3 * w + 3) & ~3;
        long size = 54L + (long)stride * h;
        if (size > int.MaxValue) throw new ArgumentException($"A {w}x{h} pixel page is too large for a BMP file.");
        var header = new byte[54];
        var span = header.AsSpan();
        span[0] = (byte)'B';
        span[1] = (byte)'M';
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[2..], (int)size);
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[10..], 54);
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[14..], 40);
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[18..], w);
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[22..], h);
        System.Buffers.Binary.BinaryPrimitives.WriteInt16LittleEndian(span[26..], 1);
        System.Buffers.Binary.BinaryPrimitives.WriteInt16LittleEndian(span[28..], 24);
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[34..], stride * h);
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[38..], (int)Math.Round(dpiX / 0.0254));
        System.Buffers.Binary.BinaryPrimitives.WriteInt32LittleEndian(span[42..], (int)Math.Round(dpiY / 0.0254));
        output.Write(header);
        var pixels = bitmap.GetPixelSpan();
        var row = new byte[stride];
        for (int y = h - 1; y >= 0; y--)
        {
            var line = pixels.Slice(y * bitmap.RowBytes, 4 * w);
            for (int x = 0; x < w; x++)
            {
                row[3 * x] = PageRaster.OverWhite(line, x, 2);
                row[3 * x + 1] = PageRaster.OverWhite(line, x, 1);
                row[3 * x + 2] = PageRaster.OverWhite(line, x, 0);
            }
            output.Write(row);
        }
    }
}
