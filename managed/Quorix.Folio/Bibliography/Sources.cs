using System.Xml;
using System.Xml.Linq;

namespace Quorix.Folio.Bibliography;

/// <summary>The kind of work a source is.</summary>
public enum SourceType
{
    /// <summary>A book.</summary>
    Book = 0,
    /// <summary>A chapter or section of a book.</summary>
    BookSection = 1,
    /// <summary>An article in a scholarly journal.</summary>
    JournalArticle = 2,
    /// <summary>An article in a magazine or newspaper.</summary>
    ArticleInAPeriodical = 3,
    /// <summary>A paper in a conference's proceedings.</summary>
    ConferenceProceedings = 4,
    /// <summary>A report.</summary>
    Report = 5,
    /// <summary>A web site.</summary>
    InternetSite = 6,
    /// <summary>A document from a web site.</summary>
    DocumentFromInternetSite = 7,
    /// <summary>An electronic source other than a web site.</summary>
    ElectronicSource = 8,
    /// <summary>A work of art.</summary>
    Art = 9,
    /// <summary>A sound recording.</summary>
    SoundRecording = 10,
    /// <summary>A performance.</summary>
    Performance = 11,
    /// <summary>A film.</summary>
    Film = 12,
    /// <summary>An interview.</summary>
    Interview = 13,
    /// <summary>A patent.</summary>
    Patent = 14,
    /// <summary>A court case.</summary>
    Case = 15,
    /// <summary>Any other kind of work.</summary>
    Misc = 16,
}

/// <summary>A contributor to a source: a person or an organisation.</summary>
public abstract class Contributor
{
    private protected Contributor() { }
}

/// <summary>A person who contributed to a source.</summary>
public sealed class Person : Contributor
{
    /// <summary>A person by first, middle and last name.</summary>
    public Person(string last, string first, string middle)
    {
        Last = last ?? "";
        First = first ?? "";
        Middle = middle ?? "";
    }

    /// <summary>The family name.</summary>
    public string Last { get; }

    /// <summary>The given name.</summary>
    public string First { get; }

    /// <summary>The middle name.</summary>
    public string Middle { get; }
}

/// <summary>An organisation that contributed to a source.</summary>
public sealed class Corporate : Contributor
{
    /// <summary>An organisation by name.</summary>
    public Corporate(string name) { Name = name ?? ""; }

    /// <summary>The organisation's name.</summary>
    public string Name { get; }
}

/// <summary>The people of one role of a source, in the order the source lists them.</summary>
public sealed class PersonCollection : Contributor, IEnumerable<Person>
{
    private readonly List<Person> people;

    internal PersonCollection(List<Person> people) { this.people = people; }

    /// <summary>How many people the role lists.</summary>
    public int Count => people.Count;

    /// <summary>A person by position.</summary>
    public Person this[int index] => people[index];

    /// <summary>The people in the order the source lists them.</summary>
    public IEnumerator<Person> GetEnumerator() => people.GetEnumerator();

    System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>The contributors of a source by role; null where the source names none.</summary>
public sealed class ContributorCollection
{
    private readonly Dictionary<string, Contributor> roles;

    internal ContributorCollection(Dictionary<string, Contributor> roles) { this.roles = roles; }

    private Contributor? Role(string name) => roles.TryGetValue(name, out var c) ? c : null;

    /// <summary>The authors: people, or an organisation.</summary>
    public Contributor? Author => Role("Author");

    /// <summary>The editors.</summary>
    public Contributor? Editor => Role("Editor");

    /// <summary>The translators.</summary>
    public Contributor? Translator => Role("Translator");

    /// <summary>The compilers.</summary>
    public Contributor? Compiler => Role("Compiler");
}

/// <summary>One work of the document's bibliography, as the bibliography sources part describes it.</summary>
public sealed class Source
{
    private readonly Dictionary<string, string> fields;

    internal Source(Dictionary<string, string> fields, ContributorCollection contributors)
    {
        this.fields = fields;
        Contributors = contributors;
    }

    private string? F(string name) => fields.TryGetValue(name, out var v) ? v : null;

    /// <summary>The tag citations name the source by.</summary>
    public string Tag => F("Tag") ?? "";

    /// <summary>The kind of work.</summary>
    public SourceType SourceType => Enum.TryParse<SourceType>(F("SourceType"), true, out var t) ? t : SourceType.Misc;

    /// <summary>The contributors by role.</summary>
    public ContributorCollection Contributors { get; }

    /// <summary>The work's title.</summary>
    public string? Title => F("Title");
    /// <summary>The year of publication.</summary>
    public string? Year => F("Year");
    /// <summary>The month of publication.</summary>
    public string? Month => F("Month");
    /// <summary>The day of publication.</summary>
    public string? Day => F("Day");
    /// <summary>The city of publication.</summary>
    public string? City => F("City");
    /// <summary>The publisher.</summary>
    public string? Publisher => F("Publisher");
    /// <summary>The journal an article appeared in.</summary>
    public string? JournalName => F("JournalName");
    /// <summary>The volume.</summary>
    public string? Volume => F("Volume");
    /// <summary>The issue of a journal.</summary>
    public string? Issue => F("Issue");
    /// <summary>The pages of an article or section.</summary>
    public string? Pages => F("Pages");
    /// <summary>The edition.</summary>
    public string? Edition => F("Edition");
    /// <summary>The web address.</summary>
    public string? Url => F("URL");
    /// <summary>The digital object identifier.</summary>
    public string? Doi => F("DOI");
    /// <summary>A short form of the title.</summary>
    public string? ShortTitle => F("ShortTitle");
    /// <summary>The title of the book a section belongs to.</summary>
    public string? BookTitle => F("BookTitle");
    /// <summary>The institution that issued a report.</summary>
    public string? Institution => F("Institution");
    /// <summary>The language of the source, as a locale number.</summary>
    public string? Lcid => F("LCID");
}

/// <summary>The sources of the document's bibliography and the style citations are written in.</summary>
public sealed class Bibliography
{
    internal const string Ns = "http://schemas.openxmlformats.org/officeDocument/2006/bibliography";

    private readonly List<Source> sources;

    internal Bibliography(List<Source> sources, string? style)
    {
        this.sources = sources;
        BibliographyStyle = style ?? "";
    }

    /// <summary>The style the document's citations are written in, as the sources part names it (such as "\APASixthEditionOfficeOnline.xsl").</summary>
    public string BibliographyStyle { get; }

    /// <summary>The sources, in the order the part lists them.</summary>
    public IReadOnlyList<Source> Sources => sources;

    /// <summary>A source by its tag (case ignored), or null.</summary>
    internal Source? Find(string tag) => sources.Find(s => s.Tag.Equals(tag, StringComparison.OrdinalIgnoreCase));

    /// <summary>The sources of the first custom XML part whose root is a bibliography's sources.</summary>
    internal static Bibliography Load(Package.OpcPackage? package)
    {
        if (package != null)
            foreach (var (name, part) in package.Parts.OrderBy(p => p.Key, StringComparer.Ordinal))
            {
                if (!name.StartsWith("customXml/item", StringComparison.OrdinalIgnoreCase) || name.Contains("Props", StringComparison.OrdinalIgnoreCase)
                    || !name.EndsWith(".xml", StringComparison.OrdinalIgnoreCase)) continue;
                XDocument tree;
                try
                {
                    using var reader = XmlReader.Create(new MemoryStream(part.Bytes), Docx.DocxReader.Settings);
                    tree = XDocument.Load(reader);
                }
                catch (XmlException) { continue; }
                if (tree.Root is { } root && root.Name == XName.Get("Sources", Ns)) return Read(root);
            }
        return new Bibliography(new List<Source>(), null);
    }

    private static Bibliography Read(XElement root)
    {
        XNamespace b = Ns;
        var list = new List<Source>();
        foreach (var s in root.Elements(b + "Source"))
        {
            var fields = new Dictionary<string, string>(StringComparer.OrdinalIgnoreCase);
            var roles = new Dictionary<string, Contributor>(StringComparer.OrdinalIgnoreCase);
            foreach (var e in s.Elements())
            {
                if (e.Name == b + "Author")
                {
                    foreach (var role in e.Elements())
                    {
                        if (role.Element(b + "Corporate") is { } corp) roles[role.Name.LocalName] = new Corporate(corp.Value.Trim());
                        else if (role.Element(b + "NameList") is { } names)
                            roles[role.Name.LocalName] = new PersonCollection(names.Elements(b + "Person").Select(p =>
                                new Person(p.Element(b + "Last")?.Value.Trim() ?? "", p.Element(b + "First")?.Value.Trim() ?? "", p.Element(b + "Middle")?.Value.Trim() ?? "")).ToList());
                    }
                }
                else if (!e.HasElements) fields[e.Name.LocalName] = e.Value.Trim();
            }
            list.Add(new Source(fields, new ContributorCollection(roles)));
        }
        return new Bibliography(list, (string?)root.Attribute("SelectedStyle"));
    }
}
