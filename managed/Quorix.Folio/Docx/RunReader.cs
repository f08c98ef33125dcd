using System.Text;
using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>Splits one run element into model nodes: text runs, field markers, notes, pictures.</summary>
internal static class RunReader
{
    // Characters the model uses for elements that stand inside run text.
    internal const char NoBreakHyphen = '\u001e';
    internal const char SoftHyphen = '\u001f';

    /// <summary>Text content of a simple element; cheaper than the general content reader.</summary>
    private static void ReadText(XmlReader r, TextBuffer text)
    {
        if (r.IsEmptyElement) { r.Read(); return; }
        r.Read();
        while (r.NodeType != XmlNodeType.EndElement)
        {
            if (r.EOF) throw new XmlException("Unexpected end of run text.");
            if (r.NodeType is XmlNodeType.Text or XmlNodeType.CDATA or XmlNodeType.SignificantWhitespace or XmlNodeType.Whitespace)
                text.AppendValue(r);
            else if (r.NodeType == XmlNodeType.Element) { r.Skip(); continue; }
            r.Read();
        }
        r.Read();
    }

    public static void ReadRun(XmlReader r, CompositeNode p, ReadContext ctx)
    {
        var doc = ctx.Doc;
        // Set when the run has properties; the nodes of one run element share its attributes.
        FormatProps? rPr = null;
        bool emitted = false;
        var attrs = PropElement.ReadAttrs(r);
        var text = ctx.Text;
        bool inCode = false;
        // A note reference with a custom mark: the text that follows in the run is the mark.
        Quorix.Folio.Notes.Footnote? markFor = null;

        FormatProps Props()
        {
            if (rPr is not { } props) { emitted = true; return FormatProps.None; }
            var b = emitted ? props.Clone() : props;
            emitted = true;
            return b;
        }

        void Flush()
        {
            if (text.Length == 0) return;
            var run = new Run(doc, text.Take(), Props());
            if (attrs != null) { run.XAttrs = attrs; attrs = null; }
            p.LinkLast(run);
        }

        if (r.IsEmptyElement) { r.Read(); p.LinkLast(new Run(doc, "", Props()) { XAttrs = attrs }); return; }
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a run.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI != Ns.W)
            {
                Flush();
                // A drawing given in two vocabularies, for old and new readers: a text box when it holds one.
                if (r.LocalName == "AlternateContent")
                {
                    var full = r.ReadOuterXml();
                    if (DrawingReader.TryTextBox(full, ctx) is { } box)
                    {
                        box.RPr = Props();
                        p.LinkLast(box);
                    }
                    else p.LinkLast(new OpaqueNode(doc, OpaqueKind.RunContent, RawXml.DropRootDeclarations(full, ctx.Root), Props(), BodyReader.VisibleText(full)));
                    continue;
                }
                p.LinkLast(BodyReader.Opaque(r, ctx, OpaqueKind.RunContent, Props()));
                continue;
            }
            switch (r.LocalName)
            {
                case "rPr":
                    rPr = PropsCodec.Run.Decode(PropBag.Read(r, PropOrder.Run), doc.Cascade.SharedTable);
                    break;
                case "t":
                case "delText":
                    if (inCode) { Flush(); inCode = false; }
                    if (markFor != null)
                    {
                        Flush();
                        ReadText(r, text);
                        markFor.ReferenceMark = text.Take();
                        markFor = null;
                        break;
                    }
                    ReadText(r, text);
                    break;
                case "instrText":
                case "delInstrText":
                    // Field code gets runs of its own, so the writer can tell code from result.
                    if (!inCode) { Flush(); inCode = true; }
                    ReadText(r, text);
                    break;
                case "tab":
                    text.Append('\t');
                    r.Skip();
                    break;
                case "br":
                    text.Append(r.GetAttribute("type", Ns.W) switch
                    {
                        "page" => ControlChar.PageBreakChar,
                        "column" => ControlChar.ColumnBreakChar,
                        _ => ControlChar.LineBreakChar,
                    });
                    r.Skip();
                    break;
                case "cr":
                    text.Append(ControlChar.LineBreakChar);
                    r.Skip();
                    break;
                case "noBreakHyphen":
                    text.Append(NoBreakHyphen);
                    r.Skip();
                    break;
                case "softHyphen":
                    text.Append(SoftHyphen);
                    r.Skip();
                    break;
                case "lastRenderedPageBreak":
                case "footnoteRef":
                case "endnoteRef":
                case "annotationRef":
                    // Layout hints and note marks: the writer puts the marks back itself.
                    r.Skip();
                    break;
                case "fldChar":
                {
                    Flush();
                    inCode = false;
                    var e = PropElement.Read(r);
                    switch (e.Get("fldCharType"))
                    {
                        case "begin":
                            p.LinkLast(new FieldStart(doc, Props()) { Raw = e });
                            break;
                        case "separate":
                            p.LinkLast(new FieldSeparator(doc, Props()));
                            break;
                        case "end":
                            p.LinkLast(new FieldEnd(doc, Props()));
                            break;
                    }
                    break;
                }
                case "footnoteReference":
                case "endnoteReference":
                {
                    Flush();
                    var id = r.GetAttribute("id", Ns.W) ?? "";
                    var map = r.LocalName == "footnoteReference" ? ctx.Notes.Footnotes : ctx.Notes.Endnotes;
                    bool custom = r.GetAttribute("customMarkFollows", Ns.W) is "1" or "true" or "on";
                    if (map.Remove(id, out var note))
                    {
                        if (custom) markFor = note;
                        note.RPr = Props();
                        p.LinkLast(note);
                        r.Skip();
                    }
                    else p.LinkLast(BodyReader.Opaque(r, ctx, OpaqueKind.RunContent, Props()));
                    break;
                }
                case "commentReference":
                {
                    Flush();
                    var id = r.GetAttribute("id", Ns.W) ?? "";
                    if (ctx.Notes.Comments.Remove(id, out var comment))
                    {
                        comment.RPr = Props();
                        p.LinkLast(comment);
                        r.Skip();
                    }
                    else p.LinkLast(BodyReader.Opaque(r, ctx, OpaqueKind.RunContent, Props()));
                    break;
                }
                case "drawing":
                {
                    Flush();
                    var full = r.ReadOuterXml();
                    var xml = RawXml.DropRootDeclarations(full, ctx.Root);
                    var shape = DrawingReader.TryPicture(full, ctx) ?? DrawingReader.TryTextBox(full, ctx);
                    if (shape != null)
                    {
                        shape.RPr = Props();
                        p.LinkLast(shape);
                    }
                    else p.LinkLast(new OpaqueNode(doc, OpaqueKind.RunContent, xml, Props()));
                    break;
                }
                case "pict":
                {
                    Flush();
                    var full = r.ReadOuterXml();
                    if ((DrawingReader.TryVmlPicture(full, ctx) ?? DrawingReader.TryTextBox(full, ctx)) is { } picture)
                    {
                        picture.RPr = Props();
                        p.LinkLast(picture);
                    }
                    else p.LinkLast(new OpaqueNode(doc, OpaqueKind.RunContent, RawXml.DropRootDeclarations(full, ctx.Root), Props(), BodyReader.VisibleText(full)));
                    break;
                }
                case "sym":
                {
                    // A character from a symbol font: kept as written, shown as its character.
                    Flush();
                    var code = r.GetAttribute("char", Ns.W);
                    var symbol = code != null && int.TryParse(code, System.Globalization.NumberStyles.HexNumber, null, out var c) && c is > 0 and < 0xFFFE && !char.IsSurrogate((char)c)
                        ? ((char)c).ToString() : "";
                    p.LinkLast(new OpaqueNode(doc, OpaqueKind.RunContent, RawXml.DropRootDeclarations(r.ReadOuterXml(), ctx.Root), Props(), symbol) { ShowsText = true });
                    break;
                }
                default:
                    Flush();
                    p.LinkLast(BodyReader.Opaque(r, ctx, OpaqueKind.RunContent, Props()));
                    break;
            }
        }
        r.Read();
        Flush();
        if (!emitted) p.LinkLast(new Run(doc, "", Props()) { XAttrs = attrs });
    }
}
