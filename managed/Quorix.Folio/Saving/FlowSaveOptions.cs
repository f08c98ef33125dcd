namespace Quorix.Folio.Saving;

/// <summary>Where the formatting of HTML output is written.</summary>
public enum CssStyleSheetType
{
    /// <summary>On each element, in its style attribute.</summary>
    Inline = 0,
    /// <summary>In a style element of the page, as classes.</summary>
    Embedded = 1,
    /// <summary>In a style sheet file beside the page, as classes.</summary>
    External = 2,
}

/// <summary>Which headers and footers an HTML page shows.</summary>
public enum ExportHeadersFootersMode
{
    /// <summary>None: the page has the body text only.</summary>
    None = 0,
    /// <summary>Each section's primary header before its text and footer after it.</summary>
    PerSection = 1,
    /// <summary>The first section's header at the top and the last section's footer at the end.</summary>
    FirstSectionHeaderLastSectionFooter = 2,
}

/// <summary>How the numbers and bullets of lists are written in HTML.</summary>
public enum ExportListLabels
{
    /// <summary>As list elements, which show the same labels for ordinary lists.</summary>
    Auto = 0,
    /// <summary>As paragraphs that start with the label's text, which keeps any label exactly.</summary>
    AsInlineText = 1,
    /// <summary>Always as list elements, even where the browser's labels differ from the document's.</summary>
    ByHtmlTags = 2,
}

/// <summary>The kind of HTML written.</summary>
public enum HtmlVersion
{
    /// <summary>XHTML 1.0: well-formed XML that XML tools read.</summary>
    Xhtml = 0,
    /// <summary>HTML5, as browsers read it today.</summary>
    Html5 = 1,
}

/// <summary>Where HTML output is cut into separate pages.</summary>
[Flags]
public enum DocumentSplitCriteria
{
    /// <summary>Not split: one page.</summary>
    None = 0,
    /// <summary>A new page at each section break.</summary>
    SectionBreak = 4,
    /// <summary>A new page at each heading paragraph.</summary>
    HeadingParagraph = 8,
}

/// <summary>HTML, MHTML (a page with its pictures in one file) and EPUB.</summary>
public sealed class HtmlSaveOptions : SaveOptions
{
    private SaveFormat format = SaveFormat.Html;

    /// <summary>Options for an HTML page, with their defaults.</summary>
    public HtmlSaveOptions() { }

    /// <summary>Options for HTML, MHTML or EPUB, as saveFormat says, with their defaults.</summary>
    public HtmlSaveOptions(SaveFormat saveFormat) { SaveFormat = saveFormat; }

    /// <summary>HTML, MHTML or EPUB; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => format;
        set
        {
            if (value is not (SaveFormat.Html or SaveFormat.Mhtml or SaveFormat.Epub))
                throw new ArgumentException("HtmlSaveOptions saves HTML, MHTML or EPUB only.", nameof(value));
            format = value;
        }
    }

    /// <summary>Pictures as data URIs in the page instead of files beside it.</summary>
    public bool ExportImagesAsBase64 { get; set; }

    /// <summary>Where picture files are written; beside the output file when empty.</summary>
    public string ImagesFolder { get; set; } = "";

    /// <summary>How the page refers to the pictures folder, when it is reached under another name.</summary>
    public string ImagesFolderAlias { get; set; } = "";

    /// <summary>Chooses the name of each picture file, or takes the picture into a stream; none when null.</summary>
    public IImageSavingCallback? ImageSavingCallback { get; set; }

    /// <summary>Chooses where each picture file goes and how the page refers to it; none when null.</summary>
    public IResourceSavingCallback? ResourceSavingCallback { get; set; }

    /// <summary>Takes the external style sheet, or says it need not be written; none when null.</summary>
    public ICssSavingCallback? CssSavingCallback { get; set; }

    /// <summary>Chooses where each further part of a split page goes; none when null.</summary>
    public IDocumentPartSavingCallback? DocumentPartSavingCallback { get; set; }

    /// <summary>Where the formatting goes: on each element, in the page's style element, or in a style sheet file.</summary>
    public CssStyleSheetType CssStyleSheetType { get; set; } = CssStyleSheetType.Inline;

    /// <summary>The external style sheet's file; the output's name with ".css" when empty.</summary>
    public string CssStyleSheetFileName { get; set; } = "";

    /// <summary>Which headers and footers the page shows.</summary>
    public ExportHeadersFootersMode ExportHeadersFootersMode { get; set; } = ExportHeadersFootersMode.PerSection;

    /// <summary>How list numbers and bullets are written.</summary>
    public ExportListLabels ExportListLabels { get; set; } = ExportListLabels.Auto;

    /// <summary>Whether XHTML or HTML5 is written.</summary>
    public HtmlVersion HtmlVersion { get; set; } = HtmlVersion.Html5;

    /// <summary>Line breaks and indents between elements, for people reading the markup.</summary>
    public bool PrettyFormat { get; set; }

    /// <summary>Where the output is cut into separate pages, if anywhere.</summary>
    public DocumentSplitCriteria DocumentSplitCriteria { get; set; } = DocumentSplitCriteria.None;

    /// <summary>Headings up to this level start a new part when splitting by headings.</summary>
    public int DocumentSplitHeadingLevel { get; set; } = 2;

    /// <summary>Text encoding of the page; UTF-8 when unset.</summary>
    public System.Text.Encoding? Encoding { get; set; }
}

/// <summary>Options for saving as Rich Text Format.</summary>
public sealed class RtfSaveOptions : SaveOptions
{
    /// <summary>Always Rtf; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Rtf;
        set
        {
            if (value != SaveFormat.Rtf) throw new ArgumentException("RtfSaveOptions saves RTF only.", nameof(value));
        }
    }

    /// <summary>Leaves out what only old readers need: the label text written beside each list item.</summary>
    public bool ExportCompactSize { get; set; }

    /// <summary>A line break after each paragraph, for people reading the markup.</summary>
    public bool PrettyFormat { get; set; }
}

/// <summary>WordprocessingML 2003: the whole document, pictures included, as one XML file.</summary>
public sealed class WordML2003SaveOptions : SaveOptions
{
    /// <summary>Always WordML; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.WordML;
        set
        {
            if (value != SaveFormat.WordML) throw new ArgumentException("WordML2003SaveOptions saves WordprocessingML 2003 only.", nameof(value));
        }
    }

    /// <summary>Indented markup, one element a line, for people reading the file.</summary>
    public bool PrettyFormat { get; set; }
}

/// <summary>The unit lengths are written in, as office suites show them.</summary>
public enum OdtSaveMeasureUnit
{
    /// <summary>Lengths in centimetres.</summary>
    Centimeters = 0,
    /// <summary>Lengths in inches.</summary>
    Inches = 1,
}

/// <summary>Options for saving as OpenDocument text.</summary>
public sealed class OdtSaveOptions : SaveOptions
{
    /// <summary>Options for OpenDocument text, with their defaults.</summary>
    public OdtSaveOptions() { }

    /// <summary>Options for saveFormat, which must be Odt.</summary>
    public OdtSaveOptions(SaveFormat saveFormat) { SaveFormat = saveFormat; }

    /// <summary>Always Odt; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Odt;
        set
        {
            if (value != SaveFormat.Odt) throw new ArgumentException("OdtSaveOptions saves ODT only.", nameof(value));
        }
    }

    /// <summary>The unit lengths are written in: centimetres or inches.</summary>
    public OdtSaveMeasureUnit MeasureUnit { get; set; } = OdtSaveMeasureUnit.Centimeters;
}

/// <summary>Whether a spreadsheet holds the document in one worksheet or one per section.</summary>
public enum XlsxSectionMode
{
    /// <summary>The whole document on one worksheet.</summary>
    SingleWorksheet = 0,
    /// <summary>Each section on a worksheet of its own.</summary>
    MultipleWorksheets = 1,
}

/// <summary>The document's paragraphs and tables as a spreadsheet.</summary>
public sealed class XlsxSaveOptions : SaveOptions
{
    /// <summary>Always Xlsx; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Xlsx;
        set
        {
            if (value != SaveFormat.Xlsx) throw new ArgumentException("XlsxSaveOptions saves XLSX only.", nameof(value));
        }
    }

    /// <summary>Whether sections share one worksheet or get one each.</summary>
    public XlsxSectionMode SectionMode { get; set; } = XlsxSectionMode.SingleWorksheet;

    /// <summary>How hard the spreadsheet's package is compressed: smaller file or faster save.</summary>
    public CompressionLevel CompressionLevel { get; set; } = CompressionLevel.Normal;
}
