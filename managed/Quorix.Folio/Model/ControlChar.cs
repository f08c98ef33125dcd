namespace Quorix.Folio;

/// <summary>The characters that stand for structure in the text the model returns.</summary>
public sealed class ControlChar
{
    private ControlChar() { }

    public const char CellChar = '\u0007';
    public const char TabChar = '\t';
    public const char LineFeedChar = '\n';
    public const char LineBreakChar = '\u000b';
    public const char ParagraphBreakChar = '\r';
    public const char SectionBreakChar = '\u000c';
    public const char PageBreakChar = '\u000c';
    public const char ColumnBreakChar = '\u000e';
    public const char SpaceChar = ' ';
    public const char NonBreakingSpaceChar = '\u00a0';
    // Field markers stay internal: they never reach text the user sees.
    internal const char FieldStartChar = '\u0013';
    internal const char FieldSeparatorChar = '\u0014';
    internal const char FieldEndChar = '\u0015';

    public static readonly string Cell = "\u0007";
    public static readonly string Tab = "\t";
    public static readonly string LineFeed = "\n";
    public static readonly string LineBreak = "\u000b";
    public static readonly string ParagraphBreak = "\r";
    public static readonly string SectionBreak = "\u000c";
    public static readonly string PageBreak = "\u000c";
    public static readonly string ColumnBreak = "\u000e";
    public static readonly string NonBreakingSpace = "\u00a0";
    public static readonly string Lf = "\n";
    public static readonly string Cr = "\r";
    public static readonly string CrLf = "\r\n";
}
