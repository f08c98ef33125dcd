using System.Globalization;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Character formatting of a run, a style or the builder's next runs.</summary>
public sealed class Font
{
    private readonly IRunFormatted owner;
    private readonly DocumentBase? doc;
    // What the owner inherits when it says nothing itself.
    private readonly Func<AttrSet>? inherited;

    internal Font(IRunFormatted owner, DocumentBase? doc, Func<AttrSet>? inherited = null)
    {
        this.owner = owner;
        this.doc = doc;
        this.inherited = inherited;
    }

    /// <summary>Character formatting held as markup (a style's, the defaults', a list level's).</summary>
    internal Font(PropBag bag, DocumentBase? doc, Func<AttrSet>? inherited = null) : this(new Docx.BagFormat(bag, Docx.PropsCodec.Run), doc, inherited) { }

    private AttrSet Own => owner.RunAttrs;

    /// <summary>The set that decides the attribute: the owner's own when it says anything of its group, else the inherited one.</summary>
    private AttrSet Deciding(FormatAttr a)
    {
        var own = Own;
        if (own.HasGroup(a) || inherited == null) return own;
        return inherited();
    }

    private object? Lookup(FormatAttr a) => Deciding(a).Get(a);

    private void Set(FormatAttr a, object? value) => Put(Own.With(a, value));

    // Equal formattings share one instance in the document. The stamp tells laid-out pages of the edit.
    private void Put(AttrSet set)
    {
        owner.RunAttrs = doc != null ? doc.Cascade.Shared(set) : set;
        FormatStamp.Bump();
    }

    /// <summary>The theme font ("minorHAnsi", "majorHAnsi", ...) the Latin font is taken from, if any;
    /// a theme reference wins over a name beside it.</summary>
    internal string? LatinThemeSlot
    {
        get
        {
            var set = Deciding(FormatAttr.LatinFont);
            return set.String(FormatAttr.LatinTheme) ?? (set.String(FormatAttr.LatinFont) == null ? set.String(FormatAttr.LatinThemeAlt) : null);
        }
    }

    private bool Toggle(FormatAttr a) => Lookup(a) is true;

    /// <summary>Switching a property off only writes an explicit "off" where a style would switch it on.</summary>
    private void SetToggle(FormatAttr a, bool value, FormatAttr? complexScript = null)
    {
        var set = Own;
        bool explicitOff = value || inherited?.Invoke().Get(a) is true;
        set = explicitOff ? set.With(a, value) : set.Without(a);
        if (complexScript is { } cs) set = explicitOff ? set.With(cs, value) : set.Without(cs);
        Put(set);
    }

    /// <summary>The name of the font the text is set in, such as "Calibri".</summary>
    public string Name
    {
        get
        {
            var set = Deciding(FormatAttr.LatinFont);
            return set.String(FormatAttr.LatinFont) ?? set.String(FormatAttr.LatinFontAlt) ?? "Times New Roman";
        }
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            // Theme font references would override an explicit name in every reader.
            Put(Own.WithoutGroup(FormatAttr.LatinFont).Without(FormatAttr.EastAsianTheme).Without(FormatAttr.ComplexTheme)
                .With(FormatAttr.LatinFont, value).With(FormatAttr.LatinFontAlt, value)
                .With(FormatAttr.ComplexFont, value).With(FormatAttr.EastAsianFont, value));
        }
    }

    /// <summary>Size in points.</summary>
    public double Size
    {
        get => Lookup(FormatAttr.Size) is int half ? half / 2.0 : 10.0;
        set
        {
            Units.CheckRange(value, 1, 1638, nameof(value));
            int half = (int)Math.Round(value * 2);
            Put(Own.With(FormatAttr.Size, half).With(FormatAttr.SizeComplex, half));
        }
    }

    /// <summary>Whether the text is bold.</summary>
    public bool Bold
    {
        get => Toggle(FormatAttr.Bold);
        set => SetToggle(FormatAttr.Bold, value, FormatAttr.BoldComplex);
    }

    /// <summary>Whether the text is italic.</summary>
    public bool Italic
    {
        get => Toggle(FormatAttr.Italic);
        set => SetToggle(FormatAttr.Italic, value, FormatAttr.ItalicComplex);
    }

    /// <summary>Whether the text is struck through with one line.</summary>
    public bool StrikeThrough { get => Toggle(FormatAttr.Strike); set => SetToggle(FormatAttr.Strike, value); }

    /// <summary>Whether the text is struck through with two lines.</summary>
    public bool DoubleStrikeThrough { get => Toggle(FormatAttr.DoubleStrike); set => SetToggle(FormatAttr.DoubleStrike, value); }

    /// <summary>Whether the text shows as capital letters, whatever its case.</summary>
    public bool AllCaps { get => Toggle(FormatAttr.AllCaps); set => SetToggle(FormatAttr.AllCaps, value); }

    /// <summary>Whether lower-case letters show as small capitals.</summary>
    public bool SmallCaps { get => Toggle(FormatAttr.SmallCaps); set => SetToggle(FormatAttr.SmallCaps, value); }

    /// <summary>Whether the text is hidden: kept in the document but neither shown nor printed.</summary>
    public bool Hidden { get => Toggle(FormatAttr.Hidden); set => SetToggle(FormatAttr.Hidden, value); }

    /// <summary>Whether the text is raised and made smaller, as in exponents.</summary>
    public bool Superscript
    {
        get => Lookup(FormatAttr.VerticalAlign) as string == "superscript";
        set => SetVertAlign("superscript", value);
    }

    /// <summary>Whether the text is lowered and made smaller, as in chemical formulas.</summary>
    public bool Subscript
    {
        get => Lookup(FormatAttr.VerticalAlign) as string == "subscript";
        set => SetVertAlign("subscript", value);
    }

    private void SetVertAlign(string kind, bool on)
    {
        if (on) Set(FormatAttr.VerticalAlign, kind);
        else if (Own.String(FormatAttr.VerticalAlign) == kind) Set(FormatAttr.VerticalAlign, null);
    }

    /// <summary>How the text is underlined, if at all.</summary>
    public Underline Underline
    {
        get => UnderlineFromXml(Lookup(FormatAttr.Underline) as string);
        set
        {
            if (!Enum.IsDefined(value)) throw new ArgumentOutOfRangeException(nameof(value));
            Set(FormatAttr.Underline, UnderlineToXml(value));
        }
    }

    /// <summary>Whether the owner sets the attribute itself rather than inheriting it.</summary>
    internal bool SaysItself(FormatAttr a) => Own.HasGroup(a);

    /// <summary>Text colour as six hexadecimal digits ("FF0000"), or "auto".</summary>
    public string ColorHex
    {
        get => Lookup(FormatAttr.Color) as string ?? "auto";
        set
        {
            if (value != "auto" && (value.Length != 6 || !int.TryParse(value, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out _)))
                throw new ArgumentException("The colour must be six hexadecimal digits or \"auto\".", nameof(value));
            Put(Own.WithoutGroup(FormatAttr.Color).With(FormatAttr.Color, value.ToUpperInvariant() == "AUTO" ? "auto" : value.ToUpperInvariant()));
        }
    }

    /// <summary>The name of the character style applied to the text.</summary>
    public string StyleName
    {
        get => doc?.Styles.NameOfId(Own.String(FormatAttr.CharStyle)) ?? "Default Paragraph Font";
        set
        {
            var style = doc?.Styles[value] ?? throw new ArgumentException($"There is no style named '{value}'.", nameof(value));
            if (style.Type != StyleType.Character) throw new ArgumentException($"The style '{value}' is not a character style.", nameof(value));
            Set(FormatAttr.CharStyle, style.StyleId);
        }
    }

    /// <summary>The character style applied to the text, when it is a built-in one; User otherwise.</summary>
    public StyleIdentifier StyleIdentifier
    {
        get => doc?.Styles.FindById(Own.String(FormatAttr.CharStyle))?.StyleIdentifier ?? StyleIdentifier.DefaultParagraphFont;
        set
        {
            var style = doc?.Styles.GetOrCreateBuiltIn(value) ?? throw new InvalidOperationException("The font is not attached to a document.");
            Set(FormatAttr.CharStyle, style.StyleId);
        }
    }

    /// <summary>The border drawn around the text.</summary>
    public Border Border => new Border(Host, FormatAttr.RunBorder);

    /// <summary>The background shading behind the text.</summary>
    public Shading Shading => new Shading(Host);

    private AttrHost Host => new(() => Own, Put, inherited);

    /// <summary>Removes the text's own character formatting, so it shows its styles' formatting only.</summary>
    public void ClearFormatting()
    {
        Put(AttrSet.Empty);
        owner.RunKept(false)?.Clear();
    }

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
