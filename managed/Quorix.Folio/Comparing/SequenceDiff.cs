namespace Quorix.Folio.Comparing;

internal enum EditKind { Equal, Delete, Insert }

/// <summary>The shortest edit script between two sequences (Myers' O(ND) algorithm): time and memory
/// grow with the number of differences, not the product of the lengths, once the common ends are cut.</summary>
internal static class SequenceDiff
{
    public readonly record struct Edit(EditKind Kind, int OldIndex, int NewIndex, int Length);

    public static List<Edit> Compute<T>(IReadOnlyList<T> a, IReadOnlyList<T> b, IEqualityComparer<T> eq)
    {
        int start = 0, endA = a.Count, endB = b.Count;
        while (start < endA && start < endB && eq.Equals(a[start], b[start])) start++;
        while (endA > start && endB > start && eq.Equals(a[endA - 1], b[endB - 1])) { endA--; endB--; }
        var raw = new List<(EditKind Kind, int I, int J)>();
        Middle(a, b, eq, start, endA, start, endB, raw);
        // Whole script: common head, middle, common tail; runs of one kind joined.
        var edits = new List<Edit>();
        void Add(EditKind k, int i, int j)
        {
            if (edits.Count > 0)
            {
                var last = edits[^1];
                bool joins = last.Kind == k && k switch
                {
                    EditKind.Equal => last.OldIndex + last.Length == i && last.NewIndex + last.Length == j,
                    EditKind.Delete => last.OldIndex + last.Length == i,
                    _ => last.NewIndex + last.Length == j,
                };
                if (joins)
                {
                    edits[^1] = last with { Length = last.Length + 1 };
                    return;
                }
            }
            edits.Add(new Edit(k, i, j, 1));
        }
        for (int i = 0; i < start; i++) Add(EditKind.Equal, i, i);
        foreach (var (k, i, j) in raw) Add(k, i, j);
        for (int i = endA, j = endB; i < a.Count; i++, j++) Add(EditKind.Equal, i, j);
        return edits;
    }

    private static void Middle<T>(IReadOnlyList<T> a, IReadOnlyList<T> b, IEqualityComparer<T> eq, int a0, int a1, int b0, int b1, List<(EditKind, int, int)> output)
    {
        int n = a1 - a0, m = b1 - b0, max = n + m;
        if (max == 0) return;
        int offset = max + 1;
        var v = new int[2 * max + 3];
        // The furthest-reaching paths after each number of edits, kept for the walk back.
        var trace = new List<int[]>();
        int found = -1;
        for (int d = 0; d <= max && found < 0; d++)
        {
            var snapshot = new int[2 * d + 1];
            for (int k = -d; k <= d; k += 2)
            {
                int x = k == -d || (k != d && v[offset + k - 1] < v[offset + k + 1]) ? v[offset + k + 1] : v[offset + k - 1] + 1;
                int y = x - k;
                while (x < n && y < m && eq.Equals(a[a0 + x], b[b0 + y])) { x++; y++; }
                v[offset + k] = x;
                if (x >= n && y >= m) found = d;
            }
            for (int k = -d; k <= d; k++) snapshot[k + d] = v[offset + k];
            trace.Add(snapshot);
        }
        var back = new List<(EditKind, int, int)>();
        int cx = n, cy = m;
        for (int d = found; d > 0; d--)
        {
            var prev = trace[d - 1];
            int k = cx - cy;
            int Prev(int kk) => kk < -(d - 1) || kk > d - 1 ? -1 : prev[kk + d - 1];
            bool down = k == -d || (k != d && Prev(k - 1) < Prev(k + 1));
            int pk = down ? k + 1 : k - 1;
            int px = Prev(pk), py = px - pk;
            while (cx > px + (down ? 0 : 1) && cy > py + (down ? 1 : 0)) { cx--; cy--; back.Add((EditKind.Equal, a0 + cx, b0 + cy)); }
            if (down) { cy--; back.Add((EditKind.Insert, a0 + cx, b0 + cy)); }
            else { cx--; back.Add((EditKind.Delete, a0 + cx, b0 + cy)); }
        }
        while (cx > 0 && cy > 0) { cx--; cy--; back.Add((EditKind.Equal, a0 + cx, b0 + cy)); }
        back.Reverse();
        output.AddRange(back);
    }
}
