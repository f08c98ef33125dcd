using System.Collections;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

public sealed class ParagraphCollection : NodeCollection, IEnumerable<Paragraph>
{
    internal ParagraphCollection(CompositeNode container, bool deep = false) : base(container, NodeType.Paragraph, deep) { }

    public new Paragraph this[int index] => (Paragraph)base[index];

    public new Paragraph[] ToArray() => ToArrayOf<Paragraph>();

    public new IEnumerator<Paragraph> GetEnumerator() => EnumerateOf<Paragraph>();
}

public sealed class RunCollection : NodeCollection, IEnumerable<Run>
{
    internal RunCollection(CompositeNode container) : base(container, NodeType.Run, false) { }

    public new Run this[int index] => (Run)base[index];

    public new Run[] ToArray() => ToArrayOf<Run>();

    public new IEnumerator<Run> GetEnumerator() => EnumerateOf<Run>();
}

public sealed class SectionCollection : NodeCollection, IEnumerable<Section>
{
    internal SectionCollection(CompositeNode container) : base(container, NodeType.Section, false) { }

    public new Section this[int index] => (Section)base[index];

    public new Section[] ToArray() => ToArrayOf<Section>();

    public new IEnumerator<Section> GetEnumerator() => EnumerateOf<Section>();
}

public sealed class HeaderFooterCollection : NodeCollection, IEnumerable<HeaderFooter>
{
    internal HeaderFooterCollection(CompositeNode container) : base(container, NodeType.HeaderFooter, false) { }

    public new HeaderFooter this[int index] => (HeaderFooter)base[index];

    public new HeaderFooter[] ToArray() => ToArrayOf<HeaderFooter>();

    public new IEnumerator<HeaderFooter> GetEnumerator() => EnumerateOf<HeaderFooter>();

    public HeaderFooter? this[HeaderFooterType headerFooterType]
    {
        get
        {
            foreach (var hf in ToArray())
                if (hf.HeaderFooterType == headerFooterType) return hf;
            return null;
        }
    }
}

public sealed class CommentCollection : NodeCollection, IEnumerable<Comment>
{
    internal CommentCollection(CompositeNode container) : base(container, NodeType.Comment, true) { }

    public new Comment this[int index] => (Comment)base[index];

    public new Comment[] ToArray() => ToArrayOf<Comment>();

    public new IEnumerator<Comment> GetEnumerator() => EnumerateOf<Comment>();
}
