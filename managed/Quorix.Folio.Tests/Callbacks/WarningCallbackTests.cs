using System.IO.Compression;
using System.Text;
using Quorix.Folio.Loading;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests.Callbacks;

/// <summary>Warnings reach the load's callback while loading and the document's afterwards, as they occur.</summary>
public class WarningCallbackTests
{
    private static Document LoadHtml(string html, LoadOptions options) =>
        new(new MemoryStream(Encoding.UTF8.GetBytes(html)), options);

    [Fact]
    public void LoadWarningsOfDroppedContentReachTheLoadOptionsCallbackOnce()
    {
        var seen = new WarningInfoCollection();
        var doc = LoadHtml("<p>a<iframe src='x'></iframe><iframe></iframe><img src='http://example.invalid/p.png'><math><mi>x</mi></math>b</p>",
            new HtmlLoadOptions { WarningCallback = seen });
        // the picture that could not be had stays a link to where it lives
        Assert.Contains("example.invalid", doc.GetText());
        Assert.Equal(3, seen.Count);
        Assert.All(seen, w => Assert.Equal((WarningType.DataLoss, WarningSource.Html), (w.WarningType, w.Source)));
        Assert.Contains("<iframe>", seen[0].Description);
        Assert.Contains("\"http://example.invalid/p.png\" could not be loaded", seen[1].Description);
        Assert.Contains("<math>", seen[-1].Description);
        Assert.True((seen[0].WarningType & WarningType.DataLossCategory) != 0);
        Assert.False((seen[0].WarningType & WarningType.MinorFormattingLossCategory) != 0);
    }

    [Fact]
    public void AnRtfPictureOfUnknownFormatIsReportedAsLeftOut()
    {
        var seen = new WarningInfoCollection();
        var rtf = @"{\rtf1\ansi {\pict\pngblip 0102030405060708}kept text\par}";
        var doc = new Document(new MemoryStream(Encoding.ASCII.GetBytes(rtf)), new RtfLoadOptions { WarningCallback = seen });
        Assert.Contains("kept text", doc.GetText());
        var w = Assert.Single(seen);
        Assert.Equal((WarningType.DataLoss, WarningSource.Rtf), (w.WarningType, w.Source));
        Assert.Contains("not recognised", w.Description);
    }

    [Fact]
    public void ADocumentsOwnCallbackHearsOfSavingNotOfTheLoad()
    {
        var loadSeen = new WarningInfoCollection();
        var docSeen = new WarningInfoCollection();
        var docx = WithUnsafeEntries();
        var doc = new Document(new MemoryStream(docx), new LoadOptions { WarningCallback = loadSeen });
        doc.WarningCallback = docSeen;
        TestSupport.ToBytes(doc);
        Assert.Empty(loadSeen);
        Assert.Equal(2, docSeen.Count);
        var renamed = docSeen.Single(w => w.Description.Contains("saved as"));
        var dropped = docSeen.Single(w => w.Description.EndsWith("was left out."));
        Assert.Equal((WarningType.UnexpectedContent, WarningSource.Docx), (renamed.WarningType, renamed.Source));
        Assert.Equal((WarningType.DataLoss, WarningSource.Docx), (dropped.WarningType, dropped.Source));
    }

    [Fact]
    public void FontSubstitutionDuringPdfLayoutIsReportedOncePerFontAndStyle()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Font.Name = "No Such Family 4242";
        b.Writeln("one");
        b.Writeln("two");
        b.Font.Bold = true;
        b.Writeln("three");
        var seen = new WarningInfoCollection();
        doc.WarningCallback = seen;
        TestSupport.ToBytes(doc, SaveFormat.Pdf);
        var subs = seen.OfType<FontSubstitutionWarningInfo>().Where(w => w.RequestedFamily == "No Such Family 4242").ToList();
        Assert.Equal(2, subs.Count);
        Assert.Equal(new[] { false, true }, subs.Select(s => s.RequestedBold).OrderBy(x => x));
        Assert.All(subs, s =>
        {
            Assert.Equal(WarningType.FontSubstitution, s.WarningType);
            Assert.Equal(WarningSource.Layout, s.Source);
            Assert.False(string.IsNullOrEmpty(s.ResolvedFamily));
            Assert.NotEqual("No Such Family 4242", s.ResolvedFamily);
            Assert.Contains(s.ResolvedFamily, s.Description);
        });
        // each layout reports its own substitutions
        doc.UpdatePageLayout();
        Assert.Equal(4, seen.OfType<FontSubstitutionWarningInfo>().Count(w => w.RequestedFamily == "No Such Family 4242"));
    }

    [Fact]
    public void MarkdownReportsMergedCellsItCannotKeepOncePerSave()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.StartTable();
        b.CellFormat.HorizontalMerge = CellMerge.First;
        b.InsertCell(); b.Write("wide");
        b.CellFormat.HorizontalMerge = CellMerge.Previous;
        b.InsertCell();
        b.EndRow();
        b.CellFormat.HorizontalMerge = CellMerge.None;
        b.InsertCell(); b.Write("a");
        b.InsertCell(); b.Write("b");
        b.EndRow();
        b.EndTable();
        var seen = new WarningInfoCollection();
        doc.WarningCallback = seen;
        var md = TestSupport.ToText(doc, SaveFormat.Markdown);
        Assert.Contains("| wide |  |", md);
        var w = Assert.Single(seen);
        Assert.Equal((WarningType.MajorFormattingLoss, WarningSource.Markdown), (w.WarningType, w.Source));
        // a table without merged cells says nothing
        var plain = new Document();
        var pb = new DocumentBuilder(plain);
        pb.StartTable(); pb.InsertCell(); pb.Write("x"); pb.EndRow(); pb.EndTable();
        var none = new WarningInfoCollection();
        plain.WarningCallback = none;
        TestSupport.ToText(plain, SaveFormat.Markdown);
        Assert.Empty(none);
    }

    private sealed class Throwing : IWarningCallback
    {
        public void Warning(WarningInfo info) => throw new OperationCanceledException("stop at " + info.WarningType);
    }

    [Fact]
    public void AnExceptionFromTheCallbackReachesTheCallerOfTheLoadOrSave()
    {
        var e = Assert.Throws<OperationCanceledException>(() => LoadHtml("<p>a<iframe></iframe></p>", new HtmlLoadOptions { WarningCallback = new Throwing() }));
        Assert.Equal("stop at DataLoss", e.Message);

        var doc = new Document(new MemoryStream(WithUnsafeEntries())) { WarningCallback = new Throwing() };
        var path = Path.Combine(Directory.CreateTempSubdirectory("qf-warn-").FullName, "out.docx");
        File.WriteAllText(path, "before");
        Assert.Throws<OperationCanceledException>(() => doc.Save(path));
        Assert.Equal("before", File.ReadAllText(path));
        Assert.Single(Directory.GetFiles(Path.GetDirectoryName(path)!));
        doc.WarningCallback = null;
        Assert.Equal(doc.GetText(), new Document(new MemoryStream(TestSupport.ToBytes(doc))).GetText());
    }

    [Fact]
    public void WarningInfoCollectionKeepsOrderIndexesFromEitherEndAndClears()
    {
        var c = new WarningInfoCollection();
        var doc = LoadHtml("<p><iframe></iframe><svg></svg></p>", new HtmlLoadOptions { WarningCallback = c });
        Assert.Equal(2, c.Count);
        Assert.Same(c[1], c[-1]);
        Assert.Throws<ArgumentOutOfRangeException>(() => c[2]);
        Assert.Throws<ArgumentOutOfRangeException>(() => c[-3]);
        c.Clear();
        Assert.Empty(c);
        GC.KeepAlive(doc);
    }

    /// <summary>A DOCX with one entry that can be renamed to be safe and one that must be left out.</summary>
    private static byte[] WithUnsafeEntries()
    {
        var doc = new Document();
        new DocumentBuilder(doc).Write("text");
        var src = TestSupport.ToBytes(doc);
        var ms = new MemoryStream();
        using (var dst = new ZipArchive(ms, ZipArchiveMode.Create, true))
        {
            using (var zin = new ZipArchive(new MemoryStream(src)))
                foreach (var e in zin.Entries)
                {
                    using var s = e.Open();
                    using var d = dst.CreateEntry(e.FullName).Open();
                    s.CopyTo(d);
                }
            foreach (var name in new[] { "word\\media\\x.bin", "../../evil.bin" })
                using (var d = dst.CreateEntry(name).Open()) d.Write(new byte[] { 1, 2, 3 });
        }
        return ms.ToArray();
    }
}
