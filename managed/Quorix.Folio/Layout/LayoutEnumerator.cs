using System.Drawing;

namespace Quorix.Folio.Layout;

/// <summary>What a layout enumerator stands on in the laid-out pages.</summary>
[Flags]
public enum LayoutEntityType
{
    /// <summary>Nothing.</summary>
    None = 0,
    /// <summary>A page.</summary>
    Page = 1,
    /// <summary>A line of text.</summary>
    Line = 32,
    /// <summary>A piece of a line in one formatting.</summary>
    Span = 64,
}

/// <summary>Walks the laid-out document: pages, the lines of text on each page (body, tables,
/// headers and footers, in the order they were placed) and the spans of each line, one span per
/// stretch of text in one face. Rectangles are in points from the page's top-left corner.</summary>
public sealed class LayoutEnumerator
{
    private sealed record Line(LineBox Box, List<GlyphRun> Spans);

    private readonly Dictionary<LayoutPage, List<Line>> lines = new();
    private DocumentLayout layout;
    private int page;
    private int line = -1;
    private int span = -1;

    /// <summary>An enumerator over the laid-out pages of document, standing on its first page.</summary>
    public LayoutEnumerator(Document document)
    {
        ArgumentNullException.ThrowIfNull(document);
        Document = document;
        layout = document.PageLayout;
    }

    /// <summary>The document whose pages are walked.</summary>
    public Document Document { get; }

    /// <summary>What the enumerator stands on: a page, a line or a span.</summary>
    public LayoutEntityType Type => span >= 0 ? LayoutEntityType.Span : line >= 0 ? LayoutEntityType.Line : LayoutEntityType.Page;

    /// <summary>1-based index of the page the current entity is on.</summary>
    public int PageIndex => page + 1;

    /// <summary>Where the current entity lies on its page, in points from the page's top left corner.</summary>
    public RectangleF Rectangle
    {
        get
        {
            var p = layout.Pages[page];
            if (line < 0) return new RectangleF(0, 0, (float)p.Width, (float)p.Height);
            var l = Lines(p)[line];
            if (span < 0) return new RectangleF((float)l.Box.X, (float)l.Box.Y, (float)l.Box.Width, (float)l.Box.Height);
            var g = l.Spans[span];
            float left = (float)(g.X + g.Xs[0]), right = (float)(g.X + g.Xs[^1] + g.Size * 0.5);
            return new RectangleF(left, (float)l.Box.Y, right - left, (float)l.Box.Height);
        }
    }

    /// <summary>The text of the current span or line; empty for a page.</summary>
    public string Text => line < 0 ? "" : span >= 0 ? Lines(layout.Pages[page])[line].Spans[span].Text
        : string.Concat(Lines(layout.Pages[page])[line].Spans.Select(s => s.Text));

    /// <summary>Back to the first page, against the document's current layout.</summary>
    public void Reset()
    {
        layout = Document.PageLayout;
        lines.Clear();
        page = 0;
        line = span = -1;
    }

    /// <summary>Moves to the first child of the current entity; false when it has none.</summary>
    public bool MoveFirstChild() => MoveChild(first: true);

    /// <summary>Moves to the last child of the current entity; false when it has none.</summary>
    public bool MoveLastChild() => MoveChild(first: false);

    /// <summary>Moves to the entity that holds the current one; false at a page.</summary>
    public bool MoveParent()
    {
        if (span >= 0) { span = -1; return true; }
        if (line >= 0) { line = -1; return true; }
        return false;
    }

    /// <summary>Moves to the next entity of the same kind; false at the last.</summary>
    public bool MoveNext() => Step(+1);

    /// <summary>Moves to the previous entity of the same kind; false at the first.</summary>
    public bool MovePrevious() => Step(-1);

    private bool MoveChild(bool first)
    {
        var ls = Lines(layout.Pages[page]);
        if (line < 0)
        {
            if (ls.Count == 0) return false;
            line = first ? 0 : ls.Count - 1;
            return true;
        }
        if (span >= 0 || ls[line].Spans.Count == 0) return false;
        span = first ? 0 : ls[line].Spans.Count - 1;
        return true;
    }

    private bool Step(int by)
    {
        if (line < 0)
        {
            if (page + by < 0 || page + by >= layout.Pages.Count) return false;
            page += by;
            return true;
        }
        var ls = Lines(layout.Pages[page]);
        if (span < 0)
        {
            if (line + by < 0 || line + by >= ls.Count) return false;
            line += by;
            return true;
        }
        if (span + by < 0 || span + by >= ls[line].Spans.Count) return false;
        span += by;
        return true;
    }

    private List<Line> Lines(LayoutPage p)
    {
        if (lines.TryGetValue(p, out var list)) return list;
        list = new List<Line>();
        foreach (var item in p.Items)
        {
            if (item is LineBox box) list.Add(new Line(box, new List<GlyphRun>()));
            else if (item is GlyphRun run && list.Count > 0) list[^1].Spans.Add(run);
        }
        lines[p] = list;
        return list;
    }
}
