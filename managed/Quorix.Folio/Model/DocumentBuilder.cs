using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formatting;
using Quorix.Folio.Lists;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>Writes content at a cursor: text, paragraphs, tables, links, bookmarks, pictures and fields.</summary>
public sealed partial class DocumentBuilder
{
    private readonly Document doc;
    private Paragraph paragraph;
    // Inline node the next insertion goes before; null means the end of the paragraph.
    private Node? cursor;
    private readonly FormatPropsBox runProps = new();
    private readonly Stack<TableState> tables = new();
    private readonly Cell cellProto;
    private readonly Row rowProto;

    private sealed class TableState
    {
        public Table Table = null!;
        public Row? Row;
        public Paragraph After = null!;
    }

    /// <summary>A builder on a new empty document, its cursor at the start.</summary>
    public DocumentBuilder() : this(new Document()) { }

    /// <summary>A builder on doc, its cursor at the start of the document.</summary>
    public DocumentBuilder(Document doc)
    {
        this.doc = doc ?? throw new ArgumentNullException(nameof(doc));
        cellProto = new Cell(doc);
        rowProto = new Row(doc);
        doc.EnsureMinimum();
        paragraph = doc.FirstSection!.Body!.FirstParagraph ?? doc.FirstSection.EnsureMinimum();
        cursor = paragraph.first;
    }

    /// <summary>The document this builder writes into.</summary>
    public Document Document => doc;

    /// <summary>The character formatting of the text written next.</summary>
    public Font Font => new Font(runProps, doc, () => doc.Cascade.Run(paragraph.ParagraphStyle, runProps.RunAttrs.String(FormatAttr.CharStyle)));

    /// <summary>The formatting of the paragraph at the cursor and of paragraphs started after it.</summary>
    public ParagraphFormat ParagraphFormat => paragraph.ParagraphFormat;

    /// <summary>The list numbering of the paragraph at the cursor and of paragraphs started after it.</summary>
    public ListFormat ListFormat => paragraph.ListFormat;

    /// <summary>The formatting of the table cells inserted next.</summary>
    public CellFormat CellFormat => cellProto.CellFormat;

    /// <summary>The formatting of the table rows inserted next.</summary>
    public RowFormat RowFormat => rowProto.RowFormat;

    /// <summary>The page size, margins and orientation of the section at the cursor.</summary>
    public PageSetup PageSetup => CurrentSection.PageSetup;

    /// <summary>Whether the text written next is bold.</summary>
    public bool Bold { get => Font.Bold; set => Font.Bold = value; }

    /// <summary>Whether the text written next is italic.</summary>
    public bool Italic { get => Font.Italic; set => Font.Italic = value; }

    /// <summary>How the text written next is underlined.</summary>
    public Underline Underline { get => Font.Underline; set => Font.Underline = value; }

    /// <summary>The paragraph the cursor is in.</summary>
    public Paragraph CurrentParagraph
    {
        get { Revalidate(); return paragraph; }
    }

    /// <summary>The node the cursor stands before; None at the end of a paragraph.</summary>
    public Node? CurrentNode
    {
        get { Revalidate(); return cursor; }
    }

    /// <summary>The section the cursor is in.</summary>
    public Section CurrentSection
    {
        get { Revalidate(); return paragraph.ParentSection ?? doc.LastSection!; }
    }

    /// <summary>The body, header or footer the cursor is in.</summary>
    public Story? CurrentStory
    {
        get { Revalidate(); return paragraph.ParentStory; }
    }

    /// <summary>Whether the cursor is before the first character of its paragraph.</summary>
    public bool IsAtStartOfParagraph => cursor == paragraph.first;

    /// <summary>Whether the cursor is after the last character of its paragraph.</summary>
    public bool IsAtEndOfParagraph => cursor == null;

    /// <summary>
    /// The document may have been edited behind the builder's back: a cursor node taken out of its
    /// paragraph leaves the cursor at the paragraph's end, and a paragraph taken out of the document
    /// (or a table the builder is filling) sends the builder to the end of the document.
    /// </summary>
    private void Revalidate()
    {
        if (!IsInDocument(paragraph))
        {
            tables.Clear();
            MoveToDocumentEnd();
            return;
        }
        if (cursor != null && !IsWithin(cursor, paragraph))
            cursor = null;
    }

    // The cursor may sit inside an inline holder (a content control) of its paragraph.
    private static bool IsWithin(Node node, Paragraph para)
    {
        for (var up = node.ParentNode; up != null; up = up.ParentNode)
            if (up == para) return true;
        return false;
    }

    private bool IsInDocument(Node node)
    {
        var top = node;
        while (top.ParentNode is { } up) top = up;
        return top == doc;
    }

    private Node Insert(Node n)
    {
        Revalidate();
        if (cursor == null) paragraph.AppendChild(n);
        // The cursor may stand inside an inline content control of the paragraph.
        else cursor.parent!.InsertBefore(n, cursor);
        return n;
    }

    private Run NewRun(string text) => new Run(doc, text, runProps.Props.Clone());

    /// <summary>Inserts text; line feeds and carriage returns start new paragraphs.</summary>
    public void Write(string text)
    {
        ArgumentNullException.ThrowIfNull(text);
        int start = 0;
        for (int i = 0; i < text.Length; i++)
        {
            char c = text[i];
            if (c != '\r' && c != '\n') continue;
            if (i > start) Insert(NewRun(text.Substring(start, i - start)));
            InsertParagraph();
            if (c == '\r' && i + 1 < text.Length && text[i + 1] == '\n') i++;
            start = i + 1;
        }
        if (start < text.Length) Insert(NewRun(start == 0 ? text : text.Substring(start)));
    }

    /// <summary>Writes text at the cursor, then ends the paragraph and starts a new one.</summary>
    public void Writeln(string text)
    {
        Write(text);
        InsertParagraph();
    }

    /// <summary>Ends the paragraph at the cursor and starts a new one.</summary>
    public void Writeln() => InsertParagraph();

    /// <summary>Ends the current paragraph at the cursor; returns the paragraph that was ended.</summary>
    public Paragraph InsertParagraph()
    {
        Revalidate();
        var ended = paragraph;
        var pPr = ended.PPr.Clone();
        pPr.Remove("sectPr");
        var attrs = ended.ParaAttrs;
        // A heading is usually followed by body text: the style's next style says which.
        var style = ended.ParagraphStyle;
        if (style != null && style.Bag.Val("next") is { } next && next != style.StyleId)
            attrs = attrs.With(FormatAttr.ParaStyle, next == "Normal" && doc.Styles.FindById("Normal")?.StyleIdentifier == StyleIdentifier.Normal ? null : next);
        var fresh = new Paragraph(doc, pPr, doc.Cascade.Shared(attrs));
        ended.ParentNode!.InsertAfter(fresh, ended);
        // What follows the cursor moves to the new paragraph; when the cursor stands inside content
        // controls, it moves into copies of them, so that each paragraph holds whole controls.
        var path = new List<CompositeNode>();
        for (var c = cursor?.parent; c != null && c != ended; c = c.parent) path.Add(c);
        var copies = new CompositeNode[path.Count];
        CompositeNode into = fresh;
        for (int i = path.Count - 1; i >= 0; i--)
        {
            var copy = (CompositeNode)path[i].CloneTo(doc, false);
            if (copy is Markup.StructuredDocumentTag control) control.Props.Children?.RemoveAll(e => e.Local == "id");
            into.LinkLast(copy);
            into = copies[i] = copy;
        }
        var n = cursor;
        for (int i = 0; i <= path.Count; i++)
        {
            var source = i < path.Count ? path[i] : ended;
            var target = i < path.Count ? copies[i] : fresh;
            while (n != null)
            {
                var nx = n.next;
                source.Unlink(n);
                target.LinkLast(n);
                n = nx;
            }
            if (i < path.Count) n = path[i].next;
        }
        paragraph = fresh;
        cursor = fresh.first;
        return ended;
    }

    /// <summary>Inserts a paragraph, line, page, column or section break at the cursor.</summary>
    public void InsertBreak(BreakType breakType)
    {
        switch (breakType)
        {
            case BreakType.ParagraphBreak: InsertParagraph(); break;
            case BreakType.LineBreak: Insert(NewRun(ControlChar.LineBreak)); break;
            case BreakType.PageBreak: Insert(NewRun(ControlChar.PageBreak)); break;
            case BreakType.ColumnBreak: Insert(NewRun(ControlChar.ColumnBreak)); break;
            case BreakType.SectionBreakContinuous: BreakSection(SectionStart.Continuous); break;
            case BreakType.SectionBreakNewColumn: BreakSection(SectionStart.NewColumn); break;
            case BreakType.SectionBreakNewPage: BreakSection(SectionStart.NewPage); break;
            case BreakType.SectionBreakEvenPage: BreakSection(SectionStart.EvenPage); break;
            case BreakType.SectionBreakOddPage: BreakSection(SectionStart.OddPage); break;
            default: throw new ArgumentOutOfRangeException(nameof(breakType));
        }
    }

    private void BreakSection(SectionStart start)
    {
        Revalidate();
        if (paragraph.ParentNode is not Body body)
            throw new InvalidOperationException("A section break can only be inserted in the main text.");
        InsertParagraph();
        var old = body.ParentSection!;
        var section = new Section(doc, old.Props.Clone());
        section.PageSetup.SectionStart = start;
        doc.InsertAfter(section, old);
        var newBody = new Body(doc);
        section.LinkLast(newBody);
        for (Node? n = paragraph; n != null;)
        {
            var nx = n.next;
            body.Unlink(n);
            newBody.LinkLast(n);
            n = nx;
        }
    }

    /// <summary>Starts a table at the cursor; insert_cell then adds its cells.</summary>
    public Table StartTable()
    {
        // Text already written before the cursor stays above the table.
        Revalidate();
        if (cursor != paragraph.first) InsertParagraph();
        var t = new Table(doc);
        paragraph.ParentNode!.InsertBefore(t, paragraph);
        tables.Push(new TableState { Table = t, After = paragraph });
        return t;
    }

    /// <summary>Adds a cell to the current row (starting a row if needed) and moves the cursor into it.</summary>
    public Cell InsertCell()
    {
        Revalidate();
        if (tables.Count == 0) throw new InvalidOperationException("Start a table before inserting cells.");
        var st = tables.Peek();
        if (st.Row == null)
        {
            st.Row = new Row(doc);
            st.Table.AppendChild(st.Row);
        }
        var cell = new Cell(doc);
        cell.CellFormat.CopyFrom(cellProto.CellFormat);
        var p = new Paragraph(doc);
        cell.LinkLast(p);
        st.Row.AppendChild(cell);
        paragraph = p;
        cursor = null;
        return cell;
    }

    /// <summary>Ends the current table row; the next insert_cell starts a new one.</summary>
    public Row EndRow()
    {
        if (tables.Count == 0 || tables.Peek().Row == null) throw new InvalidOperationException("There is no row to end.");
        var st = tables.Peek();
        var row = st.Row!;
        row.RowFormat.CopyFrom(rowProto.RowFormat);
        st.Row = null;
        return row;
    }

    /// <summary>Ends the table; the cursor moves to the paragraph after it.</summary>
    public Table EndTable()
    {
        if (tables.Count == 0) throw new InvalidOperationException("There is no table to end.");
        var st = tables.Peek();
        if (st.Row != null) EndRow();
        if (!st.Table.HasChildNodes) throw new InvalidOperationException("A table needs at least one row; insert a cell before ending it.");
        tables.Pop();
        paragraph = st.After;
        cursor = paragraph.first;
        return st.Table;
    }

    /// <summary>Marks the start of a bookmark with that name at the cursor.</summary>
    public BookmarkStart StartBookmark(string bookmarkName) => (BookmarkStart)Insert(new BookmarkStart(doc, bookmarkName));

    /// <summary>Marks the end of the bookmark with that name at the cursor.</summary>
    public BookmarkEnd EndBookmark(string bookmarkName) => (BookmarkEnd)Insert(new BookmarkEnd(doc, bookmarkName));

    /// <summary>A field with the given code; its result is left empty.</summary>
    public Field InsertField(string fieldCode) => InsertField(fieldCode, "");

    /// <summary>Inserts a field with that code, showing fieldValue as its result until the field is updated.</summary>
    public Field InsertField(string fieldCode, string fieldValue)
    {
        ArgumentException.ThrowIfNullOrEmpty(fieldCode);
        var start = (FieldStart)Insert(new FieldStart(doc, runProps.Props.Clone()));
        Insert(NewRun(" " + fieldCode.Trim() + " "));
        var sep = (FieldSeparator)Insert(new FieldSeparator(doc, runProps.Props.Clone()));
        if (!string.IsNullOrEmpty(fieldValue)) Insert(NewRun(fieldValue));
        var end = (FieldEnd)Insert(new FieldEnd(doc, runProps.Props.Clone()));
        return FieldKinds.Create(start, sep, end);
    }

    /// <summary>A link to a web address or, with isBookmark, to a bookmark of this document.</summary>
    public Field InsertHyperlink(string displayText, string urlOrBookmark, bool isBookmark)
    {
        ArgumentNullException.ThrowIfNull(displayText);
        ArgumentException.ThrowIfNullOrEmpty(urlOrBookmark);
        var quoted = urlOrBookmark.Replace("\"", "%22");
        var code = isBookmark ? $"HYPERLINK \\l \"{quoted}\"" : $"HYPERLINK \"{quoted}\"";
        var start = (FieldStart)Insert(new FieldStart(doc, runProps.Props.Clone()));
        Insert(NewRun(" " + code + " "));
        var sep = (FieldSeparator)Insert(new FieldSeparator(doc, runProps.Props.Clone()));
        var result = NewRun(displayText);
        result.RPr = result.RPr.WithCharStyle(doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Hyperlink).StyleId);
        Insert(result);
        var end = (FieldEnd)Insert(new FieldEnd(doc, runProps.Props.Clone()));
        return FieldKinds.Create(start, sep, end);
    }

    /// <summary>Inserts a footnote or endnote at the cursor holding that text; returns the note.</summary>
    public Footnote InsertFootnote(FootnoteType footnoteType, string footnoteText)
    {
        var note = new Footnote(doc, footnoteType);
        note.RPr = runProps.Props.Clone();
        note.RPr = note.RPr.WithCharStyle(doc.Styles.GetOrCreateBuiltIn(footnoteType == FootnoteType.Footnote
            ? StyleIdentifier.FootnoteReference : StyleIdentifier.EndnoteReference).StyleId);
        var p = new Paragraph(doc);
        p.StyleId = (doc.Styles.GetOrCreateBuiltIn(footnoteType == FootnoteType.Footnote
            ? StyleIdentifier.FootnoteText : StyleIdentifier.EndnoteText).StyleId);
        p.LinkLast(new Run(doc, footnoteText ?? ""));
        note.LinkLast(p);
        Insert(note);
        return note;
    }

    /// <summary>Inserts the picture of that file at the cursor, at its own size.</summary>
    public Shape InsertImage(string fileName) => InsertImage(File.ReadAllBytes(fileName));

    /// <summary>Inserts the picture read from stream at the cursor, at its own size.</summary>
    public Shape InsertImage(Stream stream)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        return InsertImage(ms.ToArray());
    }

    /// <summary>Inserts the picture in those bytes at the cursor, at its own size.</summary>
    public Shape InsertImage(byte[] imageBytes) => InsertImage(imageBytes, -1, -1);

    /// <summary>Inserts the picture of that file at the cursor, width by height points.</summary>
    public Shape InsertImage(string fileName, double width, double height) => InsertImage(File.ReadAllBytes(fileName), width, height);

    /// <summary>Inserts the picture read from stream at the cursor, width by height points.</summary>
    public Shape InsertImage(Stream stream, double width, double height)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        return InsertImage(ms.ToArray(), width, height);
    }

    /// <summary>Negative sizes mean the picture's own size at 96 dots per inch.</summary>
    public Shape InsertImage(byte[] imageBytes, double width, double height)
    {
        ArgumentNullException.ThrowIfNull(imageBytes);
        var info = ImageInfo.Detect(imageBytes);
        if (info.Type is ImageType.NoImage or ImageType.Unknown)
            throw new ArgumentException("The data is not an image in a known format.", nameof(imageBytes));
        var shape = new Shape(doc) { RPr = runProps.Props.Clone() };
        shape.ImageData.SetImage(imageBytes);
        double w = width >= 0 ? width : info.Width > 0 ? info.Width * 0.75 : 100;
        double h = height >= 0 ? height : info.Height > 0 ? info.Height * 0.75 : 100;
        shape.Width = w;
        shape.Height = h;
        Insert(shape);
        return shape;
    }

    /// <summary>Moves the cursor to the start of the document's first paragraph.</summary>
    public void MoveToDocumentStart()
    {
        doc.EnsureMinimum();
        MoveToParagraphNode(doc.FirstSection!.Body!.FirstParagraph ?? doc.FirstSection.EnsureMinimum(), true);
    }

    /// <summary>Moves the cursor to the end of the document's last paragraph.</summary>
    public void MoveToDocumentEnd()
    {
        doc.EnsureMinimum();
        MoveToParagraphNode(doc.LastSection!.Body!.LastParagraph ?? doc.LastSection.EnsureMinimum(), false);
    }

    /// <summary>Moves the cursor to the start of the body of the section at that index.</summary>
    public void MoveToSection(int sectionIndex)
    {
        var s = (Section?)doc.GetChild(NodeType.Section, sectionIndex, false) ?? throw new ArgumentOutOfRangeException(nameof(sectionIndex));
        MoveToParagraphNode(s.EnsureMinimum() is var last && s.Body!.FirstParagraph is { } f ? f : last, true);
    }

    /// <summary>Moves into a header or footer of the current section, creating it when missing.</summary>
    public void MoveToHeaderFooter(HeaderFooterType headerFooterType)
    {
        var section = CurrentSection;
        var hf = section.HeadersFooters[headerFooterType];
        if (hf == null)
        {
            hf = new HeaderFooter(doc, headerFooterType);
            var p = new Paragraph(doc);
            p.StyleId = doc.Styles.GetOrCreateBuiltIn(hf.IsHeader ? StyleIdentifier.Header : StyleIdentifier.Footer).StyleId;
            hf.LinkLast(p);
            section.AppendChild(hf);
            if (headerFooterType is HeaderFooterType.HeaderFirst or HeaderFooterType.FooterFirst)
                section.PageSetup.DifferentFirstPageHeaderFooter = true;
        }
        MoveToParagraphNode(hf.FirstParagraph ?? hf.EnsureMinimum(), true);
    }

    /// <summary>Moves the cursor just after the start of that bookmark; False when there is no such bookmark.</summary>
    public bool MoveToBookmark(string bookmarkName) => MoveToBookmark(bookmarkName, false, true);

    /// <summary>Moves the cursor to the start or end of that bookmark, inside or just outside it; False when there is none.</summary>
    public bool MoveToBookmark(string bookmarkName, bool isStart, bool isAfter)
    {
        var bm = doc.Range.Bookmarks[bookmarkName];
        if (bm == null) return false;
        Node? marker = isStart ? bm.BookmarkStart : bm.BookmarkEnd;
        if (marker?.ParentNode is not Paragraph p) return false;
        paragraph = p;
        cursor = isAfter ? marker.next : marker;
        return true;
    }

    /// <summary>Moves before an inline node, or to the end of a paragraph.</summary>
    public void MoveTo(Node node)
    {
        ArgumentNullException.ThrowIfNull(node);
        if (node.Document != doc) throw new ArgumentException("The node belongs to another document.", nameof(node));
        switch (node)
        {
            case Paragraph p: MoveToParagraphNode(p, false); break;
            case Story or Cell or Comment or Footnote:
                var c = (CompositeNode)node;
                MoveToParagraphNode((Paragraph?)c.GetChild(NodeType.Paragraph, -1, false) ?? (Paragraph)c.AppendChild(new Paragraph(doc)), false);
                break;
            default:
                var holder = node.ParentNode;
                while (holder != null && Paragraph.IsInlineContainer(holder)) holder = holder.ParentNode;
                if (holder is not Paragraph parentPara) throw new ArgumentException("The builder can only move to paragraphs and nodes inside them.", nameof(node));
                paragraph = parentPara;
                cursor = node;
                break;
        }
    }

    /// <summary>Character index -1 means the end of the paragraph.</summary>
    public void MoveToParagraph(int paragraphIndex, int characterIndex)
    {
        var story = CurrentStory ?? doc.FirstSection!.Body!;
        var p = (Paragraph?)story.GetChild(NodeType.Paragraph, paragraphIndex, true) ?? throw new ArgumentOutOfRangeException(nameof(paragraphIndex));
        MoveToCharacter(p, characterIndex);
    }

    /// <summary>Moves the cursor into a table cell, at a character offset into it (-1: the end).</summary>
    public void MoveToCell(int tableIndex, int rowIndex, int columnIndex, int characterIndex)
    {
        var story = CurrentStory ?? doc.FirstSection!.Body!;
        var t = (Table?)story.GetChild(NodeType.Table, tableIndex, true) ?? throw new ArgumentOutOfRangeException(nameof(tableIndex));
        var r = (Row?)t.GetChild(NodeType.Row, rowIndex, false) ?? throw new ArgumentOutOfRangeException(nameof(rowIndex));
        var c = (Cell?)r.GetChild(NodeType.Cell, columnIndex, false) ?? throw new ArgumentOutOfRangeException(nameof(columnIndex));
        MoveToCharacter(c.FirstParagraph ?? c.EnsureMinimum(), characterIndex);
    }

    private void MoveToCharacter(Paragraph p, int characterIndex)
    {
        if (characterIndex == -1) { MoveToParagraphNode(p, false); return; }
        if (characterIndex < 0) throw new ArgumentOutOfRangeException(nameof(characterIndex));
        paragraph = p;
        int pos = 0;
        for (var n = p.first; n != null; n = n.next)
        {
            int len = n is Run r ? r.Text.Length : n is SpecialChar ? 1 : 0;
            if (characterIndex == pos) { cursor = n; return; }
            if (characterIndex < pos + len && n is Run run)
            {
                // Split the run so the cursor can sit between its halves.
                var tail = new Run(doc, run.Text.Substring(characterIndex - pos), run.RPr.Clone());
                run.Text = run.Text.Substring(0, characterIndex - pos);
                p.InsertAfter(tail, run);
                cursor = tail;
                return;
            }
            pos += len;
        }
        if (characterIndex > pos) throw new ArgumentOutOfRangeException(nameof(characterIndex));
        cursor = null;
    }

    private void MoveToParagraphNode(Paragraph p, bool atStart)
    {
        paragraph = p;
        cursor = atStart ? p.first : null;
    }
}
