namespace Quorix.WrpGen.Interop;

/// <summary>
/// The bodies of the generic instantiations' stubs, written once: each generated
/// Quorix.WrpGen.Generic.SiApi&lt;Kind&gt;_&lt;H&gt; class forwards here with its element type.
/// Elements leave as a GC handle plus the bound type index of the object (TypeIndex); they
/// arrive as the handle of the wrapper that holds them (zero for None). Results: a count, index
/// or status; negative with the managed exception raised in Python on failure.
/// </summary>
public static unsafe class SequenceStubs<T>
{
    public const int Item = 0, End = 1, OutOfRange = 2, Failed = -1;

    private static T Element(IntPtr value) => value == IntPtr.Zero ? default! : (T)Handles.Target(value)!;

    private static int Fail(Exception e)
    {
        PyRuntime.Raise(e);
        return Failed;
    }

    private static void Hand(T value, IntPtr* item, int* index)
    {
        // values that are no objects of their own leave as what Python makes of them
        if (typeof(T).IsEnum)
        {
            *item = IntPtr.Zero;
            *index = Convert.ToInt32(value, System.Globalization.CultureInfo.InvariantCulture);
            return;
        }
        if (typeof(T) == typeof(KeyValuePair<string, string>))
        {
            var pair = (KeyValuePair<string, string>)(object)value!;
            *item = PySequences.ListOf(new[] { pair.Key, pair.Value });
            *index = -1;
            if (*item == IntPtr.Zero)
                throw new PyErrorPendingException();
            return;
        }
        *item = Handles.New(value);
        *index = TypeIndex.Of(value);
    }

    // ---- enumerator and enumerable

    /// <summary>Item (handle and index written), End, or 2 with the exception raised.</summary>
    public static int MoveNext(IntPtr self, IntPtr* item, int* index)
    {
        try
        {
            var e = (IEnumerator<T>)Handles.Target(self)!;
            if (!e.MoveNext())
                return End;
            Hand(e.Current, item, index);
            return Item;
        }
        catch (Exception ex)
        {
            PyRuntime.Raise(ex);
            return OutOfRange;
        }
    }

    public static int GetEnumerator(IntPtr self, IntPtr* result)
    {
        try
        {
            *result = Handles.New(((IEnumerable<T>)Handles.Target(self)!).GetEnumerator());
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    // ---- indexed sequences: arrays and lists (read-only lists refuse the stores)

    private static IReadOnlyList<T> Reader(IntPtr self) => (IReadOnlyList<T>)Handles.Target(self)!;

    // A list that can grow and shrink; arrays and read-only lists refuse.
    private static IList<T> Editor(IntPtr self) => Handles.Target(self) is IList<T> { IsReadOnly: false } list and not T[]
        ? list
        : throw new NotSupportedException("the collection has a fixed size or is read-only");

    // An array's items can be stored although its IList<T> calls itself read-only (fixed size).
    private static IList<T> Writer(IntPtr self) => Handles.Target(self) switch
    {
        T[] array => array,
        IList<T> { IsReadOnly: false } list => list,
        _ => throw new NotSupportedException("the collection is read-only"),
    };

    public static int SqLength(IntPtr self)
    {
        try
        {
            return Reader(self).Count;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int SqGetItem(IntPtr self, int i, IntPtr* item, int* index)
    {
        try
        {
            var list = Reader(self);
            if ((uint)i >= (uint)list.Count)
                return OutOfRange;
            Hand(list[i], item, index);
            return Item;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>The caller has checked the index against the length it just read.</summary>
    public static int SqGetItemNoCheck(IntPtr self, int i, IntPtr* item, int* index)
    {
        try
        {
            Hand(Reader(self)[i], item, index);
            return Item;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int SqSetItem(IntPtr self, int i, IntPtr value)
    {
        try
        {
            var list = Writer(self);
            if ((uint)i >= (uint)list.Count)
                return OutOfRange;
            list[i] = Element(value);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int SqSetItemNoCheck(IntPtr self, int i, IntPtr value)
    {
        try
        {
            Writer(self)[i] = Element(value);
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>1 when the whole of a managed sequence was stored into the slice; 0 declines (not one of ours).</summary>
    public static int MpSetItems(IntPtr self, IntPtr items, int start, int count, int step)
    {
        try
        {
            if (Handles.Target(items) is not IReadOnlyList<T> source || source.Count != count)
                return 0;
            var target = Writer(self);
            var copy = source.ToArray();  // the source may be the target itself
            for (int k = 0; k < count; k++)
                target[start + k * step] = copy[k];
            return 1;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int SqContains(IntPtr self, IntPtr value)
    {
        try
        {
            return Reader(self).Contains(Element(value)) ? 1 : 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    public static int CountOf(IntPtr self, IntPtr value)
    {
        try
        {
            var wanted = Element(value);
            int n = 0;
            foreach (var x in Reader(self))
                if (EqualityComparer<T>.Default.Equals(x, wanted))
                    n++;
            return n;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>The first index in [start, stop) holding the value; -1 when none (no exception raised).</summary>
    public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, IntPtr value)
    {
        try
        {
            var list = Reader(self);
            int n = list.Count;
            int from = hasStart != 0 ? Clip(start, n) : 0, to = hasStop != 0 ? Clip(stop, n) : n;
            var wanted = Element(value);
            for (int i = from; i < to; i++)
                if (EqualityComparer<T>.Default.Equals(list[i], wanted))
                    return i;
            return -1;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    // ---- lists that grow and shrink (the list's collection and list tables)

    public const int Empty = 1;

    public static int Add(IntPtr self, IntPtr value)
    {
        try
        {
            Editor(self).Add(Element(value));
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>1 when the value was found and removed, 0 when it was not there.</summary>
    public static int Remove(IntPtr self, IntPtr value)
    {
        try
        {
            return Editor(self).Remove(Element(value)) ? 1 : 0;
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
            Editor(self).Clear();
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>Python's list.insert: a negative index counts from the end, and both ends clip.</summary>
    public static int Insert(IntPtr self, int i, IntPtr value)
    {
        try
        {
            var list = Editor(self);
            int n = list.Count;
            list.Insert(i < 0 ? Math.Max(0, i + n) : Math.Min(i, n), Element(value));
            return 0;
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
            var list = Editor(self);
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

    /// <summary>Item with the removed element (the last one when no index is given), Empty, or OutOfRange.</summary>
    public static int Pop(IntPtr self, int index, int hasIndex, IntPtr* item, int* itemIndex)
    {
        try
        {
            var list = Editor(self);
            int n = list.Count;
            if (n == 0)
                return Empty;
            int i = hasIndex == 0 ? n - 1 : index < 0 ? index + n : index;
            if ((uint)i >= (uint)n)
                return OutOfRange;
            var value = list[i];
            list.RemoveAt(i);
            Hand(value, item, itemIndex);
            return Item;
        }
        catch (Exception e)
        {
            return Fail(e);
        }
    }

    /// <summary>1 when the elements of a managed enumerable of T were appended; 0 declines.</summary>
    public static int SqInplaceConcat(IntPtr self, IntPtr items)
    {
        try
        {
            if (Handles.Target(items) is not IEnumerable<T> source)
                return 0;
            var list = Editor(self);
            foreach (var x in source.ToArray())  // the source may be the list itself
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
            var list = Editor(self);
            var items = list.ToArray();
            if (count < 1)
                list.Clear();
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

    /// <summary>Removes the n elements at start, start+step, ...; the caller orders them from the highest index down.</summary>
    public static int MpRemoveItems(IntPtr self, int start, int count, int step)
    {
        try
        {
            var list = Editor(self);
            for (int k = 0; k < count; k++)
                list.RemoveAt(start + k * step);
            return 0;
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
            var list = Writer(self);
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
            var list = Writer(self);
            var sorted = list.ToArray();
            var comparer = Comparer<T>.Default;
            var order = sorted.Select((v, i) => (v, i)).ToArray();
            Array.Sort(order, (a, b) =>
            {
                int c = comparer.Compare(a.v, b.v);
                return c != 0 ? (reverse != 0 ? -c : c) : a.i.CompareTo(b.i);
            });
            for (int i = 0; i < order.Length; i++)
                list[i] = order[i].v;
            return 0;
        }
        catch (Exception e)
        {
            return Fail(e is InvalidOperationException { InnerException: { } inner } ? inner : e);
        }
    }
}
