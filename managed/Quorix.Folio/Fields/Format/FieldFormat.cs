namespace Quorix.Folio.Fields;

/// <summary>A \* format: how a field's text or number is shown.</summary>
public enum GeneralFormat
{
    /// <summary>No general format.</summary>
    None = 0,
    Aiueo, UppercaseAlphabetic, LowercaseAlphabetic, Arabic, ArabicAbjad, ArabicAlpha, ArabicDash,
    BahtText, CardText, ChineseNum1, ChineseNum2, ChineseNum3, Chosung, CircleNum, DBChar, DBNum1, DBNum2,
    DBNum3, DBNum4, DollarText, GanaDa, GB1, GB2, GB3, GB4, Hebrew1, Hebrew2, Hex, HindiArabic, HindiCardText,
    HindiLetter1, HindiLetter2, Iroha, KanjiNum1, KanjiNum2, KanjiNum3, Ordinal, OrdText, UppercaseRoman,
    LowercaseRoman, SBChar, ThaiArabic, ThaiCardText, ThaiLetter, VietCardText, Zodiac1, Zodiac2, Zodiac3,
    Caps, FirstCap, Lower, Upper, CharFormat, MergeFormat, MergeFormatInet,
}

/// <summary>The \* formats of a field, in the order written.</summary>
public sealed class GeneralFormatCollection : IEnumerable<GeneralFormat>
{
    private readonly FieldFormat owner;

    internal GeneralFormatCollection(FieldFormat owner) { this.owner = owner; }

    /// <summary>How many general formats (\* switches) the field has.</summary>
    public int Count => owner.Formats().Count;

    public GeneralFormat this[int index] => owner.Formats()[index];

    /// <summary>Adds a general format (a \* switch) to the field.</summary>
    public void Add(GeneralFormat item) => owner.Field.SetSwitch("\\*", FieldFormatting.NameOf(item), append: true);

    /// <summary>Removes a general format (a \* switch) from the field.</summary>
    public void Remove(GeneralFormat item) => owner.Field.RemoveSwitch("\\*", FieldFormatting.NameOf(item));

    public IEnumerator<GeneralFormat> GetEnumerator() => owner.Formats().GetEnumerator();

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>The format switches of a field: \# numeric picture, \@ date picture, \* general formats.</summary>
public sealed class FieldFormat
{
    internal readonly Field Field;

    internal FieldFormat(Field field) { Field = field; }

    /// <summary>The picture numbers are written with (the \# switch).</summary>
    public string? NumericFormat
    {
        get => Field.ParseCode().Get("\\#");
        set => Field.SetSwitch("\\#", value);
    }

    /// <summary>The picture dates are written with (the \@ switch).</summary>
    public string? DateTimeFormat
    {
        get => Field.ParseCode().Get("\\@");
        set => Field.SetSwitch("\\@", value);
    }

    /// <summary>The general formats (\* switches) of the field.</summary>
    public GeneralFormatCollection GeneralFormats => new(this);

    internal List<GeneralFormat> Formats()
    {
        var list = new List<GeneralFormat>();
        foreach (var a in Field.ParseCode().All("\\*"))
            if (FieldFormatting.Parse(a) is { } f) list.Add(f);
        return list;
    }
}
