namespace Quorix.WrpGen;

/// <summary>
/// How generated bindings reach the runtime when they do not live in the module that starts it.
/// <see cref="HostStart"/>: a C++ function <c>int f()</c> (0, or -1 with an exception set) run before
/// any managed call of a bound type, so a module can join the runtime on first use instead of at
/// import. <see cref="Release"/>: a C++ function <c>void f(void*)</c> that frees the handle of a
/// wrapper going away, for modules whose own host may never have started.
/// </summary>
public sealed record CppEmitOptions(string? HostStart = null, string? Release = null);
