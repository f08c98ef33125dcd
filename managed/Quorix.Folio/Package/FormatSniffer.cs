using System.Text;

namespace Quorix.Folio.Package;

internal enum SniffedKind
{
    Unknown,
    Docx,
    EncryptedOoxml,
    LegacyCompound,
    Text,
    Empty,
}

/// <summary>Tells formats apart by their first bytes; leaves the stream where it was.</summary>
internal static class FormatSniffer
{
    private static readonly byte[] Compound = { 0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1 };

    public static SniffedKind Sniff(Stream s)
    {
        if (!s.CanSeek)
            throw new ArgumentException("Format detection needs a seekable stream.", nameof(s));
        long pos = s.Position;
        try
        {
            var head = new byte[8];
            int n = ReadUpTo(s, head);
            if (n == 0) return SniffedKind.Empty;
            if (n >= 4 && head[0] == 'P' && head[1] == 'K' && (head[2] == 3 || head[2] == 5 || head[2] == 7))
                return SniffedKind.Docx;
            if (n == 8 && head.AsSpan().SequenceEqual(Compound))
            {
                s.Position = pos;
                return HasEncryptionStream(s) ? SniffedKind.EncryptedOoxml : SniffedKind.LegacyCompound;
            }
            s.Position = pos;
            return LooksLikeText(s) ? SniffedKind.Text : SniffedKind.Unknown;
        }
        finally
        {
            s.Position = pos;
        }
    }

    private static int ReadUpTo(Stream s, byte[] buf)
    {
        int total = 0;
        while (total < buf.Length)
        {
            int r = s.Read(buf, total, buf.Length - total);
            if (r <= 0) break;
            total += r;
        }
        return total;
    }

    // An encrypted package is a compound file whose directory names "EncryptionInfo" (UTF-16).
    private static bool HasEncryptionStream(Stream s)
    {
        var needle = Encoding.Unicode.GetBytes("EncryptionInfo");
        var buf = new byte[1 << 16];
        long limit = 64L << 20;
        int keep = needle.Length - 1;
        int filled = 0;
        long read = 0;
        while (read < limit)
        {
            int r = s.Read(buf, filled, buf.Length - filled);
            if (r <= 0) break;
            read += r;
            filled += r;
            if (buf.AsSpan(0, filled).IndexOf(needle) >= 0) return true;
            Array.Copy(buf, filled - Math.Min(keep, filled), buf, 0, Math.Min(keep, filled));
            filled = Math.Min(keep, filled);
        }
        return false;
    }

    private static bool LooksLikeText(Stream s)
    {
        var buf = new byte[4096];
        int n = ReadUpTo(s, buf);
        for (int i = 0; i < n; i++)
        {
            byte b = buf[i];
            if (b == 0 || (b < 0x09) || (b > 0x0D && b < 0x20 && b != 0x1B)) return false;
        }
        return n > 0;
    }
}
