namespace Quorix.Folio.Tests.Callbacks;

/// <summary>Every way nodes enter or leave a document's tree is told to its node changing callback.</summary>
public class NodeChangingCallbackTests
{
    private sealed class Recorder : INodeChangingCallback
    {
        public readonly List<string> Log = new();
        public Func<NodeChangingArgs, bool> RefuseInsert = _ => false;

        private void Add(string what, NodeChangingArgs a) =>
            Log.Add($"{what} {a.Node.NodeType} {a.Action} old={a.OldParent?.NodeType.ToString() ?? "-"} new={a.NewParent?.NodeType.ToString() ?? "-"} attached={a.Node.ParentNode != null}");

        public void NodeInserting(NodeChangingArgs args)
        {
            Add("inserting", args);
            if (RefuseInsert(args)) throw new InvalidOperationException("refused");
        }

        public void NodeInserted(NodeChangingArgs args) => Add("inserted", args);
        public void NodeRemoving(NodeChangingArgs args) => Add("removing", args);
        public void NodeRemoved(NodeChangingArgs args) => Add("removed", args);
    }

    [Fact]
    public void TheBuilderTellsOfEachRunAndParagraphBeforeAndAfter()
    {
        var doc = new Document();
        var rec = new Recorder();
        doc.NodeChangingCallback = rec;
        var b = new DocumentBuilder(doc);
        b.Write("a");
        b.Writeln();
        Assert.Equal(new[]
        {
            "inserting Run Insert old=- new=Paragraph attached=False",
            "inserted Run Insert old=- new=Paragraph attached=True",
            "inserting Paragraph Insert old=- new=Body attached=False",
            "inserted Paragraph Insert old=- new=Body attached=True",
        }, rec.Log);
    }

    [Fact]
    public void AppendRemoveAndMoveAreToldWithTheirParents()
    {
        var doc = new Document();
        var body = doc.FirstSection!.Body!;
        var first = body.FirstParagraph!;
        var rec = new Recorder();
        doc.NodeChangingCallback = rec;
        var second = (Paragraph)body.AppendChild(new Paragraph(doc));
        var run = first.AppendChild(new Run(doc, "x"));
        rec.Log.Clear();
        second.AppendChild(run);   // a move: out of one paragraph, into the other
        Assert.Equal(new[]
        {
            "removing Run Remove old=Paragraph new=- attached=True",
            "removed Run Remove old=Paragraph new=- attached=False",
            "inserting Run Insert old=- new=Paragraph attached=False",
            "inserted Run Insert old=- new=Paragraph attached=True",
        }, rec.Log);
        rec.Log.Clear();
        second.Remove();
        Assert.Equal(new[] { "removing Paragraph Remove old=Body new=- attached=True", "removed Paragraph Remove old=Body new=- attached=False" }, rec.Log);
        doc.NodeChangingCallback = null;
        body.AppendChild(new Paragraph(doc));
        Assert.Equal(2, rec.Log.Count);
    }

    [Fact]
    public void ARefusedInsertionChangesNothingAndAMovedNodeGoesBack()
    {
        var doc = new Document();
        var body = doc.FirstSection!.Body!;
        var p1 = body.FirstParagraph!;
        p1.AppendChild(new Run(doc, "a"));
        var moved = p1.AppendChild(new Run(doc, "b"));
        p1.AppendChild(new Run(doc, "c"));
        var p2 = (Paragraph)body.AppendChild(new Paragraph(doc));
        var rec = new Recorder { RefuseInsert = a => a.NewParent == p2 };
        doc.NodeChangingCallback = rec;

        var e = Assert.Throws<InvalidOperationException>(() => p2.AppendChild(new Run(doc, "new")));
        Assert.Equal("refused", e.Message);
        Assert.Throws<InvalidOperationException>(() => p2.PrependChild(moved));
        Assert.Equal("abc", p1.GetText().TrimEnd('\r'));
        Assert.Same(p1, moved.ParentNode);
        Assert.Equal(1, p1.IndexOf(moved));
        Assert.Equal(0, p2.ChildNodes.Count);
        // the document is whole: it saves and loads as before
        doc.NodeChangingCallback = null;
        Assert.Equal(doc.GetText(), TestSupport.RoundTrip(doc).GetText());
    }

    [Fact]
    public void BuildingALoadedDocumentTellsNothingButLaterEditsDo()
    {
        var src = new Document();
        new DocumentBuilder(src).Writeln("loaded text");
        var doc = new Document(new MemoryStream(TestSupport.ToBytes(src)));
        var rec = new Recorder();
        doc.NodeChangingCallback = rec;
        Assert.Contains("loaded text", doc.GetText());   // builds the model
        Assert.Empty(rec.Log);
        doc.FirstSection!.Body!.FirstParagraph!.Remove();
        Assert.Equal(2, rec.Log.Count);
    }

    [Fact]
    public void ReplacingAndImportingAreToldToo()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var r1 = new Run(doc, "ab");
        var r2 = new Run(doc, "cd");
        doc.FirstSection!.Body!.FirstParagraph!.AppendChild(r1);
        doc.FirstSection!.Body!.FirstParagraph!.AppendChild(r2);
        var rec = new Recorder();
        doc.NodeChangingCallback = rec;
        // the match covers all of the second run, which goes
        Assert.Equal(1, doc.Range.Replace("bcd", "X"));
        Assert.Contains("removed Run Remove old=Paragraph new=- attached=False", rec.Log);

        var other = new Document();
        new DocumentBuilder(other).Write("imported");
        rec.Log.Clear();
        var copy = doc.ImportNode(other.FirstSection!.Body!.FirstParagraph!, true);
        doc.FirstSection!.Body!.AppendChild(copy);
        Assert.Equal("inserted Paragraph Insert old=- new=Body attached=True", rec.Log[^1]);
        GC.KeepAlive(b);
    }
}
