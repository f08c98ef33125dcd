using Quorix.Folio.Tables;

namespace Quorix.Folio;

public enum StoryType
{
    None = 0,
    MainText = 1,
    Footnotes = 2,
    Endnotes = 3,
    Comments = 4,
    PrimaryHeader = 5,
    EvenPagesHeader = 6,
    PrimaryFooter = 7,
    EvenPagesFooter = 8,
    FirstPageHeader = 9,
    FirstPageFooter = 10,
}

/// <summary>A flow of paragraphs and tables: the body, a header or footer.</summary>
public abstract class Story : CompositeNode
{
    private protected Story(DocumentBase? doc) : base(doc) { }

    public abstract StoryType StoryType { get; }

    public ParagraphCollection Paragraphs => new ParagraphCollection(this);

    public TableCollection Tables => new TableCollection(this);

    public Paragraph? FirstParagraph => (Paragraph?)GetChild(NodeType.Paragraph, 0, false);

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
    public Body(DocumentBase doc) : base(doc) { }

    public override NodeType NodeType => NodeType.Body;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Body>(visitor, visitor.VisitBodyStart(this), static (v, n) => v.VisitBodyEnd(n));

    public override StoryType StoryType => StoryType.MainText;

    public Section? ParentSection => parent as Section;

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var b = new Body(target!);
        if (deep) CloneChildrenInto(b, target);
        return b;
    }
}
