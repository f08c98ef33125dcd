using Quorix.Folio.Formatting;

namespace Quorix.Folio.Formats.WordML;

/// <summary>The namespaces of WordprocessingML 2003 and its companions.</summary>
internal static class WordMLNs
{
    public const string W = "http://schemas.microsoft.com/office/word/2003/wordml";
    public const string Wx = "http://schemas.microsoft.com/office/word/2003/auxHint";
    public const string V = "urn:schemas-microsoft-com:vml";
    public const string O = "urn:schemas-microsoft-com:office:office";
    public const string Aml = "http://schemas.microsoft.com/aml/2001/core";
}

/// <summary>The character formatting the format carries, resolved; the format has no document
/// defaults, so what a style or run does not say is the format's own default (Times New Roman, 10 pt).</summary>
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

/// <summary>The paragraph formatting the format carries, resolved, with the format's defaults.</summary>
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

/// <summary>The format's words for values the model names by enumeration.</summary>
internal static class WordMLValues
{
    public static string Align(ParagraphAlignment a) => a switch
    {
        ParagraphAlignment.Center => "center",
        ParagraphAlignment.Right => "right",
        ParagraphAlignment.Justify => "both",
        ParagraphAlignment.Distributed => "distribute",
        _ => "left",
    };

    public static ParagraphAlignment Align(string? v) => v switch
    {
        "center" => ParagraphAlignment.Center,
        "right" => ParagraphAlignment.Right,
        "both" => ParagraphAlignment.Justify,
        "distribute" => ParagraphAlignment.Distributed,
        _ => ParagraphAlignment.Left,
    };

    // The format's underline names are the later format's, except those it spells with hyphens.
    public static string Underline(Underline u) => u switch
    {
        Folio.Underline.DotDash => "dot-dash",
        Folio.Underline.DotDotDash => "dot-dot-dash",
        _ => Font.UnderlineToXml(u),
    };

    public static Underline Underline(string? v) => v switch
    {
        null or "" => Folio.Underline.Single,
        "dot-dash" => Folio.Underline.DotDash,
        "dot-dot-dash" => Folio.Underline.DotDotDash,
        _ => Font.UnderlineFromXml(v),
    };

    /// <summary>The model's number styles are the format's "nfc" codes.</summary>
    public static Folio.NumberStyle NumberStyle(int nfc) =>
        Enum.IsDefined((Folio.NumberStyle)nfc) ? (Folio.NumberStyle)nfc : Folio.NumberStyle.Arabic;

    public static bool On(string? v) => v is null or "on" or "1" or "true";

    public static int Twips(double pt) => (int)Math.Round(pt * 20);
}
