using System.Globalization;
using AngleSharp.Dom;

namespace Quorix.Folio.Formats.Html;

/// <summary>The part of the CSS cascade that word-processing formatting needs: rules of style elements
/// with type, class and id selectors (simple or descendant), ordered by specificity, then the style attribute.</summary>
internal sealed class CssCascade
{
    private sealed record Rule(string[] Compound, int Specificity, int Order, List<(string Name, string Value)> Declarations);

    private readonly List<Rule> rules = new();

    public void AddSheet(string css)
    {
        css = StripComments(css);
        int i = 0;
        while (i < css.Length)
        {
            int open = css.IndexOf('{', i);
            if (open < 0) break;
            int close = css.IndexOf('}', open);
            if (close < 0) break;
            var selectors = css[i..open].Trim();
            // At-rules (media queries, font faces) are skipped whole, nested blocks included.
            if (selectors.StartsWith('@'))
            {
                int depth = 0, j = open;
                for (; j < css.Length; j++)
                {
                    if (css[j] == '{') depth++;
                    else if (css[j] == '}' && --depth == 0) break;
                }
                i = j + 1;
                continue;
            }
            var decls = ParseDeclarations(css[(open + 1)..close]);
            foreach (var sel in selectors.Split(','))
            {
                var parts = sel.Trim().Split((char[]?)null, StringSplitOptions.RemoveEmptyEntries);
                if (parts.Length == 0 || parts.Any(p => p.IndexOfAny(new[] { ':', '[', '>', '+', '~', '*' }) >= 0)) continue;
                rules.Add(new Rule(parts, parts.Sum(Specificity), rules.Count, decls));
            }
            i = close + 1;
        }
    }

    private static string StripComments(string css)
    {
        int k;
        while ((k = css.IndexOf("/*", StringComparison.Ordinal)) >= 0)
        {
            int end = css.IndexOf("*/", k + 2, StringComparison.Ordinal);
            css = end < 0 ? css[..k] : css[..k] + css[(end + 2)..];
        }
        return css;
    }

    private static int Specificity(string compound)
    {
        int s = 0;
        foreach (var c in compound) s += c == '#' ? 100 : c == '.' ? 10 : 0;
        if (compound.Length > 0 && compound[0] is not ('.' or '#')) s += 1;
        return s;
    }

    public static List<(string Name, string Value)> ParseDeclarations(string text)
    {
        var list = new List<(string, string)>();
        foreach (var d in text.Split(';'))
        {
            int colon = d.IndexOf(':');
            if (colon <= 0) continue;
            var value = d[(colon + 1)..].Replace("!important", "", StringComparison.OrdinalIgnoreCase).Trim();
            list.Add((d[..colon].Trim().ToLowerInvariant(), value));
        }
        return list;
    }

    /// <summary>The declared properties of an element, the later and more specific winning.</summary>
    public Dictionary<string, string> For(IElement e)
    {
        var result = new Dictionary<string, string>();
        foreach (var r in rules.Where(r => Matches(e, r.Compound)).OrderBy(r => r.Specificity).ThenBy(r => r.Order))
            foreach (var (n, v) in r.Declarations) Set(result, n, v);
        if (e.GetAttribute("style") is { } inline)
            foreach (var (n, v) in ParseDeclarations(inline)) Set(result, n, v);
        return result;
    }

    private static void Set(Dictionary<string, string> d, string name, string value)
    {
        // Shorthands are split into the properties read.
        if (name == "margin" || name == "padding")
        {
            var parts = value.Split(' ', StringSplitOptions.RemoveEmptyEntries);
            if (parts.Length == 0) return;
            string top = parts[0], right = parts.Length > 1 ? parts[1] : top, bottom = parts.Length > 2 ? parts[2] : top, left = parts.Length > 3 ? parts[3] : right;
            d[name + "-top"] = top;
            d[name + "-right"] = right;
            d[name + "-bottom"] = bottom;
            d[name + "-left"] = left;
            return;
        }
        if (name == "font")
        {
            foreach (var p in value.Split(' ', StringSplitOptions.RemoveEmptyEntries))
            {
                if (p is "bold" or "bolder") d["font-weight"] = "bold";
                else if (p == "italic") d["font-style"] = "italic";
                else if (char.IsDigit(p[0]) && p.IndexOf('/') is var slash) d["font-size"] = slash > 0 ? p[..slash] : p;
            }
            return;
        }
        if (name == "text-decoration-line") name = "text-decoration";
        d[name] = value;
    }

    private static bool Matches(IElement e, string[] compound)
    {
        if (!MatchesOne(e, compound[^1])) return false;
        var anc = e.ParentElement;
        for (int i = compound.Length - 2; i >= 0; i--)
        {
            while (anc != null && !MatchesOne(anc, compound[i])) anc = anc.ParentElement;
            if (anc == null) return false;
            anc = anc.ParentElement;
        }
        return true;
    }

    private static bool MatchesOne(IElement e, string compound)
    {
        int i = 0;
        int start = 0;
        while (i <= compound.Length)
        {
            if (i == compound.Length || (i > start && compound[i] is '.' or '#'))
            {
                var part = compound[start..i];
                if (part.Length > 0)
                {
                    bool ok = part[0] switch
                    {
                        '.' => e.ClassList.Contains(part[1..]),
                        '#' => e.Id == part[1..],
                        _ => string.Equals(e.LocalName, part, StringComparison.OrdinalIgnoreCase),
                    };
                    if (!ok) return false;
                }
                start = i;
            }
            i++;
        }
        return true;
    }

    /// <summary>A length in points; relative units against <paramref name="fontSize"/> (points).</summary>
    public static double? Length(string? v, double fontSize)
    {
        if (string.IsNullOrWhiteSpace(v)) return null;
        v = v.Trim().ToLowerInvariant();
        if (v == "0") return 0;
        int k = 0;
        while (k < v.Length && (char.IsDigit(v[k]) || v[k] is '.' or '-' or '+')) k++;
        if (k == 0 || !double.TryParse(v[..k], NumberStyles.Float, CultureInfo.InvariantCulture, out var n)) return null;
        return v[k..].Trim() switch
        {
            "pt" => n,
            "px" or "" => n * 0.75,
            "in" => n * 72,
            "cm" => n * 72 / 2.54,
            "mm" => n * 72 / 25.4,
            "pc" => n * 12,
            "em" or "rem" => n * fontSize,
            "%" => n * fontSize / 100,
            _ => null,
        };
    }

    private static readonly Dictionary<string, string> Named = new(StringComparer.OrdinalIgnoreCase)
    {
        ["black"] = "000000", ["white"] = "FFFFFF", ["red"] = "FF0000", ["green"] = "008000", ["blue"] = "0000FF",
        ["yellow"] = "FFFF00", ["gray"] = "808080", ["grey"] = "808080", ["silver"] = "C0C0C0", ["maroon"] = "800000",
        ["purple"] = "800080", ["fuchsia"] = "FF00FF", ["lime"] = "00FF00", ["olive"] = "808000", ["navy"] = "000080",
        ["teal"] = "008080", ["aqua"] = "00FFFF", ["orange"] = "FFA500",
    };

    /// <summary>Six hexadecimal digits, or null for colours we cannot tell.</summary>
    public static string? Color(string? v)
    {
        if (string.IsNullOrWhiteSpace(v)) return null;
        v = v.Trim();
        if (Named.TryGetValue(v, out var hex)) return hex;
        if (v.StartsWith('#'))
        {
            var h = v[1..];
            if (h.Length == 3) h = string.Concat(h.Select(c => $"{c}{c}"));
            return h.Length == 6 && int.TryParse(h, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out _) ? h.ToUpperInvariant() : null;
        }
        if (v.StartsWith("rgb", StringComparison.OrdinalIgnoreCase) && v.IndexOf('(') is > 0 and var open && v.IndexOf(')') is var close && close > open)
        {
            var parts = v[(open + 1)..close].Split(new[] { ',', ' ', '/' }, StringSplitOptions.RemoveEmptyEntries);
            if (parts.Length < 3) return null;
            var bytes = new int[3];
            for (int i = 0; i < 3; i++)
            {
                var p = parts[i];
                bool pct = p.EndsWith('%');
                if (!double.TryParse(p.TrimEnd('%'), NumberStyles.Float, CultureInfo.InvariantCulture, out var x)) return null;
                bytes[i] = (int)Math.Clamp(Math.Round(pct ? x * 2.55 : x), 0, 255);
            }
            return $"{bytes[0]:X2}{bytes[1]:X2}{bytes[2]:X2}";
        }
        return null;
    }
}
