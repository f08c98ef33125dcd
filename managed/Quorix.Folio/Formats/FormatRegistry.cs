using Quorix.Folio.Docx;
using Quorix.Folio.Text;

namespace Quorix.Folio.Formats;

/// <summary>The readers and writers the engine has, one per format. <see cref="Document"/> loads and
/// saves only through here, so a new format is one reader or writer class and one line below.</summary>
internal static class FormatRegistry
{
    private static readonly Dictionary<LoadFormat, IDocumentReader> Readers = new();
    private static readonly Dictionary<SaveFormat, IDocumentWriter> Writers = new();

    static FormatRegistry()
    {
        Add(new DocxDocumentReader());
        Add(new DocxDocumentWriter());
        Add(new MarkdownDocumentWriter());
        Add(new TextDocumentWriter());
        Add(new Markdown.MarkdownReader());
        Add(new Text.TextReader());
        Add(new Html.HtmlReader());
        Add(new Html.HtmlWriter());
        Add(new Html.MhtmlWriter());
        Add(new Html.EpubWriter());
        Add(new Html.MhtmlReader());
        Add(new FlatOpc.FlatOpcWriter());
        Add(new FlatOpc.FlatOpcReader());
        Add(new Xlsx.XlsxWriter());
        Add(new Rtf.RtfWriter());
        Add(new Rtf.RtfReader());
        Add(new Odt.OdtWriter());
        Add(new Odt.OdtReader());
        Add(new WordML.WordMLWriter());
        Add(new WordML.WordMLReader());
        Add(new Rendering.PdfDocumentWriter());
        Add(new Rendering.ImageDocumentWriter(SaveFormat.Png));
        Add(new Rendering.ImageDocumentWriter(SaveFormat.Jpeg));
        Add(new Rendering.SvgDocumentWriter());
    }

    private static void Add(IDocumentReader reader) => Readers.Add(reader.Format, reader);

    private static void Add(IDocumentWriter writer) => Writers.Add(writer.Format, writer);

    public static bool CanLoad(LoadFormat format) => Readers.ContainsKey(format);

    public static bool CanSave(SaveFormat format) => Writers.ContainsKey(format);

    public static IDocumentReader ReaderFor(LoadFormat format) =>
        Readers.TryGetValue(format, out var r) ? r
        : throw new UnsupportedFileFormatException($"Loading {Name(format)} documents is not supported.");

    public static IDocumentWriter WriterFor(SaveFormat format) =>
        Writers.TryGetValue(format, out var w) ? w
        : throw new UnsupportedFileFormatException($"Saving to {Name(format)} is not supported.");

    private static string Name<T>(T format) where T : struct, Enum =>
        Enum.IsDefined(format) ? format.ToString()! : "format " + Convert.ToInt32(format);
}
