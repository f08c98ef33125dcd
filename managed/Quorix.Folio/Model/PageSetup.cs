using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Page size, margins and section start of one section; measures in points.</summary>
public sealed class PageSetup
{
    private readonly PropBag bag;

    internal PageSetup(PropBag sectPr) { bag = sectPr; }

    private double Get(string local, string attr, double fallback)
    {
        var v = Units.ParseInt(bag.Find(local)?.Get(attr));
        return v.HasValue ? Units.TwipsToPoints(v.Value) : fallback;
    }

    private void Set(string local, string attr, double points, double min = 0)
    {
        Units.CheckRange(points, min, 1584, attr);
        bag.GetOrAdd(local).Set(attr, Units.PointsToTwips(points));
    }

    /// <summary>The width of the section's pages, in points.</summary>
    public double PageWidth { get => Get("pgSz", "w", 612); set => Set("pgSz", "w", value, 1); }

    /// <summary>The height of the section's pages, in points.</summary>
    public double PageHeight { get => Get("pgSz", "h", 792); set => Set("pgSz", "h", value, 1); }

    /// <summary>Whether the pages are portrait or landscape; changing it swaps width and height.</summary>
    public Orientation Orientation
    {
        get => bag.Find("pgSz")?.Get("orient") == "landscape" ? Orientation.Landscape : Orientation.Portrait;
        set
        {
            if (value == Orientation) return;
            // Turning the page swaps its sides, as word processors do.
            double w = PageWidth, h = PageHeight;
            var e = bag.GetOrAdd("pgSz");
            e.Set("orient", value == Orientation.Landscape ? "landscape" : null);
            PageWidth = h;
            PageHeight = w;
        }
    }

    /// <summary>The space between the page's top edge and the text, in points.</summary>
    public double TopMargin { get => Get("pgMar", "top", 72); set => Set("pgMar", "top", value, -1584); }

    /// <summary>The space between the page's bottom edge and the text, in points.</summary>
    public double BottomMargin { get => Get("pgMar", "bottom", 72); set => Set("pgMar", "bottom", value, -1584); }

    /// <summary>The space between the page's left edge and the text, in points.</summary>
    public double LeftMargin { get => Get("pgMar", "left", 90); set => Set("pgMar", "left", value); }

    /// <summary>The space between the page's right edge and the text, in points.</summary>
    public double RightMargin { get => Get("pgMar", "right", 90); set => Set("pgMar", "right", value); }

    /// <summary>The space between the page's top edge and the header, in points.</summary>
    public double HeaderDistance { get => Get("pgMar", "header", 36); set => Set("pgMar", "header", value); }

    /// <summary>The space between the page's bottom edge and the footer, in points.</summary>
    public double FooterDistance { get => Get("pgMar", "footer", 36); set => Set("pgMar", "footer", value); }

    /// <summary>Extra margin for binding, in points.</summary>
    public double Gutter { get => Get("pgMar", "gutter", 0); set => Set("pgMar", "gutter", value); }

    /// <summary>Where the section begins: same page, next page, next column, even or odd page.</summary>
    public SectionStart SectionStart
    {
        get => bag.Val("type") switch
        {
            "continuous" => SectionStart.Continuous,
            "nextColumn" => SectionStart.NewColumn,
            "evenPage" => SectionStart.EvenPage,
            "oddPage" => SectionStart.OddPage,
            _ => SectionStart.NewPage,
        };
        set => bag.SetVal("type", value switch
        {
            SectionStart.Continuous => "continuous",
            SectionStart.NewColumn => "nextColumn",
            SectionStart.EvenPage => "evenPage",
            SectionStart.OddPage => "oddPage",
            SectionStart.NewPage => "nextPage",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Whether the section's first page has its own header and footer.</summary>
    public bool DifferentFirstPageHeaderFooter
    {
        get => bag.Toggle("titlePg") ?? false;
        set { if (value) bag.SetToggle("titlePg", true); else bag.Remove("titlePg"); }
    }

    /// <summary>Whether page numbers start again at this section.</summary>
    public bool RestartPageNumbering
    {
        get => bag.Find("pgNumType")?.Get("start") != null;
        set
        {
            if (value) { if (!RestartPageNumbering) bag.GetOrAdd("pgNumType").Set("start", "1"); }
            else bag.Find("pgNumType")?.Set("start", null);
        }
    }

    /// <summary>The number of the section's first page when numbering restarts.</summary>
    public int PageStartingNumber
    {
        get => Units.ParseInt(bag.Find("pgNumType")?.Get("start")) ?? 1;
        set
        {
            if (value < 0) throw new ArgumentOutOfRangeException(nameof(value));
            bag.GetOrAdd("pgNumType").Set("start", Units.Str(value));
        }
    }

    /// <summary>How page numbers of the section are written (PAGE fields, page references).</summary>
    public NumberStyle PageNumberStyle
    {
        get => Lists.ListNumbering.StyleFromXml(bag.Find("pgNumType")?.Get("fmt"));
        set
        {
            if (value is NumberStyle.Bullet or NumberStyle.None || !Enum.IsDefined(value))
                throw new ArgumentOutOfRangeException(nameof(value), $"Pages cannot be numbered in the style {value}.");
            bag.GetOrAdd("pgNumType").Set("fmt", value == NumberStyle.Arabic ? null : Lists.ListNumbering.StyleToXml(value));
        }
    }

    /// <summary>The columns the section's text flows in.</summary>
    public TextColumnCollection TextColumns => new(bag, this);

    /// <summary>A border line around the pages of the section: top, left, bottom or right.</summary>
    public Border GetBorder(BorderType borderType)
    {
        if (borderType is BorderType.Horizontal or BorderType.Vertical)
            throw new ArgumentOutOfRangeException(nameof(borderType), "A page border is its top, left, bottom or right.");
        var pg = bag.GetOrAdd("pgBorders");
        pg.Children ??= new List<PropElement>();
        return new Border(new PropBag(PropOrder.Borders, pg.Children), ParagraphFormat.BorderTypeXml(borderType));
    }

    /// <summary>Whether border distances count from the text or from the page's edge.</summary>
    public PageBorderDistanceFrom BorderDistanceFrom
    {
        get => bag.Find("pgBorders")?.Get("offsetFrom") == "page" ? PageBorderDistanceFrom.PageEdge : PageBorderDistanceFrom.Text;
        set => bag.GetOrAdd("pgBorders").Set("offsetFrom", value switch
        {
            PageBorderDistanceFrom.Text => null,
            PageBorderDistanceFrom.PageEdge => "page",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Which pages of the section get the page border.</summary>
    public PageBorderAppliesTo BorderAppliesTo
    {
        get => bag.Find("pgBorders")?.Get("display") switch
        {
            "firstPage" => PageBorderAppliesTo.FirstPage,
            "notFirstPage" => PageBorderAppliesTo.OtherPages,
            _ => PageBorderAppliesTo.AllPages,
        };
        set => bag.GetOrAdd("pgBorders").Set("display", value switch
        {
            PageBorderAppliesTo.AllPages => null,
            PageBorderAppliesTo.FirstPage => "firstPage",
            PageBorderAppliesTo.OtherPages => "notFirstPage",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    internal PropElement? PageBorders => bag.Find("pgBorders");

    /// <summary>How the section numbers and places its footnotes.</summary>
    public Notes.FootnoteOptions FootnoteOptions => new(() => new[] { bag }, Notes.FootnoteType.Footnote);

    /// <summary>How the section numbers and places its endnotes.</summary>
    public Notes.EndnoteOptions EndnoteOptions => new(() => new[] { bag }, Notes.FootnoteType.Endnote);

    internal void ApplyDefaults()
    {
        if (!bag.Has("pgSz")) bag.GetOrAdd("pgSz").Set("w", "12240").Set("h", "15840");
        if (!bag.Has("pgMar"))
            bag.GetOrAdd("pgMar").Set("top", "1440").Set("right", "1440").Set("bottom", "1440").Set("left", "1440")
                .Set("header", "720").Set("footer", "720").Set("gutter", "0");
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
