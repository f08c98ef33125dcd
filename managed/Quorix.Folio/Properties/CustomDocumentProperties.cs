using System.Collections;
using System.Globalization;
using System.Xml.Linq;

namespace Quorix.Folio.Properties;

/// <summary>Properties the document's authors defined, kept in the package's custom property part.</summary>
public sealed class CustomDocumentProperties : DocumentPropertyCollection
{
    // The format identifier every custom property of a document carries.
    private const string FormatId = "{D5CDD505-2E9C-101B-9397-08002B2CF9AE}";

    internal CustomDocumentProperties(Document doc) : base(doc) { }

    private protected override List<DocumentProperty> Items()
    {
        var root = Parts.CustomRoot;
        if (root == null)
            return [];
        return root.Elements(PropertyParts.Custom + "property").Select(e => new DocumentProperty(Parts, e)).ToList();
    }

    /// <summary>
    /// Adds a property, or gives an existing one of that name the new value. A value may be a
    /// string, bool, int, long, double, decimal, DateTime, a list of strings, or bytes.
    /// </summary>
    public DocumentProperty Add(string name, object value)
    {
        ArgumentException.ThrowIfNullOrEmpty(name);
        ArgumentNullException.ThrowIfNull(value);
        var variant = PropertyValues.Write(Normalise(value));
        var existing = Get(name);
        if (existing != null)
        {
            existing.Value = value;
            return existing;
        }
        var root = Parts.WritableCustom();
        int pid = 1;
        foreach (var e in root.Elements(PropertyParts.Custom + "property"))
            pid = Math.Max(pid, int.TryParse((string?)e.Attribute("pid"), NumberStyles.Integer, CultureInfo.InvariantCulture, out int p) ? p : 1);
        var element = new XElement(PropertyParts.Custom + "property",
            new XAttribute("fmtid", FormatId), new XAttribute("pid", (pid + 1).ToString(CultureInfo.InvariantCulture)),
            new XAttribute("name", name), variant);
        root.Add(element);
        return new DocumentProperty(Parts, element);
    }

    /// <summary>Removes the custom property of that name.</summary>
    public override void Remove(string name)
    {
        ArgumentNullException.ThrowIfNull(name);
        var root = Parts.CustomRoot;
        var found = root?.Elements(PropertyParts.Custom + "property")
            .FirstOrDefault(e => string.Equals((string?)e.Attribute("name"), name, StringComparison.OrdinalIgnoreCase));
        if (found == null)
            return;
        Parts.WritableCustom();
        found.Remove();
    }

    // A list of strings (as Python lists arrive) is a string array; other lists are not property values.
    internal static object Normalise(object value) => value switch
    {
        string or byte[] or string[] => value,
        IList list when list.Cast<object?>().All(i => i is string) => list.Cast<string>().ToArray(),
        IList => throw new ArgumentException("A list property holds strings only."),
        _ => value,
    };
}
