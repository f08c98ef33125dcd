using System.Globalization;
using System.Security;
using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;
using Quorix.Folio.Text;

namespace Quorix.Folio.Formats.Odt;

/// <summary>OpenDocument text: content.xml with the body and the formatting of its paragraphs and text
/// as automatic styles, styles.xml with the named styles, page layout, header and footer, pictures as
/// parts, all in a package whose uncompressed first entry names the media type.</summary>
internal sealed class OdtWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Odt;

    internal const string MediaType = "application/vnd.oasis.opendocument.text";

    internal const string Namespaces =
        " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\"" +
        " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\"" +
        " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\" xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\"" +
        " xmlns:xlink=\"http://www.w3.org/1999/xlink\" xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\"" +
        " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" office:version=\"1.3\"";

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as OdtSaveOptions ?? throw new ArgumentException("ODT is saved with OdtSaveOptions.", nameof(options));
        var w = new Emitter(document, o);
        var content = w.Content();
        var styles = w.Styles();
        var zip = new ZipWriter(output, 6);
        zip.AddStored("mimetype", Encoding.ASCII.GetBytes(MediaType));
        var manifest = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\" manifest:version=\"1.3\">");
        manifest.Append("<manifest:file-entry manifest:full-path=\"/\" manifest:media-type=\"").Append(MediaType).Append("\" manifest:version=\"1.3\"/>");
        foreach (var part in new[] { "content.xml", "styles.xml", "meta.xml" })
            manifest.Append("<manifest:file-entry manifest:full-path=\"").Append(part).Append("\" manifest:media-type=\"text/xml\"/>");
        foreach (var (name, type, _) in w.Pictures)
            manifest.Append("<manifest:file-entry manifest:full-path=\"").Append(name).Append("\" manifest:media-type=\"").Append(type).Append("\"/>");
        manifest.Append("</manifest:manifest>");
        zip.Add("content.xml", Encoding.UTF8.GetBytes(content));
        zip.Add("styles.xml", Encoding.UTF8.GetBytes(styles));
        zip.Add("meta.xml", Encoding.UTF8.GetBytes("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-meta" + Namespaces +
            "><office:meta><meta:generator>Quorix.Folio</meta:generator></office:meta></office:document-meta>"));
        foreach (var (name, _, bytes) in w.Pictures) zip.Add(name, bytes);
        zip.Add("META-INF/manifest.xml", Encoding.UTF8.GetBytes(manifest.ToString()));
        zip.Finish();
        return new SaveOutputParameters(MediaType);
    }

    internal static string Esc(string s) => SecurityElement.Escape(s) ?? "";

    private sealed class Emitter
    {
        private readonly Document doc;
        private readonly OdtSaveOptions options;
        private readonly ListLabeler labels;
        private readonly Dictionary<string, string> autoStyles = new();
        private readonly StringBuilder autoXml = new();
        private readonly Dictionary<int, string> listStyles = new();
        private readonly Dictionary<byte[], string> pictureNames = new(ReferenceEqualityComparer.Instance);
        private readonly HashSet<string> namedStyles = new();
        private int notes;

        public List<(string Name, string Type, byte[] Bytes)> Pictures { get; } = new();

        public Emitter(Document doc, OdtSaveOptions options)
        {
            this.doc = doc;
            this.options = options;
            labels = new ListLabeler(doc);
        }

        private string Len(double pt) => options.MeasureUnit == OdtSaveMeasureUnit.Inches
            ? (pt / 72).ToString("0.####", CultureInfo.InvariantCulture) + "in"
            : (pt * 2.54 / 72).ToString("0.###", CultureInfo.InvariantCulture) + "cm";

        private static string Pt(double pt) => pt.ToString("0.##", CultureInfo.InvariantCulture) + "pt";

        // An automatic style per distinct set of properties, named P1, T1, ... as office suites do.
        private string Auto(string family, string parent, string props)
        {
            var key = family + "|" + parent + "|" + props;
            if (autoStyles.TryGetValue(key, out var name)) return name;
            name = (family == "paragraph" ? "P" : family == "text" ? "T" : family == "table-cell" ? "C" : "Tb") + (autoStyles.Count + 1);
            autoStyles[key] = name;
            autoXml.Append("<style:style style:name=\"").Append(name).Append("\" style:family=\"").Append(family).Append('"');
            if (parent.Length > 0) autoXml.Append(" style:parent-style-name=\"").Append(parent).Append('"');
            autoXml.Append('>').Append(props).Append("</style:style>");
            return name;
        }

        private static string StyleName(string display) => display.Replace(" ", "_20_");

        private string ParagraphStyle(Paragraph p, int heading)
        {
            string parent;
            if (heading > 0) parent = "Heading_20_" + heading;
            else if (ModelFacts.IsCodeBlock(p)) parent = "Preformatted_20_Text";
            else if (ModelFacts.IsQuote(p)) parent = "Quotations";
            else parent = "Standard";
            namedStyles.Add(parent);
            var pf = p.ParagraphFormat;
            var props = new StringBuilder("<style:paragraph-properties");
            props.Append(" fo:text-align=\"").Append(pf.Alignment switch
            {
                ParagraphAlignment.Center => "center",
                ParagraphAlignment.Right => "end",
                ParagraphAlignment.Justify or ParagraphAlignment.Distributed => "justify",
                _ => "start",
            }).Append('"');
            if (!p.IsListItem)
            {
                if (pf.LeftIndent != 0) props.Append(" fo:margin-left=\"").Append(Len(pf.LeftIndent)).Append('"');
                if (pf.FirstLineIndent != 0) props.Append(" fo:text-indent=\"").Append(Len(pf.FirstLineIndent)).Append('"');
            }
            if (pf.RightIndent != 0) props.Append(" fo:margin-right=\"").Append(Len(pf.RightIndent)).Append('"');
            props.Append(" fo:margin-top=\"").Append(Len(pf.SpaceBefore)).Append("\" fo:margin-bottom=\"").Append(Len(pf.SpaceAfter)).Append('"');
            if (pf.PageBreakBefore) props.Append(" fo:break-before=\"page\"");
            if (pf.KeepWithNext) props.Append(" fo:keep-with-next=\"always\"");
            props.Append("/>");
            return Auto("paragraph", parent, props.ToString());
        }

        private string? TextStyle(Inline r)
        {
            var f = r.Font;
            var props = new StringBuilder();
            // What the paragraph's style already gives is left to it; the link style's look to the link.
            var paraFont = (r.ParentNode as Paragraph)?.ParagraphFormat.Style.Font;
            bool linkLook = doc.Styles.FindById(r.RPr.CharStyle)?.StyleIdentifier == StyleIdentifier.Hyperlink;
            if (f.Bold != (paraFont?.Bold ?? false)) props.Append(" fo:font-weight=\"").Append(f.Bold ? "bold" : "normal").Append('"');
            if (f.Italic != (paraFont?.Italic ?? false)) props.Append(" fo:font-style=\"").Append(f.Italic ? "italic" : "normal").Append('"');
            if (f.Underline != Underline.None && !(linkLook && !r.RunAttrs.HasGroup(FormatAttr.Underline)))
                props.Append(" style:text-underline-style=\"").Append(f.Underline == Underline.Dotted ? "dotted" : "solid").Append("\" style:text-underline-width=\"auto\" style:text-underline-color=\"font-color\"")
                     .Append(f.Underline == Underline.Double ? " style:text-underline-type=\"double\"" : "");
            if (f.StrikeThrough) props.Append(" style:text-line-through-style=\"solid\"");
            if (f.Superscript) props.Append(" style:text-position=\"super 58%\"");
            else if (f.Subscript) props.Append(" style:text-position=\"sub 58%\"");
            if (f.ColorHex is { Length: 6 } c && !(linkLook && !r.RunAttrs.HasGroup(FormatAttr.Color))) props.Append(" fo:color=\"#").Append(c).Append('"');
            if (paraFont == null || Math.Abs(paraFont.Size - f.Size) > 0.01) props.Append(" fo:font-size=\"").Append(Pt(f.Size)).Append('"');
            if (paraFont == null || paraFont.Name != f.Name)
                props.Append(" style:font-name=\"").Append(Esc(f.Name)).Append("\" fo:font-family=\"").Append(Esc(f.Name)).Append('"');
            if (f.AllCaps) props.Append(" fo:text-transform=\"uppercase\"");
            if (f.SmallCaps) props.Append(" fo:font-variant=\"small-caps\"");
            if (f.Hidden) props.Append(" text:display=\"none\"");
            return props.Length == 0 ? null : Auto("text", "", "<style:text-properties" + props + "/>");
        }

        public string Content()
        {
            var body = new StringBuilder(1 << 16);
            foreach (Section s in doc.Sections)
                if (s.Body != null) Blocks(s.Body, body);
            var sb = new StringBuilder(body.Length + autoXml.Length + 1024);
            sb.Append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-content").Append(Namespaces).Append('>');
            sb.Append("<office:automatic-styles>").Append(autoXml);
            foreach (var kv in listStyles) sb.Append(ListStyle(kv.Key, kv.Value));
            sb.Append("</office:automatic-styles><office:body><office:text>").Append(body).Append("</office:text></office:body></office:document-content>");
            return sb.ToString();
        }

        private string ListStyle(int listId, string name)
        {
            var list = doc.Lists.GetListByListId(listId)!;
            var sb = new StringBuilder("<text:list-style style:name=\"").Append(name).Append("\">");
            for (int k = 0; k < 9; k++)
            {
                var lvl = list.ListLevels[k];
                var pos = "<style:list-level-properties text:list-level-position-and-space-mode=\"label-alignment\"><style:list-level-label-alignment text:label-followed-by=\"listtab\" fo:text-indent=\"-0.25in\" fo:margin-left=\"" +
                          ((k + 1) * 0.5).ToString(CultureInfo.InvariantCulture) + "in\"/></style:list-level-properties>";
                if (lvl.NumberStyle == NumberStyle.Bullet)
                    sb.Append("<text:list-level-style-bullet text:level=\"").Append(k + 1).Append("\" text:bullet-char=\"").Append(Esc(lvl.NumberFormat.Length > 0 ? lvl.NumberFormat[..1] : "\u2022")).Append("\">").Append(pos).Append("</text:list-level-style-bullet>");
                else
                {
                    var fmt = lvl.NumberStyle switch
                    {
                        NumberStyle.UppercaseRoman => "I", NumberStyle.LowercaseRoman => "i",
                        NumberStyle.UppercaseLetter => "A", NumberStyle.LowercaseLetter => "a", _ => "1",
                    };
                    // The suffix is what follows the level's own number in its label pattern.
                    var pattern = lvl.NumberFormat;
                    int at = pattern.LastIndexOf('%');
                    var suffix = at >= 0 && at + 2 <= pattern.Length ? pattern[(at + 2)..] : ".";
                    int shown = pattern.Count(ch => ch == '%');
                    sb.Append("<text:list-level-style-number text:level=\"").Append(k + 1).Append("\" style:num-format=\"").Append(fmt)
                      .Append("\" style:num-suffix=\"").Append(Esc(suffix)).Append("\" text:start-value=\"").Append(lvl.StartAt).Append('"');
                    if (shown > 1) sb.Append(" text:display-levels=\"").Append(shown).Append('"');
                    sb.Append('>').Append(pos).Append("</text:list-level-style-number>");
                }
            }
            return sb.Append("</text:list-style>").ToString();
        }

        // Open lists, innermost last: the list and level each text:list element stands for.
        private readonly List<(int ListId, int Level)> open = new();

        private void CloseLists(StringBuilder sb, int keep)
        {
            while (open.Count > keep)
            {
                sb.Append("</text:list-item></text:list>");
                open.RemoveAt(open.Count - 1);
            }
        }

        private void Blocks(CompositeNode container, StringBuilder sb)
        {
            for (var n = container.FirstChild; n != null; n = n.NextSibling)
            {
                switch (n)
                {
                    case Paragraph p when !ModelFacts.IsClosingEmpty(p):
                        Paragraph(p, sb);
                        break;
                    case Table t:
                        CloseLists(sb, 0);
                        Table(t, sb);
                        break;
                }
            }
            CloseLists(sb, 0);
        }

        private void Paragraph(Paragraph p, StringBuilder sb)
        {
            int heading = ModelFacts.HeadingLevel(p);
            var label = labels.Next(p);
            if (label is { } l)
            {
                int id = p.ListFormat.List!.ListId;
                if (open.Count > 0 && open[0].ListId != id) CloseLists(sb, 0);
                while (open.Count > l.Level + 1) { sb.Append("</text:list-item></text:list>"); open.RemoveAt(open.Count - 1); }
                if (open.Count == l.Level + 1) sb.Append("</text:list-item><text:list-item>");
                while (open.Count < l.Level + 1)
                {
                    if (!listStyles.TryGetValue(id, out var ls)) listStyles[id] = ls = "L" + (listStyles.Count + 1);
                    sb.Append("<text:list");
                    if (open.Count == 0) sb.Append(" text:style-name=\"").Append(ls).Append('"');
                    // A list that goes on after a pause continues the numbering.
                    if (open.Count == 0 && l.Number > 1 && !l.IsBullet) sb.Append(" text:continue-numbering=\"true\"");
                    sb.Append("><text:list-item>");
                    open.Add((id, open.Count));
                }
            }
            else CloseLists(sb, 0);
            var style = ParagraphStyle(p, heading);
            if (heading > 0) sb.Append("<text:h text:style-name=\"").Append(style).Append("\" text:outline-level=\"").Append(heading).Append("\">");
            else sb.Append("<text:p text:style-name=\"").Append(style).Append("\">");
            Inlines(p, sb);
            sb.Append(heading > 0 ? "</text:h>" : "</text:p>");
        }

        private void Inlines(Paragraph p, StringBuilder sb)
        {
            bool inLink = false;
            foreach (var piece in InlineText.Walk(p))
            {
                switch (piece.Kind)
                {
                    case InlineText.Kind.Text when piece.Node is Inline r:
                        var ts = TextStyle(r);
                        if (ts != null) sb.Append("<text:span text:style-name=\"").Append(ts).Append("\">");
                        Text(piece.Text, sb);
                        if (ts != null) sb.Append("</text:span>");
                        break;
                    case InlineText.Kind.Text:
                        Text(piece.Text, sb);
                        break;
                    case InlineText.Kind.LinkStart:
                        if (inLink) sb.Append("</text:a>");
                        sb.Append("<text:a xlink:type=\"simple\" xlink:href=\"").Append(Esc(piece.IsBookmark ? "#" + piece.Target : piece.Target ?? "")).Append("\">");
                        inLink = true;
                        break;
                    case InlineText.Kind.LinkEnd:
                        if (inLink) sb.Append("</text:a>");
                        inLink = false;
                        break;
                    case InlineText.Kind.Note:
                        var note = (Footnote)piece.Node;
                        notes++;
                        bool end = note.FootnoteType == FootnoteType.Endnote;
                        sb.Append("<text:note text:id=\"ftn").Append(notes).Append("\" text:note-class=\"").Append(end ? "endnote" : "footnote")
                          .Append("\"><text:note-citation>").Append(notes).Append("</text:note-citation><text:note-body>");
                        var saved = open.ToArray();
                        open.Clear();
                        Blocks(note, sb);
                        open.AddRange(saved);
                        sb.Append("</text:note-body></text:note>");
                        break;
                    case InlineText.Kind.Image:
                        Picture((Shape)piece.Node, sb);
                        break;
                }
            }
            if (inLink) sb.Append("</text:a>");
        }

        private static void Text(string s, StringBuilder sb)
        {
            int spaces = 0;
            void FlushSpaces()
            {
                if (spaces == 0) return;
                sb.Append(' ');
                // Runs of spaces past the first are kept by counting them.
                if (spaces > 1) sb.Append("<text:s text:c=\"").Append(spaces - 1).Append("\"/>");
                spaces = 0;
            }
            foreach (var c in s)
            {
                if (c == ' ') { spaces++; continue; }
                FlushSpaces();
                switch (c)
                {
                    case '\t': sb.Append("<text:tab/>"); break;
                    case ControlChar.LineBreakChar: sb.Append("<text:line-break/>"); break;
                    case ControlChar.PageBreakChar or ControlChar.ColumnBreakChar or '\r' or '\a': break;
                    case '<': sb.Append("&lt;"); break;
                    case '>': sb.Append("&gt;"); break;
                    case '&': sb.Append("&amp;"); break;
                    default:
                        if (c >= ' ' || c == '\n') sb.Append(c);
                        break;
                }
            }
            FlushSpaces();
        }

        private void Picture(Shape s, StringBuilder sb)
        {
            var bytes = s.ImageData.ImageBytes!;
            if (!pictureNames.TryGetValue(bytes, out var name))
            {
                var info = ImageInfo.Detect(bytes);
                name = $"Pictures/image{Pictures.Count + 1}.{info.Extension}";
                pictureNames[bytes] = name;
                Pictures.Add((name, info.ContentType, bytes));
            }
            sb.Append("<draw:frame text:anchor-type=\"as-char\" svg:width=\"").Append(Len(s.Width)).Append("\" svg:height=\"").Append(Len(s.Height))
              .Append("\" draw:name=\"").Append(Esc(Path.GetFileNameWithoutExtension(name))).Append("\"><draw:image xlink:href=\"").Append(name)
              .Append("\" xlink:type=\"simple\" xlink:show=\"embed\" xlink:actuate=\"onLoad\"/>");
            if (s.AlternativeText.Length > 0) sb.Append("<svg:desc>").Append(Esc(s.AlternativeText)).Append("</svg:desc>");
            sb.Append("</draw:frame>");
        }

        private void Table(Table t, StringBuilder sb)
        {
            var rows = t.Rows.ToArray();
            int cols = rows.Max(r => r.Cells.ToArray().Sum(c => c.Span));
            // Rows each cell merged downwards spans.
            var rowSpans = new Dictionary<Cell, int>();
            var top = new Dictionary<int, Cell>();
            foreach (var row in rows)
            {
                int col = 0;
                foreach (var cell in row.Cells)
                {
                    var vm = cell.CellFormat.VerticalMerge;
                    if (vm == CellMerge.First) { top[col] = cell; rowSpans[cell] = 1; }
                    else if (vm == CellMerge.Previous && top.TryGetValue(col, out var first)) rowSpans[first]++;
                    else top.Remove(col);
                    col += cell.Span;
                }
            }
            var cellStyle = Auto("table-cell", "", "<style:table-cell-properties fo:padding=\"0.04in\" fo:border=\"0.5pt solid #000000\"/>");
            sb.Append("<table:table table:name=\"Table").Append(++tables).Append("\">");
            sb.Append("<table:table-column table:number-columns-repeated=\"").Append(cols).Append("\"/>");
            bool inHeader = false;
            for (int i = 0; i < rows.Length; i++)
            {
                var row = rows[i];
                bool heading = row.RowFormat.HeadingFormat && (i == 0 || rows[i - 1].RowFormat.HeadingFormat);
                if (heading && !inHeader) { sb.Append("<table:table-header-rows>"); inHeader = true; }
                if (!heading && inHeader) { sb.Append("</table:table-header-rows>"); inHeader = false; }
                sb.Append("<table:table-row>");
                int written = 0;
                foreach (var cell in row.Cells)
                {
                    if (cell.CellFormat.VerticalMerge == CellMerge.Previous || cell.CellFormat.HorizontalMerge == CellMerge.Previous)
                    {
                        sb.Append("<table:covered-table-cell/>");
                        written++;
                        continue;
                    }
                    sb.Append("<table:table-cell table:style-name=\"").Append(cellStyle).Append("\" office:value-type=\"string\"");
                    if (cell.Span > 1) sb.Append(" table:number-columns-spanned=\"").Append(cell.Span).Append('"');
                    if (rowSpans.TryGetValue(cell, out var rs) && rs > 1) sb.Append(" table:number-rows-spanned=\"").Append(rs).Append('"');
                    sb.Append('>');
                    var saved = open.ToArray();
                    open.Clear();
                    Blocks(cell, sb);
                    open.AddRange(saved);
                    sb.Append("</table:table-cell>");
                    for (int k = 1; k < cell.Span; k++) sb.Append("<table:covered-table-cell/>");
                    written += cell.Span;
                }
                for (; written < cols; written++) sb.Append("<table:table-cell/>");
                sb.Append("</table:table-row>");
            }
            if (inHeader) sb.Append("</table:table-header-rows>");
            sb.Append("</table:table>");
        }

        private int tables;

        public string Styles()
        {
            var normal = doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal).Font;
            var sb = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-styles").Append(Namespaces).Append('>');
            sb.Append("<office:font-face-decls/><office:styles>");
            sb.Append("<style:default-style style:family=\"paragraph\"><style:text-properties style:font-name=\"").Append(Esc(normal.Name))
              .Append("\" fo:font-family=\"").Append(Esc(normal.Name)).Append("\" fo:font-size=\"").Append(Pt(normal.Size)).Append("\"/></style:default-style>");
            sb.Append("<style:style style:name=\"Standard\" style:family=\"paragraph\" style:class=\"text\"/>");
            foreach (var name in namedStyles.Where(n => n != "Standard").OrderBy(n => n, StringComparer.Ordinal))
            {
                var display = name.Replace("_20_", " ");
                sb.Append("<style:style style:name=\"").Append(name).Append("\" style:display-name=\"").Append(display).Append("\" style:family=\"paragraph\" style:parent-style-name=\"Standard\"");
                if (name.StartsWith("Heading_20_", StringComparison.Ordinal))
                {
                    int level = int.Parse(name[11..], CultureInfo.InvariantCulture);
                    var hs = doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Heading1 + level - 1).Font;
                    sb.Append(" style:default-outline-level=\"").Append(level).Append("\" style:class=\"text\"><style:paragraph-properties fo:keep-with-next=\"always\"/>")
                      .Append("<style:text-properties fo:font-size=\"").Append(Pt(hs.Size)).Append('"').Append(hs.Bold ? " fo:font-weight=\"bold\"" : "")
                      .Append(hs.Italic ? " fo:font-style=\"italic\"" : "").Append("/></style:style>");
                }
                else if (name == "Preformatted_20_Text")
                    sb.Append("><style:text-properties style:font-name=\"").Append(FlowBuilder.CodeFont).Append("\" fo:font-family=\"").Append(FlowBuilder.CodeFont).Append("\"/></style:style>");
                else
                    sb.Append("><style:paragraph-properties fo:margin-left=\"0.4in\" fo:margin-right=\"0.4in\"/></style:style>");
            }
            sb.Append("</office:styles><office:automatic-styles>");
            var ps = doc.FirstSection?.PageSetup;
            sb.Append("<style:page-layout style:name=\"pm1\"><style:page-layout-properties fo:page-width=\"").Append(Len(ps?.PageWidth ?? 612))
              .Append("\" fo:page-height=\"").Append(Len(ps?.PageHeight ?? 792)).Append("\" fo:margin-top=\"").Append(Len(ps?.TopMargin ?? 72))
              .Append("\" fo:margin-bottom=\"").Append(Len(ps?.BottomMargin ?? 72)).Append("\" fo:margin-left=\"").Append(Len(ps?.LeftMargin ?? 90))
              .Append("\" fo:margin-right=\"").Append(Len(ps?.RightMargin ?? 90)).Append("\"/></style:page-layout>");
            var master = new StringBuilder("<style:master-page style:name=\"Standard\" style:page-layout-name=\"pm1\">");
            foreach (var (type, tag) in new[] { (HeaderFooterType.HeaderPrimary, "header"), (HeaderFooterType.FooterPrimary, "footer") })
            {
                if (doc.FirstSection?.HeadersFooters[type] is not { } hf) continue;
                var part = new StringBuilder();
                Blocks(hf, part);
                master.Append("<style:").Append(tag).Append('>').Append(part).Append("</style:").Append(tag).Append('>');
            }
            master.Append("</style:master-page>");
            // Styles used only by the header and footer live with them.
            sb.Append(autoXml).Append("</office:automatic-styles><office:master-styles>").Append(master).Append("</office:master-styles></office:document-styles>");
            return sb.ToString();
        }
    }
}
