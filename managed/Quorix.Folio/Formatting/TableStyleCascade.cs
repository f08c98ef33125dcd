using Quorix.Folio.Tables;

namespace Quorix.Folio.Formatting;

/// <summary>The parts of a table a style may format apart, in the order their formatting applies:
/// later parts override earlier ones where both say something, rows over columns, corners over both.</summary>
[Flags]
internal enum TableArea : ushort
{
    None = 0,
    Band1Vertical = 1 << 0,
    Band2Vertical = 1 << 1,
    Band1Horizontal = 1 << 2,
    Band2Horizontal = 1 << 3,
    FirstColumn = 1 << 4,
    LastColumn = 1 << 5,
    FirstRow = 1 << 6,
    LastRow = 1 << 7,
    TopLeft = 1 << 8,
    TopRight = 1 << 9,
    BottomLeft = 1 << 10,
    BottomRight = 1 << 11,
}

/// <summary>Table styles resolved for the document's cascade: per style, its whole-table formatting and
/// that of each part, with the style's bases beneath; per cell, the layers its place in the table takes.</summary>
internal sealed class TableStyleCascade
{
    /// <summary>One style's formatting of one part of a table, by kind of properties.</summary>
    internal sealed record Layer(AttrSet Table, AttrSet Row, AttrSet Cell, AttrSet Paragraph, AttrSet Run)
    {
        public static readonly Layer Empty = new(AttrSet.Empty, AttrSet.Empty, AttrSet.Empty, AttrSet.Empty, AttrSet.Empty);

        public Layer Then(Layer over) => new(Table.Then(over.Table), Row.Then(over.Row), Cell.Then(over.Cell),
            Paragraph.Then(over.Paragraph), Run.Then(over.Run));
    }

    // The stored names of the parts, in TableArea's bit order.
    internal static readonly string[] PartNames =
    {
        "band1Vert", "band2Vert", "band1Horz", "band2Horz", "firstCol", "lastCol", "firstRow", "lastRow", "nwCell", "neCell", "swCell", "seCell",
    };

    private readonly DocumentBase doc;
    private long stamp = -1;
    private readonly Dictionary<Style, Layer[]> styles = new();
    private readonly Dictionary<(Style, TableArea), Layer> combined = new();

    public TableStyleCascade(DocumentBase doc) { this.doc = doc; }

    private void Check()
    {
        long now = FormatStamp.Current;
        if (now == stamp) return;
        styles.Clear();
        combined.Clear();
        stamp = now;
    }

    /// <summary>What a table inherits from its style.</summary>
    public AttrSet TableOf(Table t) => t.TableStyle is { } s ? Resolve(s, TableArea.None).Table : AttrSet.Empty;

    /// <summary>What a row inherits from its table's style.</summary>
    public AttrSet RowOf(Row r) => r.ParentTable is { TableStyle: { } s } t ? Resolve(s, AreaOf(t, r, null)).Row : AttrSet.Empty;

    /// <summary>What a cell inherits: its table's style for the cell's place in the table.</summary>
    public AttrSet CellOf(Cell c) => c.ParentRow is { ParentTable: { TableStyle: { } s } t } r ? Resolve(s, AreaOf(t, r, c)).Cell : AttrSet.Empty;

    /// <summary>What the table style gives paragraphs and runs of a cell; null outside a styled table.</summary>
    public Layer? TextOf(Cell c) => c.ParentRow is { ParentTable: { TableStyle: { } s } t } r ? Resolve(s, AreaOf(t, r, c)) : null;

    /// <summary>The style's layers over each other for the parts a cell is in.</summary>
    public Layer Resolve(Style style, TableArea area)
    {
        Check();
        if (combined.TryGetValue((style, area), out var layer)) return layer;
        var layers = LayersOf(style);
        layer = layers[0];
        for (int bit = 0; bit < PartNames.Length; bit++)
            if (((int)area & (1 << bit)) != 0) layer = layer.Then(layers[bit + 1]);
        return combined[(style, area)] = layer;
    }

    // The whole table first, then each part: the style's bases beneath the style.
    private Layer[] LayersOf(Style style)
    {
        if (styles.TryGetValue(style, out var layers)) return layers;
        layers = new Layer[PartNames.Length + 1];
        Array.Fill(layers, Layer.Empty);
        var chain = new List<Style> { style };
        chain.AddRange(style.Ancestors());
        for (int i = chain.Count - 1; i >= 0; i--)
        {
            var s = chain[i];
            layers[0] = layers[0].Then(Decode(s.Bag));
            foreach (var e in s.Bag.Items)
            {
                if (e.Local != "tblStylePr" || e.Children == null || !PropElement.IsMain(e.Ns)) continue;
                int at = Array.IndexOf(PartNames, e.Get("type"));
                if (at >= 0) layers[at + 1] = layers[at + 1].Then(Decode(new PropBag(PropOrder.Style, e.Children)));
            }
        }
        return styles[style] = layers;
    }

    private static Layer Decode(PropBag bag)
    {
        AttrSet Of(string local, PropOrder order, Docx.PropsCodec codec) =>
            bag.Find(local) is { Children: { } c } ? codec.Decode(new PropBag(order, c)).Attrs : AttrSet.Empty;
        return new Layer(Of("tblPr", PropOrder.Table, Docx.PropsCodec.Table), Of("trPr", PropOrder.TableRow, Docx.PropsCodec.TableRow),
            Of("tcPr", PropOrder.TableCell, Docx.PropsCodec.TableCell), Of("pPr", PropOrder.Paragraph, Docx.PropsCodec.Paragraph),
            Of("rPr", PropOrder.Run, Docx.PropsCodec.Run));
    }

    /// <summary>The parts of its table a row (and a cell of it, when given) is in, as the table's style options choose.</summary>
    internal static TableArea AreaOf(Table t, Row r, Cell? c)
    {
        var look = TableLook.Of(t.Host);
        var area = Along(look, r, t.Host.Get(FormatAttr.RowBandSize),
            (TableStyleOptions.FirstRow, TableStyleOptions.LastRow, TableStyleOptions.RowBands),
            (TableArea.FirstRow, TableArea.LastRow, TableArea.Band1Horizontal, TableArea.Band2Horizontal));
        if (c == null) return area;
        area |= Along(look, c, t.Host.Get(FormatAttr.ColumnBandSize),
            (TableStyleOptions.FirstColumn, TableStyleOptions.LastColumn, TableStyleOptions.ColumnBands),
            (TableArea.FirstColumn, TableArea.LastColumn, TableArea.Band1Vertical, TableArea.Band2Vertical));
        // Corners need both their row and their column chosen.
        if (r.IsFirstRow && c.IsFirstCell && look.HasFlag(TableStyleOptions.FirstRow) && look.HasFlag(TableStyleOptions.FirstColumn)) area |= TableArea.TopLeft;
        if (r.IsFirstRow && c.IsLastCell && look.HasFlag(TableStyleOptions.FirstRow) && look.HasFlag(TableStyleOptions.LastColumn)) area |= TableArea.TopRight;
        if (r.IsLastRow && c.IsFirstCell && look.HasFlag(TableStyleOptions.LastRow) && look.HasFlag(TableStyleOptions.FirstColumn)) area |= TableArea.BottomLeft;
        if (r.IsLastRow && c.IsLastCell && look.HasFlag(TableStyleOptions.LastRow) && look.HasFlag(TableStyleOptions.LastColumn)) area |= TableArea.BottomRight;
        return area;
    }

    // One direction, rows or columns: the first or last of them, else the band it falls in, counted
    // from the first after a first one formatted apart.
    private static TableArea Along(TableStyleOptions look, Node n, object? bandSize,
        (TableStyleOptions First, TableStyleOptions Last, TableStyleOptions Bands) options, (TableArea First, TableArea Last, TableArea Band1, TableArea Band2) parts)
    {
        bool hasFirst = look.HasFlag(options.First);
        var edge = TableArea.None;
        if (hasFirst && n.PreviousSibling == null) edge |= parts.First;
        if (look.HasFlag(options.Last) && n.NextSibling == null) edge |= parts.Last;
        if (edge != TableArea.None || !look.HasFlag(options.Bands)) return edge;
        int size = Math.Max(1, bandSize as int? ?? 1);
        int index = IndexIn(n) - (hasFirst ? 1 : 0);
        return index / size % 2 == 0 ? parts.Band1 : parts.Band2;
    }

    private static int IndexIn(Node n)
    {
        int i = 0;
        for (var p = n.PreviousSibling; p != null; p = p.PreviousSibling) i++;
        return i;
    }
}
