namespace Quorix.Folio.Fields;

/// <summary>The fields of a range, in the order their starts appear.</summary>
public sealed class FieldCollection : IReadOnlyList<Field>
{
    private readonly Node root;

    internal FieldCollection(Node root) { this.root = root; }

    // Collected in end order (nested first); listed in start order, as the document reads.
    private List<Field> Fresh()
    {
        var order = new Dictionary<FieldStart, int>();
        for (Node? n = root; n != null; n = n.NextPreOrder(root))
            if (n is FieldStart s) order[s] = order.Count;
        var list = FieldUpdater.Collect(root, root);
        list.Sort((a, b) => order[a.Start].CompareTo(order[b.Start]));
        return list;
    }

    /// <summary>How many fields the range holds.</summary>
    public int Count => Fresh().Count;

    /// <summary>The field at that position.</summary>
    public Field this[int index]
    {
        get
        {
            var list = Fresh();
            if ((uint)index >= (uint)list.Count) throw new ArgumentOutOfRangeException(nameof(index));
            return list[index];
        }
    }

    /// <summary>Removes a field, its code and its result.</summary>
    public void Remove(Field field) => field.Remove();

    /// <summary>Removes the field at index, its code and its result.</summary>
    public void RemoveAt(int index) => this[index].Remove();

    /// <summary>Removes every field of the range with its code and result.</summary>
    public void Clear()
    {
        foreach (var f in Fresh()) if (f.Start.ParentNode != null) f.Remove();
    }

    /// <summary>The fields in document order.</summary>
    public IEnumerator<Field> GetEnumerator() => Fresh().GetEnumerator();

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}
