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
    internal readonly HeadList Head = new();
    // Chains of paragraphs without a style and the default paragraph style, valid at their stamps.
    private long runDefaultsStamp = -1, paragraphDefaultsStamp = -1, defaultStyleStamp = -1;
    private PropBag[] runDefaults = Array.Empty<PropBag>(), paragraphDefaults = Array.Empty<PropBag>();
    private Style? defaultParagraphStyle;

    /// <summary>The head of the part; any change to it may change the document defaults.</summary>
    internal sealed class HeadList : System.Collections.ObjectModel.Collection<PropElement>
    {
        protected override void InsertItem(int index, PropElement item) { FormatStamp.Bump(); base.InsertItem(index, item); }

        protected override void SetItem(int index, PropElement item) { FormatStamp.Bump(); base.SetItem(index, item); }

        protected override void RemoveItem(int index) { FormatStamp.Bump(); base.RemoveItem(index); }

        protected override void ClearItems() { FormatStamp.Bump(); base.ClearItems(); }

        public PropElement? Find(string local)
        {
            foreach (var e in Items)
                if (e.Local == local) return e;
            return null;
        }
    }

    internal StyleCollection(DocumentBase doc) { this.doc = doc; }

    /// <summary>The document the styles belong to.</summary>
    public DocumentBase Document => doc;

    /// <summary>How many styles the document has.</summary>
    public int Count => styles.Count;

    /// <summary>The style at that position; negative positions count from the end.</summary>
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

    /// <summary>That built-in style, added to the document first if it lacks it.</summary>
    public Style this[StyleIdentifier sti] => GetOrCreateBuiltIn(sti);

    /// <summary>The character formatting of text that no style formats.</summary>
    public Font DefaultFont => new Font(DefaultsBag("rPrDefault", "rPr", PropOrder.Run), doc);

    /// <summary>The formatting of paragraphs that no style formats.</summary>
    public ParagraphFormat DefaultParagraphFormat => new ParagraphFormat(DefaultsBag("pPrDefault", "pPr", PropOrder.Paragraph), doc);

    /// <summary>Adds a new style of a kind and name, and returns it.</summary>
    public Style Add(StyleType type, string name)
    {
        ArgumentException.ThrowIfNullOrEmpty(name);
        if (this[name] != null) throw new ArgumentException($"A style named '{name}' already exists.", nameof(name));
        var d = BuiltInStyles.ByName(name);
        var s = Create(type, d != null && d.Type == type ? d.Id : MakeId(name), name);
        if (type == StyleType.Paragraph) s.BaseStyleName = GetOrCreateBuiltIn(StyleIdentifier.Normal).Name;
        return s;
    }

    /// <summary>Removes a style; what used it takes its base style's formatting.</summary>
    public void Remove(Style style)
    {
        FormatStamp.Bump();
        if (styles.Remove(style)) byId.Remove(style.StyleId);
    }

    internal void AddLoaded(PropElement e)
    {
        FormatStamp.Bump();
        var s = new Style(this, e);
        styles.Add(s);
        byId.TryAdd(s.StyleId, s);
    }

    internal IEnumerable<Style> All => styles;

    internal Style? FindById(string? id) => id != null && byId.TryGetValue(id, out var s) ? s : null;

    internal string? NameOfId(string? id) => FindById(id)?.Name;

    /// <summary>The style of paragraphs that name none; cached until the next formatting edit.</summary>
    internal Style? DefaultParagraphStyle
    {
        get
        {
            long stamp = FormatStamp.Current;
            if (defaultStyleStamp != stamp)
            {
                defaultParagraphStyle = DefaultOf(StyleType.Paragraph);
                defaultStyleStamp = stamp;
            }
            return defaultParagraphStyle;
        }
    }

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
        FormatStamp.Bump();
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
        // Creating any level below changes what the chains end with.
        var dd = Head.Find("docDefaults");
        if (dd == null)
        {
            dd = new PropElement("docDefaults");
            Head.Insert(0, dd);
        }
        if (dd.Children == null)
        {
            FormatStamp.Bump();
            dd.Children = new List<PropElement>();
        }
        var h = dd.Child(holder);
        if (h == null)
        {
            FormatStamp.Bump();
            h = new PropElement(holder);
            if (holder == "rPrDefault") dd.Children.Insert(0, h); else dd.Children.Add(h);
        }
        if (h.Children == null)
        {
            FormatStamp.Bump();
            h.Children = new List<PropElement>();
        }
        var inner = h.Child(local);
        if (inner == null)
        {
            FormatStamp.Bump();
            inner = new PropElement(local);
            h.Children.Add(inner);
        }
        if (inner.Children == null)
        {
            FormatStamp.Bump();
            inner.Children = new List<PropElement>();
        }
        return new PropBag(order, inner.Children);
    }

    /// <summary>The chain of a paragraph without any style: the document defaults alone, if any; cached until the next formatting edit.</summary>
    internal BagChain DefaultsChain(bool run)
    {
        long stamp = FormatStamp.Current;
        if (run ? runDefaultsStamp != stamp : paragraphDefaultsStamp != stamp)
        {
            var d = DefaultsFor(run ? "rPr" : "pPr");
            var bags = d != null ? new[] { d } : Array.Empty<PropBag>();
            if (run) { runDefaults = bags; runDefaultsStamp = stamp; }
            else { paragraphDefaults = bags; paragraphDefaultsStamp = stamp; }
        }
        return new BagChain(run ? runDefaults : paragraphDefaults);
    }

    internal PropBag? DefaultsFor(string local)
    {
        var dd = Head.Find("docDefaults");
        var inner = dd?.Child(local == "rPr" ? "rPrDefault" : "pPrDefault")?.Child(local);
        return inner?.Children == null ? null : new PropBag(local == "rPr" ? PropOrder.Run : PropOrder.Paragraph, inner.Children);
    }

    /// <summary>The styles in the document's order.</summary>
    public IEnumerator<Style> GetEnumerator() => styles.ToList().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
