namespace Quorix.WrpGen;

/// <summary>
/// How each value kind crosses when managed code calls a Python implementation: managed
/// arguments become Python objects, Python results (and out values) become managed values. One
/// entry per kind serves both the native reverse wrapper and the managed twin that calls it.
/// A null plan means the kind cannot cross in this direction yet.
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

    private static readonly (string Cpp, string Cs)[] NoWire = [];

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

    public static InPlan? In(CarriedType type)
    {
        if (type.Mode != PassMode.Value || type.IsNullable)
            return null;
        static string? None(string v, string e) => null;
        static string? Nothing(string v) => null;
        if (ScalarWire(type.Kind) is { } scalar)
            return new([(scalar.Cpp, scalar.Cs, "")], None,
                       (v, e) => [type.Kind == ValueKind.Bool ? $"({e} ? 1 : 0)" : e], v => ScalarToPy(type.Kind, v), Nothing);
        var bound = type.Bound;
        // dates, decimals, GUIDs, versions: the twin fills the record the native side reads
        if (CppEmitter.RecordToPython(type.Kind) is { } record)
            return new([(record.Record + "*", record.Record + "*", "")], (v, e) => $"{record.Record} {v} = default; PyValues.Write(&{v}, {e});",
                       (v, _) => ["&" + v], v => $"{record.ToPy}({v})", Nothing);
        return type.Kind switch
        {
            ValueKind.Enum => new([("int32_t", "int", "")], None, (v, e) => [$"(int){e}"],
                                  v => $"{CppEmitter.ToPyName(bound!)}({v})", Nothing),
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
            _ => null,
        };
    }

    public static OutPlan? Out(CarriedType type)
    {
        if (type.IsNullable || type.Mode == PassMode.Ref)
            return null;
        var bound = type.Bound;
        string managed = bound is null ? "" : CSharpEmitter.ManagedName(bound);
        if (ScalarWire(type.Kind) is { } scalar)
        {
            string conv = CppEmitter.ScalarConverter(type.Kind);
            return type.Kind == ValueKind.Bool
                ? new(scalar.Cpp, conv, scalar.Cs, r => $"{r} != 0")
                : new(scalar.Cpp, conv, scalar.Cs, r => r);
        }
        return type.Kind switch
        {
            ValueKind.Enum => new("int32_t", CppEmitter.ToClr(bound!), "int", r => $"({managed}){r}"),
            ValueKind.String => new("PyStringArg", "fn_conv_py_string_to_clr_string", "PyStringArg", r => $"{r}.ToManaged()"),
            // the bytes stay in the result object, which the reference array holds until copied
            ValueKind.Bytes => new("PyTwinBlob", "PyShTwin_BytesResult", "PyTwinBlob", r => $"{r}.ToArray()"),
            ValueKind.Interface => new("PyTwinArg", CppEmitter.ToClrTwin(bound!), "PyTwinArg", r => $"({managed})PyTwin.Take({r})"),
            ValueKind.Class or ValueKind.Struct => new("void*", CppEmitter.ToClr(bound!), "IntPtr", r => $"({managed})Handles.Target({r})"),
            ValueKind.Object => new("VariantArg", "fn_conv_py_variant_to_clr_variant", "VariantArg", r => $"Variants.ToManaged(&{r})"),
            _ => null,
        };
    }

    /// <summary>Whether every parameter and the result of a member can cross.</summary>
    public static bool Supported(IEnumerable<ParameterModel> parameters, CarriedType result) =>
        parameters.All(p => p.Type.Mode == PassMode.Out ? Out(p.Type.Element) is not null : In(p.Type) is not null)
        && (result.Kind == ValueKind.Void || Out(result) is not null);
}
