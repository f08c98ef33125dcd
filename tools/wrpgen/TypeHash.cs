using System.Text;

namespace Quorix.WrpGen;

/// <summary>
/// The type hash that names a managed type in every generated identifier. The native runtime
/// computes the same value, so this is the only definition on the managed side.
/// </summary>
public static class TypeHash
{
    private const uint OffsetBasis = 0x811C9DC5;
    private const uint Prime = 0x01000193;

    /// <summary>32-bit FNV-1a over the UTF-8 bytes of the text.</summary>
    public static uint Fnv1a(string text)
    {
        uint hash = OffsetBasis;
        foreach (byte b in Encoding.UTF8.GetBytes(text))
        {
            hash ^= b;
            hash = unchecked(hash * Prime);
        }
        return hash;
    }

    /// <summary>Eight upper-case hexadecimal digits of the hash of a full managed type name.</summary>
    public static string Of(string fullManagedName) =>
        Fnv1a(fullManagedName).ToString("X8", System.Globalization.CultureInfo.InvariantCulture);
}
