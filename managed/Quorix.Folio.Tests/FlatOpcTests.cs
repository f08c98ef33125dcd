using System.Text;
using System.Xml.Linq;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests;

public class FlatOpcTests
{
    private static readonly XNamespace Pkg = "http://schemas.microsoft.com/office/2006/xmlPackage";

    [Fact]
    public void ThePackageBecomesOneXmlDocumentAndComesBack()
    {
        var doc = FlowInteropTests.Sample();
        var b = new DocumentBuilder(doc);
        b.MoveToDocumentEnd();
        b.InsertImage(TestSupport.Png(7, 3));
        b.InsertFootnote(Notes.FootnoteType.Footnote, "flat note");
        var bytes = TestSupport.ToBytes(doc, SaveFormat.FlatOpc);
        var xml = XDocument.Parse(Encoding.UTF8.GetString(bytes));
        Assert.Equal(Pkg + "package", xml.Root!.Name);
        var parts = xml.Root.Elements(Pkg + "part").ToDictionary(p => (string)p.Attribute(Pkg + "name")!);
        Assert.Contains("/word/document.xml", parts.Keys);
        Assert.NotNull(parts["/word/document.xml"].Element(Pkg + "xmlData"));
        var picture = parts.Values.Single(p => ((string)p.Attribute(Pkg + "contentType")!).StartsWith("image/"));
        Assert.Equal(TestSupport.Png(7, 3), Convert.FromBase64String((string)picture.Element(Pkg + "binaryData")!));

        var back = new Document(new MemoryStream(bytes));
        Assert.Equal(LoadFormat.FlatOpc, back.OriginalLoadFormat);
        Assert.Equal(doc.GetText(), back.GetText());
        Assert.Equal(TestSupport.Png(7, 3), ((Drawing.Shape)back.GetChildNodes(NodeType.Shape, true)[0]).ImageData.ImageBytes);
        // The same content as the DOCX the package was made from.
        Assert.Equal(new Document(new MemoryStream(TestSupport.ToBytes(doc))).GetText(), back.GetText());
    }

    [Fact]
    public void DamagedFlatPackagesAreReported()
    {
        const string head = "<?xml version=\"1.0\"?><pkg:package xmlns:pkg=\"http://schemas.microsoft.com/office/2006/xmlPackage\">";
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(Encoding.UTF8.GetBytes(head + "</pkg:package>"))));
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(Encoding.UTF8.GetBytes(head + "<pkg:part pkg:name=\"/word/x.bin\"><pkg:binaryData>@@</pkg:binaryData></pkg:part></pkg:package>"))));
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(Encoding.UTF8.GetBytes(head + "<pkg:part pkg:name=\"/../evil\"/></pkg:package>"))));
    }
}
