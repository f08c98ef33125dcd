using System.Xml.Linq;
using Quorix.Folio.Formatting;
using Quorix.Folio.Lists;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

/// <summary>Tables, rows, cells and sections with typed formatting: table styles and their parts in the
/// cascade, and round trips that keep what the model does not hold.</summary>
public class TableFormattingTests
{
    private const string W = "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\" xmlns:w14=\"http://schemas.microsoft.com/office/word/2010/wordml\"";
    private static readonly XNamespace Wn = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";

    private static Document Load(string body, string? styles = null)
    {
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            _ => "<w:document " + W + "><w:body>" + body + "</w:body></w:document>");
        if (styles != null)
            bytes = TestSupport.WithPart(bytes, "word/styles.xml", s => s!.Replace("</w:styles>", styles + "</w:styles>"));
        return new Document(new MemoryStream(bytes));
    }

    private static XElement SavedBody(Document doc) =>
        XDocument.Parse(TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml")).Root!.Element(Wn + "body")!;

    // A grid style: every part fills its cells with its own colour, so each cell shows which parts apply.
    private const string GridStyle =
        "<w:style w:type=\"table\" w:styleId=\"Base\"><w:name w:val=\"Base Grid\"/>" +
        "<w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"EEEEEE\"/><w:vAlign w:val=\"center\"/></w:tcPr></w:style>" +
        "<w:style w:type=\"table\" w:styleId=\"Parts\"><w:name w:val=\"Parts\"/><w:basedOn w:val=\"Base\"/>" +
        "<w:tblPr><w:tblStyleRowBandSize w:val=\"1\"/><w:tblBorders><w:top w:val=\"single\" w:sz=\"8\" w:space=\"0\" w:color=\"FF0000\"/></w:tblBorders></w:tblPr>" +
        "<w:tblStylePr w:type=\"band1Horz\"><w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"111111\"/></w:tcPr></w:tblStylePr>" +
        "<w:tblStylePr w:type=\"band2Horz\"><w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"222222\"/></w:tcPr></w:tblStylePr>" +
        "<w:tblStylePr w:type=\"firstRow\"><w:rPr><w:b/></w:rPr><w:trPr><w:tblHeader/></w:trPr><w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"AAAAAA\"/><w:vAlign w:val=\"bottom\"/></w:tcPr></w:tblStylePr>" +
        "<w:tblStylePr w:type=\"lastRow\"><w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"BBBBBB\"/></w:tcPr></w:tblStylePr>" +
        "<w:tblStylePr w:type=\"firstCol\"><w:rPr><w:i/></w:rPr><w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"CCCCCC\"/></w:tcPr></w:tblStylePr>" +
        "<w:tblStylePr w:type=\"nwCell\"><w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"0000FF\"/></w:tcPr></w:tblStylePr>" +
        "</w:style>";

    private static string Table(string look, int rows = 5, int cols = 3, string? firstCellProps = null)
    {
        var sb = new System.Text.StringBuilder("<w:tbl><w:tblPr><w:tblStyle w:val=\"Parts\"/>" + look + "</w:tblPr><w:tblGrid>");
        for (int c = 0; c < cols; c++) sb.Append("<w:gridCol w:w=\"2000\"/>");
        sb.Append("</w:tblGrid>");
        for (int r = 0; r < rows; r++)
        {
            sb.Append("<w:tr>");
            for (int c = 0; c < cols; c++)
                sb.Append("<w:tc>").Append(r == 0 && c == 0 && firstCellProps != null ? firstCellProps : "").Append($"<w:p><w:r><w:t>r{r}c{c}</w:t></w:r></w:p></w:tc>");
            sb.Append("</w:tr>");
        }
        return sb.Append("</w:tbl><w:p/>").ToString();
    }

    private static string[][] Fills(Table t) =>
        t.Rows.ToArray().Select(r => r.Cells.ToArray().Select(c => c.CellFormat.Shading.BackgroundPatternColorHex).ToArray()).ToArray();

    [Fact]
    public void CellsTakeTheStylePartsOfTheirPlaceInTheTable()
    {
        // First row, last row and first column on, bands on: the corner has its own part.
        var doc = Load(Table("<w:tblLook w:firstRow=\"1\" w:lastRow=\"1\" w:firstColumn=\"1\" w:lastColumn=\"0\" w:noHBand=\"0\" w:noVBand=\"1\"/>"), GridStyle);
        var t = doc.FirstSection!.Body!.Tables[0];
        var fills = Fills(t);
        Assert.Equal(new[] { "0000FF", "AAAAAA", "AAAAAA" }, fills[0]);
        // Body rows band from the row after the first; the first column wins over the bands.
        Assert.Equal(new[] { "CCCCCC", "111111", "111111" }, fills[1]);
        Assert.Equal(new[] { "CCCCCC", "222222", "222222" }, fills[2]);
        Assert.Equal(new[] { "CCCCCC", "111111", "111111" }, fills[3]);
        // The last row wins over the first column; there is no bottom-left part in the style.
        Assert.Equal(new[] { "BBBBBB", "BBBBBB", "BBBBBB" }, fills[4]);

        // What the base style gives the whole table shows where no part says otherwise.
        Assert.Equal(CellVerticalAlignment.Bottom, t.FirstRow!.Cells[1].CellFormat.VerticalAlignment);
        Assert.Equal(CellVerticalAlignment.Center, t.Rows[2].Cells[1].CellFormat.VerticalAlignment);
        Assert.True(t.FirstRow.RowFormat.HeadingFormat);
        Assert.False(t.Rows[1].RowFormat.HeadingFormat);
        Assert.Equal(LineStyle.Single, t.GetBorder(BorderType.Top).LineStyle);
        Assert.Equal(1.0, t.GetBorder(BorderType.Top).LineWidth);

        // Runs take the parts' character formatting beneath their own.
        var firstRowRun = (Run)t.FirstRow.Cells[1].FirstParagraph!.Runs[0];
        var firstColRun = (Run)t.Rows[2].Cells[0].FirstParagraph!.Runs[0];
        var bodyRun = (Run)t.Rows[2].Cells[1].FirstParagraph!.Runs[0];
        Assert.True(firstRowRun.Font.Bold);
        Assert.True(firstColRun.Font.Italic);
        Assert.False(bodyRun.Font.Bold || bodyRun.Font.Italic);
    }

    [Fact]
    public void StyleOptionsChooseThePartsAndOwnFormattingWins()
    {
        var doc = Load(Table("<w:tblLook w:val=\"0600\"/>", firstCellProps: "<w:tcPr><w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"ABCDEF\"/></w:tcPr>"), GridStyle);
        var t = doc.FirstSection!.Body!.Tables[0];
        // The older mask says no parts and no banding: the whole-table formatting alone, under the cell's own.
        Assert.Equal(TableStyleOptions.None, t.StyleOptions);
        var fills = Fills(t);
        Assert.Equal("ABCDEF", fills[0][0]);
        Assert.All(fills.Skip(1).SelectMany(r => r), f => Assert.Equal("EEEEEE", f));

        t.StyleOptions = TableStyleOptions.FirstRow | TableStyleOptions.RowBands;
        fills = Fills(t);
        Assert.Equal(new[] { "ABCDEF", "AAAAAA", "AAAAAA" }, fills[0]);
        Assert.Equal(new[] { "111111", "111111", "111111" }, fills[1]);
        Assert.Equal(new[] { "222222", "222222", "222222" }, fills[4]);

        // Clearing the cell's own shading shows the style's again; the options survive a save.
        t.FirstRow!.FirstCell!.CellFormat.Shading.ClearFormatting();
        Assert.Equal("AAAAAA", t.FirstRow.FirstCell.CellFormat.Shading.BackgroundPatternColorHex);
        var again = TestSupport.RoundTrip(doc).FirstSection!.Body!.Tables[0];
        Assert.Equal(TableStyleOptions.FirstRow | TableStyleOptions.RowBands, again.StyleOptions);
        Assert.Equal(Fills(t), Fills(again));
    }

    [Fact]
    public void StyleEditsReachCellsAtOnce()
    {
        var doc = Load(Table("<w:tblLook w:firstRow=\"1\" w:lastRow=\"0\" w:firstColumn=\"0\" w:lastColumn=\"0\" w:noHBand=\"1\" w:noVBand=\"1\"/>"), GridStyle);
        var t = doc.FirstSection!.Body!.Tables[0];
        Assert.Equal("EEEEEE", t.Rows[2].Cells[1].CellFormat.Shading.BackgroundPatternColorHex);
        // The base style's markup changes: the cached resolution must not outlive it.
        var tcPr = doc.Styles["Base Grid"]!.Bag.Find("tcPr")!;
        tcPr.Children!.First(c => c.Local == "shd").Set("fill", "123456");
        Assert.Equal("123456", t.Rows[2].Cells[1].CellFormat.Shading.BackgroundPatternColorHex);
        Assert.Equal("AAAAAA", t.Rows[0].Cells[1].CellFormat.Shading.BackgroundPatternColorHex);
    }

    [Fact]
    public void TableRowCellAndSectionFormattingRoundTripWithWhatTheModelDoesNotHold()
    {
        var body =
            "<w:tbl><w:tblPr><w:tblW w:w=\"5000\" w:type=\"pct\"/><w:jc w:val=\"center\"/><w:tblInd w:w=\"144\" w:type=\"dxa\"/>" +
            "<w:tblBorders><w:top w:val=\"double\" w:sz=\"12\" w:space=\"0\" w:color=\"00FF00\"/><w:insideV w:val=\"dotted\" w:sz=\"4\" w:space=\"0\" w:color=\"auto\" w14:foo=\"x\"/></w:tblBorders>" +
            "<w:tblCellMar><w:left w:w=\"60\" w:type=\"dxa\"/></w:tblCellMar><w:tblCaption w:val=\"Totals\"/></w:tblPr>" +
            "<w:tblGrid><w:gridCol w:w=\"3000\"/><w:gridCol w:w=\"1000\"/><w:gridCol w:w=\"2000\"/></w:tblGrid>" +
            "<w:tr><w:trPr><w:cantSplit/><w:trHeight w:val=\"400\" w:hRule=\"exact\"/><w:cnfStyle w:val=\"100000000000\"/></w:trPr>" +
            "<w:tc><w:tcPr><w:tcW w:w=\"4000\" w:type=\"dxa\"/><w:gridSpan w:val=\"2\"/><w:vMerge w:val=\"restart\"/><w:tcBorders><w:bottom w:val=\"single\" w:sz=\"4\" w:space=\"0\" w:color=\"0000FF\"/></w:tcBorders><w:tcMar><w:top w:w=\"20\" w:type=\"dxa\"/></w:tcMar><w:noWrap/></w:tcPr><w:p/></w:tc>" +
            "<w:tc><w:tcPr><w:shd w:val=\"pct25\" w:color=\"FF0000\" w:fill=\"00FFFF\" w14:paraId=\"1\"/></w:tcPr><w:p/></w:tc></w:tr>" +
            "<w:tr><w:tc><w:tcPr><w:gridSpan w:val=\"2\"/><w:vMerge/></w:tcPr><w:p/></w:tc><w:tc><w:p/></w:tc></w:tr></w:tbl>" +
            "<w:sectPr><w:pgSz w:w=\"15840\" w:h=\"12240\" w:orient=\"landscape\" w:code=\"1\"/>" +
            "<w:pgMar w:top=\"720\" w:right=\"1080\" w:bottom=\"720\" w:left=\"1080\" w:header=\"360\" w:footer=\"360\" w:gutter=\"0\"/>" +
            "<w:pgBorders w:offsetFrom=\"page\"><w:top w:val=\"single\" w:sz=\"4\" w:space=\"24\" w:color=\"auto\"/></w:pgBorders>" +
            "<w:lnNumType w:countBy=\"5\"/><w:cols w:num=\"2\" w:space=\"720\" w:equalWidth=\"0\"><w:col w:w=\"4000\" w:space=\"720\"/><w:col w:w=\"8000\"/></w:cols>" +
            "<w:vAlign w:val=\"center\"/><w:titlePg/><w:docGrid w:linePitch=\"360\"/></w:sectPr>";
        var doc = Load(body);
        var section = doc.FirstSection!;
        var t = section.Body!.Tables[0];
        // Read as the model's values.
        Assert.Equal(TableAlignment.Center, t.Alignment);
        Assert.Equal(7.2, t.LeftIndent);
        Assert.Equal(LineStyle.Double, t.GetBorder(BorderType.Top).LineStyle);
        Assert.Equal(1.5, t.GetBorder(BorderType.Top).LineWidth);
        Assert.Equal("00FF00", t.GetBorder(BorderType.Top).ColorHex);
        var row = t.FirstRow!;
        Assert.Equal((20.0, HeightRule.Exactly, false), (row.RowFormat.Height, row.RowFormat.HeightRule, row.RowFormat.AllowBreakAcrossPages));
        var first = row.FirstCell!;
        Assert.Equal((CellMerge.First, CellMerge.First, 200.0, false), (first.CellFormat.HorizontalMerge, first.CellFormat.VerticalMerge, first.CellFormat.Width, first.CellFormat.WrapText));
        Assert.Equal(LineStyle.Single, first.CellFormat.GetBorder(BorderType.Bottom).LineStyle);
        var shaded = row.Cells[2];
        Assert.Equal((TextureIndex.Texture25Percent, "00FFFF"), (shaded.CellFormat.Shading.Texture, shaded.CellFormat.Shading.BackgroundPatternColorHex));
        Assert.Equal(CellMerge.Previous, t.LastRow!.FirstCell!.CellFormat.VerticalMerge);
        var ps = section.PageSetup;
        Assert.Equal((Orientation.Landscape, 792.0, 612.0, 36.0, 54.0), (ps.Orientation, ps.PageWidth, ps.PageHeight, ps.TopMargin, ps.LeftMargin));
        Assert.Equal((PageBorderDistanceFrom.PageEdge, LineStyle.Single, 24.0), (ps.BorderDistanceFrom, ps.GetBorder(BorderType.Top).LineStyle, ps.GetBorder(BorderType.Top).DistanceFromText));
        Assert.Equal((false, 2, 200.0, 400.0, 36.0), (ps.TextColumns.EvenlySpaced, ps.TextColumns.Count, ps.TextColumns[0].Width, ps.TextColumns[1].Width, ps.TextColumns[0].SpaceAfter));
        Assert.Equal((PageVerticalAlignment.Center, true), (ps.VerticalAlignment, ps.DifferentFirstPageHeaderFooter));

        // Modelled attributes are held apart from the markup: unknown parts stay kept, not duplicated.
        Assert.Equal(new[] { "tblCellMar", "tblCaption", "tblBorders" }.OrderBy(x => x), t.Props.Kept!.Items.Select(e => e.Local).OrderBy(x => x));
        Assert.False(t.Attrs.Has(FormatAttr.BorderInsideV));

        // Edits, then a save: every element read comes back, the edited values with it.
        ps.TextColumns[1].Width = 300;
        row.RowFormat.Height = 30;
        t.GetBorder(BorderType.Bottom).LineStyle = LineStyle.Single;
        var saved = SavedBody(doc);
        var tbl = saved.Element(Wn + "tbl")!;
        var tblPr = tbl.Element(Wn + "tblPr")!;
        Assert.Equal(new[] { "tblW", "jc", "tblInd", "tblBorders", "tblCellMar", "tblCaption" }, tblPr.Elements().Select(e => e.Name.LocalName));
        var borders = tblPr.Element(Wn + "tblBorders")!;
        Assert.Equal(new[] { "top", "bottom", "insideV" }, borders.Elements().Select(e => e.Name.LocalName));
        Assert.Equal("x", borders.Element(Wn + "insideV")!.Attribute(XNamespace.Get("http://schemas.microsoft.com/office/word/2010/wordml") + "foo")!.Value);
        Assert.Equal(new[] { "3000", "1000", "2000" }, tbl.Element(Wn + "tblGrid")!.Elements().Select(g => g.Attribute(Wn + "w")!.Value));
        var trPr = tbl.Element(Wn + "tr")!.Element(Wn + "trPr")!;
        Assert.Equal(new[] { "cnfStyle", "cantSplit", "trHeight" }, trPr.Elements().Select(e => e.Name.LocalName));
        Assert.Equal("600", trPr.Element(Wn + "trHeight")!.Attribute(Wn + "val")!.Value);
        var tcs = tbl.Element(Wn + "tr")!.Elements(Wn + "tc").ToList();
        Assert.Equal(2, tcs.Count);
        var tcPr = tcs[0].Element(Wn + "tcPr")!;
        Assert.Equal(new[] { "tcW", "gridSpan", "vMerge", "tcBorders", "noWrap", "tcMar" }, tcPr.Elements().Select(e => e.Name.LocalName));
        Assert.Equal("2", tcPr.Element(Wn + "gridSpan")!.Attribute(Wn + "val")!.Value);
        Assert.NotNull(tcs[1].Element(Wn + "tcPr")!.Element(Wn + "shd")!.Attribute(XNamespace.Get("http://schemas.microsoft.com/office/word/2010/wordml") + "paraId"));
        var continued = tbl.Elements(Wn + "tr").Last().Element(Wn + "tc")!.Element(Wn + "tcPr")!.Element(Wn + "vMerge")!;
        Assert.Empty(continued.Attributes());
        var sectPr = saved.Element(Wn + "sectPr")!;
        Assert.Equal(new[] { "pgSz", "pgMar", "pgBorders", "lnNumType", "cols", "vAlign", "titlePg", "docGrid" }, sectPr.Elements().Select(e => e.Name.LocalName));
        var cols = sectPr.Element(Wn + "cols")!;
        Assert.Equal(new[] { "4000", "6000" }, cols.Elements().Select(c => c.Attribute(Wn + "w")!.Value));
        Assert.Equal("1", sectPr.Element(Wn + "pgSz")!.Attribute(Wn + "code")!.Value);
        Assert.Equal("5", sectPr.Element(Wn + "lnNumType")!.Attribute(Wn + "countBy")!.Value);

        // And the model reads its own output the same way.
        var back = TestSupport.RoundTrip(doc);
        var bt = back.FirstSection!.Body!.Tables[0];
        Assert.Equal((30.0, LineStyle.Single), (bt.FirstRow!.RowFormat.Height, bt.GetBorder(BorderType.Bottom).LineStyle));
        Assert.Equal(300.0, back.FirstSection.PageSetup.TextColumns[1].Width);
    }

    [Fact]
    public void EqualFormattingIsSharedAcrossCellsAndRows()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        // The builder's cell formatting goes to the cells inserted after it is set.
        b.CellFormat.Width = 100;
        b.CellFormat.VerticalAlignment = CellVerticalAlignment.Center;
        b.StartTable();
        for (int r = 0; r < 50; r++)
        {
            for (int c = 0; c < 4; c++)
            {
                b.InsertCell();
                b.Write("x");
            }
            b.EndRow();
        }
        b.EndTable();
        var cells = TestSupport.RoundTrip(doc).GetChildNodes(NodeType.Cell, true).Cast<Cell>().ToList();
        Assert.Equal(200, cells.Count);
        Assert.Single(cells.Select(c => c.Attrs).Distinct(ReferenceEqualityComparer.Instance));
        Assert.All(cells, c => Assert.Null(c.Props.Kept));
    }

    [Fact]
    public void BadValuesAreRefused()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var t = b.StartTable();
        var cell = b.InsertCell();
        b.EndRow();
        b.EndTable();
        Assert.Throws<ArgumentOutOfRangeException>(() => cell.CellFormat.Width = -1);
        Assert.Throws<ArgumentOutOfRangeException>(() => cell.CellFormat.VerticalMerge = (CellMerge)7);
        Assert.Throws<ArgumentException>(() => cell.CellFormat.Shading.BackgroundPatternColorHex = "red");
        Assert.Throws<ArgumentOutOfRangeException>(() => t.StyleOptions = (TableStyleOptions)1);
        Assert.Throws<ArgumentOutOfRangeException>(() => t.SetBorders(LineStyle.Single, 40));
        Assert.Throws<ArgumentOutOfRangeException>(() => doc.FirstSection!.PageSetup.GetBorder(BorderType.Vertical));
        Assert.Throws<ArgumentOutOfRangeException>(() => doc.FirstSection!.PageSetup.VerticalAlignment = (PageVerticalAlignment)9);
        Assert.Throws<ArgumentOutOfRangeException>(() => t.FirstRow!.RowFormat.HeightRule = (HeightRule)5);
        // A refused value leaves the formatting as it was.
        Assert.Equal(CellMerge.None, cell.CellFormat.VerticalMerge);
        Assert.Equal("auto", cell.CellFormat.Shading.BackgroundPatternColorHex);
    }
}

/// <summary>List levels read and written as typed formatting, their definition's other markup kept.</summary>
public class ListLevelFormattingTests
{
    private static readonly XNamespace Wn = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";

    [Fact]
    public void LevelsReadAndWriteTypedValuesAndKeepTheRest()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("one");
        b.ListFormat.ListIndent();
        b.Writeln("nested");
        b.ListFormat.RemoveNumbers();
        // A foreign attribute and an element the model does not hold, as another tool might write them.
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(doc), "word/numbering.xml", x =>
        {
            int at = x!.IndexOf("<w:numFmt ", StringComparison.Ordinal);
            return x[..at] + "<w:numFmt xmlns:w14=\"urn:x\" w14:foo=\"kept\" " + x[(at + "<w:numFmt ".Length)..].Replace("<w:lvlJc ", "<w:legacy w:legacy=\"1\"/><w:lvlJc ");
        });
        doc = new Document(new MemoryStream(bytes));
        var level = doc.Lists[0].ListLevels[0];
        Assert.Equal((1, NumberStyle.Arabic, "%1.", ListTrailingCharacter.Tab), (level.StartAt, level.NumberStyle, level.NumberFormat, level.TrailingCharacter));
        Assert.Equal(-1, level.RestartAfterLevel);
        Assert.Equal(0, doc.Lists[0].ListLevels[1].RestartAfterLevel);

        level.StartAt = 4;
        level.NumberStyle = NumberStyle.UppercaseRoman;
        level.Alignment = ListLevelAlignment.Right;
        level.IsLegal = true;
        doc.Lists[0].ListLevels[1].RestartAfterLevel = -1;
        var saved = TestSupport.ToBytes(doc);
        var lvl = XDocument.Parse(TestSupport.Part(saved, "word/numbering.xml")).Descendants(Wn + "lvl").First();
        var names = lvl.Elements().Select(e => e.Name.LocalName).ToList();
        // Schema order with the changed and the kept elements in place.
        Assert.Equal(names.OrderBy(n => Formatting.PropOrder.Level.Rank(n)).ToList(), names);
        Assert.Contains("legacy", names);
        Assert.Contains("isLgl", names);
        var numFmt = lvl.Element(Wn + "numFmt")!;
        Assert.Equal(("upperRoman", "kept"), (numFmt.Attribute(Wn + "val")!.Value, numFmt.Attribute(XNamespace.Get("urn:x") + "foo")!.Value));
        Assert.Equal("4", lvl.Element(Wn + "start")!.Attribute(Wn + "val")!.Value);

        var again = new Document(new MemoryStream(saved)).Lists[0];
        Assert.Equal((4, NumberStyle.UppercaseRoman, ListLevelAlignment.Right, true), (again.ListLevels[0].StartAt, again.ListLevels[0].NumberStyle, again.ListLevels[0].Alignment, again.ListLevels[0].IsLegal));
        Assert.Equal(-1, again.ListLevels[1].RestartAfterLevel);
        Assert.Throws<ArgumentOutOfRangeException>(() => again.ListLevels[1].RestartAfterLevel = 9);
        Assert.Throws<ArgumentOutOfRangeException>(() => again.ListLevels[0].Alignment = (ListLevelAlignment)7);
    }
}

/// <summary>A paragraph's direction as typed formatting, inherited from its style.</summary>
public class ParagraphDirectionTests
{
    private static readonly XNamespace Wn = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";

    [Fact]
    public void DirectionComesFromTheStyleUnlessTheParagraphSaysAndRoundTrips()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var rtl = doc.Styles.Add(StyleType.Paragraph, "Right to left");
        rtl.ParagraphFormat.Bidi = true;
        b.ParagraphFormat.StyleName = "Right to left";
        b.Writeln("\u05D0\u05D1");
        b.Writeln("mixed");
        var paras = doc.FirstSection!.Body!.Paragraphs;
        Assert.True(paras[0].ParagraphFormat.Bidi);
        paras[1].ParagraphFormat.Bidi = false;
        var saved = TestSupport.ToBytes(doc);
        var ps = XDocument.Parse(TestSupport.Part(saved, "word/document.xml")).Descendants(Wn + "p").ToList();
        Assert.Null(ps[0].Element(Wn + "pPr")!.Element(Wn + "bidi"));
        Assert.Equal("0", ps[1].Element(Wn + "pPr")!.Element(Wn + "bidi")!.Attribute(Wn + "val")!.Value);
        var again = new Document(new MemoryStream(saved)).FirstSection!.Body!.Paragraphs;
        Assert.Equal((true, false), (again[0].ParagraphFormat.Bidi, again[1].ParagraphFormat.Bidi));
    }
}

/// <summary>Tab stops as typed formatting: a paragraph's own added to or clearing its style's.</summary>
public class TabStopTests
{
    private const string W = "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"";
    private static readonly XNamespace Wn = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";

    [Fact]
    public void OwnStopsAddToAndClearTheStylesAndRoundTrip()
    {
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml", _ =>
            "<w:document " + W + "><w:body><w:p><w:pPr><w:pStyle w:val=\"Tabbed\"/><w:tabs><w:tab w:val=\"clear\" w:pos=\"1440\"/>" +
            "<w:tab w:val=\"right\" w:leader=\"dot\" w:pos=\"4320\"/></w:tabs></w:pPr><w:r><w:t>a</w:t></w:r></w:p></w:body></w:document>");
        bytes = TestSupport.WithPart(bytes, "word/styles.xml", s => s!.Replace("</w:styles>",
            "<w:style w:type=\"paragraph\" w:styleId=\"Tabbed\"><w:name w:val=\"Tabbed\"/><w:pPr><w:tabs><w:tab w:val=\"left\" w:pos=\"1440\"/>" +
            "<w:tab w:val=\"center\" w:pos=\"2880\"/></w:tabs></w:pPr></w:style></w:styles>"));
        var doc = new Document(new MemoryStream(bytes));
        var tabs = doc.FirstSection!.Body!.FirstParagraph!.ParagraphFormat.TabStops;
        Assert.Equal(new[] { (144.0, TabAlignment.Center, TabLeader.None), (216.0, TabAlignment.Right, TabLeader.Dots) },
            Enumerable.Range(0, tabs.Count).Select(i => (tabs[i].Position, tabs[i].Alignment, tabs[i].Leader)));

        tabs.Add(36, TabAlignment.Decimal, TabLeader.Line);
        tabs.RemoveByPosition(144);
        Assert.Equal(new[] { 36.0, 216.0 }, Enumerable.Range(0, tabs.Count).Select(i => tabs[i].Position));

        var saved = TestSupport.ToBytes(doc);
        var own = XDocument.Parse(TestSupport.Part(saved, "word/document.xml")).Descendants(Wn + "tabs").Single();
        Assert.Equal(new[] { "decimal:720", "clear:1440", "clear:2880", "right:4320" },
            own.Elements().Select(t => t.Attribute(Wn + "val")!.Value + ":" + t.Attribute(Wn + "pos")!.Value));
        var again = new Document(new MemoryStream(saved)).FirstSection!.Body!.FirstParagraph!.ParagraphFormat.TabStops;
        Assert.Equal(2, again.Count);
        again.Clear();
        Assert.Equal(0, again.Count);
        Assert.Throws<ArgumentOutOfRangeException>(() => again.Add(10, (TabAlignment)9, TabLeader.None));
        Assert.Throws<ArgumentOutOfRangeException>(() => again[0]);
    }
}
