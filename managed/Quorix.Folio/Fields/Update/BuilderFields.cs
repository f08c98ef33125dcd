using Quorix.Folio.Fields;

namespace Quorix.Folio;

public sealed partial class DocumentBuilder
{
    /// <summary>A TOC field with the given switches, empty until the document's fields are updated.</summary>
    public FieldToc InsertTableOfContents(string switches)
    {
        ArgumentNullException.ThrowIfNull(switches);
        return (FieldToc)InsertField(("TOC " + switches).Trim(), "");
    }

    /// <summary>A field of the given kind with the given code after its name, computed at once.</summary>
    public Field InsertField(FieldType fieldType, bool updateField)
    {
        var word = FieldKinds.WordOf(fieldType) ?? throw new ArgumentException($"{fieldType} is not a kind of field that can be inserted.", nameof(fieldType));
        var f = InsertField(word, "");
        if (updateField) f.Update();
        return f;
    }
}
