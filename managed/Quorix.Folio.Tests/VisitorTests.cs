using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class VisitorTests
{
    /// <summary>Writes one line per visit: "+Type" for a start, "-Type" for an end, "Type" for a leaf.</summary>
    private sealed class Recorder : DocumentVisitor
    {
        public readonly List<(string Mark, Node Node)> Log = new();
        public Func<Node, VisitorAction>? OnStart;

        private VisitorAction Start(Node n)
        {
            Log.Add(("+", n));
            return OnStart?.Invoke(n) ?? VisitorAction.Continue;
        }

        private VisitorAction End(Node n)
        {
            Log.Add(("-", n));
            return VisitorAction.Continue;
        }

        private VisitorAction Leaf(Node n)
        {
            Log.Add(("", n));
            return OnStart?.Invoke(n) ?? VisitorAction.Continue;
        }

        public override VisitorAction VisitDocumentStart(Document d) => Start(d);
        public override VisitorAction VisitDocumentEnd(Document d) => End(d);
        public override VisitorAction VisitSectionStart(Section s) => Start(s);
        public override VisitorAction VisitSectionEnd(Section s) => End(s);
        public override VisitorAction VisitBodyStart(Body b) => Start(b);
        public override VisitorAction VisitBodyEnd(Body b) => End(b);
        public override VisitorAction VisitHeaderFooterStart(HeaderFooter h) => Start(h);
        public override VisitorAction VisitHeaderFooterEnd(HeaderFooter h) => End(h);
        public override VisitorAction VisitParagraphStart(Paragraph p) => Start(p);
        public override VisitorAction VisitParagraphEnd(Paragraph p) => End(p);
        public override VisitorAction VisitTableStart(Table t) => Start(t);
        public override VisitorAction VisitTableEnd(Table t) => End(t);
        public override VisitorAction VisitRowStart(Row r) => Start(r);
        public override VisitorAction VisitRowEnd(Row r) => End(r);
        public override VisitorAction VisitCellStart(Cell c) => Start(c);
        public override VisitorAction VisitCellEnd(Cell c) => End(c);
        public override VisitorAction VisitCommentStart(Comment c) => Start(c);
        public override VisitorAction VisitCommentEnd(Comment c) => End(c);
        public override VisitorAction VisitFootnoteStart(Footnote f) => Start(f);
        public override VisitorAction VisitFootnoteEnd(Footnote f) => End(f);
        public override VisitorAction VisitShapeStart(Shape s) => Start(s);
        public override VisitorAction VisitShapeEnd(Shape s) => End(s);
        public override VisitorAction VisitStructuredDocumentTagStart(Markup.StructuredDocumentTag s) => Start(s);
        public override VisitorAction VisitStructuredDocumentTagEnd(Markup.StructuredDocumentTag s) => End(s);
        public override VisitorAction VisitSmartTagStart(Markup.SmartTag s) => Start(s);
        public override VisitorAction VisitSmartTagEnd(Markup.SmartTag s) => End(s);
        public override VisitorAction VisitRun(Run r) => Leaf(r);
        public override VisitorAction VisitFieldStart(FieldStart f) => Leaf(f);
        public override VisitorAction VisitFieldSeparator(FieldSeparator f) => Leaf(f);
        public override VisitorAction VisitFieldEnd(FieldEnd f) => Leaf(f);
        public override VisitorAction VisitBookmarkStart(BookmarkStart b) => Leaf(b);
        public override VisitorAction VisitBookmarkEnd(BookmarkEnd b) => Leaf(b);
        public override VisitorAction VisitCommentRangeStart(CommentRangeStart c) => Leaf(c);
        public override VisitorAction VisitCommentRangeEnd(CommentRangeEnd c) => Leaf(c);
    }

    // A document of every node kind, its shape drawn from the seed.
    private static Document Generated(int seed)
    {
        var rnd = new Random(seed);
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("header " + seed);
        b.MoveToDocumentEnd();
        for (int i = 0, n = 3 + rnd.Next(6); i < n; i++)
        {
            switch (rnd.Next(6))
            {
                case 0:
                    b.StartTable();
                    for (int r = 0; r < 1 + rnd.Next(3); r++)
                    {
                        for (int c = 0; c < 1 + rnd.Next(3); c++) { b.InsertCell(); b.Write($"c{r}{c}"); }
                        b.EndRow();
                    }
                    b.EndTable();
                    break;
                case 1:
                    b.StartBookmark("bm" + i); b.Write("marked"); b.EndBookmark("bm" + i);
                    break;
                case 2:
                    b.InsertField("PAGE", "1");
                    break;
                case 3:
                    b.Write("note here"); b.InsertFootnote(FootnoteType.Footnote, "note " + i);
                    break;
                case 4:
                    var comment = new Comment(doc, "A", "A", DateTime.MinValue);
                    var cp = new Paragraph(doc);
                    cp.AppendChild(new Run(doc, "remark"));
                    comment.AppendChild(cp);
                    var p = b.InsertParagraph();
                    p.AppendChild(new CommentRangeStart(doc, 1));
                    p.AppendChild(new Run(doc, "commented"));
                    p.AppendChild(new CommentRangeEnd(doc, 1));
                    p.AppendChild(comment);
                    break;
                default:
                    b.Writeln("text " + i);
                    if (rnd.Next(2) == 0) b.InsertBreak(BreakType.SectionBreakNewPage);
                    break;
            }
        }
        return doc;
    }

    // Every node reachable through the public tree, each composite bracketed by its start and end.
    private static void Expected(Node n, List<(string, Node)> into)
    {
        if (n is CompositeNode c)
        {
            into.Add(("+", n));
            foreach (Node child in c.ChildNodes) Expected(child, into);
            into.Add(("-", n));
        }
        else into.Add(("", n));
    }

    [Theory]
    [InlineData(1)]
    [InlineData(2)]
    [InlineData(3)]
    [InlineData(4)]
    [InlineData(5)]
    public void VisitsEveryNodeOnceInDocumentOrder(int seed)
    {
        var doc = Generated(seed);
        var v = new Recorder();
        Assert.True(doc.Accept(v));
        var expected = new List<(string, Node)>();
        Expected(doc, expected);
        Assert.Equal(expected.Count, v.Log.Count);
        for (int i = 0; i < expected.Count; i++)
        {
            Assert.Equal(expected[i].Item1, v.Log[i].Mark);
            Assert.Same(expected[i].Item2, v.Log[i].Node);
        }
        // Every kind the generator makes was met, so no node type is silently skipped.
        var kinds = v.Log.Select(e => e.Node.NodeType).ToHashSet();
        Assert.Contains(NodeType.HeaderFooter, kinds);
        Assert.Contains(NodeType.Run, kinds);
    }

    [Fact]
    public void LoadedDocumentIsVisitedLikeTheOneThatWasSaved()
    {
        var doc = Generated(7);
        var before = new Recorder();
        doc.Accept(before);
        var loaded = TestSupport.RoundTrip(doc);
        var after = new Recorder();
        loaded.Accept(after);
        // A loaded comment starts with the run that carried its reference mark, empty in the model.
        static IEnumerable<string> Shown(Recorder r) =>
            r.Log.Where(e => e.Node is not Run { Text.Length: 0 }).Select(e => e.Mark + e.Node.NodeType + e.Node.GetText());
        Assert.Equal(Shown(before), Shown(after));
    }

    [Fact]
    public void SkipLeavesOutChildrenAndEndAndStopEndsTheWalk()
    {
        var doc = Generated(3);
        var skip = new Recorder { OnStart = n => n is Section ? VisitorAction.SkipThisNode : VisitorAction.Continue };
        Assert.True(doc.Accept(skip));
        var expected = new[] { "+Document" }.Concat(Enumerable.Repeat("+Section", doc.Sections.Count)).Append("-Document");
        Assert.Equal(expected, skip.Log.Select(e => e.Mark + e.Node.NodeType));
        Assert.DoesNotContain(skip.Log, e => e.Node is Paragraph);

        int runs = 0;
        var stop = new Recorder { OnStart = n => n is Run && ++runs == 2 ? VisitorAction.Stop : VisitorAction.Continue };
        Assert.False(doc.Accept(stop));
        Assert.Equal(2, stop.Log.Count(e => e.Node is Run));
        Assert.DoesNotContain(stop.Log, e => e.Mark == "-" && e.Node is Document);
    }

    [Fact]
    public void VisitorMayRemoveTheNodeItIsGiven()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        foreach (var w in new[] { "keep", "drop", "drop", "keep", "drop" }) b.Writeln(w);
        var v = new Recorder { OnStart = n => { if (n is Run r && r.Text == "drop") r.Remove(); return VisitorAction.Continue; } };
        doc.Accept(v);
        Assert.Equal(5, v.Log.Count(e => e.Node is Run));
        Assert.Equal("keep\r\r\rkeep\r\r\f", doc.GetText());
    }

    [Fact]
    public void ContentControlsAreVisitedWithTheirContent()
    {
        var docx = TestSupport.WithPart(TestSupport.ToBytes(Generated(2)), "word/document.xml", x => x!.Replace("<w:body>",
            "<w:body><w:sdt><w:sdtPr><w:tag w:val=\"outer\"/></w:sdtPr><w:sdtContent><w:p><w:r><w:t>a</w:t></w:r>" +
            "<w:sdt><w:sdtPr><w:tag w:val=\"inner\"/></w:sdtPr><w:sdtContent><w:smartTag w:element=\"x\"><w:r><w:t>b</w:t></w:r></w:smartTag></w:sdtContent></w:sdt></w:p></w:sdtContent></w:sdt>"));
        var doc = new Document(new MemoryStream(docx));
        var v = new Recorder();
        doc.Accept(v);
        var expected = new List<(string, Node)>();
        Expected(doc, expected);
        Assert.Equal(expected.Select(e => e.Item1 + e.Item2.GetHashCode()), v.Log.Select(e => e.Mark + e.Node.GetHashCode()));
        Assert.Equal(new[] { "outer", "inner" }, v.Log.Where(e => e.Mark == "+").Select(e => e.Node).OfType<Markup.StructuredDocumentTag>().Select(s => s.Tag));
        Assert.Equal("x", v.Log.Select(e => e.Node).OfType<Markup.SmartTag>().First().Element);
    }

    [Fact]
    public void ContentKeptAsReadIsNotShownToVisitors()
    {
        var docx = TestSupport.WithPart(TestSupport.ToBytes(Generated(1)), "word/document.xml",
            x => x!.Replace("<w:body>", "<w:body><w:p><w:customXml w:element=\"x\"><w:r><w:t>kept</w:t></w:r></w:customXml></w:p>"));
        var doc = new Document(new MemoryStream(docx));
        var v = new Recorder();
        doc.Accept(v);
        Assert.DoesNotContain(v.Log, e => e.Node.GetType().Name == "OpaqueNode");
    }
}
