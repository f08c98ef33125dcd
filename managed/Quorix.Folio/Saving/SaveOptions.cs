namespace Quorix.Folio.Saving;

public enum CompressionLevel
{
    Normal = 0,
    Maximum = 1,
    Fast = 2,
    SuperFast = 3,
}

public enum OoxmlCompliance
{
    Ecma376_2006 = 0,
    Iso29500_2008_Transitional = 1,
    Iso29500_2008_Strict = 2,
}

public enum TxtExportHeadersFootersMode
{
    None = 0,
    PrimaryOnly = 1,
    AllAtEnd = 2,
}

public enum TableContentAlignment
{
    Auto = 0,
    Left = 1,
    Center = 2,
    Right = 3,
}

public enum MarkdownListExportMode
{
    MarkdownSyntax = 0,
    PlainText = 1,
}

/// <summary>What to save and how; each format has its own subclass.</summary>
public abstract class SaveOptions
{
    public abstract SaveFormat SaveFormat { get; set; }

    /// <summary>Told how the save progresses, and able to cancel it; none when null.</summary>
    public IDocumentSavingCallback? ProgressCallback { get; set; }

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
        SaveFormat.Png or SaveFormat.Jpeg => new ImageSaveOptions(saveFormat),
        _ => throw new UnsupportedFileFormatException($"Saving to {saveFormat} is not supported."),
    };

    public static SaveOptions CreateSaveOptions(string fileName) => CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(fileName)));
}

public sealed class OoxmlSaveOptions : SaveOptions
{
    public OoxmlSaveOptions() { }

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

public abstract class TxtSaveOptionsBase : SaveOptions
{
    /// <summary>Written between paragraphs; CRLF by default.</summary>
    public string ParagraphBreak { get; set; } = ControlChar.CrLf;

    public TxtExportHeadersFootersMode ExportHeadersFootersMode { get; set; } = TxtExportHeadersFootersMode.PrimaryOnly;
}

public sealed class TxtSaveOptions : TxtSaveOptionsBase
{
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

public sealed class MarkdownSaveOptions : TxtSaveOptionsBase
{
    public MarkdownSaveOptions()
    {
        ParagraphBreak = ControlChar.Lf;
        ExportHeadersFootersMode = TxtExportHeadersFootersMode.None;
    }

    public override SaveFormat SaveFormat
    {
        get => SaveFormat.Markdown;
        set
        {
            if (value != SaveFormat.Markdown) throw new ArgumentException("MarkdownSaveOptions saves Markdown only.", nameof(value));
        }
    }

    public TableContentAlignment TableContentAlignment { get; set; } = TableContentAlignment.Auto;

    public MarkdownListExportMode ListExportMode { get; set; } = MarkdownListExportMode.MarkdownSyntax;

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

    public string ContentType { get; }
}
