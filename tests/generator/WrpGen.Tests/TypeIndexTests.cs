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
}
