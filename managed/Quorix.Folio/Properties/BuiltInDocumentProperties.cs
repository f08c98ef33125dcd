namespace Quorix.Folio.Properties;

/// <summary>
/// The properties every document may carry: the package's core part (title, author, dates, ...)
/// and the extended part written by editing applications (company, statistics, security, ...).
/// </summary>
public sealed class BuiltInDocumentProperties : DocumentPropertyCollection
{
    private static BuiltInProperty Core(string name, System.Xml.Linq.XName element, PropertyType type = PropertyType.String) =>
        new(name, false, element, type);

    private static BuiltInProperty Ext(string name, string element, PropertyType type = PropertyType.String) =>
        new(name, true, PropertyParts.Ep + element, type);

    // Declaration order is the order the collection lists them in.
    private static readonly BuiltInProperty[] Known =
    [
        Core("Title", PropertyParts.Dc + "title"),
        Core("Subject", PropertyParts.Dc + "subject"),
        Core("Author", PropertyParts.Dc + "creator"),
        Core("Keywords", PropertyParts.Cp + "keywords"),
        Core("Comments", PropertyParts.Dc + "description"),
        Core("Category", PropertyParts.Cp + "category"),
        Core("ContentStatus", PropertyParts.Cp + "contentStatus"),
        Core("ContentType", PropertyParts.Cp + "contentType"),
        Core("LastSavedBy", PropertyParts.Cp + "lastModifiedBy"),
        Core("RevisionNumber", PropertyParts.Cp + "revision", PropertyType.Number),
        Core("CreatedTime", PropertyParts.DcTerms + "created", PropertyType.DateTime),
        Core("LastSavedTime", PropertyParts.DcTerms + "modified", PropertyType.DateTime),
        Core("LastPrinted", PropertyParts.Cp + "lastPrinted", PropertyType.DateTime),
        Core("Language", PropertyParts.Dc + "language"),
        Core("Identifier", PropertyParts.Dc + "identifier"),
        Core("Version", PropertyParts.Cp + "version"),
        Ext("Template", "Template"),
        Ext("TotalEditingTime", "TotalTime", PropertyType.Number),
        Ext("Pages", "Pages", PropertyType.Number),
        Ext("Words", "Words", PropertyType.Number),
        Ext("Characters", "Characters", PropertyType.Number),
        Ext("CharactersWithSpaces", "CharactersWithSpaces", PropertyType.Number),
        Ext("Lines", "Lines", PropertyType.Number),
        Ext("Paragraphs", "Paragraphs", PropertyType.Number),
        Ext("NameOfApplication", "Application"),
        Ext("AppVersion", "AppVersion"),
        Ext("Company", "Company"),
        Ext("Manager", "Manager"),
        Ext("HyperlinkBase", "HyperlinkBase"),
        Ext("Security", "DocSecurity", PropertyType.Number),
        Ext("LinksUpToDate", "LinksUpToDate", PropertyType.Boolean),
        Ext("ScaleCrop", "ScaleCrop", PropertyType.Boolean),
        Ext("SharedDocument", "SharedDoc", PropertyType.Boolean),
        Ext("HyperlinksChanged", "HyperlinksChanged", PropertyType.Boolean),
    ];

    private static readonly Dictionary<string, BuiltInProperty> ByName =
        Known.ToDictionary(p => p.Name, StringComparer.OrdinalIgnoreCase);

    internal BuiltInDocumentProperties(Document doc) : base(doc) { }

    private protected override List<DocumentProperty> Items()
    {
        var parts = Parts;
        return Known.Where(p => p.IsSet(parts)).Select(p => new DocumentProperty(parts, p)).ToList();
    }

    /// <summary>Clears the built-in property of that name; built-in properties cannot be removed for good.</summary>
    public override void Remove(string name)
    {
        ArgumentNullException.ThrowIfNull(name);
        if (ByName.TryGetValue(name, out var p) && p.IsSet(Parts))
            p.Write(Parts, null);
    }

    private object? Read(string name) => ByName[name].Read(Parts);
    private void Write(string name, object? value) => ByName[name].Write(Parts, value);
    private string Text(string name) => (string?)Read(name) ?? "";
    private int Number(string name) => Read(name) is int i ? i : 0;
    private bool Flag(string name) => Read(name) is true;
    private DateTime Date(string name) => Read(name) is DateTime d ? d : DateTime.MinValue;

    // Setting "" (or DateTime.MinValue) removes the element, so that an unset property stays absent.
    private void SetText(string name, string? value) => Write(name, string.IsNullOrEmpty(value) ? null : value);
    private void SetDate(string name, DateTime value) => Write(name, value == DateTime.MinValue ? null : value);

    /// <summary>The document's title.</summary>
    public string Title { get => Text("Title"); set => SetText("Title", value); }
    /// <summary>The document's subject.</summary>
    public string Subject { get => Text("Subject"); set => SetText("Subject", value); }
    /// <summary>The name of the document's author.</summary>
    public string Author { get => Text("Author"); set => SetText("Author", value); }
    /// <summary>Keywords that describe the document.</summary>
    public string Keywords { get => Text("Keywords"); set => SetText("Keywords", value); }
    /// <summary>Comments about the document, its description.</summary>
    public string Comments { get => Text("Comments"); set => SetText("Comments", value); }
    /// <summary>The document's category.</summary>
    public string Category { get => Text("Category"); set => SetText("Category", value); }
    /// <summary>The document's status, such as "Draft" or "Final".</summary>
    public string ContentStatus { get => Text("ContentStatus"); set => SetText("ContentStatus", value); }
    /// <summary>The kind of content the document holds.</summary>
    public string ContentType { get => Text("ContentType"); set => SetText("ContentType", value); }
    /// <summary>The name of who saved the document last.</summary>
    public string LastSavedBy { get => Text("LastSavedBy"); set => SetText("LastSavedBy", value); }
    /// <summary>How many times the document was saved.</summary>
    public int RevisionNumber { get => Number("RevisionNumber"); set => Write("RevisionNumber", value); }
    /// <summary>When the document was created, in UTC.</summary>
    public DateTime CreatedTime { get => Date("CreatedTime"); set => SetDate("CreatedTime", value); }
    /// <summary>When the document was saved last, in UTC.</summary>
    public DateTime LastSavedTime { get => Date("LastSavedTime"); set => SetDate("LastSavedTime", value); }
    /// <summary>When the document was printed last, in UTC.</summary>
    public DateTime LastPrinted { get => Date("LastPrinted"); set => SetDate("LastPrinted", value); }
    /// <summary>The language of the document's content.</summary>
    public string Language { get => Text("Language"); set => SetText("Language", value); }
    /// <summary>An identifier of the document, such as an ISBN.</summary>
    public string Identifier { get => Text("Identifier"); set => SetText("Identifier", value); }
    /// <summary>The document's version number.</summary>
    public string Version { get => Text("Version"); set => SetText("Version", value); }
    /// <summary>The name of the template the document was made from.</summary>
    public string Template { get => Text("Template"); set => SetText("Template", value); }
    /// <summary>Minutes spent editing the document.</summary>
    public int TotalEditingTime { get => Number("TotalEditingTime"); set => Write("TotalEditingTime", value); }
    /// <summary>The number of pages, as last stored in the document.</summary>
    public int Pages { get => Number("Pages"); set => Write("Pages", value); }
    /// <summary>The number of words, as last stored in the document.</summary>
    public int Words { get => Number("Words"); set => Write("Words", value); }
    /// <summary>The number of characters without spaces, as last stored in the document.</summary>
    public int Characters { get => Number("Characters"); set => Write("Characters", value); }
    /// <summary>The number of characters with spaces, as last stored in the document.</summary>
    public int CharactersWithSpaces { get => Number("CharactersWithSpaces"); set => Write("CharactersWithSpaces", value); }
    /// <summary>The number of lines, as last stored in the document.</summary>
    public int Lines { get => Number("Lines"); set => Write("Lines", value); }
    /// <summary>The number of paragraphs, as last stored in the document.</summary>
    public int Paragraphs { get => Number("Paragraphs"); set => Write("Paragraphs", value); }
    /// <summary>The name of the application that wrote the document.</summary>
    public string NameOfApplication { get => Text("NameOfApplication"); set => SetText("NameOfApplication", value); }
    /// <summary>The version of the application that wrote the document.</summary>
    public string AppVersion { get => Text("AppVersion"); set => SetText("AppVersion", value); }
    /// <summary>The company the document belongs to.</summary>
    public string Company { get => Text("Company"); set => SetText("Company", value); }
    /// <summary>The name of the author's manager.</summary>
    public string Manager { get => Text("Manager"); set => SetText("Manager", value); }
    /// <summary>The base that relative hyperlinks of the document start from.</summary>
    public string HyperlinkBase { get => Text("HyperlinkBase"); set => SetText("HyperlinkBase", value); }
    /// <summary>The protection the document asks readers to apply, such as read-only recommended.</summary>
    public DocumentSecurity Security { get => (DocumentSecurity)Number("Security"); set => Write("Security", (int)value); }
    /// <summary>Whether the document's hyperlinks were up to date when it was saved.</summary>
    public bool LinksUpToDate { get => Flag("LinksUpToDate"); set => Write("LinksUpToDate", value); }
    /// <summary>Whether the document's thumbnail is cropped rather than scaled.</summary>
    public bool ScaleCrop { get => Flag("ScaleCrop"); set => Write("ScaleCrop", value); }
    /// <summary>Whether the document is shared by several people.</summary>
    public bool SharedDocument { get => Flag("SharedDocument"); set => Write("SharedDocument", value); }
    /// <summary>Whether hyperlinks were changed outside the application that wrote the document.</summary>
    public bool HyperlinksChanged { get => Flag("HyperlinksChanged"); set => Write("HyperlinksChanged", value); }
}
