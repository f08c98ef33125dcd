namespace Quorix.Folio.Formatting;

/// <summary>The property bags consulted, in order, when an element says nothing itself.</summary>
// At most two resolved chains back to back (a run's character style, then its paragraph's chain),
// read straight from the arrays the styles cache, so a lookup allocates nothing.
internal readonly struct BagChain
{
    private readonly PropBag[]? first;
    private readonly int firstStart;
    private readonly PropBag[]? second;

    public BagChain(PropBag[] bags, int start = 0)
    {
        first = bags;
        firstStart = start;
        second = null;
    }

    private BagChain(PropBag[]? first, int firstStart, PropBag[]? second)
    {
        this.first = first;
        this.firstStart = firstStart;
        this.second = second;
    }

    /// <summary>This chain followed by another one that is a single segment.</summary>
    public BagChain Then(BagChain next) =>
        first == null ? next : new BagChain(first, firstStart, next.second != null || next.firstStart != 0 ? next.ToArray() : next.first);

    public PropElement? Find(string local)
    {
        if (first != null)
            for (int i = firstStart; i < first.Length; i++)
                if (first[i].Find(local) is { } e) return e;
        if (second != null)
            for (int i = 0; i < second.Length; i++)
                if (second[i].Find(local) is { } e) return e;
        return null;
    }

    /// <summary>The first element of that name that <paramref name="says"/> something: properties such as
    /// spacing and indents are inherited attribute by attribute, not as whole elements.</summary>
    public PropElement? Find(string local, Func<PropElement, bool> says)
    {
        if (first != null)
            for (int i = firstStart; i < first.Length; i++)
                if (first[i].Find(local) is { } e && says(e)) return e;
        if (second != null)
            for (int i = 0; i < second.Length; i++)
                if (second[i].Find(local) is { } e && says(e)) return e;
        return null;
    }

    /// <summary>The first bag's say on an on/off property; null when none has it.</summary>
    public bool? Toggle(string local) => Find(local) is { } e ? PropBag.IsOn(e) : null;

    public PropBag[] ToArray()
    {
        var list = new List<PropBag>();
        if (first != null)
            for (int i = firstStart; i < first.Length; i++) list.Add(first[i]);
        if (second != null) list.AddRange(second);
        return list.ToArray();
    }
}
