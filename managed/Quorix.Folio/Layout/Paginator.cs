namespace Quorix.Folio.Layout;

/// <summary>The printable frame of a page: where body text may go.</summary>
internal readonly record struct Frame(double Left, double Top, double Bottom, double Right);

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
    // Columns of the current section: offsets from the frame's left edge; the column being filled,
    // where its blocks start in onPage, and the top and lowest text of the columns on this page.
    private double[] columnX = { 0 };
    private double[] columnWidth = { 0 };
    private bool lineBetween;
    private int column;
    private int columnStart;
    private double columnTop;
    private double regionBottom;
    // Floating pictures on the current page, with the block that anchors them and the band text keeps clear of.
    // Floating shapes on the current page: the block that anchors each, what it draws, and the
    // rectangle text keeps clear of (its own grown by its wrap distances).
    private readonly List<(Block Owner, List<PageItem> Items, double Top, double Bottom, double Left, double Right, FloatPlacement Placement)> floats = new();

    /// <summary>A paginator filling <paramref name="pages"/>; <paramref name="noteLines"/> gives a footnote's
    /// laid-out lines, <paramref name="separatorHeight"/> the room the rule above a page's notes takes.</summary>
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

    private bool ColumnEmpty => onPage.Count == columnStart;

    /// <summary>The columns the section's text flows through, from here on: on a page shared with the
    /// previous section they start under its lowest text.</summary>
    public void SetColumns((double X, double Width)[] columns, bool line)
    {
        EndRegion();
        y = Math.Max(y, regionBottom);
        columnX = columns.Select(c => c.X).ToArray();
        columnWidth = columns.Select(c => c.Width).ToArray();
        lineBetween = line && columns.Length > 1;
        column = 0;
        columnStart = onPage.Count;
        columnTop = regionBottom = y;
    }

    /// <summary>Rules between the columns of the region ending, down to its lowest text.</summary>
    private void EndRegion()
    {
        if (!lineBetween || page == null || regionBottom <= columnTop) return;
        for (int i = 1; i < columnX.Length; i++)
        {
            double x = frame.Left + (columnX[i - 1] + columnWidth[i - 1] + columnX[i]) / 2;
            page.Items.Add(new LineItem(x, columnTop, x, regionBottom, 0.5, TextStyle.Black));
        }
    }

    /// <summary>Continues in the next column, or on a new page after the last.</summary>
    private void Advance(bool natural)
    {
        if (column + 1 >= columnX.Length)
        {
            NewPage(natural);
            return;
        }
        column++;
        columnStart = onPage.Count;
        y = columnTop;
        naturalBreak = natural;
    }

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
        // Blocks handed back to be placed again (moved by a keep chain, the rest of a split row,
        // repeated headings), the next one last; then the flow itself.
        var again = new List<Block>();
        using var flow = blocks.GetEnumerator();
        while (again.Count > 0 || flow.MoveNext())
        {
            Block b;
            if (again.Count > 0) { b = again[^1]; again.RemoveAt(again.Count - 1); }
            else b = flow.Current;
            if (b.BreakBefore && onPage.Count > 0) NewPage(natural: false);
            else if (b.ColumnBreakBefore && !ColumnEmpty) Advance(natural: false);
            if (ColumnEmpty && b is TableRowBlock { IsHeader: false, Headers.Count: > 0 } row && !b.BreakBefore)
            {
                // A table carried over to a new page shows its heading rows again.
                again.Add(b);
                for (int h = row.Headers!.Count - 1; h >= 0; h--) again.Add(row.Headers[h].AsRepeat());
                continue;
            }
            double before = ColumnEmpty && naturalBreak ? 0 : b.SpaceBefore;
            if (b.Floats != null && !floats.Exists(f => f.Owner == b)) AddFloats(b, y + before);
            before = Clear(y + before, b.Height, b is ItemsBlock { Origin: not null }) - y;
            if (b is ItemsBlock { Origin: { } origin, Relaid: false } line)
            {
                // A line beside a floating shape other than the one it was laid beside, or in a column
                // of another width: the paragraph's lines are laid again from here, each clear of the
                // shapes where it will sit.
                double top = y + before;
                if (!SameSpans(Beside(top, b.Height), origin.Beside) || Math.Abs(origin.Width - columnWidth[column]) > 0.01)
                {
                    var fresh = origin.Paragraph.Relay(line, columnWidth[column], (offset, height) => Beside(top + offset, height));
                    DropRestOf(origin.Paragraph, again, flow);
                    for (int f = 0; f < floats.Count; f++)
                        if (floats[f].Owner == b) floats[f] = floats[f] with { Owner = fresh[0] };
                    for (int k = fresh.Count - 1; k >= 0; k--) again.Add(fresh[k]);
                    continue;
                }
            }
            if (y + before + b.Height + NotesNeed(b) <= Bottom + 0.01 || ColumnEmpty && !CanSplit(b))
            {
                Put(b, before);
                continue;
            }
            // A keep chain ending here moves to the next page whole, unless it fills this page.
            int chain = onPage.Count;
            while (chain > columnStart && onPage[chain - 1].Block.KeepWithNext) chain--;
            if (chain > columnStart && chain < onPage.Count && !b.BreakBefore)
            {
                var moved = onPage.GetRange(chain, onPage.Count - chain).Select(p => p.Block).ToList();
                onPage.RemoveRange(chain, onPage.Count - chain);
                moved.Add(b);
                DropNotesOf(moved);
                moved.RemoveAt(moved.Count - 1);
                Advance(natural: true);
                Requeue(again, b);
                for (int m = moved.Count - 1; m >= 0; m--) Requeue(again, moved[m]);
                continue;
            }
            var (head, tail) = b.Split(Bottom - y - before - NotesNeed(b));
            if (head != null)
            {
                Put(head, before);
                Advance(natural: true);
                tail!.SpaceBefore = 0;
                again.Add(tail);
                continue;
            }
            if (ColumnEmpty)
            {
                Put(b, before); // taller than a page and unsplittable: it overflows rather than vanishes
                continue;
            }
            floats.RemoveAll(f => f.Owner == b);
            Advance(natural: true);
            Requeue(again, b);
        }
    }

    /// <summary>Hands a block back to be placed again elsewhere, where its lines are checked against
    /// the shapes there.</summary>
    private static void Requeue(List<Block> again, Block b)
    {
        if (b is ItemsBlock line) line.Relaid = false;
        again.Add(b);
    }

    /// <summary>Drops the lines of a paragraph that follow the one being laid again, from the blocks
    /// handed back and from the flow.</summary>
    private static void DropRestOf(ParagraphLayout paragraph, List<Block> again, IEnumerator<Block> flow)
    {
        while (again.Count > 0 && again[^1] is ItemsBlock { Origin: { } o } && o.Paragraph == paragraph) again.RemoveAt(again.Count - 1);
        if (again.Count > 0) return;
        while (flow.MoveNext())
        {
            if (flow.Current is ItemsBlock { Origin: { } o } && o.Paragraph == paragraph) continue;
            again.Add(flow.Current);
            return;
        }
    }

    /// <summary>The spans of the current column a line from <paramref name="top"/> of the given height
    /// keeps clear of the square-wrapped shapes beside it, as sorted x1, x2 pairs from the column's
    /// left edge; null when none is beside it.</summary>
    private double[]? Beside(double top, double height)
    {
        List<(double A, double B)>? spans = null;
        double columnLeft = frame.Left + columnX[column], width = columnWidth[column];
        foreach (var f in floats)
        {
            if (f.Placement.Wrap != FloatWrap.Square || top >= f.Bottom - 0.01 || top + height <= f.Top + 0.01) continue;
            double a = f.Left - columnLeft, b = f.Right - columnLeft;
            if (b <= 0 || a >= width) continue;
            switch (f.Placement.Sides)
            {
                case WrapSides.Left: b = width; break;
                case WrapSides.Right: a = 0; break;
                case WrapSides.Largest when a >= width - b: b = width; break;
                case WrapSides.Largest: a = 0; break;
            }
            (spans ??= new()).Add((Math.Max(0, a), Math.Min(width, b)));
        }
        if (spans == null) return null;
        spans.Sort();
        var merged = new List<double>();
        foreach (var (a, b) in spans)
        {
            if (merged.Count > 0 && a <= merged[^1]) merged[^1] = Math.Max(merged[^1], b);
            else { merged.Add(a); merged.Add(b); }
        }
        return merged.ToArray();
    }

    private static bool SameSpans(double[]? a, double[]? b)
    {
        if (a == null || b == null) return a == b;
        if (a.Length != b.Length) return false;
        for (int i = 0; i < a.Length; i++)
            if (Math.Abs(a[i] - b[i]) > 0.01) return false;
        return true;
    }

    /// <summary>Whether the shapes beside a line leave no piece of the column wide enough for text.</summary>
    private bool NoRoomBeside(double top, double height)
    {
        var clear = Beside(top, height);
        if (clear == null) return false;
        double at = 0, width = columnWidth[column];
        for (int i = 0; i < clear.Length; i += 2)
        {
            if (clear[i] - at >= ParagraphLayout.MinLineSpan) return false;
            at = clear[i + 1];
        }
        return width - at < ParagraphLayout.MinLineSpan;
    }

    private static bool CanSplit(Block b) => b is TableRowBlock;

    private void Put(Block b, double before)
    {
        double top = Clear(y + before, b.Height, b is ItemsBlock { Origin: not null });
        onPage.Add(new Placed(b, frame.Left + columnX[column], top));
        y = top + b.Height + b.SpaceAfter;
        regionBottom = Math.Max(regionBottom, y - b.SpaceAfter);
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

    /// <summary>Places the block's floating pictures for a paragraph starting at <paramref name="top"/>.</summary>
    private void AddFloats(Block b, double top)
    {
        foreach (var (node, placement, content) in b.Floats!)
        {
            var (w, h) = placement.SizeOf(node, content);
            var (x, fy) = placement.Locate(page!.Width, page.Height, (frame.Left + columnX[column], columnWidth[column]),
                (frame.Left, frame.Top, frame.Right, frame.Bottom), top, w, h);
            floats.Add((b, FloatPlacement.Draw(node, content, x, fy, w, h), fy - placement.DistanceTop, fy + h + placement.DistanceBottom,
                x - placement.DistanceLeft, x + w + placement.DistanceRight, placement));
            b.Nodes.Add(node);
        }
    }

    /// <summary>The first top at or below <paramref name="top"/> where a block of the height clears
    /// every shape text wraps around: paragraph lines (<paramref name="line"/>) may sit beside a
    /// square-wrapped one that leaves them room, other blocks go below it.</summary>
    private double Clear(double top, double height, bool line)
    {
        for (bool moved = true; moved;)
        {
            moved = false;
            foreach (var f in floats)
            {
                if (!f.Placement.Wraps || top >= f.Bottom || top + height <= f.Top) continue;
                if (f.Placement.Wrap == FloatWrap.Square && line && !NoRoomBeside(top, height)) continue;
                top = f.Bottom;
                moved = true;
            }
        }
        return top;
    }

    private void DropNotesOf(List<Block> moved)
    {
        floats.RemoveAll(f => moved.Contains(f.Owner));
        if (notes.RemoveAll(n => n.Owner != null && moved.Contains(n.Owner)) == 0) return;
        notesHeight = notes.Count == 0 ? 0 : separatorHeight + notes.Sum(n => n.Line.Total);
    }

    /// <summary>Adds the blocks of the current page to it; called when a page is full and at the end.</summary>
    public void Flush()
    {
        if (page == null) return;
        EndRegion();
        int index = pages.Count - 1;
        // Pictures go under the text, as word processors draw pictures behind it or beside it.
        page.Items.InsertRange(0, floats.SelectMany(f => f.Items));
        floats.Clear();
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
        column = columnStart = 0;
        columnTop = regionBottom = y;
        if (carried.Count == 0) return;
        var lines = carried.ToList();
        carried.Clear();
        foreach (var line in lines) AddNoteLine(null, line);
    }

    /// <summary>Whether footnote lines still wait for a page; the caller adds pages until none do.</summary>
    public bool HasCarriedNotes => carried.Count > 0;

    public void NewPageForNotes() => NewPage(natural: true);
}
