using System.Globalization;
using System.IO.Compression;
using System.Xml;
using System.Xml.Linq;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Loading;
using LoadOptions = Quorix.Folio.Loading.LoadOptions;
using Quorix.Folio.Tables;
using List = Quorix.Folio.Lists.List;

namespace Quorix.Folio.Formats.Odt;

/// <summary>OpenDocument text: paragraphs and headings with their styles resolved through the style
/// hierarchy, lists, tables with spans, links, pictures, notes, and the first page style's header and footer.</summary>
internal sealed class OdtReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.Odt;

    private static readonly XNamespace Office = "urn:oasis:names:tc:opendocument:xmlns:office:1.0";
    private static readonly XNamespace StyleNs = "urn:oasis:names:tc:opendocument:xmlns:style:1.0";
    private static readonly XNamespace TextNs = "urn:oasis:names:tc:opendocument:xmlns:text:1.0";
    private static readonly XNamespace TableNs = "urn:oasis:names:tc:opendocument:xmlns:table:1.0";
    private static readonly XNamespace Draw = "urn:oasis:names:tc:opendocument:xmlns:drawing:1.0";
    private static readonly XNamespace Fo = "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0";
    private static readonly XNamespace XLink = "http://www.w3.org/1999/xlink";
    private static readonly XNamespace Svg = "urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0";

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        ZipArchive zip;
        try
        {
            zip = new ZipArchive(new MemoryStream(data, false), ZipArchiveMode.Read);
        }
        catch (InvalidDataException e)
        {
            throw new FileCorruptedException("The ODT package is damaged: " + e.Message, e);
        }
        using (zip)
        {
            var mime = Part(zip, "mimetype", options);
            if (mime == null || System.Text.Encoding.ASCII.GetString(mime).Trim() != OdtWriter.MediaType)
                throw new UnsupportedFileFormatException("The package is not an OpenDocument text document.");
            var content = Xml(zip, "content.xml", options) ?? throw new FileCorruptedException("The ODT package has no content.xml.");
            var styles = Xml(zip, "styles.xml", options);
            new Walker(new FlowBuilder(document) { AbsoluteFormatting = true }, zip, options, content, styles).Run();
        }
    }

    private static byte[]? Part(ZipArchive zip, string name, LoadOptions options)
    {
        var e = zip.GetEntry(name);
        if (e == null) return null;
        if (e.Length > options.MaxPartSize) throw new FileCorruptedException($"The part {name} is larger than the load options allow.");
        try
        {
            using var s = e.Open();
            var buf = new byte[e.Length];
            s.ReadExactly(buf);
            return buf;
        }
        catch (Exception ex) when (ex is InvalidDataException or EndOfStreamException)
        {
            throw new FileCorruptedException($"The part {name} is damaged: {ex.Message}", ex);
        }
    }

    private static XDocument? Xml(ZipArchive zip, string name, LoadOptions options)
    {
        var bytes = Part(zip, name, options);
        if (bytes == null) return null;
        var settings = new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null };
        try
        {
            using var r = XmlReader.Create(new MemoryStream(bytes), settings);
            return XDocument.Load(r, System.Xml.Linq.LoadOptions.PreserveWhitespace);
        }
        catch (XmlException e)
        {
            throw new FileCorruptedException($"The part {name} is not well-formed XML: {e.Message}", e);
        }
    }

    private sealed class Walker
    {
        private sealed record OdfStyle(string? Parent, string? DisplayName, int Outline, XElement Element);

        private readonly FlowBuilder b;
        private readonly ZipArchive zip;
        private readonly LoadOptions options;
        private readonly XDocument content;
        private readonly XDocument? stylesDoc;
        private readonly Dictionary<(string Family, string Name), OdfStyle> styles = new();
        private readonly Dictionary<string, XElement> listStyles = new();
        private readonly Dictionary<string, List> lastListOfStyle = new();
        private XElement? paragraphDefaults;
        private bool lastSpace = true;

        public Walker(FlowBuilder b, ZipArchive zip, LoadOptions options, XDocument content, XDocument? stylesDoc)
        {
            this.b = b;
            this.zip = zip;
            this.options = options;
            this.content = content;
            this.stylesDoc = stylesDoc;
        }

        public void Run()
        {
            if (stylesDoc?.Root is { } sr)
            {
                Collect(sr.Element(Office + "styles"));
                Collect(sr.Element(Office + "automatic-styles"));
                paragraphDefaults = sr.Element(Office + "styles")?.Elements(StyleNs + "default-style").FirstOrDefault(e => (string?)e.Attribute(StyleNs + "family") == "paragraph");
            }
            var master = stylesDoc?.Root?.Element(Office + "master-styles")?.Element(StyleNs + "master-page");
            foreach (var (tag, type) in new[] { ("header", HeaderFooterType.HeaderPrimary), ("footer", HeaderFooterType.FooterPrimary) })
                if (master?.Element(StyleNs + tag) is { } hf)
                {
                    b.EnterHeaderFooter(type);
                    Blocks(hf, 0, null);
                    b.LeaveContainer();
                }
            Collect(content.Root?.Element(Office + "automatic-styles"));
            var text = content.Root?.Element(Office + "body")?.Element(Office + "text")
                       ?? throw new FileCorruptedException("The ODT content has no text body.");
            Blocks(text, 0, null);
            b.Finish();
        }

        private void Collect(XElement? container)
        {
            if (container == null) return;
            foreach (var e in container.Elements())
            {
                if (e.Name == StyleNs + "style" && (string?)e.Attribute(StyleNs + "name") is { } name)
                    styles[((string?)e.Attribute(StyleNs + "family") ?? "", name)] = new OdfStyle(
                        (string?)e.Attribute(StyleNs + "parent-style-name"), (string?)e.Attribute(StyleNs + "display-name"),
                        int.TryParse((string?)e.Attribute(StyleNs + "default-outline-level"), out var ol) ? ol : 0, e);
                else if (e.Name == TextNs + "list-style" && (string?)e.Attribute(StyleNs + "name") is { } ln)
                    listStyles[ln] = e;
            }
        }

        // The chain of a style and its parents, nearest first.
        private IEnumerable<OdfStyle> Chain(string family, string? name)
        {
            for (int guard = 0; name != null && guard < 32 && styles.TryGetValue((family, name), out var s); guard++)
            {
                yield return s;
                name = s.Parent;
            }
        }

        private string? Prop(string family, string? style, string props, XName attr)
        {
            foreach (var s in Chain(family, style))
                if (s.Element.Element(StyleNs + props)?.Attribute(attr) is { } a) return a.Value;
            return null;
        }

        private CharFormat Chars(string family, string? style, CharFormat inherited)
        {
            var f = inherited;
            // Nearest definitions win: walk from the farthest parent to the style itself.
            foreach (var s in Chain(family, style).Reverse())
                if (s.Element.Element(StyleNs + "text-properties") is { } tp) f = Apply(tp, f);
            return f;
        }

        private static CharFormat Apply(XElement tp, CharFormat f)
        {
            string? A(XNamespace ns, string n) => (string?)tp.Attribute(ns + n);
            if (A(Fo, "font-weight") is { } w) f = f with { Bold = w == "bold" || (int.TryParse(w, out var wn) && wn >= 600) };
            if (A(Fo, "font-style") is { } st) f = f with { Italic = st is "italic" or "oblique" };
            if (A(StyleNs, "text-underline-style") is { } u)
                f = f with { Underline = u == "none" ? Underline.None : A(StyleNs, "text-underline-type") == "double" ? Underline.Double : u == "dotted" ? Underline.Dotted : Underline.Single };
            if (A(StyleNs, "text-line-through-style") is { } lt) f = f with { Strike = lt != "none" };
            if (A(StyleNs, "text-position") is { } pos)
                f = f with { Superscript = pos.StartsWith("super") || (pos.Length > 0 && char.IsDigit(pos[0]) && pos[0] != '0'), Subscript = pos.StartsWith("sub") || pos.StartsWith('-') };
            if (A(Fo, "color") is { Length: 7 } c && c[0] == '#') f = f with { Color = c[1..].ToUpperInvariant() };
            if (A(Fo, "font-size") is { } size)
            {
                if (size.EndsWith('%') && double.TryParse(size[..^1], NumberStyles.Float, CultureInfo.InvariantCulture, out var pct)) f = f with { Size = (f.Size ?? 12) * pct / 100 };
                else if (Length(size) is { } pt && pt > 0) f = f with { Size = pt };
            }
            if ((A(StyleNs, "font-name") ?? A(Fo, "font-family")) is { Length: > 0 } font) f = f with { FontName = font.Trim('\'', '"'), Code = false };
            return f;
        }

        private static double? Length(string? v)
        {
            if (string.IsNullOrEmpty(v)) return null;
            int k = 0;
            while (k < v.Length && (char.IsDigit(v[k]) || v[k] is '.' or '-' or '+')) k++;
            if (!double.TryParse(v[..k], NumberStyles.Float, CultureInfo.InvariantCulture, out var n)) return null;
            return v[k..] switch { "pt" => n, "in" => n * 72, "cm" => n * 72 / 2.54, "mm" => n * 72 / 25.4, "px" => n * 0.75, "pc" => n * 12, _ => null };
        }

        private CharFormat BaseChars()
        {
            var f = CharFormat.Plain with { Size = 12 };
            if (paragraphDefaults?.Element(StyleNs + "text-properties") is { } tp) f = Apply(tp, f);
            return f;
        }

        private void Blocks(XElement container, int listDepth, (List List, int Level)? item)
        {
            bool firstOfItem = true;
            foreach (var e in container.Elements())
            {
                if (e.Name == TextNs + "p" || e.Name == TextNs + "h")
                {
                    Paragraph(e, firstOfItem ? item : null, item?.Level ?? -1);
                    firstOfItem = false;
                }
                else if (e.Name == TextNs + "list") List(e, listDepth, item?.List);
                else if (e.Name == TableNs + "table") Table(e);
                else if (e.Name == TextNs + "section" || e.Name == TextNs + "soft-page-break" || e.Name == TextNs + "index-body" ||
                         e.Name.LocalName.EndsWith("-index", StringComparison.Ordinal))
                    Blocks(e.Name.LocalName.EndsWith("-index", StringComparison.Ordinal) ? e.Element(TextNs + "index-body") ?? e : e, listDepth, item);
            }
        }

        private void List(XElement list, int depth, List? parent)
        {
            var styleName = (string?)list.Attribute(TextNs + "style-name");
            List target;
            int level;
            if (parent == null)
            {
                bool numbered = LevelIsNumbered(styleName, 0);
                // A list that says it continues, continues the last list of its style.
                bool continues = (string?)list.Attribute(TextNs + "continue-numbering") == "true" || list.Attribute(TextNs + "continue-list") != null;
                if (continues && styleName != null && lastListOfStyle.TryGetValue(styleName, out var prev)) target = prev;
                else
                {
                    target = b.NewList(numbered, StartValue(styleName, 0));
                    for (int k = 1; k < 9; k++) FlowBuilder.NestedList(target, k - 1, LevelIsNumbered(styleName, k));
                }
                if (styleName != null) lastListOfStyle[styleName] = target;
                level = 0;
            }
            else
            {
                target = parent;
                level = Math.Min(8, depth);
            }
            foreach (var li in list.Elements())
                if (li.Name == TextNs + "list-item" || li.Name == TextNs + "list-header")
                    Blocks(li, level + 1, li.Name == TextNs + "list-item" ? (target, level) : null);
        }

        private XElement? LevelStyle(string? styleName, int level)
        {
            if (styleName == null || !listStyles.TryGetValue(styleName, out var ls)) return null;
            return ls.Elements().FirstOrDefault(e => (string?)e.Attribute(TextNs + "level") == (level + 1).ToString(CultureInfo.InvariantCulture));
        }

        // Levels without a definition show bullets.
        private bool LevelIsNumbered(string? styleName, int level) =>
            LevelStyle(styleName, level) is { } l && l.Name.LocalName == "list-level-style-number" && (string?)l.Attribute(StyleNs + "num-format") != "";

        private int StartValue(string? styleName, int level) =>
            int.TryParse((string?)LevelStyle(styleName, level)?.Attribute(TextNs + "start-value"), out var v) ? v : 1;

        private void Paragraph(XElement p, (List List, int Level)? item, int listLevel)
        {
            var style = (string?)p.Attribute(TextNs + "style-name");
            var f = new ParaFormat();
            var chain = Chain("paragraph", style).ToArray();
            int outline = p.Name == TextNs + "h" ? (int.TryParse((string?)p.Attribute(TextNs + "outline-level"), out var ol) ? ol : 1) : 0;
            if (outline == 0) outline = chain.Select(s => s.Outline).FirstOrDefault(o => o > 0);
            var display = chain.Select(s => s.DisplayName ?? Unescape(s.Element.Attribute(StyleNs + "name")!.Value)).ToArray();
            if (outline > 0) f = f with { Kind = BlockKind.Heading, HeadingLevel = outline };
            else if (display.Contains("Title")) f = f with { Kind = BlockKind.Title };
            else if (display.Contains("Quotations")) f = f with { Kind = BlockKind.Quote };
            else if (display.Contains("Preformatted Text")) f = f with { Kind = BlockKind.Code };
            f = f with
            {
                Alignment = Prop("paragraph", style, "paragraph-properties", Fo + "text-align") switch
                {
                    "center" => ParagraphAlignment.Center,
                    "end" or "right" => ParagraphAlignment.Right,
                    "justify" => ParagraphAlignment.Justify,
                    _ => null,
                },
                SpaceBefore = Length(Prop("paragraph", style, "paragraph-properties", Fo + "margin-top")),
                SpaceAfter = Length(Prop("paragraph", style, "paragraph-properties", Fo + "margin-bottom")),
            };
            if (item is { } it) f = f with { List = it.List, ListLevel = it.Level };
            else
            {
                var left = Length(Prop("paragraph", style, "paragraph-properties", Fo + "margin-left"));
                if (listLevel >= 0) left = (left ?? 0) + 36 * (listLevel + 1);
                f = f with { LeftIndent = left is { } l && l != 0 ? l : null, FirstLineIndent = Length(Prop("paragraph", style, "paragraph-properties", Fo + "text-indent")) is { } ti && ti != 0 ? ti : null };
            }
            var chars = Chars("paragraph", style, BaseChars());
            if (f.Kind == BlockKind.Heading) b.AdoptLook(StyleIdentifier.Heading1 + Math.Clamp(f.HeadingLevel, 1, 9) - 1, chars);
            else if (f.Kind == BlockKind.Title) b.AdoptLook(StyleIdentifier.Title, chars);
            b.StartParagraph(f);
            lastSpace = true;
            Inlines(p, chars);
            if (b.InParagraph && b.Paragraph.LastChild is Run { Text: var t } last && t.EndsWith(' ') && t.Length > 0)
            {
                if (t.Length == 1) last.Remove();
                else last.Text = t[..^1];
            }
            b.EndParagraph();
        }

        private static string Unescape(string styleName) => styleName.Replace("_20_", " ");

        private void Inlines(XElement parent, CharFormat f)
        {
            foreach (var node in parent.Nodes())
            {
                if (node is XText t)
                {
                    Text(t.Value, f);
                    continue;
                }
                if (node is not XElement e) continue;
                var n = e.Name;
                if (n == TextNs + "span") Inlines(e, Chars("text", (string?)e.Attribute(TextNs + "style-name"), f));
                else if (n == TextNs + "s") Literal(new string(' ', int.TryParse((string?)e.Attribute(TextNs + "c"), out var c) ? Math.Clamp(c, 1, 1000) : 1), f);
                else if (n == TextNs + "tab") Literal("\t", f);
                else if (n == TextNs + "line-break") Literal(ControlChar.LineBreak, f);
                else if (n == TextNs + "a")
                {
                    b.StartLink((string?)e.Attribute(XLink + "href") ?? "");
                    Inlines(e, f);
                    b.EndLink();
                }
                else if (n == TextNs + "note")
                {
                    b.StartFootnote();
                    if (e.Element(TextNs + "note-body") is { } body) Blocks(body, 0, null);
                    b.LeaveContainer();
                    lastSpace = false;
                }
                else if (n == Draw + "frame") Frame(e, f);
                else if (n == TextNs + "bookmark" || n == TextNs + "bookmark-start" || n == TextNs + "bookmark-end" || n == TextNs + "soft-page-break" ||
                         n.Namespace == Office && n.LocalName == "annotation")
                    continue;
                else Inlines(e, f);
            }
        }

        // Text of the document: white space collapses to one space, as the format prescribes.
        private void Text(string s, CharFormat f)
        {
            var sb = new System.Text.StringBuilder(s.Length);
            foreach (var ch in s)
            {
                if (ch is ' ' or '\t' or '\n' or '\r')
                {
                    if (!lastSpace) sb.Append(' ');
                    lastSpace = true;
                    continue;
                }
                sb.Append(ch);
                lastSpace = false;
            }
            if (sb.Length > 0) b.Text(sb.ToString(), f);
        }

        private void Literal(string s, CharFormat f)
        {
            b.Text(s, f);
            lastSpace = s.EndsWith(' ');
        }

        private void Frame(XElement frame, CharFormat f)
        {
            var image = frame.Element(Draw + "image");
            var href = (string?)image?.Attribute(XLink + "href");
            if (href == null)
            {
                // Text boxes keep their text in the flow.
                if (frame.Element(Draw + "text-box") is { } box) Inlines(box, f);
                return;
            }
            byte[]? bytes = href.StartsWith("http", StringComparison.OrdinalIgnoreCase) ? null : Part(zip, href.TrimStart('.', '/'), options);
            var alt = (string?)frame.Element(Svg + "desc") ?? (string?)frame.Element(Svg + "title") ?? "";
            if (bytes != null && Drawing.ImageInfo.Detect(bytes).Type is not (Drawing.ImageType.NoImage or Drawing.ImageType.Unknown))
            {
                b.Image(bytes, Length((string?)frame.Attribute(Svg + "width")) ?? -1, Length((string?)frame.Attribute(Svg + "height")) ?? -1, alt);
                lastSpace = false;
                return;
            }
            b.StartLink(href);
            b.Text(alt.Length > 0 ? alt : href, f);
            b.EndLink();
        }

        private void Table(XElement table)
        {
            b.StartTable();
            var covered = new Dictionary<int, int>();
            foreach (var row in Rows(table))
            {
                b.StartRow();
                if (row.Parent?.Name == TableNs + "table-header-rows") b.CurrentRowHeading();
                int col = 0;
                foreach (var cell in row.Elements())
                {
                    int repeat = int.TryParse((string?)cell.Attribute(TableNs + "number-columns-repeated"), out var rp) ? Math.Clamp(rp, 1, 64) : 1;
                    for (int k = 0; k < repeat; k++)
                    {
                        if (cell.Name == TableNs + "covered-table-cell")
                        {
                            // Covered by a cell above: a continuation of its vertical merge; covered from the left: part of its span.
                            if (covered.TryGetValue(col, out var left) && left > 0)
                            {
                                var m = b.StartCell();
                                m.CellFormat.VerticalMerge = CellMerge.Previous;
                                b.EndCell();
                                covered[col] = left - 1;
                            }
                            col++;
                            continue;
                        }
                        if (cell.Name != TableNs + "table-cell") continue;
                        var c = b.StartCell();
                        int span = int.TryParse((string?)cell.Attribute(TableNs + "number-columns-spanned"), out var cs) ? Math.Clamp(cs, 1, 63) : 1;
                        int rows = int.TryParse((string?)cell.Attribute(TableNs + "number-rows-spanned"), out var rs) ? Math.Clamp(rs, 1, 10000) : 1;
                        if (span > 1) c.Span = span;
                        if (rows > 1)
                        {
                            c.CellFormat.VerticalMerge = CellMerge.First;
                            covered[col] = rows - 1;
                        }
                        Blocks(cell, 0, null);
                        b.EndCell();
                        col += 1;
                    }
                }
            }
            b.EndTable();
        }

        private static IEnumerable<XElement> Rows(XElement table)
        {
            foreach (var e in table.Elements())
            {
                if (e.Name == TableNs + "table-row") yield return e;
                else if (e.Name.LocalName is "table-header-rows" or "table-rows" or "table-row-group")
                    foreach (var r in Rows(e)) yield return r;
            }
        }
    }
}
