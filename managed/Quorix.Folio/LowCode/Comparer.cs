using Quorix.Folio.Comparing;

namespace Quorix.Folio.LowCode;

/// <summary>Compares two files and saves the first with what turns it into the second as tracked changes.</summary>
public static class Comparer
{
    /// <summary>The changes are dated now.</summary>
    public static void Compare(string v1, string v2, string outputFile, string author) =>
        Compare(v1, v2, outputFile, author, DateTime.UtcNow, new CompareOptions());

    public static void Compare(string v1, string v2, string outputFile, string author, DateTime dateTime) =>
        Compare(v1, v2, outputFile, author, dateTime, new CompareOptions());

    public static void Compare(string v1, string v2, string outputFile, string author, DateTime dateTime, CompareOptions compareOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        var original = new Document(v1);
        original.Compare(new Document(v2), author, dateTime, compareOptions);
        original.Save(outputFile);
    }
}
