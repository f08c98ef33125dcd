using System.Runtime.InteropServices;
using Quorix.Folio;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// The interpreter lock as seen from managed code: letting go of it and taking it back, and how a
/// Python thread waits for a document another thread holds (without the lock, because the holder
/// may be running a callback into Python that needs it). Installed once by quorix.folio at start-up.
/// </summary>
public static unsafe class DocumentThreads
{
    private static delegate* unmanaged<IntPtr> releaseLock;
    private static delegate* unmanaged<IntPtr, void> restoreLock;

    /// <summary>
    /// <paramref name="release"/>: lets go of the interpreter lock if this thread holds it, returning
    /// what <paramref name="restore"/> takes back (zero if nothing was held).
    /// </summary>
    [UnmanagedCallersOnly]
    public static void SetLockCallbacks(IntPtr release, IntPtr restore)
    {
        releaseLock = (delegate* unmanaged<IntPtr>)release;
        restoreLock = (delegate* unmanaged<IntPtr, void>)restore;
        DocumentGate.WaitHook = WaitUnlocked;
    }

    /// <summary>Lets go of the interpreter lock if this thread holds it; what <see cref="Restore"/> takes.</summary>
    internal static IntPtr Release() => releaseLock == null ? IntPtr.Zero : releaseLock();

    /// <summary>Takes back the interpreter lock <see cref="Release"/> let go of (nothing for zero).</summary>
    internal static void Restore(IntPtr saved)
    {
        if (saved != IntPtr.Zero)
            restoreLock(saved);
    }

    private static void WaitUnlocked(object gate)
    {
        IntPtr saved = Release();
        try
        {
            Monitor.Enter(gate);
        }
        finally
        {
            Restore(saved);
        }
    }
}
