using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A cell of a row: a small story of paragraphs and tables.</summary>
public sealed class Cell : CompositeNode, IBlockFormatted
{
    internal FormatProps Props;
    internal CellMerge HMerge;

    /// <summary>A new empty cell of doc, not yet in a row.</summary>
    public Cell(DocumentBase doc) : this(doc, FormatProps.None) { }

    internal Cell(DocumentBase? doc, FormatProps props) : base(doc) { Props = props; }

    ref FormatProps IBlockFormatted.Props => ref Props;

    Docx.PropsCodec IBlockFormatted.Codec => Docx.PropsCodec.TableCell;

    internal AttrSet Attrs
    {
        get => Props.Attrs;
        set => FormatProps.Put(ref Props, doc, value);
    }

    /// <summary>The cell's own formatting over what its table's style gives the cell's place in the table.</summary>
    internal AttrHost Host => new(() => Attrs, v => Attrs = v, () => doc?.Cascade.Tables.CellOf(this) ?? AttrSet.Empty);

    /// <summary>Always Cell.</summary>
    public override NodeType NodeType => NodeType.Cell;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Cell>(visitor, visitor.VisitCellStart(this), static (v, n) => v.VisitCellEnd(n));

    /// <summary>The paragraphs directly in the cell.</summary>
    public ParagraphCollection Paragraphs => new ParagraphCollection(this);

    /// <summary>The tables nested directly in the cell.</summary>
    public TableCollection Tables => new TableCollection(this);

    /// <summary>The cell's first paragraph; null when it has none.</summary>
    public Paragraph? FirstParagraph => (Paragraph?)GetChild(NodeType.Paragraph, 0, false);

    /// <summary>The cell's last paragraph; null when it has none.</summary>
    public Paragraph? LastParagraph => (Paragraph?)GetChild(NodeType.Paragraph, -1, false);

    /// <summary>The row the cell is in; null outside any.</summary>
    public Row? ParentRow => parent as Row;

    /// <summary>Whether the cell is the first of its row.</summary>
    public bool IsFirstCell => parent != null && PreviousSibling == null;

    /// <summary>Whether the cell is the last of its row.</summary>
    public bool IsLastCell => parent != null && NextSibling == null;

    /// <summary>The cell's formatting.</summary>
    public CellFormat CellFormat => new CellFormat(this);

    /// <summary>The grid columns the cell spans.</summary>
    internal int Span
    {
        get => Math.Max(1, Attrs.Int(FormatAttr.GridSpan) ?? 1);
        set => Attrs = Attrs.With(FormatAttr.GridSpan, value > 1 ? value : null);
    }

    internal override bool CanHold(Node child) => BlockRules.IsBlock(child);

    /// <summary>Gives the cell a paragraph when it has none, and returns the cell's last paragraph.</summary>
    public Paragraph EnsureMinimum()
    {
        if (last is Paragraph p) return p;
        return (Paragraph)AppendChild(new Paragraph(doc!));
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var c = new Cell(target, Props.Clone()) { HMerge = HMerge };
        if (deep) CloneChildrenInto(c, target);
        return c;
    }
}
