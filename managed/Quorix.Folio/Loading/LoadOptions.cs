namespace Quorix.Folio.Loading;

/// <summary>How a document is read: its format, password and callbacks.</summary>
public class LoadOptions
{
    /// <summary>Options that read any format the engine tells from the content.</summary>
    public LoadOptions() { }

    /// <summary>Options that open an encrypted document with password.</summary>
    public LoadOptions(string password) { Password = password; }

    /// <summary>Options that read loadFormat, opening it with password when encrypted.</summary>
    public LoadOptions(LoadFormat loadFormat, string password)
    {
        LoadFormat = loadFormat;
        Password = password;
    }

    /// <summary>The password of an encrypted document; null for none.</summary>
    public string? Password { get; set; }

    /// <summary>Auto detects the format from the content; any other value is loaded as that format.</summary>
    public LoadFormat LoadFormat { get; set; } = LoadFormat.Auto;

    /// <summary>Folder or address that relative references (pictures, style sheets) are resolved against;
    /// the loaded file's folder when unset.</summary>
    public string? BaseUri { get; set; }

    /// <summary>Encoding of text formats that do not declare one; detected from the content when unset.</summary>
    public System.Text.Encoding? Encoding { get; set; }

    /// <summary>Largest decompressed part accepted, in bytes; guards against archive bombs.</summary>
    [NonNegative]
    public long MaxPartSize
    {
        get => maxPartSize;
        set => maxPartSize = value >= 0 ? value : throw new ArgumentOutOfRangeException(nameof(value), value, "a size limit may not be negative");
    }

    /// <summary>Largest total of decompressed parts accepted, in bytes.</summary>
    [NonNegative]
    public long MaxTotalSize
    {
        get => maxTotalSize;
        set => maxTotalSize = value >= 0 ? value : throw new ArgumentOutOfRangeException(nameof(value), value, "a size limit may not be negative");
    }

    /// <summary>Receives the warnings of the load (content left out or changed); none when null.</summary>
    public IWarningCallback? WarningCallback { get; set; }

    /// <summary>Decides how external resources (pictures, style sheets) are obtained; when null, each is
    /// read from its location if that is a local file or a data URI.</summary>
    public IResourceLoadingCallback? ResourceLoadingCallback { get; set; }

    /// <summary>Told how the load progresses; none when null.</summary>
    public IDocumentLoadingCallback? ProgressCallback { get; set; }

    private long maxPartSize = 256L << 20;
    private long maxTotalSize = 1L << 30;

    internal LoadOptions Copy() => (LoadOptions)MemberwiseClone();
}
