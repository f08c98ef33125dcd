using System.Collections;

namespace Quorix.Folio;

public sealed class BookmarkStart : Node
{
    private string name;

    public BookmarkStart(DocumentBase doc, string name) : base(doc) { this.name = Check(name); }

    public override NodeType NodeType => NodeType.BookmarkStart;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitBookmarkStart(this);

    public string Name
    {
        get => name;
        set => name = Check(value);
    }

    public Bookmark Bookmark => new Bookmark(this);

    internal static string Check(string name)
    {
        ArgumentException.ThrowIfNullOrEmpty(name);
        return name;
    }

    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new BookmarkStart(target!, name);
}

public sealed class BookmarkEnd : Node
{
    private string name;

    public BookmarkEnd(DocumentBase doc, string name) : base(doc) { this.name = BookmarkStart.Check(name); }

    public override NodeType NodeType => NodeType.BookmarkEnd;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitBookmarkEnd(this);

    public string Name
    {
        get => name;
        set => name = BookmarkStart.Check(value);
    }

    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new BookmarkEnd(target!, name);
}

/// <summary>A named range between a bookmark start and the end of the same name.</summary>
public sealed class Bookmark
{
    private readonly BookmarkStart start;

    internal Bookmark(BookmarkStart start) { this.start = start; }

    public BookmarkStart BookmarkStart => start;

    public BookmarkEnd? BookmarkEnd
    {
        get
        {
            var root = (Node?)start.Document ?? start;
            for (Node? n = start; n != null; n = n.NextPreOrder(root))
                if (n is BookmarkEnd e && e.Name == start.Name) return e;
            return null;
        }
    }

    public string Name
    {
        get => start.Name;
        set
        {
            var end = BookmarkEnd;
            start.Name = value;
            if (end != null) end.Name = value;
        }
    }

    /// <summary>Text between start and end; setting it replaces what is in between with one run.</summary>
    public string Text
    {
        get => TextRange.Between(start, BookmarkEnd);
        set => TextRange.ReplaceBetween(start, BookmarkEnd, value ?? "");
    }

    public void Remove()
    {
        BookmarkEnd?.Remove();
        start.Remove();
    }
}

public sealed class BookmarkCollection : IEnumerable<Bookmark>
{
    private readonly Node root;

    internal BookmarkCollection(Node root) { this.root = root; }

    private List<Bookmark> Items()
    {
        var list = new List<Bookmark>();
        if (root is CompositeNode c)
            foreach (BookmarkStart s in c.GetChildNodes(NodeType.BookmarkStart, true)) list.Add(s.Bookmark);
        return list;
    }

    public int Count => Items().Count;

    public Bookmark this[int index]
    {
        get
        {
            var items = Items();
            int i = index < 0 ? items.Count + index : index;
            if (i < 0 || i >= items.Count) throw new ArgumentOutOfRangeException(nameof(index));
            return items[i];
        }
    }

    /// <summary>Null when there is no bookmark of that name.</summary>
    public Bookmark? this[string bookmarkName] =>
        Items().Find(b => string.Equals(b.Name, bookmarkName, StringComparison.OrdinalIgnoreCase));

    public void Remove(string bookmarkName) => this[bookmarkName]?.Remove();

    public void Remove(Bookmark bookmark) => bookmark.Remove();

    public void RemoveAt(int index) => this[index].Remove();

    public void Clear()
    {
        foreach (var b in Items()) b.Remove();
    }

    public IEnumerator<Bookmark> GetEnumerator() => Items().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
