using System.IO.Compression;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class XlsxTests
{
    private static Document Sample()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("Title line");
        b.StartTable();
        b.InsertCell(); b.Write("name");
        b.InsertCell(); b.Write("qty");
        b.InsertCell(); b.Write("code");
        b.EndRow();
        b.InsertCell(); b.Write("apples");
        b.InsertCell(); b.Write("12.5");
        b.InsertCell(); b.Write("007");
        b.EndRow();
        b.InsertCell(); b.Write("wide");
        b.InsertCell();
        b.EndRow();
        b.EndTable();
        var wide = doc.FirstSection!.Body!.Tables[0].Rows[2].Cells[0];
        wide.Span = 2;
        b.MoveToDocumentEnd();
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.Write("second section");
        return doc;
    }

    private static string Sheet(byte[] xlsx, int n)
    {
        using var zip = new ZipArchive(new MemoryStream(xlsx));
        return new StreamReader(zip.GetEntry($"xl/worksheets/sheet{n}.xml")!.Open()).ReadToEnd();
    }

    [Fact]
    public void TablesBecomeCellsAndNumbersStayNumbers()
    {
        var bytes = TestSupport.ToBytes(Sample(), SaveFormat.Xlsx);
        var sheet = Sheet(bytes, 1);
        Assert.Contains("<c r=\"B3\"><v>12.5</v></c>", sheet);
        Assert.Contains("<c r=\"C3\" t=\"inlineStr\"><is><t xml:space=\"preserve\">007</t>", sheet);
        Assert.Contains("<mergeCell ref=\"A4:B4\"/>", sheet);
        Assert.Contains("second section", sheet);
        var split = TestSupport.ToBytes(Sample(), new XlsxSaveOptions { SectionMode = XlsxSectionMode.MultipleWorksheets });
        Assert.DoesNotContain("second section", Sheet(split, 1));
        Assert.Contains("second section", Sheet(split, 2));
    }

    [Fact]
    public void OpenpyxlReadsTheSheet()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var path = Path.Combine(dir, "t.xlsx");
            Sample().Save(path);
            const string script = "import sys, openpyxl\n" +
                                  "ws = openpyxl.load_workbook(sys.argv[1]).active\n" +
                                  "for row in ws.iter_rows(values_only=True): print('|'.join('' if v is None else repr(v) for v in row))\n" +
                                  "print(sorted(str(r) for r in ws.merged_cells.ranges))";
            var (code, output, err) = TestSupport.Run("/usr/bin/python3", $"-c \"{script.Replace("\"", "\\\"")}\" \"{path}\"");
            Assert.True(code == 0, err);
            var lines = output.TrimEnd().Split('\n');
            Assert.Equal(new[] { "'Title line'||", "'name'|'qty'|'code'", "'apples'|12.5|'007'", "'wide'||", "'second section'||", "['A4:B4']" }, lines);
        }
        finally { Directory.Delete(dir, true); }
    }
}
