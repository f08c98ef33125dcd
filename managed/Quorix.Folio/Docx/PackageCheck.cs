using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>What loading checks before the model is built: every entry inflates to its stated size
/// and checksum, and every XML part the model will read is well-formed and has the expected root.
/// Damage is thus reported by the load, not by whatever first touches the document.</summary>
internal static class PackageCheck
{
    private static readonly Dictionary<string, string?> RootsByRelation = new()
    {
        [Ns.RelStyles] = "styles",
        [Ns.RelNumbering] = "numbering",
        [Ns.RelFootnotes] = "footnotes",
        [Ns.RelEndnotes] = "endnotes",
        [Ns.RelComments] = "comments",
        [Ns.RelHeader] = "hdr",
        [Ns.RelFooter] = "ftr",
    };

    // Parts at least this large have their checksum computed beside the markup check.
    private const int ParallelChecksumFrom = 1 << 20;

    public static void Run(OpcPackage pkg, string main)
    {
        var xmlParts = new Dictionary<string, string?>(StringComparer.OrdinalIgnoreCase) { [main] = "document" };
        foreach (var rel in pkg.RelsOf(main, DocxReader.Settings))
        {
            if (rel.External || !RootsByRelation.TryGetValue(rel.Type, out var root)) continue;
            var part = OpcPackage.Resolve(main, rel.Target);
            if (pkg.Parts.ContainsKey(part)) xmlParts.TryAdd(part, root);
        }
        foreach (var part in xmlParts.Keys.ToArray())
        {
            var rels = OpcPackage.RelsNameOf(part);
            if (pkg.Parts.ContainsKey(rels)) xmlParts.TryAdd(rels, null);
        }

        // The largest XML part (the main document, as a rule) is checked here, everything else
        // on another thread meanwhile: the rest of the XML, and entries that only have to inflate.
        // Only a load that runs alone spreads out: beside other loads the cores are busy already,
        // and handing work over would only add to it.
        var largest = xmlParts.Keys.MaxBy(p => pkg.Parts[p].Stored?.Size ?? 0)!;
        var others = pkg.Parts.Where(p => !xmlParts.ContainsKey(p.Key) && p.Value.Stored != null).Select(p => p.Value.Stored!).ToArray();
        bool alone = Interlocked.Increment(ref checksRunning) == 1;
        try
        {
            void CheckRest()
            {
                foreach (var (part, root) in xmlParts)
                    if (part != largest) CheckXml(pkg.Parts[part], part, root, alone);
                foreach (var e in others) e.Verify();
            }
            var background = alone ? Task.Run(CheckRest) : null;
            try
            {
                CheckXml(pkg.Parts[largest], largest, xmlParts[largest], alone);
            }
            finally
            {
                // Damage found there is reported even when this part failed first.
                if (background != null) background.GetAwaiter().GetResult();
                else CheckRest();
            }
        }
        finally
        {
            Interlocked.Decrement(ref checksRunning);
        }
    }

    // How many loads are checking their packages now.
    private static int checksRunning;

    private static void CheckXml(OpcPart part, string name, string? root, bool spread)
    {
        var stored = part.Stored;
        var bytes = stored != null ? stored.Inflate(checksum: false) : part.Bytes;
        var checksum = stored == null ? null
            : spread && bytes.Length >= ParallelChecksumFrom ? Task.Run(() => stored.CheckChecksum(bytes))
            : null;
        if (stored != null && checksum == null) stored.CheckChecksum(bytes);
        RefuseDocumentType(bytes, name);
        XmlRootName found;
        try
        {
            found = XmlWellFormedness.Check(bytes);
        }
        finally
        {
            checksum?.GetAwaiter().GetResult();
        }
        // The model's readers refuse deeper nesting; the check says so before they run.
        if (found.MaxDepth > Formatting.PropElement.MaxDepth)
            throw new FileCorruptedException($"The XML nests more than {Formatting.PropElement.MaxDepth} elements deep.");
        if (root != null && (found.LocalName != root || found.NamespaceUri != Ns.W))
            throw new FileCorruptedException($"The part '{name}' does not start with the expected '{root}' element.");
    }

    /// <summary>Parts of a package never declare a document type; one that does is refused with what is
    /// wrong with the file, before a parser reports it in terms of its own settings.</summary>
    internal static void RefuseDocumentType(ReadOnlySpan<byte> xml, string part)
    {
        int at = 0;
        while (true)
        {
            int lt = xml[at..].IndexOf((byte)'<');
            if (lt < 0) return;
            at += lt;
            var rest = xml[at..];
            if (rest.StartsWith("<?"u8)) at += Skip(rest, "?>"u8);
            else if (rest.StartsWith("<!--"u8)) at += Skip(rest, "-->"u8);
            else if (rest.StartsWith("<!DOCTYPE"u8))
                throw new FileCorruptedException($"The part '{part}' declares a document type (<!DOCTYPE ...>), which no part of a DOCX file may contain: the file is damaged or was not written by a word processor, and it is not loaded.");
            else return;
            if (at >= xml.Length) return;
        }
    }

    private static int Skip(ReadOnlySpan<byte> from, ReadOnlySpan<byte> end)
    {
        int i = from.IndexOf(end);
        return i < 0 ? from.Length : i + end.Length;
    }
}
