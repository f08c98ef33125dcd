using Quorix.Folio.Formatting;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Layout;

/// <summary>One side's border of a table: width in points and colour.</summary>
internal readonly record struct Edge(double Width, uint Color);

internal sealed record TableEdges(Edge? Top, Edge? Left, Edge? Bottom, Edge? Right, Edge? InsideH, Edge? InsideV);

/// <summary>A laid-out cell: its column position, content and look.</summary>
internal sealed record CellBox(double X, double Width, List<Block> Content, uint? Fill, bool MergedIntoAbove, CellVerticalAlignment VAlign)
{
    /// <summary>The first cell of a vertical merge: its content may run down over the merged rows.</summary>
    public bool MergesDown { get; init; }
}

/// <summary>A table row: cells side by side. A row that may break across pages splits between the
/// lines of its cells.</summary>
internal sealed class TableRowBlock : Block
{
    public const double CellPaddingX = 5.4;
    public List<CellBox> Cells = new();
    public TableEdges Edges = null!;
    public bool FirstOfTable;
    public bool LastOfTable;
    public bool AllowBreak = true;
    public double MinHeight;
    /// <summary>The table's heading rows, repeated at the top of each page the table continues on.</summary>
    public List<TableRowBlock>? Headers;
    public bool IsHeader;

    public void Measure()
    {
        Height = Math.Max(MinHeight, Cells.Where(c => !c.MergesDown).Select(c => Stack.Height(c.Content)).DefaultIfEmpty(0).Max());
        var notes = Cells.SelectMany(c => c.Content).Where(b => b.Notes != null).SelectMany(b => b.Notes!).ToList();
        Notes = notes.Count > 0 ? notes : null;
    }

    public override void Emit(List<PageItem> page, double x, double y)
    {
        foreach (var c in Cells)
        {
            if (c.Fill is { } fill) page.Add(new FillItem(x + c.X, y, c.Width, Height, fill));
            double offset = c.VAlign switch
            {
                CellVerticalAlignment.Center => (Height - Stack.Height(c.Content)) / 2,
                CellVerticalAlignment.Bottom => Height - Stack.Height(c.Content),
                _ => 0,
            };
            Stack.Emit(c.Content, page, x + c.X + CellPaddingX, y + offset);
        }
        for (int i = 0; i < Cells.Count; i++)
        {
            var c = Cells[i];
            double x1 = x + c.X, x2 = x1 + c.Width;
            if (!c.MergedIntoAbove && (FirstOfTable ? Edges.Top : Edges.InsideH) is { } top) Line(page, x1, y, x2, y, top);
            if ((LastOfTable ? Edges.Bottom : null) is { } bottom) Line(page, x1, y + Height, x2, y + Height, bottom);
            if ((i == 0 ? Edges.Left : Edges.InsideV) is { } left) Line(page, x1, y, x1, y + Height, left);
            if (i == Cells.Count - 1 && Edges.Right is { } right) Line(page, x2, y, x2, y + Height, right);
        }
    }

    private static void Line(List<PageItem> page, double x1, double y1, double x2, double y2, Edge e) =>
        page.Add(new LineItem(x1, y1, x2, y2, e.Width, e.Color));

    public override (Block? Head, Block? Tail) Split(double available)
    {
        if (!AllowBreak) return (null, this);
        var head = Copy();
        var tail = Copy();
        bool anyHead = false, anyTail = false;
        foreach (var c in Cells)
        {
            double h = 0;
            int n = 0;
            while (n < c.Content.Count && h + c.Content[n].Total <= available + 0.01) h += c.Content[n++].Total;
            anyHead |= n > 0;
            anyTail |= n < c.Content.Count;
            head.Cells.Add(c with { Content = c.Content.GetRange(0, n) });
            tail.Cells.Add(c with { Content = c.Content.GetRange(n, c.Content.Count - n), MergedIntoAbove = false });
        }
        if (!anyHead || !anyTail) return (null, this);
        head.LastOfTable = true; // close the part left on this page
        tail.FirstOfTable = true;
        tail.MinHeight = 0;
        head.MinHeight = 0;
        head.Measure();
        tail.Measure();
        return (head, tail);
    }

    /// <summary>A heading row drawn again on a later page: the table's top border above it.</summary>
    public TableRowBlock AsRepeat()
    {
        var r = Copy();
        r.Cells.AddRange(Cells);
        r.Height = Height;
        r.FirstOfTable = true;
        r.LastOfTable = false;
        r.SpaceBefore = 0;
        return r;
    }

    private TableRowBlock Copy()
    {
        var r = new TableRowBlock
        {
            Edges = Edges, FirstOfTable = FirstOfTable, LastOfTable = LastOfTable, AllowBreak = AllowBreak, MinHeight = MinHeight,
            KeepWithNext = KeepWithNext, Headers = Headers, IsHeader = IsHeader,
        };
        r.Nodes.AddRange(Nodes);
        return r;
    }
}

/// <summary>Lays out a table: column widths from its grid, one block per row.</summary>
internal static class TableLayout
{
    public static List<Block> Lay(LayoutContext ctx, Table table, double width)
    {
        var columns = ColumnWidths(table, width);
        var colX = new double[columns.Length + 1];
        for (int i = 0; i < columns.Length; i++) colX[i + 1] = colX[i] + columns[i];
        double shift = table.Alignment switch
        {
            TableAlignment.Center => (width - colX[^1]) / 2,
            TableAlignment.Right => width - colX[^1],
            _ => 0,
        };
        var edges = Edges(table);
        var blocks = new List<Block>();
        var headers = new List<TableRowBlock>();
        bool inHeading = true;
        foreach (var row in table.Rows)
        {
            // Heading rows count only as an unbroken run at the top of the table.
            inHeading &= row.RowFormat.HeadingFormat;
            var block = new TableRowBlock
            {
                Edges = edges, FirstOfTable = row.IsFirstRow, LastOfTable = row.IsLastRow,
                IsHeader = inHeading, KeepWithNext = inHeading, Headers = inHeading ? null : headers,
            };
            if (inHeading) headers.Add(block);
            var rf = row.RowFormat;
            block.AllowBreak = rf.AllowBreakAcrossPages;
            if (rf.HeightRule != HeightRule.Auto) block.MinHeight = rf.Height;
            int col = Math.Min(row.Attrs.Int(FormatAttr.GridBefore) ?? 0, columns.Length);
            block.Nodes.Add(table);
            block.Nodes.Add(row);
            foreach (var cell in row.Cells)
            {
                int span = Math.Max(1, Math.Min(cell.Span, columns.Length - col));
                if (col >= columns.Length) break;
                double x = shift + colX[col], w = colX[col + span] - colX[col];
                var merge = cell.CellFormat.VerticalMerge;
                var content = merge == CellMerge.Previous ? new List<Block>() : ctx.Blocks(cell, Math.Max(1, w - 2 * TableRowBlock.CellPaddingX));
                var fillHex = cell.CellFormat.Shading.BackgroundPatternColorHex;
                uint? fill = fillHex is "auto" or "" ? null : TextStyle.ParseColor(fillHex);
                block.Cells.Add(new CellBox(x, w, content, fill, merge == CellMerge.Previous, cell.CellFormat.VerticalAlignment) { MergesDown = merge == CellMerge.First });
                block.Nodes.Add(cell);
                foreach (var b in content) block.Nodes.AddRange(b.Nodes);
                col += span;
            }
            block.Measure();
            if (rf.HeightRule == HeightRule.Exactly) block.Height = rf.Height;
            blocks.Add(block);
        }
        FitMergedCells(blocks.Cast<TableRowBlock>().ToList());
        return blocks;
    }

    /// <summary>A vertically merged cell's content spans its rows; the last of them grows when the
    /// rows together are not tall enough for it.</summary>
    private static void FitMergedCells(List<TableRowBlock> rows)
    {
        for (int r = 0; r < rows.Count; r++)
        {
            foreach (var cell in rows[r].Cells.Where(c => c.MergesDown))
            {
                int last = r;
                while (last + 1 < rows.Count && rows[last + 1].Cells.Any(c => c.MergedIntoAbove && Math.Abs(c.X - cell.X) < 0.01)) last++;
                double have = 0;
                for (int i = r; i <= last; i++) have += rows[i].Height;
                double need = Stack.Height(cell.Content);
                if (need > have) rows[last].Height += need - have;
            }
        }
    }

    /// <summary>Widths from the table's grid; without one, from the first row's cell widths, and
    /// otherwise the columns share the available width equally.</summary>
    internal static double[] ColumnWidths(Table table, double width)
    {
        int n = Math.Max(1, table.GridColumns());
        if (table.Grid.Count == n && table.Grid.Sum() > 0)
            return table.Grid.Select(w => Units.TwipsToPoints(w)).ToArray();
        var first = table.FirstRow;
        if (first != null && first.Cells.Count == n && first.Cells.Cast<Cell>().All(c => c.CellFormat.Width > 0))
            return first.Cells.Cast<Cell>().Select(c => c.CellFormat.Width).ToArray();
        return Enumerable.Repeat(width / n, n).ToArray();
    }

    private static TableEdges Edges(Table table)
    {
        // The table's own borders over its style's, side by side.
        var host = table.Host;
        Edge? Of(FormatAttr a, FormatAttr? alt = null) => Side(host.Get(a) as BorderLine ?? (alt is { } b ? host.Get(b) as BorderLine : null));
        return new TableEdges(Of(FormatAttr.BorderTop), Of(FormatAttr.BorderLeft, FormatAttr.BorderStart), Of(FormatAttr.BorderBottom),
            Of(FormatAttr.BorderRight, FormatAttr.BorderEnd), Of(FormatAttr.BorderInsideH), Of(FormatAttr.BorderInsideV));
    }

    internal static Edge? Side(BorderLine? line)
    {
        if (line is not { Visible: true }) return null;
        // Widths are stored in eighths of a point.
        double w = (line.Size ?? 4) / 8.0;
        return new Edge(Math.Max(0.25, w), TextStyle.ParseColor(line.Color));
    }

    internal static Edge? Side(PropElement? borders, string side)
    {
        var e = borders?.Child(side);
        var val = e?.Get("val");
        if (e == null || val is null or "nil" or "none") return null;
        // Widths are stored in eighths of a point.
        double w = (Units.ParseInt(e.Get("sz")) ?? 4) / 8.0;
        return new Edge(Math.Max(0.25, w), TextStyle.ParseColor(e.Get("color")));
    }
}
