using System.Globalization;
using System.Xml;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>Reads footnote, endnote and comment parts; the body places them at their references.</summary>
internal static class NotesReader
{
    public static void ReadNotes(Document doc, OpcPackage pkg, string part, SharedNotes notes, bool endnotes)
    {
        var bytes = pkg.Get(part);
        if (bytes == null) return;
        var ctx = new ReadContext(doc, pkg, part, notes);
        using var r = DocxReader.Open(bytes);
        DocxState.Of(doc).Roots[part] = ctx.Root = DocxReader.Root(r, endnotes ? "endnotes" : "footnotes", part);
        if (r.IsEmptyElement) return;
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of the notes part.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            var type = r.GetAttribute("type", Ns.W);
            var id = r.GetAttribute("id", Ns.W);
            if (type != null && type != "normal" || id == null)
            {
                // Separators are kept as they are and written back first.
                (endnotes ? DocxState.Of(doc).EndnoteSeparators : DocxState.Of(doc).FootnoteSeparators).Add(PropElement.Read(r));
                continue;
            }
            var note = new Footnote(doc, endnotes ? FootnoteType.Endnote : FootnoteType.Footnote);
            BodyReader.ReadBlocks(r, note, ctx);
            (endnotes ? notes.Endnotes : notes.Footnotes)[id] = note;
        }
    }

    public static void ReadComments(Document doc, OpcPackage pkg, string part, SharedNotes notes)
    {
        var bytes = pkg.Get(part);
        if (bytes == null) return;
        var ctx = new ReadContext(doc, pkg, part, notes);
        using var r = DocxReader.Open(bytes);
        DocxState.Of(doc).Roots[part] = ctx.Root = DocxReader.Root(r, "comments", part);
        if (r.IsEmptyElement) return;
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of the comments part.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.LocalName != "comment") { r.Skip(); continue; }
            var id = r.GetAttribute("id", Ns.W) ?? "";
            var c = new Comment(doc, r.GetAttribute("author", Ns.W) ?? "", r.GetAttribute("initials", Ns.W) ?? "", ParseDate(r.GetAttribute("date", Ns.W)));
            c.Id = Units.ParseInt(id) ?? -1;
            BodyReader.ReadBlocks(r, c, ctx);
            notes.Comments[id] = c;
        }
    }

    private static DateTime ParseDate(string? s) =>
        s != null && DateTime.TryParse(s, CultureInfo.InvariantCulture, DateTimeStyles.AdjustToUniversal | DateTimeStyles.AssumeUniversal, out var d)
            ? d : DateTime.MinValue;
}
