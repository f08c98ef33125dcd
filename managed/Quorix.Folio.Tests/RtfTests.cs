using System.Text;
using Quorix.Folio.Loading;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class RtfTests
{
    private static Document Rtf(string rtf, RtfLoadOptions? o = null) =>
        new Document(new MemoryStream(Encoding.Latin1.GetBytes(rtf)), o);

    private static Paragraph[] Paras(Document d) => d.FirstSection!.Body!.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>().Where(p => p.ParentNode is not Notes.Footnote).ToArray();

    private static string Text(Node n) => n.GetText().TrimEnd('\r', '\f', '\a');

    [Fact]
    public void CharacterAndParagraphFormattingAreRead()
    {
        var d = Rtf(@"{\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0 Times New Roman;}{\f1\fswiss Arial;}}{\colortbl;\red255\green0\blue0;}
{\stylesheet{\s0 Normal;}{\s2\outlinelevel1 heading 2;}}
\pard\s2 Head\par
\pard\qc\li720\sb240 Plain {\b bold} {\i\ul it} {\f1\fs36\cf1 big red} caf\'e9 \u8364?x\par
\pard {\strike s}{\super 2}\line next\tab t\par}");
        Assert.Equal(LoadFormat.Rtf, d.OriginalLoadFormat);
        var p = Paras(d);
        Assert.Equal(StyleIdentifier.Heading2, p[0].ParagraphFormat.StyleIdentifier);
        Assert.Equal(ParagraphAlignment.Center, p[1].ParagraphFormat.Alignment);
        Assert.Equal(36, p[1].ParagraphFormat.LeftIndent);
        Assert.Equal(12, p[1].ParagraphFormat.SpaceBefore);
        Assert.Equal("Plain bold it big red caf\u00e9 \u20acx", Text(p[1]));
        var runs = p[1].Runs.ToArray();
        Assert.True(runs.Single(r => r.Text == "bold").Font.Bold);
        var it = runs.Single(r => r.Text == "it");
        Assert.True(it.Font.Italic);
        Assert.Equal(Underline.Single, it.Font.Underline);
        var big = runs.Single(r => r.Text == "big red");
        Assert.Equal(("Arial", 18.0, "FF0000"), (big.Font.Name, big.Font.Size, big.Font.ColorHex));
        Assert.True(p[2].Runs[0].Font.StrikeThrough);
        Assert.True(p[2].Runs[1].Font.Superscript);
        Assert.Equal("s2\vnext\tt", Text(p[2]));
    }

    [Fact]
    public void TablesListsFieldsNotesAndUnknownGroups()
    {
        var d = Rtf(@"{\rtf1\ansi{\*\listtable{\list{\listlevel\levelnfc23{\leveltext\'01\u8226 ?;}}\listid7}}{\*\listoverridetable{\listoverride\listid7\ls1}}
{\*\unknowngroup {\nested junk} more junk}{\info{\title T}}
\pard\ls1\ilvl0{\listtext -\tab}apple\par\pard\ls1\ilvl0 pear\par
\trowd\clvmgf\cellx1000\cellx2000\pard\intbl a\cell\pard\intbl b\cell\row
\trowd\clvmrg\cellx1000\cellx2000\pard\intbl\cell\pard\intbl d\par e\cell\row
\pard See {\field{\*\fldinst{HYPERLINK ""https://x.org/""}}{\fldrslt{site}}} and{\super\chftn}{\footnote{\super\chftn} The note.}\par}");
        var p = Paras(d);
        Assert.Equal("apple", Text(p[0]));
        Assert.Same(p[0].ListFormat.List, p[1].ListFormat.List);
        Assert.Equal(NumberStyle.Bullet, p[0].ListFormat.ListLevel!.NumberStyle);
        var t = d.FirstSection!.Body!.Tables[0];
        Assert.Equal(2, t.Rows.Count);
        Assert.Equal(CellMerge.First, t.Rows[0].Cells[0].CellFormat.VerticalMerge);
        Assert.Equal(CellMerge.Previous, t.Rows[1].Cells[0].CellFormat.VerticalMerge);
        Assert.Equal(2, t.Rows[1].Cells[1].Paragraphs.Count);
        var last = p[^1];
        Assert.Contains("HYPERLINK \"https://x.org/\"", last.GetText());
        Assert.DoesNotContain("junk", d.GetText());
        Assert.DoesNotContain("T", Text(last).Replace("The", ""));
        Assert.Equal("The note.", d.GetChildNodes(NodeType.Footnote, true)[0].GetText().Trim());
    }

    [Fact]
    public void OurRtfReadsBackAsTheDocumentWeWrote()
    {
        var doc = FlowInteropTests.Sample();
        var b = new DocumentBuilder(doc);
        b.MoveToDocumentEnd();
        b.Font.Size = 20;
        b.Font.ColorHex = "336699";
        b.Write("\u4e2d\u6587 { braces } \\ back");
        b.InsertImage(TestSupport.Png(3, 2));
        b.MoveToHeaderFooter(HeaderFooterType.FooterPrimary);
        b.Write("foot");
        var back = new Document(new MemoryStream(TestSupport.ToBytes(doc, SaveFormat.Rtf)));
        string Outline(Document x) => string.Join("|", Paras(x).Select(p => $"{p.ParagraphFormat.StyleIdentifier}:{p.IsListItem}:{p.ListLabel.LabelString}:{Text(p)}"));
        Assert.Equal(Outline(doc).Replace("ListParagraph", "Normal"), Outline(back));
        var run = back.LastSection!.Body!.LastParagraph!.Runs[0];
        Assert.Equal((20.0, "336699"), (run.Font.Size, run.Font.ColorHex));
        Assert.Equal(TestSupport.Png(3, 2), ((Drawing.Shape)back.GetChildNodes(NodeType.Shape, true)[0]).ImageData.ImageBytes);
        Assert.Equal("foot", Text(back.FirstSection!.HeadersFooters[HeaderFooterType.FooterPrimary]!));
        Assert.Equal(3, back.FirstSection!.Body!.Tables[0].Rows.Count);
        // Headings keep their style's look without repeating it on the text.
        Assert.False(back.FirstSection!.Body!.FirstParagraph!.Runs[0].RunAttrs.Has(Quorix.Folio.Formatting.FormatAttr.Bold));
    }

    [Fact]
    public void Utf8BytesOnlyWhenAsked()
    {
        const string src = "{\\rtf1\\ansi \\'c3\\'a9t\\'c3\\'a9\\par}";
        Assert.StartsWith("\u00c3\u00a9t", Rtf(src).GetText());
        Assert.StartsWith("\u00e9t\u00e9", Rtf(src, new RtfLoadOptions { RecognizeUtf8Text = true }).GetText());
    }

    [Fact]
    public void DamagedOrForeignInputIsRefused()
    {
        Assert.Throws<FileCorruptedException>(() => Rtf("just text", new RtfLoadOptions()));
        Assert.Throws<UnsupportedFileFormatException>(() => new Document(new MemoryStream(TestSupport.ToBytes(new Document())), new RtfLoadOptions()));
        // Unbalanced groups end the document instead of failing it.
        Assert.StartsWith("open", Rtf("{\\rtf1 {\\b open\\par").GetText());
    }
}
