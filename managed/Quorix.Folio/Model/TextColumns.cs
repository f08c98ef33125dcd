using System.Collections;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>The text columns of a section. Widths are
/// in points; columns of equal width get theirs from the page's text width.</summary>
public sealed class TextColumnCollection : IEnumerable<TextColumn>
{
    private readonly Section section;
    private readonly PageSetup page;

    internal TextColumnCollection(Section section, PageSetup page)
    {
        this.section = section;
        this.page = page;
    }

    private AttrSet Own { get => section.Attrs; set => section.Attrs = value; }

    private ColumnList? Columns => Own.Get(FormatAttr.ColumnList) as ColumnList;

    /// <summary>How many columns the section has.</summary>
    public int Count => EvenlySpaced ? Math.Max(1, Own.Int(FormatAttr.ColumnCount) ?? 1) : Math.Max(1, Columns?.Count ?? 0);

    /// <summary>Whether the columns share the text width equally, with <see cref="Spacing"/> between them.</summary>
    public bool EvenlySpaced
    {
        get => Own.Bool(FormatAttr.ColumnsEqual) != false || Columns == null;
        set
        {
            if (value == EvenlySpaced) return;
            if (value)
            {
                Own = Own.With(FormatAttr.ColumnCount, Count).Without(FormatAttr.ColumnsEqual).Without(FormatAttr.ColumnList);
                return;
            }
            // Unequal columns start from the widths the equal ones had.
            int n = Count;
            int w = (int)Math.Round(Width * 20), space = (int)Math.Round(Spacing * 20);
            var cols = Enumerable.Range(0, n).Select(i => (w, i < n - 1 ? space : (int?)null)).ToArray();
            Own = Own.With(FormatAttr.ColumnsEqual, false).With(FormatAttr.ColumnCount, n).With(FormatAttr.ColumnList, new ColumnList(cols));
        }
    }

    /// <summary>Space between evenly spaced columns.</summary>
    public double Spacing
    {
        get => Own.Int(FormatAttr.ColumnSpace) is { } s ? Units.TwipsToPoints(s) : 36;
        set
        {
            Units.CheckRange(value, 0, 1584, nameof(value));
            Own = Own.With(FormatAttr.ColumnSpace, (int)Math.Round(value * 20));
        }
    }

    /// <summary>Whether a vertical line is drawn between columns.</summary>
    public bool LineBetween
    {
        get => Own.Bool(FormatAttr.ColumnSeparator) ?? false;
        set => Own = Own.With(FormatAttr.ColumnSeparator, value ? AttrSet.True : null);
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
        Own = Own.Without(FormatAttr.ColumnList).Without(FormatAttr.ColumnsEqual).With(FormatAttr.ColumnCount, count == 1 ? null : count);
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

    internal double ColumnWidth(int i) => EvenlySpaced ? Width : Units.TwipsToPoints(Columns![i].Width);

    internal double SpaceAfter(int i) => EvenlySpaced ? (i < Count - 1 ? Spacing : 0) : Units.TwipsToPoints(Columns![i].Space ?? 0);

    internal void SetOwn(int i, bool width, double points)
    {
        if (EvenlySpaced) throw new InvalidOperationException("Evenly spaced columns take their widths from the page; set EvenlySpaced to false first.");
        Units.CheckRange(points, 0, 1584, width ? "w" : "space");
        int twips = (int)Math.Round(points * 20);
        Own = Own.With(FormatAttr.ColumnList, Columns!.With(i, width ? twips : null, width ? null : twips));
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

    /// <summary>The column's width in points.</summary>
    public double Width { get => owner.ColumnWidth(index); set => owner.SetOwn(index, true, value); }

    /// <summary>The space after the column, before the next one, in points.</summary>
    public double SpaceAfter { get => owner.SpaceAfter(index); set => owner.SetOwn(index, false, value); }
}
