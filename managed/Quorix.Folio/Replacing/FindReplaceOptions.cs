namespace Quorix.Folio.Replacing;

/// <summary>Which way a find and replace goes through the text.</summary>
public enum FindReplaceDirection
{
    /// <summary>From the start to the end.</summary>
    Forward = 0,
    /// <summary>From the end to the start.</summary>
    Backward = 1,
}

/// <summary>How <see cref="Range.Replace(string, string, FindReplaceOptions)"/> finds and replaces.</summary>
public sealed class FindReplaceOptions
{
    /// <summary>Options of a plain find and replace, forward.</summary>
    public FindReplaceOptions() { }

    /// <summary>Options of a find and replace in the given direction.</summary>
    public FindReplaceOptions(FindReplaceDirection direction) { Direction = direction; }

    /// <summary>Options of a find and replace whose every match a callback decides.</summary>
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
