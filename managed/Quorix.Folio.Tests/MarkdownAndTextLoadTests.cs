using System.Text;
using Quorix.Folio.Loading;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class MarkdownAndTextLoadTests
{
    internal static Document Load(string text, LoadOptions options) =>
        new Document(new MemoryStream(Encoding.UTF8.GetBytes(text)), options);

    private static Document Md(string text) => Load(text, new MarkdownLoadOptions());

    private static Paragraph[] Paras(Document d) => d.FirstSection!.Body!.Paragraphs.ToArray();

    [Fact]
    public void HeadingsBecomeHeadingStylesAndEmphasisBecomesFormatting()
    {
        var d = Md("# Title\n\nSome **bold**, *italic*, ~~gone~~ and `code`.\n\n### Third\n");
        var p = Paras(d);
        Assert.Equal(StyleIdentifier.Heading1, p[0].ParagraphFormat.StyleIdentifier);
        Assert.Equal(StyleIdentifier.Heading3, p[2].ParagraphFormat.StyleIdentifier);
        var runs = p[1].Runs.ToArray();
        Assert.True(runs.Single(r => r.Text == "bold").Font.Bold);
        Assert.False(runs.Single(r => r.Text == "Some ").Font.Bold);
        Assert.True(runs.Single(r => r.Text == "italic").Font.Italic);
        Assert.True(runs.Single(r => r.Text == "gone").Font.StrikeThrough);
        Assert.Equal("Courier New", runs.Single(r => r.Text == "code").Font.Name);
        Assert.Equal(LoadFormat.Markdown, d.OriginalLoadFormat);
    }

    [Fact]
    public void ListsKeepKindStartAndNesting()
    {
        var d = Md("3. three\n4. four\n   - inner\n\n- a\n- b\n");
        var p = Paras(d);
        Assert.Equal(5, p.Length);
        Assert.All(p, x => Assert.True(x.IsListItem));
        Assert.Same(p[0].ListFormat.List, p[2].ListFormat.List);
        Assert.Equal(1, p[2].ListFormat.ListLevelNumber);
        Assert.Equal(NumberStyle.Bullet, p[2].ListFormat.ListLevel!.NumberStyle);
        Assert.NotSame(p[0].ListFormat.List, p[3].ListFormat.List);
        Assert.Equal("3.", p[0].ListLabel.LabelString);
        Assert.Equal("4.", p[1].ListLabel.LabelString);
        Assert.Equal(NumberStyle.Bullet, p[3].ListFormat.ListLevel!.NumberStyle);
    }

    [Fact]
    public void PipeTablesBecomeTablesWithHeadingRowAndAlignment()
    {
        var d = Md("| a | b |\n|:--|--:|\n| 1 | **2** |\n| 3 | 4 |\n");
        var t = d.FirstSection!.Body!.Tables[0];
        Assert.Equal(3, t.Rows.Count);
        Assert.True(t.FirstRow!.RowFormat.HeadingFormat);
        Assert.Equal("2", t.Rows[1].Cells[1].GetText().TrimEnd('\a'));
        Assert.Equal(ParagraphAlignment.Right, t.Rows[1].Cells[1].FirstParagraph!.ParagraphFormat.Alignment);
        Assert.True(t.Rows[1].Cells[1].FirstParagraph!.Runs[0].Font.Bold);
    }

    [Fact]
    public void LinksImagesCodeBlocksQuotesAndNotes()
    {
        var dir = Directory.CreateTempSubdirectory();
        File.WriteAllBytes(Path.Combine(dir.FullName, "pic.png"), TestSupport.Png(4, 3));
        var md = Path.Combine(dir.FullName, "n.md");
        File.WriteAllText(md, "See [the site](https://example.org/a) ![a pic](pic.png) ![far](missing.png)[^1]\n\n```\nline 1\n  line 2\n```\n\n> quoted\n\n[^1]: The note.\n");
        var d = new Document(md);
        var text = d.GetText();
        Assert.Contains("HYPERLINK \"https://example.org/a\"", text);
        var shapes = d.GetChildNodes(NodeType.Shape, true);
        Assert.Equal(1, shapes.Count);
        Assert.Equal("a pic", ((Drawing.Shape)shapes[0]).AlternativeText);
        // The picture that is not there stays a link to where it should be.
        Assert.Contains("HYPERLINK \"missing.png\"", text);
        var note = Assert.Single(d.GetChildNodes(NodeType.Footnote, true).OfType<Notes.Footnote>());
        Assert.Equal("The note.", note.GetText().Trim());
        var p = Paras(d);
        var code = p.Where(x => x.ParagraphFormat.StyleName == "HTML Preformatted").Select(x => x.GetText().TrimEnd('\r', '\f')).ToArray();
        Assert.Equal(new[] { "line 1", "  line 2" }, code);
        Assert.Equal(StyleIdentifier.Quote, p.Single(x => x.GetText().StartsWith("quoted")).ParagraphFormat.StyleIdentifier);
        dir.Delete(true);
    }

    [Fact]
    public void MarkdownSurvivesTheRoundTripThroughOurOwnWriter()
    {
        const string src = "# Head\n\nText with **bold** and *it*.\n\n- one\n- two\n\n| x | y |\n| --- | --- |\n| 1 | 2 |\n";
        var back = TestSupport.ToText(Md(src), SaveFormat.Markdown);
        Assert.Equal(src, back);
    }

    [Fact]
    public void UnderlineAndEmptyLinesOnlyWhenAsked()
    {
        Assert.DoesNotContain(Paras(Md("a ++u++ b"))[0].Runs.ToArray(), r => r.Font.Underline != Underline.None);
        var d = Load("a ++u++ b\n\n\n\nnext", new MarkdownLoadOptions { ImportUnderlineFormatting = true, PreserveEmptyLines = true });
        Assert.Equal(Underline.Single, Paras(d)[0].Runs.ToArray().Single(r => r.Text == "u").Font.Underline);
        Assert.Equal(5, Paras(d).Length);
    }

    [Fact]
    public void TextLinesBecomeParagraphsListsAndIndents()
    {
        var d = Load("first  \n    indented\n1. one\n2. two\n- dash\n\fafter\n", new TxtLoadOptions());
        var p = Paras(d);
        Assert.Equal(new[] { "first", "indented", "one", "two", "dash", "\fafter" }, p.Select(x => x.GetText().TrimEnd('\r', '\f')).ToArray());
        Assert.True(p[1].ParagraphFormat.LeftIndent > 0);
        Assert.Same(p[2].ListFormat.List, p[3].ListFormat.List);
        Assert.NotSame(p[3].ListFormat.List, p[4].ListFormat.List);
        Assert.False(p[5].IsListItem);

        var kept = Load("  x  \n1. y", new TxtLoadOptions { LeadingSpacesOptions = TxtLeadingSpacesOptions.Preserve, TrailingSpacesOptions = TxtTrailingSpacesOptions.Preserve, DetectNumberingWithWhitespaces = false });
        Assert.Equal(new[] { "  x  ", "1. y" }, Paras(kept).Select(x => x.GetText().TrimEnd('\r', '\f')).ToArray());
    }

    [Fact]
    public void EncodingsAreDetectedOrTaken()
    {
        var latin = Encoding.Latin1.GetBytes("caf\u00e9");
        Assert.StartsWith("caf\u00e9", new Document(new MemoryStream(latin), new TxtLoadOptions()).GetText());
        var utf16 = Encoding.Unicode.GetPreamble().Concat(Encoding.Unicode.GetBytes("\u4e2d\u6587")).ToArray();
        Assert.StartsWith("\u4e2d\u6587", new Document(new MemoryStream(utf16), new TxtLoadOptions()).GetText());
        var cyr = Encoding.UTF8.GetBytes("\u0434\u0430");
        Assert.StartsWith("\u00d0", new Document(new MemoryStream(cyr), new TxtLoadOptions { Encoding = Encoding.Latin1 }).GetText());
    }

    [Fact]
    public void FormatIsDetectedFromContentAndName()
    {
        var dir = Directory.CreateTempSubdirectory();
        var md = Path.Combine(dir.FullName, "a.md");
        var txt = Path.Combine(dir.FullName, "a.txt");
        File.WriteAllText(md, "# H\n");
        File.WriteAllText(txt, "# H\n");
        Assert.Equal(LoadFormat.Markdown, new Document(md).OriginalLoadFormat);
        var plain = new Document(txt);
        Assert.Equal(LoadFormat.Text, plain.OriginalLoadFormat);
        Assert.Equal("# H", plain.FirstSection!.Body!.FirstParagraph!.GetText().TrimEnd('\r', '\f'));
        // Text named as a package is refused rather than read as text.
        var named = Path.Combine(dir.FullName, "a.docx");
        File.WriteAllText(named, "not a document");
        Assert.Contains("DOCX", Assert.Throws<UnsupportedFileFormatException>(() => new Document(named)).Message);
        // Text from a stream with no name is plain text.
        Assert.Equal(LoadFormat.Text, new Document(new MemoryStream(Encoding.UTF8.GetBytes("# H"))).OriginalLoadFormat);
        dir.Delete(true);
    }
}
