namespace Quorix.Folio;

/// <summary>A header or footer of a section.</summary>
public sealed class HeaderFooter : Story
{
    private readonly HeaderFooterType type;

    /// <summary>A new empty header or footer of doc of the given kind, not yet in a section.</summary>
    public HeaderFooter(DocumentBase doc, HeaderFooterType headerFooterType) : base(doc)
    {
        if (!Enum.IsDefined(headerFooterType)) throw new ArgumentOutOfRangeException(nameof(headerFooterType));
        type = headerFooterType;
    }

    /// <summary>Always HeaderFooter.</summary>
    public override NodeType NodeType => NodeType.HeaderFooter;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<HeaderFooter>(visitor, visitor.VisitHeaderFooterStart(this), static (v, n) => v.VisitHeaderFooterEnd(n));

    /// <summary>Which header or footer this is.</summary>
    public HeaderFooterType HeaderFooterType => type;

    /// <summary>Whether this is a header rather than a footer.</summary>
    public bool IsHeader => type is HeaderFooterType.HeaderPrimary or HeaderFooterType.HeaderFirst or HeaderFooterType.HeaderEven;

    /// <summary>The story of this header or footer.</summary>
    public override StoryType StoryType => type switch
    {
        HeaderFooterType.HeaderPrimary => StoryType.PrimaryHeader,
        HeaderFooterType.HeaderEven => StoryType.EvenPagesHeader,
        HeaderFooterType.HeaderFirst => StoryType.FirstPageHeader,
        HeaderFooterType.FooterPrimary => StoryType.PrimaryFooter,
        HeaderFooterType.FooterEven => StoryType.EvenPagesFooter,
        _ => StoryType.FirstPageFooter,
    };

    /// <summary>The section the header or footer belongs to; null outside any.</summary>
    public Section? ParentSection => parent as Section;

    /// <summary>Where the part came from, so that its own relationships (images) are kept on save.</summary>
    internal string? PartName;

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var h = new HeaderFooter(target!, type) { PartName = target?.SharesPackageWith(doc) == true ? PartName : null };
        if (deep) CloneChildrenInto(h, target);
        return h;
    }

    internal static string XmlType(HeaderFooterType t) => t switch
    {
        HeaderFooterType.HeaderFirst or HeaderFooterType.FooterFirst => "first",
        HeaderFooterType.HeaderEven or HeaderFooterType.FooterEven => "even",
        _ => "default",
    };

    internal static HeaderFooterType FromXml(bool header, string? t) => (header, t) switch
    {
        (true, "first") => HeaderFooterType.HeaderFirst,
        (true, "even") => HeaderFooterType.HeaderEven,
        (true, _) => HeaderFooterType.HeaderPrimary,
        (false, "first") => HeaderFooterType.FooterFirst,
        (false, "even") => HeaderFooterType.FooterEven,
        _ => HeaderFooterType.FooterPrimary,
    };
}
