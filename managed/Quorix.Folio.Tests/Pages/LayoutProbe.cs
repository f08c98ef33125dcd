using Quorix.Folio.Layout;
using SkiaSharp;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Reads laid-out pages back as lines of text with their extents, and measures text with
/// Skia's own measuring (not the shaping the layout uses), so tests can check the layout's arithmetic.</summary>
internal static class LayoutProbe
{
    internal sealed record TextLine(double Y, double Left, double Right, string Text);

    public static List<TextLine> Lines(Document doc, int page)
    {
        var runs = doc.PageLayout.Pages[page].Items.OfType<GlyphRun>().OrderBy(r => r.Y).ThenBy(r => r.X + r.Xs[0]).ToList();
        var lines = new List<TextLine>();
        foreach (var group in Group(runs))
        {
            var ordered = group.OrderBy(r => r.X + r.Xs[0]).ToList();
            var last = ordered[^1];
            // Right edge of the last visible character; runs of Latin text here have one glyph per character.
            int end = last.Text.TrimEnd().Length - 1;
            double right = end < 0 ? last.X + last.Xs[0] : last.X + last.Xs[end] + Measure(last.Font.Face.Typeface, last.Size, last.Text[end..(end + 1)]);
            // Raised marks (note references) sit on the line of the biggest text.
            lines.Add(new TextLine(group.MaxBy(r => r.Size)!.Y, ordered[0].X + ordered[0].Xs[0], right, string.Concat(ordered.Select(r => r.Text))));
        }
        return lines;
    }

    private static IEnumerable<List<GlyphRun>> Group(List<GlyphRun> runs)
    {
        var current = new List<GlyphRun>();
        foreach (var r in runs)
        {
            // Runs within a third of their size of each other's baseline are raised or lowered text of one line.
            if (current.Count > 0 && Math.Abs(current[^1].Y - r.Y) > Math.Max(current[^1].Size, r.Size) / 3 + 0.5) { yield return current; current = new List<GlyphRun>(); }
            current.Add(r);
        }
        if (current.Count > 0) yield return current;
    }

    public static double Measure(SKTypeface face, double size, string text)
    {
        using var font = new SKFont(face, (float)size) { Subpixel = true, LinearMetrics = true, Hinting = SKFontHinting.None };
        return font.MeasureText(text);
    }

    /// <summary>Every page's text, in order, one string per page.</summary>
    public static List<string> PageTexts(Document doc) =>
        Enumerable.Range(0, doc.PageCount).Select(p => string.Join("\n", Lines(doc, p).Select(l => l.Text))).ToList();

    public static int PageOf(Document doc, string marker)
    {
        var texts = PageTexts(doc);
        int found = texts.FindIndex(t => t.Contains(marker, StringComparison.Ordinal));
        Assert.True(found >= 0, $"'{marker}' is on no page");
        return found;
    }
}
