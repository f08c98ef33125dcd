namespace Quorix.Folio.Replacing;

public enum FindReplaceDirection
{
    Forward = 0,
    Backward = 1,
}

public sealed class FindReplaceOptions
{
    public FindReplaceOptions() { }

    public FindReplaceOptions(FindReplaceDirection direction) { Direction = direction; }

    public bool MatchCase { get; set; }

    public bool FindWholeWordsOnly { get; set; }

    public FindReplaceDirection Direction { get; set; } = FindReplaceDirection.Forward;
}
