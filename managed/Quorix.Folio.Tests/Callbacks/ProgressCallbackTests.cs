using System.Text;
using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests.Callbacks;

/// <summary>Loads and saves report an estimated percentage as they go and stop when the callback throws.</summary>
public class ProgressCallbackTests
{
    private sealed class Progress : IDocumentSavingCallback, IDocumentLoadingCallback
    {
        public readonly List<double> Seen = new();
        public double CancelAt = double.MaxValue;

        private void Add(double p)
        {
            Seen.Add(p);
            if (p >= CancelAt) throw new OperationCanceledException("cancelled at " + p);
        }

        public void Notify(DocumentSavingArgs args) => Add(args.EstimatedProgress);
        public void Notify(DocumentLoadingArgs args) => Add(args.EstimatedProgress);
    }

    private static Document Long(int paragraphs)
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        for (int i = 0; i < paragraphs; i++) b.Writeln($"Paragraph {i} with some words to make the part larger than a slice of input.");
        return doc;
    }

    private static void AssertRisesFromZeroToHundred(List<double> seen, int atLeast)
    {
        Assert.Equal(0, seen[0]);
        Assert.Equal(100, seen[^1]);
        for (int i = 1; i < seen.Count; i++) Assert.True(seen[i] > seen[i - 1], $"progress went from {seen[i - 1]} to {seen[i]}");
        Assert.True(seen.Count >= atLeast, $"only {seen.Count} reports");
    }

    [Theory]
    [InlineData(SaveFormat.Docx, 20)]
    [InlineData(SaveFormat.Pdf, 4)]
    [InlineData(SaveFormat.Markdown, 2)]
    [InlineData(SaveFormat.Html, 2)]
    public void SavingReportsRisingProgressFromStartToEnd(SaveFormat format, int atLeast)
    {
        var doc = Long(400);
        var p = new Progress();
        var options = SaveOptions.CreateSaveOptions(format);
        options.ProgressCallback = p;
        if (options is HtmlSaveOptions html) html.ExportImagesAsBase64 = true;
        TestSupport.ToBytes(doc, options);
        AssertRisesFromZeroToHundred(p.Seen, atLeast);
    }

    [Fact]
    public void SavingAnUntouchedDocxReportsThePartsItCopies()
    {
        var doc = new Document(new MemoryStream(TestSupport.ToBytes(Long(50))));
        var p = new Progress();
        TestSupport.ToBytes(doc, new OoxmlSaveOptions { ProgressCallback = p });
        AssertRisesFromZeroToHundred(p.Seen, 4);
    }

    [Fact]
    public void CancellingASaveLeavesTheFileAndTheDocumentAsTheyWere()
    {
        var doc = Long(300);
        var text = doc.GetText();
        var dir = Directory.CreateTempSubdirectory("qf-progress-").FullName;
        var path = Path.Combine(dir, "out.docx");
        File.WriteAllText(path, "before");
        var p = new Progress { CancelAt = 40 };
        var e = Assert.Throws<OperationCanceledException>(() => doc.Save(path, new OoxmlSaveOptions { ProgressCallback = p }));
        Assert.StartsWith("cancelled at 4", e.Message);
        Assert.True(p.Seen[^1] < 50);
        Assert.Equal("before", File.ReadAllText(path));
        Assert.Equal(new[] { path }, Directory.GetFiles(dir));
        Assert.Equal(text, doc.GetText());
        doc.Save(path);
        Assert.Equal(text, new Document(path).GetText());
    }

    [Theory]
    [InlineData(".docx")]
    [InlineData(".md")]
    [InlineData(".html")]
    public void LoadingReportsRisingProgressFromStartToEnd(string extension)
    {
        var options = SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(extension));
        if (options is HtmlSaveOptions html) html.ExportImagesAsBase64 = true;
        var bytes = TestSupport.ToBytes(Long(3000), options);
        var p = new Progress();
        var doc = new Document(new MemoryStream(bytes), new LoadOptions { ProgressCallback = p });
        Assert.Contains("Paragraph 2999", doc.GetText());
        AssertRisesFromZeroToHundred(p.Seen, 4);
    }

    [Fact]
    public void CancellingALoadMakesNoDocumentAndSaysSo()
    {
        var bytes = TestSupport.ToBytes(Long(3000));
        var p = new Progress { CancelAt = 30 };
        var e = Assert.Throws<OperationCanceledException>(() => new Document(new MemoryStream(bytes), new LoadOptions { ProgressCallback = p }));
        Assert.StartsWith("cancelled at", e.Message);
        // a forward-only stream has no length: only the start and the end are reported
        var q = new Progress();
        new Document(new ForwardOnly(bytes), new LoadOptions { ProgressCallback = q, LoadFormat = LoadFormat.Docx });
        Assert.Equal(new double[] { 0, 100 }, q.Seen);
    }

    private sealed class ForwardOnly : MemoryStream
    {
        public ForwardOnly(byte[] b) : base(b) { }
        public override bool CanSeek => false;
    }
}
