using System.Collections;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>An array argument: the native side converted each item of a Python sequence into a record.</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PySeqArg
{
    public int Count;     // -1 is a null array
    public int ItemSize;
    public void* Items;

    internal readonly T* At<T>(int index) where T : unmanaged => (T*)((byte*)Items + (long)index * ItemSize);
}

/// <summary>Where a stub puts the items of a sequence result; the native side owns the list and the element conversions.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct PySeqSink
{
    public IntPtr List;
    public IntPtr WrapHandle;
    public IntPtr WrapInt;
}

/// <summary>
/// Managed arrays and sequences that cross whole. In: the records of a converted Python sequence
/// become a managed array. Out: a sequence result is copied item by item into a new Python list
/// through the list-builder callbacks, each item as its element type crosses alone.
/// </summary>
public static unsafe class PySequences
{
    private const int ListTable = CallbackSlots.Tables.PyList;
    private const int Begin = CallbackSlots.PyList.Begin, PutObject = CallbackSlots.PyList.PutObject,
        PutHandle = CallbackSlots.PyList.PutHandle, PutInt = CallbackSlots.PyList.PutInt;

    private static IntPtr Slot(int slot) => ((IntPtr*)PyRuntime.StaticCallbacks[ListTable])[slot];

    // ---- in

    public static string?[]? Strings(PySeqArg* arg)
    {
        if (arg->Count < 0)
            return null;
        var items = new string?[arg->Count];
        for (int i = 0; i < items.Length; i++)
            items[i] = arg->At<PyStringArg>(i)->ToManaged();
        return items;
    }

    /// <summary>Blittable elements (int, long, double, ...) whose record is the value itself.</summary>
    public static T[]? Scalars<T>(PySeqArg* arg) where T : unmanaged
    {
        if (arg->Count < 0)
            return null;
        var items = new T[arg->Count];
        for (int i = 0; i < items.Length; i++)
            items[i] = *arg->At<T>(i);
        return items;
    }

    /// <summary>Booleans cross as 32-bit integers.</summary>
    public static bool[]? Bools(PySeqArg* arg)
    {
        if (arg->Count < 0)
            return null;
        var items = new bool[arg->Count];
        for (int i = 0; i < items.Length; i++)
            items[i] = *arg->At<int>(i) != 0;
        return items;
    }

    /// <summary>Enumeration members cross as their 32-bit value.</summary>
    public static T[]? Enums<T>(PySeqArg* arg) where T : struct, Enum
    {
        if (arg->Count < 0)
            return null;
        var items = new T[arg->Count];
        for (int i = 0; i < items.Length; i++)
            items[i] = EnumOf<T>(*arg->At<int>(i));
        return items;
    }

    /// <summary>Bound objects cross as the handles their wrappers hold.</summary>
    public static T?[]? Targets<T>(PySeqArg* arg)
    {
        if (arg->Count < 0)
            return null;
        var items = new T?[arg->Count];
        for (int i = 0; i < items.Length; i++)
            items[i] = (T?)Handles.Target(*arg->At<IntPtr>(i));
        return items;
    }

    /// <summary>System.Object elements: each Python value as its own managed kind.</summary>
    public static object?[]? Objects(PySeqArg* arg)
    {
        if (arg->Count < 0)
            return null;
        var items = new object?[arg->Count];
        for (int i = 0; i < items.Length; i++)
            items[i] = Variants.ToManaged(arg->At<VariantArg>(i));
        return items;
    }

    // ---- out

    /// <summary>Strings as Python str (None for null).</summary>
    public static void PutStrings(PySeqSink* sink, IEnumerable<string?>? items)
    {
        var list = Start(sink, items);
        if (list is null)
            return;
        var put = (delegate* unmanaged<PySeqSink*, int, IntPtr, int>)Slot(PutObject);
        for (int i = 0; i < list.Count; i++)
            Check(put(sink, i, StubValues.StrOrNone(list[i])));
    }

    /// <summary>Values Python has a type of its own for (numbers, dates, ...), and System.Object elements.</summary>
    public static void PutValues<T>(PySeqSink* sink, IEnumerable<T>? items)
    {
        var list = Start(sink, items);
        if (list is null)
            return;
        var put = (delegate* unmanaged<PySeqSink*, int, IntPtr, int>)Slot(PutObject);
        for (int i = 0; i < list.Count; i++)
            Check(put(sink, i, Variants.ToPython(list[i])));
    }

    /// <summary>Enumeration members: the sink makes each the Python enumeration's member.</summary>
    public static void PutEnums<T>(PySeqSink* sink, IEnumerable<T>? items) where T : struct, Enum
    {
        var list = Start(sink, items);
        if (list is null)
            return;
        var put = (delegate* unmanaged<PySeqSink*, int, int, int>)Slot(PutInt);
        for (int i = 0; i < list.Count; i++)
            Check(put(sink, i, ValueOf(list[i])));
    }

    /// <summary>Objects by handle with their bound type index: the sink wraps each as its most derived bound class.</summary>
    public static void PutTargets<T>(PySeqSink* sink, IEnumerable<T>? items)
    {
        var list = Start(sink, items);
        if (list is null)
            return;
        var put = (delegate* unmanaged<PySeqSink*, int, IntPtr, int, int>)Slot(PutHandle);
        for (int i = 0; i < list.Count; i++)
        {
            object? item = list[i];
            Check(put(sink, i, Handles.New(item), item is null ? -1 : TypeIndex.Of(item)));
        }
    }

    /// <summary>
    /// A managed array or list that an object-typed result holds, as a new Python list of its
    /// items' Python values; zero with a Python error set.
    /// </summary>
    internal static IntPtr ListOf(IList items)
    {
        PySeqSink sink = default;
        try
        {
            Check(((delegate* unmanaged<PySeqSink*, int, int>)Slot(Begin))(&sink, items.Count));
            var put = (delegate* unmanaged<PySeqSink*, int, IntPtr, int>)Slot(PutObject);
            for (int i = 0; i < items.Count; i++)
                Check(put(&sink, i, Variants.ToPython(items[i])));
            IntPtr done = sink.List;
            sink.List = IntPtr.Zero;
            return done;
        }
        catch (PyErrorPendingException)
        {
            return IntPtr.Zero;
        }
        finally
        {
            PyRuntime.DecRef(sink.List);
        }
    }

    // Enumerations of any width up to 32 bits cross as a 32-bit value, sign-extended where signed.
    private static int ValueOf<T>(T value) where T : struct, Enum => Unsafe.SizeOf<T>() switch
    {
        1 => EnumSign<T>.Signed ? Unsafe.As<T, sbyte>(ref value) : Unsafe.As<T, byte>(ref value),
        2 => EnumSign<T>.Signed ? Unsafe.As<T, short>(ref value) : Unsafe.As<T, ushort>(ref value),
        _ => Unsafe.As<T, int>(ref value),
    };

    private static T EnumOf<T>(int value) where T : struct, Enum
    {
        T result = default;
        switch (Unsafe.SizeOf<T>())
        {
            case 1: Unsafe.As<T, byte>(ref result) = (byte)value; break;
            case 2: Unsafe.As<T, ushort>(ref result) = (ushort)value; break;
            default: Unsafe.As<T, int>(ref result) = value; break;
        }
        return result;
    }

    // Whether an enumeration's underlying type is signed, asked once per type.
    private static class EnumSign<T> where T : struct, Enum
    {
        internal static readonly bool Signed = Type.GetTypeCode(Enum.GetUnderlyingType(typeof(T))) is TypeCode.SByte or TypeCode.Int16;
    }

    // The items as a list to index (a fresh array or list is used as is), after the sink's list
    // was made; null, with the sink left empty, for a null sequence.
    private static IReadOnlyList<T>? Start<T>(PySeqSink* sink, IEnumerable<T>? items)
    {
        var list = items switch
        {
            null => null,
            IReadOnlyList<T> ready => ready,
            _ => items.ToList(),
        };
        Check(((delegate* unmanaged<PySeqSink*, int, int>)Slot(Begin))(sink, list?.Count ?? -1));
        return list;
    }

    private static void Check(int status)
    {
        if (status != 0)
            throw new PyErrorPendingException();
    }

    /// <summary>
    /// The items of a sequence a Python implementation returned (lent in the call's record:
    /// null for None), each converted as its Python kind and then to <typeparamref name="T"/>.
    /// </summary>
    public static List<T>? FromPython<T>(VariantArg* result)
    {
        if (result->Tag == VariantArg.TagHandle && result->Value == IntPtr.Zero)
            return null;
        var items = (System.Collections.IList)Variants.ToManaged(result)!;
        var list = new List<T>(items.Count);
        for (int i = 0; i < items.Count; i++)
            list.Add(Item<T>(items[i], i));
        return list;
    }

    private static T Item<T>(object? value, int index) => value switch
    {
        T item => item,
        null when default(T) is null => default!,
        int or long or ulong when typeof(T).IsEnum => (T)Enum.ToObject(typeof(T), value),
        IConvertible number when typeof(T).IsPrimitive && value is not string =>
            (T)Convert.ChangeType(number, typeof(T), System.Globalization.CultureInfo.InvariantCulture),
        _ => throw new InvalidCastException($"item {index}: {(value is null ? "None" : value.GetType().Name)} is not {typeof(T).Name}"),
    };
}
