using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>A node inside a paragraph that carries character formatting.</summary>
public abstract class Inline : Node, IRunFormatted
{
    // Shared with every node of the same formatting; replaced, never changed, on an edit.
    internal AttrSet RunAttrs = AttrSet.Empty;
    // What the file said about the run that the engine does not model; null for nearly every run.
    internal PropBag? RunKept;

    private protected Inline(DocumentBase? doc, FormatProps rPr) : base(doc) { RPr = rPr; }

    internal FormatProps RPr
    {
        get => new(RunAttrs, RunKept);
        set
        {
            RunAttrs = value.Attrs;
            RunKept = value.Kept;
        }
    }

    AttrSet IRunFormatted.RunAttrs { get => RunAttrs; set => RunAttrs = value; }

    PropBag? IRunFormatted.RunKept(bool create) => create ? RunKept ??= new PropBag(PropOrder.Run) : RunKept;

    /// <summary>The character formatting of this node's text.</summary>
    public Font Font => new Font(this, doc, Inherited);

    /// <summary>The paragraph this node is in.</summary>
    public Paragraph? ParentParagraph => parent as Paragraph;

    /// <summary>What the run inherits: its paragraph's style, then its character style, over the document defaults.</summary>
    internal AttrSet Inherited()
    {
        if (doc == null) return AttrSet.Empty;
        var p = parent as Paragraph ?? GetAncestor(NodeType.Paragraph) as Paragraph;
        return doc.Cascade.Run(p?.ParagraphStyle, RunAttrs.String(FormatAttr.CharStyle), p?.TableLayer);
    }
}

/// <summary>A piece of text with one formatting. Tabs and breaks are kept as their control characters.</summary>
public sealed class Run : Inline
{
    private string text;

    /// <summary>An empty run for doc, to be inserted into a paragraph.</summary>
    public Run(DocumentBase doc) : this(doc, "") { }

    /// <summary>A run of that text for doc, to be inserted into a paragraph.</summary>
    public Run(DocumentBase doc, string text) : base(doc, FormatProps.None) { this.text = text ?? ""; }

    internal Run(DocumentBase? doc, string text, FormatProps rPr) : base(doc, rPr) { this.text = text; }

    /// <summary>Always Run.</summary>
    public override NodeType NodeType => NodeType.Run;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitRun(this);

    /// <summary>The run's text.</summary>
    public string Text
    {
        get => text;
        // Text edits leave the tree's shape alone, so live collections stay valid.
        set
        {
            text = value ?? "";
            doc?.TextEdited();
        }
    }

    /// <summary>The run's text.</summary>
    public override string GetText() => text;

    internal override void AppendText(TextSink sb) => sb.Append(text);

    internal override Node CloneTo(DocumentBase? target, bool deep) => new Run(target, text, RPr.Clone()) { XAttrs = XAttrs };
}

/// <summary>A single special character: the field markers.</summary>
public abstract class SpecialChar : Inline
{
    private protected SpecialChar(DocumentBase? doc, FormatProps rPr) : base(doc, rPr) { }

    internal abstract char Char { get; }

    /// <summary>The one character this node stands for.</summary>
    public override string GetText() => Char.ToString();

    internal override void AppendText(TextSink sb) => sb.Append(Char);
}
