using System.Collections;
using System.Runtime.InteropServices;

namespace Quorix.WrpGen.Interop;

/// <summary>The stubs of the built-in kind of disposable objects (their disposal is the object host's); the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiDisposable
{
    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<IDisposable>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<IDisposable>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<IDisposable>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<IDisposable>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of enumerators; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiEnumerator
{
    [UnmanagedCallersOnly]
    public static int MoveNext(IntPtr self, IntPtr* item) => UntypedStubs.MoveNext(self, item);

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<IEnumerator>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<IEnumerator>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<IEnumerator>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<IEnumerator>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of enumerables; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiEnumerable
{
#if !QRX_OMIT_ENUMERABLE_GET_ENUMERATOR  // the broken-table fixture leaves it out
    [UnmanagedCallersOnly]
    public static int GetEnumerator(IntPtr self, VariantArg* result) => UntypedStubs.GetEnumerator(self, result);
#endif

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<IEnumerable>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<IEnumerable>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<IEnumerable>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<IEnumerable>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of collections; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiCntCollection
{
    [UnmanagedCallersOnly]
    public static int SqLength(IntPtr self) => UntypedStubs.SqLength(self);

    [UnmanagedCallersOnly]
    public static int SqContains(IntPtr self, VariantArg* value) => UntypedStubs.SqContains(self, value);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* value) => UntypedStubs.CountOf(self, value);

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<ICollection>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<ICollection>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<ICollection>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<ICollection>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of lists (and collection bases, which are lists); the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiCntList
{
    [UnmanagedCallersOnly]
    public static int SqGetItem(IntPtr self, int index, IntPtr* item) => UntypedStubs.SqGetItem(self, index, item);

    [UnmanagedCallersOnly]
    public static IntPtr SqGetItemNoCheck(IntPtr self, int index) => UntypedStubs.SqGetItemNoCheck(self, index);

    [UnmanagedCallersOnly]
    public static int SqSetItem(IntPtr self, int index, VariantArg* value) => UntypedStubs.SqSetItem(self, index, value);

    [UnmanagedCallersOnly]
    public static int SqSetItemNoCheck(IntPtr self, int index, VariantArg* value) => UntypedStubs.SqSetItemNoCheck(self, index, value);

    [UnmanagedCallersOnly]
    public static int Add(IntPtr self, VariantArg* value) => UntypedStubs.Add(self, value);

    [UnmanagedCallersOnly]
    public static int Insert(IntPtr self, int index, VariantArg* value) => UntypedStubs.Insert(self, index, value);

    [UnmanagedCallersOnly]
    public static int Remove(IntPtr self, VariantArg* value) => UntypedStubs.Remove(self, value);

    [UnmanagedCallersOnly]
    public static int RemoveAt(IntPtr self, int index) => UntypedStubs.RemoveAt(self, index);

    [UnmanagedCallersOnly]
    public static int Pop(IntPtr self, int index, int hasIndex, IntPtr* item) => UntypedStubs.Pop(self, index, hasIndex, item);

    [UnmanagedCallersOnly]
    public static int Clear(IntPtr self) => UntypedStubs.Clear(self);

    [UnmanagedCallersOnly]
    public static int SqInplaceConcat(IntPtr self, VariantArg* items) => UntypedStubs.SqInplaceConcat(self, items);

    [UnmanagedCallersOnly]
    public static int SqInplaceRepeat(IntPtr self, int count) => UntypedStubs.SqInplaceRepeat(self, count);

    [UnmanagedCallersOnly]
    public static int MpSetItems(IntPtr self, VariantArg* items, int start, int count, int step) => UntypedStubs.MpSetItems(self, items, start, count, step);

    [UnmanagedCallersOnly]
    public static int MpRemoveItems(IntPtr self, int start, int count, int step) => UntypedStubs.MpRemoveItems(self, start, count, step);

    [UnmanagedCallersOnly]
    public static int Reverse(IntPtr self) => UntypedStubs.Reverse(self);

    [UnmanagedCallersOnly]
    public static int Sort(IntPtr self, int reverse) => UntypedStubs.Sort(self, reverse);

    [UnmanagedCallersOnly]
    public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value) => UntypedStubs.IndexBy(self, hasStart, start, hasStop, stop, value);

    [UnmanagedCallersOnly]
    public static int SqContains(IntPtr self, VariantArg* value) => UntypedStubs.SqContains(self, value);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* value) => UntypedStubs.CountOf(self, value);

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<IList>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<IList>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<IList>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<IList>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of arrays; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiArray
{
    [UnmanagedCallersOnly]
    public static int SqLength(IntPtr self) => UntypedStubs.SqLength(self);

    [UnmanagedCallersOnly]
    public static int SqContains(IntPtr self, VariantArg* value) => UntypedStubs.SqContains(self, value);

    [UnmanagedCallersOnly]
    public static int SqGetItem(IntPtr self, int index, IntPtr* item) => UntypedStubs.SqGetItem(self, index, item);

    [UnmanagedCallersOnly]
    public static IntPtr SqGetItemNoCheck(IntPtr self, int index) => UntypedStubs.SqGetItemNoCheck(self, index);

    [UnmanagedCallersOnly]
    public static int SqSetItem(IntPtr self, int index, VariantArg* value) => UntypedStubs.SqSetItem(self, index, value);

#if !QRX_OMIT_ARRAY_SET_ITEM_NO_CHEK  // the broken-table fixture leaves it out
    [UnmanagedCallersOnly]
    public static int SqSetItemNoChek(IntPtr self, int index, VariantArg* value) => UntypedStubs.SqSetItemNoCheck(self, index, value);
#endif

    [UnmanagedCallersOnly]
    public static int MpSetItems(IntPtr self, VariantArg* items, int start, int count, int step) => UntypedStubs.MpSetItems(self, items, start, count, step);

    [UnmanagedCallersOnly]
    public static int Reverse(IntPtr self) => UntypedStubs.Reverse(self);

    [UnmanagedCallersOnly]
    public static int Sort(IntPtr self, int reverse) => UntypedStubs.Sort(self, reverse);

    [UnmanagedCallersOnly]
    public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value) => UntypedStubs.IndexBy(self, hasStart, start, hasStop, stop, value);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* value) => UntypedStubs.CountOf(self, value);

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<Array>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<Array>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<Array>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_ReInterpretObj(IntPtr obj, IntPtr* result) => BuiltinStubs<Array>.ReInterpretObj(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<Array>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of array lists; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiArrayList
{
    [UnmanagedCallersOnly]
    public static int SqLength(IntPtr self) => UntypedStubs.SqLength(self);

    [UnmanagedCallersOnly]
    public static int Add(IntPtr self, VariantArg* value) => UntypedStubs.Add(self, value);

    [UnmanagedCallersOnly]
    public static int Remove(IntPtr self, VariantArg* value) => UntypedStubs.Remove(self, value);

    [UnmanagedCallersOnly]
    public static int Clear(IntPtr self) => UntypedStubs.Clear(self);

    [UnmanagedCallersOnly]
    public static int SqContains(IntPtr self, VariantArg* value) => UntypedStubs.SqContains(self, value);

    [UnmanagedCallersOnly]
    public static int SqGetItem(IntPtr self, int index, IntPtr* item) => UntypedStubs.SqGetItem(self, index, item);

    [UnmanagedCallersOnly]
    public static IntPtr SqGetItemNoCheck(IntPtr self, int index) => UntypedStubs.SqGetItemNoCheck(self, index);

    [UnmanagedCallersOnly]
    public static int SqSetItem(IntPtr self, int index, VariantArg* value) => UntypedStubs.SqSetItem(self, index, value);

    [UnmanagedCallersOnly]
    public static int SqSetItemNoChek(IntPtr self, int index, VariantArg* value) => UntypedStubs.SqSetItemNoCheck(self, index, value);

    [UnmanagedCallersOnly]
    public static int Insert(IntPtr self, int index, VariantArg* value) => UntypedStubs.Insert(self, index, value);

    [UnmanagedCallersOnly]
    public static int RemoveAt(IntPtr self, int index) => UntypedStubs.RemoveAt(self, index);

    [UnmanagedCallersOnly]
    public static int Pop(IntPtr self, int index, int hasIndex, IntPtr* item) => UntypedStubs.Pop(self, index, hasIndex, item);

    [UnmanagedCallersOnly]
    public static int SqInplaceConcat(IntPtr self, VariantArg* items) => UntypedStubs.SqInplaceConcat(self, items);

    [UnmanagedCallersOnly]
    public static int SqInplaceRepeat(IntPtr self, int count) => UntypedStubs.SqInplaceRepeat(self, count);

    [UnmanagedCallersOnly]
    public static int MpSetItems(IntPtr self, VariantArg* items, int start, int count, int step) => UntypedStubs.MpSetItems(self, items, start, count, step);

    [UnmanagedCallersOnly]
    public static int MpRemoveItems(IntPtr self, int start, int count, int step) => UntypedStubs.MpRemoveItems(self, start, count, step);

    [UnmanagedCallersOnly]
    public static int Reverse(IntPtr self) => UntypedStubs.Reverse(self);

    [UnmanagedCallersOnly]
    public static int Sort(IntPtr self, int reverse) => UntypedStubs.Sort(self, reverse);

    [UnmanagedCallersOnly]
    public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value) => UntypedStubs.IndexBy(self, hasStart, start, hasStop, stop, value);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* value) => UntypedStubs.CountOf(self, value);

    [UnmanagedCallersOnly]
    public static int EnsureCapacity(IntPtr self, int more) => UntypedStubs.EnsureCapacity(self, more);

    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<ArrayList>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<ArrayList>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<ArrayList>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_ReInterpretObj(IntPtr obj, IntPtr* result) => BuiltinStubs<ArrayList>.ReInterpretObj(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<ArrayList>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of collection bases; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiCollectionBase
{
    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<CollectionBase>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<CollectionBase>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<CollectionBase>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_ReInterpretObj(IntPtr obj, IntPtr* result) => BuiltinStubs<CollectionBase>.ReInterpretObj(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<CollectionBase>.CastAs(obj, result);
}

/// <summary>The stubs of the built-in kind of read-only collection bases; the list is builtins/builtin_tables.def.</summary>
public static unsafe class SiApiReadOnlyCollectionBase
{
    [UnmanagedCallersOnly]
    public static int btp_IsAssignable(IntPtr obj) => BuiltinStubs<ReadOnlyCollectionBase>.IsAssignable(obj);

    [UnmanagedCallersOnly]
    public static void btp_TypeOf(IntPtr* result) => BuiltinStubs<ReadOnlyCollectionBase>.TypeOf(result);

    [UnmanagedCallersOnly]
    public static int btp_CastTo(IntPtr obj, IntPtr* result) => BuiltinStubs<ReadOnlyCollectionBase>.CastTo(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_ReInterpretObj(IntPtr obj, IntPtr* result) => BuiltinStubs<ReadOnlyCollectionBase>.ReInterpretObj(obj, result);

    [UnmanagedCallersOnly]
    public static int btp_CastAs(IntPtr obj, IntPtr* result) => BuiltinStubs<ReadOnlyCollectionBase>.CastAs(obj, result);
}
