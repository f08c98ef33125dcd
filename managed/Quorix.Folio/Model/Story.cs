using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>Which flow of text a story is: the main text, a header or footer, notes or comments.</summary>
public enum StoryType
{
    /// <summary>No story.</summary>
    None = 0,
    /// <summary>The main text of the document.</summary>
    MainText = 1,
    /// <summary>The footnotes.</summary>
    Footnotes = 2,
    /// <summary>The endnotes.</summary>
    Endnotes = 3,
    /// <summary>The comments.</summary>
    Comments = 4,
    /// <summary>The header of pages with no header of their own kind.</summary>
    PrimaryHeader = 5,
    /// <summary>The header of even-numbered pages.</summary>
    EvenPagesHeader = 6,
    /// <summary>The footer of pages with no footer of their own kind.</summary>
    PrimaryFooter = 7,
    /// <summary>The footer of even-numbered pages.</summary>
    EvenPagesFooter = 8,
    /// <summary>The header of a section's first page.</summary>
    FirstPageHeader = 9,
    /// <summary>The footer of a section's first page.</summary>
    FirstPageFooter = 10,
}

/// <summary>A flow of paragraphs and tables: the body, a header or footer.</summary>
public abstract class Story : CompositeNode
{
    private protected Story(DocumentBase? doc) : base(doc) { }

    /// <summary>Which flow of text this is: the main text, a header, a footer and so on.</summary>
    public abstract StoryType StoryType { get; }

    /// <summary>The paragraphs directly in the story, tables' paragraphs excepted.</summary>
    public ParagraphCollection Paragraphs => new ParagraphCollection(this);

    /// <summary>The tables directly in the story.</summary>
    public TableCollection Tables => new TableCollection(this);

    /// <summary>The story's first paragraph; null when it has none.</summary>
    public Paragraph? FirstParagraph => (Paragraph?)GetChild(NodeType.Paragraph, 0, false);

    /// <summary>The story's last paragraph; null when it has none.</summary>
    public Paragraph? LastParagraph => (Paragraph?)GetChild(NodeType.Paragraph, -1, false);

    internal override bool CanHold(Node child) => BlockRules.IsBlock(child);

    /// <summary>Leaves one empty paragraph, as a freshly created story has.</summary>
    public void DeleteContent()
    {
        RemoveAllChildren();
        AppendChild(new Paragraph(doc!));
    }

    /// <summary>The story's last paragraph; one is added when the story is empty or ends with a table.</summary>
    public Paragraph EnsureMinimum()
    {
        if (LastParagraph is { } p && LastChild is not Table) return p;
        return (Paragraph)AppendChild(new Paragraph(doc!));
    }
}

internal static class BlockRules
{
    public static bool IsBlock(Node n) =>
        n is Paragraph || n is Table || n is Markup.StructuredDocumentTag { Level: Markup.MarkupLevel.Block } || (n is OpaqueNode o && o.Kind == OpaqueKind.Block);

    /// <summary>The paragraphs of a container's flow, those inside block content controls included.</summary>
    public static IEnumerable<Paragraph> Paragraphs(CompositeNode container)
    {
        for (var n = container.first; n != null; n = n.next)
        {
            if (n is Paragraph p) yield return p;
            else if (n is Markup.StructuredDocumentTag { Level: Markup.MarkupLevel.Block } sdt)
                foreach (var inner in Paragraphs(sdt)) yield return inner;
        }
    }
}

/// <summary>The main text of a section.</summary>
public sealed class Body : Story
{
    /// <summary>A new empty body of doc, not yet in a section.</summary>
    public Body(DocumentBase doc) : base(doc) { }

    /// <summary>Always Body.</summary>
    public override NodeType NodeType => NodeType.Body;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Body>(visitor, visitor.VisitBodyStart(this), static (v, n) => v.VisitBodyEnd(n));

    /// <summary>Always MainText.</summary>
    public override StoryType StoryType => StoryType.MainText;

    /// <summary>The section the body belongs to; null when it is in none.</summary>
    public Section? ParentSection => parent as Section;

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var b = new Body(target!);
        if (deep) CloneChildrenInto(b, target);
        return b;
    }
}
