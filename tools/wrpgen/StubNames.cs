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
}
