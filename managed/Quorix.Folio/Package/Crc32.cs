namespace Quorix.Folio.Package;

/// <summary>The archive checksum (reflected polynomial 0xEDB88320), eight bytes per step.</summary>
internal static class Crc32
{
    private static readonly uint[] Table = Build();

    private static uint[] Build()
    {
        var t = new uint[8 * 256];
        for (uint i = 0; i < 256; i++)
        {
            uint c = i;
            for (int k = 0; k < 8; k++) c = (c & 1) != 0 ? 0xEDB88320 ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        for (int i = 0; i < 256; i++)
            for (int s = 1; s < 8; s++)
                t[s * 256 + i] = (t[(s - 1) * 256 + i] >> 8) ^ t[t[(s - 1) * 256 + i] & 0xFF];
        return t;
    }

    public static uint Compute(ReadOnlySpan<byte> data) => Append(0, data);

    /// <summary>The checksum of what <paramref name="crc"/> was the checksum of, followed by the data.</summary>
    public static uint Append(uint crc, ReadOnlySpan<byte> data)
    {
        crc = ~crc;
        var t = Table;
        int i = 0;
        for (; i + 8 <= data.Length; i += 8)
        {
            uint a = crc ^ (uint)(data[i] | data[i + 1] << 8 | data[i + 2] << 16 | data[i + 3] << 24);
            crc = t[7 * 256 + (a & 0xFF)] ^ t[6 * 256 + ((a >> 8) & 0xFF)] ^ t[5 * 256 + ((a >> 16) & 0xFF)] ^ t[4 * 256 + (a >> 24)]
                ^ t[3 * 256 + data[i + 4]] ^ t[2 * 256 + data[i + 5]] ^ t[256 + data[i + 6]] ^ t[data[i + 7]];
        }
        for (; i < data.Length; i++) crc = t[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
        return ~crc;
    }
}
