using System.Text.RegularExpressions;

namespace Quorix.Folio.Tests;

/// <summary>Files written by another tool, then given the constructs real-world files carry (content
/// controls, smart tags, direction overrides around references): after a load, a first use and a
/// save, pandoc reads the same document, notes and comments keep their text, and grids stay.</summary>
public class CorpusTests
{
    private const string Pandoc = "/usr/bin/pandoc";

    private const string Source = @"# Report

Plain text with a note[^1] and [inserted words]{.insertion author=""Ann"" date=""2024-01-01T00:00:00Z""} and [deleted words]{.deletion author=""Bob"" date=""2024-01-02T00:00:00Z""}.

[Commented text]{.comment-start id=""0"" author=""Cid""}Commented span[]{.comment-end id=""0""} ends here.

[Inside [a comment]{.comment-start id=""1"" author=""Dee""}insert[]{.comment-end id=""1""} ok]{.insertion author=""Ann""} and a second note[^2].

שלום עולם, right to left, with a third note[^3].

| A | B | C |
|---|---|---|
| 1 | 2 | 3 |
| 4 | 5 | 6 |

[^1]: First note text.
[^2]: Second note text.
[^3]: Third note text.
";

    // Each variant rewrites the main part the way files from other producers differ.
    private static readonly (string Name, Func<string, string> Edit)[] Variants =
    {
        ("as written", x => x),
        ("block content control", x => WrapParagraph(x, "Plain text with a note",
            "<w:sdt><w:sdtPr><w:alias w:val=\"Intro\"/><w:id w:val=\"11\"/></w:sdtPr><w:sdtContent>", "</w:sdtContent></w:sdt>")),
        ("inline control and smart tag", x => Regex.Replace(x, "(<w:r><w:t xml:space=\"preserve\">Commented span</w:t></w:r>)",
            "<w:sdt><w:sdtPr><w:id w:val=\"12\"/></w:sdtPr><w:sdtContent><w:smartTag w:uri=\"urn:x\" w:element=\"place\">$1</w:smartTag></w:sdtContent></w:sdt>")),
        ("reference in a direction override", x => WrapReference(x, 2, "<w:dir w:val=\"rtl\">", "</w:dir>")),
        ("reference in a content control", x => WrapReference(x, 0, "<w:sdt><w:sdtContent>", "</w:sdtContent></w:sdt>")),
        ("body ends in a content control", x => x.Replace("<w:sectPr", "<w:sdt><w:sdtContent><w:p><w:r><w:t>closing control</w:t></w:r></w:p></w:sdtContent></w:sdt><w:sectPr")),
    };

    private static string WrapParagraph(string xml, string text, string before, string after)
    {
        int at = xml.IndexOf(text, StringComparison.Ordinal);
        int start = xml.LastIndexOf("<w:p>", at, StringComparison.Ordinal);
        int end = xml.IndexOf("</w:p>", at, StringComparison.Ordinal) + 6;
        return xml[..start] + before + xml[start..end] + after + xml[end..];
    }

    private static string WrapReference(string xml, int which, string before, string after)
    {
        var m = Regex.Matches(xml, "<w:r><w:rPr><w:rStyle w:val=\"FootnoteReference\" ?/></w:rPr><w:footnoteReference w:id=\"\\d+\" ?/></w:r>")[which];
        return xml[..m.Index] + before + m.Value + after + xml[(m.Index + m.Length)..];
    }

    private static string PandocView(string path)
    {
        var (code, output, err) = TestSupport.Run(Pandoc, $"-f docx -t markdown --track-changes=all --wrap=none \"{path}\"");
        Assert.True(code == 0, "pandoc failed: " + err);
        return output;
    }

    // The text of each note or comment in the order the main part references them.
    private static string[] Referenced(byte[] docx, string kind, string part)
    {
        var main = TestSupport.Part(docx, "word/document.xml");
        var notes = TestSupport.Part(docx, part);
        return Regex.Matches(main, $"<w:{kind}Reference w:id=\"(\\d+)\"").Select(m =>
        {
            var body = Regex.Match(notes, $"<w:({kind.Replace("Reference", "")}|comment) [^>]*?w:id=\"{m.Groups[1].Value}\"[^>]*>(.*?)</w:\\1>", RegexOptions.Singleline).Groups[2].Value;
            return string.Concat(Regex.Matches(body, "<w:t(?: [^>]*)?>([^<]*)</w:t>").Select(t => t.Groups[1].Value)).Trim();
        }).ToArray();
    }

    private static string Grids(byte[] docx) => string.Join(";", Regex.Matches(TestSupport.Part(docx, "word/document.xml"), "<w:tblGrid>.*?</w:tblGrid>").Select(m => m.Value));

    [Fact]
    public void EveryVariantReadsTheSameInPandocAfterALoadUseAndSave()
    {
        if (!TestSupport.HasTool(Pandoc)) return;
        var dir = TestSupport.TempDir();
        try
        {
            var (code, _, err) = TestSupport.Run(Pandoc, $"-f markdown -t docx -o \"{Path.Combine(dir, "src.docx")}\"", Source);
            Assert.True(code == 0, err);
            var written = File.ReadAllBytes(Path.Combine(dir, "src.docx"));
            foreach (var (name, edit) in Variants)
            {
                var original = TestSupport.WithPart(written, "word/document.xml", x => edit(x!));
                var doc = new Document(new MemoryStream(original));
                Assert.Contains("Commented span", doc.GetText());
                Assert.Contains("inserted words", doc.GetText());
                var saved = TestSupport.ToBytes(doc);

                File.WriteAllBytes(Path.Combine(dir, "a.docx"), original);
                File.WriteAllBytes(Path.Combine(dir, "b.docx"), saved);
                var view = PandocView(Path.Combine(dir, "b.docx"));
                // The view carries the changes and comments, so comparing it compares them too.
                Assert.Contains(".insertion", view);
                Assert.Contains(".deletion", view);
                Assert.Contains(".comment-start", view);
                Assert.True(PandocView(Path.Combine(dir, "a.docx")) == view, name);
                Assert.Equal(new[] { "First note text.", "Second note text.", "Third note text." }, Referenced(saved, "footnote", "word/footnotes.xml"));
                Assert.Equal(Referenced(original, "comment", "word/comments.xml"), Referenced(saved, "comment", "word/comments.xml"));
                Assert.Equal(Grids(original), Grids(saved));
            }
        }
        finally
        {
            Directory.Delete(dir, true);
        }
    }
}
