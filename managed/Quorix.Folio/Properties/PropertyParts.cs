using System.Xml;
using System.Xml.Linq;
using Quorix.Folio.Docx;
using Quorix.Folio.Package;

namespace Quorix.Folio.Properties;

/// <summary>
/// The package's core, extended and custom property parts, held as XML trees: built-in and
/// custom properties read and write their elements in place, so whatever the model does not
/// know (other elements, attributes, vendor extensions) is written back unchanged.
/// </summary>
internal sealed class PropertyParts
{
    public const string RelCore = "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";
    public const string RelExtended = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties";
    public const string RelCustom = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/custom-properties";
    private const string CtCore = "application/vnd.openxmlformats-package.core-properties+xml";
    private const string CtExtended = "application/vnd.openxmlformats-officedocument.extended-properties+xml";
    private const string CtCustom = "application/vnd.openxmlformats-officedocument.custom-properties+xml";

    public static readonly XNamespace Cp = "http://schemas.openxmlformats.org/package/2006/metadata/core-properties";
    public static readonly XNamespace Dc = "http://purl.org/dc/elements/1.1/";
    public static readonly XNamespace DcTerms = "http://purl.org/dc/terms/";
    public static readonly XNamespace Xsi = "http://www.w3.org/2001/XMLSchema-instance";
    public static readonly XNamespace Ep = "http://schemas.openxmlformats.org/officeDocument/2006/extended-properties";
    public static readonly XNamespace Custom = "http://schemas.openxmlformats.org/officeDocument/2006/custom-properties";
    public static readonly XNamespace Vt = "http://schemas.openxmlformats.org/officeDocument/2006/docPropsVTypes";

    private sealed class Part(string rel, string contentType, string defaultName, XDocument? tree, string? name)
    {
        public readonly string Rel = rel;
        public readonly string ContentType = contentType;
        public readonly string DefaultName = defaultName;
        public XDocument? Tree = tree;
        public string? Name = name;
        public bool Dirty;
    }

    private readonly Part core, extended, custom;

    private PropertyParts(Part core, Part extended, Part custom)
    {
        this.core = core;
        this.extended = extended;
        this.custom = custom;
    }

    /// <summary>The parts a loaded package names in its root relationships; none for a new document.</summary>
    public static PropertyParts Load(OpcPackage? package)
    {
        var rels = package?.Get("_rels/.rels") != null ? package.RelsOf("", DocxReader.Settings) : new List<Relationship>();
        Part Read(string rel, string contentType, string defaultName)
        {
            var found = rels.Find(r => r.Type == rel && !r.External);
            string? name = found == null ? null : OpcPackage.Resolve("", found.Target);
            byte[]? bytes = name == null ? null : package!.Get(name);
            return new Part(rel, contentType, defaultName, bytes == null ? null : Parse(bytes, name!), bytes == null ? null : name);
        }
        return new PropertyParts(Read(RelCore, CtCore, "docProps/core.xml"), Read(RelExtended, CtExtended, "docProps/app.xml"),
                                 Read(RelCustom, CtCustom, "docProps/custom.xml"));
    }

    private static XDocument Parse(byte[] bytes, string name)
    {
        try
        {
            using var reader = XmlReader.Create(new MemoryStream(bytes), DocxReader.Settings);
            return XDocument.Load(reader, LoadOptions.PreserveWhitespace);
        }
        catch (XmlException e)
        {
            throw new FileCorruptedException($"The property part '{name}' is not well-formed XML: {e.Message}", e);
        }
    }

    public PropertyParts Clone() => new(Copy(core), Copy(extended), Copy(custom));

    private static Part Copy(Part p) =>
        new(p.Rel, p.ContentType, p.DefaultName, p.Tree == null ? null : new XDocument(p.Tree), p.Name) { Dirty = p.Dirty };

    public bool Dirty => core.Dirty || extended.Dirty || custom.Dirty;

    // ---- the roots, made on first write

    public XElement? CoreRoot => core.Tree?.Root;
    public XElement? ExtendedRoot => extended.Tree?.Root;
    public XElement? CustomRoot => custom.Tree?.Root;

    public XElement WritableCore() => Writable(core, () => new XElement(Cp + "coreProperties",
        new XAttribute(XNamespace.Xmlns + "cp", Cp), new XAttribute(XNamespace.Xmlns + "dc", Dc),
        new XAttribute(XNamespace.Xmlns + "dcterms", DcTerms), new XAttribute(XNamespace.Xmlns + "xsi", Xsi)));

    public XElement WritableExtended() => Writable(extended, () => new XElement(Ep + "Properties",
        new XAttribute(XNamespace.Xmlns + "vt", Vt)));

    public XElement WritableCustom() => Writable(custom, () => new XElement(Custom + "Properties",
        new XAttribute(XNamespace.Xmlns + "vt", Vt)));

    private static XElement Writable(Part part, Func<XElement> create)
    {
        part.Tree ??= new XDocument(new XDeclaration("1.0", "UTF-8", "yes"), create());
        part.Dirty = true;
        return part.Tree.Root!;
    }

    // ---- saving

    /// <summary>Puts the changed parts into the package being written, with their relationships and content types.</summary>
    public void WriteTo(OpcPackage pkg)
    {
        if (!Dirty)
            return;
        var rootRels = pkg.Get("_rels/.rels") != null ? pkg.RelsOf("", DocxReader.Settings) : new List<Relationship>();
        var scope = new RelScope("", rootRels);
        foreach (var part in new[] { core, extended, custom })
        {
            if (!part.Dirty || part.Tree == null)
                continue;
            part.Name ??= part.DefaultName;
            pkg.Parts[part.Name] = Render(part.Tree);
            pkg.Overrides["/" + part.Name] = part.ContentType;
            if (!rootRels.Exists(r => r.Type == part.Rel && !r.External))
                scope.Add(part.Rel, part.Name);
        }
        if (scope.Dirty || pkg.Get("_rels/.rels") == null)
        {
            var ms = new MemoryStream();
            using (var w = XmlWriter.Create(ms, new XmlWriterSettings { Encoding = new System.Text.UTF8Encoding(false) }))
                scope.Write(w);
            pkg.Parts["_rels/.rels"] = ms.ToArray();
        }
        pkg.Defaults.TryAdd("rels", Ns.CtRels);
        pkg.Defaults.TryAdd("xml", "application/xml");
    }

    private static byte[] Render(XDocument tree)
    {
        var ms = new MemoryStream();
        var settings = new XmlWriterSettings { Encoding = new System.Text.UTF8Encoding(false), Indent = false };
        using (var w = XmlWriter.Create(ms, settings))
            tree.Save(w);
        return ms.ToArray();
    }
}
