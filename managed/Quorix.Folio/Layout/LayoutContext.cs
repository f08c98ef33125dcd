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
    // Runs after runs ask for the same font, by the same string instance the formatting holds.
    private (string Name, bool Bold, bool Italic, ResolvedFont Font)? lastFont;

    /// <summary>The face for a font name and style, reporting a substitution the first time it happens.</summary>
    public ResolvedFont Font(string name, bool bold, bool italic)
    {
        if (lastFont is { } last && last.Bold == bold && last.Italic == italic && ReferenceEquals(last.Name, name)) return last.Font;
        var r = Fonts.Resolve(name, bold, italic);
        lastFont = (name, bold, italic, r);
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
    public List<Block> Blocks(CompositeNode container, double width) => new(Flow(container, width));

    /// <summary>The same blocks, laid out as they are asked for: the paginator lets each page's
    /// blocks go before the next ones are made, which keeps long documents' layout small.</summary>
    public IEnumerable<Block> Flow(CompositeNode container, double width)
    {
        for (var n = container.FirstChild; n != null; n = n.NextSibling)
        {
            if (n is Paragraph cap && cap.ParagraphFormat.DropCapPosition != DropCapPosition.None && cap.NextSibling is Paragraph body)
            {
                foreach (var b in DropCap.Lay(this, cap, body, width)) yield return b;
                n = body;
            }
            else if (n is Paragraph p)
            {
                foreach (var b in ParagraphLayout.Lay(this, p, width)) yield return b;
            }
            else if (n is Table t)
            {
                foreach (var b in TableLayout.Lay(this, t, width)) yield return b;
            }
        }
    }
}
