using System.IO.Compression;
using System.Text;
using System.Text.RegularExpressions;
using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Anchored pictures: placed where their drawing says, taking no room in the line, with
/// wrapping text resuming below them and non-wrapping text running over them.</summary>
public class FloatingPictureTests
{
    /// <summary>A document whose second paragraph anchors a 100 x 80 point picture, positioned and
    /// wrapped as given (the drawing written inline, then turned into an anchored one).</summary>
    private static Document Anchored(string positionH, string positionV, string wrap, string anchorText = "text of the anchor")
    {
        var b = new DocumentBuilder();
        b.Writeln("first paragraph above");
        b.Write("anchor paragraph ");
        b.InsertImage(TestSupport.Png(10, 8), 100, 80);
        b.Writeln(anchorText);
        for (int i = 0; i < 5; i++) b.Writeln($"after{i} paragraph");
        var ms = new MemoryStream();
        b.Document.Save(ms, SaveFormat.Docx);
        var patched = new MemoryStream();
        using (var src = new ZipArchive(new MemoryStream(ms.ToArray()), ZipArchiveMode.Read))
        using (var dst = new ZipArchive(patched, ZipArchiveMode.Create, leaveOpen: true))
            foreach (var entry in src.Entries)
            {
                using var reader = new StreamReader(entry.Open());
                var text = reader.ReadToEnd();
                if (entry.FullName == "word/document.xml")
                {
                    text = Regex.Replace(text, "<wp:inline[^>]*>", "<wp:anchor distT=\"0\" distB=\"0\" distL=\"0\" distR=\"0\" simplePos=\"0\" relativeHeight=\"1\" behindDoc=\"0\" " +
                        $"locked=\"0\" layoutInCell=\"1\" allowOverlap=\"1\"><wp:simplePos x=\"0\" y=\"0\"/>{positionH}{positionV}");
                    text = Regex.Replace(text, "(<wp:extent [^>]*/>)", "$1" + wrap).Replace("</wp:inline>", "</wp:anchor>");
                }
                using var w = new StreamWriter(dst.CreateEntry(entry.FullName).Open(), new UTF8Encoding(false));
                w.Write(text);
            }
        patched.Position = 0;
        return new Document(patched);
    }

    private static ImageItem Picture(Document doc) => doc.PageLayout.Pages[0].Items.OfType<ImageItem>().Single();

    [Fact]
    public void APictureAlignedToTheMarginWithTopAndBottomWrapPushesTheTextBelow()
    {
        var doc = Anchored("<wp:positionH relativeFrom=\"margin\"><wp:align>right</wp:align></wp:positionH>",
            "<wp:positionV relativeFrom=\"paragraph\"><wp:posOffset>0</wp:posOffset></wp:positionV>", "<wp:wrapTopAndBottom/>");
        var ps = doc.FirstSection!.PageSetup;
        var pic = Picture(doc);
        Assert.Equal(ps.PageWidth - ps.RightMargin - 100, pic.X, 1);
        Assert.Equal((100.0, 80.0), (pic.Width, pic.Height));
        var lines = LayoutProbe.Lines(doc, 0);
        var first = lines.Single(l => l.Text.StartsWith("first"));
        var anchor = lines.Single(l => l.Text.StartsWith("anchor paragraph"));
        // The picture takes no room in its line: the line holds only text.
        Assert.Contains("anchor paragraph text of the anchor", anchor.Text);
        Assert.InRange(pic.Y, first.Y, anchor.Y);
        Assert.True(anchor.Y > pic.Y + pic.Height, "the anchor's text goes below the picture");
        Assert.All(lines.Where(l => l.Text.StartsWith("after")), l => Assert.True(l.Y > pic.Y + pic.Height));
    }

    [Fact]
    public void APictureWithoutWrappingSitsAtItsPageOffsetOverTheText()
    {
        var doc = Anchored("<wp:positionH relativeFrom=\"page\"><wp:posOffset>1270000</wp:posOffset></wp:positionH>",
            "<wp:positionV relativeFrom=\"page\"><wp:posOffset>2540000</wp:posOffset></wp:positionV>", "<wp:wrapNone/>");
        var pic = Picture(doc);
        Assert.Equal((100.0, 200.0), (pic.X, pic.Y));
        var plain = new DocumentBuilder();
        plain.Writeln("first paragraph above");
        plain.Writeln("anchor paragraph text of the anchor");
        // Text flows as if the picture were not there.
        Assert.Equal(LayoutProbe.Lines(plain.Document, 0)[1].Y, LayoutProbe.Lines(doc, 0)[1].Y, 1);
        // And the picture is drawn in the PDF.
        var pdf = new MemoryStream();
        doc.Save(pdf, SaveFormat.Pdf);
        Assert.Contains("/Image", Encoding.Latin1.GetString(pdf.ToArray()));
    }

    private const string TextBoxRun =
        "<w:r><w:drawing><wp:anchor xmlns:wp=\"http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing\" distT=\"0\" distB=\"0\" distL=\"0\" distR=\"0\" " +
        "simplePos=\"0\" relativeHeight=\"2\" behindDoc=\"0\" locked=\"0\" layoutInCell=\"1\" allowOverlap=\"1\"><wp:simplePos x=\"0\" y=\"0\"/>" +
        "<wp:positionH relativeFrom=\"page\"><wp:posOffset>3810000</wp:posOffset></wp:positionH><wp:positionV relativeFrom=\"page\"><wp:posOffset>5080000</wp:posOffset></wp:positionV>" +
        "<wp:extent cx=\"1905000\" cy=\"635000\"/><wp:effectExtent l=\"0\" t=\"0\" r=\"0\" b=\"0\"/><wp:wrapNone/><wp:docPr id=\"5\" name=\"Text Box 5\"/>" +
        "<a:graphic xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\"><a:graphicData uri=\"http://schemas.microsoft.com/office/word/2010/wordprocessingShape\">" +
        "<wps:wsp xmlns:wps=\"http://schemas.microsoft.com/office/word/2010/wordprocessingShape\"><wps:cNvSpPr txBox=\"1\"/><wps:spPr><a:xfrm><a:off x=\"0\" y=\"0\"/>" +
        "<a:ext cx=\"1905000\" cy=\"635000\"/></a:xfrm><a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></wps:spPr><wps:txbx><w:txbxContent><w:p><w:r><w:t>Boxed words here</w:t></w:r></w:p>" +
        "</w:txbxContent></wps:txbx><wps:bodyPr/></wps:wsp></a:graphicData></a:graphic></wp:anchor></w:drawing></w:r>";

    [Fact]
    public void AFloatingTextBoxShowsItsParagraphsInsideItsOutline()
    {
        var b = new DocumentBuilder();
        b.Writeln("body text before the box");
        b.Writeln("body text after the box");
        var ms = new MemoryStream();
        b.Document.Save(ms, SaveFormat.Docx);
        var patched = new MemoryStream();
        using (var src = new ZipArchive(new MemoryStream(ms.ToArray()), ZipArchiveMode.Read))
        using (var dst = new ZipArchive(patched, ZipArchiveMode.Create, leaveOpen: true))
            foreach (var entry in src.Entries)
            {
                using var reader = new StreamReader(entry.Open());
                var text = reader.ReadToEnd();
                if (entry.FullName == "word/document.xml")
                {
                    int end = text.IndexOf("</w:p>", StringComparison.Ordinal);
                    text = text[..end] + TextBoxRun + text[end..];
                }
                using var w = new StreamWriter(dst.CreateEntry(entry.FullName).Open(), new UTF8Encoding(false));
                w.Write(text);
            }
        patched.Position = 0;
        var doc = new Document(patched);
        Assert.True(((Drawing.Shape)doc.GetChildNodes(NodeType.Shape, true)[0]).IsTextBox);
        var lines = LayoutProbe.Lines(doc, 0);
        var boxed = lines.Single(l => l.Text.Contains("Boxed words here"));
        // Inside the box at (300, 400), 150 x 50, after the insets.
        Assert.Equal(300 + 7.2, boxed.Left, 1);
        Assert.InRange(boxed.Y, 400, 450);
        var outline = doc.PageLayout.Pages[0].Items.OfType<LineItem>().ToList();
        Assert.Equal(4, outline.Count);
        Assert.Equal(new[] { 300.0, 450.0 }, new[] { outline.Min(l => Math.Min(l.X1, l.X2)), outline.Max(l => Math.Max(l.X1, l.X2)) });
        // The box takes no room from the body: its text lines stay where they were.
        Assert.Equal(LayoutProbe.Lines(b.Document, 0)[1].Y, lines.Single(l => l.Text.StartsWith("body text after")).Y, 1);
    }

    // Enough words to run down beside a 100 x 80 point picture and past it.
    private static readonly string LongText = string.Join(" ", Enumerable.Range(0, 160).Select(i => $"w{i}"));

    private static Document Square(string positionH, string wrap) => Anchored(positionH,
        "<wp:positionV relativeFrom=\"paragraph\"><wp:posOffset>0</wp:posOffset></wp:positionV>", wrap, LongText);

    /// <summary>The page's glyph runs of the anchor paragraph's words, as (left, right, y) spans of text.</summary>
    private static List<(double Left, double Right, double Y)> WordRuns(Document doc) =>
        doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().Where(r => r.Text.Contains('w'))
            .Select(r => (r.X + r.Xs[0], r.X + r.Xs[^1], r.Y)).ToList();

    [Fact]
    public void LinesBesideASquareWrappedPictureAreShortenedByItsRectangleAndDistance()
    {
        // 9 points of distance on the right of a picture at the margin's left edge.
        var doc = Square("<wp:positionH relativeFrom=\"margin\"><wp:align>left</wp:align></wp:positionH>",
            "<wp:wrapSquare wrapText=\"bothSides\" distR=\"114300\"/>");
        var ps = doc.FirstSection!.PageSetup;
        var pic = Picture(doc);
        Assert.Equal(ps.LeftMargin, pic.X, 1);
        var lines = LayoutProbe.Lines(doc, 0);
        var anchor = lines.Single(l => l.Text.StartsWith("anchor paragraph"));
        // The anchor's first line sits beside the picture, not below it.
        Assert.InRange(anchor.Y, pic.Y, pic.Y + pic.Height);
        var beside = lines.Where(l => l.Y - 8 < pic.Y + pic.Height && l.Y > pic.Y && l.Text.Contains('w')).ToList();
        var below = lines.Where(l => l.Y - 12 > pic.Y + pic.Height && l.Text.Contains('w')).ToList();
        Assert.True(beside.Count >= 3, $"{beside.Count} lines beside the picture");
        Assert.NotEmpty(below);
        Assert.All(beside.Append(anchor), l => Assert.Equal(pic.X + 100 + 9, l.Left, 1));
        Assert.All(beside, l => Assert.InRange(l.Right, ps.PageWidth - ps.RightMargin - 40, ps.PageWidth - ps.RightMargin + 0.5));
        // Below the picture lines use the column's whole width again.
        Assert.All(below, l => Assert.Equal(ps.LeftMargin, l.Left, 1));
        Assert.True(below[0].Right > ps.PageWidth - ps.RightMargin - 40);
        // No text runs under the picture.
        Assert.DoesNotContain(WordRuns(doc), r => r.Left < pic.X + 100 && r.Y > pic.Y && r.Y - 10 < pic.Y + pic.Height);
    }

    [Fact]
    public void ACentredPictureTakesTextOnBothSidesOrOnTheSideItsWrapTextNames()
    {
        const string centre = "<wp:positionH relativeFrom=\"margin\"><wp:align>center</wp:align></wp:positionH>";
        var both = Square(centre, "<wp:wrapSquare wrapText=\"bothSides\"/>");
        var pic = Picture(both);
        var runs = WordRuns(both).Where(r => r.Y > pic.Y + 12 && r.Y < pic.Y + pic.Height).ToList();
        Assert.NotEmpty(runs);
        // Each line beside the picture has a piece on its left and a piece on its right, none across it.
        foreach (var y in runs.Select(r => r.Y).Distinct())
        {
            Assert.Contains(runs, r => r.Y == y && r.Right < pic.X);
            Assert.Contains(runs, r => r.Y == y && r.Left >= pic.X + pic.Width - 0.5);
        }
        Assert.DoesNotContain(runs, r => r.Right > pic.X && r.Left < pic.X + pic.Width);

        var right = Square(centre, "<wp:wrapSquare wrapText=\"right\"/>");
        var rightRuns = WordRuns(right).Where(r => r.Y > pic.Y + 12 && r.Y < pic.Y + pic.Height).ToList();
        Assert.NotEmpty(rightRuns);
        Assert.All(rightRuns, r => Assert.True(r.Left >= pic.X + pic.Width - 0.5));
        var left = Square(centre, "<wp:wrapSquare wrapText=\"left\"/>");
        var leftRuns = WordRuns(left).Where(r => r.Y > pic.Y + 12 && r.Y < pic.Y + pic.Height).ToList();
        Assert.NotEmpty(leftRuns);
        Assert.All(leftRuns, r => Assert.True(r.Right < pic.X));
    }

    [Fact]
    public void LargestSideTightWrappingAndAPictureWithNoRoomBesideIt()
    {
        // 50 points from the margin: the right side is the larger one.
        var largest = Square("<wp:positionH relativeFrom=\"margin\"><wp:posOffset>635000</wp:posOffset></wp:positionH>",
            "<wp:wrapSquare wrapText=\"largest\"/>");
        var pic = Picture(largest);
        var runs = WordRuns(largest).Where(r => r.Y > pic.Y + 12 && r.Y < pic.Y + pic.Height).ToList();
        Assert.NotEmpty(runs);
        Assert.All(runs, r => Assert.True(r.Left >= pic.X + pic.Width - 0.5));
        // Tight wrapping follows the bounding box: the same lines as square.
        var square = Square("<wp:positionH relativeFrom=\"margin\"><wp:align>right</wp:align></wp:positionH>", "<wp:wrapSquare wrapText=\"bothSides\"/>");
        var tight = Square("<wp:positionH relativeFrom=\"margin\"><wp:align>right</wp:align></wp:positionH>", "<wp:wrapTight wrapText=\"bothSides\"/>");
        Assert.Equal(LayoutProbe.Lines(square, 0), LayoutProbe.Lines(tight, 0));
        var sq = Picture(square);
        Assert.All(WordRuns(square).Where(r => r.Y > sq.Y + 12 && r.Y < sq.Y + sq.Height), r => Assert.True(r.Right < sq.X));
        // A picture as wide as the column leaves no room beside it: text goes below, as with top and bottom.
        var wide = Square("<wp:positionH relativeFrom=\"page\"><wp:posOffset>0</wp:posOffset></wp:positionH>",
            "<wp:wrapSquare wrapText=\"bothSides\" distR=\"6350000\"/>");
        var w = Picture(wide);
        Assert.All(WordRuns(wide), r => Assert.True(r.Y > w.Y + w.Height || r.Y < w.Y));
    }
}
