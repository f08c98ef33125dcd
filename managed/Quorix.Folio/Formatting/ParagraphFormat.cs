using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Paragraph formatting of a paragraph, a style or the builder's current paragraph.</summary>
public sealed class ParagraphFormat
{
    internal readonly PropBag Bag;
    private readonly DocumentBase? doc;
    private readonly Func<BagChain>? inherited;

    internal ParagraphFormat(PropBag bag, DocumentBase? doc, Func<BagChain>? inherited = null)
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

    /// <summary>The nearest element of that name, here or inherited, that says something <paramref name="says"/> accepts.</summary>
    private PropElement? Lookup(string local, Func<PropElement, bool> says)
    {
        var e = Bag.Find(local);
        if (e != null && says(e)) return e;
        return inherited?.Invoke().Find(local, says);
    }

    private string? Attr(string local, string attr) => Lookup(local, e => e.Get(attr) != null)?.Get(attr);

    private bool Toggle(string local)
    {
        var v = Lookup(local);
        if (v == null) return false;
        var s = v.Get("val");
        return s == null || !(s == "0" || s == "false" || s == "off");
    }

    public ParagraphAlignment Alignment
    {
        get => Lookup("jc")?.Get("val") switch
        {
            "center" => ParagraphAlignment.Center,
            "right" or "end" => ParagraphAlignment.Right,
            "both" => ParagraphAlignment.Justify,
            "distribute" => ParagraphAlignment.Distributed,
            _ => ParagraphAlignment.Left,
        };
        set => Bag.SetVal("jc", value switch
        {
            ParagraphAlignment.Left => "left",
            ParagraphAlignment.Center => "center",
            ParagraphAlignment.Right => "right",
            ParagraphAlignment.Justify => "both",
            ParagraphAlignment.Distributed => "distribute",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    public string StyleName
    {
        get => doc?.Styles.NameOfId(Bag.Val("pStyle")) ?? "Normal";
        set
        {
            var style = doc?.Styles[value] ?? throw new ArgumentException($"There is no style named '{value}'.", nameof(value));
            if (style.Type != StyleType.Paragraph) throw new ArgumentException($"The style '{value}' is not a paragraph style.", nameof(value));
            SetStyleId(style.StyleId);
        }
    }

    public StyleIdentifier StyleIdentifier
    {
        get => doc?.Styles.FindById(Bag.Val("pStyle"))?.StyleIdentifier ?? StyleIdentifier.Normal;
        set
        {
            var style = doc?.Styles.GetOrCreateBuiltIn(value) ?? throw new InvalidOperationException("The format is not attached to a document.");
            SetStyleId(style.StyleId);
        }
    }

    public Style Style
    {
        get => doc!.Styles.FindById(Bag.Val("pStyle")) ?? doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal);
        set => SetStyleId(value.StyleId);
    }

    private void SetStyleId(string id)
    {
        if (id == "Normal" && doc?.Styles.FindById("Normal")?.StyleIdentifier == StyleIdentifier.Normal) Bag.Remove("pStyle");
        else Bag.SetVal("pStyle", id);
    }

    public bool IsHeading => StyleIdentifier is >= StyleIdentifier.Heading1 and <= StyleIdentifier.Heading9;

    public OutlineLevel OutlineLevel
    {
        get
        {
            var v = Units.ParseInt(Lookup("outlineLvl")?.Get("val"));
            return v is >= 0 and <= 8 ? (OutlineLevel)v.Value : OutlineLevel.BodyText;
        }
        set
        {
            if (value == OutlineLevel.BodyText) Bag.Remove("outlineLvl");
            else if (value is >= OutlineLevel.Level1 and <= OutlineLevel.Level9) Bag.SetVal("outlineLvl", Units.Str((int)value));
            else throw new ArgumentOutOfRangeException(nameof(value));
        }
    }

    private double Twips(string local, string attr, string? alt = null)
    {
        var e = Lookup(local, x => x.Get(attr) != null || (alt != null && x.Get(alt) != null));
        var v = Units.ParseInt(e?.Get(attr)) ?? (alt != null ? Units.ParseInt(e?.Get(alt)) : null);
        return v.HasValue ? Units.TwipsToPoints(v.Value) : 0;
    }

    private void SetTwips(string local, string attr, double points, string? alt = null)
    {
        Units.CheckRange(points, -1584, 1584, nameof(points));
        var e = Bag.GetOrAdd(local);
        if (alt != null) e.Set(alt, null);
        e.Set(attr, Units.PointsToTwips(points));
    }

    /// <summary>Indents and spacing in points.</summary>
    public double LeftIndent { get => Twips("ind", "left", "start"); set => SetTwips("ind", "left", value, "start"); }

    public double RightIndent { get => Twips("ind", "right", "end"); set => SetTwips("ind", "right", value, "end"); }

    /// <summary>Positive for a first-line indent, negative for a hanging one.</summary>
    public double FirstLineIndent
    {
        get
        {
            var e = Lookup("ind", x => x.Get("hanging") != null || x.Get("firstLine") != null);
            var hanging = Units.ParseInt(e?.Get("hanging"));
            if (hanging.HasValue) return -Units.TwipsToPoints(hanging.Value);
            var first = Units.ParseInt(e?.Get("firstLine"));
            return first.HasValue ? Units.TwipsToPoints(first.Value) : 0;
        }
        set
        {
            Units.CheckRange(value, -1584, 1584, nameof(value));
            var e = Bag.GetOrAdd("ind");
            e.Set("hanging", value < 0 ? Units.PointsToTwips(-value) : null);
            e.Set("firstLine", value >= 0 ? Units.PointsToTwips(value) : null);
        }
    }

    public double SpaceBefore { get => Twips("spacing", "before"); set => SetTwips("spacing", "before", value); }

    public double SpaceAfter { get => Twips("spacing", "after"); set => SetTwips("spacing", "after", value); }

    public LineSpacingRule LineSpacingRule
    {
        get => Attr("spacing", "lineRule") switch
        {
            "exact" => LineSpacingRule.Exactly,
            "atLeast" => LineSpacingRule.AtLeast,
            _ => LineSpacingRule.Multiple,
        };
        set => Bag.GetOrAdd("spacing").Set("lineRule", value switch
        {
            LineSpacingRule.Exactly => "exact",
            LineSpacingRule.AtLeast => "atLeast",
            LineSpacingRule.Multiple => "auto",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Points for exact and minimum spacing; for multiple spacing, 12 points is one line.</summary>
    public double LineSpacing
    {
        get
        {
            var v = Units.ParseInt(Attr("spacing", "line"));
            if (!v.HasValue) return 12;
            return LineSpacingRule == LineSpacingRule.Multiple ? v.Value / 240.0 * 12 : Units.TwipsToPoints(v.Value);
        }
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            var e = Bag.GetOrAdd("spacing");
            e.Set("line", LineSpacingRule == LineSpacingRule.Multiple
                ? Units.Str((int)Math.Round(value / 12 * 240))
                : Units.PointsToTwips(value));
            if (e.Get("lineRule") == null) e.Set("lineRule", "auto");
        }
    }

    /// <summary>Whether the paragraph is a dropped capital for the paragraph after it, beside its first lines or in the margin.</summary>
    public DropCapPosition DropCapPosition
    {
        get => Attr("framePr", "dropCap") switch
        {
            "drop" => DropCapPosition.Normal,
            "margin" => DropCapPosition.Margin,
            _ => DropCapPosition.None,
        };
        set
        {
            var v = value switch
            {
                DropCapPosition.None => null,
                DropCapPosition.Normal => "drop",
                DropCapPosition.Margin => "margin",
                _ => throw new ArgumentOutOfRangeException(nameof(value)),
            };
            var frame = Bag.GetOrAdd("framePr").Set("dropCap", v);
            if (v != null && frame.Get("lines") == null) frame.Set("lines", "3").Set("wrap", "around").Set("vAnchor", "text").Set("hAnchor", "text");
        }
    }

    /// <summary>How many lines of the next paragraph a dropped capital spans.</summary>
    public int LinesToDrop
    {
        get => Units.ParseInt(Attr("framePr", "lines")) is { } n and > 0 ? n : 1;
        set
        {
            if (value < 1 || value > 10) throw new ArgumentOutOfRangeException(nameof(value), "A dropped capital spans from 1 to 10 lines.");
            Bag.GetOrAdd("framePr").Set("lines", Units.Str(value));
        }
    }

    /// <summary>Whether the paragraph is set right to left: its start is at the right.</summary>
    public bool Bidi { get => Toggle("bidi"); set => Bag.SetToggle("bidi", value); }

    public bool KeepTogether { get => Toggle("keepLines"); set => Bag.SetToggle("keepLines", value); }

    public bool KeepWithNext { get => Toggle("keepNext"); set => Bag.SetToggle("keepNext", value); }

    public bool PageBreakBefore { get => Toggle("pageBreakBefore"); set => Bag.SetToggle("pageBreakBefore", value); }

    public bool WidowControl { get => Toggle("widowControl"); set => Bag.SetToggle("widowControl", value); }

    public Shading Shading => new Shading(Bag);

    public Border GetBorder(BorderType borderType)
    {
        var pBdr = Bag.GetOrAdd("pBdr");
        pBdr.Children ??= new List<PropElement>();
        return new Border(new PropBag(PropOrder.Borders, pBdr.Children), BorderTypeXml(borderType));
    }

    internal static string BorderTypeXml(BorderType t) => t switch
    {
        BorderType.Top => "top",
        BorderType.Left => "left",
        BorderType.Bottom => "bottom",
        BorderType.Right => "right",
        BorderType.Horizontal => "insideH",
        BorderType.Vertical => "insideV",
        _ => throw new ArgumentOutOfRangeException(nameof(t)),
    };

    /// <summary>Keeps the paragraph's list membership and section break: those are structure, not formatting.</summary>
    public void ClearFormatting() =>
        Bag.RemoveAll(e => e.Ns != Docx.Ns.W || (e.Local != "numPr" && e.Local != "sectPr" && e.Local != "rPr"));
}

public enum BorderType
{
    Bottom = 0,
    Left = 1,
    Right = 2,
    Top = 3,
    Horizontal = 4,
    Vertical = 5,
}

public enum DropCapPosition
{
    None = 0,
    Normal = 1,
    Margin = 2,
}
