using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

public class CommandLineTests
{
    [Fact]
    public void MissingAssemblyIsReportedByName()
    {
        var e = Assert.Throws<GeneratorException>(() => Program.Run(["model", "/nonexistent/x.dll", "--root", "A", "--out", "m.txt"], TextWriter.Null));
        Assert.StartsWith("cannot read '/nonexistent/x.dll'", e.Message);
    }

    [Fact]
    public void NonAssemblyFileIsRefused()
    {
        string path = Path.GetTempFileName();
        try
        {
            File.WriteAllText(path, "not a portable executable");
            var e = Assert.Throws<GeneratorException>(() => ModelBuilder.Build(path, "A", null, []));
            Assert.Contains("is not a managed assembly", e.Message);
        }
        finally
        {
            File.Delete(path);
        }
    }

    [Theory]
    [InlineData("")]
    [InlineData("emit a.dll")]
    [InlineData("model a.dll --out m.txt")]
    [InlineData("model a.dll --root A")]
    [InlineData("model a.dll --root A --out")]
    [InlineData("model a.dll --root A --out m.txt --colour x")]
    public void BadArgumentsShowTheUsage(string commandLine)
    {
        string[] args = commandLine.Split(' ', StringSplitOptions.RemoveEmptyEntries);
        var e = Assert.Throws<GeneratorException>(() => Program.Options.Parse(args));
        Assert.Contains(Program.Usage, e.Message);
    }

    [Fact]
    public void ReportIsOptionalAndOptionsRepeat()
    {
        var o = Program.Options.Parse(["model", "a.dll", "--ref", "r1", "--root", "A", "--ref", "r2", "--out", "m.txt"]);
        Assert.Equal(["r1", "r2"], o.References);
        Assert.Null(o.Report);
        Assert.Null(o.Module);
    }

    [Fact]
    public void MainReturnsTwoAndWritesNothingOnBadInput()
    {
        string output = Path.Combine(Path.GetTempPath(), "wrpgen-never-written.txt");
        File.Delete(output);
        var err = Console.Error;
        var captured = new StringWriter();
        Console.SetError(captured);
        try
        {
            Assert.Equal(2, Program.Main(["model", "/nonexistent/x.dll", "--root", "A", "--out", output]));
        }
        finally
        {
            Console.SetError(err);
        }
        Assert.StartsWith("wrpgen: cannot read", captured.ToString());
        Assert.False(File.Exists(output));
    }
}
