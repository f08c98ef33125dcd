using Quorix.Folio.Fonts;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;

namespace Quorix.Folio.Layout;

/// <summary>The pages of a whole document: sections paginated in order, then headers and footers
/// laid out on each page with its number.</summary>
internal sealed class DocumentLayout
{
    public List<LayoutPage> Pages { get; } = new();

    /// <summary>First and last page index of each node that shows on a page.</summary>
    public Dictionary<Node, (int First, int Last)> Spans { get; } = new();

    private readonly Document doc;
    private readonly LayoutContext ctx;
    private readonly List<Section> sections;
    // The first page of each section that started one; numbering restarts and first-page headers key off it.
    private readonly Dictionary<int, int> sectionFirstPage = new();

    /// <summary>The reference marks the pages show.</summary>
    public NoteMarks NoteMarks { get; }

    private DocumentLayout(Document doc, FontSettings fonts, NoteMarks marks)
    {
        this.doc = doc;
        NoteMarks = marks;
        ctx = new LayoutContext(fonts.Library, ThemeFonts.Of(doc)) { Warnings = doc.Warnings, Notes = marks };
        sections = doc.Sections.Cast<Section>().ToList();
    }

    public static DocumentLayout Build(Document doc, FontSettings fonts)
    {
        var marks = NoteMarks.Number(doc, null);
        var layout = Build(doc, fonts, marks);
        // Footnotes numbered per page need the pages first; the marks are short, so one more pass settles them.
        if (NoteMarks.NeedPages(doc))
        {
            var byPage = NoteMarks.Number(doc, n => layout.Spans.TryGetValue(n, out var s) ? s.First : -1);
            if (!byPage.SameAs(marks)) layout = Build(doc, fonts, byPage);
        }
        return layout;
    }

    private static DocumentLayout Build(Document doc, FontSettings fonts, NoteMarks marks)
    {
        var layout = new DocumentLayout(doc, fonts, marks);
        layout.Paginate();
        layout.Number();
        layout.AddHeadersAndFooters();
        return layout;
    }

    // Lines of each note, laid out once at the width of its section's text.
    private readonly Dictionary<Footnote, List<Block>> noteLines = new();
    private double noteWidth;

    private List<Block> NoteLines(Footnote note)
    {
        if (!noteLines.TryGetValue(note, out var lines)) noteLines[note] = lines = ctx.Blocks(note, noteWidth);
        return lines;
    }

    /// <summary>The separator above notes is an empty line of the document's default text.</summary>
    private double SeparatorHeight() => ParagraphLayout.Lay(ctx, new Paragraph(doc), 100).Sum(b => b.Height);

    private void Paginate()
    {
        var paginator = new Paginator(Pages, Spans, NoteLines, SeparatorHeight());
        var endnotes = new List<Footnote>();
        for (int si = 0; si < sections.Count; si++)
        {
            var s = sections[si];
            var ps = s.PageSetup;
            double w = ps.PageWidth, h = ps.PageHeight, left = ps.LeftMargin + ps.Gutter;
            double bodyWidth = Math.Max(36, w - left - ps.RightMargin);
            noteWidth = bodyWidth;
            paginator.NotesBeneathText = ps.FootnoteOptions.Position == FootnotePosition.BeneathText;
            // Blocks are made at the narrowest column's width, so that no table runs into the next column;
            // the paginator lays lines again at the width of the column they land in.
            var columns = ps.TextColumns.Layout();
            double columnWidth = columns.Length == 1 ? bodyWidth : Math.Max(36, columns.Min(c => c.Width));
            var blocks = s.Body is { } body ? ctx.Flow(body, columnWidth) : Enumerable.Empty<Block>();
            var start = ps.SectionStart;
            var current = paginator.Current;
            bool continuous = si > 0 && start == SectionStart.Continuous && current != null && Math.Abs(current.Width - w) < 0.5 && Math.Abs(current.Height - h) < 0.5;
            int sectionIndex = si;
            int pagesBefore = Pages.Count;
            paginator.StartSection(
                () => new LayoutPage(w, h, sectionIndex),
                () => BodyFrame(sectionIndex, left, Pages.Count - 1 == pagesBefore),
                continuous,
                start switch { SectionStart.OddPage => 1, SectionStart.EvenPage => 2, _ => 0 });
            if (!continuous) sectionFirstPage[si] = Pages.Count - 1;
            paginator.SetColumns(columns.Length == 1 ? new[] { (0.0, bodyWidth) } : columns, ps.TextColumns.LineBetween);
            paginator.Place(blocks);
            if (s.Body != null) endnotes.AddRange(s.Body.GetChildNodes(NodeType.Footnote, true).Cast<Footnote>().Where(n => n.FootnoteType == FootnoteType.Endnote));
            if (endnotes.Count > 0 && (si == sections.Count - 1 || ps.EndnoteOptions.Position == EndnotePosition.EndOfSection))
            {
                paginator.Place(EndnoteBlocks(endnotes));
                endnotes.Clear();
            }
        }
        while (paginator.HasCarriedNotes) paginator.NewPageForNotes();
        paginator.Flush();
        if (Pages.Count == 0) Pages.Add(new LayoutPage(612, 792, 0));
    }

    /// <summary>Endnotes after the text they end: a separator rule, then each note's paragraphs.</summary>
    private List<Block> EndnoteBlocks(List<Footnote> notes)
    {
        double h = SeparatorHeight();
        var separator = new ItemsBlock { Height = h };
        separator.Items.Add(new LineItem(0, h / 2, 144, h / 2, 0.5, TextStyle.Black));
        var blocks = new List<Block> { separator };
        foreach (var n in notes) blocks.AddRange(ctx.Blocks(n, noteWidth));
        return blocks;
    }

    /// <summary>Where body text goes: inside the margins, pushed in by a header or footer that needs more room.</summary>
    private Frame BodyFrame(int si, double left, bool firstOfSection)
    {
        var ps = sections[si].PageSetup;
        double top = Math.Abs(ps.TopMargin), bottom = ps.PageHeight - Math.Abs(ps.BottomMargin);
        double width = Math.Max(36, ps.PageWidth - left - ps.RightMargin);
        if (HeaderFooterFor(si, true, firstOfSection, false) is { } header)
            top = Math.Max(top, ps.HeaderDistance + StoryHeight(header, width));
        if (HeaderFooterFor(si, false, firstOfSection, false) is { } footer)
            bottom = Math.Min(bottom, ps.PageHeight - ps.FooterDistance - StoryHeight(footer, width));
        return new Frame(left, top, bottom, left + width);
    }

    // Measured once per story and width: every page of a section asks again.
    private readonly Dictionary<(HeaderFooter, double), double> storyHeights = new();

    private double StoryHeight(HeaderFooter story, double width)
    {
        if (!storyHeights.TryGetValue((story, width), out var h))
            storyHeights[(story, width)] = h = Stack.Height(ctx.Blocks(story, width));
        return h;
    }

    private void Number()
    {
        int number = 0;
        for (int i = 0; i < Pages.Count; i++)
        {
            var page = Pages[i];
            var ps = sections.Count > 0 ? sections[page.SectionIndex].PageSetup : null;
            bool starts = sectionFirstPage.TryGetValue(page.SectionIndex, out var first) && first == i;
            number = starts && ps!.RestartPageNumbering ? ps.PageStartingNumber : number + 1;
            page.Number = number;
            page.Label = Lists.ListNumbering.Format(number, ps?.PageNumberStyle ?? NumberStyle.Arabic);
        }
    }

    private void AddHeadersAndFooters()
    {
        var sectionPages = new Dictionary<int, int>();
        foreach (var p in Pages) sectionPages[p.SectionIndex] = sectionPages.GetValueOrDefault(p.SectionIndex) + 1;
        for (int i = 0; i < Pages.Count; i++)
        {
            var page = Pages[i];
            int si = page.SectionIndex;
            if (si >= sections.Count) continue;
            var ps = sections[si].PageSetup;
            bool firstOfSection = sectionFirstPage.TryGetValue(si, out var first) && first == i;
            double left = ps.LeftMargin + ps.Gutter, width = Math.Max(36, ps.PageWidth - left - ps.RightMargin);
            ctx.Page = page;
            ctx.PageCount = Pages.Count;
            ctx.SectionPageCount = sectionPages[si];
            AddBorders(page, ps, firstOfSection);
            if (HeaderFooterFor(si, true, firstOfSection, page.Number % 2 == 0) is { } header)
                EmitStory(ctx.Blocks(header, width), page, ps, left, ps.HeaderDistance, width);
            if (HeaderFooterFor(si, false, firstOfSection, page.Number % 2 == 0) is { } footer)
            {
                var blocks = ctx.Blocks(footer, width);
                EmitStory(blocks, page, ps, left, ps.PageHeight - ps.FooterDistance - Stack.Height(blocks), width);
            }
        }
        ctx.Page = null;
    }

    /// <summary>A header or footer at (x, y), with its floating pictures and watermarks placed on the
    /// page behind the text, as the paginator places the body's.</summary>
    private static void EmitStory(List<Block> blocks, LayoutPage page, PageSetup ps, double x, double y, double width)
    {
        Stack.Emit(blocks, page.Items, x, y);
        var margins = (x, Math.Abs(ps.TopMargin), page.Width - ps.RightMargin, page.Height - Math.Abs(ps.BottomMargin));
        foreach (var b in blocks)
        {
            y += b.SpaceBefore;
            foreach (var (node, placement, content) in b.Floats ?? Enumerable.Empty<(Node, FloatPlacement, List<PageItem>?)>())
            {
                var (w, h) = placement.SizeOf(node, content);
                var (fx, fy) = placement.Locate(page.Width, page.Height, (x, width), margins, y, w, h);
                page.Items.InsertRange(0, FloatPlacement.Draw(node, content, fx, fy, w, h));
            }
            y += b.Height + b.SpaceAfter;
        }
    }

    /// <summary>The section's page borders, at their distance from the text or from the page's edge.</summary>
    private static void AddBorders(LayoutPage page, PageSetup ps, bool firstOfSection)
    {
        if (!ps.HasPageBorders) return;
        var applies = ps.BorderAppliesTo;
        if (applies == PageBorderAppliesTo.FirstPage && !firstOfSection || applies == PageBorderAppliesTo.OtherPages && firstOfSection) return;
        bool fromEdge = ps.BorderDistanceFrom == PageBorderDistanceFrom.PageEdge;
        double Space(BorderType side) => ps.PageBorder(side)?.Space ?? 0;
        double top = fromEdge ? Space(BorderType.Top) : Math.Abs(ps.TopMargin) - Space(BorderType.Top);
        double left = fromEdge ? Space(BorderType.Left) : ps.LeftMargin + ps.Gutter - Space(BorderType.Left);
        double bottom = fromEdge ? page.Height - Space(BorderType.Bottom) : page.Height - Math.Abs(ps.BottomMargin) + Space(BorderType.Bottom);
        double right = fromEdge ? page.Width - Space(BorderType.Right) : page.Width - ps.RightMargin + Space(BorderType.Right);
        if (TableLayout.Side(ps.PageBorder(BorderType.Top)) is { } t) page.Items.Add(new LineItem(left, top, right, top, t.Width, t.Color));
        if (TableLayout.Side(ps.PageBorder(BorderType.Bottom)) is { } b) page.Items.Add(new LineItem(left, bottom, right, bottom, b.Width, b.Color));
        if (TableLayout.Side(ps.PageBorder(BorderType.Left)) is { } l) page.Items.Add(new LineItem(left, top, left, bottom, l.Width, l.Color));
        if (TableLayout.Side(ps.PageBorder(BorderType.Right)) is { } r) page.Items.Add(new LineItem(right, top, right, bottom, r.Width, r.Color));
    }

    /// <summary>The header or footer a page shows: first-page or even-page kinds where the section has
    /// them, else the primary; a section without its own shows the previous section's (linked).</summary>
    private HeaderFooter? HeaderFooterFor(int si, bool header, bool firstOfSection, bool even)
    {
        HeaderFooterType kind;
        if (firstOfSection && sections[si].PageSetup.DifferentFirstPageHeaderFooter)
            kind = header ? HeaderFooterType.HeaderFirst : HeaderFooterType.FooterFirst;
        else if (even && HasKind(sections[si], header ? HeaderFooterType.HeaderEven : HeaderFooterType.FooterEven))
            kind = header ? HeaderFooterType.HeaderEven : HeaderFooterType.FooterEven;
        else
            kind = header ? HeaderFooterType.HeaderPrimary : HeaderFooterType.FooterPrimary;
        for (int i = si; i >= 0; i--)
            foreach (var n in sections[i].HeadersFooters)
                if (n is HeaderFooter hf && hf.HeaderFooterType == kind) return hf;
        return null;
    }

    private static bool HasKind(Section s, HeaderFooterType kind)
    {
        foreach (var n in s.HeadersFooters)
            if (n is HeaderFooter hf && hf.HeaderFooterType == kind) return true;
        return false;
    }
}
