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

    [Fact]
    public void ContextsBuildTheSameOperationsStepByStep()
    {
        Doc("Arial", 600, "one two three", "#Head", "tail").Save(P("v1.docx"));
        Doc("Arial", 600, "one 2 three", "#Head", "tail").Save(P("v2.docx"));

        Converter.Create(new ConverterContext()).FromFile(P("v1.docx")).ToFile(P("c.md")).ToFile(P("c.rtf"), SaveFormat.Rtf).Execute();
        Assert.StartsWith("one two three", File.ReadAllText(P("c.md")));
        Assert.Equal(new[] { "one two three", "Head", "tail" }, Texts(new Document(P("c.rtf"))));

        var merged = new MemoryStream();
        Merger.Create(new MergerContext { MergeFormatMode = MergeFormatMode.MergeFormatting })
            .FromFile(P("v1.docx")).FromStream(File.OpenRead(P("v2.docx"))).ToStream(merged, SaveFormat.Docx).Execute();
        Assert.Equal(6, Texts(new Document(new MemoryStream(merged.ToArray()))).Length);

        var split = new SplitterContext { SplitOptions = new SplitOptions { SplitCriteria = SplitCriteria.Style, SplitStyle = "heading 1" } };
        Splitter.Create(split).FromFile(P("v1.docx")).ToFile(P("s.docx")).Execute();
        Assert.Equal(new[] { "Head", "tail" }, Texts(new Document(P("s_2.docx"))));
        Assert.Throws<NotSupportedException>(() => Splitter.Create(split).FromFile(P("v1.docx")).ToStream(new MemoryStream(), SaveFormat.Docx).Execute());

        var when = new DateTime(2026, 1, 2, 0, 0, 0, DateTimeKind.Utc);
        Comparer.Create(new ComparerContext { Author = "Ann", DateTime = when }).FromFile(P("v1.docx")).FromFile(P("v2.docx")).ToFile(P("d.docx")).Execute();
        var diff = new Document(P("d.docx"));
        Assert.Equal(new[] { "two", "2" }, diff.Revisions.Groups.Select(g => g.Text));
        Assert.All(diff.Revisions, r => Assert.Equal(("Ann", when), (r.Author, r.DateTime)));

        var replace = new ReplacerContext { FindReplaceOptions = new Replacing.FindReplaceOptions { UseSubstitutions = true } };
        replace.SetReplacement(new System.Text.RegularExpressions.Regex("t(wo|ail)"), "X$1");
        Replacer.Create(replace).FromFile(P("v1.docx")).ToFile(P("r.docx")).Execute();
        Assert.Equal(new[] { "one Xwo three", "Head", "Xail" }, Texts(new Document(P("r.docx"))));

        Watermarker.Create(new WatermarkerContext { TextWatermark = "DRAFT" }).FromFile(P("v1.docx")).ToFile(P("w.docx")).Execute();
        Assert.Equal(WatermarkType.Text, new Document(P("w.docx")).Watermark.Type);

        // Wrong numbers of inputs, missing outputs and missing settings say what is wrong.
        var e = Assert.Throws<InvalidOperationException>(() => Comparer.Create(new ComparerContext()).FromFile(P("v1.docx")).ToFile(P("x.docx")).Execute());
        Assert.Equal("Comparison takes 2 inputs; one input given.", e.Message);
        e = Assert.Throws<InvalidOperationException>(() => Converter.Create(new ConverterContext()).FromFile(P("v1.docx")).Execute());
        Assert.Contains("no output", e.Message);
        Assert.Throws<InvalidOperationException>(() => Replacer.Create(new ReplacerContext()).FromFile(P("v1.docx")).ToFile(P("x.docx")).Execute());
        Assert.Throws<InvalidOperationException>(() => Watermarker.Create(new WatermarkerContext()).FromFile(P("v1.docx")).ToFile(P("x.docx")).Execute());
        Assert.Throws<NotSupportedException>(() => new SignerContext());
        Assert.False(File.Exists(P("x.docx")));
    }

    [Fact]
    public void MailMergerAndReportBuilderFillTemplates()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("Dear ");
        b.InsertField("MERGEFIELD name");
        b.InsertField("MERGEFIELD missing");
        b.Writeln(",");
        doc.Save(P("letter.docx"));
        MailMerger.Execute(P("letter.docx"), P("letter.txt"), new[] { "name" }, new object[] { "Ann" });
        Assert.StartsWith("Dear Ann,", File.ReadAllText(P("letter.txt")).TrimStart('\uFEFF'));

        var ctx = new MailMergerContext { MailMergeOptions = new MailMergeOptions { CleanupOptions = MailMerging.MailMergeCleanupOptions.RemoveUnusedFields } };
        ctx.SetSimpleDataSource(new[] { "NAME" }, new object[] { "Bo" });
        MailMerger.Create(ctx).FromFile(P("letter.docx")).ToFile(P("bo.docx")).Execute();
        var merged = new Document(P("bo.docx"));
        Assert.Equal("Dear Bo,", merged.GetText().Trim());
        Assert.Equal(0, merged.Range.Fields.Count);
        Assert.Throws<InvalidOperationException>(() => MailMerger.Create(new MailMergerContext()).FromFile(P("letter.docx")).ToFile(P("none.docx")).Execute());

        File.WriteAllText(P("orders.json"), "{\"customer\": \"Acme\", \"orders\": [{\"id\": 7}, {\"id\": 8}]}");
        var regions = new Document();
        b = new DocumentBuilder(regions);
        b.InsertField("MERGEFIELD TableStart:orders");
        b.InsertField("MERGEFIELD id");
        b.InsertField("MERGEFIELD TableEnd:orders");
        b.Writeln();
        regions.Save(P("regions.docx"));
        MailMerger.ExecuteWithRegions(P("regions.docx"), P("regions.txt"), new Reporting.JsonDataSource(P("orders.json")));
        Assert.Equal("78", File.ReadAllText(P("regions.txt")).TrimStart('\uFEFF').Trim());

        var template = new Document();
        new DocumentBuilder(template).Write("[[d.customer | upper]] has [[count(d.orders)]] orders[[d.nothing]]");
        template.Save(P("template.docx"));
        ReportBuilder.BuildReport(P("template.docx"), P("report.txt"), new Reporting.JsonDataSource(P("orders.json")), "d",
            new ReportBuilderOptions { Options = Reporting.ReportBuildOptions.AllowMissingMembers });
        Assert.Equal("ACME has 2 orders", File.ReadAllText(P("report.txt")).TrimStart('\uFEFF').Trim());
        ReportBuilder.BuildReport(P("template.docx"), P("two.txt"), new object[] { new Reporting.JsonDataSource(P("orders.json")), new Reporting.JsonDataSource(P("orders.json")) },
            new List<string> { "d", "e" }, new ReportBuilderOptions { Options = Reporting.ReportBuildOptions.AllowMissingMembers });
        Assert.Equal("ACME has 2 orders", File.ReadAllText(P("two.txt")).TrimStart('\uFEFF').Trim());
        Assert.Throws<ArgumentException>(() => new MailMergeDataSource(new object[] { 1 }, new object[] { "x" }));
        var rctx = new ReportBuilderContext();
        rctx.AddDataSource(new Reporting.JsonDataSource(P("orders.json")), "d");
        var ex = Assert.ThrowsAny<Exception>(() => ReportBuilder.Create(rctx).FromFile(P("template.docx")).ToFile(P("strict.txt")).Execute());
        Assert.Contains("nothing", ex.Message);
        Assert.Throws<InvalidOperationException>(() => ReportBuilder.Create(new ReportBuilderContext()).FromFile(P("template.docx")).ToFile(P("r.txt")).Execute());
    }
}
