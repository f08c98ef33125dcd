using Quorix.Folio.Layout;
using Quorix.Folio.Notes;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Footnotes at the bottom of the page that references them, continued when too long;
/// endnotes after their section or the document; marks numbered as the note options say.</summary>
public class NoteLayoutTests
{
    private static void Filler(DocumentBuilder b, int count, string tag = "f")
    {
        for (int i = 0; i < count; i++) b.Writeln($"{tag}{i} filler line of text");
    }

    private static int LinesPerPage()
    {
        var b = new DocumentBuilder();
        Filler(b, 200);
        return LayoutProbe.Lines(b.Document, 0).Count;
    }

    private static double BottomMargin(Document doc) => doc.FirstSection!.PageSetup.PageHeight - doc.FirstSection.PageSetup.BottomMargin;

    /// <summary>The separator rule's height on a page, or null when the page has no notes.</summary>
    private static double? Separator(Document doc, int page) =>
        doc.PageLayout.Pages[page].Items.OfType<LineItem>().FirstOrDefault(l => Math.Abs(l.X2 - l.X1 - 144) < 0.01 && l.Y1 == l.Y2)?.Y1;

    [Fact]
    public void AFootnoteSitsAtTheBottomOfThePageOfItsReferenceUnderARule()
    {
        var b = new DocumentBuilder();
        b.Write("Body with a note");
        b.InsertFootnote(FootnoteType.Footnote, "The note text");
        b.Writeln(" and more.");
        Filler(b, 3);
        var doc = b.Document;
        var lines = LayoutProbe.Lines(doc, 0);
        var note = lines.Single(l => l.Text.Contains("The note text"));
        Assert.StartsWith("1", note.Text);
        Assert.Contains("Body with a note1 and more.", lines[0].Text);
        // Below every line of the body, above the bottom margin, and under the rule.
        Assert.True(lines.Where(l => l != note).All(l => l.Y < note.Y));
        Assert.InRange(note.Y, BottomMargin(doc) - 30, BottomMargin(doc));
        var rule = Separator(doc, 0);
        Assert.NotNull(rule);
        Assert.InRange(rule!.Value, lines[^2].Y, note.Y);
        Assert.Equal(1, new LayoutCollector(doc).GetStartPageIndex(doc.GetChildNodes(NodeType.Footnote, true)[0]));
    }

    [Fact]
    public void TheNotesTakeRoomFromTheTextSoALineMovesWithItsNote()
    {
        int perPage = LinesPerPage();
        var b = new DocumentBuilder();
        Filler(b, perPage - 2);
        b.Write("REF line");
        b.InsertFootnote(FootnoteType.Footnote, string.Join(" ", Enumerable.Repeat("long note words", 60)));
        b.Writeln();
        Filler(b, 5, "after");
        var doc = b.Document;
        // The referencing line and its note do not fit under the filler: both go to page 2.
        Assert.Equal(1, LayoutProbe.PageOf(doc, "REF line"));
        Assert.Null(Separator(doc, 0));
        var page = LayoutProbe.Lines(doc, 1);
        var rule = Separator(doc, 1)!.Value;
        Assert.All(page.Where(l => l.Text.Contains("filler")), l => Assert.True(l.Y < rule));
        Assert.All(page.Where(l => l.Text.Contains("long note")), l => Assert.True(l.Y > rule && l.Y <= BottomMargin(doc)));
    }

    [Fact]
    public void ANoteLongerThanThePageContinuesOnTheNextWithNoLineLost()
    {
        var b = new DocumentBuilder();
        b.Write("start");
        var words = string.Join(" ", Enumerable.Range(0, 1500).Select(i => $"w{i}"));
        b.InsertFootnote(FootnoteType.Footnote, words);
        b.Writeln();
        b.Writeln("end of body");
        var doc = b.Document;
        Assert.True(doc.PageCount >= 2);
        var text = string.Join(" ", LayoutProbe.PageTexts(doc));
        for (int i = 0; i < 1500; i += 37) Assert.Contains($"w{i} ", text + " ");
        Assert.Contains("w1499", text);
        Assert.NotNull(Separator(doc, 1));
        for (int p = 0; p < doc.PageCount; p++)
            Assert.All(LayoutProbe.Lines(doc, p), l => Assert.True(l.Y <= BottomMargin(doc) + 0.5, $"page {p}: '{l.Text}' below the margin"));
    }

    [Fact]
    public void MarksFollowTheNumberingOptions()
    {
        var b = new DocumentBuilder();
        for (int i = 0; i < 3; i++)
        {
            b.Write($"a{i}");
            b.InsertFootnote(FootnoteType.Footnote, $"note a{i}");
            b.Writeln();
        }
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.Write("b0");
        b.InsertFootnote(FootnoteType.Footnote, "note b0");
        b.Writeln();
        b.Write("custom");
        var custom = b.InsertFootnote(FootnoteType.Footnote, "note custom");
        custom.ReferenceMark = "*";
        b.Writeln();
        var doc = b.Document;
        string Marks() => string.Join(",", LayoutProbe.PageTexts(doc).SelectMany(t => t.Split('\n')).Where(l => l.Contains("note ")).Select(l => l.Split(' ')[0]));

        Assert.Equal("1,2,3,4,*", Marks());
        doc.FootnoteOptions.StartNumber = 5;
        doc.FootnoteOptions.NumberStyle = NumberStyle.LowercaseRoman;
        Assert.Equal("v,vi,vii,viii,*", Marks());
        doc.FootnoteOptions.RestartRule = FootnoteNumberingRule.RestartSection;
        Assert.Equal("v,vi,vii,v,*", Marks());
        doc.FootnoteOptions.StartNumber = 1;
        doc.FootnoteOptions.NumberStyle = NumberStyle.Arabic;
        Assert.Equal(FootnoteNumberingRule.RestartSection, doc.Sections[1].PageSetup.FootnoteOptions.RestartRule);
        // Options travel in the section properties of the saved document.
        var saved = TestSupport.RoundTrip(doc);
        Assert.Equal(FootnoteNumberingRule.RestartSection, saved.FootnoteOptions.RestartRule);
        Assert.Throws<ArgumentException>(() => doc.EndnoteOptions.RestartRule = FootnoteNumberingRule.RestartPage);
        Assert.Throws<ArgumentOutOfRangeException>(() => doc.FootnoteOptions.StartNumber = 0);
    }

    [Fact]
    public void NumberingRestartedPerPageUsesThePagesTheNotesLandOn()
    {
        int perPage = LinesPerPage();
        var b = new DocumentBuilder();
        for (int i = 0; i < perPage * 2; i++)
        {
            b.Write($"line{i}");
            if (i % 10 == 0) b.InsertFootnote(FootnoteType.Footnote, $"note{i}");
            b.Writeln();
        }
        var doc = b.Document;
        doc.FootnoteOptions.RestartRule = FootnoteNumberingRule.RestartPage;
        Assert.True(doc.PageCount >= 2);
        var firsts = Enumerable.Range(0, doc.PageCount)
            .Select(p => LayoutProbe.Lines(doc, p).FirstOrDefault(l => l.Text.Contains(" note"))?.Text.Split(' ')[0]).ToList();
        Assert.All(firsts.Where(f => f != null), f => Assert.Equal("1", f));
        Assert.True(firsts.Count(f => f != null) >= 2);
    }

    [Fact]
    public void FootnotesBeneathTextFollowTheLastLine()
    {
        var b = new DocumentBuilder();
        b.Write("short page");
        b.InsertFootnote(FootnoteType.Footnote, "close note");
        b.Writeln();
        var doc = b.Document;
        doc.FootnoteOptions.Position = FootnotePosition.BeneathText;
        var lines = LayoutProbe.Lines(doc, 0);
        Assert.InRange(lines.Single(l => l.Text.Contains("close note")).Y, lines[0].Y, lines[0].Y + 60);
    }

    [Theory]
    [InlineData(EndnotePosition.EndOfDocument)]
    [InlineData(EndnotePosition.EndOfSection)]
    public void EndnotesFollowTheirSectionOrTheDocument(EndnotePosition position)
    {
        var b = new DocumentBuilder();
        b.Write("first section");
        b.InsertFootnote(FootnoteType.Endnote, "end note one");
        b.Writeln();
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.Write("second section");
        b.InsertFootnote(FootnoteType.Endnote, "end note two");
        b.Writeln();
        var doc = b.Document;
        doc.EndnoteOptions.Position = position;
        var texts = LayoutProbe.PageTexts(doc);
        Assert.Equal(2, doc.PageCount);
        // Endnotes are numbered i, ii by default and come after the text they end.
        Assert.Contains("first sectioni", texts[0]);
        Assert.Contains("ii end note two", texts[1]);
        Assert.Equal(position == EndnotePosition.EndOfSection ? 0 : 1, LayoutProbe.PageOf(doc, "i end note one"));
        Assert.True(texts[1].IndexOf("second section", StringComparison.Ordinal) < texts[1].IndexOf("end note two", StringComparison.Ordinal));
    }
}
