namespace Quorix.Folio;

/// <summary>
/// A document's gate (<see cref="DocumentBase.Gate"/>): the monitor that the long calls on one
/// document (saving, building a loaded model) hold, and the state a host keeps to serialise its
/// threads' calls on the document (<see cref="Owner"/>, <see cref="Waiters"/>, <see cref="WaitRoom"/>;
/// the library itself never reads them).
/// </summary>
internal sealed class DocumentGate
{
    /// <summary>The managed id of the thread a host lets use the document now; 0 when none.</summary>
    internal int Owner;

    /// <summary>How many of a host's threads wait for <see cref="Owner"/> to let go.</summary>
    internal int Waiters;

    /// <summary>The ticket the next waiter draws, and the one whose turn comes next: waiters take the document in order.</summary>
    internal long NextTicket, Serving;

    /// <summary>The monitor those waiters sleep on, apart from the gate's own, which a long call may hold throughout.</summary>
    internal readonly object WaitRoom = new();

    /// <summary>
    /// How a thread that finds the monitor taken waits, when a host installed it: a host whose
    /// threads hold a lock of their own while they run this library's code (an interpreter lock)
    /// lets go of it meanwhile, since the holder may need it to finish.
    /// </summary>
    internal static Action<object>? WaitHook;

    /// <summary>Holds <paramref name="gate"/>'s monitor on return; release it with <see cref="Monitor.Exit"/>.</summary>
    public static void Enter(DocumentGate gate)
    {
        if (Monitor.TryEnter(gate))
            return;
        if (WaitHook is { } wait)
            wait(gate);
        else
            Monitor.Enter(gate);
    }
}
