using System.Globalization;
using System.Net;
using System.Text.RegularExpressions;
using Quorix.Folio.Drawing;

namespace Quorix.Folio;

/// <summary>What a watermark in a header shows, for outputs that draw it themselves instead of keeping
/// the drawing: a text stretched over a box (turned about its centre, in a colour with an opacity), or
/// a picture, each centred on the page's text area. Read from the shapes our <see cref="Watermark"/>
/// writes and from those word processors write, which have the same form.</summary>
internal sealed record WatermarkMark(string? Text, Shape? Picture, string FontFamily, double Width, double Height,
    double Rotation, string ColorHex, double Opacity)
{
    /// <summary>Whether a picture is drawn faded, as word processors wash a watermark picture out.</summary>
    public bool Washout => Picture != null && Watermark.IsWashedOut(Picture);

    /// <summary>The colour with the opacity as alpha, 0xAARRGGBB.</summary>
    public uint Argb => (uint)Math.Round(Math.Clamp(Opacity, 0, 1) * 255) << 24 | uint.Parse(ColorHex, NumberStyles.HexNumber, CultureInfo.InvariantCulture);

    /// <summary>The watermark the node is, or null for any other node.</summary>
    public static WatermarkMark? Of(Node n) => n switch
    {
        OpaqueNode o when o.Xml.Contains(Watermark.TextShapeId, StringComparison.Ordinal) => OfText(o.Xml),
        Shape s when s.HasImage && Watermark.IsPicture(s) => new WatermarkMark(null, s, "", s.Width, s.Height, 0, "000000", 1),
        _ => null,
    };

    /// <summary>The text watermark a VML drawing shows, or null.</summary>
    public static WatermarkMark? OfVml(string xml) => xml.Contains(Watermark.TextShapeId, StringComparison.Ordinal) ? OfText(xml) : null;

    /// <summary>The options that make a text watermark look like this one.</summary>
    public TextWatermarkOptions Options() => new()
    {
        FontFamily = FontFamily,
        ColorHex = ColorHex,
        IsSemitransparent = Opacity < 1,
        Layout = Rotation != 0 ? WatermarkLayout.Diagonal : WatermarkLayout.Horizontal,
    };

    /// <summary>The first watermark in a header, or null.</summary>
    public static WatermarkMark? In(HeaderFooter? header)
    {
        if (header == null) return null;
        for (Node? n = header.FirstChild; n != null; n = n.NextPreOrder(header))
            if (n is OpaqueNode or Shape && Of(n) is { } mark) return mark;
        return null;
    }

    private static readonly Regex ShapeStyle = new(@"<v:shape\b[^>]*?\sstyle=""([^""]*)""", RegexOptions.CultureInvariant);
    private static readonly Regex FillColor = new(@"<v:shape\b[^>]*?\sfillcolor=""([^""]*)""", RegexOptions.CultureInvariant);
    private static readonly Regex FillOpacity = new(@"<v:fill\b[^>]*?\sopacity=""([^""]*)""", RegexOptions.CultureInvariant);
    private static readonly Regex TextPath = new(@"<v:textpath\b(?=[^>]*?\sstring=""([^""]*)"")(?:[^>]*?\sstyle=""([^""]*)"")?", RegexOptions.CultureInvariant);

    private static WatermarkMark? OfText(string xml)
    {
        var path = TextPath.Match(xml);
        if (!path.Success) return null;
        var text = WebUtility.HtmlDecode(path.Groups[1].Value);
        if (text.Length == 0) return null;
        var style = WebUtility.HtmlDecode(ShapeStyle.Match(xml).Groups[1].Value);
        var font = Declaration(WebUtility.HtmlDecode(path.Groups[2].Value), "font-family")?.Trim('"', '\'', ' ') is { Length: > 0 } f ? f : "Calibri";
        double width = Length(Declaration(style, "width")) ?? 400, height = Length(Declaration(style, "height")) ?? 100;
        double rotation = double.TryParse(Declaration(style, "rotation"), NumberStyles.Float, CultureInfo.InvariantCulture, out var r) ? r : 0;
        var opacity = FillOpacity.Match(xml) is { Success: true } m ? Fraction(m.Groups[1].Value) : 1;
        return new WatermarkMark(text, null, font, width, height, rotation, Color(FillColor.Match(xml).Groups[1].Value), opacity);
    }

    private static string? Declaration(string style, string name)
    {
        foreach (var part in style.Split(';'))
        {
            int colon = part.IndexOf(':');
            if (colon > 0 && part.AsSpan(0, colon).Trim().Equals(name, StringComparison.OrdinalIgnoreCase)) return part[(colon + 1)..].Trim();
        }
        return null;
    }

    /// <summary>A VML length in points; a bare number counts as pixels, as VML styles have it.</summary>
    private static double? Length(string? v)
    {
        if (string.IsNullOrEmpty(v)) return null;
        (string unit, double factor) = v.EndsWith("pt", StringComparison.Ordinal) ? ("pt", 1.0)
            : v.EndsWith("in", StringComparison.Ordinal) ? ("in", 72.0)
            : v.EndsWith("cm", StringComparison.Ordinal) ? ("cm", 72 / 2.54)
            : v.EndsWith("mm", StringComparison.Ordinal) ? ("mm", 72 / 25.4)
            : v.EndsWith("px", StringComparison.Ordinal) ? ("px", 0.75) : ("", 0.75);
        return double.TryParse(v.AsSpan(0, v.Length - unit.Length), NumberStyles.Float, CultureInfo.InvariantCulture, out var n) && n > 0 ? n * factor : null;
    }

    /// <summary>A VML fraction: ".5", or "32768f" in 65536ths.</summary>
    private static double Fraction(string v) =>
        v.EndsWith('f') && double.TryParse(v.AsSpan(0, v.Length - 1), NumberStyles.Float, CultureInfo.InvariantCulture, out var f) ? Math.Clamp(f / 65536, 0, 1)
        : double.TryParse(v, NumberStyles.Float, CultureInfo.InvariantCulture, out var d) ? Math.Clamp(d, 0, 1) : 1;

    // The colour names VML takes from HTML, as word processors write the usual watermark greys.
    private static readonly Dictionary<string, string> Named = new(StringComparer.OrdinalIgnoreCase)
    {
        ["silver"] = "C0C0C0", ["gray"] = "808080", ["grey"] = "808080", ["black"] = "000000", ["white"] = "FFFFFF",
        ["red"] = "FF0000", ["maroon"] = "800000", ["green"] = "008000", ["lime"] = "00FF00", ["blue"] = "0000FF",
        ["navy"] = "000080", ["yellow"] = "FFFF00", ["olive"] = "808000", ["aqua"] = "00FFFF", ["teal"] = "008080",
        ["fuchsia"] = "FF00FF", ["purple"] = "800080",
    };

    /// <summary>A VML colour ("#C0C0C0", "#ccc", "silver", "#C0C0C0 [3212]") as six hexadecimal digits; grey when unknown.</summary>
    private static string Color(string v)
    {
        v = v.Split(' ', 2)[0];
        if (v.StartsWith('#'))
        {
            var hex = v[1..];
            if (hex.Length == 3) hex = string.Concat(hex.Select(c => new string(c, 2)));
            if (hex.Length == 6 && int.TryParse(hex, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out _)) return hex.ToUpperInvariant();
        }
        return Named.GetValueOrDefault(v, "C0C0C0");
    }
}
