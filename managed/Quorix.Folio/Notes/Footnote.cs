namespace Quorix.Folio.Notes;

/// <summary>Whether a note is a footnote or an endnote.</summary>
public enum FootnoteType
{
    /// <summary>A note at the bottom of the page.</summary>
    Footnote = 0,
    /// <summary>A note at the end of the section or document.</summary>
    Endnote = 1,
}

/// <summary>A footnote or endnote, placed where its reference mark is.</summary>
public sealed class Footnote : InlineStory
{
    private readonly FootnoteType type;

    /// <summary>A new empty footnote or endnote of doc, not yet inserted.</summary>
    public Footnote(DocumentBase doc, FootnoteType footnoteType) : base(doc)
    {
        if (!Enum.IsDefined(footnoteType)) throw new ArgumentOutOfRangeException(nameof(footnoteType));
        type = footnoteType;
    }

    /// <summary>Always Footnote.</summary>
    public override NodeType NodeType => NodeType.Footnote;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Footnote>(visitor, visitor.VisitFootnoteStart(this), static (v, n) => v.VisitFootnoteEnd(n));

    /// <summary>Whether the note is a footnote or an endnote.</summary>
    public FootnoteType FootnoteType => type;

    /// <summary>Numbered automatically unless a custom mark was given.</summary>
    public bool IsAuto => string.IsNullOrEmpty(ReferenceMark);

    /// <summary>The note's own mark in place of its number; empty for a numbered note.</summary>
    public string ReferenceMark { get; set; } = "";

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var f = new Footnote(target!, type) { ReferenceMark = ReferenceMark };
        CopyTo(f, target, deep);
        return f;
    }
}
