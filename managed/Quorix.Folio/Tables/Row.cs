using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A row of a table; its cells in column order.</summary>
public sealed class Row : CompositeNode
{
    internal readonly PropBag TrPr;
    internal PropBag? TblPrEx;

    public Row(DocumentBase doc) : this(doc, new PropBag(PropOrder.TableRow)) { }

    internal Row(DocumentBase? doc, PropBag trPr) : base(doc) { TrPr = trPr; }

    public override NodeType NodeType => NodeType.Row;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Row>(visitor, visitor.VisitRowStart(this), static (v, n) => v.VisitRowEnd(n));

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
            if (c is Cell cell) w += cell.Span;
        return w;
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var r = new Row(target, TrPr.Clone()) { TblPrEx = TblPrEx?.Clone(), XAttrs = XAttrs };
        if (deep) CloneChildrenInto(r, target);
        return r;
    }
}
