using System.Text.RegularExpressions;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// A Python error left pending by a callback: the stub returns with it instead of raising a
/// managed error over it, so Python sees the original exception (OverflowError, ValueError, ...).
/// </summary>
public sealed class PyErrorPendingException() : Exception("a Python error is pending");

/// <summary>
/// Dates, times, decimals, GUIDs, versions and regular expressions between their records and
/// managed values. The records are filled and read by the native conversions; no Python is
/// called here except through the element writers for values that become Python objects.
/// </summary>
public static unsafe class PyValues
{
    // ---- records to managed values

    public static DateTime ToDateTime(PyDateTimeArg* arg) => arg->Kind switch
    {
        1 => new DateTime(arg->Ticks, DateTimeKind.Utc),
        2 => new DateTime(arg->Ticks, DateTimeKind.Local),
        _ => new DateTime(arg->Ticks, DateTimeKind.Unspecified),
    };

    public static DateTimeOffset ToDateTimeOffset(PyDateTimeArg* arg) => new(arg->Ticks, new TimeSpan(arg->Offset));

    public static decimal ToDecimal(PyDecimalArg* arg)
    {
        int scale = (arg->Flags >> 16) & 0xFF;
        bool negative = arg->Flags < 0;
        return new decimal((int)(uint)arg->Lo64, (int)(uint)(arg->Lo64 >> 32), (int)arg->Hi32, negative, (byte)scale);
    }

    public static Guid ToGuid(PyGuidArg* arg) => new(new ReadOnlySpan<byte>(arg->Bytes, 16));

    public static Version? ToVersion(PySysVersionArg* arg) => arg->Count switch
    {
        < 0 => null,
        2 => new Version(arg->Parts[0], arg->Parts[1]),
        3 => new Version(arg->Parts[0], arg->Parts[1], arg->Parts[2]),
        4 => new Version(arg->Parts[0], arg->Parts[1], arg->Parts[2], arg->Parts[3]),
        _ => throw new ArgumentException($"a version of {arg->Count} components"),
    };

    public static Regex? ToRegex(PyRegexArg* arg)
    {
        string? pattern = arg->Pattern.ToManaged();
        return pattern is null ? null : new Regex(pattern, (RegexOptions)arg->Options);
    }

    // ---- managed values to records

    public static void Write(PyDateTimeArg* result, DateTime value)
    {
        int kind = value.Kind switch { DateTimeKind.Utc => 1, DateTimeKind.Local => 2, _ => 0 };
        result->TicksAndKind = (ulong)value.Ticks | ((ulong)kind << PyDateTimeArg.KindShift);
        result->Offset = value.Kind == DateTimeKind.Local ? TimeZoneInfo.Local.GetUtcOffset(value).Ticks : 0;
    }

    public static void Write(PyDateTimeArg* result, DateTimeOffset value)
    {
        result->TicksAndKind = (ulong)value.Ticks;
        result->Offset = value.Offset.Ticks;
    }

    public static void Write(PyDecimalArg* result, decimal value)
    {
        Span<int> bits = stackalloc int[4];
        decimal.GetBits(value, bits);
        result->Lo64 = (uint)bits[0] | ((ulong)(uint)bits[1] << 32);
        result->Hi32 = (uint)bits[2];
        result->Flags = bits[3];
    }

    public static void Write(PyGuidArg* result, Guid value)
    {
        if (!value.TryWriteBytes(new Span<byte>(result->Bytes, 16)))
            throw new InvalidOperationException("a Guid did not fill 16 bytes");
    }

    public static void Write(PySysVersionArg* result, Version? value)
    {
        if (value is null)
        {
            result->Count = -1;
            return;
        }
        // System.Version leaves unset components at -1: the count stops before the first of them
        int count = value.Revision >= 0 ? 4 : value.Build >= 0 ? 3 : 2;
        result->Count = count;
        result->Parts[0] = value.Major;
        result->Parts[1] = value.Minor;
        result->Parts[2] = count > 2 ? value.Build : 0;
        result->Parts[3] = count > 3 ? value.Revision : 0;
    }

    // ---- managed values to Python objects (new references, zero with an error pending)

    private const int WriteTable = CallbackSlots.Tables.Write;
    private const int WriteDecimal = CallbackSlots.Write.Decimal, WriteDateTime = CallbackSlots.Write.DateTime,
        WriteDateTimeOffset = CallbackSlots.Write.DateTimeOffset, WriteTimeDelta = CallbackSlots.Write.TimeDelta,
        WriteGuid = CallbackSlots.Write.Guid, WriteVersion = CallbackSlots.Write.Version;

    private static IntPtr Writer(int slot) => ((IntPtr*)PyRuntime.StaticCallbacks[WriteTable])[slot];

    public static IntPtr PyDateTime(DateTime value)
    {
        PyDateTimeArg arg;
        Write(&arg, value);
        return ((delegate* unmanaged<PyDateTimeArg*, IntPtr>)Writer(WriteDateTime))(&arg);
    }

    public static IntPtr PyDateTime(DateTimeOffset value)
    {
        PyDateTimeArg arg;
        Write(&arg, value);
        return ((delegate* unmanaged<PyDateTimeArg*, IntPtr>)Writer(WriteDateTimeOffset))(&arg);
    }

    public static IntPtr PyTimeDelta(TimeSpan value) => ((delegate* unmanaged<long, IntPtr>)Writer(WriteTimeDelta))(value.Ticks);

    public static IntPtr PyDecimal(decimal value)
    {
        PyDecimalArg arg;
        Write(&arg, value);
        return ((delegate* unmanaged<PyDecimalArg*, IntPtr>)Writer(WriteDecimal))(&arg);
    }

    public static IntPtr PyUuid(Guid value)
    {
        PyGuidArg arg;
        Write(&arg, value);
        return ((delegate* unmanaged<PyGuidArg*, IntPtr>)Writer(WriteGuid))(&arg);
    }

    public static IntPtr PyVersion(Version? value)
    {
        PySysVersionArg arg;
        Write(&arg, value);
        return ((delegate* unmanaged<PySysVersionArg*, IntPtr>)Writer(WriteVersion))(&arg);
    }
}
