namespace Quorix.Folio.Text;

/// <summary>The walk the text writers share: each section's primary header before its body and
/// primary footer after it, when the export mode asks for them; other headers and footers are
/// passed over unless a writer shows them itself.</summary>
internal abstract class StoryVisitor : DocumentVisitor
{
    private readonly bool primaryOnly;
    // The header or footer being written now.
    private HeaderFooter? shown;

    private protected StoryVisitor(Saving.TxtExportHeadersFootersMode mode)
    {
        primaryOnly = mode == Saving.TxtExportHeadersFootersMode.PrimaryOnly;
    }

    private protected void Show(HeaderFooter? hf)
    {
        if (hf == null) return;
        shown = hf;
        hf.Accept(this);
        shown = null;
    }

    public override VisitorAction VisitSectionStart(Section section)
    {
        if (primaryOnly) Show(section.HeadersFooters[HeaderFooterType.HeaderPrimary]);
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitSectionEnd(Section section)
    {
        if (primaryOnly) Show(section.HeadersFooters[HeaderFooterType.FooterPrimary]);
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitHeaderFooterStart(HeaderFooter headerFooter) =>
        headerFooter == shown ? VisitorAction.Continue : VisitorAction.SkipThisNode;
}
