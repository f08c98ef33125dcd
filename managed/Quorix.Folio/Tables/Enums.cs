namespace Quorix.Folio.Tables;

public enum CellMerge
{
    None = 0,
    First = 1,
    Previous = 2,
}

public enum CellVerticalAlignment
{
    Top = 0,
    Center = 1,
    Bottom = 2,
}

public enum TableAlignment
{
    Left = 0,
    Center = 1,
    Right = 2,
}
