using System.Runtime.CompilerServices;
using Quorix.Folio;

namespace Quorix.WrpGen.Interop;

/// <summary>
/// One Python thread at a time uses a document: every stub on an object of a document takes the
/// document for the call (re-entrantly: a callback on the same thread goes on), and long calls let
/// go of the interpreter lock only once they hold it.
///
/// The owner is taken and given back only with the interpreter lock held, so a caller holding the
/// lock that finds no owner needs no atomic operation: nobody else can take the document before it
/// does. The lock is let go inside a call only by long calls and by Python code a callback runs;
/// both happen after the owner is set, so other threads then find it and wait.
/// </summary>
public struct DocumentAccess
{
    // Null when the call did not take the document (none, or this thread held it already).
    private DocumentGate? taken;
    // The interpreter lock a long call let go of; zero for short calls.
    private IntPtr released;

    /// <summary>Takes <paramref name="document"/> for a short call; the caller holds the interpreter lock.</summary>
    [MethodImpl(MethodImplOptions.AggressiveInlining)]
    public static DocumentAccess Enter(DocumentBase? document)
    {
        DocumentAccess access = default;
        if (document is not null)
            access.taken = Take(document.Gate);
        return access;
    }

    /// <summary>Takes <paramref name="document"/> (if any) for a long call, then lets go of the interpreter lock.</summary>
    public static DocumentAccess EnterLong(DocumentBase? document)
    {
        DocumentAccess access = Enter(document);
        access.released = DocumentThreads.Release();
        return access;
    }

    /// <summary>Takes the interpreter lock back if a long call let go of it, then gives the document back.</summary>
    [MethodImpl(MethodImplOptions.AggressiveInlining)]
    public void Exit()
    {
        if (released != IntPtr.Zero)
            DocumentThreads.Restore(released);
        if (taken is { } gate)
        {
            gate.Owner = 0;
            if (gate.Waiters != 0)
                WakeWaiters(gate);
        }
    }

    // The gate when this call took it, null when this thread is its owner already.
    [MethodImpl(MethodImplOptions.AggressiveInlining)]
    private static DocumentGate? Take(DocumentGate gate)
    {
        int me = Environment.CurrentManagedThreadId;
        int owner = gate.Owner;
        if (owner == me)
            return null;
        // Waiters are served first come, first served: a thread that gives the document back and
        // asks again at once (a loop of saves) would otherwise win every time and starve them.
        if (owner != 0 || gate.Waiters != 0)
            WaitForTurn(gate, me);
        gate.Owner = me;
        return gate;
    }

    // Waits without the interpreter lock until the gate is free and this thread's ticket is the
    // one served; returns holding the lock. Tickets are drawn and served only under the lock.
    // Owners give the gate back holding the lock, then wake the waiters under the monitor, so a
    // wake-up between letting go of the lock and waiting is not lost.
    [MethodImpl(MethodImplOptions.NoInlining)]
    private static void WaitForTurn(DocumentGate gate, int me)
    {
        long ticket = gate.NextTicket++;
        gate.Waiters++;
        try
        {
            while (gate.Owner != 0 || gate.Serving != ticket)
            {
                IntPtr saved = DocumentThreads.Release();
                lock (gate.WaitRoom)
                {
                    while (Volatile.Read(ref gate.Owner) != 0 || Volatile.Read(ref gate.Serving) != ticket)
                        Monitor.Wait(gate.WaitRoom);
                }
                DocumentThreads.Restore(saved);
            }
            gate.Serving++;
        }
        finally
        {
            gate.Waiters--;
        }
    }

    [MethodImpl(MethodImplOptions.NoInlining)]
    private static void WakeWaiters(DocumentGate gate)
    {
        lock (gate.WaitRoom)
            Monitor.PulseAll(gate.WaitRoom);
    }
}
