namespace Quorix.Folio;

/// <summary>Whether a node is being inserted or removed.</summary>
public enum NodeChangingAction
{
    /// <summary>The node is being inserted into a parent.</summary>
    Insert = 0,
    /// <summary>The node is being removed from its parent.</summary>
    Remove = 1,
}

/// <summary>A node being inserted or removed, with its parents before and after.</summary>
public sealed class NodeChangingArgs
{
    internal NodeChangingArgs(Node node, Node? oldParent, Node? newParent, NodeChangingAction action)
    {
        Node = node;
        OldParent = oldParent;
        NewParent = newParent;
        Action = action;
    }

    /// <summary>The node inserted or removed.</summary>
    public Node Node { get; }

    /// <summary>The parent before the change; null for an insertion.</summary>
    public Node? OldParent { get; }

    /// <summary>The parent after the change; null for a removal.</summary>
    public Node? NewParent { get; }

    /// <summary>Insertion or removal.</summary>
    public NodeChangingAction Action { get; }
}

/// <summary>Told of every node inserted into or removed from a document's nodes, before and after the
/// change; set on <see cref="DocumentBase.NodeChangingCallback"/>. Moving a node is a removal followed by
/// an insertion. An exception thrown before a change cancels it (a moved node goes back where it was);
/// one thrown after a change leaves the change made. Either way it reaches the caller.</summary>
public interface INodeChangingCallback
{
    /// <summary>Before the node is inserted; its parent is still null.</summary>
    void NodeInserting(NodeChangingArgs args);

    /// <summary>After the node was inserted.</summary>
    void NodeInserted(NodeChangingArgs args);

    /// <summary>Before the node is removed; it is still in its parent.</summary>
    void NodeRemoving(NodeChangingArgs args);

    /// <summary>After the node was removed.</summary>
    void NodeRemoved(NodeChangingArgs args);
}
