using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A row of a table; its cells in column order.</summary>
public sealed class Row : CompositeNode, IBlockFormatted
{
    internal FormatProps Props;
    internal PropBag? TblPrEx;

    /// <summary>A new empty row of doc, not yet in a table.</summary>
    public Row(DocumentBase doc) : this(doc, FormatProps.None) { }

    internal Row(DocumentBase? doc, FormatProps props) : base(doc) { Props = props; }

    ref FormatProps IBlockFormatted.Props => ref Props;

    Docx.PropsCodec IBlockFormatted.Codec => Docx.PropsCodec.TableRow;

    internal AttrSet Attrs
    {
        get => Props.Attrs;
        set => FormatProps.Put(ref Props, doc, value);
    }

    /// <summary>The markup kept beside the attributes (tracked insertion or deletion of the row, its change record).</summary>
    internal PropBag Kept => FormatProps.KeptOf(ref Props, true, PropOrder.TableRow)!;

    internal AttrHost Host => new(() => Attrs, v => Attrs = v, () => doc?.Cascade.Tables.RowOf(this) ?? AttrSet.Empty);

    /// <summary>Always Row.</summary>
    public override NodeType NodeType => NodeType.Row;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Row>(visitor, visitor.VisitRowStart(this), static (v, n) => v.VisitRowEnd(n));

    /// <summary>The row's cells.</summary>
    public CellCollection Cells => new CellCollection(this);

    /// <summary>The row's first cell; null when it has none.</summary>
    public Cell? FirstCell => (Cell?)GetChild(NodeType.Cell, 0, false);

    /// <summary>The row's last cell; null when it has none.</summary>
    public Cell? LastCell => (Cell?)GetChild(NodeType.Cell, -1, false);

    /// <summary>The table the row is in; null outside any.</summary>
    public Table? ParentTable => parent as Table;

    /// <summary>Whether the row is its table's first.</summary>
    public bool IsFirstRow => parent != null && PreviousSibling == null;

    /// <summary>Whether the row is its table's last.</summary>
    public bool IsLastRow => parent != null && NextSibling == null;

    /// <summary>The row's formatting.</summary>
    public RowFormat RowFormat => new RowFormat(this);

    internal override bool CanHold(Node child) => child is Cell || (child is OpaqueNode o && o.Kind == OpaqueKind.Block);

    internal override void AppendText(TextSink sb)
    {
        for (var n = first; n != null; n = n.next) n.AppendText(sb);
        sb.Append(ControlChar.CellChar);
    }

    internal int GridWidth()
    {
        int w = (Attrs.Int(FormatAttr.GridBefore) ?? 0) + (Attrs.Int(FormatAttr.GridAfter) ?? 0);
        for (var c = first; c != null; c = c.next)
            if (c is Cell cell) w += cell.Span;
        return w;
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var r = new Row(target, Props.Clone()) { TblPrEx = TblPrEx?.Clone(), XAttrs = XAttrs };
        if (deep) CloneChildrenInto(r, target);
        return r;
    }
}
