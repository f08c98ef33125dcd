using System.Text.RegularExpressions;
using Quorix.Folio.Replacing;

namespace Quorix.Folio.LowCode;

/// <summary>Find and replace over a whole file in one call; returns how many matches were replaced.</summary>
public static class Replacer
{
    public static int Replace(string inputFile, string outputFile, string pattern, string replacement) =>
        Replace(inputFile, outputFile, pattern, replacement, new FindReplaceOptions());

    public static int Replace(string inputFile, string outputFile, string pattern, string replacement, FindReplaceOptions options) =>
        Run(inputFile, outputFile, d => d.Range.Replace(pattern, replacement, options));

    public static int ReplaceRegex(string inputFile, string outputFile, string pattern, string replacement) =>
        Run(inputFile, outputFile, d => d.Range.Replace(new Regex(pattern), replacement));

    private static int Run(string inputFile, string outputFile, Func<Document, int> replace)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        var doc = new Document(inputFile);
        int n = replace(doc);
        doc.Save(outputFile);
        return n;
    }
}
