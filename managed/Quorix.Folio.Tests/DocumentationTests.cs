using System.Reflection;
using System.Runtime.CompilerServices;
using System.Text;
using System.Xml.Linq;
using Quorix.Folio;

namespace Quorix.Folio.Tests;

/// <summary>Every public type and member of the library carries a summary in its XML documentation:
/// the Python type stubs show it as the member's docstring.</summary>
public class DocumentationTests
{
    private static readonly Assembly Library = typeof(Document).Assembly;

    private static Dictionary<string, string> Summaries()
    {
        string path = Path.ChangeExtension(Library.Location, ".xml");
        Assert.True(File.Exists(path), $"the documentation file {path} was not built");
        return XDocument.Load(path).Descendants("member")
            .Where(m => m.Element("summary") is { } s && s.Value.Trim().Length > 0)
            .ToDictionary(m => (string)m.Attribute("name")!, m => m.Element("summary")!.Value.Trim());
    }

    [Fact]
    public void EveryPublicTypeAndMemberHasASummary()
    {
        var summaries = Summaries();
        var missing = new List<string>();
        foreach (var type in Library.GetTypes().Where(IsVisible))
        {
            string typeId = TypeName(type);
            if (!summaries.ContainsKey("T:" + typeId)) missing.Add("T:" + typeId);
            foreach (string id in MemberIds(type, visibleOnly: true))
            {
                // The parameterless constructor the compiler makes has no place for a comment: the
                // stubs describe it by its type's summary.
                if (id == $"M:{typeId}.#ctor" && summaries.ContainsKey("T:" + typeId)) continue;
                if (!summaries.ContainsKey(id)) missing.Add(id);
            }
        }
        Assert.True(missing.Count == 0, $"{missing.Count} public members lack a summary:\n" + string.Join("\n", missing));
    }

    // Names are built as the C# compiler builds them for the documentation file (generic
    // arguments in braces, "@" for references, "``0" for a method's type parameter): the file names
    // every documented member, internal ones too, and each of those names is one built here.
    [Fact]
    public void NamesAreBuiltAsTheCompilerBuildsThem()
    {
        var built = new HashSet<string>(StringComparer.Ordinal);
        foreach (var type in Library.GetTypes().Where(t => !t.IsDefined(typeof(CompilerGeneratedAttribute), false)))
        {
            built.Add("T:" + TypeName(type));
            built.UnionWith(MemberIds(type, visibleOnly: false));
        }
        string path = Path.ChangeExtension(Library.Location, ".xml");
        // The regular expressions' generated code lives in file-local types, whose metadata names differ.
        var named = XDocument.Load(path).Descendants("member").Select(m => (string)m.Attribute("name")!)
            .Where(n => !n[2..].StartsWith("System.Text.RegularExpressions.Generated.", StringComparison.Ordinal)).ToList();
        Assert.Contains(named, n => n.Contains('{'));
        Assert.Contains(named, n => n.Contains('@'));
        var unknown = named.Where(n => !built.Contains(n)).ToList();
        Assert.True(unknown.Count == 0, string.Join("\n", unknown.Take(20)));
    }

    private static bool IsVisible(Type t) =>
        (t.IsPublic || t.IsNestedPublic || t.IsNestedFamily || t.IsNestedFamORAssem)
        && (t.DeclaringType == null || IsVisible(t.DeclaringType))
        && !t.IsDefined(typeof(CompilerGeneratedAttribute), false);

    private static bool IsVisible(MethodBase m) => m.IsPublic || m.IsFamily || m.IsFamilyOrAssembly;

    private static IEnumerable<string> MemberIds(Type type, bool visibleOnly)
    {
        const BindingFlags Declared = BindingFlags.Public | BindingFlags.NonPublic | BindingFlags.Instance
                                      | BindingFlags.Static | BindingFlags.DeclaredOnly;
        string owner = TypeName(type);
        bool isDelegate = typeof(Delegate).IsAssignableFrom(type);
        foreach (var member in type.GetMembers(Declared))
        {
            if (member.IsDefined(typeof(CompilerGeneratedAttribute), false)) continue;
            switch (member)
            {
                case FieldInfo f when (!visibleOnly || f.IsPublic || f.IsFamily || f.IsFamilyOrAssembly) && !f.IsSpecialName:
                    yield return $"F:{owner}.{f.Name}";
                    break;
                case PropertyInfo p when (p.GetMethod ?? p.SetMethod) is { } a && (!visibleOnly || IsVisible(a)):
                    var index = p.GetIndexParameters();
                    yield return $"P:{owner}.{p.Name}" + (index.Length == 0 ? "" : Parameters(index));
                    break;
                case EventInfo e when e.AddMethod is { } add && (!visibleOnly || IsVisible(add)):
                    yield return $"E:{owner}.{e.Name}";
                    break;
                case ConstructorInfo c when (!visibleOnly || IsVisible(c)) && !c.IsStatic:
                    yield return $"M:{owner}.#ctor" + Parameters(c.GetParameters());
                    break;
                case MethodInfo m when (!visibleOnly || IsVisible(m)) && !isDelegate
                                       && (!m.IsSpecialName || m.Name.StartsWith("op_", StringComparison.Ordinal)):
                    string generic = m.IsGenericMethodDefinition ? "``" + m.GetGenericArguments().Length : "";
                    string conversion = m.Name is "op_Implicit" or "op_Explicit" ? "~" + ParameterType(m.ReturnType) : "";
                    yield return $"M:{owner}.{m.Name}{generic}" + Parameters(m.GetParameters()) + conversion;
                    break;
            }
        }
    }

    private static string TypeName(Type t) =>
        t.DeclaringType is { } outer ? TypeName(outer) + "." + t.Name : (t.Namespace is { } ns ? ns + "." : "") + t.Name;

    private static string Parameters(ParameterInfo[] parameters) =>
        parameters.Length == 0 ? "" : "(" + string.Join(",", parameters.Select(p => ParameterType(p.ParameterType))) + ")";

    private static string ParameterType(Type t)
    {
        if (t.IsByRef) return ParameterType(t.GetElementType()!) + "@";
        if (t.IsPointer) return ParameterType(t.GetElementType()!) + "*";
        if (t.IsArray) return ParameterType(t.GetElementType()!) + (t.GetArrayRank() == 1 ? "[]" : "[" + new string(',', t.GetArrayRank() - 1) + "]");
        if (t.IsGenericParameter) return (t.DeclaringMethod != null ? "``" : "`") + t.GenericParameterPosition;
        if (!t.IsGenericType) return TypeName(t);
        // Each level of nesting names its own type arguments: Outer{A}.Inner{B}.
        var arguments = new Queue<Type>(t.GetGenericArguments());
        var levels = new List<Type>();
        for (var d = t.GetGenericTypeDefinition(); d != null; d = d.DeclaringType) levels.Insert(0, d);
        var sb = new StringBuilder(levels[0].Namespace is { } ns ? ns + "." : "");
        int taken = 0;
        for (int i = 0; i < levels.Count; i++)
        {
            if (i > 0) sb.Append('.');
            string name = levels[i].Name;
            int tick = name.IndexOf('`');
            sb.Append(tick < 0 ? name : name[..tick]);
            int own = levels[i].GetGenericArguments().Length - taken;
            if (own > 0)
            {
                sb.Append('{').Append(string.Join(",", Enumerable.Range(0, own).Select(_ => ParameterType(arguments.Dequeue())))).Append('}');
                taken += own;
            }
        }
        return sb.ToString();
    }
}
