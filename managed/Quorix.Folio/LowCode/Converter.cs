using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio.LowCode;

/// <summary>One call from a file or stream in one format to another: load, then save.</summary>
public static class Converter
{
    /// <summary>The output format is the one the output file's extension names.</summary>
    [LongRunning]
    public static void Convert(string inputFile, string outputFile) =>
        Convert(inputFile, outputFile, SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFile))));

    /// <summary>Converts one file into another in saveFormat.</summary>
    [LongRunning]
    public static void Convert(string inputFile, string outputFile, SaveFormat saveFormat) =>
        Convert(inputFile, outputFile, SaveOptions.CreateSaveOptions(saveFormat));

    /// <summary>Converts one file into another with the given save options.</summary>
    [LongRunning]
    public static void Convert(string inputFile, string outputFile, SaveOptions saveOptions) =>
        Convert(inputFile, null, outputFile, saveOptions);

    /// <summary>Converts one file into another, read and written with the given options.</summary>
    [LongRunning]
    public static void Convert(string inputFile, LoadOptions? loadOptions, string outputFile, SaveOptions saveOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(inputFile);
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        ArgumentNullException.ThrowIfNull(saveOptions);
        new Document(inputFile, loadOptions).Save(outputFile, saveOptions);
    }

    /// <summary>Converts the document read from input into saveFormat written to output.</summary>
    [LongRunning]
    public static void Convert(Stream input, Stream output, SaveFormat saveFormat) =>
        Convert(input, null, output, SaveOptions.CreateSaveOptions(saveFormat));

    /// <summary>Converts the document read from input into output, read and written with the given options.</summary>
    [LongRunning]
    public static void Convert(Stream input, LoadOptions? loadOptions, Stream output, SaveOptions saveOptions)
    {
        ArgumentNullException.ThrowIfNull(input);
        ArgumentNullException.ThrowIfNull(output);
        ArgumentNullException.ThrowIfNull(saveOptions);
        new Document(input, loadOptions).Save(output, saveOptions);
    }

    /// <summary>A conversion to set up with inputs and outputs, then execute.</summary>
    public static Processor Create(ConverterContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return Processor.EditOne("Conversion", _ => { });
    }
}
