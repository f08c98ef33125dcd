using Quorix.Folio.Layout;
using SkiaSharp;

namespace Quorix.Folio.Rendering;

/// <summary>Draws laid-out pages on any Skia canvas: the PDF, raster and SVG outputs share it. One
/// painter serves all the pages of a save, keeping its fonts from page to page.</summary>
internal sealed class PagePainter : IDisposable
{
    private readonly SKPaint paint = new() { IsAntialias = true };
    // Pages repeat a few faces and sizes many times over.
    private readonly Dictionary<(Fonts.FontFace, double, bool, bool), SKFont> fonts = new();

    public void Dispose()
    {
        foreach (var f in fonts.Values) f.Dispose();
        fonts.Clear();
        paint.Dispose();
    }

    public void Paint(SKCanvas canvas, LayoutPage page, bool withLinks)
    {
        var items = page.Items;
        for (int k = 0; k < items.Count; k++)
        {
            switch (items[k])
            {
                case FillItem f:
                    paint.Style = SKPaintStyle.Fill;
                    paint.Color = new SKColor(f.Color);
                    canvas.DrawRect((float)f.X, (float)f.Y, (float)f.Width, (float)f.Height, paint);
                    break;
                case GlyphRun g:
                    k = DrawGlyphs(canvas, items, k) - 1;
                    break;
                case LineItem l:
                    paint.Style = SKPaintStyle.Stroke;
                    paint.StrokeWidth = (float)l.Width;
                    paint.Color = new SKColor(l.Color);
                    canvas.DrawLine((float)l.X1, (float)l.Y1, (float)l.X2, (float)l.Y2, paint);
                    break;
                case ImageItem i:
                    using (var image = SKImage.FromEncodedData(i.Bytes))
                        if (image != null)
                        {
                            // Washed out: a third of the picture over the white page.
                            using var fade = i.Washout ? new SKPaint { Color = SKColors.Black.WithAlpha(77) } : null;
                            canvas.DrawImage(image, SKRect.Create((float)i.X, (float)i.Y, (float)i.Width, (float)i.Height), new SKSamplingOptions(SKFilterMode.Linear, SKMipmapMode.Linear), fade);
                        }
                    break;
                case TurnedItems t:
                    canvas.Save();
                    canvas.Translate((float)t.X, (float)t.Y);
                    canvas.RotateDegrees((float)t.Degrees);
                    for (int j = 0; j < t.Items.Count;)
                        j = t.Items[j] is GlyphRun ? DrawGlyphs(canvas, t.Items, j) : j + 1;
                    canvas.Restore();
                    break;
                case LinkItem link when withLinks:
                    var rect = SKRect.Create((float)link.X, (float)link.Y, (float)link.Width, (float)link.Height);
                    if (link.Target.StartsWith('#')) canvas.DrawLinkDestinationAnnotation(rect, link.Target[1..]);
                    else canvas.DrawUrlAnnotation(rect, link.Target);
                    break;
                case AnchorItem anchor when withLinks:
                    canvas.DrawNamedDestinationAnnotation(new SKPoint((float)anchor.X, (float)anchor.Y), anchor.Name);
                    break;
            }
        }
    }

    private SKFont FontFor(GlyphRun g)
    {
        var key = (g.Font.Face, g.Size, g.Font.FakeBold, g.Font.FakeItalic);
        if (!fonts.TryGetValue(key, out var font))
            fonts[key] = font = new SKFont(g.Font.Face.Typeface, (float)g.Size)
            {
                Embolden = g.Font.FakeBold,
                SkewX = g.Font.FakeItalic ? -0.2f : 0,
                Subpixel = true,
                LinearMetrics = true,
                Edging = SKFontEdging.Antialias,
                Hinting = SKFontHinting.None,
            };
        return font;
    }

    /// <summary>Draws the glyph runs of one colour that follow each other from <paramref name="first"/>
    /// as one text blob (a line's runs, usually several lines); returns the index after the last.</summary>
    private int DrawGlyphs(SKCanvas canvas, IReadOnlyList<PageItem> items, int first)
    {
        uint color = ((GlyphRun)items[first]).Color;
        using var builder = new SKTextBlobBuilder();
        int end = first;
        for (; end < items.Count && items[end] is GlyphRun g && g.Color == color; end++)
        {
            if (g.Glyphs.Length == 0) continue;
            // A run's glyphs share its baseline: horizontal positions are all the backend needs.
            var run = builder.AllocateHorizontalRun(FontFor(g), g.Glyphs.Length, (float)g.Y);
            g.Glyphs.AsSpan().CopyTo(run.Glyphs);
            var xs = run.Positions;
            float x = (float)g.X;
            for (int i = 0; i < g.Glyphs.Length; i++) xs[i] = x + g.Xs[i];
        }
        using var blob = builder.Build();
        if (blob == null) return end;
        paint.Style = SKPaintStyle.Fill;
        paint.Color = new SKColor(color);
        canvas.DrawText(blob, 0, 0, paint);
        return end;
    }
}
