using System.Data;

namespace Quorix.Folio.MailMerging;

/// <summary>Records for mail merge: a table of them, each with named values, and child tables for nested regions.</summary>
public interface IMailMergeDataSource
{
    /// <summary>The region name (TableStart:Name) this source fills.</summary>
    string TableName { get; }

    /// <summary>Moves to the next record; false when there is none. Called before the first record too.</summary>
    bool MoveNext();

    /// <summary>The value of a field of the current record; false when the record has no such field.</summary>
    bool GetValue(string fieldName, out object? fieldValue);

    /// <summary>Records of a nested region that belong to the current record, or null when there are none.</summary>
    IMailMergeDataSource? GetChildDataSource(string tableName);
}

/// <summary>Several tables by name, for documents with several top-level regions.</summary>
public interface IMailMergeDataSourceRoot
{
    /// <summary>The records of the region with this name, or null when there are none.</summary>
    IMailMergeDataSource? GetDataSource(string tableName);
}

/// <summary>One record: names and values side by side.</summary>
internal sealed class ArraySource : IMailMergeDataSource
{
    private readonly string[] names;
    private readonly object?[] values;
    private bool moved;

    public ArraySource(string[] names, object?[] values)
    {
        if (names.Length != values.Length) throw new ArgumentException("There must be as many values as names.");
        this.names = names;
        this.values = values;
    }

    public string TableName => "";

    public bool MoveNext() => !moved && (moved = true);

    public bool GetValue(string fieldName, out object? fieldValue)
    {
        int i = Array.FindIndex(names, n => n.Equals(fieldName, StringComparison.OrdinalIgnoreCase));
        fieldValue = i >= 0 ? values[i] : null;
        return i >= 0;
    }

    public IMailMergeDataSource? GetChildDataSource(string tableName) => null;
}

/// <summary>The rows of a data table; child tables through the data set's relations.</summary>
internal sealed class DataTableSource : IMailMergeDataSource
{
    private readonly DataTable table;
    private readonly DataRow[] rows;
    private int index = -1;

    public DataTableSource(DataTable table, DataRow[]? rows = null)
    {
        this.table = table;
        this.rows = rows ?? table.Rows.Cast<DataRow>().ToArray();
    }

    public string TableName => table.TableName;

    public bool MoveNext() => ++index < rows.Length;

    public bool GetValue(string fieldName, out object? fieldValue)
    {
        int col = table.Columns.IndexOf(fieldName);
        fieldValue = col >= 0 ? rows[index][col] is DBNull ? null : rows[index][col] : null;
        return col >= 0;
    }

    public IMailMergeDataSource? GetChildDataSource(string tableName)
    {
        foreach (DataRelation rel in table.ChildRelations)
            if (rel.ChildTable.TableName.Equals(tableName, StringComparison.OrdinalIgnoreCase))
                return new DataTableSource(rel.ChildTable, rows[index].GetChildRows(rel));
        return null;
    }
}

internal sealed class DataSetRoot : IMailMergeDataSourceRoot
{
    private readonly DataSet set;

    public DataSetRoot(DataSet set) { this.set = set; }

    public IMailMergeDataSource? GetDataSource(string tableName) =>
        set.Tables.Contains(tableName) ? new DataTableSource(set.Tables[tableName]!) : null;
}
