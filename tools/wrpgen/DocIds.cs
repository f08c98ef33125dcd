using System.Reflection.Metadata;
using System.Text;
using System.Text.RegularExpressions;
using System.Xml.Linq;

namespace Quorix.WrpGen;

/// <summary>
/// The member names the C# compiler writes into an assembly's XML documentation file
/// ("M:Quorix.Folio.Document.Save(System.String)"), computed from metadata so that the
/// documentation of each bound member is found by exact name.
/// </summary>
public static class DocIds
{
    public static string Type(string fullName) => "T:" + fullName.Replace('+', '.');

    public static string Property(string typeFullName, string name) => "P:" + Member(typeFullName, name);

    public static string Field(string typeFullName, string name) => "F:" + Member(typeFullName, name);

    public static string Method(string typeFullName, string name, IEnumerable<TypeSig> parameters)
    {
        string list = string.Join(",", parameters.Select(Of));
        return "M:" + Member(typeFullName, name == ".ctor" ? "#ctor" : name) + (list.Length == 0 ? "" : "(" + list + ")");
    }

    private static string Member(string typeFullName, string name) => typeFullName.Replace('+', '.') + "." + name;

    /// <summary>A parameter type as documentation names spell it.</summary>
    public static string Of(TypeSig t) => t.Kind switch
    {
        SigKind.Primitive => Primitive(t.Primitive),
        SigKind.Named => t.FullName.Replace('+', '.'),
        SigKind.SzArray => Of(t.Element!) + "[]",
        SigKind.Array => Of(t.Element!) + "[" + string.Join(",", Enumerable.Repeat("0:", t.Rank)) + "]",
        SigKind.ByRef => Of(t.Element!) + "@",
        SigKind.Pointer => Of(t.Element!) + "*",
        SigKind.GenericInstance => Generic(t),
        // "!0" and "!!0" in signatures; "`0" and "``0" in documentation names
        SigKind.GenericParameter => t.Name.Replace('!', '`'),
        SigKind.Modified or SigKind.Pinned => Of(t.Element!),
        _ => t.Name,
    };

    private static string Generic(TypeSig t)
    {
        string name = Of(t.Element!);
        int tick = name.LastIndexOf('`');
        if (tick > 0)
            name = name[..tick];
        return name + "{" + string.Join(",", t.Arguments.Select(Of)) + "}";
    }

    private static string Primitive(PrimitiveTypeCode code) => code switch
    {
        PrimitiveTypeCode.Void => "System.Void",
        PrimitiveTypeCode.TypedReference => "System.TypedReference",
        PrimitiveTypeCode.IntPtr => "System.IntPtr",
        PrimitiveTypeCode.UIntPtr => "System.UIntPtr",
        _ => "System." + code,
    };
}

/// <summary>The summaries of an XML documentation file, by member name, as plain text.</summary>
public sealed partial class XmlDocs
{
    private readonly Dictionary<string, string> _summaries = new(StringComparer.Ordinal);

    public static readonly XmlDocs Empty = new();

    public static XmlDocs Load(string path)
    {
        var docs = new XmlDocs();
        var root = XDocument.Load(path).Root ?? throw new GeneratorException($"'{path}' is not a documentation file");
        foreach (var member in root.Descendants("member"))
        {
            string? name = member.Attribute("name")?.Value;
            var summary = member.Element("summary");
            if (name is null || summary is null)
                continue;
            string text = PlainText(summary);
            if (text.Length > 0)
                docs._summaries[name] = text;
        }
        return docs;
    }

    // The parameterless constructor the C# compiler makes for a class that declares none has no
    // place for a comment: it reads as its class, made with its defaults.
    public string? Summary(string docId)
    {
        if (_summaries.TryGetValue(docId, out string? text))
            return text;
        const string DefaultConstructor = ".#ctor";
        if (docId.StartsWith("M:", StringComparison.Ordinal) && docId.EndsWith(DefaultConstructor, StringComparison.Ordinal)
            && _summaries.TryGetValue("T:" + docId[2..^DefaultConstructor.Length], out string? type))
            return "New, with its defaults. " + type;
        return null;
    }

    // <see cref="T:A.B"/> reads as "B", <paramref name="x"/> and <c>x</c> as "x"; paragraphs stay
    // apart, other line breaks and runs of spaces fold into one space.
    private static string PlainText(XElement element)
    {
        var sb = new StringBuilder();
        foreach (var node in element.Nodes())
        {
            if (node is XText text)
                sb.Append(text.Value);
            else if (node is XElement e)
                sb.Append(e.Name.LocalName switch
                {
                    "see" or "seealso" => e.Value.Length > 0 ? e.Value : ShortName(e.Attribute("cref")?.Value ?? e.Attribute("langword")?.Value ?? ""),
                    "paramref" or "typeparamref" => e.Attribute("name")?.Value ?? "",
                    "para" => "\n\n" + PlainText(e) + "\n\n",
                    _ => PlainText(e),
                });
        }
        var paragraphs = sb.ToString().Split("\n\n", StringSplitOptions.RemoveEmptyEntries)
            .Select(p => Spaces().Replace(p, " ").Trim())
            .Where(p => p.Length > 0);
        return string.Join("\n\n", paragraphs);
    }

    private static string ShortName(string cref)
    {
        string name = cref.Contains(':') ? cref[(cref.IndexOf(':') + 1)..] : cref;
        int paren = name.IndexOf('(');
        if (paren >= 0)
            name = name[..paren];
        return name[(name.LastIndexOf('.') + 1)..];
    }

    [GeneratedRegex(@"\s+")]
    private static partial Regex Spaces();
}
