using System.Diagnostics;
using System.Text.RegularExpressions;
using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

public class CppEmitterTests
{
    private static readonly Lazy<SortedDictionary<string, string>> _files = new(() => CppEmitter.Emit(Fixture.Model));

    private static SortedDictionary<string, string> Files => _files.Value;

    private static readonly Regex Forwarder = new(
        @"^    (?<ret>[\w*]+) (?<name>\w+)\((?<params>[^)]*)\) const \{ return", RegexOptions.Compiled | RegexOptions.Multiline);

    private static readonly Regex CsStub = new(
        @"\[UnmanagedCallersOnly\]\n    public static (?<ret>[\w*]+) (?<name>\w+)\((?<params>[^)]*)\)(?<body>\n| => )", RegexOptions.Compiled);

    /// <summary>The text of one type's section in its namespace's source file.</summary>
    private static string Section(TypeModel t)
    {
        string source = Files[t.Module.Replace('.', '_') + ".cpp"];
        int start = source.IndexOf($"// ---- {t.FullName}\n", StringComparison.Ordinal);
        Assert.True(start >= 0, t.FullName);
        int end = source.IndexOf("// ---- ", start + 8, StringComparison.Ordinal);
        return end < 0 ? source[start..] : source[start..end];
    }

    [Fact]
    public void OneHeaderAndSourcePerNamespaceWithTypesPlusTheRegistration()
    {
        var expected = new SortedSet<string>(StringComparer.Ordinal)
        {
            CppEmitter.BindingsHeader, CppEmitter.RegistrationHeader, CppEmitter.RegistrationSource,
            "wrpgen_generic.h", "wrpgen_generic.cpp",
        };
        foreach (var m in Fixture.Model.Modules.Where(m => Fixture.Model.Types.Any(t => t.Module == m.PythonName)))
        {
            expected.Add(CppEmitter.FileBase(m) + ".h");
            expected.Add(CppEmitter.FileBase(m) + ".cpp");
        }
        Assert.Equal(expected, new SortedSet<string>(Files.Keys, StringComparer.Ordinal));
        Assert.All(Files.Values, text => Assert.StartsWith(CppEmitter.Banner + "\n", text));
    }

    [Fact]
    public void OutputDependsOnTheModelOnly()
    {
        var again = CppEmitter.Emit(Fixture.Build());
        Assert.Equal(Files, again);
    }

    [Fact]
    public void EveryTableBindsItsStubsInBindingOrder()
    {
        var slot = new Regex(@"^            \{""(?<name>\w+)"", slot_of\(", RegexOptions.Multiline);
        foreach (var t in Fixture.Model.Types)
        {
            var bound = slot.Matches(Section(t)).Select(m => m.Groups["name"].Value).ToList();
            Assert.Equal(t.BindingOrder().ToList(), bound);
        }
    }

    private static string CsType(string cpp) => cpp switch
    {
        "void" => "void",
        "int32_t" => "int",
        "int8_t" => "sbyte",
        "uint8_t" => "byte",
        "int16_t" => "short",
        "uint16_t" => "ushort",
        "uint32_t" => "uint",
        "int64_t" => "long",
        "uint64_t" => "ulong",
        "float" => "float",
        "double" => "double",
        "void*" or "PyObject*" => "IntPtr",
        "void**" => "IntPtr*",
        _ when cpp.StartsWith("PyOptional<", StringComparison.Ordinal) => $"PyOptional<{CsType(cpp[11..cpp.IndexOf('>')])}>*",
        _ => cpp,  // the argument records keep their names on both sides
    };

    private static List<string> ParamTypes(string list, bool cpp) =>
        list.Split(',', StringSplitOptions.RemoveEmptyEntries | StringSplitOptions.TrimEntries)
            .Select(p => p[..p.LastIndexOf(' ')])
            .Select(p => cpp ? CsType(p) : p)
            .ToList();

    [Fact]
    public void NativeCallsMatchTheManagedStubsSignatures()
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen-cpp-abi").FullName;
        try
        {
            Assert.Equal(0, Program.Run(["emit-cs", Fixture.AssemblyPath, "--root", Fixture.Root, "--out", dir], TextWriter.Null));
            var managed = new Dictionary<(string, string), (string Ret, List<string> Params)>();
            foreach (string file in Directory.EnumerateFiles(dir, "*.cs", SearchOption.AllDirectories))
            {
                string text = File.ReadAllText(file).Replace("\r\n", "\n");
                var cls = Regex.Match(text, @"static unsafe class (\w+)");
                if (!cls.Success)
                    continue;
                foreach (Match m in CsStub.Matches(text))
                    managed[(cls.Groups[1].Value, m.Groups["name"].Value)] = (m.Groups["ret"].Value, ParamTypes(m.Groups["params"].Value, false));
            }
            int compared = 0;
            foreach (var t in Fixture.Model.Types)
            {
                string stubClass = t.StubClass[(t.StubClass.LastIndexOf('.') + 1)..];
                foreach (Match m in Forwarder.Matches(Section(t)))
                {
                    string name = m.Groups["name"].Value;
                    Assert.True(managed.TryGetValue((stubClass, name), out var cs), $"{stubClass}.{name} has no managed stub");
                    Assert.Equal(cs.Ret, CsType(m.Groups["ret"].Value));
                    Assert.Equal(cs.Params, ParamTypes(m.Groups["params"].Value, true));
                    compared++;
                }
            }
            Assert.Equal(Fixture.Model.Types.Sum(t => t.BindingOrder().Count()), compared);
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }

    [Fact]
    public void OverloadsDispatchWhileSingleSignaturesParseDirectly()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        string section = Section(doc);
        int saves = doc.Methods.Count(m => m.PythonName == "save");
        Assert.True(saves > 1);
        Assert.Contains($"wrpPy_mgfn_{doc.Hash}_Document_000_save(PyObject* self, PyObject* args, PyObject* kwargs) {{", section);
        Assert.Contains($"PyOverloadFailureSlots<{saves}> failures;", section);
        Assert.Equal(saves, Regex.Matches(section, @"table\.call_\d{3}_Save\(").Count);
        Assert.Contains("static const char* const kw[] = {\"file_name\", \"save_format\", nullptr};", section);
        Assert.Contains($"wrpPy_mtfn_{doc.Hash}_Document_000_to_bytes(PyObject* self, PyObject*) {{", section);
        Assert.Matches(@"\{""from_text"", [^\n]*METH_VARARGS \| METH_KEYWORDS \| METH_STATIC, """"\}", section);
        Assert.Matches(@"\{""to_bytes"", [^\n]*METH_NOARGS, """"\}", section);
    }

    [Fact]
    public void OnlyLongRunningCallsWithoutADocumentLetGoOfTheInterpreterLockHere()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        Assert.True(doc.Methods.Single(m => m.Stub == "call_000_Save").LongRunning);
        string section = Section(doc);
        // a load has no document to hold yet: the native side lets go of the lock around it
        Assert.Single(Regex.Matches(section, @"PyShUnlocked_Call"));
        Assert.Matches(@"PyShBound_Attach\(self, PyShUnlocked_Call\(\[&\] \{ return table\.ctor_\d{3}_Document\(", section);
        // a save holds its document first, and lets go of the lock in managed code
        Assert.Contains("    table.call_000_Save(PyShBound_Handle(self), a0.get(), &result);", section);
    }

    [Fact]
    public void RuledValuesTakeTheRefusingConverters()
    {
        var font = Fixture.Type("Quorix.Folio.Font");
        string section = Section(font);
        Assert.Contains("fn_conv_py_float_to_clr_double_finite(value, &a0)", section);
        Assert.Contains("return marshal_fail_negative(\"kerning\", static_cast<long long>(a0)) - 1;", section);
        var doc = Fixture.Type("Quorix.Folio.Document");
        Assert.Contains("PyShArg_Converter(&fn_conv_py_strorpath_to_clr_string_not_none)", Section(doc));
        var options = Fixture.Type("Quorix.Folio.LoadOptions");
        Assert.Contains("fn_conv_py_string_to_clr_string(value, &a0)", Section(options));
    }

    [Fact]
    public void InstanceEntriesRefuseAReceiverWithoutAManagedObjectAndStaticOnesHaveNone()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        string section = Section(doc);
        string check = $"if (wrpPy_uafn_{doc.Hash}_Document_invalidate() || PyShBound_Unbound(self))";
        string Body(string head)
        {
            int start = section.IndexOf(head, StringComparison.Ordinal);
            Assert.True(start >= 0, head);
            return section[start..section.IndexOf("\n}\n", start, StringComparison.Ordinal)];
        }
        Assert.Contains(check, Body($"wrpPy_mgfn_{doc.Hash}_Document_000_save("));
        Assert.Contains(check, Body($"wrpPy_mtfn_{doc.Hash}_Document_000_to_bytes("));
        var property = doc.Properties.First(p => p.Getter is not null);
        Assert.Contains(check, Body($"_get_{property.PythonName}(PyObject* self, void*)"));
        string fromText = Body($"_Document_000_from_text(");
        Assert.DoesNotContain("PyShBound_Unbound", fromText);
        Assert.Contains($"wrpPy_uafn_{doc.Hash}_Document_invalidate()", fromText);
    }

    [Fact]
    public void AMethodHidingABaseMethodTriesTheBasesOverloadsLast()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        var node = Fixture.Type("Quorix.Folio.Node");
        Assert.Equal(node, doc.Methods.Single(m => m.PythonName == "clone").Hides);
        string hook = $"wrpPy_htgn_{node.Hash}_Node_000_clone";
        string own = Section(doc);
        // a single own signature still dispatches: the base's take arguments the own one refuses
        Assert.Matches(@"\{""clone"", [^\n]*METH_VARARGS \| METH_KEYWORDS, """"\}", own);
        Assert.Contains("PyOverloadFailureSlots<2> failures;", own);
        Assert.Contains($"PyObject* inherited = {hook}(PyShBound_Handle(self), args, kwargs, &hook_error);", own);
        Assert.True(own.IndexOf("table.call_000_Clone(", StringComparison.Ordinal) < own.IndexOf(hook, StringComparison.Ordinal));
        string baseSection = Section(node);
        Assert.Contains($"PyObject* {hook}(void* handle, PyObject* args, PyObject* kwargs, PyObject** error_value) {{", baseSection);
        Assert.Contains("table.call_000_Clone(handle, a0, &result);", baseSection);
        Assert.Contains("*error_value = failures.take_last();", baseSection);
        Assert.Contains($"PyObject* {hook}(", Files[node.Module.Replace('.', '_') + ".h"]);
        Assert.DoesNotContain("wrpPy_htgn_", Section(Fixture.Type("Quorix.Folio.Run")));
    }

    /// <summary>The Python names entered in one of the type's method-definition arrays.</summary>
    private static List<string> Entries(string section, string array)
    {
        int start = section.IndexOf(array + "[] = {\n", StringComparison.Ordinal);
        if (start < 0)
            return [];
        string block = section[start..section.IndexOf("\n};\n", start, StringComparison.Ordinal)];
        return Regex.Matches(block, @"\{""(\w+)"", ").Select(m => m.Groups[1].Value).ToList();
    }

    [Theory]
    [InlineData("Quorix.Folio.Cluster", "get_string", "000", "001")]
    [InlineData("Quorix.Folio.Style", "describe", "001", "000")]
    public void AStaticAndAnInstanceMethodOfOneNameBecomeOneMixedDescriptor(string type, string name, string staticSlot, string instanceSlot)
    {
        var t = Fixture.Type(type);
        string id = t.Hash + "_" + t.Name, section = Section(t);
        Assert.DoesNotContain(name, Entries(section, "wrpPy_tymd_" + id));
        // each pair is written {static form, instance form} on one line; the static one is called without a receiver
        var pair = Regex.Match(section, $@"^    \{{\{{""{name}"", [^\n]*_{staticSlot}_{name}\)\), (?<sflags>[A-Z_ |]+), """"\}}, " +
                                        $@"\{{""{name}"", [^\n]*_{instanceSlot}_{name}\)\), (?<iflags>[A-Z_ |]+), """"\}}\}},$", RegexOptions.Multiline);
        Assert.True(pair.Success, section);
        Assert.DoesNotContain("METH_STATIC", pair.Groups["sflags"].Value);
        Assert.DoesNotContain("METH_STATIC", pair.Groups["iflags"].Value);
        int count = Entries(section, "wrpPy_tymx_" + id).Count / 2;
        Assert.Contains($"return PyShBound_InstallMixedMethods(&wrpPy_tyds_{id}, wrpPy_tymx_{id}, {count});", section);
        Assert.Matches($@"PyShBound_RegisterType\(module, &wrpPy_tyds_{id}, [&\w]+, (true|false), wrpPy_eypi_{id}, ", section);
        Assert.Contains($"int wrpPy_eypi_{id}();", Files[t.Module.Replace('.', '_') + ".h"]);
    }

    [Fact]
    public void AStaticMethodNamedGetTypeTakesTheBuiltinAsItsInstanceForm()
    {
        var style = Fixture.Type("Quorix.Folio.Style");
        string id = style.Hash + "_Style", section = Section(style);
        Assert.Equal(["describe", "describe", "get_type", "get_type"], Entries(section, "wrpPy_tymx_" + id));
        Assert.Matches($@"\{{\{{""get_type"", [^\n]*_000_get_type\)\), METH_VARARGS \| METH_KEYWORDS, """"\}}, " +
                       @"\{""get_type"", wrapClrObject_get_type, METH_NOARGS, """"\}\},", section);
        Assert.Equal(["_type_of", "_cast_to", "_cast_from", "_reinterpret_obj", "_cast_as", "_is_assignable", "_qrxsc2p_asserttp"],
                     Entries(section, "wrpPy_tymd_" + id));

        // everywhere else the built-in stays in the table once and nothing is mixed
        foreach (var t in Fixture.Model.Types.Where(t => t.Kind is TypeKind.Class or TypeKind.Struct && t.Name is not ("Style" or "Cluster")))
        {
            string other = Section(t);
            Assert.Single(Entries(other, $"wrpPy_tymd_{t.Hash}_{t.Name}"), e => e == "get_type");
            Assert.DoesNotContain("wrpPy_tymx_", other);
            Assert.DoesNotContain("PyShBound_InstallMixedMethods", other);
        }
    }

    [Fact]
    public void ConstructorlessTypesRefuseConstructionAndOthersDispatch()
    {
        var hyphenation = Fixture.Type("Quorix.Folio.Hyphenation");
        Assert.Empty(hyphenation.Constructors);
        Assert.Contains($"wrpPy_tpsb_{hyphenation.Hash}_Hyphenation_tp_new, nullptr);", Section(hyphenation));
        var doc = Fixture.Type("Quorix.Folio.Document");
        Assert.Contains($"PyOverloadFailureSlots<{doc.Constructors.Count}> failures;", Section(doc));
        Assert.Contains("return failures.raise_int();", Section(doc));
    }

    [Fact]
    public void DerivedTypesCheckTheirBasesNearestFirst()
    {
        var doc = Fixture.Type("Quorix.Folio.Document");
        var bases = new List<string>();
        for (var b = doc.Base; b is not null; b = b.Base)
            bases.Add($"&wrpPy_bltp_{b.Hash}_{b.Name}_is_not_valid");
        Assert.True(bases.Count >= 2);
        Assert.Contains($"PyHostState_Build(PyHost_cs_{doc.Hash}_Document::get_instance(), {{{string.Join(", ", bases)}}});", Section(doc));
        Assert.Contains($"PyShBound_RegisterType(module, &wrpPy_tyds_{doc.Hash}_Document, &wrpPy_tyds_{doc.Base!.Hash}_{doc.Base.Name}, false,",
            Section(doc));
    }

    [Fact]
    public void RegistrationPlacesBasesFirstAndTypesInTheirModules()
    {
        string registration = Files[CppEmitter.RegistrationSource];
        var steps = Regex.Matches(registration, @"^        wrpPy_rgtp_(\w+),$", RegexOptions.Multiline).Select(m => m.Groups[1].Value).ToList();
        var modules = Regex.Matches(registration, @"^        (\d+),$", RegexOptions.Multiline).Select(m => int.Parse(m.Groups[1].Value)).ToList();
        var types = Fixture.Model.Types;
        Assert.Equal(types.Select(t => t.Hash + "_" + t.Name), steps);
        Assert.Equal(types.Select(t => Fixture.Model.Modules.FindIndex(m => m.PythonName == t.Module)), modules);
        foreach (var t in types.Where(t => t.Base is not null))
            Assert.True(steps.IndexOf(t.Base!.Hash + "_" + t.Base.Name) < steps.IndexOf(t.Hash + "_" + t.Name), t.FullName);
        Assert.Contains($"int {CppEmitter.RegisterFunction(Fixture.Model)}(PyObject* const* modules)", registration);
        Assert.Equal("wrpPyj_mlof_" + TypeHash.Of(Fixture.Model.RootModule) + "_register", CppEmitter.RegisterFunction(Fixture.Model));
    }

    [Theory]
    [InlineData("fileName", true)]
    [InlineData("path", true)]
    [InlineData("folder", true)]
    [InlineData("imageFileName", true)]
    [InlineData("outputDir", true)]
    [InlineData("baseDIRECTORY", true)]
    [InlineData("fontsFolder", true)]
    [InlineData("text", false)]
    [InlineData("pathology", false)]
    [InlineData("fileNames", false)]
    [InlineData("direction", false)]
    public void FileAndFolderNamesAlsoTakePathLikes(string name, bool isPath)
    {
        Assert.Equal(isPath, CppEmitter.IsPathName(name));
    }

    [Fact]
    public void EnumerationsKnowTheirBaseAndUnsignedValues()
    {
        var flags = Fixture.Type("Quorix.Folio.GlyphFlags");
        string section = Section(flags);
        Assert.Contains("{\"HIGH\", \"2147483648\"},", section);
        Assert.Contains($"PyShEnum_Build(\"GlyphFlags\", wrpPy_enmb_{flags.Hash}_GlyphFlags, {flags.EnumMembers.Count}, true,", section);
        Assert.Contains($"PyShEnum_ConvClrToPy(wrpPy_tyds_{flags.Hash}_GlyphFlags, value, true)", section);
        var nodeType = Fixture.Type("Quorix.Folio.NodeType");
        Assert.Contains($"PyShEnum_ConvClrToPy(wrpPy_tyds_{nodeType.Hash}_NodeType, value, false)", Section(nodeType));
    }

    [Fact]
    public void WritingKeepsUnchangedFilesAndRemovesOnlyStaleGeneratedOnes()
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen-cpp").FullName;
        try
        {
            Assert.Equal(Files.Count, CppEmitter.WriteFiles(Files, dir));
            File.WriteAllText(Path.Combine(dir, "old_namespace.cpp"), CppEmitter.Banner + "\n// gone\n");
            File.WriteAllText(Path.Combine(dir, "hand_written.cpp"), "// mine\n");
            string first = Files.Keys.First(k => k.EndsWith(".cpp", StringComparison.Ordinal));
            File.AppendAllText(Path.Combine(dir, first), "// edited\n");

            Assert.Equal(1, CppEmitter.WriteFiles(Files, dir));
            Assert.False(File.Exists(Path.Combine(dir, "old_namespace.cpp")));
            Assert.True(File.Exists(Path.Combine(dir, "hand_written.cpp")));
            Assert.Equal(Files[first], File.ReadAllText(Path.Combine(dir, first)));
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }

    [Theory]
    [InlineData("emit-cpp a.dll --root A --out d")]
    [InlineData("emit-cpp a.dll --module m --out d")]
    [InlineData("emit-cpp --root A --module m --out d")]
    [InlineData("emit-cpp a.dll --root A --module m --out d --report r")]
    public void EmitCppArgumentsShowItsUsage(string commandLine)
    {
        var e = Assert.Throws<GeneratorException>(() => Program.Run(commandLine.Split(' '), TextWriter.Null));
        Assert.Contains(EmitCppCommand.Usage, e.Message);
    }

    /// <summary>The repository root, from this file's place in it.</summary>
    private static string RepoRoot([System.Runtime.CompilerServices.CallerFilePath] string path = "") =>
        Path.GetFullPath(Path.Combine(Path.GetDirectoryName(path)!, "..", "..", ".."));

    private static string Run(string file, string arguments)
    {
        var info = new ProcessStartInfo(file, arguments) { RedirectStandardOutput = true, RedirectStandardError = true };
        using var process = Process.Start(info)!;
        string output = process.StandardOutput.ReadToEnd() + process.StandardError.ReadToEnd();
        process.WaitForExit();
        Assert.True(process.ExitCode == 0, $"{file} {arguments}\n{output}");
        return output;
    }

    [Fact]
    public void GeneratedSourcesCompileAgainstTheRuntimeHeaders()
    {
        string dir = Directory.CreateTempSubdirectory("wrpgen-cpp-compile").FullName;
        try
        {
            CppEmitter.WriteFiles(Files, dir);
            string include = Run("python3", "-c \"import sysconfig; print(sysconfig.get_paths()['include'])\"").Trim();
            foreach (string source in Files.Keys.Where(k => k.EndsWith(".cpp", StringComparison.Ordinal)))
                Run("g++", $"-std=c++17 -fsyntax-only -Wall -Wextra -Werror -Wno-missing-field-initializers -Wno-cast-function-type " +
                           $"-I{RepoRoot()} -I{dir} -I{include} {Path.Combine(dir, source)}");
        }
        finally
        {
            Directory.Delete(dir, recursive: true);
        }
    }

    [Fact]
    public void ByReferenceValuesGoBackIntoTheCallersListsWithTheResult()
    {
        var stamp = Fixture.Type("Quorix.Folio.Stamp");
        string section = Section(stamp);
        // out: the list alone; the object value comes back as a variant record
        Assert.Contains("PyObject* a1 = nullptr;", section);
        Assert.Contains("PyShArg_Converter(&fn_conv_py_orefpar_to_clr_orefpar), &a1", section);
        Assert.Contains("PyShOutValue a1_out(a1, PyShOutForm_Object);", section);
        Assert.Contains("return PyShBound_DeliverOuts(PyBool_FromLong(result), {&a1_out});", section);
        // ref: item 0 converts as the element, the value after the call is delivered; `in` passes by value
        Assert.Contains("PyParamByRef a0 = {nullptr, PyShArg_Converter(&fn_conv_py_datetime_to_clr_datetime), &a0_in};", section);
        Assert.Contains("table.call_000_Shift(PyShBound_Handle(self), &a0_in, a0_out.record(), a1)", section);
        Assert.Contains("PyShOutValue a0_out(a0.list);", section);
        // nullable and record results come back through an out-slot
        Assert.Contains("if (!result.has_value)", section);
        Assert.Contains("return fn_conv_clr_datetimeoffset_to_py_datetime(&result);", section);
        Assert.Contains("PyShOptional_Conv<PyDecimalArg, fn_conv_py_decimal_to_clr_decimal>", section);
    }
}
