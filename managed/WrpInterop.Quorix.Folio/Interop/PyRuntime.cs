using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// The native callbacks handed over at start-up. Every call into them happens on the Python
/// thread that called into managed code, with the interpreter lock held.
/// </summary>
public static unsafe class PyRuntime
{
    internal static delegate* unmanaged<IntPtr, IntPtr, IntPtr> OnException;
    internal static delegate* unmanaged<IntPtr*, PyStringArg*, int> CatchAndClearError;
    internal static delegate* unmanaged<char*, int, IntPtr> U16BufferBuilder;
    internal static delegate* unmanaged<char*, int, IntPtr> StrBuilder;
    internal static delegate* unmanaged<char*, int, IntPtr> UnraisableStrBuilder;
    internal static delegate* unmanaged<byte*, int, IntPtr> BytesBuilder;
    internal static IntPtr* ObjApiCallbacks;
    internal static IntPtr* StaticCallbacks;
    internal static IntPtr* GenericCallbacks;
    internal static IntPtr* ReglTpFunctions;
    internal static IntPtr* ExceptionCallbacks;

    internal static bool IsComplete =>
        OnException != null && CatchAndClearError != null && U16BufferBuilder != null && StrBuilder != null &&
        UnraisableStrBuilder != null && BytesBuilder != null && ObjApiCallbacks != null &&
        StaticCallbacks != null && GenericCallbacks != null && ReglTpFunctions != null && ExceptionCallbacks != null;

    /// <summary>A new Python str (owned reference), or zero with a Python error set.</summary>
    public static IntPtr NewPyString(string? text)
    {
        if (text is null)
            return IntPtr.Zero;
        fixed (char* data = text)
            return StrBuilder(data, text.Length);
    }

    /// <summary>A new Python bytearray (owned reference), or zero with a Python error set.</summary>
    public static IntPtr NewPyBytes(ReadOnlySpan<byte> bytes)
    {
        fixed (byte* data = bytes)
            return BytesBuilder(data, bytes.Length);
    }

    /// <summary>
    /// Raises the managed exception in Python with the text "Proxy error(T): m": as the exception class
    /// of its nearest bound type, else as RuntimeError.
    /// </summary>
    public static void Raise(Exception exception)
    {
        if (OnException == null)
            return;  // nothing to report to before start-up; the caller's failure result stands
        if (exception is PyErrorPendingException)
            return;  // the Python error a callback left is the one to see
        var inner = exception is System.Reflection.TargetInvocationException { InnerException: { } e } ? e : exception;
        if (ExceptionCallbacks != null && TypeIndex.Of(inner) >= 0)
        {
            // a bound exception type: Python catches it by its class
            IntPtr pyException;
            try
            {
                pyException = NewPyException(inner, 0);
            }
            catch (Exception)
            {
                // a Message getter failed before anything was allocated: the type name still tells
                OnException(NewPyString(inner.GetType().FullName), IntPtr.Zero);
                return;
            }
            if (pyException != IntPtr.Zero)
                ((delegate* unmanaged<IntPtr, IntPtr>)ExceptionCallbacks[CallbackSlots.Exception.Raise])(pyException);
            return;
        }
        IntPtr typeName = NewPyString(inner.GetType().FullName);
        IntPtr message = NewPyString(inner.Message);
        OnException(typeName, message);
    }

    // Inner exceptions nest this deep at most; deeper ones are left out.
    private const int MaxInnerDepth = 16;

    /// <summary>
    /// A new Python exception (owned reference) for the managed one, its inner exceptions built
    /// first; zero with a Python error set.
    /// </summary>
    private static IntPtr NewPyException(Exception exception, int depth)
    {
        // Managed members first, down the whole chain: what may throw runs before anything is allocated.
        string? typeText = exception.GetType().FullName;
        string messageText = exception.Message;
        IntPtr inner = IntPtr.Zero;
        if (exception.InnerException is { } innerException && depth < MaxInnerDepth)
        {
            inner = NewPyException(innerException, depth + 1);
            if (inner == IntPtr.Zero)
                return IntPtr.Zero;
        }
        int index = TypeIndex.Of(exception);
        IntPtr handle = index >= 0 ? Handles.New(exception) : IntPtr.Zero;
        // the native side owns all four from here, on every path
        IntPtr typeName = NewPyString(typeText);
        IntPtr message = NewPyString(messageText);
        return ((delegate* unmanaged<IntPtr, IntPtr, IntPtr, int, IntPtr, IntPtr>)ExceptionCallbacks[CallbackSlots.Exception.Build])(
            typeName, message, handle, index, inner);
    }

    /// <summary>
    /// Takes the pending Python error, if any, as text; afterwards no Python error is pending.
    /// Null when nothing was pending or no text could be made.
    /// </summary>
    public static string? CatchAndClearPythonError()
    {
        IntPtr slot = IntPtr.Zero;
        PyStringArg text = default;
        if (CatchAndClearError(&slot, &text) != 0)
            return null;
        try
        {
            return text.ToManaged();
        }
        finally
        {
            DecRef(slot);
        }
    }

    public static void IncRef(IntPtr pyObject) =>
        ((delegate* unmanaged<IntPtr, void>)ObjApiCallbacks[CallbackSlots.ObjApi.IncRef])(pyObject);

    /// <summary>Hands a reference back from a thread that may not wait for the interpreter lock.</summary>
    public static void ReleaseLater(IntPtr pyObject) =>
        ((delegate* unmanaged<IntPtr, void>)ObjApiCallbacks[CallbackSlots.ObjApi.ReleaseLater])(pyObject);

    public static void DecRef(IntPtr pyObject)
    {
        if (pyObject != IntPtr.Zero && ObjApiCallbacks != null)
            ((delegate* unmanaged<IntPtr, void>)ObjApiCallbacks[CallbackSlots.ObjApi.DecRef])(pyObject);
    }
}

/// <summary>A Python exception that crossed into managed code as its formatted traceback text.</summary>
public sealed class PythonException(string message) : Exception(message);
