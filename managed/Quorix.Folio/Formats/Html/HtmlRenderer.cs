using System.Buffers;
using System.Globalization;
using System.Net;
using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;
using Quorix.Folio.Text;

namespace Quorix.Folio.Formats.Html;

/// <summary>Renders the document as the body of one or more HTML pages: semantic elements (headings,
/// emphasis, lists, tables, links, pictures, notes) with the rest of the formatting as CSS.</summary>
internal sealed class HtmlRenderer
{
    private readonly Document doc;
    private readonly HtmlSaveOptions options;
    private readonly HtmlResources resources;
    private readonly ListLabeler labels;
    private readonly bool xhtml;
    private readonly string baseFont;
    private readonly double baseSize;
    private readonly List<Footnote> notes = new();
    private readonly List<StringBuilder> pages = new() { new StringBuilder(1 << 14) };
    // Lists open at this point, innermost last: the list, its level and whether an item is open.
    private readonly List<(int ListId, int Level, string Tag, bool ItemOpen)> openLists = new();

    public CssRules Css { get; }

    /// <summary>Headings of each page with the element ids that reach them, for tables of contents.</summary>
    public List<List<(int Level, string Text, string Id)>> Headings { get; } = new() { new() };

    public HtmlRenderer(Document doc, HtmlSaveOptions options, HtmlResources resources)
    {
        this.doc = doc;
        this.options = options;
        this.resources = resources;
        labels = new ListLabeler(doc);
        xhtml = options.HtmlVersion == HtmlVersion.Xhtml;
        Css = new CssRules(options.CssStyleSheetType == CssStyleSheetType.Inline);
        var normal = doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal).Font;
        baseFont = normal.Name;
        baseSize = normal.Size;
    }

    private StringBuilder Out => pages[^1];

    /// <summary>Whether a page shows a text watermark, whose text the page's style sheet supplies.</summary>
    public bool HasTextWatermark { get; private set; }

    /// <summary>The rule that shows a text watermark's text.</summary>
    public const string WatermarkRule = ".watermark::before{content:attr(data-watermark)}";

    /// <summary>Page bodies in order; more than one when the options split the document.</summary>
    public IReadOnlyList<string> Render()
    {
        var sections = doc.Sections.ToArray();
        for (int i = 0; i < sections.Length; i++)
        {
            var s = sections[i];
            if (i > 0 && options.DocumentSplitCriteria.HasFlag(DocumentSplitCriteria.SectionBreak)) NewPage();
            bool header = options.ExportHeadersFootersMode == ExportHeadersFootersMode.PerSection ||
                          (options.ExportHeadersFootersMode == ExportHeadersFootersMode.FirstSectionHeaderLastSectionFooter && i == 0);
            bool footer = options.ExportHeadersFootersMode == ExportHeadersFootersMode.PerSection ||
                          (options.ExportHeadersFootersMode == ExportHeadersFootersMode.FirstSectionHeaderLastSectionFooter && i == sections.Length - 1);
            WatermarkOf(s);
            if (header && s.HeadersFooters[HeaderFooterType.HeaderPrimary] is { } h) Story(h, "header");
            if (s.Body != null) Blocks(s.Body);
            CloseLists(0);
            if (footer && s.HeadersFooters[HeaderFooterType.FooterPrimary] is { } f) Story(f, "footer");
        }
        Notes();
        return pages.ConvertAll(p => p.ToString());
    }

    // Whether the current page has main text yet: a page of only a running header is not cut off.
    private bool pageHasText;
    private bool inHeaderFooter;

    private void NewPage()
    {
        CloseLists(0);
        if (!pageHasText) return;
        pages.Add(new StringBuilder(1 << 14));
        Headings.Add(new());
        pageHasText = false;
        pageMark = null;
    }

    // The watermark element the current page shows; sections with the same watermark share it.
    private string? pageMark;

    /// <summary>The section's watermark as an element fixed behind the middle of the page, which
    /// browsers repeat on every printed page; written once per page while it stays the same.</summary>
    private void WatermarkOf(Section s)
    {
        var mark = WatermarkMark.In(s.HeadersFooters[HeaderFooterType.HeaderPrimary]) ?? WatermarkMark.In(s.HeadersFooters[HeaderFooterType.HeaderFirst]);
        if (mark == null) return;
        var place = "position:fixed;left:50%;top:50%;width:" + Pt(mark.Width) + ";height:" + Pt(mark.Height) +
                    ";margin-left:" + Pt(-mark.Width / 2) + ";margin-top:" + Pt(-mark.Height / 2) + ";z-index:-1;pointer-events:none;";
        string html;
        if (mark.Picture is { } picture)
            html = "<img class=\"watermark\" src=\"" + Attr(resources.Image(picture)) + "\" alt=\"\" style=\"" + Attr(place + (mark.Washout ? "opacity:0.3;" : "")) + "\"" + (xhtml ? " />" : ">");
        else
        {
            // The text spans the box's width as nearly as a font size alone can make it.
            double size = Math.Min(mark.Height, mark.Width / (0.6 * mark.Text!.Length));
            var css = place + "transform:rotate(" + mark.Rotation.ToString("0.##", CultureInfo.InvariantCulture) + "deg);" +
                      "color:#" + mark.ColorHex + ";opacity:" + mark.Opacity.ToString("0.##", CultureInfo.InvariantCulture) + ";" +
                      "font-family:'" + mark.FontFamily.Replace("'", "") + "';font-size:" + Pt(size) + ";line-height:" + Pt(mark.Height) +
                      ";text-align:center;white-space:nowrap;";
            // The text is the style sheet's to show, not the page's: readers of the text do not take it for a paragraph.
            html = "<div class=\"watermark\" data-watermark=\"" + Attr(mark.Text) + "\" aria-hidden=\"true\" style=\"" + Attr(css) + "\"></div>";
            HasTextWatermark = true;
        }
        if (html == pageMark) return;
        Line();
        Out.Append(html);
        pageMark = html;
    }

    private void Story(CompositeNode story, string tag)
    {
        Line();
        Out.Append('<').Append(tag).Append('>');
        inHeaderFooter = true;
        Blocks(story);
        inHeaderFooter = false;
        CloseLists(0);
        Out.Append("</").Append(tag).Append('>');
    }

    private void Line()
    {
        if (options.PrettyFormat && Out.Length > 0) Out.Append('\n');
    }

    private void Blocks(CompositeNode container)
    {
        for (var n = container.FirstChild; n != null; n = n.NextSibling)
        {
            switch (n)
            {
                case Paragraph p when ModelFacts.IsCodeBlock(p):
                    CloseLists(0);
                    var start = p;
                    Line();
                    Out.Append("<pre>");
                    for (var c = (Node?)p; c is Paragraph q && ModelFacts.IsCodeBlock(q); c = c.NextSibling)
                    {
                        if (c != start) Out.Append('\n');
                        Out.Append(Escape(q.GetText().TrimEnd('\r', '\f', '\a').Replace(ControlChar.LineBreakChar, '\n')));
                        n = c;
                    }
                    Out.Append("</pre>");
                    break;
                case Paragraph p:
                    Paragraph(p);
                    break;
                case Table t:
                    CloseLists(0);
                    Table(t);
                    break;
                case OpaqueNode { Kind: OpaqueKind.Block } o when o.VisibleText.Length > 0:
                    CloseLists(0);
                    foreach (var line in o.VisibleText.Split(ControlChar.ParagraphBreakChar))
                        if (line.Trim().Length > 0)
                        {
                            Line();
                            Out.Append("<p>").Append(Escape(line)).Append("</p>");
                        }
                    break;
            }
        }
    }

    private void Paragraph(Paragraph p)
    {
        int level = ModelFacts.HeadingLevel(p);
        if (level > 0 && level <= options.DocumentSplitHeadingLevel && options.DocumentSplitCriteria.HasFlag(DocumentSplitCriteria.HeadingParagraph))
            NewPage();
        if (!inHeaderFooter) pageHasText = true;
        var label = labels.Next(p);
        var css = ParagraphCss(p, label != null && options.ExportListLabels != ExportListLabels.AsInlineText);
        if (label is { } l && options.ExportListLabels != ExportListLabels.AsInlineText)
        {
            ListItem(p, l);
            Out.Append("<li").Append(Css.Attribute(css)).Append('>');
            Inlines(p);
            return;
        }
        CloseLists(0);
        if (ModelFacts.IsClosingEmpty(p)) return;
        Line();
        string tag = level > 0 ? "h" + level : ModelFacts.IsQuote(p) ? "blockquote" : "p";
        Out.Append('<').Append(tag).Append(Css.Attribute(css));
        if (level > 0 && !inHeaderFooter)
        {
            var id = "h" + (Headings.Sum(h => h.Count) + 1);
            Headings[^1].Add((level, ModelFacts.VisibleText(p).Trim(), id));
            Out.Append(" id=\"").Append(id).Append('"');
        }
        Out.Append('>');
        if (label is { } inline) Out.Append(Escape(inline.Text)).Append(' ');
        int mark = Out.Length;
        Inlines(p);
        // An empty paragraph still takes a line, as in the word processor.
        if (Out.Length == mark && tag == "p") Out.Append(xhtml ? "<br />" : "<br>");
        Out.Append("</").Append(tag).Append('>');
    }

    private void ListItem(Paragraph p, ListLabeler.Label l)
    {
        int id = p.ListFormat.List!.ListId;
        if (openLists.Count > 0 && openLists[0].ListId != id) CloseLists(0);
        // Close deeper levels, then the item at this level.
        while (openLists.Count > 0 && openLists[^1].Level > l.Level) CloseLast();
        if (openLists.Count > 0 && openLists[^1].Level == l.Level)
        {
            var top = openLists[^1];
            if (top.ItemOpen) Out.Append("</li>");
            openLists[^1] = top with { ItemOpen = false };
            if (top.Tag != (l.IsBullet ? "ul" : "ol")) CloseLast();
        }
        if (openLists.Count == 0 || openLists[^1].Level < l.Level)
        {
            string tag = l.IsBullet ? "ul" : "ol";
            Line();
            Out.Append('<').Append(tag);
            if (!l.IsBullet && l.Number != 1) Out.Append(" start=\"").Append(l.Number).Append('"');
            Out.Append('>');
            openLists.Add((id, l.Level, tag, false));
        }
        Line();
        openLists[^1] = openLists[^1] with { ItemOpen = true };
    }

    private void CloseLast()
    {
        var top = openLists[^1];
        if (top.ItemOpen) Out.Append("</li>");
        Out.Append("</").Append(top.Tag).Append('>');
        openLists.RemoveAt(openLists.Count - 1);
    }

    private void CloseLists(int keep)
    {
        while (openLists.Count > keep) CloseLast();
    }

    // Paragraph style attributes depend only on the paragraph's own formatting, its style and whether it is a list item.
    private readonly Dictionary<(AttrSet Own, Style? Style, bool InList), string> paragraphCss = new();

    private string ParagraphCss(Paragraph p, bool inList)
    {
        var key = (p.ParaAttrs, p.ParagraphStyle, inList);
        if (!paragraphCss.TryGetValue(key, out var css)) paragraphCss[key] = css = ParagraphCssOf(p, inList);
        return css;
    }

    private static string ParagraphCssOf(Paragraph p, bool inList)
    {
        var pf = p.ParagraphFormat;
        var css = new StringBuilder();
        switch (pf.Alignment)
        {
            case ParagraphAlignment.Center: css.Append("text-align:center;"); break;
            case ParagraphAlignment.Right: css.Append("text-align:right;"); break;
            case ParagraphAlignment.Justify or ParagraphAlignment.Distributed: css.Append("text-align:justify;"); break;
        }
        // List items take their indent from the list element.
        if (!inList && pf.LeftIndent != 0) css.Append("margin-left:").Append(Pt(pf.LeftIndent)).Append(';');
        if (!inList && pf.FirstLineIndent != 0) css.Append("text-indent:").Append(Pt(pf.FirstLineIndent)).Append(';');
        css.Append("margin-top:").Append(Pt(pf.SpaceBefore)).Append(";margin-bottom:").Append(Pt(pf.SpaceAfter)).Append(';');
        if (pf.PageBreakBefore) css.Append("page-break-before:always;");
        return css.ToString();
    }

    internal static string Pt(double v) => v.ToString("0.##", CultureInfo.InvariantCulture) + "pt";

    private void Inlines(Paragraph p)
    {
        bool inLink = false;
        var style = p.ParagraphStyle;
        foreach (var piece in InlineText.Walk(p))
        {
            switch (piece.Kind)
            {
                case InlineText.Kind.Text when piece.Node is Inline i:
                    Run(i, piece.Text, p, style);
                    break;
                case InlineText.Kind.Text:
                    Out.Append(Escape(piece.Text));
                    break;
                case InlineText.Kind.LinkStart:
                    if (inLink) Out.Append("</a>");
                    Out.Append("<a href=\"").Append(Attr(piece.IsBookmark ? "#" + piece.Target : piece.Target ?? "")).Append("\">");
                    inLink = true;
                    break;
                case InlineText.Kind.LinkEnd:
                    if (inLink) Out.Append("</a>");
                    inLink = false;
                    break;
                case InlineText.Kind.Note:
                    notes.Add((Footnote)piece.Node);
                    int k = notes.Count;
                    Out.Append("<a href=\"#fn").Append(k).Append("\" class=\"footnote-ref\" id=\"fnref").Append(k).Append("\" role=\"doc-noteref\"><sup>").Append(k).Append("</sup></a>");
                    break;
                case InlineText.Kind.Image when Watermark.IsPicture((Shape)piece.Node):
                    break; // drawn behind the page by WatermarkOf
                case InlineText.Kind.Image:
                    Image((Shape)piece.Node);
                    break;
            }
        }
        if (inLink) Out.Append("</a>");
        // Bookmarks are link targets.
        for (var n = p.FirstChild; n != null; n = n.NextSibling)
            if (n is BookmarkStart bs && !bs.Name.StartsWith('_'))
                Out.Append("<a id=\"").Append(Attr(bs.Name)).Append("\"></a>");
    }

    // A run's markup depends only on its own formatting and its paragraph's style, which whole
    // documents repeat: each combination is worked out once.
    private readonly Dictionary<(AttrSet Own, Style? ParagraphStyle), (string Open, string Close)> runMarkup = new();

    private void Run(Inline r, string text, Paragraph para, Style? paragraphStyle)
    {
        var key = (r.RunAttrs, paragraphStyle);
        if (!runMarkup.TryGetValue(key, out var markup)) runMarkup[key] = markup = RunMarkup(r, para);
        Out.Append(markup.Open);
        EscapeInto(Out, text);
        Out.Append(markup.Close);
    }

    /// <summary>The elements and style a run's text goes between.</summary>
    private (string Open, string Close) RunMarkup(Inline r, Paragraph? para)
    {
        var e = ModelFacts.EmphasisOf(doc, r);
        var f = r.Font;
        bool code = ModelFacts.IsCode(doc, r);
        // The link element shows itself as a link; the link style's look is not repeated on its text.
        bool linkLook = doc.Styles.FindById(r.RPr.CharStyle)?.StyleIdentifier == StyleIdentifier.Hyperlink;
        var open = new StringBuilder();
        var close = new StringBuilder();
        void Wrap(string tag, bool on)
        {
            if (!on) return;
            open.Append('<').Append(tag).Append('>');
            close.Insert(0, "</" + tag + ">");
        }
        Wrap("strong", e.Bold);
        Wrap("em", e.Italic);
        Wrap("s", e.Strike);
        Wrap("u", f.Underline != Underline.None && !(linkLook && !r.RunAttrs.HasGroup(FormatAttr.Underline)));
        Wrap("sup", f.Superscript);
        Wrap("sub", f.Subscript);
        Wrap("code", code);
        var css = new StringBuilder();
        if (!code && f.Name != baseFont) css.Append("font-family:'").Append(f.Name.Replace("'", "")).Append("';");
        var size = f.Size;
        var paraSize = para?.ParagraphFormat.Style.Font.Size ?? baseSize;
        if (Math.Abs(size - paraSize) > 0.01) css.Append("font-size:").Append(Pt(size)).Append(';');
        if (f.ColorHex is { } c && c != "auto" && c != "000000" && !(linkLook && !r.RunAttrs.HasGroup(FormatAttr.Color))) css.Append("color:#").Append(c).Append(';');
        if (f.AllCaps) css.Append("text-transform:uppercase;");
        if (f.SmallCaps) css.Append("font-variant:small-caps;");
        if (f.Hidden) css.Append("display:none;");
        if (css.Length > 0)
        {
            open.Append("<span").Append(Css.Attribute(css.ToString())).Append('>');
            close.Insert(0, "</span>");
        }
        return (open.ToString(), close.ToString());
    }

    private void Image(Shape s)
    {
        var src = resources.Image(s);
        Out.Append("<img src=\"").Append(Attr(src)).Append("\" alt=\"").Append(Attr(s.AlternativeText)).Append('"')
           .Append(" width=\"").Append(Math.Round(s.Width / 0.75)).Append("\" height=\"").Append(Math.Round(s.Height / 0.75)).Append('"')
           .Append(xhtml ? " />" : ">");
    }

    private void Table(Table t)
    {
        Line();
        Out.Append("<table").Append(Css.Attribute("border-collapse:collapse;")).Append('>');
        var rows = t.Rows.ToArray();
        // Cells merged downwards: the rows each first cell spans, by grid column.
        var rowSpans = new Dictionary<Cell, int>();
        var openByColumn = new Dictionary<int, Cell>();
        foreach (var row in rows)
        {
            int col = 0;
            foreach (var cell in row.Cells)
            {
                var vm = cell.CellFormat.VerticalMerge;
                if (vm == CellMerge.First) { openByColumn[col] = cell; rowSpans[cell] = 1; }
                else if (vm == CellMerge.Previous && openByColumn.TryGetValue(col, out var top)) rowSpans[top]++;
                else openByColumn.Remove(col);
                col += cell.Span;
            }
        }
        bool inHead = false, headDone = false;
        foreach (var row in rows)
        {
            bool heading = row.RowFormat.HeadingFormat && !headDone;
            if (heading && !inHead) { Out.Append("<thead>"); inHead = true; }
            if (!heading && inHead) { Out.Append("</thead>"); inHead = false; headDone = true; }
            if (!heading) headDone = true;
            Line();
            Out.Append("<tr>");
            foreach (var cell in row.Cells)
            {
                if (cell.CellFormat.VerticalMerge == CellMerge.Previous || cell.CellFormat.HorizontalMerge == CellMerge.Previous) continue;
                string tag = heading ? "th" : "td";
                Out.Append('<').Append(tag);
                if (cell.Span > 1) Out.Append(" colspan=\"").Append(cell.Span).Append('"');
                if (rowSpans.TryGetValue(cell, out var rs) && rs > 1) Out.Append(" rowspan=\"").Append(rs).Append('"');
                var css = "border:1px solid #000;padding:2pt 4pt;vertical-align:" + cell.CellFormat.VerticalAlignment switch
                {
                    CellVerticalAlignment.Center => "middle",
                    CellVerticalAlignment.Bottom => "bottom",
                    _ => "top",
                } + ";";
                if (cell.CellFormat.Width > 0) css += "width:" + Pt(cell.CellFormat.Width) + ";";
                Out.Append(Css.Attribute(css)).Append('>');
                Blocks(cell);
                CloseLists(0);
                Out.Append("</").Append(tag).Append('>');
            }
            Out.Append("</tr>");
        }
        if (inHead) Out.Append("</thead>");
        Out.Append("</table>");
    }

    private void Notes()
    {
        if (notes.Count == 0) return;
        Line();
        Out.Append("<section class=\"footnotes\" role=\"doc-endnotes\"><hr").Append(xhtml ? " />" : ">").Append("<ol>");
        // Notes inside notes are appended while this runs.
        for (int i = 0; i < notes.Count; i++)
        {
            Line();
            Out.Append("<li id=\"fn").Append(i + 1).Append("\" role=\"doc-endnote\">");
            Blocks(notes[i]);
            CloseLists(0);
            Out.Append("<a href=\"#fnref").Append(i + 1).Append("\" class=\"footnote-back\" role=\"doc-backlink\">\u21a9</a></li>");
        }
        Out.Append("</ol></section>");
    }

    private string Escape(string s)
    {
        var sb = new StringBuilder(s.Length + 8);
        EscapeInto(sb, s);
        return sb.ToString();
    }

    // Characters that are not written as they are: markup's own and the control characters.
    private static readonly SearchValues<char> Special = SearchValues.Create("&<>\0\u0001\u0002\u0003\u0004\u0005\u0006\a\b\t\n\v\f\r\u000E\u000F" +
        "\u0010\u0011\u0012\u0013\u0014\u0015\u0016\u0017\u0018\u0019\u001A\u001B\u001C\u001D\u001E\u001F");

    private void EscapeInto(StringBuilder sb, string s)
    {
        var rest = s.AsSpan();
        for (int i; (i = rest.IndexOfAny(Special)) >= 0; rest = rest[(i + 1)..])
        {
            sb.Append(rest[..i]);
            char c = rest[i];
            switch (c)
            {
                case '&': sb.Append("&amp;"); break;
                case '<': sb.Append("&lt;"); break;
                case '>': sb.Append("&gt;"); break;
                case ControlChar.LineBreakChar: sb.Append(xhtml ? "<br />" : "<br>"); break;
                case ControlChar.PageBreakChar: sb.Append(xhtml ? "<br style=\"page-break-before:always\" />" : "<br style=\"page-break-before:always\">"); break;
                case ControlChar.ColumnBreakChar or '\a' or '\r': break;
                case '\t': sb.Append("&#9;"); break;
            }
        }
        sb.Append(rest);
    }

    internal static string Attr(string s) => WebUtility.HtmlEncode(s);
}
