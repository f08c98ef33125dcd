using System.Buffers;
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
    // Written as the visit goes: a document's text is never held whole.
    private readonly TextWriter output;
    private readonly ListLabeler labels;
    private readonly List<Footnote> notes = new();
    private readonly string br;
    private bool inTable, rowHasCell, cellHasText;

    private PlainTextWriter(Document doc, TxtSaveOptions options, TextWriter output) : base(options.ExportHeadersFootersMode)
    {
        this.options = options;
        this.output = output;
        labels = new ListLabeler(doc);
        br = options.ParagraphBreak ?? ControlChar.CrLf;
    }

    public static void Save(Document doc, Stream output, TxtSaveOptions options)
    {
        using var writer = new StreamWriter(output, new UTF8Encoding(false), 1 << 16, leaveOpen: true);
        doc.Accept(new PlainTextWriter(doc, options, writer));
    }

    public override VisitorAction VisitDocumentEnd(Document doc)
    {
        if (options.ExportHeadersFootersMode == TxtExportHeadersFootersMode.AllAtEnd)
            foreach (Section s in doc.Sections)
                foreach (HeaderFooter hf in s.HeadersFooters) Show(hf);
        for (int i = 0; i < notes.Count; i++)
        {
            output.Write('[');
            output.Write(i + 1);
            output.Write("] ");
            var inner = new StringWriter();
            foreach (Paragraph p in notes[i].Paragraphs)
            {
                WriteParagraphText(inner, p);
                inner.Write(' ');
            }
            output.Write(inner.ToString().TrimEnd());
            output.Write(br);
        }
        return VisitorAction.Continue;
    }

    // A paragraph's inline content, notes and text boxes included, is read as one piece.
    public override VisitorAction VisitParagraphStart(Paragraph paragraph)
    {
        if (!inTable) Paragraph(paragraph);
        else
        {
            if (cellHasText) output.Write(' ');
            WriteParagraphText(output, paragraph);
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
        output.Write(br);
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitCellStart(Cell cell)
    {
        if (rowHasCell) output.Write('\t');
        rowHasCell = true;
        cellHasText = false;
        return VisitorAction.Continue;
    }

    // Blocks kept as read in a story still show their text.
    internal override VisitorAction VisitKept(OpaqueNode node)
    {
        if (node is { Kind: OpaqueKind.Block, ParentNode: Story, VisibleText.Length: > 0 })
            foreach (var line in node.VisibleText.Split(ControlChar.ParagraphBreakChar))
            {
                output.Write(line);
                output.Write(br);
            }
        return VisitorAction.Continue;
    }

    private void Paragraph(Paragraph p)
    {
        var label = labels.Next(p);
        if (label is { } l)
        {
            output.Write(new string(' ', options.ListIndentationCount * l.Level));
            output.Write(options.SimplifyListLabels ? (l.IsBullet ? "*" : l.Number + ".") : l.Text);
            output.Write(' ');
        }
        WriteParagraphText(output, p);
        output.Write(br);
    }

    private void WriteParagraphText(TextWriter t, Paragraph p)
    {
        foreach (var piece in InlineText.Walk(p))
        {
            if (piece.Kind == InlineText.Kind.Text) Write(t, piece.Text);
            else if (piece.Kind == InlineText.Kind.Note)
            {
                notes.Add((Footnote)piece.Node);
                t.Write('[');
                t.Write(notes.Count);
                t.Write(']');
            }
        }
    }

    private static readonly SearchValues<char> Marks = SearchValues.Create(
        [ControlChar.LineBreakChar, ControlChar.PageBreakChar, ControlChar.ColumnBreakChar, Docx.RunReader.NoBreakHyphen, Docx.RunReader.SoftHyphen]);

    // The text between the characters that stand for breaks and hyphens is written as it is.
    private void Write(TextWriter t, string text)
    {
        var rest = text.AsSpan();
        for (int at; (at = rest.IndexOfAny(Marks)) >= 0; rest = rest[(at + 1)..])
        {
            t.Write(rest[..at]);
            switch (rest[at])
            {
                case ControlChar.LineBreakChar or ControlChar.PageBreakChar: t.Write(br); break;
                case Docx.RunReader.NoBreakHyphen: t.Write('-'); break;
            }
        }
        t.Write(rest);
    }
}
