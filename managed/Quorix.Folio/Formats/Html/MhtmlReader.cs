using System.Text;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Formats.Html;

/// <summary>MHTML: a MIME message whose first HTML part is the page and whose other parts are what it
/// refers to, found by their Content-Location or Content-ID.</summary>
internal sealed class MhtmlReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.Mhtml;

    private sealed record Part(Dictionary<string, string> Headers, byte[] Body)
    {
        public string Type => Headers.GetValueOrDefault("content-type", "text/plain");
    }

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        FormatDetection.CheckIsText(data, Format);
        var text = Encoding.Latin1.GetString(data);
        var (top, body) = SplitHeaders(text);
        var boundary = Parameter(top.GetValueOrDefault("content-type", ""), "boundary")
                       ?? throw new FileCorruptedException("The MHTML message has no part boundary.");
        var parts = new List<Part>();
        foreach (var chunk in body.Split("--" + boundary).Skip(1))
        {
            if (chunk.StartsWith("--")) break;
            var (h, b) = SplitHeaders(chunk.TrimStart('\r', '\n'));
            parts.Add(new Part(h, Decode(h.GetValueOrDefault("content-transfer-encoding", "7bit"), b)));
        }
        var page = parts.FirstOrDefault(p => p.Type.StartsWith("text/html", StringComparison.OrdinalIgnoreCase))
                   ?? throw new FileCorruptedException("The MHTML message has no HTML part.");
        var charset = Parameter(page.Type, "charset");
        Encoding? enc = null;
        if (charset != null)
        {
            try { enc = Encoding.GetEncoding(charset); }
            catch (ArgumentException) { }
        }
        var html = HtmlReader.Decode(page.Body, enc ?? options.Encoding);
        byte[]? Local(string reference)
        {
            foreach (var p in parts)
            {
                if (p == page) continue;
                var loc = p.Headers.GetValueOrDefault("content-location");
                var id = p.Headers.GetValueOrDefault("content-id")?.Trim('<', '>');
                if (loc != null && (loc == reference || loc.EndsWith("/" + reference.TrimStart('.', '/'), StringComparison.Ordinal))) return p.Body;
                if (id != null && reference.StartsWith("cid:", StringComparison.OrdinalIgnoreCase) && reference[4..] == id) return p.Body;
            }
            return null;
        }
        HtmlReader.Load(html, document, options, new ResourceResolver(options, document, WarningSource.Html, Local));
    }

    private static (Dictionary<string, string> Headers, string Body) SplitHeaders(string s)
    {
        int end = s.IndexOf("\r\n\r\n", StringComparison.Ordinal);
        int skip = 4;
        int lf = s.IndexOf("\n\n", StringComparison.Ordinal);
        if (end < 0 || (lf >= 0 && lf < end)) { end = lf; skip = 2; }
        if (end < 0) return (new(StringComparer.OrdinalIgnoreCase), s);
        var headers = new Dictionary<string, string>(StringComparer.OrdinalIgnoreCase);
        string? last = null;
        foreach (var raw in s[..end].Replace("\r\n", "\n").Split('\n'))
        {
            // Folded lines continue the header before them.
            if (raw.Length > 0 && (raw[0] == ' ' || raw[0] == '\t') && last != null) { headers[last] += " " + raw.Trim(); continue; }
            int colon = raw.IndexOf(':');
            if (colon <= 0) continue;
            last = raw[..colon].Trim().ToLowerInvariant();
            headers[last] = raw[(colon + 1)..].Trim();
        }
        return (headers, s[(end + skip)..]);
    }

    private static string? Parameter(string header, string name)
    {
        foreach (var piece in header.Split(';'))
        {
            var kv = piece.Trim();
            if (kv.StartsWith(name + "=", StringComparison.OrdinalIgnoreCase)) return kv[(name.Length + 1)..].Trim('"');
        }
        return null;
    }

    private static byte[] Decode(string encoding, string body)
    {
        switch (encoding.Trim().ToLowerInvariant())
        {
            case "base64":
                try { return Convert.FromBase64String(new string(body.Where(c => !char.IsWhiteSpace(c)).ToArray())); }
                catch (FormatException e) { throw new FileCorruptedException("An MHTML part is not valid base64: " + e.Message, e); }
            case "quoted-printable":
                var bytes = new List<byte>(body.Length);
                for (int i = 0; i < body.Length; i++)
                {
                    char c = body[i];
                    if (c == '=' && i + 1 < body.Length && body[i + 1] is '\r' or '\n')
                    {
                        i += body[i + 1] == '\r' && i + 2 < body.Length && body[i + 2] == '\n' ? 2 : 1;
                        continue;
                    }
                    if (c == '=' && i + 2 < body.Length && Uri.IsHexDigit(body[i + 1]) && Uri.IsHexDigit(body[i + 2]))
                    {
                        bytes.Add(Convert.ToByte(body.Substring(i + 1, 2), 16));
                        i += 2;
                        continue;
                    }
                    bytes.Add((byte)c);
                }
                return bytes.ToArray();
            default:
                return Encoding.Latin1.GetBytes(body);
        }
    }
}
