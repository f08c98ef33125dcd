using System.Collections;

using Quorix.Folio;

namespace Quorix.Folio.Tables;

/// <summary>A live collection of tables.</summary>
public sealed class TableCollection : NodeCollection, IEnumerable<Table>
{
    internal TableCollection(CompositeNode container, bool deep = false) : base(container, NodeType.Table, deep) { }

    /// <summary>The table at that position; negative positions count from the end.</summary>
    public new Table this[int index] => (Table)base[index];

    /// <summary>The tables as an array, fixed at the time of the call.</summary>
    public new Table[] ToArray() => ToArrayOf<Table>();

    /// <summary>The tables in document order.</summary>
    public new IEnumerator<Table> GetEnumerator() => EnumerateOf<Table>();
}

/// <summary>The rows of a table.</summary>
public sealed class RowCollection : NodeCollection, IEnumerable<Row>
{
    internal RowCollection(CompositeNode container) : base(container, NodeType.Row, false) { }

    /// <summary>The row at that position; negative positions count from the end.</summary>
    public new Row this[int index] => (Row)base[index];

    /// <summary>The rows as an array, fixed at the time of the call.</summary>
    public new Row[] ToArray() => ToArrayOf<Row>();

    /// <summary>The rows from top to bottom.</summary>
    public new IEnumerator<Row> GetEnumerator() => EnumerateOf<Row>();
}

/// <summary>The cells of a row.</summary>
public sealed class CellCollection : NodeCollection, IEnumerable<Cell>
{
    internal CellCollection(CompositeNode container) : base(container, NodeType.Cell, false) { }

    /// <summary>The cell at that position; negative positions count from the end.</summary>
    public new Cell this[int index] => (Cell)base[index];

    /// <summary>The cells as an array, fixed at the time of the call.</summary>
    public new Cell[] ToArray() => ToArrayOf<Cell>();

    /// <summary>The cells in the row's order.</summary>
    public new IEnumerator<Cell> GetEnumerator() => EnumerateOf<Cell>();
}
