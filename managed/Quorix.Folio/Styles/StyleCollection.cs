using System.Collections;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>The styles of a document, with the document-wide default formatting.</summary>
public sealed class StyleCollection : IEnumerable<Style>
{
    private readonly DocumentBase doc;
    private readonly List<Style> styles = new();
    private readonly Dictionary<string, Style> byId = new(StringComparer.Ordinal);
    // docDefaults, latentStyles and anything else at the top of the part, in file order.
    internal readonly List<PropElement> Head = new();

    internal StyleCollection(DocumentBase doc) { this.doc = doc; }

    public DocumentBase Document => doc;

    public int Count => styles.Count;

    public Style this[int index] => styles[index < 0 ? styles.Count + index : index];

    /// <summary>Null when no style has the name; names compare without regard to case, as word processors do.</summary>
    public Style? this[string name]
    {
        get
        {
            foreach (var s in styles)
                if (string.Equals(s.Name, name, StringComparison.OrdinalIgnoreCase)) return s;
            var d = BuiltInStyles.ByName(name);
            // "Heading 1" and "heading 1" name the same built-in style.
            return d != null ? FindById(d.Id) is { } byIdStyle && byIdStyle.BuiltIn ? byIdStyle : null : null;
        }
    }

    public Style this[StyleIdentifier sti] => GetOrCreateBuiltIn(sti);

    public Font DefaultFont => new Font(DefaultsBag("rPrDefault", "rPr", PropOrder.Run), doc);

    public ParagraphFormat DefaultParagraphFormat => new ParagraphFormat(DefaultsBag("pPrDefault", "pPr", PropOrder.Paragraph), doc);

    public Style Add(StyleType type, string name)
    {
        ArgumentException.ThrowIfNullOrEmpty(name);
        if (this[name] != null) throw new ArgumentException($"A style named '{name}' already exists.", nameof(name));
        var d = BuiltInStyles.ByName(name);
        var s = Create(type, d != null && d.Type == type ? d.Id : MakeId(name), name);
        if (type == StyleType.Paragraph) s.BaseStyleName = GetOrCreateBuiltIn(StyleIdentifier.Normal).Name;
        return s;
    }

    public void Remove(Style style)
    {
        if (styles.Remove(style)) byId.Remove(style.StyleId);
    }

    internal void AddLoaded(PropElement e)
    {
        var s = new Style(this, e);
        styles.Add(s);
        byId.TryAdd(s.StyleId, s);
    }

    internal IEnumerable<Style> All => styles;

    internal Style? FindById(string? id) => id != null && byId.TryGetValue(id, out var s) ? s : null;

    internal string? NameOfId(string? id) => FindById(id)?.Name;

    internal Style? DefaultOf(StyleType type)
    {
        foreach (var s in styles)
            if (s.Type == type && s.Element.Get("default") is "1" or "true" or "on") return s;
        return null;
    }

    internal Style GetOrCreateBuiltIn(StyleIdentifier sti)
    {
        var d = BuiltInStyles.BySti(sti) ?? throw new ArgumentException($"{sti} is not a built-in style that can be created.", nameof(sti));
        var byName = this[d.Name];
        if (byName != null) return byName;
        if (FindById(d.Id) is { } clash && clash.Name != d.Name)
        {
            // A user style took the usual identifier; the built-in one gets a fresh one.
            var s2 = Create(d.Type, MakeId(d.Id), d.Name);
            BuiltInStyles.Populate(s2, d);
            return s2;
        }
        var s = Create(d.Type, d.Id, d.Name);
        if (sti is StyleIdentifier.Normal or StyleIdentifier.DefaultParagraphFont or StyleIdentifier.TableNormal or StyleIdentifier.NoList)
            s.Element.Set("default", "1");
        BuiltInStyles.Populate(s, d);
        return s;
    }

    private Style Create(StyleType type, string id, string name)
    {
        var e = new PropElement("style");
        e.Set("type", type switch
        {
            StyleType.Character => "character",
            StyleType.Table => "table",
            StyleType.List => "numbering",
            _ => "paragraph",
        });
        e.Set("styleId", id);
        var s = new Style(this, e);
        s.Bag.SetVal("name", name);
        styles.Add(s);
        byId[id] = s;
        return s;
    }

    private string MakeId(string name)
    {
        var baseId = new string(name.Where(char.IsLetterOrDigit).ToArray());
        if (baseId.Length == 0) baseId = "Style";
        var id = baseId;
        for (int i = 1; byId.ContainsKey(id); i++) id = baseId + i;
        return id;
    }

    private PropBag DefaultsBag(string holder, string local, PropOrder order)
    {
        var dd = Head.Find(e => e.Local == "docDefaults");
        if (dd == null)
        {
            dd = new PropElement("docDefaults");
            Head.Insert(0, dd);
        }
        dd.Children ??= new List<PropElement>();
        var h = dd.Child(holder);
        if (h == null)
        {
            h = new PropElement(holder);
            if (holder == "rPrDefault") dd.Children.Insert(0, h); else dd.Children.Add(h);
        }
        h.Children ??= new List<PropElement>();
        var inner = h.Child(local);
        if (inner == null)
        {
            inner = new PropElement(local);
            h.Children.Add(inner);
        }
        inner.Children ??= new List<PropElement>();
        return new PropBag(order, inner.Children);
    }

    internal PropBag? DefaultsFor(string local)
    {
        var dd = Head.Find(e => e.Local == "docDefaults");
        var inner = dd?.Child(local == "rPr" ? "rPrDefault" : "pPrDefault")?.Child(local);
        return inner?.Children == null ? null : new PropBag(local == "rPr" ? PropOrder.Run : PropOrder.Paragraph, inner.Children);
    }

    public IEnumerator<Style> GetEnumerator() => styles.ToList().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
