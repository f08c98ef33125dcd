namespace Quorix.Folio;

/// <summary>The characters that stand for structure in the text the model returns.</summary>
public sealed class ControlChar
{
    private ControlChar() { }

    /// <summary>The character that ends a table cell's text.</summary>
    public const char CellChar = '\u0007';
    /// <summary>The tab character.</summary>
    public const char TabChar = '\t';
    /// <summary>The line feed character.</summary>
    public const char LineFeedChar = '\n';
    /// <summary>The character of a line break inside a paragraph.</summary>
    public const char LineBreakChar = '\u000b';
    /// <summary>The character that ends a paragraph.</summary>
    public const char ParagraphBreakChar = '\r';
    /// <summary>The character of a section break.</summary>
    public const char SectionBreakChar = '\u000c';
    /// <summary>The character of a page break.</summary>
    public const char PageBreakChar = '\u000c';
    /// <summary>The character of a column break.</summary>
    public const char ColumnBreakChar = '\u000e';
    /// <summary>The space character.</summary>
    public const char SpaceChar = ' ';
    /// <summary>The non-breaking space character.</summary>
    public const char NonBreakingSpaceChar = '\u00a0';
    // Field markers stay internal: they never reach text the user sees.
    internal const char FieldStartChar = '\u0013';
    internal const char FieldSeparatorChar = '\u0014';
    internal const char FieldEndChar = '\u0015';

    /// <summary>The end of a table cell's text, as a string.</summary>
    public static readonly string Cell = "\u0007";
    /// <summary>The tab character, as a string.</summary>
    public static readonly string Tab = "\t";
    /// <summary>The line feed character, as a string.</summary>
    public static readonly string LineFeed = "\n";
    /// <summary>A line break inside a paragraph, as a string.</summary>
    public static readonly string LineBreak = "\u000b";
    /// <summary>The end of a paragraph, as a string.</summary>
    public static readonly string ParagraphBreak = "\r";
    /// <summary>A section break, as a string.</summary>
    public static readonly string SectionBreak = "\u000c";
    /// <summary>A page break, as a string.</summary>
    public static readonly string PageBreak = "\u000c";
    /// <summary>A column break, as a string.</summary>
    public static readonly string ColumnBreak = "\u000e";
    /// <summary>The non-breaking space, as a string.</summary>
    public static readonly string NonBreakingSpace = "\u00a0";
    /// <summary>A line feed, as a string.</summary>
    public static readonly string Lf = "\n";
    /// <summary>A carriage return, as a string.</summary>
    public static readonly string Cr = "\r";
    /// <summary>A carriage return and line feed, as a string.</summary>
    public static readonly string CrLf = "\r\n";
}
