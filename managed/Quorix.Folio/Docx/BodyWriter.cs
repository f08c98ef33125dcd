using System.Globalization;
using System.Text;
using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formatting;
using Quorix.Folio.Markup;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Docx;

/// <summary>Writes paragraphs, runs and tables of any story.</summary>
internal static partial class BodyWriter
{
    /// <returns>Whether the last block written was a paragraph.</returns>
    public static bool WriteBlocks(XmlWriter w, CompositeNode container, PartWriter pw, Action<XmlWriter>? firstParagraphPrefix = null)
    {
        var blocks = new BlockWriter(w, pw, firstParagraphPrefix);
        for (var n = container.first; n != null; n = n.next) n.AcceptCore(blocks);
        blocks.Kept.CloseAll(w);
        // Cells, notes and comments must end with a paragraph to be valid; bodies, headers and
        // footers may end with a table or content control, and an added paragraph would change the layout.
        if (!blocks.LastWasParagraph && container is not StructuredDocumentTag && (container is not Story || container.first == null))
        {
            w.WriteStartElement("p", Ns.W);
            blocks.Prefix?.Invoke(w);
            w.WriteEndElement();
            return true;
        }
        return blocks.LastWasParagraph;
    }

    /// <summary>A content control around its content; returns whether its last block was a paragraph.</summary>
    public static bool WriteControl(XmlWriter w, StructuredDocumentTag sdt, PartWriter pw, Action<XmlWriter>? firstParagraphPrefix, KeptContainers? outer)
    {
        w.WriteStartElement("sdt", Ns.W);
        PropElement.WriteAttrs(w, sdt.XAttrs);
        sdt.Props.Write(w);
        sdt.EndProps?.Write(w);
        w.WriteStartElement("sdtContent", Ns.W);
        PropElement.WriteAttrs(w, sdt.ContentAttrs);
        bool last = false;
        if (sdt.Level == MarkupLevel.Inline) WriteInlines(w, sdt, pw, outer);
        else last = WriteBlocks(w, sdt, pw, firstParagraphPrefix);
        w.WriteEndElement();
        w.WriteEndElement();
        return last;
    }

    public static void WriteParagraph(XmlWriter w, Paragraph p, PartWriter pw, Action<XmlWriter>? sectPr, Action<XmlWriter>? prefix = null)
    {
        w.WriteStartElement("p", Ns.W);
        PropElement.WriteAttrs(w, p.XAttrs);
        if (p.PPr.Count > 0 || !p.ParaAttrs.IsEmpty || sectPr != null)
        {
            w.WriteStartElement("pPr", Ns.W);
            // Section properties sit before the paragraph-change record at the end.
            PropsCodec.Paragraph.WriteItems(w, pw.State.ParagraphElements(p.ParaAttrs), p.PPr, sectPr != null ? ("pPrChange", sectPr) : null);
            w.WriteEndElement();
        }
        prefix?.Invoke(w);
        WriteInlines(w, p, pw, null);
        w.WriteEndElement();
    }

    private static void WriteSmartTag(XmlWriter w, SmartTag tag, PartWriter pw, KeptContainers? outer)
    {
        w.WriteStartElement("smartTag", Ns.W);
        PropElement.WriteAttrs(w, tag.XAttrs);
        tag.Props?.Write(w);
        WriteInlines(w, tag, pw, outer);
        w.WriteEndElement();
    }

    // The inline content of a paragraph or of a content control or smart tag in it.
    private static void WriteInlines(XmlWriter w, CompositeNode container, PartWriter pw, KeptContainers? outer)
    {
        var kept = new KeptContainers(outer);
        var iw = InlinesOf(w, pw);
        for (var n = container.first; n != null; n = n.next)
        {
            kept.Track(w, n.Rev);
            // Set again for each node: a nested container's content changed it meanwhile.
            iw.Kept = kept;
            n.AcceptCore(iw);
            if (iw.ResumeAfter is { } end)
            {
                iw.ResumeAfter = null;
                n = end;
            }
        }
        kept.CloseAll(w);
    }

    private static InlineWriter InlinesOf(XmlWriter w, PartWriter pw)
    {
        if (pw.Inlines is not InlineWriter iw || iw.Writer != w) pw.Inlines = iw = new InlineWriter(w, pw);
        return iw;
    }

    // A node inside a field written in its wrapped form: no kept containers open around it.
    private static void WriteInline(XmlWriter w, Node n, PartWriter pw)
    {
        var iw = InlinesOf(w, pw);
        iw.Kept = null;
        n.AcceptCore(iw);
    }

    /// <summary>Writes a field read from a link or simple-field element in that form again, if it
    /// is still whole: same code, separator and end in this paragraph, nothing nested. Returns
    /// the end marker, or null when the field has to be written as a field.</summary>
    private static Node? TryWriteWrapped(XmlWriter w, FieldStart fs, PartWriter pw)
    {
        if (fs.next is not Run code || code.Text != fs.WrapperCode || code.next is not FieldSeparator sep) return null;
        Node? end = sep.next;
        while (end != null && end is not FieldEnd)
        {
            if (end is FieldStart || end is FieldSeparator) return null;
            end = end.next;
        }
        if (end == null || !KeptContainers.Balanced(sep.next, end) || !OneChange(fs, end)) return null;
        var wrapper = fs.Wrapper!;
        if (wrapper.Get("id", Ns.R) is { } relId && !pw.Rels.Has(relId)) return null;
        w.WriteStartElement(wrapper.Local, Ns.W);
        PropElement.WriteAttrs(w, wrapper.Attrs);
        for (var n = sep.next; n != end; n = n!.next) WriteInline(w, n!, pw);
        w.WriteEndElement();
        return end;
    }

    // A link written in its own element sits inside one tracked change or none.
    private static bool OneChange(Node first, Node end)
    {
        for (var n = first; n != end; n = n!.next)
            if (!ReferenceEquals(n!.Rev, first.Rev)) return false;
        return ReferenceEquals(end.Rev, first.Rev);
    }

    private static int NextFree(HashSet<int> used, HashSet<int> reserved)
    {
        int i = 0;
        while (used.Contains(i) || reserved.Contains(i)) i++;
        return i;
    }

    private static void StartRun(XmlWriter w, PartWriter pw, FormatProps? rPr)
    {
        w.WriteStartElement("r", Ns.W);
        if (rPr is { } props) WriteRunProps(w, pw, props);
    }

    private static void WriteRunProps(XmlWriter w, PartWriter pw, FormatProps props) =>
        PropsCodec.Run.Write(w, pw.State.RunElements(props.Attrs), props.Kept);

    private static void WriteFieldChar(XmlWriter w, PartWriter pw, FormatProps rPr, string type)
    {
        StartRun(w, pw, rPr);
        w.WriteStartElement("fldChar", Ns.W);
        w.WriteAttributeString("fldCharType", Ns.W, type);
        w.WriteEndElement();
        w.WriteEndElement();
    }

    public static void WriteRun(XmlWriter w, PartWriter pw, FormatProps rPr, string text, bool code, List<PropElement.Attr>? attrs = null, bool deleted = false)
    {
        w.WriteStartElement("r", Ns.W);
        PropElement.WriteAttrs(w, attrs);
        WriteRunProps(w, pw, rPr);
        WriteText(w, text, code, deleted);
        w.WriteEndElement();
    }

    /// <summary>Run text with tabs, breaks and hyphens turned back into their elements.</summary>
    private static void WriteText(XmlWriter w, string text, bool code, bool deleted = false)
    {
        int start = 0;
        for (int i = 0; i < text.Length; i++)
        {
            char c = text[i];
            if (c >= 0x20 && !char.IsSurrogate(c) && c != '\uFFFE' && c != '\uFFFF') continue;
            if (char.IsSurrogate(c) && char.IsHighSurrogate(c) && i + 1 < text.Length && char.IsLowSurrogate(text[i + 1])) { i++; continue; }
            Chunk(w, text, start, i, code, deleted);
            start = i + 1;
            switch (c)
            {
                case '\t': Empty(w, "tab"); break;
                case ControlChar.LineBreakChar:
                case '\n':
                case '\r':
                    Empty(w, "br");
                    break;
                case ControlChar.PageBreakChar: Break(w, "page"); break;
                case ControlChar.ColumnBreakChar: Break(w, "column"); break;
                case RunReader.NoBreakHyphen: Empty(w, "noBreakHyphen"); break;
                case RunReader.SoftHyphen: Empty(w, "softHyphen"); break;
                // Other control characters and broken surrogates cannot be stored in XML: dropped.
            }
        }
        Chunk(w, text, start, text.Length, code, deleted);
    }

    private static void Chunk(XmlWriter w, string text, int from, int to, bool code, bool deleted)
    {
        if (to <= from) return;
        var s = from == 0 && to == text.Length ? text : text.Substring(from, to - from);
        w.WriteStartElement(deleted ? (code ? "delInstrText" : "delText") : code ? "instrText" : "t", Ns.W);
        if (s[0] == ' ' || s[^1] == ' ' || s.Contains("  ", StringComparison.Ordinal))
            w.WriteAttributeString("xml", "space", Ns.Xml, "preserve");
        w.WriteString(s);
        w.WriteEndElement();
    }

    private static void Empty(XmlWriter w, string local)
    {
        w.WriteStartElement(local, Ns.W);
        w.WriteEndElement();
    }

    private static void Break(XmlWriter w, string type)
    {
        w.WriteStartElement("br", Ns.W);
        w.WriteAttributeString("type", Ns.W, type);
        w.WriteEndElement();
    }

    /// <summary>The table's start: its properties and column grid.</summary>
    private static void StartTable(XmlWriter w, Table t, PartWriter pw)
    {
        w.WriteStartElement("tbl", Ns.W);
        // Readers expect a width; a table without one fits its content.
        var attrs = t.Attrs.HasGroup(FormatAttr.TableWidth) ? t.Attrs : t.Attrs.With(FormatAttr.TableWidth, 0).With(FormatAttr.TableWidthType, "auto");
        PropsCodec.Table.Write(w, pw.State.Elements(PropsCodec.Table, attrs), t.Props.Kept, always: true);
        // The grid read with the table stays as it was unless the rows now need more columns:
        // rows may span columns or leave some out, and the widths are the author's.
        int cols = Math.Max(1, t.GridColumns());
        var grid = t.Grid.Count >= cols ? t.Grid : t.Grid.Count > 0 ? Extended(t.Grid, cols) : EvenGrid(t, cols);
        w.WriteStartElement("tblGrid", Ns.W);
        foreach (var g in grid)
        {
            w.WriteStartElement("gridCol", Ns.W);
            w.WriteAttributeString("w", Ns.W, Units.Str(g));
            w.WriteEndElement();
        }
        w.WriteEndElement();
    }

    private static List<int> Extended(List<int> grid, int cols)
    {
        var wider = new List<int>(grid);
        while (wider.Count < cols) wider.Add(grid[^1]);
        return wider;
    }

    private static List<int> EvenGrid(Table t, int cols)
    {
        var section = t.GetAncestor(NodeType.Section) as Section;
        var ps = section?.PageSetup;
        double textWidth = ps != null ? ps.PageWidth - ps.LeftMargin - ps.RightMargin : 468;
        // Take the widths of a row whose cells all have widths and span one column each.
        for (var n = t.first; n != null; n = n.next)
        {
            if (n is not Row r || r.GridWidth() != cols) continue;
            var widths = new List<int>();
            for (var c = r.first; c != null; c = c.next)
                if (c is Cell cell && cell.Span == 1 && cell.HMerge == CellMerge.None && cell.CellFormat.Width > 0)
                    widths.Add((int)Math.Round(cell.CellFormat.Width * 20));
            if (widths.Count == cols) return widths;
        }
        int each = (int)Math.Max(1, Math.Round(Math.Max(72, textWidth) * 20 / cols));
        return Enumerable.Repeat(each, cols).ToList();
    }

    private static void StartRow(XmlWriter w, Row row, PartWriter pw)
    {
        w.WriteStartElement("tr", Ns.W);
        PropElement.WriteAttrs(w, row.XAttrs);
        row.TblPrEx?.Write(w, "tblPrEx");
        PropsCodec.TableRow.Write(w, pw.State.Elements(PropsCodec.TableRow, row.Attrs), row.Props.Kept);
    }

    /// <summary>A cell, or a horizontally merged group written as one cell spanning the group's columns.</summary>
    private static void WriteCell(XmlWriter w, Cell cell, PartWriter pw)
    {
        int span = cell.Span;
        if (cell.HMerge == CellMerge.First)
            for (var n = cell.next; n is Cell c2 && c2.HMerge == CellMerge.Previous; n = n.next) span += c2.Span;
        w.WriteStartElement("tc", Ns.W);
        var attrs = span != cell.Span ? cell.Attrs.With(FormatAttr.GridSpan, span) : cell.Attrs;
        PropsCodec.TableCell.Write(w, pw.State.Elements(PropsCodec.TableCell, attrs), cell.Props.Kept);
        WriteBlocks(w, cell, pw);
        w.WriteEndElement();
    }

    /// <summary>A row left without cells still needs one to be valid.</summary>
    private static void EmptyCell(XmlWriter w)
    {
        w.WriteStartElement("tc", Ns.W);
        Empty(w, "p");
        w.WriteEndElement();
    }
}
