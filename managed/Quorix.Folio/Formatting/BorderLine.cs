namespace Quorix.Folio.Formatting;

/// <summary>One border line as the model holds it: its line style name, width in eighths of a point,
/// distance from the text in points and colour; what the file left out stays null. Immutable, compared
/// by value, so equal borders share sets.</summary>
internal sealed record BorderLine(string Style, int? Size, int? Space, string? Color, string? ThemeColor = null,
    string? ThemeTint = null, string? ThemeShade = null, bool Shadow = false, bool Frame = false)
{
    public static readonly BorderLine None = new("none", 0, 0, null);

    /// <summary>Whether the line is drawn.</summary>
    public bool Visible => Style is not ("none" or "nil");

    public LineStyle LineStyle => Style switch
    {
        "none" or "nil" => LineStyle.None,
        "thick" => LineStyle.Thick,
        "double" => LineStyle.Double,
        "dotted" => LineStyle.Dot,
        "dashed" => LineStyle.DashLargeGap,
        _ => LineStyle.Single,
    };

    /// <summary>The line style's stored name; throws for a style the model cannot store.</summary>
    public static string StyleName(LineStyle style) => style switch
    {
        LineStyle.None => "none",
        LineStyle.Single => "single",
        LineStyle.Thick => "thick",
        LineStyle.Double => "double",
        LineStyle.Dot => "dotted",
        LineStyle.DashLargeGap => "dashed",
        _ => throw new ArgumentOutOfRangeException(nameof(style)),
    };
}
