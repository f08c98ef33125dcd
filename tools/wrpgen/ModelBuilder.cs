using System.Globalization;
using System.Reflection;
using System.Reflection.Metadata;
using System.Reflection.PortableExecutable;

namespace Quorix.WrpGen;

/// <summary>A problem with the generator's input; the command line prints its message.</summary>
public sealed class GeneratorException(string message) : Exception(message);

/// <summary>
/// Reads one compiled assembly and builds the binding model: the public types of the root
/// namespace and its children, their carried members in metadata order, and the members left out.
/// </summary>
public sealed class ModelBuilder
{
    private const string ExternalInit = "System.Runtime.CompilerServices.IsExternalInit";
    private const string StreamType = "System.IO.Stream";

    private readonly MetadataReader _reader;
    private readonly Nullability _nulls;
    private readonly BindingRules _rules;
    private readonly ReferenceResolver _resolver;
    private readonly AssemblyModel _model;
    private readonly Dictionary<TypeDefinitionHandle, TypeModel> _bound = [];
    private readonly Dictionary<TypeDefinitionHandle, string> _unbound = [];
    private readonly List<TypeModel> _declared = [];
    private readonly HashSet<string>? _selected;
    private TypeModel? _object;
    private readonly Dictionary<string, GenericInstance> _generics = new(StringComparer.Ordinal);

    private ModelBuilder(MetadataReader reader, ReferenceResolver resolver, AssemblyModel model, HashSet<string>? selected)
    {
        _reader = reader;
        _nulls = new Nullability(reader);
        _rules = new BindingRules(reader);
        _resolver = resolver;
        _model = model;
        _selected = selected;
    }

    /// <summary>The model of the assembly; throws <see cref="GeneratorException"/> for unreadable input.</summary>
    /// <param name="selectedTypes">
    /// Full names of the only types to bind (each must be a public type under the root), or null
    /// for every public type under the root. Types left out of a selection are not reported.
    /// </param>
    public static AssemblyModel Build(string assemblyPath, string rootNamespace, string? rootModule,
                                      IReadOnlyList<string> referenceFolders, IReadOnlyCollection<string>? selectedTypes = null)
    {
        if (rootNamespace.Length == 0)
            throw new GeneratorException("the root namespace is empty");
        if (selectedTypes is { Count: 0 })
            throw new GeneratorException("the type selection is empty");
        byte[] image;
        try
        {
            image = File.ReadAllBytes(assemblyPath);
        }
        catch (Exception e) when (e is IOException or UnauthorizedAccessException)
        {
            throw new GeneratorException($"cannot read '{assemblyPath}': {e.Message}");
        }
        using var pe = new PEReader(new MemoryStream(image));
        MetadataReader reader;
        try
        {
            if (!pe.HasMetadata)
                throw new GeneratorException($"'{assemblyPath}' is not a managed assembly");
            reader = pe.GetMetadataReader();
            if (!reader.IsAssembly)
                throw new GeneratorException($"'{assemblyPath}' is a module without an assembly manifest");
        }
        catch (BadImageFormatException e)
        {
            throw new GeneratorException($"'{assemblyPath}' is not a managed assembly: {e.Message}");
        }

        var asm = reader.GetAssemblyDefinition();
        var model = new AssemblyModel
        {
            AssemblyName = reader.GetString(asm.Name),
            AssemblyVersion = asm.Version.ToString(),
            RootNamespace = rootNamespace,
            RootModule = rootModule ?? rootNamespace.ToLowerInvariant(),
        };
        using var resolver = new ReferenceResolver(referenceFolders);
        var selected = selectedTypes is null ? null : new HashSet<string>(selectedTypes, StringComparer.Ordinal);
        var builder = new ModelBuilder(reader, resolver, model, selected);
        builder.CollectTypes();
        builder.CheckSelection(assemblyPath);
        foreach (var type in builder._declared)
            builder.CollectMembers(type);
        builder.OrderTypes();
        builder.LinkSequences();
        model.Generics.AddRange(builder._generics.Values.OrderBy(g => g.ElementName, StringComparer.Ordinal));
        foreach (var type in model.Types)
            MarkHiddenOverloads(type);
        MarkPolymorphic(model);
        return model;
    }

    // ---- types ----

    private void CollectTypes()
    {
        foreach (var handle in _reader.TypeDefinitions)
        {
            var def = _reader.GetTypeDefinition(handle);
            var (ns, name) = MetadataNames.OfDefinition(_reader, handle);
            string full = ns.Length == 0 ? name : ns + "." + name;
            if (!IsPubliclyVisible(def))
                continue;
            string? reason = WhyTypeNotBound(def, ns, out var kind, out string underlying);
            if (_selected is not null && !_selected.Contains(full))
            {
                // a selection binds a handful of a large assembly's types: the rest is not news
                _unbound[handle] = reason ?? "not selected";
                continue;
            }
            if (reason is not null)
            {
                _unbound[handle] = reason;
                Skip(full, "(type)", reason);
                continue;
            }
            var type = new TypeModel
            {
                Namespace = ns,
                Name = name,
                Kind = kind,
                Module = ModuleOf(ns),
                Handle = handle,
                Underlying = underlying,
                DocumentMember = _rules.DocumentMember(def.GetCustomAttributes()),
            };
            _bound[handle] = type;
            _declared.Add(type);
            if (full == "System.Object")
                _object = type;
        }
        foreach (var type in _declared)
        {
            if (type.Kind is TypeKind.Class)
            {
                type.Base = NearestBoundBase(_reader.GetTypeDefinition(type.Handle));
                type.IsException = DerivesFromException(_reader.GetTypeDefinition(type.Handle));
            }
            if (type.Kind is TypeKind.Enum)
                type.IsFlags = HasFlagsAttribute(_reader.GetTypeDefinition(type.Handle));
        }
    }

    // Every selected name must have become a bound type; a typo would otherwise bind nothing silently.
    private void CheckSelection(string assemblyPath)
    {
        if (_selected is null)
            return;
        foreach (string name in _selected.Order(StringComparer.Ordinal))
        {
            if (_declared.Any(t => t.FullName == name))
                continue;
            var handle = _unbound.Keys.FirstOrDefault(h =>
            {
                var (ns, n) = MetadataNames.OfDefinition(_reader, h);
                return (ns.Length == 0 ? n : ns + "." + n) == name;
            });
            throw handle.IsNil
                ? new GeneratorException($"selected type {name} is not a public type of '{assemblyPath}'")
                : new GeneratorException($"selected type {name} cannot be bound: {_unbound[handle]}");
        }
    }

    private bool IsPubliclyVisible(TypeDefinition def)
    {
        var visibility = def.Attributes & TypeAttributes.VisibilityMask;
        if (visibility == TypeAttributes.Public)
            return true;
        return visibility == TypeAttributes.NestedPublic && IsPubliclyVisible(_reader.GetTypeDefinition(def.GetDeclaringType()));
    }

    /// <summary>Null when the public type is bound; otherwise why not.</summary>
    private string? WhyTypeNotBound(TypeDefinition def, string ns, out TypeKind kind, out string underlying)
    {
        kind = ReferenceResolver.Classify(_reader, def);
        underlying = "";
        if (!def.GetDeclaringType().IsNil)
            return "nested types are not bound yet";
        if (ns != _model.RootNamespace && !ns.StartsWith(_model.RootNamespace + ".", StringComparison.Ordinal))
            return $"outside the root namespace {_model.RootNamespace}";
        if (def.GetGenericParameters().Count > 0)
            return "generic types are not bound yet";
        if (kind == TypeKind.Delegate)
            return "delegates are not bound yet";
        if (kind == TypeKind.Enum)
        {
            var code = EnumUnderlying(def);
            underlying = TypeSig.Keyword(code);
            if (code is PrimitiveTypeCode.Int64 or PrimitiveTypeCode.UInt64)
                return "enumerations wider than 32 bits are not carried";
        }
        return null;
    }

    private PrimitiveTypeCode EnumUnderlying(TypeDefinition def)
    {
        foreach (var fh in def.GetFields())
        {
            var field = _reader.GetFieldDefinition(fh);
            if ((field.Attributes & FieldAttributes.Static) == 0)
            {
                var sig = field.DecodeSignature(TypeSigProvider.Instance, null).Unmodified;
                if (sig.Kind == SigKind.Primitive)
                    return sig.Primitive;
            }
        }
        return PrimitiveTypeCode.Int32;
    }

    private string ModuleOf(string ns)
    {
        if (ns == _model.RootNamespace)
            return _model.RootModule;
        return _model.RootModule + "." + ns[(_model.RootNamespace.Length + 1)..].ToLowerInvariant();
    }

    // A public class may derive from an internal one; Python sees the nearest public ancestor.
    private TypeModel? NearestBoundBase(TypeDefinition def)
    {
        var handle = def.BaseType;
        while (!handle.IsNil && handle.Kind == HandleKind.TypeDefinition)
        {
            var baseHandle = (TypeDefinitionHandle)handle;
            if (_bound.TryGetValue(baseHandle, out var bound))
                return bound;
            handle = _reader.GetTypeDefinition(baseHandle).BaseType;
        }
        return null;
    }

    // The chain leaves the assembly at a framework type; framework exceptions all derive from
    // System.Exception and are named for it, which is all that is visible without loading them.
    private bool DerivesFromException(TypeDefinition def)
    {
        var handle = def.BaseType;
        while (!handle.IsNil && handle.Kind == HandleKind.TypeDefinition)
            handle = _reader.GetTypeDefinition((TypeDefinitionHandle)handle).BaseType;
        if (handle.IsNil || handle.Kind != HandleKind.TypeReference)
            return false;
        var (ns, name, _) = MetadataNames.OfReference(_reader, (TypeReferenceHandle)handle);
        return (ns == "System" || ns.StartsWith("System.", StringComparison.Ordinal)) &&
               name.EndsWith("Exception", StringComparison.Ordinal);
    }

    private bool HasFlagsAttribute(TypeDefinition def)
    {
        foreach (var ah in def.GetCustomAttributes())
        {
            var ctor = _reader.GetCustomAttribute(ah).Constructor;
            string owner = ctor.Kind switch
            {
                HandleKind.MemberReference => OwnerName(_reader.GetMemberReference((MemberReferenceHandle)ctor).Parent),
                HandleKind.MethodDefinition => OwnerName(_reader.GetMethodDefinition((MethodDefinitionHandle)ctor).GetDeclaringType()),
                _ => "",
            };
            if (owner == "System.FlagsAttribute")
                return true;
        }
        return false;
    }

    private string OwnerName(EntityHandle handle)
    {
        if (handle.IsNil)
            return "";
        switch (handle.Kind)
        {
            case HandleKind.TypeReference:
                var (rns, rname, _) = MetadataNames.OfReference(_reader, (TypeReferenceHandle)handle);
                return rns + "." + rname;
            case HandleKind.TypeDefinition:
                var (dns, dname) = MetadataNames.OfDefinition(_reader, (TypeDefinitionHandle)handle);
                return dns + "." + dname;
            default:
                return "";
        }
    }

    // Registration needs every class after its base; otherwise metadata order stands.
    private void OrderTypes()
    {
        var placed = new HashSet<TypeModel>();
        foreach (var type in _declared)
            Place(type, placed);
        foreach (var type in _model.Types)
        {
            if (!_model.Modules.Any(m => m.Namespace == type.Namespace))
                _model.Modules.Add(new ModuleModel(type.Module, type.Namespace));
        }
    }

    private void Place(TypeModel type, HashSet<TypeModel> placed)
    {
        if (!placed.Add(type))
            return;
        if (type.Base is not null)
            Place(type.Base, placed);
        _model.Types.Add(type);
    }

    private static void MarkPolymorphic(AssemblyModel model)
    {
        foreach (var type in model.Types)
        {
            if (type.Kind == TypeKind.Interface)
                type.IsPolymorphic = true;
            for (var b = type.Base; b is not null; b = b.Base)
                b.IsPolymorphic = true;
        }
    }

    // ---- members ----

    // A Python method hides every base method of its name, so its dispatcher must also try theirs.
    private static void MarkHiddenOverloads(TypeModel type)
    {
        for (int i = 0; i < type.Methods.Count; i++)
        {
            var m = type.Methods[i];
            if (m.IsStatic)
                continue;
            for (var b = type.Base; b is not null; b = b.Base)
            {
                if (b.Methods.Any(bm => !bm.IsStatic && bm.PythonName == m.PythonName))
                {
                    type.Methods[i] = m with { Hides = b };
                    break;
                }
            }
        }
    }

    private sealed record PendingCall(string Name, bool IsStatic, bool IsCtor, List<ParameterModel> Parameters, CarriedType Result,
                                      string DocId, NullState ResultNull, bool LongRunning);

    private void CollectMembers(TypeModel type)
    {
        var def = _reader.GetTypeDefinition(type.Handle);
        if (type.Kind == TypeKind.Enum)
        {
            CollectEnumMembers(type, def);
            return;
        }
        var accessors = new HashSet<MethodDefinitionHandle>();
        foreach (var ph in def.GetProperties())
        {
            var a = _reader.GetPropertyDefinition(ph).GetAccessors();
            accessors.Add(a.Getter);
            accessors.Add(a.Setter);
            foreach (var other in a.Others)
                accessors.Add(other);
        }
        foreach (var eh in def.GetEvents())
        {
            var a = _reader.GetEventDefinition(eh).GetAccessors();
            accessors.Add(a.Adder);
            accessors.Add(a.Remover);
            accessors.Add(a.Raiser);
        }

        if (type.Kind == TypeKind.Interface)
            CollectAbstractMembers(type, def, accessors);
        var calls = new List<PendingCall>();
        bool declaresDefaultCtor = false;
        foreach (var mh in def.GetMethods())
        {
            if (accessors.Contains(mh))
                continue;
            var call = ReadMethod(type, def, mh, ref declaresDefaultCtor);
            if (call is not null)
                calls.Add(call);
        }
        NumberCalls(type, calls, declaresDefaultCtor);

        var staticAttributes = new List<StaticAttributeModel>();
        foreach (var ph in def.GetProperties())
            ReadProperty(type, ph, staticAttributes);
        InheritProperties(type, def);
        foreach (var fh in def.GetFields())
            ReadField(type, fh, staticAttributes);
        type.StaticAttributes.AddRange(staticAttributes);
        foreach (var eh in def.GetEvents())
        {
            var ev = _reader.GetEventDefinition(eh);
            var adder = ev.GetAccessors().Adder;
            if (!adder.IsNil && IsPublic(_reader.GetMethodDefinition(adder).Attributes))
                Skip(type.FullName, _reader.GetString(ev.Name), "events are not bound yet");
        }
    }

    private static bool IsAbstractInstance(MethodDefinition md) =>
        (md.Attributes & (MethodAttributes.Abstract | MethodAttributes.Static)) == MethodAttributes.Abstract;

    private void CollectAbstractMembers(TypeModel type, TypeDefinition def, HashSet<MethodDefinitionHandle> accessors)
    {
        foreach (var mh in def.GetMethods())
        {
            var md = _reader.GetMethodDefinition(mh);
            if (accessors.Contains(mh) || !IsAbstractInstance(md))
                continue;
            var sig = md.DecodeSignature(TypeSigProvider.Instance, null);
            var names = ParameterNames(md, sig.ParameterTypes.Length, out var attributes, out _);
            var ps = sig.ParameterTypes.Select((p, i) =>
                (p.Unmodified.Kind != SigKind.ByRef ? "" : (attributes[i] & ParameterAttributes.Out) != 0 ? "out " : "ref ")
                + p.CsSpelling() + " " + CSharpEmitter.ParamName(names[i])).ToList();
            type.AbstractMembers.Add(new(_reader.GetString(md.Name), false, sig.ReturnType.CsSpelling(), ps, false, false));
        }
        foreach (var ph in def.GetProperties())
        {
            var pd = _reader.GetPropertyDefinition(ph);
            var a = pd.GetAccessors();
            bool get = !a.Getter.IsNil && IsAbstractInstance(_reader.GetMethodDefinition(a.Getter));
            bool set = !a.Setter.IsNil && IsAbstractInstance(_reader.GetMethodDefinition(a.Setter));
            if (get || set)
                type.AbstractMembers.Add(new(_reader.GetString(pd.Name), true,
                                             pd.DecodeSignature(TypeSigProvider.Instance, null).ReturnType.CsSpelling(), [], get, set));
        }
    }

    // Python inherits only from the nearest bound ancestor; instance properties of the ancestors
    // in between (System.Type's Name comes from an unbound MemberInfo) would otherwise be lost.
    private void InheritProperties(TypeModel type, TypeDefinition def)
    {
        if (type.Kind != TypeKind.Class)
            return;
        var handle = def.BaseType;
        while (!handle.IsNil && handle.Kind == HandleKind.TypeDefinition && !_bound.ContainsKey((TypeDefinitionHandle)handle))
        {
            var ancestor = _reader.GetTypeDefinition((TypeDefinitionHandle)handle);
            foreach (var ph in ancestor.GetProperties())
            {
                var pd = _reader.GetPropertyDefinition(ph);
                string name = _reader.GetString(pd.Name);
                var getter = PublicAccessor(pd.GetAccessors().Getter);
                if (getter is null || (getter.Value.Attributes & MethodAttributes.Static) != 0 ||
                    type.Properties.Any(p => p.ManagedName == name))
                    continue;
                var sig = pd.DecodeSignature(TypeSigProvider.Instance, null);
                if (sig.ParameterTypes.Length > 0 || Carry(sig.ReturnType, isResult: false, out _) is not { } carried)
                    continue;
                // read-only: a setter of an overridden property may not be public here
                var (ans, aname) = MetadataNames.OfDefinition(_reader, (TypeDefinitionHandle)handle);
                string docId = DocIds.Property(ans.Length == 0 ? aname : ans + "." + aname, name);
                type.Properties.Add(new PropertyModel(name, Naming.Snake(name), carried, StubNames.Get(name), null)
                    { DocId = docId, Null = _nulls.OfProperty(pd, (TypeDefinitionHandle)handle) });
            }
            handle = ancestor.BaseType;
        }
    }

    private static bool IsPublic(MethodAttributes attributes) =>
        (attributes & MethodAttributes.MemberAccessMask) == MethodAttributes.Public;

    private PendingCall? ReadMethod(TypeModel type, TypeDefinition def, MethodDefinitionHandle mh, ref bool declaresDefaultCtor)
    {
        var md = _reader.GetMethodDefinition(mh);
        if (!IsPublic(md.Attributes))
            return null;
        string name = _reader.GetString(md.Name);
        if (name == ".cctor")
            return null;
        bool isCtor = name == ".ctor";
        bool isStatic = (md.Attributes & MethodAttributes.Static) != 0;
        var sig = md.DecodeSignature(TypeSigProvider.Instance, null);
        string described = (isCtor ? ".ctor" : name) + GenericSuffix(md) + "(" + string.Join(", ", sig.ParameterTypes) + ")";
        if (isCtor && sig.ParameterTypes.Length == 0)
            declaresDefaultCtor = true;

        string? reason = WhyMethodNotBound(type, def, md, name, isCtor, isStatic, sig);
        if (reason is null)
        {
            var names = ParameterNames(md, sig.ParameterTypes.Length, out var attributes, out bool lastIsParams);
            var parameters = new List<ParameterModel>();
            for (int i = 0; i < names.Length && reason is null; i++)
            {
                var carried = CarryParameter(sig.ParameterTypes[i], attributes[i], out string why);
                if (carried is null)
                    reason = $"parameter '{names[i]}': {why}";
                else
                {
                    var nulls = _nulls.OfParameter(md, i + 1, type.Handle);
                    parameters.Add(new ParameterModel(names[i], Naming.Snake(names[i]), carried)
                    {
                        Null = nulls,
                        IsParams = lastIsParams && i == names.Length - 1 && carried.Kind == ValueKind.Sequence,
                        Rules = _rules.For(carried, nulls != NullState.NotNull, nonNegative: false),
                    });
                }
            }
            CarriedType? result = new(ValueKind.Void);
            if (reason is null && !isCtor)
            {
                result = Carry(sig.ReturnType, isResult: true, out string why);
                if (result is null)
                    reason = "result: " + why;
            }
            if (reason is null)
                return new PendingCall(name, isStatic, isCtor, parameters, result!,
                                       DocIds.Method(type.FullName, name, sig.ParameterTypes), _nulls.OfParameter(md, 0, type.Handle),
                                       _rules.IsLongRunning(md.GetCustomAttributes()));
        }
        Skip(type.FullName, described, reason);
        return null;
    }

    private string GenericSuffix(MethodDefinition md)
    {
        var parameters = md.GetGenericParameters();
        if (parameters.Count == 0)
            return "";
        return "<" + string.Join(", ", parameters.Select(h => _reader.GetString(_reader.GetGenericParameter(h).Name))) + ">";
    }

    private string? WhyMethodNotBound(TypeModel type, TypeDefinition def, MethodDefinition md, string name,
                                      bool isCtor, bool isStatic, MethodSignature<TypeSig> sig)
    {
        if ((md.Attributes & MethodAttributes.SpecialName) != 0 && !isCtor)
            return name.StartsWith("op_", StringComparison.Ordinal) ? "operators are not bound yet" : "special-name methods are not bound";
        if (sig.GenericParameterCount > 0)
            return "generic methods are not bound yet";
        if (sig.Header.CallingConvention == SignatureCallingConvention.VarArgs)
            return "variable-argument methods are not carried";
        if (type.Kind == TypeKind.Interface && isStatic)
            return "static interface members are not bound";
        if (isCtor && (def.Attributes & TypeAttributes.Abstract) != 0)
            return "an abstract class cannot be constructed";
        if (!isCtor && !isStatic && IsObjectHostMethod(name, sig))
            return "str(), == and hash() reach it through the object host";
        return null;
    }

    private static bool IsObjectHostMethod(string name, MethodSignature<TypeSig> sig) => name switch
    {
        "ToString" or "GetHashCode" => sig.ParameterTypes.Length == 0,
        "Equals" => sig.ParameterTypes.Length == 1 && sig.ParameterTypes[0].Unmodified.IsPrimitive(PrimitiveTypeCode.Object),
        _ => false,
    };

    private string[] ParameterNames(MethodDefinition md, int count, out ParameterAttributes[] attributes, out bool lastIsParams)
    {
        var names = new string[count];
        attributes = new ParameterAttributes[count];
        lastIsParams = false;
        foreach (var ph in md.GetParameters())
        {
            var p = _reader.GetParameter(ph);
            if (p.SequenceNumber >= 1 && p.SequenceNumber <= count)
            {
                names[p.SequenceNumber - 1] = _reader.GetString(p.Name);
                attributes[p.SequenceNumber - 1] = p.Attributes;
                if (p.SequenceNumber == count)
                    lastIsParams = _rules.IsParams(p.GetCustomAttributes());
            }
        }
        for (int i = 0; i < count; i++)
        {
            if (string.IsNullOrEmpty(names[i]))
                names[i] = "arg" + (i + 1).ToString(CultureInfo.InvariantCulture);
        }
        return names;
    }

    // Overloads count per managed name in declaration order; Python sees each name's overloads together.
    private static void NumberCalls(TypeModel type, List<PendingCall> calls, bool declaresDefaultCtor)
    {
        var ctors = calls.Where(c => c.IsCtor).ToList();
        // a structure always has its zero value, whether or not the source spells a constructor for it
        if (type.Kind == TypeKind.Struct && !declaresDefaultCtor)
            type.Constructors.Add(new ConstructorModel(0, StubNames.Ctor(0, type.Name), [], IsImplicit: true));
        foreach (var c in ctors)
        {
            int n = type.Constructors.Count;
            type.Constructors.Add(new ConstructorModel(n, StubNames.Ctor(n, type.Name), c.Parameters, IsImplicit: false)
            {
                DocId = c.DocId,
                LongRunning = c.LongRunning,
            });
        }

        var methods = calls.Where(c => !c.IsCtor).ToList();
        var groups = methods.Select(c => c.Name).Distinct(StringComparer.Ordinal).ToList();
        var slots = new List<(string Python, bool IsStatic)>();
        foreach (string name in groups)
        {
            int overload = 0;
            foreach (var c in methods.Where(c => c.Name == name))
            {
                string python = Naming.Snake(name);
                int slotIndex = slots.IndexOf((python, c.IsStatic));
                if (slotIndex < 0)
                {
                    slots.Add((python, c.IsStatic));
                    slotIndex = slots.Count - 1;
                }
                int slot = slots.Take(slotIndex).Count(s => s.Python == python);
                type.Methods.Add(new MethodModel(name, python, overload, StubNames.Call(overload, name), c.IsStatic, slot,
                                                 c.Parameters, c.Result) { DocId = c.DocId, ResultNull = c.ResultNull, LongRunning = c.LongRunning });
                overload++;
            }
        }
    }

    private void ReadProperty(TypeModel type, PropertyDefinitionHandle ph, List<StaticAttributeModel> statics)
    {
        var pd = _reader.GetPropertyDefinition(ph);
        string name = _reader.GetString(pd.Name);
        var a = pd.GetAccessors();
        MethodDefinition? getter = PublicAccessor(a.Getter), setter = PublicAccessor(a.Setter);
        if (getter is null && setter is null)
            return;
        bool isStatic = ((getter ?? setter)!.Value.Attributes & MethodAttributes.Static) != 0;
        var sig = pd.DecodeSignature(TypeSigProvider.Instance, null);
        string? reason = null;
        CarriedType? carried = null;
        if (sig.ParameterTypes.Length > 0)
            reason = ReadIndexer(type, name, sig, getter, setter, isStatic);
        else if (isStatic && getter is not null && Carry(sig.ReturnType, isResult: false, out _) is { IsSequence: true } or { Kind: ValueKind.Sequence } or { IsUntypedKind: true })
            reason = "static sequence values are not carried yet";
        else if (type.Kind == TypeKind.Interface && isStatic)
            reason = "static interface members are not bound";
        else if (getter is null)
            reason = "write-only properties are not bound";
        else if ((carried = Carry(sig.ReturnType, isResult: false, out string why)) is null)
            reason = "type: " + why;
        if (reason is not null)
        {
            if (reason.Length > 0)
                Skip(type.FullName, name, reason);
            return;
        }
        if (setter is not null && carried!.Kind == ValueKind.Fields)
        {
            Skip(type.FullName, name + " (setter)", $"{carried.Fields!.FullName} crosses only as a result (a tuple of its fields)");
            setter = null;
        }
        if (setter is not null && (carried!.IsSequence || carried.IsUntypedKind || carried is { Kind: ValueKind.Sequence } && !CopiedIn.Contains(carried.Item!.Kind)))
        {
            Skip(type.FullName, name + " (setter)", "Python sequences as managed collections are not carried yet");
            setter = null;
        }
        if (setter is not null && setter.Value.DecodeSignature(TypeSigProvider.Instance, null).ReturnType.HasRequiredModifier(ExternalInit))
        {
            Skip(type.FullName, name + " (setter)", "init-only setters run only in object initializers");
            setter = null;
        }
        var nulls = _nulls.OfProperty(pd, type.Handle);
        if (isStatic)
            statics.Add(new StaticAttributeModel(name, Naming.Snake(name), carried!, StubNames.GetStatic(name),
                                                 setter is null ? null : StubNames.SetStatic(name), IsField: false)
                        { DocId = DocIds.Property(type.FullName, name), Null = nulls });
        else
            type.Properties.Add(new PropertyModel(name, Naming.Snake(name), carried!, StubNames.Get(name),
                                                  setter is null ? null : StubNames.Set(name))
            {
                DocId = DocIds.Property(type.FullName, name),
                Null = nulls,
                Rules = _rules.For(carried!, nulls != NullState.NotNull, _rules.IsNonNegative(pd.GetCustomAttributes())),
            });
    }

    /// <summary>"" when the indexer became item access of the type; otherwise why it is not bound.</summary>
    private string ReadIndexer(TypeModel type, string name, MethodSignature<TypeSig> sig, MethodDefinition? getter,
                               MethodDefinition? setter, bool isStatic)
    {
        if (isStatic || type.Kind != TypeKind.Class || sig.ParameterTypes.Length != 1 || getter is null)
            return "indexed properties other than an instance getter by one key are not bound";
        var key = Carry(sig.ParameterTypes[0], isResult: false, out _);
        bool byInt = key?.Kind == ValueKind.Int32;
        if (key is null || !(byInt || key.Kind is ValueKind.String or ValueKind.Enum))
            return $"indexers by {sig.ParameterTypes[0]} are not bound (only by int, string or enumeration)";
        var carried = Carry(sig.ReturnType, isResult: true, out string why);
        if (carried is not { Kind: ValueKind.Class or ValueKind.Interface or ValueKind.Struct or ValueKind.Enum or ValueKind.String })
            return "indexer items: " + (carried is null ? why : $"{carried} is not an object, enumeration or string type");
        type.Sequence ??= new SequenceModel();
        if (byInt)
            (type.Sequence.IntIndexer, type.Sequence.IntIndexerStores) = (carried, setter is not null);
        else
            type.Sequence.KeyIndexers.Add(new KeyIndexer(key!, carried) { Stores = setter is not null });
        return "";
    }

    // After ordering: the length of a class with item access comes from the nearest "Count" of its
    // own or of a bound base, and its iteration from the IEnumerable<T> of the most derived T it implements.
    private void LinkSequences()
    {
        foreach (var type in _model.Types.Where(t => t.Kind == TypeKind.Class))
        {
            var element = IterableElement(type);
            if (element is not null)
            {
                type.Sequence ??= new SequenceModel();
                type.Sequence.Iterable = Instance(element);
            }
            else
            {
                // enumerations of values that are no bound objects iterate by value
                var values = IterableValues(type);
                if (values is not null)
                {
                    type.Sequence ??= new SequenceModel();
                    type.Sequence.Iterable = Instance(values);
                }
            }
            if (type.Sequence is null)
                continue;
            LinkRemovals(type, type.Sequence);
            for (var t = type; t is not null && type.Sequence.CountOwner is null; t = t.Base)
            {
                var count = t.Properties.FirstOrDefault(p => p.ManagedName == "Count" && p.Type.Kind == ValueKind.Int32);
                if (count is not null)
                    (type.Sequence.Count, type.Sequence.CountOwner) = (count, t);
            }
        }
    }

    // `del x[key]` of a class whose indexer stores goes to its own RemoveAt(int) or Remove(key).
    private static void LinkRemovals(TypeModel type, SequenceModel q)
    {
        MethodModel? Find(string name, CarriedType key) => type.Methods.FirstOrDefault(m =>
            !m.IsStatic && m.ManagedName == name && m.Parameters.Count == 1 && m.Parameters[0].Type == key
            && m.Result.Kind is ValueKind.Void or ValueKind.Bool);
        if (q.IntIndexerStores)
            q.RemoveAt = Find("RemoveAt", new CarriedType(ValueKind.Int32));
        foreach (var k in q.KeyIndexers.Where(k => k.Stores))
            k.Remove = Find("Remove", k.Key);
    }

    // The element of an IEnumerable<T> the class implements over values that are no bound objects.
    private CarriedType? IterableValues(TypeModel type)
    {
        if (_selected is not null)
            return null;
        foreach (var sig in EnumerableInterfaces(type))
            if (CarryElement(sig.Arguments[0], out _) is { Kind: ValueKind.Enum or ValueKind.SystemType or ValueKind.StringPair } values)
                return values;
        return null;
    }

    private IEnumerable<TypeSig> EnumerableInterfaces(TypeModel type)
    {
        foreach (var ih in _reader.GetTypeDefinition(type.Handle).GetInterfaceImplementations())
        {
            var iface = _reader.GetInterfaceImplementation(ih).Interface;
            if (iface.Kind != HandleKind.TypeSpecification)
                continue;
            var sig = _reader.GetTypeSpecification((TypeSpecificationHandle)iface).DecodeSignature(TypeSigProvider.Instance, null);
            if (sig.Kind == SigKind.GenericInstance && sig.Element!.FullName == "System.Collections.Generic.IEnumerable`1")
                yield return sig;
        }
    }

    // The most derived bound object type T of the IEnumerable<T> the class implements.
    private CarriedType? IterableElement(TypeModel type)
    {
        if (_selected is not null)
            return null;
        CarriedType? best = null;
        foreach (var sig in EnumerableInterfaces(type))
        {
            if (Carry(sig.Arguments[0], isResult: true, out _) is not { Bound: { } element } carried ||
                element.Kind is not (TypeKind.Class or TypeKind.Interface or TypeKind.Struct))
                continue;
            if (best is null || Depth(element) > Depth(best.Bound!))
                best = carried;
        }
        return best;
    }

    private static int Depth(TypeModel t)
    {
        int depth = 0;
        for (var b = t.Base; b is not null; b = b.Base)
            depth++;
        return depth;
    }

    private GenericInstance Instance(CarriedType element)
    {
        var g = new GenericInstance(element);
        if (!_generics.TryGetValue(g.ElementName, out var known))
            _generics[g.ElementName] = known = g;
        return known;
    }

    // An element of an enumeration: any bound type, an enumeration, System.Type or a pair of strings.
    private CarriedType? CarryElement(TypeSig element, out string why)
    {
        var t = element.Unmodified;
        if (t.Kind == SigKind.GenericInstance && t.Element!.FullName == "System.Collections.Generic.KeyValuePair`2"
            && t.Arguments.All(a => a.Unmodified.IsPrimitive(PrimitiveTypeCode.String)))
        {
            why = "";
            return new CarriedType(ValueKind.StringPair);
        }
        var carried = Carry(element, isResult: true, out why);
        return carried is { Kind: ValueKind.Class or ValueKind.Interface or ValueKind.Struct or ValueKind.Enum or ValueKind.SystemType }
            ? carried
            : Fail(out why, carried is null ? why : $"sequences of {carried} are not carried yet");
    }

    private static readonly Dictionary<string, ValueKind> GenericKinds = new(StringComparer.Ordinal)
    {
        ["System.Collections.Generic.IEnumerator`1"] = ValueKind.EnumeratorOf,
        ["System.Collections.Generic.IEnumerable`1"] = ValueKind.EnumerableOf,
        ["System.Collections.Generic.IReadOnlyList`1"] = ValueKind.ListOf,
        ["System.Collections.Generic.IList`1"] = ValueKind.ListOf,
    };

    // A sequence of a bound element type; null with the reason otherwise.
    private CarriedType? CarrySequence(TypeSig t, ValueKind kind, TypeSig element, out string why)
    {
        why = "";
        if (_selected is not null)
            return Fail(out why, $"{t}: generic instantiations belong to the full binding, not to a type selection");
        // values other than objects only leave through an enumerator: no index or store holds them
        var carried = kind == ValueKind.EnumeratorOf ? CarryElement(element, out string elementWhy) : Carry(element, isResult: true, out elementWhy);
        if (carried is null)
            return Fail(out why, $"{t}: {elementWhy}");
        if (kind != ValueKind.EnumeratorOf && carried is not { Kind: ValueKind.Class or ValueKind.Interface or ValueKind.Struct })
            return Fail(out why, $"{t}: sequences of {carried} are not carried yet (only of bound objects)");
        var g = Instance(carried);
        if (kind == ValueKind.ArrayOf)
            g.HasArray = true;
        if (kind == ValueKind.ListOf)
            g.HasList = true;
        return new CarriedType(kind, null, g);
    }

    // Generic sequence shapes an array stands in for as a parameter and a Python list as a result.
    private static readonly HashSet<string> CopiedShapes = new(StringComparer.Ordinal)
    {
        "System.Collections.Generic.IEnumerable`1",
        "System.Collections.Generic.IReadOnlyList`1",
    };

    // Elements a Python sequence converts into item by item (a stream is lent, not converted).
    private static readonly HashSet<ValueKind> CopiedIn =
    [
        ValueKind.Bool, ValueKind.Char, ValueKind.SByte, ValueKind.Byte, ValueKind.Int16, ValueKind.UInt16, ValueKind.Int32,
        ValueKind.UInt32, ValueKind.Int64, ValueKind.UInt64, ValueKind.Single, ValueKind.Double, ValueKind.String,
        ValueKind.Enum, ValueKind.Object, ValueKind.Class, ValueKind.Interface, ValueKind.Struct,
    ];

    private bool IsBoundObject(TypeSig element) =>
        Carry(element, isResult: true, out _) is { Kind: ValueKind.Class or ValueKind.Interface or ValueKind.Struct };

    // A sequence crossing whole, or null with the reason.
    private CarriedType? CarryCopied(TypeSig t, TypeSig element, bool isParameter, out string why)
    {
        var item = Carry(element, isResult: true, out string itemWhy);
        if (item is null)
            return Fail(out why, $"{t}: {itemWhy}");
        if (item.IsNullable || item.IsSequence || item.NamedBy is not null || item.Kind == ValueKind.Fields || item.Kind is ValueKind.Sequence or ValueKind.Void or ValueKind.Bytes
            || ParameterOnly.Contains(item.Kind))
            return Fail(out why, $"{t}: sequences of {item} are not carried");
        if (isParameter && !CopiedIn.Contains(item.Kind))
            return Fail(out why, $"{t}: sequences of {item} are carried only as results");
        why = "";
        return CarriedType.SequenceOf(item);
    }

    private MethodDefinition? PublicAccessor(MethodDefinitionHandle handle)
    {
        if (handle.IsNil)
            return null;
        var md = _reader.GetMethodDefinition(handle);
        return IsPublic(md.Attributes) ? md : null;
    }

    private void ReadField(TypeModel type, FieldDefinitionHandle fh, List<StaticAttributeModel> statics)
    {
        var fd = _reader.GetFieldDefinition(fh);
        if ((fd.Attributes & FieldAttributes.FieldAccessMask) != FieldAttributes.Public)
            return;
        string name = _reader.GetString(fd.Name);
        if ((fd.Attributes & FieldAttributes.Static) == 0)
        {
            Skip(type.FullName, name, "instance fields are not bound");
            return;
        }
        var carried = Carry(fd.DecodeSignature(TypeSigProvider.Instance, null), isResult: false, out string why);
        if (carried is { IsUntypedKind: true })
            (carried, why) = (null, $"static {carried} values are not carried yet");
        if (carried is null)
        {
            Skip(type.FullName, name, "type: " + why);
            return;
        }
        bool settable = (fd.Attributes & (FieldAttributes.Literal | FieldAttributes.InitOnly)) == 0;
        statics.Add(new StaticAttributeModel(name, Naming.UpperSnake(name), carried, StubNames.GetStatic(name),
                                             settable ? StubNames.SetStatic(name) : null, IsField: true)
                    { DocId = DocIds.Field(type.FullName, name), Null = _nulls.OfField(fd, type.Handle) });
    }

    private void CollectEnumMembers(TypeModel type, TypeDefinition def)
    {
        foreach (var fh in def.GetFields())
        {
            var fd = _reader.GetFieldDefinition(fh);
            if ((fd.Attributes & FieldAttributes.Literal) == 0 || (fd.Attributes & FieldAttributes.Static) == 0)
                continue;
            string name = _reader.GetString(fd.Name);
            type.EnumMembers.Add(new EnumMemberModel(name, Naming.UpperSnake(name), ConstantText(fd.GetDefaultValue()))
                { DocId = DocIds.Field(type.FullName, name) });
        }
    }

    private string ConstantText(ConstantHandle handle)
    {
        if (handle.IsNil)
            return "0";
        var constant = _reader.GetConstant(handle);
        var blob = _reader.GetBlobReader(constant.Value);
        var ci = CultureInfo.InvariantCulture;
        return constant.TypeCode switch
        {
            ConstantTypeCode.SByte => blob.ReadSByte().ToString(ci),
            ConstantTypeCode.Byte => blob.ReadByte().ToString(ci),
            ConstantTypeCode.Int16 => blob.ReadInt16().ToString(ci),
            ConstantTypeCode.UInt16 => blob.ReadUInt16().ToString(ci),
            ConstantTypeCode.Int32 => blob.ReadInt32().ToString(ci),
            ConstantTypeCode.UInt32 => blob.ReadUInt32().ToString(ci),
            ConstantTypeCode.Int64 => blob.ReadInt64().ToString(ci),
            ConstantTypeCode.UInt64 => blob.ReadUInt64().ToString(ci),
            ConstantTypeCode.Char => ((int)blob.ReadChar()).ToString(ci),
            ConstantTypeCode.Boolean => blob.ReadBoolean() ? "1" : "0",
            _ => throw new GeneratorException($"enumeration constant of type {constant.TypeCode}"),
        };
    }

    // ---- carried types ----

    // Value types of the framework that cross as Python's own types (datetime, Decimal, UUID, ...).
    private static readonly Dictionary<string, ValueKind> FrameworkValues = new(StringComparer.Ordinal)
    {
        ["System.DateTime"] = ValueKind.DateTime,
        ["System.DateTimeOffset"] = ValueKind.DateTimeOffset,
        ["System.TimeSpan"] = ValueKind.TimeSpan,
        ["System.Decimal"] = ValueKind.Decimal,
        ["System.Guid"] = ValueKind.Guid,
        ["System.Version"] = ValueKind.Version,
        ["System.Text.RegularExpressions.Regex"] = ValueKind.Regex,
        ["System.Collections.IEnumerable"] = ValueKind.Enumerable,
        ["System.Collections.ICollection"] = ValueKind.Collection,
        ["System.Collections.IList"] = ValueKind.List,
        ["System.Collections.IEnumerator"] = ValueKind.Enumerator,
        ["System.IDisposable"] = ValueKind.Disposable,
        ["System.Collections.ArrayList"] = ValueKind.ArrayList,
        ["System.Collections.CollectionBase"] = ValueKind.CollectionBase,
        ["System.Collections.ReadOnlyCollectionBase"] = ValueKind.ReadOnlyCollectionBase,
        ["System.Type"] = ValueKind.SystemType,
    };

    // Framework types that a name stands for both ways: a text encoding, a culture.
    private static readonly HashSet<string> NamedByText = new(StringComparer.Ordinal)
        { "System.Text.Encoding", "System.Globalization.CultureInfo" };

    // Kinds that Python values stand in for only while a call runs: there is no way back.
    private static readonly HashSet<ValueKind> ParameterOnly = [ValueKind.Regex];

    // Kinds that Python objects are lent as for one call: no by-reference passing.
    private static readonly HashSet<ValueKind> LentKinds =
        [ValueKind.Enumerable, ValueKind.Collection, ValueKind.List, ValueKind.Enumerator, ValueKind.Disposable,
         ValueKind.ArrayList, ValueKind.CollectionBase, ValueKind.ReadOnlyCollectionBase];

    // Nullable<T> crosses for these: None stands for no value.
    private static readonly HashSet<ValueKind> NullableKinds =
    [
        ValueKind.DateTime, ValueKind.DateTimeOffset, ValueKind.TimeSpan, ValueKind.Decimal, ValueKind.Guid,
        ValueKind.Bool, ValueKind.Int32, ValueKind.Int64, ValueKind.Double,
    ];

    /// <summary>A parameter: ref and out become list-passed forms of their element; `in` passes by value.</summary>
    private CarriedType? CarryParameter(TypeSig sig, ParameterAttributes attributes, out string why)
    {
        var t = sig.Unmodified;
        if (t.Kind != SigKind.ByRef)
            return Carry(sig, isResult: false, out why, isParameter: true);
        var element = Carry(t.Element!, isResult: false, out why, isParameter: true);
        if (element is null)
        {
            why = $"{t}: {why}";
            return null;
        }
        bool isOut = (attributes & ParameterAttributes.Out) != 0 && (attributes & ParameterAttributes.In) == 0;
        if ((attributes & ParameterAttributes.In) != 0 && !isOut)
            return element;
        if (element.Kind is ValueKind.Stream or ValueKind.Sequence or ValueKind.StringMap || ParameterOnly.Contains(element.Kind)
            || LentKinds.Contains(element.Kind))
            return Fail(out why, $"{t}: by-reference {element} values are not carried");
        return element with { Mode = isOut ? PassMode.Out : PassMode.Ref };
    }

    /// <summary>The carried form of a signature type, or null with the reason in <paramref name="why"/>.</summary>
    private CarriedType? Carry(TypeSig sig, bool isResult, out string why, bool isParameter = false)
    {
        why = "";
        var t = sig.Unmodified;
        switch (t.Kind)
        {
            case SigKind.Primitive when t.Primitive == PrimitiveTypeCode.Object && _object is not null:
                // the assembly defining System.Object binds it: object values cross as its wrappers
                return new CarriedType(ValueKind.Class, _object);
            case SigKind.Primitive when t.Primitive == PrimitiveTypeCode.Object:
                // elsewhere an object value is classified by its Python kind on the way in
                return new CarriedType(ValueKind.Object);
            case SigKind.Primitive:
                return CarryPrimitive(t.Primitive, isResult, out why);
            case SigKind.SzArray when t.Element!.Unmodified.IsPrimitive(PrimitiveTypeCode.Byte):
                return new CarriedType(ValueKind.Bytes);
            case SigKind.SzArray:
                // a result array of bound objects is the array kind over them; every other array is copied whole
                return !isParameter && IsBoundObject(t.Element!)
                    ? CarrySequence(t, ValueKind.ArrayOf, t.Element!, out why)
                    : CarryCopied(t, t.Element!, isParameter, out why);
            case SigKind.Array:
                why = $"{t}: multi-dimensional arrays are not carried";
                return null;
            case SigKind.ByRef:
                why = $"{t}: by-reference values are not carried yet";
                return null;
            case SigKind.Pointer:
            case SigKind.FunctionPointer:
                why = $"{t}: pointers are not carried";
                return null;
            case SigKind.GenericInstance when t.Element!.FullName == "System.Nullable`1":
                var value = Carry(t.Arguments[0], isResult: false, out why);
                if (value is not null && NullableKinds.Contains(value.Kind))
                    return value with { IsNullable = true };
                why = $"{t}: of nullable values only {string.Join(", ", NullableKinds.Order())} are carried";
                return null;
            case SigKind.GenericInstance when t.Arguments.Length == 1 && GenericKinds.TryGetValue(t.Element!.FullName, out var sequenceKind):
                if (!isParameter && (IsBoundObject(t.Arguments[0]) || sequenceKind == ValueKind.EnumeratorOf))
                    return CarrySequence(t, sequenceKind, t.Arguments[0], out why);
                // read-only views are snapshots: a copy serves them both ways
                if (CopiedShapes.Contains(t.Element!.FullName))
                    return CarryCopied(t, t.Arguments[0], isParameter, out why);
                return Fail(out why, isParameter
                    ? $"{t}: Python sequences as managed collections that the callee may change are not carried"
                    : $"{t}: sequences of {Carry(t.Arguments[0], isResult: true, out _)?.ToString() ?? "this element"} are not carried yet (only of bound objects)");
            case SigKind.GenericInstance when t.Element!.FullName == "System.Collections.Generic.IDictionary`2"
                                              && t.Arguments.All(a => a.Unmodified.IsPrimitive(PrimitiveTypeCode.String)):
                // a dictionary a document keeps: Python reads and writes it in place
                return isParameter
                    ? Fail(out why, $"{t}: Python mappings as managed dictionaries are not carried yet")
                    : new CarriedType(ValueKind.StringMap);
            case SigKind.GenericInstance when t.Arguments.Length == 1 && t.Element!.FullName == "System.Collections.Generic.List`1" && !isParameter:
                // a List<T> result is the callee's fresh list, handed over
                return CarryCopied(t, t.Arguments[0], isParameter, out why);
            case SigKind.GenericInstance:
                why = $"{t}: generic instantiations of this kind are not carried yet";
                return null;
            case SigKind.GenericParameter:
                why = "generic parameters are not carried";
                return null;
            case SigKind.Named when t.IsLocal:
                if (_bound.TryGetValue(t.Definition, out var bound))
                {
                    return bound.Kind switch
                    {
                        TypeKind.Class => new CarriedType(ValueKind.Class, bound),
                        TypeKind.Struct => new CarriedType(ValueKind.Struct, bound),
                        TypeKind.Interface => new CarriedType(ValueKind.Interface, bound),
                        TypeKind.Enum => new CarriedType(ValueKind.Enum, bound),
                        _ => Fail(out why, $"{t.FullName} is a static class"),
                    };
                }
                why = _unbound.TryGetValue(t.Definition, out string? reason)
                    ? $"{t.FullName} is not bound ({reason})"
                    : $"{t.FullName} is not public";
                return null;
            case SigKind.Named when FrameworkValues.TryGetValue(t.FullName, out var framework):
                // a Python pattern becomes a managed Regex; there is no way back that keeps its meaning
                if (ParameterOnly.Contains(framework) && !isParameter)
                    return Fail(out why, $"{t.FullName} crosses only as a parameter");
                return new CarriedType(framework);
            case SigKind.Named when FrameworkFields.Known.TryGetValue(t.FullName, out var fields):
                // a tuple has no way back into a structure the callee would keep
                return isParameter
                    ? Fail(out why, $"{t.FullName} crosses only as a result (a tuple of its fields)")
                    : new CarriedType(ValueKind.Fields) { Fields = fields };
            case SigKind.Named when NamedByText.Contains(t.FullName):
                // the framework looks these up by name: Python passes and reads the name
                return new CarriedType(ValueKind.String) { NamedBy = t.FullName };
            case SigKind.Named when t.FullName == StreamType:
                // any stream crosses: a managed one by handle, a Python file object through the raw-I/O callbacks
                return new CarriedType(ValueKind.Stream);
            case SigKind.Named:
                var kind = _resolver.KindOf(t.Scope ?? "", t.Namespace, t.Name);
                why = kind == TypeKind.Unknown
                    ? $"{t.FullName} of {t.Scope} is not carried"
                    : $"{t.FullName}, {Article(kind)} of {t.Scope}, is not carried";
                return null;
            default:
                why = $"{t} is not carried";
                return null;
        }
    }

    private static CarriedType? Fail(out string why, string text)
    {
        why = text;
        return null;
    }

    private static string Article(TypeKind kind) => kind switch
    {
        TypeKind.Class => "a class",
        TypeKind.StaticClass => "a static class",
        TypeKind.Struct => "a structure",
        TypeKind.Enum => "an enumeration",
        TypeKind.Interface => "an interface",
        TypeKind.Delegate => "a delegate",
        _ => "a type",
    };

    private static CarriedType? CarryPrimitive(PrimitiveTypeCode code, bool isResult, out string why)
    {
        why = "";
        ValueKind? kind = code switch
        {
            PrimitiveTypeCode.Void when isResult => ValueKind.Void,
            PrimitiveTypeCode.Boolean => ValueKind.Bool,
            PrimitiveTypeCode.Char => ValueKind.Char,
            PrimitiveTypeCode.SByte => ValueKind.SByte,
            PrimitiveTypeCode.Byte => ValueKind.Byte,
            PrimitiveTypeCode.Int16 => ValueKind.Int16,
            PrimitiveTypeCode.UInt16 => ValueKind.UInt16,
            PrimitiveTypeCode.Int32 => ValueKind.Int32,
            PrimitiveTypeCode.UInt32 => ValueKind.UInt32,
            PrimitiveTypeCode.Int64 => ValueKind.Int64,
            PrimitiveTypeCode.UInt64 => ValueKind.UInt64,
            PrimitiveTypeCode.Single => ValueKind.Single,
            PrimitiveTypeCode.Double => ValueKind.Double,
            PrimitiveTypeCode.String => ValueKind.String,
            _ => null,
        };
        if (kind is not null)
            return new CarriedType(kind.Value);
        why = code switch
        {
            PrimitiveTypeCode.IntPtr or PrimitiveTypeCode.UIntPtr => "native-sized integers are not carried",
            _ => $"{TypeSig.Keyword(code)} is not carried",
        };
        return null;
    }

    private void Skip(string type, string member, string reason) => _model.Skipped.Add(new SkippedMember(type, member, reason));
}
