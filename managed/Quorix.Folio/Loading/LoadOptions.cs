namespace Quorix.Folio.Loading;

public class LoadOptions
{
    public LoadOptions() { }

    public LoadOptions(string password) { Password = password; }

    public LoadOptions(LoadFormat loadFormat, string password, string baseUri)
    {
        LoadFormat = loadFormat;
        Password = password;
        BaseUri = baseUri;
    }

    public string? Password { get; set; }

    public LoadFormat LoadFormat { get; set; } = LoadFormat.Auto;

    public string? BaseUri { get; set; }

    /// <summary>Largest decompressed part accepted, in bytes; guards against archive bombs.</summary>
    public long MaxPartSize { get; set; } = 256L << 20;

    /// <summary>Largest total of decompressed parts accepted, in bytes.</summary>
    public long MaxTotalSize { get; set; } = 1L << 30;
}
