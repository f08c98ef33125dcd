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

    public Font Font => new Font(this, doc, Inherited);

    public Paragraph? ParentParagraph => parent as Paragraph;

    /// <summary>What the run inherits: its paragraph's style, then its character style, over the document defaults.</summary>
    internal AttrSet Inherited()
    {
        if (doc == null) return AttrSet.Empty;
        var p = parent as Paragraph ?? GetAncestor(NodeType.Paragraph) as Paragraph;
        return doc.Cascade.Run(p?.ParagraphStyle, RunAttrs.String(FormatAttr.CharStyle));
    }
}

/// <summary>A piece of text with one formatting. Tabs and breaks are kept as their control characters.</summary>
public sealed class Run : Inline
{
    private string text;

    public Run(DocumentBase doc) : this(doc, "") { }

    public Run(DocumentBase doc, string text) : base(doc, FormatProps.None) { this.text = text ?? ""; }

    internal Run(DocumentBase? doc, string text, FormatProps rPr) : base(doc, rPr) { this.text = text; }

    public override NodeType NodeType => NodeType.Run;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitRun(this);

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

    public override string GetText() => text;

    internal override void AppendText(StringBuilder sb) => sb.Append(text);

    internal override Node CloneTo(DocumentBase? target, bool deep) => new Run(target, text, RPr.Clone()) { XAttrs = XAttrs };
}

/// <summary>A single special character: the field markers.</summary>
public abstract class SpecialChar : Inline
{
    private protected SpecialChar(DocumentBase? doc, FormatProps rPr) : base(doc, rPr) { }

    internal abstract char Char { get; }

    public override string GetText() => Char.ToString();

    internal override void AppendText(StringBuilder sb) => sb.Append(Char);
}
