using System.Runtime.CompilerServices;
using Quorix.WrpGen;

namespace WrpGen.Tests;

/// <summary>The fixture assembly, its model, and the folders the tests read and write.</summary>
public static class Fixture
{
    public const string Root = "Quorix.Folio";

    public static string AssemblyPath => Path.Combine(AppContext.BaseDirectory, "WrpGen.Fixture.dll");

    /// <summary>The running framework: it holds every assembly the fixture references.</summary>
    public static string FrameworkFolder => Path.GetDirectoryName(typeof(object).Assembly.Location)!;

    public static string GoldenFolder => Path.Combine(SourceFolder(), "..", "golden");

    private static readonly Lazy<AssemblyModel> _model = new(() => Build());

    public static AssemblyModel Model => _model.Value;

    public static AssemblyModel Build(params string[] referenceFolders) =>
        ModelBuilder.Build(AssemblyPath, Root, null, referenceFolders.Length == 0 ? [FrameworkFolder] : referenceFolders);

    public static TypeModel Type(string fullName) => Model.Types.Single(t => t.FullName == fullName);

    private static string SourceFolder([CallerFilePath] string path = "") => Path.GetDirectoryName(path)!;
}
