namespace Quorix.WrpGen.Interop;

/// <summary>
/// Values of parameters typed System.Object. The native side only classifies the Python value
/// (its tag) and lends the object for the call; the managed value is read here per tag through
/// the element readers. Results go back the other way: known value types as Python objects,
/// anything else as a handle the native side wraps.
/// </summary>
public static unsafe class Variants
{
    // Tags of the native classification; 0 and 1 carry a handle (object, structure).
    public const int TagStr = 2, TagBytes = 3, TagBool = 4, TagInt = 5, TagFloat = 6, TagDecimal = 7, TagDecimalTuple = 8,
        TagDateTime = 9, TagDate = 10, TagTime = 11, TagTimeDelta = 12, TagUuid = 13, TagList = 14, TagTuple = 15, TagPyRef = 16;

    // Tables and slots of the element readers and the collection callbacks.
    private const int ReadTable = CallbackSlots.Tables.Read, BufferTable = CallbackSlots.Tables.Buffer,
        UcolTable = CallbackSlots.Tables.Ucol, OlistTable = CallbackSlots.Tables.Olist, OseqTable = CallbackSlots.Tables.Oseq;
    private const int ReadString = CallbackSlots.Read.String, ReadBool = CallbackSlots.Read.Bool, ReadLong = CallbackSlots.Read.Long,
        ReadDouble = CallbackSlots.Read.Double, ReadDecimal = CallbackSlots.Read.Decimal,
        ReadDecimalTuple = CallbackSlots.Read.DecimalTuple, ReadDateTime = CallbackSlots.Read.DateTime,
        ReadDate = CallbackSlots.Read.Date, ReadTime = CallbackSlots.Read.Time, ReadTimeDelta = CallbackSlots.Read.TimeDelta,
        ReadGuid = CallbackSlots.Read.Guid;
    private const int BufferSize = CallbackSlots.Buffer.Size, BufferCreate = CallbackSlots.Buffer.Create,
        BufferRead = CallbackSlots.Buffer.Read, BufferRelease = CallbackSlots.Buffer.Release;
    private const int ListLength = CallbackSlots.Ucol.ListLength, SequenceLength = CallbackSlots.Ucol.SequenceLength,
        ItemAt = CallbackSlots.Olist.GetItem;

    private static IntPtr Slot(int table, int slot) => ((IntPtr*)PyRuntime.StaticCallbacks[table])[slot];

    /// <summary>The managed value a classified Python value stands for; a pending Python error throws <see cref="PyErrorPendingException"/>.</summary>
    public static object? ToManaged(VariantArg* arg) => ToManaged(arg->Tag, arg->Value);

    /// <summary>The managed value of a Python value lent with its classification tag.</summary>
    public static object? ToManaged(int tag, IntPtr obj)
    {
        switch (tag)
        {
            case VariantArg.TagHandle:
            case VariantArg.TagStructHandle:
                return Handles.Target(obj);
            case TagStr:
            {
                PyStringArg text;
                Check(((delegate* unmanaged<IntPtr, PyStringArg*, int>)Slot(ReadTable, ReadString))(obj, &text));
                return text.ToManaged();
            }
            case TagBytes:
                return ReadBytes(obj);
            case TagBool:
            {
                int value = ((delegate* unmanaged<IntPtr, int>)Slot(ReadTable, ReadBool))(obj);
                if (value < 0)
                    throw new PyErrorPendingException();
                return value != 0;
            }
            case TagInt:
            {
                long value;
                int width = ((delegate* unmanaged<IntPtr, long*, int>)Slot(ReadTable, ReadLong))(obj, &value);
                return width switch
                {
                    1 => (int)value,
                    2 => value,
                    3 => (ulong)value,
                    _ => throw new PyErrorPendingException(),
                };
            }
            case TagFloat:
            {
                double value;
                Check(((delegate* unmanaged<IntPtr, double*, int>)Slot(ReadTable, ReadDouble))(obj, &value));
                return value;
            }
            case TagDecimal:
            case TagDecimalTuple:
            {
                PyDecimalArg value;
                Check(((delegate* unmanaged<IntPtr, PyDecimalArg*, int>)Slot(ReadTable, tag == TagDecimal ? ReadDecimal : ReadDecimalTuple))(obj, &value));
                return PyValues.ToDecimal(&value);
            }
            case TagDateTime:
            case TagDate:
            {
                PyDateTimeArg value = default;
                Check(((delegate* unmanaged<IntPtr, PyDateTimeArg*, int>)Slot(ReadTable, tag == TagDate ? ReadDate : ReadDateTime))(obj, &value));
                return PyValues.ToDateTime(&value);
            }
            case TagTime:
            {
                // a time of day: the record's ticks lie within one day
                PyDateTimeArg value = default;
                Check(((delegate* unmanaged<IntPtr, PyDateTimeArg*, int>)Slot(ReadTable, ReadTime))(obj, &value));
                return new TimeSpan(value.Ticks);
            }
            case TagTimeDelta:
            {
                long ticks;
                Check(((delegate* unmanaged<IntPtr, long*, int>)Slot(ReadTable, ReadTimeDelta))(obj, &ticks));
                return new TimeSpan(ticks);
            }
            case TagUuid:
            {
                PyGuidArg value;
                Check(((delegate* unmanaged<IntPtr, PyGuidArg*, int>)Slot(ReadTable, ReadGuid))(obj, &value));
                return PyValues.ToGuid(&value);
            }
            case TagList:
                return new List<object?>(ReadItems(obj, ListLength, OlistTable));
            case TagTuple:
                return ReadItems(obj, SequenceLength, OseqTable);
            case TagPyRef:
                return new PyObjectRef(obj);
            default:
                throw new ArgumentException($"unknown variant kind {tag}");
        }
    }

    // The readers answer 0 with a Python error pending; a positive answer may carry more (naive 1, aware 2).
    private static void Check(int status)
    {
        if (status <= 0)
            throw new PyErrorPendingException();
    }

    private static byte[] ReadBytes(IntPtr obj)
    {
        int size = ((delegate* unmanaged<int>)Slot(BufferTable, BufferSize))();
        byte* view = stackalloc byte[size];
        ((delegate* unmanaged<byte*, void>)Slot(BufferTable, BufferCreate))(view);
        PyBytesArg bytes = default;
        bytes.View = (IntPtr)view;
        try
        {
            Check(((delegate* unmanaged<IntPtr, PyBytesArg*, int>)Slot(BufferTable, BufferRead))(obj, &bytes));
            return bytes.AsSpan().ToArray();
        }
        finally
        {
            ((delegate* unmanaged<byte*, void>)Slot(BufferTable, BufferRelease))(view);
        }
    }

    // Items of a list (or any sequence) converted in order; each item the callback lends is released after use.
    private static object?[] ReadItems(IntPtr obj, int lengthSlot, int itemTable)
    {
        int count = ((delegate* unmanaged<IntPtr, int>)Slot(UcolTable, lengthSlot))(obj);
        if (count < 0)
            throw new PyErrorPendingException();
        var items = new object?[count];
        var itemAt = (delegate* unmanaged<IntPtr, int, IntPtr*, VariantArg*, int>)Slot(itemTable, ItemAt);
        for (int i = 0; i < count; i++)
        {
            IntPtr item = IntPtr.Zero;
            VariantArg variant = default;
            if (itemAt(obj, i, &item, &variant) != 0)
            {
                PyRuntime.DecRef(item);
                throw new PyErrorPendingException();
            }
            try
            {
                items[i] = ToManaged(variant.Tag, variant.Value);
            }
            finally
            {
                PyRuntime.DecRef(item);
            }
        }
        return items;
    }

    /// <summary>
    /// Fills a result record: values Python has a type for become that Python object (tag 2, a
    /// new reference, zero with an error pending), anything else a handle (tag 0, or 1 for a structure).
    /// </summary>
    public static void SetResult(VariantArg* result, object? value)
    {
        IntPtr py = value switch
        {
            null => StubValues.None(),
            bool b => StubValues.PyBool(b),
            int i => StubValues.PyInt(i),
            short s => StubValues.PyInt(s),
            sbyte s => StubValues.PyInt(s),
            byte b => StubValues.PyInt(b),
            ushort u => StubValues.PyInt(u),
            uint u => StubValues.PyInt((long)u),
            long l => StubValues.PyInt(l),
            ulong u => StubValues.PyInt(u),
            float f => StubValues.PyFloat(f),
            double d => StubValues.PyFloat(d),
            char c => StubValues.PyChar(c),
            string s => PyRuntime.NewPyString(s),
            byte[] bytes => PyRuntime.NewPyBytes(bytes),
            decimal d => PyValues.PyDecimal(d),
            DateTime d => PyValues.PyDateTime(d),
            DateTimeOffset d => PyValues.PyDateTime(d),
            TimeSpan t => PyValues.PyTimeDelta(t),
            Guid g => PyValues.PyUuid(g),
            Version v => PyValues.PyVersion(v),
            // arrays and lists are handed over, not shared: Python gets a list of their items' values
            System.Collections.IList list when IsCopiedList(list) => PySequences.ListOf(list),
            // what came from Python goes back as itself
            PyObjectRef held => NewRef(held.PyObject),
            PyTwin twin => NewRef(twin.PyObject),
            _ => IntPtr.Zero,
        };
        if (py != IntPtr.Zero || value is null || IsPythonValue(value))
        {
            StubValues.SetPyValue(result, py);
            return;
        }
        result->Tag = value.GetType().IsValueType ? VariantArg.TagStructHandle : VariantArg.TagHandle;
        result->Value = Handles.New(value);
    }

    /// <summary>A managed value as a new Python object: its Python kind, or a wrapper; zero with an error pending.</summary>
    public static IntPtr ToPython(object? value)
    {
        VariantArg record = default;
        SetResult(&record, value);
        if (record.Tag == VariantArg.TagPyObject)
            return record.Value;
        return ((delegate* unmanaged<VariantArg*, IntPtr>)Slot(WriteTable, WriteObject))(&record);
    }

    private const int WriteTable = CallbackSlots.Tables.Write, WriteObject = CallbackSlots.Write.Object;

    private static bool IsPythonValue(object value) => value is bool or int or short or sbyte or byte or ushort or uint
        or long or ulong or float or double or char or string or byte[] or decimal or DateTime or DateTimeOffset
        or TimeSpan or Guid or Version or PyObjectRef or PyTwin || (value is System.Collections.IList list && IsCopiedList(list));

    private static IntPtr NewRef(IntPtr pyObject)
    {
        PyRuntime.IncRef(pyObject);
        return pyObject;
    }

    // One-dimensional arrays and List<T>: plain containers with nothing of their own to call.
    // Collections of the library are classes with members and stay wrapped.
    private static bool IsCopiedList(System.Collections.IList list)
    {
        var type = list.GetType();
        return type.IsSZArray || (type.IsGenericType && type.GetGenericTypeDefinition() == typeof(List<>));
    }
}
