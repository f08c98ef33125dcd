namespace Quorix.Folio.Fields;

/// <summary>FORMTEXT: a text box of a form; its result is what was typed in and stays on update.</summary>
public sealed class FieldFormText : Field
{
    internal FieldFormText() { }

    /// <summary>The form data of this text box.</summary>
    public FormField FormField => new(this);
}

/// <summary>FORMCHECKBOX: a check box of a form; it shows a box drawn from its form data.</summary>
public sealed class FieldFormCheckBox : Field
{
    internal FieldFormCheckBox() { }

    /// <summary>The form data of this check box.</summary>
    public FormField FormField => new(this);
}

/// <summary>FORMDROPDOWN: a drop-down list of a form; update shows its chosen item.</summary>
public sealed class FieldFormDropDown : Field
{
    internal FieldFormDropDown() { }

    /// <summary>The form data of this drop-down list.</summary>
    public FormField FormField => new(this);

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx) => Separator == null ? null : FormField.SelectedItem;
}
