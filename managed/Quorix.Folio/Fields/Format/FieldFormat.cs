namespace Quorix.Folio.Fields;

/// <summary>A \* format: how a field's text or number is shown.</summary>
public enum GeneralFormat
{
    /// <summary>No general format.</summary>
    None = 0,
    /// <summary>Japanese aiueo order of kana.</summary>
    Aiueo,
    /// <summary>Upper-case letters: A, B, ... Z, AA (ALPHABETIC).</summary>
    UppercaseAlphabetic,
    /// <summary>Lower-case letters: a, b, ... z, aa (alphabetic).</summary>
    LowercaseAlphabetic,
    /// <summary>Arabic numerals: 1, 2, 3.</summary>
    Arabic,
    /// <summary>Arabic letters in abjad order.</summary>
    ArabicAbjad,
    /// <summary>Arabic letters in alphabetical order.</summary>
    ArabicAlpha,
    /// <summary>Arabic numerals between dashes: - 1 -.</summary>
    ArabicDash,
    /// <summary>A Thai currency amount in words.</summary>
    BahtText,
    /// <summary>A cardinal number in words: forty-two.</summary>
    CardText,
    /// <summary>Chinese numerals, first style.</summary>
    ChineseNum1,
    /// <summary>Chinese numerals, second style.</summary>
    ChineseNum2,
    /// <summary>Chinese numerals, third style.</summary>
    ChineseNum3,
    /// <summary>Korean chosung (initial consonant) order.</summary>
    Chosung,
    /// <summary>Numbers in circles.</summary>
    CircleNum,
    /// <summary>Full-width (double-byte) characters.</summary>
    DBChar,
    /// <summary>East Asian numerals, first style.</summary>
    DBNum1,
    /// <summary>East Asian numerals, second style.</summary>
    DBNum2,
    /// <summary>East Asian numerals, third style.</summary>
    DBNum3,
    /// <summary>East Asian numerals, fourth style.</summary>
    DBNum4,
    /// <summary>A currency amount in words, cents as a fraction: forty-two and 50/100.</summary>
    DollarText,
    /// <summary>Korean ganada order.</summary>
    GanaDa,
    /// <summary>Chinese numbering, first GB style.</summary>
    GB1,
    /// <summary>Chinese numbering, second GB style.</summary>
    GB2,
    /// <summary>Chinese numbering, third GB style.</summary>
    GB3,
    /// <summary>Chinese numbering, fourth GB style.</summary>
    GB4,
    /// <summary>Hebrew numerals.</summary>
    Hebrew1,
    /// <summary>Hebrew letters in alphabetical order.</summary>
    Hebrew2,
    /// <summary>Hexadecimal numbers: 2A.</summary>
    Hex,
    /// <summary>Hindi numerals.</summary>
    HindiArabic,
    /// <summary>A cardinal number in Hindi words.</summary>
    HindiCardText,
    /// <summary>Hindi letters, first style.</summary>
    HindiLetter1,
    /// <summary>Hindi letters, second style.</summary>
    HindiLetter2,
    /// <summary>Japanese iroha order of kana.</summary>
    Iroha,
    /// <summary>Kanji numerals, first style.</summary>
    KanjiNum1,
    /// <summary>Kanji numerals, second style.</summary>
    KanjiNum2,
    /// <summary>Kanji numerals, third style.</summary>
    KanjiNum3,
    /// <summary>Ordinal numerals: 1st, 2nd, 3rd.</summary>
    Ordinal,
    /// <summary>An ordinal number in words: forty-second.</summary>
    OrdText,
    /// <summary>Upper-case Roman numerals: I, II, III (ROMAN).</summary>
    UppercaseRoman,
    /// <summary>Lower-case Roman numerals: i, ii, iii (roman).</summary>
    LowercaseRoman,
    /// <summary>Half-width (single-byte) characters.</summary>
    SBChar,
    /// <summary>Thai numerals.</summary>
    ThaiArabic,
    /// <summary>A cardinal number in Thai words.</summary>
    ThaiCardText,
    /// <summary>Thai letters.</summary>
    ThaiLetter,
    /// <summary>A cardinal number in Vietnamese words.</summary>
    VietCardText,
    /// <summary>The ten heavenly stems, in order.</summary>
    Zodiac1,
    /// <summary>The twelve earthly branches, in order.</summary>
    Zodiac2,
    /// <summary>The sixty-year cycle of stems and branches.</summary>
    Zodiac3,
    /// <summary>Each word's first letter a capital (Caps).</summary>
    Caps,
    /// <summary>The first letter of the result a capital (FirstCap).</summary>
    FirstCap,
    /// <summary>Every letter lower-case.</summary>
    Lower,
    /// <summary>Every letter upper-case.</summary>
    Upper,
    /// <summary>The result takes the formatting of the field code's first character (CHARFORMAT).</summary>
    CharFormat,
    /// <summary>The result keeps the formatting given to it when the field is updated (MERGEFORMAT).</summary>
    MergeFormat,
    /// <summary>As MergeFormat, for results taken from web pages (MERGEFORMATINET).</summary>
    MergeFormatInet,
}

/// <summary>The \* formats of a field, in the order written.</summary>
public sealed class GeneralFormatCollection : IEnumerable<GeneralFormat>
{
    private readonly FieldFormat owner;

    internal GeneralFormatCollection(FieldFormat owner) { this.owner = owner; }

    /// <summary>How many general formats (\* switches) the field has.</summary>
    public int Count => owner.Formats().Count;

    /// <summary>The general format at that position.</summary>
    public GeneralFormat this[int index] => owner.Formats()[index];

    /// <summary>Adds a general format (a \* switch) to the field.</summary>
    public void Add(GeneralFormat item) => owner.Field.SetSwitch("\\*", FieldFormatting.NameOf(item), append: true);

    /// <summary>Removes a general format (a \* switch) from the field.</summary>
    public void Remove(GeneralFormat item) => owner.Field.RemoveSwitch("\\*", FieldFormatting.NameOf(item));

    /// <summary>The field's general formats, in the order written.</summary>
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
