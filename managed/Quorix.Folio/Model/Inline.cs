using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

/// <summary>A node inside a paragraph that carries character formatting.</summary>
public abstract class Inline : Node
{
    internal PropBag RPr;

    private protected Inline(DocumentBase? doc, PropBag? rPr) : base(doc) { RPr = rPr ?? new PropBag(PropOrder.Run); }

    public Font Font => new Font(RPr, doc, InheritedRunBags);

    public Paragraph? ParentParagraph => parent as Paragraph;

    /// <summary>The run's character style chain, then its paragraph's (or the document defaults).</summary>
    internal BagChain InheritedRunBags()
    {
        if (doc == null) return default;
        var own = doc.Styles.FindById(RPr.Val("rStyle")) is { } cs ? cs.Chain(true, true) : default;
        return own.Then(parent is Paragraph p ? p.RunChain() : doc.Styles.DefaultsChain(true));
    }
}

/// <summary>A piece of text with one formatting. Tabs and breaks are kept as their control characters.</summary>
public sealed class Run : Inline
{
    private string text;

    public Run(DocumentBase doc) : this(doc, "") { }

    public Run(DocumentBase doc, string text) : base(doc, null) { this.text = text ?? ""; }

    internal Run(DocumentBase? doc, string text, PropBag rPr) : base(doc, rPr) { this.text = text; }

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
    private protected SpecialChar(DocumentBase? doc, PropBag? rPr) : base(doc, rPr) { }

    internal abstract char Char { get; }

    public override string GetText() => Char.ToString();

    internal override void AppendText(StringBuilder sb) => sb.Append(Char);
}
