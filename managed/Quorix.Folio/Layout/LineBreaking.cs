namespace Quorix.Folio.Layout;

/// <summary>Where a line may end, after the rules of UAX #14 that matter for running text: after
/// spaces and zero-width spaces, after hyphens and dashes between letters, and on either side of
/// ideographs and kana; never before closing punctuation. Hard breaks are handled by the caller.</summary>
internal static class LineBreaking
{
    public static bool IsSpace(char c) => c == ' ' || c == '\u3000' || c == '\u2002' || c == '\u2003';

    /// <summary>Whether a line may end after <c>text[i]</c>.</summary>
    public static bool BreakAfter(string text, int i)
    {
        if (i + 1 >= text.Length) return true;
        char c = text[i], next = text[i + 1];
        if (IsSpace(next) || IsClosing(next)) return false;
        if (IsSpace(c) || c == '\u200B' || c == '\t') return true;
        if ((c == '-' || c == '\u2010' || c == '\u2013' || c == '\u2014') && i > 0 && char.IsLetterOrDigit(text[i - 1]) && !char.IsDigit(next))
            return true;
        if (c == '\u00AD') return true;
        return (IsIdeographic(c) && !IsOpening(c)) || (IsIdeographic(next) && !IsClosing(next));
    }

    private static bool IsClosing(char c) => c is ')' or ']' or '}' or '!' or '?' or ',' or '.' or ':' or ';' or '\u3001' or '\u3002' or '\uFF09' or '\u300D' or '\uFF0C' or '\uFF01' or '\uFF1F';

    private static bool IsOpening(char c) => c is '(' or '[' or '{' or '\u300C' or '\uFF08';

    private static bool IsIdeographic(char c) => c is (>= '\u2E80' and <= '\u9FFF') or (>= '\uF900' and <= '\uFAFF') or (>= '\uFF00' and <= '\uFFEF');
}
