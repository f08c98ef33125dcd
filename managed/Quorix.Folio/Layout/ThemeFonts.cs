using System.Xml;
using Quorix.Folio.Package;

namespace Quorix.Folio.Layout;

/// <summary>The Latin typefaces of a document's theme: text that names its font by theme slot
/// ("minorHAnsi" for body text, "majorHAnsi" for headings) is set in these.</summary>
internal sealed record ThemeFonts(string? Major, string? Minor)
{
    private const string DrawingNs = "http://schemas.openxmlformats.org/drawingml/2006/main";

    public static ThemeFonts? Of(Document doc)
    {
        if (doc.Source is not { } pkg || doc.MainPartName is not { } main) return null;
        var settings = new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null };
        var rel = pkg.RelsOf(main, settings).FirstOrDefault(r => !r.External && r.Type.EndsWith("/theme", StringComparison.Ordinal));
        if (rel == null || pkg.Get(OpcPackage.Resolve(main, rel.Target)) is not { } bytes) return null;
        string? major = null, minor = null, current = null;
        try
        {
            using var r = XmlReader.Create(new MemoryStream(bytes), settings);
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element || r.NamespaceURI != DrawingNs) continue;
                if (r.LocalName is "majorFont" or "minorFont") current = r.LocalName;
                else if (r.LocalName == "latin" && current != null && r.GetAttribute("typeface") is { Length: > 0 } face)
                {
                    if (current == "majorFont") major ??= face;
                    else minor ??= face;
                    current = null;
                }
            }
        }
        catch (XmlException)
        {
            return null; // a damaged theme leaves the names the runs give
        }
        return new ThemeFonts(major, minor);
    }
}
