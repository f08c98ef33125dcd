using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Text;

/// <summary>Saves the document as Markdown: headings from outline levels, emphasis, lists, pipe tables, links, pictures.</summary>
internal sealed class MarkdownWriter : StoryVisitor
{
    private readonly Document doc;
    private readonly MarkdownSaveOptions options;
    private readonly string? outputPath;
    private readonly StringBuilder sb = new(1 << 16);
    private readonly ListLabeler labels;
    private readonly List<Footnote> notes = new();
    private readonly Dictionary<byte[], string> images = new(ReferenceEqualityComparer.Instance);
    private readonly ResourceOutput? files;
    private bool lastWasListItem;
    private bool any;

    private MarkdownWriter(Document doc, MarkdownSaveOptions options, string? outputPath) : base(options.ExportHeadersFootersMode)
    {
        this.doc = doc;
        this.options = options;
        this.outputPath = outputPath;
        labels = new ListLabeler(doc);
        files = Files(doc, options, outputPath);
    }

    public static void Save(Document doc, Stream output, MarkdownSaveOptions options, string? path)
    {
        var w = new MarkdownWriter(doc, options, path);
        doc.Accept(w);
        var text = w.sb.ToString();
        if (options.ParagraphBreak != "\n") text = text.Replace("\n", options.ParagraphBreak ?? "\n");
        output.Write(new UTF8Encoding(false).GetBytes(text));
    }

    // Link addresses written as references, in order of first use; a repeated address keeps its number.
    private readonly Dictionary<string, int> references = new();

    private int Reference(string target)
    {
        if (!references.TryGetValue(target, out var n)) references[target] = n = references.Count + 1;
        return n;
    }

    public override VisitorAction VisitDocumentEnd(Document document)
    {
        for (int i = 0; i < notes.Count; i++)
        {
            Separate(false);
            sb.Append("[^").Append(i + 1).Append("]: ");
            bool first = true;
            foreach (Paragraph p in notes[i].Paragraphs)
            {
                if (!first) sb.Append("\n\n    ");
                sb.Append(first ? Inline(p, false).TrimStart() : Inline(p, false));
                first = false;
            }
            sb.Append('\n');
        }
        if (references.Count > 0)
        {
            Separate(false);
            foreach (var (target, n) in references) sb.Append('[').Append(n).Append("]: <").Append(target.Replace("<", "%3C").Replace(">", "%3E")).Append(">\n");
        }
        return VisitorAction.Continue;
    }

    private void Separate(bool listItem)
    {
        if (any && !(listItem && lastWasListItem)) sb.Append('\n');
        any = true;
        lastWasListItem = listItem;
    }

    // Consecutive paragraphs in a code style of one story become one fenced block.
    private readonly List<string> codeLines = new();

    private void FlushCode()
    {
        if (codeLines.Count == 0) return;
        CodeBlock(codeLines);
        codeLines.Clear();
    }

    // A paragraph's inline content, notes and text boxes included, is read as one piece.
    public override VisitorAction VisitParagraphStart(Paragraph paragraph)
    {
        if (IsCodeBlock(paragraph)) codeLines.Add(PlainText(paragraph));
        else
        {
            FlushCode();
            Paragraph(paragraph);
        }
        return VisitorAction.SkipThisNode;
    }

    public override VisitorAction VisitTableStart(Table table)
    {
        FlushCode();
        Table(table);
        return VisitorAction.SkipThisNode;
    }

    public override VisitorAction VisitBodyEnd(Body body)
    {
        FlushCode();
        return VisitorAction.Continue;
    }

    public override VisitorAction VisitHeaderFooterEnd(HeaderFooter headerFooter)
    {
        FlushCode();
        return VisitorAction.Continue;
    }

    // Blocks kept as read in a story still show their text.
    internal override VisitorAction VisitKept(OpaqueNode node)
    {
        if (node.ParentNode is not Story) return VisitorAction.Continue;
        FlushCode();
        if (node.Kind != OpaqueKind.Block || node.VisibleText.Length == 0) return VisitorAction.Continue;
        foreach (var line in node.VisibleText.Split(ControlChar.ParagraphBreakChar))
        {
            if (line.Trim().Length == 0) continue;
            Separate(false);
            sb.Append(EscapeLineStart(Escape(line, false).TrimStart())).Append('\n');
        }
        return VisitorAction.Continue;
    }

    private static string PlainText(Paragraph p)
    {
        var sb = new StringBuilder();
        foreach (var piece in InlineText.Walk(p))
            if (piece.Kind == InlineText.Kind.Text) sb.Append(piece.Text.Replace(ControlChar.LineBreakChar, '\n'));
        return sb.ToString();
    }

    private void CodeBlock(List<string> lines)
    {
        Separate(false);
        int longest = 2;
        foreach (var l in lines)
        {
            int run = 0;
            foreach (var ch in l) { run = ch == '`' ? run + 1 : 0; longest = Math.Max(longest, run); }
        }
        var fence = new string('`', longest + 1);
        sb.Append(fence).Append('\n');
        foreach (var l in lines) sb.Append(l).Append('\n');
        sb.Append(fence).Append('\n');
    }

    private void Paragraph(Paragraph p)
    {
        var label = labels.Next(p);
        var text = Inline(p, false);
        // An empty item still counts, as in the word processor, but Markdown has nothing to show for it.
        if (label != null && text.Trim().Length == 0) return;
        if (label is { } plain && options.ListExportMode == MarkdownListExportMode.PlainText)
        {
            // Labels stay as the reader saw them, escaped so Markdown does not make a list of them.
            text = EscapeLineStart(plain.Text + " " + text);
            label = null;
            Separate(false);
            sb.Append(text).Append('\n');
            return;
        }
        if (label is { } l)
        {
            Separate(true);
            sb.Append(' ', 4 * l.Level);
            if (l.IsBullet) sb.Append("- ");
            else sb.Append(l.Number).Append(". ");
            sb.Append(text).Append('\n');
            return;
        }
        if (text.Trim().Length == 0) return;
        Separate(false);
        int level = HeadingLevel(p);
        if (level > 0)
        {
            sb.Append('#', level).Append(' ').Append(text.Replace("\\\n", " ")).Append('\n');
            return;
        }
        if (ModelFacts.IsQuote(p))
        {
            sb.Append("> ").Append(text.Replace("\n", "\n> ")).Append('\n');
            return;
        }
        // Leading blanks would turn the paragraph into a code block.
        text = text.TrimStart();
        if (text.Length > 0 && (char.IsDigit(text[0]) || text[0] is '-' or '+' or '#' or '=' or '>'))
            text = EscapeLineStart(text);
        sb.Append(text).Append('\n');
    }

    private static int HeadingLevel(Paragraph p) => ModelFacts.HeadingLevel(p);

    private static string EscapeLineStart(string text)
    {
        if (text[0] is '-' or '+' or '#' or '=' or '>') return "\\" + text;
        int i = 0;
        while (i < text.Length && char.IsDigit(text[i])) i++;
        if (i < text.Length && (text[i] == '.' || text[i] == ')')) return text[..i] + "\\" + text[i..];
        return text;
    }

    private Emphasis EmphasisOf(Inline r) => ModelFacts.EmphasisOf(doc, r);

    private string Inline(Paragraph p, bool inTable)
    {
        var outp = new StringBuilder();
        var pending = new StringBuilder();
        var code = new StringBuilder();
        var current = new Emphasis();
        string? linkTarget = null;
        StringBuilder? linkText = null;

        void FlushCode()
        {
            if (code.Length == 0) return;
            // The fence is one backtick longer than any run of backticks inside.
            int longest = 0, run = 0;
            foreach (var ch in code.ToString()) { run = ch == '`' ? run + 1 : 0; longest = Math.Max(longest, run); }
            var fence = new string('`', longest + 1);
            var body = code.ToString();
            var pad = body.StartsWith('`') || body.EndsWith('`') ? " " : "";
            (linkText ?? outp).Append(fence).Append(pad).Append(body).Append(pad).Append(fence);
            code.Clear();
        }

        void FlushRun()
        {
            FlushCode();
            if (pending.Length == 0) return;
            var target = linkText ?? outp;
            var s = pending.ToString();
            pending.Clear();
            string marks = (current.Bold ? "**" : "") + (current.Italic ? "*" : "");
            string open = (current.Strike ? "~~" : "") + marks, close = Reverse(marks) + (current.Strike ? "~~" : "");
            if (open.Length == 0 || s.Trim().Length == 0) { target.Append(s); return; }
            // Markers must hug the text: spaces stay outside them.
            int lead = s.Length - s.TrimStart().Length, trail = s.Length - s.TrimEnd().Length;
            target.Append(s, 0, lead).Append(open).Append(s, lead, s.Length - lead - trail).Append(close).Append(s, s.Length - trail, trail);
        }

        foreach (var piece in InlineText.Walk(p))
        {
            switch (piece.Kind)
            {
                case InlineText.Kind.Text when piece.Node is Inline ci && IsCode(ci) && !inTable:
                    if (pending.Length > 0) FlushRun();
                    code.Append(piece.Text.Replace('\v', ' ').Replace('\t', ' '));
                    break;
                case InlineText.Kind.Text:
                {
                    FlushCode();
                    var e = piece.Node is Inline i ? EmphasisOf(i) : new Emphasis();
                    if (e != current) { FlushRun(); current = e; }
                    pending.Append(Escape(piece.Text, inTable));
                    break;
                }
                case InlineText.Kind.LinkStart:
                    FlushRun();
                    linkTarget = piece.IsBookmark ? "#" + piece.Target : piece.Target;
                    linkText = new StringBuilder();
                    break;
                case InlineText.Kind.LinkEnd:
                    FlushRun();
                    if (linkText != null)
                    {
                        outp.Append('[').Append(linkText).Append(']');
                        if (options.LinkExportMode == MarkdownLinkExportMode.Reference) outp.Append('[').Append(Reference(linkTarget ?? "")).Append(']');
                        else outp.Append('(').Append(UrlEscape(linkTarget ?? "")).Append(')');
                        linkText = null;
                    }
                    break;
                case InlineText.Kind.Note:
                    FlushRun();
                    notes.Add((Footnote)piece.Node);
                    (linkText ?? outp).Append("[^").Append(notes.Count).Append(']');
                    break;
                case InlineText.Kind.Image:
                    FlushRun();
                    (linkText ?? outp).Append("![").Append(Escape(piece.Text, inTable)).Append("](").Append(ImageRef((Shape)piece.Node)).Append(')');
                    break;
            }
        }
        FlushRun();
        if (linkText != null) outp.Append(linkText);
        return outp.ToString();
    }

    private bool IsCode(Inline i) => ModelFacts.IsCode(doc, i);

    private static bool IsCodeBlock(Paragraph p) => ModelFacts.IsCodeBlock(p);

    private static string Reverse(string marks)
    {
        var a = marks.ToCharArray();
        Array.Reverse(a);
        return new string(a);
    }

    private static string UrlEscape(string url) => url.Replace(" ", "%20").Replace("(", "%28").Replace(")", "%29");

    private static string Escape(string text, bool inTable)
    {
        StringBuilder? sb = null;
        for (int i = 0; i < text.Length; i++)
        {
            char c = text[i];
            string? rep = c switch
            {
                '\\' or '*' or '_' or '`' or '[' or ']' or '<' or '>' => "\\" + c,
                '|' when inTable => "\\|",
                ControlChar.LineBreakChar => inTable ? "<br>" : "\\\n",
                ControlChar.PageBreakChar or ControlChar.ColumnBreakChar or Docx.RunReader.SoftHyphen => "",
                Docx.RunReader.NoBreakHyphen => "-",
                '\t' => " ",
                _ => null,
            };
            if (rep == null) { sb?.Append(c); continue; }
            sb ??= new StringBuilder(text, 0, i, text.Length + 8);
            sb.Append(rep);
        }
        return sb?.ToString() ?? text;
    }

    private string ImageRef(Shape s)
    {
        var bytes = s.ImageData.ImageBytes!;
        if (images.TryGetValue(bytes, out var known)) return known;
        var info = ImageInfo.Detect(bytes);
        string reference;
        if (files == null)
            reference = $"data:{info.ContentType};base64,{Convert.ToBase64String(bytes)}";
        else
        {
            var stem = outputPath != null ? Path.GetFileNameWithoutExtension(outputPath) : "image";
            reference = files.Image(s, bytes, $"{stem}.{images.Count + 1:000}.{info.Extension}");
        }
        images[bytes] = reference;
        return reference;
    }

    /// <summary>Where pictures go as files: null when they are embedded as data URIs, which is also the
    /// case for a stream without an images folder, unless a callback may give them a place.</summary>
    private static ResourceOutput? Files(Document doc, MarkdownSaveOptions options, string? outputPath)
    {
        bool callbacks = ResourceOutput.HasCallbacks(options.ImageSavingCallback, options.ResourceSavingCallback);
        if (options.ExportImagesAsBase64 || (outputPath == null && string.IsNullOrEmpty(options.ImagesFolder) && !callbacks))
            return null;
        var folder = !string.IsNullOrEmpty(options.ImagesFolder) ? options.ImagesFolder
            : outputPath != null ? Path.GetDirectoryName(outputPath)! : null;
        Func<string, string> uriOf = folder == null || (outputPath != null && Path.GetFullPath(folder) == Path.GetDirectoryName(outputPath))
            ? name => name
            : name => Path.Combine(folder, name).Replace('\\', '/');
        return new ResourceOutput(doc, folder, uriOf, options.ImageSavingCallback, options.ResourceSavingCallback, "Markdown");
    }

    private void Table(Table t)
    {
        var rows = new List<List<string>>();
        foreach (Row r in t.Rows)
        {
            var cells = new List<string>();
            foreach (Cell c in r.Cells)
            {
                if (c.CellFormat.HorizontalMerge == CellMerge.Previous || c.CellFormat.VerticalMerge == CellMerge.Previous || c.Span > 1)
                    MergedCellsLost();
                if (c.CellFormat.HorizontalMerge == CellMerge.Previous) { cells.Add(""); continue; }
                var text = c.CellFormat.VerticalMerge == CellMerge.Previous ? "" : CellText(c);
                cells.Add(text);
                for (int k = 1; k < c.Span; k++) cells.Add("");
            }
            rows.Add(cells);
        }
        if (rows.Count == 0) return;
        int cols = rows.Max(r => r.Count);
        if (cols == 0) return;
        Separate(false);
        for (int i = 0; i < rows.Count; i++)
        {
            sb.Append('|');
            for (int c = 0; c < cols; c++) sb.Append(' ').Append(c < rows[i].Count ? rows[i][c] : "").Append(" |");
            sb.Append('\n');
            if (i == 0)
            {
                sb.Append('|');
                string sep = options.TableContentAlignment switch
                {
                    TableContentAlignment.Left => ":---",
                    TableContentAlignment.Center => ":---:",
                    TableContentAlignment.Right => "---:",
                    _ => "---",
                };
                for (int c = 0; c < cols; c++) sb.Append(' ').Append(sep).Append(" |");
                sb.Append('\n');
            }
        }
    }

    private bool mergedCellsReported;

    private void MergedCellsLost()
    {
        if (mergedCellsReported) return;
        mergedCellsReported = true;
        doc.Warnings.Add(WarningType.MajorFormattingLoss, WarningSource.Markdown,
            "Merged table cells are written as separate cells: Markdown tables cannot merge cells.");
    }

    private string CellText(Cell c)
    {
        var parts = new List<string>();
        CellParts(c, parts);
        return string.Join("<br>", parts);
    }

    private void CellParts(CompositeNode container, List<string> parts)
    {
        for (var n = container.first; n != null; n = n.next)
        {
            if (n is Markup.StructuredDocumentTag control)
            {
                CellParts(control, parts);
                continue;
            }
            if (n is Paragraph p)
            {
                var s = Inline(p, true).Trim();
                if (s.Length > 0) parts.Add(s);
            }
            else if (n is Table inner)
            {
                // Pipe tables cannot nest: the inner table's cells become text.
                foreach (Paragraph ip in inner.GetChildNodes(NodeType.Paragraph, true))
                {
                    var s = Inline(ip, true).Trim();
                    if (s.Length > 0) parts.Add(s);
                }
            }
        }
    }
}
