using Quorix.Folio.Layout;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests.Pages;

/// <summary>How content is distributed over pages: breaks, sections, keep rules, tables, headers.</summary>
public class PaginationTests
{
    private static void Filler(DocumentBuilder b, int count, string tag = "f")
    {
        for (int i = 0; i < count; i++) b.Writeln($"{tag}{i} filler line of text");
    }

    /// <summary>How many one-line paragraphs fill a page of a new document.</summary>
    private static int LinesPerPage()
    {
        var b = new DocumentBuilder();
        Filler(b, 200);
        return LayoutProbe.Lines(b.Document, 0).Count;
    }

    [Fact]
    public void TextFlowsOntoNewPagesWhenAPageIsFull()
    {
        int perPage = LinesPerPage();
        Assert.InRange(perPage, 30, 60);
        var b = new DocumentBuilder();
        Filler(b, perPage * 3 + 1);
        Assert.Equal(4, b.Document.PageCount);
        Assert.Equal(3, LayoutProbe.PageOf(b.Document, $"f{perPage * 3} "));
        Assert.Equal(1, LayoutProbe.PageOf(b.Document, $"f{perPage} "));
    }

    [Fact]
    public void PageBreaksAndPageBreakBeforeStartNewPages()
    {
        var b = new DocumentBuilder();
        b.Write("one");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("two");
        b.ParagraphFormat.PageBreakBefore = true;
        b.Writeln("three");
        b.ParagraphFormat.PageBreakBefore = false;
        b.Writeln("four");
        var doc = b.Document;
        Assert.Equal(3, doc.PageCount);
        Assert.Equal(0, LayoutProbe.PageOf(doc, "one"));
        Assert.Equal(1, LayoutProbe.PageOf(doc, "two"));
        Assert.Equal(2, LayoutProbe.PageOf(doc, "three"));
        Assert.Equal(2, LayoutProbe.PageOf(doc, "four"));
    }

    [Fact]
    public void SectionsStartAsTheirBreakSaysWithTheirOwnPageSize()
    {
        var b = new DocumentBuilder();
        b.Writeln("portrait");
        b.InsertBreak(BreakType.SectionBreakContinuous);
        b.Writeln("same page");
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.PageSetup.Orientation = Orientation.Landscape;
        b.Writeln("landscape");
        b.InsertBreak(BreakType.SectionBreakOddPage);
        b.PageSetup.Orientation = Orientation.Portrait;
        b.Writeln("odd");
        var doc = b.Document;
        Assert.Equal(0, LayoutProbe.PageOf(doc, "same page"));
        Assert.Equal(1, LayoutProbe.PageOf(doc, "landscape"));
        // The landscape page is page 2; the next odd page is page 3, so no blank page is needed.
        Assert.Equal(2, LayoutProbe.PageOf(doc, "odd"));
        var info = doc.GetPageInfo(1);
        Assert.True(info.Landscape);
        Assert.Equal(doc.GetPageInfo(0).WidthInPoints, info.HeightInPoints);
        Assert.Throws<ArgumentOutOfRangeException>(() => doc.GetPageInfo(doc.PageCount));
    }

    [Fact]
    public void AnEvenPageSectionAfterAnEvenPageLeavesABlankPage()
    {
        var b = new DocumentBuilder();
        b.Writeln("first");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("second");
        b.InsertBreak(BreakType.SectionBreakEvenPage);
        b.Writeln("even");
        Assert.Equal(3, LayoutProbe.PageOf(b.Document, "even"));
        Assert.Empty(LayoutProbe.Lines(b.Document, 2));
    }

    [Fact]
    public void KeepWithNextMovesAHeadingToThePageOfItsText()
    {
        int perPage = LinesPerPage();
        var b = new DocumentBuilder();
        Filler(b, perPage - 1);
        b.ParagraphFormat.KeepWithNext = true;
        b.Writeln("HEADING");
        b.ParagraphFormat.KeepWithNext = false;
        b.Writeln("body text");
        var doc = b.Document;
        Assert.Equal(1, LayoutProbe.PageOf(doc, "HEADING"));
        Assert.Equal(1, LayoutProbe.PageOf(doc, "body text"));

        // Without the rule the heading stays at the bottom of the first page.
        doc.FirstSection!.Body!.Paragraphs[perPage - 1].ParagraphFormat.KeepWithNext = false;
        Assert.Equal(0, LayoutProbe.PageOf(doc, "HEADING"));
    }

    [Theory]
    [InlineData(true)]
    [InlineData(false)]
    public void WidowControlLeavesNoSingleLineOfAParagraphAlone(bool control)
    {
        int perPage = LinesPerPage();
        var text = string.Join(" ", Enumerable.Range(0, 150).Select(i => "w" + i));
        int alone = 0;
        // Start the paragraph at every place near the bottom of the page.
        for (int before = perPage - 6; before < perPage; before++)
        {
            var b = new DocumentBuilder();
            Filler(b, before);
            b.ParagraphFormat.WidowControl = control;
            b.Writeln(text);
            var doc = b.Document;
            var lines = Enumerable.Range(0, doc.PageCount).SelectMany(p => LayoutProbe.Lines(doc, p).Where(l => l.Text.StartsWith('w')).Select(_ => p)).ToList();
            Assert.True(lines.Count >= 4);
            int onFirst = lines.Count(p => p == lines[0]);
            if (onFirst == 1 || lines.Count - onFirst == 1) alone++;
        }
        if (control) Assert.Equal(0, alone);
        else Assert.True(alone > 0, "without widow control a single line should be left alone somewhere");
    }

    private static Document TallRowTable(bool allowBreak, int linesInRow)
    {
        var b = new DocumentBuilder();
        Filler(b, 10);
        b.StartTable();
        b.InsertCell();
        b.Write("before-row");
        b.EndRow();
        b.RowFormat.AllowBreakAcrossPages = allowBreak;
        b.InsertCell();
        for (int i = 0; i < linesInRow; i++) b.Writeln($"cell line {i}");
        b.Write("last cell line");
        b.InsertCell();
        b.Write("neighbour");
        b.EndRow();
        b.EndTable();
        return b.Document;
    }

    [Fact]
    public void ARowThatMayBreakContinuesOnTheNextPage()
    {
        var doc = TallRowTable(allowBreak: true, linesInRow: 60);
        var row = (Row)doc.GetChildNodes(NodeType.Row, true)[1];
        var collector = new LayoutCollector(doc);
        Assert.Equal(1, collector.GetStartPageIndex(row));
        Assert.Equal(2, collector.GetEndPageIndex(row));
        Assert.Equal(0, LayoutProbe.PageOf(doc, "cell line 0"));
        Assert.Equal(1, LayoutProbe.PageOf(doc, "last cell line"));
        Assert.Equal(0, LayoutProbe.PageOf(doc, "neighbour"));
    }

    [Fact]
    public void ARowThatMayNotBreakMovesWhole()
    {
        var doc = TallRowTable(allowBreak: false, linesInRow: 40);
        var row = (Row)doc.GetChildNodes(NodeType.Row, true)[1];
        var collector = new LayoutCollector(doc);
        Assert.Equal(2, collector.GetStartPageIndex(row));
        Assert.Equal(1, collector.GetNumPagesSpanned(row));
        Assert.Equal(0, LayoutProbe.PageOf(doc, "before-row"));
    }

    [Fact]
    public void TableColumnsFollowTheGrid()
    {
        var b = new DocumentBuilder();
        var table = b.StartTable();
        foreach (var w in new[] { 72.0, 144.0, 36.0 })
        {
            b.CellFormat.Width = w;
            b.InsertCell();
            b.Write("x" + w);
        }
        b.EndRow();
        b.EndTable();
        var doc = b.Document;
        var lefts = LayoutProbe.Lines(doc, 0)[0];
        var runs = doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().OrderBy(r => r.X + r.Xs[0]).Select(r => r.X + r.Xs[0]).ToList();
        Assert.Equal(3, runs.Count);
        Assert.InRange(runs[1] - runs[0], 71.99, 72.01);
        Assert.InRange(runs[2] - runs[1], 143.99, 144.01);
        Assert.Equal("x72x144x36", lefts.Text);
    }

    [Fact]
    public void FootersShowThePageNumberAndCount()
    {
        int perPage = LinesPerPage();
        var b = new DocumentBuilder();
        b.MoveToHeaderFooter(HeaderFooterType.FooterPrimary);
        b.Write("Page ");
        b.InsertField("PAGE", "");
        b.Write(" of ");
        b.InsertField("NUMPAGES", "");
        b.MoveToDocumentEnd();
        Filler(b, perPage * 2);
        var doc = b.Document;
        var texts = LayoutProbe.PageTexts(doc);
        for (int p = 0; p < doc.PageCount; p++) Assert.Contains($"Page {p + 1} of {doc.PageCount}", texts[p]);
    }

    [Fact]
    public void NumberingRestartsWhereASectionSaysSo()
    {
        var b = new DocumentBuilder();
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("#");
        b.InsertField("PAGE", "");
        b.MoveToDocumentEnd();
        b.Writeln("a");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("b");
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.PageSetup.RestartPageNumbering = true;
        b.PageSetup.PageStartingNumber = 7;
        b.Writeln("c");
        var texts = LayoutProbe.PageTexts(b.Document);
        Assert.Contains("#1", texts[0]);
        Assert.Contains("#2", texts[1]);
        Assert.Contains("#7", texts[2]);
    }

    [Fact]
    public void ABigHeaderPushesTheBodyDown()
    {
        var b = new DocumentBuilder();
        b.Writeln("body");
        double plain = LayoutProbe.Lines(b.Document, 0)[0].Y;
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        for (int i = 0; i < 8; i++) b.Writeln("header line " + i);
        var lines = LayoutProbe.Lines(b.Document, 0);
        var body = lines.Single(l => l.Text == "body");
        Assert.True(body.Y > plain + 20);
        Assert.True(lines.Where(l => l.Text.StartsWith("header")).All(l => l.Y < body.Y));
    }

    [Fact]
    public void HeadingRowsRepeatOnEveryPageTheTableReaches()
    {
        var b = new DocumentBuilder();
        b.Writeln("intro");
        b.StartTable();
        b.RowFormat.HeadingFormat = true;
        b.InsertCell();
        b.Write("HEAD");
        b.EndRow();
        b.RowFormat.HeadingFormat = false;
        for (int i = 0; i < 120; i++)
        {
            b.InsertCell();
            b.Write($"row{i}");
            b.EndRow();
        }
        b.EndTable();
        var doc = b.Document;
        Assert.True(doc.PageCount >= 3);
        var rows = new List<string>();
        for (int p = 0; p < doc.PageCount; p++)
        {
            var lines = LayoutProbe.Lines(doc, p).Select(l => l.Text).Where(t => t.StartsWith("row") || t == "HEAD").ToList();
            if (lines.Count == 0) continue;
            Assert.Equal("HEAD", lines[0]);
            Assert.Single(lines, "HEAD");
            rows.AddRange(lines.Skip(1));
        }
        Assert.Equal(Enumerable.Range(0, 120).Select(i => $"row{i}"), rows);
    }

    [Fact]
    public void CellTextTakesTheTableStylesSpacingOverTheDefaults()
    {
        double RowHeight(bool tableStyleSpacing)
        {
            var b = new DocumentBuilder();
            b.Document.Styles.DefaultParagraphFormat.SpaceAfter = 20;
            var table = b.StartTable();
            b.InsertCell();
            b.Write("top");
            b.EndRow();
            b.InsertCell();
            b.Write("bottom");
            b.EndRow();
            b.EndTable();
            table.StyleIdentifier = StyleIdentifier.TableGrid;
            var style = table.TableStyle!;
            if (tableStyleSpacing) style.ParagraphFormat.SpaceAfter = 0;
            else style.ParagraphFormat.ClearFormatting();
            var lines = LayoutProbe.Lines(b.Document, 0);
            return lines[1].Y - lines[0].Y;
        }
        Assert.InRange(RowHeight(false) - RowHeight(true), 19.99, 20.01);
    }

    [Fact]
    public void AVerticallyMergedCellsTextRunsDownOverItsRows()
    {
        var b = new DocumentBuilder();
        b.StartTable();
        b.CellFormat.VerticalMerge = CellMerge.First;
        b.InsertCell();
        b.Write("m1");
        for (int i = 2; i <= 6; i++) { b.InsertParagraph(); b.Write("m" + i); }
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell();
        b.Write("r1");
        b.EndRow();
        b.CellFormat.VerticalMerge = CellMerge.Previous;
        b.InsertCell();
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell();
        b.Write("r2");
        b.EndRow();
        b.EndTable();
        b.Writeln("after");
        var lines = LayoutProbe.Lines(b.Document, 0);
        double Y(string text) => lines.First(l => l.Text.Contains(text)).Y;
        // The second row starts right under the first row's own text, not under the merged cell's six lines.
        Assert.True(Y("r2") < Y("m3"), "the merged cell's text stretched its first row");
        // Together the rows make room for the merged text: what follows the table comes after all of it.
        Assert.True(Y("after") > Y("m6"));
    }
}
