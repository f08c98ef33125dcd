using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using System.Text;
using Quorix.WrpGen.Interop;
using Xunit;

namespace WrpInterop.Tests;

// The native side pins the same sizes and offsets with static_assert.
public unsafe class RecordLayoutTests
{
    [Fact]
    public void RecordsHaveTheNativeLayout()
    {
        Assert.Equal(16, sizeof(PyStringArg));
        Assert.Equal(8, (int)Marshal.OffsetOf<PyStringArg>(nameof(PyStringArg.Data)));
        Assert.Equal(24, sizeof(PyEphStrArg));
        Assert.Equal(16, (int)Marshal.OffsetOf<PyEphStrArg>(nameof(PyEphStrArg.KeepAlive)));
        Assert.Equal(32, sizeof(PyBytesArg));
        Assert.Equal(8, (int)Marshal.OffsetOf<PyBytesArg>(nameof(PyBytesArg.View)));
        Assert.Equal(16, (int)Marshal.OffsetOf<PyBytesArg>(nameof(PyBytesArg.Data)));
        Assert.Equal(24, (int)Marshal.OffsetOf<PyBytesArg>(nameof(PyBytesArg.Length)));
        Assert.Equal(16, sizeof(VariantArg));
        Assert.Equal(8, (int)Marshal.OffsetOf<VariantArg>(nameof(VariantArg.Value)));
        Assert.Equal(16, sizeof(PySeqArg));
        Assert.Equal(8, (int)Marshal.OffsetOf<PySeqArg>(nameof(PySeqArg.Items)));
        Assert.Equal(24, sizeof(PySeqSink));
        Assert.Equal(16, (int)Marshal.OffsetOf<PySeqSink>(nameof(PySeqSink.WrapInt)));
    }

    [Theory]
    [InlineData("")]
    [InlineData("plain ascii")]
    [InlineData("caf\u00e9 \u00ff")]           // Latin-1 storage
    [InlineData("\u0416\u4e2d\ufeff")]        // UCS-2 storage, a leading-mark character kept
    [InlineData("emoji \U0001F600 x")]        // UCS-4 storage
    public void PythonStorageWidensToTheSameString(string text)
    {
        int[] codePoints = CodePoints(text);
        int size = codePoints.Length == 0 ? 1 : codePoints.Max() switch { <= 0xFF => 1, <= 0xFFFF => 2, _ => 4 };
        byte[] storage = new byte[Math.Max(1, codePoints.Length * size)];
        for (int i = 0; i < codePoints.Length; i++)
            for (int b = 0; b < size; b++)
                storage[i * size + b] = (byte)(codePoints[i] >> (8 * b));
        fixed (byte* data = storage)
        {
            var arg = new PyStringArg { Length = codePoints.Length, CharSize = size, Data = data };
            Assert.Equal(text, arg.ToManaged());
        }
    }

    [Fact]
    public void NullAndUnknownStorage()
    {
        Assert.Null(new PyStringArg { Length = -1 }.ToManaged());
        byte b = 65;
        var bad = new PyStringArg { Length = 1, CharSize = 3, Data = &b };
        Assert.Throws<ArgumentException>(() => bad.ToManaged());
    }

    [Fact]
    public void HandlesRoundTripAndFree()
    {
        var target = new StringBuilder("x");
        IntPtr handle = Handles.New(target);
        Assert.Same(target, Handles.Target(handle));
        Assert.Same(target, Handles.FromVariant(new VariantArg { Tag = VariantArg.TagHandle, Value = handle }));
        Assert.Throws<NotSupportedException>(() => Handles.FromVariant(new VariantArg { Tag = VariantArg.TagPyObject }));
        Assert.Throws<InvalidCastException>(() => Handles.TargetAs<string>(handle));
        Handles.Free(handle);
        Assert.Equal(IntPtr.Zero, Handles.New(null));
        Assert.Null(Handles.Target(IntPtr.Zero));
    }

    private static int[] CodePoints(string text)
    {
        var list = new List<int>();
        for (int i = 0; i < text.Length; i += char.IsSurrogatePair(text, i) ? 2 : 1)
            list.Add(char.ConvertToUtf32(text, i));
        return list.ToArray();
    }
}
