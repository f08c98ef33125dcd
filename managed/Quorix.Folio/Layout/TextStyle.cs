using System.Globalization;
using Quorix.Folio.Fonts;

namespace Quorix.Folio.Layout;

/// <summary>The resolved character formatting the layout needs, read through the public <see cref="Font"/>.</summary>
internal sealed record TextStyle(ResolvedFont Font, double Size, uint Color, bool Underline, bool Strike, double Rise, bool Caps)
{
    public const uint Black = 0xFF000000;

    public static TextStyle Of(Font f, LayoutContext ctx)
    {
        var size = f.Size;
        double rise = 0;
        // Superscript and subscript text is set smaller and moved off the baseline.
        if (f.Superscript) { rise = size / 3; size *= 2.0 / 3; }
        else if (f.Subscript) { rise = -size / 6; size *= 2.0 / 3; }
        var name = ctx.ThemeFont(f.LatinThemeSlot) ?? f.Name;
        return new TextStyle(ctx.Font(name, f.Bold, f.Italic), size, ParseColor(f.ColorHex), f.Underline != Quorix.Folio.Underline.None,
            f.StrikeThrough || f.DoubleStrikeThrough, rise, f.AllCaps);
    }

    public static uint ParseColor(string? hex) =>
        hex != null && hex.Length == 6 && uint.TryParse(hex, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out var rgb) ? 0xFF000000 | rgb : Black;

    public double Ascent => Font.Face.Ascent * Size + Math.Max(0, Rise);

    public double Descent => Font.Face.Descent * Size + Math.Max(0, -Rise);

    public double Gap => Font.Face.LineGap * Size;
}
