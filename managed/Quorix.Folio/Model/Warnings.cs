namespace Quorix.Folio;

/// <summary>
/// What the library noticed and worked around while loading or saving a document (a package entry
/// renamed, say). Kept on the document until a caller asks; a user-facing warning callback can be
/// fed from here.
/// </summary>
internal sealed class WarningLog
{
    private readonly List<string> messages = new();

    public IReadOnlyList<string> Messages => messages;

    public void Add(string message) => messages.Add(message);
}
