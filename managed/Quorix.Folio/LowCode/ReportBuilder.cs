using Quorix.Folio.Reporting;

namespace Quorix.Folio.LowCode;

/// <summary>How a report template is filled with data.</summary>
public sealed class ReportBuilderOptions
{
    /// <summary>Switches of the build, such as removing paragraphs left empty or allowing missing members.</summary>
    public ReportBuildOptions Options { get; set; } = ReportBuildOptions.None;
}

/// <summary>Fills a report template file with data in one call and saves the result.</summary>
public static class ReportBuilder
{
    /// <summary>Fills the template file with data, whose members the template names directly, and saves the report.</summary>
    public static void BuildReport(string inputFileName, string outputFileName, object data, ReportBuilderOptions? reportBuilderOptions) =>
        Watermarker.Run(inputFileName, outputFileName, null, d => Build(d, new[] { data }, new string?[] { null }, reportBuilderOptions));

    /// <summary>Fills the template file with data, which the template names as dataSourceName, and saves the report.</summary>
    public static void BuildReport(string inputFileName, string outputFileName, object data, string dataSourceName, ReportBuilderOptions? reportBuilderOptions) =>
        Watermarker.Run(inputFileName, outputFileName, null, d => Build(d, new[] { data }, new string?[] { dataSourceName }, reportBuilderOptions));

    /// <summary>Several data sources, each under its name; any sequences serve and are read at once.</summary>
    public static void BuildReport(string inputFileName, string outputFileName, System.Collections.IEnumerable data, System.Collections.IEnumerable dataSourceNames, ReportBuilderOptions? reportBuilderOptions)
    {
        ArgumentNullException.ThrowIfNull(data);
        ArgumentNullException.ThrowIfNull(dataSourceNames);
        var sources = data.Cast<object>().ToArray();
        var names = MailMergeDataSource.Names(dataSourceNames, nameof(dataSourceNames));
        Watermarker.Run(inputFileName, outputFileName, null, d => Build(d, sources, names, reportBuilderOptions));
    }

    /// <summary>Fills the template read from inputStream with data named dataSourceName and writes the report in saveFormat.</summary>
    public static void BuildReport(Stream inputStream, Stream outputStream, SaveFormat saveFormat, object data, string dataSourceName, ReportBuilderOptions? reportBuilderOptions) =>
        Watermarker.Run(inputStream, outputStream, saveFormat, d => Build(d, new[] { data }, new string?[] { dataSourceName }, reportBuilderOptions));

    /// <summary>A report build to set up with inputs and outputs, then execute.</summary>
    public static Processor Create(ReportBuilderContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return Processor.EditOne("Report building", d =>
        {
            if (context.DataSources.Count == 0) throw new InvalidOperationException("The report has no data: add a data source to the context.");
            Build(d, context.DataSources.ToArray(), context.DataSourceNames.ToArray(), context.ReportBuilderOptions);
        });
    }

    private static void Build(Document doc, object[] data, string?[] names, ReportBuilderOptions? options)
    {
        ArgumentNullException.ThrowIfNull(data);
        ArgumentNullException.ThrowIfNull(names);
        new ReportingEngine { Options = options?.Options ?? ReportBuildOptions.None }.BuildReport(doc, data, names);
    }
}
