using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using Quorix.WrpGen.Interop;
using Xunit;

namespace WrpInterop.Tests;

/// <summary>
/// The native method tables of the built-in kinds are expanded from builtins/builtin_tables.def;
/// the interop classes are checked against the same list here, so a stub renamed, retyped or
/// dropped on either side fails before anything binds at run time.
/// </summary>
public partial class BuiltinTableTests
{
    private sealed record Stub(string Name, string Result, string[] Parameters);

    private static readonly string ListFile = Path.Combine(RepoRoot(), "builtins", "builtin_tables.def");

    private static string RepoRoot([System.Runtime.CompilerServices.CallerFilePath] string here = "") =>
        Path.GetFullPath(Path.Combine(Path.GetDirectoryName(here)!, "..", ".."));

    // The list's macros, continuation lines joined: name -> body.
    private static Dictionary<string, string> Macros()
    {
        string text = File.ReadAllText(ListFile).Replace("\\\n", " ");
        return DefineLine().Matches(text).ToDictionary(m => m.Groups[1].Value, m => m.Groups[2].Value);
    }

    private static List<Stub> StubsOf(string macro, Dictionary<string, string> macros)
    {
        var stubs = new List<Stub>();
        foreach (Match m in StubOrInclude().Matches(macros[macro]))
        {
            if (m.Groups["include"].Success)
                stubs.AddRange(StubsOf(m.Groups["include"].Value, macros));
            else
                stubs.Add(new Stub(m.Groups["name"].Value, m.Groups["result"].Value,
                                   m.Groups["params"].Value.Split(',', StringSplitOptions.TrimEntries)));
        }
        return stubs;
    }

    private static List<(string Kind, string Class, List<Stub> Stubs)> Kinds()
    {
        var macros = Macros();
        return KindEntry().Matches(macros["QRX_BUILTIN_KINDS"])
            .Select(m => (m.Groups[1].Value, m.Groups[2].Value, StubsOf(m.Groups[3].Value, macros)))
            .ToList();
    }

    private static Type Managed(string code) => code switch
    {
        "H" or "O" => typeof(IntPtr),
        "I32" => typeof(int),
        "I64" => typeof(long),
        "VA" => typeof(VariantArg*),
        "OH" or "OO" => typeof(IntPtr*),
        "BUF" or "CBUF" => typeof(byte*),
        "V" => typeof(void),
        _ => throw new ArgumentException($"unknown type code {code} in {ListFile}"),
    };

    [Fact]
    public void TheListHasTheTenKindsWithTheirStubCounts()
    {
        var counts = Kinds().ToDictionary(k => k.Kind, k => k.Stubs.Count);
        Assert.Equal(new Dictionary<string, int>
        {
            ["Disposable"] = 4, ["Iter"] = 5, ["Iterable"] = 5, ["ICol"] = 7, ["IList"] = 23, ["Array"] = 16,
            ["ArrList"] = 26, ["ColBase"] = 5, ["RoColBase"] = 5, ["Stream"] = 16,
        }, counts);
        // the one deliberate spelling difference between the list and the array kinds
        Assert.Contains(Kinds().Single(k => k.Kind == "IList").Stubs, s => s.Name == "SqSetItemNoCheck");
        foreach (var kind in new[] { "Array", "ArrList" })
            Assert.Contains(Kinds().Single(k => k.Kind == kind).Stubs, s => s.Name == "SqSetItemNoChek");
    }

    [Fact]
    public void EveryListedStubExistsWithTheListedSignature()
    {
        var assembly = typeof(SiApiStream).Assembly;
        foreach (var (kind, cls, stubs) in Kinds())
        {
            var type = assembly.GetType(cls);
            Assert.True(type is not null, $"{cls} (kind {kind}) is missing from the interop assembly");
            foreach (var stub in stubs)
            {
                var method = type!.GetMethod(stub.Name, BindingFlags.Public | BindingFlags.Static);
                Assert.True(method is not null, $"{cls}.{stub.Name} is missing");
                Assert.True(method!.GetCustomAttribute<UnmanagedCallersOnlyAttribute>() is not null,
                            $"{cls}.{stub.Name} is not callable from native code");
                Assert.Equal(Managed(stub.Result), method.ReturnType);
                Assert.Equal(stub.Parameters.Select(Managed), method.GetParameters().Select(p => p.ParameterType));
            }
            // a stub the list does not name would never be bound: it is a mistake on one side
            var extra = type!.GetMethods(BindingFlags.Public | BindingFlags.Static)
                .Where(m => m.GetCustomAttribute<UnmanagedCallersOnlyAttribute>() is not null)
                .Select(m => m.Name).Except(stubs.Select(s => s.Name));
            Assert.Empty(extra);
        }
    }

    [GeneratedRegex(@"#define (QRX_\w+)\((?:S|K)\)([^\n]*)")]
    private static partial Regex DefineLine();

    [GeneratedRegex(@"S\((?<fwd>\w+), ""(?<name>\w+)"", (?<result>\w+), \((?<params>[^)]*)\)\)|(?<include>QRX_\w+)\(S\)")]
    private static partial Regex StubOrInclude();

    [GeneratedRegex(@"K\((\w+), ""([\w.]+)"", (\w+)\)")]
    private static partial Regex KindEntry();
}
