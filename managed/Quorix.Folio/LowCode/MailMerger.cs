using System.Collections;
using Quorix.Folio.MailMerging;

namespace Quorix.Folio.LowCode;

/// <summary>The settings of a mail merge that a one-call merge passes on to the document's merge.</summary>
public sealed class MailMergeOptions
{
    /// <summary>What the merge removes afterwards: empty paragraphs, unused fields or regions, and the like.</summary>
    public MailMergeCleanupOptions CleanupOptions { get; set; }

    /// <summary>Whether {{name}} tags in the text merge as merge fields do.</summary>
    public bool UseNonMergeFields { get; set; }

    /// <summary>Whether fields in headers and footers are merged too.</summary>
    public bool MergeHeadersFooters { get; set; } = true;

    internal void ApplyTo(MailMerge m)
    {
        m.CleanupOptions = CleanupOptions;
        m.UseNonMergeFields = UseNonMergeFields;
        m.MergeHeadersFooters = MergeHeadersFooters;
    }
}

/// <summary>One record given as names and values side by side. Any sequences serve, so that Python
/// lists do as well as arrays; they are read at once.</summary>
public sealed class MailMergeDataSource : IMailMergeDataSource
{
    private readonly ArraySource record;

    /// <summary>One record: each field name with the value at the same position.</summary>
    public MailMergeDataSource(IEnumerable fieldNames, IEnumerable fieldValues)
    {
        ArgumentNullException.ThrowIfNull(fieldNames);
        ArgumentNullException.ThrowIfNull(fieldValues);
        record = new ArraySource(Names(fieldNames, nameof(fieldNames)), fieldValues.Cast<object?>().ToArray());
    }

    internal static string[] Names(IEnumerable names, string parameter) =>
        names.Cast<object?>().Select(n => n as string ?? throw new ArgumentException("Each name must be a string.", parameter)).ToArray();

    /// <summary>The name of the table the record belongs to.</summary>
    public string TableName => record.TableName;

    /// <summary>Moves to the next record; false when there are no more.</summary>
    public bool MoveNext() => record.MoveNext();

    /// <summary>The value of that field; false when the record has no such field.</summary>
    public bool GetValue(string fieldName, out object? fieldValue) => record.GetValue(fieldName, out fieldValue);

    /// <summary>Always None: a single record has no nested tables.</summary>
    public IMailMergeDataSource? GetChildDataSource(string tableName) => null;
}

/// <summary>Mail merge of a whole file in one call: the merged document is saved as the output.</summary>
public static class MailMerger
{
    /// <summary>Merges one record into the template file and saves the result, in the format its extension names.</summary>
    public static void Execute(string inputFileName, string outputFileName, IEnumerable fieldNames, IEnumerable fieldValues) =>
        Execute(inputFileName, outputFileName, FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFileName)), fieldNames, fieldValues, null);

    /// <summary>Merges one record into the template file and saves the result in saveFormat.</summary>
    public static void Execute(string inputFileName, string outputFileName, SaveFormat saveFormat, IEnumerable fieldNames, IEnumerable fieldValues, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputFileName, outputFileName, saveFormat, d => Merge(d, new MailMergeDataSource(fieldNames, fieldValues), null, mailMergeOptions));

    /// <summary>Merges one record into the template read from inputStream and writes the result in saveFormat.</summary>
    public static void Execute(Stream inputStream, Stream outputStream, SaveFormat saveFormat, IEnumerable fieldNames, IEnumerable fieldValues, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputStream, outputStream, saveFormat, d => Merge(d, new MailMergeDataSource(fieldNames, fieldValues), null, mailMergeOptions));

    /// <summary>Merges tables of data into the template file's regions and saves the result.</summary>
    public static void ExecuteWithRegions(string inputFileName, string outputFileName, IMailMergeDataSourceRoot dataSourceRoot) =>
        ExecuteWithRegions(inputFileName, outputFileName, FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFileName)), dataSourceRoot, null);

    /// <summary>Merges tables of data into the template file's regions and saves the result in saveFormat.</summary>
    public static void ExecuteWithRegions(string inputFileName, string outputFileName, SaveFormat saveFormat, IMailMergeDataSourceRoot dataSourceRoot, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputFileName, outputFileName, saveFormat, d => Merge(d, null, dataSourceRoot, mailMergeOptions));

    /// <summary>Merges tables of data into the regions of the template read from inputStream and writes the result.</summary>
    public static void ExecuteWithRegions(Stream inputStream, Stream outputStream, SaveFormat saveFormat, IMailMergeDataSourceRoot dataSourceRoot, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputStream, outputStream, saveFormat, d => Merge(d, null, dataSourceRoot, mailMergeOptions));

    /// <summary>A mail merge to set up with inputs and outputs, then execute.</summary>
    public static Processor Create(MailMergerContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return Processor.EditOne("Mail merge", d =>
        {
            if (context.Simple == null && context.Regions == null)
                throw new InvalidOperationException("The mail merge has no data: set a simple or a regions data source on the context.");
            Merge(d, context.Simple, context.Regions, context.MailMergeOptions);
        });
    }

    private static void Merge(Document doc, IMailMergeDataSource? simple, IMailMergeDataSourceRoot? regions, MailMergeOptions? options)
    {
        options?.ApplyTo(doc.MailMerge);
        if (regions != null) doc.MailMerge.ExecuteWithRegions(regions);
        else doc.MailMerge.Execute(simple!);
    }
}
