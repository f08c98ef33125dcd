using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// Entry points every wrapper needs: receiving the native callbacks, freeing and boxing GC
/// handles, type names. No managed exception leaves an entry point: it is raised in Python.
/// </summary>
public static unsafe class ExchangeHost
{
    [UnmanagedCallersOnly]
    public static int GetTypeName(IntPtr handle, IntPtr* outStr)
    {
        try
        {
            var target = Handles.Target(handle);
            *outStr = PyRuntime.NewPyString(target?.GetType().FullName ?? "null");
            return *outStr == IntPtr.Zero ? 0 : 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }

    [UnmanagedCallersOnly]
    public static void SetExceptionCallback(IntPtr fn) =>
        PyRuntime.OnException = (delegate* unmanaged<IntPtr, IntPtr, IntPtr>)fn;

    [UnmanagedCallersOnly]
    public static void SetCatchAndClearErrorCallback(IntPtr fn) =>
        PyRuntime.CatchAndClearError = (delegate* unmanaged<IntPtr*, PyStringArg*, int>)fn;

    [UnmanagedCallersOnly]
    public static void SetU16StrBuilderCallback(IntPtr fn) =>
        PyRuntime.U16BufferBuilder = (delegate* unmanaged<char*, int, IntPtr>)fn;

    [UnmanagedCallersOnly]
    public static void SetPyStrBuilderCallback(IntPtr fn) =>
        PyRuntime.StrBuilder = (delegate* unmanaged<char*, int, IntPtr>)fn;

    [UnmanagedCallersOnly]
    public static void SetPyUnraisableStrBuilderCallback(IntPtr fn) =>
        PyRuntime.UnraisableStrBuilder = (delegate* unmanaged<char*, int, IntPtr>)fn;

    [UnmanagedCallersOnly]
    public static void SetPyBytesBuilderCallback(IntPtr fn) =>
        PyRuntime.BytesBuilder = (delegate* unmanaged<byte*, int, IntPtr>)fn;

    [UnmanagedCallersOnly]
    public static void SetPyObjApiCallbacks(IntPtr* table) => PyRuntime.ObjApiCallbacks = table;

    [UnmanagedCallersOnly]
    public static void SetPyStaticCallbacks(IntPtr* table) => PyRuntime.StaticCallbacks = table;

    [UnmanagedCallersOnly]
    public static void SetPyGenericCallbacks(IntPtr* table) => PyRuntime.GenericCallbacks = table;

    [UnmanagedCallersOnly]
    public static void SetPyToCsReglTpFx(IntPtr* table) => PyRuntime.ReglTpFunctions = table;

    [UnmanagedCallersOnly]
    public static void SetPyExceptionCallbacks(IntPtr* table) => PyRuntime.ExceptionCallbacks = table;

    [UnmanagedCallersOnly]
    public static void FreeInstance(IntPtr handle) => Release(handle);

    /// <summary>Frees a handle made for native code, counted as native frees are; zero is ignored.</summary>
    internal static void Release(IntPtr handle)
    {
        // Called from deallocators, where nothing can be reported: a bad handle is a native bug.
        if (handle == IntPtr.Zero)
            return;
        GCHandle.FromIntPtr(handle).Free();
        Interlocked.Increment(ref s_freed);
    }

    [UnmanagedCallersOnly]
    public static int InitServices()
    {
        try
        {
            if (!PyRuntime.IsComplete)
                throw new InvalidOperationException("the native callbacks were not all handed over before the services started");
            return 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

#if !QRX_OMIT_BOX_STC_TARGET
    /// <summary>A new handle to a boxed copy of the structure, so that the copy has value semantics.</summary>
    [UnmanagedCallersOnly]
    public static int BoxStcTarget(IntPtr handle, IntPtr* outHandle)
    {
        try
        {
            var boxed = Handles.Target(handle) ?? throw new ArgumentNullException(nameof(handle));
            if (!boxed.GetType().IsValueType)
                throw new ArgumentException($"'{boxed.GetType().FullName}' is not a structure");
            *outHandle = Handles.New(RuntimeHelpers.GetObjectValue(boxed));
            return 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }
#endif

    private static long s_freed;

    /// <summary>How many handles native code has freed so far: lifetime tests compare it with what they created.</summary>
    [UnmanagedCallersOnly]
    public static long FreedHandleCount() => Interlocked.Read(ref s_freed);

    /// <summary>How many handles managed code has handed to native code so far.</summary>
    [UnmanagedCallersOnly]
    public static long AllocatedHandleCount() => Handles.AllocatedCount;
}
