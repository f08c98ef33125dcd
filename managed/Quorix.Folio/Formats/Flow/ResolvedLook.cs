namespace Quorix.Folio.Formats.Flow;

/// <summary>Character formatting as a reader sees it, resolved through styles, as one value to compare
/// and to carry between formats. <see cref="Default"/> is what a format without document defaults
/// assumes where nothing is said (Times New Roman, 10 pt).</summary>
internal readonly record struct RunLook(
    string Name, double Size, bool Bold, bool Italic, Underline Underline, bool Strike, bool DoubleStrike,
    bool Caps, bool SmallCaps, bool Hidden, bool Superscript, bool Subscript, string Color)
{
    public static readonly RunLook Default = new("Times New Roman", 10, false, false, Underline.None, false, false, false, false, false, false, false, "auto");

    public static RunLook Of(Font f) => new(f.Name, f.Size, f.Bold, f.Italic, f.Underline, f.StrikeThrough, f.DoubleStrikeThrough,
        f.AllCaps, f.SmallCaps, f.Hidden, f.Superscript, f.Subscript, f.ColorHex);

    /// <summary>Sets on <paramref name="f"/> what differs from <paramref name="baseline"/>.</summary>
    public void ApplyTo(Font f, RunLook baseline)
    {
        if (Name != baseline.Name) f.Name = Name;
        if (Size != baseline.Size) f.Size = Size;
        if (Bold != baseline.Bold) f.Bold = Bold;
        if (Italic != baseline.Italic) f.Italic = Italic;
        if (Underline != baseline.Underline) f.Underline = Underline;
        if (Strike != baseline.Strike) f.StrikeThrough = Strike;
        if (DoubleStrike != baseline.DoubleStrike) f.DoubleStrikeThrough = DoubleStrike;
        if (Caps != baseline.Caps) f.AllCaps = Caps;
        if (SmallCaps != baseline.SmallCaps) f.SmallCaps = SmallCaps;
        if (Hidden != baseline.Hidden) f.Hidden = Hidden;
        if (Superscript != baseline.Superscript) f.Superscript = Superscript;
        if (Subscript != baseline.Subscript) f.Subscript = Subscript;
        if (Color != baseline.Color) f.ColorHex = Color;
    }
}

/// <summary>Paragraph formatting as a reader sees it, resolved through styles.</summary>
internal readonly record struct ParaLook(
    ParagraphAlignment Alignment, double Left, double Right, double FirstLine, double Before, double After,
    LineSpacingRule LineRule, double Line, bool KeepLines, bool KeepNext, bool PageBreakBefore, OutlineLevel Outline)
{
    public static readonly ParaLook Default = new(ParagraphAlignment.Left, 0, 0, 0, 0, 0, LineSpacingRule.Multiple, 12, false, false, false, OutlineLevel.BodyText);

    public static ParaLook Of(ParagraphFormat p) => new(p.Alignment, p.LeftIndent, p.RightIndent, p.FirstLineIndent, p.SpaceBefore, p.SpaceAfter,
        p.LineSpacingRule, p.LineSpacing, p.KeepTogether, p.KeepWithNext, p.PageBreakBefore, p.OutlineLevel);

    public void ApplyTo(ParagraphFormat p, ParaLook baseline)
    {
        if (Alignment != baseline.Alignment) p.Alignment = Alignment;
        if (Left != baseline.Left) p.LeftIndent = Left;
        if (Right != baseline.Right) p.RightIndent = Right;
        if (FirstLine != baseline.FirstLine) p.FirstLineIndent = FirstLine;
        if (Before != baseline.Before) p.SpaceBefore = Before;
        if (After != baseline.After) p.SpaceAfter = After;
        if (LineRule != baseline.LineRule || Line != baseline.Line)
        {
            p.LineSpacingRule = LineRule;
            p.LineSpacing = Line;
        }
        if (KeepLines != baseline.KeepLines) p.KeepTogether = KeepLines;
        if (KeepNext != baseline.KeepNext) p.KeepWithNext = KeepNext;
        if (PageBreakBefore != baseline.PageBreakBefore) p.PageBreakBefore = PageBreakBefore;
        if (Outline != baseline.Outline) p.OutlineLevel = Outline;
    }
}
