using System.Text;

namespace Quorix.WrpGen;

/// <summary>
/// Interfaces that Python classes implement. Natively: a subclassable type whose methods forward
/// to a managed implementation, a reverse wrapper per member that managed code calls on a Python
/// implementation, and the binding record through which a managed twin reaches those wrappers.
/// Managed: the twin class that implements the interface by calling the reverse wrappers.
/// </summary>
public static class InterfaceEmitter
{
    /// <summary>One member a twin implements: a method, or a property's getter or setter.</summary>
    private sealed record Member(string Function, string PythonName, IReadOnlyList<ParameterModel> Parameters, CarriedType Result,
                                 string Kind, MethodModel? Method = null, PropertyModel? Property = null)
    {
        public bool Supported => ReverseMarshal.Supported(Parameters, Result);
    }

    private static List<Member> Members(TypeModel t)
    {
        string id = CppEmitter.Id(t);
        var members = new List<Member>();
        foreach (var m in t.Methods.Where(m => !m.IsStatic))
            members.Add(new($"rwpPy_mtfn_{id}_{StubNames.Number(m.Overload)}_{CppEmitter.Ident(m.PythonName)}", m.PythonName,
                            m.Parameters, m.Result, "call", m));
        foreach (var p in t.Properties)
        {
            string name = CppEmitter.Ident(p.PythonName);
            if (p.Getter is not null)
                members.Add(new($"rwpPy_pafn_{id}_000_get_{name}", p.PythonName, [], p.Type, "get", Property: p));
            if (p.Setter is not null)
                members.Add(new($"rwpPy_pafn_{id}_000_set_{name}", p.PythonName, [new("value", "value", p.Type)],
                                new CarriedType(ValueKind.Void), "set", Property: p));
        }
        return members;
    }

    public static string TwinClass(TypeModel t) => "WrpTw_" + t.Hash;
    private static string Binding(TypeModel t) => "wrpPy_twbd_" + CppEmitter.Id(t);
    private static string NameIds(TypeModel t) => "wrpPy_rvid_" + CppEmitter.Id(t);

    // ---- native

    /// <summary>The type's binding record, converters, reverse wrappers and registration.</summary>
    internal static void EmitNative(CppWriter w, TypeModel t, string indexTable)
    {
        string id = CppEmitter.Id(t), type = CppEmitter.TypeObject(t);
        var members = Members(t);
        w.Line($"int {CppEmitter.ToClrTwin(t)}(PyObject* obj, PyTwinArg* out) {{");
        w.Line($"    return PyShTwin_ConvPyToClr(obj, &{type}, {CppEmitter.Quote(t.Name)}, wrpPy_asgn_{id}, {Binding(t)}, out);");
        w.Line("}");
        w.Line();
        w.Line($"int {CppEmitter.ToClr(t)}(PyObject* obj, void** out) {{");
        w.Line($"    return PyShBound_ConvPyToClr(obj, &{type}, {CppEmitter.Quote(t.Name)}, wrpPy_asgn_{id}, out);");
        w.Line("}");
        w.Line();
        w.Line($"PyObject* {CppEmitter.ToPyName(t)}(void* handle) {{ return fn_conv_clr_derivltp_to_py_derivltp(handle, &{type}); }}");
        w.Line();
        w.Line($"PyObject* {CppEmitter.ToPyIndexedName(t)}(void* handle, int32_t index) {{");
        w.Line($"    return PyShBound_ConvClrToPyIndexed(handle, index, &{type}, {indexTable}, {indexTable}_count);");
        w.Line("}");
        w.Line();
        w.Line($"int wrpPy_rgtp_{id}(PyObject* module) {{");
        w.Line("    static const char* const names[] = {" + string.Concat(members.Select(m => CppEmitter.Quote(m.PythonName) + ", ")) + "nullptr};");
        w.Line($"    if (PyShTwin_InternNames({NameIds(t)}, names, {members.Count}) < 0)");
        w.Line("        return -1;");
        w.Line($"    if (PyShDerivl_CreateType(module, &{CppEmitter.TypePointer(t)}, {CppEmitter.Quote(t.TpName)}, wrpPy_tymd_{id}, wrpPy_typd_{id}, wrpPy_tpsl_{id},");
        w.Line($"                              {CppEmitter.Quote(t.Name)}) < 0)");
        w.Line("        return -1;");
        w.Line($"    wrpPy_csop_{id}.target = {CppEmitter.TypePointer(t)};");
        w.Line("    return 0;");
        w.Line("}");
        w.Line();
    }

    private static void EmitReverse(CppWriter w, Member m, int index, string ids)
    {
        var ps = new List<string> { "PyObject* self" };
        var ins = new List<(ParameterModel P, ReverseMarshal.InPlan Plan, string V)>();
        var outs = new List<(ReverseMarshal.OutPlan Plan, string V, int Slot)>();
        for (int i = 0; i < m.Parameters.Count; i++)
        {
            var p = m.Parameters[i];
            string v = "a" + i;
            if (p.Type.Mode != PassMode.Out)
            {
                var plan = ReverseMarshal.In(p.Type.Element)!;
                ps.AddRange(plan.Wire.Select(x => $"{x.Cpp} {v}{x.Suffix}"));
                ins.Add((p, plan, v));
            }
            if (p.Type.Mode != PassMode.Value)
            {
                // an out value, or a ref value's way back: item 0 of the list Python got
                var plan = ReverseMarshal.Out(p.Type.Element)!;
                string slot = p.Type.Mode == PassMode.Ref ? v + "_out" : v;
                ps.Add($"{plan.CppSlot}* {slot}");
                outs.Add((plan, slot, i));
            }
        }
        var result = m.Result.Kind == ValueKind.Void ? null : ReverseMarshal.Out(m.Result);
        if (result is not null)
            ps.Add($"{result.CppSlot}* result");
        ps.Add("PyObject** refs");
        int n = m.Parameters.Count;
        w.Line($"int32_t {m.Function}({string.Join(", ", ps)}) {{");
        w.Indent();
        for (int i = 0; i < n; i++)
        {
            var p = m.Parameters[i];
            if (p.Type.Mode == PassMode.Out)
            {
                w.Line($"if ((refs[{i}] = PyShTwin_OutList()) == nullptr)");
                w.Line("    return 0;");
                continue;
            }
            var (_, plan, v) = ins.First(x => x.V == "a" + i);
            var frees = ins.Where(x => int.Parse(x.V[1..]) > i)
                .Select(x => x.Plan.Free(x.V)).Where(f => f is not null).ToList();
            string value = p.Type.Mode == PassMode.Ref ? $"PyShTwin_RefList({plan.ToPy(v)})" : plan.ToPy(v);
            w.Line($"if ((refs[{i}] = {value}) == nullptr) {{");
            foreach (var f in frees)
                w.Line("    " + f);
            w.Line("    return 0;");
            w.Line("}");
        }
        string name = $"{ids}[{index}]";
        string call = m.Kind switch
        {
            "get" => $"PyObject_GetAttr(self, {name})",
            "set" => $"PyObject_SetAttr(self, {name}, refs[0]) < 0 ? nullptr : Py_NewRef(Py_None)",
            _ => $"PyObject_CallMethodObjArgs(self, {name}{string.Concat(Enumerable.Range(0, n).Select(i => $", refs[{i}]"))}, nullptr)",
        };
        w.Line($"if ((refs[{n}] = {call}) == nullptr)");
        w.Line("    return 0;");
        foreach (var (plan, v, slot) in outs)
        {
            w.Line($"if (!{plan.Converter}(PyShTwin_OutItem(refs[{slot}]), {v}))");
            w.Line("    return 0;");
        }
        w.Line(result is null ? "return 1;" : $"return {result.Converter}(refs[{n}], result);");
        w.Dedent();
        w.Line("}");
        w.Line();
    }

    /// <summary>
    /// The reverse wrappers and the binding record, then the forward methods and property
    /// accessors, which reach a managed implementation only.
    /// </summary>
    internal static void EmitForward(CppWriter w, TypeModel t)
    {
        string id = CppEmitter.Id(t), type = CppEmitter.TypeObject(t), table = CppEmitter.Table(t);
        var members = Members(t);
        w.Line($"PyObject* {NameIds(t)}[{Math.Max(1, members.Count)}] = {{}};");
        w.Line();
        foreach (var m in members.Where(m => m.Supported))
            EmitReverse(w, m, members.IndexOf(m), NameIds(t));
        w.Line($"void* const wrpPy_rvtb_{id}[] = {{");
        foreach (var m in members)
            w.Line(m.Supported ? $"    PyShLocked_Entry<&{m.Function}>()," : "    nullptr,  // a kind that cannot cross yet");
        if (members.Count == 0)
            w.Line("    nullptr,");
        w.Line("};");
        w.Line();
        w.Line($"int wrpPy_twbn_{id}(PyTwinTable* twin_table, void** factory) {{");
        w.Line($"    if ({CppEmitter.Invalidate(t)}())");
        w.Line("        return -1;");
        w.Line($"    return {table}::get_instance().btp_GetTpExtraBind(twin_table, factory);");
        w.Line("}");
        w.Line();
        w.Line($"PyShTwinBinding {Binding(t)} = {{{{wrpPy_rvtb_{id}, PyShLocked<&PyShTwin_ReleaseRefs>::call, PyShTwin_ReleaseLater, nullptr}}, nullptr, wrpPy_twbn_{id}, {{}}}};");
        w.Line();
        w.Line($"PyObject* wrpPy_btfn_{id}_gettpextrabind(PyObject*, PyObject*) {{ return PyShTwin_GetTpExtraBind({Binding(t)}, &{type}); }}");
        w.Line($"PyObject* wrpPy_btfn_{id}_asserttp(PyObject* cls, PyObject*) {{ return PyShCast_AssertExact(cls, reinterpret_cast<PyObject*>(&{type})); }}");
        w.Line();

        foreach (var g in CppEmitter.Groups(t))
        {
            var m = g.Candidates[0];
            string receiver = $"{CppEmitter.Invalidate(t)}() || PyShDerivl_Receiver(self, &{type}, {CppEmitter.Quote(g.PythonName)}, &handle) < 0";
            w.Line(g.NoArgs
                ? $"PyObject* {CppEmitter.MethodFunctionName(t, g)}(PyObject* self, PyObject*) {{"
                : $"PyObject* {CppEmitter.MethodFunctionName(t, g)}(PyObject* self, PyObject* args, PyObject* kwargs) {{");
            w.Indent();
            w.Line("void* handle = nullptr;");
            w.Line($"if ({receiver})");
            w.Line("    return nullptr;");
            var passes = CppEmitter.EmitParseFor(w, m.Parameters, "nullptr");
            w.Line($"const {CppEmitter.Table(t)}& table = {CppEmitter.Table(t)}::get_instance();");
            CppEmitter.EmitStubCall(w, t, m, new[] { "handle" }.Concat(passes).ToList());
            w.Dedent();
            w.Line("}");
            w.Line();
        }
        foreach (var p in t.Properties.Where(p => p.Getter is not null))
        {
            w.Line($"PyObject* wrpPy_pafn_{id}_000_get_{CppEmitter.Ident(p.PythonName)}(PyObject* self, void*) {{");
            w.Indent();
            w.Line("void* handle = nullptr;");
            w.Line($"if ({CppEmitter.Invalidate(t)}() || PyShDerivl_Receiver(self, &{type}, {CppEmitter.Quote(p.PythonName)}, &handle) < 0)");
            w.Line("    return nullptr;");
            w.Line($"const {CppEmitter.Table(t)}& table = {CppEmitter.Table(t)}::get_instance();");
            CppEmitter.EmitGetterCall(w, p, "handle");
            w.Dedent();
            w.Line("}");
            w.Line();
        }
        w.Line($"PyObject* wrpPy_tpsb_{id}_tp_new(PyTypeObject* type, PyObject*, PyObject*) {{");
        w.Line($"    return PyShDerivl_New(type, &{type}, {CppEmitter.Invalidate(t)});");
        w.Line("}");
        w.Line($"int wrpPy_tpsb_{id}_tp_init(PyObject* self, PyObject* args, PyObject* kwargs) {{ return PyShDerivl_Init(&{type}, self, args, kwargs); }}");
        w.Line($"void wrpPy_tpsb_{id}_tp_dealloc(PyObject* self) {{ wrapPyDerivlTp_tp_dealloc(self, &{type}); }}");
        w.Line($"Py_hash_t wrpPy_tpsb_{id}_tp_hash(PyObject* self) {{");
        w.Line($"    return Py_TYPE(self) == &{type} ? wrapPyDerivlTp_tp_hash(self) : PyShRightmostSuper_Hash(&{type}, self);");
        w.Line("}");
        w.Line($"PyObject* wrpPy_tpsb_{id}_tp_richcompare(PyObject* self, PyObject* other, int op) {{");
        w.Line($"    return Py_TYPE(self) == &{type} ? wrapPyDerivlTp_tp_richcompare(self, other, op)");
        w.Line($"                                   : PyShRightmostSuper_RichCompare(&{type}, self, other, op);");
        w.Line("}");
        w.Line($"PyObject* wrpPy_tpsb_{id}_tp_repr(PyObject* self) {{");
        w.Line($"    return Py_TYPE(self) == &{type} ? wrapPyDerivlTp_tp_str(self) : PyShRightmostSuper_Repr(&{type}, self);");
        w.Line("}");
        w.Line($"int wrpPy_uafn_{id}_GenericSetDict(PyObject* self, PyObject* value, void*) {{ return PyShDerivl_SetDict(&{type}, self, value); }}");
        w.Line();
        w.Line($"const PyShDerivlSlots wrpPy_tpsl_{id} = {{");
        w.Line($"    wrpPy_tpsb_{id}_tp_new, wrpPy_tpsb_{id}_tp_init, wrpPy_tpsb_{id}_tp_dealloc, wrpPy_tpsb_{id}_tp_hash,");
        w.Line($"    wrpPy_tpsb_{id}_tp_richcompare, wrpPy_tpsb_{id}_tp_repr,");
        w.Line("};");
        w.Line();
    }

    /// <summary>get_type, after the cast operations it falls back on.</summary>
    internal static void EmitGetType(CppWriter w, TypeModel t)
    {
        string id = CppEmitter.Id(t);
        w.Line($"PyObject* wrpPy_btfn_{id}_get_type(PyObject* self, PyObject*) {{");
        w.Line($"    return PyShDerivl_GetType(self, &{CppEmitter.TypeObject(t)}, [] {{ return PyShCast_TypeOf({CppEmitter.CastOpsName(t)}); }});");
        w.Line("}");
        w.Line();
    }

    /// <summary>Method-table entries of an interface type beyond its own methods and the casts.</summary>
    internal static IEnumerable<string> ExtraMethodDefs(TypeModel t)
    {
        string id = CppEmitter.Id(t);
        yield return $"{{\"_qrxsc2p_gettpextrabind\", wrpPy_btfn_{id}_gettpextrabind, METH_NOARGS | METH_STATIC, \"\"}}";
    }

    internal static string GetTypeDef(TypeModel t) =>
        $"{{\"get_type\", wrpPy_btfn_{CppEmitter.Id(t)}_get_type, METH_NOARGS, \"\"}}";

    internal static string AssertTpDef(TypeModel t) =>
        $"{{\"_qrxsc2p_asserttp\", wrpPy_btfn_{CppEmitter.Id(t)}_asserttp, METH_NOARGS | METH_CLASS, \"\"}}";

    internal static string DictDef(TypeModel t) =>
        $"{{\"__dict__\", PyObject_GenericGetDict, wrpPy_uafn_{CppEmitter.Id(t)}_GenericSetDict, \"\", nullptr}}";

    // ---- managed

    /// <summary>The twin class: the interface implemented by calls to the reverse wrappers.</summary>
    public static string EmitTwin(TypeModel t)
    {
        var w = new StringBuilder();
        string iface = CSharpEmitter.ManagedName(t);
        string ns = t.StubClass[..t.StubClass.LastIndexOf('.')];
        w.Append(CSharpEmitter.Header).Append('\n');
        w.Append($"// the managed twin of a Python implementation of {t.FullName}\n");
        w.Append("#nullable disable\nusing System;\nusing System.Runtime.InteropServices;\nusing Quorix.WrpGen.Interop;\n\n");
        w.Append($"namespace {ns};\n\n");
        w.Append($"internal sealed unsafe class {TwinClass(t)}(IntPtr pyObject, PyTwinTable* table) : PyTwin(pyObject, table), {iface}\n{{\n");
        w.Append("    private static PyTwinTable* s_table;\n\n");
        w.Append("    internal static int Bind(PyTwinTable* table, IntPtr* result)\n    {\n");
        w.Append("        s_table = table;\n");
        w.Append($"        return PyTwin.Bind(table, result, static py => new {TwinClass(t)}(py, s_table));\n    }}\n");
        var members = Members(t);
        foreach (var abstractMember in t.AbstractMembers)
        {
            w.Append('\n');
            if (abstractMember.IsProperty)
            {
                var getter = members.FirstOrDefault(x => x.Kind == "get" && x.Property!.ManagedName == abstractMember.Name);
                var setter = members.FirstOrDefault(x => x.Kind == "set" && x.Property!.ManagedName == abstractMember.Name);
                w.Append($"    public {abstractMember.Result} {abstractMember.Name}\n    {{\n");
                if (abstractMember.HasGetter)
                {
                    w.Append("        get\n        {\n");
                    EmitTwinBody(w, getter, members.IndexOf(getter!), "            ", "get_" + abstractMember.Name, []);
                    w.Append("        }\n");
                }
                if (abstractMember.HasSetter)
                {
                    w.Append("        set\n        {\n");
                    EmitTwinBody(w, setter, members.IndexOf(setter!), "            ", "set_" + abstractMember.Name, []);
                    w.Append("        }\n");
                }
                w.Append("    }\n");
                continue;
            }
            var bound = members.FirstOrDefault(x => x.Kind == "call" && x.Method!.ManagedName == abstractMember.Name
                                                    && x.Parameters.Count == abstractMember.Parameters.Count);
            var outs = abstractMember.Parameters.Where(p => p.StartsWith("out ", StringComparison.Ordinal))
                .Select(p => p[(p.LastIndexOf(' ') + 1)..]).ToList();
            w.Append($"    public {abstractMember.Result} {abstractMember.Name}({string.Join(", ", abstractMember.Parameters)})\n    {{\n");
            EmitTwinBody(w, bound, members.IndexOf(bound!), "        ", abstractMember.Name, outs, abstractMember.Result);
            w.Append("    }\n");
        }
        w.Append("}\n");
        return w.ToString();
    }

    /// <summary>
    /// The body of one twin member: a reverse call through slot <paramref name="index"/>, or, for a
    /// member that is not bound or whose values cannot cross, a refusal naming it.
    /// </summary>
    private static void EmitTwinBody(StringBuilder w, Member? m, int index, string pad, string managedName, IReadOnlyList<string> outs,
                                     string? declaredResult = null)
    {
        void Line(string s) => w.Append(pad).Append(s).Append('\n');
        if (m is null || !m.Supported)
        {
            foreach (string o in outs)
                Line($"{o} = default;");
            string member = m is null ? managedName : m.Kind == "call" ? m.PythonName : m.Kind + "_" + m.PythonName;
            Line($"throw new NotSupportedException(\"'{member}' of a Python implementation takes or gives a kind of value that cannot cross yet\");");
            return;
        }
        int n = m.Parameters.Count;
        Line($"IntPtr* refs = stackalloc IntPtr[{n + 1}];");
        Line($"new Span<IntPtr>(refs, {n + 1}).Clear();");
        var wireTypes = new List<string> { "IntPtr" };
        var passes = new List<string> { "PyObject" };
        var fixeds = new List<string>();
        var reads = new List<string>();
        for (int i = 0; i < n; i++)
        {
            var p = m.Parameters[i];
            string e = m.Kind == "set" ? "value" : CSharpEmitter.ParamName(p.ManagedName);
            string v = "a" + i;
            if (p.Type.Mode != PassMode.Out)
            {
                var inPlan = ReverseMarshal.In(p.Type.Element)!;
                if (inPlan.CsPrelude(v, e) is { } prelude)
                {
                    if (prelude.StartsWith("fixed", StringComparison.Ordinal))
                        fixeds.Add(prelude);
                    else
                        Line(prelude);
                }
                wireTypes.AddRange(inPlan.Wire.Select(x => x.Cs));
                passes.AddRange(inPlan.CsPass(v, e));
            }
            if (p.Type.Mode != PassMode.Value)
            {
                var plan = ReverseMarshal.Out(p.Type.Element)!;
                string slot = p.Type.Mode == PassMode.Ref ? v + "_out" : v;
                Line($"{plan.CsSlot} {slot} = default;");
                wireTypes.Add(plan.CsSlot + "*");
                passes.Add("&" + slot);
                reads.Add($"{e} = {plan.CsRead(slot)};");
            }
        }
        var result = m.Result.Kind == ValueKind.Void ? null : ReverseMarshal.Out(m.Result);
        if (result is not null)
        {
            Line($"{result.CsSlot} r = default;");
            wireTypes.Add(result.CsSlot + "*");
            passes.Add("&r");
        }
        wireTypes.Add("IntPtr*");
        passes.Add("refs");
        wireTypes.Add("int");
        Line("int ok;");
        string call = $"ok = ((delegate* unmanaged<{string.Join(", ", wireTypes)}>)Table->Reverse[{index}])({string.Join(", ", passes)});";
        foreach (var f in fixeds)
            Line(f);
        Line(new string(' ', 4 * fixeds.Count) + call);
        Line("try");
        Line("{");
        Line("    Check(ok);");
        foreach (var r in reads)
            Line("    " + r);
        if (result is not null)
        {
            // a sequence comes back as a list, which serves every declared type but an array
            bool array = ReverseMarshal.IsSequence(m.Result) && declaredResult?.EndsWith("[]", StringComparison.Ordinal) == true;
            Line($"    return {result.CsRead("r")}{(array ? "?.ToArray()" : "")};");
        }
        Line("}");
        Line("finally");
        Line("{");
        Line($"    Release(refs, {n + 1});");
        Line("}");
    }
}
