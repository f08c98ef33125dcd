using Quorix.Folio.Fields;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

/// <summary>Editing the tree: collections, fields, bookmarks, sections, headers and imports.</summary>
public class StructureTests
{
    [Fact]
    public void CollectionsInsertRemoveAndClear()
    {
        var doc = new Document();
        var body = doc.FirstSection!.Body!;
        var paras = body.Paragraphs;
        var a = new Paragraph(doc);
        a.AppendChild(new Run(doc, "a"));
        var c = new Paragraph(doc);
        c.AppendChild(new Run(doc, "c"));
        paras.Add(a);
        paras.Insert(0, c);
        Assert.Equal(new[] { "c", "", "a" }, paras.ToArray().Select(p => p.GetText().TrimEnd('\r', '\f')).ToArray());
        Assert.Equal(2, paras.IndexOf(a));
        Assert.True(paras.Contains(c));
        paras.RemoveAt(1);
        Assert.Equal(2, paras.Count);
        Assert.Throws<ArgumentOutOfRangeException>(() => paras.Insert(5, new Paragraph(doc)));
        paras.Clear();
        Assert.Equal(0, paras.Count);
        Assert.Equal("", doc.GetText());
        // Saving an emptied document still gives a valid file with one paragraph.
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(1, back.FirstSection!.Body!.Paragraphs.Count);
    }

    [Fact]
    public void SiblingNavigationAndAncestors()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.StartTable();
        b.InsertCell(); b.Write("x");
        b.InsertCell(); b.Write("y");
        b.EndTable();
        var table = doc.FirstSection!.Body!.Tables[0];
        var first = table.FirstRow!.FirstCell!;
        var second = (Cell)first.NextSibling!;
        Assert.Same(first, second.PreviousSibling);
        Assert.Null(second.NextSibling);
        Assert.Same(table, second.FirstParagraph!.GetAncestor(NodeType.Table));
        Assert.Same(doc.FirstSection, second.GetAncestor(NodeType.Section));
        Assert.Null(table.GetAncestor(NodeType.Cell));
        Assert.True(second.IsLastCell);
        Assert.True(table.FirstRow.IsFirstRow && table.FirstRow.IsLastRow);
        Assert.True(second.FirstParagraph.IsInCell && second.FirstParagraph.IsEndOfCell);
        Assert.Equal(1, table.FirstRow.IndexOf(second));
    }

    [Fact]
    public void FieldsExposeCodeAndResultAndCanBeRemovedOrUnlinked()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("See ");
        var link = b.InsertHyperlink("the site", "https://example.com/a b", false);
        b.Write(" and page ");
        var page = b.InsertField("PAGE", "4");
        Assert.Equal(FieldType.FieldHyperlink, link.Type);
        Assert.Equal("HYPERLINK \"https://example.com/a b\"", link.GetFieldCode());
        Assert.Equal(FieldType.FieldPage, page.Start.FieldType);
        Assert.Same(page.End, page.Separator!.GetField()!.End);
        page.Result = "7";
        Assert.Equal("7", TestSupport.RoundTrip(doc).Range.Fields.Single(f => f.Type == FieldType.FieldPage).Result);
        link.Unlink();
        page.Remove();
        Assert.Equal("See the site and page \f", doc.GetText());
        Assert.Empty(doc.Range.Fields);
        var md = TestSupport.ToText(doc, SaveFormat.Markdown);
        Assert.Equal("See the site and page\n", md.Replace(" \n", "\n"));
    }

    [Fact]
    public void NestedFieldsShowOnlyTheirResults()
    {
        var doc = new Document();
        var p = doc.FirstSection!.Body!.FirstParagraph!;
        var start = (FieldStart)p.AppendChild(new FieldStart(doc));
        p.AppendChild(new Run(doc, " IF "));
        // The inner field stands in the outer field's code; only its result counts there.
        p.AppendChild(new FieldStart(doc));
        p.AppendChild(new Run(doc, " PAGE "));
        p.AppendChild(new FieldSeparator(doc));
        p.AppendChild(new Run(doc, "2"));
        p.AppendChild(new FieldEnd(doc));
        p.AppendChild(new Run(doc, " = 2 \"yes\" \"no\" "));
        p.AppendChild(new FieldSeparator(doc));
        p.AppendChild(new Run(doc, "yes"));
        p.AppendChild(new FieldEnd(doc));
        var outer = start.GetField()!;
        Assert.Equal("IF 2 = 2 \"yes\" \"no\"", outer.GetFieldCode());
        Assert.Equal("yes", outer.Result);
        Assert.Equal(2, doc.Range.Fields.Count);
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal("yes", back.Range.Fields[0].Result);
        Assert.Equal("yes\r\n", TestSupport.ToText(back, SaveFormat.Text));
    }

    [Fact]
    public void BookmarksSpanningParagraphsCanBeReadAndRewritten()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("before ");
        b.StartBookmark("span");
        b.Writeln("one");
        b.Write("two");
        b.EndBookmark("span");
        b.Write(" after");
        var bm = doc.Range.Bookmarks["SPAN"]!;
        Assert.Equal("one\rtwo", bm.Text);
        bm.Text = "merged";
        Assert.Equal("before merged after\f", doc.GetText());
        Assert.Equal(1, doc.FirstSection!.Body!.Paragraphs.Count);
        bm.Name = "renamed";
        Assert.Null(doc.Range.Bookmarks["span"]);
        Assert.Equal("merged", TestSupport.RoundTrip(doc).Range.Bookmarks["renamed"]!.Text);
        doc.Range.Bookmarks.Remove("renamed");
        Assert.Equal(0, doc.Range.Bookmarks.Count);
        Assert.Equal("before merged after\f", doc.GetText());
    }

    [Fact]
    public void BuilderMovesToBookmarksCellsAndSections()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.StartBookmark("mark");
        b.Write("AB");
        b.EndBookmark("mark");
        b.Writeln();
        b.StartTable();
        b.InsertCell(); b.Write("c0");
        b.InsertCell(); b.Write("c1");
        b.EndTable();
        b.InsertBreak(BreakType.SectionBreakContinuous);
        b.Write("second section");
        Assert.True(b.MoveToBookmark("mark", true, true));
        b.Write(">");
        Assert.True(b.MoveToBookmark("mark", false, false));
        b.Write("<");
        b.MoveToCell(0, 0, 1, 1);
        b.Write("!");
        b.MoveToSection(0);
        b.Write("^");
        Assert.Equal(2, doc.Sections.Count);
        Assert.Equal(SectionStart.Continuous, doc.LastSection!.PageSetup.SectionStart);
        Assert.Equal("^>AB<\r", doc.FirstSection!.Body!.FirstParagraph!.GetText());
        Assert.Equal("c!1\u0007", doc.FirstSection.Body.Tables[0].FirstRow!.LastCell!.GetText());
        Assert.Equal("second section\f", doc.LastSection.GetText());
        Assert.Throws<ArgumentOutOfRangeException>(() => b.MoveToSection(5));
        Assert.Throws<InvalidOperationException>(() => b.EndTable());
    }

    [Fact]
    public void BreaksBecomeTheirControlCharacters()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("a");
        b.InsertBreak(BreakType.LineBreak);
        b.Write("b");
        b.InsertBreak(BreakType.PageBreak);
        b.Write("c");
        b.InsertBreak(BreakType.ColumnBreak);
        b.Write("d\te");
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal("a\vb\fc\u000ed\te\f", back.GetText());
        var xml = TestSupport.Part(TestSupport.ToBytes(back), "word/document.xml");
        Assert.Contains("<w:br w:type=\"page\" />", xml);
        Assert.Contains("<w:br w:type=\"column\" />", xml);
        Assert.Contains("<w:tab />", xml);
    }

    [Fact]
    public void HeadersAndFootersOfEveryKindRoundTrip()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        foreach (HeaderFooterType t in Enum.GetValues<HeaderFooterType>())
        {
            b.MoveToHeaderFooter(t);
            b.Write(t.ToString());
        }
        b.MoveToDocumentEnd();
        b.Write("body");
        var back = TestSupport.RoundTrip(doc);
        var section = back.FirstSection!;
        Assert.Equal(6, section.HeadersFooters.Count);
        foreach (HeaderFooter hf in section.HeadersFooters)
            Assert.Equal(hf.HeaderFooterType + "\r", hf.GetText());
        Assert.True(section.HeadersFooters[HeaderFooterType.FooterEven]!.IsHeader == false);
        Assert.True(section.PageSetup.DifferentFirstPageHeaderFooter);
        Assert.Equal("body\f", back.GetText());
        section.ClearHeadersFooters();
        Assert.Equal(0, TestSupport.RoundTrip(back).FirstSection!.HeadersFooters.Count);
    }

    [Fact]
    public void SectionsCanBeClearedAppendedAndCloned()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("first");
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.Write("second");
        var s1 = doc.FirstSection!;
        var s2 = doc.LastSection!;
        s1.AppendContent(s2);
        Assert.Equal("first\rsecond\f", s1.GetText());
        var copy = s1.Clone();
        doc.AppendChild(copy);
        s2.ClearContent();
        Assert.Equal("\f", s2.GetText());
        Assert.Equal(3, doc.Sections.Count);
        Assert.Equal("first\rsecond\f\ffirst\rsecond\f", doc.GetText());
        Assert.Equal(doc.GetText(), TestSupport.RoundTrip(doc).GetText());
    }

    [Fact]
    public void ImportingKeepsOrRenamesConflictingStyles()
    {
        var src = new Document();
        var srcStyle = src.Styles.Add(StyleType.Paragraph, "Shared");
        srcStyle.Font.Size = 20;
        var sp = src.FirstSection!.Body!.FirstParagraph!;
        sp.ParagraphFormat.StyleName = "Shared";
        sp.AppendChild(new Run(src, "from source"));

        var dst = new Document();
        dst.Styles.Add(StyleType.Paragraph, "Shared").Font.Size = 8;
        var useDst = (Paragraph)dst.ImportNode(sp, true, ImportFormatMode.UseDestinationStyles);
        var keepSrc = (Paragraph)dst.ImportNode(sp, true, ImportFormatMode.KeepSourceFormatting);
        dst.FirstSection!.Body!.AppendChild(useDst);
        dst.FirstSection.Body.AppendChild(keepSrc);
        Assert.Equal("Shared", useDst.ParagraphFormat.StyleName);
        Assert.Equal(8, useDst.Runs[0].Font.Size);
        Assert.NotEqual("Shared", keepSrc.ParagraphFormat.StyleName);
        Assert.Equal(20, keepSrc.Runs[0].Font.Size);
        Assert.Throws<ArgumentException>(() => dst.FirstSection.Body.AppendChild(sp));
        var back = TestSupport.RoundTrip(dst);
        Assert.Equal(new[] { 8.0, 20.0 }, back.GetChildNodes(NodeType.Run, true).Cast<Run>().Select(r => r.Font.Size).ToArray());
    }

    [Fact]
    public void RangeDeleteEmptiesStoriesAndRemovesNodes()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("keep");
        b.Writeln("drop");
        var drop = doc.FirstSection!.Body!.Paragraphs[1];
        drop.Range.Delete();
        Assert.Equal("keep\r\f", doc.GetText());
        doc.Range.Delete();
        Assert.Equal("\f", doc.GetText());
    }

    [Fact]
    public void FileFormatsAreDetectedAndMappedToExtensions()
    {
        Assert.Equal(LoadFormat.Docx, FileFormatUtil.DetectFileFormat(new MemoryStream(TestSupport.ToBytes(new Document()))).LoadFormat);
        Assert.Equal(LoadFormat.Text, FileFormatUtil.DetectFileFormat(new MemoryStream("plain words\n"u8.ToArray())).LoadFormat);
        Assert.Equal(LoadFormat.Unknown, FileFormatUtil.DetectFileFormat(new MemoryStream(new byte[] { 0, 1, 2, 3, 4 })).LoadFormat);
        var s = new MemoryStream(TestSupport.ToBytes(new Document()));
        s.Position = 0;
        FileFormatUtil.DetectFileFormat(s);
        Assert.Equal(0, s.Position);
        Assert.Equal(SaveFormat.Markdown, FileFormatUtil.ExtensionToSaveFormat(".MD"));
        Assert.Equal(".txt", FileFormatUtil.SaveFormatToExtension(SaveFormat.Text));
        Assert.Equal(SaveFormat.Docx, FileFormatUtil.LoadFormatToSaveFormat(LoadFormat.Docx));
        Assert.Equal(SaveFormat.Pdf, FileFormatUtil.ExtensionToSaveFormat(".pdf"));
        Assert.Throws<UnsupportedFileFormatException>(() => FileFormatUtil.ExtensionToSaveFormat(".xps"));
    }

    [Fact]
    public void SavingLeavesTheModelAlone()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("text");
        b.StartTable();
        b.InsertCell(); b.Write("last block");
        b.EndTable();
        doc.FirstSection!.Body!.LastParagraph!.Remove();
        var before = doc.GetChildNodes(NodeType.Any, true).Count;
        var bytes = TestSupport.ToBytes(doc);
        Assert.Equal(before, doc.GetChildNodes(NodeType.Any, true).Count);
        Assert.IsType<Table>(doc.FirstSection.Body.LastChild);
        var back = new Document(new MemoryStream(bytes));
        Assert.IsType<Table>(back.FirstSection!.Body!.LastChild);

        var empty = new Document();
        empty.RemoveAllChildren();
        Assert.Equal(1, TestSupport.RoundTrip(empty).Sections.Count);
    }
}
