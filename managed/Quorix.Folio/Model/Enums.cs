namespace Quorix.Folio;

public enum NodeType
{
    Any = 0,
    Document = 1,
    Section = 2,
    Body = 3,
    HeaderFooter = 4,
    Table = 5,
    Row = 6,
    Cell = 7,
    Paragraph = 8,
    BookmarkStart = 9,
    BookmarkEnd = 10,
    CommentRangeStart = 11,
    CommentRangeEnd = 12,
    Run = 13,
    FieldStart = 14,
    FieldSeparator = 15,
    FieldEnd = 16,
    Comment = 17,
    Footnote = 18,
    Shape = 19,
    StructuredDocumentTag = 20,
    SmartTag = 21,
}

public enum BreakType
{
    ParagraphBreak = 0,
    PageBreak = 1,
    ColumnBreak = 2,
    SectionBreakContinuous = 3,
    SectionBreakNewColumn = 4,
    SectionBreakNewPage = 5,
    SectionBreakEvenPage = 6,
    SectionBreakOddPage = 7,
    LineBreak = 8,
}

public enum Underline
{
    None = 0,
    Single = 1,
    Words = 2,
    Double = 3,
    Dotted = 4,
    Thick = 6,
    Dash = 7,
    DotDash = 9,
    DotDotDash = 10,
    Wavy = 11,
}

public enum ParagraphAlignment
{
    Left = 0,
    Center = 1,
    Right = 2,
    Justify = 3,
    Distributed = 4,
}

public enum HeaderFooterType
{
    HeaderEven = 0,
    HeaderPrimary = 1,
    FooterEven = 2,
    FooterPrimary = 3,
    HeaderFirst = 4,
    FooterFirst = 5,
}

public enum StyleType
{
    Paragraph = 1,
    Character = 2,
    Table = 3,
    List = 4,
}

public enum SectionStart
{
    Continuous = 0,
    NewColumn = 1,
    NewPage = 2,
    EvenPage = 3,
    OddPage = 4,
}

public enum Orientation
{
    Portrait = 1,
    Landscape = 2,
}

public enum LineStyle
{
    None = 0,
    Single = 1,
    Thick = 2,
    Double = 3,
    Dot = 6,
    DashLargeGap = 7,
}

public enum OutlineLevel
{
    Level1 = 0,
    Level2 = 1,
    Level3 = 2,
    Level4 = 3,
    Level5 = 4,
    Level6 = 5,
    Level7 = 6,
    Level8 = 7,
    Level9 = 8,
    BodyText = 9,
}

public enum SaveFormat
{
    Unknown = 0,
    Docx = 20,
    WordML = 22,
    FlatOpc = 24,
    Rtf = 30,
    Pdf = 40,
    Svg = 44,
    Html = 50,
    Mhtml = 51,
    Epub = 52,
    Odt = 60,
    Text = 70,
    Markdown = 73,
    Xlsx = 74,
    Png = 101,
    Jpeg = 104,
}

public enum LoadFormat
{
    Auto = 0,
    Docx = 20,
    WordML = 22,
    FlatOpc = 24,
    Rtf = 30,
    Html = 50,
    Mhtml = 51,
    Odt = 60,
    Text = 62,
    Markdown = 73,
    Unknown = 255,
}

/// <summary>Rotation of a watermark in degrees, as word-processing files store it.</summary>
public enum WatermarkLayout
{
    Horizontal = 0,
    Diagonal = 315,
}
