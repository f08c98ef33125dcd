using System.Text.RegularExpressions;
using System.Xml.Linq;

namespace Quorix.Folio.Tests;

public class CommentThreadTests
{
    private static readonly XNamespace W = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";
    private static readonly XNamespace W14 = "http://schemas.microsoft.com/office/word/2010/wordml";
    private static readonly XNamespace W15 = "http://schemas.microsoft.com/office/word/2012/wordml";
    private const string ThreadPart = "word/commentsExtended.xml";

    /// <summary>"before commented after", the middle run covered by a comment's range, as a file would have it.</summary>
    private static Document Anchored()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("before ");
        b.Write("commented");
        b.Write(" after");
        var c = new Comment(doc, "Ann", "A", new DateTime(2024, 5, 6, 7, 8, 9, DateTimeKind.Utc));
        c.SetText("Is this right?");
        b.CurrentParagraph.AppendChild(c);
        var back = TestSupport.RoundTrip(doc);
        var p = back.FirstSection!.Body.FirstParagraph!;
        var parent = back.Comments[0];
        var runs = p.Runs.ToArray();
        var middle = runs.Single(r => r.Text == "commented");
        p.InsertBefore(new CommentRangeStart(back, 0), middle);
        p.InsertAfter(new CommentRangeEnd(back, 0), middle);
        Assert.Equal(0, parent.Id);
        return back;
    }

    /// <summary>The anchored comment with two replies.</summary>
    private static (Document Doc, Comment Parent, Comment Bo, Comment Cy) Thread()
    {
        var doc = Anchored();
        var parent = doc.Comments[0];
        return (doc, parent, parent.AddReply("Bo", "B", DateTime.MinValue, "one"), parent.AddReply("Cy", "C", DateTime.MinValue, "two"));
    }

    private static List<(string Kind, int Id)> Markers(Document doc) =>
        doc.GetChildNodes(NodeType.Any, true).ToArray().Select(n => n switch
        {
            CommentRangeStart s => ("start", s.Id),
            CommentRangeEnd e => ("end", e.Id),
            Comment c => ("comment", c.Id),
            _ => ("", -1),
        }).Where(m => m.Item1 != "").ToList();

    [Fact]
    public void ThreadRoundTripsWithRepliesAndDoneMarks()
    {
        var doc = Anchored();
        var parent = doc.Comments[0];
        var bo = parent.AddReply("Bo", "B", new DateTime(2024, 5, 7, 1, 2, 3, DateTimeKind.Utc), "Yes");
        var cy = parent.AddReply("Cy", "C", new DateTime(2024, 5, 8, 1, 2, 3, DateTimeKind.Utc), "Agreed");
        bo.Done = true;

        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(3, back.Comments.Count);
        var p2 = back.Comments[0];
        Assert.Null(p2.Ancestor);
        Assert.False(p2.Done);
        Assert.Equal(new[] { "Bo", "Cy" }, p2.Replies.ToArray().Select(r => r.Author));
        var (b2, c2) = (p2.Replies[0], p2.Replies[1]);
        Assert.Same(p2, b2.Ancestor);
        Assert.Same(p2, c2.Ancestor);
        Assert.True(b2.Done);
        Assert.False(c2.Done);
        Assert.Equal("Agreed", c2.GetText().TrimEnd('\r', '\f'));
        Assert.Equal("B", b2.Initial);
        Assert.Empty(b2.Replies);
        Assert.Equal("before commented after\f", back.GetText());

        // Saving again gives the same thread part: identifiers are kept, not made afresh.
        var once = TestSupport.ToBytes(back);
        var twice = TestSupport.ToBytes(TestSupport.RoundTrip(back));
        Assert.Equal(TestSupport.Part(once, ThreadPart), TestSupport.Part(twice, ThreadPart));
        Assert.Equal(TestSupport.Part(once, "word/comments.xml"), TestSupport.Part(twice, "word/comments.xml"));
    }

    [Fact]
    public void RepliesShareTheParentsRangeAndFollowItInOrder()
    {
        var (doc, parent, bo, cy) = Thread();
        Assert.NotEqual(bo.Id, cy.Id);
        Assert.NotEqual(0, bo.Id);
        // Ranges open and close together around the same text; comments follow in thread order.
        Assert.Equal(new List<(string, int)>
        {
            ("start", 0), ("start", bo.Id), ("start", cy.Id),
            ("end", 0), ("end", bo.Id), ("end", cy.Id),
            ("comment", 0), ("comment", bo.Id), ("comment", cy.Id),
        }, Markers(doc));
        Assert.Equal(new[] { parent, bo, cy }, doc.Comments.ToArray());
        Assert.Throws<InvalidOperationException>(() => bo.AddReply("Di", "D", DateTime.MinValue, "nested"));
        Assert.Throws<InvalidOperationException>(() => new Comment(doc).AddReply("Di", "D", DateTime.MinValue, "loose"));
    }

    [Fact]
    public void SavedThreadIsConsistentAcrossTheParts()
    {
        var (doc, _, bo, _) = Thread();
        bo.Done = true;
        var bytes = TestSupport.ToBytes(doc);

        var body = XDocument.Parse(TestSupport.Part(bytes, "word/document.xml"));
        var comments = XDocument.Parse(TestSupport.Part(bytes, "word/comments.xml"));
        var thread = XDocument.Parse(TestSupport.Part(bytes, ThreadPart));
        var ids = comments.Descendants(W + "comment").Select(c => (string)c.Attribute(W + "id")!).ToList();
        Assert.Equal(3, ids.Distinct().Count());
        foreach (var kind in new[] { "commentRangeStart", "commentRangeEnd", "commentReference" })
            Assert.Equal(ids.OrderBy(x => x), body.Descendants(W + kind).Select(e => (string)e.Attribute(W + "id")!).OrderBy(x => x));

        // Each comment's last paragraph names its thread entry.
        var paraIds = comments.Descendants(W + "comment")
            .Select(c => (string)c.Elements(W + "p").Last().Attribute(W14 + "paraId")!).ToList();
        Assert.All(paraIds, id => Assert.Matches("^[0-9A-F]{8}$", id));
        Assert.All(paraIds, id => Assert.True(Convert.ToUInt32(id, 16) < 0x80000000u));
        Assert.Equal(3, paraIds.Distinct().Count());
        var entries = thread.Root!.Elements(W15 + "commentEx").ToList();
        Assert.Equal(paraIds, entries.Select(e => (string)e.Attribute(W15 + "paraId")!));
        Assert.Null(entries[0].Attribute(W15 + "paraIdParent"));
        Assert.Equal(paraIds[0], (string?)entries[1].Attribute(W15 + "paraIdParent"));
        Assert.Equal(paraIds[0], (string?)entries[2].Attribute(W15 + "paraIdParent"));
        Assert.Equal(new[] { "0", "1", "0" }, entries.Select(e => (string)e.Attribute(W15 + "done")!));

        Assert.Contains("PartName=\"/word/commentsExtended.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.wordprocessingml.commentsExtended+xml\"",
            TestSupport.Part(bytes, "[Content_Types].xml"));
        Assert.Matches("Type=\"http://schemas.microsoft.com/office/2011/relationships/commentsExtended\" Target=\"commentsExtended.xml\"",
            TestSupport.Part(bytes, "word/_rels/document.xml.rels"));
    }

    [Fact]
    public void RemovingRepliesTakesTheirRangesAndEntries()
    {
        var (doc, parent, bo, cy) = Thread();
        var replies = parent.Replies;
        Assert.Equal(2, replies.Count);

        parent.RemoveReply(bo);
        Assert.Equal(1, replies.Count);
        Assert.Same(cy, replies[0]);
        Assert.Null(bo.Ancestor);
        Assert.Null(bo.ParentNode);
        Assert.DoesNotContain(Markers(doc), m => m.Id == bo.Id);
        Assert.Equal(3, Markers(doc).Count(m => m.Id == cy.Id));
        Assert.Throws<ArgumentException>(() => parent.RemoveReply(bo));
        Assert.Throws<ArgumentException>(() => cy.RemoveReply(parent));

        var bytes = TestSupport.ToBytes(doc);
        var thread = XDocument.Parse(TestSupport.Part(bytes, ThreadPart));
        Assert.Equal(2, thread.Root!.Elements(W15 + "commentEx").Count());
        Assert.DoesNotContain("w:id=\"" + bo.Id + "\"", TestSupport.Part(bytes, "word/document.xml"));

        parent.RemoveAllReplies();
        Assert.Equal(0, replies.Count);
        Assert.Equal(new List<(string, int)> { ("start", 0), ("end", 0), ("comment", 0) }, Markers(doc));
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(1, back.Comments.Count);
        Assert.Empty(back.Comments[0].Replies);
        Assert.Equal("before commented after\f", back.GetText());
    }

    [Fact]
    public void FileWithoutThreadsLoadsAndSavesWithoutThem()
    {
        var doc = Anchored();
        var bytes = TestSupport.ToBytes(doc);
        Assert.DoesNotContain("commentsExtended", TestSupport.Part(bytes, "[Content_Types].xml"));
        var back = new Document(new MemoryStream(bytes));
        Assert.Null(back.Comments[0].Ancestor);
        Assert.False(back.Comments[0].Done);
        Assert.Empty(back.Comments[0].Replies);
        // Marking the comment done is what brings the part in.
        back.Comments[0].Done = true;
        Assert.True(TestSupport.RoundTrip(back).Comments[0].Done);
    }

    [Fact]
    public void ThreadPartKeepsWhatItDoesNotModelAndIdentifiersRead()
    {
        var doc = Anchored();
        doc.Comments[0].AddReply("Bo", "B", DateTime.MinValue, "one");
        var bytes = TestSupport.ToBytes(doc);
        var comments = TestSupport.Part(bytes, "word/comments.xml");
        var ids = Regex.Matches(comments, "w14:paraId=\"([0-9A-F]{8})\"").Select(m => m.Groups[1].Value).ToList();
        Assert.Equal(2, ids.Count);
        // A file's own identifiers, an extra attribute, an entry for no comment and a foreign element.
        bytes = TestSupport.WithPart(bytes, "word/comments.xml", x => x!.Replace(ids[0], "1234ABCD").Replace(ids[1], "0BADF00D"));
        bytes = TestSupport.WithPart(bytes, ThreadPart, x => x!
            .Replace(ids[0], "1234ABCD").Replace(ids[1], "0BADF00D")
            .Replace("w15:done=\"0\" />", "w15:done=\"0\" xmlns:x=\"urn:x\" x:flag=\"7\" />")
            .Replace("</w15:commentsEx>", "<w15:commentEx w15:paraId=\"00000042\" w15:done=\"1\"/><x:note xmlns:x=\"urn:x\">kept</x:note></w15:commentsEx>"));

        var back = new Document(new MemoryStream(bytes));
        Assert.Same(back.Comments[0], back.Comments[1].Ancestor);
        back.Comments[0].Done = true;
        var saved = TestSupport.ToBytes(back);
        var thread = TestSupport.Part(saved, ThreadPart);
        Assert.Contains("w15:paraId=\"1234ABCD\" w15:done=\"1\"", thread);
        Assert.Contains("w15:paraId=\"0BADF00D\" w15:paraIdParent=\"1234ABCD\"", thread);
        Assert.Equal(2, Regex.Matches(thread, "x:flag=\"7\"").Count);
        Assert.Contains("w15:paraId=\"00000042\" w15:done=\"1\"", thread);
        Assert.True(thread.Contains("<x:note xmlns:x=\"urn:x\">kept</x:note>"), thread);
        Assert.Contains("w14:paraId=\"1234ABCD\"", TestSupport.Part(saved, "word/comments.xml"));
    }

    [Fact]
    public void CopiedCommentsGetIdentifiersOfTheirOwn()
    {
        var doc = Anchored();
        var parent = doc.Comments[0];
        parent.AddReply("Bo", "B", DateTime.MinValue, "one");
        var back = TestSupport.RoundTrip(doc);
        var copy = (Comment)back.Comments[1].Clone(true);
        back.FirstSection!.Body.FirstParagraph!.AppendChild(copy);
        Assert.Same(back.Comments[0], copy.Ancestor);
        var thread = XDocument.Parse(TestSupport.Part(TestSupport.ToBytes(back), ThreadPart));
        var paraIds = thread.Root!.Elements(W15 + "commentEx").Select(e => (string)e.Attribute(W15 + "paraId")!).ToList();
        Assert.Equal(3, paraIds.Count);
        Assert.Equal(3, paraIds.Distinct().Count());
    }

    [Fact]
    public void DocumentCopiesKeepTheirThreadsAndLoopsInAFileAreCut()
    {
        var (doc, parent, bo, _) = Thread();
        var copy = doc.Clone();
        Assert.Same(copy.Comments[0], copy.Comments[1].Ancestor);
        Assert.Same(copy.Comments[0], copy.Comments[2].Ancestor);
        Assert.Equal(2, parent.Replies.Count);

        var bytes = TestSupport.ToBytes(doc);
        var thread = XDocument.Parse(TestSupport.Part(bytes, ThreadPart));
        var entries = thread.Root!.Elements(W15 + "commentEx").ToList();
        // The parent names its own reply as its parent: a loop no thread can have.
        entries[0].SetAttributeValue(W15 + "paraIdParent", (string)entries[1].Attribute(W15 + "paraId")!);
        var looped = new Document(new MemoryStream(TestSupport.WithPart(bytes, ThreadPart, _ => thread.ToString())));
        var (p2, b2) = (looped.Comments[0], looped.Comments[1]);
        Assert.Same(b2, p2.Ancestor);
        Assert.Null(b2.Ancestor);
        Assert.Same(p2, Assert.Single(b2.Replies));
    }
}
