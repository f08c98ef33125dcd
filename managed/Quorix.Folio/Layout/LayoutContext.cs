using Quorix.Folio.Fonts;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Layout;

/// <summary>What laying out a story needs besides the story: fonts, and while headers and footers are
/// laid out, the numbers the page fields show.</summary>
internal sealed class LayoutContext
{
    public LayoutContext(FontLibrary fonts) { Fonts = fonts; }

    public FontLibrary Fonts { get; }

    public double DefaultTabStop { get; init; } = 36;

    public int? Page;
    public int? Pages;
    public int? SectionPages;

    /// <summary>The text of a page field, or null where the page is not known yet (the field keeps its last result).</summary>
    public string? PageFieldValue(string fieldWord) => fieldWord switch
    {
        "PAGE" => Page?.ToString(),
        "NUMPAGES" => Pages?.ToString(),
        "SECTIONPAGES" => SectionPages?.ToString(),
        _ => null,
    };

    /// <summary>Blocks of a story or cell: its paragraphs and tables in order.</summary>
    public List<Block> Blocks(CompositeNode container, double width)
    {
        var blocks = new List<Block>();
        for (var n = container.FirstChild; n != null; n = n.NextSibling)
        {
            if (n is Paragraph p) blocks.AddRange(ParagraphLayout.Lay(this, p, width));
            else if (n is Table t) blocks.AddRange(TableLayout.Lay(this, t, width));
        }
        return blocks;
    }
}
