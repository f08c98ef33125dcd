using System.Text;

namespace Quorix.Folio;

/// <summary>Base of every element of the document tree.</summary>
public abstract class Node
{
    internal CompositeNode? parent;
    internal Node? prev;
    internal Node? next;
    internal DocumentBase? doc;
    // Attributes of the element the node was read from (revision ids, paragraph ids), written back as read.
    internal List<Formatting.PropElement.Attr>? XAttrs;
    // The tracked insertion, deletion or move the node came in, shared by the nodes of one change.
    internal Formatting.PropElement? Rev;

    private protected Node(DocumentBase? doc) { this.doc = doc; }

    /// <summary>What kind of node this is.</summary>
    public abstract NodeType NodeType { get; }

    /// <summary>The document the node belongs to, whether or not it is in the tree yet.</summary>
    public DocumentBase? Document => doc;

    /// <summary>The node that holds this one; null when it is in none.</summary>
    public CompositeNode? ParentNode => parent;

    /// <summary>Whether the node can have children.</summary>
    public virtual bool IsComposite => false;

    /// <summary>The node after this one under the same parent; null at the end.</summary>
    public Node? NextSibling
    {
        get
        {
            var n = next;
            while (n != null && n.IsOpaque) n = n.next;
            return n;
        }
    }

    /// <summary>The node before this one under the same parent; null at the start.</summary>
    public Node? PreviousSibling
    {
        get
        {
            var n = prev;
            while (n != null && n.IsOpaque) n = n.prev;
            return n;
        }
    }

    /// <summary>The part of the document this node spans, to find, replace or delete in.</summary>
    public Range Range => new Range(this);

    /// <summary>Nodes the engine keeps only to write back content it does not model; never shown.</summary>
    internal virtual bool IsOpaque => false;

    /// <summary>The node's text, control characters included.</summary>
    public abstract string GetText();

    internal virtual void AppendText(TextSink sb) => sb.Append(GetText());

    /// <summary>The node's text, as get_text gives it.</summary>
    public override string ToString() => GetText();

    /// <summary>A copy of the node, with copies of its descendants when isCloneChildren, not yet inserted.</summary>
    public Node Clone(bool isCloneChildren) => CloneTo(doc, isCloneChildren);

    internal abstract Node CloneTo(DocumentBase? target, bool deep);

    /// <summary>Walks the node and everything below it with the visitor; false when the visitor stopped the walk.</summary>
    public bool Accept(DocumentVisitor visitor)
    {
        ArgumentNullException.ThrowIfNull(visitor);
        return AcceptCore(visitor) != VisitorAction.Stop;
    }

    internal abstract VisitorAction AcceptCore(DocumentVisitor visitor);

    /// <summary>Removes the node from its parent.</summary>
    public void Remove()
    {
        parent?.RemoveChild(this);
    }

    /// <summary>The nearest node of a kind that holds this one; null when there is none.</summary>
    public CompositeNode? GetAncestor(NodeType ancestorType)
    {
        var p = parent;
        while (p != null && p.NodeType != ancestorType) p = p.parent;
        return p;
    }

    /// <summary>The next node in document order, descending into composites.</summary>
    public Node? NextPreOrder(Node rootNode)
    {
        if (this is CompositeNode c && c.first != null) return c.first;
        Node? n = this;
        while (n != null && n != rootNode)
        {
            if (n.next != null) return n.next;
            n = n.parent;
        }
        return null;
    }

    internal void Touch() => doc?.Changed();
}
