using System.Reflection.Metadata;

namespace Quorix.WrpGen;

/// <summary>
/// The value rules an assembly states in attributes of its own, matched by simple name so that any
/// bound assembly may declare them: "RealsAreMeasuresAttribute" on the assembly (no float or double
/// of its API may be NaN or infinite) and "NonNegativeAttribute" on a property (its setter refuses negative numbers).
/// </summary>
internal sealed class BindingRules(MetadataReader reader)
{
    private readonly bool _realsAreMeasures =
        reader.IsAssembly && Has(reader, reader.GetAssemblyDefinition().GetCustomAttributes(), "RealsAreMeasuresAttribute");

    public ValueRules For(CarriedType type, bool acceptsNull, bool nonNegative)
    {
        bool reference = type.Kind is ValueKind.String or ValueKind.Bytes or ValueKind.Stream or ValueKind.Class or ValueKind.Interface
            or ValueKind.Sequence;
        bool real = type.Kind is ValueKind.Single or ValueKind.Double;
        bool integer = type.Kind is ValueKind.SByte or ValueKind.Int16 or ValueKind.Int32 or ValueKind.Int64;
        var rules = new ValueRules(AcceptsNull: acceptsNull || !reference, Finite: real && _realsAreMeasures,
                                   NonNegative: nonNegative && (integer || real));
        return rules == ValueRules.None ? ValueRules.None : rules;
    }

    public bool IsNonNegative(CustomAttributeHandleCollection attributes) => Has(reader, attributes, "NonNegativeAttribute");

    /// <summary>"LongRunningAttribute" on a method or constructor: the binding releases the interpreter lock around the call.</summary>
    public bool IsLongRunning(CustomAttributeHandleCollection attributes) => Has(reader, attributes, "LongRunningAttribute");

    /// <summary>A `params` array parameter: Python may also pass its items as trailing positional arguments.</summary>
    public bool IsParams(CustomAttributeHandleCollection attributes) => Has(reader, attributes, "ParamArrayAttribute");

    /// <summary>
    /// The member named by "OfDocumentAttribute" on a class (an internal property giving the document
    /// its objects belong to), or null: the stubs hold that document for each call.
    /// </summary>
    public string? DocumentMember(CustomAttributeHandleCollection attributes)
    {
        foreach (var ah in attributes)
        {
            var attribute = reader.GetCustomAttribute(ah);
            if (AttributeType(reader, attribute).Name != "OfDocumentAttribute")
                continue;
            // the value blob: prolog 0x0001, then the one string argument
            var blob = reader.GetBlobReader(attribute.Value);
            if (blob.ReadUInt16() != 1 || blob.ReadSerializedString() is not { Length: > 0 } member)
                throw new GeneratorException("OfDocumentAttribute needs the name of a member");
            return member;
        }
        return null;
    }

    private static bool Has(MetadataReader reader, CustomAttributeHandleCollection attributes, string name) =>
        attributes.Any(ah => AttributeType(reader, reader.GetCustomAttribute(ah)).Name == name);

    /// <summary>The namespace and name of an attribute's class ("" for both if unknown).</summary>
    internal static (string Namespace, string Name) AttributeType(MetadataReader reader, CustomAttribute attribute)
    {
        var ctor = attribute.Constructor;
        EntityHandle owner = ctor.Kind switch
        {
            HandleKind.MemberReference => reader.GetMemberReference((MemberReferenceHandle)ctor).Parent,
            HandleKind.MethodDefinition => reader.GetMethodDefinition((MethodDefinitionHandle)ctor).GetDeclaringType(),
            _ => default,
        };
        return owner.Kind switch
        {
            HandleKind.TypeDefinition => MetadataNames.OfDefinition(reader, (TypeDefinitionHandle)owner),
            HandleKind.TypeReference => MetadataNames.OfReference(reader, (TypeReferenceHandle)owner) is var (ns, n, _) ? (ns, n) : ("", ""),
            _ => ("", ""),
        };
    }
}
