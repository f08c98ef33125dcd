namespace Quorix.WrpGen.Interop;

/// <summary>
/// Value crossings shared by the generated stubs, so that each stub stays one readable call.
/// Python objects returned are new references, or zero with a Python error set.
/// </summary>
public static unsafe class StubValues
{
    private const int WriteTable = CallbackSlots.Tables.Write;
    private const int WriteBool = CallbackSlots.Write.Bool, WriteLong = CallbackSlots.Write.Long,
        WriteLongLong = CallbackSlots.Write.LongLong, WriteULongLong = CallbackSlots.Write.ULongLong,
        WriteDouble = CallbackSlots.Write.Double, WriteChar = CallbackSlots.Write.Char;

    /// <summary>
    /// The stream a stream argument designates: a managed stream by handle (null for none) or a
    /// new <see cref="PyFileStream"/> over a Python file, also handed out in <paramref name="owned"/>
    /// so that the stub can flush it when the call returns.
    /// </summary>
    public static Stream? StreamOf(VariantArg* arg, out PyFileStream? owned)
    {
        owned = null;
        switch (arg->Tag)
        {
            case VariantArg.TagHandle:
                return arg->Value == IntPtr.Zero ? null : Handles.TargetAs<Stream>(arg->Value);
            case VariantArg.TagPyObject:
                owned = new PyFileStream(arg->Value);
                return owned;
            default:
                throw new ArgumentException($"a value of variant kind {arg->Tag} is not a stream");
        }
    }

    /// <summary>
    /// The stream a value that managed code keeps designates (a property's new value, a Python
    /// implementation's result): a managed stream by handle, or a <see cref="PyFileStream"/> that
    /// owns its Python file.
    /// </summary>
    public static Stream? KeptStreamOf(VariantArg* arg) => arg->Tag switch
    {
        VariantArg.TagHandle => arg->Value == IntPtr.Zero ? null : Handles.TargetAs<Stream>(arg->Value),
        VariantArg.TagPyObject => PyFileStream.Keep(arg->Value),
        _ => throw new ArgumentException($"a value of variant kind {arg->Tag} is not a stream"),
    };

    public static IntPtr None() => ((delegate* unmanaged<IntPtr>)PyRuntime.ObjApiCallbacks[CallbackSlots.ObjApi.None])();

    public static IntPtr StrOrNone(string? text) => text is null ? None() : PyRuntime.NewPyString(text);

    /// <summary>
    /// The encoding or culture a Python name stands for (null for None). Codec names are taken as
    /// Python writes them too ("utf_8", "latin_1"); the culture "" is the invariant one.
    /// </summary>
    public static T? ByName<T>(string? name) where T : class
    {
        if (name is null)
            return null;
        if (typeof(T) == typeof(System.Text.Encoding))
            return (T)(object)EncodingNamed(name);
        if (typeof(T) == typeof(System.Globalization.CultureInfo))
            return (T)(object)System.Globalization.CultureInfo.GetCultureInfo(name);
        throw new NotSupportedException($"no {typeof(T).Name} is named by text");
    }

    // Python writes "utf_8" and "latin-1" where the framework knows "utf-8" and "latin1".
    private static System.Text.Encoding EncodingNamed(string name)
    {
        string dashed = name.Replace('_', '-');
        try
        {
            return System.Text.Encoding.GetEncoding(dashed);
        }
        catch (ArgumentException) when (dashed.Contains('-'))
        {
            return System.Text.Encoding.GetEncoding(dashed.Replace("-", ""));
        }
    }

    /// <summary>The name Python reads for an encoding (its codec name) or a culture; null for null.</summary>
    public static string? NameOf(object? value) => value switch
    {
        null => null,
        System.Text.Encoding e => e.WebName,
        System.Globalization.CultureInfo c => c.Name,
        _ => throw new NotSupportedException($"a {value.GetType().Name} has no name of its own"),
    };

    public static IntPtr BytesOrNone(byte[]? bytes) => bytes is null ? None() : PyRuntime.NewPyBytes(bytes);

    public static IntPtr PyBool(bool value) => ((delegate* unmanaged<int, IntPtr>)Write(WriteBool))(value ? 1 : 0);

    public static IntPtr PyInt(int value) => ((delegate* unmanaged<int, IntPtr>)Write(WriteLong))(value);

    public static IntPtr PyInt(long value) => ((delegate* unmanaged<long, IntPtr>)Write(WriteLongLong))(value);

    public static IntPtr PyInt(ulong value) => ((delegate* unmanaged<ulong, IntPtr>)Write(WriteULongLong))(value);

    public static IntPtr PyFloat(double value) => ((delegate* unmanaged<double, IntPtr>)Write(WriteDouble))(value);

    public static IntPtr PyChar(char value) => ((delegate* unmanaged<int, IntPtr>)Write(WriteChar))(value);

    /// <summary>Fills a static attribute's result with a finished Python value (a new reference).</summary>
    public static void SetPyValue(VariantArg* result, IntPtr pyObject)
    {
        result->Tag = VariantArg.TagPyObject;
        result->Value = pyObject;
    }

    /// <summary>Fills a static attribute's result with a new handle of a managed object (zero for null).</summary>
    public static void SetHandle(VariantArg* result, object? value)
    {
        result->Tag = VariantArg.TagHandle;
        result->Value = Handles.New(value);
    }

    private static IntPtr Write(int slot) => ((IntPtr*)PyRuntime.StaticCallbacks[WriteTable])[slot];
}
