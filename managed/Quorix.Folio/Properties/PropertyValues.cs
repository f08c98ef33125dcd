using System.Globalization;
using System.Xml.Linq;

namespace Quorix.Folio.Properties;

/// <summary>Property values in the XML forms of the property parts, both ways.</summary>
internal static class PropertyValues
{
    private static readonly CultureInfo Inv = CultureInfo.InvariantCulture;

    /// <summary>A W3C date-time as the parts write it: UTC with a "Z"; a value of no stated kind counts as UTC.</summary>
    public static string FormatDate(DateTime value)
    {
        var utc = value.Kind == DateTimeKind.Local ? value.ToUniversalTime() : value;
        return utc.ToString("yyyy-MM-dd'T'HH:mm:ss'Z'", Inv);
    }

    /// <summary>A date written with an offset or "Z" comes back as UTC; one without stays of no stated kind.</summary>
    public static DateTime? ParseDate(string text)
    {
        text = text.Trim();
        if (text.Length == 0)
            return null;
        bool zoned = text.EndsWith('Z') || (text.Length > 10 && (text[^6] == '+' || text[^6] == '-') && text[^3] == ':');
        var styles = zoned ? DateTimeStyles.AdjustToUniversal : DateTimeStyles.None;
        if (!DateTime.TryParse(text, Inv, styles, out var value))
            return null;
        return zoned ? DateTime.SpecifyKind(value, DateTimeKind.Utc) : value;
    }

    /// <summary>The value and type of a custom property's variant element (vt:lpwstr, vt:i4, ...).</summary>
    public static (object? Value, PropertyType Type) Read(XElement? variant)
    {
        if (variant == null)
            return (null, PropertyType.Other);
        string text = variant.Value;
        switch (variant.Name.LocalName)
        {
            case "lpwstr" or "lpstr" or "bstr":
                return (text, PropertyType.String);
            case "bool":
                return (text.Trim() is "true" or "1", PropertyType.Boolean);
            case "i1" or "i2" or "i4" or "int" or "ui1" or "ui2" when int.TryParse(text, NumberStyles.Integer, Inv, out int i):
                return (i, PropertyType.Number);
            case "ui4" or "i8" or "ui8" or "uint" when long.TryParse(text, NumberStyles.Integer, Inv, out long l):
                return (l, PropertyType.Number);
            case "r4" or "r8" when double.TryParse(text, NumberStyles.Float, Inv, out double d):
                return (d, PropertyType.Double);
            case "decimal" or "cy" when decimal.TryParse(text, NumberStyles.Number, Inv, out decimal m):
                return (m, PropertyType.Decimal);
            case "filetime" or "date" when ParseDate(text) is { } date:
                return (date, PropertyType.DateTime);
            case "vector" when variant.Elements().All(e => e.Name.LocalName is "lpwstr" or "lpstr" or "bstr"):
                return (variant.Elements().Select(e => e.Value).ToArray(), PropertyType.StringArray);
            case "blob":
                return (Convert.FromBase64String(text), PropertyType.ByteArray);
            default:
                return (text, PropertyType.Other);
        }
    }

    /// <summary>The variant element for a value; an unsupported kind of value is refused.</summary>
    public static XElement Write(object value)
    {
        var vt = PropertyParts.Vt;
        return value switch
        {
            string s => new XElement(vt + "lpwstr", s),
            bool b => new XElement(vt + "bool", b ? "true" : "false"),
            int or short or sbyte or byte or ushort => new XElement(vt + "i4", Convert.ToInt32(value, Inv).ToString(Inv)),
            long l when l is >= int.MinValue and <= int.MaxValue => new XElement(vt + "i4", l.ToString(Inv)),
            long or uint => new XElement(vt + "i8", Convert.ToInt64(value, Inv).ToString(Inv)),
            double d => new XElement(vt + "r8", d.ToString("R", Inv)),
            float f => new XElement(vt + "r8", ((double)f).ToString("R", Inv)),
            decimal m => new XElement(vt + "decimal", m.ToString(Inv)),
            DateTime t => new XElement(vt + "filetime", FormatDate(t)),
            string[] items => new XElement(vt + "vector", new XAttribute("baseType", "lpwstr"), new XAttribute("size", items.Length),
                                           items.Select(i => new XElement(vt + "lpwstr", i))),
            byte[] bytes => new XElement(vt + "blob", Convert.ToBase64String(bytes)),
            _ => throw new ArgumentException($"A document property cannot hold a value of type {value.GetType().FullName}."),
        };
    }

    /// <summary>The type a value is stored as.</summary>
    public static PropertyType TypeOf(object value) => Read(Write(value)).Type;
}
