using Quorix.Folio.Formatting;

namespace Quorix.Folio.Lists;

/// <summary>A paragraph's membership of a list, and its level there.</summary>
public sealed class ListFormat
{
    private readonly Func<Paragraph?> paragraph;
    private readonly Func<PropBag> pPr;
    private readonly DocumentBase doc;

    internal ListFormat(Paragraph p) : this(p.Document!, () => p, () => p.PPr) { }

    internal ListFormat(DocumentBase doc, Func<Paragraph?> paragraph, Func<PropBag> pPr)
    {
        this.doc = doc;
        this.paragraph = paragraph;
        this.pPr = pPr;
    }

    private PropElement? NumPr()
    {
        var own = pPr().Find("numPr");
        if (own != null) return own;
        // A list style (for example "List Bullet") may carry the numbering for the paragraph.
        var p = paragraph();
        if (p == null) return null;
        return p.ParagraphChain().Find("numPr");
    }

    /// <summary>Whether the paragraph belongs to a list.</summary>
    public bool IsListItem => List != null;

    /// <summary>The list the paragraph belongs to; null for none, and setting null takes it out.</summary>
    public List? List
    {
        get
        {
            var id = Units.ParseInt(NumPr()?.Child("numId")?.Get("val"));
            return id is null or 0 ? null : doc.Lists.GetListByListId(id.Value);
        }
        set
        {
            if (value == null) { RemoveNumbers(); return; }
            if (value.Owner != doc.Lists) throw new ArgumentException("The list belongs to another document.", nameof(value));
            var numPr = pPr().GetOrAdd("numPr");
            numPr.Children ??= new List<PropElement>();
            var lvl = numPr.Child("ilvl") ?? Add(numPr, new PropElement("ilvl").Set("val", "0"), 0);
            var id = numPr.Child("numId") ?? Add(numPr, new PropElement("numId"), numPr.Children.Count);
            id.Set("val", Units.Str(value.ListId));
            doc.Changed();
        }
    }

    private static PropElement Add(PropElement parent, PropElement child, int at)
    {
        parent.Children!.Insert(Math.Min(at, parent.Children.Count), child);
        return child;
    }

    /// <summary>0 to 8.</summary>
    public int ListLevelNumber
    {
        get => Units.ParseInt(NumPr()?.Child("ilvl")?.Get("val")) ?? 0;
        set
        {
            if (value < 0 || value > 8) throw new ArgumentOutOfRangeException(nameof(value), "The list level must be from 0 to 8.");
            var numPr = pPr().GetOrAdd("numPr");
            numPr.Children ??= new List<PropElement>();
            (numPr.Child("ilvl") ?? Add(numPr, new PropElement("ilvl"), 0)).Set("val", Units.Str(value));
            doc.Changed();
        }
    }

    /// <summary>The level of the list the paragraph is at; null outside a list.</summary>
    public ListLevel? ListLevel => List?.Level(ListLevelNumber);

    /// <summary>Makes the paragraph an item of a new bulleted list.</summary>
    public void ApplyBulletDefault() => Apply(ListTemplate.BulletDefault);

    /// <summary>Makes the paragraph an item of a new numbered list.</summary>
    public void ApplyNumberDefault() => Apply(ListTemplate.NumberDefault);

    private void Apply(ListTemplate t)
    {
        List = doc.Lists.Add(t);
        ListLevelNumber = 0;
    }

    /// <summary>Takes the paragraph out of its list.</summary>
    public void RemoveNumbers()
    {
        pPr().Remove("numPr");
        doc.Changed();
    }

    /// <summary>Moves the paragraph one list level deeper.</summary>
    public void ListIndent()
    {
        if (IsListItem && ListLevelNumber < 8) ListLevelNumber += 1;
    }

    /// <summary>Moves the paragraph one list level up.</summary>
    public void ListOutdent()
    {
        if (IsListItem && ListLevelNumber > 0) ListLevelNumber -= 1;
    }
}
