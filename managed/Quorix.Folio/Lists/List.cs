using System.Collections;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Lists;

/// <summary>A numbered or bulleted list that paragraphs join through their list format.</summary>
public sealed class List
{
    internal readonly ListCollection Owner;
    internal readonly PropElement Num;
    internal PropElement Abstract;

    internal List(ListCollection owner, PropElement num, PropElement abstractNum)
    {
        Owner = owner;
        Num = num;
        Abstract = abstractNum;
    }

    /// <summary>The list's number in the document.</summary>
    public int ListId => Units.ParseInt(Num.Get("numId")) ?? 0;

    /// <summary>The document of the list.</summary>
    public DocumentBase Document => Owner.Document;

    /// <summary>The list's nine levels.</summary>
    public ListLevelCollection ListLevels => new ListLevelCollection(this);

    /// <summary>Whether the list's levels nest, rather than there being one level.</summary>
    public bool IsMultiLevel => Abstract.Child("multiLevelType")?.Get("val") != "singleLevel";

    internal int? StartOverride(int level)
    {
        if (Num.Children == null) return null;
        foreach (var o in Num.Children)
            if (o.Local == "lvlOverride" && Units.ParseInt(o.Get("ilvl")) == level)
                return Units.ParseInt(o.Child("startOverride")?.Get("val"));
        return null;
    }

    internal ListLevel? Level(int level)
    {
        if (Abstract.Children == null) return null;
        foreach (var e in Abstract.Children)
            if (e.Local == "lvl" && Units.ParseInt(e.Get("ilvl")) == level) return new ListLevel(Document, e);
        return null;
    }

    /// <summary>"List" and the list's id.</summary>
    public override string ToString() => $"List {ListId}";
}

/// <summary>The levels of a list.</summary>
public sealed class ListLevelCollection : IEnumerable<ListLevel>
{
    private readonly List list;

    internal ListLevelCollection(List list) { this.list = list; }

    private List<ListLevel> Items() =>
        (list.Abstract.Children ?? new List<PropElement>()).Where(e => e.Local == "lvl").Select(e => new ListLevel(list.Document, e)).ToList();

    /// <summary>How many levels the list has.</summary>
    public int Count => Items().Count;

    /// <summary>The level at that depth, 0 the outermost.</summary>
    public ListLevel this[int index]
    {
        get
        {
            var items = Items();
            if (index < 0 || index >= items.Count) throw new ArgumentOutOfRangeException(nameof(index));
            return items[index];
        }
    }

    /// <summary>The levels from the first.</summary>
    public IEnumerator<ListLevel> GetEnumerator() => Items().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
