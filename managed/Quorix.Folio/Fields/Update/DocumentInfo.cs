using System.Xml;

namespace Quorix.Folio.Fields;

/// <summary>The document's properties as fields read them: the core, application and custom property
/// parts of the file it was loaded from, plus values set on the document since.</summary>
internal static class DocumentInfo
{
    public static Dictionary<string, string> Read(Document? doc)
    {
        var map = new Dictionary<string, string>(StringComparer.OrdinalIgnoreCase);
        if (doc?.Source is { } pkg)
        {
            Read(pkg.Get("docProps/core.xml"), map, custom: false);
            Read(pkg.Get("docProps/app.xml"), map, custom: false);
            Read(pkg.Get("docProps/custom.xml"), map, custom: true);
        }
        if (doc != null) foreach (var (k, v) in doc.FieldProperties) map[k] = v;
        return map;
    }

    // Property names as fields know them, by the element that stores them.
    private static readonly Dictionary<string, string> Aliases = new(StringComparer.Ordinal)
    {
        ["creator"] = "Author", ["title"] = "Title", ["subject"] = "Subject", ["keywords"] = "Keywords",
        ["description"] = "Comments", ["lastModifiedBy"] = "LastSavedBy", ["created"] = "CreateTime",
        ["modified"] = "LastSavedTime", ["lastPrinted"] = "LastPrinted", ["revision"] = "RevisionNumber",
        ["category"] = "Category", ["Company"] = "Company", ["Manager"] = "Manager", ["Template"] = "Template",
        ["TotalTime"] = "TotalEditingTime", ["Pages"] = "Pages", ["Words"] = "Words", ["Characters"] = "Characters",
    };

    private static void Read(byte[]? bytes, Dictionary<string, string> map, bool custom)
    {
        if (bytes == null) return;
        try
        {
            using var r = XmlReader.Create(new MemoryStream(bytes), Docx.DocxReader.Settings);
            string? customName = null;
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element || r.Depth == 0) continue;
                if (custom)
                {
                    if (r.Depth == 1) customName = r.GetAttribute("name");
                    else if (customName != null && !r.IsEmptyElement) map[customName] = r.ReadElementContentAsString();
                }
                else if (r.Depth == 1 && Aliases.TryGetValue(r.LocalName, out var name) && !r.IsEmptyElement)
                    map[name] = r.ReadElementContentAsString();
            }
        }
        catch (XmlException)
        {
            // A damaged property part leaves the fields that read it with their old results.
        }
    }
}
