namespace Quorix.Folio.Shaping;

/// <summary>One glyph a shaper placed: which glyph of the font, for which characters, and where.</summary>
public sealed class Glyph
{
    /// <summary>Describes a placed glyph.</summary>
    public Glyph(int glyphId, int cluster, double xAdvance, double yAdvance, double xOffset, double yOffset)
    {
        GlyphId = glyphId;
        Cluster = cluster;
        XAdvance = xAdvance;
        YAdvance = yAdvance;
        XOffset = xOffset;
        YOffset = yOffset;
    }

    /// <summary>The glyph's index in the font.</summary>
    public int GlyphId { get; }

    /// <summary>The index, in the shaped text, of the first character the glyph stands for.</summary>
    public int Cluster { get; }

    /// <summary>How far the pen moves across after the glyph, in font units.</summary>
    public double XAdvance { get; }

    /// <summary>How far the pen moves up after the glyph, in font units.</summary>
    public double YAdvance { get; }

    /// <summary>How far the glyph is drawn across from the pen, in font units.</summary>
    public double XOffset { get; }

    /// <summary>How far the glyph is drawn up from the pen, in font units.</summary>
    public double YOffset { get; }
}

/// <summary>Turns text into placed glyphs for one font face: <see cref="Shape"/> sets a text, and
/// <see cref="GetGlyph"/> reads its glyphs.</summary>
public interface ITextShaper
{
    /// <summary>Shapes <paramref name="text"/> in the face; returns how many glyphs it gave.</summary>
    int Shape(string text, bool rightToLeft);

    /// <summary>A glyph of the text shaped last, by its position in visual order from 0.</summary>
    Glyph GetGlyph(int index);
}

/// <summary>Makes text shapers for font faces; lets an application bring a shaping engine for scripts
/// that need one. Layout places glyphs by the engine's own rules for now, so nothing asks it yet.</summary>
public interface ITextShaperFactory
{
    /// <summary>A shaper for the face at <paramref name="fontIndex"/> of the font file.</summary>
    ITextShaper GetTextShaper(string fontFileName, int fontIndex);
}
