using System.Reflection;
using System.Reflection.Metadata;
using System.Reflection.PortableExecutable;

namespace Quorix.WrpGen;

/// <summary>
/// Finds what kind of type a reference to another assembly names, by reading that assembly from
/// the reference folders (following type forwarders). Only used to explain why a member is not
/// bound, so an assembly that cannot be found gives <see cref="TypeKind.Unknown"/>, not an error.
/// </summary>
public sealed class ReferenceResolver : IDisposable
{
    private readonly IReadOnlyList<string> _folders;
    private readonly Dictionary<string, PEReader?> _opened = new(StringComparer.OrdinalIgnoreCase);

    public ReferenceResolver(IReadOnlyList<string> folders) => _folders = folders;

    /// <summary>The kind of type assembly!ns.name, or Unknown when it cannot be found.</summary>
    public TypeKind KindOf(string assembly, string ns, string name) => KindOf(assembly, ns, name, depth: 0);

    private TypeKind KindOf(string assembly, string ns, string name, int depth)
    {
        // forwarder chains are short; a cycle in broken metadata must not hang the generator
        if (depth > 8)
            return TypeKind.Unknown;
        var reader = Open(assembly);
        if (reader is null)
            return TypeKind.Unknown;
        foreach (var handle in reader.TypeDefinitions)
        {
            var def = reader.GetTypeDefinition(handle);
            if (def.GetDeclaringType().IsNil && reader.StringComparer.Equals(def.Name, name) &&
                reader.StringComparer.Equals(def.Namespace, ns))
                return Classify(reader, def);
        }
        foreach (var handle in reader.ExportedTypes)
        {
            var exported = reader.GetExportedType(handle);
            if (exported.IsForwarder && exported.Implementation.Kind == HandleKind.AssemblyReference &&
                reader.StringComparer.Equals(exported.Name, name) && reader.StringComparer.Equals(exported.Namespace, ns))
            {
                var target = reader.GetAssemblyReference((AssemblyReferenceHandle)exported.Implementation);
                return KindOf(reader.GetString(target.Name), ns, name, depth + 1);
            }
        }
        return TypeKind.Unknown;
    }

    /// <summary>Interface, enumeration, structure, delegate or class, from the flags and the base type's name.</summary>
    public static TypeKind Classify(MetadataReader reader, TypeDefinition def)
    {
        if ((def.Attributes & TypeAttributes.Interface) != 0)
            return TypeKind.Interface;
        string baseName = BaseTypeName(reader, def);
        return baseName switch
        {
            "System.Enum" => TypeKind.Enum,
            // structures are sealed; System.Enum derives from ValueType yet is an abstract class
            "System.ValueType" when (def.Attributes & TypeAttributes.Sealed) != 0 => TypeKind.Struct,
            "System.MulticastDelegate" => TypeKind.Delegate,
            _ when (def.Attributes & (TypeAttributes.Abstract | TypeAttributes.Sealed)) ==
                   (TypeAttributes.Abstract | TypeAttributes.Sealed) => TypeKind.StaticClass,
            _ => TypeKind.Class,
        };
    }

    /// <summary>The full name of the direct base type, or "" for none or a constructed base.</summary>
    public static string BaseTypeName(MetadataReader reader, TypeDefinition def)
    {
        var baseHandle = def.BaseType;
        // a nil extends (System.Object, interfaces) decodes as type definition row 0
        if (baseHandle.IsNil)
            return "";
        switch (baseHandle.Kind)
        {
            case HandleKind.TypeReference:
                var (rns, rname, _) = MetadataNames.OfReference(reader, (TypeReferenceHandle)baseHandle);
                return rns.Length == 0 ? rname : rns + "." + rname;
            case HandleKind.TypeDefinition:
                var (dns, dname) = MetadataNames.OfDefinition(reader, (TypeDefinitionHandle)baseHandle);
                return dns.Length == 0 ? dname : dns + "." + dname;
            default:
                return "";
        }
    }

    private MetadataReader? Open(string assembly)
    {
        if (!_opened.TryGetValue(assembly, out var pe))
        {
            pe = null;
            foreach (var folder in _folders)
            {
                string path = Path.Combine(folder, assembly + ".dll");
                if (!File.Exists(path))
                    continue;
                // read into memory: the file is released at once and later reads never hit the disk
                var candidate = new PEReader(new MemoryStream(File.ReadAllBytes(path)));
                if (candidate.HasMetadata)
                {
                    pe = candidate;
                    break;
                }
                candidate.Dispose();
            }
            _opened[assembly] = pe;
        }
        return pe?.GetMetadataReader();
    }

    public void Dispose()
    {
        foreach (var pe in _opened.Values)
            pe?.Dispose();
        _opened.Clear();
    }
}
