using System.Xml;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>Writes the markers of kept containers so that the markup stays balanced, however the
/// content between them was edited: an end whose start is not open in this container is left out,
/// and a start whose end went elsewhere is closed where the container's content ends. Tracked
/// changes are wrapped in their elements again, inside the containers.</summary>
internal sealed class KeptContainers
{
    private List<OpaqueNode>? open;
    // The markup this content is written inside (a content control's paragraph), whose open
    // tracked change covers this content too.
    private readonly KeptContainers? enclosing;

    public KeptContainers(KeptContainers? enclosing = null) { this.enclosing = enclosing; }

    private bool OpenOutside(PropElement rev) =>
        outer?.Exists(o => ReferenceEquals(o, rev)) == true ||
        (enclosing != null && (ReferenceEquals(enclosing.change, rev) || enclosing.OpenOutside(rev)));
    // The tracked change whose element is open at the current container level, and the one open
    // outside each container that was entered.
    private PropElement? change;
    private List<PropElement?>? outer;

    /// <summary>Opens or closes tracked-change elements as the node about to be written needs.</summary>
    public void Track(XmlWriter w, PropElement? rev)
    {
        if (ReferenceEquals(rev, change)) return;
        EndChange(w);
        if (rev == null || OpenOutside(rev)) return;
        w.WriteStartElement(rev.Local, Ns.W);
        PropElement.WriteAttrs(w, rev.Attrs);
        change = rev;
    }

    private void EndChange(XmlWriter w)
    {
        if (change == null) return;
        w.WriteEndElement();
        change = null;
    }

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
            (outer ??= new()).Add(change);
            change = null;
            w.WriteRaw(o.Xml);
            return;
        }
        int i = open?.LastIndexOf(o.Partner) ?? -1;
        if (i < 0) return;
        CloseDownTo(w, i + 1);
        EndChange(w);
        w.WriteRaw(o.Xml);
        change = outer![i];
        open!.RemoveAt(i);
        outer.RemoveAt(i);
    }

    public void CloseAll(XmlWriter w)
    {
        CloseDownTo(w, 0);
        EndChange(w);
    }

    private void CloseDownTo(XmlWriter w, int level)
    {
        if (open == null) return;
        for (int k = open.Count - 1; k >= level; k--)
        {
            EndChange(w);
            w.WriteRaw(open[k].Partner!.Xml);
            change = outer![k];
            open.RemoveAt(k);
            outer.RemoveAt(k);
        }
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
