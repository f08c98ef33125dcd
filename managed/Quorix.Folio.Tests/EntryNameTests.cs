using System.IO.Compression;
using Quorix.Folio.Package;

namespace Quorix.Folio.Tests;

/// <summary>Archive entry names that could escape an unzip folder never reach a saved package.</summary>
public class EntryNameTests
{
    private static readonly string[] Hostile =
    {
        "../../tmp/evil.xml", "/etc/passwd.xml", "word\\media\\back.bin", "C:/Windows/x.bin",
        "word/../../up.bin", "nul\0byte.bin", "./dot.bin", "word//double.bin",
    };

    private static byte[] WithEntries(IEnumerable<string> names)
    {
        var ms = new MemoryStream();
        var valid = TestSupport.ToBytes(new DocumentBuilder().Document);
        using (var zip = new ZipArchive(ms, ZipArchiveMode.Create, true))
        {
            foreach (var e in new ZipArchive(new MemoryStream(valid)).Entries)
            {
                using var src = e.Open();
                using var dst = zip.CreateEntry(e.FullName).Open();
                src.CopyTo(dst);
            }
            foreach (var name in names)
            {
                using var w = zip.CreateEntry(name).Open();
                w.Write("data"u8);
            }
        }
        return ms.ToArray();
    }

    private static List<string> EntriesOf(byte[] package) =>
        new ZipArchive(new MemoryStream(package)).Entries.Select(e => e.FullName).ToList();

    [Theory]
    [InlineData(false)]
    [InlineData(true)]
    public void UnsafeNamesAreRenamedOrDroppedWithAWarning(bool touched)
    {
        var doc = new Document(new MemoryStream(WithEntries(Hostile)));
        if (touched)
            new DocumentBuilder(doc).Write("edited");  // the rebuilt package goes the same way
        var saved = TestSupport.ToBytes(doc);
        var names = EntriesOf(saved);
        Assert.All(names, n => Assert.True(EntryNames.IsSafe(n), n));
        Assert.Contains("etc/passwd.xml", names);
        Assert.Contains("word/media/back.bin", names);
        Assert.Contains("Windows/x.bin", names);
        Assert.DoesNotContain(names, n => n.Contains("evil") || n.Contains("up.bin") || n.Contains("byte.bin"));
        var warnings = doc.Warnings.Messages;
        // the reader already takes a leading slash off: one name fewer to warn about
        Assert.Equal(Hostile.Length - 1, warnings.Count);
        Assert.Contains(warnings, w => w.Contains("\"../../tmp/evil.xml\"") && w.EndsWith("was left out."));
        Assert.Contains(warnings, w => w.Contains("\"nul\\0byte.bin\"") && w.EndsWith("was left out."));
        Assert.Contains(warnings, w => w.Contains("saved as \"word/media/back.bin\""));
        // the saved package loads and says the same
        Assert.Equal(doc.GetText(), new Document(new MemoryStream(saved)).GetText());
    }

    [Fact]
    public void ARenamedEntryNeverOverwritesAnother()
    {
        var doc = new Document(new MemoryStream(WithEntries(new[] { "word/media/a.bin", "word\\media\\a.bin" })));
        var names = EntriesOf(TestSupport.ToBytes(doc));
        Assert.Single(names, "word/media/a.bin");
        Assert.Contains(doc.Warnings.Messages, w => w.Contains("\"word\\media\\a.bin\"") && w.EndsWith("was left out."));
    }

    [Fact]
    public void OrdinaryNamesAreSafe()
    {
        foreach (var name in new[] { "[Content_Types].xml", "_rels/.rels", "word/document.xml", "word/media/image1.png", "customXml/item1.xml" })
            Assert.True(EntryNames.IsSafe(name), name);
    }
}
