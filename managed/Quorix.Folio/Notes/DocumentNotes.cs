using Quorix.Folio.Notes;

namespace Quorix.Folio;

public sealed partial class Document
{
    /// <summary>Footnote numbering and place for every section; reading gives the first section's.</summary>
    public FootnoteOptions FootnoteOptions => new(SectionProps, FootnoteType.Footnote);

    /// <summary>How the document numbers and places its endnotes.</summary>
    public EndnoteOptions EndnoteOptions => new(SectionProps, FootnoteType.Endnote);

    private IEnumerable<Formatting.PropBag> SectionProps() => Sections.Cast<Section>().Select(s => s.Kept);
}
