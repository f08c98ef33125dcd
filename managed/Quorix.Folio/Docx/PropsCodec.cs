using System.Globalization;
using System.Xml;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>Translates run or paragraph properties between their WordprocessingML elements and the
/// engine's attributes. What the engine does not model (whole elements, or attributes beside modelled
/// ones) is kept as read and written back in its place.</summary>
internal sealed class PropsCodec
{
    private enum Kind : byte { Toggle, Int, Text }

    private readonly record struct Slot(FormatAttr Attr, string Element, string Attribute, Kind Kind);

    private readonly Slot[] slots;
    private readonly Slot[] byAttr;
    private readonly Dictionary<string, Slot[]> byElement;
    private readonly PropOrder order;
    private readonly string container;

    private PropsCodec(string container, PropOrder order, Slot[] slots)
    {
        this.container = container;
        this.order = order;
        this.slots = slots;
        byAttr = new Slot[(int)FormatAttr.Count];
        foreach (var s in slots) byAttr[(int)s.Attr] = s;
        byElement = slots.GroupBy(s => s.Element).ToDictionary(g => g.Key, g => g.ToArray());
    }

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
    });

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
    });

    /// <summary>Splits read properties into attributes (shared through the table when given) and kept markup.</summary>
    public FormatProps Decode(PropBag? bag, Dictionary<AttrSet, AttrSet>? intern = null)
    {
        if (bag == null || bag.Count == 0) return FormatProps.None;
        var attrs = AttrSet.Empty;
        List<PropElement>? kept = null;
        foreach (var e in bag.Items)
        {
            // An element that says nothing the model can hold (unknown, nested, or a valued element
            // without attributes) stays as it is.
            if (!PropElement.IsMain(e.Ns) || e.Children != null || e.Text != null || !byElement.TryGetValue(e.Local, out var slots) ||
                (slots[0].Kind != Kind.Toggle && e.Attrs is not { Count: > 0 }))
            {
                (kept ??= new List<PropElement>()).Add(e);
                continue;
            }
            List<PropElement.Attr>? rest = null;
            if (slots[0].Kind == Kind.Toggle && e.Attrs == null) attrs = attrs.With(slots[0].Attr, true);
            if (e.Attrs != null)
                foreach (var a in e.Attrs)
                {
                    if (Known(slots, a) is { } slot && DecodeValue(slot.Kind, a.Value) is { } v) attrs = attrs.With(slot.Attr, v);
                    else (rest ??= new List<PropElement.Attr>()).Add(a);
                }
            // A toggle written with only foreign attributes is on.
            if (slots[0].Kind == Kind.Toggle && e.Attrs != null && !attrs.Has(slots[0].Attr) && (rest == null || !rest.Exists(a => a.Local == "val")))
                attrs = attrs.With(slots[0].Attr, true);
            if (rest != null) (kept ??= new List<PropElement>()).Add(new PropElement(e.Local) { Attrs = rest });
        }
        return new FormatProps(intern != null ? attrs.Intern(intern) : attrs, kept != null ? new PropBag(order, kept) : null);
    }

    private static Slot? Known(Slot[] slots, PropElement.Attr a)
    {
        if (!PropElement.IsMain(a.Ns)) return null;
        foreach (var s in slots)
            if (s.Attribute == a.Local) return s;
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
            case Kind.Int:
                // Only a value that is written back the same way is taken; others stay as read.
                return Units.ParseInt(v) is { } i && Units.Str(i) == v ? i : null;
            default:
                return v;
        }
    }

    private static string? EncodeValue(Kind kind, object v) => kind switch
    {
        Kind.Toggle => (bool)v ? null : "0",
        Kind.Int => Units.Str((int)v),
        _ => (string)v,
    };

    /// <summary>The elements that say the attributes, in schema order.</summary>
    public List<PropElement> Encode(AttrSet attrs)
    {
        var list = new List<PropElement>(attrs.Count);
        for (int i = 0; i < attrs.Count; i++)
        {
            var slot = byAttr[(int)attrs.KeyAt(i)];
            var e = list.Find(x => x.Local == slot.Element);
            if (e == null)
            {
                e = new PropElement(slot.Element);
                list.Add(e);
            }
            if (EncodeValue(slot.Kind, attrs.ValueAt(i)) is { } text)
                (e.Attrs ??= new List<PropElement.Attr>(2)).Add(new PropElement.Attr(Ns.W, slot.Attribute, text));
        }
        list.Sort((a, b) => order.Rank(a.Local).CompareTo(order.Rank(b.Local)));
        return list;
    }

    /// <summary>Writes the properties element: the attributes' elements merged, in schema order,
    /// with the kept ones; kept attributes of a modelled element join it. Nothing when both are empty.</summary>
    public void Write(XmlWriter w, List<PropElement> encoded, PropBag? kept)
    {
        if (encoded.Count == 0 && (kept == null || kept.Count == 0)) return;
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
        if (extra?.Attrs == null)
        {
            e.Write(w);
            return;
        }
        w.WriteStartElement(e.Local, Ns.W);
        PropElement.WriteAttrs(w, e.Attrs);
        // A kept attribute the model now says itself (a value it could not read, since set) gives way.
        foreach (var a in extra.Attrs)
            if (e.Attrs == null || !e.Attrs.Exists(x => x.Local == a.Local && x.Ns == a.Ns))
                PropElement.WriteAttr(w, a);
        w.WriteEndElement();
    }

    /// <summary>Changes properties held as markup (a style's, the document defaults') from one set of attributes to another.</summary>
    public void Apply(PropBag bag, AttrSet from, AttrSet to)
    {
        foreach (var slot in slots)
        {
            var before = from.Get(slot.Attr);
            var after = to.Get(slot.Attr);
            if (Equals(before, after)) continue;
            if (slot.Kind == Kind.Toggle)
            {
                if (after == null) bag.Remove(slot.Element);
                else bag.SetToggle(slot.Element, (bool)after);
                continue;
            }
            if (after == null)
            {
                if (bag.Find(slot.Element) is not { } e) continue;
                e.Set(slot.Attribute, null);
                if (e.Attrs is not { Count: > 0 }) bag.Remove(slot.Element);
            }
            else bag.GetOrAdd(slot.Element).Set(slot.Attribute, EncodeValue(slot.Kind, after));
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
}
