using System.Reflection;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class ModelTests
{
    [Fact]
    public void NewDocumentHasOneSectionBodyAndEmptyParagraph()
    {
        var doc = new Document();
        Assert.Equal(1, doc.Sections.Count);
        var body = doc.FirstSection!.Body!;
        Assert.Single(body.Paragraphs);
        Assert.Equal("\f", doc.GetText());
        Assert.Equal("Normal", body.FirstParagraph!.ParagraphFormat.StyleName);
    }

    [Fact]
    public void TextOfParagraphsCellsAndSectionsUsesControlCharacters()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("one");
        b.StartTable();
        b.InsertCell(); b.Write("a");
        b.InsertCell(); b.Write("b");
        b.EndRow();
        b.EndTable();
        b.Write("two");
        var text = doc.GetText();
        Assert.Equal("one\ra\u0007b\u0007\u0007two\f", text);
        var table = doc.FirstSection!.Body!.Tables[0];
        Assert.Equal("a\u0007", table.FirstRow!.FirstCell!.GetText());
    }

    [Fact]
    public void ChildNodesAreLiveAndIndexableFromBothEnds()
    {
        var doc = new Document();
        var body = doc.FirstSection!.Body!;
        var paragraphs = body.Paragraphs;
        var p2 = new Paragraph(doc);
        body.AppendChild(p2);
        Assert.Equal(2, paragraphs.Count);
        Assert.Same(p2, paragraphs[-1]);
        Assert.Same(p2, paragraphs[1]);
        Assert.Throws<ArgumentOutOfRangeException>(() => paragraphs[2]);
        p2.Remove();
        Assert.Equal(1, paragraphs.Count);
        Assert.Null(p2.ParentNode);
    }

    [Fact]
    public void TreeRefusesInvalidInsertions()
    {
        var doc = new Document();
        var other = new Document();
        var body = doc.FirstSection!.Body!;
        Assert.Throws<ArgumentException>(() => body.AppendChild(new Run(doc, "x")));
        Assert.Throws<ArgumentException>(() => body.AppendChild(new Paragraph(other)));
        var table = new Table(doc);
        body.AppendChild(table);
        Assert.Throws<ArgumentException>(() => table.AppendChild(new Paragraph(doc)));
        var row = new Row(doc);
        table.AppendChild(row);
        Assert.Throws<ArgumentException>(() => row.AppendChild(table));
    }

    [Fact]
    public void DeepChildNodesFollowDocumentOrder()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("first");
        b.StartTable();
        b.InsertCell(); b.Write("in cell");
        b.EndTable();
        b.Writeln("last");
        var runs = doc.GetChildNodes(NodeType.Run, true).Select(n => ((Run)n).Text).Where(t => t.Length > 0).ToArray();
        Assert.Equal(new[] { "first", "in cell", "last" }, runs);
        Assert.Equal(4, doc.GetChildNodes(NodeType.Paragraph, true).Count);
        Assert.Equal(3, doc.FirstSection!.Body!.GetChildNodes(NodeType.Paragraph, false).Count);
    }

    [Fact]
    public void CloneIsIndependentOfTheOriginal()
    {
        var doc = new Document();
        new DocumentBuilder(doc).Write("original");
        var copy = doc.Clone();
        ((Run)copy.GetChild(NodeType.Run, 0, true)!).Text = "changed";
        Assert.Equal("original\f", doc.GetText());
        Assert.Equal("changed\f", copy.GetText());
        var shallow = doc.FirstSection!.Body!.FirstParagraph!.Clone(false);
        Assert.False(((CompositeNode)shallow).HasChildNodes);
    }

    [Fact]
    public void AppendDocumentCarriesStylesAndLists()
    {
        var src = new Document();
        var sb = new DocumentBuilder(src);
        var custom = src.Styles.Add(StyleType.Paragraph, "Fancy");
        custom.Font.Italic = true;
        sb.ParagraphFormat.StyleName = "Fancy";
        sb.ListFormat.ApplyNumberDefault();
        sb.Writeln("item");
        var dst = new Document();
        dst.AppendDocument(src, ImportFormatMode.KeepSourceFormatting);
        Assert.Equal(2, dst.Sections.Count);
        var p = dst.LastSection!.Body!.FirstParagraph!;
        Assert.Equal("Fancy", p.ParagraphFormat.StyleName);
        Assert.True(p.ListFormat.IsListItem);
        Assert.Same(dst.Lists, p.ListFormat.List!.Owner);
        Assert.True(dst.Styles["Fancy"]!.Font.Italic);
    }

    [Fact]
    public void PublicConstantsKeepTheirConventionalValues()
    {
        Assert.Equal(315, (int)WatermarkLayout.Diagonal);
        Assert.Equal(0, (int)WatermarkLayout.Horizontal);
        var fields = typeof(ControlChar).GetFields(BindingFlags.Public | BindingFlags.Static);
        var names = new[] { "CellChar", "TabChar", "LineFeedChar", "LineBreakChar", "ParagraphBreakChar", "SectionBreakChar", "PageBreakChar",
            "ColumnBreakChar", "SpaceChar", "NonBreakingSpaceChar", "Cell", "Tab", "LineFeed", "LineBreak", "ParagraphBreak", "SectionBreak",
            "PageBreak", "ColumnBreak", "NonBreakingSpace", "Lf", "Cr", "CrLf" };
        foreach (var n in names)
        {
            var f = fields.SingleOrDefault(x => x.Name == n);
            Assert.True(f != null, n + " must be a public static field");
            Assert.Equal(n.EndsWith("Char") ? typeof(char) : typeof(string), f!.FieldType);
        }
        Assert.Equal("\r\n", ControlChar.CrLf);
        Assert.Equal('\u000b', ControlChar.LineBreakChar);
    }

    [Fact]
    public void DocumentSaveHasExactlyTheFiveOverloadsInOrder()
    {
        var saves = typeof(Document).GetMethods().Where(m => m.Name == "Save").Select(m =>
            string.Join(",", m.GetParameters().Select(p => p.ParameterType.Name + " " + p.Name))).ToArray();
        Assert.Equal(new[]
        {
            "String fileName", "String fileName,SaveFormat saveFormat", "String fileName,SaveOptions saveOptions",
            "Stream stream,SaveFormat saveFormat", "Stream stream,SaveOptions saveOptions",
        }, saves);
    }

    [Fact]
    public void FontSizeIsValidatedAndInheritedFromStyles()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Write("Title");
        var run = (Run)doc.GetChild(NodeType.Run, 0, true)!;
        Assert.True(run.Font.Bold);
        Assert.Equal(16, run.Font.Size);
        run.Font.Size = 9.5;
        Assert.Equal(9.5, run.Font.Size);
        Assert.Throws<ArgumentOutOfRangeException>(() => run.Font.Size = 0);
        Assert.Equal(12, doc.FirstSection!.Body!.FirstParagraph!.ParagraphFormat.SpaceBefore);
    }
}
