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

    /// <summary>A text box of a form, inside a bookmark of its name; an empty value shows the blank the word processor shows.</summary>
    public FormField InsertTextInput(string name, TextFormFieldType type, string format, string fieldValue, int maxLength)
    {
        ArgumentNullException.ThrowIfNull(format);
        ArgumentOutOfRangeException.ThrowIfNegative(maxLength);
        var form = InsertFormField(name, "FORMTEXT", string.IsNullOrEmpty(fieldValue) ? new string('\u2002', 5) : fieldValue);
        if (type != TextFormFieldType.Regular) form.TextInputType = type;
        if (format.Length > 0) form.TextInputFormat = format;
        if (!string.IsNullOrEmpty(fieldValue)) form.TextInputDefault = fieldValue;
        form.MaxLength = maxLength;
        return form;
    }

    /// <summary>A check box of a form, ticked or not; a size of 0 takes the size of the text.</summary>
    public FormField InsertCheckBox(string name, bool checkedValue, int size) => InsertCheckBox(name, checkedValue, checkedValue, size);

    /// <summary>A check box of a form with its default and current state; a size of 0 takes the size of the text.</summary>
    public FormField InsertCheckBox(string name, bool defaultValue, bool checkedValue, int size)
    {
        ArgumentOutOfRangeException.ThrowIfNegative(size);
        var form = InsertFormField(name, "FORMCHECKBOX", "");
        if (size > 0) form.CheckBoxSize = size;
        else form.IsCheckBoxExactSize = false;
        form.Default = defaultValue;
        form.Checked = checkedValue;
        return form;
    }

    /// <summary>A drop-down list of a form with its items and the position of the chosen one.</summary>
    public FormField InsertComboBox(string name, string[] items, int selectedIndex)
    {
        ArgumentNullException.ThrowIfNull(items);
        if (items.Length > 25) throw new ArgumentException("A drop-down list holds at most 25 items.", nameof(items));
        if (items.Length > 0 && (selectedIndex < 0 || selectedIndex >= items.Length) || items.Length == 0 && selectedIndex != 0)
            throw new ArgumentOutOfRangeException(nameof(selectedIndex), $"The drop-down list has {items.Length} items.");
        var form = InsertFormField(name, "FORMDROPDOWN", "");
        foreach (var item in items) form.DropDownItems.Add(item ?? throw new ArgumentException("A drop-down item is null.", nameof(items)));
        form.DropDownSelectedIndex = selectedIndex;
        return form;
    }

    private FormField InsertFormField(string name, string word, string result)
    {
        ArgumentNullException.ThrowIfNull(name);
        if (name.Length > 0) StartBookmark(name);
        var field = InsertField(word, result);
        var form = new FormField(field) { Name = name, Enabled = true };
        form.EnsureKind();
        if (name.Length > 0) EndBookmark(name);
        return form;
    }
}
