using Quorix.Folio.Formatting;

namespace Quorix.Folio.Formats.Flow;

/// <summary>Emphasis as the formats that mark it by meaning see it: set on the text or by its character
/// style, not inherited from the paragraph's style (a bold heading is not bold text).</summary>
internal readonly record struct Emphasis(bool Bold, bool Italic, bool Strike);

/// <summary>What the writers of flow formats read off the model the same way: emphasis, headings and code.</summary>
internal static class ModelFacts
{
    public static Emphasis EmphasisOf(DocumentBase doc, Inline r)
    {
        var own = r.RunAttrs;
        var style = doc.Styles.FindById(own.String(FormatAttr.CharStyle)) is { } cs ? doc.Cascade.CharacterStyle(cs) : AttrSet.Empty;
        bool? bold = own.Bool(FormatAttr.Bold) ?? style.Bool(FormatAttr.Bold);
        bool? italic = own.Bool(FormatAttr.Italic) ?? style.Bool(FormatAttr.Italic);
        bool? strike = own.Bool(FormatAttr.Strike) ?? style.Bool(FormatAttr.Strike);
        return new Emphasis(bold ?? false, italic ?? false, strike ?? false);
    }

    /// <summary>1 to 6 for headings (outline level or heading style), 0 for other paragraphs.</summary>
    public static int HeadingLevel(Paragraph p)
    {
        var ol = p.ParagraphFormat.OutlineLevel;
        if (ol is >= OutlineLevel.Level1 and <= OutlineLevel.Level9) return Math.Min(6, (int)ol + 1);
        var sti = p.ParagraphStyle?.StyleIdentifier;
        if (sti is >= StyleIdentifier.Heading1 and <= StyleIdentifier.Heading9) return Math.Min(6, sti.Value - StyleIdentifier.Heading1 + 1);
        if (sti == StyleIdentifier.Title) return 1;
        return 0;
    }

    private static readonly HashSet<string> MonospaceFonts = new(StringComparer.OrdinalIgnoreCase)
    {
        "Courier New", "Courier", "Consolas", "Liberation Mono", "DejaVu Sans Mono", "Menlo", "Monaco", "Lucida Console", "Source Code Pro",
    };

    public static bool IsMonospace(string? font) => font != null && MonospaceFonts.Contains(font);

    /// <summary>Code is text in a verbatim character style or set directly in a monospaced font.</summary>
    public static bool IsCode(DocumentBase doc, Inline i)
    {
        if (doc.Styles.FindById(i.RPr.CharStyle) is { } cs && (cs.Name.Contains("Verbatim", StringComparison.OrdinalIgnoreCase) || cs.Name.Equals("HTML Code", StringComparison.OrdinalIgnoreCase)))
            return true;
        return IsMonospace(i.RunAttrs.String(FormatAttr.LatinFont));
    }

    public static bool IsCodeBlock(Paragraph p) =>
        p.ParagraphStyle?.Name is { } n && (n.Equals("Source Code", StringComparison.OrdinalIgnoreCase) || n.Equals("HTML Preformatted", StringComparison.OrdinalIgnoreCase) || n.Equals("Plain Text", StringComparison.OrdinalIgnoreCase));

    /// <summary>The text a reader sees: field results, not their codes.</summary>
    public static string VisibleText(Paragraph p)
    {
        var sb = new System.Text.StringBuilder();
        foreach (var piece in Folio.Text.InlineText.Walk(p))
            if (piece.Kind == Folio.Text.InlineText.Kind.Text) sb.Append(piece.Text);
        return sb.ToString();
    }

    /// <summary>The empty paragraph that closes a story: how word processors end one, not a blank line.</summary>
    public static bool IsClosingEmpty(Paragraph p) => p.NextSibling == null && p.PreviousSibling != null && !p.HasChildNodes;

    public static bool IsQuote(Paragraph p) => p.ParagraphStyle?.StyleIdentifier is StyleIdentifier.Quote or StyleIdentifier.IntenseQuote;
}
