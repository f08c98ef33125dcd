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
}
