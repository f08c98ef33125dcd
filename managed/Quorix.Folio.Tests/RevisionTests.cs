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
        // Before a decision both sides of a change are nodes of the tree, so its text has both.
        Assert.StartsWith("Keep addedremoved styled", doc.GetText());
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

    [Fact]
    public void EachChangeIsListedWithItsKindAuthorAndDate()
    {
        var doc = Tracked();
        var all = doc.Revisions.ToArray();
        Assert.Equal(new[] { RevisionType.Insertion, RevisionType.Deletion, RevisionType.FormatChange, RevisionType.Insertion },
                     all.Select(r => r.RevisionType));
        Assert.All(all, r => Assert.Equal("A", r.Author));
        Assert.Equal(new DateTime(2024, 2, 2, 0, 0, 0, DateTimeKind.Utc), all[0].DateTime);
        Assert.Equal("added", all[0].ParentNode.GetText());
        Assert.IsType<Tables.Row>(all[3].ParentNode);
        Assert.Equal(new[] { "added", "removed" }, doc.Revisions.Groups.Select(g => g.Text));
    }

    [Fact]
    public void OneChangeIsDecidedAloneAndTheRestSurviveASave()
    {
        var doc = Tracked();
        var all = doc.Revisions.ToArray();
        all[1].Accept();   // the deletion goes
        all[0].Reject();   // the insertion goes
        // A decided change stays decided: a second decision changes nothing.
        all[0].Accept();
        all[1].Reject();
        Assert.StartsWith("Keep  styled", doc.GetText());
        var format = doc.Revisions[0];
        format.Accept();
        format.Reject();
        Assert.True(((Run)doc.GetChildNodes(NodeType.Run, true).Cast<Node>().Last(n => n.GetText() == " styled")).Font.Bold);
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(new[] { RevisionType.Insertion }, back.Revisions.Select(r => r.RevisionType));
        var xml = TestSupport.Part(TestSupport.ToBytes(back), "word/document.xml");
        Assert.DoesNotContain("delText", xml);
        Assert.DoesNotContain("rPrChange", xml);
    }

    [Fact]
    public void UndecidedChangesAreWrittenBackAsChanges()
    {
        var doc = Tracked();
        new DocumentBuilder(doc).Writeln("touched");
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(doc.Revisions.Select(r => (r.RevisionType, r.Author, r.ParentNode.GetText())),
                     back.Revisions.Select(r => (r.RevisionType, r.Author, r.ParentNode.GetText())));
        var xml = TestSupport.Part(TestSupport.ToBytes(back), "word/document.xml");
        Assert.Contains("<w:delText>removed</w:delText>", xml);
        Assert.Contains("w:author=\"A\"", xml);
        // Readers show the document as it reads with the deletions made.
        Assert.Contains("Keep added styled", TestSupport.ToText(back, SaveFormat.Text));
    }

    [Fact]
    public void DeletedParagraphMarkJoinsTheParagraphsWhenAccepted()
    {
        const string body = @"<w:body><w:p><w:pPr><w:rPr><w:del w:id=""9"" w:author=""B""/></w:rPr></w:pPr><w:r><w:t>first</w:t></w:r></w:p>
<w:p><w:pPr><w:jc w:val=""center""/></w:pPr><w:r><w:t>second</w:t></w:r></w:p><w:sectPr/></w:body>";
        Document Load() => new Document(new MemoryStream(TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            x => x![..x!.IndexOf("<w:body>")] + body + "</w:document>")));
        var accepted = Load();
        Assert.Equal(RevisionType.Deletion, accepted.Revisions.Single().RevisionType);
        accepted.AcceptAllRevisions();
        var p = accepted.FirstSection!.Body!.FirstParagraph!;
        Assert.Equal("firstsecond\f", accepted.GetText());
        Assert.Equal(ParagraphAlignment.Center, p.ParagraphFormat.Alignment);
        var rejected = Load();
        rejected.RejectAllRevisions();
        Assert.Equal("first\rsecond\f", rejected.GetText());
        Assert.False(rejected.HasRevisions);
    }

    [Fact]
    public void NotesAndCommentsInsideChangesKeepTheirText()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("Body");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "note one");
        b.Write(" more");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "note two");
        var bytes = TestSupport.ToBytes(doc);
        // Wrap the first note's reference in an insertion and the second in a deletion.
        var xml = TestSupport.Part(bytes, "word/document.xml");
        int first = xml.IndexOf("<w:r><w:rPr><w:rStyle w:val=\"FootnoteReference\"");
        int firstEnd = xml.IndexOf("</w:r>", first) + 6;
        int second = xml.IndexOf("<w:r><w:rPr><w:rStyle w:val=\"FootnoteReference\"", firstEnd);
        int secondEnd = xml.IndexOf("</w:r>", second) + 6;
        Assert.True(first > 0 && second > 0, xml);
        var edited = xml[..first] + "<w:ins w:id=\"50\" w:author=\"C\">" + xml[first..firstEnd] + "</w:ins>" + xml[firstEnd..second] +
                     "<w:del w:id=\"51\" w:author=\"C\">" + xml[second..secondEnd] + "</w:del>" + xml[secondEnd..];
        var loaded = new Document(new MemoryStream(TestSupport.WithPart(bytes, "word/document.xml", _ => edited)));
        _ = loaded.FirstSection;
        var saved = TestSupport.RoundTrip(loaded);
        var notes = saved.GetChildNodes(NodeType.Footnote, true).Cast<Notes.Footnote>().Select(f => f.GetText().Trim()).ToArray();
        Assert.Equal(new[] { "note one", "note two" }, notes);
        Assert.Equal(2, saved.Revisions.Count);
    }
}
