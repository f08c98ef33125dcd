using System.Buffers.Binary;
using System.IO.Compression;
using System.Text;

namespace Quorix.Folio.Package;

/// <summary>One archive entry as stored. Its compressed bytes stay in the file's buffer, so an
/// untouched part can be written back without inflating and deflating it again.</summary>
internal sealed class ZipEntryData
{
    public const ushort Stored = 0;
    public const ushort Deflated = 8;

    public readonly string Name;
    public readonly ushort Method;
    public readonly uint Crc;
    public readonly long Size;
    private readonly byte[] buffer;
    private readonly int offset;
    private readonly int length;
    // The bytes never change, so one match of the checksum (at load) stands for every later read.
    private bool checksumMatched;

    public ZipEntryData(string name, ushort method, uint crc, long size, byte[] buffer, int offset, int length)
    {
        Name = name;
        Method = method;
        Crc = crc;
        Size = size;
        this.buffer = buffer;
        this.offset = offset;
        this.length = length;
    }

    public ReadOnlySpan<byte> Compressed => buffer.AsSpan(offset, length);

    /// <summary>The entry's content, checked against the size (and, unless told otherwise, the
    /// checksum) its header states; throws FileCorruptedException otherwise.</summary>
    public byte[] Inflate(bool checksum = true)
    {
        var data = new byte[Size];
        if (Method == Stored)
        {
            if (length != Size) throw Damaged("its stored size does not match its header");
            Compressed.CopyTo(data);
        }
        else
        {
            try
            {
                using var s = new DeflateStream(new MemoryStream(buffer, offset, length, false), CompressionMode.Decompress);
                int got = 0, n;
                while (got < data.Length && (n = s.Read(data, got, data.Length - got)) > 0) got += n;
                if (got < data.Length) throw new FileCorruptedException($"The part '{Name}' is shorter than its header says.");
                if (s.ReadByte() >= 0) throw new FileCorruptedException($"The part '{Name}' is longer than its header says.");
            }
            catch (InvalidDataException e)
            {
                throw Damaged(e.Message);
            }
        }
        if (checksum && !checksumMatched) CheckChecksum(data);
        return data;
    }

    public void CheckChecksum(byte[] data)
    {
        if (Crc32.Compute(data) != Crc) throw Damaged("its checksum does not match");
        checksumMatched = true;
    }

    /// <summary>The content as a stream, inflated as it is read, once the checksum has matched;
    /// before that, the whole content, checked.</summary>
    public Stream OpenRead()
    {
        if (!checksumMatched || Method != Deflated) return new MemoryStream(Inflate(), false);
        return new DeflateStream(new MemoryStream(buffer, offset, length, false), CompressionMode.Decompress);
    }

    /// <summary>Checks the content without keeping it.</summary>
    public void Verify() => Inflate();

    private FileCorruptedException Damaged(string why) => new($"The part '{Name}' is damaged: {why}.");
}

/// <summary>Reads an archive's central directory from a file held in memory. Only what the
/// directory states is trusted, after bounds checks: hostile archives must fail cleanly.</summary>
internal static class ZipReader
{
    private const int MaxEntries = 20000;
    private const uint EndSignature = 0x06054b50;
    private const uint Zip64EndSignature = 0x06064b50;
    private const uint Zip64LocatorSignature = 0x07064b50;
    private const uint CentralSignature = 0x02014b50;
    private const uint LocalSignature = 0x04034b50;

    /// <summary>The file's entries in directory order, folders left out; throws FileCorruptedException.</summary>
    public static List<ZipEntryData> Read(byte[] file, long maxPart, long maxTotal)
    {
        var span = file.AsSpan();
        int end = FindEnd(span);
        long count = U16(span, end + 10);
        long dirSize = U32(span, end + 12);
        long dirOffset = U32(span, end + 16);
        if (U16(span, end + 4) != 0 || U16(span, end + 6) != 0)
            throw new FileCorruptedException("The package is split over several archive files, which is not supported.");
        // Values at their maximum may stand for larger ones kept in the large-archive record.
        if ((count == 0xFFFF || dirSize == 0xFFFFFFFF || dirOffset == 0xFFFFFFFF) && end >= 20 && U32(span, end - 20) == Zip64LocatorSignature)
            ReadZip64End(span, end, ref count, ref dirSize, ref dirOffset);
        if (count > MaxEntries) throw new FileCorruptedException($"The package claims {count} parts; more than {MaxEntries} are refused.");
        if (dirOffset + dirSize > end) throw Corrupt("its directory lies outside the file");

        var entries = new List<ZipEntryData>((int)count);
        long total = 0;
        int p = (int)dirOffset;
        for (long i = 0; i < count; i++)
        {
            if (p + 46 > end || U32(span, p) != CentralSignature) throw Corrupt("its directory is damaged");
            int flags = U16(span, p + 8);
            ushort method = (ushort)U16(span, p + 10);
            uint crc = (uint)U32(span, p + 16);
            long compressed = U32(span, p + 20);
            long size = U32(span, p + 24);
            int nameLen = U16(span, p + 28), extraLen = U16(span, p + 30), commentLen = U16(span, p + 32);
            long local = U32(span, p + 42);
            if (p + 46L + nameLen + extraLen + commentLen > end) throw Corrupt("its directory is damaged");
            var name = Encoding.UTF8.GetString(span.Slice(p + 46, nameLen));
            if (size == 0xFFFFFFFF || compressed == 0xFFFFFFFF || local == 0xFFFFFFFF)
                ReadZip64Extra(span.Slice(p + 46 + nameLen, extraLen), ref size, ref compressed, ref local);
            p += 46 + nameLen + extraLen + commentLen;
            if (name.EndsWith('/')) continue;

            if ((flags & 1) != 0) throw Corrupt($"its part '{name}' is encrypted inside the archive");
            if (method != ZipEntryData.Stored && method != ZipEntryData.Deflated)
                throw Corrupt($"its part '{name}' uses compression method {method}");
            if (size > maxPart || size > Array.MaxLength) throw new FileCorruptedException($"The part '{name}' is larger than the {maxPart >> 20} MB limit.");
            total += size;
            if (total > maxTotal)
                throw new FileCorruptedException($"The package inflates beyond the {maxTotal >> 20} MB limit; the file may be an archive bomb.");
            if (local + 30 > file.Length || U32(span, (int)local) != LocalSignature) throw Corrupt($"the header of its part '{name}' is missing");
            long data = local + 30 + U16(span, (int)local + 26) + U16(span, (int)local + 28);
            if (data + compressed > dirOffset || compressed > int.MaxValue) throw Corrupt($"its part '{name}' is cut off");
            entries.Add(new ZipEntryData(name.TrimStart('/'), method, crc, size, file, (int)data, (int)compressed));
        }
        return entries;
    }

    private static int FindEnd(ReadOnlySpan<byte> span)
    {
        // The end record sits at most a maximal comment away from the end of the file.
        int lowest = Math.Max(0, span.Length - 22 - 0xFFFF);
        for (int i = span.Length - 22; i >= lowest; i--)
            if (span[i] == 0x50 && span[i + 1] == 0x4B && U32(span, i) == EndSignature) return i;
        throw Corrupt("its archive directory is missing; the file may be truncated");
    }

    private static void ReadZip64End(ReadOnlySpan<byte> span, int end, ref long count, ref long dirSize, ref long dirOffset)
    {
        int locator = end - 20;
        long record = (long)Math.Min(BinaryPrimitives.ReadUInt64LittleEndian(span.Slice(locator + 8)), long.MaxValue);
        if (record + 56 > locator || U32(span, (int)record) != Zip64EndSignature) throw Corrupt("its large-archive directory is damaged");
        count = Clamp(BinaryPrimitives.ReadUInt64LittleEndian(span.Slice((int)record + 32)));
        dirSize = Clamp(BinaryPrimitives.ReadUInt64LittleEndian(span.Slice((int)record + 40)));
        dirOffset = Clamp(BinaryPrimitives.ReadUInt64LittleEndian(span.Slice((int)record + 48)));
        if (count > MaxEntries) throw new FileCorruptedException($"The package claims {count} parts; more than {MaxEntries} are refused.");
    }

    // The large-archive field holds, in this order, only the values its header marks as overflowed.
    private static void ReadZip64Extra(ReadOnlySpan<byte> extra, ref long size, ref long compressed, ref long local)
    {
        while (extra.Length >= 4)
        {
            int id = U16(extra, 0), len = U16(extra, 2);
            if (len > extra.Length - 4) break;
            if (id == 1)
            {
                var f = extra.Slice(4, len);
                int k = 0;
                if (size == 0xFFFFFFFF && k + 8 <= f.Length) { size = Clamp(BinaryPrimitives.ReadUInt64LittleEndian(f.Slice(k))); k += 8; }
                if (compressed == 0xFFFFFFFF && k + 8 <= f.Length) { compressed = Clamp(BinaryPrimitives.ReadUInt64LittleEndian(f.Slice(k))); k += 8; }
                if (local == 0xFFFFFFFF && k + 8 <= f.Length) local = Clamp(BinaryPrimitives.ReadUInt64LittleEndian(f.Slice(k)));
                return;
            }
            extra = extra.Slice(4 + len);
        }
    }

    private static long Clamp(ulong v) => v > int.MaxValue ? int.MaxValue + 1L : (long)v;

    private static int U16(ReadOnlySpan<byte> s, int at) => BinaryPrimitives.ReadUInt16LittleEndian(s.Slice(at));

    private static long U32(ReadOnlySpan<byte> s, int at) => BinaryPrimitives.ReadUInt32LittleEndian(s.Slice(at));

    private static FileCorruptedException Corrupt(string why) => new($"The file is not a readable DOCX package: {why}.");
}
