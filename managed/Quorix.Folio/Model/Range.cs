using System.Text.RegularExpressions;
using Quorix.Folio.Fields;
using Quorix.Folio.Replacing;

namespace Quorix.Folio;

/// <summary>The text covered by a node, with find and replace over it.</summary>
[OfDocument(nameof(OwnerDocument))]
public sealed partial class Range
{
    internal DocumentBase? OwnerDocument => node.Document;

    private readonly Node node;

    internal Range(Node node) { this.node = node; }

    /// <summary>The text of the range.</summary>
    public string Text => node.GetText();

    /// <summary>The bookmarks in the range.</summary>
    public BookmarkCollection Bookmarks => new BookmarkCollection(node);

    /// <summary>Replaces every occurrence of the text, matching case; returns the number of replacements.</summary>
    public int Replace(string pattern, string replacement) => Replace(pattern, replacement, new FindReplaceOptions());

    /// <summary>Replaces every match of pattern by replacement as options say; returns how many were replaced.</summary>
    public int Replace(string pattern, string replacement, FindReplaceOptions options)
    {
        ArgumentException.ThrowIfNullOrEmpty(pattern);
        ArgumentNullException.ThrowIfNull(options);
        var escaped = Regex.Escape(pattern);
        if (options.FindWholeWordsOnly) escaped = @"(?<!\w)" + escaped + @"(?!\w)";
        var flags = RegexOptions.CultureInvariant | (options.MatchCase ? RegexOptions.None : RegexOptions.IgnoreCase);
        return Run(new Regex(escaped, flags), replacement, options);
    }

    /// <summary>Replaces every match of the expression; <c>$1</c> and the like in the replacement stand
    /// for the match's groups, as in <see cref="Regex.Replace(string, string)"/>.</summary>
    public int Replace(Regex pattern, string replacement) => Replace(pattern, replacement, new FindReplaceOptions { UseSubstitutions = true });

    /// <summary>Replaces every match of the expression; its own options decide case, and
    /// <see cref="FindReplaceOptions.UseSubstitutions"/> whether <c>$1</c> stands for a group.</summary>
    public int Replace(Regex pattern, string replacement, FindReplaceOptions options)
    {
        ArgumentNullException.ThrowIfNull(pattern);
        ArgumentNullException.ThrowIfNull(options);
        if (options.FindWholeWordsOnly) pattern = new Regex(@"(?<!\w)(?:" + pattern + @")(?!\w)", pattern.Options, pattern.MatchTimeout);
        return Run(pattern, replacement, options);
    }

    private int Run(Regex re, string replacement, FindReplaceOptions options)
    {
        replacement ??= "";
        Func<Match, string> text = options.UseSubstitutions ? m => m.Result(replacement) : _ => replacement;
        return TextReplacer.Run(node, re, text, options);
    }

    /// <summary>Removes the node's content: the node itself, unless it is a document or story.</summary>
    public void Delete()
    {
        if (node is Document d)
        {
            foreach (Section s in d.Sections) s.Body?.DeleteContent();
        }
        else if (node is Story st) st.DeleteContent();
        else if (node is CompositeNode c && c is not Paragraph && c is not Tables.Table && c is not Tables.Row && c is not Section)
            c.RemoveAllChildren();
        else node.Remove();
    }
}
