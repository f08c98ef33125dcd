namespace Quorix.Folio.Fields;

/// <summary>The form fields of a range in document order, by position or by name.</summary>
public sealed class FormFieldCollection : IEnumerable<FormField>
{
    private readonly FieldCollection fields;

    internal FormFieldCollection(Node root) { fields = new FieldCollection(root); }

    private List<FormField> Fresh()
    {
        var list = new List<FormField>();
        foreach (var f in fields)
            if (FormField.Of(f) is { } ff) list.Add(ff);
        return list;
    }

    /// <summary>How many form fields the range holds.</summary>
    public int Count => Fresh().Count;

    /// <summary>A form field by its position.</summary>
    public FormField this[int index]
    {
        get
        {
            var list = Fresh();
            if ((uint)index >= (uint)list.Count) throw new ArgumentOutOfRangeException(nameof(index));
            return list[index];
        }
    }

    /// <summary>The first form field of that name (case ignored), or null.</summary>
    public FormField? this[string name] => Fresh().Find(f => f.Name.Equals(name, StringComparison.OrdinalIgnoreCase));

    /// <summary>Removes the form field of that name with its code and result.</summary>
    public void Remove(string formField) => this[formField]?.RemoveField();

    /// <summary>Removes the form field at a position with its code and result.</summary>
    public void RemoveAt(int index) => this[index].RemoveField();

    /// <summary>Removes every form field of the range.</summary>
    public void Clear()
    {
        foreach (var f in Fresh()) f.RemoveField();
    }

    /// <summary>The form fields in document order.</summary>
    public IEnumerator<FormField> GetEnumerator() => Fresh().GetEnumerator();

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}
