using System.Xml;

namespace Quorix.Folio.Docx;

/// <summary>Writes the markers of kept containers so that the markup stays balanced, however the
/// content between them was edited: an end whose start is not open in this container is left out,
/// and a start whose end went elsewhere is closed where the container's content ends.</summary>
internal sealed class KeptContainers
{
    private List<OpaqueNode>? open;

    public void Write(XmlWriter w, OpaqueNode o)
    {
        if (o.Partner == null)
        {
            w.WriteRaw(o.Xml);
            return;
        }
        if (o.Opens)
        {
            (open ??= new()).Add(o);
            w.WriteRaw(o.Xml);
            return;
        }
        int i = open?.LastIndexOf(o.Partner) ?? -1;
        if (i < 0) return;
        for (int k = open!.Count - 1; k > i; k--) w.WriteRaw(open[k].Partner!.Xml);
        open.RemoveRange(i, open.Count - i);
        w.WriteRaw(o.Xml);
    }

    public void CloseAll(XmlWriter w)
    {
        if (open == null) return;
        for (int k = open.Count - 1; k >= 0; k--) w.WriteRaw(open[k].Partner!.Xml);
        open.Clear();
    }

    /// <summary>Whether the nodes from <paramref name="first"/> up to, not including, <paramref name="end"/>
    /// hold both markers of every kept container they hold one of.</summary>
    public static bool Balanced(Node? first, Node? end)
    {
        var seen = new HashSet<OpaqueNode>();
        for (var n = first; n != null && n != end; n = n.next)
            if (n is OpaqueNode { Partner: { } p } o && !seen.Remove(p)) seen.Add(o);
        return seen.Count == 0;
    }
}
