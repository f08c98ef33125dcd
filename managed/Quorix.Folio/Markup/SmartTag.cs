using Quorix.Folio.Docx;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Markup;

/// <summary>Text a program recognised as a kind of thing (a place, a date, a name), marked around
/// the runs that hold it; its content is its child nodes.</summary>
public sealed class SmartTag : CompositeNode
{
    // The recognised thing's properties, kept as read.
    internal PropElement? Props;

    /// <summary>A new empty smart tag of doc, not yet inserted.</summary>
    public SmartTag(DocumentBase doc) : base(doc) { }

    internal SmartTag(DocumentBase? doc, List<PropElement.Attr>? attrs) : base(doc) { XAttrs = attrs; }

    /// <summary>Always SmartTag.</summary>
    public override NodeType NodeType => NodeType.SmartTag;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<SmartTag>(visitor, visitor.VisitSmartTagStart(this), static (v, n) => v.VisitSmartTagEnd(n));

    /// <summary>The kind of thing recognised, such as "place".</summary>
    public string Element
    {
        get => Attr("element");
        set => SetAttr("element", value);
    }

    /// <summary>The namespace the kind belongs to.</summary>
    public string Uri
    {
        get => Attr("uri");
        set => SetAttr("uri", value);
    }

    private string Attr(string local) => XAttrs?.Find(a => a.Local == local && a.Ns == Ns.W).Value ?? "";

    private void SetAttr(string local, string? value)
    {
        XAttrs ??= new List<PropElement.Attr>();
        XAttrs.RemoveAll(a => a.Local == local && a.Ns == Ns.W);
        if (!string.IsNullOrEmpty(value)) XAttrs.Add(new PropElement.Attr(Ns.W, local, value));
    }

    internal override bool CanHold(Node child) => Paragraph.HoldsInline(child);

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var copy = new SmartTag(target, XAttrs?.ToList()) { Props = Props?.Clone() };
        if (deep) CloneChildrenInto(copy, target);
        return copy;
    }
}
