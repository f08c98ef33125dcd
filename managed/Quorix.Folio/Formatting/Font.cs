using System.Globalization;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Character formatting of a run, a style or the builder's next runs.</summary>
public sealed class Font
{
    internal readonly PropBag Bag;
    private readonly DocumentBase? doc;
    // Style chain consulted when the run says nothing itself.
    private readonly Func<BagChain>? inherited;

    internal Font(PropBag bag, DocumentBase? doc, Func<BagChain>? inherited = null)
    {
        Bag = bag;
        this.doc = doc;
        this.inherited = inherited;
    }

    private PropElement? Lookup(string local)
    {
        var e = Bag.Find(local);
        if (e != null || inherited == null) return e;
        return inherited().Find(local);
    }

    /// <summary>The nearest font-name element that names a Latin font, directly or by theme: one that
    /// names only an East Asian font does not hide the style's Latin one.</summary>
    private PropElement? LatinFonts()
    {
        static bool Names(PropElement e) => e.Get("ascii") != null || e.Get("asciiTheme") != null || e.Get("hAnsi") != null;
        var e = Bag.Find("rFonts");
        if (e != null && Names(e)) return e;
        return inherited?.Invoke().Find("rFonts", Names);
    }

    /// <summary>The theme font ("minorHAnsi", "majorHAnsi", ...) the Latin font is taken from, if any;
    /// a theme reference wins over a name beside it.</summary>
    internal string? LatinThemeSlot
    {
        get
        {
            var e = LatinFonts();
            return e?.Get("asciiTheme") ?? (e?.Get("ascii") == null ? e?.Get("hAnsiTheme") : null);
        }
    }

    private bool Toggle(string local)
    {
        var e = Lookup(local);
        if (e == null) return false;
        var v = e.Get("val");
        return v == null || !(v == "0" || v == "false" || v == "off");
    }

    /// <summary>Switching a property off only writes an explicit "off" where a style would switch it on.</summary>
    private void SetToggle(string local, bool value, string? complexScript = null)
    {
        if (!value && !InheritedToggle(local))
        {
            Bag.Remove(local);
            if (complexScript != null) Bag.Remove(complexScript);
            return;
        }
        Bag.SetToggle(local, value);
        if (complexScript != null) Bag.SetToggle(complexScript, value);
    }

    private bool InheritedToggle(string local)
    {
        return inherited?.Invoke().Toggle(local) ?? false;
    }

    public string Name
    {
        get
        {
            var e = LatinFonts();
            return e?.Get("ascii") ?? e?.Get("hAnsi") ?? "Times New Roman";
        }
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            var e = Bag.GetOrAdd("rFonts");
            // Theme font references would override an explicit name in every reader.
            e.Attrs?.RemoveAll(a => a.Local.EndsWith("Theme", StringComparison.Ordinal));
            e.Set("ascii", value).Set("hAnsi", value).Set("cs", value).Set("eastAsia", value);
        }
    }

    /// <summary>Size in points.</summary>
    public double Size
    {
        get
        {
            var v = Units.ParseInt(Lookup("sz")?.Get("val"));
            return v.HasValue ? v.Value / 2.0 : 10.0;
        }
        set
        {
            Units.CheckRange(value, 1, 1638, nameof(value));
            var half = Units.Str((int)Math.Round(value * 2));
            Bag.SetVal("sz", half);
            Bag.SetVal("szCs", half);
        }
    }

    public bool Bold
    {
        get => Toggle("b");
        set => SetToggle("b", value, "bCs");
    }

    public bool Italic
    {
        get => Toggle("i");
        set => SetToggle("i", value, "iCs");
    }

    public bool StrikeThrough { get => Toggle("strike"); set => SetToggle("strike", value); }

    public bool DoubleStrikeThrough { get => Toggle("dstrike"); set => SetToggle("dstrike", value); }

    public bool AllCaps { get => Toggle("caps"); set => SetToggle("caps", value); }

    public bool SmallCaps { get => Toggle("smallCaps"); set => SetToggle("smallCaps", value); }

    public bool Hidden { get => Toggle("vanish"); set => SetToggle("vanish", value); }

    public bool Superscript
    {
        get => Lookup("vertAlign")?.Get("val") == "superscript";
        set => SetVertAlign("superscript", value);
    }

    public bool Subscript
    {
        get => Lookup("vertAlign")?.Get("val") == "subscript";
        set => SetVertAlign("subscript", value);
    }

    private void SetVertAlign(string kind, bool on)
    {
        if (on) Bag.SetVal("vertAlign", kind);
        else if (Bag.Val("vertAlign") == kind) Bag.Remove("vertAlign");
    }

    public Underline Underline
    {
        get => UnderlineFromXml(Lookup("u")?.Get("val"));
        set
        {
            if (!Enum.IsDefined(value)) throw new ArgumentOutOfRangeException(nameof(value));
            Bag.SetVal("u", UnderlineToXml(value));
        }
    }

    /// <summary>Text colour as six hexadecimal digits ("FF0000"), or "auto".</summary>
    public string ColorHex
    {
        get => Lookup("color")?.Get("val") ?? "auto";
        set
        {
            if (value != "auto" && (value.Length != 6 || !int.TryParse(value, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out _)))
                throw new ArgumentException("The colour must be six hexadecimal digits or \"auto\".", nameof(value));
            var e = Bag.GetOrAdd("color");
            e.Attrs = null;
            e.Set("val", value.ToUpperInvariant() == "AUTO" ? "auto" : value.ToUpperInvariant());
        }
    }

    public string StyleName
    {
        get => doc?.Styles.NameOfId(Bag.Val("rStyle")) ?? "Default Paragraph Font";
        set
        {
            var style = doc?.Styles[value] ?? throw new ArgumentException($"There is no style named '{value}'.", nameof(value));
            if (style.Type != StyleType.Character) throw new ArgumentException($"The style '{value}' is not a character style.", nameof(value));
            Bag.SetVal("rStyle", style.StyleId);
        }
    }

    public StyleIdentifier StyleIdentifier
    {
        get => doc?.Styles.FindById(Bag.Val("rStyle"))?.StyleIdentifier ?? StyleIdentifier.DefaultParagraphFont;
        set
        {
            var style = doc?.Styles.GetOrCreateBuiltIn(value) ?? throw new InvalidOperationException("The font is not attached to a document.");
            Bag.SetVal("rStyle", style.StyleId);
        }
    }

    public Border Border => new Border(Bag, "bdr");

    public Shading Shading => new Shading(Bag);

    public void ClearFormatting() => Bag.Clear();

    internal static Underline UnderlineFromXml(string? v) => v switch
    {
        null or "none" => Underline.None,
        "single" => Underline.Single,
        "words" => Underline.Words,
        "double" => Underline.Double,
        "dotted" => Underline.Dotted,
        "thick" => Underline.Thick,
        "dash" => Underline.Dash,
        "dotDash" => Underline.DotDash,
        "dotDotDash" => Underline.DotDotDash,
        "wave" => Underline.Wavy,
        _ => Underline.Single,
    };

    internal static string UnderlineToXml(Underline u) => u switch
    {
        Underline.None => "none",
        Underline.Single => "single",
        Underline.Words => "words",
        Underline.Double => "double",
        Underline.Dotted => "dotted",
        Underline.Thick => "thick",
        Underline.Dash => "dash",
        Underline.DotDash => "dotDash",
        Underline.DotDotDash => "dotDotDash",
        Underline.Wavy => "wave",
        _ => "single",
    };
}
