namespace Quorix.Folio;

/// <summary>Tells exceptions thrown by an application's callbacks from the engine's own, so that readers
/// which turn failures into <see cref="FileCorruptedException"/> let the callback's through unchanged.</summary>
internal static class UserCode
{
    private const string Key = "Quorix.Folio.ThrownByCallback";

    /// <summary>Marks the exception as the callback's; always false, to be used as an exception filter
    /// that leaves the exception on its way.</summary>
    public static bool Tag(Exception e)
    {
        e.Data[Key] = true;
        return false;
    }

    /// <summary>Whether a callback threw the exception.</summary>
    public static bool Threw(Exception e) => e.Data.Contains(Key);
}
