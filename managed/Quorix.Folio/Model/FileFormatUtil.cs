using Quorix.Folio.Formats;
using Quorix.Folio.Package;

namespace Quorix.Folio;

/// <summary>What detection found out about a file: its format and whether it is encrypted.</summary>
public sealed class FileFormatInfo
{
    internal FileFormatInfo(LoadFormat loadFormat, bool isEncrypted)
    {
        LoadFormat = loadFormat;
        IsEncrypted = isEncrypted;
    }

    /// <summary>The file's format; Unknown when it is none the engine reads.</summary>
    public LoadFormat LoadFormat { get; }

    /// <summary>Whether the file is encrypted and needs a password.</summary>
    public bool IsEncrypted { get; }
}

/// <summary>Recognises formats from content and maps between formats and file extensions.</summary>
public static class FileFormatUtil
{
    /// <summary>Tells a file's format from its content, without loading it.</summary>
    public static FileFormatInfo DetectFileFormat(string fileName)
    {
        using var fs = new FileStream(fileName, FileMode.Open, FileAccess.Read, FileShare.Read);
        return DetectFileFormat(fs);
    }

    /// <summary>Tells the format of a stream's content from its first bytes, without loading it.</summary>
    public static FileFormatInfo DetectFileFormat(Stream stream)
    {
        ArgumentNullException.ThrowIfNull(stream);
        var kind = FormatSniffer.Sniff(stream);
        return kind switch
        {
            SniffedKind.Docx => new FileFormatInfo(FormatDetection.IsOdt(stream) ? LoadFormat.Odt : LoadFormat.Docx, false),
            SniffedKind.EncryptedOoxml => new FileFormatInfo(LoadFormat.Docx, true),
            SniffedKind.Text => new FileFormatInfo(FormatDetection.OfText(stream, null), false),
            _ => new FileFormatInfo(LoadFormat.Unknown, false),
        };
    }

    /// <summary>The format a document in the stream is loaded as; refuses what no reader could load.</summary>
    internal static LoadFormat FormatToLoad(Stream stream, string? fileName = null) => FormatSniffer.Sniff(stream) switch
    {
        SniffedKind.Docx => FormatDetection.IsOdt(stream) ? LoadFormat.Odt : LoadFormat.Docx,
        SniffedKind.EncryptedOoxml => LoadFormat.Docx,
        SniffedKind.Text => FormatDetection.OfText(stream, fileName),
        SniffedKind.Empty => FormatDetection.ByExtension(fileName) ?? throw new FileCorruptedException("The file is empty."),
        SniffedKind.LegacyCompound => throw new UnsupportedFileFormatException("The file is a legacy binary word-processing document (DOC); loading that format is not supported."),
        _ => throw new UnsupportedFileFormatException("The file's format is not recognised: it is not a document format this library reads."),
    };

    /// <summary>The save format a file extension such as ".md" names.</summary>
    public static SaveFormat ExtensionToSaveFormat(string extension)
    {
        var e = (extension ?? "").TrimStart('.').ToLowerInvariant();
        return e switch
        {
            "docx" or "docm" or "dotx" => SaveFormat.Docx,
            "txt" or "text" => SaveFormat.Text,
            "md" or "markdown" => SaveFormat.Markdown,
            "html" or "htm" or "xhtml" => SaveFormat.Html,
            "mht" or "mhtml" => SaveFormat.Mhtml,
            "epub" => SaveFormat.Epub,
            "rtf" => SaveFormat.Rtf,
            "xml" => SaveFormat.FlatOpc,
            "xlsx" => SaveFormat.Xlsx,
            "odt" => SaveFormat.Odt,
            "pdf" => SaveFormat.Pdf,
            "svg" => SaveFormat.Svg,
            "png" => SaveFormat.Png,
            "jpg" or "jpeg" => SaveFormat.Jpeg,
            "bmp" => SaveFormat.Bmp,
            "tif" or "tiff" => SaveFormat.Tiff,
            "xps" => throw new UnsupportedFileFormatException("Saving as XPS is not supported: use .pdf for fixed pages."),
            _ => throw new UnsupportedFileFormatException($"Cannot save to a file with the extension '{extension}': use .docx, .html, .mht, .epub, .rtf, .odt, .xml (flat OPC), .xlsx, .txt, .md, .pdf, .svg, .png, .jpg, .bmp or .tif, or give the format."),
        };
    }

    /// <summary>The usual file extension of a save format, with its dot.</summary>
    public static string SaveFormatToExtension(SaveFormat saveFormat) => saveFormat switch
    {
        SaveFormat.Docx => ".docx",
        SaveFormat.Text => ".txt",
        SaveFormat.Markdown => ".md",
        SaveFormat.Html => ".html",
        SaveFormat.Mhtml => ".mht",
        SaveFormat.Epub => ".epub",
        SaveFormat.Rtf => ".rtf",
        SaveFormat.FlatOpc or SaveFormat.WordML => ".xml",
        SaveFormat.Xlsx => ".xlsx",
        SaveFormat.Odt => ".odt",
        SaveFormat.Pdf => ".pdf",
        SaveFormat.Svg => ".svg",
        SaveFormat.Png => ".png",
        SaveFormat.Jpeg => ".jpg",
        SaveFormat.Bmp => ".bmp",
        SaveFormat.Tiff => ".tif",
        _ => throw new ArgumentException($"{saveFormat} has no file extension.", nameof(saveFormat)),
    };

    /// <summary>The save format that writes what a load format reads.</summary>
    public static SaveFormat LoadFormatToSaveFormat(LoadFormat loadFormat) => loadFormat switch
    {
        LoadFormat.Docx => SaveFormat.Docx,
        LoadFormat.Text => SaveFormat.Text,
        LoadFormat.Markdown => SaveFormat.Markdown,
        LoadFormat.Html => SaveFormat.Html,
        LoadFormat.Mhtml => SaveFormat.Mhtml,
        LoadFormat.Rtf => SaveFormat.Rtf,
        LoadFormat.FlatOpc => SaveFormat.FlatOpc,
        LoadFormat.WordML => SaveFormat.WordML,
        LoadFormat.Odt => SaveFormat.Odt,
        _ => throw new ArgumentException($"{loadFormat} has no matching save format.", nameof(loadFormat)),
    };
}
