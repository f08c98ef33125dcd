using Quorix.Folio.Comparing;

namespace Quorix.Folio.LowCode;

/// <summary>Compares two files and saves the first with what turns it into the second as tracked changes.</summary>
public static class Comparer
{
    /// <summary>The changes are dated now.</summary>
    [LongRunning]
    public static void Compare(string v1, string v2, string outputFile, string author) =>
        Compare(v1, v2, outputFile, author, DateTime.UtcNow, new CompareOptions());

    /// <summary>Saves outputFile as v1 with its differences from v2 marked as tracked changes by author at dateTime.</summary>
    [LongRunning]
    public static void Compare(string v1, string v2, string outputFile, string author, DateTime dateTime) =>
        Compare(v1, v2, outputFile, author, dateTime, new CompareOptions());

    /// <summary>Saves outputFile as v1 with its differences from v2 marked as changes, compared as options say.</summary>
    [LongRunning]
    public static void Compare(string v1, string v2, string outputFile, string author, DateTime dateTime, CompareOptions compareOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        var original = new Document(v1);
        original.Compare(new Document(v2), author, dateTime, compareOptions);
        original.Save(outputFile);
    }

    /// <summary>A comparison to set up with inputs and outputs, then execute.</summary>
    public static Processor Create(ComparerContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return new Processor("Comparison", 2, 2, p =>
        {
            var original = p.Load(0);
            original.Compare(p.Load(1), context.Author, context.DateTime, context.CompareOptions);
            p.Save(original);
        });
    }
}
