using System.IO.Compression;
using System.Xml;
using Quorix.Folio.Docx;

namespace Quorix.Folio.Package;

internal sealed class Relationship
{
    public string Id = "";
    public string Type = "";
    public string Target = "";
    public bool External;
}

/// <summary>The parts of a package as bytes, with their content types and relationships.</summary>
internal sealed class OpcPackage
{
    public readonly Dictionary<string, byte[]> Parts = new(StringComparer.OrdinalIgnoreCase);
    public readonly Dictionary<string, string> Defaults = new(StringComparer.OrdinalIgnoreCase);
    public readonly Dictionary<string, string> Overrides = new(StringComparer.OrdinalIgnoreCase);

    public static string RelsNameOf(string partName)
    {
        int slash = partName.LastIndexOf('/');
        return slash < 0 ? "_rels/" + partName + ".rels" : partName[..(slash + 1)] + "_rels/" + partName[(slash + 1)..] + ".rels";
    }

    /// <summary>A target relative to the part's folder, resolved to a part name without a leading slash.</summary>
    public static string Resolve(string sourcePart, string target)
    {
        if (target.StartsWith('/')) return Normalize(target[1..]);
        int slash = sourcePart.LastIndexOf('/');
        var dir = slash < 0 ? "" : sourcePart[..(slash + 1)];
        return Normalize(dir + target);
    }

    private static string Normalize(string path)
    {
        var stack = new List<string>();
        foreach (var seg in Uri.UnescapeDataString(path).Split('/'))
        {
            if (seg == "" || seg == ".") continue;
            if (seg == "..") { if (stack.Count > 0) stack.RemoveAt(stack.Count - 1); continue; }
            stack.Add(seg);
        }
        return string.Join('/', stack);
    }

    public string? ContentTypeOf(string part)
    {
        if (Overrides.TryGetValue("/" + part, out var ct)) return ct;
        var ext = Path.GetExtension(part).TrimStart('.');
        return Defaults.TryGetValue(ext, out ct) ? ct : null;
    }

    public byte[]? Get(string part) => Parts.TryGetValue(part, out var b) ? b : null;

    public List<Relationship> RelsOf(string part, XmlReaderSettings settings)
    {
        var list = new List<Relationship>();
        var bytes = Get(RelsNameOf(part));
        if (bytes == null) return list;
        using var r = XmlReader.Create(new MemoryStream(bytes), settings);
        while (r.Read())
        {
            if (r.NodeType != XmlNodeType.Element || r.LocalName != "Relationship") continue;
            list.Add(new Relationship
            {
                Id = r.GetAttribute("Id") ?? "",
                Type = r.GetAttribute("Type") ?? "",
                Target = r.GetAttribute("Target") ?? "",
                External = r.GetAttribute("TargetMode") == "External",
            });
        }
        return list;
    }

    /// <summary>Reads every entry, enforcing size limits on what is actually inflated, not on what headers claim.</summary>
    public static OpcPackage Read(Stream stream, long maxPart, long maxTotal)
    {
        var pkg = new OpcPackage();
        CheckDirectory(stream);
        using var zip = new ZipArchive(stream, ZipArchiveMode.Read, leaveOpen: true);
        long total = 0;
        foreach (var entry in zip.Entries)
        {
            if (entry.FullName.EndsWith('/')) continue;
            if (entry.Length > maxPart)
                throw new FileCorruptedException($"The part '{entry.FullName}' is larger than the {maxPart >> 20} MB limit.");
            using var es = entry.Open();
            var data = ReadBounded(es, Math.Min(maxPart, maxTotal - total), entry.FullName, entry.Length);
            total += data.Length;
            pkg.Parts[entry.FullName.TrimStart('/')] = data;
        }
        var ct = pkg.Get("[Content_Types].xml") ?? throw new FileCorruptedException("The package has no content types part.");
        pkg.ReadContentTypes(ct);
        return pkg;
    }

    private const int MaxEntries = 20000;

    /// <summary>Refuses archives whose directory claims more parts than any document has, before
    /// the archive reader allocates an object for each of them.</summary>
    private static void CheckDirectory(Stream s)
    {
        long start = s.Position;
        int tail = (int)Math.Min(s.Length - start, 65557);
        if (tail < 22) return;
        var buf = new byte[tail];
        s.Position = s.Length - tail;
        s.ReadExactly(buf);
        s.Position = start;
        for (int i = tail - 22; i >= 0; i--)
        {
            if (buf[i] != 0x50 || buf[i + 1] != 0x4B || buf[i + 2] != 0x05 || buf[i + 3] != 0x06) continue;
            long entries = System.Buffers.Binary.BinaryPrimitives.ReadUInt16LittleEndian(buf.AsSpan(i + 10));
            // The zip64 record, when present, sits just before its locator, right before this record.
            if (entries == 0xFFFF && i >= 20 + 56 && buf[i - 20] == 0x50 && buf[i - 19] == 0x4B && buf[i - 18] == 0x06 && buf[i - 17] == 0x07)
            {
                int z = i - 20 - 56;
                if (buf[z] == 0x50 && buf[z + 1] == 0x4B && buf[z + 2] == 0x06 && buf[z + 3] == 0x06)
                    entries = (long)Math.Min(System.Buffers.Binary.BinaryPrimitives.ReadUInt64LittleEndian(buf.AsSpan(z + 32)), long.MaxValue);
            }
            if (entries > MaxEntries) throw new FileCorruptedException($"The package claims {entries} parts; more than {MaxEntries} are refused.");
            return;
        }
    }

    private static byte[] ReadBounded(Stream s, long limit, string name, long declared)
    {
        if (declared > 0 && declared <= limit)
        {
            // The usual case: the header's size is right, and the part is read straight into place.
            var exact = new byte[declared];
            int got0 = 0, n0;
            while (got0 < exact.Length && (n0 = s.Read(exact, got0, exact.Length - got0)) > 0) got0 += n0;
            if (got0 == exact.Length && s.ReadByte() < 0) return exact;
            if (got0 < exact.Length) throw new FileCorruptedException($"The part '{name}' is shorter than its header says.");
            throw new FileCorruptedException($"The part '{name}' is longer than its header says.");
        }
        var ms = new MemoryStream(declared > 0 && declared <= limit ? (int)declared : 4096);
        var buf = new byte[81920];
        long got = 0;
        int n;
        while ((n = s.Read(buf, 0, buf.Length)) > 0)
        {
            got += n;
            if (got > limit) throw new FileCorruptedException($"The part '{name}' inflates beyond the size limit; the file may be an archive bomb.");
            ms.Write(buf, 0, n);
        }
        return ms.ToArray();
    }

    private void ReadContentTypes(byte[] bytes)
    {
        using var r = XmlReader.Create(new MemoryStream(bytes), DocxReader.Settings);
        while (r.Read())
        {
            if (r.NodeType != XmlNodeType.Element) continue;
            if (r.LocalName == "Default" && r.GetAttribute("Extension") is { } ext && r.GetAttribute("ContentType") is { } c1)
                Defaults[ext] = c1;
            else if (r.LocalName == "Override" && r.GetAttribute("PartName") is { } pn && r.GetAttribute("ContentType") is { } c2)
                Overrides[pn.StartsWith('/') ? pn : "/" + pn] = c2;
        }
    }

    public OpcPackage CloneShallow()
    {
        var p = new OpcPackage();
        foreach (var kv in Parts) p.Parts[kv.Key] = kv.Value;
        foreach (var kv in Defaults) p.Defaults[kv.Key] = kv.Value;
        foreach (var kv in Overrides) p.Overrides[kv.Key] = kv.Value;
        return p;
    }
}
