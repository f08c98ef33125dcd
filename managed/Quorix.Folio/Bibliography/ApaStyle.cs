using System.Text;

namespace Quorix.Folio.Bibliography;

/// <summary>Citations and reference-list entries in the author-date style of the APA: "(Smith &amp;
/// Jones, 2010, p. 4)" and "Smith, J. A. (2010). Title. City: Publisher.".</summary>
internal static class ApaStyle
{
    /// <summary>Whether a document's selected style is this one (or none is selected).</summary>
    public static bool Serves(string selected) =>
        selected.Length == 0 || selected.Contains("APA", StringComparison.OrdinalIgnoreCase);

    /// <summary>One source's part of a citation, without the parentheses.</summary>
    public static string Cite(Source s, string? pages, string? prefix, bool noAuthor, bool noYear, bool noTitle)
    {
        var parts = new List<string>();
        var who = noAuthor ? null : CitedNames(s.Contributors.Author ?? s.Contributors.Editor);
        if (who != null) parts.Add(who);
        else if (!noTitle && !noAuthor && s.Title is { Length: > 0 } title) parts.Add(title);
        if (!noYear) parts.Add(Year(s));
        if (pages is { Length: > 0 }) parts.Add((pages.Contains('-') || pages.Contains(',') ? "pp. " : "p. ") + pages);
        return (prefix ?? "") + string.Join(", ", parts);
    }

    private static string? CitedNames(Contributor? c) => c switch
    {
        Corporate corp => corp.Name,
        PersonCollection { Count: 1 } p => p[0].Last,
        PersonCollection { Count: 2 } p => p[0].Last + " & " + p[1].Last,
        PersonCollection { Count: > 2 } p => p[0].Last + " et al.",
        _ => null,
    };

    private static string Year(Source s) => s.Year is { Length: > 0 } y ? y : "n.d.";

    /// <summary>The key a reference list is sorted by: the first author's family name, else the title.</summary>
    public static string SortKey(Source s) => (s.Contributors.Author ?? s.Contributors.Editor) switch
    {
        Corporate c => c.Name,
        PersonCollection { Count: > 0 } p => p[0].Last + " " + p[0].First,
        _ => s.Title ?? "",
    };

    /// <summary>A reference-list entry as pieces of text, the title's piece marked to be set in italics.</summary>
    public static List<(string Text, bool Italic)> Entry(Source s)
    {
        var pieces = new List<(string, bool)>();
        var who = ListedNames(s.Contributors.Author ?? s.Contributors.Editor);
        var title = s.Title is { Length: > 0 } t ? t : "";
        if (who != null) pieces.Add((who + " (" + Year(s) + "). ", false));
        if (title.Length > 0) pieces.Add((title + ".", s.SourceType != SourceType.JournalArticle));
        if (who == null) pieces.Add((" (" + Year(s) + ").", false));
        var tail = new StringBuilder();
        switch (s.SourceType)
        {
            case SourceType.JournalArticle or SourceType.ArticleInAPeriodical:
                if (s.JournalName is { Length: > 0 } j) tail.Append(' ').Append(j);
                if (s.Volume is { Length: > 0 } v) tail.Append(", ").Append(v).Append(s.Issue is { Length: > 0 } i ? "(" + i + ")" : "");
                if (s.Pages is { Length: > 0 } pg) tail.Append(", ").Append(pg);
                if (tail.Length > 0) tail.Append('.');
                break;
            case SourceType.InternetSite or SourceType.DocumentFromInternetSite or SourceType.ElectronicSource:
                if (s.Url is { Length: > 0 } url) tail.Append(" Retrieved from ").Append(url);
                break;
            default:
                var place = string.Join(": ", new[] { s.City, s.Publisher }.Where(x => !string.IsNullOrEmpty(x)));
                if (place.Length > 0) tail.Append(' ').Append(place).Append('.');
                break;
        }
        if (tail.Length > 0) pieces.Add((tail.ToString(), false));
        return pieces;
    }

    private static string? ListedNames(Contributor? c)
    {
        switch (c)
        {
            case Corporate corp:
                return corp.Name;
            case PersonCollection { Count: > 0 } people:
                var names = people.Select(Inverted).ToList();
                return names.Count == 1 ? names[0] : string.Join(", ", names.Take(names.Count - 1)) + ", & " + names[^1];
            default:
                return null;
        }
    }

    // "Smith, J. A.": the family name, then the initials of the given and middle names.
    private static string Inverted(Person p)
    {
        var initials = string.Join(" ", (p.First + " " + p.Middle).Split(' ', StringSplitOptions.RemoveEmptyEntries).Select(n => n[0] + "."));
        return initials.Length > 0 ? p.Last + ", " + initials : p.Last;
    }
}
