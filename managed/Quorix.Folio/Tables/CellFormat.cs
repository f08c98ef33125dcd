using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>The formatting of a table cell.</summary>
public sealed class CellFormat
{
    private readonly Cell cell;

    internal CellFormat(Cell cell) { this.cell = cell; }

    private PropBag Bag => cell.TcPr;

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
        get
        {
            var e = Bag.Find("vMerge");
            if (e == null) return CellMerge.None;
            return e.Get("val") == "restart" ? CellMerge.First : CellMerge.Previous;
        }
        set
        {
            switch (value)
            {
                case CellMerge.None: Bag.Remove("vMerge"); break;
                case CellMerge.First: Bag.GetOrAdd("vMerge").Set("val", "restart"); break;
                case CellMerge.Previous: Bag.GetOrAdd("vMerge").Attrs = null; break;
                default: throw new ArgumentOutOfRangeException(nameof(value));
            }
        }
    }

    /// <summary>Preferred width in points; 0 when the cell has none.</summary>
    public double Width
    {
        get
        {
            var e = Bag.Find("tcW");
            if (e == null || e.Get("type") is "pct" or "auto" or "nil") return 0;
            return Units.TwipsToPoints(Units.ParseInt(e.Get("w")) ?? 0);
        }
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            Bag.GetOrAdd("tcW").Set("w", Units.PointsToTwips(value)).Set("type", "dxa");
        }
    }

    /// <summary>How the cell's content is placed between its top and bottom.</summary>
    public CellVerticalAlignment VerticalAlignment
    {
        get => Bag.Val("vAlign") switch { "center" => CellVerticalAlignment.Center, "bottom" => CellVerticalAlignment.Bottom, _ => CellVerticalAlignment.Top };
        set => Bag.SetVal("vAlign", value switch
        {
            CellVerticalAlignment.Top => "top",
            CellVerticalAlignment.Center => "center",
            CellVerticalAlignment.Bottom => "bottom",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>The cell's background shading.</summary>
    public Shading Shading => new Shading(Bag);

    internal void CopyFrom(CellFormat other)
    {
        cell.HMerge = other.cell.HMerge;
        Bag.Clear();
        Bag.MergeFrom(other.Bag);
    }

    /// <summary>Removes the cell's own formatting, leaving what the table's style gives.</summary>
    public void ClearFormatting()
    {
        cell.HMerge = CellMerge.None;
        Bag.Clear();
    }
}
