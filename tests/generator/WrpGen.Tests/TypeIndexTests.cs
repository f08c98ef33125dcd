using System.Text.RegularExpressions;
using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>The bound type index is written twice, once per language: both lists must agree.</summary>
public class TypeIndexTests
{
    private static TypeModel Type(string name) => Fixture.Model.Types.Single(t => t.FullName == name);

    [Fact]
    public void BasesAndInterfacesArePolymorphicLeavesAreNot()
    {
        Assert.True(Type("Quorix.Folio.Node").IsPolymorphic);
        Assert.True(Type("Quorix.Folio.DocumentBase").IsPolymorphic);
        Assert.False(Type("Quorix.Folio.Run").IsPolymorphic);
        Assert.False(Type("Quorix.Folio.SaveOutputParameters").IsPolymorphic);
    }

    [Fact]
    public void ManagedAndNativeListsNameTheSameClassesInTheSameOrder()
    {
        string cs = CSharpEmitter.Emit(Fixture.Model).Single(f => f.FileName == CSharpEmitter.TypeIndexFile).Text;
        var managed = Regex.Matches(cs, @"typeof\(global::([\w.]+)\)").Select(m => m.Groups[1].Value).ToList();

        var files = CppEmitter.Emit(Fixture.Model);
        string table = CppEmitter.IndexTable(Fixture.Model);
        string reg = files[CppEmitter.RegistrationSource];
        int start = reg.IndexOf($"PyTypeObject* const {table}[] = {{", StringComparison.Ordinal);
        Assert.True(start >= 0, "the registration source defines the index table");
        string body = reg[start..reg.IndexOf("};", start, StringComparison.Ordinal)];
        var native = Regex.Matches(body, @"&wrpPy_tyds_([0-9A-F]{8})_\w+").Select(m => m.Groups[1].Value).ToList();

        Assert.NotEmpty(managed);
        Assert.Equal(managed.Select(TypeHash.Of), native);
        Assert.Equal(Fixture.Model.Types.Where(t => t.Kind == TypeKind.Class).Select(t => t.FullName), managed);
        Assert.Contains($"constexpr int32_t {table}_count = {managed.Count};", files[CppEmitter.BindingsHeader]);
    }

    [Fact]
    public void OnlyResultsOfPolymorphicTypesCarryTheIndex()
    {
        var cs = CSharpEmitter.Emit(Fixture.Model).ToDictionary(f => f.FileName, f => f.Text);
        string node = cs[Type("Quorix.Folio.Node").StubClass.Split('.').Last() + ".cs"];
        // Node.Clone returns a Node: the stub returns the index of the object it hands back
        Assert.Matches(@"public static int call_000_Clone\(IntPtr self, int @isCloneChildren, IntPtr\* result\)", node);
        Assert.Contains("return TypeIndex.Of(r);", node);

        string cpp = string.Concat(CppEmitter.Emit(Fixture.Model).Values);
        string nodeId = Type("Quorix.Folio.Node").Hash + "_Node";
        Assert.Contains($"PyObject* wrpPy_conv_clr_to_py_ix_{nodeId}(void* handle, int32_t index) {{", cpp);
        Assert.Contains($"return wrpPy_conv_clr_to_py_ix_{nodeId}(result, index);", cpp);
        Assert.DoesNotContain("wrpPy_conv_clr_to_py_ix_" + Type("Quorix.Folio.Run").Hash, cpp);
    }
    [Fact]
    public void ExceptionClassesAreMarkedAndBoundByTheirIndexAfterTheWrappers()
    {
        Assert.True(Type("Quorix.Folio.FolioException").IsException);
        Assert.False(Type("Quorix.Folio.Node").IsException);
        Assert.False(Type("Quorix.Folio.Document").IsException);

        string reg = CppEmitter.Emit(Fixture.Model)[CppEmitter.RegistrationSource];
        var indexed = Fixture.Model.IndexedTypes().ToList();
        int index = indexed.FindIndex(t => t.FullName == "Quorix.Folio.FolioException");
        string table = CppEmitter.IndexTable(Fixture.Model);
        int install = reg.IndexOf($"PyShClrError_Install({table}, {table}_count)", StringComparison.Ordinal);
        int bind = reg.IndexOf($"PyShClrError_Bind(modules[0], {index}, -1, \"FolioException\")", StringComparison.Ordinal);
        int steps = reg.IndexOf("steps[i](modules[module_of[i]])", StringComparison.Ordinal);
        Assert.True(steps >= 0 && install > steps && bind > install, reg);
        Assert.Single(Regex.Matches(reg, @"PyShClrError_Bind\("));
    }

    [Fact]
    public void ExceptionStubsDeriveFromRuntimeErrorAndDeclareTheManagedMembers()
    {
        var files = PyiEmitter.Emit(Fixture.Model, new PyiEmitter.Options([], "", XmlDocs.Empty));
        string stub = files.Single(f => f.Value.Contains("class FolioException")).Value;
        int at = stub.IndexOf("class FolioException(RuntimeError):", StringComparison.Ordinal);
        Assert.True(at >= 0, stub);
        string body = stub[at..];
        body = body[..(body.IndexOf("\nclass ", 1, StringComparison.Ordinal) is int end and > 0 ? end : body.Length)];
        Assert.Contains("def message(self) -> str | None", body);
        Assert.Contains("def inner_exception(self) -> RuntimeError | None", body);
        Assert.DoesNotContain("__init__", body);
    }
}

/// <summary>Collections: the model of item access and the generic tables both languages bind.</summary>
public class SequenceTests
{
    private static TypeModel NodeList => Fixture.Model.Types.Single(t => t.FullName == "Quorix.Folio.NodeList");

    [Fact]
    public void IndexersCountAndIterationMakeTheSequenceOfAClass()
    {
        var q = NodeList.Sequence!;
        Assert.Same(NodeList, q.CountOwner);
        Assert.Equal("class:Quorix.Folio.Node", q.IntIndexer!.ToString());
        Assert.Equal("btp_MpGetItemByString", Assert.Single(q.KeyIndexers).Stub);
        Assert.Equal("Quorix.Folio.Node", q.Iterable!.ElementName);
        Assert.Contains(Fixture.Model.Skipped, s => s.Type == "Quorix.Folio.NodeList" && s.Member == "Item"
                        && s.Reason.StartsWith("indexed properties other than", StringComparison.Ordinal));
        var order = NodeList.BindingOrder().ToList();
        Assert.True(order.IndexOf("btp_SqGetItem") < order.IndexOf("btp_MpGetItemByString"));
        Assert.True(order.IndexOf("btp_MpGetItemByString") < order.IndexOf("btp_TypeOf"));
    }

    [Fact]
    public void ArraysListsAndEnumeratorsShareOneInstantiationPerElement()
    {
        var node = Fixture.Model.Generics.Single(g => g.ElementName == "Quorix.Folio.Node");
        var run = Fixture.Model.Generics.Single(g => g.ElementName == "Quorix.Folio.Run");
        Assert.True(node.HasArray && !node.HasList);
        Assert.True(run.HasList && !run.HasArray);
        Assert.NotEqual(node.Hash, run.Hash);
        Assert.NotEqual(node.Hash, node.Element!.Hash);
        var toArray = NodeList.Methods.Single(m => m.ManagedName == "ToArray");
        Assert.Same(node, toArray.Result.Generic);
        Assert.Equal(ValueKind.ListOf, NodeList.Properties.Single(p => p.ManagedName == "Runs").Type.Kind);
    }

    [Fact]
    public void EnumerationsOfValuesAreIteratedByValueOnly()
    {
        var byName = Fixture.Model.Generics.ToDictionary(g => g.ElementName);
        var values = new[]
        {
            ("Quorix.Folio.StyleIdentifier", ValueKind.Enum), ("System.Type", ValueKind.SystemType),
            ("System.Collections.Generic.KeyValuePair`2[System.String,System.String]", ValueKind.StringPair),
        };
        foreach (var (name, kind) in values)
        {
            var g = byName[name];
            Assert.Equal(kind, g.Item.Kind);
            Assert.False(g.IsObject || g.HasArray || g.HasList);
            Assert.Equal([GenericKind.Iterable, GenericKind.Iter], g.Kinds());
        }
        foreach (var (cls, element) in new[] { ("StyleSet", values[0].Item1), ("TypeSet", values[1].Item1), ("NameMap", values[2].Item1) })
        {
            var t = Fixture.Model.Types.Single(t => t.FullName == "Quorix.Folio.Values." + cls);
            Assert.Same(byName[element], t.Sequence!.Iterable);
            Assert.Same(byName[element], t.Methods.Single(m => m.ManagedName == "GetEnumerator").Result.Generic);
        }
        var typeSet = Fixture.Model.Types.Single(t => t.FullName == "Quorix.Folio.Values.TypeSet");
        Assert.Equal(ValueKind.SystemType, typeSet.Methods.Single(m => m.ManagedName == "Add").Parameters[0].Type.Kind);
        Assert.Equal(ValueKind.SystemType, typeSet.Methods.Single(m => m.ManagedName == "Find").Result.Kind);
        Assert.True(Fixture.Model.Types.Single(t => t.FullName == "Quorix.Folio.Values.NameMap").Sequence!.KeyIndexers.Single().Stores);
    }

    // The managed classes and the native tables of every generic kind bind the same names in the same order.
    [Fact]
    public void BothLanguagesBindTheGenericStubsInOneOrder()
    {
        var cs = CSharpEmitter.Emit(Fixture.Model).ToDictionary(f => f.FileName, f => f.Text);
        string cpp = CppEmitter.Emit(Fixture.Model)["wrpgen_generic.cpp"];
        foreach (var g in Fixture.Model.Generics)
        {
            string text = cs[$"SiApi_{g.Hash}.cs"];
            foreach (var kind in g.Kinds())
            {
                string cls = StubNames.GenericClassPrefix(kind) + "_" + g.Hash;
                int at = text.IndexOf($"public static unsafe class {cls}\n", StringComparison.Ordinal);
                Assert.True(at >= 0, cls);
                int end = text.IndexOf("\n}\n", at, StringComparison.Ordinal);
                var managed = System.Text.RegularExpressions.Regex.Matches(text[at..end], @"public static \w+ (\w+)\(")
                    .Select(m => m.Groups[1].Value).ToList();

                string table = $"class PyHost_gn_{kind}_{g.Hash} final";
                int t0 = cpp.IndexOf(table, StringComparison.Ordinal);
                Assert.True(t0 >= 0, table);
                int t1 = cpp.IndexOf("bind_all(", t0, StringComparison.Ordinal);
                var native = System.Text.RegularExpressions.Regex.Matches(cpp[t0..t1], @"\{""(\w+)"", slot_of")
                    .Select(m => m.Groups[1].Value).ToList();
                Assert.Contains($"PyHostTable(\"{StubNames.GenericClass(kind, g.Hash)}\")", cpp[t0..t1]);

                var expected = StubNames.GenericStubs(kind).Select(s => s.Name).ToList();
                Assert.Equal(expected, managed);
                Assert.Equal(expected, native);
            }
        }
    }

    [Fact]
    public void TheArrayAndListTablesKeepTheirHistoricalSpellings()
    {
        Assert.Contains("SqSetItemNoChek", StubNames.GenericStubs(GenericKind.Array).Select(s => s.Name));
        Assert.DoesNotContain("SqSetItemNoCheck", StubNames.GenericStubs(GenericKind.Array).Select(s => s.Name));
        Assert.Equal(["MoveNext", "btp_TypeOf", "btp_CastTo", "btp_CastAs", "btp_IsAssignable"],
                     StubNames.GenericStubs(GenericKind.Iter).Select(s => s.Name));
        Assert.Equal("btp_IsAssignable", StubNames.GenericStubs(GenericKind.Array)[^1].Name);
    }
}
