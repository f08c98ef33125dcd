namespace Quorix.Folio;

/// <summary>
/// Entering a document's gate (<see cref="DocumentBase.Gate"/>). A thread that finds the gate taken
/// waits through <see cref="WaitHook"/> when a host installed one: a host whose threads hold a lock
/// of their own while they run this library's code (an interpreter lock) lets go of it meanwhile,
/// since the gate's holder may need it to finish.
/// </summary>
internal static class DocumentGate
{
    internal static Action<object>? WaitHook;

    /// <summary>Holds <paramref name="gate"/> on return; release it with <see cref="Monitor.Exit"/>.</summary>
    public static void Enter(object gate)
    {
        if (Monitor.TryEnter(gate))
            return;
        if (WaitHook is { } wait)
            wait(gate);
        else
            Monitor.Enter(gate);
    }
}
