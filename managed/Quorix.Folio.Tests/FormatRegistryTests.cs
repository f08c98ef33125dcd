using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests;

public class FormatRegistryTests
{
    private sealed class ForwardOnly : MemoryStream
    {
        public ForwardOnly(byte[] b) : base(b) { }
        public override bool CanSeek => false;
        public override long Seek(long offset, SeekOrigin loc) => throw new NotSupportedException();
        public override long Position { get => base.Position; set => throw new NotSupportedException(); }
        public override long Length => throw new NotSupportedException();
    }

    private static byte[] Sample()
    {
        var doc = new Document();
        new DocumentBuilder(doc).Writeln("registry");
        return TestSupport.ToBytes(doc);
    }

    [Fact]
    public void DetectedFormatPicksTheReaderEvenFromAForwardOnlyStream()
    {
        var doc = new Document(new ForwardOnly(Sample()));
        Assert.Equal(LoadFormat.Docx, doc.OriginalLoadFormat);
        Assert.StartsWith("registry", doc.GetText());
    }

    [Fact]
    public void FormatsWithoutReaderOrWriterAreRefusedByName()
    {
        var e = Assert.Throws<UnsupportedFileFormatException>(() => new Document(new MemoryStream(Sample()), new LoadOptions { LoadFormat = LoadFormat.Markdown }));
        Assert.Contains("Markdown", e.Message);
        var doc = new Document();
        e = Assert.Throws<UnsupportedFileFormatException>(() => doc.Save(new MemoryStream(), (SaveFormat)12345));
        Assert.Contains("12345", e.Message);
    }

    [Fact]
    public void DetectionRefusalsSayWhatTheFileIs()
    {
        var e = Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream()));
        Assert.Contains("empty", e.Message);
        var compound = new byte[4096];
        new byte[] { 0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1 }.CopyTo(compound, 0);
        var u = Assert.Throws<UnsupportedFileFormatException>(() => new Document(new MemoryStream(compound)));
        Assert.Contains("legacy binary", u.Message);
    }

    [Theory]
    [InlineData(SaveFormat.Docx, "application/vnd.openxmlformats-officedocument.wordprocessingml.document")]
    [InlineData(SaveFormat.Markdown, "text/markdown")]
    [InlineData(SaveFormat.Text, "text/plain")]
    public void EachRegisteredWriterReportsItsContentType(SaveFormat format, string contentType)
    {
        var doc = new Document(new MemoryStream(Sample()));
        var ms = new MemoryStream();
        Assert.Equal(contentType, doc.Save(ms, format).ContentType);
        Assert.True(ms.Length > 0);
    }
}
