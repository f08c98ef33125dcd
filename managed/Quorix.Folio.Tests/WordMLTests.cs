using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class WordMLTests
{
    private static Document Load(string xml) => new(new MemoryStream(Encoding.UTF8.GetBytes(xml)));

    private static Document RoundTrip(Document doc)
    {
        var ms = new MemoryStream(TestSupport.ToBytes(doc, SaveFormat.WordML));
        var back = new Document(ms);
        Assert.Equal(LoadFormat.WordML, back.OriginalLoadFormat);
        return back;
    }

    private static string Text(Node n) => n.GetText().TrimEnd('\r', '\f', '\a');

    private static Paragraph[] Paras(Document d) => d.FirstSection!.Body!.Paragraphs.ToArray();

    [Fact]
    public void FormattingStylesAndListsSurviveTheRoundTrip()
    {
        var doc = new Document();
        var note = doc.Styles.Add(StyleType.Paragraph, "Note Text");
        note.Font.Name = "Arial";
        note.Font.Italic = true;
        note.ParagraphFormat.SpaceAfter = 6;
        var strong = doc.Styles.Add(StyleType.Character, "Loud");
        strong.Font.Bold = true;
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Title");
        b.ParagraphFormat.StyleName = "Note Text";
        b.ParagraphFormat.Alignment = ParagraphAlignment.Center;
        b.ParagraphFormat.LeftIndent = 36;
        b.ParagraphFormat.FirstLineIndent = -18;
        b.Write("styled ");
        b.Font.StyleName = "Loud";
        b.Write("loud");
        b.Font.StyleIdentifier = StyleIdentifier.DefaultParagraphFont;
        b.Font.Italic = false;
        b.Font.Size = 15;
        b.Font.ColorHex = "336699";
        b.Font.Underline = Underline.DotDash;
        b.Font.Superscript = true;
        b.Writeln(" upright");
        b.Font.ClearFormatting();
        b.ParagraphFormat.ClearFormatting();
        b.ListFormat.ApplyNumberDefault();
        b.ListFormat.List!.ListLevels[0].StartAt = 4;
        b.Writeln("four");
        b.ListFormat.ListIndent();
        b.Writeln("nested");
        b.ListFormat.RemoveNumbers();
        b.Write("tab\there\vline");

        var back = RoundTrip(doc);
        var p = Paras(back);
        Assert.Equal(new[] { "Title", "styled loud upright", "four", "nested", "tab\there\vline" }, p.Select(Text));
        Assert.Equal(StyleIdentifier.Heading1, p[0].ParagraphFormat.StyleIdentifier);
        Assert.True(p[0].Runs[0].Font.Bold);
        var style = back.Styles["Note Text"]!;
        Assert.Equal(("Arial", true, 6.0, "Normal"), (style.Font.Name, style.Font.Italic, style.ParagraphFormat.SpaceAfter, style.BaseStyleName));
        Assert.Equal("Note Text", p[1].ParagraphFormat.StyleName);
        Assert.Equal((ParagraphAlignment.Center, 36.0, -18.0), (p[1].ParagraphFormat.Alignment, p[1].ParagraphFormat.LeftIndent, p[1].ParagraphFormat.FirstLineIndent));
        var runs = p[1].Runs.ToArray();
        Assert.True(runs[0].Font.Italic);
        Assert.Equal("Loud", runs[1].Font.StyleName);
        Assert.True(runs[1].Font.Bold);
        var last = runs[^1].Font;
        Assert.Equal((false, 15.0, "336699", Underline.DotDash, true), (last.Italic, last.Size, last.ColorHex, last.Underline, last.Superscript));
        Assert.Equal(doc.FirstSection!.Body!.Paragraphs[1].Runs[^1].Font.Name, last.Name);
        var list = p[2].ListFormat.List!;
        Assert.Same(list, p[3].ListFormat.List);
        Assert.Equal((4, NumberStyle.Arabic, 0, 1), (list.ListLevels[0].StartAt, list.ListLevels[0].NumberStyle, p[2].ListFormat.ListLevelNumber, p[3].ListFormat.ListLevelNumber));
        Assert.False(p[4].ListFormat.IsListItem);
    }

    [Fact]
    public void TablesPicturesNotesFieldsAndSectionsSurviveTheRoundTrip()
    {
        var doc = new Document();
        doc.BuiltInDocumentProperties.Title = "Plan";
        var b = new DocumentBuilder(doc);
        b.PageSetup.PageWidth = 500;
        b.PageSetup.LeftMargin = 50;
        b.PageSetup.DifferentFirstPageHeaderFooter = true;
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("head");
        b.MoveToHeaderFooter(HeaderFooterType.FooterFirst);
        b.Write("first foot");
        b.MoveToDocumentEnd();
        var t = b.StartTable();
        b.CellFormat.Width = 100;
        b.CellFormat.VerticalMerge = CellMerge.First;
        b.InsertCell();
        b.Write("merged");
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell();
        b.Write("b");
        b.EndRow();
        b.CellFormat.VerticalMerge = CellMerge.Previous;
        b.InsertCell();
        b.CellFormat.VerticalMerge = CellMerge.None;
        b.InsertCell();
        b.Write("d");
        b.EndRow();
        b.EndTable();
        t.SetBorders(LineStyle.Single, 0.5);
        b.Write("see ");
        b.InsertHyperlink("site", "https://example.com/", false);
        b.StartBookmark("mark");
        b.Write(" marked");
        b.EndBookmark("mark");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "the note");
        b.Writeln();
        b.InsertImage(TestSupport.Png(4, 3), 40, 30);
        b.InsertBreak(BreakType.SectionBreakContinuous);
        b.PageSetup.Orientation = Orientation.Landscape;
        b.Write("second section");

        var xml = Encoding.UTF8.GetString(TestSupport.ToBytes(doc, SaveFormat.WordML));
        Assert.StartsWith("<?xml", xml);
        Assert.Contains("<?mso-application progid=\"Word.Document\"?>", xml);
        var back = RoundTrip(doc);
        Assert.Equal("Plan", back.BuiltInDocumentProperties.Title);
        Assert.Equal(2, back.Sections.Count);
        var ps = back.FirstSection!.PageSetup;
        Assert.Equal((500.0, 50.0, true), (ps.PageWidth, ps.LeftMargin, ps.DifferentFirstPageHeaderFooter));
        Assert.Equal("head", Text(back.FirstSection.HeadersFooters[HeaderFooterType.HeaderPrimary]!));
        Assert.Equal("first foot", Text(back.FirstSection.HeadersFooters[HeaderFooterType.FooterFirst]!));
        Assert.Equal(SectionStart.Continuous, back.Sections[1].PageSetup.SectionStart);
        Assert.Equal(Orientation.Landscape, back.Sections[1].PageSetup.Orientation);
        Assert.Equal("second section", Text(back.Sections[1].Body!));

        var table = back.FirstSection.Body!.Tables[0];
        Assert.Equal("merged|b/|d", string.Join("/", table.Rows.ToArray().Select(r => string.Join("|", r.Cells.ToArray().Select(Text)))));
        Assert.Equal((CellMerge.First, CellMerge.Previous), (table.Rows[0].Cells[0].CellFormat.VerticalMerge, table.Rows[1].Cells[0].CellFormat.VerticalMerge));
        Assert.Equal(100, table.Rows[0].Cells[0].CellFormat.Width);

        var p = back.FirstSection.Body.Paragraphs.ToArray().First(x => Text(x).StartsWith("see"));
        Assert.Contains("HYPERLINK \"https://example.com/\"", p.GetText());
        Assert.Equal(" marked", back.Range.Bookmarks["mark"]!.Text);
        Assert.Equal("the note", Text(back.GetChildNodes(NodeType.Footnote, true)[0]).Trim());
        var shape = (Shape)back.GetChildNodes(NodeType.Shape, true)[0];
        Assert.Equal((ImageType.Png, 40.0, 30.0), (shape.ImageData.ImageType, shape.Width, shape.Height));
        Assert.Equal(TestSupport.Png(4, 3), shape.ImageData.ImageBytes);
    }

    // As another word processor writes the format: auxiliary section wrappers, hyphenated attribute
    // names, simple fields, link elements and list instances that point at definitions.
    private const string Foreign = """
        <?xml version="1.0" encoding="UTF-8" standalone="yes"?>
        <?mso-application progid="Word.Document"?>
        <w:wordDocument xmlns:w="http://schemas.microsoft.com/office/word/2003/wordml" xmlns:wx="http://schemas.microsoft.com/office/word/2003/auxHint" xmlns:aml="http://schemas.microsoft.com/aml/2001/core" xmlns:v="urn:schemas-microsoft-com:vml">
          <w:fonts><w:defaultFonts w:ascii="Georgia" w:h-ansi="Georgia"/></w:fonts>
          <w:lists>
            <w:listDef w:listDefId="3"><w:lvl w:ilvl="0"><w:start w:val="1"/><w:nfc w:val="23"/><w:lvlText w:val="o"/><w:pPr><w:ind w:left="720" w:hanging="360"/></w:pPr></w:lvl></w:listDef>
            <w:list w:ilfo="5"><w:ilst w:val="3"/></w:list>
          </w:lists>
          <w:styles>
            <w:style w:type="paragraph" w:default="on" w:styleId="Normal"><w:name w:val="Normal"/><w:rPr><w:sz w:val="22"/></w:rPr></w:style>
            <w:style w:type="paragraph" w:styleId="Heading2"><w:name w:val="heading 2"/><w:basedOn w:val="Normal"/><w:next w:val="Normal"/><w:pPr><w:keepNext/><w:outlineLvl w:val="1"/></w:pPr><w:rPr><w:b/><w:sz w:val="28"/></w:rPr></w:style>
            <w:style w:type="paragraph" w:styleId="Quiet"><w:name w:val="Quiet"/><w:basedOn w:val="Heading2"/><w:rPr><w:b w:val="off"/></w:rPr></w:style>
          </w:styles>
          <w:body><wx:sect>
            <w:p><w:pPr><w:pStyle w:val="Heading2"/></w:pPr><w:r><w:t>Heading</w:t></w:r></w:p>
            <w:p><w:pPr><w:pStyle w:val="Quiet"/><w:spacing w:before="240" w:after="120" w:line="360" w:line-rule="auto"/><w:ind w:left="1440" w:first-line="360"/></w:pPr>
              <w:r><w:rPr><w:rFonts w:ascii="Courier New" w:h-ansi="Courier New"/><w:u w:val="dot-dot-dash"/></w:rPr><w:t>code</w:t></w:r>
              <w:r><w:sym w:font="Symbol" w:char="2211"/></w:r>
              <w:hlink w:dest="https://example.org/"><w:r><w:t> link</w:t></w:r></w:hlink>
              <w:fldSimple w:instr=" PAGE "><w:r><w:t>1</w:t></w:r></w:fldSimple>
              <aml:annotation aml:id="7" w:type="Word.Insertion"><aml:content><w:r><w:t> added</w:t></w:r></aml:content></aml:annotation>
              <aml:annotation aml:id="8" w:type="Word.Deletion"><aml:content><w:r><w:delText> gone</w:delText></w:r></aml:content></aml:annotation>
            </w:p>
            <w:p><w:pPr><w:listPr><w:ilvl w:val="0"/><w:ilfo w:val="5"/></w:listPr><w:sectPr><w:pgSz w:w="11906" w:h="16838"/></w:sectPr></w:pPr><w:r><w:t>item</w:t></w:r></w:p>
          </wx:sect><wx:sect>
            <w:tbl><w:tblGrid><w:gridCol w:w="2000"/><w:gridCol w:w="2000"/></w:tblGrid>
              <w:tr><w:tc><w:tcPr><w:gridSpan w:val="2"/></w:tcPr><w:p><w:r><w:t>wide</w:t></w:r></w:p></w:tc></w:tr>
              <w:tr><w:tc><w:p><w:r><w:t>x</w:t></w:r></w:p></w:tc><w:tc><w:p><w:r><w:t>y</w:t></w:r></w:p></w:tc></w:tr>
            </w:tbl>
            <w:p/>
            <w:sectPr><w:ftr w:type="odd"><w:p><w:r><w:t>footer</w:t></w:r></w:p></w:ftr><w:type w:val="odd-page"/><w:pgSz w:w="12240" w:h="15840" w:orient="portrait"/></w:sectPr>
          </wx:sect></w:body>
        </w:wordDocument>
        """;

    [Fact]
    public void ForeignFilesAreReadWithTheirStylesListsFieldsAndSections()
    {
        var doc = Load(Foreign.Trim());
        Assert.Equal(LoadFormat.WordML, doc.OriginalLoadFormat);
        Assert.Equal(2, doc.Sections.Count);
        var p = Paras(doc);
        Assert.Equal(StyleIdentifier.Heading2, p[0].ParagraphFormat.StyleIdentifier);
        Assert.Equal((true, 14.0, "Georgia"), (p[0].Runs[0].Font.Bold, p[0].Runs[0].Font.Size, p[0].Runs[0].Font.Name));
        // A style based on another takes what it does not say from its base.
        Assert.Equal((false, 14.0, true), (p[1].Runs[0].Font.Bold, p[1].Runs[0].Font.Size, p[1].ParagraphFormat.KeepWithNext));
        Assert.Equal(11, doc.Styles["Normal"]!.Font.Size);
        var pf = p[1].ParagraphFormat;
        Assert.Equal((12.0, 6.0, 18.0, 72.0, 18.0), (pf.SpaceBefore, pf.SpaceAfter, pf.LineSpacing, pf.LeftIndent, pf.FirstLineIndent));
        Assert.Equal(("Courier New", Underline.DotDotDash), (p[1].Runs[0].Font.Name, p[1].Runs[0].Font.Underline));
        var text = p[1].GetText();
        Assert.Contains("code\u2211", text);
        Assert.Contains("HYPERLINK \"https://example.org/\"", text);
        Assert.Contains(" PAGE ", text);
        Assert.Contains(" added", text);
        Assert.DoesNotContain("gone", text);
        Assert.Equal(NumberStyle.Bullet, p[2].ListFormat.ListLevel!.NumberStyle);
        Assert.Equal(36, p[2].ListFormat.ListLevel!.TextPosition);
        Assert.Equal((595.3, 841.9), (Math.Round(doc.FirstSection!.PageSetup.PageWidth, 1), Math.Round(doc.FirstSection.PageSetup.PageHeight, 1)));
        var second = doc.Sections[1];
        Assert.Equal(SectionStart.OddPage, second.PageSetup.SectionStart);
        Assert.Equal("footer", Text(second.HeadersFooters[HeaderFooterType.FooterPrimary]!));
        var t = second.Body!.Tables[0];
        Assert.Equal((1, 2), (t.Rows[0].Cells.Count, t.Rows[1].Cells.Count));
        Assert.Equal(2, t.Rows[0].Cells[0].Span);
    }

    [Fact]
    public void DetectionAndDamagedFiles()
    {
        var bytes = TestSupport.ToBytes(new Document(), SaveFormat.WordML);
        Assert.Equal(LoadFormat.WordML, FileFormatUtil.DetectFileFormat(new MemoryStream(bytes)).LoadFormat);
        Assert.Equal(".xml", FileFormatUtil.SaveFormatToExtension(SaveFormat.WordML));
        Assert.Equal(SaveFormat.WordML, FileFormatUtil.LoadFormatToSaveFormat(LoadFormat.WordML));
        Assert.IsType<WordML2003SaveOptions>(SaveOptions.CreateSaveOptions(SaveFormat.WordML));
        Assert.Throws<ArgumentException>(() => new WordML2003SaveOptions { SaveFormat = SaveFormat.Docx });

        var truncated = Encoding.UTF8.GetString(bytes)[..^20];
        var e = Assert.Throws<FileCorruptedException>(() => Load(truncated));
        Assert.Contains("not well-formed", e.Message);
        var wrongRoot = "<?xml version=\"1.0\"?><w:other xmlns:w=\"http://schemas.microsoft.com/office/word/2003/wordml\"/>";
        var lo = new Loading.LoadOptions { LoadFormat = LoadFormat.WordML };
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(Encoding.UTF8.GetBytes(wrongRoot)), lo));
        var badPicture = Foreign.Trim().Replace("<w:p/>", "<w:p><w:r><w:pict><w:binData w:name=\"wordml://1.png\">!!not base64!!</w:binData></w:pict></w:r></w:p>");
        Assert.Throws<FileCorruptedException>(() => Load(badPicture));
        // A document type declaration could expand entities without bound: refused.
        var dtd = "<?xml version=\"1.0\"?><!DOCTYPE w:wordDocument [<!ENTITY a \"aaaa\">]><w:wordDocument xmlns:w=\"http://schemas.microsoft.com/office/word/2003/wordml\"><w:body/></w:wordDocument>";
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(Encoding.UTF8.GetBytes(dtd)), lo));
    }

    [Fact]
    public void PrettyFormatIndentsWithoutChangingTheText()
    {
        var doc = FlowInteropTests.Sample();
        var pretty = TestSupport.ToBytes(doc, new WordML2003SaveOptions { PrettyFormat = true });
        var compact = TestSupport.ToBytes(doc, SaveFormat.WordML);
        Assert.True(pretty.Length > compact.Length);
        Assert.Equal(new Document(new MemoryStream(compact)).GetText(), new Document(new MemoryStream(pretty)).GetText());
        Assert.Equal(doc.GetText(), new Document(new MemoryStream(compact)).GetText());
    }

    // Damaged and hostile files: every number made huge or negative, and pieces cut out. Loading either
    // works or says the file is damaged; nothing else escapes.
    [Fact]
    public void DamagedFilesLoadOrSayTheyAreDamaged()
    {
        var doc = FlowInteropTests.Sample();
        new DocumentBuilder(doc).InsertImage(TestSupport.Png(2, 2));
        var good = Encoding.UTF8.GetString(TestSupport.ToBytes(doc, SaveFormat.WordML)) + "";
        var samples = new List<string>
        {
            System.Text.RegularExpressions.Regex.Replace(good, "\"[0-9]+\"", "\"2147483647\""),
            System.Text.RegularExpressions.Regex.Replace(good, "\"[0-9]+\"", "\"-2147483648\""),
            System.Text.RegularExpressions.Regex.Replace(Foreign.Trim(), "\"[0-9]+\"", "\"99999999\""),
            good.Replace("w:body", "w:bodx"),
        };
        var rnd = new Random(7);
        for (int i = 0; i < 60; i++)
        {
            int at = rnd.Next(good.Length), length = rnd.Next(1, 200);
            samples.Add(good.Remove(at, Math.Min(length, good.Length - at)));
        }
        foreach (var xml in samples)
        {
            try
            {
                var d = new Document(new MemoryStream(Encoding.UTF8.GetBytes(xml)), new Loading.LoadOptions { LoadFormat = LoadFormat.WordML });
                TestSupport.ToBytes(d);
            }
            catch (FileCorruptedException) { }
        }
    }
}
