using System.Collections;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// Python lists, sequences and iterables behind managed collection parameters. The Python
/// object is lent for one call: the adapter drives it through the collection callbacks while
/// the call runs and refuses any use after it returned.
/// </summary>
public static unsafe class PyCollections
{
    // How the native converter lent the argument: a list, another sized sequence, any iterable.
    public const int TagList = 14, TagSequence = 15, TagIterable = VariantArg.TagPyObject;

    /// <summary>The enumerable an argument designates: a managed one by handle (null for none) or an adapter, also handed out to end with the call.</summary>
    public static IEnumerable? EnumerableOf(VariantArg* arg, out PyBorrowed? owned)
    {
        owned = arg->Tag switch
        {
            TagList => new PyObjectList(arg->Value, readOnly: false),
            TagSequence => new PyObjectList(arg->Value, readOnly: true),
            TagIterable => new PyIterable(arg->Value),
            _ => null,
        };
        return owned as IEnumerable ?? (IEnumerable?)Handles.FromVariant(*arg);
    }

    /// <summary>The list an argument designates; a Python sequence other than a list is a read-only list.</summary>
    public static IList? ListOf(VariantArg* arg, out PyBorrowed? owned) =>
        EnumerableOf(arg, out owned) switch
        {
            null => null,
            IList list => list,
            var other => throw new ArgumentException($"a {other.GetType().Name} is not a list"),
        };

    public static ICollection? CollectionOf(VariantArg* arg, out PyBorrowed? owned) =>
        EnumerableOf(arg, out owned) switch
        {
            null => null,
            ICollection collection => collection,
            var other => throw new ArgumentException($"a {other.GetType().Name} is not a collection"),
        };

    /// <summary>An array list: a managed one by handle, or an adapter over the list a Python object is lent as.</summary>
    public static ArrayList? ArrayListOf(VariantArg* arg, out PyBorrowed? owned) =>
        ListOf(arg, out owned) switch
        {
            null => null,
            ArrayList list => list,
            var other => ArrayList.Adapter(other),
        };

    /// <summary>A managed object of a kind no Python object can stand for (an enumerator, a disposable, a collection base).</summary>
    public static T? HandleOf<T>(VariantArg* arg, out PyBorrowed? owned) where T : class
    {
        owned = null;
        return arg->Tag is VariantArg.TagHandle or VariantArg.TagStructHandle
            ? (T?)Handles.Target(arg->Value)
            : throw new ArgumentException($"a Python object cannot stand for a {typeof(T).Name}");
    }

    internal static IntPtr Slot(int table, int slot) => ((IntPtr*)PyRuntime.StaticCallbacks[table])[slot];
}

/// <summary>A Python object lent to managed code for the length of one call.</summary>
public abstract class PyBorrowed
{
    private protected readonly IntPtr obj;
    private readonly int thread = Environment.CurrentManagedThreadId;
    private bool ended;

    private protected PyBorrowed(IntPtr obj) => this.obj = obj;

    /// <summary>The call that lent the object returned: later use would reach a Python object no longer lent.</summary>
    public void EndCall() => ended = true;

    private protected void Enter()
    {
        if (ended)
            throw new ObjectDisposedException(GetType().Name, "the Python object was lent for one call only");
        if (Environment.CurrentManagedThreadId != thread)
            throw new InvalidOperationException("a Python object can only be used on the thread that passed it");
    }

    // A failure the callback reported: the Python error stays pending for the caller to see.
    private protected static Exception Pending() => new PyErrorPendingException();
}

/// <summary>A Python iterable as a managed enumerable: each enumeration asks iter() afresh.</summary>
public sealed unsafe class PyIterable : PyBorrowed, IEnumerable
{
    private const int UcolTable = CallbackSlots.Tables.Ucol, IterTable = CallbackSlots.Tables.Iter,
        GetEnumerator_ = CallbackSlots.Ucol.GetEnumerator, Next_ = CallbackSlots.Iter.Next;

    internal PyIterable(IntPtr obj) : base(obj) { }

    public IEnumerator GetEnumerator()
    {
        Enter();
        IntPtr iterator;
        if (((delegate* unmanaged<IntPtr, IntPtr*, int>)PyCollections.Slot(UcolTable, GetEnumerator_))(obj, &iterator) < 0)
            throw Pending();
        return Walk(iterator);
    }

    private IEnumerator Walk(IntPtr iterator)
    {
        try
        {
            while (Next(iterator, out object? value))
                yield return value;
        }
        finally
        {
            PyRuntime.DecRef(iterator);
        }
    }

    // The next item converted to its managed value: false at the end.
    private bool Next(IntPtr iterator, out object? value)
    {
        Enter();
        IntPtr item = IntPtr.Zero;
        VariantArg variant = default;
        int status = ((delegate* unmanaged<IntPtr, IntPtr*, VariantArg*, int>)PyCollections.Slot(IterTable, Next_))(iterator, &item, &variant);
        value = null;
        if (status == 1)
            return false;
        if (status != 0)
            throw Pending();
        try
        {
            value = Variants.ToManaged(variant.Tag, variant.Value);
            return true;
        }
        finally
        {
            PyRuntime.DecRef(item);
        }
    }
}

/// <summary>
/// A Python list (or, read-only, any sized sequence) as a managed list. Items cross as
/// variants both ways: Python values become their managed kinds, managed values Python ones.
/// </summary>
public sealed unsafe class PyObjectList : PyBorrowed, IList
{
    private const int UcolTable = CallbackSlots.Tables.Ucol, OlistTable = CallbackSlots.Tables.Olist,
        OseqTable = CallbackSlots.Tables.Oseq;
    private const int ListLength = CallbackSlots.Ucol.ListLength, RemoveAt_ = CallbackSlots.Ucol.RemoveAt,
        Clear_ = CallbackSlots.Ucol.Clear, SequenceLength = CallbackSlots.Ucol.SequenceLength;
    private const int Get = CallbackSlots.Olist.GetItem, Set = CallbackSlots.Olist.SetItem, Add_ = CallbackSlots.Olist.Add,
        Insert_ = CallbackSlots.Olist.Insert, Remove_ = CallbackSlots.Olist.Remove, Contains_ = CallbackSlots.Olist.Contains,
        IndexOf_ = CallbackSlots.Olist.IndexOf;
    private const int SeqGet = CallbackSlots.Oseq.GetItem, SeqContains = CallbackSlots.Oseq.Contains,
        SeqIndexOf = CallbackSlots.Oseq.IndexOf;

    private readonly bool readOnly;

    internal PyObjectList(IntPtr obj, bool readOnly) : base(obj) => this.readOnly = readOnly;

    public bool IsReadOnly => readOnly;
    public bool IsFixedSize => readOnly;
    public bool IsSynchronized => false;
    public object SyncRoot => this;

    public int Count
    {
        get
        {
            Enter();
            int n = ((delegate* unmanaged<IntPtr, int>)PyCollections.Slot(UcolTable, readOnly ? SequenceLength : ListLength))(obj);
            return n >= 0 ? n : throw Pending();
        }
    }

    public object? this[int index]
    {
        get
        {
            Enter();
            IntPtr item = IntPtr.Zero;
            VariantArg variant = default;
            var get = (delegate* unmanaged<IntPtr, int, IntPtr*, VariantArg*, int>)PyCollections.Slot(readOnly ? OseqTable : OlistTable, readOnly ? SeqGet : Get);
            int status = get(obj, index, &item, &variant);
            if (status == -2)
                throw OutOfRange(index);
            if (status != 0)
                throw Pending();
            try
            {
                return Variants.ToManaged(variant.Tag, variant.Value);
            }
            finally
            {
                PyRuntime.DecRef(item);
            }
        }
        set
        {
            Writable();
            IntPtr item = Python(value);
            // the list takes the item's reference whatever the outcome
            int status = ((delegate* unmanaged<IntPtr, int, IntPtr, int>)PyCollections.Slot(OlistTable, Set))(obj, index, item);
            if (status == -2)
                throw OutOfRange(index);
            if (status != 0)
                throw Pending();
        }
    }

    public int Add(object? value)
    {
        Writable();
        IntPtr item = Python(value);
        try
        {
            int length = ((delegate* unmanaged<IntPtr, IntPtr, int>)PyCollections.Slot(OlistTable, Add_))(obj, item);
            return length >= 0 ? length - 1 : throw Pending();
        }
        finally
        {
            PyRuntime.DecRef(item);
        }
    }

    public void Insert(int index, object? value)
    {
        Writable();
        IntPtr item = Python(value);
        try
        {
            int status = ((delegate* unmanaged<IntPtr, int, IntPtr, int>)PyCollections.Slot(OlistTable, Insert_))(obj, index, item);
            if (status != 0)
                throw Pending();
        }
        finally
        {
            PyRuntime.DecRef(item);
        }
    }

    public void Remove(object? value)
    {
        // IList.Remove of an absent item does nothing: ask first, as list.remove() would raise
        if (!Contains(value))
            return;
        Writable();
        IntPtr item = Python(value);
        try
        {
            if (((delegate* unmanaged<IntPtr, IntPtr, int>)PyCollections.Slot(OlistTable, Remove_))(obj, item) != 0)
                throw Pending();
        }
        finally
        {
            PyRuntime.DecRef(item);
        }
    }

    public void RemoveAt(int index)
    {
        Writable();
        int status = ((delegate* unmanaged<IntPtr, int, int>)PyCollections.Slot(UcolTable, RemoveAt_))(obj, index);
        if (status == -2)
            throw OutOfRange(index);
        if (status != 0)
            throw Pending();
    }

    public void Clear()
    {
        Writable();
        if (((delegate* unmanaged<IntPtr, int>)PyCollections.Slot(UcolTable, Clear_))(obj) != 0)
            throw Pending();
    }

    public bool Contains(object? value)
    {
        Enter();
        IntPtr item = Python(value);
        try
        {
            int found = ((delegate* unmanaged<IntPtr, IntPtr, int>)PyCollections.Slot(readOnly ? OseqTable : OlistTable, readOnly ? SeqContains : Contains_))(obj, item);
            return found >= 0 ? found == 1 : throw Pending();
        }
        finally
        {
            PyRuntime.DecRef(item);
        }
    }

    public int IndexOf(object? value)
    {
        Enter();
        IntPtr item = Python(value);
        try
        {
            int index = ((delegate* unmanaged<IntPtr, IntPtr, int>)PyCollections.Slot(readOnly ? OseqTable : OlistTable, readOnly ? SeqIndexOf : IndexOf_))(obj, item);
            return index >= -1 ? index : throw Pending();
        }
        finally
        {
            PyRuntime.DecRef(item);
        }
    }

    public void CopyTo(Array array, int index)
    {
        ArgumentNullException.ThrowIfNull(array);
        int count = Count;
        for (int i = 0; i < count; i++)
            array.SetValue(this[i], index + i);
    }

    public IEnumerator GetEnumerator()
    {
        int count = Count;
        for (int i = 0; i < count; i++)
            yield return this[i];
    }

    // The IndexError the callback left becomes the managed range error's text.
    private static ArgumentOutOfRangeException OutOfRange(int index) =>
        new(nameof(index), index, PyRuntime.CatchAndClearPythonError()?.TrimEnd());

    private void Writable()
    {
        Enter();
        if (readOnly)
            throw new NotSupportedException("a Python sequence that is not a list is read-only");
    }

    private static IntPtr Python(object? value)
    {
        IntPtr item = Variants.ToPython(value);
        return item != IntPtr.Zero ? item : throw new PyErrorPendingException();
    }
}
