namespace Quorix.Folio.Layout;

/// <summary>The unit of vertical layout: a line of a paragraph or a row of a table. Pages break only
/// between blocks, or inside a block that knows how to split.</summary>
internal abstract class Block
{
    public double Height;
    /// <summary>Dropped when the block opens a page reached by the flow of text, kept after a hard break.</summary>
    public double SpaceBefore;
    /// <summary>May hang below the bottom margin: only the content has to fit.</summary>
    public double SpaceAfter;
    /// <summary>No page break between this block and the next.</summary>
    public bool KeepWithNext;
    public bool BreakBefore;
    public bool ColumnBreakBefore;
    /// <summary>The model nodes whose content this block shows, for locating nodes on pages.</summary>
    public List<Node> Nodes = new();
    /// <summary>Footnotes and endnotes referenced from this block, in order.</summary>
    public List<Notes.Footnote>? Notes;
    /// <summary>Floating pictures, text boxes and watermark text (with their content) anchored in this block's paragraph, placed with it.</summary>
    public List<(Node Node, FloatPlacement Placement, List<PageItem>? Content)>? Floats;

    public double Total => SpaceBefore + Height + SpaceAfter;

    /// <summary>Adds the block's items with its content's top-left corner at (x, y).</summary>
    public abstract void Emit(List<PageItem> page, double x, double y);

    /// <summary>A first part at most <paramref name="available"/> high and the rest, or null for the
    /// first part when nothing useful fits.</summary>
    public virtual (Block? Head, Block? Tail) Split(double available) => (null, this);
}

/// <summary>A block with fixed items, relative to its content's top-left corner.</summary>
internal sealed class ItemsBlock : Block
{
    public readonly List<PageItem> Items = new();
    /// <summary>The paragraph line this block is, for laying it out again beside a floating shape; null for other blocks.</summary>
    public ParagraphLayout.LineOrigin? Origin;
    /// <summary>Laid out again where it is placed: the paginator takes it as it is.</summary>
    public bool Relaid;

    public override void Emit(List<PageItem> page, double x, double y)
    {
        foreach (var item in Items) page.Add(item.Moved(x, y));
    }
}

/// <summary>Stacks blocks into a column of known width without page breaks (cells, headers):
/// spacing before the first and after the last block counts, as it does inside a cell.</summary>
internal static class Stack
{
    public static double Height(IEnumerable<Block> blocks) => blocks.Sum(b => b.Total);

    public static void Emit(IEnumerable<Block> blocks, List<PageItem> page, double x, double y)
    {
        foreach (var b in blocks)
        {
            y += b.SpaceBefore;
            b.Emit(page, x, y);
            y += b.Height + b.SpaceAfter;
        }
    }
}
