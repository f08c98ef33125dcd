using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// The stubs behind Python's view of a managed stream as a binary file: buffering, line
/// splitting and argument checks happen on the Python side; these only move bytes and answer
/// questions. Failures are raised in Python and answered with -1 (or 0 for the flags).
/// </summary>
public static unsafe class SiApiStream
{
    private static Stream Target(IntPtr handle) => Handles.TargetAs<Stream>(handle);

    [UnmanagedCallersOnly]
    public static int CanRead(IntPtr handle) => Flag(handle, static s => s.CanRead);

    [UnmanagedCallersOnly]
    public static int CanSeek(IntPtr handle) => Flag(handle, static s => s.CanSeek);

    [UnmanagedCallersOnly]
    public static int CanWrite(IntPtr handle) => Flag(handle, static s => s.CanWrite);

    [UnmanagedCallersOnly]
    public static long Length(IntPtr handle) => Number(handle, static s => s.Length);

    [UnmanagedCallersOnly]
    public static long Position(IntPtr handle) => Number(handle, static s => s.Position);

    [UnmanagedCallersOnly]
    public static int Close(IntPtr handle) => Number(handle, static s =>
    {
        s.Close();
        return 0;
    }) < 0 ? -1 : 0;

    [UnmanagedCallersOnly]
    public static int Flush(IntPtr handle) => Number(handle, static s =>
    {
        s.Flush();
        return 0;
    }) < 0 ? -1 : 0;

    /// <summary>Bytes read into the native buffer: 0 at the end of the stream, -1 on failure.</summary>
    [UnmanagedCallersOnly]
    public static int Read(IntPtr handle, byte* buffer, int count)
    {
        try
        {
            return Target(handle).Read(new Span<byte>(buffer, count));
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    [UnmanagedCallersOnly]
    public static long Seek(IntPtr handle, long offset, int origin)
    {
        try
        {
            return Target(handle).Seek(offset, (SeekOrigin)origin);
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>Truncates (or extends) to `length`, or to the current position; the new length, or -1.</summary>
    [UnmanagedCallersOnly]
    public static long SetLength(IntPtr handle, int useCurrentPosition, long length)
    {
        try
        {
            var stream = Target(handle);
            long size = useCurrentPosition != 0 ? stream.Position : length;
            stream.SetLength(size);
            return stream.Length;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    /// <summary>Writes the whole native buffer: 0, or -1.</summary>
    [UnmanagedCallersOnly]
    public static int Write(IntPtr handle, byte* buffer, int count)
    {
        try
        {
            Target(handle).Write(new ReadOnlySpan<byte>(buffer, count));
            return 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<Stream>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<Stream>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<Stream>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_ReInterpretObj(IntPtr obj, IntPtr* result) => BuiltinStubs<Stream>.ReInterpretObj(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<Stream>.CastAs(obj, result);

    private static int Flag(IntPtr handle, Func<Stream, bool> ask)
    {
        try
        {
            return ask(Target(handle)) ? 1 : 0;
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return 0;
        }
    }

    private static long Number(IntPtr handle, Func<Stream, long> ask)
    {
        try
        {
            return ask(Target(handle));
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return -1;
        }
    }
}
