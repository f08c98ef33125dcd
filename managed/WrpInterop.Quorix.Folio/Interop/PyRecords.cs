using System.Runtime.InteropServices;
using System.Text;

namespace Quorix.WrpGen.Interop;

/// <summary>A Python str borrowed in the interpreter's own compact storage (1, 2 or 4 bytes a code point).</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PyStringArg
{
    public int Length;    // code points; -1 is a null string
    public int CharSize;  // 1 Latin-1, 2 UCS-2, 4 UCS-4
    public void* Data;

    /// <summary>The managed string: widened from Latin-1, taken as is from UCS-2, decoded from UCS-4.</summary>
    public readonly string? ToManaged()
    {
        if (Length < 0)
            return null;
        if (Length == 0)
            return string.Empty;
        return CharSize switch
        {
            1 => string.Create(Length, (IntPtr)Data, static (span, data) =>
            {
                var bytes = new ReadOnlySpan<byte>((void*)data, span.Length);
                for (int i = 0; i < bytes.Length; i++)
                    span[i] = (char)bytes[i];
            }),
            2 => new string((char*)Data, 0, Length),
            4 => Encoding.UTF32.GetString((byte*)Data, checked(Length * 4)),
            _ => throw new ArgumentException($"unknown character size {CharSize}"),
        };
    }
}

/// <summary>A string-or-path argument: the string plus a keep-alive owned by the native caller.</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PyEphStrArg
{
    public PyStringArg Str;
    public IntPtr KeepAlive;
}

/// <summary>A contiguous byte buffer borrowed for one call.</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PyBytesArg
{
    public int Acquired;
    public int Reserved;
    public IntPtr View;
    public byte* Data;
    public long Length;

    public readonly ReadOnlySpan<byte> AsSpan() => Data == null ? default : new ReadOnlySpan<byte>(Data, checked((int)Length));
}

/// <summary>A value whose managed type is not fixed: a GC handle (tags 0 and 1) or a borrowed Python object.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct VariantArg
{
    public const int TagHandle = 0;
    public const int TagStructHandle = 1;
    public const int TagPyObject = 2;

    public int Tag;
    public int Reserved;
    public IntPtr Value;
}
