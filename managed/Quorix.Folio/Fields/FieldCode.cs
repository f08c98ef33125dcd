using System.Text;

namespace Quorix.Folio.Fields;

/// <summary>One word of a field code: quoted words keep their spaces; a nested field's result is one word.</summary>
internal readonly record struct CodeToken(string Text, bool Quoted)
{
    public bool IsSwitch => !Quoted && Text.Length >= 2 && Text[0] == '\\';
}

/// <summary>A field code split into its name, arguments and switches.</summary>
internal sealed class FieldCode
{
    public string Name { get; }
    public IReadOnlyList<string> Args { get; }
    private readonly List<(string Name, string? Arg)> switches;

    // Format switches always take an argument; the others only where the field kind says so.
    private static readonly HashSet<string> FormatSwitches = new() { "\\*", "\\#", "\\@" };

    private FieldCode(string name, List<string> args, List<(string, string?)> switches)
    {
        Name = name;
        Args = args;
        this.switches = switches;
    }

    public IEnumerable<(string Name, string? Arg)> Switches => switches;

    public bool Has(string sw) => switches.Exists(s => s.Name.Equals(sw, StringComparison.OrdinalIgnoreCase));

    public string? Get(string sw) => switches.Find(s => s.Name.Equals(sw, StringComparison.OrdinalIgnoreCase)).Arg;

    public IEnumerable<string> All(string sw)
    {
        foreach (var s in switches)
            if (s.Name.Equals(sw, StringComparison.OrdinalIgnoreCase) && s.Arg != null) yield return s.Arg;
    }

    public string Arg(int i) => i < Args.Count ? Args[i] : "";

    public static FieldCode Parse(string code, ISet<string>? switchesWithArg = null) =>
        Parse(Tokenize(code, null), switchesWithArg);

    public static FieldCode Parse(List<CodeToken> tokens, ISet<string>? switchesWithArg)
    {
        var name = tokens.Count > 0 && !tokens[0].IsSwitch ? tokens[0].Text : "";
        var args = new List<string>();
        var sws = new List<(string, string?)>();
        for (int i = name.Length > 0 ? 1 : 0; i < tokens.Count; i++)
        {
            var t = tokens[i];
            if (!t.IsSwitch) { args.Add(t.Text); continue; }
            // "\*Upper" written without a space is the switch and its argument.
            var sw = t.Text.Length > 2 && FormatSwitches.Contains(t.Text[..2]) ? t.Text[..2] : t.Text;
            string? arg = sw.Length < t.Text.Length ? t.Text[2..] : null;
            bool takesArg = FormatSwitches.Contains(sw) || (switchesWithArg?.Contains(sw.ToLowerInvariant()) ?? false);
            if (arg == null && takesArg && i + 1 < tokens.Count && !tokens[i + 1].IsSwitch) arg = tokens[++i].Text;
            sws.Add((sw, arg));
        }
        return new FieldCode(name, args, sws);
    }

    /// <summary>Splits code text into words. <paramref name="bound"/> marks characters that came from a
    /// nested field's result: they never split a word, whatever they are.</summary>
    public static List<CodeToken> Tokenize(string code, bool[]? bound)
    {
        var list = new List<CodeToken>();
        var sb = new StringBuilder();
        int i = 0;
        bool B(int k) => bound != null && bound[k];
        while (i < code.Length)
        {
            if (char.IsWhiteSpace(code[i]) && !B(i)) { i++; continue; }
            sb.Clear();
            if (code[i] == '"' && !B(i))
            {
                i++;
                while (i < code.Length && !(code[i] == '"' && !B(i)))
                {
                    // A backslash escapes a quote or a backslash inside quotes.
                    if (code[i] == '\\' && !B(i) && i + 1 < code.Length && code[i + 1] is '"' or '\\') i++;
                    sb.Append(code[i++]);
                }
                i++;
                list.Add(new CodeToken(sb.ToString(), true));
                continue;
            }
            while (i < code.Length && (B(i) || (!char.IsWhiteSpace(code[i]) && code[i] != '"')))
                sb.Append(code[i++]);
            list.Add(new CodeToken(sb.ToString(), false));
        }
        return list;
    }
}
