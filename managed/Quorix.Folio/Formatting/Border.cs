using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>One border line of a run, paragraph, cell, table or page.</summary>
public sealed class Border
{
    private readonly AttrHost host;
    private readonly FormatAttr side;

    internal Border(AttrHost host, FormatAttr side)
    {
        this.host = host;
        this.side = side;
    }

    internal BorderLine? Line => host.Get(side) as BorderLine;

    // A new line starts as a thin automatic-coloured one, as word processors draw it.
    private BorderLine Editable => host.Own.Get(side) as BorderLine ?? Line ?? new BorderLine("none", 4, 0, "auto");

    /// <summary>The border's line; None for no border.</summary>
    public LineStyle LineStyle
    {
        get => Line?.LineStyle ?? LineStyle.None;
        set => host.Set(side, Editable with { Style = BorderLine.StyleName(value) });
    }

    /// <summary>Line width in points.</summary>
    public double LineWidth
    {
        get => (Line?.Size ?? 0) / 8.0;
        set
        {
            Units.CheckRange(value, 0, 12, nameof(value));
            host.Set(side, Editable with { Size = (int)Math.Round(value * 8) });
        }
    }

    /// <summary>Distance of the line from the text, in points.</summary>
    public double DistanceFromText
    {
        get => Line?.Space ?? 0;
        set
        {
            Units.CheckRange(value, 0, 31, nameof(value));
            host.Set(side, Editable with { Space = (int)Math.Round(value) });
        }
    }

    /// <summary>The line's colour as six hexadecimal digits, or "auto".</summary>
    public string ColorHex
    {
        get => Line?.Color ?? "auto";
        set
        {
            Shading.CheckColor(value);
            host.Set(side, Editable with { Color = value == "auto" ? value : value.ToUpperInvariant(), ThemeColor = null, ThemeTint = null, ThemeShade = null });
        }
    }

    /// <summary>Whether the border is drawn.</summary>
    public bool IsVisible => Line?.Visible ?? false;

    /// <summary>Removes the border's own formatting, leaving what styles give.</summary>
    public void ClearFormatting() => host.Set(side, null);
}

/// <summary>Background shading of a run, paragraph, table or cell.</summary>
public sealed class Shading
{
    private readonly AttrHost host;

    internal Shading(AttrHost host) { this.host = host; }

    /// <summary>The shading's pattern.</summary>
    public TextureIndex Texture
    {
        get => host.Get(FormatAttr.ShadingPattern) switch
        {
            "solid" => TextureIndex.TextureSolid,
            "pct10" => TextureIndex.Texture10Percent,
            "pct20" => TextureIndex.Texture20Percent,
            "pct25" => TextureIndex.Texture25Percent,
            "pct50" => TextureIndex.Texture50Percent,
            "pct75" => TextureIndex.Texture75Percent,
            _ => TextureIndex.TextureNone,
        };
        set
        {
            var v = value switch
            {
                TextureIndex.TextureNone => "clear",
                TextureIndex.TextureSolid => "solid",
                TextureIndex.Texture10Percent => "pct10",
                TextureIndex.Texture20Percent => "pct20",
                TextureIndex.Texture25Percent => "pct25",
                TextureIndex.Texture50Percent => "pct50",
                TextureIndex.Texture75Percent => "pct75",
                _ => throw new ArgumentOutOfRangeException(nameof(value)),
            };
            Put(v, null);
        }
    }

    /// <summary>Fill colour as six hexadecimal digits, or "auto".</summary>
    public string BackgroundPatternColorHex
    {
        get => host.Get(FormatAttr.ShadingFill) as string ?? "auto";
        set
        {
            CheckColor(value);
            Put(null, value == "auto" ? value : value.ToUpperInvariant());
        }
    }

    // Pattern, colour and fill are one setting: a change keeps the others the owner shows.
    private void Put(string? pattern, string? fill)
    {
        var own = host.Own;
        bool has = own.HasGroup(FormatAttr.ShadingPattern);
        string Shown(FormatAttr a, string fallback) => (has ? own.Get(a) : host.Get(a)) as string ?? fallback;
        host.Put(own.With(FormatAttr.ShadingPattern, pattern ?? Shown(FormatAttr.ShadingPattern, "clear"))
            .With(FormatAttr.ShadingColor, Shown(FormatAttr.ShadingColor, "auto"))
            .With(FormatAttr.ShadingFill, fill ?? Shown(FormatAttr.ShadingFill, "auto")));
    }

    internal static void CheckColor(string value)
    {
        ArgumentNullException.ThrowIfNull(value);
        if (value != "auto" && (value.Length != 6 || !value.All(Uri.IsHexDigit)))
            throw new ArgumentException($"'{value}' is not a colour: give six hexadecimal digits or \"auto\".", nameof(value));
    }

    /// <summary>Removes the shading's own formatting, leaving what styles give.</summary>
    public void ClearFormatting() => host.Put(host.Own.WithoutGroup(FormatAttr.ShadingPattern));
}
