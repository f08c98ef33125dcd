using System.Globalization;
using System.Xml.Linq;

namespace Quorix.Folio.Properties;

/// <summary>
/// One document property. A built-in one reads and writes its element of the core or extended
/// part; a custom one its property element of the custom part. Values are read afresh each
/// time, so a property object always shows what the document holds now.
/// </summary>
public sealed class DocumentProperty
{
    private readonly PropertyParts parts;
    private readonly BuiltInProperty? builtIn;
    private readonly XElement? element;

    internal DocumentProperty(PropertyParts parts, BuiltInProperty builtIn)
    {
        this.parts = parts;
        this.builtIn = builtIn;
        Name = builtIn.Name;
    }

    internal DocumentProperty(PropertyParts parts, XElement element)
    {
        this.parts = parts;
        this.element = element;
        Name = (string?)element.Attribute("name") ?? "";
    }

    /// <summary>The property's name.</summary>
    public string Name { get; }

    /// <summary>The kind of the property's value.</summary>
    public PropertyType Type => builtIn?.Type ?? PropertyValues.Read(element!.Elements().FirstOrDefault()).Type;

    /// <summary>The value: a string, int, double, bool, DateTime, decimal, string[] or byte[]; null when not set.</summary>
    public object? Value
    {
        get => builtIn != null ? builtIn.Read(parts) : PropertyValues.Read(element!.Elements().FirstOrDefault()).Value;
        set
        {
            if (builtIn != null)
            {
                builtIn.Write(parts, value);
                return;
            }
            ArgumentNullException.ThrowIfNull(value);
            var variant = PropertyValues.Write(CustomDocumentProperties.Normalise(value));
            parts.WritableCustom();
            element!.RemoveNodes();
            element.Add(variant);
        }
    }

    /// <summary>The value as text: dates in the invariant culture, yes and no as Y and N.</summary>
    public override string ToString() => Value switch
    {
        null => "",
        string s => s,
        bool b => b ? "Y" : "N",
        DateTime d => d.ToString("G", CultureInfo.InvariantCulture),
        string[] items => string.Join(" ", items),
        IFormattable f => f.ToString(null, CultureInfo.InvariantCulture),
        var v => v.ToString() ?? "",
    };

    /// <summary>The value as a whole number.</summary>
    public int ToInt() => Value switch
    {
        int i => i,
        null => 0,
        var v => Convert.ToInt32(v, CultureInfo.InvariantCulture),
    };

    /// <summary>The value as a floating-point number.</summary>
    public double ToDouble() => Value switch
    {
        double d => d,
        null => 0,
        var v => Convert.ToDouble(v, CultureInfo.InvariantCulture),
    };

    /// <summary>The value as true or false.</summary>
    public bool ToBool() => Value switch
    {
        bool b => b,
        null => false,
        var v => Convert.ToBoolean(v, CultureInfo.InvariantCulture),
    };

    /// <summary>The value as a date and time.</summary>
    public DateTime ToDateTime() => Value switch
    {
        DateTime d => d,
        null => DateTime.MinValue,
        var v => Convert.ToDateTime(v, CultureInfo.InvariantCulture),
    };

    /// <summary>The value as bytes; an error when it is not.</summary>
    public byte[] ToByteArray() => Value as byte[] ?? throw new InvalidCastException($"The property '{Name}' does not hold bytes.");
}

/// <summary>A built-in property: the element of the core or extended part that holds it, and its value type.</summary>
internal sealed class BuiltInProperty(string name, bool extended, XName element, PropertyType type)
{
    public readonly string Name = name;
    public readonly bool Extended = extended;
    public readonly XName Element = element;
    public readonly PropertyType Type = type;

    private XElement? Find(PropertyParts parts) => (Extended ? parts.ExtendedRoot : parts.CoreRoot)?.Element(Element);

    public bool IsSet(PropertyParts parts) => Find(parts) != null;

    public object? Read(PropertyParts parts)
    {
        var e = Find(parts);
        if (e == null)
            return null;
        string text = e.Value;
        var inv = CultureInfo.InvariantCulture;
        return Type switch
        {
            PropertyType.Number => int.TryParse(text.Trim(), NumberStyles.Integer, inv, out int i) ? i : null,
            PropertyType.Boolean => text.Trim() is "true" or "1",
            PropertyType.DateTime => PropertyValues.ParseDate(text),
            _ => text,
        };
    }

    /// <summary>Sets the element's text, creating it at the end of its part; null removes it.</summary>
    public void Write(PropertyParts parts, object? value)
    {
        var root = Extended ? parts.WritableExtended() : parts.WritableCore();
        var e = root.Element(Element);
        if (value == null)
        {
            e?.Remove();
            return;
        }
        var inv = CultureInfo.InvariantCulture;
        string text = (Type, value) switch
        {
            (PropertyType.String, string s) => s,
            (PropertyType.Number, int i) => i.ToString(inv),
            (PropertyType.Number, long l) when l is >= int.MinValue and <= int.MaxValue => l.ToString(inv),
            (PropertyType.Boolean, bool b) => b ? "true" : "false",
            (PropertyType.DateTime, DateTime d) => PropertyValues.FormatDate(d),
            _ => throw new ArgumentException($"The property '{Name}' takes a {Type} value, not {value.GetType().Name}."),
        };
        if (e == null)
        {
            e = new XElement(Element);
            // the schema types the core dates explicitly
            if (Type == PropertyType.DateTime && !Extended && Element.Namespace == PropertyParts.DcTerms)
                e.Add(new XAttribute(PropertyParts.Xsi + "type", "dcterms:W3CDTF"));
            root.Add(e);
        }
        e.Value = text;
    }
}
