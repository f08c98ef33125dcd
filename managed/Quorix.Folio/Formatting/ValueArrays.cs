namespace Quorix.Folio.Formatting;

/// <summary>An immutable array compared by its items, so sets holding it compare and share by value.</summary>
internal abstract class ValueArray<T> : IEquatable<ValueArray<T>> where T : IEquatable<T>
{
    protected readonly T[] Items;

    protected ValueArray(T[] items) { Items = items; }

    public int Count => Items.Length;

    public bool Equals(ValueArray<T>? other) => other != null && other.GetType() == GetType() && Items.AsSpan().SequenceEqual(other.Items);

    public override bool Equals(object? obj) => Equals(obj as ValueArray<T>);

    public override int GetHashCode()
    {
        var h = new HashCode();
        foreach (var c in Items) h.Add(c);
        return h.ToHashCode();
    }
}

/// <summary>The widths of unevenly spaced text columns, and the space after each, in twips.</summary>
internal sealed class ColumnList : ValueArray<(int Width, int? Space)>
{
    public ColumnList((int Width, int? Space)[] columns) : base(columns) { }

    public (int Width, int? Space) this[int i] => Items[i];

    public ColumnList With(int i, int? width, int? space)
    {
        var copy = ((int, int?)[])Items.Clone();
        copy[i] = (width ?? copy[i].Item1, space ?? copy[i].Item2);
        return new ColumnList(copy);
    }
}

/// <summary>A value that a more specific level adds to rather than replaces: tab stops.</summary>
internal interface IMergedValue
{
    /// <summary>This value over the one inherited.</summary>
    object Over(object inherited);
}

/// <summary>Tab stops as one level of formatting says them: stops by position in twips, with their
/// kind and leader as stored, and "clear" entries that remove an inherited stop at their position.</summary>
internal sealed class TabList : ValueArray<TabList.Entry>, IMergedValue
{
    public readonly record struct Entry(int Position, string Kind, string? Leader);

    public static readonly TabList Empty = new(Array.Empty<Entry>());

    public TabList(IEnumerable<Entry> entries) : base(entries.OrderBy(e => e.Position).ToArray()) { }

    public IReadOnlyList<Entry> Entries => Items;

    public object Over(object inherited)
    {
        if (inherited is not TabList under) return this;
        var byPosition = new SortedDictionary<int, Entry>();
        foreach (var e in under.Items) byPosition[e.Position] = e;
        // The result is what a reader sees, so a clear leaves nothing at its position.
        foreach (var e in Items)
            if (e.Kind == "clear") byPosition.Remove(e.Position);
            else byPosition[e.Position] = e;
        return new TabList(byPosition.Values);
    }

    public TabList With(Entry entry) => new(Items.Where(e => e.Position != entry.Position).Append(entry));

    public TabList Without(int position) => new(Items.Where(e => e.Position != position));
}
