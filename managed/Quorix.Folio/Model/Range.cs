using System.Text.RegularExpressions;
using Quorix.Folio.Fields;
using Quorix.Folio.Replacing;

namespace Quorix.Folio;

/// <summary>The text covered by a node, with find and replace over it.</summary>
public sealed class Range
{
    private readonly Node node;

    internal Range(Node node) { this.node = node; }

    public string Text => node.GetText();

    public BookmarkCollection Bookmarks => new BookmarkCollection(node);

    public IReadOnlyList<Field> Fields
    {
        get
        {
            var list = new List<Field>();
            if (node is CompositeNode c)
                foreach (FieldStart s in c.GetChildNodes(NodeType.FieldStart, true))
                    if (FieldPairing.Complete(s) is { } f) list.Add(f);
            return list;
        }
    }

    /// <summary>Replaces every occurrence of the text; returns the number of replacements.</summary>
    public int Replace(string pattern, string replacement) => Replace(pattern, replacement, new FindReplaceOptions());

    public int Replace(string pattern, string replacement, FindReplaceOptions options)
    {
        ArgumentException.ThrowIfNullOrEmpty(pattern);
        ArgumentNullException.ThrowIfNull(options);
        var escaped = Regex.Escape(pattern);
        if (options.FindWholeWordsOnly) escaped = @"(?<![\w])" + escaped + @"(?![\w])";
        var re = new Regex(escaped, options.MatchCase ? RegexOptions.CultureInvariant : RegexOptions.IgnoreCase | RegexOptions.CultureInvariant);
        // The replacement is literal text here, not a substitution pattern.
        return TextReplacer.Run(node, re, _ => replacement ?? "");
    }

    public int Replace(Regex pattern, string replacement) => Replace(pattern, replacement, new FindReplaceOptions());

    public int Replace(Regex pattern, string replacement, FindReplaceOptions options)
    {
        ArgumentNullException.ThrowIfNull(pattern);
        return TextReplacer.Run(node, pattern, m => m.Result(replacement ?? ""));
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
