using Quorix.Folio.LowCode;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests;

public class LowCodeTests : IDisposable
{
    private readonly string dir = TestSupport.TempDir();

    public void Dispose() => Directory.Delete(dir, true);

    private string P(string name) => Path.Combine(dir, name);

    private static Document Doc(string styleLook, double pageWidth, params string[] paragraphs)
    {
        var doc = new Document();
        var s = doc.Styles.Add(StyleType.Paragraph, "Note");
        s.Font.Name = styleLook;
        doc.FirstSection!.PageSetup.PageWidth = pageWidth;
        var b = new DocumentBuilder(doc);
        foreach (var p in paragraphs)
        {
            if (p.StartsWith('#')) b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
            else b.ParagraphFormat.StyleName = "Note";
            b.Writeln(p.TrimStart('#'));
        }
        return doc;
    }

    private static string[] Texts(Document d) =>
        d.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>().Select(p => p.GetText().TrimEnd('\r', '\f')).Where(t => t.Length > 0).ToArray();

    [Fact]
    public void ConverterGoesThroughAnyPairOfFormats()
    {
        File.WriteAllText(P("in.md"), "# Title\n\nSome *text*.\n");
        Converter.Convert(P("in.md"), P("out.docx"));
        Converter.Convert(P("out.docx"), P("out.html"), new HtmlSaveOptions { ExportImagesAsBase64 = true });
        Converter.Convert(P("out.html"), P("out.rtf"));
        Converter.Convert(P("out.rtf"), P("out.odt"), SaveFormat.Odt);
        var back = new Document(P("out.odt"));
        Assert.Equal(new[] { "Title", "Some text." }, Texts(back));
        Assert.Equal(StyleIdentifier.Heading1, back.FirstSection!.Body!.FirstParagraph!.ParagraphFormat.StyleIdentifier);
        Assert.Throws<UnsupportedFileFormatException>(() => Converter.Convert(P("in.md"), P("out.xyz")));
    }

    [Fact]
    public void MergerModesDecideStylesAndPageLayout()
    {
        Doc("Arial", 600, "a1", "a2").Save(P("a.docx"));
        Doc("Courier New", 800, "b1").Save(P("b.docx"));
        var merged = Merger.Merge(new[] { P("a.docx"), P("b.docx") }, MergeFormatMode.MergeFormatting);
        Assert.Equal(new[] { "a1", "a2", "b1" }, Texts(merged));
        Assert.Equal(2, merged.Sections.Count);
        Assert.Equal(SectionStart.NewPage, merged.Sections[1].PageSetup.SectionStart);
        Assert.Equal(600, merged.Sections[1].PageSetup.PageWidth);
        Assert.Equal("Arial", merged.Sections[1].Body!.FirstParagraph!.ParagraphFormat.Style.Font.Name);

        var kept = Merger.Merge(new[] { P("a.docx"), P("b.docx") }, MergeFormatMode.KeepSourceFormatting);
        Assert.Equal("Courier New", kept.Sections[1].Body!.FirstParagraph!.ParagraphFormat.Style.Font.Name);
        Assert.Equal(600, kept.Sections[1].PageSetup.PageWidth);

        Merger.Merge(P("all.docx"), new[] { P("a.docx"), P("b.docx") }, MergeFormatMode.KeepSourceLayout);
        Assert.Equal(800, new Document(P("all.docx")).Sections[1].PageSetup.PageWidth);
        Assert.Throws<ArgumentException>(() => Merger.Merge(Array.Empty<string>(), MergeFormatMode.MergeFormatting));
    }

    [Fact]
    public void SplitterCutsBySectionStyleOrPageBreak()
    {
        var doc = Doc("Arial", 600, "#One", "x", "#Two", "y", "z");
        var b = new DocumentBuilder(doc);
        b.MoveToDocumentEnd();
        b.InsertBreak(BreakType.SectionBreakNewPage);
        b.Write("after section");
        b.InsertBreak(BreakType.PageBreak);
        b.Write("after page");
        doc.Save(P("src.docx"));

        Assert.Equal(2, Splitter.Split(P("src.docx"), P("part.docx"), new SplitOptions()));
        Assert.Equal(new[] { "One", "x", "Two", "y", "z" }, Texts(new Document(P("part_1.docx"))));
        Assert.Equal(new[] { "after section\fafter page" }, Texts(new Document(P("part_2.docx"))));

        var byHeading = Splitter.Parts(doc, new SplitOptions { SplitCriteria = SplitCriteria.Style, SplitStyle = "heading 1" });
        Assert.Equal(new[] { "One|x", "Two|y|z|after section\fafter page" }, byHeading.Select(d => string.Join("|", Texts(d))));
        // Each part keeps the source's styles.
        Assert.Equal("Arial", byHeading[1].Styles["Note"]!.Font.Name);

        var byPage = Splitter.Parts(doc, new SplitOptions { SplitCriteria = SplitCriteria.PageBreak });
        Assert.Equal(2, byPage.Count);
        Assert.Throws<ArgumentException>(() => Splitter.Parts(doc, new SplitOptions { SplitCriteria = SplitCriteria.Style, SplitStyle = "No Such" }));
    }

    [Fact]
    public void ComparerSavesTheChanges()
    {
        Doc("Arial", 600, "one two three").Save(P("v1.docx"));
        Doc("Arial", 600, "one 2 three").Save(P("v2.docx"));
        Comparer.Compare(P("v1.docx"), P("v2.docx"), P("diff.docx"), "Reviewer", new DateTime(2026, 1, 2, 0, 0, 0, DateTimeKind.Utc));
        var diff = new Document(P("diff.docx"));
        Assert.Equal(new[] { "two", "2" }, diff.Revisions.Groups.Select(g => g.Text));
    }

    [Fact]
    public void ReplacerCountsAndSaves()
    {
        Doc("Arial", 600, "cat and cat", "dog").Save(P("r.docx"));
        Assert.Equal(2, Replacer.Replace(P("r.docx"), P("r.md"), "cat", "bird"));
        Assert.Contains("bird and bird", File.ReadAllText(P("r.md")));
        Assert.Equal(1, Replacer.ReplaceRegex(P("r.docx"), P("r2.txt"), "d.g", "fox"));
    }
}
