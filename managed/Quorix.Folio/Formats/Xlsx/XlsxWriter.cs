using System.Globalization;
using System.Text;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Package;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Formats.Xlsx;

/// <summary>A spreadsheet of the document: each paragraph a row with its text in the first column,
/// each table its rows and cells (merged where cells span), numbers as numbers; one worksheet, or one
/// per section.</summary>
internal sealed class XlsxWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Xlsx;

    private const string Main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
    private const string Rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as XlsxSaveOptions ?? throw new ArgumentException("XLSX is saved with XlsxSaveOptions.", nameof(options));
        var sheets = new List<(string Name, string Xml)>();
        var sections = document.Sections.ToArray();
        if (o.SectionMode == XlsxSectionMode.SingleWorksheet)
            sheets.Add(("Sheet1", Sheet(sections.Select(s => s.Body).OfType<Body>())));
        else
            for (int i = 0; i < sections.Length; i++)
                sheets.Add(($"Section {i + 1}", Sheet(sections[i].Body is { } b ? new[] { b } : Array.Empty<Body>())));
        var zip = new ZipWriter(output, o.CompressionLevel == CompressionLevel.Maximum ? 9 : o.CompressionLevel is CompressionLevel.Fast or CompressionLevel.SuperFast ? 1 : 6);
        var types = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">")
            .Append("<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/><Default Extension=\"xml\" ContentType=\"application/xml\"/>")
            .Append("<Override PartName=\"/xl/workbook.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>");
        var workbook = new StringBuilder($"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><workbook xmlns=\"{Main}\" xmlns:r=\"{Rel}\"><sheets>");
        var rels = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">");
        for (int i = 0; i < sheets.Count; i++)
        {
            types.Append("<Override PartName=\"/xl/worksheets/sheet").Append(i + 1).Append(".xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>");
            workbook.Append("<sheet name=\"").Append(Esc(sheets[i].Name)).Append("\" sheetId=\"").Append(i + 1).Append("\" r:id=\"rId").Append(i + 1).Append("\"/>");
            rels.Append("<Relationship Id=\"rId").Append(i + 1).Append("\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" Target=\"worksheets/sheet").Append(i + 1).Append(".xml\"/>");
            zip.Add($"xl/worksheets/sheet{i + 1}.xml", Encoding.UTF8.GetBytes(sheets[i].Xml));
        }
        zip.Add("xl/workbook.xml", Encoding.UTF8.GetBytes(workbook.Append("</sheets></workbook>").ToString()));
        zip.Add("xl/_rels/workbook.xml.rels", Encoding.UTF8.GetBytes(rels.Append("</Relationships>").ToString()));
        zip.Add("_rels/.rels", Encoding.UTF8.GetBytes("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" +
            "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>"));
        zip.Add("[Content_Types].xml", Encoding.UTF8.GetBytes(types.Append("</Types>").ToString()));
        zip.Finish();
        return new SaveOutputParameters("application/vnd.openxmlformats-officedocument.spreadsheetml.sheet");
    }

    private static string Esc(string s) => System.Security.SecurityElement.Escape(s) ?? "";

    private static string Sheet(IEnumerable<Body> bodies)
    {
        var rows = new StringBuilder();
        var merges = new List<string>();
        int r = 0;
        foreach (var body in bodies)
        {
            for (var n = body.FirstChild; n != null; n = n.NextSibling)
            {
                if (n is Paragraph p)
                {
                    if (ModelFacts.IsClosingEmpty(p)) continue;
                    r++;
                    var text = Clean(ModelFacts.VisibleText(p));
                    rows.Append("<row r=\"").Append(r).Append("\">");
                    if (text.Length > 0) Cell(rows, 0, r, text);
                    rows.Append("</row>");
                }
                else if (n is Table t)
                {
                    foreach (var row in t.Rows)
                    {
                        r++;
                        rows.Append("<row r=\"").Append(r).Append("\">");
                        int col = 0;
                        foreach (var cell in row.Cells)
                        {
                            if (cell.CellFormat.VerticalMerge != CellMerge.Previous && cell.CellFormat.HorizontalMerge != CellMerge.Previous)
                            {
                                var text = Clean(string.Join("\n", cell.Paragraphs.ToArray().Select(ModelFacts.VisibleText)));
                                if (text.Length > 0) Cell(rows, col, r, text);
                                if (cell.Span > 1) merges.Add($"{Ref(col, r)}:{Ref(col + cell.Span - 1, r)}");
                            }
                            col += cell.Span;
                        }
                        rows.Append("</row>");
                    }
                }
            }
        }
        var sb = new StringBuilder($"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><worksheet xmlns=\"{Main}\"><sheetData>");
        sb.Append(rows).Append("</sheetData>");
        if (merges.Count > 0)
        {
            sb.Append("<mergeCells count=\"").Append(merges.Count).Append("\">");
            foreach (var m in merges) sb.Append("<mergeCell ref=\"").Append(m).Append("\"/>");
            sb.Append("</mergeCells>");
        }
        return sb.Append("</worksheet>").ToString();
    }

    // Field and break characters are not cell text; line breaks are.
    private static string Clean(string s)
    {
        var sb = new StringBuilder(s.Length);
        foreach (var c in s)
        {
            if (c == '\v' || c == '\n') sb.Append('\n');
            else if (c == '\t' || c >= ' ') sb.Append(c);
        }
        return sb.ToString().Trim();
    }

    private static string Ref(int col, int row)
    {
        var letters = "";
        for (int c = col + 1; c > 0; c = (c - 1) / 26) letters = (char)('A' + (c - 1) % 26) + letters;
        return letters + row.ToString(CultureInfo.InvariantCulture);
    }

    private static void Cell(StringBuilder sb, int col, int row, string text)
    {
        // Text that reads as a number is a number to the spreadsheet.
        bool numeric = text[0] is (>= '0' and <= '9') or '-' or '.' && !(text.Length > 1 && text[0] == '0' && text[1] != '.') &&
                       double.TryParse(text, NumberStyles.Float, CultureInfo.InvariantCulture, out var v) && double.IsFinite(v);
        if (numeric)
        {
            sb.Append("<c r=\"").Append(Ref(col, row)).Append("\"><v>").Append(double.Parse(text, NumberStyles.Float, CultureInfo.InvariantCulture).ToString("R", CultureInfo.InvariantCulture)).Append("</v></c>");
            return;
        }
        sb.Append("<c r=\"").Append(Ref(col, row)).Append("\" t=\"inlineStr\"><is><t xml:space=\"preserve\">").Append(Esc(text)).Append("</t></is></c>");
    }
}
