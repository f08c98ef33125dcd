using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>Relationships of one part being written, with fresh identifiers for what the save adds.</summary>
internal sealed class RelScope
{
    public readonly string Part;
    public readonly List<Relationship> Rels;
    private int next;
    public bool Dirty;

    public RelScope(string part, List<Relationship> rels)
    {
        Part = part;
        Rels = rels;
        foreach (var r in rels)
            if (r.Id.StartsWith("rId", StringComparison.Ordinal) && int.TryParse(r.Id.AsSpan(3), out var n)) next = Math.Max(next, n);
    }

    public string Add(string type, string target, bool external = false, string? preferredId = null)
    {
        if (preferredId != null && !Has(preferredId))
        {
            Rels.Add(new Relationship { Id = preferredId, Type = type, Target = target, External = external });
            Dirty = true;
            return preferredId;
        }
        var id = "rId" + (++next);
        while (Rels.Exists(r => r.Id == id)) id = "rId" + (++next);
        Rels.Add(new Relationship { Id = id, Type = type, Target = target, External = external });
        Dirty = true;
        return id;
    }

    public bool Has(string id) => Rels.Exists(r => r.Id == id);

    public void Write(XmlWriter w)
    {
        w.WriteStartDocument(true);
        w.WriteStartElement("Relationships", Ns.PkgRels);
        foreach (var r in Rels)
        {
            w.WriteStartElement("Relationship", Ns.PkgRels);
            w.WriteAttributeString("Id", r.Id);
            w.WriteAttributeString("Type", r.Type);
            w.WriteAttributeString("Target", r.Target);
            if (r.External) w.WriteAttributeString("TargetMode", "External");
            w.WriteEndElement();
        }
        w.WriteEndElement();
        w.WriteEndDocument();
    }
}

/// <summary>Everything shared by the parts of one save.</summary>
internal sealed class SaveState
{
    public readonly Document Doc;
    public readonly OpcPackage Pkg;
    public readonly List<(int Id, Footnote Note)> Footnotes = new();
    public readonly List<(int Id, Footnote Note)> Endnotes = new();
    public readonly List<Comment> Comments = new();
    public readonly HashSet<int> CommentIds = new();
    // Identifiers that comment ranges in the model use: a comment numbered afresh must not take one.
    public readonly HashSet<int> RangeIds = new();
    public readonly Dictionary<byte[], string> MediaParts = new(ReferenceEqualityComparer.Instance);
    public readonly HashSet<string> ImageExtensions = new(StringComparer.OrdinalIgnoreCase);
    public int FootnoteBase = 1;
    public int EndnoteBase = 1;
    public int DocPrId = 1000;
    public int BookmarkId;
    // The deflate level parts are compressed at as they are written.
    public int Deflate = 4;
    // Each distinct formatting is turned into its elements once per save.
    private readonly Dictionary<AttrSet, List<PropElement>> runProps = new(ReferenceEqualityComparer.Instance);
    private readonly Dictionary<AttrSet, List<PropElement>> paragraphProps = new(ReferenceEqualityComparer.Instance);

    public List<PropElement> RunElements(AttrSet attrs) => Encoded(runProps, PropsCodec.Run, attrs);

    public List<PropElement> ParagraphElements(AttrSet attrs) => Encoded(paragraphProps, PropsCodec.Paragraph, attrs);

    private readonly Dictionary<(PropsCodec, AttrSet), List<PropElement>> blockProps = new();

    /// <summary>The elements of a table's, row's, cell's or section's attributes; equal sets are encoded once.</summary>
    public List<PropElement> Elements(PropsCodec codec, AttrSet attrs)
    {
        if (!blockProps.TryGetValue((codec, attrs), out var list)) blockProps[(codec, attrs)] = list = codec.Encode(attrs);
        return list;
    }

    private static List<PropElement> Encoded(Dictionary<AttrSet, List<PropElement>> cache, PropsCodec codec, AttrSet attrs)
    {
        if (!cache.TryGetValue(attrs, out var list)) cache[attrs] = list = codec.Encode(attrs);
        return list;
    }
    public int MediaCounter;

    public SaveState(Document doc, OpcPackage pkg)
    {
        Doc = doc;
        Pkg = pkg;
    }

    /// <summary>The part holding the picture, written once per save however often it is used.</summary>
    public string MediaPart(byte[] bytes, ImageInfo info)
    {
        if (MediaParts.TryGetValue(bytes, out var part)) return part;
        string name;
        do name = $"word/media/qimage{++MediaCounter}.{info.Extension}";
        while (Pkg.Parts.ContainsKey(name));
        Pkg.Parts[name] = bytes;
        ImageExtensions.Add(info.Extension);
        Pkg.Defaults.TryAdd(info.Extension, info.ContentType);
        MediaParts[bytes] = name;
        return name;
    }
}

/// <summary>Per-part writing state: relationships and the open fields' code/result state.</summary>
internal sealed class PartWriter
{
    public readonly SaveState State;
    public readonly RelScope Rels;
    public readonly Dictionary<string, int> BookmarkIds = new();
    // One entry per open field: true while its code is being written.
    public readonly Stack<bool> Fields = new();
    // The visitor that writes this part's inline nodes, made on first use.
    public DocumentVisitor? Inlines;

    public PartWriter(SaveState state, RelScope rels)
    {
        State = state;
        Rels = rels;
    }

    public bool InFieldCode => Fields.Count > 0 && Fields.Peek();
}
