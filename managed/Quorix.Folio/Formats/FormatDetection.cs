using System.Text;

namespace Quorix.Folio.Formats;

/// <summary>Tells apart the formats that the first bytes alone do not: OpenDocument among packages,
/// and RTF, MHTML, flat OPC, WordprocessingML 2003, HTML, Markdown and plain text among text.</summary>
internal static class FormatDetection
{
    /// <summary>The format of a text stream, from its first bytes and, for Markdown and HTML fragments, the file name;
    /// the stream is left where it was.</summary>
    public static LoadFormat OfText(Stream s, string? fileName)
    {
        var head = Head(s, 2048);
        int bom = head.Length >= 3 && head[0] == 0xEF && head[1] == 0xBB && head[2] == 0xBF ? 3 : 0;
        var text = Encoding.Latin1.GetString(head, bom, head.Length - bom).TrimStart();
        if (text.StartsWith("{\\rtf", StringComparison.Ordinal)) return LoadFormat.Rtf;
        var lower = text.ToLowerInvariant();
        if (lower.Contains("mime-version:") && lower.Contains("multipart/related")) return LoadFormat.Mhtml;
        if (lower.StartsWith("<?xml") && lower.Contains("schemas.microsoft.com/office/2006/xmlpackage")) return LoadFormat.FlatOpc;
        if (lower.StartsWith("<?xml") && lower.Contains("schemas.microsoft.com/office/word/2003/wordml")) return LoadFormat.WordML;
        if (lower.StartsWith("<!doctype html") || lower.StartsWith("<html") || lower.StartsWith("<head") || lower.StartsWith("<body") ||
            ((lower.StartsWith("<?xml") || lower.StartsWith("<!--")) && lower.Contains("<html")))
            return LoadFormat.Html;
        // Text in a file named as a package is a damaged or mistaken file, not a text document.
        var ext = Path.GetExtension(fileName ?? "").ToLowerInvariant();
        if (ext is ".docx" or ".docm" or ".dotx" or ".dotm" or ".odt" or ".ott" or ".epub")
            throw new UnsupportedFileFormatException($"The file is named as a {ext[1..].ToUpperInvariant()} document but holds text, not a package.");
        // A fragment of markup without a document element is HTML only when its name says so.
        return ByExtension(fileName) is LoadFormat.Markdown or LoadFormat.Html ? ByExtension(fileName)!.Value : LoadFormat.Text;
    }

    /// <summary>The format an empty file of this name holds, if its name tells.</summary>
    public static LoadFormat? ByExtension(string? fileName) =>
        Path.GetExtension(fileName ?? "").ToLowerInvariant() switch
        {
            ".md" or ".markdown" => LoadFormat.Markdown,
            ".htm" or ".html" or ".xhtml" => LoadFormat.Html,
            ".txt" => LoadFormat.Text,
            _ => null,
        };

    // An OpenDocument package stores its media type, uncompressed, as the first entry "mimetype".
    public static bool IsOdt(Stream s)
    {
        var head = Head(s, 30 + 8 + 48);
        if (head.Length < 30 + 8 + 39 || Encoding.ASCII.GetString(head, 30, 8) != "mimetype") return false;
        return Encoding.ASCII.GetString(head, 38, head.Length - 38).StartsWith("application/vnd.oasis.opendocument.text", StringComparison.Ordinal);
    }

    private static byte[] Head(Stream s, int max)
    {
        long pos = s.Position;
        var buf = new byte[max];
        int n = 0, r;
        while (n < max && (r = s.Read(buf, n, max - n)) > 0) n += r;
        s.Position = pos;
        return buf[..n];
    }

    /// <summary>Refuses to read a package or binary data as a text format, which would only give garbage.</summary>
    public static void CheckIsText(byte[] data, LoadFormat asked)
    {
        var kind = Package.FormatSniffer.Sniff(new MemoryStream(data, false));
        if (kind is Package.SniffedKind.Text or Package.SniffedKind.Empty) return;
        var what = kind switch
        {
            Package.SniffedKind.Docx => "a package (DOCX or ODT)",
            Package.SniffedKind.EncryptedOoxml or Package.SniffedKind.LegacyCompound => "a compound binary file",
            _ => "binary data",
        };
        throw new UnsupportedFileFormatException($"The data cannot be loaded as {asked}: it is {what}.");
    }
}
