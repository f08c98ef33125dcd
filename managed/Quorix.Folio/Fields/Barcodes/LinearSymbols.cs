namespace Quorix.Folio.Fields;

/// <summary>One-dimensional symbologies as runs of module widths, bar first: CODE128, CODE39 and the
/// US postal bar code of BARCODE fields. An unencodable value raises <see cref="FormatException"/>.</summary>
internal static class LinearSymbols
{
    // Bar and space widths of Code 128's symbols 0 to 105; the stop symbol follows separately.
    private static readonly string[] Code128Widths =
    {
        "212222", "222122", "222221", "121223", "121322", "131222", "122213", "122312", "132212", "221213",
        "221312", "231212", "112232", "122132", "122231", "113222", "123122", "123221", "223211", "221132",
        "221231", "213212", "223112", "312131", "311222", "321122", "321221", "312212", "322112", "322211",
        "212123", "212321", "232121", "111323", "131123", "131321", "112313", "132113", "132311", "211313",
        "231113", "231311", "112133", "112331", "132131", "113123", "113321", "133121", "313121", "211331",
        "231131", "213113", "213311", "213131", "311123", "311321", "331121", "312113", "312311", "332111",
        "314111", "221411", "431111", "111224", "111422", "121124", "121421", "141122", "141221", "112214",
        "112412", "122114", "122411", "142112", "142211", "241211", "221114", "413111", "241112", "134111",
        "111242", "121142", "121241", "114212", "124112", "124211", "411212", "421112", "421211", "212141",
        "214121", "412121", "111143", "111341", "131141", "114113", "114311", "411113", "411311", "113141",
        "114131", "311141", "411131", "211412", "211214", "211232",
    };

    private const string Code128Stop = "2331112";
    private const int StartB = 104, StartC = 105;

    internal static IReadOnlyList<string> Code128Table => Code128Widths;

    /// <summary>Code 128: digit strings of even length in code set C (two digits a symbol), other
    /// printable ASCII text in code set B; a checksum symbol before the stop.</summary>
    public static List<int> Code128(string value)
    {
        if (value.Length == 0) throw new FormatException("CODE128 needs a value.");
        var symbols = new List<int>();
        if (value.Length % 2 == 0 && value.All(char.IsAsciiDigit))
        {
            symbols.Add(StartC);
            for (int i = 0; i < value.Length; i += 2) symbols.Add((value[i] - '0') * 10 + value[i + 1] - '0');
        }
        else
        {
            symbols.Add(StartB);
            foreach (var c in value)
            {
                if (c < ' ' || c > '~') throw new FormatException($"CODE128 cannot encode the character U+{(int)c:X4}.");
                symbols.Add(c - ' ');
            }
        }
        int sum = symbols[0];
        for (int i = 1; i < symbols.Count; i++) sum += symbols[i] * i;
        symbols.Add(sum % 103);
        var widths = new List<int>();
        foreach (var s in symbols) Widths(Code128Widths[s], widths);
        Widths(Code128Stop, widths);
        return widths;
    }

    // Code 39 by character: nine elements, bar first, three of them wide.
    private const string Code39Chars = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%*";
    private static readonly string[] Code39Elements =
    {
        "nnnwwnwnn", "wnnwnnnnw", "nnwwnnnnw", "wnwwnnnnn", "nnnwwnnnw", "wnnwwnnnn", "nnwwwnnnn", "nnnwnnwnw", "wnnwnnwnn", "nnwwnnwnn",
        "wnnnnwnnw", "nnwnnwnnw", "wnwnnwnnn", "nnnnwwnnw", "wnnnwwnnn", "nnwnwwnnn", "nnnnnwwnw", "wnnnnwwnn", "nnwnnwwnn", "nnnnwwwnn",
        "wnnnnnnww", "nnwnnnnww", "wnwnnnnwn", "nnnnwnnww", "wnnnwnnwn", "nnwnwnnwn", "nnnnnnwww", "wnnnnnwwn", "nnwnnnwwn", "nnnnwnwwn",
        "wwnnnnnnw", "nwwnnnnnw", "wwwnnnnnn", "nwnnwnnnw", "wwnnwnnnn", "nwwnwnnnn", "nwnnnnwnw", "wwnnnnwnn", "nwwnnnwnn", "nwnwnwnnn",
        "nwnwnnnwn", "nwnnnwnwn", "nnnwnwnwn", "nwnnwnwnn",
    };

    internal static (string Chars, IReadOnlyList<string> Elements) Code39Table => (Code39Chars, Code39Elements);

    /// <summary>Code 39 between its start and stop asterisks, with the modulo 43 check character when asked.</summary>
    public static List<int> Code39(string value, bool checkDigit)
    {
        var text = value.ToUpperInvariant();
        if (text.Length == 0) throw new FormatException("CODE39 needs a value.");
        int sum = 0;
        foreach (var c in text)
        {
            int k = Code39Chars.IndexOf(c);
            if (k < 0 || c == '*') throw new FormatException($"CODE39 cannot encode the character \"{c}\".");
            sum += k;
        }
        if (checkDigit) text += Code39Chars[sum % 43];
        var widths = new List<int>();
        foreach (var c in "*" + text + "*")
        {
            foreach (var e in Code39Elements[Code39Chars.IndexOf(c)]) widths.Add(e == 'w' ? 3 : 1);
            widths.Add(1);
        }
        widths.RemoveAt(widths.Count - 1);
        return widths;
    }

    // Postal bar code digits: five bars, two of them tall.
    private static readonly string[] PostalDigits = { "11000", "00011", "00101", "00110", "01001", "01010", "01100", "10001", "10010", "10100" };

    /// <summary>The US postal bar code of a ZIP code (5, 9 or 11 digits; other characters are
    /// dropped): tall (true) and short bars between frame bars, with the check digit.</summary>
    public static List<bool> Postal(string zip)
    {
        var digits = zip.Where(char.IsAsciiDigit).Select(c => c - '0').ToList();
        if (digits.Count is not (5 or 9 or 11)) throw new FormatException($"\"{zip}\" is not a ZIP code of 5, 9 or 11 digits.");
        digits.Add((10 - digits.Sum() % 10) % 10);
        var bars = new List<bool> { true };
        foreach (var d in digits)
            foreach (var b in PostalDigits[d]) bars.Add(b == '1');
        bars.Add(true);
        return bars;
    }

    private static void Widths(string pattern, List<int> into)
    {
        foreach (var c in pattern) into.Add(c - '0');
    }
}
