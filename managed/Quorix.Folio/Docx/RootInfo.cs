using System.Xml;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>Namespace declarations and attributes of a part's root, kept so that
/// markup-compatibility prefixes named in them stay declared on save.</summary>
internal sealed class RootInfo
{
    public readonly List<(string Prefix, string Uri)> Namespaces = new();
    public readonly List<PropElement.Attr> Attrs = new();

    public static RootInfo Read(XmlReader r)
    {
        var info = new RootInfo();
        if (!r.HasAttributes) return info;
        while (r.MoveToNextAttribute())
        {
            if (r.NamespaceURI == Ns.Xmlns) info.Namespaces.Add((r.Prefix == "xmlns" ? r.LocalName : "", r.Value));
            else info.Attrs.Add(new PropElement.Attr(r.NamespaceURI, r.LocalName, r.Value));
        }
        r.MoveToElement();
        return info;
    }

    private static readonly (string, string)[] Required =
    {
        ("w", Ns.W), ("r", Ns.R), ("wp", Ns.WP), ("a", Ns.A), ("pic", Ns.Pic),
    };

    public static void WriteStart(XmlWriter w, string local, RootInfo? info)
    {
        w.WriteStartElement("w", local, Ns.W);
        var declared = new HashSet<string> { "w" };
        foreach (var (p, u) in Required)
        {
            if (p == "w") continue;
            var existing = info?.Namespaces.Find(x => x.Prefix == p);
            if (existing is { } ex && ex.Uri != null && ex.Uri != u) continue;
            w.WriteAttributeString("xmlns", p, Ns.Xmlns, u);
            declared.Add(p);
        }
        if (info == null) return;
        foreach (var (p, u) in info.Namespaces)
        {
            if (p.Length == 0 || !declared.Add(p)) continue;
            w.WriteAttributeString("xmlns", p, Ns.Xmlns, u);
        }
        foreach (var a in info.Attrs)
            w.WriteAttributeString(a.Local, a.Ns.Length == 0 ? null : a.Ns, a.Value);
    }
}
