using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio;

/// <summary>Converts a document of a format the engine may not know; an application supplies it to
/// the code that converts.</summary>
public interface IDocumentConverterPlugin
{
    /// <summary>Reads the input with the load options and writes it, converted, with the save options.</summary>
    void Convert(Stream inputStream, LoadOptions loadOptions, Stream outputStream, SaveOptions saveOptions);
}

/// <summary>Merges documents of a format the engine may not know, two at a time; more are merged by
/// merging each into the result of the ones before.</summary>
public interface IDocumentMergerPlugin
{
    /// <summary>Reads both inputs with the load options and writes the first followed by the second to the output.</summary>
    void Merge(Stream outputStream, Stream inputStream, Stream appendedStream, LoadOptions loadOptions, SaveOptions saveOptions);
}

/// <summary>Processes a document (signs it, stamps it, ...) in a way the engine does not.</summary>
public interface IDocumentProcessorPlugin
{
    /// <summary>Reads the input with the load options, processes it and writes the result with the save options.</summary>
    void Process(Stream inputStream, LoadOptions loadOptions, Stream outputStream, SaveOptions saveOptions);
}

/// <summary>Reads a format the engine does not into a document.</summary>
public interface IDocumentReaderPlugin
{
    /// <summary>Fills the empty document from the stream.</summary>
    void Read(Stream inputStream, LoadOptions loadOptions, Document document);
}

/// <summary>A document reader plugin could not be loaded or failed while reading.</summary>
public class DocumentReaderPluginLoadException : Exception
{
    /// <summary>With the default message.</summary>
    public DocumentReaderPluginLoadException() : base("The document reader plugin could not load the document.") { }

    /// <summary>With a message.</summary>
    public DocumentReaderPluginLoadException(string message) : base(message) { }
}

/// <summary>Supplies hyphenation dictionaries on demand, by language. Line breaking does not hyphenate
/// yet, so nothing asks for one.</summary>
public interface IHyphenationCallback
{
    /// <summary>Asked when text of the language (an IETF tag such as "de-CH") needs a dictionary it lacks.</summary>
    void RequestDictionary(string language);
}

/// <summary>Chooses the entries an index shows. INDEX fields list every entry for now, so nothing asks it yet.</summary>
public interface IIndexFilter
{
    /// <summary>Whether the index entry field is listed.</summary>
    bool IsIncluded(Fields.FieldXE entry);
}

/// <summary>Chooses the tracked changes that <see cref="RevisionCollection.Accept(IRevisionCriteria)"/>
/// and <see cref="RevisionCollection.Reject(IRevisionCriteria)"/> decide.</summary>
public interface IRevisionCriteria
{
    /// <summary>Whether the change is decided.</summary>
    bool IsMatch(Revision revision);
}
