namespace Quorix.Folio.Comparing;

/// <summary>The unit changes are found in: single characters or whole words.</summary>
public enum Granularity
{
    /// <summary>Changes are found character by character.</summary>
    CharLevel = 0,
    /// <summary>Changes are found word by word: a changed letter marks its whole word.</summary>
    WordLevel = 1,
}

/// <summary>Which document's formatting the result is based on.</summary>
public enum ComparisonTargetType
{
    /// <summary>The document compared keeps its formatting and section layout; where the other formats
    /// the same text differently, the other's formatting comes in as a formatting change.</summary>
    Current = 0,

    /// <summary>The result takes the other document's formatting and section layout as they are:
    /// only its text changes are tracked.</summary>
    New = 1,
}

/// <summary>What a comparison of two documents looks at and how finely.</summary>
public sealed class CompareOptions
{
    private AdvancedCompareOptions advanced = new();

    /// <summary>Text that differs only in letter case counts as the same.</summary>
    public bool IgnoreCaseChanges { get; set; }

    /// <summary>Tables are left as they are in the original and the other document's tables are not brought in.</summary>
    public bool IgnoreTables { get; set; }

    /// <summary>Text that differs only in character formatting counts as the same; otherwise the
    /// formatting it takes is recorded as a formatting change.</summary>
    public bool IgnoreFormatting { get; set; }

    /// <summary>Fields count as the same whatever their codes and results.</summary>
    public bool IgnoreFields { get; set; }

    /// <summary>The text of comments is not compared.</summary>
    public bool IgnoreComments { get; set; }

    /// <summary>Headers and footers are left as they are in the original; otherwise each is compared
    /// with the other document's of the same kind in the same section.</summary>
    public bool IgnoreHeadersAndFooters { get; set; }

    /// <summary>The text of footnotes and endnotes is not compared.</summary>
    public bool IgnoreFootnotes { get; set; }

    /// <summary>The text of text boxes is not compared.</summary>
    public bool IgnoreTextboxes { get; set; }

    /// <summary>Whether changes are found by character or by word.</summary>
    public Granularity Granularity { get; set; } = Granularity.WordLevel;

    /// <summary>Which document's formatting and page layout the result is based on.</summary>
    public ComparisonTargetType Target { get; set; } = ComparisonTargetType.Current;

    /// <summary>Finer choices of how differences are reported.</summary>
    public AdvancedCompareOptions AdvancedOptions
    {
        get => advanced;
        set => advanced = value ?? throw new ArgumentNullException(nameof(value));
    }
}

/// <summary>Finer choices of how differences are reported.</summary>
public sealed class AdvancedCompareOptions
{
    private int minimumMoveLength = 8;

    /// <summary>Paragraphs removed in one place and inserted unchanged in another are shown as
    /// deleted and inserted instead of moved.</summary>
    public bool ReportMovesAsInsertionsAndDeletions { get; set; }

    /// <summary>The fewest characters (spaces aside) a paragraph has for its relocation to count as a move:
    /// short repeated lines are more often new text than moved text.</summary>
    public int MinimumMoveLength
    {
        get => minimumMoveLength;
        set => minimumMoveLength = value >= 1 ? value : throw new ArgumentOutOfRangeException(nameof(value), "A move is at least one character long.");
    }
}
