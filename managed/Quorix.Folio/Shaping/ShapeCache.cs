using HarfBuzzSharp;

namespace Quorix.Folio.Shaping;

/// <summary>A piece of text shaped in one face, in font units; clusters count from the piece's start.</summary>
internal sealed class ShapedText
{
    public ShapedText(ushort[] glyphs, int[] clusters, int[] advances, int[] offsetsX, int[] offsetsY, bool rightToLeft)
    {
        Glyphs = glyphs;
        Clusters = clusters;
        Advances = advances;
        OffsetsX = offsetsX;
        OffsetsY = offsetsY;
        RightToLeft = rightToLeft;
    }

    public readonly ushort[] Glyphs;
    public readonly int[] Clusters;
    public readonly int[] Advances;
    public readonly int[] OffsetsX;
    public readonly int[] OffsetsY;
    public readonly bool RightToLeft;
}

/// <summary>Shaping results of one face by text and direction. Documents repeat the same words
/// thousands of times, and shaping is the costliest step of laying out a line.</summary>
internal sealed class ShapeCache
{
    // Pieces longer than this are rarely seen twice; shaping them is cheaper than keeping them.
    public const int MaxCachedLength = 48;
    // Keeps a long-lived font library from growing without bound on documents of unique words.
    private const int MaxEntries = 50_000;

    // Word processors set text without standard ligatures unless a run asks for them; with them widths and
    // line breaks would differ, and a ligature glyph has no text of its own in a PDF. Kerning stays
    // as the font has it.
    private static readonly Feature[] Features = { Feature.Parse("liga=0"), Feature.Parse("clig=0") };

    private readonly HarfBuzzSharp.Font shaper;
    // [0]: direction guessed from the text; [1]: neutral text forced right to left.
    private readonly Dictionary<string, ShapedText>[] entries = { new(), new() };
    private readonly Dictionary<string, ShapedText>.AlternateLookup<ReadOnlySpan<char>>[] lookups;
    private readonly Lock gate = new();

    public ShapeCache(HarfBuzzSharp.Font shaper)
    {
        this.shaper = shaper;
        lookups = new[] { entries[0].GetAlternateLookup<ReadOnlySpan<char>>(), entries[1].GetAlternateLookup<ReadOnlySpan<char>>() };
    }

    /// <summary>The glyphs of <paramref name="text"/>; shared, never to be changed by the caller.</summary>
    public ShapedText Get(ReadOnlySpan<char> text, bool forceRightToLeft)
    {
        if (text.Length > MaxCachedLength) return Shape(text, forceRightToLeft);
        int k = forceRightToLeft ? 1 : 0;
        lock (gate)
            if (lookups[k].TryGetValue(text, out var hit)) return hit;
        var shaped = Shape(text, forceRightToLeft);
        lock (gate)
        {
            if (entries[k].Count >= MaxEntries) entries[k].Clear();
            lookups[k][text] = shaped;
        }
        return shaped;
    }

    private ShapedText Shape(ReadOnlySpan<char> text, bool forceRightToLeft)
    {
        using var buffer = new HarfBuzzSharp.Buffer();
        buffer.AddUtf16(text);
        buffer.GuessSegmentProperties();
        if (forceRightToLeft) buffer.Direction = Direction.RightToLeft;
        shaper.Shape(buffer, Features);
        var infos = buffer.GetGlyphInfoSpan();
        var positions = buffer.GetGlyphPositionSpan();
        int n = infos.Length;
        var result = new ShapedText(new ushort[n], new int[n], new int[n], new int[n], new int[n], buffer.Direction == Direction.RightToLeft);
        for (int g = 0; g < n; g++)
        {
            result.Glyphs[g] = (ushort)infos[g].Codepoint;
            result.Clusters[g] = (int)infos[g].Cluster;
            result.Advances[g] = positions[g].XAdvance;
            result.OffsetsX[g] = positions[g].XOffset;
            result.OffsetsY[g] = positions[g].YOffset;
        }
        return result;
    }
}
