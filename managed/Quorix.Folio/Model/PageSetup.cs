using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Page size, margins, columns, borders and section start of one section; measures in points.</summary>
public sealed class PageSetup
{
    private readonly Section section;

    internal PageSetup(Section section) { this.section = section; }

    private AttrSet Own { get => section.Attrs; set => section.Attrs = value; }

    private AttrHost Host => new(() => Own, v => Own = v);

    private double Get(FormatAttr a, double fallback) => Own.Int(a) is { } v ? Units.TwipsToPoints(v) : fallback;

    private void Set(FormatAttr a, double points, double min = 0)
    {
        Units.CheckRange(points, min, 1584, a.ToString());
        Own = Own.With(a, (int)Math.Round(points * 20));
    }

    /// <summary>The width of the section's pages, in points.</summary>
    public double PageWidth { get => Get(FormatAttr.PageWidth, 612); set => Set(FormatAttr.PageWidth, value, 1); }

    /// <summary>The height of the section's pages, in points.</summary>
    public double PageHeight { get => Get(FormatAttr.PageHeight, 792); set => Set(FormatAttr.PageHeight, value, 1); }

    /// <summary>Whether the pages are portrait or landscape; changing it swaps width and height.</summary>
    public Orientation Orientation
    {
        get => Own.String(FormatAttr.PageOrientation) == "landscape" ? Orientation.Landscape : Orientation.Portrait;
        set
        {
            if (value is not (Orientation.Portrait or Orientation.Landscape)) throw new ArgumentOutOfRangeException(nameof(value));
            if (value == Orientation) return;
            // Turning the page swaps its sides, as word processors do.
            double w = PageWidth, h = PageHeight;
            Own = Own.With(FormatAttr.PageOrientation, value == Orientation.Landscape ? "landscape" : null);
            PageWidth = h;
            PageHeight = w;
        }
    }

    /// <summary>The space between the page's top edge and the text, in points.</summary>
    public double TopMargin { get => Get(FormatAttr.MarginTop, 72); set => Set(FormatAttr.MarginTop, value, -1584); }

    /// <summary>The space between the page's bottom edge and the text, in points.</summary>
    public double BottomMargin { get => Get(FormatAttr.MarginBottom, 72); set => Set(FormatAttr.MarginBottom, value, -1584); }

    /// <summary>The space between the page's left edge and the text, in points.</summary>
    public double LeftMargin { get => Get(FormatAttr.MarginLeft, 90); set => Set(FormatAttr.MarginLeft, value); }

    /// <summary>The space between the page's right edge and the text, in points.</summary>
    public double RightMargin { get => Get(FormatAttr.MarginRight, 90); set => Set(FormatAttr.MarginRight, value); }

    /// <summary>The space between the page's top edge and the header, in points.</summary>
    public double HeaderDistance { get => Get(FormatAttr.MarginHeader, 36); set => Set(FormatAttr.MarginHeader, value); }

    /// <summary>The space between the page's bottom edge and the footer, in points.</summary>
    public double FooterDistance { get => Get(FormatAttr.MarginFooter, 36); set => Set(FormatAttr.MarginFooter, value); }

    /// <summary>Extra margin for binding, in points.</summary>
    public double Gutter { get => Get(FormatAttr.MarginGutter, 0); set => Set(FormatAttr.MarginGutter, value); }

    /// <summary>Where the section begins: same page, next page, next column, even or odd page.</summary>
    public SectionStart SectionStart
    {
        get => Own.String(FormatAttr.SectionStart) switch
        {
            "continuous" => SectionStart.Continuous,
            "nextColumn" => SectionStart.NewColumn,
            "evenPage" => SectionStart.EvenPage,
            "oddPage" => SectionStart.OddPage,
            _ => SectionStart.NewPage,
        };
        set => Own = Own.With(FormatAttr.SectionStart, value switch
        {
            SectionStart.Continuous => "continuous",
            SectionStart.NewColumn => "nextColumn",
            SectionStart.EvenPage => "evenPage",
            SectionStart.OddPage => "oddPage",
            SectionStart.NewPage => "nextPage",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>How the text sits between the top and bottom margins.</summary>
    public PageVerticalAlignment VerticalAlignment
    {
        get => Own.String(FormatAttr.SectionVerticalAlignment) switch
        {
            "center" => PageVerticalAlignment.Center,
            "both" => PageVerticalAlignment.Justify,
            "bottom" => PageVerticalAlignment.Bottom,
            _ => PageVerticalAlignment.Top,
        };
        set => Own = Own.With(FormatAttr.SectionVerticalAlignment, value switch
        {
            PageVerticalAlignment.Top => null,
            PageVerticalAlignment.Center => "center",
            PageVerticalAlignment.Justify => "both",
            PageVerticalAlignment.Bottom => "bottom",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Whether the section is laid out right to left.</summary>
    public bool Bidi
    {
        get => Own.Bool(FormatAttr.SectionBidi) ?? false;
        set => Own = Own.With(FormatAttr.SectionBidi, value ? AttrSet.True : null);
    }

    /// <summary>Whether the section's first page has its own header and footer.</summary>
    public bool DifferentFirstPageHeaderFooter
    {
        get => Own.Bool(FormatAttr.TitlePage) ?? false;
        set => Own = Own.With(FormatAttr.TitlePage, value ? AttrSet.True : null);
    }

    /// <summary>Whether page numbers start again at this section.</summary>
    public bool RestartPageNumbering
    {
        get => Own.Has(FormatAttr.PageNumberStart);
        set
        {
            if (value) { if (!RestartPageNumbering) Own = Own.With(FormatAttr.PageNumberStart, 1); }
            else Own = Own.Without(FormatAttr.PageNumberStart);
        }
    }

    /// <summary>The number of the section's first page when numbering restarts.</summary>
    public int PageStartingNumber
    {
        get => Own.Int(FormatAttr.PageNumberStart) ?? 1;
        set
        {
            if (value < 0) throw new ArgumentOutOfRangeException(nameof(value));
            Own = Own.With(FormatAttr.PageNumberStart, value);
        }
    }

    /// <summary>How page numbers of the section are written (PAGE fields, page references).</summary>
    public NumberStyle PageNumberStyle
    {
        get => Lists.ListNumbering.StyleFromXml(Own.String(FormatAttr.PageNumberFormat));
        set
        {
            if (value is NumberStyle.Bullet or NumberStyle.None || !Enum.IsDefined(value))
                throw new ArgumentOutOfRangeException(nameof(value), $"Pages cannot be numbered in the style {value}.");
            Own = Own.With(FormatAttr.PageNumberFormat, value == NumberStyle.Arabic ? null : Lists.ListNumbering.StyleToXml(value));
        }
    }

    /// <summary>The columns the section's text flows in.</summary>
    public TextColumnCollection TextColumns => new(section, this);

    /// <summary>A border line around the pages of the section: top, left, bottom or right.</summary>
    public Border GetBorder(BorderType borderType) => new Border(Host, PageSide(borderType));

    internal static FormatAttr PageSide(BorderType borderType) => borderType switch
    {
        BorderType.Top => FormatAttr.PageBorderTop,
        BorderType.Left => FormatAttr.PageBorderLeft,
        BorderType.Bottom => FormatAttr.PageBorderBottom,
        BorderType.Right => FormatAttr.PageBorderRight,
        _ => throw new ArgumentOutOfRangeException(nameof(borderType), "A page border is its top, left, bottom or right."),
    };

    /// <summary>Whether border distances count from the text or from the page's edge.</summary>
    public PageBorderDistanceFrom BorderDistanceFrom
    {
        get => Own.String(FormatAttr.PageBorderOffsetFrom) == "page" ? PageBorderDistanceFrom.PageEdge : PageBorderDistanceFrom.Text;
        set => Own = Own.With(FormatAttr.PageBorderOffsetFrom, value switch
        {
            PageBorderDistanceFrom.Text => null,
            PageBorderDistanceFrom.PageEdge => "page",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Which pages of the section get the page border.</summary>
    public PageBorderAppliesTo BorderAppliesTo
    {
        get => Own.String(FormatAttr.PageBorderDisplay) switch
        {
            "firstPage" => PageBorderAppliesTo.FirstPage,
            "notFirstPage" => PageBorderAppliesTo.OtherPages,
            _ => PageBorderAppliesTo.AllPages,
        };
        set => Own = Own.With(FormatAttr.PageBorderDisplay, value switch
        {
            PageBorderAppliesTo.AllPages => null,
            PageBorderAppliesTo.FirstPage => "firstPage",
            PageBorderAppliesTo.OtherPages => "notFirstPage",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>The page border on a side; null when none is drawn there.</summary>
    internal BorderLine? PageBorder(BorderType side) => Own.Get(PageSide(side)) is BorderLine { Visible: true } b ? b : null;

    /// <summary>Whether the section has any page border.</summary>
    internal bool HasPageBorders => PageBorder(BorderType.Top) != null || PageBorder(BorderType.Left) != null ||
                                    PageBorder(BorderType.Bottom) != null || PageBorder(BorderType.Right) != null;

    /// <summary>How the section numbers and places its footnotes.</summary>
    public Notes.FootnoteOptions FootnoteOptions => new(() => new[] { section.Kept }, Notes.FootnoteType.Footnote);

    /// <summary>How the section numbers and places its endnotes.</summary>
    public Notes.EndnoteOptions EndnoteOptions => new(() => new[] { section.Kept }, Notes.FootnoteType.Endnote);

    internal void ApplyDefaults()
    {
        var set = Own;
        if (!set.Has(FormatAttr.PageWidth) && !set.Has(FormatAttr.PageHeight))
            set = set.With(FormatAttr.PageWidth, 12240).With(FormatAttr.PageHeight, 15840);
        if (!set.Has(FormatAttr.MarginTop) && !set.Has(FormatAttr.MarginLeft))
            foreach (var (a, v) in new[] { (FormatAttr.MarginTop, 1440), (FormatAttr.MarginRight, 1440), (FormatAttr.MarginBottom, 1440),
                         (FormatAttr.MarginLeft, 1440), (FormatAttr.MarginHeader, 720), (FormatAttr.MarginFooter, 720), (FormatAttr.MarginGutter, 0) })
                set = set.With(a, v);
        Own = set;
    }
}

/// <summary>What a page border's distance is measured from.</summary>
public enum PageBorderDistanceFrom
{
    /// <summary>From the text, outside it.</summary>
    Text = 0,
    /// <summary>From the edge of the page, inside it.</summary>
    PageEdge = 1,
}

/// <summary>Which pages of a section show the page border.</summary>
public enum PageBorderAppliesTo
{
    /// <summary>Every page.</summary>
    AllPages = 0,
    /// <summary>The first page only.</summary>
    FirstPage = 1,
    /// <summary>Every page but the first.</summary>
    OtherPages = 2,
}

/// <summary>How a section's text sits between the top and bottom margins.</summary>
public enum PageVerticalAlignment
{
    /// <summary>At the top margin.</summary>
    Top = 0,
    /// <summary>Centred between the margins.</summary>
    Center = 1,
    /// <summary>Spread so that the first line is at the top and the last at the bottom.</summary>
    Justify = 2,
    /// <summary>At the bottom margin.</summary>
    Bottom = 3,
}
