using System.Collections;

using Quorix.Folio;

namespace Quorix.Folio.Tables;

public sealed class TableCollection : NodeCollection, IEnumerable<Table>
{
    internal TableCollection(CompositeNode container, bool deep = false) : base(container, NodeType.Table, deep) { }

    public new Table this[int index] => (Table)base[index];

    public new Table[] ToArray() => ToArrayOf<Table>();

    public new IEnumerator<Table> GetEnumerator() => EnumerateOf<Table>();
}

public sealed class RowCollection : NodeCollection, IEnumerable<Row>
{
    internal RowCollection(CompositeNode container) : base(container, NodeType.Row, false) { }

    public new Row this[int index] => (Row)base[index];

    public new Row[] ToArray() => ToArrayOf<Row>();

    public new IEnumerator<Row> GetEnumerator() => EnumerateOf<Row>();
}

public sealed class CellCollection : NodeCollection, IEnumerable<Cell>
{
    internal CellCollection(CompositeNode container) : base(container, NodeType.Cell, false) { }

    public new Cell this[int index] => (Cell)base[index];

    public new Cell[] ToArray() => ToArrayOf<Cell>();

    public new IEnumerator<Cell> GetEnumerator() => EnumerateOf<Cell>();
}
