using System.Text.RegularExpressions;
using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>Interfaces Python implements: reverse wrappers, their table and names, and the managed twin.</summary>
public class InterfaceEmitterTests
{
    private static string SectionOf(AssemblyModel model, TypeModel t)
    {
        string source = CppEmitter.Emit(model)[t.Module.Replace('.', '_') + ".cpp"];
        int start = source.IndexOf($"// ---- {t.FullName}\n", StringComparison.Ordinal);
        int end = source.IndexOf("// ---- ", start + 8, StringComparison.Ordinal);
        return end < 0 ? source[start..] : source[start..end];
    }

    private static TypeModel Hyphenation(AssemblyModel model) =>
        model.Types.Single(t => t.FullName == "Quorix.Folio.IHyphenationCallback");

    [Fact]
    public void EveryMemberHasAReverseWrapperInTableOrderWithItsInternedName()
    {
        var model = Fixture.Build();
        var t = Hyphenation(model);
        string section = SectionOf(model, t);
        string id = $"{t.Hash}_IHyphenationCallback";
        Assert.Contains($"int32_t rwpPy_mtfn_{id}_000_request_dictionary(PyObject* self, const char16_t* a0, int32_t a0_n, PyObject** refs) {{", section);
        Assert.Contains($"int32_t rwpPy_pafn_{id}_000_get_name(PyObject* self, PyStringArg* result, PyObject** refs) {{", section);
        var entries = Regex.Matches(section, @"PyShLocked_Entry<&(\w+)>\(\)").Select(m => m.Groups[1].Value).ToList();
        Assert.Equal([$"rwpPy_mtfn_{id}_000_request_dictionary", $"rwpPy_pafn_{id}_000_get_name"], entries);
        Assert.Contains("static const char* const names[] = {\"request_dictionary\", \"name\", nullptr};", section);
        // the twin calls the same slots in the same order
        string twin = InterfaceEmitter.EmitTwin(t);
        Assert.Contains("Table->Reverse[0])(PyObject, a0, @language?.Length ?? -1, refs)", twin);
        Assert.Contains("Table->Reverse[1])(PyObject, &r, refs)", twin);
        Assert.Contains(", global::Quorix.Folio.IHyphenationCallback", twin);
    }

    [Fact]
    public void AnArgumentThatFailsReleasesOnlyTheLaterOnesAndTheResultComesLast()
    {
        var model = Fixture.Build();
        var t = Hyphenation(model);
        var node = model.Types.Single(x => x.FullName == "Quorix.Folio.Node");
        var run = model.Types.Single(x => x.FullName == "Quorix.Folio.Run");
        CarriedType Cls(TypeModel b) => new(ValueKind.Class, b);
        t.Methods.Add(new MethodModel("Visit", "visit", 0, "call_000_Visit", false, 0,
            [new("first", "first", Cls(node)), new("text", "text", new(ValueKind.String)),
             new("third", "third", Cls(run)), new("fourth", "fourth", Cls(node))],
            new CarriedType(ValueKind.Bool)));
        string section = SectionOf(model, t);
        int start = section.IndexOf("_000_visit(PyObject* self", StringComparison.Ordinal);
        string body = section[start..section.IndexOf("\n}\n", start, StringComparison.Ordinal)];
        string[] steps = body.Split("if ((refs[").Skip(1).ToArray();
        Assert.Equal(5, steps.Length);  // four arguments, then the call
        Assert.Contains("PyShWrp_FreeGcHandlePtr(a2);", steps[1]);  // the string failed: third and fourth go
        Assert.Contains("PyShWrp_FreeGcHandlePtr(a3);", steps[1]);
        Assert.DoesNotContain("(a0)", steps[1]);  // the first is already owned by its wrapper in refs
        Assert.DoesNotContain("Free", steps[3]);  // nothing after the last
        Assert.StartsWith("4] = PyObject_CallMethodObjArgs(self, ", steps[4]);
        Assert.Contains("return fn_conv_py_bool_to_clr_bool(refs[4], result);", body);
    }

    [Fact]
    public void TheTwinImplementsEveryAbstractMemberExactlyAsDeclaredEvenUnboundOnes()
    {
        var model = Fixture.Build();
        var t = Hyphenation(model);
        Assert.Equal(["RequestDictionary", "Name"], t.AbstractMembers.Select(m => m.Name));
        Assert.Equal(["string @language"], t.AbstractMembers[0].Parameters);
        // a member the binding could not carry (say, an array out parameter) still gets a body
        t.AbstractMembers.Add(new ManagedMember("Split", false, "bool", ["string @word", "out int[] @points"], false, false));
        string twin = InterfaceEmitter.EmitTwin(t);
        Assert.Contains("public bool Split(string @word, out int[] @points)\n    {\n        @points = default;\n"
                        + "        throw new NotSupportedException(\"'Split' of a Python implementation", twin);
        Assert.DoesNotContain("Default", twin);  // a static member is not the twin's to implement
    }

    [Fact]
    public void MembersWhoseValuesCannotCrossAreRefusedByTheTwinNotPretended()
    {
        var model = Fixture.Build();
        var t = Hyphenation(model);
        // a regular expression crosses only from Python into managed code
        t.Methods.Add(new MethodModel("Pattern", "pattern", 0, "call_000_Pattern", false, 0,
            [new("regex", "regex", new CarriedType(ValueKind.Regex))], new CarriedType(ValueKind.Void)));
        t.AbstractMembers.Add(new ManagedMember("Pattern", false, "void", ["global::System.Text.RegularExpressions.Regex @regex"], false, false));
        Assert.Contains("nullptr,  // a kind that cannot cross yet", SectionOf(model, t));
        Assert.Contains("throw new NotSupportedException(\"'pattern' of a Python implementation", InterfaceEmitter.EmitTwin(t));
    }

    [Fact]
    public void RefNullableObjectAndStreamValuesCrossBothWays()
    {
        var model = Fixture.Build();
        var t = Hyphenation(model);
        t.Methods.Add(new MethodModel("Adjust", "adjust", 0, "call_000_Adjust", false, 0,
            [new("count", "count", new CarriedType(ValueKind.Int32) { Mode = PassMode.Ref }),
             new("when", "when", new CarriedType(ValueKind.DateTime) { IsNullable = true }),
             new("tag", "tag", new CarriedType(ValueKind.Object))],
            new CarriedType(ValueKind.Stream)));
        t.AbstractMembers.Add(new ManagedMember("Adjust", false, "global::System.IO.Stream",
            ["ref int @count", "global::System.DateTime? @when", "object @tag"], false, false));
        string section = SectionOf(model, t);
        int start = section.IndexOf("_000_adjust(PyObject* self", StringComparison.Ordinal);
        string body = section[start..section.IndexOf("\n}\n", start, StringComparison.Ordinal)];
        Assert.StartsWith("_000_adjust(PyObject* self, int32_t a0, int32_t* a0_out, PyOptional<PyDateTimeArg>* a1, VariantArg* a2, VariantArg* result, PyObject** refs)", body);
        // the ref value goes in as a list; when it fails, the object record after it is released
        Assert.Contains("refs[0] = PyShTwin_RefList(PyLong_FromLong(a0))) == nullptr) {\n        PyShBound_ReleaseObjectRecord(*a2);", body);
        Assert.Contains("(a1->has_value ? fn_conv_clr_datetime_to_py_datetime(&a1->value) : Py_NewRef(Py_None))", body);
        Assert.Contains("refs[2] = PyShBound_ObjectResult(*a2)", body);
        // after the call: item 0 of the list back into the ref value, then the stream result
        Assert.True(body.IndexOf("fn_conv_py_long_to_clr_int32(PyShTwin_OutItem(refs[0]), a0_out)", StringComparison.Ordinal)
                    < body.IndexOf("return fn_conv_py_stream_to_clr_stream(refs[3], result);", StringComparison.Ordinal));
        string twin = InterfaceEmitter.EmitTwin(t);
        Assert.Contains("PyOptional<PyDateTimeArg> a1 = default; if (@when.HasValue) { a1.HasValue = 1; PyValues.Write(&a1.Value, @when.Value); }", twin);
        Assert.Contains("VariantArg a2 = default; Variants.SetResult(&a2, @tag);", twin);
        Assert.Contains("@count = a0_out;", twin);
        Assert.Contains("return StubValues.KeptStreamOf(&r);", twin);
    }
}
