namespace Quorix.Folio.Formatting;

/// <summary>Typed formatting as a public format object reads and changes it: the owner's own
/// attributes, and what the owner inherits where it says nothing itself.</summary>
internal sealed class AttrHost
{
    private readonly Func<AttrSet> own;
    private readonly Action<AttrSet> put;
    private readonly Func<AttrSet>? inherited;

    public AttrHost(Func<AttrSet> own, Action<AttrSet> put, Func<AttrSet>? inherited = null)
    {
        this.own = own;
        this.put = put;
        this.inherited = inherited;
    }

    public AttrSet Own => own();

    /// <summary>The attribute's value: the owner's own when it says anything of the group, else the inherited one.</summary>
    public object? Get(FormatAttr a)
    {
        var set = own();
        if (set.HasGroup(a) || inherited == null) return set.Get(a);
        return inherited().Get(a);
    }

    /// <summary>Sets the owner's own value; null removes it, so the inherited one shows again.</summary>
    public void Set(FormatAttr a, object? value) => put(own().With(a, value));

    public void Put(AttrSet set) => put(set);
}
