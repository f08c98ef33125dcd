using System.Diagnostics;
using System.Text;
using System.Text.RegularExpressions;
using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

public class CSharpEmitterTests
{
    private static bool Updating => Environment.GetEnvironmentVariable("WRPGEN_UPDATE_GOLDEN") == "1";

    private static string GoldenCs => Path.Combine(Fixture.GoldenFolder, "cs");

    private static readonly Regex StubHead = new(
        @"\[UnmanagedCallersOnly\]\n    public static (?<ret>[\w*]+) (?<name>\w+)\((?<params>[^)]*)\)(?<body>\n| => )", RegexOptions.Compiled);

    [Fact]
    public void EmittedFilesMatchGolden()
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen-cs").FullName;
        try
        {
            int rc = Program.Run(["emit-cs", Fixture.AssemblyPath, "--root", Fixture.Root, "--out", dir], TextWriter.Null);
            Assert.Equal(0, rc);
            if (Updating)
            {
                if (Directory.Exists(GoldenCs))
                    Directory.Delete(GoldenCs, recursive: true);
                Directory.CreateDirectory(GoldenCs);
                foreach (string f in Directory.GetFiles(dir))
                    File.Copy(f, Path.Combine(GoldenCs, Path.GetFileName(f)));
            }
            var actual = Directory.GetFiles(dir).Select(Path.GetFileName).Order(StringComparer.Ordinal).ToList();
            var expected = Directory.GetFiles(GoldenCs).Select(Path.GetFileName).Order(StringComparer.Ordinal).ToList();
            Assert.Equal(expected, actual);
            foreach (string name in expected!)
            {
                string want = File.ReadAllText(Path.Combine(GoldenCs, name!), Encoding.UTF8);
                string got = File.ReadAllText(Path.Combine(dir, name!), Encoding.UTF8);
                Assert.True(want == got, $"{name} differs from its golden file; regenerate with WRPGEN_UPDATE_GOLDEN=1 and review");
            }
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }

    [Fact]
    public void OneFilePerStubClassNamedAfterIt()
    {
        var files = CSharpEmitter.Emit(Fixture.Model);
        // the instantiations' files, a twin per interface and the type index
        int generics = Fixture.Model.Generics.Count;
        int twins = Fixture.Model.Types.Count(t => t.Kind == TypeKind.Interface);
        Assert.Equal(Fixture.Model.Types.Count + generics + twins + 1, files.Count);
        Assert.Equal(CSharpEmitter.TypeIndexFile, files[^1].FileName);
        Assert.All(files.Skip(Fixture.Model.Types.Count).Take(generics), f => Assert.Matches(@"^SiApi_[0-9A-F]{8}\.cs$", f.FileName));
        Assert.All(files.Skip(Fixture.Model.Types.Count + generics).SkipLast(1), f => Assert.Matches(@"^WrpTw_[0-9A-F]{8}\.cs$", f.FileName));
        foreach (var (type, (name, text)) in Fixture.Model.Types.Zip(files))
        {
            string simple = type.StubClass.Split('.').Last();
            Assert.Equal(simple + ".cs", name);
            Assert.StartsWith(CSharpEmitter.Header + "\n", text);
            Assert.Contains($"public static unsafe class {simple}\n", text);
            string ns = type.StubClass[..type.StubClass.LastIndexOf('.')];
            Assert.Contains($"\nnamespace {ns};\n", text);
        }
    }

    [Fact]
    public void EveryTableSlotHasItsStubInBindingOrder()
    {
        foreach (var (type, (_, text)) in Fixture.Model.Types.Zip(CSharpEmitter.Emit(Fixture.Model)))
        {
            var stubs = StubHead.Matches(text).Select(m => m.Groups["name"].Value).ToList();
            Assert.Equal(type.BindingOrder().ToList(), stubs);
        }
    }

    [Fact]
    public void SignaturesAreBlittableAndEveryStubRaisesWhatItCatches()
    {
        var managedOnly = new Regex(@"\b(string|bool|char|object|byte\[\])\b");
        foreach (var (name, text) in CSharpEmitter.Emit(Fixture.Model))
        {
            if (name.StartsWith("WrpTw_", StringComparison.Ordinal))
            {
                // a twin is called by managed code only: no stubs, and its exceptions are the caller's
                Assert.DoesNotContain("UnmanagedCallersOnly", text);
                continue;
            }
            var heads = StubHead.Matches(text);
            foreach (Match m in heads)
            {
                Assert.DoesNotMatch(managedOnly, m.Groups["ret"].Value + " " + m.Groups["params"].Value);
            }
            // a stub with a body catches; a one-line stub forwards to a shared built-in that does
            int bodies = heads.Count(m => m.Groups["body"].Value == "\n");
            // (generic instantiations forward every stub to the shared bodies of SequenceStubs)
            Assert.All(heads.Where(m => m.Groups["body"].Value != "\n" && !text.Contains("namespace Quorix.WrpGen.Generic;")),
                       m => Assert.Matches(@"^btp_", m.Groups["name"].Value));
            Assert.Equal(bodies, Regex.Matches(text, @"catch \(Exception e\)\n\s+\{\n\s+PyRuntime\.Raise\(e\);").Count);
            Assert.Equal(bodies, Regex.Matches(text, @"\n        try\n").Count);
        }
    }

    [Fact]
    public void ParametersFollowTheCallingContract()
    {
        var files = CSharpEmitter.Emit(Fixture.Model).ToDictionary(f => f.FileName, f => f.Text);
        string Head(string file, string stub)
        {
            var m = StubHead.Matches(files[file]).Single(h => h.Groups["name"].Value == stub);
            return $"{m.Groups["ret"].Value} ({m.Groups["params"].Value})";
        }
        string doc = "WrpCs_Document_42DC8423.cs", font = "WrpCs_Font_2F745A5F.cs";
        // receiver first, the out slot of a bound result last
        Assert.Equal("void (IntPtr self, VariantArg* @stream, int @saveFormat, IntPtr* result)", Head(doc, "call_002_Save"));
        Assert.Equal("IntPtr (PyStringArg* @fileName, IntPtr @loadOptions)", Head(doc, "ctor_003_Document"));
        Assert.Equal("IntPtr (IntPtr self)", Head(doc, "call_000_ToBytes"));
        Assert.Equal("void (IntPtr self, PyBytesArg* @data)", Head(doc, "call_000_Load"));
        Assert.Equal("void (PyStringArg* @text, IntPtr* result)", Head(doc, "call_000_FromText"));  // static: no receiver
        Assert.Equal("int (IntPtr self)", Head(doc, "get_IsHTMLDocument"));
        Assert.Equal("int (IntPtr self)", Head(doc, "get_DefaultStyle"));
        Assert.Equal("void (IntPtr self, int @value)", Head(doc, "set_DefaultStyle"));
        Assert.Equal("ushort (IntPtr self)", Head(font, "get_Marker"));
        Assert.Equal("void (IntPtr self, sbyte @value)", Head(font, "set_Kerning"));
        Assert.Equal("void (IntPtr self, ulong @value)", Head(font, "set_Mask"));
        Assert.Equal("float (IntPtr self)", Head(font, "get_Position"));
        Assert.Equal("void (VariantArg* result)", Head("WrpCs_ControlC_DE22165B.cs", "getsa_CellChar"));
        Assert.Equal("void (int @value)", Head("WrpCs_ControlC_DE22165B.cs", "setsa_UsageCount"));
        Assert.Equal("int (int value, IntPtr* result)", Head("WrpCs_NodeType_B84F6B0A.cs", "btp_AsUniEnum"));
        Assert.Equal("int (IntPtr obj, IntPtr* result)", Head("WrpCs_Cluster_C8CC01B8.cs", "btp_CastTo"));
        // a structure's stubs work on its box, so that setting a property changes the wrapped value
        Assert.Contains("ref var target = ref Unsafe.Unbox<global::Quorix.Folio.Cluster>(Handles.Target(self));",
                        files["WrpCs_Cluster_C8CC01B8.cs"]);
    }

    [Fact]
    public void ParameterNamesNeverShadowTheStubsOwnNames()
    {
        string run = CSharpEmitter.Emit(Fixture.Model).Single(f => f.FileName.StartsWith("WrpCs_Run_")).Text;
        var head = StubHead.Matches(run).Single(h => h.Groups["name"].Value == "call_000_Apply");
        Assert.Equal("IntPtr self, int @self_, int @result_, PyStringArg* @target_, int @e_, VariantArg* @arg0_",
                     head.Groups["params"].Value);
    }

    private static string StubBody(TypeModel t, string stub)
    {
        string text = CSharpEmitter.Emit(Fixture.Model).Single(f => f.FileName.EndsWith($"_{t.Hash}.cs", StringComparison.Ordinal)).Text;
        int start = text.IndexOf($" {stub}(", StringComparison.Ordinal);
        Assert.True(start > 0, stub);
        int end = text.IndexOf("[UnmanagedCallersOnly]", start, StringComparison.Ordinal);
        return end < 0 ? text[start..] : text[start..end];
    }

    [Fact]
    public void MembersOfDocumentObjectsHoldTheirDocumentForTheCall()
    {
        var run = Fixture.Type("Quorix.Folio.Run");
        var doc = Fixture.Type("Quorix.Folio.Document");
        Assert.Equal("Document", run.DocumentOf);          // Node's public property, inherited
        Assert.Null(Fixture.Type("Quorix.Folio.Font").DocumentOf);
        var list = Fixture.Type("Quorix.Folio.NodeList");
        Assert.Equal("Owner", list.DocumentOf);            // the internal member its attribute names
        Assert.Contains("var access = DocumentAccess.Enter(target.Owner);", StubBody(list, "get_Count"));
        foreach (string stub in new[] { "get_Text", "set_Text", "call_000_Apply" })
        {
            string body = StubBody(run, stub);
            Assert.Contains("var access = DocumentAccess.Enter(target.Document);", body);
            // given back on every path, before the catch raises in Python
            Assert.Matches(@"(?s)var access = .*try.*finally\s*\{\s*access\.Exit\(\);\s*\}.*catch \(Exception e\)", body);
        }
        // a static member has no receiver, and a type without a document takes none
        Assert.DoesNotContain("DocumentAccess", StubBody(doc, "call_000_FromText"));
        Assert.DoesNotContain("DocumentAccess", StubBody(Fixture.Type("Quorix.Folio.Font"), "get_Size"));
    }

    [Fact]
    public void LongRunningMembersLetGoOfTheInterpreterLockOnlyOnceTheyHoldTheDocument()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        var save = doc.Methods.Single(m => m.Stub == "call_000_Save");
        Assert.True(save.LongRunning);
        Assert.Contains("var access = DocumentAccess.EnterLong(target.Document);", StubBody(doc, save.Stub));
        var others = doc.Methods.Where(m => m.PythonName == "save" && !m.LongRunning).ToList();
        Assert.NotEmpty(others);
        Assert.All(others, m => Assert.Contains("DocumentAccess.Enter(target.Document);", StubBody(doc, m.Stub)));
        // a load has no document yet: the native side lets go of the lock around it
        Assert.All(doc.Constructors, c => Assert.DoesNotContain("DocumentAccess", StubBody(doc, c.Stub)));
    }

    [Fact]
    public void RewritingLeavesUnchangedFilesAloneAndDropsStaleOnes()
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen-cs").FullName;
        try
        {
            int twins = Fixture.Model.Types.Count(t => t.Kind == TypeKind.Interface);
            int files = Fixture.Model.Types.Count + Fixture.Model.Generics.Count + twins + 1;
            Assert.Equal(files, CSharpEmitter.WriteFiles(Fixture.Model, dir));
            string some = Directory.GetFiles(dir).Order(StringComparer.Ordinal).First();
            var stamp = new DateTime(2001, 1, 1, 0, 0, 0, DateTimeKind.Utc);
            File.SetLastWriteTimeUtc(some, stamp);
            File.WriteAllText(Path.Combine(dir, "WrpCs_Gone_00000000.cs"), "// from an earlier model");
            File.AppendAllText(Directory.GetFiles(dir).Order(StringComparer.Ordinal).Last(), "// edited by hand");

            Assert.Equal(1, CSharpEmitter.WriteFiles(Fixture.Model, dir));
            Assert.Equal(stamp, File.GetLastWriteTimeUtc(some));
            Assert.False(File.Exists(Path.Combine(dir, "WrpCs_Gone_00000000.cs")));
            Assert.Equal(files, Directory.GetFiles(dir).Length);
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }

    [Theory]
    [InlineData("emit-cs")]
    [InlineData("emit-cs --root A --out d")]
    [InlineData("emit-cs a.dll --out d")]
    [InlineData("emit-cs a.dll --root A")]
    [InlineData("emit-cs a.dll --root A --out d --report r")]
    public void BadEmitArgumentsShowTheUsage(string commandLine)
    {
        var e = Assert.Throws<GeneratorException>(() => Program.Run(commandLine.Split(' '), TextWriter.Null));
        Assert.Contains(EmitCsCommand.Usage, e.Message);
    }

    /// <summary>
    /// The stubs compile, without warnings, against the fixture and the hand-written interop
    /// sources they call: the only proof that the emitted calls resolve to the intended members.
    /// </summary>
    [Fact]
    public void EmittedStubsCompileWithTheInteropSources()
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen-compile").FullName;
        try
        {
            CSharpEmitter.WriteFiles(Fixture.Model, Path.Combine(dir, "gen"));
            string interop = Path.GetFullPath(Path.Combine(Fixture.GoldenFolder, "..", "..", "..", "managed",
                                                           "WrpInterop.Quorix.Folio", "Interop"));
            File.WriteAllText(Path.Combine(dir, "StubCheck.csproj"), $"""
                <Project Sdk="Microsoft.NET.Sdk">
                  <PropertyGroup>
                    <TargetFramework>net10.0</TargetFramework>
                    <ImplicitUsings>enable</ImplicitUsings>
                    <Nullable>enable</Nullable>
                    <AllowUnsafeBlocks>true</AllowUnsafeBlocks>
                    <TreatWarningsAsErrors>true</TreatWarningsAsErrors>
                    <EnableDefaultCompileItems>false</EnableDefaultCompileItems>
                  </PropertyGroup>
                  <ItemGroup>
                    <Compile Include="gen/*.cs" />
                    <Compile Include="DocumentAccess.cs" />
                    <Compile Include="{interop}/*.cs" />
                    <Reference Include="{Fixture.AssemblyPath}" />
                  </ItemGroup>
                </Project>
                """);
            // the real DocumentAccess reads the engine's own gate; the fixture gets its signature only
            File.WriteAllText(Path.Combine(dir, "DocumentAccess.cs"), """
                namespace Quorix.WrpGen.Interop;
                public struct DocumentAccess
                {
                    public static DocumentAccess Enter(Quorix.Folio.Node? document) => default;
                    public static DocumentAccess EnterLong(Quorix.Folio.Node? document) => default;
                    public void Exit() { }
                }
                """);
            File.Copy(Path.Combine(Fixture.GoldenFolder, "..", "NuGet.config"), Path.Combine(dir, "NuGet.config"));
            var start = new ProcessStartInfo("dotnet", ["build", "-nologo", "-v:q", "-m:1", "-c", "Release"])
            {
                WorkingDirectory = dir,
                RedirectStandardOutput = true,
                RedirectStandardError = true,
            };
            using var build = Process.Start(start)!;
            string output = build.StandardOutput.ReadToEnd() + build.StandardError.ReadToEnd();
            build.WaitForExit();
            Assert.True(build.ExitCode == 0, output);
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }
}
