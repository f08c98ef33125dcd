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

/// <summary>A part's content: made in memory, or an entry of the source archive that is inflated
/// each time it is read (the archive's compressed bytes are what the package keeps).</summary>
internal sealed class OpcPart
{
    private readonly byte[]? bytes;
    public readonly ZipEntryData? Stored;

    public OpcPart(byte[] bytes) => this.bytes = bytes;

    public OpcPart(ZipEntryData stored) => Stored = stored;

    /// <summary>Compressed while this save wrote it, at the level the save asked for.</summary>
    public bool Fresh { get; init; }

    public byte[] Bytes => bytes ?? Stored!.Inflate();

    public static implicit operator OpcPart(byte[] bytes) => new(bytes);
}

/// <summary>The parts of a package, with their content types and relationships.</summary>
internal sealed class OpcPackage
{
    public readonly Dictionary<string, OpcPart> Parts = new(StringComparer.OrdinalIgnoreCase);
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

    public byte[]? Get(string part) => Parts.TryGetValue(part, out var p) ? p.Bytes : null;

    /// <summary>The part's content as a stream: a large part read once need not be inflated into memory whole.</summary>
    public Stream? OpenRead(string part) =>
        !Parts.TryGetValue(part, out var p) ? null : p.Stored is { } stored ? stored.OpenRead() : new MemoryStream(p.Bytes, false);

    public List<Relationship> RelsOf(string part, XmlReaderSettings settings)
    {
        var list = new List<Relationship>();
        var bytes = Get(RelsNameOf(part));
        if (bytes == null) return list;
        Docx.PackageCheck.RefuseDocumentType(bytes, RelsNameOf(part));
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

    /// <summary>The package of an archive held in memory; parts stay compressed until read.</summary>
    public static OpcPackage Read(byte[] file, long maxPart, long maxTotal)
    {
        var pkg = new OpcPackage();
        foreach (var entry in ZipReader.Read(file, maxPart, maxTotal)) pkg.Parts[entry.Name] = new OpcPart(entry);
        var ct = pkg.Get("[Content_Types].xml") ?? throw new FileCorruptedException("The package has no content types part.");
        pkg.ReadContentTypes(ct);
        return pkg;
    }

    private void ReadContentTypes(byte[] bytes)
    {
        Docx.PackageCheck.RefuseDocumentType(bytes, "[Content_Types].xml");
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
