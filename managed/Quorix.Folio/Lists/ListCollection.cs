using System.Collections;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Lists;

/// <summary>The lists of a document, with the shared definitions behind them.</summary>
public sealed class ListCollection : IEnumerable<List>
{
    private readonly DocumentBase doc;
    internal readonly List<PropElement> Head = new();
    internal readonly List<PropElement> Abstracts = new();
    internal readonly List<List> Lists = new();
    internal readonly List<PropElement> Tail = new();
    // Paragraphs look their list up by identifier, once per paragraph in every export.
    private readonly Dictionary<int, List> byId = new();
    private Dictionary<string, PropElement>? abstractsById;

    internal ListCollection(DocumentBase doc) { this.doc = doc; }

    /// <summary>The document the lists belong to.</summary>
    public DocumentBase Document => doc;

    /// <summary>How many lists the document has.</summary>
    public int Count => Lists.Count;

    /// <summary>The list at that position.</summary>
    public List this[int index]
    {
        get
        {
            if (index < 0 || index >= Lists.Count) throw new ArgumentOutOfRangeException(nameof(index));
            return Lists[index];
        }
    }

    /// <summary>Null when no list has the identifier.</summary>
    public List? GetListByListId(int listId) => byId.TryGetValue(listId, out var l) ? l : null;

    /// <summary>Adds a new list made from a template, and returns it.</summary>
    public List Add(ListTemplate listTemplate)
    {
        var abs = ListNumbering.MakeAbstract(NextAbstractId(), listTemplate);
        Abstracts.Add(abs);
        return AddNum(abs);
    }

    /// <summary>A new list that shares nothing with the source, numbering restarting at its own start.</summary>
    public List AddCopy(List srcList)
    {
        ArgumentNullException.ThrowIfNull(srcList);
        var abs = srcList.Abstract.Clone();
        abs.Set("abstractNumId", Units.Str(NextAbstractId()));
        abs.Children?.RemoveAll(c => c.Local == "nsid");
        Abstracts.Add(abs);
        return AddNum(abs);
    }

    internal List AddNum(PropElement abs)
    {
        var num = new PropElement("num").Set("numId", Units.Str(NextNumId()));
        num.Children = new List<PropElement> { new PropElement("abstractNumId").Set("val", abs.Get("abstractNumId")) };
        var l = new List(this, num, abs);
        Lists.Add(l);
        byId.TryAdd(l.ListId, l);
        return l;
    }

    internal void AddLoaded(PropElement num)
    {
        var absId = num.Child("abstractNumId")?.Get("val");
        if (abstractsById == null || abstractsById.Count != Abstracts.Count)
        {
            abstractsById = new Dictionary<string, PropElement>();
            foreach (var a in Abstracts) abstractsById.TryAdd(a.Get("abstractNumId") ?? "", a);
        }
        var abs = absId != null && abstractsById.TryGetValue(absId, out var found) ? found : null;
        if (abs == null) return;
        var l = new List(this, num, abs);
        Lists.Add(l);
        byId.TryAdd(l.ListId, l);
    }

    private int abstractCountSeen = -1;
    private int nextAbstract;

    // Recounted only when definitions were added from outside this class (loading, cloning).
    private int NextAbstractId()
    {
        if (abstractCountSeen != Abstracts.Count)
            nextAbstract = Abstracts.Count == 0 ? 0 : Abstracts.Max(a => Units.ParseInt(a.Get("abstractNumId")) ?? 0) + 1;
        abstractCountSeen = Abstracts.Count + 1;
        return nextAbstract++;
    }

    private int NextNumId() => byId.Count == 0 ? 1 : byId.Keys.Max() + 1;

    /// <summary>The lists in the document's order.</summary>
    public IEnumerator<List> GetEnumerator() => Lists.ToList().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
