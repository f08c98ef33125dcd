using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formatting;
using Quorix.Folio.Lists;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>A paragraph: runs and other inline nodes, ended by a paragraph mark.</summary>
public sealed class Paragraph : CompositeNode, IParaFormatted
{
    // Shared with every paragraph of the same formatting; replaced, never changed, on an edit.
    internal AttrSet ParaAttrs = AttrSet.Empty;
    // What the engine does not model as attributes: list membership, tabs, borders, shading, the
    // paragraph mark's formatting, tracked changes, and what only the file's format knows.
    internal PropBag PPr;

    /// <summary>An empty paragraph for doc, to be inserted into a body, cell, header, footer, comment or note.</summary>
    public Paragraph(DocumentBase doc) : this(doc, new PropBag(PropOrder.Paragraph)) { }

    internal Paragraph(DocumentBase? doc, PropBag pPr, AttrSet? attrs = null) : base(doc)
    {
        PPr = pPr;
        ParaAttrs = attrs ?? AttrSet.Empty;
    }

    AttrSet IParaFormatted.ParaAttrs { get => ParaAttrs; set => ParaAttrs = value; }

    PropBag IParaFormatted.ParaKept => PPr;

    internal string? StyleId
    {
        get => ParaAttrs.String(FormatAttr.ParaStyle);
        set
        {
            var set = ParaAttrs.With(FormatAttr.ParaStyle, value);
            ParaAttrs = doc?.Cascade.Shared(set) ?? set;
            FormatStamp.Bump();
        }
    }

    /// <summary>Always Paragraph.</summary>
    public override NodeType NodeType => NodeType.Paragraph;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Paragraph>(visitor, visitor.VisitParagraphStart(this), static (v, n) => v.VisitParagraphEnd(n));

    /// <summary>The runs of text in the paragraph.</summary>
    public RunCollection Runs => new RunCollection(this);

    /// <summary>The paragraph's alignment, indents, spacing, style and the like.</summary>
    public ParagraphFormat ParagraphFormat => new ParagraphFormat(this, doc, InheritedParaAttrs);

    /// <summary>What the paragraph inherits from its style and the document defaults.</summary>
    internal AttrSet InheritedParaAttrs() => doc?.Cascade.Paragraph(ParagraphStyle, TableLayer) ?? AttrSet.Empty;

    /// <summary>What the style of the table the paragraph is in gives its cell; null outside a styled table.</summary>
    internal TableStyleCascade.Layer? TableLayer => parent is Tables.Cell c ? doc?.Cascade.Tables.TextOf(c) : null;

    /// <summary>The paragraph's list numbering: its list and level.</summary>
    public ListFormat ListFormat => new ListFormat(this);

    /// <summary>Formatting of the paragraph mark itself.</summary>
    public Font ParagraphBreakFont
    {
        get
        {
            var e = PPr.GetOrAdd("rPr");
            e.Children ??= new List<PropElement>();
            return new Font(new PropBag(PropOrder.Run, e.Children), doc);
        }
    }

    internal Style? ParagraphStyle => doc?.Styles.FindById(StyleId) ?? doc?.Styles.DefaultParagraphStyle;

    /// <summary>The bags that paragraph properties fall back on: the paragraph style's chain, or the document defaults.</summary>
    internal BagChain ParagraphChain() => Chain(false);

    /// <summary>The bags that the character properties of the paragraph's runs fall back on.</summary>
    internal BagChain RunChain() => Chain(true);

    private BagChain Chain(bool run)
    {
        if (doc == null) return default;
        return ParagraphStyle is { } s ? s.Chain(run, true) : doc.Styles.DefaultsChain(run);
    }

    /// <summary>What a run of the paragraph without formatting of its own shows.</summary>
    internal AttrSet InheritedRunAttrs() => doc?.Cascade.Run(ParagraphStyle, null, TableLayer) ?? AttrSet.Empty;

    internal IEnumerable<PropBag> StyleChain() => ParagraphChain().ToArray();

    /// <summary>The section the paragraph is in.</summary>
    public Section? ParentSection => GetAncestor(NodeType.Section) as Section;

    /// <summary>The body, header or footer the paragraph is in.</summary>
    public Story? ParentStory => GetAncestor(NodeType.Body) as Story ?? GetAncestor(NodeType.HeaderFooter) as Story;

    /// <summary>Whether the paragraph is directly in a table cell.</summary>
    public bool IsInCell => parent is Cell;

    /// <summary>Whether the paragraph is the last of its table cell.</summary>
    public bool IsEndOfCell => LastOfFlow() is Cell;

    /// <summary>Whether the paragraph is the last of its section's body.</summary>
    public bool IsEndOfSection => LastOfFlow() is Body;

    // The container whose flow this paragraph ends, looking through the content controls it
    // ends too; null when something follows it.
    private CompositeNode? LastOfFlow()
    {
        Node n = this;
        while (n.NextSibling == null && n.parent is Markup.StructuredDocumentTag { Level: Markup.MarkupLevel.Block }) n = n.parent;
        return n.NextSibling == null ? n.parent : null;
    }

    /// <summary>Whether the paragraph is numbered or bulleted as part of a list.</summary>
    public bool IsListItem => ListFormat.IsListItem;

    /// <summary>The label the paragraph shows; labels of the whole document are counted once per change.</summary>
    public ListLabel ListLabel => (doc as Document)?.Labels.Of(this) ?? new ListLabel("", 0);

    internal override bool CanHold(Node child) => HoldsInline(child);

    internal static bool HoldsInline(Node child) =>
        child is Inline || IsInlineContainer(child) || child is BookmarkStart || child is BookmarkEnd || child is CommentRangeStart ||
        child is CommentRangeEnd || child is Comment || child is Footnote || child is Shape ||
        (child is OpaqueNode o && o.Kind == OpaqueKind.Inline);

    /// <summary>The paragraph's text, fields' codes and results included, ended by its paragraph mark.</summary>
    public override string GetText()
    {
        var sb = new TextSink();
        AppendText(sb);
        return sb.ToString();
    }

    internal override void AppendText(TextSink sb)
    {
        for (var n = first; n != null; n = n.next)
            if (n is not InlineStory) n.AppendText(sb);
        if (IsEndOfCell) sb.Append(ControlChar.CellChar);
        else if (IsEndOfSection) sb.Append(ControlChar.SectionBreakChar);
        else sb.Append(ControlChar.ParagraphBreakChar);
    }

    /// <summary>Whether the node holds inline content of the paragraph: a content control or a smart tag.</summary>
    internal static bool IsInlineContainer(Node n) => n is Markup.StructuredDocumentTag { Level: Markup.MarkupLevel.Inline } or Markup.SmartTag;

    /// <summary>The inline nodes in order, those inside content controls and smart tags included,
    /// except the content of a container that is itself a tracked deletion, which nobody reads.</summary>
    internal IEnumerable<Node> InlineNodes() => Inlines(this);

    private static IEnumerable<Node> Inlines(CompositeNode container)
    {
        for (var n = container.first; n != null; n = n.next)
        {
            if (!IsInlineContainer(n)) yield return n;
            else if (n.Rev?.Local is not ("del" or "moveFrom"))
                foreach (var inner in Inlines((CompositeNode)n)) yield return inner;
        }
    }

    /// <summary>Appends a field whose result stays as given; nothing is computed.</summary>
    public Field AppendField(string fieldCode, string fieldValue)
    {
        var start = (FieldStart)AppendChild(new FieldStart(doc!));
        AppendChild(new Run(doc!, " " + fieldCode.Trim() + " "));
        var sep = (FieldSeparator)AppendChild(new FieldSeparator(doc!));
        AppendChild(new Run(doc!, fieldValue));
        var end = (FieldEnd)AppendChild(new FieldEnd(doc!));
        return FieldKinds.Create(start, sep, end);
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var p = new Paragraph(target, PPr.Clone(), ParaAttrs) { XAttrs = XAttrs };
        if (deep) CloneChildrenInto(p, target);
        return p;
    }
}
