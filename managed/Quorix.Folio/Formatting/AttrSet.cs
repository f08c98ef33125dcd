namespace Quorix.Folio.Formatting;

/// <summary>An immutable set of formatting attributes, sorted by attribute. Equal sets are
/// interchangeable, so nodes with the same formatting share one instance.</summary>
internal sealed class AttrSet : IEquatable<AttrSet>
{
    public static readonly AttrSet Empty = new(Array.Empty<FormatAttr>(), Array.Empty<object>());

    // Boxed once: toggles are the most common values.
    public static readonly object True = true, False = false;

    private readonly FormatAttr[] keys;
    private readonly object[] values;
    private readonly int hash;

    private AttrSet(FormatAttr[] keys, object[] values)
    {
        this.keys = keys;
        this.values = values;
        var h = new HashCode();
        for (int i = 0; i < keys.Length; i++)
        {
            h.Add(keys[i]);
            h.Add(values[i]);
        }
        hash = h.ToHashCode();
    }

    public int Count => keys.Length;

    public bool IsEmpty => keys.Length == 0;

    public FormatAttr KeyAt(int i) => keys[i];

    public object ValueAt(int i) => values[i];

    private int IndexOf(FormatAttr a)
    {
        var k = keys;
        for (int i = 0; i < k.Length; i++)
        {
            if (k[i] == a) return i;
            if (k[i] > a) break;
        }
        return -1;
    }

    /// <summary>The attribute's value; null when the set does not say.</summary>
    public object? Get(FormatAttr a) => IndexOf(a) is var i and >= 0 ? values[i] : null;

    public bool Has(FormatAttr a) => IndexOf(a) >= 0;

    public string? String(FormatAttr a) => Get(a) as string;

    public int? Int(FormatAttr a) => Get(a) is int v ? v : null;

    public bool? Bool(FormatAttr a) => Get(a) is bool v ? v : null;

    /// <summary>Whether the set says anything about the attribute's group.</summary>
    public bool HasGroup(FormatAttr a)
    {
        var g = FormatAttrs.Group(a);
        foreach (var k in keys)
            if (FormatAttrs.Group(k) == g) return true;
        return false;
    }

    /// <summary>This set with the attribute set to the value, or removed when the value is null.</summary>
    public AttrSet With(FormatAttr a, object? value)
    {
        int i = IndexOf(a);
        if (value == null) return i < 0 ? this : Without(a);
        if (i >= 0)
        {
            if (values[i].Equals(value)) return this;
            var v = (object[])values.Clone();
            v[i] = value;
            return new AttrSet(keys, v);
        }
        int at = 0;
        while (at < keys.Length && keys[at] < a) at++;
        var nk = new FormatAttr[keys.Length + 1];
        var nv = new object[keys.Length + 1];
        Array.Copy(keys, nk, at);
        Array.Copy(values, nv, at);
        nk[at] = a;
        nv[at] = value;
        Array.Copy(keys, at, nk, at + 1, keys.Length - at);
        Array.Copy(values, at, nv, at + 1, keys.Length - at);
        return new AttrSet(nk, nv);
    }

    public AttrSet With(FormatAttr a, bool value) => With(a, value ? True : False);

    public AttrSet Without(FormatAttr a) => Where(k => k != a);

    /// <summary>This set without any attribute of the group.</summary>
    public AttrSet WithoutGroup(FormatAttr a)
    {
        var g = FormatAttrs.Group(a);
        return Where(k => FormatAttrs.Group(k) != g);
    }

    public AttrSet Where(Func<FormatAttr, bool> keep)
    {
        int n = 0;
        foreach (var k in keys) if (keep(k)) n++;
        if (n == keys.Length) return this;
        if (n == 0) return Empty;
        var nk = new FormatAttr[n];
        var nv = new object[n];
        for (int i = 0, j = 0; i < keys.Length; i++)
        {
            if (!keep(keys[i])) continue;
            nk[j] = keys[i];
            nv[j++] = values[i];
        }
        return new AttrSet(nk, nv);
    }

    /// <summary>This set overridden by <paramref name="over"/>, group by group: a group the other
    /// set says anything about is taken from it whole.</summary>
    public AttrSet Then(AttrSet over)
    {
        if (over.IsEmpty) return this;
        if (IsEmpty) return over;
        var result = Where(k => !over.HasGroup(k));
        for (int i = 0; i < over.keys.Length; i++)
        {
            var value = over.values[i];
            // Some values add to what is inherited rather than replace it.
            if (value is IMergedValue merged && Get(over.keys[i]) is { } under) value = merged.Over(under);
            result = result.With(over.keys[i], value);
        }
        return result;
    }

    /// <summary>The one instance equal to this set in the table, added when new.</summary>
    public AttrSet Intern(Dictionary<AttrSet, AttrSet> table)
    {
        if (IsEmpty) return Empty;
        if (table.TryGetValue(this, out var shared)) return shared;
        table[this] = this;
        return this;
    }

    public bool Equals(AttrSet? other)
    {
        if (ReferenceEquals(this, other)) return true;
        if (other == null || other.hash != hash || other.keys.Length != keys.Length) return false;
        for (int i = 0; i < keys.Length; i++)
            if (keys[i] != other.keys[i] || !values[i].Equals(other.values[i])) return false;
        return true;
    }

    public override bool Equals(object? obj) => Equals(obj as AttrSet);

    public override int GetHashCode() => hash;
}
