using System.Text;

namespace Quorix.WrpGen;

/// <summary>
/// The reviewable text forms of the model: one line per module, type and member, fields separated
/// by single spaces, nothing that depends on the clock, the culture or the machine.
/// </summary>
public static class ModelWriter
{
    public const string ModelHeader = "wrpgen-model 1";
    public const string ReportHeader = "# type\tmember\treason";

    public static string Model(AssemblyModel model)
    {
        var w = new StringBuilder();
        Line(w, ModelHeader);
        Line(w, $"assembly {model.AssemblyName} {model.AssemblyVersion}");
        Line(w, $"root {model.RootNamespace} {model.RootModule}");
        foreach (var m in model.Modules)
            Line(w, $"module {m.PythonName} {m.Namespace}");
        foreach (var t in model.Types)
            WriteType(w, t);
        foreach (var g in model.Generics)
            Line(w, $"generic {g.Hash} {g.ElementName} iter iterable{(g.HasArray ? " array" : "")}{(g.HasList ? " list" : "")}");
        return w.ToString();
    }

    public static string Report(AssemblyModel model)
    {
        var w = new StringBuilder();
        Line(w, ReportHeader);
        foreach (var s in model.Skipped)
            Line(w, $"{s.Type}\t{s.Member}\t{s.Reason}");
        return w.ToString();
    }

    /// <summary>Writes UTF-8 without a byte-order mark, so equal models give equal files.</summary>
    public static void WriteFile(string path, string text) => File.WriteAllBytes(path, new UTF8Encoding(false).GetBytes(text));

    private static void WriteType(StringBuilder w, TypeModel t)
    {
        var head = new StringBuilder($"type {t.Hash} {KindName(t)} {t.FullName} {t.TpName} {t.StubClass} base={t.Base?.FullName ?? "-"}");
        if (t.Kind == TypeKind.Enum)
            head.Append(" underlying=").Append(t.Underlying);
        Line(w, head.ToString());
        foreach (var c in t.Constructors)
            Line(w, $"  ctor {StubNames.Number(c.Overload)} {c.Stub} {Parameters(c.Parameters)}{(c.IsImplicit ? " implicit" : "")}");
        foreach (var m in t.Methods)
        {
            Line(w, $"  method {StubNames.Number(m.Overload)} {(m.IsStatic ? "static" : "instance")} " +
                    $"{m.PythonName}/{StubNames.Number(m.PythonSlot)} {m.Stub} {Parameters(m.Parameters)} -> {m.Result}" +
                    (m.Hides is null ? "" : " hides=" + m.Hides.FullName));
        }
        foreach (var p in t.Properties)
            Line(w, $"  property {p.PythonName} {p.Getter ?? "-"} {p.Setter ?? "-"} {p.Type}");
        if (t.Sequence is { } q)
        {
            Line(w, $"  sequence count={(q.CountOwner is null ? "-" : q.CountOwner.FullName + "." + q.Count!.Getter)} " +
                    $"item={(q.IntIndexer is null ? "-" : SequenceModel.IntIndexerStub + ":" + q.IntIndexer)} " +
                    (q.IntIndexerStores ? $"store={SequenceModel.IntStoreStub} " : "") +
                    (q.RemoveAt is { } at ? $"delete={at.Stub} " : "") +
                    $"iterable={(q.Iterable is null ? "-" : q.Iterable.Hash)}" +
                    string.Concat(q.KeyIndexers.Select(k => $" key={k.Stub}:{k.Key}->{k.Item}" +
                                                            (k.Stores ? " store=" + k.StoreStub : "") +
                                                            (k.Remove is { } r ? " delete=" + r.Stub : ""))));
        }
        foreach (var s in t.StaticAttributes)
            Line(w, $"  static {s.PythonName} {s.Getter} {s.Setter ?? "-"} {s.Type} {(s.IsField ? "field" : "property")}");
        foreach (var e in t.EnumMembers)
            Line(w, $"  member {e.PythonName} {e.Value}");
        Line(w, "  builtins " + string.Join(" ", t.Builtins));
        Line(w, "end");
    }

    private static string KindName(TypeModel t) => t.Kind switch
    {
        TypeKind.Class => "class",
        TypeKind.StaticClass => "static-class",
        TypeKind.Struct => "struct",
        TypeKind.Enum => t.IsFlags ? "flags" : "enum",
        TypeKind.Interface => "interface",
        _ => t.Kind.ToString().ToLowerInvariant(),
    };

    private static string Parameters(IReadOnlyList<ParameterModel> parameters) =>
        "(" + string.Join(", ", parameters.Select(p => $"{p.Type} {p.PythonName}")) + ")";

    private static void Line(StringBuilder w, string text) => w.Append(text).Append('\n');
}
