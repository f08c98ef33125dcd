using System.Globalization;

namespace Quorix.WrpGen;

/// <summary>Names shared by the native method tables and the managed stub classes.</summary>
public static class StubNames
{
    /// <summary>"WrpNs_A.WrpNs_B.WrpCs_&lt;first eight letters&gt;_&lt;H&gt;" for a type of namespace A.B.</summary>
    public static string StubClass(string managedNamespace, string simpleName, string hash)
    {
        string head = simpleName.Length > 8 ? simpleName[..8] : simpleName;
        string cls = "WrpCs_" + head + "_" + hash;
        if (managedNamespace.Length == 0)
            return cls;
        return string.Join(".", managedNamespace.Split('.').Select(part => "WrpNs_" + part)) + "." + cls;
    }

    public static string Number(int overload) => overload.ToString("000", CultureInfo.InvariantCulture);

    public static string Ctor(int overload, string className) => $"ctor_{Number(overload)}_{className}";
    public static string Call(int overload, string methodName) => $"call_{Number(overload)}_{methodName}";
    public static string Get(string propertyName) => "get_" + propertyName;
    public static string Set(string propertyName) => "set_" + propertyName;
    public static string GetStatic(string name) => "getsa_" + name;
    public static string SetStatic(string name) => "setsa_" + name;

    private static readonly string[] ClassBuiltins =
        ["btp_TypeOf", "btp_CastTo", "btp_ReInterpretObj", "btp_CastAs", "btp_IsAssignable"];
    private static readonly string[] StaticClassBuiltins = ["btp_TypeOf"];
    private static readonly string[] EnumBuiltins =
        ["btp_TypeOf", "btp_CastTo", "btp_ReInterpretObj", "btp_AsUniEnum", "btp_CastAs", "btp_IsAssignable", "btp_GetType"];
    private static readonly string[] InterfaceBuiltins =
        ["btp_TypeOf", "btp_CastTo", "btp_CastAs", "btp_IsAssignable", "btp_GetType", "btp_GetTpExtraBind"];

    /// <summary>The built-in stubs that end every method table, in binding order.</summary>
    public static IReadOnlyList<string> Builtins(TypeKind kind) => kind switch
    {
        TypeKind.Class or TypeKind.Struct => ClassBuiltins,
        TypeKind.StaticClass => StaticClassBuiltins,
        TypeKind.Enum => EnumBuiltins,
        TypeKind.Interface => InterfaceBuiltins,
        _ => throw new ArgumentOutOfRangeException(nameof(kind)),
    };

    // ---- generic instantiations: the stub lists both emitters read, so the two sides cannot drift

    /// <summary>The managed class of an instantiation's kind: "Quorix.WrpGen.Generic.SiApi&lt;Kind&gt;_&lt;H&gt;".</summary>
    public static string GenericClass(GenericKind kind, string hash) => $"Quorix.WrpGen.Generic.{GenericClassPrefix(kind)}_{hash}";

    public static string GenericClassPrefix(GenericKind kind) => kind switch
    {
        GenericKind.Iterable => "SiApiEnumerable",
        GenericKind.Iter => "SiApiEnumerator",
        GenericKind.ICol => "SiApiCntCollection",
        GenericKind.IList => "SiApiCntList",
        GenericKind.Array => "SiApiArray",
        _ => throw new ArgumentOutOfRangeException(nameof(kind)),
    };

    // Parameter codes: h a handle, i a 32-bit int, ph an out handle, pi an out int.
    private static GenericStub S(string name, string ret, params string[] ps) => new(name, ret, ps);

    private static readonly GenericStub[] Casts =
        [S("btp_TypeOf", "v", "ph"), S("btp_CastTo", "i", "h", "ph"), S("btp_CastAs", "i", "h", "ph"), S("btp_IsAssignable", "i", "h")];

    private static readonly GenericStub GetItem = S("SqGetItem", "i", "h", "i", "ph", "pi");
    private static readonly GenericStub GetItemNoCheck = S("SqGetItemNoCheck", "i", "h", "i", "ph", "pi");
    private static readonly GenericStub IndexBy = S("IndexBy", "i", "h", "i", "i", "i", "i", "h");
    private static readonly GenericStub CountOf = S("CountOf", "i", "h", "h");
    private static readonly GenericStub Length = S("SqLength", "i", "h");
    private static readonly GenericStub Contains = S("SqContains", "i", "h", "h");
    private static readonly GenericStub SetItem = S("SqSetItem", "i", "h", "i", "h");
    private static readonly GenericStub SetItemNoChek = S("SqSetItemNoChek", "i", "h", "i", "h");
    private static readonly GenericStub SetItems = S("MpSetItems", "i", "h", "h", "i", "i", "i");
    private static readonly GenericStub Reverse = S("Reverse", "i", "h");
    private static readonly GenericStub Sort = S("Sort", "i", "h", "i");
    private static readonly GenericStub InplaceConcat = S("SqInplaceConcat", "i", "h", "h");
    private static readonly GenericStub InplaceRepeat = S("SqInplaceRepeat", "i", "h", "i");

    /// <summary>The stubs of a kind's method table, in binding order (the slot order of both sides).</summary>
    public static IReadOnlyList<GenericStub> GenericStubs(GenericKind kind) => kind switch
    {
        GenericKind.Iterable => [S("GetEnumerator", "i", "h", "ph")],
        GenericKind.Iter => [S("MoveNext", "i", "h", "ph", "pi"), .. Casts],
        // a list is served by two tables: the collection's adds and removes, the list's indexed edits
        GenericKind.ICol =>
        [
            Length, S("Add", "i", "h", "h"), S("Remove", "i", "h", "h"), S("Clear", "i", "h"), InplaceConcat, InplaceRepeat,
            Contains, CountOf,
        ],
        GenericKind.IList =>
        [
            GetItem, GetItemNoCheck, SetItem, SetItemNoChek, S("Insert", "i", "h", "i", "h"), S("RemoveAt", "i", "h", "i"),
            S("Pop", "i", "h", "i", "i", "ph", "pi"), InplaceConcat, InplaceRepeat, SetItems, S("MpRemoveItems", "i", "h", "i", "i", "i"),
            Reverse, Sort, IndexBy, CountOf, .. Casts,
        ],
        GenericKind.Array =>
        [
            Length, Contains, GetItem, GetItemNoCheck, SetItem, SetItemNoChek, SetItems, Reverse, Sort, IndexBy, CountOf,
            Casts[0], Casts[1], S("btp_ReInterpretObj", "i", "h", "ph"), Casts[2], Casts[3],
        ],
        _ => throw new ArgumentOutOfRangeException(nameof(kind)),
    };
}

public enum GenericKind { Iterable, Iter, ICol, IList, Array }

/// <summary>One stub of a generic kind: its managed name, result code ("i" int, "v" none) and parameter codes.</summary>
public sealed record GenericStub(string Name, string Return, IReadOnlyList<string> Params)
{
    /// <summary>The C++ forwarder's name: lower case with underscores; the built-ins keep theirs.</summary>
    public string Forwarder => Name.StartsWith("btp_", StringComparison.Ordinal) ? Name : Naming.Snake(Name);
}
