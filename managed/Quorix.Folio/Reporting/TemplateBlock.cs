using Quorix.Folio.Tables;

namespace Quorix.Folio.Reporting;

/// <summary>The content between an opening and a closing marker, repeated or dropped as one piece.
/// Markers in one paragraph repeat the text between them; in two rows of a table (or the cells of one
/// row) they repeat those rows; in two paragraphs of a story they repeat the paragraphs from the one to
/// the other, leaving out those that held nothing but a marker.</summary>
internal sealed class TemplateBlock
{
    public readonly CompositeNode Container;
    private readonly List<Node> template;
    private readonly Node? anchor;
    private readonly int split;

    /// <summary>The block's nodes before the middle marker (an "else"), or all of them when there is none.</summary>
    public IReadOnlyList<Node> First => template.GetRange(0, split);

    public IReadOnlyList<Node> Second => template.GetRange(split, template.Count - split);

    private TemplateBlock(CompositeNode container, List<Node> template, Node? anchor, int split)
    {
        Container = container;
        this.template = template;
        this.anchor = anchor;
        this.split = split;
    }

    /// <summary>Finds the block between two markers, each a run of sibling inline nodes, and removes the markers.</summary>
    public static TemplateBlock Cut((Node First, Node Last) open, (Node First, Node Last) close, (Node First, Node Last)? middle, string name)
    {
        var pa = open.First.ParentNode as Paragraph ?? throw new TemplateException(name, "is not inside a paragraph");
        var pb = close.First.ParentNode as Paragraph ?? throw new TemplateException(name, "ends outside a paragraph");
        if (pa == pb)
        {
            var nodes = new List<Node>();
            int mid = -1;
            for (var n = open.Last.NextSibling; n != null && n != close.First; n = n.NextSibling)
            {
                if (middle is { } m && n == m.First) { mid = nodes.Count; n = m.Last; continue; }
                nodes.Add(n);
            }
            if (middle != null && mid < 0) throw new TemplateException(name, "has its middle marker outside the paragraph of its start and end");
            var anchorInline = close.Last.NextSibling;
            RemoveMarker(open);
            RemoveMarker(close);
            if (middle is { } mm) RemoveMarker(mm);
            return new TemplateBlock(pa, nodes, anchorInline, mid < 0 ? nodes.Count : mid);
        }

        var lca = CommonAncestor(pa, pb) ?? throw new TemplateException(name, "starts and ends in different stories");
        CompositeNode container;
        Node a, b;
        if (lca is Row row)
        {
            container = row.ParentNode!;
            a = b = row;
        }
        else
        {
            container = lca;
            a = ChildOn(lca, pa);
            b = ChildOn(lca, pb);
        }
        if (container is Row or Cell && a is Cell) throw new TemplateException(name, "spans cells that cannot repeat");
        Node? midNode = middle is { } md ? ChildOn(container, (Node)md.First.ParentNode!) : null;
        var anchorBlock = b.NextSibling;
        RemoveMarker(open);
        RemoveMarker(close);
        if (middle is { } m2) RemoveMarker(m2);
        var members = new List<Node>();
        for (var n = a; n != null; n = n.NextSibling) { members.Add(n); if (n == b) break; }
        var list = new List<Node>();
        int splitAt = -1;
        foreach (var n in members)
        {
            if (n == midNode)
            {
                if (n is not Paragraph mp || !IsBlank(mp)) throw new TemplateException(name, "has its middle marker sharing a paragraph with other content");
                splitAt = list.Count;
                n.Remove();
            }
            // A paragraph that held only the start or end marker is not part of what repeats.
            else if ((n == a || n == b) && container is not Table && n is Paragraph p && IsBlank(p)) n.Remove();
            else list.Add(n);
        }
        return new TemplateBlock(container, list, anchorBlock, splitAt < 0 ? list.Count : splitAt);
    }

    /// <summary>Puts copies of the chosen nodes in the block's place, calling back with each copy; removes the block.</summary>
    public void Emit(IReadOnlyList<Node> nodes, int times, Action<int, List<Node>> each)
    {
        for (int i = 0; i < times; i++)
        {
            var copy = new List<Node>(nodes.Count);
            foreach (var n in nodes)
            {
                var c = n.Clone(true);
                Container.InsertBefore(c, anchor);
                copy.Add(c);
            }
            each(i, copy);
        }
    }

    public void RemoveTemplate()
    {
        foreach (var n in template) n.Remove();
    }

    private static void RemoveMarker((Node First, Node Last) m)
    {
        for (var n = m.First; n != null;)
        {
            var next = n == m.Last ? null : n.NextSibling;
            n.Remove();
            n = next!;
        }
    }

    private static bool IsBlank(Paragraph p) => p.ChildNodes.All(n => n is Run r && r.Text.Trim().Length == 0);

    private static CompositeNode? CommonAncestor(Node x, Node y)
    {
        var seen = new HashSet<Node>();
        for (Node? n = x; n != null; n = n.ParentNode) seen.Add(n);
        for (CompositeNode? n = y.ParentNode; n != null; n = n.ParentNode)
            if (seen.Contains(n)) return n;
        return null;
    }

    private static Node ChildOn(Node ancestor, Node descendant)
    {
        var n = descendant;
        while (n.ParentNode != ancestor) n = n.ParentNode ?? throw new InvalidOperationException("not a descendant");
        return n;
    }
}

/// <summary>A template tag or region that cannot be built, named with its place in the document.</summary>
public sealed class TemplateException : Exception
{
    /// <summary>The error of a template tag that cannot be used, naming the tag and the problem.</summary>
    public TemplateException(string tag, string problem) : base($"Template tag {tag} {problem}.") { Tag = tag; }

    /// <summary>The tag as written, with its place.</summary>
    public string Tag { get; }
}
