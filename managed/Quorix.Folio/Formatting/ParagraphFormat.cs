using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>Paragraph formatting of a paragraph, a style or the builder's current paragraph.</summary>
public sealed class ParagraphFormat
{
    private readonly IParaFormatted owner;
    private readonly DocumentBase? doc;
    // What the owner inherits when it says nothing itself.
    private readonly Func<AttrSet>? inherited;

    internal ParagraphFormat(IParaFormatted owner, DocumentBase? doc, Func<AttrSet>? inherited = null)
    {
        this.owner = owner;
        this.doc = doc;
        this.inherited = inherited;
    }

    /// <summary>Paragraph formatting held as markup (a style's, the defaults', a list level's).</summary>
    internal ParagraphFormat(PropBag bag, DocumentBase? doc, Func<AttrSet>? inherited = null)
        : this(new Docx.BagFormat(bag, Docx.PropsCodec.Paragraph), doc, inherited) { }

    private PropBag Bag => owner.ParaKept;

    private AttrSet Own => owner.ParaAttrs;

    // Equal formattings share one instance in the document. The stamp tells laid-out pages of the edit.
    private void Put(AttrSet set)
    {
        owner.ParaAttrs = doc != null ? doc.Cascade.Shared(set) : set;
        FormatStamp.Bump();
    }

    /// <summary>The set that decides the attribute: the owner's own when it says anything of its group, else the inherited one.</summary>
    private AttrSet Deciding(FormatAttr a)
    {
        var own = Own;
        if (own.HasGroup(a) || inherited == null) return own;
        return inherited();
    }

    private object? Lookup(FormatAttr a) => Deciding(a).Get(a);

    private bool Toggle(FormatAttr a) => Lookup(a) is true;

    private void SetToggle(FormatAttr a, bool value) => Put(Own.With(a, value));

    /// <summary>How the paragraph's lines sit between its indents: left, centred, right or justified.</summary>
    public ParagraphAlignment Alignment
    {
        get => Lookup(FormatAttr.Alignment) switch
        {
            "center" => ParagraphAlignment.Center,
            "right" or "end" => ParagraphAlignment.Right,
            "both" => ParagraphAlignment.Justify,
            "distribute" => ParagraphAlignment.Distributed,
            _ => ParagraphAlignment.Left,
        };
        set => Put(Own.With(FormatAttr.Alignment, value switch
        {
            ParagraphAlignment.Left => "left",
            ParagraphAlignment.Center => "center",
            ParagraphAlignment.Right => "right",
            ParagraphAlignment.Justify => "both",
            ParagraphAlignment.Distributed => "distribute",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        }));
    }

    private string? StyleId => Own.String(FormatAttr.ParaStyle);

    /// <summary>The name of the paragraph style applied to the paragraph.</summary>
    public string StyleName
    {
        get => doc?.Styles.NameOfId(StyleId) ?? "Normal";
        set
        {
            var style = doc?.Styles[value] ?? throw new ArgumentException($"There is no style named '{value}'.", nameof(value));
            if (style.Type != StyleType.Paragraph) throw new ArgumentException($"The style '{value}' is not a paragraph style.", nameof(value));
            SetStyleId(style.StyleId);
        }
    }

    /// <summary>The paragraph style applied, when it is a built-in one; User otherwise.</summary>
    public StyleIdentifier StyleIdentifier
    {
        get => doc?.Styles.FindById(StyleId)?.StyleIdentifier ?? StyleIdentifier.Normal;
        set
        {
            var style = doc?.Styles.GetOrCreateBuiltIn(value) ?? throw new InvalidOperationException("The format is not attached to a document.");
            SetStyleId(style.StyleId);
        }
    }

    /// <summary>The paragraph style applied to the paragraph.</summary>
    public Style Style
    {
        get => doc!.Styles.FindById(StyleId) ?? doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal);
        set => SetStyleId(value.StyleId);
    }

    private void SetStyleId(string id)
    {
        bool normal = id == "Normal" && doc?.Styles.FindById("Normal")?.StyleIdentifier == StyleIdentifier.Normal;
        Put(Own.With(FormatAttr.ParaStyle, normal ? null : id));
    }

    /// <summary>Whether the paragraph has one of the built-in heading styles, Heading 1 to 9.</summary>
    public bool IsHeading => StyleIdentifier is >= StyleIdentifier.Heading1 and <= StyleIdentifier.Heading9;

    /// <summary>The paragraph's level in the document outline, or body text.</summary>
    public OutlineLevel OutlineLevel
    {
        get => Lookup(FormatAttr.OutlineLevel) is int v and >= 0 and <= 8 ? (OutlineLevel)v : OutlineLevel.BodyText;
        set
        {
            if (value == OutlineLevel.BodyText) Put(Own.Without(FormatAttr.OutlineLevel));
            else if (value is >= OutlineLevel.Level1 and <= OutlineLevel.Level9) Put(Own.With(FormatAttr.OutlineLevel, (int)value));
            else throw new ArgumentOutOfRangeException(nameof(value));
        }
    }

    // A measure given either way (left or start, right or end): the first of the pair said wins.
    private double Twips(FormatAttr a, FormatAttr? alt = null)
    {
        var set = Deciding(a);
        var v = set.Int(a) ?? (alt is { } b ? set.Int(b) : null);
        return v.HasValue ? Units.TwipsToPoints(v.Value) : 0;
    }

    private void SetTwips(FormatAttr a, double points, FormatAttr? alt = null)
    {
        Units.CheckRange(points, -1584, 1584, nameof(points));
        var set = Own;
        if (alt is { } b) set = set.Without(b);
        Put(set.With(a, (int)Math.Round(points * 20)));
    }

    /// <summary>Indents and spacing in points.</summary>
    public double LeftIndent { get => Twips(FormatAttr.IndentLeft, FormatAttr.IndentStart); set => SetTwips(FormatAttr.IndentLeft, value, FormatAttr.IndentStart); }

    /// <summary>The space between the paragraph and the right margin, in points.</summary>
    public double RightIndent { get => Twips(FormatAttr.IndentRight, FormatAttr.IndentEnd); set => SetTwips(FormatAttr.IndentRight, value, FormatAttr.IndentEnd); }

    /// <summary>Positive for a first-line indent, negative for a hanging one.</summary>
    public double FirstLineIndent
    {
        get
        {
            var set = Deciding(FormatAttr.IndentHanging);
            if (set.Int(FormatAttr.IndentHanging) is { } hanging) return -Units.TwipsToPoints(hanging);
            return set.Int(FormatAttr.IndentFirstLine) is { } first ? Units.TwipsToPoints(first) : 0;
        }
        set
        {
            Units.CheckRange(value, -1584, 1584, nameof(value));
            int twips = (int)Math.Round(Math.Abs(value) * 20);
            var set = Own.WithoutGroup(FormatAttr.IndentHanging);
            Put(value < 0 ? set.With(FormatAttr.IndentHanging, twips) : set.With(FormatAttr.IndentFirstLine, twips));
        }
    }

    /// <summary>The space above the paragraph, in points.</summary>
    public double SpaceBefore { get => Twips(FormatAttr.SpaceBefore); set => SetTwips(FormatAttr.SpaceBefore, value); }

    /// <summary>The space below the paragraph, in points.</summary>
    public double SpaceAfter { get => Twips(FormatAttr.SpaceAfter); set => SetTwips(FormatAttr.SpaceAfter, value); }

    /// <summary>How line_spacing is read: at least, exactly, or a multiple of single spacing.</summary>
    public LineSpacingRule LineSpacingRule
    {
        get => Lookup(FormatAttr.LineRule) switch
        {
            "exact" => LineSpacingRule.Exactly,
            "atLeast" => LineSpacingRule.AtLeast,
            _ => LineSpacingRule.Multiple,
        };
        set => Put(Own.With(FormatAttr.LineRule, value switch
        {
            LineSpacingRule.Exactly => "exact",
            LineSpacingRule.AtLeast => "atLeast",
            LineSpacingRule.Multiple => "auto",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        }));
    }

    /// <summary>Points for exact and minimum spacing; for multiple spacing, 12 points is one line.</summary>
    public double LineSpacing
    {
        get
        {
            if (Lookup(FormatAttr.LineSpacing) is not int v) return 12;
            return LineSpacingRule == LineSpacingRule.Multiple ? v / 240.0 * 12 : Units.TwipsToPoints(v);
        }
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            int line = LineSpacingRule == LineSpacingRule.Multiple ? (int)Math.Round(value / 12 * 240) : (int)Math.Round(value * 20);
            var set = Own.With(FormatAttr.LineSpacing, line);
            if (!set.Has(FormatAttr.LineRule)) set = set.With(FormatAttr.LineRule, "auto");
            Put(set);
        }
    }

    // Frames, dropped capitals among them, are not modelled: they live with the kept markup.
    /// <summary>Whether the paragraph is a dropped capital for the paragraph after it, beside its first lines or in the margin.</summary>
    public DropCapPosition DropCapPosition
    {
        get => Bag.Find("framePr")?.Get("dropCap") switch
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
        get => Units.ParseInt(Bag.Find("framePr")?.Get("lines")) is { } n and > 0 ? n : 1;
        set
        {
            if (value < 1 || value > 10) throw new ArgumentOutOfRangeException(nameof(value), "A dropped capital spans from 1 to 10 lines.");
            Bag.GetOrAdd("framePr").Set("lines", Units.Str(value));
        }
    }

    /// <summary>Whether the paragraph is set right to left: its start is at the right.</summary>
    public bool Bidi { get => Toggle(FormatAttr.ParaBidi); set => SetToggle(FormatAttr.ParaBidi, value); }

    /// <summary>Whether all lines of the paragraph stay on one page.</summary>
    public bool KeepTogether { get => Toggle(FormatAttr.KeepLines); set => SetToggle(FormatAttr.KeepLines, value); }

    /// <summary>Whether the paragraph stays on the same page as the next one.</summary>
    public bool KeepWithNext { get => Toggle(FormatAttr.KeepNext); set => SetToggle(FormatAttr.KeepNext, value); }

    /// <summary>Whether the paragraph always starts a new page.</summary>
    public bool PageBreakBefore { get => Toggle(FormatAttr.PageBreakBefore); set => SetToggle(FormatAttr.PageBreakBefore, value); }

    /// <summary>Whether a single first or last line of the paragraph is kept from standing alone on a page.</summary>
    public bool WidowControl { get => Toggle(FormatAttr.WidowControl); set => SetToggle(FormatAttr.WidowControl, value); }

    private AttrHost Host => new(() => Own, Put, inherited);

    /// <summary>The background shading behind the paragraph.</summary>
    public Shading Shading => new Shading(Host);

    /// <summary>The paragraph's tab stops, its style's included.</summary>
    public TabStopCollection TabStops => new(Host, inherited);

    /// <summary>A border of the paragraph; Horizontal is the line between paragraphs with the same borders.</summary>
    public Border GetBorder(BorderType borderType) => new Border(Host, borderType switch
    {
        BorderType.Top => FormatAttr.ParaBorderTop,
        BorderType.Left => FormatAttr.ParaBorderLeft,
        BorderType.Bottom => FormatAttr.ParaBorderBottom,
        BorderType.Right => FormatAttr.ParaBorderRight,
        BorderType.Horizontal => FormatAttr.ParaBorderBetween,
        BorderType.Vertical => throw new ArgumentOutOfRangeException(nameof(borderType), "A paragraph has no vertical inside border."),
        _ => throw new ArgumentOutOfRangeException(nameof(borderType)),
    });

    /// <summary>Keeps the paragraph's list membership and section break: those are structure, not formatting.</summary>
    public void ClearFormatting()
    {
        Put(AttrSet.Empty);
        Bag.RemoveAll(e => e.Ns != Docx.Ns.W || (e.Local != "numPr" && e.Local != "sectPr" && e.Local != "rPr"));
    }
}

/// <summary>A side of a paragraph or cell that can have a border.</summary>
public enum BorderType
{
    /// <summary>Below.</summary>
    Bottom = 0,
    /// <summary>On the left.</summary>
    Left = 1,
    /// <summary>On the right.</summary>
    Right = 2,
    /// <summary>Above.</summary>
    Top = 3,
    /// <summary>Between paragraphs or rows that share the border.</summary>
    Horizontal = 4,
    /// <summary>Between cells of a row.</summary>
    Vertical = 5,
}

/// <summary>Whether a paragraph starts with a large initial letter, and where it stands.</summary>
public enum DropCapPosition
{
    /// <summary>No drop cap.</summary>
    None = 0,
    /// <summary>Dropped into the text, which wraps beside it.</summary>
    Normal = 1,
    /// <summary>In the margin, beside the text.</summary>
    Margin = 2,
}
