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
    public static int MoveNext(IntPtr self, IntPtr* a1) => UntypedStubs.MoveNext(self, a1);

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
    public static int GetEnumerator(IntPtr self, VariantArg* a1) => UntypedStubs.GetEnumerator(self, a1);
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
    public static int SqContains(IntPtr self, VariantArg* a1) => UntypedStubs.SqContains(self, a1);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* a1) => UntypedStubs.CountOf(self, a1);

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
    public static int SqGetItem(IntPtr self, int a1, IntPtr* a2) => UntypedStubs.SqGetItem(self, a1, a2);

    [UnmanagedCallersOnly]
    public static IntPtr SqGetItemNoCheck(IntPtr self, int a1) => UntypedStubs.SqGetItemNoCheck(self, a1);

    [UnmanagedCallersOnly]
    public static int SqSetItem(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.SqSetItem(self, a1, a2);

    [UnmanagedCallersOnly]
    public static int SqSetItemNoCheck(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.SqSetItemNoCheck(self, a1, a2);

    [UnmanagedCallersOnly]
    public static int Add(IntPtr self, VariantArg* a1) => UntypedStubs.Add(self, a1);

    [UnmanagedCallersOnly]
    public static int Insert(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.Insert(self, a1, a2);

    [UnmanagedCallersOnly]
    public static int Remove(IntPtr self, VariantArg* a1) => UntypedStubs.Remove(self, a1);

    [UnmanagedCallersOnly]
    public static int RemoveAt(IntPtr self, int a1) => UntypedStubs.RemoveAt(self, a1);

    [UnmanagedCallersOnly]
    public static int Pop(IntPtr self, int a1, int a2, IntPtr* a3) => UntypedStubs.Pop(self, a1, a2, a3);

    [UnmanagedCallersOnly]
    public static int Clear(IntPtr self) => UntypedStubs.Clear(self);

    [UnmanagedCallersOnly]
    public static int SqInplaceConcat(IntPtr self, VariantArg* a1) => UntypedStubs.SqInplaceConcat(self, a1);

    [UnmanagedCallersOnly]
    public static int SqInplaceRepeat(IntPtr self, int a1) => UntypedStubs.SqInplaceRepeat(self, a1);

    [UnmanagedCallersOnly]
    public static int MpSetItems(IntPtr self, VariantArg* a1, int a2, int a3, int a4) => UntypedStubs.MpSetItems(self, a1, a2, a3, a4);

    [UnmanagedCallersOnly]
    public static int MpRemoveItems(IntPtr self, int a1, int a2, int a3) => UntypedStubs.MpRemoveItems(self, a1, a2, a3);

    [UnmanagedCallersOnly]
    public static int Reverse(IntPtr self) => UntypedStubs.Reverse(self);

    [UnmanagedCallersOnly]
    public static int Sort(IntPtr self, int a1) => UntypedStubs.Sort(self, a1);

    [UnmanagedCallersOnly]
    public static int IndexBy(IntPtr self, int a1, int a2, int a3, int a4, VariantArg* a5) => UntypedStubs.IndexBy(self, a1, a2, a3, a4, a5);

    [UnmanagedCallersOnly]
    public static int SqContains(IntPtr self, VariantArg* a1) => UntypedStubs.SqContains(self, a1);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* a1) => UntypedStubs.CountOf(self, a1);

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
    public static int SqContains(IntPtr self, VariantArg* a1) => UntypedStubs.SqContains(self, a1);

    [UnmanagedCallersOnly]
    public static int SqGetItem(IntPtr self, int a1, IntPtr* a2) => UntypedStubs.SqGetItem(self, a1, a2);

    [UnmanagedCallersOnly]
    public static IntPtr SqGetItemNoCheck(IntPtr self, int a1) => UntypedStubs.SqGetItemNoCheck(self, a1);

    [UnmanagedCallersOnly]
    public static int SqSetItem(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.SqSetItem(self, a1, a2);

#if !QRX_OMIT_ARRAY_SET_ITEM_NO_CHEK  // the broken-table fixture leaves it out
    [UnmanagedCallersOnly]
    public static int SqSetItemNoChek(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.SqSetItemNoCheck(self, a1, a2);
#endif

    [UnmanagedCallersOnly]
    public static int MpSetItems(IntPtr self, VariantArg* a1, int a2, int a3, int a4) => UntypedStubs.MpSetItems(self, a1, a2, a3, a4);

    [UnmanagedCallersOnly]
    public static int Reverse(IntPtr self) => UntypedStubs.Reverse(self);

    [UnmanagedCallersOnly]
    public static int Sort(IntPtr self, int a1) => UntypedStubs.Sort(self, a1);

    [UnmanagedCallersOnly]
    public static int IndexBy(IntPtr self, int a1, int a2, int a3, int a4, VariantArg* a5) => UntypedStubs.IndexBy(self, a1, a2, a3, a4, a5);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* a1) => UntypedStubs.CountOf(self, a1);

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
    public static int Add(IntPtr self, VariantArg* a1) => UntypedStubs.Add(self, a1);

    [UnmanagedCallersOnly]
    public static int Remove(IntPtr self, VariantArg* a1) => UntypedStubs.Remove(self, a1);

    [UnmanagedCallersOnly]
    public static int Clear(IntPtr self) => UntypedStubs.Clear(self);

    [UnmanagedCallersOnly]
    public static int SqContains(IntPtr self, VariantArg* a1) => UntypedStubs.SqContains(self, a1);

    [UnmanagedCallersOnly]
    public static int SqGetItem(IntPtr self, int a1, IntPtr* a2) => UntypedStubs.SqGetItem(self, a1, a2);

    [UnmanagedCallersOnly]
    public static IntPtr SqGetItemNoCheck(IntPtr self, int a1) => UntypedStubs.SqGetItemNoCheck(self, a1);

    [UnmanagedCallersOnly]
    public static int SqSetItem(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.SqSetItem(self, a1, a2);

    [UnmanagedCallersOnly]
    public static int SqSetItemNoChek(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.SqSetItemNoCheck(self, a1, a2);

    [UnmanagedCallersOnly]
    public static int Insert(IntPtr self, int a1, VariantArg* a2) => UntypedStubs.Insert(self, a1, a2);

    [UnmanagedCallersOnly]
    public static int RemoveAt(IntPtr self, int a1) => UntypedStubs.RemoveAt(self, a1);

    [UnmanagedCallersOnly]
    public static int Pop(IntPtr self, int a1, int a2, IntPtr* a3) => UntypedStubs.Pop(self, a1, a2, a3);

    [UnmanagedCallersOnly]
    public static int SqInplaceConcat(IntPtr self, VariantArg* a1) => UntypedStubs.SqInplaceConcat(self, a1);

    [UnmanagedCallersOnly]
    public static int SqInplaceRepeat(IntPtr self, int a1) => UntypedStubs.SqInplaceRepeat(self, a1);

    [UnmanagedCallersOnly]
    public static int MpSetItems(IntPtr self, VariantArg* a1, int a2, int a3, int a4) => UntypedStubs.MpSetItems(self, a1, a2, a3, a4);

    [UnmanagedCallersOnly]
    public static int MpRemoveItems(IntPtr self, int a1, int a2, int a3) => UntypedStubs.MpRemoveItems(self, a1, a2, a3);

    [UnmanagedCallersOnly]
    public static int Reverse(IntPtr self) => UntypedStubs.Reverse(self);

    [UnmanagedCallersOnly]
    public static int Sort(IntPtr self, int a1) => UntypedStubs.Sort(self, a1);

    [UnmanagedCallersOnly]
    public static int IndexBy(IntPtr self, int a1, int a2, int a3, int a4, VariantArg* a5) => UntypedStubs.IndexBy(self, a1, a2, a3, a4, a5);

    [UnmanagedCallersOnly]
    public static int CountOf(IntPtr self, VariantArg* a1) => UntypedStubs.CountOf(self, a1);

    [UnmanagedCallersOnly]
    public static int EnsureCapacity(IntPtr self, int a1) => UntypedStubs.EnsureCapacity(self, a1);

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
