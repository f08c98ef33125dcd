using Quorix.Folio.Saving;

namespace Quorix.Folio.LowCode;

/// <summary>Puts a text or picture watermark on a whole file in one call.</summary>
public static class Watermarker
{
    public static void SetText(string inputFileName, string outputFileName, string watermarkText) =>
        SetText(inputFileName, outputFileName, watermarkText, null);

    public static void SetText(string inputFileName, string outputFileName, string watermarkText, TextWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, null, d => d.Watermark.SetText(watermarkText, options));

    public static void SetText(string inputFileName, string outputFileName, SaveFormat saveFormat, string watermarkText, TextWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, saveFormat, d => d.Watermark.SetText(watermarkText, options));

    public static void SetText(Stream inputStream, Stream outputStream, SaveFormat saveFormat, string watermarkText, TextWatermarkOptions? options) =>
        Run(inputStream, outputStream, saveFormat, d => d.Watermark.SetText(watermarkText, options));

    public static void SetImage(string inputFileName, string outputFileName, string watermarkImageFileName) =>
        SetImage(inputFileName, outputFileName, watermarkImageFileName, null);

    public static void SetImage(string inputFileName, string outputFileName, string watermarkImageFileName, ImageWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, null, d => d.Watermark.SetImage(watermarkImageFileName, options));

    public static void SetImage(string inputFileName, string outputFileName, byte[] imageBytes, ImageWatermarkOptions? options) =>
        Run(inputFileName, outputFileName, null, d => d.Watermark.SetImage(imageBytes, options));

    public static void SetImage(Stream inputStream, Stream outputStream, SaveFormat saveFormat, byte[] imageBytes, ImageWatermarkOptions? options) =>
        Run(inputStream, outputStream, saveFormat, d => d.Watermark.SetImage(imageBytes, options));

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
