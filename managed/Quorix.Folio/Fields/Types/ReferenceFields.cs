namespace Quorix.Folio.Fields;

/// <summary>REF: the text of a bookmark (or a value SET gave it).</summary>
public sealed class FieldRef : Field
{
    internal FieldRef() { }

    private protected override string[] ArgSwitches => new[] { "\\d" };

    /// <summary>The bookmark whose text the field shows.</summary>
    public string? BookmarkName { get => Argument(0); set => Argument(0, value); }

    /// <summary>Whether the result links to the bookmark (the \h switch).</summary>
    public bool InsertHyperlink { get => Flag("\\h"); set => Flag("\\h", value); }

    /// <summary>Whether the result is the list number of the bookmarked paragraph (the \n switch).</summary>
    public bool InsertParagraphNumber { get => Flag("\\n"); set => Flag("\\n", value); }

    /// <summary>Whether notes and comments in the bookmark are numbered again in the result (the \f switch).</summary>
    public bool IncludeNoteOrComment { get => Flag("\\f"); set => Flag("\\f", value); }

    /// <summary>Whether a paragraph number shows without its text other than separators (the \t switch).</summary>
    public bool SuppressNonDelimiters { get => Flag("\\t"); set => Flag("\\t", value); }

    internal override string? Compute(FieldUpdateContext ctx) => Resolve(ParseCode(), ctx);

    internal static string Resolve(FieldCode code, FieldUpdateContext ctx)
    {
        var name = code.Name.Equals("REF", StringComparison.OrdinalIgnoreCase) ? code.Arg(0) : code.Name;
        if (name.Length == 0) throw new FieldUpdateException("REF names no bookmark.");
        var text = ctx.Bookmark(name);
        if (text == null) return "Error! Reference source not found.";
        if (code.Has("\\n") || code.Has("\\r") || code.Has("\\w"))
        {
            var para = ctx.FindBookmark(name)?.BookmarkStart.ParentNode as Paragraph;
            return para?.IsListItem == true ? para.ListLabel.LabelString.TrimEnd('.', ' ') : "";
        }
        return text.TrimEnd(ControlChar.ParagraphBreakChar);
    }
}

/// <summary>STYLEREF: the text of the nearest paragraph before the field (else after it) with the style.</summary>
public sealed class FieldStyleRef : Field
{
    internal FieldStyleRef() { }

    /// <summary>The style whose nearest paragraph's text the field shows, such as a running heading.</summary>
    public string? StyleName { get => Argument(0); set => Argument(0, value); }

    /// <summary>Whether the result is that paragraph's list number (the \n switch).</summary>
    public bool InsertParagraphNumber { get => Flag("\\n"); set => Flag("\\n", value); }

    /// <summary>Whether the page is searched from its bottom up (the \l switch).</summary>
    public bool SearchFromBottom { get => Flag("\\l"); set => Flag("\\l", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var style = code.Arg(0);
        var here = Start.ParentParagraph;
        if (here == null || here.ParentNode == null) return null;
        bool Matches(Paragraph p) => p.ParagraphFormat.StyleName.Equals(style, StringComparison.OrdinalIgnoreCase)
            || (int.TryParse(style, out var level) && p.ParagraphFormat.StyleIdentifier == StyleIdentifier.Heading1 + (level - 1));
        var story = (CompositeNode?)here.ParentStory ?? here.ParentNode;
        var all = story.GetChildNodes(NodeType.Paragraph, true).Cast<Paragraph>().ToList();
        int i = all.IndexOf(here);
        var found = all.Take(i + 1).LastOrDefault(Matches) ?? all.Skip(i + 1).FirstOrDefault(Matches);
        if (found == null) return "Error! No text of specified style in document.";
        if (code.Has("\\n")) return found.ListLabel.LabelString;
        return found.GetText().TrimEnd(ControlChar.ParagraphBreakChar, ControlChar.SectionBreakChar);
    }
}

/// <summary>QUOTE: its argument, nested fields computed.</summary>
public sealed class FieldQuote : Field
{
    internal FieldQuote() { }

    /// <summary>The text the field shows.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => string.Join(' ', ParseCode().Args);
}

/// <summary>SET: gives a bookmark a value for the fields after it; shows nothing.</summary>
public sealed class FieldSet : Field
{
    internal FieldSet() { }

    /// <summary>The bookmark the field sets.</summary>
    public string? BookmarkName { get => Argument(0); set => Argument(0, value); }

    /// <summary>The text the bookmark is given.</summary>
    public string? BookmarkText { get => Argument(1); set => Argument(1, value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        if (code.Args.Count < 2) throw new FieldUpdateException("SET needs a bookmark and a value.");
        ctx.SetValues[code.Args[0]] = code.Args[1];
        return "";
    }
}

/// <summary>ASK: the prompt respondent's answer becomes the bookmark's value; shows nothing.</summary>
public sealed class FieldAsk : Field
{
    internal FieldAsk() { }

    private protected override string[] ArgSwitches => new[] { "\\d" };

    /// <summary>The bookmark the answer is stored in.</summary>
    public string? BookmarkName { get => Argument(0); set => Argument(0, value); }

    /// <summary>The question asked of the user.</summary>
    public string? PromptText { get => Argument(1); set => Argument(1, value); }

    /// <summary>The answer used when the user gives none (the \d switch).</summary>
    public string? DefaultResponse { get => SwitchText("\\d"); set => SwitchText("\\d", value); }

    /// <summary>Whether a mail merge asks once rather than for every record (the \o switch).</summary>
    public bool PromptOnceOnMailMerge { get => Flag("\\o"); set => Flag("\\o", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var def = code.Get("\\d") ?? "";
        ctx.SetValues[code.Arg(0)] = ctx.Options.UserPromptRespondent?.Respond(code.Arg(1), def) ?? def;
        return "";
    }
}

/// <summary>FILLIN: shows the prompt respondent's answer.</summary>
public sealed class FieldFillIn : Field
{
    internal FieldFillIn() { }

    private protected override string[] ArgSwitches => new[] { "\\d" };

    /// <summary>The question asked of the user.</summary>
    public string? PromptText { get => Argument(0); set => Argument(0, value); }

    /// <summary>The answer used when the user gives none (the \d switch).</summary>
    public string? DefaultResponse { get => SwitchText("\\d"); set => SwitchText("\\d", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var def = code.Get("\\d") ?? "";
        return ctx.Options.UserPromptRespondent?.Respond(code.Arg(0), def) ?? def;
    }
}
