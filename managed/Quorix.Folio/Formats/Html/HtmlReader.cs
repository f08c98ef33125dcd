using System.Text;
using AngleSharp.Dom;
using AngleSharp.Html.Parser;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Loading;
using Quorix.Folio.Notes;
using List = Quorix.Folio.Lists.List;

namespace Quorix.Folio.Formats.Html;

/// <summary>HTML and XHTML: AngleSharp builds the element tree as a browser would; this class walks it,
/// computing the formatting a word processor keeps from elements and CSS.</summary>
internal sealed class HtmlReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.Html;

    public void Read(Stream input, Document document, LoadOptions options)
    {
        using var ms = new MemoryStream();
        input.CopyTo(ms);
        var text = Decode(ms.ToArray(), options.Encoding);
        Load(text, document, options, new ResourceResolver(options, document, WarningSource.Html));
    }

    internal static void Load(string html, Document document, LoadOptions options, ResourceResolver resources)
    {
        var b = new FlowBuilder(document);
        new Walker(b, resources, options as HtmlLoadOptions ?? new HtmlLoadOptions()).Run(new HtmlParser().ParseDocument(html));
        b.Finish();
    }

    /// <summary>Blocks of markup inside another format (Markdown's HTML blocks), placed where the builder stands.</summary>
    internal static void Fragment(string html, FlowBuilder b, ResourceResolver resources) =>
        new Walker(b, resources, new HtmlLoadOptions()).Run(new HtmlParser().ParseDocument("<html><body>" + html + "</body></html>"));

    /// <summary>The page's characters: a byte order mark, then the declared charset, then detection.</summary>
    internal static string Decode(byte[] bytes, Encoding? given)
    {
        if (given == null && !(bytes.Length >= 2 && (bytes[0] == 0xEF || bytes[0] == 0xFF || bytes[0] == 0xFE)))
        {
            var head = Encoding.Latin1.GetString(bytes, 0, Math.Min(bytes.Length, 2048));
            var m = System.Text.RegularExpressions.Regex.Match(head, "(?:charset|encoding)\\s*=\\s*[\"']?([A-Za-z0-9_:.-]+)", System.Text.RegularExpressions.RegexOptions.IgnoreCase);
            if (m.Success)
            {
                try { given = Encoding.GetEncoding(m.Groups[1].Value); }
                catch (ArgumentException) { }
            }
        }
        return TextDecoding.Decode(bytes, given);
    }

    private sealed class Walker
    {
        private static readonly HashSet<string> Skipped = new(StringComparer.OrdinalIgnoreCase) { "head", "script", "style", "template", "title", "meta", "link", "iframe", "object", "svg", "math", "button", "select" };
        private static readonly HashSet<string> Blocks = new(StringComparer.OrdinalIgnoreCase)
        {
            "p", "div", "h1", "h2", "h3", "h4", "h5", "h6", "blockquote", "pre", "ul", "ol", "li", "table", "section", "article",
            "header", "footer", "main", "nav", "aside", "figure", "figcaption", "address", "dl", "dt", "dd", "center", "hr", "form", "fieldset", "details", "summary",
        };

        // Skipped elements that show something to a reader; leaving them out loses content.
        private static readonly HashSet<string> Content = new(StringComparer.OrdinalIgnoreCase) { "iframe", "object", "svg", "math", "button", "select" };

        private readonly HashSet<string> lost = new(StringComparer.OrdinalIgnoreCase);
        private readonly FlowBuilder b;
        private readonly ResourceResolver resources;
        private readonly HtmlLoadOptions options;
        private readonly CssCascade css = new();
        private readonly Stack<(List List, int Level)> lists = new();
        private readonly Dictionary<string, IElement> notes = new();
        private ParaFormat block = ParaFormat.Normal;
        private bool lastSpace = true;
        private bool labelPending;
        private bool preformatted;

        public Walker(FlowBuilder b, ResourceResolver resources, HtmlLoadOptions options)
        {
            this.b = b;
            this.resources = resources;
            this.options = options;
        }

        public void Run(IDocument dom)
        {
            foreach (var style in dom.QuerySelectorAll("style")) css.AddSheet(style.TextContent);
            foreach (var link in dom.QuerySelectorAll("link[rel~=stylesheet]"))
                if (resources.Get(link.GetAttribute("href") ?? "", Loading.ResourceType.CssStyleSheet) is { } sheet)
                    css.AddSheet(TextDecoding.Decode(sheet, null));
            // Notes are placed where they are referenced, not where the page lists them.
            foreach (var n in dom.QuerySelectorAll("[role=doc-endnote], [role=doc-footnote], aside"))
                if (n.Id is { Length: > 0 } id && (n.LocalName != "aside" || n.GetAttribute("epub:type") == "footnote")) notes[id] = n;
            var body = dom.Body ?? dom.DocumentElement;
            var size = 12.0;
            Children(body, Inherit(body, CharFormat.Plain with { Size = null }, ref size), size);
            EndBlock();
        }

        private bool IsNoteList(IElement e) =>
            e.GetAttribute("role") == "doc-endnotes" || (e.ClassList.Contains("footnotes") && e.QuerySelector("[role=doc-endnote]") != null);

        private void Children(INode parent, CharFormat f, double size)
        {
            foreach (var child in parent.ChildNodes)
            {
                switch (child)
                {
                    case IText t:
                        Text(t.Data, f);
                        break;
                    case IElement e:
                        Element(e, f, size);
                        break;
                }
            }
        }

        private void Text(string data, CharFormat f)
        {
            if (preformatted)
            {
                var lines = data.Replace("\r\n", "\n").Split('\n');
                for (int i = 0; i < lines.Length; i++)
                {
                    if (i > 0)
                    {
                        b.EndParagraph();
                        StartBlock();
                    }
                    if (lines[i].Length > 0) Para().AppendChild(RunOf(lines[i], f));
                }
                return;
            }
            // White space collapses to one space, none at the start of a paragraph; the space stays
            // with the text before it, so that it does not move into a following link or emphasis.
            if (data.All(c => c is ' ' or '\n' or '\r' or '\t' or '\f'))
            {
                if (b.InParagraph && !lastSpace)
                {
                    b.Text(" ", f);
                    lastSpace = true;
                }
                return;
            }
            Para();
            var sb = new StringBuilder(data.Length);
            foreach (var c in data)
            {
                if (c is ' ' or '\n' or '\r' or '\t' or '\f')
                {
                    if (!lastSpace) sb.Append(' ');
                    lastSpace = true;
                    continue;
                }
                lastSpace = false;
                sb.Append(c);
            }
            b.Text(sb.ToString(), f);
        }

        private Run RunOf(string text, CharFormat f)
        {
            var r = new Run(b.Document, text);
            FlowBuilder.ApplyFont(r.Font, f);
            return r;
        }

        private Paragraph Para()
        {
            if (!b.InParagraph) StartBlock();
            return b.Paragraph;
        }

        private void StartBlock()
        {
            var f = block;
            // An item's label goes on its first paragraph; the item's later paragraphs are indented under it.
            if (f.List != null && !labelPending) f = f with { List = null, LeftIndent = 36 * (f.ListLevel + 1) };
            else if (f.List == null && lists.Count > 0 && f.LeftIndent == null) f = f with { LeftIndent = 36 * (lists.Peek().Level + 1) };
            if (f.List != null) labelPending = false;
            b.StartParagraph(f);
            lastSpace = true;
        }

        private void EndBlock()
        {
            // A line break that ends a block shows no further line.
            if (b.InParagraph && b.Paragraph.LastChild is Run { Text: "\v" } br) br.Remove();
            if (b.InParagraph && !preformatted && b.Paragraph.LastChild is Run { Text: var t } last && t.EndsWith(' '))
            {
                if (t.Length == 1) last.Remove();
                else last.Text = t[..^1];
            }
            b.EndParagraph();
            lastSpace = true;
        }

        private CharFormat Inherit(IElement e, CharFormat f, ref double size)
        {
            switch (e.LocalName)
            {
                case "b" or "strong": f = f with { Bold = true }; break;
                case "i" or "em" or "cite" or "var" or "dfn": f = f with { Italic = true }; break;
                case "u" or "ins": f = f with { Underline = Underline.Single }; break;
                case "s" or "strike" or "del": f = f with { Strike = true }; break;
                case "sup": f = f with { Superscript = true }; break;
                case "sub": f = f with { Subscript = true }; break;
                case "code" or "kbd" or "tt" or "samp": f = f with { Code = true }; break;
                case "font":
                    if (CssCascade.Color(e.GetAttribute("color")) is { } fc) f = f with { Color = fc };
                    if (e.GetAttribute("face") is { Length: > 0 } face) f = f with { FontName = face.Split(',')[0].Trim().Trim('\'', '"') };
                    break;
            }
            var d = css.For(e);
            if (d.TryGetValue("font-weight", out var w)) f = f with { Bold = w is "bold" or "bolder" || (int.TryParse(w, out var wn) && wn >= 600) };
            if (d.TryGetValue("font-style", out var st)) f = f with { Italic = st is "italic" or "oblique" };
            if (d.TryGetValue("text-decoration", out var td))
            {
                if (td.Contains("underline")) f = f with { Underline = Underline.Single };
                if (td.Contains("line-through")) f = f with { Strike = true };
                if (td.Trim() == "none") f = f with { Underline = Underline.None, Strike = false };
            }
            if (d.TryGetValue("color", out var col) && CssCascade.Color(col) is { } c) f = f with { Color = c };
            if (d.TryGetValue("font-family", out var fam))
            {
                var first = fam.Split(',')[0].Trim().Trim('\'', '"');
                if (first is "monospace") f = f with { Code = true };
                else if (first is not ("serif" or "sans-serif" or "inherit" or "initial")) f = f with { FontName = first };
            }
            if (d.TryGetValue("font-size", out var fs))
            {
                double? pt = fs switch
                {
                    "xx-small" => 7, "x-small" => 7.5, "small" => 10, "medium" => 12, "large" => 13.5, "x-large" => 18, "xx-large" => 24,
                    "smaller" => size / 1.2, "larger" => size * 1.2,
                    _ => CssCascade.Length(fs, size),
                };
                if (pt is > 0) { size = pt.Value; f = f with { Size = pt }; }
            }
            if (d.TryGetValue("vertical-align", out var va))
                f = va switch { "super" => f with { Superscript = true }, "sub" => f with { Subscript = true }, _ => f };
            return f;
        }

        private ParaFormat BlockFormat(IElement e, ParaFormat f, double size)
        {
            var d = css.For(e);
            if (d.TryGetValue("text-align", out var ta) || e.GetAttribute("align") is { } al && (ta = al) != null)
                f = f with
                {
                    Alignment = ta.ToLowerInvariant() switch
                    {
                        "center" => ParagraphAlignment.Center,
                        "right" or "end" => ParagraphAlignment.Right,
                        "justify" => ParagraphAlignment.Justify,
                        _ => ParagraphAlignment.Left,
                    },
                };
            if (e.LocalName == "center") f = f with { Alignment = ParagraphAlignment.Center };
            double left = (CssCascade.Length(d.GetValueOrDefault("margin-left"), size) ?? 0) + (CssCascade.Length(d.GetValueOrDefault("padding-left"), size) ?? 0);
            if (left != 0 && e.LocalName is not ("ul" or "ol" or "li")) f = f with { LeftIndent = (f.LeftIndent ?? 0) + left };
            if (CssCascade.Length(d.GetValueOrDefault("text-indent"), size) is { } ti) f = f with { FirstLineIndent = ti };
            if (CssCascade.Length(d.GetValueOrDefault("margin-top"), size) is { } mt) f = f with { SpaceBefore = Math.Max(0, mt) };
            if (CssCascade.Length(d.GetValueOrDefault("margin-bottom"), size) is { } mb) f = f with { SpaceAfter = Math.Max(0, mb) };
            return f;
        }

        private static bool Hidden(Dictionary<string, string> d) => d.TryGetValue("display", out var v) && v.Trim() == "none";

        private void Element(IElement e, CharFormat f, double size)
        {
            var name = e.LocalName.ToLowerInvariant();
            if (Skipped.Contains(name) || (name == "noscript" && options.IgnoreNoscriptElements))
            {
                if (Content.Contains(name) && lost.Add(name))
                    b.Document.Warnings.Add(WarningType.DataLoss, WarningSource.Html, $"The content of <{name}> elements is not imported and was left out.");
                return;
            }
            if (Hidden(css.For(e)) || IsNoteList(e) || (e.Id != null && notes.ContainsKey(e.Id))) return;
            // The way back from a note to its reference is navigation, not text.
            if (name == "a" && (e.GetAttribute("role") == "doc-backlink" || e.ClassList.Contains("footnote-back"))) return;
            var inner = Inherit(e, f, ref size);
            switch (name)
            {
                case "br":
                    Para();
                    b.LineBreak(f);
                    lastSpace = true;
                    return;
                case "img":
                    Image(e, f);
                    return;
                case "a" when IsNoteRef(e, out var note):
                    Para();
                    b.StartFootnote();
                    var saved = (block, lists.ToArray());
                    block = ParaFormat.Normal;
                    lists.Clear();
                    // The note's own element is skipped where the page lists it, so its children are walked here.
                    foreach (var c in note.ChildNodes)
                        if (c is IText t) Text(t.Data, CharFormat.Plain);
                        else if (c is IElement ce) Element(ce, CharFormat.Plain, 12);
                    (block, var ls) = saved;
                    foreach (var l in ls.Reverse()) lists.Push(l);
                    b.LeaveContainer();
                    return;
                case "a" when e.GetAttribute("href") is { Length: > 0 } href:
                    Para();
                    b.StartLink(href);
                    Children(e, inner, size);
                    b.EndLink();
                    return;
                case "table":
                    Table(e, inner, size);
                    return;
                case "ul" or "ol":
                    List(e, inner, size);
                    return;
                case "hr":
                    EndBlock();
                    var rule = b.StartParagraph(block);
                    rule.ParagraphFormat.GetBorder(BorderType.Bottom).LineStyle = LineStyle.Single;
                    EndBlock();
                    return;
            }
            if (!Blocks.Contains(name))
            {
                Children(e, inner, size);
                return;
            }
            // A block: its own paragraphs, with the formatting it gives them.
            EndBlock();
            var saveBlock = block;
            var savePre = preformatted;
            block = BlockFormat(e, block, size);
            switch (name)
            {
                case "h1" or "h2" or "h3" or "h4" or "h5" or "h6":
                    block = block with { Kind = BlockKind.Heading, HeadingLevel = name[1] - '0' };
                    break;
                case "blockquote":
                    block = block with { Kind = BlockKind.Quote };
                    break;
                case "pre":
                    block = block with { Kind = BlockKind.Code };
                    preformatted = true;
                    break;
                case "li" when lists.Count > 0:
                    block = block with { List = lists.Peek().List, ListLevel = lists.Peek().Level };
                    labelPending = true;
                    break;
            }
            if (preformatted) StartBlock();
            Children(e, inner, size);
            // The line feed that ends the last line of preformatted text does not start another.
            if (name == "pre" && b.InParagraph && !b.Paragraph.HasChildNodes && b.Paragraph.PreviousSibling is Paragraph prev &&
                prev.ParagraphFormat.StyleName == FlowBuilder.CodeBlockStyle && e.TextContent.EndsWith('\n'))
            {
                b.Paragraph.Remove();
                b.EndParagraph();
            }
            EndBlock();
            block = saveBlock;
            preformatted = savePre;
        }

        private bool IsNoteRef(IElement a, out IElement note)
        {
            note = null!;
            var href = a.GetAttribute("href");
            bool marked = a.GetAttribute("role") == "doc-noteref" || a.ClassList.Contains("footnote-ref") || a.GetAttribute("epub:type") == "noteref";
            return marked && href is { Length: > 1 } && href[0] == '#' && notes.TryGetValue(href[1..], out note!);
        }

        private void List(IElement e, CharFormat f, double size)
        {
            EndBlock();
            bool numbered = e.LocalName == "ol";
            var (list, level) = lists.Count == 0
                ? (b.NewList(numbered, int.TryParse(e.GetAttribute("start"), out var s) ? s : 1), 0)
                : FlowBuilder.NestedList(lists.Peek().List, lists.Peek().Level, numbered);
            lists.Push((list, level));
            var saveBlock = block;
            block = BlockFormat(e, block, size) with { List = null };
            Children(e, f, size);
            EndBlock();
            block = saveBlock;
            lists.Pop();
        }

        private void Image(IElement e, CharFormat f)
        {
            var src = e.GetAttribute("src") ?? "";
            var bytes = resources.Get(src);
            var alt = e.GetAttribute("alt") ?? "";
            if (bytes != null && Drawing.ImageInfo.Detect(bytes).Type is not (Drawing.ImageType.NoImage or Drawing.ImageType.Unknown))
            {
                Para();
                var d = css.For(e);
                double w = CssCascade.Length(d.GetValueOrDefault("width") ?? e.GetAttribute("width"), 12) ?? -1;
                double h = CssCascade.Length(d.GetValueOrDefault("height") ?? e.GetAttribute("height"), 12) ?? -1;
                b.Image(bytes, w, h, alt);
                return;
            }
            if (src.Length == 0 && alt.Length == 0) return;
            // A picture we cannot reach stays a visible link to it.
            Para();
            b.StartLink(src);
            b.Text(alt.Length > 0 ? alt : src, f);
            b.EndLink();
        }

        private void Table(IElement table, CharFormat f, double size)
        {
            EndBlock();
            var savedLists = lists.ToArray();
            var saveBlock = block;
            lists.Clear();
            block = ParaFormat.Normal;
            b.StartTable();
            // Columns still covered by a cell that spans rows from above, with the rows left.
            var covered = new Dictionary<int, int>();
            foreach (var tr in Rows(table))
            {
                var row = b.StartRow();
                if (tr.ParentElement?.LocalName == "thead") b.CurrentRowHeading();
                int col = 0;
                void Covered()
                {
                    while (covered.TryGetValue(col, out var left) && left > 0)
                    {
                        var merged = b.StartCell();
                        merged.CellFormat.VerticalMerge = Tables.CellMerge.Previous;
                        b.EndCell();
                        covered[col] = left - 1;
                        col++;
                    }
                }
                foreach (var td in tr.Children.Where(c => c.LocalName is "td" or "th"))
                {
                    Covered();
                    var cell = b.StartCell();
                    int colspan = Math.Clamp(int.TryParse(td.GetAttribute("colspan"), out var cs) ? cs : 1, 1, 63);
                    int rowspan = Math.Clamp(int.TryParse(td.GetAttribute("rowspan"), out var rs) ? rs : 1, 1, 1000);
                    if (colspan > 1) cell.Span = colspan;
                    if (rowspan > 1)
                    {
                        cell.CellFormat.VerticalMerge = Tables.CellMerge.First;
                        covered[col] = rowspan - 1;
                    }
                    var cellSize = size;
                    var cf = Inherit(td, f, ref cellSize);
                    block = BlockFormat(td, ParaFormat.Normal, cellSize) with { LeftIndent = null };
                    Children(td, cf, cellSize);
                    EndBlock();
                    b.EndCell();
                    col += colspan;
                }
                Covered();
            }
            b.EndTable();
            block = saveBlock;
            foreach (var l in savedLists.Reverse()) lists.Push(l);
        }

        private static IEnumerable<IElement> Rows(IElement table)
        {
            foreach (var c in table.Children)
            {
                if (c.LocalName == "tr") yield return c;
                else if (c.LocalName is "thead" or "tbody" or "tfoot")
                    foreach (var r in c.Children.Where(r => r.LocalName == "tr")) yield return r;
            }
        }
    }
}
