namespace Quorix.Folio.Layout;

/// <summary>Tells on which pages a node of the document shows. Indexes are 1-based, as page
/// numbers of a printed document are; a node that shows on no page (hidden text, an empty run)
/// gives 0.</summary>
public sealed class LayoutCollector
{
    /// <summary>A collector of the pages the nodes of doc are laid out on.</summary>
    public LayoutCollector(Document doc)
    {
        ArgumentNullException.ThrowIfNull(doc);
        Document = doc;
    }

    /// <summary>The document whose layout is asked about.</summary>
    public Document Document { get; set; }

    /// <summary>The number (from 1) of the page where node begins.</summary>
    public int GetStartPageIndex(Node node) => Span(node).First;

    /// <summary>The number (from 1) of the page where node ends.</summary>
    public int GetEndPageIndex(Node node) => Span(node).Last;

    /// <summary>How many pages node is laid out on; 0 for a node that is on none.</summary>
    public int GetNumPagesSpanned(Node node)
    {
        var (first, last) = Span(node);
        return first == 0 ? 0 : last - first + 1;
    }

    /// <summary>Kept for callers that clear the collector between layouts; spans are read from the
    /// document's current layout, so there is nothing to clear.</summary>
    public void Clear() { }

    private (int First, int Last) Span(Node node)
    {
        ArgumentNullException.ThrowIfNull(node);
        if (node.Document != Document) throw new ArgumentException("The node belongs to another document.", nameof(node));
        var layout = Document.PageLayout;
        if (node is Document) return (1, layout.Pages.Count);
        if (layout.Spans.TryGetValue(node, out var s)) return (s.First + 1, s.Last + 1);
        // Containers (sections, bodies, cells' parents) span what their content spans.
        if (node is CompositeNode c)
        {
            int first = int.MaxValue, last = 0;
            for (Node? n = c.FirstChild; n != null; n = n.NextPreOrder(c))
                if (layout.Spans.TryGetValue(n, out var t)) { first = Math.Min(first, t.First + 1); last = Math.Max(last, t.Last + 1); }
            if (last > 0) return (first, last);
        }
        return (0, 0);
    }
}
