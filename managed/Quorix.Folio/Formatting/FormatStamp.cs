namespace Quorix.Folio.Formatting;

/// <summary>Counts formatting edits, so that a resolved style chain can tell whether it still holds.</summary>
// One counter for the process rather than one per document: property elements do not know their
// document, and an edit elsewhere costs a cached chain no more than one fresh resolution.
internal static class FormatStamp
{
    private static long value;

    public static long Current => Volatile.Read(ref value);

    // Atomic: a lost increment could hand two different states of the styles the same stamp.
    public static void Bump() => Interlocked.Increment(ref value);
}
