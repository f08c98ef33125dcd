using Quorix.Folio.Loading;

namespace Quorix.Folio.Formats;

/// <summary>Fills a document from one file format; the only code that knows that format's syntax.</summary>
internal interface IDocumentReader
{
    LoadFormat Format { get; }

    /// <summary>Builds the model of <paramref name="document"/>, which has no children yet, from
    /// <paramref name="input"/>; damage is reported as <see cref="FileCorruptedException"/>.</summary>
    void Read(Stream input, Document document, LoadOptions options);
}
