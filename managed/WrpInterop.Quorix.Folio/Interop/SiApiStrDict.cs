using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// The stubs behind Python's live mapping over a managed IDictionary&lt;string, string&gt; owned by
/// a document (its variables, say): reads and writes reach the dictionary itself. Failures are
/// raised in Python and answered with -1.
/// </summary>
public static unsafe class SiApiStrDict
{
    private static IDictionary<string, string?> Target(IntPtr handle) => Handles.TargetAs<IDictionary<string, string?>>(handle);

    [UnmanagedCallersOnly]
    public static int Count(IntPtr handle)
    {
        try
        {
            return Target(handle).Count;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>1 with the value as a new Python str (None for null) in <paramref name="result"/>, 0 when absent, -1.</summary>
    [UnmanagedCallersOnly]
    public static int TryGet(IntPtr handle, PyStringArg* key, IntPtr* result)
    {
        try
        {
            if (!Target(handle).TryGetValue(key->ToManaged()!, out string? value))
                return 0;
            *result = StubValues.StrOrNone(value);
            return *result == IntPtr.Zero ? -1 : 1;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    [UnmanagedCallersOnly]
    public static int Set(IntPtr handle, PyStringArg* key, PyStringArg* value)
    {
        try
        {
            Target(handle)[key->ToManaged()!] = value->ToManaged();
            return 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>1 when the key was there, 0 when not, -1.</summary>
    [UnmanagedCallersOnly]
    public static int Remove(IntPtr handle, PyStringArg* key)
    {
        try
        {
            return Target(handle).Remove(key->ToManaged()!) ? 1 : 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    [UnmanagedCallersOnly]
    public static int Clear(IntPtr handle)
    {
        try
        {
            Target(handle).Clear();
            return 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>The keys, or the values, in the dictionary's order, as a new Python list through the sink.</summary>
    [UnmanagedCallersOnly]
    public static void Snapshot(IntPtr handle, int values, PySeqSink* sink)
    {
        try
        {
            var target = Target(handle);
            if (values != 0)
                PySequences.PutStrings(sink, target.Values.ToList());
            else
                PySequences.PutStrings(sink, target.Keys.ToList<string?>());
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
        }
    }
}
