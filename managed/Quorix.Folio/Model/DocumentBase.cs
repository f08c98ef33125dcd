using Quorix.Folio.Formatting;
using Quorix.Folio.Lists;

namespace Quorix.Folio;

/// <summary>Owner of a node tree: its styles, lists and the nodes created for it.</summary>
public abstract class DocumentBase : CompositeNode
{
    internal int version;
    private readonly StyleCollection styles;
    private readonly ListCollection lists;

    private protected DocumentBase() : base(null)
    {
        doc = this;
        styles = new StyleCollection(this);
        lists = new ListCollection(this);
    }

    /// <summary>The document's styles.</summary>
    public StyleCollection Styles
    {
        get
        {
            if (pending) BuildPending();
            return styles;
        }
    }

    /// <summary>The document's lists.</summary>
    public ListCollection Lists
    {
        get
        {
            if (pending) BuildPending();
            return lists;
        }
    }

    internal void Changed() => version++;

    /// <summary>Whether the nodes are being built from what a reader kept; no callback hears of that.</summary>
    internal bool BuildingNodes => pending;

    private WarningLog? warnings;

    internal WarningLog Warnings => warnings ??= new WarningLog(this);

    /// <summary>Receives the warnings of layout and saving (those of loading go to
    /// <see cref="Loading.LoadOptions.WarningCallback"/>); none when null.</summary>
    public IWarningCallback? WarningCallback { get; set; }

    /// <summary>Told before and after each node is inserted into or removed from this document's
    /// nodes, by any means; none when null. Loading a document builds its nodes without telling it.</summary>
    public INodeChangingCallback? NodeChangingCallback { get; set; }

    private FormatCascade? cascade;

    /// <summary>The formatting the document's nodes inherit from its styles and defaults.</summary>
    internal FormatCascade Cascade => cascade ??= new FormatCascade(this);

    /// <summary>Held by the long calls on this document (saving, building a loaded model), one thread at a time.</summary>
    internal DocumentGate Gate { get; } = new();

    // Text edits leave the tree's shape (and so version) alone; laid-out pages still depend on them.
    internal int textVersion;

    internal void TextEdited() => textVersion++;

    /// <summary>Whether relationship identifiers read from one document are valid in the other:
    /// true for the document itself and for clones made from the same file.</summary>
    internal bool SharesPackageWith(DocumentBase? other)
    {
        if (other == this) return true;
        return this is Document a && other is Document b && a.Source != null && a.Source == b.Source;
    }

    /// <summary>Copies a node of another document into this one, bringing the styles and lists it uses.</summary>
    public Node ImportNode(Node srcNode, bool isImportChildren) => ImportNode(srcNode, isImportChildren, ImportFormatMode.UseDestinationStyles);

    /// <summary>A copy of a node of another document made fit for this one, its styles resolved as importFormatMode says.</summary>
    public Node ImportNode(Node srcNode, bool isImportChildren, ImportFormatMode importFormatMode)
    {
        ArgumentNullException.ThrowIfNull(srcNode);
        if (srcNode is DocumentBase) throw new ArgumentException("A whole document cannot be imported as a node.", nameof(srcNode));
        return Import(srcNode, isImportChildren, importFormatMode);
    }

    internal Node Import(Node src, bool deep, ImportFormatMode mode)
    {
        var copy = src.CloneTo(this, deep);
        if (src.Document == this || src.Document == null) return copy;
        new NodeImporterCore(src.Document, this, mode).Fix(copy);
        return copy;
    }
}

/// <summary>Carries style and list references across documents.</summary>
internal sealed class NodeImporterCore
{
    private readonly DocumentBase src;
    private readonly DocumentBase dst;
    private readonly ImportFormatMode mode;
    private readonly Dictionary<string, string> styleMap = new();
    private readonly Dictionary<int, int> listMap = new();

    public NodeImporterCore(DocumentBase src, DocumentBase dst, ImportFormatMode mode)
    {
        this.src = src;
        this.dst = dst;
        this.mode = mode;
    }

    public void Fix(Node root)
    {
        for (Node? n = root; n != null; n = n.NextPreOrder(root))
        {
            switch (n)
            {
                case Paragraph p:
                    if (p.StyleId is { } pid) p.StyleId = MapStyle(pid);
                    FixList(p.PPr);
                    break;
                case Inline i:
                    if (i.RunAttrs.String(FormatAttr.CharStyle) is { } id) i.RunAttrs = i.RunAttrs.With(FormatAttr.CharStyle, MapStyle(id));
                    break;
                case Tables.Table t:
                    if (t.Attrs.String(FormatAttr.TableStyle) is { } tid) t.Attrs = t.Attrs.With(FormatAttr.TableStyle, MapStyle(tid));
                    break;
            }
        }
    }

    private string MapStyle(string id)
    {
        if (styleMap.TryGetValue(id, out var mapped)) return mapped;
        var s = src.Styles.FindById(id);
        if (s == null) return styleMap[id] = id;
        var existing = dst.Styles[s.Name];
        if (existing != null && existing.Type == s.Type &&
            (mode == ImportFormatMode.UseDestinationStyles || s.BuiltIn))
            return styleMap[id] = existing.StyleId;
        // The source look is kept under a name the destination does not use yet.
        var e = s.Element.Clone();
        string name = s.Name, newId = s.StyleId;
        for (int i = 1; dst.Styles[name] != null || dst.Styles.FindById(newId) != null; i++)
        {
            name = s.Name + "_" + i;
            newId = s.StyleId + "_" + i;
        }
        e.Set("styleId", newId);
        e.Set("default", null);
        styleMap[id] = newId;
        dst.Styles.AddLoaded(e);
        var copy = dst.Styles.FindById(newId)!;
        copy.Bag.SetVal("name", name);
        foreach (var link in new[] { "basedOn", "next", "link" })
            if (copy.Bag.Val(link) is { } target) copy.Bag.SetVal(link, MapStyle(target));
        return newId;
    }

    private void FixList(PropBag pPr)
    {
        var idEl = pPr.Find("numPr")?.Child("numId");
        var id = Units.ParseInt(idEl?.Get("val"));
        if (idEl == null || id is null or 0) return;
        if (!listMap.TryGetValue(id.Value, out var newId))
        {
            var list = src.Lists.GetListByListId(id.Value);
            newId = list == null ? 0 : dst.Lists.AddCopy(list).ListId;
            listMap[id.Value] = newId;
        }
        idEl.Set("val", Units.Str(newId));
    }
}
