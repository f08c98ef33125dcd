using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class TextOutputTests
{
    [Fact]
    public void PlainTextHasParagraphsListLabelsTablesAndNoFieldCodes()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("Title line");
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("first");
        b.ListFormat.ListIndent();
        b.Writeln("nested");
        b.ListFormat.ListOutdent();
        b.Writeln("second");
        b.ListFormat.RemoveNumbers();
        b.InsertHyperlink("click", "https://x.test/", false);
        b.Writeln();
        b.StartTable();
        b.InsertCell(); b.Write("a");
        b.InsertCell(); b.Write("b");
        b.EndTable();
        var text = TestSupport.ToText(doc, SaveFormat.Text);
        var lines = text.Split("\r\n");
        Assert.Equal("Title line", lines[0]);
        Assert.Equal("1. first", lines[1]);
        Assert.Equal("a. nested", lines[2]);
        Assert.Equal("2. second", lines[3]);
        Assert.Equal("click", lines[4]);
        Assert.Equal("a\tb", lines[5]);
        Assert.DoesNotContain("HYPERLINK", text);

        var ms = new MemoryStream();
        doc.Save(ms, new TxtSaveOptions { ParagraphBreak = "\n", SimplifyListLabels = true, ListIndentationCount = 2 });
        var simple = System.Text.Encoding.UTF8.GetString(ms.ToArray()).Split('\n');
        Assert.Equal("  1. nested", simple[2]);
    }

    [Fact]
    public void MarkdownRendersStructureAndEscapesText()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading2;
        b.Writeln("Section *one*");
        b.Write("Mixed ");
        b.Font.Bold = true;
        b.Write("bold ");
        b.Font.Bold = false;
        b.Font.Italic = true;
        b.Write("italic");
        b.Font.Italic = false;
        b.Writeln(" and 2 < 3 with [brackets]");
        b.Writeln("1. not a list");
        b.ListFormat.ApplyBulletDefault();
        b.Writeln("dot");
        b.ListFormat.ListIndent();
        b.Writeln("deeper");
        b.ListFormat.RemoveNumbers();
        b.InsertHyperlink("jump", "target", true);
        b.Writeln();
        b.StartTable();
        b.CellFormat.HorizontalMerge = CellMerge.First;
        b.InsertCell(); b.Write("head|er");
        b.CellFormat.HorizontalMerge = CellMerge.Previous;
        b.InsertCell();
        b.EndRow();
        b.CellFormat.HorizontalMerge = CellMerge.None;
        b.InsertCell(); b.Write("x");
        b.InsertCell(); b.Write("y");
        b.EndTable();
        b.InsertImage(TestSupport.Png(1, 1));
        var md = TestSupport.ToText(doc, SaveFormat.Markdown);
        Assert.StartsWith("## Section \\*one\\*\n\n", md);
        Assert.Contains("Mixed **bold** *italic* and 2 \\< 3 with \\[brackets\\]", md);
        Assert.Contains("1\\. not a list", md);
        Assert.Contains("- dot\n    - deeper", md);
        Assert.Contains("[jump](#target)", md);
        Assert.Contains("| head\\|er |  |\n| --- | --- |\n| x | y |", md);
        Assert.Contains("![](data:image/png;base64,", md);
    }

    [Fact]
    public void MarkdownToFileWritesPicturesBesideIt()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = new Document();
            new DocumentBuilder(doc).InsertImage(TestSupport.Png(3, 3));
            var path = Path.Combine(dir, "out.md");
            doc.Save(path);
            var md = File.ReadAllText(path);
            Assert.Contains("![](out.001.png)", md);
            Assert.Equal(TestSupport.Png(3, 3), File.ReadAllBytes(Path.Combine(dir, "out.001.png")));
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void MarkdownPlainListModeKeepsTheDocumentsLabels()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var list = doc.Lists.Add(Lists.ListTemplate.NumberUppercaseRomanDot);
        b.ListFormat.List = list;
        b.Writeln("alpha");
        b.Writeln("beta");
        list.ListLevels[0].StartAt = 3;
        var ms = new MemoryStream();
        doc.Save(ms, new MarkdownSaveOptions { ListExportMode = MarkdownListExportMode.PlainText });
        var md = System.Text.Encoding.UTF8.GetString(ms.ToArray());
        Assert.Equal("III. alpha\n\nIV. beta\n", md);
    }

    [Fact]
    public void MarkdownReferenceLinksListTheirAddressesOnceAtTheEnd()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("See ");
        b.InsertHyperlink("the site", "https://example.com/a b", false);
        b.Write(", the ");
        b.InsertHyperlink("other one", "https://example.org/", false);
        b.Writeln(".");
        b.Write("Again ");
        b.InsertHyperlink("the site", "https://example.com/a b", false);
        b.Writeln();
        string Save(MarkdownLinkExportMode mode)
        {
            var ms = new MemoryStream();
            doc.Save(ms, new MarkdownSaveOptions { LinkExportMode = mode });
            return System.Text.Encoding.UTF8.GetString(ms.ToArray());
        }
        Assert.Equal("See [the site][1], the [other one][2].\n\nAgain [the site][1]\n\n[1]: <https://example.com/a b>\n[2]: <https://example.org/>\n",
            Save(MarkdownLinkExportMode.Reference));
        Assert.Equal(Save(MarkdownLinkExportMode.Inline), Save(MarkdownLinkExportMode.Auto));
        Assert.Contains("[other one](https://example.org/)", Save(MarkdownLinkExportMode.Inline));
        // Read back, both forms give the same links.
        foreach (var mode in new[] { MarkdownLinkExportMode.Reference, MarkdownLinkExportMode.Inline })
        {
            var back = new Document(new MemoryStream(System.Text.Encoding.UTF8.GetBytes(Save(mode))), new Loading.LoadOptions { LoadFormat = LoadFormat.Markdown });
            var codes = back.Range.Fields.Select(f => f.GetFieldCode()).ToArray();
            Assert.Equal(3, codes.Length);
            Assert.Contains("https://example.org/", codes[1]);
        }
    }
}
