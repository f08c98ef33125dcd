namespace Quorix.WrpGen;

/// <summary>wrpgen emit-cs &lt;assembly&gt; --root &lt;Namespace&gt; --out &lt;folder&gt; [--module &lt;python.module&gt;] [--ref &lt;folder&gt;]...</summary>
public static class EmitCsCommand
{
    public const string Name = "emit-cs";

    public const string Usage =
        "usage: wrpgen emit-cs <assembly> --root <Namespace> --out <folder> [--module <python.module>] [--types <A.B,A.C>] [--ref <folder>]...";

    public sealed record Options(string Assembly, string Root, string? Module, List<string> References, string Out,
                                 IReadOnlyList<string>? Types = null);

    public static int Run(string[] args, TextWriter log)
    {
        var o = Parse(args);
        var model = ModelBuilder.Build(o.Assembly, o.Root, o.Module, o.References, o.Types);
        int written = CSharpEmitter.WriteFiles(model, o.Out);
        log.WriteLine($"wrpgen: {model.Types.Count} stub classes in {o.Out}, {written} rewritten");
        return 0;
    }

    public static Options Parse(string[] args)
    {
        if (args.Length < 2 || args[0] != Name || args[1].StartsWith("--", StringComparison.Ordinal))
            throw new GeneratorException(Usage);
        string? root = null, module = null, output = null;
        IReadOnlyList<string>? types = null;
        var refs = new List<string>();
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
                default: throw new GeneratorException($"unknown option {flag}\n{Usage}");
            }
        }
        if (root is null || output is null)
            throw new GeneratorException(Usage);
        return new Options(args[1], root, module, refs, output, types);
    }
}
