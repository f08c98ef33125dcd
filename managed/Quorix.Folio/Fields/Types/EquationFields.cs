using System.Text;

namespace Quorix.Folio.Fields;

/// <summary>EQ: an equation written in switches, shown as text: fractions a/b, radicals √x, raised and
/// lowered text as superscript and subscript characters, brackets and lists. Switches this engine
/// cannot show as text (arrays, integrals, overstrikes, boxes, displacement) keep the old result and
/// are reported as a warning.</summary>
public sealed class FieldEQ : Field
{
    internal FieldEQ() { }

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = GetFieldCode();
        int at = code.IndexOf("EQ", StringComparison.OrdinalIgnoreCase) + 2;
        try
        {
            return new EquationText(code[at..]).Render();
        }
        catch (FormatException e)
        {
            ctx.Doc?.Warnings.Add(WarningType.MinorFormattingLoss, WarningSource.Unknown, $"EQ field \"{code}\": {e.Message} Its result is kept.");
            throw new FieldUpdateException(e.Message);
        }
    }
}

/// <summary>Reads an EQ code's switches and writes the equation as one line of text.</summary>
internal sealed class EquationText
{
    // Nesting is read by recursion: a hostile code must not run the stack out.
    private const int MaxDepth = 64;

    private readonly string s;
    private int i, depth;

    public EquationText(string code) { s = code.Trim(); }

    public string Render()
    {
        var text = Sequence(topLevel: true);
        if (i < s.Length) throw new FormatException($"the \"{s[i]}\" at {i + 1} closes nothing.");
        return text;
    }

    // Text up to the end of an argument: a comma or semicolon or closing parenthesis at this level.
    private string Sequence(bool topLevel)
    {
        var sb = new StringBuilder();
        while (i < s.Length)
        {
            char c = s[i];
            if (!topLevel && c is ',' or ';' or ')') break;
            if (topLevel && c == ')') break;
            if (c == '\\') { sb.Append(Switch()); continue; }
            sb.Append(c);
            i++;
        }
        return sb.ToString();
    }

    private string Switch()
    {
        i++;
        if (i < s.Length && !char.IsLetter(s[i])) return s[i++].ToString();
        var name = Name();
        switch (name)
        {
            case "f":
            {
                var a = Args(2, 2);
                return Group(a[0]) + "/" + Group(a[1]);
            }
            case "r":
            {
                var a = Args(1, 2);
                return a.Count == 1 || a[0].Trim().Length == 0 ? "\u221A" + Group(a[^1]) : a[0].Trim() switch
                {
                    "3" => "\u221B" + Group(a[1]),
                    "4" => "\u221C" + Group(a[1]),
                    var n => Script(n, Superscripts) + "\u221A" + Group(a[1]),
                };
            }
            case "s":
            {
                int shift = 0;
                while (Option() is { } o)
                {
                    if (o.Name == "up") shift = 1;
                    else if (o.Name == "do") shift = -1;
                    else if (o.Name is not ("ai" or "di")) throw new FormatException($"\\s takes no \\{o.Name}.");
                }
                var text = string.Concat(Args(1, 9));
                return shift > 0 ? Script(text, Superscripts) : shift < 0 ? Script(text, Subscripts) : text;
            }
            case "b":
            {
                string left = "(", right = ")";
                while (Option() is { } o)
                {
                    var ch = o.Arg ?? throw new FormatException($"\\b\\{o.Name} needs a bracket character.");
                    if (o.Name == "lc") left = ch;
                    else if (o.Name == "rc") right = ch;
                    else if (o.Name == "bc") (left, right) = (ch, Closing(ch));
                    else throw new FormatException($"\\b takes no \\{o.Name}.");
                }
                return left + string.Concat(Args(1, 1)) + right;
            }
            case "l":
                return string.Join(",", Args(1, 99));
            default:
                throw new FormatException($"the \\{name} switch cannot be shown as text.");
        }
    }

    private string Name()
    {
        int from = i;
        while (i < s.Length && char.IsLetter(s[i])) i++;
        return s[from..i].ToLowerInvariant();
    }

    // A switch's option: \up8, \do4 (number, ignored beyond its sign), \lc\{ (a bracket character).
    private (string Name, string? Arg)? Option()
    {
        if (i + 1 >= s.Length || s[i] != '\\' || !char.IsLetter(s[i + 1])) return null;
        i++;
        var name = Name();
        while (i < s.Length && char.IsDigit(s[i])) i++;
        string? arg = null;
        if (i + 1 < s.Length && s[i] == '\\' && !char.IsLetter(s[i + 1])) { arg = s[i + 1].ToString(); i += 2; }
        else if (i < s.Length && name is "lc" or "rc" or "bc" && s[i] != '(') arg = s[i++].ToString();
        return (name, arg);
    }

    private List<string> Args(int min, int max)
    {
        while (i < s.Length && s[i] == ' ') i++;
        if (i >= s.Length || s[i] != '(') throw new FormatException("a switch is missing its parenthesised arguments.");
        if (++depth > MaxDepth) throw new FormatException($"the equation nests more than {MaxDepth} levels deep.");
        i++;
        var list = new List<string>();
        while (true)
        {
            list.Add(Sequence(topLevel: false));
            if (i >= s.Length) throw new FormatException("a parenthesis is not closed.");
            if (s[i++] == ')') break;
        }
        depth--;
        if (list.Count < min || list.Count > max) throw new FormatException($"a switch has {list.Count} arguments where it takes {min} to {max}.");
        return list;
    }

    private static string Closing(string open) => open switch
    {
        "(" => ")", "[" => "]", "{" => "}", "<" => ">", _ => open,
    };

    // A part of more than one character is bracketed so that a/b and √x read unambiguously.
    private static string Group(string part)
    {
        var t = part.Trim();
        return t.Length <= 1 || t.All(char.IsLetterOrDigit) || (t[0] == '(' && t[^1] == ')') ? t : "(" + t + ")";
    }

    private const string Plain = "0123456789+-=()ni";
    private const string Superscripts = "\u2070\u00B9\u00B2\u00B3\u2074\u2075\u2076\u2077\u2078\u2079\u207A\u207B\u207C\u207D\u207E\u207F\u2071";
    private const string Subscripts = "\u2080\u2081\u2082\u2083\u2084\u2085\u2086\u2087\u2088\u2089\u208A\u208B\u208C\u208D\u208E\u2099\u1D62";

    // Raised or lowered text in the script characters of Unicode; where one is missing, marked as ^(x) or _(x).
    private static string Script(string text, string table)
    {
        var sb = new StringBuilder(text.Length);
        foreach (var c in text)
        {
            int k = Plain.IndexOf(c);
            if (k < 0) return (ReferenceEquals(table, Superscripts) ? "^" : "_") + (text.Length == 1 ? text : "(" + text + ")");
            sb.Append(table[k]);
        }
        return sb.ToString();
    }
}
