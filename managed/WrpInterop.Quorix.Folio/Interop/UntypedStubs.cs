using System.Collections;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// The bodies of the built-in kinds' stubs over collections without an element type
/// (IEnumerable, ICollection, IList, arrays, ArrayList, the collection bases): elements leave as
/// ready Python objects (a new reference) and arrive as variant records. Results: a count,
/// index or status; negative with the managed exception raised in Python on failure.
/// </summary>
public static unsafe class UntypedStubs
{
    public const int Item = 0, End = 1, OutOfRange = 2, Failed = -1;
    // Pop's answers besides Item
    public const int Empty = 1;

    private static int Fail(Exception e)
    {
        PyRuntime.Raise(e);
        return Failed;
    }

    private static object? Value(VariantArg* arg) => Variants.ToManaged(arg);

    // A Python object for the element, or a pending Python error (thrown).
    private static IntPtr Hand(object? value)
    {
        IntPtr py = Variants.ToPython(value);
        return py != IntPtr.Zero ? py : throw new PyErrorPendingException();
    }

    private static IList List(IntPtr self) => (IList)Handles.Target(self)!;
    private static ICollection Collection(IntPtr self) => (ICollection)Handles.Target(self)!;

    // ---- enumerators and enumerables

    /// <summary>Item (a new reference in *item), End, or 2 with the error raised.</summary>
    public static int MoveNext(IntPtr self, IntPtr* item)
    {
        try
        {
            var e = (IEnumerator)Handles.Target(self)!;
            if (!e.MoveNext())
                return End;
            *item = Hand(e.Current);
            return Item;
        }
        catch (Exception ex)
        {
            PyRuntime.Raise(ex);
            return OutOfRange;
        }
    }

    public static int GetEnumerator(IntPtr self, VariantArg* result)
    {
        try
        {
            result->Tag = VariantArg.TagHandle;
            result->Value = Handles.New(((IEnumerable)Handles.Target(self)!).GetEnumerator());
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    // ---- collections

    public static int SqLength(IntPtr self)
    {
        try
        {
            return Collection(self).Count;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int SqContains(IntPtr self, VariantArg* value)
    {
        try
        {
            var wanted = Value(value);
            if (Handles.Target(self) is IList list)
                return list.Contains(wanted) ? 1 : 0;
            foreach (var x in Collection(self))
                if (Equals(x, wanted))
                    return 1;
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int CountOf(IntPtr self, VariantArg* value)
    {
        try
        {
            var wanted = Value(value);
            int n = 0;
            foreach (var x in Collection(self))
                if (Equals(x, wanted))
                    n++;
            return n;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    // ---- indexed access

    public static int SqGetItem(IntPtr self, int i, IntPtr* item)
    {
        try
        {
            var list = List(self);
            if ((uint)i >= (uint)list.Count)
                return OutOfRange;
            *item = Hand(list[i]);
            return Item;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>The caller checked the index against the length it just read: the item, or zero with the error raised.</summary>
    public static IntPtr SqGetItemNoCheck(IntPtr self, int i)
    {
        try
        {
            return Hand(List(self)[i]);
        }
        catch (Exception e)
        {
            PyRuntime.Raise(e);
            return IntPtr.Zero;
        }
    }

    public static int SqSetItem(IntPtr self, int i, VariantArg* value)
    {
        try
        {
            var list = List(self);
            if ((uint)i >= (uint)list.Count)
                return OutOfRange;
            list[i] = Value(value);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int SqSetItemNoCheck(IntPtr self, int i, VariantArg* value)
    {
        try
        {
            List(self)[i] = Value(value);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>1 when a managed sequence of exactly n items was stored into the slice; 0 declines (not a managed one).</summary>
    public static int MpSetItems(IntPtr self, VariantArg* items, int start, int count, int step)
    {
        try
        {
            if (items->Tag != VariantArg.TagHandle || Handles.Target(items->Value) is not ICollection source || source.Count != count)
                return 0;
            var copy = new object?[count];  // the source may be the target itself
            source.CopyTo(copy, 0);
            var target = List(self);
            for (int k = 0; k < count; k++)
                target[start + k * step] = copy[k];
            return 1;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>The first index in [start, stop) holding the value; -1 when none (no exception raised).</summary>
    public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value)
    {
        try
        {
            var list = List(self);
            int n = list.Count;
            int from = hasStart != 0 ? Clip(start, n) : 0, to = hasStop != 0 ? Clip(stop, n) : n;
            var wanted = Value(value);
            for (int i = from; i < to; i++)
                if (Equals(list[i], wanted))
                    return i;
            return -1;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    // Python's bounds of list.index: negative counts from the end, then clipped to [0, n].
    private static int Clip(int i, int n) => i < 0 ? Math.Max(0, i + n) : Math.Min(i, n);

    public static int Reverse(IntPtr self)
    {
        try
        {
            var list = List(self);
            for (int i = 0, j = list.Count - 1; i < j; i++, j--)
                (list[i], list[j]) = (list[j], list[i]);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>A stable sort by the elements' default ordering, descending when asked.</summary>
    public static int Sort(IntPtr self, int reverse)
    {
        try
        {
            var list = List(self);
            var order = new (object? Value, int Index)[list.Count];
            for (int i = 0; i < order.Length; i++)
                order[i] = (list[i], i);
            var comparer = Comparer.Default;
            Array.Sort(order, (a, b) =>
            {
                int c = comparer.Compare(a.Value, b.Value);
                return c != 0 ? (reverse != 0 ? -c : c) : a.Index.CompareTo(b.Index);
            });
            for (int i = 0; i < order.Length; i++)
                list[i] = order[i].Value;
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e is InvalidOperationException { InnerException: { } inner } ? inner : e);
        }
    }

    // ---- growing and shrinking lists

    public static int Add(IntPtr self, VariantArg* value)
    {
        try
        {
            List(self).Add(Value(value));
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>Python's list.insert: a negative index counts from the end, and both ends clip.</summary>
    public static int Insert(IntPtr self, int i, VariantArg* value)
    {
        try
        {
            var list = List(self);
            int n = list.Count;
            list.Insert(i < 0 ? Math.Max(0, i + n) : Math.Min(i, n), Value(value));
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>1 when the value was found and removed, 0 when it was not there.</summary>
    public static int Remove(IntPtr self, VariantArg* value)
    {
        try
        {
            var list = List(self);
            int i = list.IndexOf(Value(value));
            if (i < 0)
                return 0;
            list.RemoveAt(i);
            return 1;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int RemoveAt(IntPtr self, int i)
    {
        try
        {
            var list = List(self);
            if ((uint)i >= (uint)list.Count)
                return OutOfRange;
            list.RemoveAt(i);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>Item with the removed item in *item (the last one when no index is given), Empty, or OutOfRange.</summary>
    public static int Pop(IntPtr self, int index, int hasIndex, IntPtr* item)
    {
        try
        {
            var list = List(self);
            int n = list.Count;
            if (n == 0)
                return Empty;
            int i = hasIndex == 0 ? n - 1 : index < 0 ? index + n : index;
            if ((uint)i >= (uint)n)
                return OutOfRange;
            var value = list[i];
            list.RemoveAt(i);
            *item = Hand(value);
            return Item;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int Clear(IntPtr self)
    {
        try
        {
            List(self).Clear();
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>1 when the items of a managed enumerable were appended; 0 declines (not a managed one).</summary>
    public static int SqInplaceConcat(IntPtr self, VariantArg* items)
    {
        try
        {
            if (items->Tag != VariantArg.TagHandle || Handles.Target(items->Value) is not IEnumerable source)
                return 0;
            var list = List(self);
            foreach (var x in source.Cast<object?>().ToArray())  // the source may be the list itself
                list.Add(x);
            return 1;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>Python's list *= n: fewer than one repetition empties the list.</summary>
    public static int SqInplaceRepeat(IntPtr self, int count)
    {
        try
        {
            var list = List(self);
            if (count < 1)
            {
                list.Clear();
                return 0;
            }
            var items = list.Cast<object?>().ToArray();
            for (int r = 1; r < count; r++)
                foreach (var x in items)
                    list.Add(x);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>Removes the n items at start, start+step, ...; the caller orders them from the highest index down.</summary>
    public static int MpRemoveItems(IntPtr self, int start, int count, int step)
    {
        try
        {
            var list = List(self);
            for (int k = 0; k < count; k++)
                list.RemoveAt(start + k * step);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int EnsureCapacity(IntPtr self, int more)
    {
        try
        {
            var list = (ArrayList)Handles.Target(self)!;
            long wanted = (long)list.Count + more;
            if (wanted > list.Capacity && wanted <= int.MaxValue)
                list.Capacity = (int)wanted;
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }
}
