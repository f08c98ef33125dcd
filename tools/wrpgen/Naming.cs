using System.Globalization;
using System.Text;

namespace Quorix.WrpGen;

/// <summary>
/// Python names from managed names. Both styles split the managed name into the same words:
/// a word starts at a capital that follows a lower-case letter or a digit, and at the last
/// capital of a run of capitals that a lower-case letter follows ("HTMLDocument" is HTML,
/// Document); a run of capitals followed by a lone plural "s" stays one word ("IDs").
/// Underscores separate words. The styles differ on digits: member names keep a digit run
/// on the word before it ("ToUTF8String" is to_utf8_string), enumeration members make it a
/// word of its own ("Number10Envelope" is NUMBER_10_ENVELOPE).
/// </summary>
public static class Naming
{
    // Names Python cannot spell as an attribute or keyword argument get a trailing underscore.
    private static readonly HashSet<string> PythonKeywords = new(StringComparer.Ordinal)
    {
        "False", "None", "True", "and", "as", "assert", "async", "await", "break", "class",
        "continue", "def", "del", "elif", "else", "except", "finally", "for", "from", "global",
        "if", "import", "in", "is", "lambda", "nonlocal", "not", "or", "pass", "raise", "return",
        "try", "while", "with", "yield",
    };

    /// <summary>lower_snake_case for methods, properties, static properties and parameters.</summary>
    public static string Snake(string managedName)
    {
        string joined = Join(Words(managedName, digitsAreWords: false), upper: false, managedName);
        return PythonKeywords.Contains(joined) ? joined + "_" : joined;
    }

    /// <summary>UPPER_SNAKE_CASE for enumeration members and static fields.</summary>
    public static string UpperSnake(string managedName) =>
        Join(Words(managedName, digitsAreWords: true), upper: true, managedName);

    /// <summary>The words of a managed identifier, in order, with their original case.</summary>
    public static List<string> Words(string name, bool digitsAreWords)
    {
        var words = new List<string>();
        var word = new StringBuilder();
        for (int i = 0; i < name.Length; i++)
        {
            char c = name[i];
            if (!char.IsLetterOrDigit(c))
            {
                Flush(words, word);
                continue;
            }
            if (word.Length > 0 && StartsWord(name, i, digitsAreWords))
                Flush(words, word);
            word.Append(c);
        }
        Flush(words, word);
        return words;
    }

    private static bool StartsWord(string name, int i, bool digitsAreWords)
    {
        char c = name[i], prev = name[i - 1];
        if (char.IsUpper(c))
        {
            if (char.IsLower(prev) || char.IsDigit(prev))
                return true;
            if (char.IsUpper(prev) && i + 1 < name.Length && char.IsLower(name[i + 1]))
                return !IsPluralOfRun(name, i);
            return false;
        }
        if (char.IsDigit(c))
            return digitsAreWords && !char.IsDigit(prev);
        // lower-case letter (or another letter without case)
        return digitsAreWords && char.IsDigit(prev);
    }

    // "IDs", "URLs": the capital at i ends a run of capitals and is followed by one "s" that ends the word.
    private static bool IsPluralOfRun(string name, int i) =>
        name[i + 1] == 's' && (i + 2 == name.Length || !char.IsLower(name[i + 2]));

    private static void Flush(List<string> words, StringBuilder word)
    {
        if (word.Length == 0)
            return;
        words.Add(word.ToString());
        word.Clear();
    }

    private static string Join(List<string> words, bool upper, string fallback)
    {
        if (words.Count == 0)
            return fallback;
        var text = string.Join("_", words);
        return upper ? text.ToUpperInvariant() : text.ToLowerInvariant();
    }
}
