namespace Quorix.Folio.Notes;

public enum FootnoteType
{
    Footnote = 0,
    Endnote = 1,
}

/// <summary>A footnote or endnote, placed where its reference mark is.</summary>
public sealed class Footnote : InlineStory
{
    private readonly FootnoteType type;

    public Footnote(DocumentBase doc, FootnoteType footnoteType) : base(doc)
    {
        if (!Enum.IsDefined(footnoteType)) throw new ArgumentOutOfRangeException(nameof(footnoteType));
        type = footnoteType;
    }

    public override NodeType NodeType => NodeType.Footnote;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Footnote>(visitor, visitor.VisitFootnoteStart(this), static (v, n) => v.VisitFootnoteEnd(n));

    public FootnoteType FootnoteType => type;

    /// <summary>Numbered automatically unless a custom mark was given.</summary>
    public bool IsAuto => string.IsNullOrEmpty(ReferenceMark);

    public string ReferenceMark { get; set; } = "";

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var f = new Footnote(target!, type) { ReferenceMark = ReferenceMark };
        CopyTo(f, target, deep);
        return f;
    }
}
