using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Names, identifiers and default looks of the styles every word processor knows.</summary>
internal static class BuiltInStyles
{
    internal sealed record Def(StyleIdentifier Sti, string Name, string Id, StyleType Type);

    private static readonly Def[] defs =
    {
        new(StyleIdentifier.Normal, "Normal", "Normal", StyleType.Paragraph),
        new(StyleIdentifier.Heading1, "heading 1", "Heading1", StyleType.Paragraph),
        new(StyleIdentifier.Heading2, "heading 2", "Heading2", StyleType.Paragraph),
        new(StyleIdentifier.Heading3, "heading 3", "Heading3", StyleType.Paragraph),
        new(StyleIdentifier.Heading4, "heading 4", "Heading4", StyleType.Paragraph),
        new(StyleIdentifier.Heading5, "heading 5", "Heading5", StyleType.Paragraph),
        new(StyleIdentifier.Heading6, "heading 6", "Heading6", StyleType.Paragraph),
        new(StyleIdentifier.Heading7, "heading 7", "Heading7", StyleType.Paragraph),
        new(StyleIdentifier.Heading8, "heading 8", "Heading8", StyleType.Paragraph),
        new(StyleIdentifier.Heading9, "heading 9", "Heading9", StyleType.Paragraph),
        new(StyleIdentifier.Toc1, "toc 1", "TOC1", StyleType.Paragraph),
        new(StyleIdentifier.Toc2, "toc 2", "TOC2", StyleType.Paragraph),
        new(StyleIdentifier.Toc3, "toc 3", "TOC3", StyleType.Paragraph),
        new(StyleIdentifier.FootnoteText, "footnote text", "FootnoteText", StyleType.Paragraph),
        new(StyleIdentifier.CommentText, "annotation text", "CommentText", StyleType.Paragraph),
        new(StyleIdentifier.Header, "header", "Header", StyleType.Paragraph),
        new(StyleIdentifier.Footer, "footer", "Footer", StyleType.Paragraph),
        new(StyleIdentifier.Caption, "caption", "Caption", StyleType.Paragraph),
        new(StyleIdentifier.FootnoteReference, "footnote reference", "FootnoteReference", StyleType.Character),
        new(StyleIdentifier.CommentReference, "annotation reference", "CommentReference", StyleType.Character),
        new(StyleIdentifier.EndnoteReference, "endnote reference", "EndnoteReference", StyleType.Character),
        new(StyleIdentifier.EndnoteText, "endnote text", "EndnoteText", StyleType.Paragraph),
        new(StyleIdentifier.Title, "Title", "Title", StyleType.Paragraph),
        new(StyleIdentifier.DefaultParagraphFont, "Default Paragraph Font", "DefaultParagraphFont", StyleType.Character),
        new(StyleIdentifier.BodyText, "Body Text", "BodyText", StyleType.Paragraph),
        new(StyleIdentifier.Subtitle, "Subtitle", "Subtitle", StyleType.Paragraph),
        new(StyleIdentifier.Hyperlink, "Hyperlink", "Hyperlink", StyleType.Character),
        new(StyleIdentifier.FollowedHyperlink, "FollowedHyperlink", "FollowedHyperlink", StyleType.Character),
        new(StyleIdentifier.Strong, "Strong", "Strong", StyleType.Character),
        new(StyleIdentifier.Emphasis, "Emphasis", "Emphasis", StyleType.Character),
        new(StyleIdentifier.TableNormal, "Normal Table", "TableNormal", StyleType.Table),
        new(StyleIdentifier.NoList, "No List", "NoList", StyleType.List),
        new(StyleIdentifier.TableGrid, "Table Grid", "TableGrid", StyleType.Table),
        new(StyleIdentifier.ListParagraph, "List Paragraph", "ListParagraph", StyleType.Paragraph),
        new(StyleIdentifier.Quote, "Quote", "Quote", StyleType.Paragraph),
        new(StyleIdentifier.IntenseQuote, "Intense Quote", "IntenseQuote", StyleType.Paragraph),
    };

    private static readonly Dictionary<string, Def> byName = defs.ToDictionary(d => d.Name, StringComparer.OrdinalIgnoreCase);
    private static readonly Dictionary<StyleIdentifier, Def> bySti = defs.ToDictionary(d => d.Sti);

    public static Def? ByName(string name) => byName.TryGetValue(name, out var d) ? d : null;

    public static Def? BySti(StyleIdentifier sti) => bySti.TryGetValue(sti, out var d) ? d : null;

    /// <summary>The look a freshly added built-in style gets.</summary>
    public static void Populate(Style s, Def d)
    {
        if (d.Sti is >= StyleIdentifier.Heading1 and <= StyleIdentifier.Heading9)
        {
            int level = d.Sti - StyleIdentifier.Heading1;
            s.BaseStyleName = "Normal";
            s.NextParagraphStyleName = "Normal";
            var pf = s.ParagraphFormat;
            pf.KeepWithNext = true;
            pf.SpaceBefore = level == 0 ? 12 : 10;
            pf.SpaceAfter = 3;
            pf.OutlineLevel = (OutlineLevel)level;
            s.Font.Bold = true;
            s.Font.Size = level switch { 0 => 16, 1 => 14, 2 => 13, _ => 12 };
            return;
        }
        switch (d.Sti)
        {
            case StyleIdentifier.Title:
                s.BaseStyleName = "Normal";
                s.Font.Size = 26;
                s.ParagraphFormat.SpaceAfter = 6;
                break;
            case StyleIdentifier.Subtitle:
                s.BaseStyleName = "Normal";
                s.Font.Size = 15;
                s.Font.Italic = true;
                break;
            case StyleIdentifier.Hyperlink:
                s.Font.ColorHex = "0563C1";
                s.Font.Underline = Underline.Single;
                break;
            case StyleIdentifier.Strong:
                s.Font.Bold = true;
                break;
            case StyleIdentifier.Emphasis:
                s.Font.Italic = true;
                break;
            case StyleIdentifier.FootnoteReference:
            case StyleIdentifier.EndnoteReference:
                s.Font.Superscript = true;
                break;
            case StyleIdentifier.FootnoteText:
            case StyleIdentifier.EndnoteText:
            case StyleIdentifier.CommentText:
                s.BaseStyleName = "Normal";
                s.Font.Size = 10;
                break;
            case StyleIdentifier.CommentReference:
                s.Font.Size = 8;
                break;
            case StyleIdentifier.ListParagraph:
                s.BaseStyleName = "Normal";
                s.ParagraphFormat.LeftIndent = 36;
                break;
            case StyleIdentifier.Quote:
            case StyleIdentifier.IntenseQuote:
                s.BaseStyleName = "Normal";
                s.Font.Italic = true;
                s.ParagraphFormat.LeftIndent = 36;
                break;
            case StyleIdentifier.Header:
            case StyleIdentifier.Footer:
            case StyleIdentifier.Caption:
            case StyleIdentifier.BodyText:
            case StyleIdentifier.Toc1:
            case StyleIdentifier.Toc2:
            case StyleIdentifier.Toc3:
                s.BaseStyleName = "Normal";
                break;
            case StyleIdentifier.TableGrid:
                s.BaseStyleName = "Normal Table";
                var borders = s.Bag.GetOrAdd("tblPr");
                var list = new PropElement("tblBorders") { Children = new List<PropElement>() };
                foreach (var side in new[] { "top", "left", "bottom", "right", "insideH", "insideV" })
                    list.Children.Add(new PropElement(side).Set("val", "single").Set("sz", "4").Set("space", "0").Set("color", "auto"));
                borders.Children = new List<PropElement> { list };
                break;
        }
    }
}
