using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Page borders, and paragraphs set right to left.</summary>
public class PageDecorationTests
{
    private static List<LineItem> Rules(Document doc, int page) => doc.PageLayout.Pages[page].Items.OfType<LineItem>().ToList();

    [Theory]
    [InlineData(PageBorderDistanceFrom.Text)]
    [InlineData(PageBorderDistanceFrom.PageEdge)]
    public void BordersSurroundTheTextOrFollowThePageEdge(PageBorderDistanceFrom from)
    {
        var b = new DocumentBuilder();
        var ps = b.PageSetup;
        foreach (var side in new[] { BorderType.Top, BorderType.Left, BorderType.Bottom, BorderType.Right })
        {
            var border = ps.GetBorder(side);
            border.LineStyle = LineStyle.Single;
            border.LineWidth = 1.5;
            border.DistanceFromText = 24;
        }
        ps.BorderDistanceFrom = from;
        b.Writeln("bordered");
        var doc = b.Document;
        var rules = Rules(doc, 0).Where(l => l.Width == 1.5).ToList();
        Assert.Equal(4, rules.Count);
        double top = rules.Min(l => l.Y1), left = rules.Min(l => l.X1), bottom = rules.Max(l => l.Y2), right = rules.Max(l => l.X2);
        if (from == PageBorderDistanceFrom.PageEdge)
            Assert.Equal(new[] { 24.0, 24.0, ps.PageHeight - 24, ps.PageWidth - 24 }, new[] { top, left, bottom, right });
        else
            Assert.Equal(new[] { ps.TopMargin - 24, ps.LeftMargin - 24, ps.PageHeight - ps.BottomMargin + 24, ps.PageWidth - ps.RightMargin + 24 },
                new[] { top, left, bottom, right });
        var saved = TestSupport.RoundTrip(doc);
        Assert.Equal(from, saved.FirstSection!.PageSetup.BorderDistanceFrom);
        Assert.Equal(4, Rules(saved, 0).Count(l => l.Width == 1.5));
        Assert.Throws<ArgumentOutOfRangeException>(() => ps.GetBorder(BorderType.Horizontal));
    }

    [Fact]
    public void BordersOnTheFirstPageOnlyOrOnTheOthers()
    {
        var b = new DocumentBuilder();
        b.PageSetup.GetBorder(BorderType.Top).LineStyle = LineStyle.Single;
        b.Writeln("one");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("two");
        var doc = b.Document;
        int Count(int page) => Rules(doc, page).Count;
        Assert.Equal((1, 1), (Count(0), Count(1)));
        b.PageSetup.BorderAppliesTo = PageBorderAppliesTo.FirstPage;
        Assert.Equal((1, 0), (Count(0), Count(1)));
        b.PageSetup.BorderAppliesTo = PageBorderAppliesTo.OtherPages;
        Assert.Equal((0, 1), (Count(0), Count(1)));
    }

    private static double TextRight(Document doc) => doc.FirstSection!.PageSetup.PageWidth - doc.FirstSection.PageSetup.RightMargin;

    [Fact]
    public void ARightToLeftParagraphStartsAtTheRightAndMirrorsItsRuns()
    {
        var b = new DocumentBuilder();
        b.ParagraphFormat.Bidi = true;
        b.Write("abc ");
        b.Write("\u05E9\u05DC\u05D5\u05DD ");
        b.Font.Bold = true;
        b.Write("xyz");
        b.Font.Bold = false;
        b.Writeln();
        b.ParagraphFormat.Bidi = false;
        b.Write("abc ");
        b.Write("\u05E9\u05DC\u05D5\u05DD ");
        b.Font.Bold = true;
        b.Write("xyz");
        b.Writeln();
        var doc = b.Document;
        var runs = doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().ToList();
        var rtlLine = runs.Where(r => r.Y == runs[0].Y).ToList();
        var ltrLine = runs.Where(r => r.Y != runs[0].Y).ToList();
        double X(List<GlyphRun> line, string t) => line.Where(r => r.Text.Contains(t)).Select(r => r.X + r.Xs[0]).Single();
        // Logical order reads from the right: the first run is rightmost, ending at the text's right edge.
        Assert.True(X(rtlLine, "abc") > X(rtlLine, "\u05E9") && X(rtlLine, "\u05E9") > X(rtlLine, "xyz"));
        var abc = rtlLine.Single(r => r.Text.Contains("abc"));
        Assert.InRange(abc.X + abc.Xs[2], TextRight(doc) - 15, TextRight(doc));
        // Inside a left-to-right run the letters keep their order.
        Assert.True(abc.Xs[0] < abc.Xs[1] && abc.Xs[1] < abc.Xs[2]);
        // The same runs in a left-to-right paragraph go the other way from the left margin.
        Assert.True(X(ltrLine, "abc") < X(ltrLine, "\u05E9") && X(ltrLine, "\u05E9") < X(ltrLine, "xyz"));
        Assert.Equal(doc.FirstSection!.PageSetup.LeftMargin, X(ltrLine, "abc"), 1);
    }

    [Fact]
    public void LongRightToLeftTextWrapsWithEveryLineStartingAtTheRight()
    {
        var b = new DocumentBuilder();
        b.ParagraphFormat.Bidi = true;
        var word = "\u05D3\u05D5\u05D2\u05DE\u05D4";
        b.Writeln(string.Join(" ", Enumerable.Repeat(word, 50)));
        var doc = b.Document;
        var lines = doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().GroupBy(r => r.Y).ToList();
        Assert.True(lines.Count >= 3);
        double left = doc.FirstSection!.PageSetup.LeftMargin;
        foreach (var line in lines)
        {
            double right = line.Max(r => r.X + r.Xs[^1]);
            Assert.InRange(right, TextRight(doc) - 12, TextRight(doc) + 0.5);
        }
        // Wrapped lines fill the width; the last, short line leaves the left free.
        Assert.All(lines.SkipLast(1), l => Assert.True(l.Min(r => r.X + r.Xs[0]) < left + 40));
        Assert.True(lines[^1].Min(r => r.X + r.Xs[0]) > left + 40, string.Join(";", lines.Select(l => $"{l.Min(r => r.X + r.Xs[0]):F0}-{l.Max(r => r.X + r.Xs[^1]):F0}/{l.Sum(r => r.Glyphs.Length)}")));
    }
}
