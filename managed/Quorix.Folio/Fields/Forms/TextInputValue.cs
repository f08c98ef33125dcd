using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>The stored names of text box types, as the form data writes them.</summary>
internal static class TextTypes
{
    public static TextFormFieldType Parse(string? name) => name switch
    {
        "number" => TextFormFieldType.Number,
        "date" => TextFormFieldType.Date,
        "currentDate" => TextFormFieldType.CurrentDate,
        "currentTime" => TextFormFieldType.CurrentTime,
        "calculated" => TextFormFieldType.Calculated,
        _ => TextFormFieldType.Regular,
    };

    public static string Name(TextFormFieldType t) => t switch
    {
        TextFormFieldType.Number => "number",
        TextFormFieldType.Date => "date",
        TextFormFieldType.CurrentDate => "currentDate",
        TextFormFieldType.CurrentTime => "currentTime",
        TextFormFieldType.Calculated => "calculated",
        TextFormFieldType.Regular => "regular",
        _ => throw new ArgumentOutOfRangeException(nameof(t), $"{(int)t} is not a kind of text box."),
    };
}

/// <summary>A value as a text box of a given type and format shows it.</summary>
internal static class TextInputValue
{
    public static string Format(object value, TextFormFieldType type, string format, CultureInfo culture) => type switch
    {
        TextFormFieldType.Number or TextFormFieldType.Calculated => Number(value, format, culture),
        TextFormFieldType.Date or TextFormFieldType.CurrentDate or TextFormFieldType.CurrentTime => Date(value, format, culture),
        _ => Text(value, format, culture),
    };

    private static string Number(object value, string picture, CultureInfo culture)
    {
        double v = value switch
        {
            string s when FieldFormatting.TryNumber(s, culture, out var parsed) => parsed,
            string s => throw new ArgumentException($"\"{s}\" is not a number, which the text box asks for."),
            IConvertible c when value is not (bool or char or DateTime) => c.ToDouble(CultureInfo.InvariantCulture),
            _ => throw new ArgumentException($"A {value.GetType().Name} is not a number, which the text box asks for."),
        };
        return picture.Length > 0 ? FieldFormatting.Number(v, picture, culture) : v.ToString(culture);
    }

    private static string Date(object value, string picture, CultureInfo culture)
    {
        var d = value switch
        {
            DateTime dt => dt,
            DateTimeOffset dto => dto.DateTime,
            string s when DateTime.TryParse(s, culture, DateTimeStyles.AllowWhiteSpaces, out var parsed) => parsed,
            _ => throw new ArgumentException($"\"{value}\" is not a date, which the text box asks for."),
        };
        return FieldFormatting.Date(d, picture.Length > 0 ? picture : culture.DateTimeFormat.ShortDatePattern, culture);
    }

    private static string Text(object value, string format, CultureInfo culture)
    {
        var text = value is IFormattable f ? f.ToString(null, culture) : value.ToString() ?? "";
        GeneralFormat? g = format.ToUpperInvariant() switch
        {
            "UPPERCASE" => GeneralFormat.Upper,
            "LOWERCASE" => GeneralFormat.Lower,
            "FIRST CAPITAL" => GeneralFormat.FirstCap,
            "TITLE CASE" => GeneralFormat.Caps,
            _ => null,
        };
        return g is { } general ? FieldFormatting.General(text, general, culture) : text;
    }
}
