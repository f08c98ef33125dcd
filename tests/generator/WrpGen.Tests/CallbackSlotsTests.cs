using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>
/// The callback tables' slots are written once, in builtins/callback_tables.def: the native
/// tables are expanded from it and the interop assembly's numbers are emitted from it.
/// </summary>
public class CallbackSlotsTests
{
    private static string RepoRoot([System.Runtime.CompilerServices.CallerFilePath] string path = "") =>
        Path.GetFullPath(Path.Combine(Path.GetDirectoryName(path)!, "..", "..", ".."));

    private static string ListFile => Path.Combine(RepoRoot(), "builtins", "callback_tables.def");
    private static string ManagedFile => Path.Combine(RepoRoot(), "managed", "WrpInterop.Quorix.Folio", "Interop", "CallbackSlots.cs");

    [Fact]
    public void TheInteropAssemblysSlotNumbersAreTheOnesTheListGives()
    {
        string emitted = CallbackSlots.EmitCs(CallbackSlots.Parse(File.ReadAllText(ListFile)));
        Assert.True(emitted == File.ReadAllText(ManagedFile),
                    "Interop/CallbackSlots.cs is not what builtins/callback_tables.def gives: run make callback-slots");
    }

    [Fact]
    public void TheListNamesTheStaticTablesInTheirHandOverOrder()
    {
        var tables = CallbackSlots.Parse(File.ReadAllText(ListFile));
        Assert.Equal(["Read", "Write", "Buffer", "Iter", "Ucol", "Olist", "Oseq", "RawIo", "TpFuncs", "PyList"],
                     tables.Where(t => t.IsStatic).Select(t => t.Name));
        Assert.Equal(["ObjApi", "Exception"], tables.Where(t => !t.IsStatic).Select(t => t.Name));
        var counts = tables.ToDictionary(t => t.Name, t => t.Slots.Count);
        Assert.Equal((11, 15, 4, 1, 7, 7, 3, 13, 4, 5, 2),
                     (counts["Read"], counts["Write"], counts["Buffer"], counts["Iter"], counts["Ucol"], counts["Olist"],
                      counts["Oseq"], counts["RawIo"], counts["TpFuncs"], counts["ObjApi"], counts["Exception"]));
    }

    [Fact]
    public void ASlotAddedInTheMiddleShiftsTheLaterNumbersOnBothSides()
    {
        string text = "#define QRX_A_CALLBACKS(C) C(First, f1) C(Second, f2)\n" +
                      "#define QRX_STATIC_CALLBACK_TABLES(T) T(A, m_a, QRX_A_CALLBACKS)\n" +
                      "#define QRX_SINGLE_CALLBACK_TABLES(T)\n";
        string before = CallbackSlots.EmitCs(CallbackSlots.Parse(text));
        string after = CallbackSlots.EmitCs(CallbackSlots.Parse(text.Replace("C(First, f1)", "C(First, f1) C(Inserted, f9)")));
        Assert.Contains("internal const int Second = 1;", before);
        Assert.Contains("internal const int Second = 2;", after);
        Assert.Contains("internal const int Inserted = 1;", after);
    }

    [Theory]
    [InlineData("#define QRX_STATIC_CALLBACK_TABLES(T) T(A, m_a, QRX_MISSING)\n#define QRX_SINGLE_CALLBACK_TABLES(T)\n")]
    [InlineData("#define QRX_A(C) C(X, f) C(X, g)\n#define QRX_STATIC_CALLBACK_TABLES(T) T(A, m_a, QRX_A)\n#define QRX_SINGLE_CALLBACK_TABLES(T)\n")]
    [InlineData("#define QRX_SINGLE_CALLBACK_TABLES(T)\n")]
    public void AListWithAMissingOrRepeatedNameIsRefused(string text)
    {
        Assert.Throws<GeneratorException>(() => CallbackSlots.Parse(text));
    }
}
