using System.Collections.Immutable;
using System.Reflection.Metadata;

namespace Quorix.WrpGen;

public enum SigKind
{
    Primitive, Named, SzArray, Array, ByRef, Pointer, GenericInstance, GenericParameter, FunctionPointer, Modified, Pinned,
}

/// <summary>A decoded metadata type as it appears in a signature.</summary>
public sealed class TypeSig
{
    public SigKind Kind { get; private init; }
    public PrimitiveTypeCode Primitive { get; private init; }
    /// <summary>Named types: namespace and (for nested types "Outer+Inner") name.</summary>
    public string Namespace { get; private init; } = "";
    public string Name { get; private init; } = "";
    /// <summary>Named types defined in the assembly being read; default for references.</summary>
    public TypeDefinitionHandle Definition { get; private init; }
    /// <summary>Named types referenced from elsewhere: the assembly that the reference names.</summary>
    public string? Scope { get; private init; }
    public TypeSig? Element { get; private init; }
    public ImmutableArray<TypeSig> Arguments { get; private init; } = ImmutableArray<TypeSig>.Empty;
    /// <summary>Modified types: the modifier and whether it is required (modreq).</summary>
    public TypeSig? Modifier { get; private init; }
    public bool IsRequired { get; private init; }
    public int Rank { get; private init; }

    public bool IsLocal => Kind == SigKind.Named && !Definition.IsNil;
    public string FullName => Namespace.Length == 0 ? Name : Namespace + "." + Name;

    public static TypeSig OfPrimitive(PrimitiveTypeCode code) => new() { Kind = SigKind.Primitive, Primitive = code };

    public static TypeSig OfDefinition(string ns, string name, TypeDefinitionHandle handle) =>
        new() { Kind = SigKind.Named, Namespace = ns, Name = name, Definition = handle };

    public static TypeSig OfReference(string ns, string name, string scope) =>
        new() { Kind = SigKind.Named, Namespace = ns, Name = name, Scope = scope };

    public static TypeSig Wrap(SigKind kind, TypeSig element, int rank = 1) => new() { Kind = kind, Element = element, Rank = rank };

    public static TypeSig OfGenericInstance(TypeSig generic, ImmutableArray<TypeSig> args) =>
        new() { Kind = SigKind.GenericInstance, Element = generic, Arguments = args };

    public static TypeSig OfGenericParameter(string name) => new() { Kind = SigKind.GenericParameter, Name = name };

    public static TypeSig OfFunctionPointer() => new() { Kind = SigKind.FunctionPointer, Name = "delegate*" };

    public static TypeSig OfModified(TypeSig modifier, TypeSig unmodified, bool required) =>
        new() { Kind = SigKind.Modified, Modifier = modifier, Element = unmodified, IsRequired = required };

    /// <summary>The type with every custom modifier removed.</summary>
    public TypeSig Unmodified => Kind == SigKind.Modified ? Element!.Unmodified : this;

    public bool HasRequiredModifier(string fullName) =>
        Kind == SigKind.Modified && ((IsRequired && Modifier!.FullName == fullName) || Element!.HasRequiredModifier(fullName));

    public bool IsPrimitive(PrimitiveTypeCode code) => Kind == SigKind.Primitive && Primitive == code;

    /// <summary>A C#-like spelling for reports.</summary>
    public override string ToString() => Kind switch
    {
        SigKind.Primitive => Keyword(Primitive),
        SigKind.Named => FullName,
        SigKind.SzArray => Element + "[]",
        SigKind.Array => Element + "[" + new string(',', Rank - 1) + "]",
        SigKind.ByRef => "ref " + Element,
        SigKind.Pointer => Element + "*",
        SigKind.GenericInstance => Element + "<" + string.Join(", ", Arguments) + ">",
        SigKind.GenericParameter => Name,
        SigKind.FunctionPointer => Name,
        SigKind.Modified => Element!.ToString(),
        SigKind.Pinned => Element!.ToString(),
        _ => "?",
    };

    /// <summary>The C# spelling that compiles in generated code (by-reference element for ByRef).</summary>
    public string CsSpelling() => Kind switch
    {
        SigKind.Primitive => Keyword(Primitive),
        SigKind.Named => "global::" + (Namespace.Length == 0 ? "" : Namespace + ".") + BareName(Name).Replace('+', '.'),
        SigKind.SzArray => Element!.CsSpelling() + "[]",
        SigKind.Array => Element!.CsSpelling() + "[" + new string(',', Rank - 1) + "]",
        SigKind.ByRef or SigKind.Modified or SigKind.Pinned => Element!.CsSpelling(),
        SigKind.Pointer => Element!.CsSpelling() + "*",
        SigKind.GenericInstance => Element!.CsSpelling() + "<" + string.Join(", ", Arguments.Select(a => a.CsSpelling())) + ">",
        _ => Name,
    };

    private static string BareName(string name) => name.IndexOf('`') is int tick and >= 0 ? name[..tick] : name;

    public static string Keyword(PrimitiveTypeCode code) => code switch
    {
        PrimitiveTypeCode.Void => "void",
        PrimitiveTypeCode.Boolean => "bool",
        PrimitiveTypeCode.Char => "char",
        PrimitiveTypeCode.SByte => "sbyte",
        PrimitiveTypeCode.Byte => "byte",
        PrimitiveTypeCode.Int16 => "short",
        PrimitiveTypeCode.UInt16 => "ushort",
        PrimitiveTypeCode.Int32 => "int",
        PrimitiveTypeCode.UInt32 => "uint",
        PrimitiveTypeCode.Int64 => "long",
        PrimitiveTypeCode.UInt64 => "ulong",
        PrimitiveTypeCode.Single => "float",
        PrimitiveTypeCode.Double => "double",
        PrimitiveTypeCode.String => "string",
        PrimitiveTypeCode.Object => "object",
        PrimitiveTypeCode.IntPtr => "nint",
        PrimitiveTypeCode.UIntPtr => "nuint",
        PrimitiveTypeCode.TypedReference => "System.TypedReference",
        _ => code.ToString(),
    };
}

/// <summary>Decodes metadata signature blobs into <see cref="TypeSig"/> values.</summary>
public sealed class TypeSigProvider : ISignatureTypeProvider<TypeSig, object?>
{
    public static readonly TypeSigProvider Instance = new();

    public TypeSig GetPrimitiveType(PrimitiveTypeCode typeCode) => TypeSig.OfPrimitive(typeCode);

    public TypeSig GetTypeFromDefinition(MetadataReader reader, TypeDefinitionHandle handle, byte rawTypeKind)
    {
        var (ns, name) = MetadataNames.OfDefinition(reader, handle);
        return TypeSig.OfDefinition(ns, name, handle);
    }

    public TypeSig GetTypeFromReference(MetadataReader reader, TypeReferenceHandle handle, byte rawTypeKind)
    {
        var (ns, name, scope) = MetadataNames.OfReference(reader, handle);
        return TypeSig.OfReference(ns, name, scope);
    }

    public TypeSig GetTypeFromSpecification(MetadataReader reader, object? genericContext, TypeSpecificationHandle handle, byte rawTypeKind) =>
        reader.GetTypeSpecification(handle).DecodeSignature(this, genericContext);

    public TypeSig GetSZArrayType(TypeSig elementType) => TypeSig.Wrap(SigKind.SzArray, elementType);
    public TypeSig GetArrayType(TypeSig elementType, ArrayShape shape) => TypeSig.Wrap(SigKind.Array, elementType, shape.Rank);
    public TypeSig GetByReferenceType(TypeSig elementType) => TypeSig.Wrap(SigKind.ByRef, elementType);
    public TypeSig GetPointerType(TypeSig elementType) => TypeSig.Wrap(SigKind.Pointer, elementType);
    public TypeSig GetPinnedType(TypeSig elementType) => TypeSig.Wrap(SigKind.Pinned, elementType);
    public TypeSig GetFunctionPointerType(MethodSignature<TypeSig> signature) => TypeSig.OfFunctionPointer();

    public TypeSig GetGenericInstantiation(TypeSig genericType, ImmutableArray<TypeSig> typeArguments) =>
        TypeSig.OfGenericInstance(genericType, typeArguments);

    public TypeSig GetGenericMethodParameter(object? genericContext, int index) => TypeSig.OfGenericParameter("!!" + index);
    public TypeSig GetGenericTypeParameter(object? genericContext, int index) => TypeSig.OfGenericParameter("!" + index);

    public TypeSig GetModifiedType(TypeSig modifier, TypeSig unmodifiedType, bool isRequired) =>
        TypeSig.OfModified(modifier, unmodifiedType, isRequired);
}

/// <summary>Namespaces and names of type definitions and references; nested names joined with "+".</summary>
public static class MetadataNames
{
    public static (string Namespace, string Name) OfDefinition(MetadataReader reader, TypeDefinitionHandle handle)
    {
        var def = reader.GetTypeDefinition(handle);
        string name = reader.GetString(def.Name);
        var outer = def.GetDeclaringType();
        if (!outer.IsNil)
        {
            var (ns, outerName) = OfDefinition(reader, outer);
            return (ns, outerName + "+" + name);
        }
        return (reader.GetString(def.Namespace), name);
    }

    public static (string Namespace, string Name, string Scope) OfReference(MetadataReader reader, TypeReferenceHandle handle)
    {
        var r = reader.GetTypeReference(handle);
        string name = reader.GetString(r.Name);
        switch (r.ResolutionScope.Kind)
        {
            case HandleKind.TypeReference:
                var (ns, outerName, scope) = OfReference(reader, (TypeReferenceHandle)r.ResolutionScope);
                return (ns, outerName + "+" + name, scope);
            case HandleKind.AssemblyReference:
                var asm = reader.GetAssemblyReference((AssemblyReferenceHandle)r.ResolutionScope);
                return (reader.GetString(r.Namespace), name, reader.GetString(asm.Name));
            default:
                return (reader.GetString(r.Namespace), name, "");
        }
    }
}
