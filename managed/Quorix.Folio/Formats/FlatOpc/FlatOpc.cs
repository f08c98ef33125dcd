using System.IO.Compression;
using System.Text;
using System.Xml;
using Quorix.Folio.Loading;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Formats.FlatOpc;

/// <summary>Flat OPC: the DOCX package as one XML document, each part an element holding its XML or,
/// for pictures and other binary parts, its bytes in base64. Written from and read into the DOCX
/// package, so it keeps everything DOCX keeps.</summary>
internal static class FlatPackage
{
    public const string Ns = "http://schemas.microsoft.com/office/2006/xmlPackage";
}

internal sealed class FlatOpcWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.FlatOpc;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as OoxmlSaveOptions ?? throw new ArgumentException("Flat OPC is saved with OoxmlSaveOptions.", nameof(options));
        var package = new MemoryStream();
        FormatRegistry.WriterFor(SaveFormat.Docx).Write(document, package, new OoxmlSaveOptions { CompressionLevel = o.CompressionLevel }, null);
        package.Position = 0;
        using var zip = new ZipArchive(package, ZipArchiveMode.Read);
        var types = ContentTypes(zip);
        var settings = new XmlWriterSettings { Encoding = new UTF8Encoding(false), CloseOutput = false };
        using var w = XmlWriter.Create(output, settings);
        w.WriteStartDocument(true);
        w.WriteProcessingInstruction("mso-application", "progid=\"Word.Document\"");
        w.WriteStartElement("pkg", "package", FlatPackage.Ns);
        foreach (var e in zip.Entries)
        {
            if (e.FullName == "[Content_Types].xml" || e.FullName.EndsWith('/')) continue;
            var name = "/" + e.FullName;
            var type = types.Type(name);
            w.WriteStartElement("pkg", "part", FlatPackage.Ns);
            w.WriteAttributeString("pkg", "name", FlatPackage.Ns, name);
            w.WriteAttributeString("pkg", "contentType", FlatPackage.Ns, type);
            using var s = e.Open();
            if (type.EndsWith("xml", StringComparison.Ordinal))
            {
                w.WriteStartElement("pkg", "xmlData", FlatPackage.Ns);
                using var r = XmlReader.Create(s, new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null });
                r.MoveToContent();
                w.WriteNode(r, true);
            }
            else
            {
                w.WriteAttributeString("pkg", "compression", FlatPackage.Ns, "store");
                w.WriteStartElement("pkg", "binaryData", FlatPackage.Ns);
                var ms = new MemoryStream();
                s.CopyTo(ms);
                w.WriteString(Convert.ToBase64String(ms.ToArray(), Base64FormattingOptions.InsertLineBreaks));
            }
            w.WriteEndElement();
            w.WriteEndElement();
        }
        w.WriteEndElement();
        return new SaveOutputParameters("application/xml");
    }

    private sealed class TypeMap
    {
        public readonly Dictionary<string, string> Defaults = new(StringComparer.OrdinalIgnoreCase);
        public readonly Dictionary<string, string> Overrides = new(StringComparer.OrdinalIgnoreCase);

        public string Type(string partName) =>
            Overrides.TryGetValue(partName, out var t) ? t
            : Defaults.TryGetValue(Path.GetExtension(partName).TrimStart('.'), out var d) ? d
            : "application/octet-stream";
    }

    private static TypeMap ContentTypes(ZipArchive zip)
    {
        var map = new TypeMap();
        var entry = zip.GetEntry("[Content_Types].xml") ?? throw new InvalidOperationException("The package has no content types.");
        using var r = XmlReader.Create(entry.Open());
        while (r.Read())
        {
            if (r.NodeType != XmlNodeType.Element) continue;
            if (r.LocalName == "Default" && r.GetAttribute("Extension") is { } ext) map.Defaults[ext] = r.GetAttribute("ContentType") ?? "";
            else if (r.LocalName == "Override" && r.GetAttribute("PartName") is { } part) map.Overrides[part] = r.GetAttribute("ContentType") ?? "";
        }
        return map;
    }
}

internal sealed class FlatOpcReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.FlatOpc;

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        var package = new MemoryStream();
        try
        {
            using (var zip = new ZipArchive(package, ZipArchiveMode.Create, true))
            {
                var types = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">");
                types.Append("<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>");
                int parts = 0;
                using var r = XmlReader.Create(new MemoryStream(data), new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null, IgnoreWhitespace = false });
                while (r.Read())
                {
                    if (r.NodeType != XmlNodeType.Element || r.LocalName != "part" || r.NamespaceURI != FlatPackage.Ns) continue;
                    var name = r.GetAttribute("name", FlatPackage.Ns) ?? throw new FileCorruptedException("A part of the flat package has no name.");
                    var type = r.GetAttribute("contentType", FlatPackage.Ns) ?? "application/octet-stream";
                    if (!name.StartsWith('/') || name.Contains("..")) throw new FileCorruptedException($"The part name '{name}' is not valid.");
                    byte[] bytes = Array.Empty<byte>();
                    using (var sub = r.ReadSubtree())
                    {
                        sub.Read();
                        while (sub.Read())
                        {
                            if (sub.NodeType != XmlNodeType.Element) continue;
                            if (sub.LocalName == "xmlData")
                            {
                                sub.Read();
                                while (sub.NodeType != XmlNodeType.Element && !sub.EOF) sub.Read();
                                bytes = Encoding.UTF8.GetBytes("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>" + sub.ReadOuterXml());
                                break;
                            }
                            if (sub.LocalName == "binaryData")
                            {
                                bytes = Convert.FromBase64String(sub.ReadElementContentAsString());
                                break;
                            }
                        }
                    }
                    using (var s = zip.CreateEntry(name[1..]).Open()) s.Write(bytes);
                    if (!name.EndsWith(".rels", StringComparison.OrdinalIgnoreCase))
                        types.Append("<Override PartName=\"").Append(System.Security.SecurityElement.Escape(name)).Append("\" ContentType=\"").Append(System.Security.SecurityElement.Escape(type)).Append("\"/>");
                    parts++;
                }
                if (parts == 0) throw new FileCorruptedException("The flat package holds no parts.");
                using var t = zip.CreateEntry("[Content_Types].xml").Open();
                t.Write(Encoding.UTF8.GetBytes(types.Append("</Types>").ToString()));
            }
        }
        catch (Exception e) when (e is XmlException or FormatException)
        {
            throw new FileCorruptedException("The flat package is damaged: " + e.Message, e);
        }
        package.Position = 0;
        FormatRegistry.ReaderFor(LoadFormat.Docx).Read(package, document, options);
    }
}
