using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio;

internal enum OpaqueKind
{
    Block,
    Inline,
    // One child of a run, written back inside a run with the run's properties.
    RunContent,
}

/// <summary>Content the engine does not model, kept as the XML it was read from.</summary>
internal sealed class OpaqueNode : Node
{
    public readonly OpaqueKind Kind;
    public string Xml;
    public readonly FormatProps? RPr;
    // Text a reader would see in it (deleted/inserted runs, content controls), for plain-text output.
    public readonly string VisibleText;

    // A container whose content the model shows (a content control, a smart tag) is kept as two
    // markers around that content: the start tag with its properties, and the end tag. Each
    // marker knows the other, so that a writer can keep the markup balanced whatever was edited.
    public OpaqueNode? Partner;
    public bool Opens;

    public static (OpaqueNode Open, OpaqueNode Close) Bracket(DocumentBase? doc, OpaqueKind kind, string openXml, string closeXml)
    {
        var open = new OpaqueNode(doc, kind, openXml) { Opens = true };
        var close = new OpaqueNode(doc, kind, closeXml) { Partner = open };
        open.Partner = close;
        return (open, close);
    }

    public OpaqueNode(DocumentBase? doc, OpaqueKind kind, string xml, FormatProps? rPr = null, string visibleText = "") : base(doc)
    {
        Kind = kind;
        Xml = xml;
        RPr = rPr;
        VisibleText = visibleText;
    }

    public override NodeType NodeType => NodeType.Any;

    internal override bool IsOpaque => true;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitKept(this);

    // Whether the text is part of the paragraph's text, as a symbol character is.
    public bool ShowsText;

    public override string GetText() => ShowsText ? VisibleText : "";

    internal override void AppendText(TextSink sb)
    {
        if (ShowsText) sb.Append(VisibleText);
    }

    internal override Node CloneTo(DocumentBase? target, bool deep) =>
        new OpaqueNode(target, Kind, Xml, RPr?.Clone(), VisibleText) { Opens = Opens, ShowsText = ShowsText };
}
