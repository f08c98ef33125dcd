using Quorix.Folio.Lists;
using Quorix.Folio.Notes;

namespace Quorix.Folio.Layout;

/// <summary>The reference marks of a document's footnotes and endnotes: automatic ones numbered in
/// document order as each section's options say, custom ones as written.</summary>
internal sealed class NoteMarks
{
    private readonly Dictionary<Footnote, string> marks = new();

    /// <summary>Marks of a document without notes.</summary>
    public static readonly NoteMarks None = new();

    public string Of(Footnote note) => note.IsAuto ? marks.GetValueOrDefault(note, "") : note.ReferenceMark;

    /// <summary>Whether any section numbers footnotes again on each page, which needs the pages first.</summary>
    public static bool NeedPages(Document doc) =>
        doc.Sections.Cast<Section>().Any(s => s.PageSetup.FootnoteOptions.RestartRule == FootnoteNumberingRule.RestartPage);

    /// <summary>Numbers the notes; <paramref name="pageOf"/> (page index of a note's reference) is
    /// needed only for numbering restarted per page, and counts as one page without it.</summary>
    public static NoteMarks Number(Document doc, Func<Footnote, int>? pageOf)
    {
        var result = new NoteMarks();
        int foot = 0, end = 0, lastPage = -1;
        bool first = true;
        foreach (Section s in doc.Sections)
        {
            var fo = s.PageSetup.FootnoteOptions;
            var eo = s.PageSetup.EndnoteOptions;
            if (first || fo.RestartRule == FootnoteNumberingRule.RestartSection) foot = fo.StartNumber - 1;
            if (first || eo.RestartRule == FootnoteNumberingRule.RestartSection) end = eo.StartNumber - 1;
            first = false;
            if (s.Body == null) continue;
            foreach (Footnote note in s.Body.GetChildNodes(NodeType.Footnote, true))
            {
                if (!note.IsAuto) continue;
                if (note.FootnoteType == FootnoteType.Endnote)
                {
                    result.marks[note] = ListNumbering.Format(++end, eo.NumberStyle);
                    continue;
                }
                if (fo.RestartRule == FootnoteNumberingRule.RestartPage && pageOf != null)
                {
                    int page = pageOf(note);
                    if (page != lastPage) foot = fo.StartNumber - 1;
                    lastPage = page;
                }
                result.marks[note] = ListNumbering.Format(++foot, fo.NumberStyle);
            }
        }
        return result;
    }

    public bool SameAs(NoteMarks other) => marks.Count == other.marks.Count && marks.All(m => other.marks.TryGetValue(m.Key, out var o) && o == m.Value);
}
