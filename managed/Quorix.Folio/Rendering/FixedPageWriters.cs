using Quorix.Folio.Formats;
using Quorix.Folio.Layout;
using Quorix.Folio.Saving;
using SkiaSharp;

namespace Quorix.Folio.Rendering;

/// <summary>Common steps of the writers of laid-out pages: choosing the pages to write.</summary>
internal static class FixedPages
{
    public static List<LayoutPage> Select(Document document, FixedPageSaveOptions options)
    {
        var (pages, indexes) = SelectIndexes(document, options);
        return indexes.Select(i => pages[i]).ToList();
    }

    /// <summary>The document's pages, laid out once for the whole save, and the indexes of those the
    /// options choose, in order; never empty.</summary>
    public static (List<LayoutPage> Pages, List<int> Indexes) SelectIndexes(Document document, FixedPageSaveOptions options)
    {
        if (options.UpdatePageLayout) document.UpdatePageLayout();
        var pages = document.PageLayout.Pages;
        var chosen = options.PageSet.Resolve(pages.Count);
        if (chosen.Count == 0)
            throw new ArgumentException($"The page set selects none of the document's {pages.Count} pages.", nameof(options));
        return (pages, chosen);
    }
}

/// <summary>PDF through Skia's PDF backend, which embeds and subsets the fonts.</summary>
internal sealed class PdfDocumentWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Pdf;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as PdfSaveOptions ?? new PdfSaveOptions();
        Check(o);
        var pages = FixedPages.Select(document, o);
        var metadata = new SKDocumentPdfMetadata
        {
            Creator = "Quorix.Folio",
            Producer = "Quorix.Folio",
            Title = o.Title,
            PdfA = o.Compliance == PdfCompliance.PdfA2b,
            EncodingQuality = o.JpegQuality,
            Creation = DateTime.Now,
            Modified = DateTime.Now,
        };
        using (var pdf = SKDocument.CreatePdf(output, metadata) ?? throw new InvalidOperationException("The PDF backend could not be started."))
        {
            // Laying out the pages is about half the work, drawing them the other half.
            var progress = document.SaveProgress;
            progress?.Report(0.5);
            using var painter = new PagePainter();
            for (int i = 0; i < pages.Count; i++)
            {
                var page = pages[i];
                var canvas = pdf.BeginPage((float)page.Width, (float)page.Height);
                painter.Paint(canvas, page, withLinks: true);
                pdf.EndPage();
                progress?.Report(0.5 + 0.5 * (i + 1) / pages.Count);
            }
            pdf.Close();
        }
        return new SaveOutputParameters("application/pdf");
    }

    /// <summary>Options the PDF backend cannot honour are refused before anything is written.</summary>
    private static void Check(PdfSaveOptions o)
    {
        if (o.Compliance is not (PdfCompliance.Pdf17 or PdfCompliance.PdfA2b))
            throw new NotSupportedException($"PDF compliance {o.Compliance} is not supported; Pdf17 and PdfA2b are.");
        if (o.OutlineOptions.Requested)
            throw new NotSupportedException("A PDF document outline (OutlineOptions) is not supported: the PDF backend writes no outline.");
        if (o.EncryptionDetails != null)
            throw new NotSupportedException("PDF encryption (EncryptionDetails) is not supported: the PDF backend cannot encrypt.");
        if (o.ExportDocumentStructure)
            throw new NotSupportedException("Tagged PDF (ExportDocumentStructure) is not supported.");
        if (o.TextCompression == PdfTextCompression.None)
            throw new NotSupportedException("Uncompressed PDF text (TextCompression.None) is not supported: the PDF backend always compresses.");
        if (o.EmbedFullFonts)
            throw new NotSupportedException("Embedding whole fonts (EmbedFullFonts) is not supported: fonts are embedded as subsets.");
        if (o.FontEmbeddingMode != PdfFontEmbeddingMode.EmbedAll)
            throw new NotSupportedException($"Font embedding mode {o.FontEmbeddingMode} is not supported: every font is embedded.");
    }
}

/// <summary>One page as SVG, text kept as glyph outlines drawn by Skia's SVG canvas.</summary>
internal sealed class SvgDocumentWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Svg;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as SvgSaveOptions ?? new SvgSaveOptions();
        var page = FixedPages.Select(document, o)[0];
        using (var wstream = new SKManagedWStream(output))
        using (var canvas = SKSvgCanvas.Create(SKRect.Create((float)page.Width, (float)page.Height), wstream))
        using (var painter = new PagePainter())
            painter.Paint(canvas, page, withLinks: false);
        return new SaveOutputParameters("image/svg+xml");
    }
}
