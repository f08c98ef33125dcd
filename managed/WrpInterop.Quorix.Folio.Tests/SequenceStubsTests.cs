using Quorix.WrpGen.Interop;
using Xunit;

namespace WrpInterop.Tests;

/// <summary>
/// The shared bodies of the generic instantiations' stubs over plain managed collections, called
/// as native code calls them: GC handles in, handles, indexes and status codes out. Before the
/// runtime host starts, a failure is only reported by its result.
/// </summary>
public unsafe class SequenceStubsTests
{
    private sealed class Item(int key) : IComparable<Item>
    {
        public int Key { get; } = key;
        public int CompareTo(Item? other) => Key.CompareTo(other!.Key);
    }

    private sealed class Owned : IDisposable
    {
        private readonly List<IntPtr> _handles = [];

        public IntPtr Of(object? target)
        {
            var h = Handles.New(target);
            _handles.Add(h);
            return h;
        }

        public T Take<T>(IntPtr handle)
        {
            _handles.Add(handle);
            return (T)Handles.Target(handle)!;
        }

        public void Dispose() => _handles.ForEach(Handles.Free);
    }

    private static Item[] Items(params int[] keys) => keys.Select(k => new Item(k)).ToArray();

    [Fact]
    public void ItemsLeaveWithTheirHandleAndStatus()
    {
        using var own = new Owned();
        var array = Items(1, 2, 3);
        IntPtr self = own.Of(array), item;
        int index;
        Assert.Equal(3, SequenceStubs<Item>.SqLength(self));
        Assert.Equal(SequenceStubs<Item>.Item, SequenceStubs<Item>.SqGetItem(self, 2, &item, &index));
        Assert.Same(array[2], own.Take<Item>(item));
        Assert.Equal(-1, index);  // no bound type index is registered in this assembly
        Assert.Equal(SequenceStubs<Item>.OutOfRange, SequenceStubs<Item>.SqGetItem(self, 3, &item, &index));
        Assert.Equal(SequenceStubs<Item>.OutOfRange, SequenceStubs<Item>.SqGetItem(self, -1, &item, &index));
        Assert.Equal(SequenceStubs<Item>.Failed, SequenceStubs<Item>.SqGetItemNoCheck(self, 7, &item, &index));
    }

    [Fact]
    public void EnumeratorsReportItemsThenTheEndAgainAndAgain()
    {
        using var own = new Owned();
        var list = Items(5, 6);
        IntPtr enumerator;
        Assert.Equal(0, SequenceStubs<Item>.GetEnumerator(own.Of(list), &enumerator));
        IntPtr self = own.Of(own.Take<IEnumerator<Item>>(enumerator)), item;
        int index;
        var seen = new List<int>();
        while (SequenceStubs<Item>.MoveNext(self, &item, &index) == SequenceStubs<Item>.Item)
            seen.Add(own.Take<Item>(item).Key);
        Assert.Equal([5, 6], seen);
        Assert.Equal(SequenceStubs<Item>.End, SequenceStubs<Item>.MoveNext(self, &item, &index));
    }

    [Fact]
    public void StoresReachArraysAndWritableListsOnly()
    {
        using var own = new Owned();
        var array = Items(1, 2);
        var replacement = new Item(9);
        Assert.Equal(0, SequenceStubs<Item>.SqSetItem(own.Of(array), 1, own.Of(replacement)));
        Assert.Same(replacement, array[1]);
        Assert.Equal(SequenceStubs<Item>.OutOfRange, SequenceStubs<Item>.SqSetItem(own.Of(array), 2, own.Of(replacement)));
        Assert.Equal(0, SequenceStubs<Item>.SqSetItemNoCheck(own.Of(array), 0, IntPtr.Zero));
        Assert.Null(array[0]);
        var readOnly = Array.AsReadOnly(Items(1));
        Assert.Equal(SequenceStubs<Item>.Failed, SequenceStubs<Item>.SqSetItem(own.Of(readOnly), 0, own.Of(replacement)));
        Assert.Equal(SequenceStubs<Item>.Failed, SequenceStubs<Item>.Reverse(own.Of(readOnly)));
    }

    [Fact]
    public void SliceStoresTakeWholeManagedSequencesOfTheRightSize()
    {
        using var own = new Owned();
        var target = Items(0, 1, 2, 3);
        var source = Items(7, 8);
        Assert.Equal(1, SequenceStubs<Item>.MpSetItems(own.Of(target), own.Of(source), 3, 2, -2));
        Assert.Equal([0, 8, 2, 7], target.Select(i => i.Key));
        Assert.Equal(0, SequenceStubs<Item>.MpSetItems(own.Of(target), own.Of(source), 0, 3, 1));  // size differs: declined
        Assert.Equal(0, SequenceStubs<Item>.MpSetItems(own.Of(target), own.Of("not a sequence"), 0, 2, 1));
        // a slice stored from itself reads the source before writing
        Assert.Equal(1, SequenceStubs<Item>.MpSetItems(own.Of(target), own.Of(target), 3, 4, -1));
        Assert.Equal([7, 2, 8, 0], target.Select(i => i.Key));
    }

    [Fact]
    public void SearchesFollowPythonBounds()
    {
        using var own = new Owned();
        var array = Items(1, 2, 3, 2);
        IntPtr self = own.Of(array), two = own.Of(array[1]);
        Assert.Equal(1, SequenceStubs<Item>.IndexBy(self, 0, 0, 0, 0, two));
        Assert.Equal(-1, SequenceStubs<Item>.IndexBy(self, 1, 2, 0, 0, two));  // another object of equal key
        Assert.Equal(1, SequenceStubs<Item>.IndexBy(self, 1, -3, 1, 2, two));
        Assert.Equal(-1, SequenceStubs<Item>.IndexBy(self, 1, -3, 1, -3, two));
        Assert.Equal(1, SequenceStubs<Item>.IndexBy(self, 1, -100, 1, 100, two));
        Assert.Equal(1, SequenceStubs<Item>.CountOf(self, two));
        Assert.Equal(1, SequenceStubs<Item>.SqContains(self, two));
        Assert.Equal(0, SequenceStubs<Item>.SqContains(self, own.Of(new Item(2))));
    }

    [Fact]
    public void SortIsStableAndReversible()
    {
        using var own = new Owned();
        var array = Items(3, 1, 2, 1);
        var firstOne = array[1];
        Assert.Equal(0, SequenceStubs<Item>.Sort(own.Of(array), 0));
        Assert.Equal([1, 1, 2, 3], array.Select(i => i.Key));
        Assert.Same(firstOne, array[0]);
        Assert.Equal(0, SequenceStubs<Item>.Sort(own.Of(array), 1));
        Assert.Equal([3, 2, 1, 1], array.Select(i => i.Key));
        Assert.Same(firstOne, array[2]);  // equal items keep their order when descending too
        Assert.Equal(SequenceStubs<object>.Failed, SequenceStubs<object>.Sort(own.Of(new object[] { new(), new() }), 0));
    }
}
