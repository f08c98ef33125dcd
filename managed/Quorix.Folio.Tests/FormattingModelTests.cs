using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tests;

/// <summary>Run formatting held as shared typed attributes, resolved through one cascade, written back without loss.</summary>
public class FormattingModelTests
{
    private const string W = "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\" xmlns:w14=\"http://schemas.microsoft.com/office/word/2010/wordml\"";

    private static Document Load(string body, Func<string?, string?>? styles = null)
    {
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            _ => "<w:document " + W + "><w:body>" + body + "</w:body></w:document>");
        if (styles != null) bytes = TestSupport.WithPart(bytes, "word/styles.xml", styles);
        return new Document(new MemoryStream(bytes));
    }

    [Fact]
    public void SetsOverrideWholeGroupsAndStayImmutable()
    {
        var themed = AttrSet.Empty.With(FormatAttr.LatinTheme, "minorHAnsi").With(FormatAttr.Bold, true);
        var named = AttrSet.Empty.With(FormatAttr.LatinFont, "Arial");
        var merged = themed.Then(named);
        // The Latin font named over a theme reference replaces the reference, not only its own attribute.
        Assert.Null(merged.Get(FormatAttr.LatinTheme));
        Assert.Equal("Arial", merged.String(FormatAttr.LatinFont));
        Assert.Equal(true, merged.Bool(FormatAttr.Bold));
        Assert.Equal("minorHAnsi", themed.String(FormatAttr.LatinTheme));

        var a = AttrSet.Empty.With(FormatAttr.Size, 24).With(FormatAttr.Bold, true);
        var b = AttrSet.Empty.With(FormatAttr.Bold, true).With(FormatAttr.Size, 24);
        Assert.Equal(a, b);
        Assert.Same(a, a.With(FormatAttr.Size, 24));
        Assert.Equal(AttrSet.Empty, a.Without(FormatAttr.Bold).Without(FormatAttr.Size));
        var table = new Dictionary<AttrSet, AttrSet>();
        Assert.Same(a.Intern(table), b.Intern(table));
    }

    [Fact]
    public void RunsOfTheSameFormattingShareOneInstance()
    {
        var body = string.Concat(Enumerable.Range(0, 300).Select(i =>
            $"<w:p><w:r><w:rPr><w:b/><w:bCs/><w:sz w:val=\"28\"/><w:szCs w:val=\"28\"/></w:rPr><w:t>bold {i}</w:t></w:r><w:r><w:t>plain</w:t></w:r></w:p>"));
        var doc = Load(body);
        var runs = doc.GetChildNodes(NodeType.Run, true).Cast<Run>().ToList();
        Assert.Equal(600, runs.Count);
        Assert.Equal(2, runs.Select(r => r.RunAttrs).Distinct(ReferenceEqualityComparer.Instance).Count());

        // Edits through the public formatting reach the same instances as loading does.
        runs[1].Font.Bold = true;
        runs[1].Font.Size = 14;
        Assert.Same(runs[0].RunAttrs, runs[1].RunAttrs);
        Assert.True(runs[1].Font.Bold);
        Assert.False(runs[3].Font.Bold);
    }

    [Fact]
    public void TheCascadeTakesDefaultsThenParagraphThenCharacterStyleThenDirect()
    {
        var doc = new Document();
        doc.Styles.DefaultFont.Size = 9;
        doc.Styles.DefaultFont.Name = "Defaults Sans";
        var para = doc.Styles.Add(StyleType.Paragraph, "Para");
        para.Font.Size = 20;
        para.Font.Bold = true;
        var chars = doc.Styles.Add(StyleType.Character, "Chars");
        chars.Font.Name = "Char Serif";
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleName = "Para";
        b.Font.StyleName = "Chars";
        b.Write("styled");
        var run = doc.GetChildNodes(NodeType.Run, true).Cast<Run>().Single(r => r.Text == "styled");

        Assert.Equal(20, run.Font.Size);
        Assert.True(run.Font.Bold);
        Assert.Equal("Char Serif", run.Font.Name);
        // Switching off what a style switches on is written; switching off what nothing switches on is not.
        run.Font.Bold = false;
        Assert.False(run.Font.Bold);
        Assert.Equal(false, run.RunAttrs.Bool(FormatAttr.Bold));
        run.Font.Italic = false;
        Assert.False(run.RunAttrs.Has(FormatAttr.Italic));

        // A style edit is seen at once by the runs that inherit from it.
        para.Font.Size = 11;
        Assert.Equal(11, run.Font.Size);
        run.Font.StyleName = "Default Paragraph Font";
        Assert.Equal("Defaults Sans", run.Font.Name);
        run.Font.Size = 7;
        Assert.Equal(7, run.Font.Size);
        Assert.Equal(11, doc.Styles["Para"]!.Font.Size);
    }

    [Fact]
    public void UnmodelledPropertiesAndAttributesSurviveBesideEdits()
    {
        var doc = Load("<w:p><w:r><w:rPr><w:rFonts w:ascii=\"Arial\" w14:foo=\"x\"/><w:b w:val=\"true\"/><w:sz w:val=\"21.5\"/>" +
            "<w:effect w:val=\"shimmer\"/><w:color w:val=\"FF0000\" w:themeColor=\"accent1\"/><w:u/><w14:glow w14:rad=\"63500\"/></w:rPr><w:t>x</w:t></w:r></w:p>");
        var run = (Run)doc.GetChild(NodeType.Run, 0, true)!;
        Assert.Equal("Arial", run.Font.Name);
        Assert.True(run.Font.Bold);
        Assert.Equal("FF0000", run.Font.ColorHex);
        run.Font.Italic = true;
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        var rPr = xml[xml.IndexOf("<w:rPr>")..(xml.IndexOf("</w:rPr>") + 8)];
        foreach (var kept in new[] { "w:ascii=\"Arial\"", "w14:foo=\"x\"", "<w:b />", "<w:i />", "<w:sz w:val=\"21.5\" />", "<w:effect w:val=\"shimmer\" />",
                     "w:themeColor=\"accent1\"", "<w:u />", "w14:glow" })
            Assert.Contains(kept, rPr);
        // Schema order: fonts, toggles, colour, size, effect.
        Assert.True(rPr.IndexOf("rFonts") < rPr.IndexOf("<w:b ") && rPr.IndexOf("<w:i ") < rPr.IndexOf("<w:color") &&
            rPr.IndexOf("<w:color") < rPr.IndexOf("<w:sz") && rPr.IndexOf("<w:sz") < rPr.IndexOf("<w:effect"), rPr);

        // A value read as markup and then set through the model is written once, as set.
        run.Font.Size = 12;
        var again = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        Assert.Contains("<w:sz w:val=\"24\" />", again);
        Assert.DoesNotContain("21.5", again);
        Assert.Equal(12, new Document(new MemoryStream(TestSupport.ToBytes(doc))).GetChildNodes(NodeType.Run, true).Cast<Run>().First().Font.Size);
    }

    [Fact]
    public void RejectingAFormattingChangeRestoresTheModelledAttributes()
    {
        var doc = Load("<w:p><w:r><w:rPr><w:b/><w:rPrChange w:id=\"1\" w:author=\"A\"><w:rPr><w:i/></w:rPr></w:rPrChange></w:rPr><w:t>x</w:t></w:r></w:p>");
        var run = (Run)doc.GetChild(NodeType.Run, 0, true)!;
        Assert.True(run.Font.Bold);
        Assert.Single(doc.Revisions);
        doc.Revisions[0].Reject();
        Assert.False(run.Font.Bold);
        Assert.True(run.Font.Italic);
        Assert.Empty(doc.Revisions);
    }

    [Fact]
    public void ParagraphsInheritValueByValueAndIndentsByPair()
    {
        var doc = Load("<w:p><w:pPr><w:pStyle w:val=\"Body\"/><w:spacing w:after=\"240\"/><w:ind w:left=\"360\"/></w:pPr><w:r><w:t>x</w:t></w:r></w:p>",
            styles => styles!.Replace("</w:styles>",
                "<w:style w:type=\"paragraph\" w:styleId=\"Base\"><w:name w:val=\"Base\"/><w:pPr><w:spacing w:before=\"120\" w:after=\"60\"/><w:jc w:val=\"center\"/></w:pPr></w:style>" +
                "<w:style w:type=\"paragraph\" w:styleId=\"Body\"><w:name w:val=\"Body\"/><w:basedOn w:val=\"Base\"/><w:pPr><w:ind w:start=\"1440\" w:hanging=\"200\"/><w:keepNext/></w:pPr></w:style></w:styles>"));
        var pf = doc.FirstSection!.Body!.FirstParagraph!.ParagraphFormat;
        Assert.Equal(6, pf.SpaceBefore);       // from the base style
        Assert.Equal(12, pf.SpaceAfter);       // the paragraph's own
        Assert.Equal(ParagraphAlignment.Center, pf.Alignment);
        Assert.True(pf.KeepWithNext);
        Assert.Equal(18, pf.LeftIndent);       // "left" here replaces the style's "start"
        Assert.Equal(-10, pf.FirstLineIndent); // the hanging indent is another pair, inherited

        doc.Styles["Base"]!.ParagraphFormat.SpaceBefore = 3;
        Assert.Equal(3, pf.SpaceBefore);
        pf.ClearFormatting();
        Assert.Equal("Normal", pf.StyleName);
        Assert.Equal(0, pf.SpaceAfter);
    }

    [Fact]
    public void ParagraphPropertiesKeepSchemaOrderAroundKeptMarkup()
    {
        var doc = Load("<w:p><w:pPr><w:pStyle w:val=\"Normal\"/><w:keepNext/><w:numPr><w:ilvl w:val=\"0\"/><w:numId w:val=\"0\"/></w:numPr>" +
            "<w:tabs><w:tab w:val=\"left\" w:pos=\"720\"/></w:tabs><w:spacing w:after=\"0\" w:afterAutospacing=\"1\"/><w:jc w:val=\"right\"/>" +
            "<w:rPr><w:b/></w:rPr><w:sectPr><w:pgSz w:w=\"11906\" w:h=\"16838\"/></w:sectPr><w:pPrChange w:id=\"3\" w:author=\"A\"><w:pPr/></w:pPrChange></w:pPr>" +
            "<w:r><w:t>one</w:t></w:r></w:p><w:p><w:r><w:t>two</w:t></w:r></w:p>");
        var first = doc.FirstSection!.Body!.FirstParagraph!;
        Assert.Equal(ParagraphAlignment.Right, first.ParagraphFormat.Alignment);
        first.ParagraphFormat.SpaceBefore = 6;
        var xml = TestSupport.Part(TestSupport.ToBytes(doc), "word/document.xml");
        var pPr = xml[xml.IndexOf("<w:pPr>")..(xml.IndexOf("</w:pPr>") + 8)];
        string[] order = { "<w:pStyle", "<w:keepNext", "<w:numPr", "<w:tabs", "<w:spacing", "<w:jc", "<w:rPr", "<w:sectPr", "<w:pPrChange" };
        for (int i = 1; i < order.Length; i++)
            Assert.True(pPr.IndexOf(order[i - 1]) >= 0 && pPr.IndexOf(order[i - 1]) < pPr.IndexOf(order[i]), pPr);
        Assert.Contains("w:before=\"120\"", pPr);
        Assert.Contains("w:afterAutospacing=\"1\"", pPr);

        // Rejecting the recorded change restores the properties it holds: none, so no alignment.
        doc.Revisions.RejectAll();
        Assert.Equal(ParagraphAlignment.Left, first.ParagraphFormat.Alignment);
    }

    [Fact]
    public void ParagraphsOfOneStyleShareTheirFormatting()
    {
        var b = new DocumentBuilder(new Document());
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading2;
        b.ParagraphFormat.SpaceAfter = 4;
        for (int i = 0; i < 200; i++) b.Writeln("para " + i);
        var reloaded = new Document(new MemoryStream(TestSupport.ToBytes(b.Document)));
        var headings = reloaded.GetChildNodes(NodeType.Paragraph, true).Cast<Paragraph>().Where(p => p.GetText().StartsWith("para")).ToList();
        Assert.True(headings.Count >= 200);
        // The heading, then body text in the heading's next style, each one instance for all its paragraphs.
        Assert.Equal(StyleIdentifier.Heading2, headings[0].ParagraphFormat.StyleIdentifier);
        Assert.Single(headings.Skip(1).Select(p => p.ParaAttrs).Distinct(ReferenceEqualityComparer.Instance));
        Assert.All(headings, p => Assert.Equal(4, p.ParagraphFormat.SpaceAfter));
    }
}
