using System.Text;

namespace Quorix.Folio.Formats.Flow;

/// <summary>Turns the bytes of a text format into characters: a byte order mark wins, then the
/// caller's encoding, then UTF-8 when the bytes are valid UTF-8, else Latin-1, which never fails.</summary>
internal static class TextDecoding
{
    private static readonly UTF8Encoding StrictUtf8 = new(false, true);

    /// <summary>The whole input as text of the <paramref name="format"/> asked for.</summary>
    public static string ReadAll(Stream input, Loading.LoadOptions options, LoadFormat format)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        FormatDetection.CheckIsText(data, format);
        return Decode(data, options.Encoding);
    }

    public static string Decode(ReadOnlySpan<byte> bytes, Encoding? declared)
    {
        if (bytes.StartsWith(new byte[] { 0xEF, 0xBB, 0xBF })) return Encoding.UTF8.GetString(bytes[3..]);
        if (bytes.StartsWith(new byte[] { 0xFF, 0xFE })) return Encoding.Unicode.GetString(bytes[2..]);
        if (bytes.StartsWith(new byte[] { 0xFE, 0xFF })) return Encoding.BigEndianUnicode.GetString(bytes[2..]);
        if (declared != null) return declared.GetString(bytes);
        try
        {
            return StrictUtf8.GetString(bytes);
        }
        catch (DecoderFallbackException)
        {
            return Encoding.Latin1.GetString(bytes);
        }
    }
}
