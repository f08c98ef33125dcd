namespace Quorix.Folio.Replacing;

public sealed class FindReplaceOptions
{
    public FindReplaceOptions() { }

    public bool MatchCase { get; set; }

    public bool FindWholeWordsOnly { get; set; }
}
