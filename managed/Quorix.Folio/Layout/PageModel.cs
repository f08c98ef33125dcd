using Quorix.Folio.Fonts;

namespace Quorix.Folio.Layout;

/// <summary>What a page shows, in points from the page's top-left corner. Renderers draw these and
/// nothing else; they never look at the document.</summary>
internal abstract record PageItem
{
    public abstract PageItem Moved(double dx, double dy);
}

/// <summary>Shaped glyphs in one face and size on one baseline; <see cref="Xs"/> are relative to <see cref="X"/>.</summary>
internal sealed record GlyphRun(ResolvedFont Font, double Size, ushort[] Glyphs, float[] Xs, double X, double Y, uint Color, string Text) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

/// <summary>A straight line: underlines, strike-through, table and paragraph borders.</summary>
internal sealed record LineItem(double X1, double Y1, double X2, double Y2, double Width, uint Color) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X1 = X1 + dx, Y1 = Y1 + dy, X2 = X2 + dx, Y2 = Y2 + dy };
}

internal sealed record FillItem(double X, double Y, double Width, double Height, uint Color) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

/// <summary>A picture; a washed-out one is drawn faded, as a watermark picture is.</summary>
internal sealed record ImageItem(double X, double Y, double Width, double Height, byte[] Bytes, bool Washout) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

/// <summary>Items placed relative to (<see cref="X"/>, <see cref="Y"/>) and turned about that point
/// clockwise by <see cref="Degrees"/>: a watermark's slanted text.</summary>
internal sealed record TurnedItems(double X, double Y, double Degrees, IReadOnlyList<PageItem> Items) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

/// <summary>A clickable area: an external address, or (starting with '#') a bookmark of the document.</summary>
internal sealed record LinkItem(double X, double Y, double Width, double Height, string Target) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

/// <summary>Where a line of text sits; the glyph runs after it, up to the next one, are its spans.
/// Draws nothing.</summary>
internal sealed record LineBox(double X, double Y, double Width, double Height) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

/// <summary>A named place links may point to.</summary>
internal sealed record AnchorItem(double X, double Y, string Name) : PageItem
{
    public override PageItem Moved(double dx, double dy) => this with { X = X + dx, Y = Y + dy };
}

internal sealed class LayoutPage
{
    public LayoutPage(double width, double height, int sectionIndex)
    {
        Width = width;
        Height = height;
        SectionIndex = sectionIndex;
    }

    public double Width { get; }
    public double Height { get; }
    public int SectionIndex { get; }
    /// <summary>The number the page shows (PAGE), after restarts.</summary>
    public int Number { get; set; }
    /// <summary>The number as page fields write it, in the section's page number style.</summary>
    public string Label { get; set; } = "";
    public bool Landscape => Width > Height;
    public List<PageItem> Items { get; } = new();
}
