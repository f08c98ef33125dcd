using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>DateTime and DateTimeOffset: ticks in bits 0-61, kind in bits 62-63, and the UTC offset in ticks.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct PyDateTimeArg
{
    public const int KindShift = 62;
    public const ulong TicksMask = (1UL << KindShift) - 1;

    public ulong TicksAndKind;
    public long Offset;

    public readonly long Ticks => (long)(TicksAndKind & TicksMask);
    public readonly int Kind => (int)(TicksAndKind >> KindShift);
}

/// <summary>System.Decimal in its own memory order: flags (scale bits 16-23, sign bit 31), high 32 and low 64 bits.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct PyDecimalArg
{
    public int Flags;
    public uint Hi32;
    public ulong Lo64;
}

/// <summary>System.Version: 2 to 4 components, or a count of -1 for null.</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PySysVersionArg
{
    public int Count;
    public fixed int Parts[4];
}

/// <summary>System.Guid: 16 bytes in the order of uuid.UUID.bytes_le.</summary>
[StructLayout(LayoutKind.Sequential)]
public unsafe struct PyGuidArg
{
    public fixed byte Bytes[16];
}

/// <summary>A Nullable&lt;T&gt; argument or result: HasValue 0 stands for Python's None.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct PyOptional<T> where T : unmanaged
{
    public int HasValue;
    public int Reserved;
    public T Value;
}

/// <summary>A regular expression from Python: the pattern already in .NET syntax and its RegexOptions bits.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct PyRegexArg
{
    public PyStringArg Pattern;
    public int Options;
    public int Reserved;
    public IntPtr KeepAlive;
}
