using System.Globalization;
using System.Text;

namespace Quorix.Folio.Fields;

/// <summary>The \*, \# and \@ switches applied to a computed result.</summary>
internal static class FieldFormatting
{
    private static readonly Dictionary<string, GeneralFormat> Names = new(StringComparer.Ordinal)
    {
        ["ALPHABETIC"] = GeneralFormat.UppercaseAlphabetic, ["alphabetic"] = GeneralFormat.LowercaseAlphabetic,
        ["ROMAN"] = GeneralFormat.UppercaseRoman, ["Roman"] = GeneralFormat.UppercaseRoman, ["roman"] = GeneralFormat.LowercaseRoman,
    };

    public static GeneralFormat? Parse(string name)
    {
        if (Names.TryGetValue(name, out var f)) return f;
        if (Enum.TryParse<GeneralFormat>(name, true, out var g) && g is not GeneralFormat.UppercaseAlphabetic
            and not GeneralFormat.LowercaseAlphabetic and not GeneralFormat.UppercaseRoman and not GeneralFormat.LowercaseRoman) return g;
        return null;
    }

    public static string NameOf(GeneralFormat f) => f switch
    {
        GeneralFormat.UppercaseAlphabetic => "ALPHABETIC",
        GeneralFormat.LowercaseAlphabetic => "alphabetic",
        GeneralFormat.UppercaseRoman => "ROMAN",
        GeneralFormat.LowercaseRoman => "roman",
        GeneralFormat.MergeFormat => "MERGEFORMAT",
        _ => f.ToString(),
    };

    /// <summary>Applies every format switch of the code to a result.</summary>
    public static string Apply(string text, FieldCode code, CultureInfo culture, bool numeric = true, bool date = true)
    {
        if (numeric && code.Get("\\#") is { } pic && TryNumber(text, culture, out var v)) text = Number(v, pic, culture);
        if (date && code.Get("\\@") is { } dpic && DateTime.TryParse(text, culture, DateTimeStyles.AllowWhiteSpaces, out var d)) text = Date(d, dpic, culture);
        foreach (var a in code.All("\\*"))
            if (Parse(a) is { } g) text = General(text, g, culture);
        return text;
    }

    public static bool TryNumber(string text, CultureInfo culture, out double v)
    {
        var t = text.Trim().Replace(culture.NumberFormat.CurrencySymbol, "").Replace("$", "").Trim();
        return double.TryParse(t, NumberStyles.Any, culture, out v) || double.TryParse(t, NumberStyles.Any, CultureInfo.InvariantCulture, out v);
    }

    public static string General(string text, GeneralFormat f, CultureInfo culture)
    {
        switch (f)
        {
            case GeneralFormat.Upper: return culture.TextInfo.ToUpper(text);
            case GeneralFormat.Lower: return culture.TextInfo.ToLower(text);
            case GeneralFormat.FirstCap:
                {
                    int i = 0;
                    while (i < text.Length && !char.IsLetter(text[i])) i++;
                    return i < text.Length ? text[..i] + char.ToUpper(text[i], culture) + text[(i + 1)..] : text;
                }
            case GeneralFormat.Caps:
                {
                    var sb = new StringBuilder(text.Length);
                    bool start = true;
                    foreach (var c in text)
                    {
                        sb.Append(start && char.IsLetter(c) ? char.ToUpper(c, culture) : c);
                        start = char.IsWhiteSpace(c);
                    }
                    return sb.ToString();
                }
            case GeneralFormat.CharFormat or GeneralFormat.MergeFormat or GeneralFormat.MergeFormatInet: return text;
        }
        if (!TryNumber(text, culture, out var v)) return text;
        if (f == GeneralFormat.DollarText) return NumberWords.Dollar((decimal)v);
        var n = (long)Math.Round(v, MidpointRounding.AwayFromZero);
        return f switch
        {
            GeneralFormat.Arabic => n.ToString(CultureInfo.InvariantCulture),
            GeneralFormat.ArabicDash => "- " + n + " -",
            GeneralFormat.UppercaseRoman => NumberWords.Roman(n),
            GeneralFormat.LowercaseRoman => NumberWords.Roman(n).ToLowerInvariant(),
            GeneralFormat.UppercaseAlphabetic => NumberWords.Alphabetic(n),
            GeneralFormat.LowercaseAlphabetic => NumberWords.Alphabetic(n).ToLowerInvariant(),
            GeneralFormat.Ordinal => NumberWords.Ordinal(n),
            GeneralFormat.CardText => NumberWords.Cardinal(n),
            GeneralFormat.OrdText => NumberWords.OrdinalText(n),
            GeneralFormat.Hex => n.ToString("X"),
            GeneralFormat.CircleNum => n is >= 1 and <= 20 ? ((char)(0x2460 + n - 1)).ToString() : n.ToString(),
            _ => text, // scripts we do not write: the number stays as computed
        };
    }

    /// <summary>A \# picture: 0 and # digits, x truncating, . and , separators, literal text, and
    /// up to three sections for positive; negative; zero.</summary>
    public static string Number(double value, string picture, CultureInfo culture)
    {
        var sections = SplitSections(picture);
        string pic = sections[0];
        bool negSection = false;
        if (value < 0 && sections.Count > 1) { pic = sections[1]; negSection = true; }
        else if (value == 0 && sections.Count > 2) pic = sections[2];
        double abs = negSection ? -value : value;

        // The digit part is the run of 0 # x , . characters; everything else is kept as written.
        int first = -1, last = -1;
        for (int i = 0; i < pic.Length; i++)
            if (pic[i] is '0' or '#' or 'x' or ',' or '.' && !InQuote(pic, i)) { if (first < 0) first = i; last = i; }
        if (first < 0) return Literal(pic, value < 0 ? "-" : "", culture);
        var digits = pic.Substring(first, last - first + 1);
        int dot = digits.IndexOf('.');
        var intPic = dot < 0 ? digits : digits[..dot];
        var fracPic = dot < 0 ? "" : digits[(dot + 1)..];
        bool group = intPic.Contains(',');
        intPic = intPic.Replace(",", "");
        int decimals = fracPic.Count(c => c is '0' or '#' or 'x');
        var rounded = Math.Round(Math.Abs(abs), decimals, MidpointRounding.AwayFromZero);
        var s = rounded.ToString("F" + decimals, CultureInfo.InvariantCulture);
        var intPart = s.Split('.')[0];
        var fracPart = decimals > 0 ? s.Split('.')[1] : "";
        // x at the left drops digits beyond the picture.
        int xs = intPic.TakeWhile(c => c == 'x').Count();
        if (xs > 0 && intPart.Length > intPic.Length) intPart = intPart[^intPic.Length..];
        int zeros = intPic.Length - intPic.TakeWhile(c => c == '#').Count();
        if (intPart == "0" && !intPic.Contains('0')) intPart = "";
        intPart = intPart.PadLeft(Math.Min(zeros, intPic.Length), '0');
        if (group && intPart.Length > 3)
            intPart = long.Parse(intPart).ToString("#,0", culture);
        // # in the fraction drops trailing zeros.
        int keep = fracPic.LastIndexOf('0') + 1;
        while (fracPart.Length > keep && fracPart.EndsWith('0')) fracPart = fracPart[..^1];
        var num = intPart + (fracPart.Length > 0 ? culture.NumberFormat.NumberDecimalSeparator + fracPart : "");
        var sign = value < 0 && !negSection ? "-" : "";
        var before = pic[..first];
        var after = pic[(last + 1)..];
        // A sign character in the picture takes the sign's place.
        if (before.EndsWith('-') || before.EndsWith('+'))
        {
            var sc = before[^1];
            before = before[..^1];
            sign = value < 0 ? "-" : sc == '+' && value > 0 ? "+" : sc == '-' ? " " : "";
        }
        return Literal(before, "", culture) + sign + num + Literal(after, "", culture);
    }

    private static List<string> SplitSections(string pic)
    {
        var list = new List<string>();
        int s = 0;
        for (int i = 0; i < pic.Length; i++)
            if (pic[i] == ';' && !InQuote(pic, i)) { list.Add(pic[s..i]); s = i + 1; }
        list.Add(pic[s..]);
        return list;
    }

    private static bool InQuote(string pic, int at)
    {
        bool q = false;
        for (int i = 0; i < at; i++) if (pic[i] == '\'') q = !q;
        return q;
    }

    private static string Literal(string s, string prefix, CultureInfo culture) => prefix + s.Replace("'", "");

    /// <summary>A \@ picture: d M y h H m s AM/PM am/pm; text in single quotes is literal.</summary>
    public static string Date(DateTime d, string picture, CultureInfo culture)
    {
        var f = culture.DateTimeFormat;
        var sb = new StringBuilder();
        int i = 0;
        while (i < picture.Length)
        {
            char c = picture[i];
            if (c == '\'')
            {
                int j = picture.IndexOf('\'', i + 1);
                if (j < 0) j = picture.Length;
                sb.Append(picture, i + 1, j - i - 1);
                i = j + 1;
                continue;
            }
            if (string.Compare(picture, i, "AM/PM", 0, 5, StringComparison.Ordinal) == 0) { sb.Append(d.Hour < 12 ? "AM" : "PM"); i += 5; continue; }
            if (string.Compare(picture, i, "am/pm", 0, 5, StringComparison.Ordinal) == 0) { sb.Append(d.Hour < 12 ? "am" : "pm"); i += 5; continue; }
            int n = 1;
            while (i + n < picture.Length && picture[i + n] == c) n++;
            switch (c)
            {
                case 'd' or 'D':
                    sb.Append(n switch { 1 => d.Day.ToString(), 2 => d.Day.ToString("00"), 3 => f.GetAbbreviatedDayName(d.DayOfWeek), _ => f.GetDayName(d.DayOfWeek) });
                    break;
                case 'M':
                    sb.Append(n switch { 1 => d.Month.ToString(), 2 => d.Month.ToString("00"), 3 => f.GetAbbreviatedMonthName(d.Month), _ => f.GetMonthName(d.Month) });
                    break;
                case 'y' or 'Y':
                    sb.Append(n <= 2 ? (d.Year % 100).ToString("00") : d.Year.ToString("0000"));
                    break;
                case 'h':
                    { int h = d.Hour % 12 == 0 ? 12 : d.Hour % 12; sb.Append(n == 1 ? h.ToString() : h.ToString("00")); }
                    break;
                case 'H':
                    sb.Append(n == 1 ? d.Hour.ToString() : d.Hour.ToString("00"));
                    break;
                case 'm':
                    sb.Append(n == 1 ? d.Minute.ToString() : d.Minute.ToString("00"));
                    break;
                case 's' or 'S':
                    sb.Append(n == 1 ? d.Second.ToString() : d.Second.ToString("00"));
                    break;
                default:
                    sb.Append(c, n);
                    break;
            }
            i += n;
        }
        return sb.ToString();
    }
}
