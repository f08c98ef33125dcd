using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>The formatting of a table row.</summary>
public sealed class RowFormat
{
    private readonly PropBag bag;

    internal RowFormat(PropBag trPr) { bag = trPr; }

    /// <summary>Height in points; 0 means automatic.</summary>
    public double Height
    {
        get => Units.TwipsToPoints(Units.ParseInt(bag.Find("trHeight")?.Get("val")) ?? 0);
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            if (value == 0) bag.Remove("trHeight");
            else bag.GetOrAdd("trHeight").Set("val", Units.PointsToTwips(value));
        }
    }

    /// <summary>How the row's height is read: at least, exactly, or as its content needs.</summary>
    public HeightRule HeightRule
    {
        get => bag.Find("trHeight") is not { } e ? HeightRule.Auto : e.Get("hRule") == "exact" ? HeightRule.Exactly : HeightRule.AtLeast;
        set
        {
            if (value == HeightRule.Auto) { bag.Remove("trHeight"); return; }
            bag.GetOrAdd("trHeight").Set("hRule", value == HeightRule.Exactly ? "exact" : "atLeast");
        }
    }

    /// <summary>The row repeats at the top of each page.</summary>
    public bool HeadingFormat
    {
        get => bag.Toggle("tblHeader") ?? false;
        set { if (value) bag.SetToggle("tblHeader", true); else bag.Remove("tblHeader"); }
    }

    /// <summary>Whether the row may be split between two pages.</summary>
    public bool AllowBreakAcrossPages
    {
        get => !(bag.Toggle("cantSplit") ?? false);
        set { if (value) bag.Remove("cantSplit"); else bag.SetToggle("cantSplit", true); }
    }

    internal void CopyFrom(RowFormat other)
    {
        bag.Clear();
        bag.MergeFrom(other.bag);
    }

    /// <summary>Removes the row's own formatting.</summary>
    public void ClearFormatting() => bag.Clear();
}
