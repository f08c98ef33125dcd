using System.Text.RegularExpressions;
using Quorix.Folio.Drawing;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests;

/// <summary>Classes of damage found on real-world files: each case loads markup of that class, uses
/// the document, saves it, and checks what other tools would see.</summary>
public class FidelityTests
{
    private static byte[] WithBody(string body, Func<string, string>? root = null) =>
        TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            x => (root ?? (s => s))(x![..x!.IndexOf("<w:body>")]) + "<w:body>" + body + "<w:sectPr/></w:body></w:document>");

    /// <summary>Loaded, first used (the model is built), and saved.</summary>
    private static byte[] Cycle(byte[] docx, Action<Document>? use = null)
    {
        var doc = new Document(new MemoryStream(docx));
        _ = doc.FirstSection;
        use?.Invoke(doc);
        return TestSupport.ToBytes(doc);
    }

    private static string Grid(string xml) => string.Join(",", Regex.Matches(xml, "<w:gridCol w:w=\"(\\d+)\"").Select(m => m.Groups[1].Value));

    [Fact]
    public void GridOfMergedAndShortRowsIsKept()
    {
        const string table = @"<w:tbl><w:tblPr><w:tblW w:w=""0"" w:type=""auto""/></w:tblPr>
<w:tblGrid><w:gridCol w:w=""1000""/><w:gridCol w:w=""2500""/><w:gridCol w:w=""700""/><w:gridCol w:w=""3100""/><w:gridCol w:w=""900""/><w:gridCol w:w=""1800""/></w:tblGrid>
<w:tr><w:tc><w:tcPr><w:gridSpan w:val=""2""/></w:tcPr><w:p><w:r><w:t>a</w:t></w:r></w:p></w:tc><w:tc><w:p/></w:tc><w:tc><w:tcPr><w:gridSpan w:val=""3""/></w:tcPr><w:p/></w:tc></w:tr>
<w:tr><w:tc><w:p><w:r><w:t>b</w:t></w:r></w:p></w:tc><w:tc><w:p/></w:tc><w:tc><w:p/></w:tc></w:tr>
</w:tbl><w:p/>";
        var saved = Cycle(WithBody(table), d => d.Range.Replace("a", "A"));
        Assert.Equal("1000,2500,700,3100,900,1800", Grid(TestSupport.Part(saved, "word/document.xml")));
    }

    [Fact]
    public void HeadersEndingInATableGainNoParagraph()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.StartTable();
        b.InsertCell();
        b.Write("cell");
        b.EndRow();
        b.EndTable();
        // The builder leaves a paragraph after the table; a file made elsewhere need not have one.
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(doc), "word/header1.xml", x => Regex.Replace(x!, "</w:tbl>.*</w:hdr>$", "</w:tbl></w:hdr>", RegexOptions.Singleline));
        Assert.EndsWith("</w:tbl></w:hdr>", TestSupport.Part(bytes, "word/header1.xml"));
        var header = TestSupport.Part(Cycle(bytes), "word/header1.xml");
        Assert.EndsWith("</w:tbl></w:hdr>", header);
    }

    private const string Control = @"<w:sdt><w:sdtPr><w:alias w:val=""Client""/><w:id w:val=""7""/></w:sdtPr><w:sdtContent><w:p><w:r><w:t>Contoso Ltd</w:t></w:r></w:p></w:sdtContent></w:sdt>";

    [Fact]
    public void BodyEndingInAContentControlShowsItsTextAndGainsNoParagraph()
    {
        var bytes = WithBody("<w:p><w:r><w:t>Client:</w:t></w:r><w:smartTag w:uri=\"urn:x\" w:element=\"place\"><w:r><w:t xml:space=\"preserve\"> Paris</w:t></w:r></w:smartTag></w:p>" + Control);
        var doc = new Document(new MemoryStream(bytes));
        Assert.Equal("Client: Paris\rContoso Ltd\f", doc.GetText());
        var control = (Markup.StructuredDocumentTag)doc.FirstSection!.Body!.LastChild!;
        Assert.Equal((Markup.MarkupLevel.Block, "Client", 7), (control.Level, control.Title, control.Id));
        Assert.Equal("Contoso Ltd\f", control.GetText());
        var tag = (Markup.SmartTag)doc.GetChild(NodeType.SmartTag, 0, true)!;
        Assert.Equal(("place", "urn:x", " Paris"), (tag.Element, tag.Uri, tag.GetText()));
        Assert.Equal(1, doc.Range.Replace("Contoso", "Fabrikam"));
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        Assert.Contains("<w:alias w:val=\"Client\" />", xml.Replace("\"/>", "\" />"));
        Assert.Matches("Fabrikam Ltd</w:t></w:r></w:p></w:sdtContent></w:sdt><w:sectPr", xml);
        Assert.Contains("w:element=\"place\"", xml);
    }

    [Fact]
    public void SplittingAParagraphInsideAControlKeepsTheMarkupBalanced()
    {
        var bytes = WithBody("<w:p><w:sdt><w:sdtPr><w:id w:val=\"3\"/></w:sdtPr><w:sdtContent><w:r><w:t>one two</w:t></w:r></w:sdtContent></w:sdt><w:r><w:t>after</w:t></w:r></w:p>");
        var doc = new Document(new MemoryStream(bytes));
        var b = new DocumentBuilder(doc);
        var run = (Run)doc.GetChild(NodeType.Run, 0, true)!;
        run.Text = "one ";
        var two = run.ParentNode!.InsertAfter(new Run(doc, "two"), run);
        b.MoveTo(two);
        b.InsertParagraph();
        b.Write("new ");
        var saved = TestSupport.ToBytes(doc);
        // Loading parses the whole part: unbalanced markup would be refused here.
        var back = new Document(new MemoryStream(saved));
        Assert.Equal(doc.GetText(), back.GetText());
        // Each paragraph holds a whole control, the second a copy of the first's properties.
        Assert.Equal(2, back.GetChildNodes(NodeType.StructuredDocumentTag, true).Count);
        Assert.Equal("one \rnew twoafter\f", back.GetText());
    }

    [Fact]
    public void NotesReferencedFromContentKeptAsReadKeepTheirText()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("x");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "kept note");
        b.Writeln();
        b.Write("y");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "model note");
        var bytes = TestSupport.ToBytes(doc);
        // The first reference moves into a text box, which the model keeps as read.
        var edited = TestSupport.WithPart(bytes, "word/document.xml", x =>
        {
            int at = x!.IndexOf("<w:r><w:rPr><w:rStyle w:val=\"FootnoteReference\"");
            int end = x.IndexOf("</w:r>", at) + 6;
            var reference = x[at..end];
            return x[..at] + "<w:r><w:pict><v:shape xmlns:v=\"urn:schemas-microsoft-com:vml\"><v:textbox><w:txbxContent><w:p>" + reference +
                   "</w:p></w:txbxContent></v:textbox></v:shape></w:pict></w:r>" + x[end..];
        });
        var saved = Cycle(edited, d => new DocumentBuilder(d).Writeln("added"));
        var notes = TestSupport.Part(saved, "word/footnotes.xml");
        var document = TestSupport.Part(saved, "word/document.xml");
        string NoteText(string id) => Regex.Match(notes, $"<w:footnote w:id=\"{id}\">(.*?)</w:footnote>").Groups[1].Value;
        var ids = Regex.Matches(document, "footnoteReference w:id=\"(\\d+)\"").Select(m => m.Groups[1].Value).ToArray();
        Assert.Equal(2, ids.Length);
        Assert.Contains("kept note", NoteText(ids[0]));
        Assert.Contains("model note", NoteText(ids[1]));
    }

    [Fact]
    public void SymbolsAndLegacyPicturesReachTextAndMarkdown()
    {
        var png = Convert.FromBase64String("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mP8z8BQDwAEhQGAhKmMIQAAAABJRU5ErkJggg==");
        var doc = new Document();
        new DocumentBuilder(doc).InsertImage(png);
        var bytes = TestSupport.ToBytes(doc);
        var rel = Regex.Match(TestSupport.Part(bytes, "word/document.xml"), "r:embed=\"(\\w+)\"").Groups[1].Value;
        var edited = TestSupport.WithPart(bytes, "word/document.xml", x => Regex.Replace(x!, "<w:drawing>.*</w:drawing>",
            "<w:pict><v:shape xmlns:v=\"urn:schemas-microsoft-com:vml\" style=\"width:36pt;height:18pt\" alt=\"logo\"><v:imagedata r:id=\"" + rel + "\"/></v:shape></w:pict></w:r>" +
            "<w:r><w:sym w:font=\"Symbol\" w:char=\"2665\"/>"));
        var loaded = new Document(new MemoryStream(edited));
        var shape = (Shape)loaded.GetChild(NodeType.Shape, 0, true)!;
        Assert.Equal(36, shape.Width, 3);
        Assert.Equal("logo", shape.AlternativeText);
        Assert.Contains("\u2665", loaded.GetText());
        Assert.Contains("\u2665", TestSupport.ToText(loaded, SaveFormat.Text));
        var md = TestSupport.ToText(loaded, SaveFormat.Markdown);
        Assert.Contains("![logo](data:image/png;base64,", md);
        Assert.Contains("\u2665", md);
        var again = TestSupport.Part(Cycle(edited), "word/document.xml");
        Assert.Contains("<v:imagedata r:id=\"" + rel + "\"", again);
        Assert.Contains("w:char=\"2665\"", again);
    }

    private static byte[] AsStrict(byte[] docx)
    {
        foreach (var part in new[] { "word/document.xml", "_rels/.rels", "word/_rels/document.xml.rels", "word/styles.xml", "docProps/app.xml" })
        {
            docx = TestSupport.WithPart(docx, part, x => x == null ? null : Regex.Replace(x,
                @"http://schemas\.openxmlformats\.org/(?!package/)(\w+)/2006/([\w-]+)",
                m => "http://purl.oclc.org/ooxml/" + m.Groups[1].Value + "/" + m.Groups[2].Value.Replace("extended-properties", "extendedProperties")));
        }
        return TestSupport.WithPart(docx, "word/document.xml", x => x!.Replace("<w:document ", "<w:document w:conformance=\"strict\" "));
    }

    [Fact]
    public void StrictDocumentsLoadAndSaveAsTransitionalUnlessAskedOtherwise()
    {
        var doc = new Document();
        new DocumentBuilder(doc).Writeln("strict text");
        var strict = AsStrict(TestSupport.ToBytes(doc));
        Assert.Contains("purl.oclc.org/ooxml/wordprocessingml/main", TestSupport.Part(strict, "word/document.xml"));
        var loaded = new Document(new MemoryStream(strict));
        Assert.StartsWith("strict text", loaded.GetText());
        var transitional = TestSupport.ToBytes(loaded);
        var xml = TestSupport.Part(transitional, "word/document.xml");
        Assert.DoesNotContain("purl.oclc.org", xml);
        Assert.DoesNotContain("conformance", xml);
        Assert.DoesNotContain("purl.oclc.org", TestSupport.Part(transitional, "_rels/.rels"));

        var ms = new MemoryStream();
        loaded.Save(ms, new OoxmlSaveOptions { Compliance = OoxmlCompliance.Iso29500_2008_Strict });
        var asked = ms.ToArray();
        Assert.Contains("w:conformance=\"strict\"", TestSupport.Part(asked, "word/document.xml"));
        Assert.Contains("http://purl.oclc.org/ooxml/officeDocument/relationships/officeDocument", TestSupport.Part(asked, "_rels/.rels"));
        Assert.Contains("http://schemas.openxmlformats.org/package/2006/relationships", TestSupport.Part(asked, "_rels/.rels"));
        Assert.StartsWith("strict text", new Document(new MemoryStream(asked)).GetText());
        Assert.Throws<UnsupportedFileFormatException>(() => new OoxmlSaveOptions { Compliance = OoxmlCompliance.Ecma376_2006 });
    }

    [Fact]
    public void DocumentTypeDeclarationIsReportedAsDamageOfTheFile()
    {
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            x => "<?xml version=\"1.0\"?><!DOCTYPE d [<!ENTITY a \"aa\">]>" + x![(x!.IndexOf("?>") + 2)..]);
        var e = Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(bytes)));
        Assert.Contains("word/document.xml", e.Message);
        Assert.Contains("document type", e.Message);
        Assert.DoesNotContain("XmlReaderSettings", e.Message);
        Assert.DoesNotContain("DtdProcessing", e.Message);
        var rels = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "_rels/.rels", x => "<!DOCTYPE r>" + x![(x!.IndexOf("?>") + 2)..]);
        Assert.DoesNotContain("DtdProcessing", Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(rels))).Message);
    }

    private const string TextBox =
        "<w:r><mc:AlternateContent xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\">" +
        "<mc:Choice Requires=\"wps\"><w:drawing><wp:anchor xmlns:wp=\"http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing\"><wp:extent cx=\"914400\" cy=\"457200\"/>" +
        "<a:graphic xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\"><a:graphicData uri=\"http://schemas.microsoft.com/office/word/2010/wordprocessingShape\">" +
        "<wps:wsp xmlns:wps=\"http://schemas.microsoft.com/office/word/2010/wordprocessingShape\"><wps:txbx><w:txbxContent><w:p><w:r><w:t>Boxed ACME text</w:t></w:r></w:p><w:p><w:r><w:t>second line</w:t></w:r></w:p></w:txbxContent></wps:txbx></wps:wsp>" +
        "</a:graphicData></a:graphic></wp:anchor></w:drawing></mc:Choice>" +
        "<mc:Fallback><w:pict><v:rect xmlns:v=\"urn:schemas-microsoft-com:vml\" style=\"width:72pt;height:36pt\"><v:textbox><w:txbxContent><w:p><w:r><w:t>Boxed ACME text</w:t></w:r></w:p><w:p><w:r><w:t>second line</w:t></w:r></w:p></w:txbxContent></v:textbox></v:rect></w:pict></mc:Fallback>" +
        "</mc:AlternateContent></w:r>";

    [Fact]
    public void TextBoxesAreNodesWhoseTextIsFoundReplacedAndWrittenToEveryCopy()
    {
        var bytes = WithBody("<w:p><w:r><w:t xml:space=\"preserve\">Before </w:t></w:r>" + TextBox + "<w:r><w:t xml:space=\"preserve\"> after</w:t></w:r></w:p>");
        var doc = new Document(new MemoryStream(bytes));
        var box = (Shape)doc.GetChild(NodeType.Shape, 0, true)!;
        Assert.True(box.IsTextBox);
        Assert.Equal(2, box.GetChildNodes(NodeType.Paragraph, false).Count);
        Assert.Contains("Boxed ACME text\rsecond line", doc.GetText());
        Assert.Equal(1, doc.Range.Replace("ACME", "Contoso"));
        var saved = TestSupport.ToBytes(doc);
        var xml = TestSupport.Part(saved, "word/document.xml");
        Assert.Equal(2, Regex.Matches(xml, "Boxed Contoso text").Count);
        Assert.DoesNotContain("ACME", xml);
        Assert.Contains("<v:textbox>", xml);
        var back = new Document(new MemoryStream(saved));
        Assert.Equal(doc.GetText(), back.GetText());
        Assert.Contains("Boxed Contoso text", TestSupport.ToText(back, SaveFormat.Markdown));
        Assert.Contains("Before", TestSupport.ToText(back, SaveFormat.Text));
    }
}
