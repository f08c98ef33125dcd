using System.Text;
using System.Text.RegularExpressions;
using Quorix.Folio.Loading;
using Xunit.Abstractions;

namespace Quorix.Folio.Tests;

/// <summary>The CommonMark standard's examples: each Markdown input is loaded by our Markdown reader
/// and the spec's expected HTML by our HTML reader, and the two documents must have the same outline.</summary>
public class CommonMarkConformanceTests
{
    private readonly ITestOutputHelper output;

    public CommonMarkConformanceTests(ITestOutputHelper output) { this.output = output; }

    private static string SpecPath()
    {
        for (var dir = new DirectoryInfo(AppContext.BaseDirectory); dir != null; dir = dir.Parent)
        {
            var p = Path.Combine(dir.FullName, "build", "deps", "commonmark-spec", "spec.txt");
            if (File.Exists(p)) return p;
        }
        throw new FileNotFoundException("The CommonMark spec examples are missing: run tools/ensure-deps.sh (make does).");
    }

    private static List<(int Number, string Section, string Markdown, string Html)> Examples()
    {
        var text = File.ReadAllText(SpecPath()).Replace("\r\n", "\n");
        var end = text.IndexOf("<!-- END TESTS -->", StringComparison.Ordinal);
        if (end > 0) text = text[..end];
        var list = new List<(int, string, string, string)>();
        string section = "";
        var fence = new string('`', 32);
        var lines = text.Split('\n');
        for (int i = 0; i < lines.Length; i++)
        {
            if (lines[i].StartsWith('#') && Regex.Match(lines[i], "^#{1,6} +(.*)$") is { Success: true } h) section = h.Groups[1].Value;
            if (lines[i] != fence + " example") continue;
            var md = new StringBuilder();
            var html = new StringBuilder();
            int k = i + 1;
            for (; lines[k] != "."; k++) md.Append(lines[k]).Append('\n');
            for (k++; lines[k] != fence; k++) html.Append(lines[k]).Append('\n');
            list.Add((list.Count + 1, section, md.ToString().Replace('\u2192', '\t'), html.ToString().Replace('\u2192', '\t')));
            i = k;
        }
        return list;
    }

    // Block kinds, list levels and visible text with white space collapsed.
    private static string Outline(Document d)
    {
        var sb = new StringBuilder();
        foreach (var p in d.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>())
        {
            if (p.ParentNode is Notes.Footnote) continue;
            var text = Regex.Replace(Formats.Flow.ModelFacts.VisibleText(p).Replace('\v', ' ').Replace('\u00a0', ' '), @"\s+", " ").Trim();
            var kind = p.ParagraphFormat.StyleIdentifier.ToString();
            if (text.Length == 0 && !p.ParagraphFormat.StyleName.Contains("Preformatted")) continue;
            sb.Append(kind).Append(p.IsListItem ? ":L" + p.ListFormat.ListLevelNumber : "").Append(p.IsInCell ? ":C" : "").Append(':').Append(text).Append('\n');
        }
        return sb.ToString();
    }

    [Fact]
    public void SpecExamplesLoadAsTheirHtmlDoes()
    {
        var examples = Examples();
        Assert.True(examples.Count > 600, $"only {examples.Count} examples found");
        int pass = 0;
        var bySection = new SortedDictionary<string, (int Pass, int All)>();
        foreach (var (number, section, md, html) in examples)
        {
            bool ok;
            try
            {
                var ours = new Document(new MemoryStream(Encoding.UTF8.GetBytes(md)), new MarkdownLoadOptions());
                var theirs = new Document(new MemoryStream(Encoding.UTF8.GetBytes("<html><body>" + html + "</body></html>")), new HtmlLoadOptions());
                ok = Outline(ours) == Outline(theirs);
            }
            catch (Exception e)
            {
                output.WriteLine($"example {number}: {e.GetType().Name}: {e.Message}");
                ok = false;
            }
            if (ok) pass++;
            var s = bySection.GetValueOrDefault(section);
            bySection[section] = (s.Pass + (ok ? 1 : 0), s.All + 1);
        }
        output.WriteLine($"CommonMark conformance: {pass} of {examples.Count} examples");
        Console.WriteLine($"CommonMark conformance: {pass} of {examples.Count} examples");
        foreach (var (section, (p, all)) in bySection) output.WriteLine($"  {section}: {p}/{all}");
        // A floor that catches regressions of either reader; the table above says where the rest differ.
        Assert.True(pass >= examples.Count * 90 / 100, $"{pass} of {examples.Count} examples");
    }
}
