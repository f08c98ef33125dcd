using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// What managed code needs to reach a Python implementation of one interface. The native side
/// fills the first three fields; binding fills <see cref="Acquire"/>. The layout is shared with
/// objects/twin_binding.h.
/// </summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PyTwinTable
{
    /// <summary>The reverse wrappers, in the interface's member order; each takes the interpreter lock.</summary>
    public IntPtr* Reverse;
    /// <summary>Releases a count of Python references and zeroes them (takes the interpreter lock).</summary>
    public delegate* unmanaged<IntPtr*, int, void> ReleaseRefs;
    /// <summary>Queues one Python reference for release; never blocks, callable from any thread.</summary>
    public delegate* unmanaged<IntPtr, void> ReleaseLater;
    public delegate* unmanaged<IntPtr, IntPtr, IntPtr, IntPtr*, IntPtr*, int> Acquire;
}

/// <summary>A handle the native side made for one call: the object, and a handle to free after use.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct PyTwinArg
{
    public IntPtr Handle;
    public IntPtr Temporary;
}

/// <summary>Bytes a Python implementation returned, borrowed until the call's references are released.</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PyTwinBlob
{
    public byte* Data;
    public long Length;

    public readonly byte[]? ToArray() => Length < 0 ? null : new ReadOnlySpan<byte>(Data, checked((int)Length)).ToArray();
}

/// <summary>
/// The managed stand-in of a Python object that implements a managed interface (the generated
/// twin classes derive from it). It owns one reference to the Python object, so a Python object
/// that managed code still holds stays alive; the reference goes back when the twin is
/// collected. The Python object keeps only a weak handle to its twin: no cycle crosses runtimes.
/// </summary>
public abstract unsafe class PyTwin
{
    /// <summary>Index of a result or argument that is a Python object itself (objects/bound_class.h).</summary>
    public const int TwinIndex = -2;

    private static long s_live;

    protected PyTwin(IntPtr pyObject, PyTwinTable* table)
    {
        PyObject = pyObject;
        Table = table;
        Interlocked.Increment(ref s_live);
    }

    /// <summary>The Python object (owned reference).</summary>
    public IntPtr PyObject { get; }

    protected PyTwinTable* Table { get; }

    /// <summary>Twins whose Python reference was not handed back yet: lifetime tests read it.</summary>
    [UnmanagedCallersOnly]
    public static long LiveCount() => Interlocked.Read(ref s_live);

    ~PyTwin()
    {
        // the finalizer thread holds no interpreter lock: the native side releases it later
        Table->ReleaseLater(PyObject);
        Interlocked.Decrement(ref s_live);
    }

    /// <summary>The binding of a twin class: fills the table's acquire entry and hands out the factory.</summary>
    public static int Bind(PyTwinTable* table, IntPtr* result, Func<IntPtr, PyTwin> factory)
    {
        try
        {
            table->Acquire = &Acquire;
            *result = Handles.New(factory);
            return 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>
    /// The twin of a Python object: the living one its weak handle designates, else a new one
    /// (1, with its weak handle in *newWeak; the caller then gives it its Python reference).
    /// *strong is a normal handle for the caller's call. 0 reused, 1 created, -1 with a Python error.
    /// </summary>
    [UnmanagedCallersOnly]
    private static int Acquire(IntPtr factory, IntPtr pyObject, IntPtr weak, IntPtr* newWeak, IntPtr* strong)
    {
        try
        {
            if (weak != IntPtr.Zero && GCHandle.FromIntPtr(weak).Target is PyTwin alive && alive.PyObject == pyObject)
            {
                *strong = Handles.New(alive);
                return 0;
            }
            var twin = ((Func<IntPtr, PyTwin>)Handles.Target(factory)!)(pyObject);
            *newWeak = Handles.NewWeak(twin);
            *strong = Handles.New(twin);
            return 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>The handle and index of an argument of an interface type: a twin passes its Python object.</summary>
    public static IntPtr HandleOf(object? value, out int index)
    {
        if (value is PyTwin twin)
        {
            index = TwinIndex;
            return twin.PyObject;
        }
        index = TypeIndex.Of(value);
        return Handles.New(value);
    }

    /// <summary>The object of a result the native side converted, its temporary handle freed.</summary>
    public static object? Take(in PyTwinArg arg)
    {
        object? value = Handles.Target(arg.Handle);
        ExchangeHost.Release(arg.Temporary);
        return value;
    }

    /// <summary>After a reverse call: the Python error it left, as a managed exception.</summary>
    protected static void Check(int ok)
    {
        if (ok == 0)
            throw new PythonException(PyRuntime.CatchAndClearPythonError() ?? "the Python implementation failed");
    }

    /// <summary>Releases what a reverse call stored in its reference array.</summary>
    protected void Release(IntPtr* refs, int count) => Table->ReleaseRefs(refs, count);
}
