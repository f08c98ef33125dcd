using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>Properties of the fixture's model that must hold whatever the golden files say.</summary>
public class ModelTests
{
    [Fact]
    public void EveryClassComesAfterItsBase()
    {
        var types = Fixture.Model.Types;
        foreach (var t in types.Where(t => t.Base is not null))
            Assert.True(types.IndexOf(t.Base!) < types.IndexOf(t), $"{t.FullName} precedes its base {t.Base!.FullName}");
        // declared before their bases in the source, so the order had to move them
        Assert.Equal("Quorix.Folio.Node", Fixture.Type("Quorix.Folio.Document").Base!.Base!.FullName);
        Assert.Equal("Quorix.Folio.SaveOptions", Fixture.Type("Quorix.Folio.Saving.PdfSaveOptions").Base!.FullName);
    }

    [Fact]
    public void ValueRulesComeFromTheMetadata()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        var named = doc.Constructors.Single(c => c.Parameters.Count == 1 && c.Parameters[0].Type.Kind == ValueKind.String);
        Assert.False(named.Parameters[0].Rules.AcceptsNull);                     // string: not nullable
        var options = Fixture.Type("Quorix.Folio.LoadOptions");
        Assert.True(options.Properties.Single(p => p.ManagedName == "Password").Rules.AcceptsNull);  // string?
        var font = Fixture.Type("Quorix.Folio.Font");
        var size = font.Properties.Single(p => p.ManagedName == "Size").Rules;
        Assert.True(size.Finite);                                                // the assembly's reals are measures
        Assert.True(size.AcceptsNull);                                           // a value type has nothing to refuse
        Assert.True(font.Properties.Single(p => p.ManagedName == "Kerning").Rules.NonNegative);
        Assert.Same(ValueRules.None, font.Properties.Single(p => p.ManagedName == "Bold").Rules);
    }

    [Fact]
    public void TypesWithoutReorderingKeepMetadataOrder()
    {
        var names = Fixture.Model.Types.Select(t => t.Name).ToList();
        Assert.True(names.IndexOf("NodeType") < names.IndexOf("SaveFormat"));
        Assert.True(names.IndexOf("SaveFormat") < names.IndexOf("GlyphFlags"));
        Assert.True(names.IndexOf("ChartType") < names.IndexOf("Chart"));
    }

    [Fact]
    public void NamespacesMapToLowerCaseSubmodules()
    {
        Assert.Equal("quorix.folio.drawing.charts.ChartType", Fixture.Type("Quorix.Folio.Drawing.Charts.ChartType").TpName);
        Assert.Equal("quorix.folio.Document", Fixture.Type("Quorix.Folio.Document").TpName);
        Assert.Contains(Fixture.Model.Modules, m => m.PythonName == "quorix.folio.saving" && m.Namespace == "Quorix.Folio.Saving");
        Assert.DoesNotContain(Fixture.Model.Types, t => t.Namespace.StartsWith("Quorix.Other", StringComparison.Ordinal));
    }

    [Fact]
    public void ModuleOptionRenamesTheRootModule()
    {
        var model = ModelBuilder.Build(Fixture.AssemblyPath, "Quorix.Folio.Drawing", "quorix.pygfx", [Fixture.FrameworkFolder]);
        Assert.Equal("quorix.pygfx.charts.Chart", model.Types.Single(t => t.Name == "Chart").TpName);
        Assert.DoesNotContain(model.Types, t => t.Name == "Document");
    }

    [Fact]
    public void OverloadsAreNumberedPerManagedNameInDeclarationOrder()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        Assert.Equal(["ctor_000_Document", "ctor_001_Document", "ctor_002_Document", "ctor_003_Document"],
                     doc.Constructors.Select(c => c.Stub));
        Assert.Equal("stream", doc.Constructors[2].Parameters.Single().Type.ToString());
        var save = doc.Methods.Where(m => m.ManagedName == "Save").ToList();
        Assert.Equal(["call_000_Save", "call_001_Save", "call_002_Save", "call_003_Save", "call_004_Save"], save.Select(m => m.Stub));
        Assert.Equal("sequence:int32", save[3].Parameters.Single().Type.ToString());
        Assert.Equal(["file_name", "save_options"], save[4].Parameters.Select(p => p.PythonName));
        Assert.All(save, m => Assert.Equal("save", m.PythonName));
        var writeln = doc.Methods.Where(m => m.PythonName == "writeln").Select(m => m.Parameters.Count);
        Assert.Equal([1, 0], writeln);
    }

    [Fact]
    public void OnlyTheStreamBaseClassCrossesAsAStream()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        Assert.Equal("stream", doc.Methods.Single(m => m.ManagedName == "ToStream").Result.ToString());
        Assert.DoesNotContain(doc.Methods, m => m.ManagedName == "ToMemoryStream");
        Assert.Contains(Fixture.Model.Skipped, s => s.Member == "ToMemoryStream()" && s.Reason.Contains("System.IO.MemoryStream"));
        var register = Fixture.Type("Quorix.Folio.Hyphenation").Methods.Where(m => m.ManagedName == "RegisterDictionary");
        Assert.Equal(["string stream", "string string"],
                     register.Select(m => string.Join(" ", m.Parameters.Select(p => p.Type.ToString()))));
    }

    [Fact]
    public void OverloadsOfOneNameStayTogetherInTheBindingOrder()
    {
        var stubs = Fixture.Type("Quorix.Folio.Document").BindingOrder().ToList();
        Assert.Equal("ctor_000_Document", stubs[0]);
        int first = stubs.IndexOf("call_000_Save");
        Assert.Equal(["call_000_Save", "call_001_Save", "call_002_Save", "call_003_Save"], stubs.GetRange(first, 4));
        Assert.True(stubs.IndexOf("call_000_Import") < stubs.IndexOf("get_NodeType"));
        Assert.Equal(StubNames.Builtins(TypeKind.Class), stubs.TakeLast(5));
        Assert.Equal(stubs.Count, stubs.Distinct().Count());
    }

    [Fact]
    public void StaticAndInstanceMethodsOfOneNameGetSeparatePythonSlots()
    {
        var getString = Fixture.Type("Quorix.Folio.Cluster").Methods.Where(m => m.ManagedName == "GetString").ToList();
        Assert.Equal([(true, 0, "call_000_GetString"), (false, 1, "call_001_GetString")],
                     getString.Select(m => (m.IsStatic, m.PythonSlot, m.Stub)));
        Assert.All(Fixture.Type("Quorix.Folio.Document").Methods.Where(m => m.PythonName == "save"), m => Assert.Equal(0, m.PythonSlot));
    }

    [Fact]
    public void DerivedMethodsRecordTheBaseOverloadsTheyHide()
    {
        var clone = Fixture.Type("Quorix.Folio.Document").Methods.Single(m => m.PythonName == "clone");
        Assert.Equal("Quorix.Folio.Node", clone.Hides?.FullName);
        Assert.Null(Fixture.Type("Quorix.Folio.Node").Methods.Single(m => m.PythonName == "clone").Hides);
    }

    [Fact]
    public void StructuresAlwaysHaveAParameterlessConstructor()
    {
        var cluster = Fixture.Type("Quorix.Folio.Cluster").Constructors;
        Assert.True(cluster[0].IsImplicit);
        Assert.Equal(["start", "end"], cluster[1].Parameters.Select(p => p.PythonName));
        var range = Fixture.Type("Quorix.Folio.PageRange").Constructors;
        Assert.Equal(2, range.Count);
        Assert.DoesNotContain(range, c => c.IsImplicit);
        Assert.Equal("from_", range[1].Parameters[0].PythonName);
    }

    [Fact]
    public void ClassesWithoutPublicConstructorsHaveNone()
    {
        Assert.Empty(Fixture.Type("Quorix.Folio.SaveOutputParameters").Constructors);
        Assert.Empty(Fixture.Type("Quorix.Folio.Node").Constructors);  // abstract, protected constructor
        Assert.Empty(Fixture.Type("Quorix.Folio.ControlChar").Constructors);
    }

    [Fact]
    public void PropertiesRecordGetterAndSetterPresence()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        var byName = doc.Properties.ToDictionary(p => p.PythonName);
        Assert.Equal(("get_IsHTMLDocument", (string?)null), (byName["is_html_document"].Getter, byName["is_html_document"].Setter));
        Assert.Null(byName["title"].Setter);  // init-only
        Assert.Equal("set_DefaultStyle", byName["default_style"].Setter);
        Assert.Equal(ValueKind.Enum, byName["default_style"].Type.Kind);
        var font = Fixture.Type("Quorix.Folio.Font").Properties.Select(p => p.Type.Kind);
        Assert.Equal([ValueKind.Double, ValueKind.Bool, ValueKind.Char, ValueKind.SByte, ValueKind.Byte, ValueKind.Int16,
                      ValueKind.UInt16, ValueKind.UInt32, ValueKind.Int64, ValueKind.UInt64, ValueKind.Single, ValueKind.String,
                      ValueKind.Decimal], font);
    }

    [Fact]
    public void StaticAttributesUseGetsaAndSetsaStubs()
    {
        var cc = Fixture.Type("Quorix.Folio.ControlChar").StaticAttributes;
        Assert.Equal(["CELL_CHAR", "CR_LF", "PARAGRAPH_BREAK", "USAGE_COUNT", "SENTINEL"], cc.Select(s => s.PythonName));
        Assert.Equal([null, null, null, "setsa_UsageCount", null], cc.Select(s => s.Setter));
        Assert.Equal(ValueKind.Object, cc[^1].Type.Kind);
        var hy = Fixture.Type("Quorix.Folio.Hyphenation");
        Assert.Equal(TypeKind.StaticClass, hy.Kind);
        Assert.Equal([("callback", "getsa_Callback", "setsa_Callback"), ("dictionary_count", "getsa_DictionaryCount", null)],
                     hy.StaticAttributes.Select(s => (s.PythonName, s.Getter, s.Setter)));
        Assert.Equal(ValueKind.Interface, hy.StaticAttributes[0].Type.Kind);
    }

    [Fact]
    public void EnumerationsKeepMembersValuesAndFlags()
    {
        var flags = Fixture.Type("Quorix.Folio.GlyphFlags");
        Assert.True(flags.IsFlags);
        Assert.Equal("uint", flags.Underlying);
        Assert.Equal(("HIGH", "2147483648"), (flags.EnumMembers[^1].PythonName, flags.EnumMembers[^1].Value));
        var save = Fixture.Type("Quorix.Folio.SaveFormat");
        Assert.False(save.IsFlags);
        // declaration order, not value order
        Assert.Equal(["0", "20", "45", "40", "70"], save.EnumMembers.Select(m => m.Value));
        var paper = Fixture.Type("Quorix.Folio.PaperSize");
        Assert.Equal([("CUSTOM", "-1"), ("A_4", "0"), ("LETTER", "1"), ("NUMBER_10_ENVELOPE", "2")],
                     paper.EnumMembers.Select(m => (m.PythonName, m.Value)));
        Assert.Empty(save.Methods);
        Assert.Equal(StubNames.Builtins(TypeKind.Enum), save.BindingOrder());
    }

    [Fact]
    public void SequencesOfValuesCrossWholeAndResultArraysOfBoundObjectsStayArrays()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        string Result(string name) => doc.Methods.Single(m => m.ManagedName == name).Result.ToString();
        Assert.Equal("sequence:int32", Result("Counts"));
        Assert.Equal("sequence:int32", Result("Numbers"));
        var names = doc.Methods.Single(m => m.ManagedName == "Names");
        Assert.Equal("sequence:string", names.Result.ToString());
        // parameters: an array stands in for an enumerable; arrays of bound objects are copied in too
        Assert.Equal(["sequence:string", "sequence:object", "sequence:class:Quorix.Folio.Node"],
                     names.Parameters.Select(p => p.Type.ToString()));
        Assert.Equal("array:Quorix.Folio.Node", Fixture.Type("Quorix.Folio.NodeList").Methods.Single(m => m.ManagedName == "ToArray").Result.ToString());
        string Reason(string member) => Fixture.Model.Skipped.Single(s => s.Type == "Quorix.Folio.Document" && s.Member.StartsWith(member)).Reason;
        Assert.Contains("the callee may change", Reason("Fill"));
        Assert.Equal("mapping:string,string", doc.Properties.Single(p => p.ManagedName == "Variables").Type.ToString());
        Assert.Contains("Python mappings as managed dictionaries are not carried yet", Reason("Merge"));
        Assert.Contains("sequences of sequence:int32 are not carried", Reason("Grid"));
    }

    [Fact]
    public void SkippedMembersNeverReachTheModel()
    {
        var model = Fixture.Model;
        var doc = Fixture.Type("Quorix.Folio.Document");
        string[] skipped = ["Find", "Raw", "Fill", "Grid", "Attach", "Nest", "ToString", "Equals", "GetHashCode", "op_Equality"];
        Assert.DoesNotContain(doc.Methods, m => skipped.Contains(m.ManagedName));
        Assert.DoesNotContain(doc.Properties, p => p.ManagedName is "Callback" or "Secret" or "Item" or "Created");
        Assert.DoesNotContain(model.Types, t => t.Name is "HugeEnum" or "NodeChangedHandler" or "Box`1" or "Document+Inner" or "Attachment");
        foreach (string member in skipped)
            Assert.Contains(model.Skipped, s => s.Type == "Quorix.Folio.Document" && s.Member.StartsWith(member, StringComparison.Ordinal));
        Assert.Contains(model.Skipped, s => s.Member == "Title (setter)");
        Assert.Contains(model.Skipped, s => s.Type == "Quorix.Folio.IHyphenationCallback" && s.Member == "Default");
    }

    [Fact]
    public void ReasonsNameTheKindOfForeignTypesWhenReferencesResolve()
    {
        static string Reason(AssemblyModel m, string member) => m.Skipped.Single(s => s.Member == member).Reason;
        var resolved = Fixture.Model;
        Assert.Contains("System.Action, a delegate of", Reason(resolved, "Callback"));
        Assert.Contains("System.DateOnly, a structure of", Reason(resolved, "Created"));
        var unresolved = Fixture.Build(Path.Combine(Path.GetTempPath(), "wrpgen-no-such-folder"));
        Assert.Equal("type: System.Action of System.Runtime is not carried", Reason(unresolved, "Callback"));
        // resolution only explains; it never changes what is bound
        Assert.Equal(ModelWriter.Model(resolved), ModelWriter.Model(unresolved));
    }

    [Fact]
    public void FrameworkValuesNullablesAndByReferenceParametersAreCarried()
    {
        var stamp = Fixture.Type("Quorix.Folio.Stamp");
        var props = stamp.Properties.ToDictionary(p => p.PythonName, p => p.Type.ToString());
        Assert.Equal(new Dictionary<string, string>
        {
            ["when"] = "datetime", ["printed"] = "datetime?", ["seen"] = "datetimeoffset", ["span"] = "timespan",
            ["id"] = "guid", ["release"] = "version", ["amount"] = "decimal?", ["kept"] = "list",
        }, props);
        Assert.Equal("timespan", stamp.StaticAttributes.Single().Type.ToString());
        var methods = stamp.Methods.ToDictionary(m => m.PythonName, m => string.Join(", ", m.Parameters.Select(p => p.Type)));
        Assert.Equal("string, out object", methods["try_get"]);
        // `in` passes by value: nothing comes back
        Assert.Equal("ref datetime, timespan", methods["shift"]);
        Assert.Equal("regex", methods["count"]);
        Assert.Equal("enumerable, list", methods["sum"]);
        Assert.Equal("ref int32", Fixture.Type("Quorix.Folio.Document").Methods.Single(m => m.ManagedName == "Touch").Parameters[0].Type.ToString());

        string Reason(string member) => Fixture.Model.Skipped.Single(s => s.Type == "Quorix.Folio.Stamp" && s.Member.StartsWith(member, StringComparison.Ordinal)).Reason;
        Assert.Contains("crosses only as a parameter", Reason("Pattern"));
        Assert.Contains("by-reference stream values are not carried", Reason("Swap"));
        Assert.Contains("of nullable values only", Reason("Ratio"));
    }
}
