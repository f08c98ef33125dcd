namespace Quorix.Folio.Tests;

/// <summary>Spacing and indents are inherited attribute by attribute: a style that sets only the space
/// after keeps the line spacing of the document defaults.</summary>
public class AttributeInheritanceTests
{
    private static Paragraph Para(Document doc) => doc.FirstSection!.Body!.FirstParagraph!;

    [Fact]
    public void LineSpacingComesFromDefaultsWhenTheStyleSetsOnlySpaceAfter()
    {
        var doc = new Document();
        var defaults = doc.Styles.DefaultParagraphFormat;
        defaults.LineSpacingRule = LineSpacingRule.Multiple;
        defaults.LineSpacing = 13.8;
        defaults.SpaceAfter = 10;
        doc.Styles["Normal"].ParagraphFormat.SpaceAfter = 8;
        var pf = Para(doc).ParagraphFormat;
        Assert.Equal(8, pf.SpaceAfter);
        Assert.Equal(LineSpacingRule.Multiple, pf.LineSpacingRule);
        Assert.Equal(13.8, pf.LineSpacing, 1);
    }

    [Fact]
    public void AParagraphsOwnIndentKeepsItsStylesHangingIndent()
    {
        var doc = new Document();
        doc.Styles["Normal"].ParagraphFormat.FirstLineIndent = -18;
        doc.Styles["Normal"].ParagraphFormat.RightIndent = 9;
        var pf = Para(doc).ParagraphFormat;
        pf.LeftIndent = 36;
        Assert.Equal((36.0, -18.0, 9.0), (pf.LeftIndent, pf.FirstLineIndent, pf.RightIndent));
    }
}
