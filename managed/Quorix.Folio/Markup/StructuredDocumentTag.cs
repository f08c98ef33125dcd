using Quorix.Folio.Docx;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Markup;

/// <summary>Where a content control stands: around text in a paragraph, or around whole blocks.</summary>
public enum MarkupLevel
{
    /// <summary>Not known.</summary>
    Unknown = 0,
    /// <summary>Inside a paragraph, around runs.</summary>
    Inline = 1,
    /// <summary>Around paragraphs and tables.</summary>
    Block = 2,
    /// <summary>Around table cells.</summary>
    Cell = 3,
    /// <summary>Around table rows.</summary>
    Row = 4,
}

/// <summary>The kind of a content control, as its properties declare it.</summary>
public enum SdtType
{
    /// <summary>No particular kind.</summary>
    None = 0,
    /// <summary>A bibliography.</summary>
    Bibliography = 1,
    /// <summary>A citation.</summary>
    Citation = 2,
    /// <summary>An equation.</summary>
    Equation = 3,
    /// <summary>A drop-down list of choices.</summary>
    DropDownList = 4,
    /// <summary>A list of choices that also takes typed text.</summary>
    ComboBox = 5,
    /// <summary>A date picker.</summary>
    Date = 6,
    /// <summary>A choice among building blocks.</summary>
    BuildingBlockGallery = 7,
    /// <summary>A document part, such as a cover page or a table of contents.</summary>
    DocPartObj = 8,
    /// <summary>A group that protects its content as one.</summary>
    Group = 9,
    /// <summary>A picture.</summary>
    Picture = 10,
    /// <summary>Formatted text.</summary>
    RichText = 11,
    /// <summary>Plain text with one formatting.</summary>
    PlainText = 12,
    /// <summary>A check box.</summary>
    Checkbox = 13,
    /// <summary>A section whose items repeat.</summary>
    RepeatingSection = 14,
    /// <summary>One item of a repeating section.</summary>
    RepeatingSectionItem = 15,
    /// <summary>A picker of people or other entities.</summary>
    EntityPicker = 16,
}

/// <summary>A content control: a tagged region of the document around inline content or blocks,
/// whose content is its child nodes. Properties the model does not interpret are kept as read.</summary>
public sealed class StructuredDocumentTag : CompositeNode, IStructuredDocumentTag
{
    // The control's properties and end properties as read; written back with the content.
    internal PropElement Props;
    internal PropElement? EndProps;
    internal List<PropElement.Attr>? ContentAttrs;

    internal StructuredDocumentTag(DocumentBase? doc, MarkupLevel level, PropElement props) : base(doc)
    {
        Level = level;
        Props = props;
    }

    /// <summary>A new empty content control of doc, of the given kind and level.</summary>
    public StructuredDocumentTag(DocumentBase doc, SdtType type, MarkupLevel level) : this(doc, level, new PropElement("sdtPr"))
    {
        if (level is not (MarkupLevel.Inline or MarkupLevel.Block))
            throw new ArgumentException("A content control is made at the inline or the block level.", nameof(level));
        if (type != SdtType.None && type != SdtType.RichText && ElementOf(type) is { } e) (Props.Children ??= new List<PropElement>()).Add(new PropElement(e));
    }

    /// <summary>Always StructuredDocumentTag.</summary>
    public override NodeType NodeType => NodeType.StructuredDocumentTag;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<StructuredDocumentTag>(visitor, visitor.VisitStructuredDocumentTagStart(this), static (v, n) => v.VisitStructuredDocumentTagEnd(n));

    /// <summary>Where the content control sits: around runs, blocks, cells or rows.</summary>
    public MarkupLevel Level { get; }

    /// <summary>The tag a program gives the content control to find it.</summary>
    public string Tag
    {
        get => Child("tag")?.Get("val") ?? "";
        set => SetVal("tag", value);
    }

    /// <summary>The name a word processor shows for the control.</summary>
    public string Title
    {
        get => Child("alias")?.Get("val") ?? "";
        set => SetVal("alias", value);
    }

    /// <summary>The content control's number, unique in the document.</summary>
    public int Id => Units.ParseInt(Child("id")?.Get("val")) ?? 0;

    /// <summary>The kind of content control: text, date, drop-down list, check box and so on.</summary>
    public SdtType SdtType
    {
        get
        {
            foreach (var e in Props.Children ?? new List<PropElement>())
                if (TypeOf(e.Local) is { } t) return t;
            return SdtType.RichText;
        }
    }

    Node IStructuredDocumentTag.Node => this;

    /// <summary>False: this control is one node around its content.</summary>
    public bool IsRanged() => false;

    private PropElement? Child(string local) => Props.Children?.Find(c => c.Local == local && c.Ns == Ns.W);

    private void SetVal(string local, string? value)
    {
        Props.Children ??= new List<PropElement>();
        var e = Child(local);
        if (string.IsNullOrEmpty(value))
        {
            if (e != null) Props.Children.Remove(e);
            return;
        }
        if (e == null) Props.Children.Add(e = new PropElement(local));
        e.Set("val", value);
    }

    private static readonly (string Element, SdtType Type)[] Types =
    {
        ("bibliography", SdtType.Bibliography), ("citation", SdtType.Citation), ("equation", SdtType.Equation),
        ("dropDownList", SdtType.DropDownList), ("comboBox", SdtType.ComboBox), ("date", SdtType.Date),
        ("docPartList", SdtType.BuildingBlockGallery), ("docPartObj", SdtType.DocPartObj), ("group", SdtType.Group),
        ("picture", SdtType.Picture), ("richText", SdtType.RichText), ("text", SdtType.PlainText),
        ("checkbox", SdtType.Checkbox), ("repeatingSection", SdtType.RepeatingSection),
        ("repeatingSectionItem", SdtType.RepeatingSectionItem), ("entityPicker", SdtType.EntityPicker),
    };

    private static SdtType? TypeOf(string element)
    {
        foreach (var (e, t) in Types) if (e == element) return t;
        return null;
    }

    private static string? ElementOf(SdtType type)
    {
        foreach (var (e, t) in Types) if (t == type) return e;
        return null;
    }

    internal override bool CanHold(Node child) =>
        Level == MarkupLevel.Inline ? Paragraph.HoldsInline(child) : BlockRules.IsBlock(child);

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var copy = new StructuredDocumentTag(target, Level, Props.Clone()) { EndProps = EndProps?.Clone(), ContentAttrs = ContentAttrs?.ToList(), XAttrs = XAttrs };
        if (deep) CloneChildrenInto(copy, target);
        return copy;
    }
}
