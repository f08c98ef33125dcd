using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Notes;
using Quorix.Folio.Replacing;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class BuilderAndDocxTests
{
    private static Document Sample()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Report");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.Font.Bold = true;
        b.Write("Bold ");
        b.Font.Bold = false;
        b.Font.Italic = true;
        b.Font.Underline = Underline.Double;
        b.Font.Size = 14;
        b.Font.Name = "Liberation Serif";
        b.Writeln("italic");
        b.Font.ClearFormatting();
        b.StartBookmark("here");
        b.Write("marked");
        b.EndBookmark("here");
        b.Write(" and ");
        b.InsertHyperlink("a link", "https://example.org/x?a=1", false);
        b.Writeln();
        b.StartTable();
        b.CellFormat.HorizontalMerge = CellMerge.First;
        b.InsertCell(); b.Write("wide");
        b.CellFormat.HorizontalMerge = CellMerge.Previous;
        b.InsertCell();
        b.CellFormat.HorizontalMerge = CellMerge.None;
        b.CellFormat.VerticalMerge = CellMerge.First;
        b.InsertCell(); b.Write("tall");
        b.EndRow();
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell(); b.Write("c1");
        b.InsertCell(); b.Write("c2");
        b.CellFormat.VerticalMerge = CellMerge.Previous;
        b.InsertCell();
        b.EndRow();
        b.EndTable();
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.Write("note here");
        b.InsertFootnote(FootnoteType.Footnote, "the footnote");
        b.Writeln();
        b.ListFormat.ApplyBulletDefault();
        b.Writeln("bullet one");
        b.Writeln("bullet two");
        b.ListFormat.RemoveNumbers();
        b.InsertField("PAGE", "1");
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.PageSetup.Orientation = Orientation.Landscape;
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("Second section header");
        b.MoveToDocumentEnd();
        b.InsertImage(TestSupport.Png(8, 4));
        b.Write("after picture");
        return doc;
    }

    [Fact]
    public void RoundTripKeepsTextStructureAndFormatting()
    {
        var doc = Sample();
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(doc.GetText(), back.GetText());
        Assert.Equal(2, back.Sections.Count);
        var first = back.FirstSection!.Body!;
        Assert.Equal(StyleIdentifier.Heading1, first.FirstParagraph!.ParagraphFormat.StyleIdentifier);
        var runs = back.GetChildNodes(NodeType.Run, true).Cast<Run>().ToList();
        var bold = runs.First(r => r.Text == "Bold ");
        Assert.True(bold.Font.Bold);
        var italic = runs.First(r => r.Text == "italic");
        Assert.True(italic.Font.Italic);
        Assert.False(italic.Font.Bold);
        Assert.Equal(Underline.Double, italic.Font.Underline);
        Assert.Equal(14, italic.Font.Size);
        Assert.Equal("Liberation Serif", italic.Font.Name);
        Assert.Equal(Orientation.Landscape, back.LastSection!.PageSetup.Orientation);
        Assert.True(back.LastSection.PageSetup.PageWidth > back.LastSection.PageSetup.PageHeight);
        Assert.Equal("Second section header\r", back.LastSection.HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetText());
        Assert.Null(back.FirstSection.HeadersFooters[HeaderFooterType.HeaderPrimary]);
    }

    [Fact]
    public void MergedCellsSurviveAsSpansAndVerticalMerges()
    {
        var back = TestSupport.RoundTrip(Sample());
        var table = back.FirstSection!.Body!.Tables[0];
        Assert.Equal(2, table.Rows.Count);
        var row0 = table.Rows[0];
        Assert.Equal(3, row0.Cells.Count);
        Assert.Equal("wide\u0007", row0.Cells[0].GetText());
        Assert.Equal(CellMerge.First, row0.Cells[0].CellFormat.HorizontalMerge);
        Assert.Equal(CellMerge.Previous, row0.Cells[1].CellFormat.HorizontalMerge);
        Assert.Equal(CellMerge.First, row0.Cells[2].CellFormat.VerticalMerge);
        Assert.Equal(CellMerge.Previous, table.Rows[1].Cells[2].CellFormat.VerticalMerge);
        var xml = TestSupport.Part(TestSupport.ToBytes(back), "word/document.xml");
        Assert.Contains("<w:gridSpan w:val=\"2\" />", xml);
        Assert.Equal(3, System.Text.RegularExpressions.Regex.Matches(xml, "<w:gridCol ").Count);
    }

    [Fact]
    public void BookmarksLinksFieldsNotesAndPicturesRoundTrip()
    {
        var back = TestSupport.RoundTrip(Sample());
        var bm = back.Range.Bookmarks["here"];
        Assert.NotNull(bm);
        Assert.Equal("marked", bm!.Text);
        var fields = back.Range.Fields;
        var link = fields.Single(f => f.Type == FieldType.FieldHyperlink);
        Assert.Equal("a link", link.Result);
        Assert.Contains("https://example.org/x?a=1", link.GetFieldCode());
        Assert.Equal("1", fields.Single(f => f.Type == FieldType.FieldPage).Result);
        var note = (Footnote)back.GetChild(NodeType.Footnote, 0, true)!;
        Assert.Equal("the footnote", note.GetText().TrimEnd('\r', '\f'));
        var shape = (Shape)back.GetChild(NodeType.Shape, 0, true)!;
        Assert.Equal(ImageType.Png, shape.ImageData.ImageType);
        Assert.Equal(6, shape.Width, 3);
        Assert.Equal(3, shape.Height, 3);
        var items = back.GetChildNodes(NodeType.Paragraph, true).Cast<Paragraph>().Where(p => p.IsListItem).ToList();
        Assert.Equal(2, items.Count);
        Assert.Same(items[0].ListFormat.List, items[1].ListFormat.List);
        Assert.Equal(NumberStyle.Bullet, items[0].ListFormat.ListLevel!.NumberStyle);
    }

    [Fact]
    public void BookmarkTextCanBeReplaced()
    {
        var doc = Sample();
        doc.Range.Bookmarks["here"]!.Text = "rewritten";
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal("rewritten", back.Range.Bookmarks["here"]!.Text);
        Assert.Contains("rewritten and a link", back.GetText().Replace("\u0013 HYPERLINK \"https://example.org/x?a=1\" \u0014", "").Replace("\u0015", ""));
    }

    [Fact]
    public void ABuilderWhoseCursorWasRemovedWritesInAValidPlace()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("one two");
        b.MoveToParagraph(0, 4);          // splits the run: the cursor is the "two" run
        var cursorRun = b.CurrentNode!;
        cursorRun.Remove();
        b.Write("!");                     // the cursor's node left: writing goes to the paragraph's end
        Assert.Equal("one !", doc.FirstSection!.Body!.FirstParagraph!.GetText().TrimEnd('\r', '\f'));

        b.Writeln("x");
        var current = b.CurrentParagraph;
        b.Writeln("y");
        b.CurrentParagraph.Remove();      // the builder's own paragraph leaves the document
        b.Write("end");
        Assert.Same(doc.LastSection!.Body!.LastParagraph, b.CurrentParagraph);
        Assert.EndsWith("end", doc.GetText().TrimEnd('\r', '\f'));
        Assert.True(current.ParentNode != null);

        // a table whose cell paragraph was removed is left; the builder carries on in the body
        b.StartTable();
        b.InsertCell();
        b.Write("cell");
        doc.FirstSection!.Body!.Tables[0]!.Remove();
        b.Write(" after");
        Assert.Equal("one !x\ryend\r after", doc.GetText().TrimEnd('\r', '\f'));
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(doc.GetText(), back.GetText());

        // every section gone: the builder's page setup is the fresh section's
        doc.RemoveAllChildren();
        Assert.NotNull(b.PageSetup);
        Assert.Same(doc.LastSection, b.CurrentSection);
    }

    [Fact]
    public void LimitsMayNotBeNegative()
    {
        var options = new Loading.LoadOptions();
        Assert.Throws<ArgumentOutOfRangeException>(() => options.MaxPartSize = -1);
        Assert.Throws<ArgumentOutOfRangeException>(() => options.MaxTotalSize = -1);
        options.MaxPartSize = 0;
        Assert.Equal(0, options.MaxPartSize);
        Assert.Throws<ArgumentOutOfRangeException>(() => new Saving.TxtSaveOptions().ListIndentationCount = -2);
    }

    [Fact]
    public void ReplaceWorksAcrossRunsAndHonoursOptions()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("Hel");
        b.Font.Bold = true;
        b.Write("lo wor");
        b.Font.Bold = false;
        b.Writeln("ld, hello World");
        Assert.Equal(2, doc.Range.Replace("hello", "bye", new FindReplaceOptions { MatchCase = false }));
        Assert.Equal("bye world, bye World\r\f", doc.GetText());
        Assert.Equal(1, doc.Range.Replace("World", "Earth"));
        Assert.Equal(0, doc.Range.Replace("wor", "x", new FindReplaceOptions { FindWholeWordsOnly = true }));
        Assert.Equal("bye world, bye Earth\r\f", doc.GetText());
        Assert.Equal(0, doc.Range.Replace("absent", "x"));
    }

    [Fact]
    public void UnknownContentIsWrittenBackUntouched()
    {
        var bytes = TestSupport.ToBytes(Sample());
        const string custom = "<w:customXml w:element=\"kept\"><w:r><w:t>opaque text</w:t></w:r></w:customXml>";
        const string extra = "<w14:extra xmlns:w14=\"http://schemas.microsoft.com/office/word/2010/wordml\" w14:val=\"7\"/>";
        var edited = TestSupport.WithPart(bytes, "word/document.xml", x => x!
            .Replace("<w:t>Report</w:t>", "<w:t>Report</w:t></w:r>" + custom + "<w:r>")
            .Replace("<w:body>", "<w:body><w:sdt><w:sdtContent><w:p><w:r><w:t>block sdt</w:t></w:r></w:p></w:sdtContent></w:sdt>")
            .Replace("<w:b />", "<w:b />" + extra));
        var withExtraPart = TestSupport.WithPart(edited, "customXml/item1.xml", _ => "<root>data</root>");
        var doc = new Document(new MemoryStream(withExtraPart));
        var again = TestSupport.ToBytes(doc);
        var xml = TestSupport.Part(again, "word/document.xml");
        Assert.Contains("w:element=\"kept\"", xml);
        Assert.Contains("opaque text", xml);
        Assert.Contains("block sdt", xml);
        Assert.Contains("w14:val=\"7\"", xml);
        Assert.Equal("<root>data</root>", TestSupport.Part(again, "customXml/item1.xml"));
        // Containers the model does not represent still show their content, in the tree and the text.
        Assert.Contains("opaque text", doc.GetText());
        Assert.Contains("block sdt", doc.GetText());
        Assert.Contains("block sdt", TestSupport.ToText(doc, SaveFormat.Text));
        Assert.Contains("block sdt", TestSupport.ToText(doc, SaveFormat.Markdown));
        Assert.Equal(doc.GetText(), new Document(new MemoryStream(again)).GetText());
    }

    [Fact]
    public void SaveByFileNameFollowsTheExtension()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = Sample();
            doc.Save(Path.Combine(dir, "a.docx"));
            doc.Save(Path.Combine(dir, "a.txt"));
            doc.Save(Path.Combine(dir, "a.md"));
            Assert.Equal(LoadFormat.Docx, FileFormatUtil.DetectFileFormat(Path.Combine(dir, "a.docx")).LoadFormat);
            Assert.Contains("bullet one", File.ReadAllText(Path.Combine(dir, "a.txt")));
            Assert.StartsWith("# Report", File.ReadAllText(Path.Combine(dir, "a.md")));
            Assert.Throws<UnsupportedFileFormatException>(() => doc.Save(Path.Combine(dir, "a.xyz")));
            Assert.False(File.Exists(Path.Combine(dir, "a.xyz")));
            var loaded = new Document(Path.Combine(dir, "a.docx"));
            Assert.Equal(doc.GetText(), loaded.GetText());
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void CommentsRoundTripWithTheirAnchors()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("commented");
        var c = new Comment(doc, "Ann Author", "AA", new DateTime(2024, 5, 6, 7, 8, 9, DateTimeKind.Utc));
        c.SetText("Looks good");
        b.CurrentParagraph.AppendChild(c);
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal(1, back.Comments.Count);
        var comment = back.Comments[0];
        Assert.Equal("Ann Author", comment.Author);
        Assert.Equal("AA", comment.Initial);
        Assert.Equal(new DateTime(2024, 5, 6, 7, 8, 9), comment.DateTime);
        Assert.Equal("Looks good", comment.GetText().TrimEnd('\r', '\f'));
        Assert.Equal("commented\f", back.GetText());
    }

    [Fact]
    public void BuilderMovesAndSplitsAtCharacterPositions()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("abcdef");
        b.Writeln("second");
        b.MoveToParagraph(0, 3);
        b.Write("-");
        b.MoveToDocumentStart();
        b.Write(">");
        b.MoveToParagraph(1, -1);
        b.Write("!");
        Assert.Equal(">abc-def\rsecond!\r\f", doc.GetText());
        Assert.Throws<ArgumentOutOfRangeException>(() => b.MoveToParagraph(0, 50));
        Assert.False(b.MoveToBookmark("missing"));
    }

    [Fact]
    public void CustomNoteMarksAndRegexReplaceRoundTrip()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("Price 10 EUR, tax 2 EUR");
        var note = b.InsertFootnote(FootnoteType.Footnote, "custom");
        note.ReferenceMark = "*";
        Assert.Equal(2, doc.Range.Replace(new System.Text.RegularExpressions.Regex(@"(\d+) EUR"), "EUR $1"));
        var back = TestSupport.RoundTrip(doc);
        Assert.Equal("Price EUR 10, tax EUR 2\f", back.GetText());
        var n = (Footnote)back.GetChild(NodeType.Footnote, 0, true)!;
        Assert.Equal("*", n.ReferenceMark);
        Assert.False(n.IsAuto);
    }

    [Fact]
    public void StylesCanBeAddedRenamedAndBasedOnEachOther()
    {
        var doc = new Document();
        var quote = doc.Styles.Add(StyleType.Paragraph, "My Quote");
        quote.Font.Italic = true;
        quote.ParagraphFormat.LeftIndent = 20;
        var sub = doc.Styles.Add(StyleType.Paragraph, "My Sub Quote");
        sub.BaseStyleName = "My Quote";
        sub.Font.Bold = true;
        Assert.Throws<ArgumentException>(() => doc.Styles.Add(StyleType.Paragraph, "my quote"));
        Assert.Throws<ArgumentException>(() => sub.BaseStyleName = "Nope");
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleName = "My Sub Quote";
        b.Write("styled");
        quote.Name = "Renamed Quote";
        var back = TestSupport.RoundTrip(doc);
        var p = back.FirstSection!.Body!.FirstParagraph!;
        Assert.Equal("My Sub Quote", p.ParagraphFormat.StyleName);
        Assert.Equal("Renamed Quote", back.Styles["My Sub Quote"]!.BaseStyleName);
        var run = p.Runs[0];
        Assert.True(run.Font.Italic);
        Assert.True(run.Font.Bold);
        Assert.Equal(20, p.ParagraphFormat.LeftIndent);
        Assert.Equal(StyleIdentifier.User, back.Styles["Renamed Quote"]!.StyleIdentifier);
    }
}
