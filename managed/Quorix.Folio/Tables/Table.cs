using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

public enum CellMerge
{
    None = 0,
    First = 1,
    Previous = 2,
}

public enum CellVerticalAlignment
{
    Top = 0,
    Center = 1,
    Bottom = 2,
}

public enum TableAlignment
{
    Left = 0,
    Center = 1,
    Right = 2,
}

/// <summary>A table: rows of cells, each cell a small story of paragraphs and tables.</summary>
public sealed class Table : CompositeNode
{
    internal readonly PropBag TblPr;
    // Column widths in twips as read; rebuilt on save when the cell count no longer matches.
    internal List<int> Grid = new();
    internal List<PropElement.Attr>? GridExtra;

    public Table(DocumentBase doc) : this(doc, new PropBag(PropOrder.Table)) { }

    internal Table(DocumentBase? doc, PropBag tblPr) : base(doc) { TblPr = tblPr; }

    public override NodeType NodeType => NodeType.Table;

    public RowCollection Rows => new RowCollection(this);

    public Row? FirstRow => (Row?)GetChild(NodeType.Row, 0, false);

    public Row? LastRow => (Row?)GetChild(NodeType.Row, -1, false);

    internal override bool CanHold(Node child) => child is Row || (child is OpaqueNode o && o.Kind == OpaqueKind.Block);

    public string StyleName
    {
        get => doc?.Styles.NameOfId(TblPr.Val("tblStyle")) ?? "Normal Table";
        set
        {
            var s = doc?.Styles[value] ?? throw new ArgumentException($"There is no style named '{value}'.", nameof(value));
            if (s.Type != StyleType.Table) throw new ArgumentException($"The style '{value}' is not a table style.", nameof(value));
            TblPr.SetVal("tblStyle", s.StyleId);
        }
    }

    public StyleIdentifier StyleIdentifier
    {
        get => doc?.Styles.FindById(TblPr.Val("tblStyle"))?.StyleIdentifier ?? StyleIdentifier.TableNormal;
        set => TblPr.SetVal("tblStyle", doc!.Styles.GetOrCreateBuiltIn(value).StyleId);
    }

    public TableAlignment Alignment
    {
        get => TblPr.Val("jc") switch { "center" => TableAlignment.Center, "right" or "end" => TableAlignment.Right, _ => TableAlignment.Left };
        set => TblPr.SetVal("jc", value switch
        {
            TableAlignment.Left => "left",
            TableAlignment.Center => "center",
            TableAlignment.Right => "right",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Sets all outer and inner borders of the table.</summary>
    public void SetBorders(LineStyle lineStyle, double lineWidth)
    {
        var e = TblPr.GetOrAdd("tblBorders");
        e.Children ??= new List<PropElement>();
        var bag = new PropBag(PropOrder.Borders, e.Children);
        foreach (var side in new[] { "top", "left", "bottom", "right", "insideH", "insideV" })
        {
            var b = new Border(bag, side) { LineStyle = lineStyle };
            if (lineStyle != LineStyle.None) b.LineWidth = lineWidth;
        }
    }

    public void ClearBorders() => TblPr.Remove("tblBorders");

    internal override void AppendText(StringBuilder sb)
    {
        for (var n = first; n != null; n = n.next) n.AppendText(sb);
    }

    /// <summary>Cell count of the widest row, merged cells counted by the columns they span.</summary>
    internal int GridColumns()
    {
        int max = 0;
        for (var r = first; r != null; r = r.next)
            if (r is Row row) max = Math.Max(max, row.GridWidth());
        return max;
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var t = new Table(target, TblPr.Clone()) { Grid = new List<int>(Grid), GridExtra = GridExtra?.ToList() };
        if (deep) CloneChildrenInto(t, target);
        return t;
    }
}

public sealed class Row : CompositeNode
{
    internal readonly PropBag TrPr;
    internal PropBag? TblPrEx;

    public Row(DocumentBase doc) : this(doc, new PropBag(PropOrder.TableRow)) { }

    internal Row(DocumentBase? doc, PropBag trPr) : base(doc) { TrPr = trPr; }

    public override NodeType NodeType => NodeType.Row;

    public CellCollection Cells => new CellCollection(this);

    public Cell? FirstCell => (Cell?)GetChild(NodeType.Cell, 0, false);

    public Cell? LastCell => (Cell?)GetChild(NodeType.Cell, -1, false);

    public Table? ParentTable => parent as Table;

    public bool IsFirstRow => parent != null && PreviousSibling == null;

    public bool IsLastRow => parent != null && NextSibling == null;

    public RowFormat RowFormat => new RowFormat(TrPr);

    internal override bool CanHold(Node child) => child is Cell || (child is OpaqueNode o && o.Kind == OpaqueKind.Block);

    internal override void AppendText(StringBuilder sb)
    {
        for (var n = first; n != null; n = n.next) n.AppendText(sb);
        sb.Append(ControlChar.CellChar);
    }

    internal int GridWidth()
    {
        int w = (TrPr.Int("gridBefore") ?? 0) + (TrPr.Int("gridAfter") ?? 0);
        for (var c = first; c != null; c = c.next)
            if (c is Cell cell && cell.CellFormat.HorizontalMerge != CellMerge.Previous) w += cell.Span;
        return w;
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var r = new Row(target, TrPr.Clone()) { TblPrEx = TblPrEx?.Clone(), XAttrs = XAttrs };
        if (deep) CloneChildrenInto(r, target);
        return r;
    }
}

public sealed class Cell : CompositeNode
{
    internal readonly PropBag TcPr;
    internal CellMerge HMerge;

    public Cell(DocumentBase doc) : this(doc, new PropBag(PropOrder.TableCell)) { }

    internal Cell(DocumentBase? doc, PropBag tcPr) : base(doc) { TcPr = tcPr; }

    public override NodeType NodeType => NodeType.Cell;

    public ParagraphCollection Paragraphs => new ParagraphCollection(this);

    public TableCollection Tables => new TableCollection(this);

    public Paragraph? FirstParagraph => (Paragraph?)GetChild(NodeType.Paragraph, 0, false);

    public Paragraph? LastParagraph => (Paragraph?)GetChild(NodeType.Paragraph, -1, false);

    public Row? ParentRow => parent as Row;

    public bool IsFirstCell => parent != null && PreviousSibling == null;

    public bool IsLastCell => parent != null && NextSibling == null;

    public CellFormat CellFormat => new CellFormat(this);

    internal int Span => Math.Max(1, TcPr.Int("gridSpan") ?? 1);

    internal override bool CanHold(Node child) => BlockRules.IsBlock(child);

    public Paragraph EnsureMinimum()
    {
        if (last is Paragraph p) return p;
        return (Paragraph)AppendChild(new Paragraph(doc!));
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var c = new Cell(target, TcPr.Clone()) { HMerge = HMerge };
        if (deep) CloneChildrenInto(c, target);
        return c;
    }
}

public sealed class CellFormat
{
    private readonly Cell cell;

    internal CellFormat(Cell cell) { this.cell = cell; }

    private PropBag Bag => cell.TcPr;

    /// <summary>Cells merged across: the first cell of the group, then the cells it swallows.</summary>
    public CellMerge HorizontalMerge
    {
        get => cell.HMerge;
        set
        {
            if (!Enum.IsDefined(value)) throw new ArgumentOutOfRangeException(nameof(value));
            cell.HMerge = value;
        }
    }

    public CellMerge VerticalMerge
    {
        get
        {
            var e = Bag.Find("vMerge");
            if (e == null) return CellMerge.None;
            return e.Get("val") == "restart" ? CellMerge.First : CellMerge.Previous;
        }
        set
        {
            switch (value)
            {
                case CellMerge.None: Bag.Remove("vMerge"); break;
                case CellMerge.First: Bag.GetOrAdd("vMerge").Set("val", "restart"); break;
                case CellMerge.Previous: Bag.GetOrAdd("vMerge").Attrs = null; break;
                default: throw new ArgumentOutOfRangeException(nameof(value));
            }
        }
    }

    /// <summary>Preferred width in points; 0 when the cell has none.</summary>
    public double Width
    {
        get
        {
            var e = Bag.Find("tcW");
            if (e == null || e.Get("type") is "pct" or "auto" or "nil") return 0;
            return Units.TwipsToPoints(Units.ParseInt(e.Get("w")) ?? 0);
        }
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            Bag.GetOrAdd("tcW").Set("w", Units.PointsToTwips(value)).Set("type", "dxa");
        }
    }

    public CellVerticalAlignment VerticalAlignment
    {
        get => Bag.Val("vAlign") switch { "center" => CellVerticalAlignment.Center, "bottom" => CellVerticalAlignment.Bottom, _ => CellVerticalAlignment.Top };
        set => Bag.SetVal("vAlign", value switch
        {
            CellVerticalAlignment.Top => "top",
            CellVerticalAlignment.Center => "center",
            CellVerticalAlignment.Bottom => "bottom",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    public Shading Shading => new Shading(Bag);

    internal void CopyFrom(CellFormat other)
    {
        cell.HMerge = other.cell.HMerge;
        Bag.Clear();
        Bag.MergeFrom(other.Bag);
    }

    public void ClearFormatting()
    {
        cell.HMerge = CellMerge.None;
        Bag.Clear();
    }
}

public sealed class RowFormat
{
    private readonly PropBag bag;

    internal RowFormat(PropBag trPr) { bag = trPr; }

    /// <summary>Height in points; 0 means automatic.</summary>
    public double Height
    {
        get => Units.TwipsToPoints(Units.ParseInt(bag.Find("trHeight")?.Get("val")) ?? 0);
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            if (value == 0) bag.Remove("trHeight");
            else bag.GetOrAdd("trHeight").Set("val", Units.PointsToTwips(value));
        }
    }

    public HeightRule HeightRule
    {
        get => bag.Find("trHeight") is not { } e ? HeightRule.Auto : e.Get("hRule") == "exact" ? HeightRule.Exactly : HeightRule.AtLeast;
        set
        {
            if (value == HeightRule.Auto) { bag.Remove("trHeight"); return; }
            bag.GetOrAdd("trHeight").Set("hRule", value == HeightRule.Exactly ? "exact" : "atLeast");
        }
    }

    /// <summary>The row repeats at the top of each page.</summary>
    public bool HeadingFormat
    {
        get => bag.Toggle("tblHeader") ?? false;
        set { if (value) bag.SetToggle("tblHeader", true); else bag.Remove("tblHeader"); }
    }

    public bool AllowBreakAcrossPages
    {
        get => !(bag.Toggle("cantSplit") ?? false);
        set { if (value) bag.Remove("cantSplit"); else bag.SetToggle("cantSplit", true); }
    }

    internal void CopyFrom(RowFormat other)
    {
        bag.Clear();
        bag.MergeFrom(other.bag);
    }

    public void ClearFormatting() => bag.Clear();
}
