using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>The formatting of a table row: its own, over what its table's style gives rows.</summary>
public sealed class RowFormat
{
    private readonly Row row;

    internal RowFormat(Row row) { this.row = row; }

    private AttrHost Host => row.Host;

    private AttrSet Own { get => row.Attrs; set => row.Attrs = value; }

    /// <summary>Height in points; 0 means automatic.</summary>
    public double Height
    {
        get => Host.Get(FormatAttr.RowHeight) is int h ? Units.TwipsToPoints(h) : 0;
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            Own = value == 0 ? Own.WithoutGroup(FormatAttr.RowHeight) : Own.With(FormatAttr.RowHeight, (int)Math.Round(value * 20));
        }
    }

    /// <summary>How the row's height is read: at least, exactly, or as its content needs.</summary>
    public HeightRule HeightRule
    {
        get => Host.Get(FormatAttr.RowHeight) == null && Host.Get(FormatAttr.RowHeightRule) == null ? HeightRule.Auto
            : Host.Get(FormatAttr.RowHeightRule) switch { "exact" => HeightRule.Exactly, "auto" => HeightRule.Auto, _ => HeightRule.AtLeast };
        set
        {
            if (value == HeightRule.Auto) { Own = Own.WithoutGroup(FormatAttr.RowHeight); return; }
            if (value is not (HeightRule.Exactly or HeightRule.AtLeast)) throw new ArgumentOutOfRangeException(nameof(value));
            var set = Own.With(FormatAttr.RowHeightRule, value == HeightRule.Exactly ? "exact" : "atLeast");
            Own = set.Has(FormatAttr.RowHeight) ? set : set.With(FormatAttr.RowHeight, 0);
        }
    }

    /// <summary>The row repeats at the top of each page.</summary>
    public bool HeadingFormat
    {
        get => Host.Get(FormatAttr.HeaderRow) is true;
        set => Own = Own.With(FormatAttr.HeaderRow, value ? AttrSet.True : null);
    }

    /// <summary>Whether the row may be split between two pages.</summary>
    public bool AllowBreakAcrossPages
    {
        get => Host.Get(FormatAttr.CantSplit) is not true;
        set => Own = Own.With(FormatAttr.CantSplit, value ? null : AttrSet.True);
    }

    internal void CopyFrom(RowFormat other) => Own = other.Own;

    /// <summary>Removes the row's own formatting.</summary>
    public void ClearFormatting() => Own = AttrSet.Empty;
}
