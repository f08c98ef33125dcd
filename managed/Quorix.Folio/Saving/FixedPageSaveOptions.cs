namespace Quorix.Folio.Saving;

/// <summary>A range of 0-based page indexes, both ends included; <see cref="int.MaxValue"/> as the end means "to the last page".</summary>
public sealed class PageRange
{
    public PageRange(int from, int to)
    {
        if (from < 0) throw new ArgumentOutOfRangeException(nameof(from), "A page index cannot be negative.");
        if (to < from) throw new ArgumentOutOfRangeException(nameof(to), "A page range cannot end before it starts.");
        From = from;
        To = to;
    }

    public int From { get; }

    public int To { get; }
}

/// <summary>Which pages a fixed-page format writes, as 0-based indexes.</summary>
public sealed class PageSet
{
    private readonly PageRange[] ranges;
    private readonly int parity; // 0 all, 1 even (1-based) pages, 2 odd ones

    public PageSet(int page) : this(new PageRange(page, page)) { }

    public PageSet(PageRange range) : this(new[] { range ?? throw new ArgumentNullException(nameof(range)) }) { }

    public PageSet(params int[] pages) : this(pages.Select(p => new PageRange(p, p)).ToArray()) { }

    public PageSet(params PageRange[] ranges)
    {
        ArgumentNullException.ThrowIfNull(ranges);
        this.ranges = (PageRange[])ranges.Clone();
    }

    private PageSet(int parity, bool _) : this(new PageRange(0, int.MaxValue)) { this.parity = parity; }

    public static PageSet All => new(new PageRange(0, int.MaxValue));

    public static PageSet Even => new(1, true);

    public static PageSet Odd => new(2, true);

    /// <summary>The page indexes of a document of <paramref name="pageCount"/> pages, in order and once each.</summary>
    internal List<int> Resolve(int pageCount)
    {
        var result = new List<int>();
        var seen = new HashSet<int>();
        foreach (var r in ranges)
            for (int i = r.From; i <= Math.Min(r.To, pageCount - 1); i++)
                if ((parity == 0 || (i + 1) % 2 == (parity == 1 ? 0 : 1)) && seen.Add(i)) result.Add(i);
        return result;
    }
}

/// <summary>Options shared by the formats that write laid-out pages.</summary>
public abstract class FixedPageSaveOptions : SaveOptions
{
    public PageSet PageSet { get; set; } = PageSet.All;

    /// <summary>Quality of JPEG images written, 0 to 100.</summary>
    public int JpegQuality
    {
        get => jpegQuality;
        set => jpegQuality = value is >= 0 and <= 100 ? value : throw new ArgumentOutOfRangeException(nameof(value), "JPEG quality is 0 to 100.");
    }

    private int jpegQuality = 95;

    /// <summary>Lays the document out again before saving instead of reusing cached pages.</summary>
    public bool UpdatePageLayout { get; set; }
}

public enum PdfCompliance
{
    Pdf17 = 0,
    Pdf20 = 1,
    PdfA1a = 2,
    PdfA1b = 3,
    PdfA2a = 4,
    PdfA2u = 5,
    PdfA2b = 6,
    PdfA4 = 7,
    PdfUa1 = 8,
}

public enum PdfTextCompression
{
    None = 0,
    Flate = 1,
}

public enum PdfFontEmbeddingMode
{
    EmbedAll = 0,
    EmbedNonstandard = 1,
    EmbedNone = 2,
}

/// <summary>How headings and bookmarks become the PDF's outline.</summary>
public sealed class OutlineOptions
{
    public int HeadingsOutlineLevels { get; set; }

    public int ExpandedOutlineLevels { get; set; }

    public int DefaultBookmarksOutlineLevel { get; set; }

    public bool CreateMissingOutlineLevels { get; set; }

    internal bool Requested => HeadingsOutlineLevels > 0 || DefaultBookmarksOutlineLevel > 0;
}

public sealed class PdfEncryptionDetails
{
    public PdfEncryptionDetails(string userPassword, string ownerPassword)
    {
        UserPassword = userPassword ?? "";
        OwnerPassword = ownerPassword ?? "";
    }

    public string UserPassword { get; set; }

    public string OwnerPassword { get; set; }
}

public sealed class PdfSaveOptions : FixedPageSaveOptions
{
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Pdf;
        set
        {
            if (value != SaveFormat.Pdf) throw new ArgumentException("PdfSaveOptions saves PDF only.", nameof(value));
        }
    }

    /// <summary>Pdf17, or PdfA2b (archival, with fonts embedded and XMP metadata).</summary>
    public PdfCompliance Compliance { get; set; } = PdfCompliance.Pdf17;

    public OutlineOptions OutlineOptions { get; } = new OutlineOptions();

    public PdfEncryptionDetails? EncryptionDetails { get; set; }

    /// <summary>Tagged PDF: the logical structure of the document written beside its pages.</summary>
    public bool ExportDocumentStructure { get; set; }

    public PdfTextCompression TextCompression { get; set; } = PdfTextCompression.Flate;

    /// <summary>Fonts are always embedded as subsets of the glyphs used; whole fonts are not written.</summary>
    public bool EmbedFullFonts { get; set; }

    public PdfFontEmbeddingMode FontEmbeddingMode { get; set; } = PdfFontEmbeddingMode.EmbedAll;

    /// <summary>Document title written to the PDF's information; none when empty.</summary>
    public string Title { get; set; } = "";
}

public sealed class ImageSaveOptions : FixedPageSaveOptions
{
    private SaveFormat format;

    public ImageSaveOptions(SaveFormat saveFormat) { SaveFormat = saveFormat; }

    /// <summary>PNG or JPEG; one page per file.</summary>
    public override SaveFormat SaveFormat
    {
        get => format;
        set => format = value is SaveFormat.Png or SaveFormat.Jpeg ? value
            : throw new UnsupportedFileFormatException($"Saving pages as {value} images is not supported; use Png or Jpeg.");
    }

    /// <summary>Dots per inch, both directions.</summary>
    public float Resolution
    {
        get => HorizontalResolution;
        set { HorizontalResolution = value; VerticalResolution = value; }
    }

    public float HorizontalResolution { get => hres; set => hres = CheckDpi(value); }

    public float VerticalResolution { get => vres; set => vres = CheckDpi(value); }

    private float hres = 96, vres = 96;

    public float Scale
    {
        get => scale;
        set => scale = value is > 0 and <= 100 ? value : throw new ArgumentOutOfRangeException(nameof(value), "The scale must be above 0 and at most 100.");
    }

    private float scale = 1;

    /// <summary>The page's background; white unless set (a transparent PNG with 0).</summary>
    public uint PaperColor { get; set; } = 0xFFFFFFFF;

    private static float CheckDpi(float dpi) => dpi is >= 1 and <= 2400 ? dpi : throw new ArgumentOutOfRangeException(nameof(dpi), "The resolution must be 1 to 2400 dots per inch.");
}

public sealed class SvgSaveOptions : FixedPageSaveOptions
{
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Svg;
        set
        {
            if (value != SaveFormat.Svg) throw new ArgumentException("SvgSaveOptions saves SVG only.", nameof(value));
        }
    }
}
