using Quorix.Folio.Lists;

namespace Quorix.Folio.Text;

/// <summary>List labels of every body paragraph, counted in one pass and kept until the tree changes.</summary>
internal sealed class LabelCache
{
    private readonly Document doc;
    private Dictionary<Paragraph, ListLabel>? labels;
    private int version = -1;

    public LabelCache(Document doc) { this.doc = doc; }

    public ListLabel Of(Paragraph p)
    {
        if (labels == null || version != doc.version)
        {
            var counter = new ListLabeler(doc);
            labels = new Dictionary<Paragraph, ListLabel>(ReferenceEqualityComparer.Instance);
            foreach (Paragraph para in doc.GetChildNodes(NodeType.Paragraph, true))
                if (counter.Next(para) is { } l) labels[para] = new ListLabel(l.Text, l.IsBullet ? 0 : l.Number);
            version = doc.version;
        }
        return labels.TryGetValue(p, out var label) ? label : new ListLabel("", 0);
    }
}
