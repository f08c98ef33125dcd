using System.Text;

namespace Quorix.Folio.Fields;

// What every field kind shares: its parsed code, its switches as typed properties, and update.
public partial class Field
{
    // Kinds are made bare and attached to their markers by the factory.
    private protected Field() { Start = null!; End = null!; }

    internal Field Attach(FieldStart start, FieldSeparator? separator, FieldEnd end)
    {
        Start = start;
        Separator = separator;
        End = end;
        return this;
    }

    /// <summary>Switches of this kind that take an argument (lower case, with the backslash).</summary>
    private protected virtual string[] ArgSwitches => Array.Empty<string>();

    private HashSet<string>? argSwitchSet;

    internal FieldCode ParseCode() => FieldCode.Parse(CodeTokens(), argSwitchSet ??= new HashSet<string>(ArgSwitches));

    /// <summary>The code's words; a nested field counts as its result, one word however many spaces it holds.</summary>
    internal List<CodeToken> CodeTokens()
    {
        var sb = new StringBuilder();
        var bound = new List<bool>();
        int depth = 0;
        bool inCode = false;
        var stop = (Node?)Separator ?? End;
        var root = (Node?)Start.Document ?? Start;
        for (var n = Start.NextPreOrder(root); n != null && n != stop; n = n.NextPreOrder(root))
        {
            if (n is FieldStart) { depth++; inCode = true; }
            else if (n is FieldSeparator && depth > 0) inCode = false;
            else if (n is FieldEnd && depth > 0) { depth--; inCode = depth > 0; }
            else if (n is Run r && !(depth > 0 && inCode))
            {
                sb.Append(r.Text);
                for (int i = 0; i < r.Text.Length; i++) bound.Add(depth > 0);
            }
        }
        return FieldCode.Tokenize(sb.ToString(), bound.ToArray());
    }

    /// <summary>The field's result formats: number, date and general switches.</summary>
    public FieldFormat Format => new(this);

    // A field is its markers: two objects for the same start are the same field.
    /// <summary>Whether obj is the same field of the document: one that starts at the same node.</summary>
    public override bool Equals(object? obj) => obj is Field f && f.Start == Start;

    /// <summary>A hash consistent with equals: that of the field's start node.</summary>
    public override int GetHashCode() => Start.GetHashCode();

    /// <summary>Whether the field keeps its result on update.</summary>
    public bool IsLocked
    {
        get => Start.Raw?.Get("fldLock") is "1" or "true" or "on";
        set => (Start.Raw ??= new Formatting.PropElement("fldChar").Set("fldCharType", "begin")).Set("fldLock", value ? "1" : null);
    }

    /// <summary>Computes the result again, nested fields first.</summary>
    public void Update() => FieldUpdater.Update(FieldUpdater.Collect(Start, (Node?)Start.Document ?? Start, End), new FieldUpdateContext(Start.Document as Document));

    /// <summary>The new result, or null where this kind cannot compute one and the old result stays.</summary>
    internal virtual string? Compute(FieldUpdateContext ctx) => null;

    /// <summary>Whether the \# \@ \* switches apply to the computed result (some kinds apply them themselves).</summary>
    internal virtual bool FormatsResult => true;

    /// <summary>Whether Compute writes the result itself (results of several paragraphs).</summary>
    internal virtual bool WritesOwnResult => false;

    internal void WriteResult(string text)
    {
        if (Separator == null)
        {
            var sep = new FieldSeparator(End.Document!, End.RPr.Clone());
            End.ParentNode!.InsertBefore(sep, End);
            Separator = sep;
        }
        TextRange.ReplaceBetween(Separator, End, text);
    }

    /// <summary>Makes the paragraphs the result: the first takes the place of the old result, in the
    /// paragraph of the separator; the field's end and what followed it move to the last.</summary>
    internal void WriteParagraphs(List<Paragraph> paras, string whenEmpty)
    {
        WriteResult(paras.Count == 0 ? whenEmpty : "");
        if (paras.Count == 0) return;
        var sep = Separator!;
        var first = sep.ParentParagraph!;
        // What ReplaceBetween left: one empty run after the separator.
        if (sep.NextSibling is Run empty && empty.Text.Length == 0) empty.Remove();
        first.ParagraphFormat.StyleName = paras[0].ParagraphFormat.StyleName;
        Node at = sep;
        while (paras[0].FirstChild is { } c) { first.InsertAfter(c, at); at = c; }
        Node after = first;
        for (int i = 1; i < paras.Count; i++) { first.ParentNode!.InsertAfter(paras[i], after); after = paras[i]; }
        if (paras.Count == 1) return;
        var last = paras[^1];
        for (Node? n = End; n != null;)
        {
            var next = n.NextSibling;
            last.AppendChild(n);
            n = next;
        }
    }

    /// <summary>Replaces the code by the given text; nested fields in the code go with it.</summary>
    internal void SetCode(string code) => TextRange.ReplaceBetween(Start, (Node?)Separator ?? End, " " + code.Trim() + " ");

    /// <summary>Sets, replaces or (with null) removes a switch; with append, adds another of the same name.</summary>
    internal void SetSwitch(string name, string? arg, bool append = false)
    {
        var tokens = CodeTokens();
        var parts = new List<string>();
        bool done = false;
        for (int i = 0; i < tokens.Count; i++)
        {
            var t = tokens[i];
            if (t.IsSwitch && t.Text.Equals(name, StringComparison.OrdinalIgnoreCase) && !append)
            {
                if (arg != null && IsArgSwitch(name) && i + 1 < tokens.Count && !tokens[i + 1].IsSwitch) i++;
                if (!done && arg != null) parts.Add(Render(name, arg));
                done = true;
                continue;
            }
            parts.Add(t.Quoted ? Quote(t.Text) : t.Text);
        }
        if (!done && arg != null) parts.Add(Render(name, arg));
        SetCode(string.Join(' ', parts));
    }

    internal void RemoveSwitch(string name, string arg)
    {
        var tokens = CodeTokens();
        var parts = new List<string>();
        for (int i = 0; i < tokens.Count; i++)
        {
            if (tokens[i].IsSwitch && tokens[i].Text == name && i + 1 < tokens.Count && tokens[i + 1].Text.Equals(arg, StringComparison.OrdinalIgnoreCase)) { i++; continue; }
            parts.Add(tokens[i].Quoted ? Quote(tokens[i].Text) : tokens[i].Text);
        }
        SetCode(string.Join(' ', parts));
    }

    private bool IsArgSwitch(string name) => name is "\\*" or "\\#" or "\\@" || Array.IndexOf(ArgSwitches, name.ToLowerInvariant()) >= 0;

    private string Render(string name, string arg) => arg.Length == 0 && !IsArgSwitch(name) ? name : name + " " + Quote(arg);

    internal static string Quote(string s) => "\"" + s.Replace("\\", "\\\\").Replace("\"", "\\\"") + "\"";

    // Typed switch properties of the kinds read and write through these.
    private protected bool Flag(string sw) => ParseCode().Has(sw);

    private protected void Flag(string sw, bool on)
    {
        if (on == Flag(sw)) return;
        if (on) SetCode(GetFieldCode() + " " + sw);
        else SetSwitch(sw, null);
    }

    private protected string? SwitchText(string sw) => ParseCode().Get(sw);

    private protected void SwitchText(string sw, string? value) => SetSwitch(sw, value);

    private protected string? Argument(int i) => ParseCode().Args.Count > i ? ParseCode().Args[i] : null;

    private protected void Argument(int i, string? value)
    {
        var tokens = CodeTokens();
        int seen = -1, at = -1;
        for (int k = 1; k < tokens.Count; k++)
        {
            if (tokens[k].IsSwitch) { if (IsArgSwitch(tokens[k].Text)) k++; continue; }
            if (++seen == i) { at = k; break; }
        }
        var parts = tokens.Select(t => t.Quoted ? Quote(t.Text) : t.Text).ToList();
        if (at >= 0) parts[at] = Quote(value ?? "");
        else parts.Insert(Math.Min(parts.Count, 1 + i), Quote(value ?? ""));
        SetCode(string.Join(' ', parts));
    }
}
