namespace Quorix.Folio.Tests;

/// <summary>Tracked changes made in another word processor, accepted or rejected here.</summary>
public class RevisionTests
{
    private const string Body = @"<w:body>
<w:p><w:r><w:t xml:space=""preserve"">Keep </w:t></w:r><w:ins w:id=""1"" w:author=""A"" w:date=""2024-02-02T00:00:00Z""><w:r><w:t>added</w:t></w:r></w:ins><w:del w:id=""2"" w:author=""A""><w:r><w:delText>removed</w:delText></w:r></w:del><w:r><w:rPr><w:b/><w:rPrChange w:id=""3"" w:author=""A""><w:rPr><w:i/></w:rPr></w:rPrChange></w:rPr><w:t xml:space=""preserve""> styled</w:t></w:r></w:p>
<w:tbl><w:tblPr><w:tblW w:w=""0"" w:type=""auto""/></w:tblPr><w:tblGrid><w:gridCol w:w=""2000""/></w:tblGrid>
<w:tr><w:tc><w:p><w:r><w:t>old row</w:t></w:r></w:p></w:tc></w:tr>
<w:tr><w:trPr><w:ins w:id=""4"" w:author=""A""/></w:trPr><w:tc><w:p><w:r><w:t>new row</w:t></w:r></w:p></w:tc></w:tr>
</w:tbl>
<w:p/>
<w:sectPr/></w:body>";

    private static Document Tracked()
    {
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            x => x![..x!.IndexOf("<w:body>")] + Body + "</w:document>");
        return new Document(new MemoryStream(bytes));
    }

    [Fact]
    public void AcceptingMakesInsertionsAndNewFormattingFinal()
    {
        var doc = Tracked();
        Assert.True(doc.HasRevisions);
        // Before a decision the model shows neither side of the change as text.
        Assert.StartsWith("Keep  styled", doc.GetText());
        Assert.Equal(4, doc.AcceptAllRevisions());
        Assert.False(doc.HasRevisions);
        var back = TestSupport.RoundTrip(doc);
        var first = back.FirstSection!.Body!.FirstParagraph!;
        Assert.Equal("Keep added styled\r", first.GetText());
        var styled = first.Runs.ToArray().Single(r => r.Text == " styled");
        Assert.True(styled.Font.Bold);
        Assert.False(styled.Font.Italic);
        var table = back.FirstSection.Body.Tables[0];
        Assert.Equal(2, table.Rows.Count);
        var xml = TestSupport.Part(TestSupport.ToBytes(back), "word/document.xml");
        Assert.DoesNotContain("w:ins", xml);
        Assert.DoesNotContain("w:del", xml);
        Assert.DoesNotContain("rPrChange", xml);
    }

    [Fact]
    public void RejectingRestoresDeletionsAndOldFormatting()
    {
        var doc = Tracked();
        Assert.Equal(4, doc.RejectAllRevisions());
        var first = doc.FirstSection!.Body!.FirstParagraph!;
        Assert.Equal("Keep removed styled\r", first.GetText());
        var styled = first.Runs.ToArray().Single(r => r.Text == " styled");
        Assert.False(styled.Font.Bold);
        Assert.True(styled.Font.Italic);
        Assert.Equal(1, doc.FirstSection.Body.Tables[0].Rows.Count);
        Assert.Equal(0, doc.RejectAllRevisions());
        Assert.Contains("Keep removed styled", TestSupport.ToText(doc, SaveFormat.Text));
    }

    [Fact]
    public void DecisionsAreTheFirstUseOfALoadedDocument()
    {
        // Nothing has built the model yet: the decision must build it, with what the load kept,
        // here a prefix that only the root declares, used inside the tracked insertion.
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            x => x![..x!.IndexOf("<w:body>")].Replace("<w:document ", "<w:document xmlns:x=\"urn:x\" ") +
                 Body.Replace("<w:r><w:t>added", "<w:r x:mark=\"1\"><w:t>added") + "</w:document>");
        Assert.Equal(4, new Document(new MemoryStream(bytes)).RejectAllRevisions());
        var doc = new Document(new MemoryStream(bytes));
        Assert.Equal(4, doc.AcceptAllRevisions());
        Assert.Equal("Keep added styled\r", TestSupport.RoundTrip(doc).FirstSection!.Body!.FirstParagraph!.GetText());
    }
}
