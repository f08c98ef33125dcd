namespace Quorix.Folio.Layout;

/// <summary>The printable frame of a page: where body text may go.</summary>
internal readonly record struct Frame(double Left, double Top, double Bottom);

/// <summary>Places blocks on pages in order, honouring hard breaks, keep-with-next chains and
/// splittable blocks; records the pages each node appears on.</summary>
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

    public Paginator(List<LayoutPage> pages, Dictionary<Node, (int, int)> spans)
    {
        this.pages = pages;
        this.spans = spans;
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
            if (y + before + b.Height <= frame.Bottom + 0.01 || onPage.Count == 0 && !CanSplit(b))
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
                NewPage(natural: true);
                queue.InsertRange(i, moved);
                i--;
                continue;
            }
            var (head, tail) = b.Split(frame.Bottom - y - before);
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
    }

    /// <summary>Adds the blocks of the current page to it; called when a page is full and at the end.</summary>
    public void Flush()
    {
        if (page == null) return;
        int index = pages.Count - 1;
        foreach (var p in onPage)
        {
            p.Block.Emit(page.Items, p.X, p.Y);
            foreach (var n in p.Block.Nodes)
                spans[n] = spans.TryGetValue(n, out var s) ? (Math.Min(s.First, index), Math.Max(s.Last, index)) : (index, index);
        }
        onPage.Clear();
    }

    private void NewPage(bool natural)
    {
        Flush();
        page = makePage!();
        pages.Add(page);
        frame = makeFrame!();
        y = frame.Top;
        naturalBreak = natural;
    }
}
