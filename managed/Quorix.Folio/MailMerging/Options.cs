namespace Quorix.Folio.MailMerging;

/// <summary>What mail merge removes once the data is in.</summary>
[Flags]
public enum MailMergeCleanupOptions
{
    /// <summary>Nothing is removed after the merge.</summary>
    None = 0,
    /// <summary>Paragraphs left empty by the merge.</summary>
    RemoveEmptyParagraphs = 1,
    /// <summary>Regions that no data source fills.</summary>
    RemoveUnusedRegions = 2,
    /// <summary>Merge fields the data has no value for.</summary>
    RemoveUnusedFields = 4,
    /// <summary>IF and formula fields around merged values: their results stay as text.</summary>
    RemoveContainingFields = 8,
    /// <summary>Table rows left with no text in any cell.</summary>
    RemoveEmptyTableRows = 32,
}

/// <summary>One document field name mapped to a differently named field of the data.</summary>
public sealed class MappedDataFieldCollection : IEnumerable<KeyValuePair<string, string>>
{
    private readonly Dictionary<string, string> map = new(StringComparer.OrdinalIgnoreCase);

    /// <summary>How many field names are mapped.</summary>
    public int Count => map.Count;

    /// <summary>The data field that the document's field of that name takes its value from.</summary>
    public string this[string documentFieldName]
    {
        get => map[documentFieldName];
        set => map[documentFieldName] = value;
    }

    /// <summary>Makes the merge field documentFieldName take the data source's field dataSourceFieldName.</summary>
    public void Add(string documentFieldName, string dataSourceFieldName) => map[documentFieldName] = dataSourceFieldName;

    /// <summary>Whether the merge field documentFieldName is mapped.</summary>
    public bool ContainsKey(string documentFieldName) => map.ContainsKey(documentFieldName);

    /// <summary>Removes the mapping of the merge field documentFieldName.</summary>
    public void Remove(string documentFieldName) => map.Remove(documentFieldName);

    /// <summary>Removes every mapping.</summary>
    public void Clear() => map.Clear();

    internal string Resolve(string name) => map.TryGetValue(name, out var v) ? v : name;

    /// <summary>Each document field name with the data field it takes its value from.</summary>
    public IEnumerator<KeyValuePair<string, string>> GetEnumerator() => map.GetEnumerator();

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>A {{name}} tag in the text, merged like a MERGEFIELD when the merge is told to.</summary>
public sealed class MustacheTag
{
    internal MustacheTag(Run run, string text) { ReferenceRun = run; Text = text; }

    /// <summary>The tag as written, braces included.</summary>
    public string Text { get; }

    /// <summary>The run the tag was in before the merge.</summary>
    public Run ReferenceRun { get; }
}

/// <summary>A region of the document: the fields between a TableStart and a TableEnd merge field of one name.</summary>
public sealed class MailMergeRegionInfo
{
    internal MailMergeRegionInfo(string? name, Fields.FieldMergeField? start, Fields.FieldMergeField? end, int level, MailMergeRegionInfo? parent)
    {
        Name = name;
        StartField = start;
        EndField = end;
        Level = level;
        ParentRegion = parent;
    }

    /// <summary>The region's name; null for the whole document.</summary>
    public string? Name { get; }

    /// <summary>The TableStart merge field that opens the region; null for the document itself.</summary>
    public Fields.FieldMergeField? StartField { get; }

    /// <summary>The TableEnd merge field that closes the region; null for the document itself.</summary>
    public Fields.FieldMergeField? EndField { get; }

    /// <summary>0 for the document, 1 for a top-level region, deeper for nested ones.</summary>
    public int Level { get; }

    /// <summary>The region this one is nested in; null at the top.</summary>
    public MailMergeRegionInfo? ParentRegion { get; }

    /// <summary>The regions nested directly in this one.</summary>
    public IList<MailMergeRegionInfo> Regions { get; } = new List<MailMergeRegionInfo>();

    /// <summary>The merge fields directly inside, not inside nested regions.</summary>
    public IList<Fields.FieldMergeField> Fields { get; } = new List<Fields.FieldMergeField>();
}
