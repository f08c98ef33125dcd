namespace Quorix.Folio;

/// <summary>The kind of a node of the document tree: what a node is without testing its class.</summary>
public enum NodeType
{
    /// <summary>Every kind: asks a search such as get_child_nodes for nodes of all kinds.</summary>
    Any = 0,
    /// <summary>The whole document, the root of the tree.</summary>
    Document = 1,
    /// <summary>A section: its own page setup, headers and footers, and body.</summary>
    Section = 2,
    /// <summary>The main text of a section.</summary>
    Body = 3,
    /// <summary>A header or footer of a section.</summary>
    HeaderFooter = 4,
    /// <summary>A table.</summary>
    Table = 5,
    /// <summary>A row of a table.</summary>
    Row = 6,
    /// <summary>A cell of a table row.</summary>
    Cell = 7,
    /// <summary>A paragraph.</summary>
    Paragraph = 8,
    /// <summary>Where a bookmark begins.</summary>
    BookmarkStart = 9,
    /// <summary>Where a bookmark ends.</summary>
    BookmarkEnd = 10,
    /// <summary>Where the text a comment is about begins.</summary>
    CommentRangeStart = 11,
    /// <summary>Where the text a comment is about ends.</summary>
    CommentRangeEnd = 12,
    /// <summary>A run: text that shares one character formatting.</summary>
    Run = 13,
    /// <summary>The start of a field, before its code.</summary>
    FieldStart = 14,
    /// <summary>Between a field's code and its result.</summary>
    FieldSeparator = 15,
    /// <summary>The end of a field, after its result.</summary>
    FieldEnd = 16,
    /// <summary>A comment, with its author, date and paragraphs.</summary>
    Comment = 17,
    /// <summary>A footnote or endnote, with its paragraphs.</summary>
    Footnote = 18,
    /// <summary>A shape: a picture, text box or drawing.</summary>
    Shape = 19,
    /// <summary>A content control: a tagged region such as a form field or a bound date.</summary>
    StructuredDocumentTag = 20,
    /// <summary>A smart tag: text marked as a name, date or other recognised kind.</summary>
    SmartTag = 21,
}

/// <summary>The break DocumentBuilder.insert_break puts at the cursor.</summary>
public enum BreakType
{
    /// <summary>Ends the paragraph and starts a new one.</summary>
    ParagraphBreak = 0,
    /// <summary>Moves the text after it to the next page.</summary>
    PageBreak = 1,
    /// <summary>Moves the text after it to the next column.</summary>
    ColumnBreak = 2,
    /// <summary>Starts a new section on the same page.</summary>
    SectionBreakContinuous = 3,
    /// <summary>Starts a new section in the next column.</summary>
    SectionBreakNewColumn = 4,
    /// <summary>Starts a new section on the next page.</summary>
    SectionBreakNewPage = 5,
    /// <summary>Starts a new section on the next even-numbered page.</summary>
    SectionBreakEvenPage = 6,
    /// <summary>Starts a new section on the next odd-numbered page.</summary>
    SectionBreakOddPage = 7,
    /// <summary>Starts a new line within the same paragraph.</summary>
    LineBreak = 8,
}

/// <summary>How text is underlined.</summary>
public enum Underline
{
    /// <summary>Not underlined.</summary>
    None = 0,
    /// <summary>One line under the text, spaces included.</summary>
    Single = 1,
    /// <summary>One line under the words only, not the spaces between them.</summary>
    Words = 2,
    /// <summary>Two lines.</summary>
    Double = 3,
    /// <summary>A dotted line.</summary>
    Dotted = 4,
    /// <summary>One heavy line.</summary>
    Thick = 6,
    /// <summary>A dashed line.</summary>
    Dash = 7,
    /// <summary>Alternating dots and dashes.</summary>
    DotDash = 9,
    /// <summary>Two dots, then a dash, repeated.</summary>
    DotDotDash = 10,
    /// <summary>A wavy line.</summary>
    Wavy = 11,
}

/// <summary>How the lines of a paragraph sit between its indents.</summary>
public enum ParagraphAlignment
{
    /// <summary>Lines start at the left indent, with a ragged right edge.</summary>
    Left = 0,
    /// <summary>Lines are centred between the indents.</summary>
    Center = 1,
    /// <summary>Lines end at the right indent, with a ragged left edge.</summary>
    Right = 2,
    /// <summary>Lines fill the width by widening spaces; the last line stays left.</summary>
    Justify = 3,
    /// <summary>Every line, the last too, fills the width, spacing letters as well as words.</summary>
    Distributed = 4,
}

/// <summary>Which pages of a section a header or footer appears on.</summary>
public enum HeaderFooterType
{
    /// <summary>The header of even-numbered pages, when odd and even pages differ.</summary>
    HeaderEven = 0,
    /// <summary>The header of every page, or of odd pages when odd and even pages differ.</summary>
    HeaderPrimary = 1,
    /// <summary>The footer of even-numbered pages, when odd and even pages differ.</summary>
    FooterEven = 2,
    /// <summary>The footer of every page, or of odd pages when odd and even pages differ.</summary>
    FooterPrimary = 3,
    /// <summary>The header of the section's first page, when that page differs.</summary>
    HeaderFirst = 4,
    /// <summary>The footer of the section's first page, when that page differs.</summary>
    FooterFirst = 5,
}

/// <summary>What a style formats.</summary>
public enum StyleType
{
    /// <summary>Whole paragraphs: their layout and the character formatting of their text.</summary>
    Paragraph = 1,
    /// <summary>Runs of text within a paragraph.</summary>
    Character = 2,
    /// <summary>Tables: borders, shading and the formatting of rows and cells.</summary>
    Table = 3,
    /// <summary>Numbered and bulleted lists: the levels' numbers and indents.</summary>
    List = 4,
}

/// <summary>Where a section's text begins relative to the section before it.</summary>
public enum SectionStart
{
    /// <summary>On the same page, right after the previous section.</summary>
    Continuous = 0,
    /// <summary>In the next column.</summary>
    NewColumn = 1,
    /// <summary>On a new page.</summary>
    NewPage = 2,
    /// <summary>On the next even-numbered page, leaving a blank page if needed.</summary>
    EvenPage = 3,
    /// <summary>On the next odd-numbered page, leaving a blank page if needed.</summary>
    OddPage = 4,
}

/// <summary>Whether pages are taller than wide or wider than tall.</summary>
public enum Orientation
{
    /// <summary>Taller than wide.</summary>
    Portrait = 1,
    /// <summary>Wider than tall.</summary>
    Landscape = 2,
}

/// <summary>The line a border is drawn with.</summary>
public enum LineStyle
{
    /// <summary>No line: the border is not drawn.</summary>
    None = 0,
    /// <summary>One solid line.</summary>
    Single = 1,
    /// <summary>One heavy solid line.</summary>
    Thick = 2,
    /// <summary>Two solid lines.</summary>
    Double = 3,
    /// <summary>A dotted line.</summary>
    Dot = 6,
    /// <summary>Dashes with wide gaps between them.</summary>
    DashLargeGap = 7,
}

/// <summary>A paragraph's level in the document outline and navigation pane: a heading level, or body text.</summary>
public enum OutlineLevel
{
    /// <summary>Top level, as a first-level heading.</summary>
    Level1 = 0,
    /// <summary>Second level.</summary>
    Level2 = 1,
    /// <summary>Third level.</summary>
    Level3 = 2,
    /// <summary>Fourth level.</summary>
    Level4 = 3,
    /// <summary>Fifth level.</summary>
    Level5 = 4,
    /// <summary>Sixth level.</summary>
    Level6 = 5,
    /// <summary>Seventh level.</summary>
    Level7 = 6,
    /// <summary>Eighth level.</summary>
    Level8 = 7,
    /// <summary>Ninth level, the deepest.</summary>
    Level9 = 8,
    /// <summary>Not in the outline: ordinary text.</summary>
    BodyText = 9,
}

/// <summary>The file format a document is written in.</summary>
public enum SaveFormat
{
    /// <summary>No format named; a save with it is refused.</summary>
    Unknown = 0,
    /// <summary>Office Open XML word-processing document (.docx).</summary>
    Docx = 20,
    /// <summary>Word 2003 XML document: one XML file.</summary>
    WordML = 22,
    /// <summary>The .docx package's parts in one XML file.</summary>
    FlatOpc = 24,
    /// <summary>Rich Text Format.</summary>
    Rtf = 30,
    /// <summary>PDF: the laid-out pages.</summary>
    Pdf = 40,
    /// <summary>SVG: the laid-out pages as vector drawings.</summary>
    Svg = 44,
    /// <summary>An HTML page.</summary>
    Html = 50,
    /// <summary>An HTML page with its pictures in one file (.mht).</summary>
    Mhtml = 51,
    /// <summary>An EPUB electronic book.</summary>
    Epub = 52,
    /// <summary>OpenDocument text (.odt).</summary>
    Odt = 60,
    /// <summary>Plain text.</summary>
    Text = 70,
    /// <summary>Markdown text.</summary>
    Markdown = 73,
    /// <summary>A spreadsheet: paragraphs as rows, tables as cells.</summary>
    Xlsx = 74,
    /// <summary>One TIFF holding pictures of the laid-out pages, a page per directory.</summary>
    Tiff = 100,
    /// <summary>PNG pictures of the laid-out pages.</summary>
    Png = 101,
    /// <summary>BMP pictures of the laid-out pages.</summary>
    Bmp = 102,
    /// <summary>JPEG pictures of the laid-out pages.</summary>
    Jpeg = 104,
}

/// <summary>The file format a document is read from.</summary>
public enum LoadFormat
{
    /// <summary>Told from the file's content (and, for text, its extension).</summary>
    Auto = 0,
    /// <summary>Office Open XML word-processing document (.docx, .docm, .dotx).</summary>
    Docx = 20,
    /// <summary>Word 2003 XML document.</summary>
    WordML = 22,
    /// <summary>A .docx package's parts in one XML file.</summary>
    FlatOpc = 24,
    /// <summary>Rich Text Format.</summary>
    Rtf = 30,
    /// <summary>An HTML page.</summary>
    Html = 50,
    /// <summary>An HTML page with its pictures in one file (.mht).</summary>
    Mhtml = 51,
    /// <summary>OpenDocument text (.odt).</summary>
    Odt = 60,
    /// <summary>Plain text, each line a paragraph.</summary>
    Text = 62,
    /// <summary>Markdown text.</summary>
    Markdown = 73,
    /// <summary>A format the engine does not recognise.</summary>
    Unknown = 255,
}

/// <summary>Rotation of a watermark in degrees, as word-processing files store it.</summary>
public enum WatermarkLayout
{
    /// <summary>Level, reading left to right.</summary>
    Horizontal = 0,
    /// <summary>Rising from the bottom left to the top right of the page.</summary>
    Diagonal = 315,
}
