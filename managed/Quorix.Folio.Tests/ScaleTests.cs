using System.Diagnostics;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

/// <summary>Work that grows with the document must grow linearly: thousands of rows, lists and links.</summary>
public class ScaleTests
{
    [Fact]
    public void LargeTablesAndManyListsStayFast()
    {
        var sw = Stopwatch.StartNew();
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        for (int i = 0; i < 2000; i++)
        {
            // A new list per item is the worst case for list lookups.
            b.ListFormat.ApplyNumberDefault();
            b.Writeln("item " + i);
        }
        b.ListFormat.RemoveNumbers();
        b.StartTable();
        for (int r = 0; r < 3000; r++)
        {
            b.CellFormat.HorizontalMerge = r % 10 == 0 ? CellMerge.First : CellMerge.None;
            b.InsertCell(); b.Write("r" + r);
            b.CellFormat.HorizontalMerge = r % 10 == 0 ? CellMerge.Previous : CellMerge.None;
            b.InsertCell(); b.Write(r % 10 == 0 ? "" : "x");
            b.CellFormat.HorizontalMerge = CellMerge.None;
            b.InsertCell(); b.InsertHyperlink("l" + r, "https://example.org/" + r, false);
            b.EndRow();
        }
        b.EndTable();
        var back = TestSupport.RoundTrip(doc);
        var rows = back.FirstSection!.Body!.Tables[0].Rows;
        Assert.Equal(3000, rows.Count);
        int merged = 0;
        for (int i = 0; i < rows.Count; i++)
            if (rows[i].Cells[0].CellFormat.HorizontalMerge == CellMerge.First) merged++;
        Assert.Equal(300, merged);
        var md = TestSupport.ToText(back, SaveFormat.Markdown);
        Assert.Contains("| r2999 | x | [l2999](https://example.org/2999) |", md);
        Assert.Equal("1.", back.FirstSection.Body.Paragraphs[1999].ListLabel.LabelString);
        Assert.True(sw.Elapsed < TimeSpan.FromSeconds(20), $"took {sw.Elapsed}");
    }
}
