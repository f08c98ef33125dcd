using System.Text;
using System.Text.RegularExpressions;
using Quorix.Folio.Replacing;

namespace Quorix.Folio;

/// <summary>Find and replace within paragraphs, across run boundaries, in one pass over each
/// paragraph's text: the cost grows with the text and the number of matches, not their product.</summary>
internal sealed class TextReplacer
{
    // One replacement: the text [Begin, End) of the paragraph becomes Text, written into run Owner.
    private readonly record struct Edit(int Begin, int End, string Text, int Owner, Match Match);

    private readonly Regex re;
    private readonly Func<Match, string> replacement;
    private readonly FindReplaceOptions options;
    private readonly StringBuilder text = new();
    private readonly StringBuilder rebuilt = new();
    private readonly List<Run> runs = new();
    private readonly List<int> starts = new();
    // Places a match may not cross: markers with a character of their own, notes, comments,
    // pictures and content kept as read. A replacement there would move or swallow them.
    private readonly List<(int At, int Length)> barriers = new();
    private readonly List<Edit> edits = new();
    private bool stopped;

    private TextReplacer(Regex re, Func<Match, string> replacement, FindReplaceOptions options)
    {
        this.re = re;
        this.replacement = replacement;
        this.options = options;
    }

    public static int Run(Node root, Regex re, Func<Match, string> replacement, FindReplaceOptions options)
    {
        var r = new TextReplacer(re, replacement, options);
        if (root is Run run)
        {
            r.runs.Add(run);
            r.starts.Add(0);
            r.text.Append(run.Text);
            return r.Replace();
        }
        var paragraphs = new List<Paragraph>();
        if (root is Paragraph p0) paragraphs.Add(p0);
        else if (root is CompositeNode c)
            foreach (Paragraph p in c.GetChildNodes(NodeType.Paragraph, true)) paragraphs.Add(p);
        if (options.Direction == FindReplaceDirection.Backward) paragraphs.Reverse();
        int count = 0;
        foreach (var p in paragraphs)
        {
            if (r.stopped) break;
            r.Collect(p);
            count += r.Replace();
        }
        return count;
    }

    private void Collect(Paragraph p)
    {
        text.Clear();
        runs.Clear();
        starts.Clear();
        barriers.Clear();
        foreach (var n in p.InlineNodes())
        {
            switch (n)
            {
                // Deleted text is not searched: a reader of the document does not see it.
                case Run { Rev.Local: "del" or "moveFrom" }:
                    break;
                case Run r:
                    starts.Add(text.Length);
                    runs.Add(r);
                    text.Append(r.Text);
                    break;
                case SpecialChar s:
                    barriers.Add((text.Length, 1));
                    text.Append(s.Char);
                    break;
                case BookmarkStart or BookmarkEnd or CommentRangeStart or CommentRangeEnd:
                    break;
                default:
                    barriers.Add((text.Length, 0));
                    break;
            }
        }
    }

    private int Replace()
    {
        if (runs.Count == 0) return 0;
        var all = text.ToString();
        edits.Clear();
        int owner = 0, barrier = 0;
        for (var m = re.Match(all); m.Success; m = m.NextMatch())
        {
            int b = m.Index, e = b + m.Length;
            while (barrier < barriers.Count && barriers[barrier].At + Math.Max(barriers[barrier].Length, 1) <= b) barrier++;
            if (Blocked(barrier, b, e)) continue;
            while (owner + 1 < runs.Count && starts[owner + 1] <= b && End(owner) <= b) owner++;
            int at = OwnerOf(owner, b);
            if (at < 0) continue;
            edits.Add(new Edit(b, e, replacement(m), at, m));
        }
        if (edits.Count == 0) return 0;
        if (options.ReplacingCallback is { } callback) Ask(callback);
        Apply(all);
        return edits.Count;
    }

    private bool Blocked(int from, int b, int e)
    {
        for (int k = from; k < barriers.Count && barriers[k].At < e; k++)
            if (Crosses(barriers[k], b, e)) return true;
        return false;
    }

    private static bool Crosses((int At, int Length) bar, int b, int e) =>
        bar.Length == 0 ? b < bar.At && bar.At < e : b < bar.At + bar.Length && e > bar.At;

    private int End(int i) => starts[i] + runs[i].Text.Length;

    // The run that holds the character at b; an empty match after the last character of a run
    // that no other run continues goes to that run. -1 when no run can take it.
    private int OwnerOf(int from, int b)
    {
        for (int i = from; i < runs.Count && starts[i] <= b; i++)
            if (b < End(i)) return i;
        for (int i = Math.Min(from, runs.Count - 1); i >= 0; i--)
            if (End(i) == b && runs[i].Text.Length > 0) return i;
        return -1;
    }

    private void Ask(IReplacingCallback callback)
    {
        var kept = new List<Edit>(edits.Count);
        bool backward = options.Direction == FindReplaceDirection.Backward;
        for (int k = 0; k < edits.Count && !stopped; k++)
        {
            var ed = edits[backward ? edits.Count - 1 - k : k];
            var args = new ReplacingArgs(ed.Match, runs[ed.Owner], ed.Begin - starts[ed.Owner], ed.Text);
            switch (callback.Replacing(args))
            {
                case ReplaceAction.Replace: kept.Add(ed with { Text = args.Replacement ?? "" }); break;
                case ReplaceAction.Skip: break;
                case ReplaceAction.Stop: stopped = true; break;
                case var unknown: throw new ArgumentOutOfRangeException(nameof(callback), unknown, "The replacing callback returned an action that is neither Replace, Skip nor Stop.");
            }
        }
        if (backward) kept.Reverse();
        edits.Clear();
        edits.AddRange(kept);
    }

    // Each run keeps its formatting: a replacement goes into the run where its match begins, and
    // the rest of the match is cut from the runs it covers.
    private void Apply(string all)
    {
        int next = 0;
        for (int i = 0; i < runs.Count; i++)
        {
            int rs = starts[i], rend = End(i), pos = rs;
            while (next < edits.Count && edits[next].End <= rs && edits[next].Owner < i) next++;
            rebuilt.Clear();
            bool changed = false;
            for (int k = next; k < edits.Count; k++)
            {
                var ed = edits[k];
                if (ed.Begin > rend || (ed.Begin == rend && ed.Owner != i)) break;
                if (ed.Begin > pos)
                {
                    rebuilt.Append(all, pos, ed.Begin - pos);
                    pos = ed.Begin;
                }
                if (ed.Owner == i) rebuilt.Append(ed.Text);
                pos = Math.Max(pos, Math.Min(ed.End, rend));
                changed = true;
                if (ed.End > rend) break;
            }
            if (!changed) continue;
            rebuilt.Append(all, pos, rend - pos);
            if (rebuilt.Length == 0 && rend > rs) runs[i].Remove();
            else runs[i].Text = rebuilt.ToString();
        }
    }
}
