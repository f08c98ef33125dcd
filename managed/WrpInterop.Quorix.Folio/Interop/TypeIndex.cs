namespace Quorix.WrpGen.Interop;

/// <summary>
/// The bound type index of a managed object: the position, in the generated registration order,
/// of the most derived bound type the object is an instance of. Results whose static type has
/// bound subtypes carry it, so the native side picks the wrapper type with an array access.
/// </summary>
public static class TypeIndex
{
    // Copy-on-write: lookups run without a lock; a type seen for the first time (say, a
    // non-public subclass) is resolved once and published in a fresh map.
    private static volatile Dictionary<Type, int> map = new();
    private static readonly object writeLock = new();

    /// <summary>Called once by the generated registration of the assembly's bound types.</summary>
    public static void Register(Type[] types)
    {
        var next = new Dictionary<Type, int>(types.Length);
        for (int i = 0; i < types.Length; i++)
            next[types[i]] = i;
        lock (writeLock)
            map = next;
    }

    /// <summary>-1 for null and for objects of no bound type.</summary>
    public static int Of(object? obj)
    {
        if (obj is null)
            return -1;
        var type = obj.GetType();
        return map.TryGetValue(type, out int index) ? index : Resolve(type);
    }

    private static int Resolve(Type type)
    {
        lock (writeLock)
        {
            var current = map;
            if (current.TryGetValue(type, out int known))
                return known;
            int index = -1;
            for (var t = type.BaseType; t is not null; t = t.BaseType)
            {
                if (current.TryGetValue(t, out int found))
                {
                    index = found;
                    break;
                }
            }
            var next = new Dictionary<Type, int>(current) { [type] = index };
            map = next;
            return index;
        }
    }
}
