using System.Text;
using Quorix.Folio.Notes;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Text;

/// <summary>Saves the document as plain text: paragraphs, list labels, tables as tab-separated rows.
/// It walks the model as a visitor; the inline content of a paragraph is read as a reader sees it.</summary>
internal sealed class PlainTextWriter : StoryVisitor
{
    private readonly TxtSaveOptions options;
    private readonly StringBuilder sb = new();
    private readonly ListLabeler labels;
    private readonly List<Footnote> notes = new();
    private readonly string br;
    private bool inTable, rowHasCell, cellHasText;

    private PlainTextWriter(Document doc, TxtSaveOptions options) : base(options.ExportHeadersFootersMode)
    {
        this.options = options;
        labels = new ListLabeler(doc);
        br = options.ParagraphBreak ?? ControlChar.CrLf;
    }

    public static void Save(Document doc, Stream output, TxtSaveOptions options)
    {
        var w = new PlainTextWriter(doc, options);
        doc.Accept(w);
        // Encoded piece by piece: neither a copy of the whole text nor its bytes are made.
        using var writer = new StreamWriter(output, new UTF8Encoding(false), 1 << 16, leaveOpen: true);
        foreach (var chunk in w.sb.GetChunks()) writer.Write(chunk.Span);
    }

    public override VisitorAction VisitDocumentEnd(Document doc)
    {
        if (options.ExportHeadersFootersMode == TxtExportHeadersFootersMode.AllAtEnd)
            foreach (Section s in doc.Sections)
                foreach (HeaderFooter hf in s.HeadersFooters) Show(hf);
        for (int i = 0; i < notes.Count; i++)
        {
            sb.Append('[').Append(i + 1).Append("] ");
            var inner = new StringBuilder();
            foreach (Paragraph p in notes[i].Paragraphs) inner.Append(ParagraphText(p)).Append(' ');
            sb.Append(inner.ToString().TrimEnd()).Append(br);
        }
        return VisitorAction.Continue;
    }

    // A paragraph's inline content, notes and text boxes included, is read as one piece.
    public override VisitorAction VisitParagraphStart(Paragraph paragraph)
    {
        if (!inTable) Paragraph(paragraph);
        else
        {
            if (cellHasText) sb.Append(' ');
            sb.Append(ParagraphText(paragraph));
            cellHasText = true;
        }
        return VisitorAction.SkipThisNode;
    }

    // A table in a cell adds nothing to the cell's line.
    public override VisitorAction VisitTableStart(Table table)
    {
        if (inTable) return VisitorAction.SkipThisNode;
        inTable = true;
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitTableEnd(Table table)
    {
        inTable = false;
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitRowStart(Row row)
    {
        rowHasCell = false;
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitRowEnd(Row row)
    {
        sb.Append(br);
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitCellStart(Cell cell)
    {
        if (rowHasCell) sb.Append('\t');
        rowHasCell = true;
        cellHasText = false;
        return VisitorAction.Continue;
    }

    // Blocks kept as read in a story still show their text.
    internal override VisitorAction VisitKept(OpaqueNode node)
    {
        if (node is { Kind: OpaqueKind.Block, ParentNode: Story, VisibleText.Length: > 0 })
            foreach (var line in node.VisibleText.Split(ControlChar.ParagraphBreakChar)) sb.Append(line).Append(br);
        return VisitorAction.Continue;
    }

    private void Paragraph(Paragraph p)
    {
        var label = labels.Next(p);
        if (label is { } l)
        {
            sb.Append(' ', options.ListIndentationCount * l.Level);
            sb.Append(options.SimplifyListLabels ? (l.IsBullet ? "*" : l.Number + ".") : l.Text).Append(' ');
        }
        sb.Append(ParagraphText(p)).Append(br);
    }

    private string ParagraphText(Paragraph p)
    {
        var t = new StringBuilder();
        foreach (var piece in InlineText.Walk(p))
        {
            if (piece.Kind == InlineText.Kind.Text) Append(t, piece.Text);
            else if (piece.Kind == InlineText.Kind.Note)
            {
                notes.Add((Footnote)piece.Node);
                t.Append('[').Append(notes.Count).Append(']');
            }
        }
        return t.ToString();
    }

    private void Append(StringBuilder t, string text)
    {
        foreach (var c in text)
        {
            switch (c)
            {
                case ControlChar.LineBreakChar: t.Append(br); break;
                case ControlChar.PageBreakChar: t.Append(br); break;
                case ControlChar.ColumnBreakChar: break;
                case Docx.RunReader.NoBreakHyphen: t.Append('-'); break;
                case Docx.RunReader.SoftHyphen: break;
                default: t.Append(c); break;
            }
        }
    }
}
