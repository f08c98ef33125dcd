using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tables;

/// <summary>A table: rows of cells, each cell a small story of paragraphs and tables.</summary>
public sealed class Table : CompositeNode, IBlockFormatted
{
    internal FormatProps Props;
    // Column widths in twips as read; rebuilt on save when the cell count no longer matches.
    internal List<int> Grid = new();
    internal List<PropElement.Attr>? GridExtra;

    /// <summary>A new empty table of doc, not yet inserted.</summary>
    public Table(DocumentBase doc) : this(doc, FormatProps.None) { }

    internal Table(DocumentBase? doc, FormatProps props) : base(doc) { Props = props; }

    ref FormatProps IBlockFormatted.Props => ref Props;

    Docx.PropsCodec IBlockFormatted.Codec => Docx.PropsCodec.Table;

    /// <summary>Always Table.</summary>
    public override NodeType NodeType => NodeType.Table;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Table>(visitor, visitor.VisitTableStart(this), static (v, n) => v.VisitTableEnd(n));

    /// <summary>The table's rows.</summary>
    public RowCollection Rows => new RowCollection(this);

    /// <summary>The table's first row; null when it has none.</summary>
    public Row? FirstRow => (Row?)GetChild(NodeType.Row, 0, false);

    /// <summary>The table's last row; null when it has none.</summary>
    public Row? LastRow => (Row?)GetChild(NodeType.Row, -1, false);

    internal override bool CanHold(Node child) => child is Row || (child is OpaqueNode o && o.Kind == OpaqueKind.Block);

    internal AttrSet Attrs
    {
        get => Props.Attrs;
        set => FormatProps.Put(ref Props, doc, value);
    }

    /// <summary>The table's own formatting over what its style gives.</summary>
    internal AttrHost Host => new(() => Attrs, v => Attrs = v, () => doc?.Cascade.Tables.TableOf(this) ?? AttrSet.Empty);

    /// <summary>The table's style; null when it names none or one the document lacks.</summary>
    internal Style? TableStyle => doc?.Styles.FindById(Attrs.String(FormatAttr.TableStyle));

    /// <summary>The name of the table's style.</summary>
    public string StyleName
    {
        get => TableStyle?.Name ?? "Normal Table";
        set
        {
            var s = doc?.Styles[value] ?? throw new ArgumentException($"There is no style named '{value}'.", nameof(value));
            if (s.Type != StyleType.Table) throw new ArgumentException($"The style '{value}' is not a table style.", nameof(value));
            Attrs = Attrs.With(FormatAttr.TableStyle, s.StyleId);
        }
    }

    /// <summary>The built-in identifier of the table's style.</summary>
    public StyleIdentifier StyleIdentifier
    {
        get => TableStyle?.StyleIdentifier ?? StyleIdentifier.TableNormal;
        set => Attrs = Attrs.With(FormatAttr.TableStyle, doc!.Styles.GetOrCreateBuiltIn(value).StyleId);
    }

    /// <summary>Which parts of the table its style formats apart: first and last row and column, banded rows and columns.</summary>
    public TableStyleOptions StyleOptions
    {
        get => TableLook.Of(Host);
        set => Attrs = TableLook.With(Attrs, value);
    }

    /// <summary>How the table is placed between the margins.</summary>
    public TableAlignment Alignment
    {
        get => Host.Get(FormatAttr.TableAlignment) switch { "center" => TableAlignment.Center, "right" or "end" => TableAlignment.Right, _ => TableAlignment.Left };
        set => Attrs = Attrs.With(FormatAttr.TableAlignment, value switch
        {
            TableAlignment.Left => "left",
            TableAlignment.Center => "center",
            TableAlignment.Right => "right",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    /// <summary>Whether the table's columns run right to left.</summary>
    public bool Bidi
    {
        get => Host.Get(FormatAttr.TableBidi) is true;
        set => Attrs = Attrs.With(FormatAttr.TableBidi, value ? AttrSet.True : null);
    }

    /// <summary>How far the table sits in from the left margin, in points.</summary>
    public double LeftIndent
    {
        get => Host.Get(FormatAttr.TableIndentType) is null or "dxa" && Host.Get(FormatAttr.TableIndent) is int w ? Units.TwipsToPoints(w) : 0;
        set
        {
            Units.CheckRange(value, -1584, 1584, nameof(value));
            Attrs = Attrs.With(FormatAttr.TableIndent, (int)Math.Round(value * 20)).With(FormatAttr.TableIndentType, "dxa");
        }
    }

    /// <summary>The table's shading, under that of its cells.</summary>
    public Shading Shading => new Shading(Host);

    /// <summary>A border of the table: its outer sides, or the lines between its rows (Horizontal) and columns (Vertical).</summary>
    public Border GetBorder(BorderType borderType) => new Border(Host, Side(borderType));

    internal static FormatAttr Side(BorderType t) => t switch
    {
        BorderType.Top => FormatAttr.BorderTop,
        BorderType.Left => FormatAttr.BorderLeft,
        BorderType.Bottom => FormatAttr.BorderBottom,
        BorderType.Right => FormatAttr.BorderRight,
        BorderType.Horizontal => FormatAttr.BorderInsideH,
        BorderType.Vertical => FormatAttr.BorderInsideV,
        _ => throw new ArgumentOutOfRangeException(nameof(t)),
    };

    private static readonly BorderType[] AllSides = { BorderType.Top, BorderType.Left, BorderType.Bottom, BorderType.Right, BorderType.Horizontal, BorderType.Vertical };

    /// <summary>Sets all outer and inner borders of the table.</summary>
    public void SetBorders(LineStyle lineStyle, double lineWidth)
    {
        Units.CheckRange(lineWidth, 0, 12, nameof(lineWidth));
        var line = new BorderLine(BorderLine.StyleName(lineStyle), lineStyle == LineStyle.None ? 4 : (int)Math.Round(lineWidth * 8), 0, "auto");
        var set = Attrs.Without(FormatAttr.BorderStart).Without(FormatAttr.BorderEnd);
        foreach (var side in AllSides) set = set.With(Side(side), line);
        Attrs = set;
    }

    /// <summary>Removes the table's own borders, leaving what its style gives.</summary>
    public void ClearBorders()
    {
        var set = Attrs;
        foreach (var side in AllSides) set = set.Without(Side(side));
        Attrs = set.Without(FormatAttr.BorderStart).Without(FormatAttr.BorderEnd);
    }

    internal override void AppendText(TextSink sb)
    {
        for (var n = first; n != null; n = n.next) n.AppendText(sb);
    }

    /// <summary>Cell count of the widest row, merged cells counted by the columns they span.</summary>
    internal int GridColumns()
    {
        int max = 0;
        for (var r = first; r != null; r = r.next)
            if (r is Row row) max = Math.Max(max, row.GridWidth());
        return max;
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var t = new Table(target, Props.Clone()) { Grid = new List<int>(Grid), GridExtra = GridExtra?.ToList() };
        if (deep) CloneChildrenInto(t, target);
        return t;
    }
}
