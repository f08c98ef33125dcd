namespace Quorix.Folio.Layout;

/// <summary>What page fields read from one layout of the document: the page a node or bookmark is
/// on, each page's number and label, and the page counts.</summary>
internal sealed class PageNumbers
{
    private readonly DocumentLayout layout;
    private Dictionary<string, int>? bookmarks;
    private Dictionary<int, int>? sectionCounts;

    public PageNumbers(DocumentLayout layout) { this.layout = layout; }

    public int Count => layout.Pages.Count;

    public int Number(int index) => layout.Pages[index].Number;

    public string Label(int index) => layout.Pages[index].Label;

    public NoteMarks NoteMarks => layout.NoteMarks;

    /// <summary>Pages of the section that page <paramref name="index"/> belongs to.</summary>
    public int SectionPageCount(int index)
    {
        if (sectionCounts == null)
        {
            sectionCounts = new Dictionary<int, int>();
            foreach (var p in layout.Pages) sectionCounts[p.SectionIndex] = sectionCounts.GetValueOrDefault(p.SectionIndex) + 1;
        }
        return sectionCounts[layout.Pages[index].SectionIndex];
    }

    /// <summary>Index of the page a node shows on; an inline marker that shows nothing takes the page
    /// of what follows it in its paragraph. -1 where the node is on no page (headers, hidden text).</summary>
    public int IndexOf(Node node)
    {
        var spans = layout.Spans;
        if (spans.TryGetValue(node, out var own)) return own.First;
        if (node.ParentNode is Paragraph)
        {
            for (var n = node.NextSibling; n != null; n = n.NextSibling)
                if (spans.TryGetValue(n, out var s)) return s.First;
            for (var n = node.PreviousSibling; n != null; n = n.PreviousSibling)
                if (spans.TryGetValue(n, out var s)) return s.Last;
        }
        for (var n = node.ParentNode; n != null; n = n.ParentNode)
            if (spans.TryGetValue(n, out var s)) return s.First;
        return -1;
    }

    /// <summary>Index of the page a bookmark starts on, or -1.</summary>
    public int BookmarkIndex(string name)
    {
        if (bookmarks == null)
        {
            bookmarks = new Dictionary<string, int>(StringComparer.OrdinalIgnoreCase);
            for (int i = 0; i < layout.Pages.Count; i++)
                foreach (var item in layout.Pages[i].Items)
                    if (item is AnchorItem a) bookmarks.TryAdd(a.Name, i);
        }
        return bookmarks.TryGetValue(name, out var page) ? page : -1;
    }

    /// <summary>Whether <paramref name="a"/> comes before <paramref name="b"/> in the document.</summary>
    public static bool Precedes(Node a, Node b)
    {
        var pa = Path(a);
        var pb = Path(b);
        for (int i = 0; i < Math.Min(pa.Count, pb.Count); i++)
            if (pa[i] != pb[i]) return pa[i] < pb[i];
        return pa.Count < pb.Count;
    }

    private static List<int> Path(Node n)
    {
        var path = new List<int>();
        for (; n.ParentNode is { } parent; n = parent) path.Add(parent.IndexOf(n));
        path.Reverse();
        return path;
    }
}
