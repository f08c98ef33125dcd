using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>The System.Object members every wrapper forwards to.</summary>
public static unsafe class ObjectHost
{
    [UnmanagedCallersOnly]
    public static int ToStringOfObj(IntPtr handle, IntPtr* outStr) => ToStringOf(handle, outStr);

    [UnmanagedCallersOnly]
    public static int ToStringOfStc(IntPtr handle, IntPtr* outStr) => ToStringOf(handle, outStr);

    [UnmanagedCallersOnly]
    public static int GetHashOfObj(IntPtr handle) => HashOf(handle);

    [UnmanagedCallersOnly]
    public static int GetHashOfStc(IntPtr handle) => HashOf(handle);

    [UnmanagedCallersOnly]
    public static int IsEqualsOfObj(IntPtr handle, VariantArg* other) => EqualsOf(handle, other);

    [UnmanagedCallersOnly]
    public static int IsEqualsOfStc(IntPtr handle, VariantArg* other) => EqualsOf(handle, other);

    [UnmanagedCallersOnly]
    public static int IsTypeOf(IntPtr handle, VariantArg* type)
    {
        try
        {
            var target = Handles.Target(handle);
            var expected = Handles.FromVariant(*type) as Type
                ?? throw new ArgumentException("the type argument is not a System.Type");
            return target is not null && expected.IsInstanceOfType(target) ? 1 : 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    [UnmanagedCallersOnly]
    public static int GetTypeName(VariantArg* value, IntPtr* outStr)
    {
        try
        {
            var target = Handles.FromVariant(*value);
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
    public static int GetObjType(IntPtr handle, IntPtr* outHandle) => TypeOf(handle, outHandle);

    [UnmanagedCallersOnly]
    public static int GetStcType(IntPtr handle, IntPtr* outHandle) => TypeOf(handle, outHandle);

    [UnmanagedCallersOnly]
    public static int Dispose(IntPtr handle)
    {
        try
        {
            (Handles.Target(handle) as IDisposable)?.Dispose();
            return 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    private static int ToStringOf(IntPtr handle, IntPtr* outStr)
    {
        try
        {
            var text = Handles.Target(handle)?.ToString();
            if (text is null)
                return 0;
            *outStr = PyRuntime.NewPyString(text);
            return *outStr == IntPtr.Zero ? 0 : 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }

    private static int HashOf(IntPtr handle)
    {
        try
        {
            return Handles.Target(handle)?.GetHashCode() ?? 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    private static int EqualsOf(IntPtr handle, VariantArg* other)
    {
        try
        {
            return Equals(Handles.Target(handle), Handles.FromVariant(*other)) ? 1 : 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    private static int TypeOf(IntPtr handle, IntPtr* outHandle)
    {
        try
        {
            var target = Handles.Target(handle) ?? throw new ArgumentNullException(nameof(handle));
            *outHandle = Handles.New(target.GetType());
            return 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }
}
