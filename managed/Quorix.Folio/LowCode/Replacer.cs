using System.Text.RegularExpressions;
using Quorix.Folio.Replacing;

namespace Quorix.Folio.LowCode;

/// <summary>Find and replace over a whole file in one call; returns how many matches were replaced.</summary>
public static class Replacer
{
    /// <summary>Replaces every occurrence of pattern by replacement in inputFile and saves outputFile; returns how many.</summary>
    public static int Replace(string inputFile, string outputFile, string pattern, string replacement) =>
        Replace(inputFile, outputFile, pattern, replacement, new FindReplaceOptions());

    /// <summary>Replaces pattern by replacement in inputFile as options say and saves outputFile; returns how many.</summary>
    public static int Replace(string inputFile, string outputFile, string pattern, string replacement, FindReplaceOptions options) =>
        Run(inputFile, outputFile, d => d.Range.Replace(pattern, replacement, options));

    /// <summary>Replaces every match of a regular expression in inputFile and saves outputFile; returns how many.</summary>
    public static int ReplaceRegex(string inputFile, string outputFile, string pattern, string replacement) =>
        Run(inputFile, outputFile, d => d.Range.Replace(new Regex(pattern), replacement));

    /// <summary>The replacement is set on the context with <see cref="ReplacerContext.SetReplacement(string, string)"/>.</summary>
    public static Processor Create(ReplacerContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return Processor.EditOne("Replacement", d =>
        {
            if (context.Regex != null) d.Range.Replace(context.Regex, context.Replacement, context.FindReplaceOptions);
            else if (context.Pattern != null) d.Range.Replace(context.Pattern, context.Replacement, context.FindReplaceOptions);
            else throw new InvalidOperationException("Nothing to replace: call SetReplacement on the context first.");
        });
    }

    private static int Run(string inputFile, string outputFile, Func<Document, int> replace)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        var doc = new Document(inputFile);
        int n = replace(doc);
        doc.Save(outputFile);
        return n;
    }
}
