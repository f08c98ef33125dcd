using Quorix.Folio.Formatting;
using System.Text;

namespace Quorix.Folio;

/// <summary>A node inside a paragraph that holds its own paragraphs: a comment or a note.</summary>
public abstract class InlineStory : CompositeNode, IRunFormatted
{
    // The formatting of the reference mark.
    internal FormatProps RPr = FormatProps.None;

    AttrSet IRunFormatted.RunAttrs { get => RPr.Attrs; set => RPr = RPr with { Attrs = value }; }

    PropBag? IRunFormatted.RunKept(bool create) => FormatProps.KeptOf(ref RPr, create);

    private protected InlineStory(DocumentBase? doc) : base(doc) { }

    /// <summary>The paragraphs of this comment or note.</summary>
    public ParagraphCollection Paragraphs => new ParagraphCollection(this);

    /// <summary>The tables of this comment or note.</summary>
    public Tables.TableCollection Tables => new Tables.TableCollection(this);

    /// <summary>The first paragraph of this comment or note; None when it has none.</summary>
    public Paragraph? FirstParagraph => (Paragraph?)GetChild(NodeType.Paragraph, 0, false);

    /// <summary>The last paragraph of this comment or note; None when it has none.</summary>
    public Paragraph? LastParagraph => (Paragraph?)GetChild(NodeType.Paragraph, -1, false);

    /// <summary>The paragraph the comment or note is anchored in.</summary>
    public Paragraph? ParentParagraph => parent as Paragraph;

    /// <summary>The character formatting of the comment or note mark in the text.</summary>
    public Font Font => new Font(this, doc);

    internal override bool CanHold(Node child) => BlockRules.IsBlock(child);

    /// <summary>The text of all its paragraphs, each ended by a paragraph mark.</summary>
    public override string GetText()
    {
        var sb = new TextSink();
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

    /// <summary>An empty comment for doc, with no author or date, to be inserted into a paragraph.</summary>
    public Comment(DocumentBase doc) : this(doc, "", "", DateTime.MinValue) { }

    /// <summary>An empty comment for doc by author, whose initials and date are given.</summary>
    public Comment(DocumentBase doc, string author, string initial, DateTime dateTime) : base(doc)
    {
        this.author = author ?? "";
        this.initial = initial ?? "";
        DateTime = dateTime;
    }

    /// <summary>Always Comment.</summary>
    public override NodeType NodeType => NodeType.Comment;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Comment>(visitor, visitor.VisitCommentStart(this), static (v, n) => v.VisitCommentEnd(n));

    internal int Id = -1;
    internal List<Formatting.PropElement.Attr>? ExtraAttrs;

    /// <summary>The name of the person who wrote the comment.</summary>
    public string Author { get => author; set => author = value ?? ""; }

    /// <summary>The initials of the comment's author, shown in the margin.</summary>
    public string Initial { get => initial; set => initial = value ?? ""; }

    /// <summary>When the comment was written.</summary>
    public DateTime DateTime { get; set; }

    // Set by AddReply or by the file's thread information; a reply of a reply is not made here.
    internal Comment? ancestor;
    // What a file said of the comment's thread entry beyond its parent and done mark.
    internal List<Formatting.PropElement.Attr>? ThreadAttrs;
    internal List<Formatting.PropElement>? ThreadChildren;

    /// <summary>The comment this one replies to, or null for a comment that starts a thread.</summary>
    public Comment? Ancestor => ancestor;

    /// <summary>Whether the thread's discussion is marked as resolved.</summary>
    public bool Done { get; set; }

    /// <summary>The replies to this comment in document order; the view follows later changes.</summary>
    public CommentCollection Replies =>
        new CommentCollection(doc!, n => ((Comment)n).ancestor == this);

    /// <summary>Adds a reply after this comment and its earlier replies, anchored at the same range.</summary>
    public Comment AddReply(string author, string initial, DateTime dateTime, string text)
    {
        if (parent == null || doc == null)
            throw new InvalidOperationException("A comment takes replies once it is placed in a document.");
        if (ancestor != null)
            throw new InvalidOperationException("A reply cannot itself take replies; reply to the comment that starts the thread.");
        var reply = new Comment(doc, author, initial, dateTime) { ancestor = this };
        reply.SetText(text);
        var replies = Replies.ToArray();
        Comment after = replies.Length > 0 ? replies[^1] : this;
        // The reply's range opens and closes beside the parent's so both cover the same text.
        if (Id >= 0 && FindRange(Id) is var (start, end) && start != null && end != null)
        {
            reply.Id = NextId();
            var (lastStart, lastEnd) = after.Id >= 0 ? FindRange(after.Id) : (null, null);
            (lastStart ?? start).ParentNode!.InsertAfter(new CommentRangeStart(doc, reply.Id), lastStart ?? start);
            (lastEnd ?? end).ParentNode!.InsertAfter(new CommentRangeEnd(doc, reply.Id), lastEnd ?? end);
        }
        after.ParentNode!.InsertAfter(reply, after);
        return reply;
    }

    /// <summary>Removes one of this comment's replies with its range from the document.</summary>
    public void RemoveReply(Comment reply)
    {
        if (reply == null || reply.ancestor != this)
            throw new ArgumentException("The comment is not a reply to this comment.", nameof(reply));
        if (reply.Id >= 0 && reply.Id != Id)
        {
            var (start, end) = FindRange(reply.Id);
            start?.Remove();
            end?.Remove();
        }
        reply.Remove();
        reply.ancestor = null;
        doc?.Changed();
    }

    /// <summary>Removes every reply to this comment with their ranges.</summary>
    public void RemoveAllReplies()
    {
        foreach (var r in Replies.ToArray()) RemoveReply(r);
    }

    // A copy of a whole document has the same comments in the same order; its replies answer the copies.
    internal static void CopyThreads(Document from, Document to)
    {
        var source = from.GetChildNodes(NodeType.Comment, true).ToArray();
        var copies = to.GetChildNodes(NodeType.Comment, true).ToArray();
        if (source.Length != copies.Length) return;
        var map = new Dictionary<Comment, Comment>(ReferenceEqualityComparer.Instance);
        for (int i = 0; i < source.Length; i++) map[(Comment)source[i]] = (Comment)copies[i];
        foreach (var (orig, copy) in map)
            copy.ancestor = orig.ancestor != null && map.TryGetValue(orig.ancestor, out var a) ? a : null;
    }

    /// <summary>Whether making <paramref name="parent"/> this comment's ancestor would close a loop.</summary>
    internal bool WouldLoop(Comment parent)
    {
        for (Comment? c = parent; c != null; c = c.ancestor)
            if (c == this) return true;
        return false;
    }

    private (Node? Start, Node? End) FindRange(int id)
    {
        Node? start = null, end = null;
        foreach (var n in doc!.GetChildNodes(NodeType.CommentRangeStart, true))
            if (((CommentRangeStart)n).Id == id) { start = n; break; }
        foreach (var n in doc!.GetChildNodes(NodeType.CommentRangeEnd, true))
            if (((CommentRangeEnd)n).Id == id) { end = n; break; }
        return (start, end);
    }

    // Above every identifier a comment, range or comment kept from the file uses, so the reply's
    // range and reference agree when written.
    private int NextId()
    {
        int max = -1;
        foreach (var n in doc!.GetChildNodes(NodeType.Any, true))
        {
            int id = n switch { Comment c => c.Id, CommentRangeStart s => s.Id, CommentRangeEnd e => e.Id, _ => -1 };
            if (id > max) max = id;
        }
        if (doc is Document d)
            foreach (var k in Docx.DocxState.Of(d).KeptComments) max = Math.Max(max, k.Id);
        return max + 1;
    }

    /// <summary>Replaces the content with one paragraph holding the text.</summary>
    public void SetText(string text)
    {
        RemoveAllChildren();
        var p = new Paragraph(doc!);
        p.StyleId = doc!.Styles.GetOrCreateBuiltIn(StyleIdentifier.CommentText).StyleId;
        p.AppendChild(new Run(doc!, text ?? ""));
        AppendChild(p);
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var c = new Comment(target!, author, initial, DateTime)
        {
            ExtraAttrs = ExtraAttrs?.ToList(), Done = Done, ThreadAttrs = ThreadAttrs, ThreadChildren = ThreadChildren,
            // A copy stays in its parent's thread only within the same document.
            ancestor = target == doc ? ancestor : null,
        };
        CopyTo(c, target, deep);
        return c;
    }
}

/// <summary>Marks where the text a comment is about begins.</summary>
public sealed class CommentRangeStart : Node
{
    /// <summary>A start mark for the comment whose id is given.</summary>
    public CommentRangeStart(DocumentBase doc, int id) : base(doc) { Id = id; }

    /// <summary>Always CommentRangeStart.</summary>
    public override NodeType NodeType => NodeType.CommentRangeStart;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitCommentRangeStart(this);

    /// <summary>The id of the comment this range belongs to.</summary>
    public int Id { get; set; }

    /// <summary>Always empty: the mark has no text.</summary>
    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new CommentRangeStart(target!, Id);
}

/// <summary>Marks where the text a comment is about ends.</summary>
public sealed class CommentRangeEnd : Node
{
    /// <summary>An end mark for the comment whose id is given.</summary>
    public CommentRangeEnd(DocumentBase doc, int id) : base(doc) { Id = id; }

    /// <summary>Always CommentRangeEnd.</summary>
    public override NodeType NodeType => NodeType.CommentRangeEnd;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitCommentRangeEnd(this);

    /// <summary>The id of the comment this range belongs to.</summary>
    public int Id { get; set; }

    /// <summary>Always empty: the mark has no text.</summary>
    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new CommentRangeEnd(target!, Id);
}
