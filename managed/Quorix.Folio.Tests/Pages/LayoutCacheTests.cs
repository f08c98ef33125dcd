using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>The layout is kept while the document is unchanged and redone after any change.</summary>
public class LayoutCacheTests
{
    private static Document Doc(out Run run)
    {
        var b = new DocumentBuilder();
        b.Writeln("short");
        var doc = b.Document;
        run = doc.FirstSection!.Body!.FirstParagraph!.Runs[0];
        return doc;
    }

    [Fact]
    public void AnUnchangedDocumentKeepsItsLayout()
    {
        var doc = Doc(out _);
        var first = doc.PageLayout;
        Assert.Equal(1, doc.PageCount);
        Assert.Same(first, doc.PageLayout);
        doc.UpdatePageLayout();
        Assert.NotSame(first, doc.PageLayout);
    }

    [Fact]
    public void TextFormattingAndStructureEditsAreSeen()
    {
        var doc = Doc(out var run);
        Assert.Equal(1, doc.PageCount);
        run.Text = string.Concat(Enumerable.Repeat("long text that fills pages ", 800));
        int afterText = doc.PageCount;
        Assert.True(afterText > 1);
        run.Font.Size = 30;
        Assert.True(doc.PageCount > afterText);
        doc.FirstSection!.Body!.FirstParagraph!.Remove();
        Assert.Equal(1, doc.PageCount);
    }

    [Fact]
    public void TheCollectorFollowsTheCurrentLayout()
    {
        var b = new DocumentBuilder();
        b.Writeln("first");
        b.Writeln("second");
        var doc = b.Document;
        var second = doc.FirstSection!.Body!.Paragraphs[1];
        var collector = new LayoutCollector(doc);
        Assert.Equal(1, collector.GetStartPageIndex(second));
        doc.FirstSection.Body.Paragraphs[1].ParagraphFormat.PageBreakBefore = true;
        Assert.Equal(2, collector.GetStartPageIndex(second));
        Assert.Equal(2, collector.GetEndPageIndex(doc.FirstSection));
        Assert.Throws<ArgumentException>(() => collector.GetStartPageIndex(new Document().FirstSection!));
    }
}
