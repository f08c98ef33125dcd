using System.Text;
using Quorix.Folio.Formatting;
using Quorix.Folio.Lists;

namespace Quorix.Folio.Text;

/// <summary>Counts list items in document order and renders their labels.</summary>
internal sealed class ListLabeler
{
    private readonly Dictionary<int, int[]> counters = new();
    private readonly Dictionary<int, List?> lists = new();
    private readonly Document doc;

    public ListLabeler(Document doc) { this.doc = doc; }

    public readonly record struct Label(string Text, bool IsBullet, int Level, int Number);

    public Label? Next(Paragraph p)
    {
        var lf = p.ListFormat;
        var list = lf.List;
        if (list == null) return null;
        int level = Math.Clamp(lf.ListLevelNumber, 0, 8);
        var lvl = list.Level(level);
        if (!counters.TryGetValue(list.ListId, out var c))
        {
            c = new int[9];
            Array.Fill(c, int.MinValue);
            counters[list.ListId] = c;
        }
        c[level] = c[level] == int.MinValue ? StartOf(list, level) : c[level] + 1;
        for (int i = level + 1; i < 9; i++) c[i] = int.MinValue;
        var style = lvl?.NumberStyle ?? NumberStyle.Arabic;
        if (style == NumberStyle.Bullet) return new Label(lvl?.NumberFormat is { Length: > 0 } b ? b : "\u2022", true, level, 0);
        var pattern = lvl?.NumberFormat ?? ("%" + (level + 1) + ".");
        var sb = new StringBuilder();
        for (int i = 0; i < pattern.Length; i++)
        {
            if (pattern[i] == '%' && i + 1 < pattern.Length && pattern[i + 1] is >= '1' and <= '9')
            {
                int k = pattern[i + 1] - '1';
                int value = c[k] == int.MinValue ? StartOf(list, k) : c[k];
                var ks = k == level ? style : list.Level(k)?.NumberStyle ?? NumberStyle.Arabic;
                sb.Append(ListNumbering.Format(value, ks == NumberStyle.Bullet ? NumberStyle.Arabic : ks));
                i++;
            }
            else sb.Append(pattern[i]);
        }
        return new Label(sb.ToString(), false, level, c[level]);
    }

    private static int StartOf(List list, int level) => list.StartOverride(level) ?? list.Level(level)?.StartAt ?? 1;
}
