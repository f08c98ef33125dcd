using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Lists;

/// <summary>List definitions from templates and the labels that numbering produces.</summary>
internal static class ListNumbering
{
    public static NumberStyle StyleFromXml(string? v) => v switch
    {
        "upperRoman" => NumberStyle.UppercaseRoman,
        "lowerRoman" => NumberStyle.LowercaseRoman,
        "upperLetter" => NumberStyle.UppercaseLetter,
        "lowerLetter" => NumberStyle.LowercaseLetter,
        "ordinal" => NumberStyle.Ordinal,
        "cardinalText" => NumberStyle.Number,
        "ordinalText" => NumberStyle.OrdinalText,
        "decimalZero" => NumberStyle.LeadingZero,
        "bullet" => NumberStyle.Bullet,
        "none" => NumberStyle.None,
        _ => NumberStyle.Arabic,
    };

    public static string StyleToXml(NumberStyle s) => s switch
    {
        NumberStyle.Arabic => "decimal",
        NumberStyle.UppercaseRoman => "upperRoman",
        NumberStyle.LowercaseRoman => "lowerRoman",
        NumberStyle.UppercaseLetter => "upperLetter",
        NumberStyle.LowercaseLetter => "lowerLetter",
        NumberStyle.Ordinal => "ordinal",
        NumberStyle.Number => "cardinalText",
        NumberStyle.OrdinalText => "ordinalText",
        NumberStyle.LeadingZero => "decimalZero",
        NumberStyle.Bullet => "bullet",
        NumberStyle.None => "none",
        _ => throw new ArgumentOutOfRangeException(nameof(s)),
    };

    private static readonly string[] Bullets = { "\u2022", "\u25E6", "\u25AA" };

    public static PropElement MakeAbstract(int id, ListTemplate t)
    {
        var abs = new PropElement("abstractNum").Set("abstractNumId", Units.Str(id));
        abs.Children = new List<PropElement>
        {
            new PropElement("multiLevelType").Set("val", "hybridMultilevel"),
        };
        for (int level = 0; level < 9; level++)
        {
            var (style, text) = LevelLook(t, level);
            var lvl = new PropElement("lvl").Set("ilvl", Units.Str(level));
            lvl.Children = new List<PropElement>
            {
                new PropElement("start").Set("val", "1"),
                new PropElement("numFmt").Set("val", StyleToXml(style)),
                new PropElement("lvlText").Set("val", text),
                new PropElement("lvlJc").Set("val", "left"),
            };
            var ind = new PropElement("ind").Set("left", Units.Str(720 * (level + 1))).Set("hanging", "360");
            lvl.Children.Add(new PropElement("pPr") { Children = new List<PropElement> { ind } });
            abs.Children.Add(lvl);
        }
        return abs;
    }

    private static (NumberStyle, string) LevelLook(ListTemplate t, int level)
    {
        string n = "%" + (level + 1);
        switch (t)
        {
            case ListTemplate.BulletDefault:
                return (NumberStyle.Bullet, Bullets[level % 3]);
            case ListTemplate.BulletDisk:
                return (NumberStyle.Bullet, Bullets[0]);
            case ListTemplate.BulletCircle:
                return (NumberStyle.Bullet, Bullets[1]);
            case ListTemplate.BulletSquare:
                return (NumberStyle.Bullet, Bullets[2]);
            case ListTemplate.OutlineNumbers:
                var sb = new StringBuilder();
                for (int i = 1; i <= level + 1; i++) sb.Append('%').Append(i).Append('.');
                return (NumberStyle.Arabic, sb.ToString());
        }
        // Numbered templates vary the first level; deeper levels cycle letter, roman, arabic.
        if (level > 0)
            return (level % 3) switch
            {
                1 => (NumberStyle.LowercaseLetter, n + "."),
                2 => (NumberStyle.LowercaseRoman, n + "."),
                _ => (NumberStyle.Arabic, n + "."),
            };
        return t switch
        {
            ListTemplate.NumberArabicParenthesis => (NumberStyle.Arabic, n + ")"),
            ListTemplate.NumberUppercaseRomanDot => (NumberStyle.UppercaseRoman, n + "."),
            ListTemplate.NumberLowercaseRomanDot => (NumberStyle.LowercaseRoman, n + "."),
            ListTemplate.NumberUppercaseLetterDot => (NumberStyle.UppercaseLetter, n + "."),
            ListTemplate.NumberLowercaseLetterParenthesis => (NumberStyle.LowercaseLetter, n + ")"),
            _ => (NumberStyle.Arabic, n + "."),
        };
    }

    public static string Format(int value, NumberStyle style) => style switch
    {
        NumberStyle.UppercaseRoman => Roman(value),
        NumberStyle.LowercaseRoman => Roman(value).ToLowerInvariant(),
        NumberStyle.UppercaseLetter => Letter(value),
        NumberStyle.LowercaseLetter => Letter(value).ToLowerInvariant(),
        NumberStyle.LeadingZero => value < 10 ? "0" + value : Units.Str(value),
        NumberStyle.Ordinal => Units.Str(value) + Suffix(value),
        NumberStyle.None or NumberStyle.Bullet => "",
        _ => Units.Str(value),
    };

    private static string Suffix(int v) => (v % 100) is 11 or 12 or 13 ? "th" : (v % 10) switch { 1 => "st", 2 => "nd", 3 => "rd", _ => "th" };

    private static string Roman(int v)
    {
        if (v <= 0 || v >= 4000) return Units.Str(v);
        var sb = new StringBuilder();
        int[] values = { 1000, 900, 500, 400, 100, 90, 50, 40, 10, 9, 5, 4, 1 };
        string[] syms = { "M", "CM", "D", "CD", "C", "XC", "L", "XL", "X", "IX", "V", "IV", "I" };
        for (int i = 0; i < values.Length; i++)
            while (v >= values[i]) { sb.Append(syms[i]); v -= values[i]; }
        return sb.ToString();
    }

    private static string Letter(int v)
    {
        if (v <= 0) return Units.Str(v);
        // A, B, ... Z, AA, BB, ... as word processors count.
        int rep = (v - 1) / 26 + 1;
        return new string((char)('A' + (v - 1) % 26), rep);
    }
}
