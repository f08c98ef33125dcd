namespace Quorix.WrpGen.Interop;

/// <summary>
/// The type-level entry points every bound type has (type object, casts, assignability), written
/// once: each generated stub class forwards its built-in stubs here with its own type.
/// </summary>
public static unsafe class BuiltinStubs<T>
{
    public static void TypeOf(IntPtr* result) => BuiltinStubs.TypeOf(typeof(T), result);

    /// <summary>1 with the object as T; 0 for null and for an object that is no T (not an error).</summary>
    public static int CastTo(IntPtr obj, IntPtr* result)
    {
        try
        {
            if (Handles.Target(obj) is not T o)
                return 0;
            *result = Handles.New(o);
            return 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }

    /// <summary>1 with the object re-wrapped unchecked; 0 for null.</summary>
    public static int ReInterpretObj(IntPtr obj, IntPtr* result)
    {
        try
        {
            var o = Handles.Target(obj);
            if (o is null)
                return 0;
            *result = Handles.New(o);
            return 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }

    /// <summary>1 with the object when it is a T, else 0 and no handle.</summary>
    public static int CastAs(IntPtr obj, IntPtr* result)
    {
        try
        {
            var o = Handles.Target(obj);
            *result = o is T ? Handles.New(o) : IntPtr.Zero;
            return *result == IntPtr.Zero ? 0 : 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }

    public static int IsAssignable(IntPtr obj)
    {
        try
        {
            return Handles.Target(obj) is T ? 1 : 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }
}

/// <summary>The built-ins that need no type argument (static classes cannot be one).</summary>
public static unsafe class BuiltinStubs
{
    public static void TypeOf(Type type, IntPtr* result)
    {
        try
        {
            *result = Handles.New(type);
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
        }
    }
}
