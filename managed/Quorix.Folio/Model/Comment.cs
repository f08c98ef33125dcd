using System.Text;

namespace Quorix.Folio;

/// <summary>A node inside a paragraph that holds its own paragraphs: a comment or a note.</summary>
public abstract class InlineStory : CompositeNode
{
    internal Formatting.PropBag RPr = new(Formatting.PropOrder.Run);

    private protected InlineStory(DocumentBase? doc) : base(doc) { }

    public ParagraphCollection Paragraphs => new ParagraphCollection(this);

    public Tables.TableCollection Tables => new Tables.TableCollection(this);

    public Paragraph? FirstParagraph => (Paragraph?)GetChild(NodeType.Paragraph, 0, false);

    public Paragraph? LastParagraph => (Paragraph?)GetChild(NodeType.Paragraph, -1, false);

    public Paragraph? ParentParagraph => parent as Paragraph;

    public Font Font => new Font(RPr, doc);

    internal override bool CanHold(Node child) => BlockRules.IsBlock(child);

    public override string GetText()
    {
        var sb = new StringBuilder();
        for (var n = first; n != null; n = n.next) n.AppendText(sb);
        return sb.ToString();
    }

    internal void CopyTo(InlineStory copy, DocumentBase? target, bool deep)
    {
        copy.RPr = RPr.Clone();
        if (deep) CloneChildrenInto(copy, target);
    }
}

/// <summary>A comment anchored at its place in the text.</summary>
public sealed class Comment : InlineStory
{
    private string author;
    private string initial;

    public Comment(DocumentBase doc) : this(doc, "", "", DateTime.MinValue) { }

    public Comment(DocumentBase doc, string author, string initial, DateTime dateTime) : base(doc)
    {
        this.author = author ?? "";
        this.initial = initial ?? "";
        DateTime = dateTime;
    }

    public override NodeType NodeType => NodeType.Comment;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Comment>(visitor, visitor.VisitCommentStart(this), static (v, n) => v.VisitCommentEnd(n));

    internal int Id = -1;
    internal List<Formatting.PropElement.Attr>? ExtraAttrs;

    public string Author { get => author; set => author = value ?? ""; }

    public string Initial { get => initial; set => initial = value ?? ""; }

    public DateTime DateTime { get; set; }

    /// <summary>Replaces the content with one paragraph holding the text.</summary>
    public void SetText(string text)
    {
        RemoveAllChildren();
        var p = new Paragraph(doc!);
        p.PPr.SetVal("pStyle", doc!.Styles.GetOrCreateBuiltIn(StyleIdentifier.CommentText).StyleId);
        p.AppendChild(new Run(doc!, text ?? ""));
        AppendChild(p);
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var c = new Comment(target!, author, initial, DateTime) { ExtraAttrs = ExtraAttrs?.ToList() };
        CopyTo(c, target, deep);
        return c;
    }
}

public sealed class CommentRangeStart : Node
{
    public CommentRangeStart(DocumentBase doc, int id) : base(doc) { Id = id; }

    public override NodeType NodeType => NodeType.CommentRangeStart;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitCommentRangeStart(this);

    public int Id { get; set; }

    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new CommentRangeStart(target!, Id);
}

public sealed class CommentRangeEnd : Node
{
    public CommentRangeEnd(DocumentBase doc, int id) : base(doc) { Id = id; }

    public override NodeType NodeType => NodeType.CommentRangeEnd;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitCommentRangeEnd(this);

    public int Id { get; set; }

    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new CommentRangeEnd(target!, Id);
}
