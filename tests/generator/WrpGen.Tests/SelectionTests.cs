using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>Binding an explicit list of types into the root module, and the emitter options of modules that join the runtime late.</summary>
public class SelectionTests
{
    private static readonly string CoreLib = typeof(object).Assembly.Location;
    private static readonly string[] Reflection = ["System.Type", "System.Object", "System.Enum"];

    private static readonly Lazy<AssemblyModel> _reflection =
        new(() => ModelBuilder.Build(CoreLib, "System", "quorix.pyintro", [Fixture.FrameworkFolder], Reflection));

    [Fact]
    public void OnlySelectedTypesAreBoundAndUnselectedOnesAreNotReported()
    {
        var model = _reflection.Value;
        Assert.Equal(["System.Object", "System.Enum", "System.Type"], model.Types.Select(t => t.FullName));
        Assert.Equal([new ModuleModel("quorix.pyintro", "System")], model.Modules);
        Assert.All(model.Types, t => Assert.Equal("quorix.pyintro." + t.Name, t.TpName));
        Assert.DoesNotContain(model.Skipped, s => s.Member == "(type)");
        // members needing an unselected type are skipped with the reason
        Assert.Contains(model.Skipped, s => s.Type == "System.Type" && s.Reason.Contains("is not bound (not selected)"));
    }

    [Fact]
    public void UnboundAncestorsGiveTheirPropertiesAndTheNearestBoundBase()
    {
        var type = _reflection.Value.Types.Single(t => t.Name == "Type");
        Assert.Equal("System.Object", type.Base!.FullName);
        // Name is declared by System.Reflection.MemberInfo, which is not selected
        var name = type.Properties.Single(p => p.PythonName == "name");
        Assert.Equal(("get_Name", (string?)null, ValueKind.String), (name.Getter, name.Setter, name.Type.Kind));
        Assert.Single(type.Properties, p => p.PythonName == "declaring_type");
    }

    [Fact]
    public void EnumBaseIsAClassAndObjectValuesCrossAsItsWrappers()
    {
        var model = _reflection.Value;
        var @enum = model.Types.Single(t => t.Name == "Enum");
        Assert.Equal(TypeKind.Class, @enum.Kind);
        Assert.Empty(@enum.Constructors);
        var isDefined = @enum.Methods.Single(m => m.ManagedName == "IsDefined" && m.Parameters.Count == 2);
        Assert.Equal("class:System.Object", isDefined.Parameters[1].Type.ToString());
    }

    [Fact]
    public void SelectionInTheFixtureKeepsTheRootModuleAndDropsTheRest()
    {
        var model = ModelBuilder.Build(Fixture.AssemblyPath, Fixture.Root, "quorix.folio", [Fixture.FrameworkFolder],
                                       ["Quorix.Folio.Document", "Quorix.Folio.Node"]);
        Assert.Equal(["Quorix.Folio.Node", "Quorix.Folio.Document"], model.Types.Select(t => t.FullName));
        Assert.Equal("Quorix.Folio.Node", model.Types[1].Base!.FullName);
        Assert.Single(model.Modules);
    }

    [Theory]
    [InlineData("System.Nope", "selected type System.Nope is not a public type of")]
    [InlineData("System.Collections.Generic.List`1", "selected type System.Collections.Generic.List`1 cannot be bound: generic types are not bound yet")]
    public void SelectingWhatCannotBeBoundIsAnError(string name, string message)
    {
        var e = Assert.Throws<GeneratorException>(() => ModelBuilder.Build(CoreLib, "System", null, [], ["System.Type", name]));
        Assert.StartsWith(message, e.Message);
    }

    [Fact]
    public void TypesOptionIsParsedByEveryCommand()
    {
        Assert.Equal(["A.B", "A.C"], Program.Options.Parse(["model", "x.dll", "--root", "A", "--out", "m", "--types", " A.B, ,A.C"]).Types);
        Assert.Equal(["A.B"], EmitCsCommand.Parse(["emit-cs", "x.dll", "--root", "A", "--out", "o", "--types", "A.B"]).Types);
        var cpp = EmitCppCommand.Parse(["emit-cpp", "x.dll", "--root", "A", "--module", "m", "--out", "o", "--types", "A.B",
                                        "--host-start", "Start_Host", "--release", "free2"]);
        Assert.Equal(["A.B"], cpp.Types);
        Assert.Equal(new CppEmitOptions("Start_Host", "free2"), cpp.Emit);
        Assert.Null(EmitCppCommand.Parse(["emit-cpp", "x.dll", "--root", "A", "--module", "m", "--out", "o"]).Emit);
        Assert.Throws<GeneratorException>(() => Program.Options.Parse(["model", "x.dll", "--root", "A", "--out", "m", "--types", ","]));
    }

    [Theory]
    [InlineData("--host-start", "1start")]
    [InlineData("--release", "free(void*)")]
    [InlineData("--host-start", "")]
    public void EmitterFunctionNamesMustBeIdentifiers(string flag, string value)
    {
        var e = Assert.Throws<GeneratorException>(() =>
            EmitCppCommand.Parse(["emit-cpp", "x.dll", "--root", "A", "--module", "m", "--out", "o", flag, value]));
        Assert.Contains($"{flag} needs a C++ function name", e.Message);
    }

    private static string Source(CppEmitOptions? options) =>
        CppEmitter.Emit(_reflection.Value, options)["quorix_pyintro.cpp"];

    [Fact]
    public void HostStartGuardsEveryEntryBeforeTheTableBinds()
    {
        string plain = Source(null), lazy = Source(new CppEmitOptions("Join_Host"));
        Assert.DoesNotContain("Join_Host", plain);
        Assert.Contains("int Join_Host();", lazy);
        string id = _reflection.Value.Types.Single(t => t.Name == "Type").Hash + "_Type";
        Assert.Contains($"bool wrpPy_uafn_{id}_invalidate() {{ return Join_Host() < 0 || PyHostState_Check(wrpPy_hsst_{id}()); }}", lazy);
        // slots that reach the object host join first, and get_type is the guarded one
        foreach (string slot in new[] { "tp_hash", "tp_richcompare", "tp_str" })
            Assert.Contains($"wrpPy_tyds_{id}.{slot} = wrpPy_tpsb_{id}_{slot};", lazy);
        // Type's own get_type shares its name with static overloads; Object keeps the built-in entry
        string objectId = _reflection.Value.Types.Single(t => t.Name == "Object").Hash + "_Object";
        Assert.Contains($"{{\"get_type\", wrpPy_tpsb_{objectId}_get_type, METH_NOARGS", lazy);
        Assert.Contains($"{{\"get_type\", wrapClrObject_get_type, METH_NOARGS", plain);
        Assert.DoesNotContain("tp_dealloc", lazy);
    }

    [Fact]
    public void ReleaseReplacesTheDeallocationOfEveryType()
    {
        string text = Source(new CppEmitOptions(Release: "Free_It"));
        Assert.Contains("void Free_It(void* handle);", text);
        foreach (var t in _reflection.Value.Types)
        {
            string id = t.Hash + "_" + t.Name;
            Assert.Contains($"wrpPy_tyds_{id}.tp_dealloc = wrpPy_tpsb_{id}_tp_dealloc;", text);
        }
        Assert.Equal(3, text.Split("    Free_It(handle);").Length - 1);
        Assert.DoesNotContain("_tp_hash", text);
    }
}
