using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>The formatting of a table cell: its own, over what its table's style gives the cell's
/// place in the table (first or last row or column, a band, a corner).</summary>
public sealed class CellFormat
{
    private readonly Cell cell;

    internal CellFormat(Cell cell) { this.cell = cell; }

    private AttrHost Host => cell.Host;

    private AttrSet Own { get => cell.Attrs; set => cell.Attrs = value; }

    /// <summary>Cells merged across: the first cell of the group, then the cells it swallows.</summary>
    public CellMerge HorizontalMerge
    {
        get => cell.HMerge;
        set
        {
            if (!Enum.IsDefined(value)) throw new ArgumentOutOfRangeException(nameof(value));
            cell.HMerge = value;
        }
    }

    /// <summary>How the cell is merged with the cells above and below it.</summary>
    public CellMerge VerticalMerge
    {
        get => Own.String(FormatAttr.VerticalMerge) switch { null => CellMerge.None, "restart" => CellMerge.First, _ => CellMerge.Previous };
        set => Own = Own.With(FormatAttr.VerticalMerge, value switch
        {
            CellMerge.None => null,
            CellMerge.First => "restart",
            CellMerge.Previous => "",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Preferred width in points; 0 when the cell has none.</summary>
    public double Width
    {
        get => Own.String(FormatAttr.CellWidthType) is "pct" or "auto" or "nil" ? 0 : Units.TwipsToPoints(Own.Int(FormatAttr.CellWidth) ?? 0);
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            Own = Own.With(FormatAttr.CellWidth, (int)Math.Round(value * 20)).With(FormatAttr.CellWidthType, "dxa");
        }
    }

    /// <summary>How the cell's content is placed between its top and bottom.</summary>
    public CellVerticalAlignment VerticalAlignment
    {
        get => Host.Get(FormatAttr.CellVerticalAlignment) switch { "center" => CellVerticalAlignment.Center, "bottom" => CellVerticalAlignment.Bottom, _ => CellVerticalAlignment.Top };
        set => Own = Own.With(FormatAttr.CellVerticalAlignment, value switch
        {
            CellVerticalAlignment.Top => "top",
            CellVerticalAlignment.Center => "center",
            CellVerticalAlignment.Bottom => "bottom",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Whether the cell's text stays on one line rather than wrapping.</summary>
    public bool WrapText
    {
        get => Host.Get(FormatAttr.NoWrap) is not true;
        set => Own = Own.With(FormatAttr.NoWrap, value ? null : AttrSet.True);
    }

    /// <summary>The cell's background shading.</summary>
    public Shading Shading => new Shading(Host);

    /// <summary>A border of the cell. Horizontal and Vertical are the lines inside a merged cell.</summary>
    public Border GetBorder(BorderType borderType) => new Border(Host, Table.Side(borderType));

    internal void CopyFrom(CellFormat other)
    {
        cell.HMerge = other.cell.HMerge;
        Own = other.Own;
    }

    /// <summary>Removes the cell's own formatting, leaving what the table's style gives.</summary>
    public void ClearFormatting()
    {
        cell.HMerge = CellMerge.None;
        // The cell's place in the grid is structure, not formatting.
        Own = AttrSet.Empty.With(FormatAttr.GridSpan, Own.Get(FormatAttr.GridSpan)).With(FormatAttr.VerticalMerge, Own.Get(FormatAttr.VerticalMerge));
    }
}
