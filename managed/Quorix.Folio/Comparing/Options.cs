namespace Quorix.Folio.Comparing;

/// <summary>The unit changes are found in: single characters or whole words.</summary>
public enum Granularity
{
    CharLevel = 0,
    WordLevel = 1,
}

public sealed class CompareOptions
{
    /// <summary>Text that differs only in letter case counts as the same.</summary>
    public bool IgnoreCaseChanges { get; set; }

    /// <summary>Tables are left as they are in the original and the other document's tables are not brought in.</summary>
    public bool IgnoreTables { get; set; }

    public Granularity Granularity { get; set; } = Granularity.WordLevel;
}
