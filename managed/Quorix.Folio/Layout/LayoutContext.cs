using System.Globalization;
using Quorix.Folio.Fields;
using Quorix.Folio.Fonts;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Layout;

/// <summary>What laying out a story needs besides the story: fonts, and while headers and footers are
/// laid out, the numbers the page fields show.</summary>
internal sealed class LayoutContext
{
    public LayoutContext(FontLibrary fonts, ThemeFonts? theme = null)
    {
        Fonts = fonts;
        theme1 = theme;
    }

    private readonly ThemeFonts? theme1;

    public FontLibrary Fonts { get; }

    /// <summary>Where font substitutions are reported, once per font and style in a layout; nowhere when null.</summary>
    public WarningLog? Warnings { get; init; }

    private HashSet<(string, bool, bool)>? substituted;

    /// <summary>The face for a font name and style, reporting a substitution the first time it happens.</summary>
    public ResolvedFont Font(string name, bool bold, bool italic)
    {
        var r = Fonts.Resolve(name, bold, italic);
        if (r.Substitution is { } reason && Warnings != null && (substituted ??= new()).Add((name, bold, italic)))
            Warnings.Add(new FontSubstitutionWarningInfo(name, bold, italic, r.Face.Family, reason));
        return r;
    }

    /// <summary>The typeface a theme font slot stands for in this document, or null.</summary>
    public string? ThemeFont(string? slot) => slot == null || theme1 == null ? null
        : slot.StartsWith("major", StringComparison.Ordinal) ? theme1.Major
        : slot.StartsWith("minor", StringComparison.Ordinal) ? theme1.Minor : null;

    public double DefaultTabStop { get; init; } = 36;

    /// <summary>The page whose headers and footers are being laid out; null for body text.</summary>
    public LayoutPage? Page;
    public int PageCount;
    public int SectionPageCount;

    /// <summary>Reference marks of the document's notes.</summary>
    public NoteMarks? Notes;

    /// <summary>The text of a page field, or null where the page is not known (body text: the field
    /// keeps the result field update gave it).</summary>
    public string? PageFieldValue(string fieldWord, string code)
    {
        if (Page == null) return null;
        return fieldWord switch
        {
            "PAGE" => PageFieldText.Format(FieldCode.Parse(code), Page.Number, Page.Label, CultureInfo.CurrentCulture),
            "NUMPAGES" => FieldFormatting.Apply(PageCount.ToString(CultureInfo.InvariantCulture), FieldCode.Parse(code), CultureInfo.CurrentCulture, date: false),
            "SECTIONPAGES" => FieldFormatting.Apply(SectionPageCount.ToString(CultureInfo.InvariantCulture), FieldCode.Parse(code), CultureInfo.CurrentCulture, date: false),
            _ => null,
        };
    }

    /// <summary>Blocks of a story or cell: its paragraphs and tables in order.</summary>
    public List<Block> Blocks(CompositeNode container, double width)
    {
        var blocks = new List<Block>();
        for (var n = container.FirstChild; n != null; n = n.NextSibling)
        {
            if (n is Paragraph cap && cap.ParagraphFormat.DropCapPosition != DropCapPosition.None && cap.NextSibling is Paragraph body)
            {
                blocks.AddRange(DropCap.Lay(this, cap, body, width));
                n = body;
            }
            else if (n is Paragraph p) blocks.AddRange(ParagraphLayout.Lay(this, p, width));
            else if (n is Table t) blocks.AddRange(TableLayout.Lay(this, t, width));
        }
        return blocks;
    }
}
