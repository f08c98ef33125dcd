using Quorix.Folio.Saving;

namespace Quorix.Folio.Formats;

/// <summary>Writes a document in one file format; the only code that knows that format's syntax.</summary>
internal interface IDocumentWriter
{
    SaveFormat Format { get; }

    /// <summary>Writes <paramref name="document"/> to <paramref name="output"/>; <paramref name="path"/> is
    /// the target file's full name when saving to a file (for parts written beside it), else null.</summary>
    SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path);
}
