using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>GC handles as they cross to native code: one normal handle per wrapper.</summary>
public static class Handles
{
    public static IntPtr New(object? target)
    {
        if (target is null)
            return IntPtr.Zero;
        Interlocked.Increment(ref s_allocated);
        return GCHandle.ToIntPtr(GCHandle.Alloc(target));
    }

    /// <summary>A weak handle: it does not keep the target alive (a Python object's link to its twin).</summary>
    public static IntPtr NewWeak(object target)
    {
        Interlocked.Increment(ref s_allocated);
        return GCHandle.ToIntPtr(GCHandle.Alloc(target, GCHandleType.Weak));
    }

    private static long s_allocated;

    /// <summary>How many handles were handed out so far; with the freed count, what is still alive.</summary>
    public static long AllocatedCount => Interlocked.Read(ref s_allocated);

    public static object? Target(IntPtr handle) => handle == IntPtr.Zero ? null : GCHandle.FromIntPtr(handle).Target;

    public static T TargetAs<T>(IntPtr handle) where T : class =>
        Target(handle) as T ?? throw new InvalidCastException($"the handle does not hold a {typeof(T).FullName}");

    public static void Free(IntPtr handle)
    {
        if (handle != IntPtr.Zero)
            GCHandle.FromIntPtr(handle).Free();
    }

    /// <summary>The object a variant designates when it carries a handle; otherwise an exception.</summary>
    public static object? FromVariant(in VariantArg value) => value.Tag switch
    {
        VariantArg.TagHandle or VariantArg.TagStructHandle => Target(value.Value),
        _ => throw new NotSupportedException($"a value of variant kind {value.Tag} has no managed object"),
    };
}
