namespace Quorix.Folio.Saving;

/// <summary>How hard a package's parts are compressed: a smaller file against a faster save.</summary>
public enum CompressionLevel
{
    /// <summary>The usual balance of size and speed.</summary>
    Normal = 0,
    /// <summary>The smallest file, saved the slowest.</summary>
    Maximum = 1,
    /// <summary>Faster than Normal, a somewhat larger file.</summary>
    Fast = 2,
    /// <summary>The fastest save, the largest file.</summary>
    SuperFast = 3,
}

/// <summary>The edition of the Office Open XML standard a DOCX is written to.</summary>
public enum OoxmlCompliance
{
    /// <summary>The first edition, ECMA-376 of 2006, as older word processors expect.</summary>
    Ecma376_2006 = 0,
    /// <summary>ISO/IEC 29500 transitional: the form word processors write today.</summary>
    Iso29500_2008_Transitional = 1,
    /// <summary>ISO/IEC 29500 strict: the standard's own namespaces, without the legacy features.</summary>
    Iso29500_2008_Strict = 2,
}

/// <summary>Which headers and footers plain text and Markdown output include.</summary>
public enum TxtExportHeadersFootersMode
{
    /// <summary>None: the body text only.</summary>
    None = 0,
    /// <summary>Each section's primary header before its text and primary footer after it.</summary>
    PrimaryOnly = 1,
    /// <summary>Every header and footer, gathered after the body text.</summary>
    AllAtEnd = 2,
}

/// <summary>How the text of Markdown table columns is aligned.</summary>
public enum TableContentAlignment
{
    /// <summary>No alignment marks: each renderer aligns as it does by default.</summary>
    Auto = 0,
    /// <summary>Every column left-aligned.</summary>
    Left = 1,
    /// <summary>Every column centred.</summary>
    Center = 2,
    /// <summary>Every column right-aligned.</summary>
    Right = 3,
}

/// <summary>How numbered and bulleted lists are written in Markdown.</summary>
public enum MarkdownListExportMode
{
    /// <summary>As Markdown lists, which renderers number and indent themselves.</summary>
    MarkdownSyntax = 0,
    /// <summary>As paragraphs starting with the document's own label text.</summary>
    PlainText = 1,
}

/// <summary>How Markdown writes links: with the address in the text, or as a numbered reference
/// whose address is listed at the end; automatic takes the inline form.</summary>
public enum MarkdownLinkExportMode
{
    /// <summary>The writer chooses: links are written inline.</summary>
    Auto = 0,
    /// <summary>Each link as [text](address).</summary>
    Inline = 1,
    /// <summary>Each link as [text][n], the addresses listed as [n]: address at the end, once each.</summary>
    Reference = 2,
}

/// <summary>What to save and how; each format has its own subclass.</summary>
public abstract class SaveOptions
{
    /// <summary>The format the document is written in; each options class takes only the formats it serves.</summary>
    public abstract SaveFormat SaveFormat { get; set; }

    /// <summary>Told how the save progresses, and able to cancel it; none when null.</summary>
    public IDocumentSavingCallback? ProgressCallback { get; set; }

    /// <summary>The options class that serves that format, with its defaults.</summary>
    public static SaveOptions CreateSaveOptions(SaveFormat saveFormat) => saveFormat switch
    {
        SaveFormat.Docx => new OoxmlSaveOptions(),
        SaveFormat.FlatOpc => new OoxmlSaveOptions(SaveFormat.FlatOpc),
        SaveFormat.Text => new TxtSaveOptions(),
        SaveFormat.Markdown => new MarkdownSaveOptions(),
        SaveFormat.Html or SaveFormat.Mhtml or SaveFormat.Epub => new HtmlSaveOptions(saveFormat),
        SaveFormat.Rtf => new RtfSaveOptions(),
        SaveFormat.WordML => new WordML2003SaveOptions(),
        SaveFormat.Odt => new OdtSaveOptions(),
        SaveFormat.Xlsx => new XlsxSaveOptions(),
        SaveFormat.Pdf => new PdfSaveOptions(),
        SaveFormat.Svg => new SvgSaveOptions(),
        SaveFormat.Png or SaveFormat.Jpeg or SaveFormat.Bmp or SaveFormat.Tiff => new ImageSaveOptions(saveFormat),
        _ => throw new UnsupportedFileFormatException($"Saving to {saveFormat} is not supported."),
    };

    /// <summary>The options class for the format the file name's extension names, with its defaults.</summary>
    public static SaveOptions CreateSaveOptions(string fileName) => CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(fileName)));
}

/// <summary>Options for saving as DOCX, or as its single-file XML form.</summary>
public sealed class OoxmlSaveOptions : SaveOptions
{
    /// <summary>Options for DOCX, with their defaults.</summary>
    public OoxmlSaveOptions() { }

    /// <summary>Options for saveFormat: Docx or FlatOpc.</summary>
    public OoxmlSaveOptions(SaveFormat saveFormat) { SaveFormat = saveFormat; }

    private SaveFormat format = SaveFormat.Docx;

    /// <summary>DOCX, or the same package as one XML document (flat OPC).</summary>
    public override SaveFormat SaveFormat
    {
        get => format;
        set
        {
            if (value is not (SaveFormat.Docx or SaveFormat.FlatOpc)) throw new ArgumentException("OoxmlSaveOptions saves DOCX or flat OPC only.", nameof(value));
            format = value;
        }
    }

    /// <summary>How hard the package's parts are compressed: smaller file or faster save.</summary>
    public CompressionLevel CompressionLevel { get; set; } = CompressionLevel.Normal;

    /// <summary>The conformance class written: transitional by default, whatever the source was; strict
    /// on request. The 2006 edition's markup is not written.</summary>
    public OoxmlCompliance Compliance
    {
        get => compliance;
        set
        {
            if (!Enum.IsDefined(value)) throw new ArgumentOutOfRangeException(nameof(value));
            if (value == OoxmlCompliance.Ecma376_2006)
                throw new UnsupportedFileFormatException("Saving in the markup of the 2006 edition is not supported; use Iso29500_2008_Transitional or Iso29500_2008_Strict.");
            compliance = value;
        }
    }

    private OoxmlCompliance compliance = OoxmlCompliance.Iso29500_2008_Transitional;
}

/// <summary>What plain text and Markdown output share: paragraph breaks and headers and footers.</summary>
public abstract class TxtSaveOptionsBase : SaveOptions
{
    /// <summary>Written between paragraphs; CRLF by default.</summary>
    public string ParagraphBreak { get; set; } = ControlChar.CrLf;

    /// <summary>Which headers and footers the text includes.</summary>
    public TxtExportHeadersFootersMode ExportHeadersFootersMode { get; set; } = TxtExportHeadersFootersMode.PrimaryOnly;
}

/// <summary>Options for saving as plain text.</summary>
public sealed class TxtSaveOptions : TxtSaveOptionsBase
{
    /// <summary>Always Text; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Text;
        set
        {
            if (value != SaveFormat.Text) throw new ArgumentException("TxtSaveOptions saves plain text only.", nameof(value));
        }
    }

    /// <summary>List labels become plain "1." and "*" instead of the document's own.</summary>
    public bool SimplifyListLabels { get; set; }

    /// <summary>Spaces prefixed per list level.</summary>
    [NonNegative]
    public int ListIndentationCount
    {
        get => listIndentationCount;
        set => listIndentationCount = value >= 0 ? value : throw new ArgumentOutOfRangeException(nameof(value), value, "a count may not be negative");
    }

    private int listIndentationCount;
}

/// <summary>Options for saving as Markdown.</summary>
public sealed class MarkdownSaveOptions : TxtSaveOptionsBase
{
    /// <summary>Options for Markdown: line feeds between paragraphs, no headers or footers.</summary>
    public MarkdownSaveOptions()
    {
        ParagraphBreak = ControlChar.Lf;
        ExportHeadersFootersMode = TxtExportHeadersFootersMode.None;
    }

    /// <summary>Always Markdown; other formats are refused.</summary>
    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Markdown;
        set
        {
            if (value != SaveFormat.Markdown) throw new ArgumentException("MarkdownSaveOptions saves Markdown only.", nameof(value));
        }
    }

    /// <summary>How table columns are aligned.</summary>
    public TableContentAlignment TableContentAlignment { get; set; } = TableContentAlignment.Auto;

    /// <summary>Whether lists are written as Markdown lists or as text with their labels.</summary>
    public MarkdownListExportMode ListExportMode { get; set; } = MarkdownListExportMode.MarkdownSyntax;

    /// <summary>Whether links carry their address inline or refer to a list of addresses at the end.</summary>
    public MarkdownLinkExportMode LinkExportMode { get; set; } = MarkdownLinkExportMode.Auto;

    /// <summary>Where pictures are written; beside the output file when empty.</summary>
    public string ImagesFolder { get; set; } = "";

    /// <summary>Embed pictures as data URIs instead of writing files.</summary>
    public bool ExportImagesAsBase64 { get; set; }

    /// <summary>Chooses the name of each picture file, or takes the picture into a stream; none when null.</summary>
    public IImageSavingCallback? ImageSavingCallback { get; set; }

    /// <summary>Chooses where each picture file goes and how the text refers to it; none when null.</summary>
    public IResourceSavingCallback? ResourceSavingCallback { get; set; }
}

/// <summary>What a save produced.</summary>
public sealed class SaveOutputParameters
{
    internal SaveOutputParameters(string contentType) { ContentType = contentType; }

    /// <summary>The MIME type of what was written, such as "application/pdf".</summary>
    public string ContentType { get; }
}
