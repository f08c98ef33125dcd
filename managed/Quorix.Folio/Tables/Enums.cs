namespace Quorix.Folio.Tables;

/// <summary>How a cell takes part in a merge of cells.</summary>
public enum CellMerge
{
    /// <summary>The cell is not merged.</summary>
    None = 0,
    /// <summary>The cell is the first of merged cells and shows their content.</summary>
    First = 1,
    /// <summary>The cell is merged into the one before it.</summary>
    Previous = 2,
}

/// <summary>How a cell's content is placed between its top and bottom.</summary>
public enum CellVerticalAlignment
{
    /// <summary>At the top.</summary>
    Top = 0,
    /// <summary>In the middle.</summary>
    Center = 1,
    /// <summary>At the bottom.</summary>
    Bottom = 2,
}

/// <summary>How a table narrower than the text is placed.</summary>
public enum TableAlignment
{
    /// <summary>At the left margin.</summary>
    Left = 0,
    /// <summary>Centred.</summary>
    Center = 1,
    /// <summary>At the right margin.</summary>
    Right = 2,
}

/// <summary>The parts of a table its style formats apart from the rest.</summary>
[Flags]
public enum TableStyleOptions
{
    /// <summary>No part formatted apart: the style's whole-table formatting only.</summary>
    None = 0,
    /// <summary>The first row.</summary>
    FirstRow = 0x20,
    /// <summary>The last row.</summary>
    LastRow = 0x40,
    /// <summary>The first column.</summary>
    FirstColumn = 0x80,
    /// <summary>The last column.</summary>
    LastColumn = 0x100,
    /// <summary>Alternate rows banded.</summary>
    RowBands = 0x200,
    /// <summary>Alternate columns banded.</summary>
    ColumnBands = 0x400,
    /// <summary>What new tables get: first row, first column and banded rows.</summary>
    Default = FirstRow | FirstColumn | RowBands,
}
