using System.Text;
using System.Text.RegularExpressions;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>Translates between the two conformance classes of the format. Strict documents name
/// the same vocabulary under other namespaces; the model reads transitional names only, so a strict
/// package is translated on load, and translated back on save when strict output is asked for.</summary>
internal static partial class Conformance
{
    private const string Strict = "http://purl.oclc.org/ooxml/";
    private const string Transitional = "http://schemas.openxmlformats.org/";

    // Names that differ beyond the namespace pattern, strict first.
    private static readonly (string Strict, string Transitional)[] Renamed =
    {
        ("extendedProperties", "extended-properties"),
        ("customProperties", "custom-properties"),
    };

    // Vocabulary that exists in transitional documents only; a strict file cannot carry it.
    private static readonly string[] TransitionalOnly = { "urn:schemas-microsoft-com:vml", "urn:schemas-microsoft-com:office:office", "urn:schemas-microsoft-com:office:word" };

    [GeneratedRegex(@"http://purl\.oclc\.org/ooxml/(\w+)/(\w+)")]
    private static partial Regex StrictName();

    // The packaging vocabulary is the same in both classes.
    [GeneratedRegex(@"http://schemas\.openxmlformats\.org/(?!package/)(\w+)/2006/([\w-]+)")]
    private static partial Regex TransitionalName();

    [GeneratedRegex(@"\s[\w]+:conformance=""strict""")]
    private static partial Regex StrictMark();

    /// <summary>Rewrites a strict package's parts in transitional names; false when the package is not strict.</summary>
    public static bool LoadAsTransitional(OpcPackage pkg)
    {
        var rels = pkg.Get("_rels/.rels");
        if (rels == null || !Contains(rels, Strict)) return false;
        foreach (var name in XmlParts(pkg))
        {
            var bytes = pkg.Parts[name].Bytes;
            if (!Contains(bytes, Strict)) continue;
            var xml = Encoding.UTF8.GetString(bytes);
            xml = StrictName().Replace(xml, m => Transitional + m.Groups[1].Value + "/2006/" + Rename(m.Groups[2].Value, toStrict: false));
            xml = StrictMark().Replace(xml, "");
            pkg.Parts[name] = new OpcPart(Encoding.UTF8.GetBytes(xml));
        }
        return true;
    }

    /// <summary>Rewrites a package written in transitional names in strict ones.</summary>
    public static OpcPackage SaveAsStrict(OpcPackage pkg, string mainPart)
    {
        var copy = pkg.CloneShallow();
        foreach (var name in XmlParts(copy))
        {
            var bytes = copy.Parts[name].Bytes;
            foreach (var ns in TransitionalOnly)
                if (Contains(bytes, ns))
                    throw new UnsupportedFileFormatException($"The document cannot be saved as strict: its part '{name}' holds legacy drawing markup ({ns}) that only transitional documents may carry. Save it as transitional.");
            if (!Contains(bytes, Transitional)) continue;
            var xml = TransitionalName().Replace(Encoding.UTF8.GetString(bytes), m => Strict + m.Groups[1].Value + "/" + Rename(m.Groups[2].Value, toStrict: true));
            if (name.Equals(mainPart, StringComparison.OrdinalIgnoreCase))
            {
                int root = xml.IndexOf(":document ", StringComparison.Ordinal);
                if (root > 0)
                {
                    int prefixStart = xml.LastIndexOf('<', root) + 1;
                    xml = xml.Insert(root + ":document".Length, " " + xml[prefixStart..root] + ":conformance=\"strict\"");
                }
            }
            copy.Parts[name] = new OpcPart(Encoding.UTF8.GetBytes(xml));
        }
        return copy;
    }

    private static string Rename(string name, bool toStrict)
    {
        foreach (var (s, t) in Renamed)
            if (name == (toStrict ? t : s)) return toStrict ? s : t;
        return name;
    }

    private static IEnumerable<string> XmlParts(OpcPackage pkg) =>
        pkg.Parts.Keys.Where(n => n.EndsWith(".xml", StringComparison.OrdinalIgnoreCase) || n.EndsWith(".rels", StringComparison.OrdinalIgnoreCase)).ToArray();

    private static bool Contains(byte[] bytes, string ascii) => bytes.AsSpan().IndexOf(Encoding.ASCII.GetBytes(ascii)) >= 0;
}
