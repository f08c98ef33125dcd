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

    // Page layout sets this so that tables of contents can show page numbers.
    internal Func<Node, int?>? PageLocator;

    /// <summary>Computes every field's result again, nested fields first; returns how many were computed.</summary>
    public int UpdateFields()
    {
        // One list for all stories, so progress counts the whole document's fields.
        var fields = new List<Field>();
        foreach (Section s in Sections)
            foreach (var story in s.ChildNodes)
                fields.AddRange(FieldUpdater.Collect(story, story));
        return FieldUpdater.Update(fields, new FieldUpdateContext(this));
    }
}

public sealed partial class Range
{
    /// <summary>The fields in the range.</summary>
    public FieldCollection Fields => new(node);

    /// <summary>Computes the results of the fields in this range, nested fields first.</summary>
    public int UpdateFields() => FieldUpdater.Update(FieldUpdater.Collect(node, node), new FieldUpdateContext(node.Document as Document));
}
