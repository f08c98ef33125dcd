using Quorix.Folio.Fonts;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Lines of a paragraph: where they break, how wide they are and where they sit.</summary>
public class LineLayoutTests
{
    // A new document's page: letter size with one-inch margins.
    private static readonly double Margin = new Document().FirstSection!.PageSetup.LeftMargin;
    private static readonly double Body = new Document().FirstSection!.PageSetup.PageWidth - 2 * Margin;

    private static readonly string Words = string.Join(" ", Enumerable.Range(1, 120).Select(i => (i % 7 == 0 ? "extraordinarily" : i % 3 == 0 ? "ab" : "word") + i));

    private static Document OneParagraph(string text, Action<DocumentBuilder>? format = null)
    {
        var b = new DocumentBuilder();
        b.Font.Name = "Times New Roman";
        b.Font.Size = 12;
        format?.Invoke(b);
        b.Write(text);
        return b.Document;
    }

    [Fact]
    public void LinesFillTheWidthGreedilyAndNeverOverflow()
    {
        var doc = OneParagraph(Words);
        var lines = LayoutProbe.Lines(doc, 0);
        Assert.True(lines.Count > 5);
        var face = FontSettings.DefaultInstance.Library.Resolve("Times New Roman", false, false).Face;
        Assert.Equal("Liberation Serif", face.Family);
        for (int i = 0; i < lines.Count; i++)
        {
            var text = lines[i].Text.TrimEnd();
            double width = LayoutProbe.Measure(face.Typeface, 12, text);
            Assert.True(width <= Body + 0.5, $"line {i} is {width} wide: '{text}'");
            if (i + 1 < lines.Count)
            {
                // The next line's first word would not have fitted.
                var next = lines[i + 1].Text.Split(' ')[0];
                Assert.True(LayoutProbe.Measure(face.Typeface, 12, text + " " + next) > Body - 0.5, $"line {i} could have taken '{next}'");
            }
        }
        Assert.Equal(Words, string.Concat(lines.Select(l => l.Text)));
    }

    [Fact]
    public void BreaksFallAfterSpacesAndHyphensOnly()
    {
        var text = string.Join(" ", Enumerable.Range(1, 40).Select(i => $"well-known{i} (quoted{i}), done."));
        foreach (var line in LayoutProbe.Lines(OneParagraph(text), 0).SkipLast(1))
            Assert.True(line.Text.EndsWith(' ') || line.Text.EndsWith('-'), $"'{line.Text}' ends inside a word");
    }

    [Fact]
    public void AWordWiderThanTheLineIsCutRatherThanLost()
    {
        var word = new string('m', 200);
        var lines = LayoutProbe.Lines(OneParagraph(word), 0);
        Assert.True(lines.Count >= 2);
        Assert.Equal(word, string.Concat(lines.Select(l => l.Text)));
    }

    [Theory]
    [InlineData(ParagraphAlignment.Left)]
    [InlineData(ParagraphAlignment.Center)]
    [InlineData(ParagraphAlignment.Right)]
    [InlineData(ParagraphAlignment.Justify)]
    public void AlignmentPlacesLinesBetweenTheMargins(ParagraphAlignment alignment)
    {
        var lines = LayoutProbe.Lines(OneParagraph(Words, b => b.ParagraphFormat.Alignment = alignment), 0);
        var full = lines.SkipLast(1).ToList();
        foreach (var l in full)
        {
            double leftGap = l.Left - Margin, rightGap = Margin + Body - l.Right;
            switch (alignment)
            {
                case ParagraphAlignment.Left: Assert.InRange(leftGap, -0.5, 0.5); break;
                case ParagraphAlignment.Right: Assert.InRange(rightGap, -0.5, 0.5); break;
                case ParagraphAlignment.Center: Assert.InRange(leftGap - rightGap, -0.5, 0.5); break;
                case ParagraphAlignment.Justify:
                    Assert.InRange(leftGap, -0.5, 0.5);
                    Assert.InRange(rightGap, -0.5, 0.5);
                    break;
            }
        }
        if (alignment == ParagraphAlignment.Justify)
            Assert.True(Margin + Body - lines[^1].Right > 1, "the last line is not stretched");
    }

    [Fact]
    public void IndentsMoveTheFirstAndFollowingLines()
    {
        var lines = LayoutProbe.Lines(OneParagraph(Words, b =>
        {
            b.ParagraphFormat.LeftIndent = 36;
            b.ParagraphFormat.RightIndent = 72;
            b.ParagraphFormat.FirstLineIndent = 18;
        }), 0);
        Assert.InRange(lines[0].Left, Margin + 54 - 0.5, Margin + 54 + 0.5);
        foreach (var l in lines.Skip(1))
        {
            Assert.InRange(l.Left, Margin + 36 - 0.5, Margin + 36 + 0.5);
            Assert.True(l.Right <= Margin + Body - 72 + 0.5);
        }
    }

    [Theory]
    [InlineData(LineSpacingRule.Exactly, 30)]
    [InlineData(LineSpacingRule.AtLeast, 40)]
    public void FixedLineSpacingSetsTheDistanceBetweenBaselines(LineSpacingRule rule, double points)
    {
        var lines = LayoutProbe.Lines(OneParagraph(Words, b =>
        {
            b.ParagraphFormat.LineSpacingRule = rule;
            b.ParagraphFormat.LineSpacing = points;
        }), 0);
        for (int i = 1; i < lines.Count; i++) Assert.InRange(lines[i].Y - lines[i - 1].Y, points - 0.01, points + 0.01);
    }

    [Fact]
    public void DoubleSpacingDoublesSingleSpacing()
    {
        double Pitch(double multiple)
        {
            var lines = LayoutProbe.Lines(OneParagraph(Words, b =>
            {
                b.ParagraphFormat.LineSpacingRule = LineSpacingRule.Multiple;
                b.ParagraphFormat.LineSpacing = multiple * 12;
            }), 0);
            return lines[2].Y - lines[1].Y;
        }
        double single = Pitch(1);
        Assert.InRange(single, 12, 16); // a 12-point serif face
        Assert.InRange(Pitch(2), 2 * single - 0.01, 2 * single + 0.01);
    }

    [Fact]
    public void SpaceBeforeAndAfterSeparateParagraphs()
    {
        double Gap(double before, double after)
        {
            var b = new DocumentBuilder();
            b.ParagraphFormat.SpaceBefore = before;
            b.ParagraphFormat.SpaceAfter = after;
            b.Writeln("first");
            b.Writeln("second");
            var lines = LayoutProbe.Lines(b.Document, 0);
            return lines[1].Y - lines[0].Y;
        }
        double none = Gap(0, 0);
        Assert.InRange(Gap(6, 10) - none, 15.99, 16.01);
    }

    [Fact]
    public void TabsAdvanceToTheNextHalfInchStop()
    {
        var doc = OneParagraph("a\tb\tc");
        var runs = doc.PageLayout.Pages[0].Items.OfType<Quorix.Folio.Layout.GlyphRun>().ToList();
        var xs = runs.SelectMany(r => r.Text.Select((ch, i) => (ch, x: r.X + r.Xs[i]))).Where(g => g.ch is 'b' or 'c').Select(g => g.x - Margin).ToList();
        Assert.Equal(2, xs.Count);
        Assert.InRange(xs[0], 35.99, 36.01);
        Assert.InRange(xs[1], 71.99, 72.01);
    }

    [Fact]
    public void ListItemsShowTheirLabelsBeforeTheText()
    {
        var b = new DocumentBuilder();
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("alpha");
        b.Writeln("beta");
        b.ListFormat.RemoveNumbers();
        b.Writeln("plain");
        var lines = LayoutProbe.Lines(b.Document, 0).Select(l => l.Text).ToList();
        Assert.Equal(new[] { "1.alpha", "2.beta", "plain" }, lines);
        // The label hangs; the text starts at the list's indent, where the tab after the label leads.
        var indent = b.Document.FirstSection!.Body!.FirstParagraph!.ListFormat.ListLevel!.TextPosition;
        Assert.True(indent > 0);
        var alpha = b.Document.PageLayout.Pages[0].Items.OfType<Quorix.Folio.Layout.GlyphRun>().First(r => r.Text.StartsWith("alpha"));
        Assert.InRange(alpha.X + alpha.Xs[0] - Margin, indent - 0.01, indent + 0.01);
    }

    [Fact]
    public void LineBreaksEndLinesWithoutEndingTheParagraph()
    {
        var b = new DocumentBuilder();
        b.Write("one");
        b.InsertBreak(BreakType.LineBreak);
        b.Write("two");
        var lines = LayoutProbe.Lines(b.Document, 0);
        Assert.Equal(new[] { "one", "two" }, lines.Select(l => l.Text.Trim('\v')).ToArray());
    }

    [Theory]
    [InlineData("ab cd", "2")]            // after the space, not before it
    [InlineData("well-known", "4")]       // after a hyphen between letters
    [InlineData("-5 and 3-4", "2,6")]     // not after a minus sign or before a digit
    [InlineData("end (x)", "3")]          // not before closing punctuation
    [InlineData("中文字", "0,1")]          // between ideographs
    [InlineData("a\u200Bb", "1")]        // at a zero-width space
    public void BreakOpportunities(string text, string expected)
    {
        text = System.Text.RegularExpressions.Regex.Unescape(text);
        var found = Enumerable.Range(0, text.Length - 1).Where(i => Quorix.Folio.Layout.LineBreaking.BreakAfter(text, i));
        Assert.Equal(expected, string.Join(",", found));
    }

    private static void AddTabStop(Paragraph p, string align, double points, string? leader = null)
    {
        var tabs = p.ParagraphFormat.TabStops;
        if (align == "clear") tabs.RemoveByPosition(points);
        else tabs.Add(points, align switch { "right" => TabAlignment.Right, "center" => TabAlignment.Center, _ => TabAlignment.Left },
            leader == "dot" ? TabLeader.Dots : TabLeader.None);
    }

    [Fact]
    public void CustomStopsAlignTheTextAfterTheTabAndDrawLeaders()
    {
        var doc = OneParagraph("Chapter one\t17\tmid\tleft");
        var para = doc.FirstSection!.Body!.FirstParagraph!;
        AddTabStop(para, "right", 300, "dot");
        AddTabStop(para, "center", 380);
        AddTabStop(para, "left", 430);
        doc.UpdatePageLayout();
        var runs = doc.PageLayout.Pages[0].Items.OfType<Quorix.Folio.Layout.GlyphRun>().ToList();
        var face = runs[0].Font.Face.Typeface;
        double Left(string t) { var r = runs.First(g => g.Text.StartsWith(t)); return r.X + r.Xs[0] - Margin; }
        Assert.InRange(Left("17") + LayoutProbe.Measure(face, 12, "17"), 299.5, 300.5);
        Assert.InRange(Left("mid") + LayoutProbe.Measure(face, 12, "mid") / 2, 379.5, 380.5);
        Assert.InRange(Left("left"), 429.99, 430.01);
        var dots = Assert.Single(runs, r => r.Text.Trim('.').Length == 0);
        Assert.True(dots.Glyphs.Length > 20);
        Assert.True(dots.X + dots.Xs[0] - Margin > LayoutProbe.Measure(face, 12, "Chapter one") && dots.X + dots.Xs[^1] - Margin < Left("17"));
    }

    [Fact]
    public void AClearedStopGivesWayToTheDefaultStops()
    {
        var doc = OneParagraph("a\tb");
        var para = doc.FirstSection!.Body!.FirstParagraph!;
        AddTabStop(para, "left", 200);
        AddTabStop(para, "clear", 200);
        doc.UpdatePageLayout();
        var b = doc.PageLayout.Pages[0].Items.OfType<Quorix.Folio.Layout.GlyphRun>().First(r => r.Text == "b");
        Assert.InRange(b.X + b.Xs[0] - Margin, 35.99, 36.01);
    }

    [Fact]
    public void RightToLeftWordsInLeftToRightTextAreShownInVisualOrder()
    {
        var doc = OneParagraph("abc \u05D0\u05D1\u05D2 def");
        var runs = doc.PageLayout.Pages[0].Items.OfType<Quorix.Folio.Layout.GlyphRun>().OrderBy(r => r.X + r.Xs[0]).ToList();
        var hebrew = Assert.Single(runs, r => r.Text.Contains('\u05D0'));
        var shaper = hebrew.Font.Face.Shaper;
        Assert.True(shaper.TryGetGlyph(0x05D0, out var alef));
        Assert.True(shaper.TryGetGlyph(0x05D2, out var gimel));
        // Leftmost is the last letter read, rightmost the first.
        Assert.Equal((ushort)gimel, hebrew.Glyphs[0]);
        Assert.Equal((ushort)alef, hebrew.Glyphs[^1]);
        Assert.True(hebrew.Xs.Zip(hebrew.Xs.Skip(1)).All(p => p.First < p.Second));
        // The word keeps its place between its neighbours.
        Assert.True(runs.IndexOf(hebrew) > 0 && runs.IndexOf(hebrew) < runs.Count - 1);
    }

    [Fact]
    public void SymbolFontBulletsAreDrawnWithRealGlyphs()
    {
        var b = new DocumentBuilder();
        b.ListFormat.ApplyBulletDefault();
        b.ListFormat.ListLevel!.NumberFormat = "\uF0B7"; // as documents from the usual templates store it
        b.Writeln("item");
        var label = b.Document.FirstSection!.Body!.FirstParagraph!.ListLabel.LabelString;
        Assert.Equal("\uF0B7", label);
        var run = b.Document.PageLayout.Pages[0].Items.OfType<Quorix.Folio.Layout.GlyphRun>().First();
        Assert.Equal(Quorix.Folio.Layout.ParagraphLayout.SymbolBullets(label), run.Text[..label.Length]);
        Assert.DoesNotContain((ushort)0, run.Glyphs);
    }
}
