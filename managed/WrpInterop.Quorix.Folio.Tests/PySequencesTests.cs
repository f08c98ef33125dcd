using System.Runtime.InteropServices;
using Quorix.WrpGen.Interop;
using Xunit;

namespace WrpInterop.Tests;

/// <summary>
/// Managed arrays made from the records the native side converted a Python sequence into:
/// each element kind reads its own record width, enumerations of every width keep their value,
/// and a count of -1 is a null array.
/// </summary>
public unsafe class PySequencesTests
{
    private enum Small : byte { Low = 1, High = 200 }
    private enum Signed : short { Minus = -5, Plus = 7 }
    private enum Wide { A = 1, B = 70000 }

    private static T[]? Read<T>(int[] records, Func<PySeqArg, T[]?> read, int count = -2)
    {
        fixed (int* items = records)
        {
            var arg = new PySeqArg { Count = count == -2 ? records.Length : count, ItemSize = sizeof(int), Items = items };
            return read(arg);
        }
    }

    [Fact]
    public void EnumerationsOfEveryWidthKeepTheirValues()
    {
        Assert.Equal([Small.Low, Small.High], Read([1, 200], a => PySequences.Enums<Small>(&a)));
        Assert.Equal([Signed.Minus, Signed.Plus], Read([-5, 7], a => PySequences.Enums<Signed>(&a)));
        Assert.Equal([Wide.B, Wide.A], Read([70000, 1], a => PySequences.Enums<Wide>(&a)));
    }

    [Fact]
    public void ScalarsAndBooleansReadTheirRecords()
    {
        Assert.Equal([3, -4, int.MaxValue], Read([3, -4, int.MaxValue], a => PySequences.Scalars<int>(&a)));
        Assert.Equal([true, false, true], Read([1, 0, 7], a => PySequences.Bools(&a)));
        Assert.Null(Read([1], a => PySequences.Scalars<int>(&a), count: -1));
        Assert.Empty(Read([], a => PySequences.Scalars<int>(&a))!);
    }

    [Fact]
    public void StringsAndHandlesReadWholeRecords()
    {
        byte[] latin = "ab"u8.ToArray();
        char[] wide = ['\u20ac', 'x'];
        fixed (byte* l = latin)
        fixed (char* w = wide)
        {
            var records = new[]
            {
                new PyStringArg { Length = 2, CharSize = 1, Data = l },
                new PyStringArg { Length = -1 },
                new PyStringArg { Length = 2, CharSize = 2, Data = w },
            };
            fixed (PyStringArg* items = records)
            {
                var arg = new PySeqArg { Count = 3, ItemSize = sizeof(PyStringArg), Items = items };
                Assert.Equal(["ab", null, "\u20acx"], PySequences.Strings(&arg));
            }
        }
        var target = new object();
        var handle = GCHandle.Alloc(target);
        try
        {
            IntPtr[] handles = [GCHandle.ToIntPtr(handle), IntPtr.Zero];
            fixed (IntPtr* items = handles)
            {
                var arg = new PySeqArg { Count = 2, ItemSize = sizeof(IntPtr), Items = items };
                var read = PySequences.Targets<object>(&arg)!;
                Assert.Same(target, read[0]);
                Assert.Null(read[1]);
            }
        }
        finally
        {
            handle.Free();
        }
    }
}
