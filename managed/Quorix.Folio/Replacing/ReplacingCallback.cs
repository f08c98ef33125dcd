using System.Text.RegularExpressions;

namespace Quorix.Folio.Replacing;

public enum ReplaceAction
{
    Replace = 0,
    Skip = 1,
    Stop = 2,
}

/// <summary>Decides each replacement of a find and replace.</summary>
public interface IReplacingCallback
{
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

    public Match Match { get; }

    /// <summary>The run in which the match begins.</summary>
    public Node MatchNode { get; }

    /// <summary>Where the match begins in the text of <see cref="MatchNode"/>.</summary>
    public int MatchOffset { get; }

    /// <summary>The text that will replace the match; a callback may change it.</summary>
    public string Replacement { get; set; }
}
