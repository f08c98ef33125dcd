using System.Xml;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>State of reading one part: its relationships and the bookmark identifiers seen so far.</summary>
internal sealed class ReadContext
{
    public readonly Document Doc;
    public readonly OpcPackage Pkg;
    public readonly string Part;
    public readonly Dictionary<string, Relationship> Rels;
    public readonly Dictionary<string, string> BookmarkNames = new();
    public readonly SharedNotes Notes;
    public RootInfo? Root;
    public readonly TextBuffer Text = new();

    public ReadContext(Document doc, OpcPackage pkg, string part, SharedNotes notes)
    {
        Doc = doc;
        Pkg = pkg;
        Part = part;
        Notes = notes;
        Rels = new Dictionary<string, Relationship>();
        foreach (var rel in pkg.RelsOf(part, DocxReader.Settings)) Rels.TryAdd(rel.Id, rel);
    }

    public byte[]? Target(string relId)
    {
        if (!Rels.TryGetValue(relId, out var rel) || rel.External) return null;
        return Pkg.Get(OpcPackage.Resolve(Part, rel.Target));
    }

    public string? ExternalTarget(string relId) => Rels.TryGetValue(relId, out var rel) ? rel.Target : null;

    /// <summary>The bytes of a picture linked by an external relationship, as the load's resource
    /// callback decides; null when it is skipped or cannot be read.</summary>
    public byte[]? Linked(string relId) =>
        Rels.TryGetValue(relId, out var rel) && rel.External && Notes.Links != null ? Notes.Links.Get(rel.Target) : null;
}

/// <summary>What the parts of one load share: notes and comments read from their parts before the
/// body places them, and where linked pictures are fetched from.</summary>
internal sealed class SharedNotes
{
    public Formats.Flow.ResourceResolver? Links;

    public readonly Dictionary<string, Footnote> Footnotes = new();
    public readonly Dictionary<string, Footnote> Endnotes = new();
    public readonly Dictionary<string, Comment> Comments = new();
}
