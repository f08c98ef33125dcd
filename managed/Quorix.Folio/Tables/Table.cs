using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A table: rows of cells, each cell a small story of paragraphs and tables.</summary>
public sealed class Table : CompositeNode
{
    internal readonly PropBag TblPr;
    // Column widths in twips as read; rebuilt on save when the cell count no longer matches.
    internal List<int> Grid = new();
    internal List<PropElement.Attr>? GridExtra;

    /// <summary>A new empty table of doc, not yet inserted.</summary>
    public Table(DocumentBase doc) : this(doc, new PropBag(PropOrder.Table)) { }

    internal Table(DocumentBase? doc, PropBag tblPr) : base(doc) { TblPr = tblPr; }

    /// <summary>Always Table.</summary>
    public override NodeType NodeType => NodeType.Table;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Table>(visitor, visitor.VisitTableStart(this), static (v, n) => v.VisitTableEnd(n));

    /// <summary>The table's rows.</summary>
    public RowCollection Rows => new RowCollection(this);

    /// <summary>The table's first row; null when it has none.</summary>
    public Row? FirstRow => (Row?)GetChild(NodeType.Row, 0, false);

    /// <summary>The table's last row; null when it has none.</summary>
    public Row? LastRow => (Row?)GetChild(NodeType.Row, -1, false);

    internal override bool CanHold(Node child) => child is Row || (child is OpaqueNode o && o.Kind == OpaqueKind.Block);

    /// <summary>The name of the table's style.</summary>
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

    /// <summary>The built-in identifier of the table's style.</summary>
    public StyleIdentifier StyleIdentifier
    {
        get => doc?.Styles.FindById(TblPr.Val("tblStyle"))?.StyleIdentifier ?? StyleIdentifier.TableNormal;
        set => TblPr.SetVal("tblStyle", doc!.Styles.GetOrCreateBuiltIn(value).StyleId);
    }

    /// <summary>How the table is placed between the margins.</summary>
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

    /// <summary>Removes the table's own borders, leaving what its style gives.</summary>
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
