using System.Buffers.Binary;
using System.Text;

namespace Quorix.Folio.Package;

/// <summary>Reads named streams out of a compound file (the container of encrypted packages).
/// Every sector number and chain is checked, so damaged files fail instead of looping.</summary>
internal sealed class CompoundFile
{
    private const uint EndOfChain = 0xFFFFFFFE;
    private const uint MaxRegular = 0xFFFFFFFA;

    private readonly byte[] data;
    private readonly int sectorSize;
    private readonly uint[] fat;
    private readonly uint[] miniFat;
    private readonly byte[] miniStream;
    private readonly uint miniCutoff;
    private readonly List<(string Name, int Type, uint Start, long Size)> entries = new();

    private CompoundFile(byte[] data)
    {
        this.data = data;
        if (data.Length < 512) throw Bad("it is shorter than its header");
        int shift = BinaryPrimitives.ReadUInt16LittleEndian(data.AsSpan(0x1E));
        if (shift != 9 && shift != 12) throw Bad("its sector size is invalid");
        sectorSize = 1 << shift;
        miniCutoff = BinaryPrimitives.ReadUInt32LittleEndian(data.AsSpan(0x38));
        fat = ReadFat();
        var dir = ReadChain(BinaryPrimitives.ReadUInt32LittleEndian(data.AsSpan(0x30)), long.MaxValue);
        for (int off = 0; off + 128 <= dir.Length; off += 128)
        {
            int nameLen = BinaryPrimitives.ReadUInt16LittleEndian(dir.AsSpan(off + 0x40));
            int type = dir[off + 0x42];
            if (type == 0) continue;
            nameLen = Math.Clamp(nameLen - 2, 0, 62);
            var name = Encoding.Unicode.GetString(dir, off, nameLen & ~1);
            uint start = BinaryPrimitives.ReadUInt32LittleEndian(dir.AsSpan(off + 0x74));
            long size = (long)BinaryPrimitives.ReadUInt64LittleEndian(dir.AsSpan(off + 0x78));
            if (sectorSize == 512) size &= 0xFFFFFFFF;
            entries.Add((name, type, start, size));
        }
        var root = entries.Find(e => e.Type == 5);
        miniStream = root.Type == 5 && root.Size > 0 ? ReadChain(root.Start, root.Size) : Array.Empty<byte>();
        var mf = ReadChain(BinaryPrimitives.ReadUInt32LittleEndian(data.AsSpan(0x3C)), long.MaxValue, allowEmpty: true);
        miniFat = new uint[mf.Length / 4];
        for (int i = 0; i < miniFat.Length; i++) miniFat[i] = BinaryPrimitives.ReadUInt32LittleEndian(mf.AsSpan(i * 4));
    }

    public static CompoundFile Open(byte[] data) => new(data);

    private static FileCorruptedException Bad(string why) => new($"The encrypted document's container is damaged: {why}.");

    private int SectorCount => (data.Length - sectorSize) / sectorSize + 1;

    private ReadOnlySpan<byte> Sector(uint n)
    {
        long off = ((long)n + 1) * sectorSize;
        if (n > MaxRegular || off + sectorSize > data.Length)
        {
            // The last sector may be cut short by writers that do not pad the file.
            if (n <= MaxRegular && off < data.Length) return data.AsSpan((int)off);
            throw Bad("a sector lies outside the file");
        }
        return data.AsSpan((int)off, sectorSize);
    }

    private uint[] ReadFat()
    {
        var fatSectors = new List<uint>();
        for (int i = 0; i < 109; i++)
        {
            uint s = BinaryPrimitives.ReadUInt32LittleEndian(data.AsSpan(0x4C + i * 4));
            if (s <= MaxRegular) fatSectors.Add(s);
        }
        uint difat = BinaryPrimitives.ReadUInt32LittleEndian(data.AsSpan(0x44));
        int guard = 0;
        while (difat <= MaxRegular)
        {
            if (++guard > SectorCount) throw Bad("its sector table loops");
            var sec = Sector(difat);
            int per = sectorSize / 4 - 1;
            for (int i = 0; i < per; i++)
            {
                uint s = BinaryPrimitives.ReadUInt32LittleEndian(sec[(i * 4)..]);
                if (s <= MaxRegular) fatSectors.Add(s);
            }
            difat = BinaryPrimitives.ReadUInt32LittleEndian(sec[(per * 4)..]);
        }
        if (fatSectors.Count > SectorCount) throw Bad("its sector table is larger than the file");
        var table = new uint[fatSectors.Count * (sectorSize / 4)];
        int k = 0;
        foreach (var s in fatSectors)
        {
            var sec = Sector(s);
            for (int i = 0; i + 4 <= sec.Length && k < table.Length; i += 4) table[k++] = BinaryPrimitives.ReadUInt32LittleEndian(sec[i..]);
        }
        return table;
    }

    private byte[] ReadChain(uint start, long size, bool allowEmpty = false)
    {
        var ms = new MemoryStream();
        int guard = 0;
        for (uint s = start; s != EndOfChain; s = fat[s])
        {
            if (s > MaxRegular) { if (allowEmpty && ms.Length == 0) break; throw Bad("a chain ends badly"); }
            if (s >= fat.Length || ++guard > SectorCount) throw Bad("a chain loops or leaves the file");
            ms.Write(Sector(s));
            if (ms.Length >= size) break;
        }
        if (size != long.MaxValue && ms.Length < size) throw Bad("a stream is shorter than its size");
        var bytes = ms.ToArray();
        return size != long.MaxValue && bytes.Length > size ? bytes[..(int)size] : bytes;
    }

    private byte[] ReadMini(uint start, long size)
    {
        var ms = new MemoryStream();
        int guard = 0;
        for (uint s = start; s != EndOfChain && ms.Length < size; s = miniFat[s])
        {
            if (s >= miniFat.Length || ++guard > miniFat.Length) throw Bad("a small-stream chain loops or leaves the file");
            long off = (long)s * 64;
            if (off + 64 > miniStream.Length) throw Bad("a small stream lies outside its container");
            ms.Write(miniStream, (int)off, 64);
        }
        if (ms.Length < size) throw Bad("a small stream is shorter than its size");
        return ms.ToArray()[..(int)size];
    }

    public bool Has(string name) => entries.Exists(e => e.Type == 2 && e.Name == name);

    /// <summary>The stream's bytes, or null when there is no such stream.</summary>
    public byte[]? Get(string name, long limit)
    {
        var e = entries.Find(x => x.Type == 2 && x.Name == name);
        if (e.Type != 2) return null;
        if (e.Size > limit) throw new FileCorruptedException($"The stream '{name}' is larger than the size limit.");
        return e.Size < miniCutoff ? ReadMini(e.Start, e.Size) : ReadChain(e.Start, e.Size);
    }
}
