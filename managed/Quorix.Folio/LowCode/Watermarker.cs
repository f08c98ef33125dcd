using Quorix.Folio.Saving;

namespace Quorix.Folio.LowCode;

/// <summary>Puts a text or picture watermark on a whole file in one call.</summary>
public static class Watermarker
{
    /// <summary>Puts that text behind the pages of the input file and saves the result.</summary>
    public static void SetText(string inputFileName, string outputFileName, string watermarkText) =>
        SetText(inputFileName, outputFileName, watermarkText, null);

    /// <summary>Puts that text, drawn as options say, behind the pages of the input file and saves the result.</summary>
    public static void SetText(string inputFileName, string outputFileName, string watermarkText, TextWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, null, d => d.Watermark.SetText(watermarkText, options));

    /// <summary>Puts that text behind the pages of the input file and saves the result in saveFormat.</summary>
    public static void SetText(string inputFileName, string outputFileName, SaveFormat saveFormat, string watermarkText, TextWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, saveFormat, d => d.Watermark.SetText(watermarkText, options));

    /// <summary>Puts that text behind the pages of the document read from inputStream and writes the result.</summary>
    public static void SetText(Stream inputStream, Stream outputStream, SaveFormat saveFormat, string watermarkText, TextWatermarkOptions? options) =>
        Run(inputStream, outputStream, saveFormat, d => d.Watermark.SetText(watermarkText, options));

    /// <summary>Puts the picture of that file behind the pages of the input file and saves the result.</summary>
    public static void SetImage(string inputFileName, string outputFileName, string watermarkImageFileName) =>
        SetImage(inputFileName, outputFileName, watermarkImageFileName, null);

    /// <summary>Puts the picture of that file, sized as options say, behind the pages of the input file and saves the result.</summary>
    public static void SetImage(string inputFileName, string outputFileName, string watermarkImageFileName, ImageWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, null, d => d.Watermark.SetImage(watermarkImageFileName, options));

    /// <summary>Puts the picture in those bytes behind the pages of the input file and saves the result.</summary>
    public static void SetImage(string inputFileName, string outputFileName, byte[] imageBytes, ImageWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, null, d => d.Watermark.SetImage(imageBytes, options));

    /// <summary>Puts the picture in those bytes behind the pages of the document read from inputStream and writes the result.</summary>
    public static void SetImage(Stream inputStream, Stream outputStream, SaveFormat saveFormat, byte[] imageBytes, ImageWatermarkOptions? options) =>
        Run(inputStream, outputStream, saveFormat, d => d.Watermark.SetImage(imageBytes, options));

    /// <summary>A watermarking to set up with inputs and outputs, then execute.</summary>
    public static Processor Create(WatermarkerContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return Processor.EditOne("Watermarking", d =>
        {
            if (context.TextWatermark != null && context.ImageWatermark != null)
                throw new InvalidOperationException("A watermark is text or an image: the context sets both.");
            if (context.TextWatermark != null) d.Watermark.SetText(context.TextWatermark, context.TextWatermarkOptions);
            else if (context.ImageWatermark != null) d.Watermark.SetImage(context.ImageWatermark, context.ImageWatermarkOptions);
            else throw new InvalidOperationException("The context sets no watermark: give its text or image.");
        });
    }

    internal static void Run(string inputFileName, string outputFileName, SaveFormat? saveFormat, Action<Document> edit)
    {
        ArgumentException.ThrowIfNullOrEmpty(inputFileName);
        ArgumentException.ThrowIfNullOrEmpty(outputFileName);
        var doc = new Document(inputFileName);
        edit(doc);
        if (saveFormat is { } f) doc.Save(outputFileName, f);
        else doc.Save(outputFileName);
    }

    internal static void Run(Stream input, Stream output, SaveFormat saveFormat, Action<Document> edit)
    {
        ArgumentNullException.ThrowIfNull(input);
        ArgumentNullException.ThrowIfNull(output);
        var doc = new Document(input);
        edit(doc);
        doc.Save(output, saveFormat);
    }
}
