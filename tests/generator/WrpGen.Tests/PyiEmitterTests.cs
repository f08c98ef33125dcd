using System.Text;
using System.Xml.Linq;
using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>
/// The type stubs of the fixture, byte for byte against tests/generator/golden/pyi (regenerate with
/// WRPGEN_UPDATE_GOLDEN=1), and the documentation names they are looked up by.
/// </summary>
public class PyiEmitterTests
{
    private static string DocPath => Path.ChangeExtension(Fixture.AssemblyPath, ".xml");
    private static string GoldenFolder => Path.Combine(Fixture.GoldenFolder, "pyi");

    private static SortedDictionary<string, string> Emit() =>
        PyiEmitter.Emit(Fixture.Model, new PyiEmitter.Options(["quorix.folio.drawing"], "VERSION: str\n", XmlDocs.Load(DocPath)));

    [Fact]
    public void StubsMatchGolden()
    {
        var files = Emit();
        if (Environment.GetEnvironmentVariable("WRPGEN_UPDATE_GOLDEN") == "1")
        {
            if (Directory.Exists(GoldenFolder))
                Directory.Delete(GoldenFolder, recursive: true);
            PyiEmitter.WriteFiles(files, GoldenFolder);
        }
        var golden = Directory.GetFiles(GoldenFolder, "*.pyi", SearchOption.AllDirectories)
            .Select(f => Path.GetRelativePath(GoldenFolder, f).Replace('\\', '/')).Order(StringComparer.Ordinal);
        Assert.Equal(golden, files.Keys);
        foreach (var (path, text) in files)
            Assert.Equal(File.ReadAllText(Path.Combine(GoldenFolder, path), Encoding.UTF8), text);
    }

    [Fact]
    public void ModulesWithChildrenArePackagesAndOthersPlainFiles()
    {
        var files = Emit();
        Assert.Contains("quorix/folio/__init__.pyi", files.Keys);
        Assert.Contains("quorix/folio/drawing/__init__.pyi", files.Keys);
        Assert.Contains("quorix/folio/drawing/charts.pyi", files.Keys);
        Assert.Contains("quorix/folio/saving.pyi", files.Keys);
        Assert.StartsWith(PyiEmitter.Banner + "\n", files["quorix/folio/__init__.pyi"]);
        Assert.Contains("\nVERSION: str\n", files["quorix/folio/__init__.pyi"]);
        Assert.DoesNotContain("VERSION", files["quorix/folio/saving.pyi"]);
    }

    // Every summary the compiler wrote for a bound member is found under the name the model computes.
    [Fact]
    public void DocumentationNamesMatchTheCompilers()
    {
        var written = XDocument.Load(DocPath).Root!.Descendants("member").Select(m => m.Attribute("name")!.Value).ToList();
        Assert.NotEmpty(written);
        var model = Fixture.Model;
        var known = model.Types.SelectMany(t => new[] { t.DocId }
            .Concat(t.Constructors.Select(c => c.DocId)).Concat(t.Methods.Select(m => m.DocId))
            .Concat(t.Properties.Select(p => p.DocId)).Concat(t.StaticAttributes.Select(s => s.DocId))
            .Concat(t.EnumMembers.Select(m => m.DocId))).ToHashSet(StringComparer.Ordinal);
        Assert.All(written, name => Assert.Contains(name, known));
    }

    [Fact]
    public void UndocumentedListsBoundMembersWithoutSummaryOnly()
    {
        var missing = PyiEmitter.Undocumented(Fixture.Model, XmlDocs.Load(DocPath)).ToList();
        Assert.Contains("M:Quorix.Folio.Document.#ctor(System.String)", missing);
        Assert.Contains("M:Quorix.Folio.Document.Save(System.IO.Stream,Quorix.Folio.SaveFormat)", missing);
        Assert.DoesNotContain("M:Quorix.Folio.Document.#ctor", missing);
        Assert.DoesNotContain("T:Quorix.Folio.Document", missing);
        Assert.DoesNotContain("F:Quorix.Folio.SaveFormat.Docx", missing);
        Assert.DoesNotContain(missing, m => m.StartsWith("M:Quorix.Folio.Cluster.#ctor", StringComparison.Ordinal) && !m.Contains('('));
    }

    [Fact]
    public void SummariesBecomePlainTextWithReferencesShortened()
    {
        var docs = XmlDocs.Load(DocPath);
        Assert.Equal("A document: Save writes it, as PDF too.", docs.Summary("T:Quorix.Folio.Document"));
        Assert.Equal("True for documents read from HTML.\n\nSays \"yes\" with true; backslashes \\ and quotes \"\"\" survive.",
                     docs.Summary("P:Quorix.Folio.Document.IsHTMLDocument"));
        Assert.Null(docs.Summary("P:Quorix.Folio.Document.Title"));
    }

    [Fact]
    public void ACompilerMadeConstructorReadsAsItsClassMadeWithDefaults()
    {
        string path = Path.GetTempFileName();
        try
        {
            File.WriteAllText(path, """
                <doc><members>
                  <member name="T:A.PdfOptions"><summary>Options for saving as PDF.</summary></member>
                  <member name="M:A.Listed.#ctor"><summary>Its own words.</summary></member>
                  <member name="T:A.Listed"><summary>A list.</summary></member>
                </members></doc>
                """);
            var docs = XmlDocs.Load(path);
            Assert.Equal("New, with its defaults. Options for saving as PDF.", docs.Summary("M:A.PdfOptions.#ctor"));
            Assert.Equal("Its own words.", docs.Summary("M:A.Listed.#ctor"));
            Assert.Null(docs.Summary("M:A.PdfOptions.#ctor(System.Int32)"));
            Assert.Null(docs.Summary("M:A.Bare.#ctor"));
        }
        finally
        {
            File.Delete(path);
        }
    }

    [Fact]
    public void ParametersKeepTheirPythonNamesAndTheReceiverGivesWay()
    {
        string root = Emit()["quorix/folio/__init__.pyi"];
        Assert.Contains("def __init__(self, from_: int, to: int) -> None", root);
        Assert.Contains("def apply(self_, self: int, result: int,", root);
    }
}

public class NullabilityTests
{
    [Fact]
    public void AnnotationsOfPropertiesResultsAndParametersAreRead()
    {
        var node = Fixture.Type("Quorix.Folio.Node");
        Assert.Equal(NullState.MayBeNull, node.Properties.Single(p => p.ManagedName == "Document").Null);
        Assert.Equal(NullState.NotNull, node.Methods.Single(m => m.ManagedName == "Clone").ResultNull);
        Assert.All(node.Methods.Where(m => m.ManagedName == "GetChildNodes"), m => Assert.Equal(NullState.MayBeNull, m.ResultNull));
        var load = Fixture.Type("Quorix.Folio.LoadOptions");
        Assert.Equal(NullState.MayBeNull, load.Properties.Single(p => p.ManagedName == "Password").Null);
        var ctor = Fixture.Type("Quorix.Folio.Document").Constructors.Single(c => c.Parameters.Count == 2);
        Assert.All(ctor.Parameters, p => Assert.Equal(NullState.NotNull, p.Null));
        Assert.Equal(NullState.MayBeNull, Fixture.Type("Quorix.Folio.Hyphenation").StaticAttributes.Single(s => s.ManagedName == "Callback").Null);
    }
}
