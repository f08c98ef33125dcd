using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>A named set of formatting that paragraphs, runs and tables refer to.</summary>
public sealed class Style
{
    internal readonly PropElement Element;
    internal readonly PropBag Bag;
    private readonly StyleCollection owner;
    // Resolved chains, each valid while the formatting stamp it was taken at is current.
    private ResolvedChain? runChain, paragraphChain;

    private sealed class ResolvedChain
    {
        public long Stamp;
        public PropBag[] Bags = Array.Empty<PropBag>();
        // 1 when the first bag is the style's own, which a style's own formatting skips.
        public int Own;
    }

    internal Style(StyleCollection owner, PropElement element)
    {
        this.owner = owner;
        Element = element;
        element.Children ??= new List<PropElement>();
        Bag = new PropBag(PropOrder.Style, element.Children);
    }

    internal string StyleId
    {
        get => Element.Get("styleId") ?? "";
        set => Element.Set("styleId", value);
    }

    /// <summary>The document's styles, this one among them.</summary>
    public StyleCollection Styles => owner;

    /// <summary>The document the style belongs to.</summary>
    public DocumentBase Document => owner.Document;

    /// <summary>The style's name, as shown to users.</summary>
    public string Name
    {
        get => Bag.Val("name") ?? StyleId;
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            if (owner[value] is { } other && other != this)
                throw new ArgumentException($"A style named '{value}' already exists.", nameof(value));
            Bag.SetVal("name", value);
        }
    }

    /// <summary>What the style formats: paragraphs, characters, tables or lists.</summary>
    public StyleType Type => Element.Get("type") switch
    {
        "character" => StyleType.Character,
        "table" => StyleType.Table,
        "numbering" => StyleType.List,
        _ => StyleType.Paragraph,
    };

    /// <summary>Which built-in style this is; User for a style the document defines.</summary>
    public StyleIdentifier StyleIdentifier
    {
        get
        {
            var d = BuiltInStyles.ByName(Name);
            return d != null && d.Type == Type ? d.Sti : StyleIdentifier.User;
        }
    }

    /// <summary>Whether the style is one of the built-in styles.</summary>
    public bool BuiltIn => StyleIdentifier != StyleIdentifier.User;

    /// <summary>Whether the style is one of the built-in heading styles, Heading 1 to 9.</summary>
    public bool IsHeading => StyleIdentifier is >= StyleIdentifier.Heading1 and <= StyleIdentifier.Heading9;

    /// <summary>The name of the style this one is based on and inherits from; empty when none.</summary>
    public string BaseStyleName
    {
        get => owner.NameOfId(Bag.Val("basedOn")) ?? "";
        set => Bag.SetVal("basedOn", string.IsNullOrEmpty(value) ? null : RequireStyle(value).StyleId);
    }

    /// <summary>The style given to the paragraph that follows one of this style when Enter is pressed.</summary>
    public string NextParagraphStyleName
    {
        get => owner.NameOfId(Bag.Val("next")) ?? "";
        set => Bag.SetVal("next", string.IsNullOrEmpty(value) ? null : RequireStyle(value).StyleId);
    }

    private Style RequireStyle(string name) =>
        owner[name] ?? throw new ArgumentException($"There is no style named '{name}'.", nameof(name));

    internal Style? BaseStyle => owner.FindById(Bag.Val("basedOn"));

    internal PropBag Sub(string local, PropOrder order)
    {
        var e = Bag.GetOrAdd(local);
        if (e.Children == null)
        {
            FormatStamp.Bump();
            e.Children = new List<PropElement>();
        }
        return new PropBag(order, e.Children);
    }

    internal PropBag? SubOrNull(string local, PropOrder order)
    {
        var e = Bag.Find(local);
        return e?.Children == null ? null : new PropBag(order, e.Children);
    }

    /// <summary>The style chain above this one, guarded against loops in damaged files.</summary>
    internal IEnumerable<Style> Ancestors()
    {
        var seen = new HashSet<Style> { this };
        for (var s = BaseStyle; s != null && seen.Add(s); s = s.BaseStyle) yield return s;
    }

    internal IEnumerable<PropBag> InheritedBags(string local, PropOrder order, bool self)
    {
        if (self && SubOrNull(local, order) is { } own) yield return own;
        foreach (var s in Ancestors())
            if (s.SubOrNull(local, order) is { } b) yield return b;
        if (owner.DefaultsFor(local) is { } d) yield return d;
    }

    /// <summary>The character (run) or paragraph chain of this style, its own bag first when self; cached until the next formatting edit.</summary>
    internal BagChain Chain(bool run, bool self)
    {
        var c = run ? runChain : paragraphChain;
        long stamp = FormatStamp.Current;
        if (c == null || c.Stamp != stamp) c = Resolve(run, stamp);
        return new BagChain(c.Bags, self ? 0 : c.Own);
    }

    private ResolvedChain Resolve(bool run, long stamp)
    {
        var (local, order) = run ? ("rPr", PropOrder.Run) : ("pPr", PropOrder.Paragraph);
        var c = new ResolvedChain
        {
            Stamp = stamp,
            Bags = InheritedBags(local, order, true).ToArray(),
            Own = SubOrNull(local, order) != null ? 1 : 0,
        };
        if (run) runChain = c; else paragraphChain = c;
        return c;
    }

    /// <summary>The character formatting the style gives.</summary>
    public Font Font => new Font(Sub("rPr", PropOrder.Run), owner.Document, () => owner.Document.Cascade.StyleBase(this));

    /// <summary>The paragraph formatting the style gives.</summary>
    public ParagraphFormat ParagraphFormat =>
        new ParagraphFormat(Sub("pPr", PropOrder.Paragraph), owner.Document, () => owner.Document.Cascade.ParagraphStyleBase(this));

    /// <summary>Deletes the style from the document's styles.</summary>
    public void Remove() => owner.Remove(this);

    /// <summary>The style's name.</summary>
    public override string ToString() => Name;
}
