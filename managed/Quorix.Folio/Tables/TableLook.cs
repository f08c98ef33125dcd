using System.Globalization;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>Reads and writes which parts of a table its style formats apart. Stored as on/off
/// attributes, or as the older hexadecimal mask in which banding is said as its absence.</summary>
internal static class TableLook
{
    private const int NoRowBands = 0x200, NoColumnBands = 0x400;

    private static readonly (FormatAttr Attr, TableStyleOptions Option, bool Negated)[] Parts =
    {
        (FormatAttr.TableLookFirstRow, TableStyleOptions.FirstRow, false),
        (FormatAttr.TableLookLastRow, TableStyleOptions.LastRow, false),
        (FormatAttr.TableLookFirstColumn, TableStyleOptions.FirstColumn, false),
        (FormatAttr.TableLookLastColumn, TableStyleOptions.LastColumn, false),
        (FormatAttr.TableLookNoRowBands, TableStyleOptions.RowBands, true),
        (FormatAttr.TableLookNoColumnBands, TableStyleOptions.ColumnBands, true),
    };

    /// <summary>The options a set of attributes says; without any, none but banding, as the file format defaults.</summary>
    public static TableStyleOptions Of(AttrSet set)
    {
        int mask = set.String(FormatAttr.TableLook) is { } hex && int.TryParse(hex, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out var m) ? m : 0;
        var result = (TableStyleOptions)(mask & 0x1E0);
        if ((mask & NoRowBands) == 0) result |= TableStyleOptions.RowBands;
        if ((mask & NoColumnBands) == 0) result |= TableStyleOptions.ColumnBands;
        foreach (var (attr, option, negated) in Parts)
            if (set.Bool(attr) is { } on) result = on != negated ? result | option : result & ~option;
        return result;
    }

    public static TableStyleOptions Of(AttrHost host) => Of(host.Own.HasGroup(FormatAttr.TableLook) ? host.Own : Resolved(host));

    private static AttrSet Resolved(AttrHost host)
    {
        var set = AttrSet.Empty;
        if (host.Get(FormatAttr.TableLook) is string hex) set = set.With(FormatAttr.TableLook, hex);
        foreach (var (attr, _, _) in Parts)
            if (host.Get(attr) is bool b) set = set.With(attr, b);
        return set;
    }

    /// <summary>The set with the options written both ways, so older and newer readers agree.</summary>
    public static AttrSet With(AttrSet set, TableStyleOptions options)
    {
        if (((int)options & ~0x7E0) != 0) throw new ArgumentOutOfRangeException(nameof(options));
        int mask = (int)options & 0x1E0;
        if (!options.HasFlag(TableStyleOptions.RowBands)) mask |= NoRowBands;
        if (!options.HasFlag(TableStyleOptions.ColumnBands)) mask |= NoColumnBands;
        set = set.With(FormatAttr.TableLook, mask.ToString("X4", CultureInfo.InvariantCulture));
        foreach (var (attr, option, negated) in Parts) set = set.With(attr, options.HasFlag(option) != negated);
        return set;
    }
}
