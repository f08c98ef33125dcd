using System.Collections;
using Quorix.Folio.MailMerging;

namespace Quorix.Folio.LowCode;

/// <summary>The settings of a mail merge that a one-call merge passes on to the document's merge.</summary>
public sealed class MailMergeOptions
{
    public MailMergeCleanupOptions CleanupOptions { get; set; }

    /// <summary>Whether {{name}} tags in the text merge as merge fields do.</summary>
    public bool UseNonMergeFields { get; set; }

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

    public MailMergeDataSource(IEnumerable fieldNames, IEnumerable fieldValues)
    {
        ArgumentNullException.ThrowIfNull(fieldNames);
        ArgumentNullException.ThrowIfNull(fieldValues);
        record = new ArraySource(Names(fieldNames, nameof(fieldNames)), fieldValues.Cast<object?>().ToArray());
    }

    internal static string[] Names(IEnumerable names, string parameter) =>
        names.Cast<object?>().Select(n => n as string ?? throw new ArgumentException("Each name must be a string.", parameter)).ToArray();

    public string TableName => record.TableName;

    public bool MoveNext() => record.MoveNext();

    public bool GetValue(string fieldName, out object? fieldValue) => record.GetValue(fieldName, out fieldValue);

    public IMailMergeDataSource? GetChildDataSource(string tableName) => null;
}

/// <summary>Mail merge of a whole file in one call: the merged document is saved as the output.</summary>
public static class MailMerger
{
    public static void Execute(string inputFileName, string outputFileName, IEnumerable fieldNames, IEnumerable fieldValues) =>
        Execute(inputFileName, outputFileName, FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFileName)), fieldNames, fieldValues, null);

    public static void Execute(string inputFileName, string outputFileName, SaveFormat saveFormat, IEnumerable fieldNames, IEnumerable fieldValues, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputFileName, outputFileName, saveFormat, d => Merge(d, new MailMergeDataSource(fieldNames, fieldValues), null, mailMergeOptions));

    public static void Execute(Stream inputStream, Stream outputStream, SaveFormat saveFormat, IEnumerable fieldNames, IEnumerable fieldValues, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputStream, outputStream, saveFormat, d => Merge(d, new MailMergeDataSource(fieldNames, fieldValues), null, mailMergeOptions));

    public static void ExecuteWithRegions(string inputFileName, string outputFileName, IMailMergeDataSourceRoot dataSourceRoot) =>
        ExecuteWithRegions(inputFileName, outputFileName, FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFileName)), dataSourceRoot, null);

    public static void ExecuteWithRegions(string inputFileName, string outputFileName, SaveFormat saveFormat, IMailMergeDataSourceRoot dataSourceRoot, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputFileName, outputFileName, saveFormat, d => Merge(d, null, dataSourceRoot, mailMergeOptions));

    public static void ExecuteWithRegions(Stream inputStream, Stream outputStream, SaveFormat saveFormat, IMailMergeDataSourceRoot dataSourceRoot, MailMergeOptions? mailMergeOptions) =>
        Watermarker.Run(inputStream, outputStream, saveFormat, d => Merge(d, null, dataSourceRoot, mailMergeOptions));

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
