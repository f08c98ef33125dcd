using Quorix.Folio.Formats;
using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Docx;

internal sealed class DocxDocumentReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.Docx;

    public void Read(Stream input, Document document, LoadOptions options) => DocxReader.Load(document, input, options);
}

internal sealed class DocxDocumentWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Docx;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        DocxWriter.Save(document, output, (OoxmlSaveOptions)options);
        return new SaveOutputParameters("application/vnd.openxmlformats-officedocument.wordprocessingml.document");
    }
}
