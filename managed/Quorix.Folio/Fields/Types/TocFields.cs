using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>TOC: entries for headings, outline levels, listed styles and TC fields, each linking to its
/// heading and showing its page number where the page layout gives one.</summary>
public sealed class FieldToc : Field
{
    internal FieldToc() { }

    private protected override string[] ArgSwitches => new[] { "\\o", "\\t", "\\p", "\\n", "\\f", "\\l", "\\b", "\\c", "\\a", "\\s", "\\d" };

    /// <summary>The heading levels listed, such as "1-3" (the \o switch).</summary>
    public string? HeadingLevelRange { get => SwitchText("\\o"); set => SwitchText("\\o", value); }

    /// <summary>Other styles listed with their levels, such as "Title,1" (the \t switch).</summary>
    public string? CustomStyles { get => SwitchText("\\t"); set => SwitchText("\\t", value); }

    /// <summary>Whether entries link to their headings (the \h switch).</summary>
    public bool InsertHyperlinks { get => Flag("\\h"); set => Flag("\\h", value); }

    /// <summary>Whether tab leaders and page numbers are hidden in web layout (the \z switch).</summary>
    public bool HideInWebLayout { get => Flag("\\z"); set => Flag("\\z", value); }

    /// <summary>Whether paragraphs are listed by their outline level (the \u switch).</summary>
    public bool UseParagraphOutlineLevel { get => Flag("\\u"); set => Flag("\\u", value); }

    /// <summary>Whether tabs in headings are kept in the entries (the \w switch).</summary>
    public bool PreserveTabs { get => Flag("\\w"); set => Flag("\\w", value); }

    /// <summary>Whether line breaks in headings are kept in the entries (the \x switch).</summary>
    public bool PreserveLineBreaks { get => Flag("\\x"); set => Flag("\\x", value); }

    /// <summary>What separates an entry from its page number (the \p switch).</summary>
    public string? EntrySeparator { get => SwitchText("\\p"); set => SwitchText("\\p", value); }

    /// <summary>The levels whose entries have no page number, such as "2-3" (the \n switch).</summary>
    public string? PageNumberOmittingLevelRange { get => SwitchText("\\n"); set => SwitchText("\\n", value); }

    /// <summary>The type of the TC fields listed (the \f switch).</summary>
    public string? EntryIdentifier { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>The levels of the TC fields listed, such as "1-2" (the \l switch).</summary>
    public string? EntryLevelRange { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>The bookmark whose text alone is listed (the \b switch).</summary>
    public string? BookmarkName { get => SwitchText("\\b"); set => SwitchText("\\b", value); }

    internal override bool WritesOwnResult => true;

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (ctx.Doc == null) return null;
        var entries = TocEntries.Collect(this, ParseCode(), ctx);
        TocEntries.Write(this, entries, ParseCode(), ctx);
        return null;
    }
}

/// <summary>TC: an entry for a table of contents, placed by hand; shows nothing itself.</summary>
public sealed class FieldTC : Field
{
    internal FieldTC() { }

    private protected override string[] ArgSwitches => new[] { "\\f", "\\l" };

    /// <summary>The text of the entry in the table of contents.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }

    /// <summary>The type of the entry, which a TOC field's \f switch picks (the \f switch).</summary>
    public string? TypeIdentifier { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>The entry's level in the table of contents (the \l switch).</summary>
    public string? EntryLevel { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>Whether the entry has no page number (the \n switch).</summary>
    public bool OmitPageNumber { get => Flag("\\n"); set => Flag("\\n", value); }
}

/// <summary>XE: an index entry; shows nothing itself.</summary>
public sealed class FieldXE : Field
{
    internal FieldXE() { }

    private protected override string[] ArgSwitches => new[] { "\\f", "\\r", "\\t", "\\y" };

    /// <summary>The text of the index entry; a colon separates sub-entries.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }

    /// <summary>The type of the entry, which an INDEX field's \f switch picks (the \f switch).</summary>
    public string? EntryType { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>The bookmark whose pages the entry shows as a range (the \r switch).</summary>
    public string? PageRangeBookmarkName { get => SwitchText("\\r"); set => SwitchText("\\r", value); }

    /// <summary>The text shown instead of a page number, such as "See Paris" (the \t switch).</summary>
    public string? PageNumberReplacement { get => SwitchText("\\t"); set => SwitchText("\\t", value); }

    /// <summary>Whether the entry's page number is bold (the \b switch).</summary>
    public bool IsBold { get => Flag("\\b"); set => Flag("\\b", value); }

    /// <summary>Whether the entry's page number is italic (the \i switch).</summary>
    public bool IsItalic { get => Flag("\\i"); set => Flag("\\i", value); }
}

internal static class TocEntries
{
    internal readonly record struct Entry(string Text, int Level, Paragraph Source, bool NoPage);

    private static (int Lo, int Hi)? Range(string? r)
    {
        if (r == null) return null;
        var parts = r.Split('-');
        return int.TryParse(parts[0], out var lo) && int.TryParse(parts[^1], out var hi) ? (lo, hi) : null;
    }

    public static List<Entry> Collect(FieldToc toc, FieldCode code, FieldUpdateContext ctx)
    {
        var levels = Range(code.Get("\\o"));
        if (levels == null && !code.Has("\\o") && !code.Has("\\t") && !code.Has("\\u") && !code.Has("\\f")) levels = (1, 9);
        if (levels == null && code.Has("\\o")) levels = (1, 9);
        var styles = new Dictionary<string, int>(StringComparer.OrdinalIgnoreCase);
        if (code.Get("\\t") is { } t)
        {
            var parts = t.Split(new[] { ',', ';' }, StringSplitOptions.TrimEntries);
            for (int i = 0; i + 1 < parts.Length; i += 2)
                if (int.TryParse(parts[i + 1], out var l)) styles[parts[i]] = l;
        }
        var omit = Range(code.Get("\\n"));
        bool omitAll = code.Has("\\n") && omit == null;
        var tcLevels = Range(code.Get("\\l"));
        var list = new List<Entry>();
        var own = new HashSet<Paragraph>();
        for (Node? n = toc.Start.ParentParagraph; n != null; n = n.NextPreOrder(n.Document!))
        {
            if (n is Paragraph op) own.Add(op);
            if (n == toc.End) break;
        }
        foreach (Section s in ctx.Doc!.Sections)
            foreach (Paragraph p in s.Body!.GetChildNodes(NodeType.Paragraph, true))
            {
                if (own.Contains(p)) continue;
                int level = 0;
                var f = p.ParagraphFormat;
                if (levels is { } lv && f.IsHeading)
                {
                    int h = f.StyleIdentifier - StyleIdentifier.Heading1 + 1;
                    if (h >= lv.Lo && h <= lv.Hi) level = h;
                }
                if (level == 0 && code.Has("\\u") && (int)f.OutlineLevel < 9 && (levels == null || ((int)f.OutlineLevel + 1 >= levels.Value.Lo && (int)f.OutlineLevel + 1 <= levels.Value.Hi)))
                    level = (int)f.OutlineLevel + 1;
                if (level == 0 && styles.TryGetValue(f.StyleName, out var sl)) level = sl;
                if (level > 0)
                {
                    var text = Paragraphs.Visible(p).Trim();
                    if (text.Length > 0) list.Add(new Entry(text, level, p, omitAll || (omit is { } o && level >= o.Lo && level <= o.Hi)));
                }
                if (code.Has("\\f")) AddTcEntries(p, code.Get("\\f"), tcLevels, list);
            }
        return list;
    }

    private static void AddTcEntries(Paragraph p, string? id, (int Lo, int Hi)? range, List<Entry> list)
    {
        foreach (var field in FieldUpdater.Collect(p, p))
        {
            if (field is not FieldTC tc) continue;
            var c = tc.ParseCode();
            var type = c.Get("\\f") ?? "C";
            if (id != null && !type.Equals(id, StringComparison.OrdinalIgnoreCase)) continue;
            int level = int.TryParse(c.Get("\\l"), out var l) ? l : 1;
            if (range is { } r && (level < r.Lo || level > r.Hi)) continue;
            list.Add(new Entry(c.Arg(0), level, p, c.Has("\\n")));
        }
    }

    public static void Write(FieldToc toc, List<Entry> entries, FieldCode code, FieldUpdateContext ctx)
    {
        var doc = ctx.Doc!;
        bool links = code.Has("\\h");
        var separator = code.Get("\\p");
        var paras = new List<Paragraph>();
        foreach (var e in entries)
        {
            var p = new Paragraph(doc);
            SetLevelStyle(doc, p, e.Level);
            var bookmark = links || !e.NoPage ? BookmarkFor(doc, e.Source) : null;
            if (links) p.AppendField($"HYPERLINK \\l \"{bookmark}\"", e.Text);
            else p.AppendChild(new Run(doc, e.Text));
            if (!e.NoPage)
            {
                p.AppendChild(new Run(doc, separator ?? ControlChar.TabChar.ToString()));
                p.AppendField($"PAGEREF {bookmark} \\h", ctx.PageLabelOf(e.Source) ?? "");
            }
            paras.Add(p);
        }
        toc.WriteParagraphs(paras, "No table of contents entries found.");
    }

    private static void SetLevelStyle(Document doc, Paragraph p, int level)
    {
        if (level <= 3) p.ParagraphFormat.StyleIdentifier = StyleIdentifier.Toc1 + (level - 1);
        else if (doc.Styles["toc " + level] is { } s) p.ParagraphFormat.StyleName = s.Name;
        else p.ParagraphFormat.StyleIdentifier = StyleIdentifier.Toc3;
    }

    // Entries link to a hidden bookmark around their heading, named as word processors name them.
    private static string BookmarkFor(Document doc, Paragraph source)
    {
        foreach (var n in source.ChildNodes)
            if (n is BookmarkStart b && b.Name.StartsWith("_Toc", StringComparison.Ordinal)) return b.Name;
        var names = new HashSet<string>(doc.Range.Bookmarks.Select(b => b.Name));
        int k = 100000000 + names.Count;
        while (names.Contains("_Toc" + k)) k++;
        var name = "_Toc" + k;
        source.PrependChild(new BookmarkStart(doc, name));
        source.AppendChild(new BookmarkEnd(doc, name));
        return name;
    }
}

/// <summary>The text of a paragraph as a reader sees it: field results, not their codes.</summary>
internal static class Paragraphs
{
    public static string Visible(Paragraph p)
    {
        var sb = new System.Text.StringBuilder();
        var stack = new Stack<bool>();
        foreach (var n in p.ChildNodes)
        {
            if (n is FieldStart) stack.Push(true);
            else if (n is FieldSeparator && stack.Count > 0) { stack.Pop(); stack.Push(false); }
            else if (n is FieldEnd && stack.Count > 0) stack.Pop();
            else if (n is Run r && !stack.Contains(true)) sb.Append(r.Text);
        }
        return sb.ToString();
    }
}
