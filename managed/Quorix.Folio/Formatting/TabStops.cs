using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>How text lines up at a tab stop.</summary>
public enum TabAlignment
{
    /// <summary>Text starts at the stop.</summary>
    Left = 0,
    /// <summary>Text is centred on the stop.</summary>
    Center = 1,
    /// <summary>Text ends at the stop.</summary>
    Right = 2,
    /// <summary>A number's decimal point sits at the stop.</summary>
    Decimal = 3,
    /// <summary>Not a stop: a vertical line drawn at the position.</summary>
    Bar = 4,
}

/// <summary>What fills the space before a tab stop.</summary>
public enum TabLeader
{
    /// <summary>Blank space.</summary>
    None = 0,
    /// <summary>A row of dots.</summary>
    Dots = 1,
    /// <summary>A row of hyphens.</summary>
    Dashes = 2,
    /// <summary>A line along the baseline.</summary>
    Line = 3,
    /// <summary>A heavy line.</summary>
    Heavy = 4,
    /// <summary>A row of dots at mid height.</summary>
    MiddleDot = 5,
}

/// <summary>One tab stop of a paragraph: its position in points from the text's start, alignment and leader.</summary>
public sealed class TabStop
{
    internal TabStop(double position, TabAlignment alignment, TabLeader leader)
    {
        Position = position;
        Alignment = alignment;
        Leader = leader;
    }

    /// <summary>Where the stop is, in points from the start of the text.</summary>
    public double Position { get; }

    /// <summary>How text lines up at the stop.</summary>
    public TabAlignment Alignment { get; }

    /// <summary>What fills the space before the stop.</summary>
    public TabLeader Leader { get; }

    /// <summary>The stop's kind and position, for reading.</summary>
    public override string ToString() => $"{Alignment} tab at {Position}pt";
}

/// <summary>The tab stops a paragraph shows: its style's with its own added or cleared. Changes go to
/// the paragraph's own stops.</summary>
public sealed class TabStopCollection
{
    private readonly AttrHost host;
    private readonly Func<AttrSet>? inherited;

    internal TabStopCollection(AttrHost host, Func<AttrSet>? inherited)
    {
        this.host = host;
        this.inherited = inherited;
    }

    private TabList? Own => host.Own.Get(FormatAttr.Tabs) as TabList;

    private TabList? Inherited => inherited?.Invoke().Get(FormatAttr.Tabs) as TabList;

    private List<TabList.Entry> Shown()
    {
        var shown = Own is { } own ? (TabList)own.Over(Inherited ?? TabList.Empty) : Inherited;
        return shown?.Entries.Where(e => e.Kind != "clear").ToList() ?? new List<TabList.Entry>();
    }

    /// <summary>How many stops the paragraph shows.</summary>
    public int Count => Shown().Count;

    /// <summary>The stop at the index, from the leftmost.</summary>
    public TabStop this[int index]
    {
        get
        {
            var shown = Shown();
            if (index < 0 || index >= shown.Count) throw new ArgumentOutOfRangeException(nameof(index));
            var e = shown[index];
            return new TabStop(Units.TwipsToPoints(e.Position), AlignmentOf(e.Kind), LeaderOf(e.Leader));
        }
    }

    /// <summary>Adds a stop, or replaces the one at the same position.</summary>
    public void Add(double position, TabAlignment alignment, TabLeader leader)
    {
        Units.CheckRange(position, -1584, 1584, nameof(position));
        var entry = new TabList.Entry((int)Math.Round(position * 20), KindOf(alignment), LeaderName(leader));
        host.Set(FormatAttr.Tabs, (Own ?? TabList.Empty).With(entry));
    }

    /// <summary>Removes the stop at the position; one the style gives is cleared for this paragraph.</summary>
    public void RemoveByPosition(double position)
    {
        int at = (int)Math.Round(position * 20);
        var own = (Own ?? TabList.Empty).Without(at);
        if (Inherited?.Entries.Any(e => e.Position == at && e.Kind != "clear") == true) own = own.With(new TabList.Entry(at, "clear", null));
        host.Set(FormatAttr.Tabs, own.Entries.Count == 0 ? null : own);
    }

    /// <summary>Removes every stop: the paragraph's own, and the style's for this paragraph.</summary>
    public void Clear()
    {
        var clears = Inherited?.Entries.Where(e => e.Kind != "clear").Select(e => new TabList.Entry(e.Position, "clear", null)).ToList();
        host.Set(FormatAttr.Tabs, clears is { Count: > 0 } ? new TabList(clears) : null);
    }

    private static TabAlignment AlignmentOf(string kind) => kind switch
    {
        "center" => TabAlignment.Center,
        "right" or "end" => TabAlignment.Right,
        "decimal" => TabAlignment.Decimal,
        "bar" => TabAlignment.Bar,
        _ => TabAlignment.Left,
    };

    private static string KindOf(TabAlignment a) => a switch
    {
        TabAlignment.Left => "left",
        TabAlignment.Center => "center",
        TabAlignment.Right => "right",
        TabAlignment.Decimal => "decimal",
        TabAlignment.Bar => "bar",
        _ => throw new ArgumentOutOfRangeException(nameof(a)),
    };

    private static TabLeader LeaderOf(string? leader) => leader switch
    {
        "dot" => TabLeader.Dots,
        "hyphen" => TabLeader.Dashes,
        "underscore" => TabLeader.Line,
        "heavy" => TabLeader.Heavy,
        "middleDot" => TabLeader.MiddleDot,
        _ => TabLeader.None,
    };

    private static string? LeaderName(TabLeader l) => l switch
    {
        TabLeader.None => null,
        TabLeader.Dots => "dot",
        TabLeader.Dashes => "hyphen",
        TabLeader.Line => "underscore",
        TabLeader.Heavy => "heavy",
        TabLeader.MiddleDot => "middleDot",
        _ => throw new ArgumentOutOfRangeException(nameof(l)),
    };
}
