using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>A dropped capital beside the first lines of the next paragraph, or in the margin.</summary>
public class DropCapTests
{
    private static (Document Doc, List<LayoutProbe.TextLine> Lines, GlyphRun Cap) Build(DropCapPosition position, int lines)
    {
        var b = new DocumentBuilder();
        b.ParagraphFormat.DropCapPosition = position;
        b.ParagraphFormat.LinesToDrop = lines;
        b.Font.Size = 40;
        b.Writeln("W");
        b.ParagraphFormat.DropCapPosition = DropCapPosition.None;
        b.Font.Size = 12;
        b.Writeln(string.Join(" ", Enumerable.Range(0, 120).Select(i => $"word{i}")));
        var doc = b.Document;
        var cap = doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().Single(r => r.Text == "W");
        // The body's lines without the capital, which shares the baseline of one of them.
        var body = doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().Where(r => r.Text != "W").GroupBy(r => Math.Round(r.Y, 1))
            .Select(g => new LayoutProbe.TextLine(g.First().Y, g.Min(r => r.X + r.Xs[0]), g.Max(r => r.X + r.Xs[^1]), string.Concat(g.Select(r => r.Text))))
            .Where(l => l.Text.Contains("word")).OrderBy(l => l.Y).ToList();
        return (doc, body, cap);
    }

    [Theory]
    [InlineData(3)]
    [InlineData(2)]
    public void TheCapitalSpansItsLinesWhichStartAfterIt(int drop)
    {
        var (doc, lines, cap) = Build(DropCapPosition.Normal, drop);
        double margin = doc.FirstSection!.PageSetup.LeftMargin;
        Assert.Equal(margin, cap.X + cap.Xs[0], 0);
        double capRight = cap.X + cap.Xs[0] + LayoutProbe.Measure(cap.Font.Face.Typeface, cap.Size, "W");
        Assert.All(lines.Take(drop), l => Assert.True(l.Left >= capRight - 0.5, $"'{l.Text}' starts under the capital"));
        Assert.All(lines.Skip(drop), l => Assert.Equal(margin, l.Left, 1));
        // On the baseline of the last dropped line, and above the text that follows it.
        Assert.Equal(lines[drop - 1].Y, cap.Y, 1);
        Assert.True(lines[0].Y < cap.Y);
        // The capital's own paragraph takes no line of its own.
        Assert.True(lines[0].Y < 100);
    }

    [Fact]
    public void AMarginCapitalLeavesTheLinesWhereTheyWere()
    {
        var (doc, lines, cap) = Build(DropCapPosition.Margin, 3);
        double margin = doc.FirstSection!.PageSetup.LeftMargin;
        Assert.All(lines, l => Assert.Equal(margin, l.Left, 1));
        Assert.True(cap.X + cap.Xs[0] < margin - 10);
        Assert.Throws<ArgumentOutOfRangeException>(() => doc.FirstSection.Body!.FirstParagraph!.ParagraphFormat.LinesToDrop = 11);
        Assert.Equal(DropCapPosition.Margin, TestSupport.RoundTrip(doc).FirstSection!.Body!.FirstParagraph!.ParagraphFormat.DropCapPosition);
    }
}
