using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>The names of the sixteen categories of a table of authorities.</summary>
public sealed class ToaCategories
{
    private static readonly string[] Defaults =
    {
        "Cases", "Statutes", "Other Authorities", "Rules", "Treatises", "Regulations", "Constitutional Provisions",
        "8", "9", "10", "11", "12", "13", "14", "15", "16",
    };

    private readonly string[] names = (string[])Defaults.Clone();

    /// <summary>The categories named as a word processor names them before anyone renames them.</summary>
    public ToaCategories() { }

    /// <summary>The categories as a word processor names them before anyone renames them.</summary>
    public static ToaCategories DefaultCategories => new();

    /// <summary>A category's name by its number, 1 to 16.</summary>
    public string this[int category]
    {
        get => names[Index(category)];
        set => names[Index(category)] = value ?? throw new ArgumentNullException(nameof(value));
    }

    private static int Index(int category) =>
        category is >= 1 and <= 16 ? category - 1 : throw new ArgumentOutOfRangeException(nameof(category), "A category of authorities is numbered 1 to 16.");
}

/// <summary>TA: one citation of an authority; shows nothing itself.</summary>
public sealed class FieldTA : Field
{
    internal FieldTA() { }

    private protected override string[] ArgSwitches => new[] { "\\c", "\\l", "\\r", "\\s" };

    /// <summary>The authority's full citation, as the table lists it (the \l switch).</summary>
    public string? LongCitation { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>The short form later citations of the same authority use (the \s switch).</summary>
    public string? ShortCitation { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    /// <summary>The number of the authority's category (the \c switch).</summary>
    public string? EntryCategory { get => SwitchText("\\c"); set => SwitchText("\\c", value); }

    /// <summary>The bookmark whose pages the citation covers (the \r switch).</summary>
    public string? PageRangeBookmarkName { get => SwitchText("\\r"); set => SwitchText("\\r", value); }

    /// <summary>Whether the citation's page number is bold (the \b switch).</summary>
    public bool IsBold { get => Flag("\\b"); set => Flag("\\b", value); }

    /// <summary>Whether the citation's page number is italic (the \i switch).</summary>
    public bool IsItalic { get => Flag("\\i"); set => Flag("\\i", value); }
}

/// <summary>TOA: the table of authorities: the TA citations of a category, sorted, each with the pages
/// that cite it from the page layout, "passim" with \p where five or more pages do.</summary>
public sealed class FieldToa : Field
{
    internal FieldToa() { }

    private protected override string[] ArgSwitches => new[] { "\\b", "\\c", "\\d", "\\e", "\\g", "\\l", "\\s" };

    /// <summary>The number of the category listed (the \c switch); every category when not set.</summary>
    public string? EntryCategory { get => SwitchText("\\c"); set => SwitchText("\\c", value); }

    /// <summary>The bookmark whose citations alone are listed (the \b switch).</summary>
    public string? BookmarkName { get => SwitchText("\\b"); set => SwitchText("\\b", value); }

    /// <summary>What separates an entry from its page numbers (the \e switch); a tab when not set.</summary>
    public string? EntrySeparator { get => SwitchText("\\e"); set => SwitchText("\\e", value); }

    /// <summary>What separates the first and last page of a range (the \g switch).</summary>
    public string? PageRangeSeparator { get => SwitchText("\\g"); set => SwitchText("\\g", value); }

    /// <summary>What separates the page numbers of one entry (the \l switch).</summary>
    public string? PageNumberListSeparator { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>Whether the category's name heads the table (the \h switch).</summary>
    public bool UseHeading { get => Flag("\\h"); set => Flag("\\h", value); }

    /// <summary>Whether an authority cited on five or more pages shows "passim" (the \p switch).</summary>
    public bool UsePassim { get => Flag("\\p"); set => Flag("\\p", value); }

    /// <summary>Whether the entries lose the formatting of their citations (the \f switch).</summary>
    public bool RemoveEntryFormatting { get => Flag("\\f"); set => Flag("\\f", value); }

    internal override bool WritesOwnResult => true;

    internal override bool FormatsResult => false;

    private sealed class Authority
    {
        public required string Citation;
        public required int Category;
        public readonly SortedSet<int> Pages = new();
        public readonly List<(int From, int To)> Ranges = new();
    }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (ctx.Doc == null) return null;
        var code = ParseCode();
        int? only = null;
        if (code.Get("\\c") is { } c)
        {
            if (!int.TryParse(c, NumberStyles.Integer, CultureInfo.InvariantCulture, out var n) || n is < 0 or > 16) throw new FieldUpdateException("TOA has no valid category.");
            if (n > 0) only = n;
        }
        var authorities = Collect(ctx, code, only);
        var doc = ctx.Doc;
        var paras = new List<Paragraph>();
        var entryStyle = doc.Styles["table of authorities"]?.Name;
        var headingStyle = doc.Styles["toa heading"]?.Name;
        foreach (var group in authorities.GroupBy(a => a.Category).OrderBy(g => g.Key))
        {
            if (code.Has("\\h"))
            {
                var h = new Paragraph(doc);
                if (headingStyle != null) h.ParagraphFormat.StyleName = headingStyle;
                h.AppendChild(new Run(doc, ctx.Options.ToaCategories[group.Key]));
                paras.Add(h);
            }
            foreach (var a in group.OrderBy(a => a.Citation, StringComparer.CurrentCultureIgnoreCase))
            {
                var p = new Paragraph(doc);
                if (entryStyle != null) p.ParagraphFormat.StyleName = entryStyle;
                var pages = Pages(a, code);
                p.AppendChild(new Run(doc, pages.Length > 0 ? a.Citation + (code.Get("\\e") ?? "\t") + pages : a.Citation));
                paras.Add(p);
            }
        }
        WriteParagraphs(paras, "No table of authorities entries found.");
        return null;
    }

    private static List<Authority> Collect(FieldUpdateContext ctx, FieldCode code, int? only)
    {
        Node scope = code.Get("\\b") is { } bm && ctx.FindBookmark(bm) is { } b ? b.BookmarkStart.ParentNode! : ctx.Doc!;
        var byLong = new Dictionary<string, Authority>(StringComparer.CurrentCultureIgnoreCase);
        var byShort = new Dictionary<string, Authority>(StringComparer.CurrentCultureIgnoreCase);
        var list = new List<Authority>();
        foreach (var ta in FieldUpdater.Collect(scope, scope).OfType<FieldTA>())
        {
            var t = ta.ParseCode();
            // A later citation gives only the short form of an authority cited in full before.
            Authority? a = null;
            if (t.Get("\\l") is { Length: > 0 } full)
            {
                int category = int.TryParse(t.Get("\\c"), NumberStyles.Integer, CultureInfo.InvariantCulture, out var k) && k is >= 1 and <= 16 ? k : 1;
                if (!byLong.TryGetValue(full, out a))
                {
                    byLong[full] = a = new Authority { Citation = full.Replace('\v', ' '), Category = category };
                    list.Add(a);
                }
                if (t.Get("\\s") is { Length: > 0 } brief) byShort.TryAdd(brief, a);
            }
            else if (t.Get("\\s") is { Length: > 0 } brief) byShort.TryGetValue(brief, out a);
            if (a == null) continue;
            if (t.Get("\\r") is { } range && ctx.FindBookmark(range) is { } r)
            {
                if (ctx.PageOf(r.BookmarkStart) is { } from && (r.BookmarkEnd == null ? from : ctx.PageOf(r.BookmarkEnd) ?? from) is var to)
                    a.Ranges.Add((from, to));
            }
            else if (ctx.PageOf(ta.Start) is { } page) a.Pages.Add(page);
        }
        return only is { } cat ? list.FindAll(x => x.Category == cat) : list;
    }

    private static string Pages(Authority a, FieldCode code)
    {
        var distinct = new SortedSet<int>(a.Pages);
        foreach (var (from, to) in a.Ranges)
            for (int p = from; p <= to; p++) distinct.Add(p);
        if (code.Has("\\p") && distinct.Count >= 5) return "passim";
        var dash = code.Get("\\g") ?? "\u2013";
        var items = a.Pages.Select(p => (From: p, To: p)).Concat(a.Ranges).OrderBy(x => x.From).ThenBy(x => x.To).Distinct();
        return string.Join(code.Get("\\l") ?? ", ", items.Select(x => x.From == x.To
            ? x.From.ToString(CultureInfo.InvariantCulture)
            : x.From.ToString(CultureInfo.InvariantCulture) + dash + x.To.ToString(CultureInfo.InvariantCulture)));
    }
}
