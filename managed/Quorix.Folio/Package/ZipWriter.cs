using System.Buffers.Binary;
using System.IO.Compression;
using System.Text;

namespace Quorix.Folio.Package;

/// <summary>Writes a package archive from parts held in memory. Each part is compressed before
/// its header is written, so no seeking is needed and any output stream will do; the deflate
/// level is chosen freely, which the framework's archive writer does not allow.</summary>
internal sealed class ZipWriter
{
    private readonly Stream output;
    private readonly int level;
    private readonly List<(byte[] Name, ushort Method, uint Crc, long Compressed, long Size, long Offset, bool Utf8)> entries = new();
    private long position;

    public ZipWriter(Stream output, int level)
    {
        this.output = output;
        this.level = level;
    }

    /// <summary>Adds a part; one read from an archive and never changed is copied as it was stored.</summary>
    public void Add(string name, OpcPart part)
    {
        if (part.Stored is { } stored) Write(name, stored.Method, stored.Crc, stored.Compressed, stored.Size);
        else Add(name, part.Bytes);
    }

    public void Add(string name, byte[] data)
    {
        var compressed = new MemoryStream(data.Length / 4 + 64);
        using (var deflate = new DeflateStream(compressed, new ZLibCompressionOptions { CompressionLevel = level }, leaveOpen: true))
            deflate.Write(data);
        Write(name, ZipEntryData.Deflated, Crc32.Compute(data), compressed.GetBuffer().AsSpan(0, (int)compressed.Length), data.LongLength);
    }

    /// <summary>Adds a part without compression, for formats that need an entry readable in place.</summary>
    public void AddStored(string name, byte[] data) => Write(name, ZipEntryData.Stored, Crc32.Compute(data), data, data.LongLength);

    private void Write(string name, ushort method, uint crc, ReadOnlySpan<byte> compressed, long size)
    {
        bool ascii = name.All(c => c < 0x80);
        var nameBytes = Encoding.UTF8.GetBytes(name);
        if (size > uint.MaxValue)
            throw new NotSupportedException($"The part '{name}' is too large for the archive format.");
        var header = new byte[30];
        BinaryPrimitives.WriteUInt32LittleEndian(header, 0x04034b50);
        BinaryPrimitives.WriteUInt16LittleEndian(header.AsSpan(4), 20);
        BinaryPrimitives.WriteUInt16LittleEndian(header.AsSpan(6), (ushort)(ascii ? 0 : 0x0800));
        BinaryPrimitives.WriteUInt16LittleEndian(header.AsSpan(8), method);
        // Time 00:00, date 1980-01-01: saving the same document twice gives the same bytes.
        BinaryPrimitives.WriteUInt16LittleEndian(header.AsSpan(12), 0x0021);
        BinaryPrimitives.WriteUInt32LittleEndian(header.AsSpan(14), crc);
        BinaryPrimitives.WriteUInt32LittleEndian(header.AsSpan(18), (uint)compressed.Length);
        BinaryPrimitives.WriteUInt32LittleEndian(header.AsSpan(22), (uint)size);
        BinaryPrimitives.WriteUInt16LittleEndian(header.AsSpan(26), (ushort)nameBytes.Length);
        entries.Add((nameBytes, method, crc, compressed.Length, size, position, !ascii));
        output.Write(header);
        output.Write(nameBytes);
        output.Write(compressed);
        position += header.Length + nameBytes.Length + compressed.Length;
    }

    public void Finish()
    {
        if (entries.Count > 0xFFFF || position > uint.MaxValue) throw new NotSupportedException("The package is too large for the archive format.");
        long start = position;
        foreach (var e in entries)
        {
            var h = new byte[46];
            BinaryPrimitives.WriteUInt32LittleEndian(h, 0x02014b50);
            BinaryPrimitives.WriteUInt16LittleEndian(h.AsSpan(4), 20);
            BinaryPrimitives.WriteUInt16LittleEndian(h.AsSpan(6), 20);
            BinaryPrimitives.WriteUInt16LittleEndian(h.AsSpan(8), (ushort)(e.Utf8 ? 0x0800 : 0));
            BinaryPrimitives.WriteUInt16LittleEndian(h.AsSpan(10), e.Method);
            BinaryPrimitives.WriteUInt16LittleEndian(h.AsSpan(14), 0x0021);
            BinaryPrimitives.WriteUInt32LittleEndian(h.AsSpan(16), e.Crc);
            BinaryPrimitives.WriteUInt32LittleEndian(h.AsSpan(20), (uint)e.Compressed);
            BinaryPrimitives.WriteUInt32LittleEndian(h.AsSpan(24), (uint)e.Size);
            BinaryPrimitives.WriteUInt16LittleEndian(h.AsSpan(28), (ushort)e.Name.Length);
            BinaryPrimitives.WriteUInt32LittleEndian(h.AsSpan(42), (uint)e.Offset);
            output.Write(h);
            output.Write(e.Name);
            position += h.Length + e.Name.Length;
        }
        var end = new byte[22];
        BinaryPrimitives.WriteUInt32LittleEndian(end, 0x06054b50);
        BinaryPrimitives.WriteUInt16LittleEndian(end.AsSpan(8), (ushort)entries.Count);
        BinaryPrimitives.WriteUInt16LittleEndian(end.AsSpan(10), (ushort)entries.Count);
        BinaryPrimitives.WriteUInt32LittleEndian(end.AsSpan(12), (uint)(position - start));
        BinaryPrimitives.WriteUInt32LittleEndian(end.AsSpan(16), (uint)start);
        output.Write(end);
        output.Flush();
    }
}
