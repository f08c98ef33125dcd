using System.Text;
using System.Text.Json;

namespace Quorix.Folio.Tests;

/// <summary>Our flow formats read by pandoc, and pandoc's read by us: the same headings, paragraphs,
/// emphasis, lists, tables and links as the document we started from.</summary>
public class FlowInteropTests
{
    private const string Pandoc = "/usr/bin/pandoc";

    internal static Document Sample(bool asciiOnly = false)
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Quarterly report");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading2;
        b.Writeln("Figures");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.Write("Plain and ");
        b.Font.Bold = true;
        b.Write("bold");
        b.Font.Bold = false;
        b.Write(", ");
        b.Font.Italic = true;
        b.Write("italic");
        b.Font.Italic = false;
        b.Write(" with a ");
        b.InsertHyperlink("link", "https://example.com/", false);
        b.Writeln(".");
        b.ListFormat.ApplyBulletDefault();
        b.Writeln("apples");
        b.Writeln("pears");
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("first");
        b.Writeln("second");
        b.ListFormat.RemoveNumbers();
        // Pandoc's RTF reader pulls a list item straight before a table into the table's first cell.
        b.Writeln("The figures:");
        b.StartTable();
        foreach (var row in new[] { new[] { "Name", "Value" }, new[] { "alpha", "1" }, new[] { "beta", "2" } })
        {
            foreach (var cell in row) { b.InsertCell(); b.Write(cell); }
            b.EndRow();
        }
        b.EndTable();
        // Pandoc's RTF reader drops the character after each Unicode escape, its own included.
        b.Writeln(asciiOnly ? "Closing paragraph, with unicode & <markup>." : "Closing paragraph, with \u00fcn\u00efc\u00f6d\u00e9 & <markup>.");
        return doc;
    }

    private static List<string> PandocOutline(string path, string from)
    {
        var (code, output, err) = TestSupport.Run(Pandoc, $"-f {from} -t json \"{path}\"");
        Assert.True(code == 0, "pandoc failed: " + err);
        var lines = new List<string>();
        Blocks(JsonDocument.Parse(output).RootElement.GetProperty("blocks"), "", lines);
        return lines;
    }

    // One line per block: kind, nesting and text with emphasis and links marked; list looseness,
    // attributes and table widths, which differ between readers of the same content, are left out.
    private static void Blocks(JsonElement blocks, string prefix, List<string> lines)
    {
        foreach (var b in blocks.EnumerateArray())
        {
            var t = b.GetProperty("t").GetString();
            var c = b.TryGetProperty("c", out var cc) ? cc : default;
            switch (t)
            {
                case "Header": lines.Add($"{prefix}H{c[0].GetInt32()}:{Inlines(c[2])}"); break;
                case "Para" or "Plain": lines.Add($"{prefix}P:{Inlines(c)}"); break;
                case "BulletList":
                    foreach (var item in c.EnumerateArray()) Blocks(item, prefix + "- ", lines);
                    break;
                case "OrderedList":
                    foreach (var item in c[1].EnumerateArray()) Blocks(item, prefix + "1. ", lines);
                    break;
                case "Table": TableCells(c, prefix + "| ", lines); break;
                case "Div" or "BlockQuote": Blocks(t == "Div" ? c[1] : c, prefix, lines); break;
            }
        }
    }

    private static void TableCells(JsonElement e, string prefix, List<string> lines)
    {
        // Cells are the only block arrays inside a table; walk down to them.
        if (e.ValueKind == JsonValueKind.Object && e.TryGetProperty("t", out var t) && t.GetString() is "Plain" or "Para")
        {
            lines.Add(prefix + "P:" + Inlines(e.GetProperty("c")));
            return;
        }
        if (e.ValueKind == JsonValueKind.Array)
            foreach (var x in e.EnumerateArray()) TableCells(x, prefix, lines);
        else if (e.ValueKind == JsonValueKind.Object)
            foreach (var p in e.EnumerateObject()) TableCells(p.Value, prefix, lines);
    }

    private static string Inlines(JsonElement inlines)
    {
        var sb = new StringBuilder();
        foreach (var i in inlines.EnumerateArray())
        {
            var c = i.TryGetProperty("c", out var cc) ? cc : default;
            switch (i.GetProperty("t").GetString())
            {
                case "Str": sb.Append(c.GetString()); break;
                case "Space" or "SoftBreak": sb.Append(' '); break;
                case "LineBreak": sb.Append('\n'); break;
                case "Strong": sb.Append("**").Append(Inlines(c)).Append("**"); break;
                case "Emph": sb.Append('*').Append(Inlines(c)).Append('*'); break;
                case "Code": sb.Append('`').Append(c[1].GetString()).Append('`'); break;
                case "Link": sb.Append('[').Append(Inlines(c[1])).Append("](").Append(c[2][0].GetString()).Append(')'); break;
                case "Span" or "Underline" or "Strikeout": sb.Append(Inlines(i.GetProperty("t").GetString() == "Span" ? c[1] : c)); break;
            }
        }
        return sb.ToString();
    }

    [Theory]
    [InlineData("html", "html")]
    [InlineData("md", "gfm")]
    [InlineData("rtf", "rtf")]
    [InlineData("odt", "odt")]
    public void PandocReadsOurFlowFormatsAsItReadsOurDocx(string ext, string pandocFormat)
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = Sample();
            var docx = Path.Combine(dir, "ours.docx");
            var flow = Path.Combine(dir, "ours." + ext);
            doc.Save(docx);
            doc.Save(flow);
            var expected = PandocOutline(docx, "docx");
            Assert.Contains("H1:Quarterly report", expected);
            Assert.Equal(expected, PandocOutline(flow, pandocFormat));
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void PandocReadsOurEpubAsItReadsOurDocx()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = Sample();
            var b = new DocumentBuilder(doc);
            b.MoveToDocumentEnd();
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
            b.Writeln("Second chapter");
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
            b.Writeln("More text.");
            var docx = Path.Combine(dir, "ours.docx");
            var epub = Path.Combine(dir, "ours.epub");
            doc.Save(docx);
            doc.Save(epub);
            // Pandoc marks where each of the book's files starts with an empty paragraph.
            Assert.Equal(PandocOutline(docx, "docx"), PandocOutline(epub, "epub").Where(l => l != "P:").ToList());
        }
        finally { Directory.Delete(dir, true); }
    }

    [Theory]
    [InlineData("html", "html")]
    [InlineData("md", "gfm")]
    [InlineData("rtf", "rtf")]
    [InlineData("odt", "odt")]
    public void WeReadPandocsFlowFormatsAsPandocReadsThem(string ext, string pandocFormat)
    {
        var dir = TestSupport.TempDir();
        try
        {
            var docx = Path.Combine(dir, "source.docx");
            Sample(asciiOnly: ext == "rtf").Save(docx);
            var theirs = Path.Combine(dir, "theirs." + ext);
            var (code, _, err) = TestSupport.Run(Pandoc, $"-s --metadata title=t -f docx -t {pandocFormat} -o \"{theirs}\" \"{docx}\"");
            Assert.True(code == 0, err);
            // What we loaded, saved as DOCX, must read in pandoc as pandoc's own file does.
            var back = Path.Combine(dir, "back.docx");
            new Document(theirs).Save(back);
            Assert.Equal(PandocOutline(theirs, pandocFormat), PandocOutline(back, "docx"));
        }
        finally { Directory.Delete(dir, true); }
    }

    [Fact]
    public void LibreOfficeOpensOurOdtRtfAndWordMLWithTheSameTextAndTables()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = Sample();
            // Names differ by more than the extension: each converts to a DOCX of its own name.
            var ours = new[] { "odt.odt", "rtf.rtf", "wordml.xml" };
            doc.Save(Path.Combine(dir, ours[0]));
            doc.Save(Path.Combine(dir, ours[1]));
            doc.Save(Path.Combine(dir, ours[2]), SaveFormat.WordML);
            // One office process converts all to DOCX, which we then read back.
            var (code, _, err) = TestSupport.Run("/usr/bin/soffice",
                $"--headless --norestore -env:UserInstallation=file://{dir}/profile --convert-to docx --outdir \"{dir}/lo\" " +
                string.Join(" ", ours.Select(n => $"\"{dir}/{n}\"")),
                timeoutMs: 300000);
            Assert.True(code == 0, err);
            string Paragraphs(Document d) => string.Join("\n", d.FirstSection!.Body!.Paragraphs.ToArray()
                .Select(p => Formats.Flow.ModelFacts.VisibleText(p)).Where(t => t.Length > 0));
            string Tables(Document d) => string.Join("\n", d.FirstSection!.Body!.Tables.ToArray()
                .Select(t => string.Join("/", t.Rows.ToArray().Select(r => string.Join("|", r.Cells.ToArray().Select(c => c.GetText().Trim('\a', '\r')))))));
            foreach (var name in ours)
            {
                var theirs = new Document(Path.Combine(dir, "lo", Path.ChangeExtension(name, ".docx")));
                Assert.Equal(Paragraphs(doc), Paragraphs(theirs));
                Assert.Equal(Tables(doc), Tables(theirs));
            }
        }
        finally { Directory.Delete(dir, true); }
    }
}
