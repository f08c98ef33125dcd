using Quorix.Folio.Formatting;

namespace Quorix.Folio.Lists;

/// <summary>How one level of a list is numbered and indented.</summary>
public sealed class ListLevel
{
    internal readonly PropElement Element;
    internal readonly PropBag Bag;
    private readonly DocumentBase doc;

    internal ListLevel(DocumentBase doc, PropElement lvl)
    {
        this.doc = doc;
        Element = lvl;
        lvl.Children ??= new List<PropElement>();
        Bag = new PropBag(PropOrder.Level, lvl.Children);
    }

    // The level's own attributes, read from and written to the numbering definition it belongs to.
    private AttrHost Host => new Docx.BagFormat(Bag, Docx.PropsCodec.Level).Host;

    /// <summary>The number the level starts counting at.</summary>
    public int StartAt
    {
        get => Host.Get(FormatAttr.LevelStart) as int? ?? 1;
        set
        {
            if (value < 0 || value > 32767) throw new ArgumentOutOfRangeException(nameof(value));
            Host.Set(FormatAttr.LevelStart, value);
        }
    }

    /// <summary>How the level's numbers are written.</summary>
    public NumberStyle NumberStyle
    {
        get => ListNumbering.StyleFromXml(Host.Get(FormatAttr.LevelNumberStyle) as string);
        set => Host.Set(FormatAttr.LevelNumberStyle, ListNumbering.StyleToXml(value));
    }

    /// <summary>The label pattern: "%1." shows the number of level 1 followed by a dot.</summary>
    public string NumberFormat
    {
        get => Host.Get(FormatAttr.LevelText) as string ?? "";
        set => Host.Set(FormatAttr.LevelText, value ?? "");
    }

    /// <summary>How the level's labels are aligned at their position.</summary>
    public ListLevelAlignment Alignment
    {
        get => Host.Get(FormatAttr.LevelAlignment) switch { "center" => ListLevelAlignment.Center, "right" or "end" => ListLevelAlignment.Right, _ => ListLevelAlignment.Left };
        set => Host.Set(FormatAttr.LevelAlignment, value switch
        {
            ListLevelAlignment.Left => "left",
            ListLevelAlignment.Center => "center",
            ListLevelAlignment.Right => "right",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>What separates the level's labels from the text.</summary>
    public ListTrailingCharacter TrailingCharacter
    {
        get => Host.Get(FormatAttr.LevelSuffix) switch { "space" => ListTrailingCharacter.Space, "nothing" => ListTrailingCharacter.Nothing, _ => ListTrailingCharacter.Tab };
        set => Host.Set(FormatAttr.LevelSuffix, value switch
        {
            ListTrailingCharacter.Tab => "tab",
            ListTrailingCharacter.Space => "space",
            ListTrailingCharacter.Nothing => "nothing",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Whether the level shows every level's number in Arabic digits, as legal numbering does.</summary>
    public bool IsLegal
    {
        get => Host.Get(FormatAttr.LevelLegal) is true;
        set => Host.Set(FormatAttr.LevelLegal, value ? AttrSet.True : null);
    }

    /// <summary>The level (0 to 8) after which this one starts counting again; -1 when it never does.
    /// Unless set, a level restarts after the one above it.</summary>
    public int RestartAfterLevel
    {
        get
        {
            int above = (Units.ParseInt(Element.Get("ilvl")) ?? 0) - 1;
            return Host.Get(FormatAttr.LevelRestart) is int v ? v - 1 : above;
        }
        set
        {
            if (value < -1 || value > 8) throw new ArgumentOutOfRangeException(nameof(value), "A level restarts after a level from 0 to 8, or -1 for never.");
            int above = (Units.ParseInt(Element.Get("ilvl")) ?? 0) - 1;
            Host.Set(FormatAttr.LevelRestart, value == above && value >= 0 ? null : value + 1);
        }
    }

    /// <summary>The paragraph style linked to the level; null when none is.</summary>
    public Style? LinkedStyle
    {
        get => doc.Styles.FindById(Host.Get(FormatAttr.LevelParagraphStyle) as string);
        set => Host.Set(FormatAttr.LevelParagraphStyle, value?.StyleId);
    }

    private PropBag PPr
    {
        get
        {
            var e = Bag.GetOrAdd("pPr");
            e.Children ??= new List<PropElement>();
            return new PropBag(PropOrder.Paragraph, e.Children);
        }
    }

    /// <summary>Where the text starts, in points from the margin.</summary>
    public double TextPosition
    {
        get => new ParagraphFormat(PPr, doc).LeftIndent;
        set => new ParagraphFormat(PPr, doc).LeftIndent = value;
    }

    /// <summary>Where the label starts, in points from the margin.</summary>
    public double NumberPosition
    {
        get
        {
            var f = new ParagraphFormat(PPr, doc);
            return f.LeftIndent + f.FirstLineIndent;
        }
        set
        {
            var f = new ParagraphFormat(PPr, doc);
            f.FirstLineIndent = value - f.LeftIndent;
        }
    }

    /// <summary>The character formatting of the level's labels.</summary>
    public Font Font
    {
        get
        {
            var e = Bag.GetOrAdd("rPr");
            e.Children ??= new List<PropElement>();
            return new Font(new PropBag(PropOrder.Run, e.Children), doc);
        }
    }
}
