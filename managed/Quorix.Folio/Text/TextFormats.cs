using Quorix.Folio.Formats;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Text;

internal sealed class MarkdownDocumentWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Markdown;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        MarkdownWriter.Save(document, output, (MarkdownSaveOptions)options, path);
        return new SaveOutputParameters("text/markdown");
    }
}

internal sealed class TextDocumentWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Text;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        PlainTextWriter.Save(document, output, (TxtSaveOptions)options);
        return new SaveOutputParameters("text/plain");
    }
}
