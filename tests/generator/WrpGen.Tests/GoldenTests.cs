using System.Text;
using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>
/// The generator's output on the fixture, byte for byte. After an intended change, regenerate with
///   WRPGEN_UPDATE_GOLDEN=1 dotnet test tests/generator/WrpGen.Tests -c Release -m:2
/// and review the diff of tests/generator/golden/.
/// </summary>
public class GoldenTests
{
    private static bool Updating => Environment.GetEnvironmentVariable("WRPGEN_UPDATE_GOLDEN") == "1";

    [Theory]
    [InlineData("model.txt")]
    [InlineData("report.txt")]
    public void CommandLineOutputMatchesGolden(string file)
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen").FullName;
        try
        {
            string model = Path.Combine(dir, "model.txt"), report = Path.Combine(dir, "report.txt");
            int rc = Program.Run(["model", Fixture.AssemblyPath, "--root", Fixture.Root, "--ref", Fixture.FrameworkFolder,
                                  "--out", model, "--report", report], TextWriter.Null);
            Assert.Equal(0, rc);
            string golden = Path.Combine(Fixture.GoldenFolder, file);
            byte[] actual = File.ReadAllBytes(Path.Combine(dir, file));
            if (Updating)
                File.WriteAllBytes(golden, actual);
            Assert.True(File.Exists(golden), $"missing {golden}; regenerate with WRPGEN_UPDATE_GOLDEN=1");
            byte[] expected = File.ReadAllBytes(golden);
            if (!expected.AsSpan().SequenceEqual(actual))
                Assert.Equal(Encoding.UTF8.GetString(expected), Encoding.UTF8.GetString(actual));
            Assert.Equal(expected, actual);  // also catches differences a string comparison could hide
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }

    [Fact]
    public void OutputIsTheSameOnEveryRunAndNeedsNoCulture()
    {
        var culture = Thread.CurrentThread.CurrentCulture;
        string first = ModelWriter.Model(Fixture.Build()) + ModelWriter.Report(Fixture.Build());
        try
        {
            // a culture that writes negatives and digits differently must change nothing
            Thread.CurrentThread.CurrentCulture = new System.Globalization.CultureInfo("ar-SA");
            string second = ModelWriter.Model(Fixture.Build()) + ModelWriter.Report(Fixture.Build());
            Assert.Equal(first, second);
        }
        finally
        {
            Thread.CurrentThread.CurrentCulture = culture;
        }
    }

    [Fact]
    public void FilesHaveNoByteOrderMarkAndUnixLineEnds()
    {
        byte[] bytes = File.ReadAllBytes(Path.Combine(Fixture.GoldenFolder, "model.txt"));
        Assert.NotEqual(0xEF, bytes[0]);
        Assert.DoesNotContain((byte)'\r', bytes);
        Assert.Equal((byte)'\n', bytes[^1]);
    }
}
