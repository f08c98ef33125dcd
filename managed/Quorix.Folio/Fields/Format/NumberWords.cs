using System.Text;

namespace Quorix.Folio.Fields;

/// <summary>Numbers as words, Roman numerals and letters, as the \* number formats write them.</summary>
internal static class NumberWords
{
    private static readonly string[] Ones =
    {
        "zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine", "ten", "eleven", "twelve",
        "thirteen", "fourteen", "fifteen", "sixteen", "seventeen", "eighteen", "nineteen",
    };
    private static readonly string[] Tens = { "", "", "twenty", "thirty", "forty", "fifty", "sixty", "seventy", "eighty", "ninety" };
    private static readonly (long Value, string Name)[] Scales = { (1_000_000_000_000, "trillion"), (1_000_000_000, "billion"), (1_000_000, "million"), (1000, "thousand") };

    public static string Cardinal(long n)
    {
        if (n < 0) return "minus " + Cardinal(-n);
        if (n < 20) return Ones[n];
        if (n < 100) return Tens[n / 10] + (n % 10 != 0 ? "-" + Ones[n % 10] : "");
        if (n < 1000) return Ones[n / 100] + " hundred" + (n % 100 != 0 ? " " + Cardinal(n % 100) : "");
        foreach (var (value, name) in Scales)
            if (n >= value) return Cardinal(n / value) + " " + name + (n % value != 0 ? " " + Cardinal(n % value) : "");
        throw new InvalidOperationException();
    }

    public static string OrdinalText(long n)
    {
        var words = Cardinal(n);
        int cut = Math.Max(words.LastIndexOf(' '), words.LastIndexOf('-')) + 1;
        var last = words[cut..];
        var ord = last switch
        {
            "one" => "first", "two" => "second", "three" => "third", "five" => "fifth", "eight" => "eighth",
            "nine" => "ninth", "twelve" => "twelfth",
            _ when last.EndsWith('y') => last[..^1] + "ieth",
            _ => last + "th",
        };
        return words[..cut] + ord;
    }

    public static string Ordinal(long n)
    {
        var m = Math.Abs(n) % 100;
        var suffix = m is >= 11 and <= 13 ? "th" : (m % 10) switch { 1 => "st", 2 => "nd", 3 => "rd", _ => "th" };
        return n + suffix;
    }

    public static string Dollar(decimal v)
    {
        var whole = (long)Math.Truncate(Math.Abs(v));
        var cents = (int)Math.Round((Math.Abs(v) - whole) * 100);
        if (cents == 100) { whole++; cents = 0; }
        return (v < 0 ? "minus " : "") + Cardinal(whole) + " and " + cents.ToString("00") + "/100";
    }

    public static string Roman(long n)
    {
        if (n <= 0 || n > 32767) return n.ToString();
        var sb = new StringBuilder();
        foreach (var (value, s) in new[] { (1000, "M"), (900, "CM"), (500, "D"), (400, "CD"), (100, "C"), (90, "XC"), (50, "L"), (40, "XL"), (10, "X"), (9, "IX"), (5, "V"), (4, "IV"), (1, "I") })
            while (n >= value) { sb.Append(s); n -= value; }
        return sb.ToString();
    }

    // 1..26 are A..Z; then the letter repeats: 27 is AA, 28 BB.
    public static string Alphabetic(long n)
    {
        if (n <= 0) return n.ToString();
        return new string((char)('A' + (n - 1) % 26), (int)((n - 1) / 26) + 1);
    }
}
