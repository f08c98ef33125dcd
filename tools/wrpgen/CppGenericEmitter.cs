namespace Quorix.WrpGen;

/// <summary>
/// The native half of the generic instantiations: per element type the method tables of its
/// kinds (stub lists shared with the managed side through <see cref="StubNames.GenericStubs"/>),
/// their validity states and entry checks, and the Python iterator, enumerable, array and list
/// types whose slots live in the runtime (builtins/generic_kinds).
/// </summary>
internal static class CppGenericEmitter
{
    public const string Header = "wrpgen_generic.h";
    public const string Source = "wrpgen_generic.cpp";

    /// <summary>The Python types of an instantiation: the kind, its Python name, the runtime kind.</summary>
    private sealed record PyKind(string Code, string WrapperName, string RuntimeKind, string KindName);

    private static readonly PyKind IterType = new("iter", "_IterWrapper", "Iter", "IEnumerator");
    private static readonly PyKind IterableType = new("iterable", "_IterableWrapper", "Iterable", "IEnumerable");
    private static readonly PyKind ArrayType = new("array", "_ArrayWrapper", "Array", "Array");
    private static readonly PyKind ListType = new("list", "_IListWrapper", "List", "List");

    private static IEnumerable<PyKind> PyKinds(GenericInstance g)
    {
        yield return IterType;
        yield return IterableType;
        if (g.HasArray)
            yield return ArrayType;
        if (g.HasList)
            yield return ListType;
    }

    public static string GenericModule(AssemblyModel model) => model.RootModule + "._wrpgen._generic";

    public static string TypeObject(GenericInstance g, string code) => $"wrpPygn_tyds_{g.Hash}_{code}";
    public static string IterableIter(GenericInstance g) => $"wrpPygn_bltp_{g.Hash}_iterable_iter";
    public static string Register(GenericInstance g) => $"wrpPygn_rgtp_{g.Hash}";

    /// <summary>The Python type a sequence result is wrapped in.</summary>
    public static string ResultType(CarriedType t) => TypeObject(t.Generic!, t.Kind switch
    {
        ValueKind.EnumeratorOf => IterType.Code,
        ValueKind.EnumerableOf => IterableType.Code,
        ValueKind.ArrayOf => ArrayType.Code,
        ValueKind.ListOf => ListType.Code,
        _ => throw new GeneratorException($"{t} is no sequence kind"),
    });

    private static string KindCode(GenericKind kind) => kind.ToString().ToLowerInvariant();
    private static string Table(GenericInstance g, GenericKind kind) => $"PyHost_gn_{kind}_{g.Hash}";
    private static string State(GenericInstance g, GenericKind kind) => $"wrpPygn_hsst_{g.Hash}_{KindCode(kind)}";
    private static string Invalidate(GenericInstance g, GenericKind kind) => $"wrpPygn_uafn_{g.Hash}_{KindCode(kind)}_invalidate";
    private static string Query(GenericInstance g, GenericKind kind) => $"wrpPygn_bltp_{g.Hash}_{KindCode(kind)}_is_not_valid";

    private static string CppParam(string code) => code switch
    {
        "h" => "void*",
        "i" => "int32_t",
        "ph" => "void**",
        "pi" => "int32_t*",
        _ => throw new GeneratorException($"unknown parameter code {code}"),
    };

    // Kinds through which a kind is presented: a failure there disables it too.
    private static GenericKind[] Referenced(GenericKind kind) => kind switch
    {
        GenericKind.ICol or GenericKind.Array => [GenericKind.Iterable],
        GenericKind.IList => [GenericKind.ICol, GenericKind.Iterable],
        _ => [],
    };

    public static void EmitHeader(CppWriter w, AssemblyModel model)
    {
        w.Line("// Generic instantiations of " + model.AssemblyName + ".");
        w.Line("#pragma once");
        w.Line();
        w.Line("#include <Python.h>");
        w.Line();
        w.Line("#include <string>");
        w.Line();
        w.Line("#include \"builtins/generic_kinds.h\"");
        w.Line();
        foreach (var g in model.Generics)
        {
            w.Line($"// over {g.ElementName}");
            foreach (var k in PyKinds(g))
                w.Line($"extern PyGnTypeObject {TypeObject(g, k.Code)};");
            foreach (var kind in g.Kinds())
                w.Line($"bool {Query(g, kind)}(std::string& message);");
            w.Line($"PyObject* {IterableIter(g)}(PyObject* self);");
            w.Line($"int {Register(g)}(PyObject* module);");
            w.Line();
        }
    }

    public static void EmitSource(CppWriter w, AssemblyModel model)
    {
        w.Line("// Generic instantiations of " + model.AssemblyName + ".");
        w.Line($"#include \"{CppEmitter.BindingsHeader}\"");
        w.Line();
        w.Line("#include \"builtins/generic_kinds.h\"");
        w.Line("#include \"builtins/seq_access.h\"");
        w.Line("#include \"host/managed_binding.h\"");
        w.Line("#include \"objects/bound_registration.h\"");
        w.Line("#include \"objects/casting.h\"");
        w.Line("#include \"objects/host_table.h\"");
        w.Line("#include \"objects/seal_object.h\"");
        w.Line("#include \"objects/type_arg.h\"");
        w.Line("#include \"objects/wrapper_slots.h\"");
        w.Line();
        foreach (var g in model.Generics)
            EmitInstance(w, model, g);
    }

    private static void EmitInstance(CppWriter w, AssemblyModel model, GenericInstance g)
    {
        w.Line($"// ---- over {g.ElementName}");
        w.Line();
        w.Line("namespace {");
        w.Line();
        foreach (var kind in g.Kinds())
            EmitTable(w, g, kind);
        foreach (var kind in g.Kinds())
        {
            string refs = string.Join(", ", Referenced(kind).Select(r => "&" + Query(g, r)));
            w.Line($"const PyHostState& {State(g, kind)}() {{");
            w.Line($"    static const PyHostState state = PyHostState_Build({Table(g, kind)}::get_instance(), {{{refs}}});");
            w.Line("    return state;");
            w.Line("}");
            w.Line();
            w.Line($"bool {Invalidate(g, kind)}() {{ return PyHostState_Check({State(g, kind)}()); }}");
            w.Line();
        }
        w.Line("}  // namespace");
        w.Line();
        foreach (var kind in g.Kinds())
            w.Line($"bool {Query(g, kind)}(std::string& message) {{ return PyHostState_Query({State(g, kind)}(), message); }}");
        w.Line();
        w.Line("namespace {");
        w.Line();
        foreach (var k in PyKinds(g))
            EmitOps(w, model, g, k);
        w.Line("}  // namespace");
        w.Line();
        foreach (var k in PyKinds(g))
            w.Line($"PyGnTypeObject {TypeObject(g, k.Code)} = {{{{PyVarObject_HEAD_INIT(nullptr, 0)}}, &wrpPygn_opsx_{g.Hash}_{k.Code}}};");
        w.Line();
        w.Line($"PyObject* {IterableIter(g)}(PyObject* self) {{ return PyGn_IterableIter(self, wrpPygn_opsx_{g.Hash}_{IterableType.Code}); }}");
        w.Line();
        w.Line($"int {Register(g)}(PyObject* module) {{");
        w.Indent();
        foreach (var k in PyKinds(g))
        {
            string name = $"{k.WrapperName}_{g.Hash}";
            w.Line($"PyGn_DescribeType(&{TypeObject(g, k.Code)}, {CppEmitter.Quote(GenericModule(model) + "." + name)}, PyGnKind::{k.RuntimeKind});");
            w.Line($"{TypeObject(g, k.Code)}.type.tp_methods = wrpPygn_tymd_{g.Hash}_{k.Code};");
            w.Line($"if (PyShBound_RegisterType(module, &{TypeObject(g, k.Code)}.type, nullptr, false, nullptr, {CppEmitter.Quote(name)}) < 0)");
            w.Line("    return -1;");
        }
        w.Line("return 0;");
        w.Dedent();
        w.Line("}");
        w.Line();
    }

    private static void EmitTable(CppWriter w, GenericInstance g, GenericKind kind)
    {
        var stubs = StubNames.GenericStubs(kind);
        string cls = Table(g, kind);
        string Ret(GenericStub s) => s.Return == "v" ? "void" : "int32_t";
        w.Line($"class {cls} final : public PyHostTable {{");
        w.Line("public:");
        w.Indent();
        w.Line($"static const {cls}& get_instance() {{");
        w.Line($"    static const {cls} table;");
        w.Line("    return table;");
        w.Line("}");
        foreach (var s in stubs)
        {
            var decl = string.Join(", ", s.Params.Select((p, i) => $"{CppParam(p)} a{i}"));
            var args = string.Join(", ", s.Params.Select((_, i) => $"a{i}"));
            // a slot left unbound by an earlier failure answers with the binding message
            w.Line(s.Return == "v"
                ? $"void {s.Forwarder}({decl}) const {{ if ({s.Forwarder}_) {s.Forwarder}_({args}); else PyGn_TableFailed(*this); }}"
                : $"int32_t {s.Forwarder}({decl}) const {{ return {s.Forwarder}_ ? {s.Forwarder}_({args}) : PyGn_TableFailed(*this); }}");
        }
        w.Dedent();
        w.Line();
        w.Line("private:");
        w.Indent();
        w.Line($"{cls}() : PyHostTable({CppEmitter.Quote(StubNames.GenericClass(kind, g.Hash))}) {{");
        w.Indent();
        w.Line("const PyHostStubSlot stubs[] = {");
        foreach (var s in stubs)
            w.Line($"    {{{CppEmitter.Quote(s.Name)}, slot_of({s.Forwarder}_)}},");
        w.Line("};");
        w.Line("bind_all(stubs, sizeof stubs / sizeof stubs[0]);");
        w.Dedent();
        w.Line("}");
        w.Line();
        foreach (var s in stubs)
            w.Line($"{Ret(s)} (*{s.Forwarder}_)({string.Join(", ", s.Params.Select(CppParam))}) = nullptr;");
        w.Dedent();
        w.Line("};");
        w.Line();
    }

    // A lambda that forwards to one stub of a kind's table.
    private static string Forward(GenericInstance g, GenericKind kind, string stubName)
    {
        var s = StubNames.GenericStubs(kind).Single(x => x.Name == stubName);
        var decl = string.Join(", ", s.Params.Select((p, i) => $"{CppParam(p)} a{i}"));
        var args = string.Join(", ", s.Params.Select((_, i) => $"a{i}"));
        return $"[]({decl}) {{ return {Table(g, kind)}::get_instance().{s.Forwarder}({args}); }}";
    }

    // How an element that is no bound object leaves MoveNext: an enumeration's value in the
    // index slot, a Type's handle, a pair as a new Python list of its two strings.
    private static string ValueToPy(CarriedType item) => item.Kind switch
    {
        ValueKind.Enum => $"[](void*, int32_t value) {{ return {CppEmitter.ToPyName(item.Bound!)}(value); }}",
        ValueKind.SystemType => "[](void* handle, int32_t) { return wrpPye_conv_clr_to_py_FFFFFFF_Type(handle); }",
        ValueKind.StringPair => "[](void* list, int32_t) { return PySeq_TupleFromList(static_cast<PyObject*>(list)); }",
        _ => throw new GeneratorException($"no element conversion for {item}"),
    };

    private static void EmitOps(CppWriter w, AssemblyModel model, GenericInstance g, PyKind k)
    {
        // The kinds that serve this Python type: its own table, then those it reads through.
        GenericKind own = k == IterType ? GenericKind.Iter : k == IterableType ? GenericKind.Iterable
            : k == ArrayType ? GenericKind.Array : GenericKind.IList;
        GenericKind items = own;
        GenericKind? casts = own is GenericKind.Iterable ? null : own;
        string ops = $"wrpPygn_opsx_{g.Hash}_{k.Code}";
        w.Line($"PyGnOps wrpPygn_make_{g.Hash}_{k.Code}() {{");
        w.Indent();
        w.Line("PyGnOps o = {};");
        w.Line($"o.kind_name = {CppEmitter.Quote(k.KindName)};");
        w.Line($"o.invalidate = {Invalidate(g, own)};");
        if (g.IsObject)
        {
            var e = g.Element!;
            w.Line($"o.element_type = &{CppEmitter.TypeObject(e)};");
            w.Line($"o.element_kind = {CppEmitter.HandleKind(e)};");
            w.Line($"o.index_table = {CppEmitter.IndexTable(model)};");
            w.Line($"o.index_count = {CppEmitter.IndexTable(model)}_count;");
            w.Line($"o.element_to_clr = {CppEmitter.ToClr(e)};");
        }
        else
        {
            w.Line($"o.element_to_py = {ValueToPy(g.Item)};");
        }
        w.Line($"o.get_enumerator = {Forward(g, GenericKind.Iterable, "GetEnumerator")};");
        w.Line($"o.iter_type = &{TypeObject(g, IterType.Code)}.type;");
        if (own == GenericKind.Iter)
            w.Line($"o.move_next = {Forward(g, GenericKind.Iter, "MoveNext")};");
        if (own is GenericKind.Array or GenericKind.IList)
        {
            GenericKind counted = own == GenericKind.Array ? GenericKind.Array : GenericKind.ICol;
            w.Line($"o.sq_length = {Forward(g, counted, "SqLength")};");
            w.Line($"o.sq_contains = {Forward(g, counted, "SqContains")};");
            w.Line($"o.sq_get_item = {Forward(g, items, "SqGetItem")};");
            w.Line($"o.sq_get_item_no_check = {Forward(g, items, "SqGetItemNoCheck")};");
            w.Line($"o.count_of = {Forward(g, items, "CountOf")};");
            w.Line($"o.index_by = {Forward(g, items, "IndexBy")};");
        }
        if (own == GenericKind.IList)
        {
            // the collection table adds and removes by value; the list table edits by position
            w.Line($"o.add = {Forward(g, GenericKind.ICol, "Add")};");
            w.Line($"o.remove = {Forward(g, GenericKind.ICol, "Remove")};");
            w.Line($"o.clear = {Forward(g, GenericKind.ICol, "Clear")};");
            w.Line($"o.concat = {Forward(g, GenericKind.ICol, "SqInplaceConcat")};");
            w.Line($"o.repeat = {Forward(g, GenericKind.ICol, "SqInplaceRepeat")};");
            w.Line($"o.insert = {Forward(g, own, "Insert")};");
            w.Line($"o.remove_at = {Forward(g, own, "RemoveAt")};");
            w.Line($"o.remove_items = {Forward(g, own, "MpRemoveItems")};");
            w.Line($"o.pop = {Forward(g, own, "Pop")};");
        }
        if (own is GenericKind.Array or GenericKind.IList)
        {
            w.Line($"o.sq_set_item = {Forward(g, own, "SqSetItem")};");
            w.Line($"o.sq_set_item_no_check = {Forward(g, own, "SqSetItemNoChek")};");
            w.Line($"o.mp_set_items = {Forward(g, own, "MpSetItems")};");
            w.Line($"o.reverse = {Forward(g, own, "Reverse")};");
            w.Line($"o.sort = {Forward(g, own, "Sort")};");
        }
        w.Line($"o.cast.invalidate = {Invalidate(g, own)};");
        w.Line($"o.cast.target = &{TypeObject(g, k.Code)}.type;");
        w.Line("o.cast.target_kind = HandleKind_Object;");
        if (casts is { } c)
        {
            var names = StubNames.GenericStubs(c).Select(s => s.Name).ToHashSet(StringComparer.Ordinal);
            w.Line($"o.cast.type_of = {Forward(g, c, "btp_TypeOf")};");
            w.Line($"o.cast.cast_to = {Forward(g, c, "btp_CastTo")};");
            w.Line($"o.cast.cast_as = {Forward(g, c, "btp_CastAs")};");
            w.Line($"o.cast.is_assignable = {Forward(g, c, "btp_IsAssignable")};");
            if (names.Contains("btp_ReInterpretObj"))
                w.Line($"o.cast.reinterpret = {Forward(g, c, "btp_ReInterpretObj")};");
        }
        w.Line("return o;");
        w.Dedent();
        w.Line("}");
        w.Line();
        w.Line($"const PyGnOps {ops} = wrpPygn_make_{g.Hash}_{k.Code}();");
        w.Line();
        string prefix = $"wrpPygn_btfn_{g.Hash}_{k.Code}";
        var methods = new List<string>();
        if (own is GenericKind.Array or GenericKind.IList)
        {
            methods.Add("{\"index\", PyGn_Index, METH_VARARGS, \"\"}");
            methods.Add("{\"count\", PyGn_Count, METH_O, \"\"}");
            if (own == GenericKind.IList)
            {
                methods.Add("{\"append\", PyGn_Append, METH_O, \"\"}");
                methods.Add("{\"insert\", PyGn_Insert, METH_VARARGS, \"\"}");
                methods.Add("{\"extend\", PyGn_Extend, METH_O, \"\"}");
                methods.Add("{\"remove\", PyGn_Remove, METH_O, \"\"}");
                methods.Add("{\"pop\", PyGn_Pop, METH_VARARGS, \"\"}");
                methods.Add("{\"clear\", PyGn_Clear, METH_NOARGS, \"\"}");
            }
            methods.Add("{\"sort\", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(PyGn_Sort)), METH_VARARGS | METH_KEYWORDS, \"\"}");
            methods.Add("{\"reverse\", PyGn_Reverse, METH_NOARGS, \"\"}");
            methods.Add("{\"copy\", PyGn_Copy, METH_NOARGS, \"\"}");
            methods.Add("{\"contains\", PyGn_Contains, METH_O, \"\"}");
        }
        if (casts is not null)
            methods.AddRange(CppEmitter.EmitCastBlock(w, prefix, ops + ".cast"));
        else
            methods.Add("{\"_qrxsc2p_asserttp\", wrapPySealTp_qrxsc2p_asserttp, METH_NOARGS | METH_CLASS, \"\"}");
        w.Line($"PyMethodDef wrpPygn_tymd_{g.Hash}_{k.Code}[] = {{");
        foreach (var m in methods)
            w.Line($"    {m},");
        w.Line("    {nullptr, nullptr, 0, nullptr},");
        w.Line("};");
        w.Line();
    }
}
