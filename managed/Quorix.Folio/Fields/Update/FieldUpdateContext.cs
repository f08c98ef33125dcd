using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>State one update pass shares between its fields: sequence counters, SET values, the clock.</summary>
internal sealed class FieldUpdateContext
{
    public readonly Document? Doc;
    public readonly FieldOptions Options;
    public readonly DateTime Now;
    public readonly Dictionary<string, int> Sequences = new(StringComparer.OrdinalIgnoreCase);
    public readonly Dictionary<string, Node> SequenceHeadings = new(StringComparer.OrdinalIgnoreCase);
    public readonly Dictionary<string, string> SetValues = new(StringComparer.OrdinalIgnoreCase);
    public readonly Dictionary<string, int> ListNums = new(StringComparer.OrdinalIgnoreCase);
    public int AutoNum;

    private Layout.PageNumbers? pages;
    private Layout.NoteMarks? noteMarks;

    /// <summary>Whether a field of this pass asked for the page layout.</summary>
    public bool ReadPages { get; private set; }

    /// <summary>Page fields keep their results (and the layout is not built) in a pass whose edits
    /// would make the layout stale at once; the caller lays out afterwards.</summary>
    public bool DeferPages;

    /// <summary>The page layout's numbers, laid out when a field first asks; null without a document.</summary>
    public Layout.PageNumbers? Pages
    {
        get
        {
            if (Doc == null) return null;
            ReadPages = true;
            if (DeferPages) return null;
            return pages ??= new Layout.PageNumbers(Doc.PageLayout);
        }
    }

    /// <summary>The number of the page a node is on, or null.</summary>
    public int? PageOf(Node node) => Pages is { } p && p.IndexOf(node) is >= 0 and var i ? p.Number(i) : null;

    /// <summary>The label (number in the section's style) of the page a node is on, or null.</summary>
    public string? PageLabelOf(Node node) => Pages is { } p && p.IndexOf(node) is >= 0 and var i ? p.Label(i) : null;

    /// <summary>Footnote and endnote marks; from the page layout only where numbering restarts per page.</summary>
    public Layout.NoteMarks NoteMarks => noteMarks ??= Doc == null ? Layout.NoteMarks.None
        : Layout.NoteMarks.NeedPages(Doc) && Pages is { } p ? p.NoteMarks : Layout.NoteMarks.Number(Doc, null);

    public FieldUpdateContext(Document? doc)
    {
        Doc = doc;
        Options = doc?.FieldOptions ?? new FieldOptions();
        Now = Options.CurrentDateTime ?? DateTime.Now;
    }

    public CultureInfo Culture => Options.Culture;

    /// <summary>A built-in or custom document property's value; null when it is not set.</summary>
    public object? PropertyValue(string name)
    {
        if (Doc == null) return null;
        if (Doc.BuiltInDocumentProperties.TryGetValue(name, out var v)) return v;
        return Doc.CustomDocumentProperties.TryGetValue(name, out v) ? v : null;
    }

    /// <summary>A property's value as text, dates in the culture's short form.</summary>
    public string? Property(string name) => PropertyValue(name) switch
    {
        null => null,
        DateTime d => d.ToString(Culture.DateTimeFormat.ShortDatePattern, Culture),
        IFormattable f => f.ToString(null, Culture),
        var other => other.ToString(),
    };

    private Dictionary<string, Bookmark>? bookmarks;

    /// <summary>A bookmark by name; looked up once per pass, since fields do not add or remove bookmarks.</summary>
    public Bookmark? FindBookmark(string name)
    {
        if (Doc == null) return null;
        if (bookmarks == null)
        {
            bookmarks = new Dictionary<string, Bookmark>(StringComparer.OrdinalIgnoreCase);
            foreach (var b in Doc.Range.Bookmarks) bookmarks.TryAdd(b.Name, b);
        }
        return bookmarks.TryGetValue(name, out var found) ? found : null;
    }

    /// <summary>The text a bookmark holds, or a value a SET field gave it during this pass.</summary>
    public string? Bookmark(string name)
    {
        if (SetValues.TryGetValue(name, out var v)) return v;
        return FindBookmark(name)?.Text;
    }
}
