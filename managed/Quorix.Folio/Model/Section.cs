using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>A part of the document with its own page setup, headers and footers.</summary>
public sealed class Section : CompositeNode
{
    internal readonly PropBag SectPr;

    public Section(DocumentBase doc) : this(doc, new PropBag(PropOrder.Section)) { }

    internal Section(DocumentBase doc, PropBag sectPr) : base(doc) { SectPr = sectPr; }

    public override NodeType NodeType => NodeType.Section;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Section>(visitor, visitor.VisitSectionStart(this), static (v, n) => v.VisitSectionEnd(n));

    public Body? Body => (Body?)GetChild(NodeType.Body, 0, false);

    public HeaderFooterCollection HeadersFooters => new HeaderFooterCollection(this);

    public PageSetup PageSetup => new PageSetup(SectPr);

    internal override bool CanHold(Node child) => child is Body || child is HeaderFooter;

    // Header and footer text is not part of the section's running text.
    internal override void AppendText(StringBuilder sb) => Body?.AppendText(sb);

    public void ClearContent()
    {
        var body = Body ?? (Body)AppendChild(new Body(doc!));
        body.DeleteContent();
    }

    public void ClearHeadersFooters()
    {
        foreach (var hf in HeadersFooters.ToArray()) hf.Remove();
    }

    /// <summary>Copies the body of another section to the end of this one.</summary>
    public void AppendContent(Section sourceSection)
    {
        ArgumentNullException.ThrowIfNull(sourceSection);
        var body = Body ?? (Body)AppendChild(new Body(doc!));
        foreach (var n in sourceSection.Body?.RawChildren().ToArray() ?? Array.Empty<Node>())
            body.LinkLast(doc!.Import(n, true, ImportFormatMode.UseDestinationStyles));
    }

    public Section Clone() => (Section)CloneTo(doc, true);

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var s = new Section(target!, SectPr.Clone()) { XAttrs = XAttrs };
        if (deep) CloneChildrenInto(s, target);
        return s;
    }

    public Paragraph EnsureMinimum()
    {
        var body = Body ?? (Body)AppendChild(new Body(doc!));
        return body.EnsureMinimum();
    }
}
