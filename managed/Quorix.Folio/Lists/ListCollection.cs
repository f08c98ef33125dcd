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

    internal ListCollection(DocumentBase doc) { this.doc = doc; }

    public DocumentBase Document => doc;

    public int Count => Lists.Count;

    public List this[int index]
    {
        get
        {
            if (index < 0 || index >= Lists.Count) throw new ArgumentOutOfRangeException(nameof(index));
            return Lists[index];
        }
    }

    /// <summary>Null when no list has the identifier.</summary>
    public List? GetListByListId(int listId) => Lists.Find(l => l.ListId == listId);

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
        return l;
    }

    internal void AddLoaded(PropElement num)
    {
        var absId = num.Child("abstractNumId")?.Get("val");
        var abs = Abstracts.Find(a => a.Get("abstractNumId") == absId);
        if (abs == null) return;
        Lists.Add(new List(this, num, abs));
    }

    private int NextAbstractId() => Abstracts.Count == 0 ? 0 : Abstracts.Max(a => Units.ParseInt(a.Get("abstractNumId")) ?? 0) + 1;

    private int NextNumId() => Lists.Count == 0 ? 1 : Lists.Max(l => l.ListId) + 1;

    public IEnumerator<List> GetEnumerator() => Lists.ToList().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
