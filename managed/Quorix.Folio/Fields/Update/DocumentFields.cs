using Quorix.Folio.Fields;
using Quorix.Folio.MailMerging;

namespace Quorix.Folio;

public sealed partial class Document
{
    private FieldOptions? fieldOptions;
    private MailMerge? mailMerge;

    /// <summary>What field update reads: the current user, culture, clock and prompt answers.</summary>
    public FieldOptions FieldOptions => fieldOptions ??= new FieldOptions();

    /// <summary>Mail merge of this document with names and values, a data table or a data source.</summary>
    public MailMerge MailMerge => mailMerge ??= new MailMerge(this);

    /// <summary>Computes every field's result again, nested fields first; returns how many were computed.
    /// Page numbers come from the layout of the updated text; where writing them moves text to other
    /// pages, they are computed again against the new layout, a bounded number of times.</summary>
    [LongRunning]
    public int UpdateFields()
    {
        // One list for all stories, so progress counts the whole document's fields.
        var all = new List<Field>();
        foreach (Section s in Sections)
            foreach (var story in s.ChildNodes)
                all.AddRange(FieldUpdater.Collect(story, story));
        var ctx = new FieldUpdateContext(this) { DeferPages = true };
        int n = FieldUpdater.Update(all, ctx);
        if (!ctx.ReadPages) return n;
        for (int round = 0; round < 3; round++)
        {
            var fields = new List<Field>();
            foreach (Section s in Sections)
                foreach (var story in s.ChildNodes)
                    fields.AddRange(FieldUpdater.Collect(story, story).Where(f => f is FieldPage or FieldNumPages or FieldSectionPages or FieldPageRef or FieldNoteRef or FieldIndex or FieldToa));
            var before = fields.Select(f => f.Result).ToList();
            FieldUpdater.Update(fields, new FieldUpdateContext(this));
            bool moved = false;
            for (int i = 0; i < fields.Count && !moved; i++) moved = fields[i].Start.ParentNode != null && fields[i].Result != before[i];
            if (!moved) break;
        }
        return n;
    }
}

public sealed partial class Range
{
    /// <summary>The fields in the range.</summary>
    public FieldCollection Fields => new(node);

    /// <summary>The form fields in the range: text boxes, check boxes and drop-down lists.</summary>
    public FormFieldCollection FormFields => new(node);

    /// <summary>Computes the results of the fields in this range, nested fields first.</summary>
    public int UpdateFields() => FieldUpdater.Update(FieldUpdater.Collect(node, node), new FieldUpdateContext(node.Document as Document));
}
