using System.Collections;

namespace Quorix.Folio.Properties;

/// <summary>The properties of a document of one family (built-in or custom), found by name or position.</summary>
public abstract class DocumentPropertyCollection : IEnumerable<DocumentProperty>
{
    private protected readonly Document doc;

    private protected DocumentPropertyCollection(Document doc) => this.doc = doc;

    private protected PropertyParts Parts => doc.PropertyParts;

    /// <summary>The properties the document holds now, in their order in the part.</summary>
    private protected abstract List<DocumentProperty> Items();

    /// <summary>How many properties there are.</summary>
    public int Count => Items().Count;

    /// <summary>The property of that name, the case of letters ignored; None when there is none.</summary>
    public DocumentProperty? this[string name] => Get(name);

    /// <summary>The property at that position.</summary>
    public DocumentProperty this[int index] => Get(index);

    /// <summary>The property of that name (names compare without regard to case), or null.</summary>
    public DocumentProperty? Get(string name)
    {
        ArgumentNullException.ThrowIfNull(name);
        return Items().Find(p => string.Equals(p.Name, name, StringComparison.OrdinalIgnoreCase));
    }

    /// <summary>The property at index.</summary>
    public DocumentProperty Get(int index)
    {
        var items = Items();
        if (index < 0 || index >= items.Count)
            throw new ArgumentOutOfRangeException(nameof(index), $"There are {items.Count} properties, no index {index}.");
        return items[index];
    }

    /// <summary>Whether there is a property of that name.</summary>
    public bool Contains(string name) => Get(name) != null;

    /// <summary>The position of the property of that name; -1 when there is none.</summary>
    public int IndexOf(string name)
    {
        ArgumentNullException.ThrowIfNull(name);
        return Items().FindIndex(p => string.Equals(p.Name, name, StringComparison.OrdinalIgnoreCase));
    }

    /// <summary>Looks a property up by name, the way a dictionary's TryGetValue does.</summary>
    public bool TryGetValue(string name, out object? value)
    {
        value = Get(name)?.Value;
        return value != null;
    }

    /// <summary>Removes the property of that name.</summary>
    public abstract void Remove(string name);

    /// <summary>Removes the property at index.</summary>
    public void RemoveAt(int index) => Remove(Get(index).Name);

    /// <summary>Removes every property.</summary>
    public void Clear()
    {
        foreach (var p in Items())
            Remove(p.Name);
    }

    /// <summary>The properties in order.</summary>
    public IEnumerator<DocumentProperty> GetEnumerator() => Items().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
