using System.Globalization;
using System.Runtime.InteropServices;
using System.Xml;

namespace Quorix.Folio.Formatting;

/// <summary>An ordered set of property elements (run, paragraph, table, section properties).</summary>
internal sealed class PropBag
{
    // Created on first use: most runs and paragraphs carry no properties at all.
    private List<PropElement>? items;
    public readonly PropOrder Order;

    public PropBag(PropOrder order, List<PropElement>? items = null)
    {
        Order = order;
        this.items = items;
    }

    public int Count => items?.Count ?? 0;

    public IReadOnlyList<PropElement> Items => (IReadOnlyList<PropElement>?)items ?? Array.Empty<PropElement>();

    private List<PropElement> List => items ??= new List<PropElement>(2);

    // Every formatting read lands here, usually on a bag of a handful of elements: the length
    // rejects nearly every other name before any character is compared.
    public PropElement? Find(string local)
    {
        if (items == null) return null;
        int length = local.Length;
        foreach (var e in CollectionsMarshal.AsSpan(items))
        {
            var name = e.Local;
            if (name.Length == length && (ReferenceEquals(name, local) || string.Equals(name, local)) && PropElement.IsMain(e.Ns))
                return e;
        }
        return null;
    }

    public bool Has(string local) => Find(local) != null;

    public string? Val(string local) => Find(local)?.Get("val");

    /// <summary>Adds the element at its place in the schema order so the output stays valid.</summary>
    public PropElement GetOrAdd(string local)
    {
        var e = Find(local);
        if (e != null) return e;
        e = new PropElement(local);
        Insert(e);
        return e;
    }

    private void Insert(PropElement e)
    {
        FormatStamp.Bump();
        var list = List;
        int rank = Order.Rank(e.Local);
        int at = list.Count;
        for (int i = 0; i < list.Count; i++)
            if (list[i].Ns == Docx.Ns.W && Order.Rank(list[i].Local) > rank) { at = i; break; }
        list.Insert(at, e);
    }

    public void Remove(string local)
    {
        FormatStamp.Bump();
        items?.RemoveAll(e => e.Local == local && e.Ns == Docx.Ns.W);
    }

    public void RemoveAll(Predicate<PropElement> match)
    {
        FormatStamp.Bump();
        items?.RemoveAll(match);
    }

    public void Add(PropElement e)
    {
        FormatStamp.Bump();
        List.Add(e);
    }

    public void SetVal(string local, string? value)
    {
        if (value == null) Remove(local);
        else GetOrAdd(local).Set("val", value);
    }

    public bool? Toggle(string local) => Find(local) is { } e ? IsOn(e) : null;

    /// <summary>Whether an on/off element switches its property on: present without a value, or any value but an off one.</summary>
    public static bool IsOn(PropElement e)
    {
        var v = e.Get("val");
        return v == null || !(v == "0" || v == "false" || v == "off");
    }

    public void SetToggle(string local, bool value)
    {
        var e = GetOrAdd(local);
        FormatStamp.Bump();
        e.Attrs = null;
        if (!value) e.Set("val", "0");
    }

    public int? Int(string local, string attr = "val")
    {
        var v = Find(local)?.Get(attr);
        return v != null && int.TryParse(v, NumberStyles.Integer, CultureInfo.InvariantCulture, out var i) ? i : null;
    }

    public PropBag Clone() => new PropBag(Order, items?.ConvertAll(e => e.Clone()));

    public void Clear()
    {
        FormatStamp.Bump();
        items?.Clear();
    }

    public void MergeFrom(PropBag other)
    {
        foreach (var e in other.Items)
        {
            if (e.Ns == Docx.Ns.W) Remove(e.Local);
            Insert(e.Clone());
        }
    }

    /// <summary>Reads a properties element into a bag; the element's own attributes are not kept.</summary>
    public static PropBag Read(XmlReader r, PropOrder order)
    {
        if (r.Depth > PropElement.MaxDepth) throw new FileCorruptedException($"The XML nests more than {PropElement.MaxDepth} elements deep.");
        return new PropBag(order, PropElement.ReadContent(r, out _));
    }

    public void Write(XmlWriter w, string local, bool skipEmpty = true)
    {
        if (skipEmpty && Count == 0) return;
        w.WriteStartElement(local, Docx.Ns.W);
        if (items != null)
            foreach (var e in items) e.Write(w);
        w.WriteEndElement();
    }
}

/// <summary>The child order a property element's schema requires; unknown names sort last.</summary>
internal sealed class PropOrder
{
    private readonly Dictionary<string, int> rank = new();

    private PropOrder(string names)
    {
        var parts = names.Split(' ', StringSplitOptions.RemoveEmptyEntries);
        for (int i = 0; i < parts.Length; i++) rank[parts[i]] = i;
    }

    public int Rank(string local) => rank.TryGetValue(local, out var i) ? i : 10_000;

    public static readonly PropOrder Run = new(
        "rStyle rFonts b bCs i iCs caps smallCaps strike dstrike outline shadow emboss imprint noProof snapToGrid vanish webHidden " +
        "color spacing w kern position sz szCs highlight u effect bdr shd fitText vertAlign rtl cs em lang eastAsianLayout specVanish oMath rPrChange");

    public static readonly PropOrder Paragraph = new(
        "pStyle keepNext keepLines pageBreakBefore framePr widowControl numPr suppressLineNumbers pBdr shd tabs suppressAutoHyphens " +
        "kinsoku wordWrap overflowPunct topLinePunct autoSpaceDE autoSpaceDN bidi adjustRightInd snapToGrid spacing ind contextualSpacing " +
        "mirrorIndents suppressOverlap jc textDirection textAlignment textboxTightWrap outlineLvl divId cnfStyle rPr sectPr pPrChange");

    public static readonly PropOrder Section = new(
        "headerReference footerReference footnotePr endnotePr type pgSz pgMar paperSrc pgBorders lnNumType pgNumType cols formProt vAlign " +
        "noEndnote titlePg textDirection bidi rtlGutter docGrid printerSettings sectPrChange");

    public static readonly PropOrder Table = new(
        "tblStyle tblpPr tblOverlap bidiVisual tblStyleRowBandSize tblStyleColBandSize tblW jc tblCellSpacing tblInd tblBorders shd " +
        "tblLayout tblCellMar tblLook tblCaption tblDescription tblPrChange");

    public static readonly PropOrder TableRow = new(
        "cnfStyle divId gridBefore gridAfter wBefore wAfter cantSplit trHeight tblHeader tblCellSpacing jc hidden ins del trPrChange");

    public static readonly PropOrder TableCell = new(
        "cnfStyle tcW gridSpan hMerge vMerge tcBorders shd noWrap tcMar textDirection tcFitText vAlign hideMark headers cellIns cellDel cellMerge tcPrChange");

    public static readonly PropOrder Borders = new("top left start bottom right end insideH insideV between bar tl2br tr2bl");

    public static readonly PropOrder Style = new(
        "name aliases basedOn next link autoRedefine hidden uiPriority semiHidden unhideWhenUsed qFormat locked personal personalCompose " +
        "personalReply rsid pPr rPr tblPr trPr tcPr tblStylePr");

    public static readonly PropOrder Level = new("start numFmt lvlRestart pStyle isLgl suff lvlText lvlPicBulletId legacy lvlJc pPr rPr");

    public static readonly PropOrder Any = new("");
}
