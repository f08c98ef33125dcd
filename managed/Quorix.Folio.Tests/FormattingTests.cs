using Quorix.Folio.Lists;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

/// <summary>Every formatting property must survive a save and a load with its value.</summary>
public class FormattingTests
{
    [Fact]
    public void CharacterFormattingRoundTrips()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var f = b.Font;
        f.StrikeThrough = true;
        f.AllCaps = true;
        f.Superscript = true;
        f.ColorHex = "ff8000";
        f.Border.LineStyle = LineStyle.Double;
        f.Border.LineWidth = 1.5;
        f.Shading.BackgroundPatternColorHex = "FFFF00";
        b.Write("styled");
        f.ClearFormatting();
        f.Subscript = true;
        f.SmallCaps = true;
        f.Hidden = true;
        b.Write("second");
        var back = TestSupport.RoundTrip(doc);
        var runs = back.FirstSection!.Body!.FirstParagraph!.Runs;
        var a = runs[0].Font;
        Assert.True(a.StrikeThrough);
        Assert.True(a.AllCaps);
        Assert.True(a.Superscript);
        Assert.False(a.Subscript);
        Assert.Equal("FF8000", a.ColorHex);
        Assert.Equal(LineStyle.Double, a.Border.LineStyle);
        Assert.Equal(1.5, a.Border.LineWidth);
        Assert.Equal("FFFF00", a.Shading.BackgroundPatternColorHex);
        var c = runs[1].Font;
        Assert.False(c.StrikeThrough);
        Assert.True(c.Subscript);
        Assert.True(c.SmallCaps);
        Assert.True(c.Hidden);
        Assert.Throws<ArgumentException>(() => c.ColorHex = "red");
        Assert.Throws<ArgumentOutOfRangeException>(() => c.Underline = (Underline)99);
    }

    [Fact]
    public void SwitchingSuperscriptOffLeavesSubscriptAlone()
    {
        var doc = new Document();
        var run = new Run(doc, "x");
        run.Font.Subscript = true;
        run.Font.Superscript = false;
        Assert.True(run.Font.Subscript);
        run.Font.Superscript = true;
        Assert.False(run.Font.Subscript);
    }

    [Fact]
    public void ParagraphFormattingRoundTrips()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var pf = b.ParagraphFormat;
        pf.Alignment = ParagraphAlignment.Justify;
        pf.LeftIndent = 36;
        pf.RightIndent = 18;
        pf.FirstLineIndent = -12;
        pf.SpaceBefore = 6;
        pf.SpaceAfter = 9;
        pf.LineSpacingRule = LineSpacingRule.Exactly;
        pf.LineSpacing = 15;
        pf.KeepTogether = true;
        pf.KeepWithNext = true;
        pf.PageBreakBefore = true;
        pf.OutlineLevel = OutlineLevel.Level3;
        pf.GetBorder(BorderType.Bottom).LineStyle = LineStyle.Single;
        pf.Shading.Texture = TextureIndex.Texture25Percent;
        b.Write("formatted");
        var p = TestSupport.RoundTrip(doc).FirstSection!.Body!.FirstParagraph!.ParagraphFormat;
        Assert.Equal(ParagraphAlignment.Justify, p.Alignment);
        Assert.Equal(36, p.LeftIndent);
        Assert.Equal(18, p.RightIndent);
        Assert.Equal(-12, p.FirstLineIndent);
        Assert.Equal(6, p.SpaceBefore);
        Assert.Equal(9, p.SpaceAfter);
        Assert.Equal(LineSpacingRule.Exactly, p.LineSpacingRule);
        Assert.Equal(15, p.LineSpacing);
        Assert.True(p.KeepTogether && p.KeepWithNext && p.PageBreakBefore);
        Assert.Equal(OutlineLevel.Level3, p.OutlineLevel);
        Assert.Equal(LineStyle.Single, p.GetBorder(BorderType.Bottom).LineStyle);
        Assert.Equal(LineStyle.None, p.GetBorder(BorderType.Top).LineStyle);
        Assert.Equal(TextureIndex.Texture25Percent, p.Shading.Texture);
        p.ClearFormatting();
        Assert.Equal(ParagraphAlignment.Left, p.Alignment);
        Assert.Equal(OutlineLevel.BodyText, p.OutlineLevel);
    }

    [Fact]
    public void MultipleLineSpacingIsCountedInLines()
    {
        var doc = new Document();
        var pf = doc.FirstSection!.Body!.FirstParagraph!.ParagraphFormat;
        pf.LineSpacingRule = LineSpacingRule.Multiple;
        pf.LineSpacing = 18;
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        // One and a half lines: 360 of the 240 units a single line has.
        Assert.Contains("w:line=\"360\"", xml);
        Assert.Contains("w:lineRule=\"auto\"", xml);
    }

    [Fact]
    public void StyleFormattingIsInheritedAndOverridden()
    {
        var doc = new Document();
        doc.Styles.DefaultFont.Name = "Liberation Sans";
        doc.Styles.DefaultFont.Size = 11;
        var b = new DocumentBuilder(doc);
        b.Write("plain");
        var plain = b.CurrentParagraph.Runs[0];
        Assert.Equal("Liberation Sans", plain.Font.Name);
        Assert.Equal(11, plain.Font.Size);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading3;
        Assert.Equal(13, plain.Font.Size);
        Assert.True(plain.Font.Bold);
        plain.Font.Bold = false;
        var back = TestSupport.RoundTrip(doc).FirstSection!.Body!.FirstParagraph!.Runs[0];
        Assert.False(back.Font.Bold);
        Assert.Equal(13, back.Font.Size);
        Assert.Equal("Liberation Sans", back.Font.Name);
    }

    [Fact]
    public void CharacterStylesApplyToRuns()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Font.StyleIdentifier = StyleIdentifier.Strong;
        b.Write("strong");
        var run = b.CurrentParagraph.Runs[0];
        Assert.True(run.Font.Bold);
        Assert.Equal("Strong", run.Font.StyleName);
        Assert.Throws<ArgumentException>(() => run.Font.StyleName = "Normal");
        Assert.Throws<ArgumentException>(() => b.ParagraphFormat.StyleName = "Strong");
        var md = TestSupport.ToText(doc, SaveFormat.Markdown);
        Assert.Equal("**strong**\n", md);
    }

    [Fact]
    public void PageSetupRoundTripsAndValidates()
    {
        var doc = new Document();
        var ps = doc.FirstSection!.PageSetup;
        Assert.Equal(612, ps.PageWidth);
        ps.PageWidth = 595.3;
        ps.PageHeight = 841.9;
        ps.TopMargin = 50;
        ps.LeftMargin = 60;
        ps.HeaderDistance = 20;
        ps.SectionStart = SectionStart.OddPage;
        ps.PageStartingNumber = 5;
        ps.DifferentFirstPageHeaderFooter = true;
        ps.Orientation = Orientation.Landscape;
        var back = TestSupport.RoundTrip(doc).FirstSection!.PageSetup;
        Assert.Equal(841.9, back.PageWidth);
        Assert.Equal(595.3, back.PageHeight);
        Assert.Equal(Orientation.Landscape, back.Orientation);
        Assert.Equal(50, back.TopMargin);
        Assert.Equal(60, back.LeftMargin);
        Assert.Equal(20, back.HeaderDistance);
        Assert.Equal(SectionStart.OddPage, back.SectionStart);
        Assert.True(back.RestartPageNumbering);
        Assert.Equal(5, back.PageStartingNumber);
        Assert.True(back.DifferentFirstPageHeaderFooter);
        Assert.Throws<ArgumentOutOfRangeException>(() => back.PageWidth = 0);
        Assert.Throws<ArgumentOutOfRangeException>(() => back.LeftMargin = -1);
        back.RestartPageNumbering = false;
        Assert.Equal(1, back.PageStartingNumber);
    }

    [Fact]
    public void ListLevelsDescribeTheirNumbering()
    {
        var doc = new Document();
        var list = doc.Lists.Add(ListTemplate.OutlineNumbers);
        Assert.Equal(9, list.ListLevels.Count);
        Assert.Equal("%1.%2.", list.ListLevels[1].NumberFormat);
        var l0 = list.ListLevels[0];
        l0.NumberStyle = NumberStyle.UppercaseLetter;
        l0.StartAt = 27;
        l0.TrailingCharacter = ListTrailingCharacter.Space;
        l0.Alignment = ListLevelAlignment.Right;
        l0.TextPosition = 30;
        l0.NumberPosition = 10;
        l0.Font.Bold = true;
        var b = new DocumentBuilder(doc);
        b.ListFormat.List = list;
        b.Writeln("first");
        b.ListFormat.ListLevelNumber = 1;
        b.Writeln("child");
        Assert.Throws<ArgumentOutOfRangeException>(() => b.ListFormat.ListLevelNumber = 9);
        var back = TestSupport.RoundTrip(doc);
        var lb = back.Lists.GetListByListId(list.ListId)!;
        var level = lb.ListLevels[0];
        Assert.Equal(NumberStyle.UppercaseLetter, level.NumberStyle);
        Assert.Equal(27, level.StartAt);
        Assert.Equal(ListTrailingCharacter.Space, level.TrailingCharacter);
        Assert.Equal(ListLevelAlignment.Right, level.Alignment);
        Assert.Equal(30, level.TextPosition);
        Assert.Equal(10, level.NumberPosition);
        Assert.True(level.Font.Bold);
        var text = TestSupport.ToText(back, SaveFormat.Text).Split("\r\n");
        // Letters continue past Z by doubling: 27 is AA.
        Assert.Equal("AA. first", text[0]);
        Assert.Equal("AA.1. child", text[1]);
    }

    [Fact]
    public void AddCopyGivesAnIndependentList()
    {
        var doc = new Document();
        var a = doc.Lists.Add(ListTemplate.NumberDefault);
        var copy = doc.Lists.AddCopy(a);
        Assert.NotEqual(a.ListId, copy.ListId);
        copy.ListLevels[0].NumberStyle = NumberStyle.LowercaseRoman;
        Assert.Equal(NumberStyle.Arabic, a.ListLevels[0].NumberStyle);
        var b = new DocumentBuilder(doc);
        b.ListFormat.List = a;
        b.Writeln("a1");
        b.Writeln("a2");
        b.ListFormat.List = copy;
        b.Writeln("c1");
        b.ListFormat.RemoveNumbers();
        var lines = TestSupport.ToText(doc, SaveFormat.Text).Split("\r\n");
        Assert.Equal(new[] { "1. a1", "2. a2", "i. c1" }, lines[..3]);
    }

    [Fact]
    public void TableAndCellFormattingRoundTrips()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var t = b.StartTable();
        b.CellFormat.Width = 100;
        b.CellFormat.VerticalAlignment = CellVerticalAlignment.Center;
        b.CellFormat.Shading.BackgroundPatternColorHex = "DDDDDD";
        b.InsertCell(); b.Write("a");
        b.CellFormat.ClearFormatting();
        b.InsertCell(); b.Write("b");
        b.RowFormat.Height = 30;
        b.RowFormat.HeightRule = HeightRule.Exactly;
        b.RowFormat.HeadingFormat = true;
        b.RowFormat.AllowBreakAcrossPages = false;
        b.EndRow();
        b.EndTable();
        t.Alignment = TableAlignment.Center;
        t.StyleIdentifier = StyleIdentifier.TableGrid;
        t.SetBorders(LineStyle.Single, 0.5);
        var back = TestSupport.RoundTrip(doc).FirstSection!.Body!.Tables[0];
        Assert.Equal(TableAlignment.Center, back.Alignment);
        Assert.Equal("Table Grid", back.StyleName);
        var row = back.FirstRow!;
        Assert.Equal(30, row.RowFormat.Height);
        Assert.Equal(HeightRule.Exactly, row.RowFormat.HeightRule);
        Assert.True(row.RowFormat.HeadingFormat);
        Assert.False(row.RowFormat.AllowBreakAcrossPages);
        var cell = row.FirstCell!;
        Assert.Equal(100, cell.CellFormat.Width);
        Assert.Equal(CellVerticalAlignment.Center, cell.CellFormat.VerticalAlignment);
        Assert.Equal("DDDDDD", cell.CellFormat.Shading.BackgroundPatternColorHex);
        Assert.Equal(0, row.LastCell!.CellFormat.Width);
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        Assert.Contains("<w:tblBorders>", xml);
    }

    [Fact]
    public void ParagraphsReportTheirListLabels()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("one");
        b.ListFormat.ListIndent();
        b.Writeln("one.a");
        b.ListFormat.ListOutdent();
        b.Writeln("two");
        b.ListFormat.ApplyBulletDefault();
        b.Write("dot");
        var paras = doc.FirstSection!.Body!.Paragraphs;
        Assert.Equal("1.", paras[0].ListLabel.LabelString);
        Assert.Equal("a.", paras[1].ListLabel.LabelString);
        Assert.Equal(1, paras[1].ListLabel.LabelValue);
        Assert.Equal("2.", paras[2].ListLabel.LabelString);
        Assert.Equal("\u2022", paras[3].ListLabel.LabelString);
        Assert.Equal(0, paras[3].ListLabel.LabelValue);
        // Labels follow edits: taking the first item out renumbers the rest.
        paras[0].ListFormat.RemoveNumbers();
        Assert.Equal("", paras[0].ListLabel.LabelString);
        Assert.Equal("1.", paras[2].ListLabel.LabelString);
    }

    [Fact]
    public void SwitchingOffWritesNothingUnlessAStyleSwitchedOn()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Font.Bold = true;
        b.Write("on");
        b.Font.Bold = false;
        b.Writeln("off");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Font.Bold = false;
        b.Write("heading off");
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        // Only the run inside the bold heading style needs an explicit "off".
        Assert.Equal(1, System.Text.RegularExpressions.Regex.Matches(xml, "<w:b w:val=\"0\" />").Count);
        var runs = TestSupport.RoundTrip(doc).GetChildNodes(NodeType.Run, true).ToArray().Cast<Run>();
        Assert.Equal(new[] { true, false, false }, runs.Select(r => r.Font.Bold).ToArray());
    }
}
