using System.IO.Compression;
using System.Text;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests;

/// <summary>HTML in one file: MHTML messages and EPUB books.</summary>
public class PackagedHtmlTests
{
    private static Document WithPicture()
    {
        var doc = FlowInteropTests.Sample();
        var b = new DocumentBuilder(doc);
        b.MoveToDocumentEnd();
        b.InsertImage(TestSupport.Png(6, 2));
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Second chapter");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.Writeln("More text.");
        return doc;
    }

    [Fact]
    public void MhtmlCarriesItsPicturesAndStyleSheetAndLoadsBack()
    {
        var doc = WithPicture();
        var bytes = TestSupport.ToBytes(doc, new HtmlSaveOptions(SaveFormat.Mhtml) { CssStyleSheetType = CssStyleSheetType.External });
        var text = Encoding.ASCII.GetString(bytes);
        Assert.StartsWith("MIME-Version: 1.0", text);
        Assert.Contains("Content-Location: styles.css", text);
        Assert.Contains("Content-Type: image/png", text);
        var back = new Document(new MemoryStream(bytes));
        Assert.Equal(LoadFormat.Mhtml, back.OriginalLoadFormat);
        Assert.Equal(TestSupport.Png(6, 2), ((Drawing.Shape)back.GetChildNodes(NodeType.Shape, true)[0]).ImageData.ImageBytes);
        Assert.Equal(doc.FirstSection!.Body!.Tables[0].GetText(), back.FirstSection!.Body!.Tables[0].GetText());
        // The style sheet travelled as a part and still applies.
        Assert.Equal(StyleIdentifier.Heading1, back.FirstSection.Body.FirstParagraph!.ParagraphFormat.StyleIdentifier);
        Assert.Throws<ArgumentException>(() => TestSupport.ToBytes(doc, new HtmlSaveOptions(SaveFormat.Mhtml) { DocumentSplitCriteria = DocumentSplitCriteria.HeadingParagraph }));
    }

    [Fact]
    public void QuotedPrintableMessagesFromOtherToolsLoad()
    {
        const string mht = "MIME-Version: 1.0\r\nContent-Type: multipart/related;\r\n\tboundary=\"b1\"\r\n\r\n--b1\r\nContent-Type: text/html; charset=\"utf-8\"\r\n" +
                           "Content-Transfer-Encoding: quoted-printable\r\n\r\n<p>caf=C3=A9 and a lo=\r\nng line</p>\r\n--b1--\r\n";
        var d = new Document(new MemoryStream(Encoding.ASCII.GetBytes(mht)));
        Assert.Equal("caf\u00e9 and a long line", d.FirstSection!.Body!.FirstParagraph!.GetText().TrimEnd('\r', '\f'));
    }

    [Fact]
    public void EpubIsAPackageOfXhtmlPartsCutAtHeadings()
    {
        var bytes = TestSupport.ToBytes(WithPicture(), SaveFormat.Epub);
        Assert.Equal("mimetype", Encoding.ASCII.GetString(bytes, 30, 8));
        Assert.Equal("application/epub+zip", Encoding.ASCII.GetString(bytes, 38, 20));
        using var zip = new ZipArchive(new MemoryStream(bytes));
        var names = zip.Entries.Select(e => e.FullName).ToHashSet();
        Assert.Contains("META-INF/container.xml", names);
        Assert.Contains("OEBPS/part002.xhtml", names);
        Assert.DoesNotContain("OEBPS/part003.xhtml", names);
        Assert.Contains("OEBPS/images/image.001.png", names);
        var opf = System.Xml.Linq.XDocument.Load(zip.GetEntry("OEBPS/content.opf")!.Open());
        System.Xml.Linq.XNamespace ns = "http://www.idpf.org/2007/opf";
        Assert.Equal(2, opf.Root!.Element(ns + "spine")!.Elements().Count());
        // Every file the package lists is in it.
        foreach (var item in opf.Root.Element(ns + "manifest")!.Elements())
            Assert.Contains("OEBPS/" + item.Attribute("href")!.Value, names);
        foreach (var part in names.Where(n => n.EndsWith(".xhtml")))
            System.Xml.Linq.XDocument.Load(zip.GetEntry(part)!.Open());
        var nav = new StreamReader(zip.GetEntry("OEBPS/nav.xhtml")!.Open()).ReadToEnd();
        Assert.Contains(">Second chapter</a>", nav);
    }
}
