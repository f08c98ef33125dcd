using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>What a loaded file had that the model does not show but the next save must repeat.</summary>
internal sealed class DocxState
{
    public readonly Dictionary<string, RootInfo> Roots = new(StringComparer.OrdinalIgnoreCase);
    public readonly List<PropElement> FootnoteSeparators = new();
    public readonly List<PropElement> EndnoteSeparators = new();
    public PropElement? BodyTail;

    public DocxState Clone()
    {
        var c = new DocxState();
        foreach (var kv in Roots) c.Roots[kv.Key] = kv.Value;
        c.FootnoteSeparators.AddRange(FootnoteSeparators.Select(e => e.Clone()));
        c.EndnoteSeparators.AddRange(EndnoteSeparators.Select(e => e.Clone()));
        c.BodyTail = BodyTail?.Clone();
        return c;
    }
}
