using System.IO.Compression;
using System.Text;
using Quorix.Folio.Lists;

namespace Quorix.Folio.Tests;

/// <summary>A loaded document builds its model on first use and is written back as stored when
/// nothing used it; no way of changing it may skip the build.</summary>
public class DeferredLoadTests
{
    private static byte[] Source()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("original text");
        b.ListFormat.ApplyBulletDefault();
        b.Writeln("item");
        b.ListFormat.RemoveNumbers();
        b.InsertImage(TestSupport.Png(3, 3));
        return TestSupport.ToBytes(doc);
    }

    /// <summary>The same package, written by the framework's archive writer with the given
    /// compression, through a stream that cannot seek (so sizes follow the data).</summary>
    private static byte[] Rezip(byte[] docx, CompressionLevel level)
    {
        var outMs = new MemoryStream();
        using (var dst = new ZipArchive(new ForwardOnly(outMs), ZipArchiveMode.Create, true))
        using (var src = new ZipArchive(new MemoryStream(docx), ZipArchiveMode.Read))
        {
            foreach (var e in src.Entries)
            {
                using var es = e.Open();
                using var ds = dst.CreateEntry(e.FullName, level).Open();
                es.CopyTo(ds);
            }
        }
        return outMs.ToArray();
    }

    private static Dictionary<string, (long Compressed, string Content)> Entries(byte[] docx)
    {
        using var zip = new ZipArchive(new MemoryStream(docx), ZipArchiveMode.Read);
        return zip.Entries.ToDictionary(e => e.FullName, e =>
        {
            using var s = e.Open();
            var ms = new MemoryStream();
            s.CopyTo(ms);
            return (e.CompressedLength, Convert.ToBase64String(ms.ToArray()));
        });
    }

    [Theory]
    [InlineData(CompressionLevel.NoCompression)]
    [InlineData(CompressionLevel.SmallestSize)]
    public void UntouchedDocumentsAreWrittenBackAsStored(CompressionLevel level)
    {
        var source = Rezip(Source(), level);
        var saved = TestSupport.ToBytes(new Document(new MemoryStream(source)));
        Assert.Equal(Entries(source), Entries(saved));
        // And what was written back loads and reads as the original did.
        var reread = new Document(new MemoryStream(saved));
        Assert.Equal(new Document(new MemoryStream(source)).GetText(), reread.GetText());
        Assert.Equal(1, reread.GetChildNodes(NodeType.Shape, true).Count);
    }

    [Fact]
    public void AskedForCompressionAppliesToStoredPartsToo()
    {
        var source = Rezip(Source(), CompressionLevel.NoCompression);
        var ms = new MemoryStream();
        new Document(new MemoryStream(source)).Save(ms, new Saving.OoxmlSaveOptions(SaveFormat.Docx) { CompressionLevel = Saving.CompressionLevel.Maximum });
        var before = Entries(source);
        var after = Entries(ms.ToArray());
        Assert.Equal(before.Keys.Order(), after.Keys.Order());
        foreach (var (name, (compressed, content)) in after)
        {
            Assert.Equal(before[name].Content, content);
            Assert.True(compressed < before[name].Compressed || content.Length < 200, name);
        }
    }

    [Fact]
    public void RegeneratedPartsAreCompressedAtTheAskedLevelAsTheyAreWritten()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var rng = new Random(7);
        // Enough varied text that the main part spans many writer buffers and the levels differ.
        for (int i = 0; i < 3000; i++) b.Writeln(string.Concat(Enumerable.Range(0, 12).Select(_ => (char)('a' + rng.Next(26)))) + " " + i);
        byte[] Saved(Saving.CompressionLevel level)
        {
            var ms = new MemoryStream();
            doc.Save(ms, new Saving.OoxmlSaveOptions(SaveFormat.Docx) { CompressionLevel = level });
            return ms.ToArray();
        }
        var fast = Entries(Saved(Saving.CompressionLevel.SuperFast));
        var small = Entries(Saved(Saving.CompressionLevel.Maximum));
        Assert.Equal(fast["word/document.xml"].Content, small["word/document.xml"].Content);
        Assert.True(small["word/document.xml"].Compressed < fast["word/document.xml"].Compressed);
        // The archive's checksums and sizes are those of the content: the framework's reader checks them.
        using var zip = new ZipArchive(new MemoryStream(Saved(Saving.CompressionLevel.Normal)));
        foreach (var entry in zip.Entries)
        {
            using var s = entry.Open();
            s.CopyTo(Stream.Null);
        }
        Assert.Equal(doc.GetText(), new Document(new MemoryStream(Saved(Saving.CompressionLevel.Normal))).GetText());
    }

    public static TheoryData<string> Changes => new()
    {
        "builder", "append section", "replace", "style", "list", "page setup", "append document", "clone",
    };

    /// <summary>Runs one change on an untouched document; returns what the saved file must then show.</summary>
    private static Func<Document, bool> Change(string how, Document doc)
    {
        switch (how)
        {
            case "builder":
                new DocumentBuilder(doc).Write("marker ");
                return d => d.GetText().StartsWith("marker original text");
            case "append section":
                var s = new Section(doc);
                var body = new Body(doc);
                var p = new Paragraph(doc);
                p.AppendChild(new Run(doc, "marker"));
                body.AppendChild(p);
                s.AppendChild(body);
                doc.AppendChild(s);
                return d => d.Sections.Count == 2 && d.LastSection!.GetText().StartsWith("marker");
            case "replace":
                Assert.Equal(1, doc.Range.Replace("original", "marker"));
                return d => d.GetText().StartsWith("marker text");
            case "style":
                doc.Styles.Add(StyleType.Paragraph, "Marker");
                return d => d.Styles["Marker"] != null;
            case "list":
                var count = doc.Lists.Count;
                doc.Lists.Add(ListTemplate.NumberDefault);
                return d => d.Lists.Count == count + 1;
            case "page setup":
                doc.FirstSection!.PageSetup.Orientation = Orientation.Landscape;
                return d => d.FirstSection!.PageSetup.Orientation == Orientation.Landscape;
            case "append document":
                var other = new Document();
                new DocumentBuilder(other).Write("marker");
                doc.AppendDocument(other, ImportFormatMode.KeepSourceFormatting);
                return d => d.Sections.Count == 2 && d.LastSection!.GetText().StartsWith("marker");
            case "clone":
                // The clone is changed; the document itself must still save what it loaded.
                new DocumentBuilder(doc.Clone()).Write("marker ");
                return d => !d.GetText().Contains("marker");
            default:
                throw new ArgumentException(how);
        }
    }

    [Theory]
    [MemberData(nameof(Changes))]
    public void EveryChangeBuildsTheModelFirst(string how)
    {
        var source = Source();
        var doc = new Document(new MemoryStream(source));
        var shows = Change(how, doc);
        var saved = new Document(new MemoryStream(TestSupport.ToBytes(doc)));
        Assert.True(shows(saved), $"{how}: {saved.GetText()}");
        Assert.Contains("original text", saved.GetText().Replace("marker text", "original text"));
        Assert.Contains("item", saved.GetText());
    }

    [Fact]
    public void DamageOnlyTheBuildFindsIsReportedOnEveryUse()
    {
        // Well-formed, with the right root, but without a body: the load cannot tell.
        var bytes = TestSupport.WithPart(Source(), "word/document.xml",
            _ => "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"/>");
        var doc = new Document(new MemoryStream(bytes));
        var first = Assert.Throws<FileCorruptedException>(() => doc.GetText());
        Assert.Equal("The document part has no body.", first.Message);
        // The half-built model is gone: every later use, saving included, says the same.
        Assert.Equal(first.Message, Assert.Throws<FileCorruptedException>(() => doc.FirstSection).Message);
        Assert.Equal(first.Message, Assert.Throws<FileCorruptedException>(() => doc.Styles).Message);
        Assert.Equal(first.Message, Assert.Throws<FileCorruptedException>(() => TestSupport.ToBytes(doc)).Message);
    }

    [Fact]
    public void DamagedEntriesAreRefusedByTheLoad()
    {
        var stored = Rezip(Source(), CompressionLevel.NoCompression);
        // One byte of the picture (which nothing reads at load) and one of the main part.
        foreach (var (part, needle) in new[] { ("word/media/", "IDAT"), ("word/document.xml", "original text") })
        {
            var damaged = (byte[])stored.Clone();
            int at = damaged.AsSpan().IndexOf(Encoding.ASCII.GetBytes(needle));
            Assert.True(at > 0, needle);
            damaged[at + 1] ^= 0x20;
            var e = Assert.IsType<FileCorruptedException>(Record.Exception(() => new Document(new MemoryStream(damaged))));
            Assert.Contains(part, e.Message);
            Assert.Contains("checksum", e.Message);
        }
    }

    [Fact]
    public void DamageIsRefusedAsWellWhileOtherLoadsRun()
    {
        // Loads beside other loads check their packages on their own thread, not spread out.
        var stored = Rezip(Source(), CompressionLevel.NoCompression);
        var cases = new[] { ("word/media/", "IDAT"), ("word/document.xml", "original text") }.Select(c =>
        {
            var damaged = (byte[])stored.Clone();
            damaged[damaged.AsSpan().IndexOf(Encoding.ASCII.GetBytes(c.Item2)) + 1] ^= 0x20;
            return (Part: c.Item1, Data: damaged);
        }).ToArray();
        Parallel.For(0, 48, new ParallelOptions { MaxDegreeOfParallelism = 6 }, i =>
        {
            var (part, data) = cases[i % cases.Length];
            if (i % 3 == 2)
            {
                Assert.Contains("original text", new Document(new MemoryStream(stored)).GetText());
                return;
            }
            var e = Assert.IsType<FileCorruptedException>(Record.Exception(() => new Document(new MemoryStream(data))));
            Assert.Contains(part, e.Message);
            Assert.Contains("checksum", e.Message);
        });
    }

    [Fact]
    public void LargeArchiveDirectoriesAreRead()
    {
        // The same entries, with every size and offset moved into the large-archive records.
        var source = Source();
        var entries = Package.ZipReader.Read(source, 1 << 30, 1L << 32);
        var ms = new MemoryStream();
        var w = new BinaryWriter(ms);
        var offsets = new List<long>();
        foreach (var e in entries)
        {
            offsets.Add(ms.Position);
            var name = Encoding.UTF8.GetBytes(e.Name);
            w.Write(0x04034b50u); w.Write((ushort)45); w.Write((ushort)0); w.Write(e.Method); w.Write(0u);
            w.Write(e.Crc); w.Write((uint)e.Compressed.Length); w.Write((uint)e.Size); w.Write((ushort)name.Length); w.Write((ushort)0);
            w.Write(name); w.Write(e.Compressed);
        }
        long dir = ms.Position;
        for (int i = 0; i < entries.Count; i++)
        {
            var e = entries[i];
            var name = Encoding.UTF8.GetBytes(e.Name);
            w.Write(0x02014b50u); w.Write((ushort)45); w.Write((ushort)45); w.Write((ushort)0); w.Write(e.Method); w.Write(0u);
            w.Write(e.Crc); w.Write(uint.MaxValue); w.Write(uint.MaxValue); w.Write((ushort)name.Length); w.Write((ushort)28);
            w.Write((ushort)0); w.Write((ushort)0); w.Write((ushort)0); w.Write(0u); w.Write(uint.MaxValue);
            w.Write(name);
            w.Write((ushort)1); w.Write((ushort)24); w.Write(e.Size); w.Write((long)e.Compressed.Length); w.Write(offsets[i]);
        }
        long dirSize = ms.Position - dir, record = ms.Position;
        w.Write(0x06064b50u); w.Write(44L); w.Write((ushort)45); w.Write((ushort)45); w.Write(0u); w.Write(0u);
        w.Write((long)entries.Count); w.Write((long)entries.Count); w.Write(dirSize); w.Write(dir);
        w.Write(0x07064b50u); w.Write(0u); w.Write(record); w.Write(1u);
        w.Write(0x06054b50u); w.Write(0u); w.Write(ushort.MaxValue); w.Write(ushort.MaxValue); w.Write(uint.MaxValue); w.Write(uint.MaxValue); w.Write((ushort)0);
        var large = ms.ToArray();

        var doc = new Document(new MemoryStream(large));
        Assert.Equal(Entries(source), Entries(TestSupport.ToBytes(doc)));
        Assert.Equal(new Document(new MemoryStream(source)).GetText(), doc.GetText());
        // A record pointing outside the file is damage, not a crash.
        large[^(22 + 20 - 8)] = 0x7F;
        Assert.IsType<FileCorruptedException>(Record.Exception(() => new Document(new MemoryStream(large))));
    }

    private sealed class ForwardOnly(Stream inner) : Stream
    {
        private long written;
        public override bool CanRead => false;
        public override bool CanSeek => false;
        public override bool CanWrite => true;
        public override long Length => throw new NotSupportedException();
        public override long Position { get => written; set => throw new NotSupportedException(); }
        public override void Flush() => inner.Flush();
        public override int Read(byte[] buffer, int offset, int count) => throw new NotSupportedException();
        public override long Seek(long offset, SeekOrigin origin) => throw new NotSupportedException();
        public override void SetLength(long value) => throw new NotSupportedException();
        public override void Write(byte[] buffer, int offset, int count)
        {
            inner.Write(buffer, offset, count);
            written += count;
        }
    }
}
