using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A cell of a row: a small story of paragraphs and tables.</summary>
public sealed class Cell : CompositeNode
{
    internal readonly PropBag TcPr;
    internal CellMerge HMerge;

    public Cell(DocumentBase doc) : this(doc, new PropBag(PropOrder.TableCell)) { }

    internal Cell(DocumentBase? doc, PropBag tcPr) : base(doc) { TcPr = tcPr; }

    public override NodeType NodeType => NodeType.Cell;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Cell>(visitor, visitor.VisitCellStart(this), static (v, n) => v.VisitCellEnd(n));

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
