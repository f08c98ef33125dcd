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

    /// <summary>The number the level starts counting at.</summary>
    public int StartAt
    {
        get => Bag.Int("start") ?? 1;
        set
        {
            if (value < 0 || value > 32767) throw new ArgumentOutOfRangeException(nameof(value));
            Bag.SetVal("start", Units.Str(value));
        }
    }

    /// <summary>How the level's numbers are written.</summary>
    public NumberStyle NumberStyle
    {
        get => ListNumbering.StyleFromXml(Bag.Val("numFmt"));
        set => Bag.SetVal("numFmt", ListNumbering.StyleToXml(value));
    }

    /// <summary>The label pattern: "%1." shows the number of level 1 followed by a dot.</summary>
    public string NumberFormat
    {
        get => Bag.Val("lvlText") ?? "";
        set => Bag.SetVal("lvlText", value ?? "");
    }

    /// <summary>How the level's labels are aligned at their position.</summary>
    public ListLevelAlignment Alignment
    {
        get => Bag.Val("lvlJc") switch { "center" => ListLevelAlignment.Center, "right" or "end" => ListLevelAlignment.Right, _ => ListLevelAlignment.Left };
        set => Bag.SetVal("lvlJc", value switch
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
        get => Bag.Val("suff") switch { "space" => ListTrailingCharacter.Space, "nothing" => ListTrailingCharacter.Nothing, _ => ListTrailingCharacter.Tab };
        set => Bag.SetVal("suff", value switch
        {
            ListTrailingCharacter.Tab => "tab",
            ListTrailingCharacter.Space => "space",
            ListTrailingCharacter.Nothing => "nothing",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
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
        get => Units.TwipsToPoints(Units.ParseInt(PPr.Find("ind")?.Get("left") ?? PPr.Find("ind")?.Get("start")) ?? 0);
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
