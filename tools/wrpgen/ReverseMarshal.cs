namespace Quorix.WrpGen;

/// <summary>
/// How each value kind crosses when managed code calls a Python implementation: managed
/// arguments become Python objects, Python results (and out and ref values) become managed
/// values. One entry per kind serves both the native reverse wrapper and the managed twin that
/// calls it. A null plan means the kind cannot cross in this direction yet.
/// </summary>
internal static class ReverseMarshal
{
    /// <summary>
    /// A managed argument: its wire parameters (native and managed types, by suffix of the
    /// variable name), what the twin computes before the call, what it passes, the native
    /// expression that makes the Python object, and the statement that frees it unconverted.
    /// </summary>
    internal sealed record InPlan(
        IReadOnlyList<(string Cpp, string Cs, string Suffix)> Wire,
        Func<string, string, string?> CsPrelude,
        Func<string, string, IReadOnlyList<string>> CsPass,
        Func<string, string> ToPy,
        Func<string, string?> Free);

    /// <summary>A value coming back from Python: the native slot, its converter, the managed slot and how it reads.</summary>
    internal sealed record OutPlan(string CppSlot, string Converter, string CsSlot, Func<string, string> CsRead);

    /// <summary>
    /// A value that crosses as one blittable wire value: its native and managed wire types, how the
    /// twin makes it from the managed value, how the native side makes the Python object, and the
    /// converter that makes it from a Python object.
    /// </summary>
    private sealed record Plain(string Cpp, string Cs, Func<string, string> ToWire, Func<string, string> ToPy, string Converter);

    private static Plain? PlainOf(CarriedType type)
    {
        if (type.Kind is ValueKind.Enum)
            return new("int32_t", "int", e => $"(int){e}", v => $"{CppEmitter.ToPyName(type.Bound!)}({v})", CppEmitter.ToClr(type.Bound!));
        if (type.Kind is ValueKind.TimeSpan)
            return new("int64_t", "long", e => $"{e}.Ticks", v => $"fn_conv_clr_timespan_to_py_datetimedelta({v})",
                       "fn_conv_py_datetimedelta_to_clr_timespan");
        if (type.Kind is ValueKind.Char)
            return new("uint16_t", "ushort", e => $"(ushort){e}", v => $"fn_conv_clr_char_to_py_string({v})", CppEmitter.ScalarConverter(type.Kind));
        var wire = ScalarWire(type.Kind);
        if (wire is null)
            return null;
        return new(wire.Value.Cpp, wire.Value.Cs, e => type.Kind == ValueKind.Bool ? $"({e} ? 1 : 0)" : e,
                   v => ScalarToPy(type.Kind, v), CppEmitter.ScalarConverter(type.Kind));
    }

    private static (string Cpp, string Cs)? ScalarWire(ValueKind kind) => kind switch
    {
        ValueKind.Bool => ("int32_t", "int"),
        ValueKind.SByte => ("int8_t", "sbyte"),
        ValueKind.Byte => ("uint8_t", "byte"),
        ValueKind.Int16 => ("int16_t", "short"),
        ValueKind.UInt16 => ("uint16_t", "ushort"),
        ValueKind.Int32 => ("int32_t", "int"),
        ValueKind.UInt32 => ("uint32_t", "uint"),
        ValueKind.Int64 => ("int64_t", "long"),
        ValueKind.UInt64 => ("uint64_t", "ulong"),
        ValueKind.Single => ("float", "float"),
        ValueKind.Double => ("double", "double"),
        _ => null,
    };

    private static string ScalarToPy(ValueKind kind, string v) => kind switch
    {
        ValueKind.Bool => $"PyBool_FromLong({v})",
        ValueKind.SByte or ValueKind.Int16 or ValueKind.Int32 => $"PyLong_FromLong({v})",
        ValueKind.Byte or ValueKind.UInt16 or ValueKind.UInt32 => $"PyLong_FromUnsignedLong({v})",
        ValueKind.Int64 => $"PyLong_FromLongLong({v})",
        ValueKind.UInt64 => $"PyLong_FromUnsignedLongLong({v})",
        _ => $"PyFloat_FromDouble({v})",
    };

    private static string? None(string v, string e) => null;
    private static string? Nothing(string v) => null;

    public static InPlan? In(CarriedType type)
    {
        if (type.Mode != PassMode.Value)
            return null;
        if (type.IsNullable)
            return NullableIn(type with { IsNullable = false });
        if (PlainOf(type) is { } plain)
            return new([(plain.Cpp, plain.Cs, "")], None, (v, e) => [plain.ToWire(e)], plain.ToPy, Nothing);
        var bound = type.Bound;
        // dates, decimals, GUIDs, versions: the twin fills the record the native side reads
        if (CppEmitter.RecordToPython(type.Kind) is { } record)
            return new([(record.Record + "*", record.Record + "*", "")], (v, e) => $"{record.Record} {v} = default; PyValues.Write(&{v}, {e});",
                       (v, _) => ["&" + v], v => $"{record.ToPy}({v})", Nothing);
        return type.Kind switch
        {
            // the twin pins the string for the call; a null string passes length -1 (None)
            ValueKind.String => new([("const char16_t*", "char*", ""), ("int32_t", "int", "_n")],
                                    (v, e) => $"fixed (char* {v} = {e})", (v, e) => [v, $"{e}?.Length ?? -1"],
                                    v => $"fn_conv_clr_string_to_py_string({v}, {v}_n)", Nothing),
            ValueKind.Interface => new([("void*", "IntPtr", ""), ("int32_t", "int", "_x")],
                                       (v, e) => $"IntPtr {v} = PyTwin.HandleOf({e}, out int {v}_x);", (v, _) => [v, v + "_x"],
                                       v => $"{CppEmitter.ToPyIndexedName(bound!)}({v}, {v}_x)", v => $"PyShTwin_FreeArg({v}, {v}_x);"),
            ValueKind.Class when bound!.IsPolymorphic =>
                new([("void*", "IntPtr", ""), ("int32_t", "int", "_x")], None, (v, e) => [$"Handles.New({e})", $"TypeIndex.Of({e})"],
                    v => $"{CppEmitter.ToPyIndexedName(bound)}({v}, {v}_x)", v => $"PyShWrp_FreeGcHandlePtr({v});"),
            ValueKind.Class or ValueKind.Struct =>
                new([("void*", "IntPtr", "")], None, (v, e) => [$"Handles.New({e})"],
                    v => $"{CppEmitter.ToPyName(bound!)}({v})", v => $"PyShWrp_FreeGcHandlePtr({v});"),
            ValueKind.Stream =>
                new([("void*", "IntPtr", "")], None, (v, e) => [$"Handles.New({e})"],
                    v => $"PyStreamWrapper_FromHandle({v})", v => $"PyShWrp_FreeGcHandlePtr({v});"),
            // a value Python has a type for arrives as that Python object, anything else as a wrapper;
            // what came from Python arrives as itself
            ValueKind.Object =>
                new([("VariantArg*", "VariantArg*", "")], (v, e) => $"VariantArg {v} = default; Variants.SetResult(&{v}, {e});",
                    (v, _) => ["&" + v], v => $"PyShBound_ObjectResult(*{v})", v => $"PyShBound_ReleaseObjectRecord(*{v});"),
            _ => null,
        };
    }

    /// <summary>A Nullable&lt;T&gt; argument: the twin fills an optional record; no value arrives as None.</summary>
    private static InPlan? NullableIn(CarriedType value)
    {
        string wire, csWire, store;
        Func<string, string> toPy;
        if (PlainOf(value) is { } plain)
        {
            (wire, csWire) = (plain.Cpp, plain.Cs);
            store = "{0}.Value = " + plain.ToWire("{1}.Value") + ";";
            toPy = v => plain.ToPy($"{v}->value");
        }
        else if (CppEmitter.RecordToPython(value.Kind) is { } record)
        {
            (wire, csWire) = (record.Record, record.Record);
            store = "PyValues.Write(&{0}.Value, {1}.Value);";
            toPy = v => $"{record.ToPy}(&{v}->value)";
        }
        else
            return null;
        return new([($"PyOptional<{wire}>*", $"PyOptional<{csWire}>*", "")],
                   (v, e) => $"PyOptional<{csWire}> {v} = default; if ({e}.HasValue) {{ {v}.HasValue = 1; {string.Format(store, v, e)} }}",
                   (v, _) => ["&" + v], v => $"({v}->has_value ? {toPy(v)} : Py_NewRef(Py_None))", Nothing);
    }

    public static OutPlan? Out(CarriedType type)
    {
        if (type.Mode != PassMode.Value)
            return null;
        if (type.IsNullable)
        {
            var value = type with { IsNullable = false };
            string? wire = PlainOf(value) is { } p ? p.Cpp : CppEmitter.RecordFromPython(value.Kind)?.Record;
            string? csWire = PlainOf(value) is { } q ? q.Cs : CppEmitter.RecordFromPython(value.Kind)?.Record;
            string? conv = PlainOf(value)?.Converter ?? CppEmitter.RecordFromPython(value.Kind)?.ToClr;
            if (wire is null || conv is null)
                return null;
            return new($"PyOptional<{wire}>", $"PyShOptional_Conv<{wire}, {conv}>", $"PyOptional<{csWire}>",
                       r => CSharpEmitter.FromWire(type, $"(&{r})"));
        }
        var bound = type.Bound;
        string managed = bound is null ? "" : CSharpEmitter.ManagedName(bound);
        if (PlainOf(type) is { } plain)
            return new(plain.Cpp, plain.Converter, plain.Cs, r => CSharpEmitter.FromWire(type, r));
        if (CppEmitter.RecordFromPython(type.Kind) is { } record)
            return new(record.Record, record.ToClr, record.Record, r => CSharpEmitter.FromWire(type, "&" + r));
        return type.Kind switch
        {
            ValueKind.String => new("PyStringArg", "fn_conv_py_string_to_clr_string", "PyStringArg", r => $"{r}.ToManaged()"),
            // the bytes stay in the result object, which the reference array holds until copied
            ValueKind.Bytes => new("PyTwinBlob", "PyShTwin_BytesResult", "PyTwinBlob", r => $"{r}.ToArray()"),
            ValueKind.Interface => new("PyTwinArg", CppEmitter.ToClrTwin(bound!), "PyTwinArg", r => $"({managed})PyTwin.Take({r})"),
            ValueKind.Class or ValueKind.Struct => new("void*", CppEmitter.ToClr(bound!), "IntPtr", r => $"({managed})Handles.Target({r})"),
            // any Python object: a kind managed code has a type for, or the object itself
            ValueKind.Object => new("VariantArg", "fn_conv_py_anyobj_to_clr_variant", "VariantArg", r => $"Variants.ToManaged(&{r})"),
            // a Python file stays open for managed code, which then owns a reference to it
            ValueKind.Stream => new("VariantArg", "fn_conv_py_stream_to_clr_stream", "VariantArg", r => $"StubValues.KeptStreamOf(&{r})"),
            // a list the twin makes an array of where the declared type is one
            _ when ItemOf(type) is { } item =>
                new("VariantArg", "PyShTwin_SequenceResult", "VariantArg", r => $"PySequences.FromPython<{item}>(&{r})"),
            _ => null,
        };
    }

    /// <summary>The managed item type of a sequence kind a Python implementation may return; null for other kinds.</summary>
    // items cross as variants, where an enumeration member is not an int: sequences of them stay refused
    private static string? ItemOf(CarriedType type) => type.Kind switch
    {
        ValueKind.Sequence when type.Item!.Kind != ValueKind.Enum => CSharpEmitter.ManagedTypeName(type.Item!),
        ValueKind.ArrayOf or ValueKind.ListOf or ValueKind.EnumerableOf when type.Generic!.Element is { } element =>
            CSharpEmitter.ManagedName(element),
        _ => null,
    };

    /// <summary>Whether a value comes back as a list the twin may still have to make an array of: results only.</summary>
    public static bool IsSequence(CarriedType type) => ItemOf(type) is not null;

    /// <summary>Whether every parameter and the result of a member can cross.</summary>
    public static bool Supported(IEnumerable<ParameterModel> parameters, CarriedType result) =>
        parameters.All(p => p.Type.Mode switch
        {
            PassMode.Out => Out(p.Type.Element) is not null && !IsSequence(p.Type.Element),
            PassMode.Ref => In(p.Type.Element) is not null && Out(p.Type.Element) is not null && !IsSequence(p.Type.Element),
            _ => In(p.Type) is not null,
        })
        && (result.Kind == ValueKind.Void || Out(result) is not null);
}
