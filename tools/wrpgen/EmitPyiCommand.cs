namespace Quorix.WrpGen;

/// <summary>
/// wrpgen emit-pyi &lt;assembly&gt; --root &lt;Namespace&gt; --module &lt;python.module&gt; --out &lt;folder&gt;
///   [--doc &lt;xml&gt;] [--undocumented &lt;file&gt;] [--modules &lt;a.b,a.c&gt;] [--prelude &lt;file&gt;]... [--types &lt;A.B,A.C&gt;]
/// </summary>
public static class EmitPyiCommand
{
    public const string Name = "emit-pyi";

    public const string Usage =
        "usage: wrpgen emit-pyi <assembly> --root <Namespace> --module <python.module> --out <folder> [--doc <xml>] " +
        "[--undocumented <file>] [--modules <a.b,a.c>] [--prelude <file>]... [--types <A.B,A.C>] [--ref <folder>]...";

    public sealed record Options(string Assembly, string Root, string Module, List<string> References, string Out,
                                 IReadOnlyList<string>? Types, string? Doc, string? Undocumented,
                                 IReadOnlyList<string> Modules, List<string> Preludes);

    public static int Run(string[] args, TextWriter log)
    {
        var o = Parse(args);
        var model = ModelBuilder.Build(o.Assembly, o.Root, o.Module, o.References, o.Types);
        var docs = o.Doc is null ? XmlDocs.Empty : XmlDocs.Load(o.Doc);
        string prelude = string.Concat(o.Preludes.Select(p => File.ReadAllText(p).TrimEnd('\n') + "\n"));
        var files = PyiEmitter.Emit(model, new PyiEmitter.Options(o.Modules, prelude, docs));
        int written = PyiEmitter.WriteFiles(files, o.Out);
        string note = "";
        if (o.Doc is not null)
        {
            var missing = PyiEmitter.Undocumented(model, docs).ToList();
            if (o.Undocumented is not null)
                ModelWriter.WriteFile(o.Undocumented, string.Concat(missing.Select(m => m + "\n")));
            note = $", {missing.Count} bound members without a summary";
        }
        log.WriteLine($"wrpgen: {files.Count} stub files in {o.Out}, {written} rewritten{note}");
        return 0;
    }

    public static Options Parse(string[] args)
    {
        if (args.Length < 2 || args[0] != Name || args[1].StartsWith("--", StringComparison.Ordinal))
            throw new GeneratorException(Usage);
        string? root = null, module = null, output = null, doc = null, undocumented = null;
        IReadOnlyList<string>? types = null;
        IReadOnlyList<string> modules = [];
        var refs = new List<string>();
        var preludes = new List<string>();
        for (int i = 2; i < args.Length; i++)
        {
            string flag = args[i];
            if (i + 1 >= args.Length)
                throw new GeneratorException($"{flag} needs a value\n{Usage}");
            string value = args[++i];
            switch (flag)
            {
                case "--root": root = value; break;
                case "--module": module = value; break;
                case "--ref": refs.Add(value); break;
                case "--out": output = value; break;
                case "--types": types = Program.TypeList(value); break;
                case "--doc": doc = value; break;
                case "--undocumented": undocumented = value; break;
                case "--modules": modules = Program.TypeList(value); break;
                case "--prelude": preludes.Add(value); break;
                default: throw new GeneratorException($"unknown option {flag}\n{Usage}");
            }
        }
        if (root is null || module is null || output is null)
            throw new GeneratorException(Usage);
        return new Options(args[1], root, module, refs, output, types, doc, undocumented, modules, preludes);
    }
}
