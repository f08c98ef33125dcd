using System.Collections;

namespace Quorix.Folio;

/// <summary>Where a bookmark begins.</summary>
public sealed class BookmarkStart : Node
{
    private string name;

    /// <summary>A new start of the bookmark called name, not yet inserted.</summary>
    public BookmarkStart(DocumentBase doc, string name) : base(doc) { this.name = Check(name); }

    /// <summary>Always BookmarkStart.</summary>
    public override NodeType NodeType => NodeType.BookmarkStart;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitBookmarkStart(this);

    /// <summary>The bookmark's name.</summary>
    public string Name
    {
        get => name;
        set => name = Check(value);
    }

    /// <summary>The bookmark that begins here.</summary>
    public Bookmark Bookmark => new Bookmark(this);

    internal static string Check(string name)
    {
        ArgumentException.ThrowIfNullOrEmpty(name);
        return name;
    }

    /// <summary>Empty: the mark holds no text.</summary>
    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new BookmarkStart(target!, name);
}

/// <summary>Where a bookmark ends.</summary>
public sealed class BookmarkEnd : Node
{
    private string name;

    /// <summary>A new end of the bookmark called name, not yet inserted.</summary>
    public BookmarkEnd(DocumentBase doc, string name) : base(doc) { this.name = BookmarkStart.Check(name); }

    /// <summary>Always BookmarkEnd.</summary>
    public override NodeType NodeType => NodeType.BookmarkEnd;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitBookmarkEnd(this);

    /// <summary>The bookmark's name.</summary>
    public string Name
    {
        get => name;
        set => name = BookmarkStart.Check(value);
    }

    /// <summary>Empty: the mark holds no text.</summary>
    public override string GetText() => "";

    internal override Node CloneTo(DocumentBase? target, bool deep) => new BookmarkEnd(target!, name);
}

/// <summary>A named range between a bookmark start and the end of the same name.</summary>
public sealed class Bookmark
{
    private readonly BookmarkStart start;

    internal Bookmark(BookmarkStart start) { this.start = start; }

    /// <summary>The node where the bookmark begins.</summary>
    public BookmarkStart BookmarkStart => start;

    /// <summary>The node where the bookmark ends; null when it has no end.</summary>
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

    /// <summary>The bookmark's name; renaming renames both its start and its end.</summary>
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

    /// <summary>Removes the bookmark, keeping the text it marked.</summary>
    public void Remove()
    {
        BookmarkEnd?.Remove();
        start.Remove();
    }
}

/// <summary>The bookmarks of a node, by position or by name.</summary>
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

    /// <summary>How many bookmarks there are.</summary>
    public int Count => Items().Count;

    /// <summary>The bookmark at that position; negative positions count from the end.</summary>
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

    /// <summary>Removes the bookmark of that name, keeping its text; nothing when there is none.</summary>
    public void Remove(string bookmarkName) => this[bookmarkName]?.Remove();

    /// <summary>Removes a bookmark, keeping its text.</summary>
    public void Remove(Bookmark bookmark) => bookmark.Remove();

    /// <summary>Removes the bookmark at index, keeping its text.</summary>
    public void RemoveAt(int index) => this[index].Remove();

    /// <summary>Removes every bookmark, keeping their text.</summary>
    public void Clear()
    {
        foreach (var b in Items()) b.Remove();
    }

    /// <summary>The bookmarks in document order.</summary>
    public IEnumerator<Bookmark> GetEnumerator() => Items().GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}
