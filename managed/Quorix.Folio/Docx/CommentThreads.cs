using System.Globalization;
using System.Text;
using System.Xml;
using Quorix.Folio.Formatting;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>Reply threads and done marks of comments. They live in a part of their own whose
/// entries name a comment by the identifier of its last paragraph.</summary>
internal static class CommentThreads
{
    private const string PartLocal = "commentsEx";
    private const string EntryLocal = "commentEx";

    public static void Read(Document doc, OpcPackage pkg, string part, IEnumerable<Comment> comments)
    {
        var bytes = pkg.Get(part);
        if (bytes == null) return;
        var byPara = new Dictionary<string, Comment>(StringComparer.OrdinalIgnoreCase);
        foreach (var c in comments)
            if (ParaId(c) is string id) byPara.TryAdd(id, c);
        using var r = DocxReader.Open(bytes);
        if (r.MoveToContent() != XmlNodeType.Element || r.LocalName != PartLocal || r.NamespaceURI != Ns.W15)
            throw new FileCorruptedException($"The part '{part}' does not start with the expected '{PartLocal}' element.");
        var state = DocxState.Of(doc);
        state.Roots[part] = RootInfo.Read(r);
        var root = PropElement.Read(r);
        state.ThreadsKept.Clear();
        foreach (var e in root.Children ?? new List<PropElement>())
        {
            if (e.Ns == Ns.W15 && e.Local == EntryLocal && Attr(e, "paraId") is string pid && byPara.TryGetValue(pid, out var c))
            {
                c.Done = Attr(e, "done") is "1" or "true" or "on";
                if (Attr(e, "paraIdParent") is string parentId && byPara.TryGetValue(parentId, out var parent) && !c.WouldLoop(parent))
                    c.ancestor = parent;
                c.ThreadAttrs = e.Attrs?.Where(a => !Modelled(a)).ToList() is { Count: > 0 } rest ? rest : null;
                c.ThreadChildren = e.Children;
            }
            else
            {
                // An entry for no comment we read, or markup we do not know: written back as it was.
                state.ThreadsKept.Add(e);
            }
        }
    }

    /// <summary>Whether the thread part is written; if so, gives every comment's last paragraph an identifier.</summary>
    public static bool Prepare(Document doc, List<Comment> comments)
    {
        bool had = DocxState.Of(doc).ThreadsKept.Count > 0 || DocxState.Of(doc).Roots.Keys.Any(IsThreadPart);
        if (!had && !comments.Any(c => c.Done || c.ancestor != null || c.ThreadAttrs != null || c.ThreadChildren != null)) return false;
        var used = new HashSet<uint>();
        void Note(Paragraph? p)
        {
            if (p != null && Find(p) is string s && uint.TryParse(s, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out var v)) used.Add(v);
        }
        foreach (var n in doc.GetChildNodes(NodeType.Paragraph, true)) Note((Paragraph)n);
        foreach (var c in DocxState.Of(doc).KeptComments)
            foreach (var n in c.GetChildNodes(NodeType.Paragraph, true)) Note((Paragraph)n);
        // A fixed sequence: the same document saved twice gets the same identifiers.
        uint next = 0x2F1A6C3Bu;
        var taken = new HashSet<string>(StringComparer.OrdinalIgnoreCase);
        foreach (var c in comments)
        {
            var p = c.LastParagraph;
            if (p == null) continue;
            // A copied comment carries its original's identifier; only the first keeps it.
            if (Find(p) is string own && taken.Add(own)) continue;
            uint v;
            do
            {
                next = next * 1664525u + 1013904223u;
                v = next & 0x7FFFFFFFu;
            } while (v == 0 || !used.Add(v));
            // A new list: a copied paragraph may share its attributes with the original.
            var attrs = p.XAttrs?.Where(a => !(a.Ns == Ns.W14 && a.Local == "paraId")).ToList() ?? new List<PropElement.Attr>();
            attrs.Add(new PropElement.Attr(Ns.W14, "paraId", v.ToString("X8", CultureInfo.InvariantCulture), "w14"));
            p.XAttrs = attrs;
            taken.Add(Find(p)!);
        }
        return true;
    }

    public static void Write(OpcPackage pkg, Document doc, List<Comment> comments, RelScope mainRels,
        IEnumerable<string> oldParts, Dictionary<string, string> oldIds)
    {
        var part = oldParts.FirstOrDefault(IsThreadPart) ?? "word/commentsExtended.xml";
        mainRels.Add(Ns.RelCommentsExtended, DrawingWriter.Relative(mainRels.Part, part), false, oldIds.GetValueOrDefault(part));
        var written = new HashSet<Comment>(comments.Where(c => ParaId(c) != null));
        var info = DocxState.Of(doc).Roots.GetValueOrDefault(part);
        using var ms = new MemoryStream();
        using (var w = XmlWriter.Create(ms, new XmlWriterSettings { Encoding = new UTF8Encoding(false) }))
        {
            w.WriteStartDocument(true);
            w.WriteStartElement("w15", PartLocal, Ns.W15);
            var declared = new HashSet<string> { "w15" };
            foreach (var (p, u) in info?.Namespaces ?? new List<(string, string)>())
                if (p.Length > 0 && declared.Add(p)) w.WriteAttributeString("xmlns", p, Ns.Xmlns, u);
            foreach (var a in info?.Attrs ?? new List<PropElement.Attr>())
                w.WriteAttributeString(a.Local, a.Ns.Length == 0 ? null : a.Ns, a.Value);
            foreach (var c in comments)
            {
                if (!written.Contains(c)) continue;
                w.WriteStartElement("w15", EntryLocal, Ns.W15);
                w.WriteAttributeString("w15", "paraId", Ns.W15, ParaId(c)!);
                if (c.ancestor != null && written.Contains(c.ancestor))
                    w.WriteAttributeString("w15", "paraIdParent", Ns.W15, ParaId(c.ancestor)!);
                w.WriteAttributeString("w15", "done", Ns.W15, c.Done ? "1" : "0");
                PropElement.WriteAttrs(w, c.ThreadAttrs);
                if (c.ThreadChildren != null)
                    foreach (var e in c.ThreadChildren) e.Write(w);
                w.WriteEndElement();
            }
            foreach (var e in DocxState.Of(doc).ThreadsKept) e.Write(w);
            w.WriteEndElement();
        }
        pkg.Parts[part] = ms.ToArray();
        pkg.Overrides["/" + part] = Ns.CtCommentsExtended;
    }

    public static bool IsThreadPart(string part) => part.EndsWith("commentsExtended.xml", StringComparison.OrdinalIgnoreCase);

    private static bool Modelled(PropElement.Attr a) => a.Ns == Ns.W15 && a.Local is "paraId" or "paraIdParent" or "done";

    private static string? Attr(PropElement e, string local) =>
        e.Attrs?.FirstOrDefault(a => a.Ns == Ns.W15 && a.Local == local).Value;

    private static string? ParaId(Comment c) => c.LastParagraph is { } p ? Find(p) : null;

    private static string? Find(Paragraph p) =>
        p.XAttrs?.FirstOrDefault(a => a.Ns == Ns.W14 && a.Local == "paraId").Value;
}
