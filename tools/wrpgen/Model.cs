using System.Reflection.Metadata;

namespace Quorix.WrpGen;

public enum TypeKind { Unknown, Class, StaticClass, Struct, Enum, Interface, Delegate }

/// <summary>How a value crosses between Python and managed code.</summary>
public enum ValueKind
{
    Void, Bool, Char, SByte, Byte, Int16, UInt16, Int32, UInt32, Int64, UInt64, Single, Double,
    String, Bytes, Class, Struct, Interface, Enum, Stream,
    DateTime, DateTimeOffset, TimeSpan, Decimal, Guid, Version, Object, Regex,
    Enumerable, Collection, List,
    /// <summary>Values typed as the untyped built-in kinds: they cross as the _interop wrappers.</summary>
    Enumerator, Disposable, ArrayList, CollectionBase, ReadOnlyCollectionBase,
    /// <summary>Sequence results over a bound element type (<see cref="CarriedType.Generic"/>).</summary>
    EnumeratorOf, EnumerableOf, ArrayOf, ListOf,
    /// <summary>
    /// A sequence copied across whole (<see cref="CarriedType.Item"/> is its element): any Python
    /// sequence in as a managed array, a new Python list out.
    /// </summary>
    Sequence,
    /// <summary>A managed IDictionary&lt;string, string&gt; result: a live Python mapping of str to str.</summary>
    StringMap,
    /// <summary>
    /// A System.Type of an assembly that does not bind it: quorix.pyintro.Type out; in, also a
    /// bound class (its managed type) or None.
    /// </summary>
    SystemType,
    /// <summary>A KeyValuePair&lt;string, string&gt; element of an enumeration: a (key, value) tuple, as dict.items() gives.</summary>
    StringPair,
    /// <summary>A geometry structure of System.Drawing (a size, point or rectangle) read as a tuple of its fields.</summary>
    Fields,
}

/// <summary>How a parameter passes: by value, or from Python as a one-element list (ref, out).</summary>
public enum PassMode { Value, Ref, Out }

/// <summary>A parameter or result type the runtime can carry; bound kinds name their type.</summary>
public sealed record CarriedType(ValueKind Kind, TypeModel? Bound = null, GenericInstance? Generic = null)
{
    /// <summary>The element of a <see cref="ValueKind.Sequence"/>.</summary>
    public CarriedType? Item { get; init; }

    public static CarriedType SequenceOf(CarriedType item) => new(ValueKind.Sequence) { Item = item };

    /// <summary>
    /// The framework type a <see cref="ValueKind.String"/> stands for by its name (an Encoding by
    /// its codec name, a CultureInfo by its culture name); null for a plain string.
    /// </summary>
    public string? NamedBy { get; init; }

    /// <summary>The framework structure a <see cref="ValueKind.Fields"/> value reads; its fields in tuple order.</summary>
    public FrameworkFields? Fields { get; init; }

    /// <summary>A Nullable&lt;T&gt; of a value kind: None crosses as no value.</summary>
    public bool IsNullable { get; init; }
    public PassMode Mode { get; init; }

    /// <summary>The type a ref or out parameter passes, as a plain value.</summary>
    public CarriedType Element => this with { Mode = PassMode.Value };

    public bool IsSequence => Kind is ValueKind.EnumeratorOf or ValueKind.EnumerableOf or ValueKind.ArrayOf or ValueKind.ListOf;

    /// <summary>A value of a built-in kind without an element type: it comes back as its _interop wrapper.</summary>
    public bool IsUntypedKind => Kind is ValueKind.Enumerable or ValueKind.Collection or ValueKind.List or ValueKind.Enumerator
        or ValueKind.Disposable or ValueKind.ArrayList or ValueKind.CollectionBase or ValueKind.ReadOnlyCollectionBase;

    public override string ToString() => Mode switch
    {
        PassMode.Ref => "ref " + Element,
        PassMode.Out => "out " + Element,
        _ => IsNullable ? Plain() + "?" : Plain(),
    };

    private string Plain() => Kind switch
    {
        ValueKind.Void => "void",
        ValueKind.Bool => "bool",
        ValueKind.Char => "char",
        ValueKind.SByte => "int8",
        ValueKind.Byte => "uint8",
        ValueKind.Int16 => "int16",
        ValueKind.UInt16 => "uint16",
        ValueKind.Int32 => "int32",
        ValueKind.UInt32 => "uint32",
        ValueKind.Int64 => "int64",
        ValueKind.UInt64 => "uint64",
        ValueKind.Single => "float32",
        ValueKind.Double => "float64",
        ValueKind.String => NamedBy is null ? "string" : $"string:{NamedBy}",
        ValueKind.Bytes => "bytes",
        ValueKind.Stream => "stream",
        ValueKind.Class => "class:" + Bound!.FullName,
        ValueKind.Struct => "struct:" + Bound!.FullName,
        ValueKind.Interface => "interface:" + Bound!.FullName,
        ValueKind.Enum => (Bound!.IsFlags ? "flags:" : "enum:") + Bound.FullName,
        ValueKind.DateTime => "datetime",
        ValueKind.DateTimeOffset => "datetimeoffset",
        ValueKind.TimeSpan => "timespan",
        ValueKind.Decimal => "decimal",
        ValueKind.Guid => "guid",
        ValueKind.Version => "version",
        ValueKind.Object => "object",
        ValueKind.Regex => "regex",
        ValueKind.Enumerable => "enumerable",
        ValueKind.Collection => "collection",
        ValueKind.List => "list",
        ValueKind.Enumerator => "enumerator",
        ValueKind.Disposable => "disposable",
        ValueKind.ArrayList => "arraylist",
        ValueKind.CollectionBase => "collectionbase",
        ValueKind.ReadOnlyCollectionBase => "readonlycollectionbase",
        ValueKind.EnumeratorOf => "enumerator:" + Generic!.ElementName,
        ValueKind.EnumerableOf => "enumerable:" + Generic!.ElementName,
        ValueKind.ArrayOf => "array:" + Generic!.ElementName,
        ValueKind.ListOf => "list:" + Generic!.ElementName,
        ValueKind.Sequence => "sequence:" + Item,
        ValueKind.StringMap => "mapping:string,string",
        ValueKind.SystemType => "type",
        ValueKind.StringPair => "pair:string,string",
        ValueKind.Fields => $"tuple:{Fields!.FullName}",
        _ => "?",
    };
}

/// <summary>A framework structure read as a tuple: its full name, its fields in order and whether they are real numbers.</summary>
public sealed record FrameworkFields(string FullName, IReadOnlyList<string> Names, bool Real)
{
    public static readonly IReadOnlyDictionary<string, FrameworkFields> Known =
        new[]
        {
            new FrameworkFields("System.Drawing.Size", ["Width", "Height"], false),
            new FrameworkFields("System.Drawing.SizeF", ["Width", "Height"], true),
            new FrameworkFields("System.Drawing.Point", ["X", "Y"], false),
            new FrameworkFields("System.Drawing.PointF", ["X", "Y"], true),
            new FrameworkFields("System.Drawing.Rectangle", ["X", "Y", "Width", "Height"], false),
            new FrameworkFields("System.Drawing.RectangleF", ["X", "Y", "Width", "Height"], true),
        }.ToDictionary(f => f.FullName, StringComparer.Ordinal);
}

/// <summary>
/// The generic collection kinds instantiated over one element type: a bound object type, or (for
/// enumerations only) an enumeration, System.Type or a pair of strings. Every kind of one element
/// shares <see cref="Hash"/>, which names its method tables, managed classes and Python types.
/// </summary>
public sealed class GenericInstance
{
    public GenericInstance(CarriedType item)
    {
        Item = item;
        ElementName = item.Kind switch
        {
            ValueKind.SystemType => "System.Type",
            ValueKind.StringPair => "System.Collections.Generic.KeyValuePair`2[System.String,System.String]",
            _ => item.Bound!.FullName,
        };
        Hash = TypeHash.Of("System.Collections.Generic.IEnumerable`1[[" + ElementName + "]]");
    }

    /// <summary>The element as it crosses.</summary>
    public CarriedType Item { get; }
    /// <summary>The element's bound type; null for System.Type and pairs.</summary>
    public TypeModel? Element => Item.Bound;
    public string ElementName { get; }
    /// <summary>Elements are objects with handles of their own, so the indexed kinds can hold them.</summary>
    public bool IsObject => Item.Kind is ValueKind.Class or ValueKind.Interface or ValueKind.Struct;
    public string Hash { get; }
    public bool HasArray { get; internal set; }
    public bool HasList { get; internal set; }

    /// <summary>The kinds emitted for this element: iteration always, arrays and lists where the surface uses them.</summary>
    public IEnumerable<GenericKind> Kinds()
    {
        yield return GenericKind.Iterable;
        yield return GenericKind.Iter;
        if (HasList)
        {
            yield return GenericKind.ICol;
            yield return GenericKind.IList;
        }
        if (HasArray)
            yield return GenericKind.Array;
    }
}

/// <summary>
/// Item access of a collection class: the count property, the integer and string indexers and the
/// element type of the IEnumerable&lt;T&gt; it implements (its Python iteration). Any may be absent.
/// </summary>
public sealed class SequenceModel
{
    public PropertyModel? Count { get; internal set; }
    public CarriedType? IntIndexer { get; internal set; }
    /// <summary>The integer indexer also stores: item assignment by position.</summary>
    public bool IntIndexerStores { get; internal set; }
    /// <summary>The RemoveAt(int) that `del x[i]` calls, where the class stores by position.</summary>
    public MethodModel? RemoveAt { get; internal set; }
    /// <summary>Indexers by a string or an enumeration: subscription with such a key, tried in this order.</summary>
    public List<KeyIndexer> KeyIndexers { get; } = [];
    public GenericInstance? Iterable { get; internal set; }

    /// <summary>The class whose "Count" getter gives the length (this class or a bound base).</summary>
    public TypeModel? CountOwner { get; internal set; }

    public const string IntIndexerStub = "btp_SqGetItem";
    public const string IntStoreStub = "btp_SqSetItem";

    /// <summary>Whether some indexer stores: the class then takes item assignment (and deletion where it can remove).</summary>
    public bool Stores => IntIndexerStores || KeyIndexers.Any(k => k.Stores);
}

/// <summary>An indexer by a key that is not a position; its stub is "btp_MpGetItemBy" + the key's type name.</summary>
public sealed record KeyIndexer(CarriedType Key, CarriedType Item)
{
    public string Stub => "btp_MpGetItemBy" + KeyName;
    /// <summary>The stub of the indexer's setter, where it has one.</summary>
    public string StoreStub => "btp_MpSetItemBy" + KeyName;
    public bool Stores { get; init; }
    /// <summary>The Remove(key) that `del x[key]` calls, where the class stores by this key.</summary>
    public MethodModel? Remove { get; internal set; }

    private string KeyName => Key.Kind == ValueKind.String ? "String" : Key.Bound!.Name;
}

/// <summary>
/// What the metadata rules out beyond the type: null where the signature is not nullable, NaN and
/// infinities where the assembly declares its real numbers measures, negative limits.
/// </summary>
public sealed record ValueRules(bool AcceptsNull = true, bool Finite = false, bool NonNegative = false)
{
    public static readonly ValueRules None = new();
}

public sealed record ParameterModel(string ManagedName, string PythonName, CarriedType Type)
{
    /// <summary>Whether the managed parameter is annotated to accept null.</summary>
    public NullState Null { get; init; }
    /// <summary>What the binding refuses before the call.</summary>
    public ValueRules Rules { get; init; } = ValueRules.None;
    /// <summary>The last parameter is a `params` array: trailing positional arguments are its items.</summary>
    public bool IsParams { get; init; }
}

public sealed record ConstructorModel(int Overload, string Stub, IReadOnlyList<ParameterModel> Parameters, bool IsImplicit)
{
    /// <summary>The member's name in the XML documentation file.</summary>
    public string DocId { get; init; } = "";
    /// <summary>The managed call runs long enough that other Python threads should run meanwhile.</summary>
    public bool LongRunning { get; init; }
}

/// <summary>
/// One bound overload. <see cref="PythonSlot"/> separates Python methods of one class that share a
/// Python name (a static and an instance method of one managed name): 0 for the first, 1 for the next.
/// </summary>
public sealed record MethodModel(
    string ManagedName, string PythonName, int Overload, string Stub, bool IsStatic, int PythonSlot,
    IReadOnlyList<ParameterModel> Parameters, CarriedType Result)
{
    /// <summary>The nearest bound base whose instance method of the same Python name this one hides.</summary>
    public TypeModel? Hides { get; init; }
    /// <summary>Whether the managed result is annotated as possibly null.</summary>
    public NullState ResultNull { get; init; }
    /// <summary>The member's name in the XML documentation file.</summary>
    public string DocId { get; init; } = "";
    /// <summary>The managed call runs long enough that other Python threads should run meanwhile.</summary>
    public bool LongRunning { get; init; }
}

public sealed record PropertyModel(string ManagedName, string PythonName, CarriedType Type, string? Getter, string? Setter)
{
    public NullState Null { get; init; }
    /// <summary>The member's name in the XML documentation file.</summary>
    public string DocId { get; init; } = "";
    /// <summary>What the setter refuses.</summary>
    public ValueRules Rules { get; init; } = ValueRules.None;
}

/// <summary>A static property, constant or static field exposed as a class attribute.</summary>
public sealed record StaticAttributeModel(
    string ManagedName, string PythonName, CarriedType Type, string Getter, string? Setter, bool IsField)
{
    public NullState Null { get; init; }
    /// <summary>The member's name in the XML documentation file.</summary>
    public string DocId { get; init; } = "";
}

/// <summary>An enumeration member; the value is the decimal text of the underlying integer.</summary>
public sealed record EnumMemberModel(string ManagedName, string PythonName, string Value)
{
    /// <summary>The member's name in the XML documentation file.</summary>
    public string DocId { get; init; } = "";
}

/// <summary>
/// An abstract instance member of an interface as C# declares it (types spelled for generated
/// code, parameters with their ref/out keyword and name), whether bound or not: a managed twin
/// must implement every one.
/// </summary>
public sealed record ManagedMember(string Name, bool IsProperty, string Result, IReadOnlyList<string> Parameters,
                                   bool HasGetter, bool HasSetter);

public sealed record SkippedMember(string Type, string Member, string Reason);

public sealed record ModuleModel(string PythonName, string Namespace);

public sealed class TypeModel
{
    public required string Namespace { get; init; }
    public required string Name { get; init; }
    public required TypeKind Kind { get; init; }
    public required string Module { get; init; }
    internal TypeDefinitionHandle Handle { get; init; }

    public string FullName => Namespace.Length == 0 ? Name : Namespace + "." + Name;
    public string Hash => TypeHash.Of(FullName);
    public string TpName => Module + "." + Name;
    public string StubClass => StubNames.StubClass(Namespace, Name, Hash);
    public string DocId => DocIds.Type(FullName);

    /// <summary>The nearest bound ancestor class, or null when the Python base is the plain wrapper.</summary>
    public TypeModel? Base { get; internal set; }
    public bool IsFlags { get; internal set; }
    /// <summary>
    /// A value of this static type may be an object of another bound type (a derived class, or a
    /// class implementing the interface): results of it carry the bound type index of the object.
    /// </summary>
    public bool IsPolymorphic { get; internal set; }
    /// <summary>A class deriving from System.Exception: Python sees it as a RuntimeError subclass.</summary>
    public bool IsException { get; internal set; }
    public string Underlying { get; internal set; } = "";

    /// <summary>The internal member an "OfDocumentAttribute" names, giving the document the objects belong to.</summary>
    public string? DocumentMember { get; init; }

    /// <summary>
    /// How a stub reaches the document its receiver belongs to, which every call on it holds: a
    /// readable Document property of a document class on the type or a bound base, or the member its
    /// attribute names; null for objects of no document.
    /// </summary>
    public string? DocumentOf
    {
        get
        {
            for (var c = this; c is not null; c = c.Base)
            {
                if (c.DocumentMember is { } member)
                    return member;
                if (c.Kind == TypeKind.Class && c.Properties.Any(p => p.ManagedName == "Document" && p.Getter is not null
                        && p.Type.Kind == ValueKind.Class && p.Type.Bound!.Name is "Document" or "DocumentBase"))
                    return "Document";
            }
            return null;
        }
    }

    public List<ConstructorModel> Constructors { get; } = [];
    public List<MethodModel> Methods { get; } = [];
    public List<PropertyModel> Properties { get; } = [];
    public List<StaticAttributeModel> StaticAttributes { get; } = [];
    public List<EnumMemberModel> EnumMembers { get; } = [];
    /// <summary>Interfaces: every abstract instance member, in declaration order.</summary>
    public List<ManagedMember> AbstractMembers { get; } = [];
    /// <summary>Null for types without item access or iteration of their own.</summary>
    public SequenceModel? Sequence { get; internal set; }

    public IReadOnlyList<string> Builtins => StubNames.Builtins(Kind);

    /// <summary>Every stub of the type's method table, in binding order.</summary>
    public IEnumerable<string> BindingOrder()
    {
        foreach (var c in Constructors)
            yield return c.Stub;
        foreach (var m in Methods)
            yield return m.Stub;
        foreach (var p in Properties)
        {
            if (p.Getter is not null)
                yield return p.Getter;
            if (p.Setter is not null)
                yield return p.Setter;
        }
        foreach (var s in StaticAttributes)
        {
            yield return s.Getter;
            if (s.Setter is not null)
                yield return s.Setter;
        }
        if (Sequence?.IntIndexer is not null)
        {
            yield return SequenceModel.IntIndexerStub;
            if (Sequence.IntIndexerStores)
                yield return SequenceModel.IntStoreStub;
        }
        foreach (var k in Sequence?.KeyIndexers ?? [])
        {
            yield return k.Stub;
            if (k.Stores)
                yield return k.StoreStub;
        }
        foreach (var b in Builtins)
            yield return b;
    }
}

public sealed class AssemblyModel
{
    public required string AssemblyName { get; init; }
    public required string AssemblyVersion { get; init; }
    public required string RootNamespace { get; init; }
    public required string RootModule { get; init; }
    public List<ModuleModel> Modules { get; } = [];
    /// <summary>Bound types in registration order: every class after its bound base.</summary>
    public List<TypeModel> Types { get; } = [];
    public List<SkippedMember> Skipped { get; } = [];
    /// <summary>Generic instantiations in a stable order (by element type name).</summary>
    public List<GenericInstance> Generics { get; } = [];

    /// <summary>
    /// The classes in registration order: a class's position is the bound type index the managed
    /// stubs hand back with a handle. (A boxed structure behind an interface keeps the interface.)
    /// </summary>
    public IEnumerable<TypeModel> IndexedTypes() => Types.Where(t => t.Kind == TypeKind.Class);
}
