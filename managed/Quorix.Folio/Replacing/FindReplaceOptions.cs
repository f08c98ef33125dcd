namespace Quorix.Folio.Replacing;

public enum FindReplaceDirection
{
    Forward = 0,
    Backward = 1,
}

/// <summary>How <see cref="Range.Replace(string, string, FindReplaceOptions)"/> finds and replaces.</summary>
public sealed class FindReplaceOptions
{
    public FindReplaceOptions() { }

    public FindReplaceOptions(FindReplaceDirection direction) { Direction = direction; }

    public FindReplaceOptions(IReplacingCallback replacingCallback) { ReplacingCallback = replacingCallback; }

    /// <summary>Whether letters must match in case, as a word processor's find does by default.
    /// Regular expressions carry their own case option instead.</summary>
    public bool MatchCase { get; set; } = true;

    /// <summary>Only matches with no letter, digit or underscore on either side count.</summary>
    public bool FindWholeWordsOnly { get; set; }

    /// <summary>Whether <c>$1</c>, <c>${name}</c>, <c>$0</c> and <c>$$</c> in the replacement stand for
    /// the match's groups; otherwise the replacement is inserted as written.</summary>
    public bool UseSubstitutions { get; set; }

    /// <summary>The order in which matches are offered to the callback; the matches are the same.</summary>
    public FindReplaceDirection Direction { get; set; } = FindReplaceDirection.Forward;

    /// <summary>Asked before each replacement; it may change the replacement, skip it, or stop.</summary>
    public IReplacingCallback? ReplacingCallback { get; set; }
}
