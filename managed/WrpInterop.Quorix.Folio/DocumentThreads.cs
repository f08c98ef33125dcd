using System.Runtime.InteropServices;
using Quorix.Folio;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// How a Python thread waits for a document that another thread holds: without the interpreter
/// lock, because the holder may be running a callback into Python that needs it. Installed once
/// by quorix.folio at start-up.
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

    private static void WaitUnlocked(object gate)
    {
        IntPtr saved = releaseLock();
        try
        {
            Monitor.Enter(gate);
        }
        finally
        {
            restoreLock(saved);
        }
    }
}
