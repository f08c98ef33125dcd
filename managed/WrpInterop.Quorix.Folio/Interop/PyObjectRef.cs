namespace Quorix.WrpGen.Interop;

/// <summary>
/// A Python object that managed code holds where it takes any object (a Python implementation's
/// <c>object</c> result or out value of no kind managed code has a type for). It owns one
/// reference, so the object lives while managed code holds it, and it crosses back to Python
/// as that very object.
/// </summary>
public sealed class PyObjectRef
{
    public PyObjectRef(IntPtr pyObject)
    {
        PyObject = pyObject;
        PyRuntime.IncRef(pyObject);
    }

    /// <summary>The Python object (owned reference).</summary>
    public IntPtr PyObject { get; }

    // the finalizer thread must not wait for the interpreter lock
    ~PyObjectRef() => PyRuntime.ReleaseLater(PyObject);
}
