using System.Text;
using Quorix.Folio.Notes;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Text;

/// <summary>Saves the document as plain text: paragraphs, list labels, tables as tab-separated rows.</summary>
internal sealed class PlainTextWriter
{
    private readonly Document doc;
    private readonly TxtSaveOptions options;
    private readonly StringBuilder sb = new();
    private readonly ListLabeler labels;
    private readonly List<Footnote> notes = new();
    private readonly string br;

    private PlainTextWriter(Document doc, TxtSaveOptions options)
    {
        this.doc = doc;
        this.options = options;
        labels = new ListLabeler(doc);
        br = options.ParagraphBreak ?? ControlChar.CrLf;
    }

    public static void Save(Document doc, Stream output, TxtSaveOptions options)
    {
        var w = new PlainTextWriter(doc, options);
        w.WriteDocument();
        var bytes = new UTF8Encoding(false).GetBytes(w.sb.ToString());
        output.Write(bytes);
    }

    private void WriteDocument()
    {
        foreach (Section s in doc.Sections)
        {
            if (options.ExportHeadersFootersMode == TxtExportHeadersFootersMode.PrimaryOnly && s.HeadersFooters[HeaderFooterType.HeaderPrimary] is { } h)
                Blocks(h);
            if (s.Body != null) Blocks(s.Body);
            if (options.ExportHeadersFootersMode == TxtExportHeadersFootersMode.PrimaryOnly && s.HeadersFooters[HeaderFooterType.FooterPrimary] is { } f)
                Blocks(f);
        }
        if (options.ExportHeadersFootersMode == TxtExportHeadersFootersMode.AllAtEnd)
            foreach (Section s in doc.Sections)
                foreach (HeaderFooter hf in s.HeadersFooters) Blocks(hf);
        for (int i = 0; i < notes.Count; i++)
        {
            sb.Append('[').Append(i + 1).Append("] ");
            var inner = new StringBuilder();
            foreach (Paragraph p in notes[i].Paragraphs) inner.Append(ParagraphText(p)).Append(' ');
            sb.Append(inner.ToString().TrimEnd()).Append(br);
        }
    }

    private void Blocks(CompositeNode container)
    {
        for (var n = container.first; n != null; n = n.next)
        {
            if (n is Paragraph p) Paragraph(p);
            else if (n is Table t) Table(t);
            // Content controls and other kept blocks still show their text.
            else if (n is OpaqueNode { Kind: OpaqueKind.Block } o && o.VisibleText.Length > 0)
                foreach (var line in o.VisibleText.Split(ControlChar.ParagraphBreakChar)) sb.Append(line).Append(br);
        }
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

    private void Table(Table t)
    {
        foreach (Row r in t.Rows)
        {
            bool first = true;
            foreach (Cell c in r.Cells)
            {
                if (!first) sb.Append('\t');
                first = false;
                var cell = new StringBuilder();
                foreach (Paragraph p in c.Paragraphs)
                {
                    if (cell.Length > 0) cell.Append(' ');
                    cell.Append(ParagraphText(p));
                }
                sb.Append(cell);
            }
            sb.Append(br);
        }
    }
}
