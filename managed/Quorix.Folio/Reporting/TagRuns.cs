using System.Text;
using System.Text.RegularExpressions;

namespace Quorix.Folio.Reporting;

/// <summary>Gives each tag written in the text a run of its own, however the text was split into runs:
/// a tag takes the formatting of the run its first character was in.</summary>
internal static class TagRuns
{
    public static List<Run> Isolate(IEnumerable<Node> roots, Regex tag)
    {
        var found = new List<Run>();
        foreach (var root in roots)
        {
            if (root is Paragraph single) Isolate(single, tag, found);
            else if (root is CompositeNode c)
                foreach (Paragraph p in c.GetChildNodes(NodeType.Paragraph, true)) Isolate(p, tag, found);
        }
        return found;
    }

    // Runs stand for the paragraph's text; other inline nodes break it, so tags never span them.
    private static void Isolate(Paragraph p, Regex tag, List<Run> found)
    {
        var groups = new List<List<Run>>();
        List<Run>? cur = null;
        foreach (var n in p.ChildNodes)
        {
            if (n is Run r) { (cur ??= new List<Run>()).Add(r); }
            else if (cur != null) { groups.Add(cur); cur = null; }
        }
        if (cur != null) groups.Add(cur);
        foreach (var g in groups)
        {
            var sb = new StringBuilder();
            foreach (var r in g) sb.Append(r.Text);
            var text = sb.ToString();
            var matches = tag.Matches(text);
            if (matches.Count == 0) continue;
            // Rebuild the group: plain pieces and tags, each in the run format where it starts.
            var starts = new int[g.Count];
            for (int i = 1; i < g.Count; i++) starts[i] = starts[i - 1] + g[i - 1].Text.Length;
            Run FormatAt(int pos)
            {
                int i = Array.FindLastIndex(starts, s => s <= pos);
                while (i > 0 && g[i].Text.Length == 0) i--;
                return g[Math.Max(i, 0)];
            }
            var pieces = new List<(int From, int To, bool IsTag)>();
            int at = 0;
            foreach (Match m in matches)
            {
                if (m.Index > at) pieces.Add((at, m.Index, false));
                pieces.Add((m.Index, m.Index + m.Length, true));
                at = m.Index + m.Length;
            }
            if (at < text.Length) pieces.Add((at, text.Length, false));
            var anchor = g[^1].NextSibling;
            var newRuns = new List<(Run Run, bool IsTag)>();
            foreach (var (from, to, isTag) in pieces)
            {
                if (!isTag)
                {
                    // Plain text keeps its own run boundaries and formats.
                    for (int i = 0; i < g.Count; i++)
                    {
                        int s = Math.Max(from, starts[i]), e = Math.Min(to, starts[i] + g[i].Text.Length);
                        if (e > s) newRuns.Add((new Run(p.Document, text[s..e], g[i].RPr.Clone()), false));
                    }
                }
                else newRuns.Add((new Run(p.Document, text[from..to], FormatAt(from).RPr.Clone()), true));
            }
            foreach (var r in g) r.Remove();
            foreach (var (run, isTag) in newRuns)
            {
                p.InsertBefore(run, anchor);
                if (isTag) found.Add(run);
            }
        }
    }
}
