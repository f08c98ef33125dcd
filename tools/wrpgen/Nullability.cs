using System.Reflection.Metadata;

namespace Quorix.WrpGen;

/// <summary>
/// The C# compiler's nullable annotations of a member's top-level reference type: whether a
/// result may be null (so Python receives None) or a parameter accepts null. Reads the
/// NullableAttribute of the member itself, else the NullableContextAttribute of the method and
/// of the enclosing types. Code compiled without annotations reads as unknown; for value types
/// the state carries no meaning.
/// </summary>
public enum NullState { Unknown, NotNull, MayBeNull }

internal sealed class Nullability(MetadataReader reader)
{
    private const string Namespace = "System.Runtime.CompilerServices";

    public NullState OfProperty(PropertyDefinition property, TypeDefinitionHandle owner) =>
        Own(property.GetCustomAttributes()) ?? Context(owner);

    public NullState OfField(FieldDefinition field, TypeDefinitionHandle owner) =>
        Own(field.GetCustomAttributes()) ?? Context(owner);

    /// <summary>The result (sequence 0) or a parameter (sequence 1, 2, ...) of a method.</summary>
    public NullState OfParameter(MethodDefinition method, int sequence, TypeDefinitionHandle owner)
    {
        foreach (var ph in method.GetParameters())
        {
            var p = reader.GetParameter(ph);
            if (p.SequenceNumber == sequence && Own(p.GetCustomAttributes()) is { } own)
                return own;
        }
        return Flag(method.GetCustomAttributes(), "NullableContextAttribute") ?? Context(owner);
    }

    private NullState Context(TypeDefinitionHandle type)
    {
        for (var t = type; !t.IsNil; t = reader.GetTypeDefinition(t).GetDeclaringType())
        {
            if (Flag(reader.GetTypeDefinition(t).GetCustomAttributes(), "NullableContextAttribute") is { } state)
                return state;
        }
        return NullState.Unknown;
    }

    private NullState? Own(CustomAttributeHandleCollection attributes) => Flag(attributes, "NullableAttribute");

    // The first flag of the attribute's argument: a byte, or the first byte of a byte array
    // (the top-level type comes first). 0 unknown, 1 not null, 2 may be null.
    private NullState? Flag(CustomAttributeHandleCollection attributes, string name)
    {
        foreach (var ah in attributes)
        {
            var attribute = reader.GetCustomAttribute(ah);
            if (AttributeName(attribute) != Namespace + "." + name)
                continue;
            var blob = reader.GetBlobReader(attribute.Value);
            if (blob.Length < 3 || blob.ReadUInt16() != 1)
                return null;
            byte flag;
            if (blob.Length == 5)
                flag = blob.ReadByte();
            else if (blob.ReadInt32() > 0)
                flag = blob.ReadByte();
            else
                return null;
            return flag switch { 1 => NullState.NotNull, 2 => NullState.MayBeNull, _ => NullState.Unknown };
        }
        return null;
    }

    private string AttributeName(CustomAttribute attribute)
    {
        EntityHandle type;
        switch (attribute.Constructor.Kind)
        {
            case HandleKind.MethodDefinition:
                type = reader.GetMethodDefinition((MethodDefinitionHandle)attribute.Constructor).GetDeclaringType();
                break;
            case HandleKind.MemberReference:
                type = reader.GetMemberReference((MemberReferenceHandle)attribute.Constructor).Parent;
                break;
            default:
                return "";
        }
        return type.Kind switch
        {
            HandleKind.TypeDefinition => Join(MetadataNames.OfDefinition(reader, (TypeDefinitionHandle)type)),
            HandleKind.TypeReference => Join(MetadataNames.OfReference(reader, (TypeReferenceHandle)type)),
            _ => "",
        };
    }

    private static string Join((string Namespace, string Name) n) => n.Namespace + "." + n.Name;

    private static string Join((string Namespace, string Name, string Scope) n) => n.Namespace + "." + n.Name;
}
