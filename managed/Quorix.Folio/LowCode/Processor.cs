using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio.LowCode;

/// <summary>What every one-call operation is set up with; each operation's context adds its own settings.</summary>
public class ProcessorContext
{
    private protected ProcessorContext() { }
}

/// <summary>One operation set up step by step: its inputs, its outputs, then <see cref="Execute"/>.
/// Made by the operations' <c>Create</c> methods, e.g. <c>Converter.Create(new ConverterContext())</c>.</summary>
public sealed class Processor
{
    private readonly List<(object Source, LoadOptions? Options)> inputs = new();
    private readonly List<(object Target, SaveOptions? Options)> outputs = new();
    private readonly string operation;
    private readonly int minInputs, maxInputs;
    private readonly Action<Processor> run;

    internal Processor(string operation, int minInputs, int maxInputs, Action<Processor> run)
    {
        this.operation = operation;
        this.minInputs = minInputs;
        this.maxInputs = maxInputs;
        this.run = run;
    }

    /// <summary>Adds the document of that file as an input, its format told from its content.</summary>
    public Processor FromFile(string input) => FromFile(input, null);

    /// <summary>Adds the document of that file as an input, read as loadOptions say.</summary>
    public Processor FromFile(string input, LoadOptions? loadOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(input);
        inputs.Add((input, loadOptions));
        return this;
    }

    /// <summary>Adds the document read from that stream as an input.</summary>
    public Processor FromStream(Stream input) => FromStream(input, null);

    /// <summary>The stream is read now: a stream lent for this call only (a Python file) is gone by <see cref="Execute"/>.</summary>
    public Processor FromStream(Stream input, LoadOptions? loadOptions)
    {
        ArgumentNullException.ThrowIfNull(input);
        var copy = new MemoryStream();
        input.CopyTo(copy);
        copy.Position = 0;
        inputs.Add((copy, loadOptions));
        return this;
    }

    /// <summary>The format follows the file's extension.</summary>
    public Processor ToFile(string output)
    {
        ArgumentException.ThrowIfNullOrEmpty(output);
        outputs.Add((output, null));
        return this;
    }

    /// <summary>Adds that file as an output, written in saveFormat.</summary>
    public Processor ToFile(string output, SaveFormat saveFormat) => ToFile(output, SaveOptions.CreateSaveOptions(saveFormat));

    /// <summary>Adds that file as an output, written as saveOptions say.</summary>
    public Processor ToFile(string output, SaveOptions saveOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(output);
        ArgumentNullException.ThrowIfNull(saveOptions);
        outputs.Add((output, saveOptions));
        return this;
    }

    /// <summary>Adds that stream as an output, written in saveFormat.</summary>
    public Processor ToStream(Stream output, SaveFormat saveFormat) => ToStream(output, SaveOptions.CreateSaveOptions(saveFormat));

    /// <summary>Adds that stream as an output, written as saveOptions say.</summary>
    public Processor ToStream(Stream output, SaveOptions saveOptions)
    {
        ArgumentNullException.ThrowIfNull(output);
        ArgumentNullException.ThrowIfNull(saveOptions);
        outputs.Add((output, saveOptions));
        return this;
    }

    /// <summary>Loads the inputs, does the operation and writes every output.</summary>
    public void Execute()
    {
        if (inputs.Count < minInputs || inputs.Count > maxInputs)
            throw new InvalidOperationException(minInputs == maxInputs
                ? $"{operation} takes {Count(minInputs)}; {Count(inputs.Count)} given."
                : $"{operation} takes at least {Count(minInputs)}; {Count(inputs.Count)} given.");
        if (outputs.Count == 0) throw new InvalidOperationException($"{operation} has no output: give one with ToFile or ToStream.");
        if (outputs.Any(o => o.Target is Stream { CanWrite: false }))
            throw new InvalidOperationException("An output stream can no longer be written. A stream lent for one call, as a Python file is, " +
                                                "is closed when ToStream returns: give a file name with ToFile, or a stream of the engine's own.");
        run(this);
    }

    private static string Count(int n) => n == 1 ? "one input" : $"{n} inputs";

    internal int InputCount => inputs.Count;

    internal Document Load(int index) => inputs[index].Source switch
    {
        string file => new Document(file, inputs[index].Options),
        Stream stream => new Document(stream, inputs[index].Options),
        _ => throw new InvalidOperationException("An input is neither a file nor a stream."),
    };

    internal IEnumerable<(object Target, SaveOptions? Options)> Outputs => outputs;

    /// <summary>Writes the document to every output.</summary>
    internal void Save(Document doc)
    {
        foreach (var (target, options) in outputs)
        {
            if (target is string file)
            {
                if (options != null) doc.Save(file, options);
                else doc.Save(file);
            }
            else doc.Save((Stream)target, options!);
        }
    }

    /// <summary>Loads the one input, changes it and writes it out.</summary>
    internal static Processor EditOne(string operation, Action<Document> edit) =>
        new(operation, 1, 1, p =>
        {
            var doc = p.Load(0);
            edit(doc);
            p.Save(doc);
        });
}

/// <summary>Settings of a conversion from one format to another.</summary>
public sealed class ConverterContext : ProcessorContext
{
}

/// <summary>Settings of joining several documents into one.</summary>
public sealed class MergerContext : ProcessorContext
{
    /// <summary>Whether each joined document keeps its own formatting or takes the first one's styles.</summary>
    public MergeFormatMode MergeFormatMode { get; set; } = MergeFormatMode.KeepSourceFormatting;
}

/// <summary>Settings of cutting a document into several.</summary>
public sealed class SplitterContext : ProcessorContext
{
    private SplitOptions splitOptions = new();

    /// <summary>Where the document is cut.</summary>
    public SplitOptions SplitOptions
    {
        get => splitOptions;
        set => splitOptions = value ?? throw new ArgumentNullException(nameof(value));
    }
}

/// <summary>Settings of comparing two documents, the differences written as tracked changes.</summary>
public sealed class ComparerContext : ProcessorContext
{
    private Comparing.CompareOptions compareOptions = new();

    /// <summary>The author the tracked changes are credited to.</summary>
    public string Author { get; set; } = "";

    /// <summary>The date the tracked changes carry.</summary>
    public DateTime DateTime { get; set; } = DateTime.UtcNow;

    /// <summary>What the comparison looks at and how finely.</summary>
    public Comparing.CompareOptions CompareOptions
    {
        get => compareOptions;
        set => compareOptions = value ?? throw new ArgumentNullException(nameof(value));
    }
}

/// <summary>Settings of finding and replacing text.</summary>
public sealed class ReplacerContext : ProcessorContext
{
    private Replacing.FindReplaceOptions findReplaceOptions = new();

    internal string? Pattern;
    internal System.Text.RegularExpressions.Regex? Regex;
    internal string Replacement = "";

    /// <summary>How text is matched: case, whole words, and the like.</summary>
    public Replacing.FindReplaceOptions FindReplaceOptions
    {
        get => findReplaceOptions;
        set => findReplaceOptions = value ?? throw new ArgumentNullException(nameof(value));
    }

    /// <summary>Replaces every occurrence of that text with replacement.</summary>
    public void SetReplacement(string pattern, string replacement)
    {
        ArgumentException.ThrowIfNullOrEmpty(pattern);
        Pattern = pattern;
        Regex = null;
        Replacement = replacement ?? "";
    }

    /// <summary>Replaces every match of that regular expression with replacement, $1 and the like naming groups.</summary>
    public void SetReplacement(System.Text.RegularExpressions.Regex pattern, string replacement)
    {
        ArgumentNullException.ThrowIfNull(pattern);
        Regex = pattern;
        Pattern = null;
        Replacement = replacement ?? "";
    }
}

/// <summary>Settings of putting a text or picture watermark behind the pages.</summary>
public sealed class WatermarkerContext : ProcessorContext
{
    private TextWatermarkOptions textOptions = new();
    private ImageWatermarkOptions imageOptions = new();

    /// <summary>The text to put behind the pages; set this or <see cref="ImageWatermark"/>.</summary>
    public string? TextWatermark { get; set; }

    /// <summary>The picture to put behind the pages, as its file's bytes; set this or text_watermark.</summary>
    public byte[]? ImageWatermark { get; set; }

    /// <summary>How a text watermark is drawn: font, size, colour, layout.</summary>
    public TextWatermarkOptions TextWatermarkOptions
    {
        get => textOptions;
        set => textOptions = value ?? throw new ArgumentNullException(nameof(value));
    }

    /// <summary>How a picture watermark is sized.</summary>
    public ImageWatermarkOptions ImageWatermarkOptions
    {
        get => imageOptions;
        set => imageOptions = value ?? throw new ArgumentNullException(nameof(value));
    }
}

/// <summary>Settings of a mail merge: the data and the merge's options.</summary>
public sealed class MailMergerContext : ProcessorContext
{
    private MailMergeOptions options = new();

    internal MailMerging.IMailMergeDataSource? Simple;
    internal MailMerging.IMailMergeDataSourceRoot? Regions;

    /// <summary>The merge's options: clean-up, headers and footers.</summary>
    public MailMergeOptions MailMergeOptions
    {
        get => options;
        set => options = value ?? throw new ArgumentNullException(nameof(value));
    }

    /// <summary>One record for the fields outside regions.</summary>
    public void SetSimpleDataSource(System.Collections.IEnumerable fieldNames, System.Collections.IEnumerable fieldValues) => SetSimpleDataSource(new MailMergeDataSource(fieldNames, fieldValues));

    /// <summary>The records to merge into the fields outside regions.</summary>
    public void SetSimpleDataSource(MailMerging.IMailMergeDataSource dataSource)
    {
        Simple = dataSource ?? throw new ArgumentNullException(nameof(dataSource));
        Regions = null;
    }

    /// <summary>Tables by name for the document's regions.</summary>
    public void SetRegionsDataSource(MailMerging.IMailMergeDataSourceRoot dataSourceRoot)
    {
        Regions = dataSourceRoot ?? throw new ArgumentNullException(nameof(dataSourceRoot));
        Simple = null;
    }
}

/// <summary>Settings of filling a report template with data.</summary>
public sealed class ReportBuilderContext : ProcessorContext
{
    private ReportBuilderOptions options = new();

    internal readonly List<object> DataSources = new();
    internal readonly List<string?> DataSourceNames = new();

    /// <summary>How the template is filled.</summary>
    public ReportBuilderOptions ReportBuilderOptions
    {
        get => options;
        set => options = value ?? throw new ArgumentNullException(nameof(value));
    }

    /// <summary>Data whose members the template names directly.</summary>
    public void AddDataSource(object dataSource) => Add(dataSource, null);

    /// <summary>Data the template names as <paramref name="name"/>.</summary>
    public void AddDataSource(object dataSource, string name)
    {
        ArgumentException.ThrowIfNullOrEmpty(name);
        Add(dataSource, name);
    }

    private void Add(object dataSource, string? name)
    {
        ArgumentNullException.ThrowIfNull(dataSource);
        DataSources.Add(dataSource);
        DataSourceNames.Add(name);
    }
}

/// <summary>Settings of signing a document, which the engine cannot do yet.</summary>
public sealed class SignerContext : ProcessorContext
{
    /// <summary>Refused: signing documents is not supported, so no such context can be made.</summary>
    public SignerContext() =>
        throw new NotSupportedException("Signing documents is not supported: the engine has no digital signatures.");
}
