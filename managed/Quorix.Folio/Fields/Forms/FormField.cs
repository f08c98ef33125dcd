using System.Globalization;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Fields;

/// <summary>What a text form field accepts, and how its value is formatted.</summary>
public enum TextFormFieldType
{
    /// <summary>Any text.</summary>
    Regular = 0,
    /// <summary>A number, formatted with the field's numeric picture.</summary>
    Number = 1,
    /// <summary>A date, formatted with the field's date picture.</summary>
    Date = 2,
    /// <summary>Today's date, filled in by the word processor.</summary>
    CurrentDate = 3,
    /// <summary>The time of day, filled in by the word processor.</summary>
    CurrentTime = 4,
    /// <summary>The result of a formula in the field's default.</summary>
    Calculated = 5,
}

/// <summary>A text box, check box or drop-down list of a form: a FORMTEXT, FORMCHECKBOX or FORMDROPDOWN
/// field and the form data stored on its start marker. Every property reads and writes that data,
/// so what the file held and did not interpret is written back as it was.</summary>
public sealed class FormField
{
    private readonly Field target;

    internal FormField(Field target) { this.target = target; }

    /// <summary>The form field of a field, or null when the field is not one.</summary>
    internal static FormField? Of(Field f) =>
        f.Type is FieldType.FieldFormTextInput or FieldType.FieldFormCheckBox or FieldType.FieldFormDropDown ? new FormField(f) : null;

    /// <summary>The field that is this form field.</summary>
    public Field Field => target;

    /// <summary>FieldFormTextInput, FieldFormCheckBox or FieldFormDropDown.</summary>
    public FieldType Type => target.Type;

    // ---- the form data element ----

    // Children of ffData, and of its three kinds, must come in the schema's order.
    private static readonly string[] DataOrder = { "name", "label", "tabIndex", "enabled", "calcOnExit", "entryMacro", "exitMacro", "helpText", "statusText", "checkBox", "ddList", "textInput" };
    private static readonly string[] CheckBoxOrder = { "size", "sizeAuto", "default", "checked" };
    private static readonly string[] DropDownOrder = { "result", "default", "listEntry" };
    private static readonly string[] TextInputOrder = { "type", "default", "maxLength", "format" };

    private PropElement? Data => target.Start.Raw?.Child("ffData");

    private PropElement EnsureData()
    {
        var raw = target.Start.Raw ??= new PropElement("fldChar").Set("fldCharType", "begin");
        if (raw.Child("ffData") is { } d) return d;
        d = new PropElement("ffData");
        (raw.Children ??= new List<PropElement>()).Add(d);
        return d;
    }

    private string KindName => Type switch
    {
        FieldType.FieldFormCheckBox => "checkBox",
        FieldType.FieldFormDropDown => "ddList",
        _ => "textInput",
    };

    private string[] KindOrder => Type switch
    {
        FieldType.FieldFormCheckBox => CheckBoxOrder,
        FieldType.FieldFormDropDown => DropDownOrder,
        _ => TextInputOrder,
    };

    private PropElement? Kind => Data?.Child(KindName);

    /// <summary>The element of this kind of form field (textInput, checkBox, ddList), added when missing:
    /// word processors tell the kind by it.</summary>
    internal PropElement EnsureKind() => Ensure(EnsureData(), KindName, DataOrder);

    /// <summary>The child of that name, added in its place in the schema's order when missing.</summary>
    internal static PropElement Ensure(PropElement parent, string local, string[] order)
    {
        if (parent.Child(local) is { } c) return c;
        FormatStamp.Bump();
        var e = new PropElement(local);
        var list = parent.Children ??= new List<PropElement>();
        int rank = Array.IndexOf(order, local), at = list.Count;
        for (int i = 0; i < list.Count; i++)
            if (PropElement.IsMain(list[i].Ns) && Array.IndexOf(order, list[i].Local) > rank) { at = i; break; }
        list.Insert(at, e);
        return e;
    }

    private static void Drop(PropElement? parent, string local)
    {
        if (parent?.Children == null) return;
        FormatStamp.Bump();
        parent.Children.RemoveAll(c => c.Local == local && PropElement.IsMain(c.Ns));
    }

    private static string? Val(PropElement? parent, string local) => parent?.Child(local)?.Get("val");

    // An on/off element: present means on unless its value says off.
    private static bool? OnOff(PropElement? parent, string local) =>
        parent?.Child(local) is { } e ? e.Get("val") is not ("0" or "false" or "off") : null;

    private void SetVal(string local, string? value)
    {
        if (value == null) { Drop(Data, local); return; }
        Ensure(EnsureData(), local, DataOrder).Set("val", value);
    }

    private void SetKindVal(string local, string? value)
    {
        if (value == null) { Drop(Kind, local); return; }
        Ensure(EnsureKind(), local, KindOrder).Set("val", value);
    }

    // ---- what every form field has ----

    /// <summary>The form field's name; the bookmark around the field, named alike, follows a new name.</summary>
    public string Name
    {
        get => Val(Data, "name") ?? "";
        set
        {
            ArgumentNullException.ThrowIfNull(value);
            if (value.Length > 20) throw new ArgumentException("A form field's name is at most 20 characters long.", nameof(value));
            var old = Name;
            SetVal("name", value);
            if (old.Length > 0 && target.Start.Document is Document doc && doc.Range.Bookmarks[old] is { } b
                && b.BookmarkStart.NextSibling == target.Start) b.Name = value;
        }
    }

    /// <summary>Whether the form accepts input in the field.</summary>
    public bool Enabled
    {
        get => OnOff(Data, "enabled") ?? false;
        set => SetVal("enabled", value ? "1" : "0");
    }

    /// <summary>Whether the form's fields are computed again when this one is left.</summary>
    public bool CalculateOnExit
    {
        get => OnOff(Data, "calcOnExit") ?? false;
        set => SetVal("calcOnExit", value ? "1" : "0");
    }

    /// <summary>The macro run when the field is entered.</summary>
    public string EntryMacro { get => Val(Data, "entryMacro") ?? ""; set => SetVal("entryMacro", NullIfEmpty(value)); }

    /// <summary>The macro run when the field is left.</summary>
    public string ExitMacro { get => Val(Data, "exitMacro") ?? ""; set => SetVal("exitMacro", NullIfEmpty(value)); }

    /// <summary>The help shown for the field (F1), or the name of the building block holding it.</summary>
    public string HelpText { get => Val(Data, "helpText") ?? ""; set => SetText("helpText", value, OwnHelp); }

    /// <summary>Whether <see cref="HelpText"/> is the text itself rather than a building block's name.</summary>
    public bool OwnHelp { get => Data?.Child("helpText")?.Get("type") != "autoText"; set => SetText("helpText", HelpText, value); }

    /// <summary>The text shown in the status bar while the field is active.</summary>
    public string StatusText { get => Val(Data, "statusText") ?? ""; set => SetText("statusText", value, OwnStatus); }

    /// <summary>Whether <see cref="StatusText"/> is the text itself rather than a building block's name.</summary>
    public bool OwnStatus { get => Data?.Child("statusText")?.Get("type") != "autoText"; set => SetText("statusText", StatusText, value); }

    private void SetText(string local, string? text, bool own)
    {
        ArgumentNullException.ThrowIfNull(text);
        if (local == "statusText" && text.Length > 138) throw new ArgumentException("A form field's status text is at most 138 characters long.", nameof(text));
        if (text.Length > 255) throw new ArgumentException("A form field's help text is at most 255 characters long.", nameof(text));
        Ensure(EnsureData(), local, DataOrder).Set("type", own ? "text" : "autoText").Set("val", text);
    }

    private static string? NullIfEmpty(string? s) => string.IsNullOrEmpty(s) ? null : s;

    /// <summary>The field's value as text: a text box's text, "1" or "0" for a check box, a drop-down's
    /// chosen item. Setting it fills in the text, ticks the box for "1", or chooses the item of that text.</summary>
    public string Result
    {
        get => Type switch
        {
            FieldType.FieldFormCheckBox => Checked ? "1" : "0",
            FieldType.FieldFormDropDown => SelectedItem ?? "",
            _ => target.Result,
        };
        set
        {
            ArgumentNullException.ThrowIfNull(value);
            switch (Type)
            {
                case FieldType.FieldFormCheckBox:
                    Checked = value == "1";
                    break;
                case FieldType.FieldFormDropDown:
                    int i = DropDownItems.IndexOf(value);
                    if (i < 0) throw new ArgumentException($"The drop-down list has no item \"{value}\".", nameof(value));
                    DropDownSelectedIndex = i;
                    break;
                default:
                    target.WriteResult(value);
                    break;
            }
        }
    }

    /// <summary>Removes the field, its code and its result from the document.</summary>
    public void RemoveField() => target.Remove();

    // ---- text boxes ----

    /// <summary>What a text box accepts.</summary>
    public TextFormFieldType TextInputType
    {
        get => TextTypes.Parse(Val(Kind, "type"));
        set { RequireKind(FieldType.FieldFormTextInput); SetKindVal("type", value == TextFormFieldType.Regular ? null : TextTypes.Name(value)); }
    }

    /// <summary>The text box's format: a case ("UPPERCASE", "LOWERCASE", "FIRST CAPITAL", "TITLE CASE"),
    /// a numeric picture or a date picture, as its type says.</summary>
    public string TextInputFormat
    {
        get => Val(Kind, "format") ?? "";
        set { RequireKind(FieldType.FieldFormTextInput); SetKindVal("format", NullIfEmpty(value)); }
    }

    /// <summary>The text a text box starts with (for a calculated one, its formula).</summary>
    public string TextInputDefault
    {
        get => Val(Kind, "default") ?? "";
        set { RequireKind(FieldType.FieldFormTextInput); SetKindVal("default", NullIfEmpty(value)); }
    }

    /// <summary>The longest text the box accepts; 0 for no limit.</summary>
    public int MaxLength
    {
        get => int.TryParse(Val(Kind, "maxLength"), NumberStyles.Integer, CultureInfo.InvariantCulture, out var n) && n > 0 ? n : 0;
        set
        {
            RequireKind(FieldType.FieldFormTextInput);
            ArgumentOutOfRangeException.ThrowIfNegative(value);
            SetKindVal("maxLength", value == 0 ? null : value.ToString(CultureInfo.InvariantCulture));
        }
    }

    /// <summary>Fills in a text box with a value formatted as the box's type and format say: a number
    /// with its numeric picture, a date with its date picture, text in its case.</summary>
    public void SetTextInputValue(object newValue)
    {
        RequireKind(FieldType.FieldFormTextInput);
        ArgumentNullException.ThrowIfNull(newValue);
        var text = TextInputValue.Format(newValue, TextInputType, TextInputFormat, Culture);
        if (MaxLength > 0 && text.Length > MaxLength) text = text[..MaxLength];
        target.WriteResult(text);
    }

    private CultureInfo Culture => (target.Start.Document as Document)?.FieldOptions.Culture ?? CultureInfo.CurrentCulture;

    // ---- check boxes ----

    /// <summary>Whether the box is ticked: its own state, or its default where it has none.</summary>
    public bool Checked
    {
        get => CheckedOf(Kind);
        set { RequireKind(FieldType.FieldFormCheckBox); SetKindVal("checked", value ? "1" : "0"); }
    }

    private static bool CheckedOf(PropElement? box) => OnOff(box, "checked") ?? OnOff(box, "default") ?? false;

    /// <summary>Whether the box starts ticked.</summary>
    public bool Default
    {
        get => OnOff(Kind, "default") ?? false;
        set { RequireKind(FieldType.FieldFormCheckBox); SetKindVal("default", value ? "1" : "0"); }
    }

    /// <summary>Whether the box has the size <see cref="CheckBoxSize"/> rather than its text's.</summary>
    public bool IsCheckBoxExactSize
    {
        get => Kind?.Child("size") != null;
        set
        {
            RequireKind(FieldType.FieldFormCheckBox);
            if (value == IsCheckBoxExactSize) return;
            var size = CheckBoxSize;
            Drop(Kind, value ? "sizeAuto" : "size");
            if (value) SetKindVal("size", HalfPoints(size));
            else Ensure(EnsureKind(), "sizeAuto", CheckBoxOrder);
        }
    }

    /// <summary>The box's size in points when it has an exact one (10 where none is stored); setting it makes the size exact.</summary>
    public double CheckBoxSize
    {
        get => int.TryParse(Val(Kind, "size"), NumberStyles.Integer, CultureInfo.InvariantCulture, out var half) ? half / 2.0 : 10;
        set
        {
            RequireKind(FieldType.FieldFormCheckBox);
            if (!(value >= 1 && value <= 1584)) throw new ArgumentOutOfRangeException(nameof(value), "A check box is 1 to 1584 points in size.");
            Drop(Kind, "sizeAuto");
            SetKindVal("size", HalfPoints(value));
        }
    }

    private static string HalfPoints(double points) => ((int)Math.Round(points * 2)).ToString(CultureInfo.InvariantCulture);

    // ---- drop-down lists ----

    /// <summary>The items of a drop-down list.</summary>
    public DropDownItemCollection DropDownItems
    {
        get
        {
            RequireKind(FieldType.FieldFormDropDown);
            return new DropDownItemCollection(this);
        }
    }

    /// <summary>The position of the chosen item of a drop-down list.</summary>
    public int DropDownSelectedIndex
    {
        get => int.TryParse(Val(Kind, "result"), NumberStyles.Integer, CultureInfo.InvariantCulture, out var i) ? i : 0;
        set
        {
            RequireKind(FieldType.FieldFormDropDown);
            int count = Entries().Count;
            if (value < 0 || value >= Math.Max(count, 1)) throw new ArgumentOutOfRangeException(nameof(value), $"The drop-down list has {count} items.");
            SetKindVal("result", value.ToString(CultureInfo.InvariantCulture));
            ShowSelection();
        }
    }

    /// <summary>The chosen item's text; null when the list is empty.</summary>
    internal string? SelectedItem => SelectedOf(Kind);

    private static string? SelectedOf(PropElement? list)
    {
        var entries = EntriesOf(list);
        int i = int.TryParse(Val(list, "result"), NumberStyles.Integer, CultureInfo.InvariantCulture, out var r) ? r : 0;
        return i >= 0 && i < entries.Count ? entries[i].Get("val") ?? "" : entries.Count > 0 ? entries[0].Get("val") ?? "" : null;
    }

    internal List<PropElement> Entries() => EntriesOf(Kind);

    private static List<PropElement> EntriesOf(PropElement? list) =>
        list?.Children?.FindAll(c => c.Local == "listEntry" && PropElement.IsMain(c.Ns)) ?? new List<PropElement>();

    /// <summary>What a reader sees of a check box or drop-down list whose code is <paramref name="word"/>:
    /// a ticked or empty box, or the chosen item; null for other fields, which show their results.</summary>
    internal static string? Shown(FieldStart start, string word)
    {
        if (word.Equals("FORMCHECKBOX", StringComparison.OrdinalIgnoreCase))
            return CheckedOf(start.Raw?.Child("ffData")?.Child("checkBox")) ? "\u2612" : "\u2610";
        if (word.Equals("FORMDROPDOWN", StringComparison.OrdinalIgnoreCase))
            return SelectedOf(start.Raw?.Child("ffData")?.Child("ddList")) ?? "";
        return null;
    }

    internal void InsertEntry(int index, string text)
    {
        var kind = EnsureKind();
        var list = kind.Children ??= new List<PropElement>();
        var entries = Entries();
        int at = index < entries.Count ? list.IndexOf(entries[index]) : entries.Count > 0 ? list.IndexOf(entries[^1]) + 1 : list.Count;
        FormatStamp.Bump();
        list.Insert(at, new PropElement("listEntry").Set("val", text));
        ShowSelection();
    }

    internal void RemoveEntries(Predicate<PropElement> which)
    {
        FormatStamp.Bump();
        Kind?.Children?.RemoveAll(c => c.Local == "listEntry" && PropElement.IsMain(c.Ns) && which(c));
        if (DropDownSelectedIndex >= Entries().Count) SetKindVal("result", null);
        ShowSelection();
    }

    // The result a drop-down shows is its chosen item, kept in step for readers that show results.
    internal void ShowSelection()
    {
        if (target.Separator != null && target.Result != (SelectedItem ?? "")) target.WriteResult(SelectedItem ?? "");
    }

    private void RequireKind(FieldType kind)
    {
        if (Type != kind) throw new InvalidOperationException($"The form field is a {Describe(Type)}, not a {Describe(kind)}.");
    }

    private static string Describe(FieldType t) => t switch
    {
        FieldType.FieldFormCheckBox => "check box",
        FieldType.FieldFormDropDown => "drop-down list",
        _ => "text box",
    };
}

/// <summary>The items of a drop-down form field, in the order the list shows them.</summary>
public sealed class DropDownItemCollection : IList<string>
{
    // A drop-down list holds at most 25 items in the word processor.
    private const int MaxItems = 25;

    private readonly FormField owner;

    internal DropDownItemCollection(FormField owner) { this.owner = owner; }

    /// <summary>How many items the list has.</summary>
    public int Count => owner.Entries().Count;

    /// <summary>An item's text by its position.</summary>
    public string this[int index]
    {
        get => At(index).Get("val") ?? "";
        set
        {
            ArgumentNullException.ThrowIfNull(value);
            At(index).Set("val", value);
            owner.ShowSelection();
        }
    }

    private Formatting.PropElement At(int index)
    {
        var entries = owner.Entries();
        if ((uint)index >= (uint)entries.Count) throw new ArgumentOutOfRangeException(nameof(index));
        return entries[index];
    }

    /// <summary>Adds an item at the end; returns its position.</summary>
    public int Add(string value)
    {
        Insert(Count, value);
        return Count - 1;
    }

    /// <summary>Inserts an item at a position.</summary>
    public void Insert(int index, string value)
    {
        ArgumentNullException.ThrowIfNull(value);
        int count = Count;
        if ((uint)index > (uint)count) throw new ArgumentOutOfRangeException(nameof(index));
        if (count >= MaxItems) throw new InvalidOperationException($"A drop-down list holds at most {MaxItems} items.");
        owner.InsertEntry(index, value);
    }

    /// <summary>Whether the list has an item of that text.</summary>
    public bool Contains(string value) => IndexOf(value) >= 0;

    /// <summary>The position of the first item of that text, or -1.</summary>
    public int IndexOf(string value) => owner.Entries().FindIndex(e => (e.Get("val") ?? "") == value);

    /// <summary>Removes the first item of that text.</summary>
    public void Remove(string value)
    {
        int i = IndexOf(value);
        if (i >= 0) RemoveAt(i);
    }

    /// <summary>Removes the item at a position.</summary>
    public void RemoveAt(int index)
    {
        var entry = At(index);
        owner.RemoveEntries(e => ReferenceEquals(e, entry));
    }

    /// <summary>Removes every item.</summary>
    public void Clear() => owner.RemoveEntries(_ => true);

    /// <summary>The items' texts in the order the list shows them.</summary>
    public IEnumerator<string> GetEnumerator() => owner.Entries().Select(e => e.Get("val") ?? "").GetEnumerator();

    void ICollection<string>.Add(string item) => Add(item);

    bool ICollection<string>.Remove(string item)
    {
        int i = IndexOf(item);
        if (i < 0) return false;
        RemoveAt(i);
        return true;
    }

    bool ICollection<string>.IsReadOnly => false;

    void ICollection<string>.CopyTo(string[] array, int arrayIndex) => this.ToList().CopyTo(array, arrayIndex);

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}
