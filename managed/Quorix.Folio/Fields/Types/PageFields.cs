using System.Globalization;
using Quorix.Folio.Notes;

namespace Quorix.Folio.Fields;

/// <summary>PAGE: the number of the page the field is on, in its section's page number style.
/// In headers and footers it is drawn per page by the layout and its stored result is left alone.</summary>
public sealed class FieldPage : Field
{
    internal FieldPage() { }

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (PageFieldText.DrawnPerPage(this) || ctx.Pages is not { } pages || pages.IndexOf(Start) is not (>= 0 and var i)) return null;
        return PageFieldText.Format(ParseCode(), pages.Number(i), pages.Label(i), ctx.Culture);
    }
}

/// <summary>NUMPAGES: how many pages the document has.</summary>
public sealed class FieldNumPages : Field
{
    internal FieldNumPages() { }

    internal override string? Compute(FieldUpdateContext ctx) => PageFieldText.DrawnPerPage(this) ? null : ctx.Pages?.Count.ToString(CultureInfo.InvariantCulture);
}

/// <summary>SECTIONPAGES: how many pages the section holding the field has.</summary>
public sealed class FieldSectionPages : Field
{
    internal FieldSectionPages() { }

    internal override string? Compute(FieldUpdateContext ctx) =>
        !PageFieldText.DrawnPerPage(this) && ctx.Pages is { } pages && pages.IndexOf(Start) is >= 0 and var i ? pages.SectionPageCount(i).ToString(CultureInfo.InvariantCulture) : null;
}

/// <summary>PAGEREF: the page number of a bookmark, or with \p its place relative to the field.</summary>
public sealed class FieldPageRef : Field
{
    internal FieldPageRef() { }

    /// <summary>The bookmark whose page number the field shows.</summary>
    public string? BookmarkName { get => Argument(0); set => Argument(0, value); }

    /// <summary>Whether the result links to the bookmark (the \h switch).</summary>
    public bool InsertHyperlink { get => Flag("\\h"); set => Flag("\\h", value); }

    /// <summary>Whether the result says "above" or "below" instead when the bookmark is on the same page (the \p switch).</summary>
    public bool InsertRelativePosition { get => Flag("\\p"); set => Flag("\\p", value); }

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var name = code.Arg(0);
        if (ctx.FindBookmark(name) == null) return "Error! Bookmark not defined.";
        if (ctx.Pages is not { } pages) return null;
        int target = pages.BookmarkIndex(name);
        if (target < 0) return null;
        if (code.Has("\\p") && pages.IndexOf(Start) == target)
            return Layout.PageNumbers.Precedes(ctx.FindBookmark(name)!.BookmarkStart, Start) ? "above" : "below";
        var text = PageFieldText.Format(code, pages.Number(target), pages.Label(target), ctx.Culture);
        return code.Has("\\p") ? "on page " + text : text;
    }
}

/// <summary>NOTEREF: the mark of the first footnote or endnote inside a bookmark.</summary>
public sealed class FieldNoteRef : Field
{
    internal FieldNoteRef() { }

    /// <summary>The bookmark on the footnote or endnote mark the field refers to.</summary>
    public string? BookmarkName { get => Argument(0); set => Argument(0, value); }

    /// <summary>Whether the result links to the note (the \h switch).</summary>
    public bool InsertHyperlink { get => Flag("\\h"); set => Flag("\\h", value); }

    /// <summary>Whether the result takes the note mark's own formatting (the \f switch).</summary>
    public bool InsertReferenceMark { get => Flag("\\f"); set => Flag("\\f", value); }

    /// <summary>Whether the result says "above" or "below" the field (the \p switch).</summary>
    public bool InsertRelativePosition { get => Flag("\\p"); set => Flag("\\p", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var name = ParseCode().Arg(0);
        if (ctx.FindBookmark(name) is not { } bookmark) return "Error! Reference source not found.";
        for (Node? n = bookmark.BookmarkStart; n != null && n != bookmark.BookmarkEnd; n = n.NextPreOrder(n.Document!))
            if (n is Footnote note) return ctx.NoteMarks.Of(note);
        return "Error! Not a valid bookmark for a footnote or endnote reference.";
    }
}

internal static class PageFieldText
{
    /// <summary>Whether the field is in a header or footer, where the layout draws its number on each
    /// page: update leaves its stored result, and needs no layout for it.</summary>
    public static bool DrawnPerPage(Field f) => f.Start.GetAncestor(NodeType.HeaderFooter) != null;

    // Formats that turn a number into other text; the rest (case, MERGEFORMAT) apply to the page's own label.
    private static bool IsNumberFormat(GeneralFormat f) =>
        f is not (GeneralFormat.Caps or GeneralFormat.FirstCap or GeneralFormat.Lower or GeneralFormat.Upper
            or GeneralFormat.CharFormat or GeneralFormat.MergeFormat or GeneralFormat.MergeFormatInet);

    /// <summary>A page number as a page field shows it: the section's style unless the field's own
    /// format switch says otherwise.</summary>
    public static string Format(FieldCode code, int number, string label, CultureInfo culture)
    {
        bool own = code.Get("\\#") != null || code.All("\\*").Any(a => FieldFormatting.Parse(a) is { } g && IsNumberFormat(g));
        return FieldFormatting.Apply(own ? number.ToString(CultureInfo.InvariantCulture) : label, code, culture, date: false);
    }
}
