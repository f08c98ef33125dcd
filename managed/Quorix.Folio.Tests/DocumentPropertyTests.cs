using System.IO.Compression;
using System.Text;
using Quorix.Folio.Properties;

namespace Quorix.Folio.Tests;

public class DocumentPropertyTests
{
    private const string CustomXml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>" +
        "<Properties xmlns=\"http://schemas.openxmlformats.org/officeDocument/2006/custom-properties\" " +
        "xmlns:vt=\"http://schemas.openxmlformats.org/officeDocument/2006/docPropsVTypes\">" +
        "<property fmtid=\"{D5CDD505-2E9C-101B-9397-08002B2CF9AE}\" pid=\"2\" name=\"Count\"><vt:i4>41</vt:i4></property>" +
        "<property fmtid=\"{D5CDD505-2E9C-101B-9397-08002B2CF9AE}\" pid=\"7\" name=\"Odd\"><vt:clsid>{X}</vt:clsid></property>" +
        "<property fmtid=\"{D5CDD505-2E9C-101B-9397-08002B2CF9AE}\" pid=\"3\" name=\"Names\"><vt:vector size=\"2\" baseType=\"lpwstr\">" +
        "<vt:lpwstr>a</vt:lpwstr><vt:lpwstr>b</vt:lpwstr></vt:vector></property>" +
        "</Properties>";

    private const string CoreXml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><cp:coreProperties " +
        "xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" " +
        "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:dcterms=\"http://purl.org/dc/terms/\" " +
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:x=\"urn:vendor\">" +
        "<dc:title>Old</dc:title><x:extra a=\"1\">kept</x:extra>" +
        "<dcterms:created xsi:type=\"dcterms:W3CDTF\">2020-05-06T07:08:09+02:00</dcterms:created>" +
        "<cp:lastPrinted>2021-01-01T00:00:00</cp:lastPrinted></cp:coreProperties>";

    // A saved document with the property parts of the test put in beside what the engine wrote.
    private static Document WithParts(params (string Name, string Xml, string Rel, string ContentType)[] parts)
    {
        var source = TestSupport.ToBytes(new Document());
        var ms = new MemoryStream();
        ms.Write(source);
        using (var zip = new ZipArchive(ms, ZipArchiveMode.Update, leaveOpen: true))
        {
            string rels = Read(zip, "_rels/.rels");
            string types = Read(zip, "[Content_Types].xml");
            int n = 100;
            foreach (var (name, xml, rel, ct) in parts)
            {
                Write(zip, name, xml);
                rels = rels.Replace("</Relationships>", $"<Relationship Id=\"rId{n++}\" Type=\"{rel}\" Target=\"{name}\"/></Relationships>");
                types = types.Replace("</Types>", $"<Override PartName=\"/{name}\" ContentType=\"{ct}\"/></Types>");
            }
            Write(zip, "_rels/.rels", rels);
            Write(zip, "[Content_Types].xml", types);
        }
        ms.Position = 0;
        return new Document(ms);
    }

    private static string Read(ZipArchive zip, string name)
    {
        using var r = new StreamReader(zip.GetEntry(name)!.Open());
        return r.ReadToEnd();
    }

    private static void Write(ZipArchive zip, string name, string text)
    {
        zip.GetEntry(name)?.Delete();
        using var s = zip.CreateEntry(name).Open();
        s.Write(Encoding.UTF8.GetBytes(text));
    }

    private static (string, string, string, string) Custom(string xml) =>
        ("docProps/custom.xml", xml, PropertyParts.RelCustom, "application/vnd.openxmlformats-officedocument.custom-properties+xml");

    private static (string, string, string, string) Core(string xml) =>
        ("docProps/core.xml", xml, PropertyParts.RelCore, "application/vnd.openxmlformats-package.core-properties+xml");

    [Fact]
    public void CustomValuesAreReadByTheirVariantTypeAndUnknownOnesStayText()
    {
        var custom = WithParts(Custom(CustomXml)).CustomDocumentProperties;
        Assert.Equal(3, custom.Count);
        Assert.Equal((41, PropertyType.Number), (custom.Get("count")!.Value, custom.Get("Count")!.Type));
        Assert.Equal(PropertyType.Other, custom.Get("Odd")!.Type);
        Assert.Equal(new[] { "a", "b" }, (string[])custom.Get("Names")!.Value!);
        Assert.Equal("a b", custom.Get("Names")!.ToString());
    }

    [Fact]
    public void AddedPropertiesTakeTheNextIdentifierAndEveryOtherPropertyIsWrittenBackAsItWas()
    {
        var doc = WithParts(Custom(CustomXml));
        doc.CustomDocumentProperties.Add("Amount", 12.50m);
        string xml = TestSupport.Part(TestSupport.ToBytes(doc), "docProps/custom.xml");
        Assert.Contains("pid=\"8\" name=\"Amount\"><vt:decimal>12.50</vt:decimal>", xml);
        Assert.Contains("<vt:clsid>{X}</vt:clsid>", xml);
        Assert.Contains("<vt:vector size=\"2\" baseType=\"lpwstr\">", xml);
        var again = TestSupport.RoundTrip(doc).CustomDocumentProperties;
        Assert.Equal(12.50m, again.Get("Amount")!.Value);
        Assert.Equal("12.50", again.Get("Amount")!.ToString());
    }

    [Fact]
    public void CoreDatesKeepTheirZoneAndUnknownElementsSurviveAnEdit()
    {
        var doc = WithParts(Core(CoreXml));
        var props = doc.BuiltInDocumentProperties;
        Assert.Equal(new DateTime(2020, 5, 6, 5, 8, 9, DateTimeKind.Utc), props.CreatedTime);
        Assert.Equal(DateTimeKind.Utc, props.CreatedTime.Kind);
        // no zone written: no zone read
        Assert.Equal(DateTimeKind.Unspecified, props.LastPrinted.Kind);
        props.Title = "New";
        props.LastSavedTime = new DateTime(2022, 2, 3, 4, 5, 6, DateTimeKind.Utc);
        string xml = TestSupport.Part(TestSupport.ToBytes(doc), "docProps/core.xml");
        Assert.Contains("<dc:title>New</dc:title><x:extra a=\"1\">kept</x:extra>", xml);
        Assert.Contains("<dcterms:modified xsi:type=\"dcterms:W3CDTF\">2022-02-03T04:05:06Z</dcterms:modified>", xml);
    }

    [Fact]
    public void BuiltInPropertiesListOnlyWhatIsSetAndEmptyValuesRemoveTheElement()
    {
        var doc = new Document();
        var props = doc.BuiltInDocumentProperties;
        Assert.Equal(0, props.Count);
        props.Company = "Acme";
        props.Words = 12;
        props.Security = DocumentSecurity.ReadOnlyEnforced;
        Assert.Equal(new[] { "Words", "Company", "Security" }, props.Select(p => p.Name));
        props.Company = "";
        Assert.False(props.Contains("Company"));
        Assert.Throws<ArgumentException>(() => props.Get("Words")!.Value = "many");
        string app = TestSupport.Part(TestSupport.ToBytes(doc), "docProps/app.xml");
        Assert.Contains("<Words>12</Words><DocSecurity>4</DocSecurity>", app);
        Assert.DoesNotContain("Company", app);
    }

    [Fact]
    public void APropertyPartThatIsNotXmlIsReportedAsDamage()
    {
        var doc = WithParts(Custom("<Properties><unclosed></Properties>"));
        Assert.Throws<FileCorruptedException>(() => doc.CustomDocumentProperties.Count);
    }

    [Fact]
    public void ADocumentWithoutPropertyPartsSavesNone()
    {
        var bytes = TestSupport.ToBytes(new Document());
        using var zip = new ZipArchive(new MemoryStream(bytes), ZipArchiveMode.Read);
        Assert.DoesNotContain(zip.Entries, e => e.FullName.StartsWith("docProps/", StringComparison.Ordinal));
    }
}
