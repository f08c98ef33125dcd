namespace Quorix.Folio.Saving;

/// <summary>A range of 0-based page indexes, both ends included; <see cref="int.MaxValue"/> as the end means "to the last page".</summary>
public sealed class PageRange
{
    /// <summary>A range from page index from to page index to, both included and counted from 0.</summary>
    public PageRange(int from, int to)
    {
        if (from < 0) throw new ArgumentOutOfRangeException(nameof(from), "A page index cannot be negative.");
        if (to < from) throw new ArgumentOutOfRangeException(nameof(to), "A page range cannot end before it starts.");
        From = from;
        To = to;
    }

    /// <summary>The index of the range's first page, counted from 0.</summary>
    public int From { get; }

    /// <summary>The index of the range's last page, counted from 0; int.MaxValue for the document's last page.</summary>
    public int To { get; }
}

/// <summary>Which pages a fixed-page format writes, as 0-based indexes.</summary>
public sealed class PageSet
{
    private readonly PageRange[] ranges;
    private readonly int parity; // 0 all, 1 even (1-based) pages, 2 odd ones

    /// <summary>That one page.</summary>
    public PageSet(int page) : this(new PageRange(page, page)) { }

    /// <summary>The pages of that range.</summary>
    public PageSet(PageRange range) : this(new[] { range ?? throw new ArgumentNullException(nameof(range)) }) { }

    /// <summary>Those pages, each by its index.</summary>
    public PageSet(params int[] pages) : this(pages.Select(p => new PageRange(p, p)).ToArray()) { }

    /// <summary>The pages of all those ranges.</summary>
    public PageSet(params PageRange[] ranges)
    {
        ArgumentNullException.ThrowIfNull(ranges);
        this.ranges = (PageRange[])ranges.Clone();
    }

    private PageSet(int parity, bool _) : this(new PageRange(0, int.MaxValue)) { this.parity = parity; }

    /// <summary>Every page of the document.</summary>
    public static PageSet All => new(new PageRange(0, int.MaxValue));

    /// <summary>The even-numbered pages (the second, the fourth, ...).</summary>
    public static PageSet Even => new(1, true);

    /// <summary>The odd-numbered pages (the first, the third, ...).</summary>
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
    /// <summary>The pages to write; all of them by default.</summary>
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

/// <summary>The PDF standard a PDF is written to.</summary>
public enum PdfCompliance
{
    /// <summary>PDF 1.7.</summary>
    Pdf17 = 0,
    /// <summary>PDF 2.0.</summary>
    Pdf20 = 1,
    /// <summary>PDF/A-1a, archival with its structure tagged.</summary>
    PdfA1a = 2,
    /// <summary>PDF/A-1b, archival, its appearance preserved.</summary>
    PdfA1b = 3,
    /// <summary>PDF/A-2a, archival with its structure tagged.</summary>
    PdfA2a = 4,
    /// <summary>PDF/A-2u, archival with text as Unicode.</summary>
    PdfA2u = 5,
    /// <summary>PDF/A-2b, archival, its appearance preserved.</summary>
    PdfA2b = 6,
    /// <summary>PDF/A-4, archival on PDF 2.0.</summary>
    PdfA4 = 7,
    /// <summary>PDF/UA-1, accessible to assistive technology.</summary>
    PdfUa1 = 8,
}

/// <summary>How the page content streams of a PDF are compressed.</summary>
public enum PdfTextCompression
{
    /// <summary>Not compressed; refused by the PDF writer, which always compresses.</summary>
    None = 0,
    /// <summary>Compressed with Flate (zlib).</summary>
    Flate = 1,
}

/// <summary>Which fonts a PDF carries inside it.</summary>
public enum PdfFontEmbeddingMode
{
    /// <summary>Every font the pages use, subset to the characters used.</summary>
    EmbedAll = 0,
    /// <summary>Every font but the standard ones PDF readers provide; refused by the PDF writer.</summary>
    EmbedNonstandard = 1,
    /// <summary>No font, readers substituting their own; refused by the PDF writer.</summary>
    EmbedNone = 2,
}

/// <summary>How headings and bookmarks become the PDF's outline.</summary>
public sealed class OutlineOptions
{
    /// <summary>How many heading levels the PDF's outline lists; the PDF writer makes no outline and refuses a value above 0.</summary>
    public int HeadingsOutlineLevels { get; set; }

    /// <summary>How many levels of the PDF's outline show expanded when it opens.</summary>
    public int ExpandedOutlineLevels { get; set; }

    /// <summary>The outline level of bookmarks in the PDF's outline; the PDF writer makes no outline and refuses a value above 0.</summary>
    public int DefaultBookmarksOutlineLevel { get; set; }

    /// <summary>Whether levels skipped between headings get entries of their own in the PDF's outline.</summary>
    public bool CreateMissingOutlineLevels { get; set; }

    internal bool Requested => HeadingsOutlineLevels > 0 || DefaultBookmarksOutlineLevel > 0;
}

/// <summary>The passwords a PDF is encrypted with.</summary>
public sealed class PdfEncryptionDetails
{
    /// <summary>Encryption that asks userPassword to open the PDF and ownerPassword to change its permissions.</summary>
    public PdfEncryptionDetails(string userPassword, string ownerPassword)
    {
        UserPassword = userPassword ?? "";
        OwnerPassword = ownerPassword ?? "";
    }

    /// <summary>The password that opens the PDF.</summary>
    public string UserPassword { get; set; }

    /// <summary>The password that grants every permission over the PDF.</summary>
    public string OwnerPassword { get; set; }
}

/// <summary>Options of saving the laid-out pages as PDF.</summary>
public sealed class PdfSaveOptions : FixedPageSaveOptions
{
    /// <summary>Always Pdf.</summary>
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

    /// <summary>What the PDF's outline (bookmarks pane) lists; the PDF writer makes none.</summary>
    public OutlineOptions OutlineOptions { get; } = new OutlineOptions();

    /// <summary>The passwords the PDF is encrypted with; the PDF writer cannot encrypt and refuses any but null.</summary>
    public PdfEncryptionDetails? EncryptionDetails { get; set; }

    /// <summary>Tagged PDF: the logical structure of the document written beside its pages.</summary>
    public bool ExportDocumentStructure { get; set; }

    /// <summary>How the pages' content is compressed; Flate, the only one the PDF writer supports.</summary>
    public PdfTextCompression TextCompression { get; set; } = PdfTextCompression.Flate;

    /// <summary>Fonts are always embedded as subsets of the glyphs used; whole fonts are not written.</summary>
    public bool EmbedFullFonts { get; set; }

    /// <summary>Which fonts the PDF carries; EmbedAll, the only mode the PDF writer supports.</summary>
    public PdfFontEmbeddingMode FontEmbeddingMode { get; set; } = PdfFontEmbeddingMode.EmbedAll;

    /// <summary>Document title written to the PDF's information; none when empty.</summary>
    public string Title { get; set; } = "";
}

/// <summary>How the pages of a TIFF are compressed.</summary>
public enum TiffCompression
{
    /// <summary>Not compressed.</summary>
    None = 0,
    /// <summary>CCITT modified Huffman run lengths; pages are written black and white.</summary>
    Rle = 1,
    /// <summary>Lempel-Ziv-Welch, lossless, in colour.</summary>
    Lzw = 2,
    /// <summary>CCITT Group 3 fax; pages are written black and white.</summary>
    Ccitt3 = 3,
    /// <summary>CCITT Group 4 fax; pages are written black and white.</summary>
    Ccitt4 = 4,
}

/// <summary>The colours a page picture keeps.</summary>
public enum ImageColorMode
{
    /// <summary>The page's own colours.</summary>
    None = 0,
    /// <summary>Shades of grey.</summary>
    Grayscale = 1,
    /// <summary>Black and white only, split at half brightness.</summary>
    BlackAndWhite = 2,
}

/// <summary>Options of saving laid-out pages as pictures: one page as PNG, JPEG or BMP (further pages
/// through <see cref="PageSavingCallback"/>), or every page of the page set in one TIFF.</summary>
public sealed class ImageSaveOptions : FixedPageSaveOptions
{
    private SaveFormat format;

    /// <summary>Options for pictures of the given format: Png, Jpeg, Bmp or Tiff.</summary>
    public ImageSaveOptions(SaveFormat saveFormat) { SaveFormat = saveFormat; }

    /// <summary>Png, Jpeg or Bmp, a page per file; or Tiff, every page of the page set in one file.</summary>
    public override SaveFormat SaveFormat
    {
        get => format;
        set => format = value is SaveFormat.Png or SaveFormat.Jpeg or SaveFormat.Bmp or SaveFormat.Tiff ? value
            : throw new UnsupportedFileFormatException($"Saving pages as {value} images is not supported; use Png, Jpeg, Bmp or Tiff.");
    }

    /// <summary>How a TIFF's pages are compressed; Lzw unless set. The fax compressions write black and white pages.</summary>
    public TiffCompression TiffCompression { get; set; } = TiffCompression.Lzw;

    /// <summary>The colours the pictures keep; all of them unless set.</summary>
    public ImageColorMode ImageColorMode { get; set; }

    /// <summary>Where the pages after the first of the page set go, for the formats of a page per file:
    /// called once for each, before it is written. The first page goes to the save's own output.
    /// Without it those formats write the page set's first page only.</summary>
    public IPageSavingCallback? PageSavingCallback { get; set; }

    /// <summary>Dots per inch, both directions.</summary>
    public float Resolution
    {
        get => HorizontalResolution;
        set { HorizontalResolution = value; VerticalResolution = value; }
    }

    /// <summary>Dots per inch across the picture.</summary>
    public float HorizontalResolution { get => hres; set => hres = CheckDpi(value); }

    /// <summary>Dots per inch down the picture.</summary>
    public float VerticalResolution { get => vres; set => vres = CheckDpi(value); }

    private float hres = 96, vres = 96;

    /// <summary>The zoom applied to the page on top of the resolution; 1 for its true size.</summary>
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

/// <summary>Options of saving a laid-out page as SVG.</summary>
public sealed class SvgSaveOptions : FixedPageSaveOptions
{
    /// <summary>Always Svg.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Svg;
        set
        {
            if (value != SaveFormat.Svg) throw new ArgumentException("SvgSaveOptions saves SVG only.", nameof(value));
        }
    }
}
