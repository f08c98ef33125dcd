using System.Diagnostics;
using System.IO.Compression;
using System.Text;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Tests;

/// <summary>Damaged, hostile and foreign input must end in one of the engine's exceptions, quickly.</summary>
public class BadInputTests
{
    private static byte[] Valid()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Heading");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("item");
        b.ListFormat.RemoveNumbers();
        b.StartTable();
        b.InsertCell(); b.Write("x");
        b.InsertCell(); b.Write("y");
        b.EndTable();
        b.InsertFootnote(Notes.FootnoteType.Footnote, "note");
        b.InsertImage(TestSupport.Png(2, 2));
        return TestSupport.ToBytes(doc);
    }

    // Loading and then using the document: damage the load leaves to the model's build must
    // surface from the first use in the same way, and a model that builds must save.
    private static Exception Load(byte[] bytes, LoadOptions? options = null) =>
        Record.Exception(() =>
        {
            var doc = new Document(new MemoryStream(bytes), options);
            doc.GetText();
            doc.Save(new MemoryStream(), SaveFormat.Docx);
        })!;

    [Fact]
    public void NonZipAndEmptyInputAreRefused()
    {
        Assert.IsType<UnsupportedFileFormatException>(Load(new byte[] { 0x00, 0xFF, 0x10, 0x80, 0x01 }));
        Assert.IsType<FileCorruptedException>(Load(Array.Empty<byte>()));
    }

    [Fact]
    public void TruncatedPackagesAreCorrupted()
    {
        var valid = Valid();
        foreach (var keep in new[] { 4, 30, valid.Length / 3, valid.Length / 2, valid.Length - 10 })
        {
            var e = Load(valid[..keep]);
            Assert.True(e is FileCorruptedException, $"cut at {keep}: {e?.GetType().Name}: {e?.Message}");
        }
    }

    [Fact]
    public void MalformedXmlMissingPartsAndDtdsAreCorrupted()
    {
        var valid = Valid();
        var broken = TestSupport.WithPart(valid, "word/document.xml", x => x![..(x!.Length / 2)]);
        Assert.Contains("malformed", Assert.IsType<FileCorruptedException>(Load(broken)).Message);

        var noMain = TestSupport.WithPart(valid, "word/document.xml", _ => null);
        Assert.Equal("The package has no main document part.", Assert.IsType<FileCorruptedException>(Load(noMain)).Message);

        var noTypes = TestSupport.WithPart(valid, "[Content_Types].xml", _ => null);
        Assert.IsType<FileCorruptedException>(Load(noTypes));

        // An entity expansion attack must be refused before it expands.
        var dtd = TestSupport.WithPart(valid, "word/document.xml", x =>
            "<?xml version=\"1.0\"?><!DOCTYPE d [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>" +
            x![(x!.IndexOf("?>") + 2)..]);
        Assert.IsType<FileCorruptedException>(Load(dtd));

        var wrongRoot = TestSupport.WithPart(valid, "word/document.xml", _ => "<html><body/></html>");
        Assert.IsType<FileCorruptedException>(Load(wrongRoot));
    }

    [Fact]
    public void EncryptedAndLegacyCompoundFilesAreTold()
    {
        var enc = CompoundFile("EncryptionInfo");
        var e = Assert.IsType<IncorrectPasswordException>(Load(enc));
        Assert.Contains("password", e.Message);
        // With a password the container itself is read, and this one is only a signature and a name.
        Assert.IsType<FileCorruptedException>(Load(enc, new LoadOptions("secret")));
        Assert.IsType<UnsupportedFileFormatException>(Load(CompoundFile("WordDocument")));
        var info = FileFormatUtil.DetectFileFormat(new MemoryStream(enc));
        Assert.True(info.IsEncrypted);
    }

    // Enough of a compound file for detection: the signature and a directory entry name.
    private static byte[] CompoundFile(string streamName)
    {
        var bytes = new byte[4096];
        new byte[] { 0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1 }.CopyTo(bytes, 0);
        Encoding.Unicode.GetBytes(streamName).CopyTo(bytes, 1024);
        return bytes;
    }

    [Fact]
    public void ArchiveBombsStopAtTheSizeLimit()
    {
        var ms = new MemoryStream();
        using (var zip = new ZipArchive(ms, ZipArchiveMode.Create, true))
        {
            foreach (var e in new ZipArchive(new MemoryStream(Valid())).Entries)
            {
                using var src = e.Open();
                using var dst = zip.CreateEntry(e.FullName).Open();
                src.CopyTo(dst);
            }
            using var bomb = zip.CreateEntry("word/media/huge.bin", CompressionLevel.SmallestSize).Open();
            var zeros = new byte[1 << 20];
            for (int i = 0; i < 64; i++) bomb.Write(zeros);
        }
        var options = new LoadOptions { MaxPartSize = 16 << 20 };
        var sw = Stopwatch.StartNew();
        var e2 = Assert.IsType<FileCorruptedException>(Load(ms.ToArray(), options));
        Assert.Contains("limit", e2.Message);
        Assert.True(sw.Elapsed < TimeSpan.FromSeconds(10));
        // Within the limits the same file loads.
        Assert.NotNull(new Document(new MemoryStream(ms.ToArray())));
    }

    [Fact]
    public void RandomDamageNeverEscapesAsAnotherException()
    {
        var valid = Valid();
        var rng = new Random(20240611);
        var allowed = new[] { typeof(FileCorruptedException), typeof(UnsupportedFileFormatException), typeof(IncorrectPasswordException) };
        var budget = Stopwatch.StartNew();
        int loaded = 0, refused = 0;
        for (int i = 0; i < 400 && budget.Elapsed < TimeSpan.FromSeconds(20); i++)
        {
            var bytes = (byte[])valid.Clone();
            int flips = 1 + rng.Next(8);
            for (int k = 0; k < flips; k++) bytes[rng.Next(bytes.Length)] = (byte)rng.Next(256);
            var sw = Stopwatch.StartNew();
            var e = Load(bytes);
            Assert.True(sw.Elapsed < TimeSpan.FromSeconds(5), $"case {i} took {sw.Elapsed}");
            if (e == null) { loaded++; continue; }
            Assert.True(allowed.Contains(e.GetType()), $"case {i}: {e.GetType().Name}: {e.Message}");
            refused++;
        }
        // Damage to stored (uncompressed) data may go unnoticed; damage to the structure must not.
        Assert.True(refused > 0);
        Assert.True(loaded + refused > 0);
    }

    [Fact]
    public void XmlFuzzOfTheMainPartIsHandled()
    {
        var valid = Valid();
        var xml = TestSupport.Part(valid, "word/document.xml");
        var rng = new Random(7);
        var allowed = new[] { typeof(FileCorruptedException), typeof(UnsupportedFileFormatException) };
        for (int i = 0; i < 150; i++)
        {
            var chars = xml.ToCharArray();
            for (int k = 0; k < 1 + rng.Next(4); k++)
                chars[rng.Next(chars.Length)] = "<>/\"=&wpx: 0"[rng.Next(12)];
            var mutated = TestSupport.WithPart(valid, "word/document.xml", _ => new string(chars));
            var e = Load(mutated);
            if (e == null) continue;
            Assert.True(allowed.Contains(e.GetType()), $"case {i}: {e.GetType().Name}: {e.Message}");
        }
    }

    [Fact]
    public void DeepNestingIsRefusedInsteadOfOverflowingTheStack()
    {
        var valid = Valid();
        foreach (var (open, close) in new[] { ("<w:tbl><w:tr><w:tc>", "<w:p/></w:tc></w:tr></w:tbl>"), ("<w:x>", "</w:x>") })
        {
            var deep = TestSupport.WithPart(valid, "word/document.xml", x =>
            {
                var sb = new StringBuilder(x![..(x!.IndexOf("<w:body>") + 8)]);
                sb.Append("<w:p><w:pPr>");
                for (int i = 0; i < 50000; i++) sb.Append(open);
                for (int i = 0; i < 50000; i++) sb.Append(close);
                sb.Append("</w:pPr></w:p></w:body></w:document>");
                return sb.ToString();
            });
            Assert.IsType<FileCorruptedException>(Load(deep));
        }
    }

    [Fact]
    public void AskedFormatMustMatchTheContent()
    {
        var e = Load(Valid(), new LoadOptions { LoadFormat = LoadFormat.Markdown });
        Assert.IsType<UnsupportedFileFormatException>(e);
    }

    [Fact]
    public void ArchivesClaimingHugeDirectoriesAreRefusedUpFront()
    {
        var valid = Valid();
        // Patch the end-of-directory record to claim a million entries.
        var bytes = (byte[])valid.Clone();
        int eocd = bytes.Length - 22;
        Assert.Equal(0x06054b50u, BitConverter.ToUInt32(bytes, eocd));
        bytes[eocd + 10] = 0xFF;
        bytes[eocd + 11] = 0xFF;
        var e = Assert.IsType<FileCorruptedException>(Load(bytes));
        Assert.Contains("parts", e.Message);
    }
}
