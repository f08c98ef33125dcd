using System.Xml;
using Quorix.Folio.Docx;

namespace Quorix.Folio.Formatting;

/// <summary>One property element kept exactly as read, so that unknown properties survive a round trip.</summary>
internal sealed class PropElement
{
    internal readonly record struct Attr(string Ns, string Local, string Value, string? Prefix = null);

    public string Ns;
    // Kept so foreign elements are written under the prefix their file declared.
    public string? Prefix;
    public string Local;
    public List<Attr>? Attrs;
    public List<PropElement>? Children;
    public string? Text;

    public PropElement(string local, string ns = Docx.Ns.W)
    {
        Local = local;
        Ns = ns;
    }

    /// <summary>The attributes of the element the reader stands on, declarations excepted; null when none.</summary>
    public static List<Attr>? ReadAttrs(XmlReader r)
    {
        if (!r.HasAttributes) return null;
        List<Attr>? list = null;
        while (r.MoveToNextAttribute())
        {
            if (r.NamespaceURI == Docx.Ns.Xmlns) continue;
            (list ??= new List<Attr>(r.AttributeCount)).Add(new Attr(r.NamespaceURI, r.LocalName, r.Value, r.NamespaceURI is "" or Docx.Ns.W ? null : r.Prefix));
        }
        r.MoveToElement();
        return list;
    }

    public static void WriteAttrs(XmlWriter w, List<Attr>? attrs)
    {
        if (attrs == null) return;
        foreach (var a in attrs) WriteAttr(w, a);
    }

    public static void WriteAttr(XmlWriter w, Attr a)
    {
        if (a.Prefix != null && a.Ns.Length > 0) w.WriteAttributeString(a.Prefix, a.Local, a.Ns, a.Value);
        else w.WriteAttributeString(a.Local, a.Ns.Length == 0 ? null : a.Ns, a.Value);
    }

    /// <summary>Whether a namespace is the main one; elements read from files carry the same instance, so this rarely compares text.</summary>
    public static bool IsMain(string ns) => ReferenceEquals(ns, Docx.Ns.W) || ns == Docx.Ns.W;

    public string? Get(string local, string ns = Docx.Ns.W)
    {
        if (Attrs == null) return null;
        foreach (var a in Attrs)
            if (a.Local == local && a.Ns == ns) return a.Value;
        return null;
    }

    public PropElement Set(string local, string? value, string ns = Docx.Ns.W)
    {
        FormatStamp.Bump();
        Attrs ??= new List<Attr>(2);
        for (int i = 0; i < Attrs.Count; i++)
        {
            if (Attrs[i].Local != local || Attrs[i].Ns != ns) continue;
            if (value == null) Attrs.RemoveAt(i);
            else Attrs[i] = new Attr(ns, local, value);
            return this;
        }
        if (value != null) Attrs.Add(new Attr(ns, local, value));
        return this;
    }

    public PropElement? Child(string local)
    {
        if (Children == null) return null;
        foreach (var c in Children)
            if (c.Local == local && c.Ns == Docx.Ns.W) return c;
        return null;
    }

    /// <summary>Takes the other element's attributes and children in place of its own.</summary>
    public void CopyFrom(PropElement other)
    {
        FormatStamp.Bump();
        Attrs = other.Attrs;
        Children = other.Children;
    }

    public PropElement Clone()
    {
        var c = new PropElement(Local, Ns) { Text = Text, Prefix = Prefix };
        if (Attrs != null) c.Attrs = new List<Attr>(Attrs);
        if (Children != null) c.Children = Children.ConvertAll(x => x.Clone());
        return c;
    }

    /// <summary>Reads the element the reader stands on, with its subtree; leaves the reader after it.</summary>
    // Deeper markup is refused: the readers recurse, and a stack overflow would end the process.
    internal const int MaxDepth = 200;

    public static PropElement Read(XmlReader r)
    {
        if (r.Depth > MaxDepth) throw new FileCorruptedException($"The XML nests more than {MaxDepth} elements deep.");
        // The main namespace is stored as our own instance so that lookups compare references.
        bool main = r.NamespaceURI == Docx.Ns.W;
        var e = new PropElement(r.LocalName, main ? Docx.Ns.W : r.NamespaceURI) { Prefix = main ? null : r.Prefix };
        if (r.HasAttributes)
        {
            e.Attrs = new List<Attr>(r.AttributeCount);
            while (r.MoveToNextAttribute())
            {
                if (r.NamespaceURI == Docx.Ns.Xmlns) continue;
                e.Attrs.Add(new Attr(r.NamespaceURI, r.LocalName, r.Value, r.NamespaceURI is "" or Docx.Ns.W ? null : r.Prefix));
            }
            r.MoveToElement();
        }
        e.Children = ReadContent(r, out e.Text);
        return e;
    }

    /// <summary>Reads the child elements and text of the element the reader stands on, leaving the
    /// reader after it; the element's own name and attributes are not kept. Null when it has no children.</summary>
    public static List<PropElement>? ReadContent(XmlReader r, out string? text)
    {
        text = null;
        if (r.IsEmptyElement)
        {
            r.Read();
            return null;
        }
        List<PropElement>? children = null;
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            switch (r.NodeType)
            {
                case XmlNodeType.Element:
                    (children ??= new List<PropElement>()).Add(Read(r));
                    break;
                case XmlNodeType.Text:
                case XmlNodeType.CDATA:
                case XmlNodeType.SignificantWhitespace:
                    text += r.Value;
                    r.Read();
                    break;
                default:
                    if (r.EOF) throw new XmlException("Unexpected end of XML.");
                    r.Read();
                    break;
            }
        }
        r.Read();
        return children;
    }

    public void Write(XmlWriter w)
    {
        if (Prefix != null) w.WriteStartElement(Prefix, Local, Ns);
        else w.WriteStartElement(Local, Ns);
        WriteAttrs(w, Attrs);
        if (Text != null) w.WriteString(Text);
        if (Children != null)
            foreach (var c in Children) c.Write(w);
        w.WriteEndElement();
    }
}
