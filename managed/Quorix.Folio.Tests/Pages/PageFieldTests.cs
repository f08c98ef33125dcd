using Quorix.Folio.Fields;
using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Fields whose results depend on pages: drawn per page in headers and footers, computed
/// from the layout by field update in the body, and settled again when writing them moves text.</summary>
public class PageFieldTests
{
    private static void Filler(DocumentBuilder b, int count, string tag = "f")
    {
        for (int i = 0; i < count; i++) b.Writeln($"{tag}{i} filler line of text");
    }

    [Fact]
    public void FootersWriteNumbersInTheSectionsStyleUnlessTheFieldSaysOtherwise()
    {
        var b = new DocumentBuilder();
        b.PageSetup.PageNumberStyle = NumberStyle.LowercaseRoman;
        b.MoveToHeaderFooter(HeaderFooterType.FooterPrimary);
        b.Write("<");
        b.InsertField("PAGE", "");
        b.Write("|");
        b.InsertField("PAGE \\* Arabic", "");
        b.Write("|");
        b.InsertField("SECTIONPAGES", "");
        b.Write(">");
        b.MoveToDocumentEnd();
        b.Writeln("front");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("front two");
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.PageSetup.PageNumberStyle = NumberStyle.UppercaseLetter;
        b.PageSetup.RestartPageNumbering = true;
        b.PageSetup.PageStartingNumber = 1;
        b.Writeln("body");
        var texts = LayoutProbe.PageTexts(b.Document);
        Assert.Contains("<i|1|2>", texts[0]);
        Assert.Contains("<ii|2|2>", texts[1]);
        // The second section has a footer of its own only by link: it shows the previous one, in its own style.
        Assert.Contains("<A|1|1>", texts[2]);
        Assert.Equal(2, b.Document.GetPageInfo(1).PageNumber);
        Assert.Throws<ArgumentOutOfRangeException>(() => b.PageSetup.PageNumberStyle = NumberStyle.Bullet);
    }

    [Fact]
    public void FieldsInTheBodyTakeTheirPageFromTheLayout()
    {
        var b = new DocumentBuilder();
        b.Write("This is page ");
        var here = b.InsertField("PAGE", "?");
        b.Write(" of ");
        var total = b.InsertField("NUMPAGES", "?");
        b.Writeln();
        var before = b.InsertField("PAGEREF target \\p", "?");
        b.Writeln();
        var plain = b.InsertField("PAGEREF target", "?");
        b.Writeln();
        var missing = b.InsertField("PAGEREF nowhere", "?");
        b.Writeln();
        b.InsertBreak(BreakType.PageBreak);
        b.InsertBreak(BreakType.PageBreak);
        b.StartBookmark("target");
        b.Write("the target");
        b.EndBookmark("target");
        b.Writeln();
        var after = b.InsertField("PAGEREF target \\p", "?");
        b.Writeln();
        b.InsertBreak(BreakType.PageBreak);
        b.Write("last page ");
        var late = b.InsertField("PAGE \\* roman", "?");
        var doc = b.Document;
        doc.UpdateFields();
        Assert.Equal("1", here.Result);
        Assert.Equal("4", total.Result);
        Assert.Equal("3", plain.Result);
        Assert.Equal("on page 3", before.Result);
        Assert.Equal("above", after.Result);
        Assert.Equal("iv", late.Result);
        Assert.Equal("Error! Bookmark not defined.", missing.Result);
        Assert.Equal(4, doc.PageCount);
    }

    [Fact]
    public void TableOfContentsNumbersAreThePagesTheHeadingsEndUpOn()
    {
        // Enough headings that the contents fill more than a page, pushing every heading one page on.
        var b = new DocumentBuilder();
        b.InsertTableOfContents("\\o \"1-3\" \\h");
        b.Writeln();
        const int headings = 70;
        for (int i = 0; i < headings; i++)
        {
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
            b.ParagraphFormat.PageBreakBefore = i == 0;
            b.Writeln($"Chapter {i}");
            b.ParagraphFormat.PageBreakBefore = false;
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
            Filler(b, 5 + i % 30, $"c{i}-");
        }
        var doc = b.Document;
        doc.UpdateFields();
        var collector = new LayoutCollector(doc);
        var refs = doc.Range.Fields.OfType<FieldPageRef>().ToList();
        Assert.Equal(headings, refs.Count);
        var paragraphs = doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().Where(p => p.ParagraphFormat.StyleIdentifier == StyleIdentifier.Heading1).ToList();
        Assert.Equal(headings, paragraphs.Count);
        Assert.True(collector.GetStartPageIndex(paragraphs[0]) >= 3, "the contents take more than one page");
        for (int i = 0; i < headings; i++)
            Assert.Equal(collector.GetStartPageIndex(paragraphs[i]).ToString(), refs[i].Result);
        // Updating again changes nothing: the numbers hold still.
        var numbers = refs.Select(r => r.Result).ToList();
        doc.UpdateFields();
        Assert.Equal(numbers, doc.Range.Fields.OfType<FieldPageRef>().Select(r => r.Result));
    }

    [Fact]
    public void UpdateLeavesPageFieldsOfHeadersToTheLayout()
    {
        var b = new DocumentBuilder();
        b.MoveToHeaderFooter(HeaderFooterType.FooterPrimary);
        var page = b.InsertField("PAGE", "stored");
        var count = b.InsertField("NUMPAGES", "stored");
        b.MoveToDocumentEnd();
        b.Writeln("one");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("two");
        b.Document.UpdateFields();
        Assert.Equal(("stored", "stored"), (page.Result, count.Result));
        var texts = LayoutProbe.PageTexts(b.Document);
        Assert.Contains("12", texts[0]);
        Assert.Contains("22", texts[1]);
    }

    [Fact]
    public void NoteRefGivesTheMarkOfTheNoteInTheBookmark()
    {
        var b = new DocumentBuilder();
        b.Write("one");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "first note");
        b.Write(" two");
        b.StartBookmark("second");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "second note");
        b.EndBookmark("second");
        b.Writeln();
        b.StartBookmark("plain");
        b.Write("no note here");
        b.EndBookmark("plain");
        b.Writeln();
        var good = b.InsertField("NOTEREF second", "?");
        var bad = b.InsertField("NOTEREF plain", "?");
        b.Document.FootnoteOptions.NumberStyle = NumberStyle.LowercaseLetter;
        b.Document.UpdateFields();
        Assert.Equal("b", good.Result);
        Assert.StartsWith("Error!", bad.Result);
    }
}
