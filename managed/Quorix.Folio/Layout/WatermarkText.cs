using HarfBuzzSharp;

namespace Quorix.Folio.Layout;

/// <summary>A text watermark's glyphs: the text set in its font as large as fits its box, centred on
/// the box and turned about its centre, in its colour with its opacity.</summary>
internal static class WatermarkText
{
    /// <summary>Items relative to the box's top-left corner.</summary>
    public static List<PageItem> Items(LayoutContext ctx, WatermarkMark mark)
    {
        var font = ctx.Font(mark.FontFamily, false, false);
        using var buffer = new HarfBuzzSharp.Buffer();
        buffer.AddUtf16(mark.Text!);
        buffer.GuessSegmentProperties();
        font.Face.Shaper.Shape(buffer);
        var infos = buffer.GetGlyphInfoSpan();
        var positions = buffer.GetGlyphPositionSpan();
        double em = 0;
        foreach (var p in positions) em += p.XAdvance;
        em /= font.Face.UnitsPerEm;
        // Word art stretches the text over the box; without stretching, the size that fills its width or height.
        double size = Math.Min(mark.Height / (font.Face.Ascent + font.Face.Descent), em > 0 ? mark.Width / em : mark.Height);
        double scale = size / font.Face.UnitsPerEm, x = -em * size / 2;
        var glyphs = new ushort[infos.Length];
        var xs = new float[infos.Length];
        for (int i = 0; i < infos.Length; i++)
        {
            glyphs[i] = (ushort)infos[i].Codepoint;
            xs[i] = (float)(x + positions[i].XOffset * scale);
            x += positions[i].XAdvance * scale;
        }
        // The baseline sits so that the glyphs' full height is centred.
        double baseline = (font.Face.Ascent - font.Face.Descent) * size / 2;
        var run = new GlyphRun(font, size, glyphs, xs, 0, baseline, mark.Argb, mark.Text!);
        return new List<PageItem> { new TurnedItems(mark.Width / 2, mark.Height / 2, mark.Rotation, new[] { run }) };
    }
}
