namespace Quorix.Folio.Layout;

/// <summary>A dropped capital: the paragraph holding it is set as one line whose baseline is that of
/// the next paragraph's last dropped line, beside those lines (pushed right by the capital's
/// width and its distance from the text) or in the margin before them.</summary>
internal static class DropCap
{
    public static List<Block> Lay(LayoutContext ctx, Paragraph cap, Paragraph body, double width)
    {
        var pf = cap.ParagraphFormat;
        var capLines = ParagraphLayout.Lay(ctx, cap, width);
        var capItems = ((ItemsBlock)capLines[0]).Items;
        var runs = capItems.OfType<GlyphRun>().ToList();
        if (runs.Count == 0) return capLines.Concat(ParagraphLayout.Lay(ctx, body, width)).ToList();
        double capLeft = runs.Min(r => r.X + r.Xs[0]);
        double capWidth = runs.Max(r => r.X + r.Xs[^1] + Advance(r)) - capLeft;
        double gap = Formatting.Units.ParseInt(cap.PPr.Find("framePr")?.Get("hSpace")) is { } twips ? Formatting.Units.TwipsToPoints(twips) : 0;
        bool inMargin = pf.DropCapPosition == DropCapPosition.Margin;
        int lines = pf.LinesToDrop;
        var blocks = ParagraphLayout.Lay(ctx, body, width, inMargin ? 0 : lines, inMargin ? 0 : capWidth + gap);
        // The capital's baseline goes on the baseline of the last line it spans.
        int last = Math.Min(lines, blocks.Count) - 1;
        double top = 0;
        for (int i = 0; i < last; i++) top += blocks[i].Height;
        double baseline = top + (((ItemsBlock)blocks[last]).Items.OfType<GlyphRun>().FirstOrDefault()?.Y ?? blocks[last].Height);
        // The first line starts after the capital and its distance, whether that pushed it right or not.
        var first = (ItemsBlock)blocks[0];
        double lineLeft = first.Items.OfType<LineBox>().FirstOrDefault()?.X ?? 0;
        double dy = baseline - runs[0].Y, dx = lineLeft - capWidth - gap - capLeft;
        first.Items.AddRange(capItems.Where(i => i is not LineBox).Select(i => i.Moved(dx, dy)));
        first.Nodes.AddRange(capLines[0].Nodes);
        blocks[0].SpaceBefore = Math.Max(blocks[0].SpaceBefore, capLines[0].SpaceBefore);
        // Laid again beside a shape, the lines would lose the capital: they stay as they are.
        foreach (var b in blocks) ((ItemsBlock)b).Origin = null;
        return blocks;
    }

    private static double Advance(GlyphRun r) => r.Font.Face.Shaper.GetHorizontalGlyphAdvance(r.Glyphs[^1]) * r.Size / r.Font.Face.UnitsPerEm;
}
