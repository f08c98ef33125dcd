using System.Collections;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>A live collection of paragraphs.</summary>
public sealed class ParagraphCollection : NodeCollection, IEnumerable<Paragraph>
{
    internal ParagraphCollection(CompositeNode container, bool deep = false) : base(container, NodeType.Paragraph, deep) { }

    /// <summary>The paragraph at that position; negative positions count from the end.</summary>
    public new Paragraph this[int index] => (Paragraph)base[index];

    /// <summary>The paragraphs as an array, fixed at the time of the call.</summary>
    public new Paragraph[] ToArray() => ToArrayOf<Paragraph>();

    /// <summary>The paragraphs in document order.</summary>
    public new IEnumerator<Paragraph> GetEnumerator() => EnumerateOf<Paragraph>();
}

/// <summary>A live collection of runs.</summary>
public sealed class RunCollection : NodeCollection, IEnumerable<Run>
{
    internal RunCollection(CompositeNode container) : base(container, NodeType.Run, false) { }

    /// <summary>The run at that position; negative positions count from the end.</summary>
    public new Run this[int index] => (Run)base[index];

    /// <summary>The runs as an array, fixed at the time of the call.</summary>
    public new Run[] ToArray() => ToArrayOf<Run>();

    /// <summary>The runs in document order.</summary>
    public new IEnumerator<Run> GetEnumerator() => EnumerateOf<Run>();
}

/// <summary>A live collection of sections.</summary>
public sealed class SectionCollection : NodeCollection, IEnumerable<Section>
{
    internal SectionCollection(CompositeNode container) : base(container, NodeType.Section, false) { }

    /// <summary>The section at that position; negative positions count from the end.</summary>
    public new Section this[int index] => (Section)base[index];

    /// <summary>The sections as an array, fixed at the time of the call.</summary>
    public new Section[] ToArray() => ToArrayOf<Section>();

    /// <summary>The sections in document order.</summary>
    public new IEnumerator<Section> GetEnumerator() => EnumerateOf<Section>();
}

/// <summary>The headers and footers of a section.</summary>
public sealed class HeaderFooterCollection : NodeCollection, IEnumerable<HeaderFooter>
{
    internal HeaderFooterCollection(CompositeNode container) : base(container, NodeType.HeaderFooter, false) { }

    /// <summary>The header or footer at that position; negative positions count from the end.</summary>
    public new HeaderFooter this[int index] => (HeaderFooter)base[index];

    /// <summary>The headers and footers as an array, fixed at the time of the call.</summary>
    public new HeaderFooter[] ToArray() => ToArrayOf<HeaderFooter>();

    /// <summary>The headers and footers in the section's order.</summary>
    public new IEnumerator<HeaderFooter> GetEnumerator() => EnumerateOf<HeaderFooter>();

    /// <summary>The section's header or footer of that kind; None when it has none.</summary>
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

/// <summary>A live collection of comments.</summary>
public sealed class CommentCollection : NodeCollection, IEnumerable<Comment>
{
    internal CommentCollection(CompositeNode container, Func<Node, bool>? filter = null) : base(container, NodeType.Comment, true, filter) { }

    /// <summary>The comment at that position; negative positions count from the end.</summary>
    public new Comment this[int index] => (Comment)base[index];

    /// <summary>The comments as an array, fixed at the time of the call.</summary>
    public new Comment[] ToArray() => ToArrayOf<Comment>();

    /// <summary>The comments in document order.</summary>
    public new IEnumerator<Comment> GetEnumerator() => EnumerateOf<Comment>();
}
