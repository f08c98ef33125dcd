namespace Quorix.Folio.Layout;

/// <summary>The printable frame of a page: where body text may go.</summary>
internal readonly record struct Frame(double Left, double Top, double Bottom);

/// <summary>Places blocks on pages in order, honouring hard breaks, keep-with-next chains and
/// splittable blocks, with the footnotes a block references at the bottom of its page; records the
/// pages each node appears on.</summary>
internal sealed class Paginator
{
    private sealed record Placed(Block Block, double X, double Y);

    private readonly List<LayoutPage> pages;
    private readonly Dictionary<Node, (int First, int Last)> spans;
    private readonly List<Placed> onPage = new();
    private LayoutPage? page;
    private Frame frame;
    private double y;
    private bool naturalBreak;
    private Func<LayoutPage>? makePage;
    private Func<Frame>? makeFrame;
    // Footnote lines on the current page, each with the block that references it (null: carried over).
    private readonly List<(Block? Owner, Block Line)> notes = new();
    private readonly List<Block> carried = new();
    private double notesHeight;
    private readonly Func<Notes.Footnote, List<Block>> noteLines;
    private readonly double separatorHeight;
    private bool notesBeneathText;

    /// <param name="noteLines">The laid-out lines of a footnote.</param>
    /// <param name="separatorHeight">Room the separator line above a page's footnotes takes.</param>
    public Paginator(List<LayoutPage> pages, Dictionary<Node, (int, int)> spans, Func<Notes.Footnote, List<Block>> noteLines, double separatorHeight)
    {
        this.pages = pages;
        this.spans = spans;
        this.noteLines = noteLines;
        this.separatorHeight = separatorHeight;
    }

    /// <summary>Whether footnotes of the pages to come follow the text instead of sitting at the bottom.</summary>
    public bool NotesBeneathText { set => notesBeneathText = value; }

    private double Bottom => frame.Bottom - notesHeight;

    /// <summary>The height the footnotes a block references add to its page.</summary>
    private double NotesNeed(Block b)
    {
        if (b.Notes == null) return 0;
        double h = 0;
        foreach (var n in b.Notes)
            if (n.FootnoteType == Notes.FootnoteType.Footnote) h += Stack.Height(noteLines(n));
        return h > 0 && notes.Count == 0 ? h + separatorHeight : h;
    }

    public LayoutPage? Current => page;

    /// <summary>Starts a page of the given section; with <paramref name="continuous"/>, text goes on
    /// the current page when there is one, under what it already holds.</summary>
    public void StartSection(Func<LayoutPage> newPage, Func<Frame> newFrame, bool continuous, int parity)
    {
        makePage = newPage;
        makeFrame = newFrame;
        if (continuous && page != null)
        {
            var f = newFrame();
            frame = frame with { Left = f.Left };
            return;
        }
        NewPage(natural: false);
        // Odd and even section starts leave a blank page when the next number has the wrong parity.
        if (parity != 0 && pages.Count % 2 != (parity == 1 ? 1 : 0)) NewPage(natural: false);
    }

    public void Place(IEnumerable<Block> blocks)
    {
        var queue = new List<Block>(blocks);
        for (int i = 0; i < queue.Count; i++)
        {
            var b = queue[i];
            if (b.BreakBefore && onPage.Count > 0) NewPage(natural: false);
            if (onPage.Count == 0 && b is TableRowBlock { IsHeader: false, Headers.Count: > 0 } row && !b.BreakBefore)
            {
                // A table carried over to a new page shows its heading rows again.
                queue.InsertRange(i, row.Headers!.Select(h => h.AsRepeat()));
                b = queue[i];
            }
            double before = onPage.Count == 0 && naturalBreak ? 0 : b.SpaceBefore;
            if (y + before + b.Height + NotesNeed(b) <= Bottom + 0.01 || onPage.Count == 0 && !CanSplit(b))
            {
                Put(b, before);
                continue;
            }
            // A keep chain ending here moves to the next page whole, unless it fills this page.
            int chain = onPage.Count;
            while (chain > 0 && onPage[chain - 1].Block.KeepWithNext) chain--;
            if (chain > 0 && chain < onPage.Count && !b.BreakBefore)
            {
                var moved = onPage.GetRange(chain, onPage.Count - chain).Select(p => p.Block).ToList();
                onPage.RemoveRange(chain, onPage.Count - chain);
                DropNotesOf(moved);
                NewPage(natural: true);
                queue.InsertRange(i, moved);
                i--;
                continue;
            }
            var (head, tail) = b.Split(Bottom - y - before - NotesNeed(b));
            if (head != null)
            {
                Put(head, before);
                NewPage(natural: true);
                tail!.SpaceBefore = 0;
                queue[i] = tail;
                i--;
                continue;
            }
            if (onPage.Count == 0)
            {
                Put(b, before); // taller than a page and unsplittable: it overflows rather than vanishes
                continue;
            }
            NewPage(natural: true);
            i--;
        }
    }

    private static bool CanSplit(Block b) => b is TableRowBlock;

    private void Put(Block b, double before)
    {
        onPage.Add(new Placed(b, frame.Left, y + before));
        y += before + b.Height + b.SpaceAfter;
        if (b.Notes == null) return;
        foreach (var n in b.Notes)
            if (n.FootnoteType == Notes.FootnoteType.Footnote)
                foreach (var line in noteLines(n)) AddNoteLine(b, line);
    }

    /// <summary>A note line goes on this page while it fits under the text; once one does not, it and
    /// the rest continue at the bottom of the next page.</summary>
    private void AddNoteLine(Block? owner, Block line)
    {
        double sep = notes.Count == 0 ? separatorHeight : 0;
        if (carried.Count > 0 && owner != null || y + notesHeight + sep + line.Total > frame.Bottom + 0.01 && notes.Count > 0)
        {
            carried.Add(line);
            return;
        }
        notes.Add((owner, line));
        notesHeight += sep + line.Total;
    }

    private void DropNotesOf(List<Block> moved)
    {
        if (notes.RemoveAll(n => n.Owner != null && moved.Contains(n.Owner)) == 0) return;
        notesHeight = notes.Count == 0 ? 0 : separatorHeight + notes.Sum(n => n.Line.Total);
    }

    /// <summary>Adds the blocks of the current page to it; called when a page is full and at the end.</summary>
    public void Flush()
    {
        if (page == null) return;
        int index = pages.Count - 1;
        foreach (var p in onPage)
        {
            p.Block.Emit(page.Items, p.X, p.Y);
            Record(p.Block, index);
        }
        if (notes.Count > 0)
        {
            double top = notesBeneathText ? y : frame.Bottom - notesHeight;
            // The separator: a short rule above the notes, as word processors draw it.
            page.Items.Add(new LineItem(frame.Left, top + separatorHeight / 2, frame.Left + 144, top + separatorHeight / 2, 0.5, TextStyle.Black));
            Stack.Emit(notes.Select(n => n.Line), page.Items, frame.Left, top + separatorHeight);
            foreach (var n in notes) Record(n.Line, index);
        }
        onPage.Clear();
        notes.Clear();
        notesHeight = 0;
    }

    private void Record(Block b, int index)
    {
        foreach (var n in b.Nodes)
            spans[n] = spans.TryGetValue(n, out var s) ? (Math.Min(s.First, index), Math.Max(s.Last, index)) : (index, index);
    }

    private void NewPage(bool natural)
    {
        Flush();
        page = makePage!();
        pages.Add(page);
        frame = makeFrame!();
        y = frame.Top;
        naturalBreak = natural;
        if (carried.Count == 0) return;
        var lines = carried.ToList();
        carried.Clear();
        foreach (var line in lines) AddNoteLine(null, line);
    }

    /// <summary>Whether footnote lines still wait for a page; the caller adds pages until none do.</summary>
    public bool HasCarriedNotes => carried.Count > 0;

    public void NewPageForNotes() => NewPage(natural: true);
}
