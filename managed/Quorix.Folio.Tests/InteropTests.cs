using System.Text.Json;
using Quorix.Folio.Fields;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

/// <summary>Files we write must read the same in tools nobody here wrote, and theirs in ours.</summary>
public class InteropTests
{
    private const string Python = "/usr/bin/python3";
    private const string Pandoc = "/usr/bin/pandoc";

    // Paragraphs (style, text) and tables (rows of cell texts) as python-docx sees them.
    private const string DumpScript = @"
import sys, json, docx
d = docx.Document(sys.argv[1])
paras = [[p.style.name, p.text] for p in d.paragraphs]
tables = [[[c.text for c in r.cells] for r in t.rows] for t in d.tables]
print(json.dumps({'paras': paras, 'tables': tables}))
";

    private static JsonElement PythonDocxDump(string path)
    {
        var (code, output, err) = TestSupport.Run(Python, $"-c \"{DumpScript.Replace("\"", "\\\"")}\" \"{path}\"");
        Assert.True(code == 0, "python-docx failed: " + err);
        return JsonDocument.Parse(output).RootElement;
    }

    private static string Visible(Paragraph p)
    {
        // What a reader sees: field results without their codes.
        var sb = new System.Text.StringBuilder();
        int depth = 0;
        bool code = false;
        foreach (var n in p.ChildNodes)
        {
            switch (n)
            {
                case FieldStart: depth++; code = true; break;
                case FieldSeparator: code = false; break;
                case FieldEnd: depth--; code = false; break;
                case Run r when !code: sb.Append(r.Text.Replace('\v', '\n')); break;
            }
        }
        return sb.ToString();
    }

    private static Document Sample()
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
        b.Write(" with a ");
        b.InsertHyperlink("link", "https://example.com/", false);
        b.Writeln(".");
        b.Writeln("Tab\tseparated and line\vbroken");
        b.StartTable();
        foreach (var row in new[] { new[] { "Name", "Value" }, new[] { "alpha", "1" }, new[] { "beta", "2" } })
        {
            foreach (var cell in row) { b.InsertCell(); b.Write(cell); }
            b.EndRow();
        }
        b.EndTable();
        b.Writeln("Closing paragraph, with ünïcödé & <markup>.");
        return doc;
    }

    [Fact]
    public void PythonDocxReadsWhatWeWrite()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = Sample();
            var path = Path.Combine(dir, "ours.docx");
            doc.Save(path);
            var dump = PythonDocxDump(path);
            var ours = doc.FirstSection!.Body!.Paragraphs.ToArray();
            var theirs = dump.GetProperty("paras").EnumerateArray().ToArray();
            Assert.Equal(ours.Length, theirs.Length);
            for (int i = 0; i < ours.Length; i++)
                Assert.Equal(Visible(ours[i]), theirs[i][1].GetString());
            Assert.Equal("Heading 1", theirs[0][0].GetString());
            Assert.Equal("Heading 2", theirs[1][0].GetString());
            var table = dump.GetProperty("tables")[0];
            Assert.Equal(3, table.GetArrayLength());
            Assert.Equal("beta", table[2][0].GetString());
            Assert.Equal("2", table[2][1].GetString());
        }
        finally { Directory.Delete(dir, true); }
    }

    private static JsonElement PandocJson(string path)
    {
        var (code, output, err) = TestSupport.Run(Pandoc, $"-f docx -t json \"{path}\"");
        Assert.True(code == 0, "pandoc failed: " + err);
        return JsonDocument.Parse(output).RootElement;
    }

    private static string Inlines(JsonElement inlines)
    {
        var sb = new System.Text.StringBuilder();
        foreach (var i in inlines.EnumerateArray())
        {
            var t = i.GetProperty("t").GetString();
            switch (t)
            {
                case "Str": sb.Append(i.GetProperty("c").GetString()); break;
                case "Space" or "SoftBreak": sb.Append(' '); break;
                case "LineBreak": sb.Append('\n'); break;
                case "Emph" or "Strong" or "Underline" or "Strikeout": sb.Append(Inlines(i.GetProperty("c"))); break;
                case "Link" or "Span": sb.Append(Inlines(i.GetProperty("c")[1])); break;
            }
        }
        return sb.ToString();
    }

    private static IEnumerable<string> LinkTargets(JsonElement node)
    {
        if (node.ValueKind == JsonValueKind.Object)
        {
            if (node.TryGetProperty("t", out var t) && t.GetString() == "Link")
                yield return node.GetProperty("c")[2][0].GetString()!;
            foreach (var p in node.EnumerateObject())
                foreach (var x in LinkTargets(p.Value)) yield return x;
        }
        else if (node.ValueKind == JsonValueKind.Array)
            foreach (var e in node.EnumerateArray())
                foreach (var x in LinkTargets(e)) yield return x;
    }

    [Fact]
    public void PandocReadsWhatWeWrite()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var doc = Sample();
            var path = Path.Combine(dir, "ours.docx");
            doc.Save(path);
            var blocks = PandocJson(path).GetProperty("blocks").EnumerateArray().ToArray();
            var headers = blocks.Where(b => b.GetProperty("t").GetString() == "Header")
                .Select(b => (b.GetProperty("c")[0].GetInt32(), Inlines(b.GetProperty("c")[2]))).ToArray();
            Assert.Equal(new[] { (1, "Quarterly report"), (2, "Figures") }, headers);
            var paras = blocks.Where(b => b.GetProperty("t").GetString() == "Para").Select(b => Inlines(b.GetProperty("c"))).ToArray();
            Assert.Contains("Plain and bold with a link.", paras);
            Assert.Contains("Closing paragraph, with ünïcödé & <markup>.", paras);
            Assert.Single(blocks, b => b.GetProperty("t").GetString() == "Table");
            Assert.Contains("https://example.com/", LinkTargets(PandocJson(path)));
        }
        finally { Directory.Delete(dir, true); }
    }

    private const string MakeWithPythonDocx = @"
import sys, docx
d = docx.Document()
d.add_heading('Made elsewhere', 1)
p = d.add_paragraph('Some ')
r = p.add_run('strong'); r.bold = True
p.add_run(' words.')
d.add_paragraph('first point', style='List Bullet')
d.add_paragraph('second point', style='List Bullet')
t = d.add_table(rows=3, cols=3)
for i, row in enumerate(t.rows):
    for j, c in enumerate(row.cells):
        c.text = f'r{i}c{j}'
a = t.cell(0, 0).merge(t.cell(0, 1))
d.add_page_break()
d.add_paragraph('After the break.')
d.sections[0].header.paragraphs[0].text = 'Running head'
d.save(sys.argv[1])
";

    [Fact]
    public void PythonDocxFilesLoadAndSurviveOurSave()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var src = Path.Combine(dir, "theirs.docx");
            var (code, _, err) = TestSupport.Run(Python, $"-c \"{MakeWithPythonDocx.Replace("\"", "\\\"")}\" \"{src}\"");
            Assert.True(code == 0, err);
            var doc = new Document(src);
            var body = doc.FirstSection!.Body!;
            var first = body.FirstParagraph!;
            Assert.Equal("Made elsewhere", first.GetText().TrimEnd('\r'));
            Assert.Equal(StyleIdentifier.Heading1, first.ParagraphFormat.StyleIdentifier);
            var strong = doc.GetChildNodes(NodeType.Run, true).Cast<Run>().Single(r => r.Text == "strong");
            Assert.True(strong.Font.Bold);
            var bullets = body.Paragraphs.ToArray().Where(p => p.IsListItem).Select(p => p.GetText().TrimEnd('\r')).ToArray();
            Assert.Equal(new[] { "first point", "second point" }, bullets);
            var table = body.Tables[0];
            Assert.Equal(3, table.Rows.Count);
            Assert.Equal(CellMerge.First, table.Rows[0].Cells[0].CellFormat.HorizontalMerge);
            Assert.Equal("r2c2\u0007", table.Rows[2].Cells[2].GetText());
            Assert.Equal("Running head\r", doc.FirstSection.HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetText());

            var before = PythonDocxDump(src);
            var ours = Path.Combine(dir, "resaved.docx");
            doc.Save(ours);
            var after = PythonDocxDump(ours);
            Assert.Equal(before.GetProperty("paras").ToString(), after.GetProperty("paras").ToString());
            Assert.Equal(before.GetProperty("tables").ToString(), after.GetProperty("tables").ToString());
        }
        finally { Directory.Delete(dir, true); }
    }

    private const string Markdown = @"# Top heading

Intro with *emphasis*, **strong** and a [link](https://example.net/page).

## Second level

- apple
- banana

1. one
2. two

| Col A | Col B |
|-------|-------|
| a1    | b1    |
| a2    | b2    |

Text with a note.[^1]

Call `run(x)` now.

```
def f():
    return 1
```

[^1]: The note text.
";

    [Fact]
    public void PandocFilesLoadWithTheirStructure()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var src = Path.Combine(dir, "pandoc.docx");
            var (code, _, err) = TestSupport.Run(Pandoc, $"-f markdown -t docx -o \"{src}\"", Markdown);
            Assert.True(code == 0, err);
            var doc = new Document(src);
            var paras = doc.FirstSection!.Body!.Paragraphs.ToArray();
            var top = paras.Single(p => p.GetText().StartsWith("Top heading"));
            Assert.Equal(OutlineLevel.Level1, top.ParagraphFormat.OutlineLevel is OutlineLevel.BodyText
                ? (OutlineLevel)(top.ParagraphFormat.StyleIdentifier - StyleIdentifier.Heading1) : top.ParagraphFormat.OutlineLevel);
            Assert.True(top.ParagraphFormat.IsHeading);
            Assert.True(paras.Single(p => p.GetText().StartsWith("Second level")).ParagraphFormat.StyleIdentifier == StyleIdentifier.Heading2);
            var link = doc.Range.Fields.Single(f => f.Type == FieldType.FieldHyperlink);
            Assert.Equal("link", link.Result);
            Assert.Contains("https://example.net/page", link.GetFieldCode());
            var items = paras.Where(p => p.IsListItem).Select(p => Visible(p)).ToArray();
            Assert.Equal(new[] { "apple", "banana", "one", "two" }, items);
            var table = doc.FirstSection.Body.Tables[0];
            Assert.Equal(3, table.Rows.Count);
            Assert.Equal("b2\u0007", table.Rows[2].Cells[1].GetText());
            var note = (Footnote)doc.GetChild(NodeType.Footnote, 0, true)!;
            Assert.Equal("The note text.", note.GetText().Trim());

            // Our Markdown of their file carries the same structure back.
            var md = TestSupport.ToText(doc, SaveFormat.Markdown);
            Assert.Contains("# Top heading", md);
            Assert.Contains("## Second level", md);
            Assert.Contains("[link](https://example.net/page)", md);
            Assert.Contains("*emphasis*", md);
            Assert.Contains("**strong**", md);
            Assert.Contains("- apple\n- banana", md);
            Assert.Contains("1. one\n2. two", md);
            Assert.Contains("| a2 | b2 |", md);
            Assert.Contains("[^1]: The note text.", md);
            Assert.Contains("Call `run(x)` now.", md);
            Assert.Contains("```\ndef f():\n    return 1\n```", md);
        }
        finally { Directory.Delete(dir, true); }
    }

    private const string SectionScript = @"
import sys, json, docx
d = docx.Document(sys.argv[1])
out = {'sections': [[str(s.orientation), s.page_width, s.header.is_linked_to_previous, [p.text for p in s.header.paragraphs]] for s in d.sections],
       'shapes': [[s.width, s.height] for s in d.inline_shapes]}
print(json.dumps(out))
";

    private static Document RichSample()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("A claim");
        b.InsertFootnote(Notes.FootnoteType.Footnote, "Its source.");
        b.Writeln(".");
        b.ListFormat.ApplyBulletDefault();
        b.Writeln("bullet a");
        b.Writeln("bullet b");
        b.ListFormat.ApplyNumberDefault();
        b.Writeln("step 1");
        b.Writeln("step 2");
        b.ListFormat.RemoveNumbers();
        b.InsertImage(TestSupport.Png(40, 20));
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.PageSetup.Orientation = Orientation.Landscape;
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("Landscape header");
        return doc;
    }

    [Fact]
    public void NotesListsPicturesAndSectionsReadElsewhere()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var path = Path.Combine(dir, "rich.docx");
            RichSample().Save(path);

            var (code, output, err) = TestSupport.Run(Python, $"-c \"{SectionScript.Replace("\"", "\\\"")}\" \"{path}\"");
            Assert.True(code == 0, err);
            var info = JsonDocument.Parse(output).RootElement;
            var sections = info.GetProperty("sections");
            Assert.Equal(2, sections.GetArrayLength());
            Assert.StartsWith("PORTRAIT", sections[0][0].GetString());
            Assert.StartsWith("LANDSCAPE", sections[1][0].GetString());
            Assert.Equal(15840 * 635, sections[1][1].GetInt64());
            Assert.False(sections[1][2].GetBoolean());
            Assert.Equal("Landscape header", sections[1][3][0].GetString());
            var shape = info.GetProperty("shapes")[0];
            // 40 x 20 pixels at 96 dpi: 30 x 15 points.
            Assert.Equal(30 * 12700, shape[0].GetInt64());
            Assert.Equal(15 * 12700, shape[1].GetInt64());

            var json = PandocJson(path).GetProperty("blocks").ToString();
            Assert.Contains("\"t\":\"Note\"", json.Replace(" ", ""));
            Assert.Contains("source.", json);
            Assert.Contains("\"t\":\"BulletList\"", json.Replace(" ", ""));
            Assert.Contains("\"t\":\"OrderedList\"", json.Replace(" ", ""));
            Assert.Contains("\"t\":\"Image\"", json.Replace(" ", ""));
        }
        finally { Directory.Delete(dir, true); }
    }
}
