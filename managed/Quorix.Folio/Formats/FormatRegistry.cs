using Quorix.Folio.Docx;
using Quorix.Folio.Text;

namespace Quorix.Folio.Formats;

/// <summary>The readers and writers the engine has, one per format. <see cref="Document"/> loads and
/// saves only through here, so a new format is one reader or writer class and one line below.</summary>
internal static class FormatRegistry
{
    // Each reader and writer is made when its format is first used: a process that only reads and
    // writes DOCX never runs the other formats' set-up (code pages, expressions, font tables).
    // The switches are plain code, precompiled with the rest; the enumerations' values are below 256.
    private static IDocumentReader? NewReader(LoadFormat format) => format switch
    {
        LoadFormat.Docx => new DocxDocumentReader(),
        LoadFormat.Markdown => new Markdown.MarkdownReader(),
        LoadFormat.Text => new Text.TextReader(),
        LoadFormat.Html => new Html.HtmlReader(),
        LoadFormat.Mhtml => new Html.MhtmlReader(),
        LoadFormat.FlatOpc => new FlatOpc.FlatOpcReader(),
        LoadFormat.Rtf => new Rtf.RtfReader(),
        LoadFormat.Odt => new Odt.OdtReader(),
        LoadFormat.WordML => new WordML.WordMLReader(),
        _ => null,
    };

    private static IDocumentWriter? NewWriter(SaveFormat format) => format switch
    {
        SaveFormat.Docx => new DocxDocumentWriter(),
        SaveFormat.Markdown => new MarkdownDocumentWriter(),
        SaveFormat.Text => new TextDocumentWriter(),
        SaveFormat.Html => new Html.HtmlWriter(),
        SaveFormat.Mhtml => new Html.MhtmlWriter(),
        SaveFormat.Epub => new Html.EpubWriter(),
        SaveFormat.FlatOpc => new FlatOpc.FlatOpcWriter(),
        SaveFormat.Xlsx => new Xlsx.XlsxWriter(),
        SaveFormat.Rtf => new Rtf.RtfWriter(),
        SaveFormat.Odt => new Odt.OdtWriter(),
        SaveFormat.WordML => new WordML.WordMLWriter(),
        SaveFormat.Pdf => new Rendering.PdfDocumentWriter(),
        SaveFormat.Png => new Rendering.ImageDocumentWriter(SaveFormat.Png),
        SaveFormat.Jpeg => new Rendering.ImageDocumentWriter(SaveFormat.Jpeg),
        SaveFormat.Bmp => new Rendering.ImageDocumentWriter(SaveFormat.Bmp),
        SaveFormat.Tiff => new Rendering.TiffDocumentWriter(),
        SaveFormat.Svg => new Rendering.SvgDocumentWriter(),
        _ => null,
    };

    private const int Slots = 256;
    private static readonly IDocumentReader?[] Readers = new IDocumentReader?[Slots];
    private static readonly IDocumentWriter?[] Writers = new IDocumentWriter?[Slots];

    // Readers and writers keep no state between calls: two threads racing on a first use may each
    // make one, and either is kept.
    private static IDocumentReader? Reader(LoadFormat format)
    {
        if ((uint)format >= Slots) return null;
        ref var slot = ref Readers[(int)format];
        if (slot == null && NewReader(format) is { } made) Interlocked.CompareExchange(ref slot, made, null);
        return slot;
    }

    private static IDocumentWriter? Writer(SaveFormat format)
    {
        if ((uint)format >= Slots) return null;
        ref var slot = ref Writers[(int)format];
        if (slot == null && NewWriter(format) is { } made) Interlocked.CompareExchange(ref slot, made, null);
        return slot;
    }

    public static bool CanLoad(LoadFormat format) => Reader(format) != null;

    public static bool CanSave(SaveFormat format) => Writer(format) != null;

    public static IDocumentReader ReaderFor(LoadFormat format) =>
        Reader(format) ?? throw new UnsupportedFileFormatException($"Loading {Name(format)} documents is not supported.");

    public static IDocumentWriter WriterFor(SaveFormat format) =>
        Writer(format) ?? throw new UnsupportedFileFormatException($"Saving to {Name(format)} is not supported.");

    private static string Name<T>(T format) where T : struct, Enum =>
        Enum.IsDefined(format) ? format.ToString()! : "format " + Convert.ToInt32(format);
}
