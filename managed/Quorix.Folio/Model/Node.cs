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

    public abstract NodeType NodeType { get; }

    /// <summary>The document the node belongs to, whether or not it is in the tree yet.</summary>
    public DocumentBase? Document => doc;

    public CompositeNode? ParentNode => parent;

    public virtual bool IsComposite => false;

    public Node? NextSibling
    {
        get
        {
            var n = next;
            while (n != null && n.IsOpaque) n = n.next;
            return n;
        }
    }

    public Node? PreviousSibling
    {
        get
        {
            var n = prev;
            while (n != null && n.IsOpaque) n = n.prev;
            return n;
        }
    }

    public Range Range => new Range(this);

    /// <summary>Nodes the engine keeps only to write back content it does not model; never shown.</summary>
    internal virtual bool IsOpaque => false;

    public abstract string GetText();

    internal virtual void AppendText(StringBuilder sb) => sb.Append(GetText());

    public override string ToString() => GetText();

    public Node Clone(bool isCloneChildren) => CloneTo(doc, isCloneChildren);

    internal abstract Node CloneTo(DocumentBase? target, bool deep);

    /// <summary>Walks the node and everything below it with the visitor; false when the visitor stopped the walk.</summary>
    public bool Accept(DocumentVisitor visitor)
    {
        ArgumentNullException.ThrowIfNull(visitor);
        return AcceptCore(visitor) != VisitorAction.Stop;
    }

    internal abstract VisitorAction AcceptCore(DocumentVisitor visitor);

    public void Remove()
    {
        parent?.RemoveChild(this);
    }

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
