namespace Quorix.Folio;

/// <summary>What a format's reader kept beside the model for its writer (roots of parts, note
/// separators, content the model does not show): held by the document, opaque to it.</summary>
internal abstract class FormatSideCar
{
    /// <summary>A copy for a clone of the document, with the nodes it holds copied into the clone.</summary>
    public abstract FormatSideCar CloneFor(Document target);
}
