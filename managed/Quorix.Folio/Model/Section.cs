using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>A part of the document with its own page setup, headers and footers.</summary>
public sealed class Section : CompositeNode, IBlockFormatted
{
    internal FormatProps Props;

    /// <summary>A new empty section of doc, without a body, not yet inserted.</summary>
    public Section(DocumentBase doc) : this(doc, FormatProps.None) { }

    internal Section(DocumentBase doc, FormatProps props) : base(doc) { Props = props; }

    ref FormatProps IBlockFormatted.Props => ref Props;

    Docx.PropsCodec IBlockFormatted.Codec => Docx.PropsCodec.Section;

    internal AttrSet Attrs
    {
        get => Props.Attrs;
        set => FormatProps.Put(ref Props, doc, value);
    }

    /// <summary>The section's markup kept beside the attributes: note options, line numbering, its change record.</summary>
    internal PropBag Kept => FormatProps.KeptOf(ref Props, true, PropOrder.Section)!;

    /// <summary>Always Section.</summary>
    public override NodeType NodeType => NodeType.Section;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Section>(visitor, visitor.VisitSectionStart(this), static (v, n) => v.VisitSectionEnd(n));

    /// <summary>The section's main text; null when it has none.</summary>
    public Body? Body => (Body?)GetChild(NodeType.Body, 0, false);

    /// <summary>The section's headers and footers.</summary>
    public HeaderFooterCollection HeadersFooters => new HeaderFooterCollection(this);

    /// <summary>The size, margins and numbering of the section's pages.</summary>
    public PageSetup PageSetup => new PageSetup(this);

    internal override bool CanHold(Node child) => child is Body || child is HeaderFooter;

    // Header and footer text is not part of the section's running text.
    internal override void AppendText(TextSink sb) => Body?.AppendText(sb);

    /// <summary>Empties the section's body down to one empty paragraph.</summary>
    public void ClearContent()
    {
        var body = Body ?? (Body)AppendChild(new Body(doc!));
        body.DeleteContent();
    }

    /// <summary>Empties the section's headers and footers.</summary>
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

    /// <summary>A copy of the section with its content, not yet inserted.</summary>
    public Section Clone() => (Section)CloneTo(doc, true);

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var s = new Section(target!, Props.Clone()) { XAttrs = XAttrs };
        if (deep) CloneChildrenInto(s, target);
        return s;
    }

    /// <summary>Gives the section a body with a paragraph when it lacks them, and returns the body's last paragraph.</summary>
    public Paragraph EnsureMinimum()
    {
        var body = Body ?? (Body)AppendChild(new Body(doc!));
        return body.EnsureMinimum();
    }
}
