using System.Text.RegularExpressions;

namespace Quorix.Folio.Replacing;

/// <summary>What a replacing callback decides for one match.</summary>
public enum ReplaceAction
{
    /// <summary>Replace the match with <see cref="ReplacingArgs.Replacement"/> and go on.</summary>
    Replace = 0,
    /// <summary>Leave the match as it is and go on.</summary>
    Skip = 1,
    /// <summary>Leave this match and every later one as they are; the replacements made so far stay.</summary>
    Stop = 2,
}

/// <summary>Decides each replacement of a find and replace; set on <see cref="FindReplaceOptions.ReplacingCallback"/>.
/// An exception thrown here ends the replace: paragraphs done before keep their replacements, the
/// paragraph of the match and those after it are left as they were.</summary>
public interface IReplacingCallback
{
    /// <summary>Called for each match, in the direction of the search, before anything of its paragraph is replaced.</summary>
    ReplaceAction Replacing(ReplacingArgs args);
}

/// <summary>One match about to be replaced.</summary>
public sealed class ReplacingArgs
{
    internal ReplacingArgs(Match match, Node matchNode, int matchOffset, string replacement)
    {
        Match = match;
        MatchNode = matchNode;
        MatchOffset = matchOffset;
        Replacement = replacement;
    }

    /// <summary>The match, with its groups.</summary>
    public Match Match { get; }

    /// <summary>The text matched.</summary>
    public string MatchString => Match.Value;

    /// <summary>The text of a group of the match by its number (0 is the whole match); empty when the group did not take part.</summary>
    public string GetGroup(int index)
    {
        if (index < 0 || index >= Match.Groups.Count)
            throw new ArgumentOutOfRangeException(nameof(index), index, $"The pattern has groups 0 to {Match.Groups.Count - 1}.");
        return Match.Groups[index].Value;
    }

    /// <summary>The run in which the match begins.</summary>
    public Node MatchNode { get; }

    /// <summary>Where the match begins in the text of <see cref="MatchNode"/>.</summary>
    public int MatchOffset { get; }

    /// <summary>The text that will replace the match; a callback may change it.</summary>
    public string Replacement { get; set; }
}
