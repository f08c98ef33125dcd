namespace Quorix.Folio;

public sealed partial class Document
{
    private Bibliography.Bibliography? bibliography;

    /// <summary>The sources of the document's bibliography, read from its bibliography sources part.</summary>
    public Bibliography.Bibliography Bibliography => bibliography ??= Folio.Bibliography.Bibliography.Load(Source);
}
