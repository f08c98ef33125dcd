using System.Collections;

namespace Quorix.Folio;

/// <summary>A live view of the children or descendants of one type under a container.</summary>
[OfDocument(nameof(OwnerDocument))]
public class NodeCollection : IEnumerable<Node>
{
    internal DocumentBase? OwnerDocument => container.Document;

    private readonly CompositeNode container;
    private readonly NodeType type;
    private readonly bool deep;
    // Narrows the nodes of the type further, as a comment's replies among all comments.
    private readonly Func<Node, bool>? filter;
    private List<Node>? cache;
    private int cacheVersion;

    internal NodeCollection(CompositeNode container, NodeType type, bool deep, Func<Node, bool>? filter = null)
    {
        this.container = container;
        this.type = type;
        this.deep = deep;
        this.filter = filter;
    }

    internal CompositeNode Container => container;

    private bool Matches(Node n) => !n.IsOpaque && (type == NodeType.Any || n.NodeType == type) && (filter == null || filter(n));

    // Snapshot rebuilt when the document changes, so indexed access stays O(1) in loops.
    private List<Node> Items
    {
        get
        {
            int v = container.Document?.version ?? -1;
            if (cache != null && v != -1 && v == cacheVersion) return cache;
            var list = new List<Node>();
            if (deep)
            {
                for (Node? n = container.first; n != null; n = n.NextPreOrder(container))
                    if (Matches(n)) list.Add(n);
            }
            else
            {
                for (var n = container.first; n != null; n = n.next)
                    if (Matches(n)) list.Add(n);
            }
            cache = list;
            cacheVersion = v;
            return list;
        }
    }

    /// <summary>How many nodes the collection holds now.</summary>
    public int Count => Items.Count;

    /// <summary>Negative indexes count from the end, as in Python.</summary>
    public Node this[int index]
    {
        get
        {
            var items = Items;
            int i = index < 0 ? items.Count + index : index;
            if (i < 0 || i >= items.Count)
                throw new ArgumentOutOfRangeException(nameof(index), $"Index {index} is out of range for a collection of {items.Count} nodes.");
            return items[i];
        }
    }

    internal Node? ElementAtOrNull(int index)
    {
        var items = Items;
        int i = index < 0 ? items.Count + index : index;
        return i >= 0 && i < items.Count ? items[i] : null;
    }

    /// <summary>The position of node in the collection; -1 when it is not in it.</summary>
    public int IndexOf(Node node) => Items.IndexOf(node);

    /// <summary>Whether node is in the collection.</summary>
    public bool Contains(Node node) => IndexOf(node) >= 0;

    /// <summary>Adds node as the last child of the collection's container.</summary>
    public void Add(Node node) => container.AppendChild(node);

    /// <summary>Inserts node before the one at index.</summary>
    public void Insert(int index, Node node)
    {
        var items = Items;
        if (index < 0 || index > items.Count)
            throw new ArgumentOutOfRangeException(nameof(index), $"Index {index} is out of range for a collection of {items.Count} nodes.");
        if (index == items.Count) container.AppendChild(node);
        else
        {
            var at = items[index];
            at.ParentNode!.InsertBefore(node, at);
        }
    }

    /// <summary>Removes node from the document.</summary>
    public void Remove(Node node) => node.Remove();

    /// <summary>Removes the node at index from the document.</summary>
    public void RemoveAt(int index) => this[index].Remove();

    /// <summary>Removes every node of the collection from the document.</summary>
    public void Clear()
    {
        foreach (var n in Items.ToArray()) n.Remove();
    }

    /// <summary>The nodes as an array, fixed at the time of the call.</summary>
    public Node[] ToArray() => Items.ToArray();

    internal T[] ToArrayOf<T>() where T : Node => Items.Select(n => (T)n).ToArray();

    internal IEnumerator<T> EnumerateOf<T>() where T : Node => ((IEnumerable<T>)ToArrayOf<T>()).GetEnumerator();

    /// <summary>The nodes in document order, as they are when the walk starts.</summary>
    public IEnumerator<Node> GetEnumerator() => ((IEnumerable<Node>)Items.ToArray()).GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}

