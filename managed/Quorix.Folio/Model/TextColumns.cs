using System.Collections;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>The text columns of a section, kept in its section properties' cols element. Widths are
/// in points; columns of equal width get theirs from the page's text width.</summary>
public sealed class TextColumnCollection : IEnumerable<TextColumn>
{
    private readonly PropBag bag;
    private readonly PageSetup page;

    internal TextColumnCollection(PropBag sectPr, PageSetup page)
    {
        bag = sectPr;
        this.page = page;
    }

    private PropElement? Cols => bag.Find("cols");

    internal List<PropElement> Own => Cols?.Children?.Where(c => c.Local == "col").ToList() ?? new List<PropElement>();

    /// <summary>How many columns the section's text flows in.</summary>
    public int Count => EvenlySpaced ? Math.Max(1, Units.ParseInt(Cols?.Get("num")) ?? 1) : Math.Max(1, Own.Count);

    /// <summary>Whether the columns share the text width equally, with <see cref="Spacing"/> between them.</summary>
    public bool EvenlySpaced
    {
        get => Cols?.Get("equalWidth") is not ("0" or "false" or "off") || Own.Count == 0;
        set
        {
            if (value == EvenlySpaced) return;
            var cols = bag.GetOrAdd("cols");
            if (value)
            {
                cols.Set("num", Units.Str(Count)).Set("equalWidth", null);
                cols.Children?.RemoveAll(c => c.Local == "col");
                return;
            }
            // Unequal columns start from the widths the equal ones had.
            int n = Count;
            double w = Width, space = Spacing;
            cols.Set("equalWidth", "0").Set("num", Units.Str(n));
            cols.Children = Enumerable.Range(0, n).Select(i => new PropElement("col").Set("w", Units.PointsToTwips(w))
                .Set("space", i < n - 1 ? Units.PointsToTwips(space) : null)).ToList();
        }
    }

    /// <summary>Space between evenly spaced columns.</summary>
    public double Spacing
    {
        get => Units.ParseInt(Cols?.Get("space")) is { } s ? Units.TwipsToPoints(s) : 36;
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            bag.GetOrAdd("cols").Set("space", Units.PointsToTwips(value));
        }
    }

    /// <summary>Whether a vertical line is drawn between columns.</summary>
    public bool LineBetween
    {
        get => Cols?.Get("sep") is "1" or "true" or "on";
        set => bag.GetOrAdd("cols").Set("sep", value ? "1" : null);
    }

    /// <summary>Width of each evenly spaced column.</summary>
    public double Width
    {
        get
        {
            int n = Count;
            double text = page.PageWidth - page.LeftMargin - page.RightMargin - page.Gutter;
            return Math.Max(1, (text - Spacing * (n - 1)) / n);
        }
    }

    /// <summary>Makes <paramref name="count"/> evenly spaced columns.</summary>
    public void SetCount(int count)
    {
        if (count < 1 || count > 45) throw new ArgumentOutOfRangeException(nameof(count), "A section has from 1 to 45 columns.");
        var cols = bag.GetOrAdd("cols");
        cols.Children?.RemoveAll(c => c.Local == "col");
        cols.Set("equalWidth", null).Set("num", count == 1 ? null : Units.Str(count));
    }

    /// <summary>The column at that position, from the left.</summary>
    public TextColumn this[int index]
    {
        get
        {
            if (index < 0 || index >= Count) throw new ArgumentOutOfRangeException(nameof(index));
            return new TextColumn(this, index);
        }
    }

    /// <summary>Left offsets from the text area's left edge and widths of the columns.</summary>
    internal (double X, double Width)[] Layout()
    {
        int n = Count;
        var result = new (double, double)[n];
        double x = 0;
        for (int i = 0; i < n; i++)
        {
            double w = ColumnWidth(i);
            result[i] = (x, w);
            x += w + SpaceAfter(i);
        }
        return result;
    }

    internal double ColumnWidth(int i) => EvenlySpaced ? Width : Units.TwipsToPoints(Units.ParseInt(Own[i].Get("w")) ?? 0);

    internal double SpaceAfter(int i) => EvenlySpaced ? (i < Count - 1 ? Spacing : 0) : Units.TwipsToPoints(Units.ParseInt(Own[i].Get("space")) ?? 0);

    internal void SetOwn(int i, string attr, double points)
    {
        if (EvenlySpaced) throw new InvalidOperationException("Evenly spaced columns take their widths from the page; set EvenlySpaced to false first.");
        Units.CheckRange(points, 0, 1584, attr);
        Own[i].Set(attr, Units.PointsToTwips(points));
    }

    /// <summary>The columns, left to right.</summary>
    public IEnumerator<TextColumn> GetEnumerator()
    {
        for (int i = 0; i < Count; i++) yield return new TextColumn(this, i);
    }

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>One column of a section: its width and the space after it, in points.</summary>
public sealed class TextColumn
{
    private readonly TextColumnCollection owner;
    private readonly int index;

    internal TextColumn(TextColumnCollection owner, int index)
    {
        this.owner = owner;
        this.index = index;
    }

    /// <summary>The column's width, in points.</summary>
    public double Width { get => owner.ColumnWidth(index); set => owner.SetOwn(index, "w", value); }

    /// <summary>The gap between this column and the next, in points.</summary>
    public double SpaceAfter { get => owner.SpaceAfter(index); set => owner.SetOwn(index, "space", value); }
}
