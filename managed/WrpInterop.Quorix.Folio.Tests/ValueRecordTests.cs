using System.Runtime.InteropServices;
using Quorix.WrpGen.Interop;
using Xunit;

namespace WrpInterop.Tests;

// The native side fills and reads these records; the managed values must survive the trip exactly.
public unsafe class ValueRecordTests
{
    [Fact]
    public void RecordsHaveTheNativeLayout()
    {
        Assert.Equal(16, sizeof(PyDateTimeArg));
        Assert.Equal(16, sizeof(PyDecimalArg));
        Assert.Equal(8, (int)Marshal.OffsetOf<PyDecimalArg>(nameof(PyDecimalArg.Lo64)));
        Assert.Equal(20, sizeof(PySysVersionArg));
        Assert.Equal(16, sizeof(PyGuidArg));
        Assert.Equal(32, sizeof(PyRegexArg));
        Assert.Equal(24, (int)Marshal.OffsetOf<PyRegexArg>(nameof(PyRegexArg.KeepAlive)));
        Assert.Equal(24, sizeof(PyOptional<PyDateTimeArg>));
        Assert.Equal(16, sizeof(PyOptional<long>));
        Assert.Equal(12, sizeof(PyOptional<int>));
    }

    public static TheoryData<decimal> Decimals => new()
    {
        0m, 12.50m, -12.50m, decimal.MaxValue, decimal.MinValue, 0.0000000000000000000000000001m, -0.000m, 1e15m,
    };

    [Theory]
    [MemberData(nameof(Decimals))]
    public void DecimalsKeepDigitsScaleAndSign(decimal value)
    {
        PyDecimalArg arg;
        PyValues.Write(&arg, value);
        decimal back = PyValues.ToDecimal(&arg);
        Assert.Equal(value, back);
        Assert.Equal(decimal.GetBits(value), decimal.GetBits(back));
    }

    [Fact]
    public void DateTimesKeepTicksAndKind()
    {
        foreach (var kind in new[] { DateTimeKind.Unspecified, DateTimeKind.Utc, DateTimeKind.Local })
        {
            var value = new DateTime(3155378975999999999, kind);
            PyDateTimeArg arg;
            PyValues.Write(&arg, value);
            Assert.Equal((int)kind, arg.Kind);
            var back = PyValues.ToDateTime(&arg);
            Assert.Equal((value.Ticks, value.Kind), (back.Ticks, back.Kind));
        }
        var offset = new DateTimeOffset(2020, 1, 2, 3, 4, 5, TimeSpan.FromMinutes(-330));
        PyDateTimeArg o;
        PyValues.Write(&o, offset);
        Assert.Equal((0, TimeSpan.FromMinutes(-330).Ticks), (o.Kind, o.Offset));
        Assert.Equal(offset, PyValues.ToDateTimeOffset(&o));
    }

    private static void FiveParts()
    {
        PySysVersionArg five = default;
        five.Count = 5;
        PyValues.ToVersion(&five);
    }

    [Fact]
    public void VersionsCountTheirSetComponentsAndGuidsKeepTheirBytes()
    {
        foreach (var v in new[] { new Version(1, 2), new Version(1, 2, 3), new Version(1, 2, 3, 4) })
        {
            PySysVersionArg arg;
            PyValues.Write(&arg, v);
            Assert.Equal(v.ToString().Split('.').Length, arg.Count);
            Assert.Equal(v, PyValues.ToVersion(&arg));
        }
        PySysVersionArg none;
        PyValues.Write(&none, null);
        Assert.Equal(-1, none.Count);
        Assert.Null(PyValues.ToVersion(&none));
        Assert.Throws<ArgumentException>(FiveParts);

        var guid = Guid.Parse("00112233-4455-6677-8899-aabbccddeeff");
        PyGuidArg g;
        PyValues.Write(&g, guid);
        Assert.Equal(0x33, g.Bytes[0]);  // the first group is little-endian, as uuid.UUID.bytes_le
        Assert.Equal(guid, PyValues.ToGuid(&g));
    }
}
