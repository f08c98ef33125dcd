namespace Quorix.WrpGen;

/// <summary>
/// wrpgen model &lt;assembly&gt; --root &lt;Namespace&gt; [--module &lt;python.module&gt;] [--ref &lt;folder&gt;]...
///                --out &lt;model.txt&gt; [--report &lt;report.txt&gt;]
/// </summary>
public static class Program
{
    public const string Usage =
        "usage: wrpgen model <assembly> --root <Namespace> [--module <python.module>] [--types <A.B,A.C>] [--ref <folder>]... " +
        "--out <model.txt> [--report <report.txt>]";

    public static int Main(string[] args)
    {
        try
        {
            return Run(args, Console.Out);
        }
        catch (GeneratorException e)
        {
            Console.Error.WriteLine("wrpgen: " + e.Message);
            return 2;
        }
        catch (BadImageFormatException e)
        {
            Console.Error.WriteLine("wrpgen: malformed metadata: " + e.Message);
            return 2;
        }
    }

    /// <summary>Runs one command; bad input throws <see cref="GeneratorException"/>.</summary>
    public static int Run(string[] args, TextWriter log)
    {
        switch (args.FirstOrDefault())
        {
            case EmitCsCommand.Name: return EmitCsCommand.Run(args, log);
            case EmitCppCommand.Name: return EmitCppCommand.Run(args, log);
            case EmitPyiCommand.Name: return EmitPyiCommand.Run(args, log);
            case EmitSlotsCommand.Name: return EmitSlotsCommand.Run(args, log);
        }
        var options = Options.Parse(args);
        var model = ModelBuilder.Build(options.Assembly, options.Root, options.Module, options.References, options.Types);
        ModelWriter.WriteFile(options.Out, ModelWriter.Model(model));
        if (options.Report is not null)
            ModelWriter.WriteFile(options.Report, ModelWriter.Report(model));
        log.WriteLine($"wrpgen: {model.Types.Count} types in {model.Modules.Count} modules, {model.Skipped.Count} skipped");
        return 0;
    }

    /// <summary>The full type names of a comma-separated --types value.</summary>
    public static IReadOnlyList<string> TypeList(string value)
    {
        var names = value.Split(',', StringSplitOptions.TrimEntries | StringSplitOptions.RemoveEmptyEntries);
        if (names.Length == 0)
            throw new GeneratorException("--types names no type");
        return names;
    }

    public sealed record Options(string Assembly, string Root, string? Module, List<string> References, string Out, string? Report,
                                 IReadOnlyList<string>? Types = null)
    {
        public static Options Parse(string[] args)
        {
            if (args.Length < 2 || args[0] != "model")
                throw new GeneratorException(Usage);
            string? root = null, module = null, output = null, report = null;
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
                    case "--report": report = value; break;
                    case "--types": types = TypeList(value); break;
                    default: throw new GeneratorException($"unknown option {flag}\n{Usage}");
                }
            }
            if (root is null || output is null)
                throw new GeneratorException(Usage);
            return new Options(args[1], root, module, refs, output, report, types);
        }
    }
}
