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
