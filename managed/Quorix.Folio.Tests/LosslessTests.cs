using Quorix.Folio.Drawing;

namespace Quorix.Folio.Tests;

/// <summary>Load then save must keep what the user did not touch, including markup the model does not know.</summary>
public class LosslessTests
{
    // Shaped like a word processor's own output: ids on paragraphs and runs, proofing marks,
    // tracked changes, compatibility blocks and a section with a header reference.
    private const string WordLikeBody = @"<w:body>
<w:p w14:paraId=""1A2B3C4D"" w14:textId=""77665544"" w:rsidR=""00A1"" w:rsidRDefault=""00A1""><w:pPr><w:pStyle w:val=""Heading1""/></w:pPr><w:r w:rsidRPr=""00B2""><w:t>Heading text</w:t></w:r></w:p>
<w:p w14:paraId=""2A2B3C4D""><w:proofErr w:type=""spellStart""/><w:r><w:t xml:space=""preserve"">Speling </w:t></w:r><w:proofErr w:type=""spellEnd""/><w:ins w:id=""5"" w:author=""Rev"" w:date=""2024-01-01T00:00:00Z""><w:r><w:t>inserted</w:t></w:r></w:ins><w:del w:id=""6"" w:author=""Rev""><w:r><w:delText>deleted</w:delText></w:r></w:del></w:p>
<w:p><w:r><mc:AlternateContent><mc:Choice Requires=""wps""><w:t>choice</w:t></mc:Choice><mc:Fallback><w:t>fallback</w:t></mc:Fallback></mc:AlternateContent></w:r><w:r><w:sym w:font=""Wingdings"" w:char=""F04A""/></w:r></w:p>
<w:sectPr w:rsidR=""00C3""><w:pgSz w:w=""11906"" w:h=""16838""/><w:pgMar w:top=""1440"" w:right=""1440"" w:bottom=""1440"" w:left=""1440"" w:header=""708"" w:footer=""708"" w:gutter=""0""/><w:cols w:space=""708""/><w:docGrid w:linePitch=""360""/></w:sectPr>
</w:body>";

    private static byte[] WordLike()
    {
        var doc = new Document();
        doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Heading1);
        var bytes = TestSupport.ToBytes(doc);
        return TestSupport.WithPart(bytes, "word/document.xml", x =>
        {
            var head = x![..x!.IndexOf("<w:body>")];
            head = head.Replace("<w:document ", "<w:document xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" " +
                "xmlns:w14=\"http://schemas.microsoft.com/office/word/2010/wordml\" mc:Ignorable=\"w14\" ");
            return head + WordLikeBody + "</w:document>";
        });
    }

    [Fact]
    public void ForeignMarkupAndAttributesSurviveLoadAndSave()
    {
        var doc = new Document(new MemoryStream(WordLike()));
        Assert.Equal("Heading text", doc.FirstSection!.Body!.FirstParagraph!.GetText().TrimEnd('\r'));
        Assert.Equal(StyleIdentifier.Heading1, doc.FirstSection.Body.FirstParagraph.ParagraphFormat.StyleIdentifier);
        Assert.Equal(595.3, doc.FirstSection.PageSetup.PageWidth, 1);
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        foreach (var kept in new[]
        {
            "w14:paraId=\"1A2B3C4D\"", "w14:textId=\"77665544\"", "w:rsidRPr=\"00B2\"", "mc:Ignorable=\"w14\"",
            "<w:proofErr w:type=\"spellStart\" />", "<w:ins w:id=\"5\" w:author=\"Rev\"", "<w:delText>deleted</w:delText>",
            "<mc:Fallback><w:t>fallback</w:t></mc:Fallback>", "w:char=\"F04A\"", "<w:sectPr w:rsidR=\"00C3\">", "<w:docGrid w:linePitch=\"360\" />",
        })
            Assert.Contains(kept, xml);
    }

    [Fact]
    public void SavingTwiceGivesTheSameBytes()
    {
        foreach (var source in new[] { WordLike(), TestSupport.ToBytes(BuilderSample()) })
        {
            var first = TestSupport.ToBytes(TestSupport.Built(new Document(new MemoryStream(source))));
            var second = TestSupport.ToBytes(TestSupport.Built(new Document(new MemoryStream(first))));
            foreach (var part in new[] { "word/document.xml", "word/styles.xml", "[Content_Types].xml", "word/_rels/document.xml.rels" })
                Assert.Equal(TestSupport.Part(first, part), TestSupport.Part(second, part));
        }
    }

    private static Document BuilderSample()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.InsertImage(TestSupport.Png(4, 4));
        b.Write("Page ");
        b.InsertField("PAGE", "1");
        b.MoveToDocumentEnd();
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("numbered");
        b.ListFormat.RemoveNumbers();
        b.InsertFootnote(Notes.FootnoteType.Endnote, "end note");
        return doc;
    }

    [Fact]
    public void ClonesOfALoadedFileKeepHeaderPicturesAndRelationships()
    {
        var loaded = new Document(new MemoryStream(TestSupport.ToBytes(BuilderSample())));
        var clone = loaded.Clone();
        var back = TestSupport.RoundTrip(clone);
        var header = back.FirstSection!.HeadersFooters[HeaderFooterType.HeaderPrimary]!;
        var shape = (Shape)header.GetChild(NodeType.Shape, 0, true)!;
        Assert.Equal(TestSupport.Png(4, 4), shape.ImageData.ImageBytes);
        Assert.Contains("Page", header.GetText());
        var end = (Notes.Footnote)back.GetChild(NodeType.Footnote, 0, true)!;
        Assert.Equal(Notes.FootnoteType.Endnote, end.FootnoteType);
        Assert.Equal("end note", end.GetText().Trim());
    }

    [Fact]
    public void EditsToOneSectionDoNotDisturbOthers()
    {
        var src = TestSupport.ToBytes(BuilderSample());
        var doc = new Document(new MemoryStream(src));
        doc.FirstSection!.Body!.FirstParagraph!.Runs.ToArray().ToList().ForEach(r => r.Text = r.Text.ToUpperInvariant());
        var again = new Document(new MemoryStream(TestSupport.ToBytes(doc)));
        Assert.StartsWith("NUMBERED", again.FirstSection!.Body!.FirstParagraph!.GetText());
        Assert.Contains("Page", again.FirstSection.HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetText());
        Assert.True(again.FirstSection.Body.FirstParagraph.IsListItem);
    }

    [Fact]
    public void LinkAndSimpleFieldElementsKeepTheirFormUnlessEdited()
    {
        var bytes = TestSupport.ToBytes(new Document());
        bytes = TestSupport.WithPart(bytes, "word/_rels/document.xml.rels", x => x!.Replace("</Relationships>",
            "<Relationship Id=\"rIdLink\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/hyperlink\" " +
            "Target=\"https://example.org/\" TargetMode=\"External\"/></Relationships>"));
        bytes = TestSupport.WithPart(bytes, "word/document.xml", x => x!.Replace("<w:body>",
            "<w:body><w:p><w:hyperlink r:id=\"rIdLink\" w:history=\"1\"><w:r><w:t>site</w:t></w:r></w:hyperlink>" +
            "<w:fldSimple w:instr=\" PAGE \"><w:r><w:t>3</w:t></w:r></w:fldSimple></w:p>"));
        var doc = new Document(new MemoryStream(bytes));
        var link = doc.Range.Fields[0];
        Assert.Equal(Fields.FieldType.FieldHyperlink, link.Type);
        Assert.Contains("https://example.org/", link.GetFieldCode());
        Assert.Equal("site", link.Result);
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        Assert.Contains("<w:hyperlink r:id=\"rIdLink\" w:history=\"1\"><w:r><w:t>site</w:t></w:r></w:hyperlink>", xml);
        Assert.Contains("<w:fldSimple w:instr=\" PAGE \"><w:r><w:t>3</w:t></w:r></w:fldSimple>", xml);
        Assert.DoesNotContain("fldChar", xml);

        // A changed result keeps the form; a changed code becomes an ordinary field.
        link.Result = "the site";
        ((Run)doc.Range.Fields[1].Start.NextSibling!).Text = " NUMPAGES ";
        xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        Assert.Contains("<w:t>the site</w:t></w:r></w:hyperlink>", xml);
        Assert.DoesNotContain("fldSimple", xml);
        Assert.Contains("<w:instrText xml:space=\"preserve\"> NUMPAGES </w:instrText>", xml);
    }
}
