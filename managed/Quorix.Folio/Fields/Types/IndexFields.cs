using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>INDEX: the XE entries of the document, sorted, subentries under their entry, grouped by
/// first letter with \h, with page numbers where the page layout gives them.</summary>
public sealed class FieldIndex : Field
{
    internal FieldIndex() { }

    private protected override string[] ArgSwitches => new[] { "\\b", "\\c", "\\d", "\\e", "\\f", "\\g", "\\h", "\\k", "\\l", "\\p", "\\s" };

    /// <summary>The bookmark whose text alone is indexed (the \b switch).</summary>
    public string? BookmarkName { get => SwitchText("\\b"); set => SwitchText("\\b", value); }

    /// <summary>How many columns the index takes (the \c switch).</summary>
    public string? NumberOfColumns { get => SwitchText("\\c"); set => SwitchText("\\c", value); }

    /// <summary>The type of the XE entries indexed (the \f switch).</summary>
    public string? EntryType { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>The heading put before each letter's group (the \h switch).</summary>
    public string? Heading { get => SwitchText("\\h"); set => SwitchText("\\h", value); }

    /// <summary>What separates an entry from its page numbers (the \e switch).</summary>
    public string? PageNumberSeparator { get => SwitchText("\\e"); set => SwitchText("\\e", value); }

    /// <summary>What separates the page numbers of one entry (the \l switch).</summary>
    public string? PageNumberListSeparator { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>The letters whose entries are listed, such as "a-m" (the \p switch).</summary>
    public string? LetterRange { get => SwitchText("\\p"); set => SwitchText("\\p", value); }

    /// <summary>Whether sub-entries follow their entry on its line (the \r switch).</summary>
    public bool RunSubentriesOnSameLine { get => Flag("\\r"); set => Flag("\\r", value); }

    internal override bool WritesOwnResult => true;

    internal override bool FormatsResult => false;

    private sealed class Entry
    {
        public readonly SortedDictionary<string, Entry> Subs = new(StringComparer.CurrentCultureIgnoreCase);
        public readonly SortedSet<int> Pages = new();
        public string? CrossReference;
    }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (ctx.Doc == null) return null;
        var code = ParseCode();
        var type = code.Get("\\f");
        var root = new Entry();
        Node scope = code.Get("\\b") is { } bm && ctx.FindBookmark(bm) is { } b ? b.BookmarkStart.ParentNode! : ctx.Doc;
        foreach (var xe in FieldUpdater.Collect(scope, scope).OfType<FieldXE>())
        {
            var x = xe.ParseCode();
            if (type != null && !string.Equals(x.Get("\\f") ?? "I", type, StringComparison.OrdinalIgnoreCase)) continue;
            var node = root;
            foreach (var part in x.Arg(0).Split(':', StringSplitOptions.TrimEntries | StringSplitOptions.RemoveEmptyEntries))
            {
                if (!node.Subs.TryGetValue(part, out var next)) node.Subs[part] = next = new Entry();
                node = next;
            }
            if (node == root) continue;
            if (x.Get("\\t") is { } see) node.CrossReference = see;
            else if (ctx.PageOf(xe.Start) is { } page) node.Pages.Add(page);
        }
        if (code.Get("\\p") is { } range && range.Split('-') is [var lo, var hi] && lo.Length > 0 && hi.Length > 0)
            foreach (var key in root.Subs.Keys.ToList())
                if (char.ToUpperInvariant(key[0]) < char.ToUpperInvariant(lo[0]) || char.ToUpperInvariant(key[0]) > char.ToUpperInvariant(hi[0])) root.Subs.Remove(key);

        var doc = ctx.Doc;
        var paras = new List<Paragraph>();
        var heading = code.Get("\\h");
        char? letter = null;
        var sep = code.Get("\\e") ?? ", ";
        var listSep = code.Get("\\l") ?? ", ";
        void Add(string key, Entry e, int level)
        {
            var p = new Paragraph(doc);
            p.ParagraphFormat.LeftIndent = 18 * (level - 1);
            var text = key;
            if (e.Pages.Count > 0) text += sep + string.Join(listSep, e.Pages.Select(n => n.ToString(CultureInfo.InvariantCulture)));
            if (e.CrossReference != null) text += ". " + e.CrossReference;
            p.AppendChild(new Run(doc, text));
            paras.Add(p);
            foreach (var (k, sub) in e.Subs) Add(k, sub, level + 1);
        }
        foreach (var (key, e) in root.Subs)
        {
            var first = char.ToUpper(key[0], CultureInfo.CurrentCulture);
            if (heading != null && first != letter)
            {
                letter = first;
                var h = new Paragraph(doc);
                h.AppendChild(new Run(doc, heading.Replace("A", first.ToString())));
                paras.Add(h);
            }
            Add(key, e, 1);
        }
        WriteParagraphs(paras, "No index entries found.");
        return null;
    }
}
