namespace Quorix.Folio;

/// <summary>What kind of loss or surprise a warning reports. The category members cover every member of
/// their group, so a callback can test <c>(type &amp; WarningType.DataLossCategory) != 0</c>.</summary>
[Flags]
public enum WarningType
{
    /// <summary>Some content was left out: the output lacks text, pictures or objects the input had.</summary>
    DataLoss = 0x1,
    /// <summary>Every kind of data loss.</summary>
    DataLossCategory = 0xFF,
    /// <summary>The document will look clearly different from the original.</summary>
    MajorFormattingLoss = 0x100,
    /// <summary>Every kind of major formatting loss.</summary>
    MajorFormattingLossCategory = 0xFF00,
    /// <summary>The document may look slightly different from the original.</summary>
    MinorFormattingLoss = 0x10000,
    /// <summary>A font was not available and another one stood in for it.</summary>
    FontSubstitution = 0x20000,
    /// <summary>A font could not be embedded in the output.</summary>
    FontEmbedding = 0x40000,
    /// <summary>Every kind of minor formatting loss, font substitution included.</summary>
    MinorFormattingLossCategory = 0xFF0000,
    /// <summary>The input held something the engine did not expect, such as a part renamed to be safe.</summary>
    UnexpectedContent = 0x1000000,
    /// <summary>Every kind of unexpected content.</summary>
    UnexpectedContentCategory = 0xF000000,
    /// <summary>Advice about a possible problem, with nothing lost.</summary>
    Hint = 0x10000000,
}

/// <summary>Which part of the engine reported a warning.</summary>
public enum WarningSource
{
    /// <summary>Not attributed to one reader or writer.</summary>
    Unknown = 0,
    /// <summary>Page layout, which also serves PDF, SVG and image output.</summary>
    Layout = 1,
    /// <summary>The DOCX and flat OPC reader or writer.</summary>
    Docx = 2,
    /// <summary>The HTML, MHTML and EPUB reader or writer.</summary>
    Html = 3,
    /// <summary>The Markdown reader or writer.</summary>
    Markdown = 4,
    /// <summary>The plain-text reader or writer.</summary>
    Text = 5,
    /// <summary>The RTF reader or writer.</summary>
    Rtf = 6,
    /// <summary>The ODT reader or writer.</summary>
    Odt = 7,
    /// <summary>The PDF writer.</summary>
    Pdf = 8,
    /// <summary>The spreadsheet writer.</summary>
    Xlsx = 9,
    /// <summary>Font selection and substitution.</summary>
    Font = 10,
}

/// <summary>One thing the engine noticed and worked around while loading, laying out or saving a document.</summary>
public class WarningInfo
{
    internal WarningInfo(WarningType warningType, WarningSource source, string description)
    {
        WarningType = warningType;
        Source = source;
        Description = description;
    }

    /// <summary>The kind of loss or surprise.</summary>
    public WarningType WarningType { get; }

    /// <summary>The reader, writer or stage that reported it.</summary>
    public WarningSource Source { get; }

    /// <summary>What happened, in words meant for a person.</summary>
    public string Description { get; }

    /// <summary>The description.</summary>
    public override string ToString() => Description;
}

/// <summary>Why a font other than the requested one was used.</summary>
public enum FontSubstitutionReason
{
    /// <summary>The font substitution table named a replacement.</summary>
    TableSubstitutionRule = 0,
    /// <summary>The system's font configuration named a replacement.</summary>
    FontConfigSubstitutionRule = 1,
    /// <summary>The default font of the font settings was used.</summary>
    DefaultFontSetting = 2,
    /// <summary>A font of the fallback settings was used.</summary>
    FallbackSetting = 3,
    /// <summary>No rule applied; the first font available was used.</summary>
    FirstAvailableFont = 4,
}

/// <summary>A warning that a font was replaced, with the names of both fonts.</summary>
public sealed class FontSubstitutionWarningInfo : WarningInfo
{
    internal FontSubstitutionWarningInfo(string requestedFamily, bool bold, bool italic, string resolvedFamily, FontSubstitutionReason reason)
        : base(WarningType.FontSubstitution, WarningSource.Layout,
            $"Font '{requestedFamily}' has not been found. Using '{resolvedFamily}' font instead. Reason: {reason}.")
    {
        RequestedFamily = requestedFamily;
        RequestedBold = bold;
        RequestedItalic = italic;
        ResolvedFamily = resolvedFamily;
        Reason = reason;
    }

    /// <summary>The family the text asked for.</summary>
    public string RequestedFamily { get; }

    /// <summary>Whether the text asked for bold.</summary>
    public bool RequestedBold { get; }

    /// <summary>Whether the text asked for italic.</summary>
    public bool RequestedItalic { get; }

    /// <summary>The family used instead.</summary>
    public string ResolvedFamily { get; }

    /// <summary>The rule that chose the replacement.</summary>
    public FontSubstitutionReason Reason { get; }
}

/// <summary>Receives each warning as the engine reports it. Set on <see cref="Loading.LoadOptions.WarningCallback"/>
/// for warnings of a load, and on <see cref="DocumentBase.WarningCallback"/> for those of layout and saving.
/// An exception thrown here ends the load or save and reaches its caller.</summary>
public interface IWarningCallback
{
    /// <summary>Called once for each warning, when it occurs.</summary>
    void Warning(WarningInfo info);
}

/// <summary>A warning callback that keeps every warning it receives, in order.</summary>
public sealed class WarningInfoCollection : IWarningCallback, IEnumerable<WarningInfo>
{
    private readonly List<WarningInfo> items = new();

    /// <summary>An empty collection.</summary>
    public WarningInfoCollection() { }

    /// <summary>How many warnings were received.</summary>
    public int Count => items.Count;

    /// <summary>A warning by its position; negative positions count from the end.</summary>
    public WarningInfo this[int index]
    {
        get
        {
            int i = index < 0 ? items.Count + index : index;
            if (i < 0 || i >= items.Count)
                throw new ArgumentOutOfRangeException(nameof(index), $"Index {index} is out of range for {items.Count} warnings.");
            return items[i];
        }
    }

    /// <summary>Adds the warning to the collection.</summary>
    public void Warning(WarningInfo info)
    {
        ArgumentNullException.ThrowIfNull(info);
        items.Add(info);
    }

    /// <summary>Forgets every warning received so far.</summary>
    public void Clear() => items.Clear();

    /// <summary>The warnings in the order they were received.</summary>
    public IEnumerator<WarningInfo> GetEnumerator() => items.GetEnumerator();

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>Warnings of one document: kept on it until a caller asks, and passed on, as they occur,
/// to the callback of the load (while loading) or of the document (otherwise).</summary>
internal sealed class WarningLog
{
    private readonly DocumentBase owner;
    private readonly List<WarningInfo> items = new();

    public WarningLog(DocumentBase owner) { this.owner = owner; }

    /// <summary>The callback of the load that filled the document; used while <see cref="Loading"/>.</summary>
    internal IWarningCallback? LoadCallback;

    /// <summary>Set while a reader, or the deferred build of what it read, is running.</summary>
    internal bool Loading;

    public IReadOnlyList<string> Messages => items.ConvertAll(i => i.Description);

    public void Add(WarningType type, WarningSource source, string description) => Add(new WarningInfo(type, source, description));

    public void Add(WarningInfo info)
    {
        items.Add(info);
        try
        {
            (Loading ? LoadCallback : owner.WarningCallback)?.Warning(info);
        }
        catch (Exception e) when (UserCode.Tag(e)) { }
    }
}
