namespace Quorix.WrpGen;

/// <summary>wrpgen emit-cpp &lt;assembly&gt; --root &lt;Namespace&gt; --module &lt;python.module&gt; --out &lt;folder&gt; [--ref &lt;folder&gt;]...</summary>
public static class EmitCppCommand
{
    public const string Name = "emit-cpp";

    public const string Usage =
        "usage: wrpgen emit-cpp <assembly> --root <Namespace> --module <python.module> --out <folder> [--types <A.B,A.C>] " +
        "[--host-start <function>] [--release <function>] [--ref <folder>]...";

    public sealed record Options(string Assembly, string Root, string Module, List<string> References, string Out,
                                 IReadOnlyList<string>? Types = null, CppEmitOptions? Emit = null);

    public static int Run(string[] args, TextWriter log)
    {
        var o = Parse(args);
        var model = ModelBuilder.Build(o.Assembly, o.Root, o.Module, o.References, o.Types);
        var files = CppEmitter.Emit(model, o.Emit);
        int written = CppEmitter.WriteFiles(files, o.Out);
        log.WriteLine($"wrpgen: {model.Types.Count} types in {files.Count} C++ files in {o.Out}, {written} rewritten");
        return 0;
    }

    public static Options Parse(string[] args)
    {
        if (args.Length < 2 || args[0] != Name || args[1].StartsWith("--", StringComparison.Ordinal))
            throw new GeneratorException(Usage);
        string? root = null, module = null, output = null, hostStart = null, release = null;
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
                case "--host-start": hostStart = CppIdentifier(flag, value); break;
                case "--release": release = CppIdentifier(flag, value); break;
                default: throw new GeneratorException($"unknown option {flag}\n{Usage}");
            }
        }
        if (root is null || module is null || output is null)
            throw new GeneratorException(Usage);
        var emit = hostStart is null && release is null ? null : new CppEmitOptions(hostStart, release);
        return new Options(args[1], root, module, refs, output, types, emit);
    }

    // The value is pasted into C++ as a function name.
    private static string CppIdentifier(string flag, string value)
    {
        bool valid = value.Length > 0 && !char.IsAsciiDigit(value[0]) && value.All(c => char.IsAsciiLetterOrDigit(c) || c == '_');
        return valid ? value : throw new GeneratorException($"{flag} needs a C++ function name, not '{value}'");
    }
}
