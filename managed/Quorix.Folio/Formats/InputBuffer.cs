namespace Quorix.Folio.Formats;

internal static class InputBuffer
{
    /// <summary>The whole input, refused beyond the size limit before it is read.</summary>
    public static byte[] ReadAll(Stream s, long limit)
    {
        if (s.CanSeek)
        {
            long length = s.Length - s.Position;
            if (length > limit || length > Array.MaxLength) throw new FileCorruptedException("The input is larger than the size limit.");
            var buf = new byte[length];
            s.ReadExactly(buf);
            return buf;
        }
        var ms = new MemoryStream();
        var chunk = new byte[81920];
        int n;
        while ((n = s.Read(chunk, 0, chunk.Length)) > 0)
        {
            if (ms.Length + n > limit) throw new FileCorruptedException("The input is larger than the size limit.");
            ms.Write(chunk, 0, n);
        }
        return ms.ToArray();
    }
}
