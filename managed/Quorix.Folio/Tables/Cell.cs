using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A cell of a row: a small story of paragraphs and tables.</summary>
public sealed class Cell : CompositeNode
{
    internal readonly PropBag TcPr;
    internal CellMerge HMerge;

    /// <summary>A new empty cell of doc, not yet in a row.</summary>
    public Cell(DocumentBase doc) : this(doc, new PropBag(PropOrder.TableCell)) { }

    internal Cell(DocumentBase? doc, PropBag tcPr) : base(doc) { TcPr = tcPr; }

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

    internal int Span => Math.Max(1, TcPr.Int("gridSpan") ?? 1);

    internal override bool CanHold(Node child) => BlockRules.IsBlock(child);

    /// <summary>Gives the cell a paragraph when it has none, and returns the cell's last paragraph.</summary>
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
