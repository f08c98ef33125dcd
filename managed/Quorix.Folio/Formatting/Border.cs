using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>One border line of a run, paragraph, cell or table.</summary>
public sealed class Border
{
    private readonly PropBag bag;
    private readonly string local;

    internal Border(PropBag bag, string local)
    {
        this.bag = bag;
        this.local = local;
    }

    private PropElement? Element => bag.Find(local);

    /// <summary>The border's line; None for no border.</summary>
    public LineStyle LineStyle
    {
        get => Element?.Get("val") switch
        {
            null or "none" or "nil" => LineStyle.None,
            "thick" => LineStyle.Thick,
            "double" => LineStyle.Double,
            "dotted" => LineStyle.Dot,
            "dashed" => LineStyle.DashLargeGap,
            _ => LineStyle.Single,
        };
        set
        {
            var v = value switch
            {
                LineStyle.None => "none",
                LineStyle.Single => "single",
                LineStyle.Thick => "thick",
                LineStyle.Double => "double",
                LineStyle.Dot => "dotted",
                LineStyle.DashLargeGap => "dashed",
                _ => throw new ArgumentOutOfRangeException(nameof(value)),
            };
            var e = bag.GetOrAdd(local).Set("val", v);
            if (e.Get("sz") == null) e.Set("sz", "4");
            if (e.Get("space") == null) e.Set("space", "0");
            if (e.Get("color") == null) e.Set("color", "auto");
        }
    }

    /// <summary>Line width in points.</summary>
    public double LineWidth
    {
        get => (Units.ParseInt(Element?.Get("sz")) ?? 0) / 8.0;
        set
        {
            Units.CheckRange(value, 0, 12, nameof(value));
            bag.GetOrAdd(local).Set("sz", Units.Str((int)Math.Round(value * 8)));
        }
    }

    /// <summary>Distance of the line from the text, in points.</summary>
    public double DistanceFromText
    {
        get => Units.ParseInt(Element?.Get("space")) ?? 0;
        set
        {
            Units.CheckRange(value, 0, 31, nameof(value));
            bag.GetOrAdd(local).Set("space", Units.Str((int)Math.Round(value)));
        }
    }

    /// <summary>Whether the border is drawn.</summary>
    public bool IsVisible => LineStyle != LineStyle.None;

    /// <summary>Removes the border's own formatting, leaving what styles give.</summary>
    public void ClearFormatting() => bag.Remove(local);
}

/// <summary>Background shading of a run, paragraph or cell.</summary>
public sealed class Shading
{
    private readonly PropBag bag;

    internal Shading(PropBag bag) { this.bag = bag; }

    /// <summary>The shading's pattern.</summary>
    public TextureIndex Texture
    {
        get => bag.Find("shd")?.Get("val") switch
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
            var e = bag.GetOrAdd("shd").Set("val", v);
            if (e.Get("color") == null) e.Set("color", "auto");
            if (e.Get("fill") == null) e.Set("fill", "auto");
        }
    }

    /// <summary>Fill colour as six hexadecimal digits, or "auto".</summary>
    public string BackgroundPatternColorHex
    {
        get => bag.Find("shd")?.Get("fill") ?? "auto";
        set
        {
            var e = bag.GetOrAdd("shd");
            if (e.Get("val") == null) e.Set("val", "clear");
            if (e.Get("color") == null) e.Set("color", "auto");
            e.Set("fill", value);
        }
    }

    /// <summary>Removes the shading's own formatting, leaving what styles give.</summary>
    public void ClearFormatting() => bag.Remove("shd");
}
