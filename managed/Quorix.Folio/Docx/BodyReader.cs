using System.Text;
using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Docx;

/// <summary>Reads paragraphs, runs and tables of any story part into nodes.</summary>
internal static class BodyReader
{
    public static void ReadDocument(Document doc, ReadContext ctx)
    {
        using var r = DocxReader.Open(ctx.Pkg.OpenRead(ctx.Part)!);
        DocxState.Of(doc).Roots[ctx.Part] = ctx.Root = DocxReader.Root(r, "document", ctx.Part);
        var headerCache = new Dictionary<string, HeaderFooter>(StringComparer.OrdinalIgnoreCase);
        bool sawBody = false;
        if (r.IsEmptyElement) throw new FileCorruptedException("The document part has no body.");
        r.Read();
        while (r.NodeType != XmlNodeType.EndElement && !r.EOF)
        {
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.LocalName == "body" && r.NamespaceURI == Ns.W)
            {
                sawBody = true;
                ReadBody(doc, r, ctx, headerCache);
            }
            else
            {
                // Background and other document-level elements are kept as they are.
                DocxState.Of(doc).BodyTail = PropElement.Read(r);
            }
        }
        if (!sawBody) throw new FileCorruptedException("The document part has no body.");
    }

    private static void ReadBody(Document doc, XmlReader r, ReadContext ctx, Dictionary<string, HeaderFooter> headers)
    {
        var body = new Body(doc);
        if (r.IsEmptyElement)
        {
            r.Read();
            FinishSection(doc, body, new PropBag(PropOrder.Section), ctx, headers);
            return;
        }
        int depth = r.Depth;
        r.Read();
        PropBag? finalSectPr = null;
        List<PropElement.Attr>? finalAttrs = null;
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of the body.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI == Ns.W && r.LocalName == "p")
            {
                var p = ReadParagraph(r, ctx, out var sectPr, out var sectAttrs);
                body.LinkLast(p);
                if (sectPr != null)
                {
                    FinishSection(doc, body, sectPr, ctx, headers).XAttrs = sectAttrs;
                    body = new Body(doc);
                }
            }
            else if (r.NamespaceURI == Ns.W && r.LocalName == "tbl") body.LinkLast(ReadTable(r, ctx));
            else if (r.NamespaceURI == Ns.W && r.LocalName is "sdt" or "customXml" && !r.IsEmptyElement) ReadBodyContainer(r, body, ctx);
            else if (r.NamespaceURI == Ns.W && r.LocalName == "sectPr")
            {
                var e = PropElement.Read(r);
                finalAttrs = e.Attrs;
                finalSectPr = new PropBag(PropOrder.Section, e.Children ?? new List<PropElement>());
            }
            else body.LinkLast(Opaque(r, ctx, OpaqueKind.Block));
        }
        r.Read();
        FinishSection(doc, body, finalSectPr ?? new PropBag(PropOrder.Section), ctx, headers).XAttrs = finalAttrs;
    }

    private static Section FinishSection(Document doc, Body body, PropBag sectPr, ReadContext ctx, Dictionary<string, HeaderFooter> headers)
    {
        var refs = sectPr.Items.Where(e => e.Ns == Ns.W && e.Local is "headerReference" or "footerReference").ToList();
        if (refs.Count > 0) sectPr.RemoveAll(refs.Contains);
        var section = new Section(doc, PropsCodec.Section.Decode(sectPr, doc.Cascade.SharedTable));
        doc.LinkLast(section);
        section.LinkLast(body);
        foreach (var e in refs)
        {
            var id = e.Get("id", Ns.R);
            if (id == null || !ctx.Rels.TryGetValue(id, out var rel) || rel.External) continue;
            var part = OpcPackage.Resolve(ctx.Part, rel.Target);
            var type = HeaderFooter.FromXml(e.Local == "headerReference", e.Get("type"));
            if (section.HeadersFooters[type] != null) continue;
            if (!headers.TryGetValue(part, out var proto))
            {
                proto = ReadHeaderFooter(doc, ctx, part, type);
                if (proto == null) continue;
                headers[part] = proto;
                section.LinkLast(proto);
                continue;
            }
            // One part shared by several sections: each section gets its own copy.
            var copy = new HeaderFooter(doc, type) { PartName = null };
            proto.CloneChildrenInto(copy, doc);
            section.LinkLast(copy);
        }
        return section;
    }

    private static HeaderFooter? ReadHeaderFooter(Document doc, ReadContext parent, string part, HeaderFooterType type)
    {
        var bytes = parent.Pkg.Get(part);
        if (bytes == null) return null;
        var ctx = new ReadContext(doc, parent.Pkg, part, parent.Notes);
        using var r = DocxReader.Open(bytes);
        bool header = type is HeaderFooterType.HeaderPrimary or HeaderFooterType.HeaderFirst or HeaderFooterType.HeaderEven;
        DocxState.Of(doc).Roots[part] = ctx.Root = DocxReader.Root(r, header ? "hdr" : "ftr", part);
        var hf = new HeaderFooter(doc, type) { PartName = part };
        ReadBlocks(r, hf, ctx);
        return hf;
    }

    /// <summary>Reads the block children of the element the reader stands on into the container.</summary>
    public static void ReadBlocks(XmlReader r, CompositeNode container, ReadContext ctx)
    {
        if (r.IsEmptyElement) { r.Read(); return; }
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of content.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            ReadBlock(r, container, ctx);
        }
        r.Read();
    }

    /// <summary>One block: a paragraph, a table, a container around blocks, or content kept as read.</summary>
    private static void ReadBlock(XmlReader r, CompositeNode container, ReadContext ctx)
    {
        if (r.NamespaceURI == Ns.W)
        {
            switch (r.LocalName)
            {
                case "p":
                    container.LinkLast(ReadParagraph(r, ctx, out _));
                    return;
                case "tbl":
                    container.LinkLast(ReadTable(r, ctx));
                    return;
                case "sdt":
                    if (r.IsEmptyElement) break;
                    ReadControl(r, ctx, Markup.MarkupLevel.Block, container.LinkLast, sdt => ReadBlock(r, sdt, ctx));
                    return;
                case "customXml":
                    if (r.IsEmptyElement) break;
                    ReadContainer(r, ctx, OpaqueKind.Block, container.LinkLast, () => ReadBlock(r, container, ctx));
                    return;
            }
        }
        container.LinkLast(Opaque(r, ctx, OpaqueKind.Block));
    }

    // A container in the body may end a section inside it; such a one is kept whole, so that
    // sections stay where they were.
    private static void ReadBodyContainer(XmlReader r, Body body, ReadContext ctx)
    {
        var xml = r.ReadOuterXml();
        if (xml.Contains("sectPr", StringComparison.Ordinal))
        {
            body.LinkLast(new OpaqueNode(ctx.Doc, OpaqueKind.Block, RawXml.DropRootDeclarations(xml, ctx.Root), null, VisibleText(xml)));
            return;
        }
        using var sub = DocxReader.Open(xml);
        sub.MoveToContent();
        ReadBlock(sub, body, ctx);
    }

    public static OpaqueNode Opaque(XmlReader r, ReadContext ctx, OpaqueKind kind, FormatProps? rPr = null)
    {
        // The text is taken while the fragment still declares everything it uses.
        var xml = r.ReadOuterXml();
        var text = VisibleText(xml);
        return new OpaqueNode(ctx.Doc, kind, RawXml.DropRootDeclarations(xml, ctx.Root), rPr, text);
    }

    // Inserted runs and content controls still show text; deleted text does not.
    public static string VisibleText(string xml)
    {
        if (!xml.Contains("<w:t", StringComparison.Ordinal) && !xml.Contains(":t>", StringComparison.Ordinal) && !xml.Contains(":t ", StringComparison.Ordinal)) return "";
        var sb = new StringBuilder();
        try
        {
            using var r = DocxReader.Open(xml);
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element || r.NamespaceURI != Ns.W) continue;
                if (r.LocalName == "t") sb.Append(r.ReadElementContentAsString());
                else if (r.LocalName == "p" && sb.Length > 0) sb.Append('\r');
                else if (r.LocalName == "tab") sb.Append('\t');
            }
        }
        catch (XmlException) { }
        return sb.ToString();
    }

    public static Paragraph ReadParagraph(XmlReader r, ReadContext ctx, out PropBag? sectPr) => ReadParagraph(r, ctx, out sectPr, out _);

    public static Paragraph ReadParagraph(XmlReader r, ReadContext ctx, out PropBag? sectPr, out List<PropElement.Attr>? sectAttrs)
    {
        sectPr = null;
        sectAttrs = null;
        var p = new Paragraph(ctx.Doc, new PropBag(PropOrder.Paragraph)) { XAttrs = PropElement.ReadAttrs(r) };
        if (r.IsEmptyElement) { r.Read(); return p; }
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a paragraph.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI == Ns.W && r.LocalName == "pPr")
            {
                var read = PropBag.Read(r, PropOrder.Paragraph);
                var sp = read.Find("sectPr");
                if (sp != null)
                {
                    read.Remove("sectPr");
                    sectPr = new PropBag(PropOrder.Section, sp.Children ?? new List<PropElement>());
                    sectAttrs = sp.Attrs;
                }
                var props = PropsCodec.Paragraph.Decode(read, ctx.Doc.Cascade.SharedTable);
                p.ParaAttrs = props.Attrs;
                p.PPr = props.Kept ?? new PropBag(PropOrder.Paragraph);
                continue;
            }
            ReadInline(r, p, ctx);
        }
        r.Read();
        return p;
    }

    /// <summary>Reads the children of a kept inline element (an insertion, say) as paragraph content.
    /// The fragment is parsed inside a root that declares what the part's root declared.</summary>
    public static List<Node> ReadChildrenOf(string xml, ReadContext ctx, Func<string, string>? rewrite = null)
    {
        var sb = new System.Text.StringBuilder("<root");
        foreach (var (prefix, uri) in ctx.Root?.Namespaces ?? new List<(string, string)>())
            if (prefix.Length > 0) sb.Append(" xmlns:").Append(prefix).Append("=\"").Append(System.Security.SecurityElement.Escape(uri)).Append('"');
        if (ctx.Root?.Namespaces.Exists(n => n.Prefix == "w") != true) sb.Append(" xmlns:w=\"").Append(Ns.W).Append('"');
        sb.Append('>').Append(rewrite != null ? rewrite(xml) : xml).Append("</root>");
        var holder = new Paragraph(ctx.Doc, new PropBag(PropOrder.Paragraph));
        using var r = DocxReader.Open(sb.ToString());
        r.MoveToContent();
        r.Read();
        r.MoveToContent();
        if (r.NodeType == XmlNodeType.Element && !r.IsEmptyElement)
        {
            int depth = r.Depth;
            r.Read();
            while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth) && !r.EOF)
            {
                if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
                ReadInline(r, holder, ctx);
            }
        }
        var nodes = new List<Node>();
        for (var n = holder.first; n != null;)
        {
            var next = n.next;
            holder.Unlink(n);
            nodes.Add(n);
            n = next;
        }
        return nodes;
    }

    /// <summary>One child of a paragraph (or of a link inside it).</summary>
    private static void ReadInline(XmlReader r, CompositeNode p, ReadContext ctx)
    {
        if (r.NamespaceURI != Ns.W)
        {
            p.LinkLast(Opaque(r, ctx, OpaqueKind.Inline));
            return;
        }
        switch (r.LocalName)
        {
            case "r":
                RunReader.ReadRun(r, p, ctx);
                return;
            case "ins":
            case "del":
            case "moveFrom":
            case "moveTo":
                if (r.IsEmptyElement) break;
                ReadTracked(r, p, ctx);
                return;
            case "sdt":
                if (r.IsEmptyElement) break;
                ReadControl(r, ctx, Markup.MarkupLevel.Inline, p.LinkLast, sdt => ReadInline(r, sdt, ctx));
                return;
            case "smartTag":
                if (r.IsEmptyElement) break;
                ReadSmartTag(r, p, ctx);
                return;
            case "customXml":
            case "dir":
            case "bdo":
                if (r.IsEmptyElement) break;
                ReadContainer(r, ctx, OpaqueKind.Inline, p.LinkLast, () => ReadInline(r, p, ctx));
                return;
            case "hyperlink":
                ReadHyperlink(r, p, ctx);
                return;
            case "fldSimple":
                ReadSimpleField(r, p, ctx);
                return;
            case "bookmarkStart":
            {
                var name = r.GetAttribute("name", Ns.W);
                var id = r.GetAttribute("id", Ns.W);
                if (string.IsNullOrEmpty(name) || id == null) break;
                ctx.BookmarkNames[id] = name;
                p.LinkLast(new BookmarkStart(ctx.Doc, name));
                r.Skip();
                return;
            }
            case "bookmarkEnd":
            {
                var id = r.GetAttribute("id", Ns.W);
                if (id == null || !ctx.BookmarkNames.TryGetValue(id, out var name)) break;
                p.LinkLast(new BookmarkEnd(ctx.Doc, name));
                r.Skip();
                return;
            }
            case "commentRangeStart":
            case "commentRangeEnd":
            {
                var id = Units.ParseInt(r.GetAttribute("id", Ns.W));
                if (id == null) break;
                p.LinkLast(r.LocalName == "commentRangeStart" ? new CommentRangeStart(ctx.Doc, id.Value) : new CommentRangeEnd(ctx.Doc, id.Value));
                r.Skip();
                return;
            }
        }
        p.LinkLast(Opaque(r, ctx, OpaqueKind.Inline));
    }

    /// <summary>Tracked inserted, deleted or moved content: ordinary nodes that share the change's
    /// element, so that each change can be listed, accepted and rejected, and written back as read.</summary>
    private static void ReadTracked(XmlReader r, CompositeNode p, ReadContext ctx)
    {
        var mark = new PropElement(r.LocalName) { Attrs = PropElement.ReadAttrs(r) };
        var before = p.last;
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a tracked change.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            ReadInline(r, p, ctx);
        }
        r.Read();
        // A change nested in this one keeps its own element.
        for (var n = before == null ? p.first : before.next; n != null; n = n.next) n.Rev ??= mark;
    }

    /// <summary>A content control: a node holding its content, with its properties kept as read.</summary>
    private static void ReadControl(XmlReader r, ReadContext ctx, Markup.MarkupLevel level, Action<Node> link, Action<Markup.StructuredDocumentTag> readChild)
    {
        var sdt = new Markup.StructuredDocumentTag(ctx.Doc, level, new PropElement("sdtPr")) { XAttrs = PropElement.ReadAttrs(r) };
        link(sdt);
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a content control.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI == Ns.W && r.LocalName == "sdtPr") sdt.Props = PropElement.Read(r);
            else if (r.NamespaceURI == Ns.W && r.LocalName == "sdtEndPr") sdt.EndProps = PropElement.Read(r);
            else if (r.NamespaceURI == Ns.W && r.LocalName == "sdtContent")
            {
                sdt.ContentAttrs = PropElement.ReadAttrs(r);
                if (r.IsEmptyElement) { r.Read(); continue; }
                int inner = r.Depth;
                r.Read();
                while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == inner))
                {
                    if (r.EOF) throw new XmlException("Unexpected end of a content control.");
                    if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
                    readChild(sdt);
                }
                r.Read();
            }
            else r.Skip();
        }
        r.Read();
    }

    private static void ReadSmartTag(XmlReader r, CompositeNode p, ReadContext ctx)
    {
        var tag = new Markup.SmartTag(ctx.Doc, PropElement.ReadAttrs(r));
        p.LinkLast(tag);
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a smart tag.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI == Ns.W && r.LocalName == "smartTagPr") tag.Props = PropElement.Read(r);
            else ReadInline(r, tag, ctx);
        }
        r.Read();
    }

    // Property elements of the containers read by ReadContainer; they stay with the start tag.
    private static bool IsContainerProps(XmlReader r) =>
        r.NamespaceURI == Ns.W && r.LocalName is "sdtPr" or "sdtEndPr" or "smartTagPr" or "customXmlPr";

    /// <summary>Reads a container the model does not represent (a content control, smart tag,
    /// custom XML element, direction override) as two kept markers around its content, which
    /// becomes ordinary nodes: its text is found, and the notes referenced in it are placed.</summary>
    private static void ReadContainer(XmlReader r, ReadContext ctx, OpaqueKind kind, Action<Node> link, Action readChild)
    {
        var open = new StringBuilder();
        var close = "</" + r.Name + ">";
        StartTag(r, open);
        int depth = r.Depth;
        r.Read();
        OpaqueNode? start = null;
        void Open()
        {
            if (start != null) return;
            start = new OpaqueNode(ctx.Doc, kind, open.ToString()) { Opens = true };
            link(start);
        }
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a content container.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (start == null && IsContainerProps(r))
                open.Append(RawXml.DropRootDeclarations(r.ReadOuterXml(), ctx.Root));
            else if (start == null && r.NamespaceURI == Ns.W && r.LocalName == "sdtContent")
            {
                if (r.IsEmptyElement) { r.Read(); continue; }
                StartTag(r, open);
                close = "</" + r.Name + ">" + close;
                Open();
                int inner = r.Depth;
                r.Read();
                while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == inner))
                {
                    if (r.EOF) throw new XmlException("Unexpected end of a content control.");
                    if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
                    readChild();
                }
                r.Read();
            }
            else
            {
                Open();
                readChild();
            }
        }
        r.Read();
        Open();
        // Declarations the part's root makes need not be repeated on the start tag.
        start!.Xml = RawXml.DropRootDeclarations(start.Xml, ctx.Root);
        var end = new OpaqueNode(ctx.Doc, kind, close) { Partner = start };
        start!.Partner = end;
        link(end);
    }

    private static void StartTag(XmlReader r, StringBuilder sb)
    {
        sb.Append('<').Append(r.Name);
        if (r.MoveToFirstAttribute())
        {
            do sb.Append(' ').Append(r.Name).Append("=\"").Append(System.Security.SecurityElement.Escape(r.Value)).Append('"');
            while (r.MoveToNextAttribute());
            r.MoveToElement();
        }
        sb.Append(r.IsEmptyElement ? "/>" : ">");
    }

    // A link element becomes the field a word processor would build for it, so both kinds look alike.
    private static void ReadHyperlink(XmlReader r, CompositeNode p, ReadContext ctx)
    {
        var relId = r.GetAttribute("id", Ns.R);
        var anchor = r.GetAttribute("anchor", Ns.W);
        var tip = r.GetAttribute("tooltip", Ns.W);
        string? code = null;
        if (relId != null && ctx.ExternalTarget(relId) is { } url)
            code = $"HYPERLINK \"{url}\"" + (anchor != null ? $" \\l \"{anchor}\"" : "");
        else if (anchor != null) code = $"HYPERLINK \\l \"{anchor}\"";
        if (code != null && !string.IsNullOrEmpty(tip)) code += $" \\o \"{tip.Replace("\"", "'")}\"";
        if (code == null || r.IsEmptyElement)
        {
            p.LinkLast(Opaque(r, ctx, OpaqueKind.Inline));
            return;
        }
        var wrapper = new PropElement("hyperlink") { Attrs = PropElement.ReadAttrs(r) };
        p.LinkLast(new FieldStart(ctx.Doc, FormatProps.None) { Wrapper = wrapper, WrapperCode = " " + code + " " });
        p.LinkLast(new Run(ctx.Doc, " " + code + " ", FormatProps.None));
        p.LinkLast(new FieldSeparator(ctx.Doc, FormatProps.None));
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a link.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            ReadInline(r, p, ctx);
        }
        r.Read();
        p.LinkLast(new FieldEnd(ctx.Doc, FormatProps.None));
    }

    private static void ReadSimpleField(XmlReader r, CompositeNode p, ReadContext ctx)
    {
        var instr = r.GetAttribute("instr", Ns.W) ?? "";
        var wrapper = new PropElement("fldSimple") { Attrs = PropElement.ReadAttrs(r) };
        p.LinkLast(new FieldStart(ctx.Doc, FormatProps.None) { Wrapper = wrapper, WrapperCode = " " + instr.Trim() + " " });
        p.LinkLast(new Run(ctx.Doc, " " + instr.Trim() + " ", FormatProps.None));
        p.LinkLast(new FieldSeparator(ctx.Doc, FormatProps.None));
        if (!r.IsEmptyElement)
        {
            int depth = r.Depth;
            r.Read();
            while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
            {
                if (r.EOF) throw new XmlException("Unexpected end of a field.");
                if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
                ReadInline(r, p, ctx);
            }
        }
        r.Read();
        p.LinkLast(new FieldEnd(ctx.Doc, FormatProps.None));
    }

    public static Table ReadTable(XmlReader r, ReadContext ctx)
    {
        if (r.Depth > PropElement.MaxDepth) throw new FileCorruptedException($"Tables nest more deeply than the document format allows.");
        var t = new Table(ctx.Doc, FormatProps.None);
        if (r.IsEmptyElement) { r.Read(); return t; }
        int depth = r.Depth;
        r.Read();
        var tblPr = (PropBag?)null;
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a table.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI == Ns.W && r.LocalName == "tblPr") tblPr = PropBag.Read(r, PropOrder.Table);
            else if (r.NamespaceURI == Ns.W && r.LocalName == "tblGrid")
            {
                var g = PropElement.Read(r);
                t.GridExtra = g.Attrs;
                foreach (var c in g.Children ?? new List<PropElement>())
                    if (c.Local == "gridCol") t.Grid.Add(Units.ParseInt(c.Get("w")) ?? 0);
            }
            else if (r.NamespaceURI == Ns.W && r.LocalName == "tr") t.LinkLast(ReadRow(r, ctx));
            else t.LinkLast(Opaque(r, ctx, OpaqueKind.Block));
        }
        r.Read();
        if (tblPr != null) t.Props = PropsCodec.Table.Decode(tblPr, ctx.Doc.Cascade.SharedTable);
        return t;
    }

    private static Row ReadRow(XmlReader r, ReadContext ctx)
    {
        PropBag? trPr = null, ex = null;
        var cells = new List<Node>();
        var attrs = PropElement.ReadAttrs(r);
        if (!r.IsEmptyElement)
        {
            int depth = r.Depth;
            r.Read();
            while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
            {
                if (r.EOF) throw new XmlException("Unexpected end of a table row.");
                if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
                if (r.NamespaceURI == Ns.W && r.LocalName == "trPr") trPr = PropBag.Read(r, PropOrder.TableRow);
                else if (r.NamespaceURI == Ns.W && r.LocalName == "tblPrEx") ex = PropBag.Read(r, PropOrder.Table);
                else if (r.NamespaceURI == Ns.W && r.LocalName == "tc")
                {
                    var cell = ReadCell(r, ctx, out var spanned);
                    cells.Add(cell);
                    for (int i = 0; i < spanned; i++)
                    {
                        var filler = new Cell(ctx.Doc, FormatProps.None) { HMerge = CellMerge.Previous };
                        filler.Attrs = AttrSet.Empty.With(FormatAttr.VerticalMerge, cell.Attrs.Get(FormatAttr.VerticalMerge));
                        filler.LinkLast(new Paragraph(ctx.Doc));
                        cells.Add(filler);
                    }
                }
                else cells.Add(Opaque(r, ctx, OpaqueKind.Block));
            }
        }
        r.Read();
        var row = new Row(ctx.Doc, PropsCodec.TableRow.Decode(trPr, ctx.Doc.Cascade.SharedTable)) { TblPrEx = ex, XAttrs = attrs };
        foreach (var c in cells) row.LinkLast(c);
        return row;
    }

    private static Cell ReadCell(XmlReader r, ReadContext ctx, out int spanned)
    {
        spanned = 0;
        var cell = new Cell(ctx.Doc, FormatProps.None);
        if (r.IsEmptyElement) { r.Read(); return cell; }
        int depth = r.Depth;
        r.Read();
        while (!(r.NodeType == XmlNodeType.EndElement && r.Depth == depth))
        {
            if (r.EOF) throw new XmlException("Unexpected end of a table cell.");
            if (r.NodeType != XmlNodeType.Element) { r.Read(); continue; }
            if (r.NamespaceURI == Ns.W && r.LocalName == "tcPr")
            {
                var bag = PropBag.Read(r, PropOrder.TableCell);
                var h = bag.Find("hMerge");
                if (h != null)
                {
                    cell.HMerge = h.Get("val") == "restart" ? CellMerge.First : CellMerge.Previous;
                    bag.Remove("hMerge");
                }
                cell.Props = PropsCodec.TableCell.Decode(bag, ctx.Doc.Cascade.SharedTable);
                // A cell spanning columns becomes the first of a merged group, as the builder makes them.
                var span = cell.Span;
                if (span > 1 && cell.HMerge == CellMerge.None && span <= 64)
                {
                    cell.Span = 1;
                    cell.HMerge = CellMerge.First;
                    spanned = span - 1;
                }
            }
            else ReadBlock(r, cell, ctx);
        }
        r.Read();
        return cell;
    }
}
