using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

public class LayoutEnumeratorTests
{
    private static Document TwoPages()
    {
        var b = new DocumentBuilder();
        b.Writeln("first line");
        b.Write("plain ");
        b.Bold = true;
        b.Write("bold");
        b.Bold = false;
        b.InsertBreak(BreakType.PageBreak);
        b.Write("second page");
        return b.Document;
    }

    [Fact]
    public void WalksPagesLinesAndSpans()
    {
        var doc = TwoPages();
        var e = new LayoutEnumerator(doc);
        Assert.Equal(LayoutEntityType.Page, e.Type);
        Assert.Equal(1, e.PageIndex);
        Assert.False(e.MoveParent());
        Assert.True(e.MoveFirstChild());
        Assert.Equal(LayoutEntityType.Line, e.Type);
        Assert.Equal("first line", e.Text);
        var firstLine = e.Rectangle;
        Assert.True(e.MoveNext());
        Assert.Equal("plain bold", e.Text);
        Assert.True(e.Rectangle.Top >= firstLine.Bottom - 0.01);
        Assert.True(e.MoveFirstChild());
        Assert.Equal("plain ", e.Text);
        Assert.True(e.MoveNext());
        Assert.Equal("bold", e.Text);
        Assert.False(e.MoveNext());
        Assert.True(e.MovePrevious());
        Assert.True(e.MoveParent() && e.MoveParent());
        Assert.True(e.MoveNext());
        Assert.Equal(2, e.PageIndex);
        Assert.True(e.MoveLastChild());
        Assert.Equal("second page", e.Text);
        Assert.False(e.MoveNext());
        e.Reset();
        Assert.Equal((1, LayoutEntityType.Page), (e.PageIndex, e.Type));
        Assert.Equal(doc.GetPageInfo(0).WidthInPoints, e.Rectangle.Width);
    }

    [Fact]
    public void EveryLineOfEveryPageIsVisitedOnce()
    {
        var b = new DocumentBuilder();
        for (int i = 0; i < 120; i++) b.Writeln($"line {i}");
        var e = new LayoutEnumerator(b.Document);
        var seen = new List<string>();
        do
        {
            if (!e.MoveFirstChild()) continue;
            do seen.Add(e.Text); while (e.MoveNext());
            e.MoveParent();
        } while (e.MoveNext());
        Assert.Equal(Enumerable.Range(0, 120).Select(i => $"line {i}").Append(""), seen);
    }
}
