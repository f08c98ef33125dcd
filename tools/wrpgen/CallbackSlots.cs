using System.Text.RegularExpressions;

namespace Quorix.WrpGen;

/// <summary>
/// The callback tables of builtins/callback_tables.def as the interop assembly numbers them:
/// the native side expands the same list with the preprocessor, so a slot exists once.
/// </summary>
public static partial class CallbackSlots
{
    public sealed record Table(string Name, bool IsStatic, IReadOnlyList<string> Slots);

    /// <summary>The tables of the list, static ones first, each with its slots in order.</summary>
    public static IReadOnlyList<Table> Parse(string text)
    {
        string joined = text.Replace("\\\r\n", " ").Replace("\\\n", " ");
        var macros = Define().Matches(joined).ToDictionary(m => m.Groups["name"].Value, m => m.Groups["body"].Value);
        IEnumerable<Table> TablesOf(string macro, bool isStatic)
        {
            if (!macros.TryGetValue(macro, out string? body))
                throw new GeneratorException($"the callback list has no {macro}");
            foreach (Match t in TableEntry().Matches(body))
            {
                string slotsMacro = t.Groups["slots"].Value;
                if (!macros.TryGetValue(slotsMacro, out string? slots))
                    throw new GeneratorException($"the callback list has no {slotsMacro}");
                var names = SlotEntry().Matches(slots).Select(s => s.Groups["slot"].Value).ToList();
                if (names.Count == 0 || names.Distinct(StringComparer.Ordinal).Count() != names.Count)
                    throw new GeneratorException($"{slotsMacro} names no slot or one slot twice");
                yield return new Table(t.Groups["table"].Value, isStatic, names);
            }
        }
        return TablesOf("QRX_STATIC_CALLBACK_TABLES", true).Concat(TablesOf("QRX_SINGLE_CALLBACK_TABLES", false)).ToList();
    }

    /// <summary>The C# source of the slot numbers: CallbackSlots.Tables.&lt;Table&gt; and CallbackSlots.&lt;Table&gt;.&lt;Slot&gt;.</summary>
    public static string EmitCs(IReadOnlyList<Table> tables)
    {
        var w = new CSharpEmitter.Writer();
        w.Line(CSharpEmitter.Header + " (wrpgen emit-slots builtins/callback_tables.def)");
        w.Line("namespace Quorix.WrpGen.Interop;");
        w.Line("");
        w.Line("/// <summary>Positions in the native callback tables, from the list both sides follow.</summary>");
        w.Line("internal static class CallbackSlots");
        w.Open();
        w.Line("/// <summary>Positions of the static tables in the array of tables handed over at start-up.</summary>");
        w.Line("internal static class Tables");
        w.Open();
        var statics = tables.Where(t => t.IsStatic).ToList();
        for (int i = 0; i < statics.Count; i++)
            w.Line($"internal const int {statics[i].Name} = {i};");
        w.Close();
        foreach (var t in tables)
        {
            w.Line("");
            w.Line($"internal static class {t.Name}");
            w.Open();
            for (int i = 0; i < t.Slots.Count; i++)
                w.Line($"internal const int {t.Slots[i]} = {i};");
            w.Close();
        }
        w.Close();
        return w.ToString();
    }

    [GeneratedRegex(@"#define (?<name>QRX_\w+)\((?:C|T)\)(?<body>[^\n]*)")]
    private static partial Regex Define();

    [GeneratedRegex(@"T\((?<table>\w+), \w+, (?<slots>QRX_\w+)\)")]
    private static partial Regex TableEntry();

    [GeneratedRegex(@"C\((?<slot>\w+), \w+\)")]
    private static partial Regex SlotEntry();
}

/// <summary>wrpgen emit-slots &lt;callback list&gt; --out &lt;file.cs&gt;</summary>
public static class EmitSlotsCommand
{
    public const string Name = "emit-slots";
    public const string Usage = "usage: wrpgen emit-slots <callback_tables.def> --out <CallbackSlots.cs>";

    public static int Run(string[] args, TextWriter log)
    {
        if (args.Length != 4 || args[2] != "--out")
            throw new GeneratorException(Usage);
        var tables = CallbackSlots.Parse(File.ReadAllText(args[1]));
        ModelWriter.WriteFile(args[3], CallbackSlots.EmitCs(tables));
        log.WriteLine($"wrpgen: {tables.Count} callback tables in {args[3]}");
        return 0;
    }
}
