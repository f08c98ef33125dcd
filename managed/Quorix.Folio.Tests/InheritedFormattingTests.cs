using System.Xml;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tests;

/// <summary>Formatting read through styles must follow every later edit of the styles and the defaults.</summary>
public class InheritedFormattingTests
{
    // A paragraph in style "Body", based on "Normal"; neither says anything about size yet.
    private static (Document doc, DocumentBuilder b, Run run, Style body, Style normal) BodyDocument()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        var body = doc.Styles.Add(StyleType.Paragraph, "Body");
        b.ParagraphFormat.StyleName = "Body";
        b.Write("text");
        var run = doc.FirstSection!.Body!.FirstParagraph!.Runs[0];
        return (doc, b, run, body, doc.Styles["Normal"]!);
    }

    [Fact]
    public void FontSizeFollowsStyleParentAndDefaultsAfterReads()
    {
        var (doc, b, run, body, normal) = BodyDocument();
        var builderFont = b.Font;
        Assert.Equal(12, builderFont.Size);
        Assert.Equal(12, run.Font.Size);

        doc.Styles.DefaultFont.Size = 9;
        Assert.Equal(9, builderFont.Size);
        Assert.Equal(9, run.Font.Size);

        // The parent's first character properties: the element did not exist when the chain was read.
        normal.Font.Size = 11;
        Assert.Equal(11, builderFont.Size);
        Assert.Equal(11, run.Font.Size);

        body.Font.Size = 14;
        Assert.Equal(14, builderFont.Size);
        Assert.Equal(14, run.Font.Size);

        body.Font.Size = 15;
        normal.Font.Size = 7;
        Assert.Equal(15, builderFont.Size);
        Assert.Equal(15, run.Font.Size);

        body.Font.ClearFormatting();
        Assert.Equal(7, builderFont.Size);
        Assert.Equal(7, run.Font.Size);

        normal.Font.ClearFormatting();
        Assert.Equal(9, builderFont.Size);
        Assert.Equal(9, run.Font.Size);
        Assert.Equal(9, body.Font.Size);
    }

    [Fact]
    public void FontFollowsChangesOfTheChainItself()
    {
        var (doc, b, run, body, normal) = BodyDocument();
        var other = doc.Styles.Add(StyleType.Paragraph, "Other");
        other.BaseStyleName = "";
        other.Font.Size = 20;
        other.Font.Name = "Courier";
        other.Font.Bold = true;
        normal.Font.Size = 11;
        Assert.Equal(11, run.Font.Size);
        Assert.False(b.Font.Bold);
        Assert.Equal("Times New Roman", run.Font.Name);

        body.BaseStyleName = "Other";
        Assert.Equal(20, run.Font.Size);
        Assert.Equal(20, b.Font.Size);
        Assert.True(b.Font.Bold);
        Assert.Equal("Courier", run.Font.Name);

        // Another paragraph style for the paragraph itself.
        b.ParagraphFormat.StyleName = "Normal";
        Assert.Equal(11, run.Font.Size);
        Assert.False(run.Font.Bold);

        // Without its style the paragraph falls back on the default paragraph style.
        b.ParagraphFormat.StyleName = "Other";
        Assert.Equal(20, b.Font.Size);
        other.Remove();
        Assert.Equal(11, b.Font.Size);
        Assert.Equal("Times New Roman", b.Font.Name);
    }

    [Fact]
    public void CharacterStylesAndRunsOutsideParagraphsFollowEdits()
    {
        var (doc, _, run, body, _) = BodyDocument();
        var strong = doc.Styles.Add(StyleType.Character, "Loud");
        run.Font.StyleName = "Loud";
        Assert.Equal(12, run.Font.Size);
        Assert.False(run.Font.Italic);
        strong.Font.Italic = true;
        strong.Font.Size = 30;
        Assert.True(run.Font.Italic);
        Assert.Equal(30, run.Font.Size);
        var basis = doc.Styles.Add(StyleType.Character, "Basis");
        basis.Font.Size = 22;
        strong.Font.ClearFormatting();
        Assert.Equal(12, run.Font.Size);
        strong.BaseStyleName = "Basis";
        Assert.Equal(22, run.Font.Size);
        Assert.False(run.Font.Italic);
        run.Font.ClearFormatting();
        body.Font.Size = 16;
        Assert.Equal(16, run.Font.Size);

        var loose = new Run(doc, "loose");
        Assert.Equal(12, loose.Font.Size);
        doc.Styles.DefaultFont.Size = 8;
        Assert.Equal(8, loose.Font.Size);
    }

    [Fact]
    public void ParagraphFormatFollowsStyleParentAndDefaultsAfterReads()
    {
        var (doc, b, _, body, normal) = BodyDocument();
        var para = doc.FirstSection!.Body!.FirstParagraph!;
        var builderFormat = b.ParagraphFormat;
        double before = para.ParagraphFormat.SpaceAfter;
        Assert.Equal(before, builderFormat.SpaceAfter);
        Assert.Equal(ParagraphAlignment.Left, para.ParagraphFormat.Alignment);

        doc.Styles.DefaultParagraphFormat.SpaceAfter = 3;
        Assert.Equal(3, para.ParagraphFormat.SpaceAfter);
        Assert.Equal(3, builderFormat.SpaceAfter);

        normal.ParagraphFormat.SpaceAfter = 6;
        normal.ParagraphFormat.Alignment = ParagraphAlignment.Center;
        Assert.Equal(6, para.ParagraphFormat.SpaceAfter);
        Assert.Equal(ParagraphAlignment.Center, builderFormat.Alignment);

        body.ParagraphFormat.SpaceAfter = 18;
        body.ParagraphFormat.KeepWithNext = true;
        Assert.Equal(18, builderFormat.SpaceAfter);
        Assert.True(para.ParagraphFormat.KeepWithNext);

        body.ParagraphFormat.ClearFormatting();
        Assert.Equal(6, builderFormat.SpaceAfter);
        Assert.False(para.ParagraphFormat.KeepWithNext);

        body.BaseStyleName = "";
        Assert.Equal(3, para.ParagraphFormat.SpaceAfter);
        Assert.Equal(ParagraphAlignment.Left, para.ParagraphFormat.Alignment);
        Assert.Equal(3, body.ParagraphFormat.SpaceAfter);
    }

    [Fact]
    public void LoopedStylesResolveOnceAndFollowEdits()
    {
        var doc = new Document();
        var a = doc.Styles.Add(StyleType.Paragraph, "A");
        var c = doc.Styles.Add(StyleType.Paragraph, "C");
        a.BaseStyleName = "C";
        c.BaseStyleName = "A";
        var p = doc.FirstSection!.Body!.FirstParagraph!;
        p.ParagraphFormat.StyleName = "A";
        var run = (Run)p.AppendChild(new Run(doc, "x"));
        Assert.Equal(12, run.Font.Size);
        c.Font.Size = 5;
        Assert.Equal(5, run.Font.Size);
        Assert.Equal(5, a.Font.Size);
        a.Font.Size = 6;
        Assert.Equal(6, run.Font.Size);
        Assert.Equal(5, c.Font.Size);
    }

    [Fact]
    public void CachedChainsAgreeWithAFreshWalkThroughRandomEdits()
    {
        var rnd = new Random(1234);
        var doc = new Document();
        var styles = new List<Style> { doc.Styles["Normal"]! };
        for (int i = 0; i < 5; i++) styles.Add(doc.Styles.Add(StyleType.Paragraph, "S" + i));
        var paras = new List<Paragraph> { doc.FirstSection!.Body!.FirstParagraph! };
        for (int i = 0; i < 3; i++) paras.Add((Paragraph)doc.FirstSection.Body.AppendChild(new Paragraph(doc)));
        var runs = paras.Select(p => (Run)p.AppendChild(new Run(doc, "r"))).ToList();

        for (int step = 0; step < 400; step++)
        {
            var s = styles[rnd.Next(styles.Count)];
            switch (rnd.Next(7))
            {
                case 0: s.Font.Size = rnd.Next(2, 60); break;
                case 1: s.Font.ClearFormatting(); break;
                case 2: s.ParagraphFormat.LeftIndent = rnd.Next(0, 100); break;
                case 3: doc.Styles.DefaultFont.Size = rnd.Next(2, 60); break;
                case 4: if (s != styles[0]) s.BaseStyleName = styles[rnd.Next(styles.Count)].Name; break;
                case 5: paras[rnd.Next(paras.Count)].ParagraphFormat.StyleName = s.Name; break;
                case 6: s.ParagraphFormat.ClearFormatting(); break;
            }
            for (int i = 0; i < paras.Count; i++)
            {
                var style = paras[i].ParagraphStyle!;
                Assert.Equal(Walk(style, "rPr", PropOrder.Run, "sz", "val") / 2.0 ?? 10.0, runs[i].Font.Size);
                Assert.Equal(Walk(style, "pPr", PropOrder.Paragraph, "ind", "left") / 20.0 ?? 0, paras[i].ParagraphFormat.LeftIndent);
            }
        }
    }

    // The uncached resolution, walked afresh on every call.
    private static int? Walk(Style style, string kind, PropOrder order, string local, string attr)
    {
        foreach (var bag in style.InheritedBags(kind, order, true))
            if (bag.Find(local) is { } e) return int.Parse(e.Get(attr)!);
        return null;
    }

    [Fact]
    public void FindMatchesNamesAndTheMainNamespaceOnly()
    {
        const string xml = "<rPr xmlns:w='http://schemas.openxmlformats.org/wordprocessingml/2006/main' xmlns:x='urn:other'>" +
                           "<x:sz w:val='40'/><w:sc w:val='1'/><w:sz w:val='24'/><w:szCs w:val='26'/></rPr>";
        using var r = XmlReader.Create(new StringReader(xml));
        r.MoveToContent();
        var bag = PropBag.Read(r, PropOrder.Run);
        // Names built at run time, so no lookup can rely on a shared literal.
        string sz = new string(new[] { 's', 'z' });
        Assert.Equal("24", bag.Find(sz)?.Get("val"));
        Assert.Equal("26", bag.Find("szCs")?.Get("val"));
        Assert.Null(bag.Find("s"));
        Assert.Null(bag.Find("b"));
        Assert.Equal("1", bag.Val("sc"));
        bag.Remove("sz");
        Assert.Null(bag.Find("sz"));
        Assert.Equal(3, bag.Count);
    }

    [Theory]
    [InlineData("24")]
    [InlineData("0009")]
    [InlineData("123456789")]
    [InlineData("1234567890")]
    [InlineData("-240")]
    [InlineData("+12")]
    [InlineData(" 12 ")]
    [InlineData("12.7")]
    [InlineData("1e2")]
    [InlineData("")]
    [InlineData("12pt")]
    [InlineData("١٢")]
    public void ParseIntAgreesWithTheFrameworkParsers(string text)
    {
        int? expected = int.TryParse(text, System.Globalization.NumberStyles.Integer, System.Globalization.CultureInfo.InvariantCulture, out var i)
            ? i
            : double.TryParse(text, System.Globalization.NumberStyles.Float, System.Globalization.CultureInfo.InvariantCulture, out var d) ? (int)d : null;
        Assert.Equal(expected, Units.ParseInt(text));
    }
}
