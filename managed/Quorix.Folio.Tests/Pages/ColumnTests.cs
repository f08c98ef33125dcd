using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Section text flowing through columns: widths, column breaks, rules between, and columns
/// that start under the previous section's text on a shared page.</summary>
public class ColumnTests
{
    private static void Filler(DocumentBuilder b, int count, string tag = "f")
    {
        for (int i = 0; i < count; i++) b.Writeln($"{tag}{i} column text that wraps over more than one line in a narrow column");
    }

    /// <summary>The page's lines as the layout enumerator walks them: lines of different columns at one
    /// height stay apart. Right is where the last glyph starts.</summary>
    private static List<LayoutProbe.TextLine> Body(Document doc, int page)
    {
        var e = new LayoutEnumerator(doc);
        for (int i = 0; i < page; i++) e.MoveNext();
        var lines = new List<LayoutProbe.TextLine>();
        if (!e.MoveFirstChild()) return lines;
        do
        {
            if (e.Text.Trim().Length == 0) continue;
            var box = e.Rectangle;
            double left = double.MaxValue, right = 0;
            if (e.MoveFirstChild())
            {
                do { left = Math.Min(left, e.Rectangle.Left); right = Math.Max(right, e.Rectangle.Right); } while (e.MoveNext());
                e.MoveParent();
            }
            lines.Add(new LayoutProbe.TextLine(box.Y, left, right, e.Text));
        } while (e.MoveNext());
        return lines;
    }

    [Fact]
    public void TextFillsTheFirstColumnThenTheSecondWithinTheirWidths()
    {
        var b = new DocumentBuilder();
        b.PageSetup.TextColumns.SetCount(2);
        b.PageSetup.TextColumns.Spacing = 24;
        Filler(b, 60);
        var doc = b.Document;
        var ps = doc.FirstSection!.PageSetup;
        double width = ps.TextColumns.Width, left = ps.LeftMargin, second = left + width + 24;
        Assert.Equal((ps.PageWidth - ps.LeftMargin - ps.RightMargin - 24) / 2, width, 3);
        var lines = Body(doc, 0);
        var first = lines.Where(l => l.Left < second - 1).ToList();
        var right = lines.Where(l => l.Left >= second - 1).ToList();
        Assert.NotEmpty(first);
        Assert.NotEmpty(right);
        // Span rectangles reach half an em past the last glyph's origin, a trailing space's included.
        Assert.All(first, l => Assert.True(l.Right <= left + width + 12, $"'{l.Text}' runs into the gap"));
        Assert.All(right, l => Assert.True(l.Right <= second + width + 12));
        // Reading order: the second column continues where the first stopped, from the top.
        int lastLeft = int.Parse(first.Last(l => l.Text.StartsWith('f')).Text[1..].Split(' ')[0]);
        int firstRight = int.Parse(right.First(l => l.Text.StartsWith('f')).Text[1..].Split(' ')[0]);
        Assert.InRange(firstRight, lastLeft, lastLeft + 1);
        Assert.Equal(first[0].Y, right[0].Y, 1);
    }

    [Fact]
    public void AColumnBreakStartsTheNextColumnAndALineIsDrawnBetween()
    {
        var b = new DocumentBuilder();
        b.PageSetup.TextColumns.SetCount(3);
        b.PageSetup.TextColumns.LineBetween = true;
        b.Writeln("alpha");
        b.InsertBreak(BreakType.ColumnBreak);
        b.Writeln("beta");
        b.InsertBreak(BreakType.ColumnBreak);
        b.Writeln("gamma");
        var doc = b.Document;
        var lines = Body(doc, 0);
        var xs = new[] { "alpha", "beta", "gamma" }.Select(t => lines.Single(l => l.Text.Contains(t))).ToList();
        Assert.True(xs[0].Left < xs[1].Left && xs[1].Left < xs[2].Left);
        Assert.Equal(xs[0].Y, xs[2].Y, 1);
        Assert.Equal(1, doc.PageCount);
        var rules = doc.PageLayout.Pages[0].Items.OfType<LineItem>().Where(l => l.X1 == l.X2).ToList();
        Assert.Equal(2, rules.Count);
        Assert.All(rules, r => Assert.True(r.X1 > xs[0].Right && r.X1 < xs[2].Left));
    }

    [Fact]
    public void ColumnsOfAContinuousSectionStartUnderTheTextBefore()
    {
        var b = new DocumentBuilder();
        b.Writeln("one column heading line");
        b.InsertBreak(BreakType.SectionBreakContinuous);
        b.PageSetup.TextColumns.SetCount(2);
        Filler(b, 30);
        var doc = b.Document;
        var lines = Body(doc, 0);
        var heading = lines.Single(l => l.Text.StartsWith("one column"));
        Assert.All(lines.Where(l => l != heading), l => Assert.True(l.Y > heading.Y));
        Assert.Contains(lines, l => l.Left > doc.FirstSection!.PageSetup.LeftMargin + 100);
    }

    [Fact]
    public void UnequalColumnsKeepTheirWidthsInTheDocument()
    {
        var b = new DocumentBuilder();
        var cols = b.PageSetup.TextColumns;
        cols.SetCount(2);
        Assert.Throws<InvalidOperationException>(() => cols[0].Width = 100);
        cols.EvenlySpaced = false;
        cols[0].Width = 120;
        cols[0].SpaceAfter = 20;
        cols[1].Width = 300;
        Filler(b, 80);
        var saved = TestSupport.RoundTrip(b.Document);
        var again = saved.FirstSection!.PageSetup.TextColumns;
        Assert.False(again.EvenlySpaced);
        Assert.Equal(new[] { 120.0, 300.0 }, again.Select(c => c.Width));
        Assert.Equal(20, again[0].SpaceAfter);
        // Lines stay inside the narrow column; the wide one starts after it and its space.
        var lines = Body(saved, 0);
        double left = saved.FirstSection.PageSetup.LeftMargin;
        Assert.All(lines.Where(l => l.Left < left + 130), l => Assert.True(l.Right <= left + 120 + 10, $"{l.Left}-{l.Right} {l.Text}"));
        Assert.Contains(lines, l => Math.Abs(l.Left - (left + 140)) < 1);
        // The wide column's lines are laid at its own width: they run well past the narrow width and stay inside.
        var wide = lines.Where(l => l.Left >= left + 139).ToList();
        Assert.All(wide, l => Assert.True(l.Right <= left + 140 + 300 + 10, $"{l.Left}-{l.Right} {l.Text}"));
        Assert.True(wide.Count(l => l.Right - l.Left > 250) >= wide.Count / 2, "lines of the wide column fill it");
        // Its text continues where the narrow column stopped, nothing lost or repeated.
        var words = string.Join(" ", lines.Select(l => l.Text.Trim())).Split(' ', StringSplitOptions.RemoveEmptyEntries);
        var expected = string.Join(" ", Enumerable.Range(0, 80).Select(i => $"f{i} column text that wraps over more than one line in a narrow column"))
            .Split(' ').Take(words.Length);
        Assert.Equal(expected, words);
        Assert.Throws<ArgumentOutOfRangeException>(() => cols.SetCount(0));
    }
}
