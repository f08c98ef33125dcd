using System.Collections;
using System.Text;

namespace Quorix.Folio;

/// <summary>A node that holds child nodes.</summary>
public abstract class CompositeNode : Node, IEnumerable<Node>
{
    private Node? head;
    private Node? tail;

    // A loaded document builds its nodes when they are first reached, and every walk of the
    // tree starts from these two; writes come only after a read, so they need no check.
    internal Node? first
    {
        get
        {
            if (pending) BuildPending();
            return head;
        }
        set => head = value;
    }

    internal Node? last
    {
        get
        {
            if (pending) BuildPending();
            return tail;
        }
        set => tail = value;
    }

    private protected bool pending;

    private protected virtual void BuildPending() { }

    /// <summary>Forgets the children without unlinking them one by one; for a build that failed.</summary>
    private protected void DropChildren() => head = tail = null;

    private protected CompositeNode(DocumentBase? doc) : base(doc) { }

    /// <summary>Always true: the node can have children.</summary>
    public override bool IsComposite => true;

    /// <summary>Whether the node has any child.</summary>
    public bool HasChildNodes => FirstChild != null;

    /// <summary>The node's first child; null when it has none.</summary>
    public Node? FirstChild
    {
        get
        {
            var n = first;
            while (n != null && n.IsOpaque) n = n.next;
            return n;
        }
    }

    /// <summary>The node's last child; null when it has none.</summary>
    public Node? LastChild
    {
        get
        {
            var n = last;
            while (n != null && n.IsOpaque) n = n.prev;
            return n;
        }
    }

    /// <summary>The node's children, of every kind.</summary>
    public NodeCollection ChildNodes => new NodeCollection(this, NodeType.Any, false);

    /// <summary>The children of one kind, or every descendant of that kind when isDeep, as a live collection.</summary>
    public NodeCollection GetChildNodes(NodeType nodeType, bool isDeep) => new NodeCollection(this, nodeType, isDeep);

    /// <summary>The child (or descendant, when isDeep) of a kind at index, negative counting from the end; null when out of range.</summary>
    public Node? GetChild(NodeType nodeType, int index, bool isDeep) => GetChildNodes(nodeType, isDeep).ElementAtOrNull(index);

    /// <summary>The position of child among the node's children; -1 when it is not one of them.</summary>
    public int IndexOf(Node child)
    {
        int i = 0;
        for (var n = first; n != null; n = n.next)
        {
            if (n.IsOpaque) continue;
            if (n == child) return i;
            i++;
        }
        return -1;
    }

    /// <summary>The text of every descendant, control characters included.</summary>
    public override string GetText()
    {
        var sb = new TextSink();
        AppendText(sb);
        return sb.ToString();
    }

    internal override void AppendText(TextSink sb)
    {
        for (var n = first; n != null; n = n.next) n.AppendText(sb);
    }

    /// <summary>Throws when the child may not live in this container; the tree must stay writable.</summary>
    internal abstract bool CanHold(Node child);

    /// <summary>Adds newChild as the last child and returns it.</summary>
    public Node AppendChild(Node newChild) => InsertAfter(newChild, last);

    /// <summary>Adds newChild as the first child and returns it.</summary>
    public Node PrependChild(Node newChild) => InsertBefore(newChild, first);

    /// <summary>Inserts newChild after refChild (first when refChild is null) and returns it.</summary>
    public Node InsertAfter(Node newChild, Node? refChild)
    {
        Check(newChild, refChild);
        return Move(newChild, refChild, static (p, c, r) =>
        {
            if (r == null) p.LinkFirst(c);
            else p.LinkAfter(c, r);
        });
    }

    /// <summary>Inserts newChild before refChild (last when refChild is null) and returns it.</summary>
    public Node InsertBefore(Node newChild, Node? refChild)
    {
        Check(newChild, refChild);
        return Move(newChild, refChild, static (p, c, r) =>
        {
            if (r == null) p.LinkLast(c);
            else if (r.prev == null) p.LinkFirst(c);
            else p.LinkAfter(c, r.prev);
        });
    }

    // A node that already has a parent leaves it first; when the insertion is refused (a node
    // changing callback threw), the node goes back where it was, so nothing is lost.
    private Node Move(Node newChild, Node? refChild, Action<CompositeNode, Node, Node?> link)
    {
        var oldParent = newChild.parent;
        var oldPrev = newChild.prev;
        oldParent?.Unlink(newChild);
        try
        {
            link(this, newChild, refChild);
        }
        catch when (oldParent != null && newChild.parent == null)
        {
            oldParent.Attach(newChild, oldPrev);
            throw;
        }
        return newChild;
    }

    /// <summary>Removes oldChild from the node's children and returns it.</summary>
    public Node RemoveChild(Node oldChild)
    {
        ArgumentNullException.ThrowIfNull(oldChild);
        if (oldChild.parent != this) throw new ArgumentException("The node is not a child of this node.", nameof(oldChild));
        Unlink(oldChild);
        return oldChild;
    }

    /// <summary>Removes every child of the node.</summary>
    public void RemoveAllChildren()
    {
        while (first != null) Unlink(first);
    }

    private void Check(Node newChild, Node? refChild)
    {
        ArgumentNullException.ThrowIfNull(newChild);
        if (refChild != null && refChild.parent != this)
            throw new ArgumentException("The reference node is not a child of this node.", nameof(refChild));
        if (newChild.doc != doc && doc != null)
            throw new ArgumentException("The newNode was created from a different document than the one that created this node; import it first.", nameof(newChild));
        for (Node? p = this; p != null; p = p.parent)
            if (p == newChild) throw new ArgumentException("A node cannot be inserted into itself or its descendants.", nameof(newChild));
        if (!CanHold(newChild))
            throw new ArgumentException($"Cannot insert a node of type {newChild.NodeType} into a node of type {NodeType}.", nameof(newChild));
    }

    // Raw links skip validation: the reader builds trees it has already checked.
    internal void LinkLast(Node child) => Link(child, last);

    private void LinkFirst(Node child) => Link(child, null);

    private void LinkAfter(Node child, Node after) => Link(child, after);

    /// <summary>The callback told of changes to this container's children; none while a loaded
    /// document builds its nodes.</summary>
    private INodeChangingCallback? Listener => doc is { } d && !d.BuildingNodes ? d.NodeChangingCallback : null;

    private void Link(Node child, Node? after)
    {
        var listener = Listener;
        if (listener == null)
        {
            Attach(child, after);
            return;
        }
        var args = new NodeChangingArgs(child, null, this, NodeChangingAction.Insert);
        listener.NodeInserting(args);
        Attach(child, after);
        listener.NodeInserted(args);
    }

    /// <summary>Links the child after <paramref name="after"/>, or first when that is null; no checks, no events.</summary>
    private void Attach(Node child, Node? after)
    {
        child.parent = this;
        child.prev = after;
        var following = after == null ? first : after.next;
        child.next = following;
        if (following == null) last = child; else following.prev = child;
        if (after == null) first = child; else after.next = child;
        Touch();
    }

    internal void Unlink(Node child)
    {
        var listener = Listener;
        if (listener == null)
        {
            Detach(child);
            return;
        }
        var args = new NodeChangingArgs(child, this, null, NodeChangingAction.Remove);
        listener.NodeRemoving(args);
        Detach(child);
        listener.NodeRemoved(args);
    }

    private void Detach(Node child)
    {
        if (child.prev == null) first = child.next; else child.prev.next = child.next;
        if (child.next == null) last = child.prev; else child.next.prev = child.prev;
        child.parent = null;
        child.prev = child.next = null;
        Touch();
    }

    internal void CloneChildrenInto(CompositeNode copy, DocumentBase? target)
    {
        List<(OpaqueNode Source, OpaqueNode Copy)>? open = null;
        for (var n = first; n != null; n = n.next)
        {
            var c = n.CloneTo(target, true);
            c.Rev = n.Rev;
            copy.LinkLast(c);
            // Markers of one container are siblings; the copies are paired like the originals.
            if (n is OpaqueNode { Partner: { } partner } o)
            {
                var oc = (OpaqueNode)c;
                if (o.Opens) (open ??= new()).Add((o, oc));
                else if (open?.FindIndex(x => x.Source == partner) is int i and >= 0)
                {
                    oc.Partner = open[i].Copy;
                    open[i].Copy.Partner = oc;
                    open.RemoveAt(i);
                }
            }
        }
    }

    /// <summary>Visits the children after the start visit's answer, then the end visit. The next sibling
    /// is taken before a child is visited, so a visitor may remove the node it is given.</summary>
    private protected VisitorAction Walk<T>(DocumentVisitor visitor, VisitorAction start, Func<DocumentVisitor, T, VisitorAction> end) where T : CompositeNode
    {
        if (start != VisitorAction.Continue) return start == VisitorAction.Stop ? VisitorAction.Stop : VisitorAction.Continue;
        for (var n = first; n != null;)
        {
            var following = n.next;
            if (n.AcceptCore(visitor) == VisitorAction.Stop) return VisitorAction.Stop;
            n = following;
        }
        return end(visitor, (T)this) == VisitorAction.Stop ? VisitorAction.Stop : VisitorAction.Continue;
    }

    /// <summary>All descendants in document order, opaque ones included, for writers.</summary>
    internal IEnumerable<Node> RawChildren()
    {
        for (var n = first; n != null; n = n.next) yield return n;
    }

    /// <summary>The node's children in order.</summary>
    public IEnumerator<Node> GetEnumerator() => ChildNodes.GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
