using System.Text;
using System.Text.RegularExpressions;

namespace Quorix.Folio;

/// <summary>Find and replace within paragraphs, across run boundaries.</summary>
internal static class TextReplacer
{
    public static int Run(Node root, Regex re, Func<Match, string> replace)
    {
        var paragraphs = new List<Paragraph>();
        if (root is Paragraph p0) paragraphs.Add(p0);
        else if (root is CompositeNode c)
            foreach (Paragraph p in c.GetChildNodes(NodeType.Paragraph, true)) paragraphs.Add(p);
        else if (root.ParentNode is Paragraph && root is Run r0) return InRun(r0, re, replace);
        int count = 0;
        foreach (var p in paragraphs) count += InParagraph(p, re, replace);
        return count;
    }

    private static int InRun(Run run, Regex re, Func<Match, string> replace)
    {
        int n = 0;
        run.Text = re.Replace(run.Text, m => { n++; return replace(m); });
        return n;
    }

    // Each run keeps its formatting; a match spanning runs is written into its first run.
    private static int InParagraph(Paragraph p, Regex re, Func<Match, string> replace)
    {
        var runs = new List<Run>();
        var starts = new List<int>();
        var sb = new StringBuilder();
        for (var n = p.first; n != null; n = n.next)
        {
            if (n is not Run r) continue;
            starts.Add(sb.Length);
            runs.Add(r);
            sb.Append(r.Text);
        }
        if (runs.Count == 0) return 0;
        var text = sb.ToString();
        var matches = re.Matches(text);
        if (matches.Count == 0) return 0;
        var newTexts = runs.Select(r => r.Text).ToArray();
        // Right to left so offsets of earlier matches stay valid.
        for (int mi = matches.Count - 1; mi >= 0; mi--)
        {
            var m = matches[mi];
            if (m.Length == 0) continue;
            int begin = m.Index, end = m.Index + m.Length;
            int first = Owner(starts, begin), last = Owner(starts, end - 1);
            var repl = replace(m);
            for (int i = last; i >= first; i--)
            {
                int rs = starts[i];
                var t = newTexts[i];
                int from = Math.Max(begin, rs) - rs;
                int to = Math.Min(end, rs + runs[i].Text.Length) - rs;
                newTexts[i] = t.Substring(0, from) + (i == first ? repl : "") + t.Substring(Math.Min(t.Length, to + (t.Length - runs[i].Text.Length)));
            }
        }
        for (int i = 0; i < runs.Count; i++)
        {
            if (newTexts[i].Length == 0 && runs[i].Text.Length > 0) runs[i].Remove();
            else runs[i].Text = newTexts[i];
        }
        return matches.Count(m => m.Length > 0);
    }

    private static int Owner(List<int> starts, int offset)
    {
        int i = starts.BinarySearch(offset);
        if (i >= 0)
        {
            // Empty runs share a start with the next one; the last run at the offset holds it.
            while (i + 1 < starts.Count && starts[i + 1] == offset) i++;
            return i;
        }
        return ~i - 1;
    }
}
