namespace Quorix.Folio.Markup;

/// <summary>What every content control offers, whether it is one node around its content or, when
/// ranged, a pair of markers around content of its own.</summary>
public interface IStructuredDocumentTag
{
    /// <summary>The control's identifier, unique in the document.</summary>
    int Id { get; }

    /// <summary>The tag an application gave the control to find it again.</summary>
    string Tag { get; set; }

    /// <summary>The name a word processor shows for the control.</summary>
    string Title { get; set; }

    /// <summary>The kind of the control.</summary>
    SdtType SdtType { get; }

    /// <summary>Where the control stands: inline, around blocks, cells or rows.</summary>
    MarkupLevel Level { get; }

    /// <summary>The node that stands for the control in the document.</summary>
    Node Node { get; }

    /// <summary>Whether the control is a pair of markers rather than one node around its content.</summary>
    bool IsRanged();
}
