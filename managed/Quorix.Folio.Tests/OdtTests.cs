using System.IO.Compression;
using System.Text;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class OdtTests
{
    private static Paragraph[] Paras(Document d) => d.FirstSection!.Body!.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>().Where(p => p.ParentNode is not Notes.Footnote).ToArray();

    private static string Text(Node n) => n.GetText().TrimEnd('\r', '\f', '\a');

    private static Document Rich()
    {
        var doc = FlowInteropTests.Sample();
        var b = new DocumentBuilder(doc);
        b.MoveToDocumentEnd();
        b.Font.Size = 20;
        b.Font.ColorHex = "336699";
        b.Font.Underline = Underline.Double;
        b.Write("big   spaced\ttabbed");
        b.Font.ClearFormatting();
        b.InsertFootnote(Notes.FootnoteType.Footnote, "The note.");
        b.InsertImage(TestSupport.Png(5, 5));
        b.Writeln();
        b.ParagraphFormat.Alignment = ParagraphAlignment.Right;
        b.ParagraphFormat.SpaceBefore = 18;
        b.Writeln("right");
        b.ParagraphFormat.Alignment = ParagraphAlignment.Left;
        b.ParagraphFormat.SpaceBefore = 0;
        b.StartTable();
        b.CellFormat.VerticalMerge = CellMerge.First;
        b.InsertCell(); b.Write("tall");
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell(); b.Write("x");
        b.EndRow();
        b.CellFormat.VerticalMerge = CellMerge.Previous;
        b.InsertCell();
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell(); b.Write("y");
        b.EndRow();
        b.EndTable();
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("head");
        return doc;
    }

    [Fact]
    public void PackageStartsWithItsMediaTypeStored()
    {
        var bytes = TestSupport.ToBytes(Rich(), SaveFormat.Odt);
        Assert.Equal("mimetype", Encoding.ASCII.GetString(bytes, 30, 8));
        Assert.Equal(0, BitConverter.ToUInt16(bytes, 8));
        Assert.Equal("application/vnd.oasis.opendocument.text", Encoding.ASCII.GetString(bytes, 38, 39));
        using var zip = new ZipArchive(new MemoryStream(bytes));
        var names = zip.Entries.Select(e => e.FullName).ToArray();
        Assert.Contains("META-INF/manifest.xml", names);
        Assert.Contains("Pictures/image1.png", names);
        // Every part is well-formed XML.
        foreach (var part in new[] { "content.xml", "styles.xml", "meta.xml", "META-INF/manifest.xml" })
            System.Xml.Linq.XDocument.Load(zip.GetEntry(part)!.Open());
        Assert.Equal(LoadFormat.Odt, FileFormatUtil.DetectFileFormat(new MemoryStream(bytes)).LoadFormat);
    }

    [Fact]
    public void OurOdtReadsBackAsTheDocumentWeWrote()
    {
        var doc = Rich();
        var back = new Document(new MemoryStream(TestSupport.ToBytes(doc, SaveFormat.Odt)));
        Assert.Equal(LoadFormat.Odt, back.OriginalLoadFormat);
        string Outline(Document x) => string.Join("|", Paras(x).Where(p => !Formats.Flow.ModelFacts.IsClosingEmpty(p)).Select(p => $"{p.ParagraphFormat.StyleIdentifier}:{p.ParagraphFormat.Alignment}:{p.ListLabel.LabelString}:{Text(p)}"));
        Assert.Equal(Outline(doc).Replace("ListParagraph", "Normal"), Outline(back));
        var big = Paras(back).Single(p => Text(p).StartsWith("big"));
        Assert.StartsWith("big   spaced\ttabbed", Text(big));
        var run = big.Runs[0];
        Assert.Equal((20.0, "336699", Underline.Double), (run.Font.Size, run.Font.ColorHex, run.Font.Underline));
        Assert.Equal(18, Paras(back).Single(p => Text(p) == "right").ParagraphFormat.SpaceBefore);
        Assert.Equal("The note.", back.GetChildNodes(NodeType.Footnote, true)[0].GetText().Trim());
        Assert.Equal(TestSupport.Png(5, 5), ((Drawing.Shape)back.GetChildNodes(NodeType.Shape, true)[0]).ImageData.ImageBytes);
        var merged = back.FirstSection!.Body!.Tables[1];
        Assert.Equal(CellMerge.First, merged.Rows[0].Cells[0].CellFormat.VerticalMerge);
        Assert.Equal(CellMerge.Previous, merged.Rows[1].Cells[0].CellFormat.VerticalMerge);
        Assert.Equal("head", Text(back.FirstSection.HeadersFooters[HeaderFooterType.HeaderPrimary]!));
        Assert.True(!Paras(back).First().Runs[0].RunAttrs.Has(Quorix.Folio.Formatting.FormatAttr.Bold), "a heading's look stays with its style");
    }

    [Fact]
    public void DamagedPackagesAreReported()
    {
        var good = TestSupport.ToBytes(Rich(), SaveFormat.Odt);
        var noContent = Rewrite(good, "content.xml", null);
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(noContent)));
        var badXml = Rewrite(good, "content.xml", "<office:document-content");
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(badXml)));
    }

    private static byte[] Rewrite(byte[] odt, string name, string? content)
    {
        using var src = new ZipArchive(new MemoryStream(odt));
        var ms = new MemoryStream();
        using (var dst = new ZipArchive(ms, ZipArchiveMode.Create, true))
        {
            foreach (var e in src.Entries)
            {
                if (e.FullName == name && content == null) continue;
                var entry = dst.CreateEntry(e.FullName, e.FullName == "mimetype" ? System.IO.Compression.CompressionLevel.NoCompression : System.IO.Compression.CompressionLevel.Optimal);
                using var w = entry.Open();
                if (e.FullName == name) w.Write(Encoding.UTF8.GetBytes(content!));
                else e.Open().CopyTo(w);
            }
        }
        return ms.ToArray();
    }
}
