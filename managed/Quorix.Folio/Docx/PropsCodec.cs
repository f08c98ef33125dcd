using System.Globalization;
using System.Xml;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>Translates formatting properties (run, paragraph, table, row, cell, section) between their
/// WordprocessingML elements and the engine's attributes. What the engine does not model (whole elements,
/// or attributes beside modelled ones) is kept as read and written back in its place.</summary>
internal sealed class PropsCodec
{
    // Element: the element's on/off value. Int, Text: an attribute. OnOff: a "0"/"1" attribute.
    // Present: an element whose presence counts, its value optional. Border: a border child of a
    // container element. Columns: the column children of a columns element. Line: an element that is a
    // border itself. Tabs: the tab children of a tabs element.
    private enum Kind : byte { Toggle, Int, Text, OnOff, Present, Border, Columns, Line, Tabs }

    private readonly record struct Slot(FormatAttr Attr, string Element, string Attribute, Kind Kind)
    {
        public bool IsChild => Kind is Kind.Border or Kind.Columns or Kind.Tabs;
    }

    private readonly Slot[] slots;
    private readonly Slot?[] byAttr;
    private readonly Dictionary<string, Slot[]> byElement;
    private readonly PropOrder order;
    private readonly string container;

    private PropsCodec(string container, PropOrder order, Slot[] slots)
    {
        this.container = container;
        this.order = order;
        this.slots = slots;
        byAttr = new Slot?[(int)FormatAttr.Count];
        foreach (var s in slots) byAttr[(int)s.Attr] = s;
        byElement = slots.GroupBy(s => s.Element).ToDictionary(g => g.Key, g => g.ToArray());
    }

    /// <summary>Whether the codec says anything about the attribute.</summary>
    public bool Holds(FormatAttr a) => byAttr[(int)a] != null;

    private static Slot[] Shading(string element = "shd") => new Slot[]
    {
        new(FormatAttr.ShadingPattern, element, "val", Kind.Text),
        new(FormatAttr.ShadingColor, element, "color", Kind.Text),
        new(FormatAttr.ShadingFill, element, "fill", Kind.Text),
    };

    private static Slot[] Borders(string element, params (FormatAttr Attr, string Side)[] sides) =>
        sides.Select(s => new Slot(s.Attr, element, s.Side, Kind.Border)).ToArray();

    private static readonly (FormatAttr, string)[] TableSides =
    {
        (FormatAttr.BorderTop, "top"), (FormatAttr.BorderLeft, "left"), (FormatAttr.BorderStart, "start"),
        (FormatAttr.BorderBottom, "bottom"), (FormatAttr.BorderRight, "right"), (FormatAttr.BorderEnd, "end"),
        (FormatAttr.BorderInsideH, "insideH"), (FormatAttr.BorderInsideV, "insideV"),
    };

    public static readonly PropsCodec Run = new("rPr", PropOrder.Run, new Slot[]
    {
        new(FormatAttr.CharStyle, "rStyle", "val", Kind.Text),
        new(FormatAttr.LatinFont, "rFonts", "ascii", Kind.Text),
        new(FormatAttr.LatinFontAlt, "rFonts", "hAnsi", Kind.Text),
        new(FormatAttr.LatinTheme, "rFonts", "asciiTheme", Kind.Text),
        new(FormatAttr.LatinThemeAlt, "rFonts", "hAnsiTheme", Kind.Text),
        new(FormatAttr.EastAsianFont, "rFonts", "eastAsia", Kind.Text),
        new(FormatAttr.ComplexFont, "rFonts", "cs", Kind.Text),
        new(FormatAttr.EastAsianTheme, "rFonts", "eastAsiaTheme", Kind.Text),
        new(FormatAttr.ComplexTheme, "rFonts", "cstheme", Kind.Text),
        new(FormatAttr.FontHint, "rFonts", "hint", Kind.Text),
        new(FormatAttr.Bold, "b", "val", Kind.Toggle),
        new(FormatAttr.BoldComplex, "bCs", "val", Kind.Toggle),
        new(FormatAttr.Italic, "i", "val", Kind.Toggle),
        new(FormatAttr.ItalicComplex, "iCs", "val", Kind.Toggle),
        new(FormatAttr.AllCaps, "caps", "val", Kind.Toggle),
        new(FormatAttr.SmallCaps, "smallCaps", "val", Kind.Toggle),
        new(FormatAttr.Strike, "strike", "val", Kind.Toggle),
        new(FormatAttr.DoubleStrike, "dstrike", "val", Kind.Toggle),
        new(FormatAttr.Outline, "outline", "val", Kind.Toggle),
        new(FormatAttr.Shadow, "shadow", "val", Kind.Toggle),
        new(FormatAttr.Emboss, "emboss", "val", Kind.Toggle),
        new(FormatAttr.Imprint, "imprint", "val", Kind.Toggle),
        new(FormatAttr.NoProof, "noProof", "val", Kind.Toggle),
        new(FormatAttr.Hidden, "vanish", "val", Kind.Toggle),
        new(FormatAttr.WebHidden, "webHidden", "val", Kind.Toggle),
        new(FormatAttr.RightToLeft, "rtl", "val", Kind.Toggle),
        new(FormatAttr.ComplexScript, "cs", "val", Kind.Toggle),
        new(FormatAttr.Color, "color", "val", Kind.Text),
        new(FormatAttr.ColorTheme, "color", "themeColor", Kind.Text),
        new(FormatAttr.ColorTint, "color", "themeTint", Kind.Text),
        new(FormatAttr.ColorShade, "color", "themeShade", Kind.Text),
        new(FormatAttr.Spacing, "spacing", "val", Kind.Int),
        new(FormatAttr.Scaling, "w", "val", Kind.Int),
        new(FormatAttr.Kerning, "kern", "val", Kind.Int),
        new(FormatAttr.Position, "position", "val", Kind.Int),
        new(FormatAttr.Size, "sz", "val", Kind.Int),
        new(FormatAttr.SizeComplex, "szCs", "val", Kind.Int),
        new(FormatAttr.Highlight, "highlight", "val", Kind.Text),
        new(FormatAttr.Underline, "u", "val", Kind.Text),
        new(FormatAttr.UnderlineColor, "u", "color", Kind.Text),
        new(FormatAttr.VerticalAlign, "vertAlign", "val", Kind.Text),
        new(FormatAttr.Language, "lang", "val", Kind.Text),
        new(FormatAttr.LanguageEastAsian, "lang", "eastAsia", Kind.Text),
        new(FormatAttr.LanguageBidi, "lang", "bidi", Kind.Text),
        new(FormatAttr.RunBorder, "bdr", "", Kind.Line),
    }.Concat(Shading()).ToArray());

    public static readonly PropsCodec Paragraph = new("pPr", PropOrder.Paragraph, new Slot[]
    {
        new(FormatAttr.ParaStyle, "pStyle", "val", Kind.Text),
        new(FormatAttr.KeepNext, "keepNext", "val", Kind.Toggle),
        new(FormatAttr.KeepLines, "keepLines", "val", Kind.Toggle),
        new(FormatAttr.PageBreakBefore, "pageBreakBefore", "val", Kind.Toggle),
        new(FormatAttr.WidowControl, "widowControl", "val", Kind.Toggle),
        new(FormatAttr.SpaceBefore, "spacing", "before", Kind.Int),
        new(FormatAttr.SpaceAfter, "spacing", "after", Kind.Int),
        new(FormatAttr.LineSpacing, "spacing", "line", Kind.Int),
        new(FormatAttr.LineRule, "spacing", "lineRule", Kind.Text),
        new(FormatAttr.IndentLeft, "ind", "left", Kind.Int),
        new(FormatAttr.IndentStart, "ind", "start", Kind.Int),
        new(FormatAttr.IndentRight, "ind", "right", Kind.Int),
        new(FormatAttr.IndentEnd, "ind", "end", Kind.Int),
        new(FormatAttr.IndentHanging, "ind", "hanging", Kind.Int),
        new(FormatAttr.IndentFirstLine, "ind", "firstLine", Kind.Int),
        new(FormatAttr.Alignment, "jc", "val", Kind.Text),
        new(FormatAttr.OutlineLevel, "outlineLvl", "val", Kind.Int),
        new(FormatAttr.ParaBidi, "bidi", "val", Kind.Toggle),
        new(FormatAttr.Tabs, "tabs", "tab", Kind.Tabs),
    }.Concat(Borders("pBdr", (FormatAttr.ParaBorderTop, "top"), (FormatAttr.ParaBorderLeft, "left"), (FormatAttr.ParaBorderBottom, "bottom"),
        (FormatAttr.ParaBorderRight, "right"), (FormatAttr.ParaBorderBetween, "between"))).Concat(Shading()).ToArray());

    public static readonly PropsCodec Table = new("tblPr", PropOrder.Table, new Slot[]
    {
        new(FormatAttr.TableStyle, "tblStyle", "val", Kind.Text),
        new(FormatAttr.TableBidi, "bidiVisual", "val", Kind.Toggle),
        new(FormatAttr.RowBandSize, "tblStyleRowBandSize", "val", Kind.Int),
        new(FormatAttr.ColumnBandSize, "tblStyleColBandSize", "val", Kind.Int),
        new(FormatAttr.TableWidth, "tblW", "w", Kind.Int),
        new(FormatAttr.TableWidthType, "tblW", "type", Kind.Text),
        new(FormatAttr.TableAlignment, "jc", "val", Kind.Text),
        new(FormatAttr.TableIndent, "tblInd", "w", Kind.Int),
        new(FormatAttr.TableIndentType, "tblInd", "type", Kind.Text),
        new(FormatAttr.TableLayoutFixed, "tblLayout", "type", Kind.Text),
        new(FormatAttr.TableLook, "tblLook", "val", Kind.Text),
        new(FormatAttr.TableLookFirstRow, "tblLook", "firstRow", Kind.OnOff),
        new(FormatAttr.TableLookLastRow, "tblLook", "lastRow", Kind.OnOff),
        new(FormatAttr.TableLookFirstColumn, "tblLook", "firstColumn", Kind.OnOff),
        new(FormatAttr.TableLookLastColumn, "tblLook", "lastColumn", Kind.OnOff),
        new(FormatAttr.TableLookNoRowBands, "tblLook", "noHBand", Kind.OnOff),
        new(FormatAttr.TableLookNoColumnBands, "tblLook", "noVBand", Kind.OnOff),
    }.Concat(Borders("tblBorders", TableSides)).Concat(Shading()).ToArray());

    public static readonly PropsCodec TableRow = new("trPr", PropOrder.TableRow, new Slot[]
    {
        new(FormatAttr.GridBefore, "gridBefore", "val", Kind.Int),
        new(FormatAttr.GridAfter, "gridAfter", "val", Kind.Int),
        new(FormatAttr.CantSplit, "cantSplit", "val", Kind.Toggle),
        new(FormatAttr.RowHeight, "trHeight", "val", Kind.Int),
        new(FormatAttr.RowHeightRule, "trHeight", "hRule", Kind.Text),
        new(FormatAttr.HeaderRow, "tblHeader", "val", Kind.Toggle),
        new(FormatAttr.RowAlignment, "jc", "val", Kind.Text),
        new(FormatAttr.RowHidden, "hidden", "val", Kind.Toggle),
    });

    public static readonly PropsCodec TableCell = new("tcPr", PropOrder.TableCell, new Slot[]
    {
        new(FormatAttr.CellWidth, "tcW", "w", Kind.Int),
        new(FormatAttr.CellWidthType, "tcW", "type", Kind.Text),
        new(FormatAttr.GridSpan, "gridSpan", "val", Kind.Int),
        new(FormatAttr.VerticalMerge, "vMerge", "val", Kind.Present),
        new(FormatAttr.NoWrap, "noWrap", "val", Kind.Toggle),
        new(FormatAttr.CellTextDirection, "textDirection", "val", Kind.Text),
        new(FormatAttr.CellVerticalAlignment, "vAlign", "val", Kind.Text),
        new(FormatAttr.HideMark, "hideMark", "val", Kind.Toggle),
    }.Concat(Borders("tcBorders", TableSides.Append((FormatAttr.BorderDiagonalDown, "tl2br")).Append((FormatAttr.BorderDiagonalUp, "tr2bl")).ToArray()))
     .Concat(Shading()).ToArray());

    public static readonly PropsCodec Section = new("sectPr", PropOrder.Section, new Slot[]
    {
        new(FormatAttr.SectionStart, "type", "val", Kind.Text),
        new(FormatAttr.PageWidth, "pgSz", "w", Kind.Int),
        new(FormatAttr.PageHeight, "pgSz", "h", Kind.Int),
        new(FormatAttr.PageOrientation, "pgSz", "orient", Kind.Text),
        new(FormatAttr.PaperCode, "pgSz", "code", Kind.Int),
        new(FormatAttr.MarginTop, "pgMar", "top", Kind.Int),
        new(FormatAttr.MarginRight, "pgMar", "right", Kind.Int),
        new(FormatAttr.MarginBottom, "pgMar", "bottom", Kind.Int),
        new(FormatAttr.MarginLeft, "pgMar", "left", Kind.Int),
        new(FormatAttr.MarginHeader, "pgMar", "header", Kind.Int),
        new(FormatAttr.MarginFooter, "pgMar", "footer", Kind.Int),
        new(FormatAttr.MarginGutter, "pgMar", "gutter", Kind.Int),
        new(FormatAttr.PageBorderOffsetFrom, "pgBorders", "offsetFrom", Kind.Text),
        new(FormatAttr.PageBorderDisplay, "pgBorders", "display", Kind.Text),
        new(FormatAttr.PageBorderZOrder, "pgBorders", "zOrder", Kind.Text),
        new(FormatAttr.PageNumberStart, "pgNumType", "start", Kind.Int),
        new(FormatAttr.PageNumberFormat, "pgNumType", "fmt", Kind.Text),
        new(FormatAttr.ColumnCount, "cols", "num", Kind.Int),
        new(FormatAttr.ColumnSpace, "cols", "space", Kind.Int),
        new(FormatAttr.ColumnsEqual, "cols", "equalWidth", Kind.OnOff),
        new(FormatAttr.ColumnSeparator, "cols", "sep", Kind.OnOff),
        new(FormatAttr.ColumnList, "cols", "col", Kind.Columns),
        new(FormatAttr.SectionVerticalAlignment, "vAlign", "val", Kind.Text),
        new(FormatAttr.TitlePage, "titlePg", "val", Kind.Toggle),
        new(FormatAttr.SectionBidi, "bidi", "val", Kind.Toggle),
        new(FormatAttr.GutterRight, "rtlGutter", "val", Kind.Toggle),
        new(FormatAttr.GridType, "docGrid", "type", Kind.Text),
        new(FormatAttr.GridLinePitch, "docGrid", "linePitch", Kind.Int),
        new(FormatAttr.GridCharSpace, "docGrid", "charSpace", Kind.Int),
    }.Concat(Borders("pgBorders", (FormatAttr.PageBorderTop, "top"), (FormatAttr.PageBorderLeft, "left"),
        (FormatAttr.PageBorderBottom, "bottom"), (FormatAttr.PageBorderRight, "right"))).ToArray());

    public static readonly PropsCodec Level = new("lvl", PropOrder.Level, new Slot[]
    {
        new(FormatAttr.LevelStart, "start", "val", Kind.Int),
        new(FormatAttr.LevelNumberStyle, "numFmt", "val", Kind.Text),
        new(FormatAttr.LevelRestart, "lvlRestart", "val", Kind.Int),
        new(FormatAttr.LevelParagraphStyle, "pStyle", "val", Kind.Text),
        new(FormatAttr.LevelLegal, "isLgl", "val", Kind.Toggle),
        new(FormatAttr.LevelSuffix, "suff", "val", Kind.Text),
        new(FormatAttr.LevelText, "lvlText", "val", Kind.Text),
        new(FormatAttr.LevelAlignment, "lvlJc", "val", Kind.Text),
    });

    /// <summary>Splits read properties into attributes (shared through the table when given) and kept markup.</summary>
    public FormatProps Decode(PropBag? bag, Dictionary<AttrSet, AttrSet>? intern = null)
    {
        if (bag == null || bag.Count == 0) return FormatProps.None;
        var attrs = AttrSet.Empty;
        List<PropElement>? kept = null;
        foreach (var e in bag.Items)
        {
            // An element that says nothing the model can hold (unknown, with text, a valued element
            // without attributes, children the model cannot read) stays as it is.
            if (!PropElement.IsMain(e.Ns) || e.Text != null || !byElement.TryGetValue(e.Local, out var slots) ||
                (slots[0].Kind is not (Kind.Toggle or Kind.Present) && e.Attrs is not { Count: > 0 } && e.Children == null))
            {
                (kept ??= new List<PropElement>()).Add(e);
                continue;
            }
            if (slots[0].Kind == Kind.Line)
            {
                if (e.Children == null && ReadBorder(e) is { } line) attrs = attrs.With(slots[0].Attr, line);
                else (kept ??= new List<PropElement>()).Add(e);
                continue;
            }
            List<PropElement>? keptChildren = null;
            if (e.Children != null && !DecodeChildren(slots, e.Children, ref attrs, ref keptChildren))
            {
                (kept ??= new List<PropElement>()).Add(e);
                continue;
            }
            var flag = slots[0].Kind is Kind.Toggle or Kind.Present ? slots[0] : (Slot?)null;
            if (flag is { } f && e.Attrs == null) attrs = attrs.With(f.Attr, f.Kind == Kind.Toggle ? AttrSet.True : "");
            List<PropElement.Attr>? rest = null;
            if (e.Attrs != null)
                foreach (var a in e.Attrs)
                {
                    if (Known(slots, a) is { } slot && DecodeValue(slot.Kind, a.Value) is { } v) attrs = attrs.With(slot.Attr, v);
                    else (rest ??= new List<PropElement.Attr>()).Add(a);
                }
            // A flag written with only foreign attributes is on.
            if (flag is { } g && e.Attrs != null && !attrs.Has(g.Attr) && (rest == null || !rest.Exists(a => a.Local == "val")))
                attrs = attrs.With(g.Attr, g.Kind == Kind.Toggle ? AttrSet.True : "");
            if (rest != null || keptChildren != null) (kept ??= new List<PropElement>()).Add(new PropElement(e.Local) { Attrs = rest, Children = keptChildren });
        }
        return new FormatProps(intern != null ? attrs.Intern(intern) : attrs, kept != null ? new PropBag(order, kept) : null);
    }

    // Border children one by one: a side the model cannot read stays kept beside the others. Columns
    // all or none; false keeps the whole element as read.
    private static bool DecodeChildren(Slot[] slots, List<PropElement> children, ref AttrSet attrs, ref List<PropElement>? keptChildren)
    {
        List<(int, int?)>? columns = null;
        List<TabList.Entry>? tabs = null;
        Slot? columnSlot = null, tabSlot = null;
        var decoded = attrs;
        foreach (var c in children)
        {
            Slot? slot = null;
            if (PropElement.IsMain(c.Ns))
                foreach (var s in slots)
                    if (s.IsChild && s.Attribute == c.Local) { slot = s; break; }
            if (slot is { Kind: Kind.Tabs } ts)
            {
                if (c.Children != null || c.Text != null || ReadTab(c) is not { } tab) return false;
                (tabs ??= new List<TabList.Entry>()).Add(tab);
                tabSlot = ts;
                continue;
            }
            if (slot is { Kind: Kind.Columns } cs)
            {
                if (c.Children != null || c.Text != null || ReadColumn(c) is not { } col) return false;
                (columns ??= new List<(int, int?)>()).Add(col);
                columnSlot = cs;
                continue;
            }
            if (slot is { } found && c.Children == null && c.Text == null && !decoded.Has(found.Attr) && ReadBorder(c) is { } border)
                decoded = decoded.With(found.Attr, border);
            else (keptChildren ??= new List<PropElement>()).Add(c);
        }
        if (columns != null || tabs != null)
        {
            if (keptChildren != null) return false;
            if (columns != null) decoded = decoded.With(columnSlot!.Value.Attr, new ColumnList(columns.ToArray()));
            // Two stops at one position cannot be told apart: kept as read.
            if (tabs != null)
            {
                if (tabs.Select(t => t.Position).Distinct().Count() != tabs.Count) return false;
                decoded = decoded.With(tabSlot!.Value.Attr, new TabList(tabs));
            }
        }
        attrs = decoded;
        return true;
    }

    private static BorderLine? ReadBorder(PropElement e)
    {
        string? style = null, color = null, theme = null, tint = null, shade = null;
        int? size = null, space = null;
        bool shadow = false, frame = false;
        if (e.Attrs == null) return null;
        foreach (var a in e.Attrs)
        {
            if (!PropElement.IsMain(a.Ns)) return null;
            switch (a.Local)
            {
                case "val": style = a.Value; break;
                case "sz": if (ExactInt(a.Value) is { } sz) size = sz; else return null; break;
                case "space": if (ExactInt(a.Value) is { } sp) space = sp; else return null; break;
                case "color": color = a.Value; break;
                case "themeColor": theme = a.Value; break;
                case "themeTint": tint = a.Value; break;
                case "themeShade": shade = a.Value; break;
                case "shadow": if (a.Value is "0" or "1") shadow = a.Value == "1"; else return null; break;
                case "frame": if (a.Value is "0" or "1") frame = a.Value == "1"; else return null; break;
                default: return null;
            }
        }
        return style == null ? null : new BorderLine(style, size, space, color, theme, tint, shade, shadow, frame);
    }

    private static PropElement WriteBorder(string side, BorderLine b)
    {
        var e = new PropElement(side) { Attrs = new List<PropElement.Attr>(4) };
        void Add(string local, string? v)
        {
            if (v != null) e.Attrs!.Add(new PropElement.Attr(Ns.W, local, v));
        }
        Add("val", b.Style);
        if (b.Size is { } size) Add("sz", Units.Str(size));
        if (b.Space is { } space) Add("space", Units.Str(space));
        Add("color", b.Color);
        Add("themeColor", b.ThemeColor);
        Add("themeTint", b.ThemeTint);
        Add("themeShade", b.ThemeShade);
        if (b.Shadow) Add("shadow", "1");
        if (b.Frame) Add("frame", "1");
        return e;
    }

    private static (int, int?)? ReadColumn(PropElement e)
    {
        int? width = null, space = null;
        foreach (var a in e.Attrs ?? new List<PropElement.Attr>())
        {
            if (!PropElement.IsMain(a.Ns)) return null;
            if (a.Local == "w" && ExactInt(a.Value) is { } w) width = w;
            else if (a.Local == "space" && ExactInt(a.Value) is { } s) space = s;
            else return null;
        }
        return width is { } cw ? (cw, space) : null;
    }

    private static TabList.Entry? ReadTab(PropElement e)
    {
        string? kind = null, leader = null;
        int? position = null;
        foreach (var a in e.Attrs ?? new List<PropElement.Attr>())
        {
            if (!PropElement.IsMain(a.Ns)) return null;
            if (a.Local == "val") kind = a.Value;
            else if (a.Local == "pos" && ExactInt(a.Value) is { } p) position = p;
            else if (a.Local == "leader") leader = a.Value;
            else return null;
        }
        return kind != null && position is { } at ? new TabList.Entry(at, kind, leader) : null;
    }

    private static int? ExactInt(string v) => Units.ParseInt(v) is { } i && Units.Str(i) == v ? i : null;

    private static Slot? Known(Slot[] slots, PropElement.Attr a)
    {
        if (!PropElement.IsMain(a.Ns)) return null;
        foreach (var s in slots)
            if (!s.IsChild && s.Attribute == a.Local) return s;
        return null;
    }

    private static object? DecodeValue(Kind kind, string v)
    {
        switch (kind)
        {
            case Kind.Toggle:
                return v switch
                {
                    "1" or "true" or "on" => AttrSet.True,
                    "0" or "false" or "off" => AttrSet.False,
                    _ => null,
                };
            case Kind.OnOff:
                // Only the spelling written back is taken; others stay as read.
                return v switch { "1" => AttrSet.True, "0" => AttrSet.False, _ => null };
            case Kind.Int:
                return ExactInt(v);
            default:
                return v;
        }
    }

    private static string? EncodeValue(Kind kind, object v) => kind switch
    {
        Kind.Toggle => (bool)v ? null : "0",
        Kind.OnOff => (bool)v ? "1" : "0",
        Kind.Int => Units.Str((int)v),
        Kind.Present => (string)v is "" ? null : (string)v,
        _ => (string)v,
    };

    /// <summary>The elements that say the attributes, in schema order.</summary>
    public List<PropElement> Encode(AttrSet attrs)
    {
        var list = new List<PropElement>(attrs.Count);
        for (int i = 0; i < attrs.Count; i++)
        {
            if (byAttr[(int)attrs.KeyAt(i)] is not { } slot) continue;
            if (slot.Kind == Kind.Line)
            {
                list.Add(WriteBorder(slot.Element, (BorderLine)attrs.ValueAt(i)));
                continue;
            }
            var e = list.Find(x => x.Local == slot.Element);
            if (e == null)
            {
                e = new PropElement(slot.Element);
                list.Add(e);
            }
            var value = attrs.ValueAt(i);
            switch (slot.Kind)
            {
                case Kind.Border:
                    (e.Children ??= new List<PropElement>()).Add(WriteBorder(slot.Attribute, (BorderLine)value));
                    e.Children.Sort((a, b) => PropOrder.Borders.Rank(a.Local).CompareTo(PropOrder.Borders.Rank(b.Local)));
                    break;
                case Kind.Tabs:
                    e.Children ??= new List<PropElement>();
                    foreach (var t in ((TabList)value).Entries)
                    {
                        var tab = new PropElement("tab") { Attrs = new List<PropElement.Attr>(3) { new(Ns.W, "val", t.Kind) } };
                        if (t.Leader != null) tab.Attrs.Add(new PropElement.Attr(Ns.W, "leader", t.Leader));
                        tab.Attrs.Add(new PropElement.Attr(Ns.W, "pos", Units.Str(t.Position)));
                        e.Children.Add(tab);
                    }
                    break;
                case Kind.Columns:
                    var cols = (ColumnList)value;
                    e.Children ??= new List<PropElement>();
                    for (int c = 0; c < cols.Count; c++)
                    {
                        // Built directly: encoding is no formatting edit.
                        var col = new PropElement("col") { Attrs = new List<PropElement.Attr>(2) { new(Ns.W, "w", Units.Str(cols[c].Width)) } };
                        if (cols[c].Space is { } sp) col.Attrs.Add(new PropElement.Attr(Ns.W, "space", Units.Str(sp)));
                        e.Children.Add(col);
                    }
                    break;
                default:
                    if (EncodeValue(slot.Kind, value) is { } text)
                        (e.Attrs ??= new List<PropElement.Attr>(2)).Add(new PropElement.Attr(Ns.W, slot.Attribute, text));
                    break;
            }
        }
        list.Sort((a, b) => order.Rank(a.Local).CompareTo(order.Rank(b.Local)));
        return list;
    }

    /// <summary>Writes the properties element: the attributes' elements merged, in schema order,
    /// with the kept ones; kept attributes of a modelled element join it. Nothing when both are empty.</summary>
    public void Write(XmlWriter w, List<PropElement> encoded, PropBag? kept, bool always = false)
    {
        if (!always && encoded.Count == 0 && (kept == null || kept.Count == 0)) return;
        w.WriteStartElement(container, Ns.W);
        WriteItems(w, encoded, kept, null);
        w.WriteEndElement();
    }

    /// <summary>The content of the properties element; <paramref name="before"/> names a kept element
    /// that <paramref name="insert"/> is written before (or at the end, when there is none).</summary>
    public void WriteItems(XmlWriter w, List<PropElement> encoded, PropBag? kept, (string Before, Action<XmlWriter> Insert)? insert)
    {
        int next = 0;
        bool inserted = insert == null;
        if (kept != null)
            foreach (var k in kept.Items)
            {
                bool main = PropElement.IsMain(k.Ns);
                int rank = main ? order.Rank(k.Local) : int.MaxValue;
                while (next < encoded.Count && order.Rank(encoded[next].Local) < rank) WriteMerged(w, encoded[next++], kept);
                if (main && encoded.Exists(e => e.Local == k.Local)) continue;
                if (!inserted && main && k.Local == insert!.Value.Before)
                {
                    while (next < encoded.Count) WriteMerged(w, encoded[next++], kept);
                    insert.Value.Insert(w);
                    inserted = true;
                }
                k.Write(w);
            }
        while (next < encoded.Count) WriteMerged(w, encoded[next++], kept);
        if (!inserted) insert!.Value.Insert(w);
    }

    private static void WriteMerged(XmlWriter w, PropElement e, PropBag? kept)
    {
        var extra = kept?.Find(e.Local);
        if (extra?.Attrs == null && extra?.Children == null)
        {
            e.Write(w);
            return;
        }
        w.WriteStartElement(e.Local, Ns.W);
        PropElement.WriteAttrs(w, e.Attrs);
        // A kept attribute the model now says itself (a value it could not read, since set) gives way.
        foreach (var a in extra.Attrs ?? new List<PropElement.Attr>())
            if (e.Attrs == null || !e.Attrs.Exists(x => x.Local == a.Local && x.Ns == a.Ns))
                PropElement.WriteAttr(w, a);
        // So do kept children (sides the model could not read), the rest written in schema order.
        var children = new List<PropElement>(e.Children ?? new List<PropElement>());
        foreach (var c in extra.Children ?? new List<PropElement>())
            if (e.Children == null || !e.Children.Exists(x => x.Local == c.Local && x.Ns == c.Ns)) children.Add(c);
        foreach (var c in children.OrderBy(c => PropOrder.Borders.Rank(c.Local))) c.Write(w);
        w.WriteEndElement();
    }

    /// <summary>Changes properties held as markup (a style's, the document defaults') from one set of
    /// attributes to another: each element that changes is written anew, keeping what it said beside the model.</summary>
    public void Apply(PropBag bag, AttrSet from, AttrSet to)
    {
        HashSet<string>? changed = null;
        foreach (var slot in slots)
            if (!Equals(from.Get(slot.Attr), to.Get(slot.Attr))) (changed ??= new HashSet<string>()).Add(slot.Element);
        if (changed == null) return;
        var encoded = Encode(to.Where(a => byAttr[(int)a] is { } s && changed.Contains(s.Element)));
        foreach (var name in changed)
        {
            var old = bag.Find(name);
            var fresh = encoded.Find(e => e.Local == name);
            var slotsOf = byElement[name];
            if (old != null && slotsOf[0].Kind != Kind.Line)
            {
                foreach (var a in old.Attrs ?? new List<PropElement.Attr>())
                    if (Known(slotsOf, a) is not { } k || (!to.Has(k.Attr) && !from.Has(k.Attr))) (fresh ??= new PropElement(name)).Attrs = (fresh.Attrs ?? new List<PropElement.Attr>()).Append(a).ToList();
                foreach (var c in old.Children ?? new List<PropElement>())
                    if (!slotsOf.Any(s => s.IsChild && s.Attribute == c.Local && to.Has(s.Attr)) && !slotsOf.Any(s => s.IsChild && s.Attribute == c.Local && from.Has(s.Attr)))
                        ((fresh ??= new PropElement(name)).Children ??= new List<PropElement>()).Add(c);
            }
            if (old != null) bag.Remove(name);
            if (fresh != null) bag.GetOrAdd(name).CopyFrom(fresh);
        }
    }
}

/// <summary>Formatting held as markup (styles, document defaults, list levels, paragraph marks),
/// read and changed as attributes.</summary>
internal sealed class BagFormat : IRunFormatted, IParaFormatted
{
    private readonly PropBag bag;
    private readonly PropsCodec codec;
    private long stamp = -1;
    private AttrSet attrs = AttrSet.Empty;

    public BagFormat(PropBag bag, PropsCodec codec)
    {
        this.bag = bag;
        this.codec = codec;
    }

    private AttrSet Attrs
    {
        get
        {
            long now = FormatStamp.Current;
            if (now != stamp)
            {
                attrs = codec.Decode(bag).Attrs;
                stamp = now;
            }
            return attrs;
        }
        set
        {
            codec.Apply(bag, Attrs, value);
            stamp = -1;
        }
    }

    public AttrSet RunAttrs { get => Attrs; set => Attrs = value; }

    public AttrSet ParaAttrs { get => Attrs; set => Attrs = value; }

    public PropBag? RunKept(bool create) => bag;

    public PropBag ParaKept => bag;

    /// <summary>The attributes as a public format object reads and changes them.</summary>
    public AttrHost Host => new(() => Attrs, v => Attrs = v);
}
