using System.Collections;
using System.Globalization;
using Quorix.Folio.Docx;
using Quorix.Folio.Formatting;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>What a tracked change did.</summary>
public enum RevisionType
{
    /// <summary>Text was inserted.</summary>
    Insertion = 0,
    /// <summary>Text was deleted.</summary>
    Deletion = 1,
    /// <summary>Formatting was changed.</summary>
    FormatChange = 2,
    /// <summary>A style's definition was changed.</summary>
    StyleDefinitionChange = 3,
    /// <summary>Text was moved from one place to another.</summary>
    Moving = 4,
}

/// <summary>One tracked change: inserted or deleted content, a moved piece, an inserted or deleted
/// paragraph mark or table row, or a recorded change of formatting.</summary>
public sealed class Revision
{
    internal enum Kind { Content, ParagraphMark, Formatting, Row }

    private static readonly string[] Records = { "rPrChange", "pPrChange", "tblPrChange", "trPrChange", "tcPrChange", "sectPrChange" };

    private readonly Kind kind;
    private readonly Node node;
    // The element that records the change: the insertion or deletion wrapper the content came in,
    // the mark in the paragraph mark's or row's properties, or the formatting change record.
    private readonly PropElement mark;
    private readonly PropBag? bag;

    private Revision(Kind kind, Node node, PropElement mark, PropBag? bag = null)
    {
        this.kind = kind;
        this.node = node;
        this.mark = mark;
        this.bag = bag;
    }

    /// <summary>The name of the person who made the change.</summary>
    public string Author
    {
        get => mark.Get("author") ?? "";
        set => mark.Set("author", value ?? "");
    }

    /// <summary>When the change was made.</summary>
    public DateTime DateTime =>
        mark.Get("date") is { } s && DateTime.TryParse(s, CultureInfo.InvariantCulture, DateTimeStyles.AdjustToUniversal | DateTimeStyles.AssumeUniversal, out var d)
            ? d : DateTime.MinValue;

    /// <summary>What the change did: inserted, deleted, moved or reformatted.</summary>
    public RevisionType RevisionType => kind == Kind.Formatting ? RevisionType.FormatChange : mark.Local switch
    {
        "moveFrom" or "moveTo" => RevisionType.Moving,
        "del" => RevisionType.Deletion,
        _ => RevisionType.Insertion,
    };

    /// <summary>The first node the change covers: a run, a paragraph (its mark), a row, a table, a cell or a section.</summary>
    public Node ParentNode => kind == Kind.Content && node.IsOpaque && node.ParentNode is { } p ? p : node;

    /// <summary>The neighbouring changes of the same kind and author this one belongs to; null for formatting changes.</summary>
    public RevisionGroup? Group { get; internal set; }

    // Deletions and the source of a move go when accepted; insertions and the target of a move stay.
    private bool Removes => mark.Local is "del" or "moveFrom";

    internal bool IsContent => kind == Kind.Content;

    internal Node Node => node;

    /// <summary>Makes the change final.</summary>
    public void Accept() => Decide(true);

    /// <summary>Undoes the change.</summary>
    public void Reject() => Decide(false);

    // Whether the change is still there to decide: deciding it twice changes nothing.
    private bool Pending =>
        kind == Kind.Content ? ReferenceEquals(node.Rev, mark) && node.parent != null : bag!.Items.Any(e => ReferenceEquals(e, mark));

    internal void Decide(bool accept)
    {
        if (!Pending) return;
        switch (kind)
        {
            case Kind.Content:
                foreach (var n in Covered())
                {
                    if (accept == Removes) n.parent?.Unlink(n);
                    else n.Rev = null;
                }
                break;
            case Kind.ParagraphMark:
                bag!.RemoveAll(e => e == mark);
                if (accept == Removes) JoinWithNext((Paragraph)node);
                break;
            case Kind.Row:
                bag!.RemoveAll(e => e == mark);
                if (accept == Removes) node.Remove();
                break;
            case Kind.Formatting:
                bag!.RemoveAll(e => e == mark);
                // The record holds the properties as they were, in one child element.
                if (!accept) Restore(bag, mark);
                // A record sits with the kept markup: what it restored is read as attributes again.
                if (!accept && node is Inline run && ReferenceEquals(run.RunKept, bag))
                    run.RPr = PropsCodec.Run.Decode(bag, run.Document?.Cascade.SharedTable);
                else if (!accept && node is Paragraph para && ReferenceEquals(para.PPr, bag))
                {
                    var props = PropsCodec.Paragraph.Decode(bag, para.Document?.Cascade.SharedTable);
                    para.ParaAttrs = props.Attrs;
                    para.PPr = props.Kept ?? new PropBag(PropOrder.Paragraph);
                }
                else if (!accept && node is IBlockFormatted block && ReferenceEquals(block.Props.Kept, bag))
                    block.Props = block.Codec.Decode(bag, node.Document?.Cascade.SharedTable);
                break;
        }
        node.Touch();
    }

    // The content of one insertion or deletion as read: consecutive siblings sharing its wrapper.
    private List<Node> Covered()
    {
        var list = new List<Node>();
        for (var n = node; n != null && ReferenceEquals(n.Rev, mark); n = n.next) list.Add(n);
        return list;
    }

    private static void Restore(PropBag bag, PropElement record)
    {
        var old = record.Children?.FirstOrDefault();
        // A paragraph's recorded properties leave its mark's character properties alone.
        var keep = record.Local == "pPrChange" ? bag.Items.Where(e => e.Local == "rPr").Select(e => e.Clone()).ToList() : new List<PropElement>();
        bag.Clear();
        foreach (var e in old?.Children ?? new List<PropElement>()) bag.Add(e.Clone());
        foreach (var e in keep) if (!bag.Has(e.Local)) bag.Add(e);
    }

    // Without its mark a paragraph runs on into the next one, which keeps its own properties.
    private static void JoinWithNext(Paragraph p)
    {
        if (p.NextSibling is not Paragraph next) return;
        var anchor = next.first;
        for (var n = p.first; n != null;)
        {
            var following = n.next;
            p.Unlink(n);
            if (anchor == null) next.LinkLast(n);
            else next.InsertBefore(n, anchor);
            n = following;
        }
        p.Remove();
    }

    /// <summary>Every tracked change in document order.</summary>
    internal static List<Revision> Find(CompositeNode root)
    {
        var list = new List<Revision>();
        for (Node? n = root.first; n != null; n = n.NextPreOrder(root))
        {
            if (n.Rev is { } rev && (n.prev == null || !ReferenceEquals(n.prev.Rev, rev)))
                list.Add(new Revision(Kind.Content, n, rev));
            switch (n)
            {
                case Paragraph p:
                    if (p.PPr.Find("rPr") is { Children: { } markProps })
                    {
                        var markBag = new PropBag(PropOrder.Run, markProps);
                        foreach (var e in markBag.Items)
                            if (e.Ns == Ns.W && e.Local is "ins" or "del" or "moveFrom" or "moveTo")
                                list.Add(new Revision(Kind.ParagraphMark, p, e, markBag));
                        AddRecord(list, p, markBag, "rPrChange");
                    }
                    AddRecord(list, p, p.PPr, "pPrChange");
                    break;
                case Inline { RunKept: { } kept } i:
                    AddRecord(list, i, kept, "rPrChange");
                    break;
                case Row r:
                    if (r.Props.Kept is not { } rowKept) break;
                    foreach (var e in rowKept.Items)
                        if (e.Ns == Ns.W && e.Local is "ins" or "del") list.Add(new Revision(Kind.Row, r, e, rowKept));
                    AddRecord(list, r, rowKept, "trPrChange");
                    break;
                case IBlockFormatted { Props.Kept: { } kept } block:
                    AddRecord(list, n, kept, block switch { Table => "tblPrChange", Cell => "tcPrChange", _ => "sectPrChange" });
                    break;
            }
        }
        return list;
    }

    private static void AddRecord(List<Revision> list, Node n, PropBag bag, string record)
    {
        if (bag.Find(record) is { } e) list.Add(new Revision(Kind.Formatting, n, e, bag));
    }

    // The ends of a moved range only mark where a move came from and went to.
    private static bool IsMoveRangeMark(Node n)
    {
        if (n is not OpaqueNode { Kind: OpaqueKind.Inline, Partner: null } o) return false;
        var x = o.Xml;
        int end = x.IndexOfAny(new[] { ' ', '/', '>' }, 1);
        var name = end < 0 ? x : x[1..end];
        int colon = name.IndexOf(':');
        return (colon < 0 ? name : name[(colon + 1)..]) is "moveFromRangeStart" or "moveFromRangeEnd" or "moveToRangeStart" or "moveToRangeEnd";
    }

    /// <summary>Decides every change under the node; returns how many there were.</summary>
    internal static int DecideAll(CompositeNode root, bool accept)
    {
        var all = Find(root);
        foreach (var r in all) r.Decide(accept);
        var marks = new List<Node>();
        for (Node? n = root.first; n != null; n = n.NextPreOrder(root))
            if (IsMoveRangeMark(n)) marks.Add(n);
        foreach (var m in marks) m.parent?.Unlink(m);
        return all.Count + marks.Count;
    }
}

/// <summary>The tracked changes of a document, in document order; a live view.</summary>
public sealed class RevisionCollection : IEnumerable<Revision>
{
    private readonly Document doc;

    internal RevisionCollection(Document doc) { this.doc = doc; }

    private List<Revision> Items()
    {
        var list = Revision.Find(doc);
        RevisionGroup.Assign(list);
        return list;
    }

    /// <summary>How many tracked changes the document has.</summary>
    public int Count => Items().Count;

    /// <summary>The tracked change at that position; negative positions count from the end.</summary>
    public Revision this[int index]
    {
        get
        {
            var items = Items();
            int i = index < 0 ? items.Count + index : index;
            if (i < 0 || i >= items.Count)
                throw new ArgumentOutOfRangeException(nameof(index), $"Index {index} is out of range for {items.Count} revisions.");
            return items[i];
        }
    }

    /// <summary>The changes as a reviewer sees them: neighbouring changes by one author together.</summary>
    public RevisionGroupCollection Groups => new RevisionGroupCollection(RevisionGroup.Assign(Items()));

    /// <summary>Accepts every tracked change: insertions stay, deletions go, and tracking marks are removed.</summary>
    public void AcceptAll() => Revision.DecideAll(doc, true);

    /// <summary>Rejects every tracked change: the document returns to its text before them.</summary>
    public void RejectAll() => Revision.DecideAll(doc, false);

    /// <summary>Makes final the changes the criteria match; returns how many there were.</summary>
    public int Accept(IRevisionCriteria criteria) => Decide(criteria, true);

    /// <summary>Undoes the changes the criteria match; returns how many there were.</summary>
    public int Reject(IRevisionCriteria criteria) => Decide(criteria, false);

    // All are asked before any is decided, so the criteria see the document as it was.
    private int Decide(IRevisionCriteria criteria, bool accept)
    {
        ArgumentNullException.ThrowIfNull(criteria);
        var chosen = Items().FindAll(criteria.IsMatch);
        foreach (var r in chosen) r.Decide(accept);
        return chosen.Count;
    }

    /// <summary>The tracked changes in document order.</summary>
    public IEnumerator<Revision> GetEnumerator() => Items().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>Neighbouring insertions, deletions or moves by one author, as a reviewer sees them together.</summary>
public sealed class RevisionGroup
{
    private readonly List<Revision> members = new();

    private RevisionGroup() { }

    /// <summary>The name of the person who made the changes.</summary>
    public string Author => members[0].Author;

    /// <summary>What the changes did: inserted, deleted or moved text.</summary>
    public RevisionType RevisionType => members[0].RevisionType;

    /// <summary>The text of the changed content.</summary>
    public string Text => string.Concat(members.Select(m => m.Node is CompositeNode ? "" : m.Node.GetText()));

    internal static List<RevisionGroup> Assign(List<Revision> revisions)
    {
        var groups = new List<RevisionGroup>();
        RevisionGroup? current = null;
        Node? lastNode = null;
        foreach (var r in revisions)
        {
            if (!r.IsContent) continue;
            bool continues = current != null && lastNode != null && r.Node.parent == lastNode.parent &&
                             current.Author == r.Author && current.RevisionType == r.RevisionType && Adjacent(lastNode, r.Node);
            if (!continues)
            {
                current = new RevisionGroup();
                groups.Add(current);
            }
            current!.members.Add(r);
            r.Group = current;
            lastNode = r.Node;
            while (lastNode.next != null && ReferenceEquals(lastNode.next.Rev, r.Node.Rev)) lastNode = lastNode.next;
        }
        return groups;
    }

    private static bool Adjacent(Node before, Node after)
    {
        for (var n = before.next; n != null; n = n.next)
        {
            if (n == after) return true;
            if (n is Run || n is SpecialChar) return false;
        }
        return false;
    }
}

/// <summary>The groups of tracked changes of a document.</summary>
public sealed class RevisionGroupCollection : IEnumerable<RevisionGroup>
{
    private readonly List<RevisionGroup> groups;

    internal RevisionGroupCollection(List<RevisionGroup> groups) { this.groups = groups; }

    /// <summary>How many groups there are.</summary>
    public int Count => groups.Count;

    /// <summary>The group at that position; negative positions count from the end.</summary>
    public RevisionGroup this[int index] => groups[index < 0 ? groups.Count + index : index];

    /// <summary>The groups in document order.</summary>
    public IEnumerator<RevisionGroup> GetEnumerator() => groups.GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
