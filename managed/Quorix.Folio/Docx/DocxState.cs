using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>What a loaded file had that the model does not show but the next save must repeat.</summary>
internal sealed class DocxState : FormatSideCar
{
    public static DocxState Of(Document doc) => doc.SideCar<DocxState>();

    public readonly Dictionary<string, RootInfo> Roots = new(StringComparer.OrdinalIgnoreCase);
    public readonly List<PropElement> FootnoteSeparators = new();
    public readonly List<PropElement> EndnoteSeparators = new();
    public PropElement? BodyTail;
    // Notes and comments whose references sit in content kept as read: written back under the
    // identifiers that content uses, which new notes and comments then avoid.
    public readonly List<(int Id, Notes.Footnote Note)> KeptFootnotes = new();
    public readonly List<(int Id, Notes.Footnote Note)> KeptEndnotes = new();
    public readonly List<Comment> KeptComments = new();
    // Entries of the comment thread part that name no comment read, and markup there we do not model.
    public readonly List<PropElement> ThreadsKept = new();

    public override FormatSideCar CloneFor(Document target)
    {
        var c = new DocxState();
        c.KeptFootnotes.AddRange(KeptFootnotes.Select(k => (k.Id, (Notes.Footnote)k.Note.CloneTo(target, true))));
        c.KeptEndnotes.AddRange(KeptEndnotes.Select(k => (k.Id, (Notes.Footnote)k.Note.CloneTo(target, true))));
        c.KeptComments.AddRange(KeptComments.Select(k => (Comment)k.CloneTo(target, true)));
        foreach (var kv in Roots) c.Roots[kv.Key] = kv.Value;
        c.FootnoteSeparators.AddRange(FootnoteSeparators.Select(e => e.Clone()));
        c.EndnoteSeparators.AddRange(EndnoteSeparators.Select(e => e.Clone()));
        c.BodyTail = BodyTail?.Clone();
        c.ThreadsKept.AddRange(ThreadsKept.Select(e => e.Clone()));
        return c;
    }
}
