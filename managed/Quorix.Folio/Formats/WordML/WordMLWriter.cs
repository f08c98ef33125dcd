using Quorix.Folio.Formatting;
using System.Text;
using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Fields;
using Quorix.Folio.Notes;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;
using static Quorix.Folio.Formats.WordML.WordMLValues;

namespace Quorix.Folio.Formats.WordML;

/// <summary>WordprocessingML 2003: one XML file with the fonts, lists, styles and body, headers and
/// footers inside each section's properties and pictures inline as base64.</summary>
internal sealed class WordMLWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.WordML;

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as WordML2003SaveOptions ?? throw new ArgumentException("WordprocessingML 2003 is saved with WordML2003SaveOptions.", nameof(options));
        var settings = new XmlWriterSettings { Encoding = new UTF8Encoding(false), Indent = o.PrettyFormat, CloseOutput = false };
        using (var w = XmlWriter.Create(output, settings))
            new Emitter(document, w).Document();
        return new SaveOutputParameters("application/xml");
    }

    private sealed class Emitter
    {
        private readonly Document doc;
        private readonly XmlWriter w;
        // Lists in order of first use; a list's index is both its definition's and its instance's number.
        private readonly List<Quorix.Folio.Lists.List> lists = new();
        private int pictures;
        private int bookmarks;
        private readonly Dictionary<string, int> bookmarkIds = new();

        public Emitter(Document doc, XmlWriter w)
        {
            this.doc = doc;
            this.w = w;
        }

        public void Document()
        {
            w.WriteStartDocument(true);
            w.WriteProcessingInstruction("mso-application", "progid=\"Word.Document\"");
            w.WriteStartElement("w", "wordDocument", WordMLNs.W);
            w.WriteAttributeString("xmlns", "v", null, WordMLNs.V);
            w.WriteAttributeString("xmlns", "o", null, WordMLNs.O);
            w.WriteAttributeString("xmlns", "wx", null, WordMLNs.Wx);
            w.WriteAttributeString("xmlns", "aml", null, WordMLNs.Aml);
            w.WriteAttributeString("xml", "space", null, "preserve");
            Properties();
            Fonts();
            // Lists are numbered as the body uses them, so the body is written aside first.
            foreach (var p in doc.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>())
                if (p.ListFormat.List is { } l && !lists.Contains(l)) lists.Add(l);
            Lists();
            Styles();
            w.WriteStartElement("docPr", WordMLNs.W);
            Val("view", "print");
            w.WriteEndElement();
            Body();
            w.WriteEndElement();
            w.WriteEndDocument();
        }

        private void Val(string local, string value)
        {
            w.WriteStartElement(local, WordMLNs.W);
            w.WriteAttributeString("val", WordMLNs.W, value);
            w.WriteEndElement();
        }

        private void Val(string local, int value) => Val(local, value.ToString(System.Globalization.CultureInfo.InvariantCulture));

        private void Empty(string local)
        {
            w.WriteStartElement(local, WordMLNs.W);
            w.WriteEndElement();
        }

        private void Attr(string local, int value) => w.WriteAttributeString(local, WordMLNs.W, value.ToString(System.Globalization.CultureInfo.InvariantCulture));

        private void Properties()
        {
            var p = doc.BuiltInDocumentProperties;
            var items = new[] { ("Title", p.Title), ("Subject", p.Subject), ("Author", p.Author), ("Keywords", p.Keywords), ("Description", p.Comments) };
            if (items.All(i => string.IsNullOrEmpty(i.Item2))) return;
            w.WriteStartElement("o", "DocumentProperties", WordMLNs.O);
            foreach (var (name, value) in items)
                if (!string.IsNullOrEmpty(value)) w.WriteElementString(name, WordMLNs.O, value);
            w.WriteEndElement();
        }

        private void Fonts()
        {
            w.WriteStartElement("fonts", WordMLNs.W);
            w.WriteStartElement("defaultFonts", WordMLNs.W);
            var name = doc.Styles.DefaultFont.Name;
            foreach (var a in new[] { "ascii", "fareast", "h-ansi", "cs" }) w.WriteAttributeString(a, WordMLNs.W, name);
            w.WriteEndElement();
            w.WriteEndElement();
        }

        private void Lists()
        {
            if (lists.Count == 0) return;
            w.WriteStartElement("lists", WordMLNs.W);
            for (int i = 0; i < lists.Count; i++)
            {
                w.WriteStartElement("listDef", WordMLNs.W);
                Attr("listDefId", i);
                Val("plt", lists[i].IsMultiLevel ? "HybridMultilevel" : "SingleLevel");
                for (int k = 0; k < 9; k++)
                {
                    var lvl = lists[i].ListLevels[k];
                    w.WriteStartElement("lvl", WordMLNs.W);
                    Attr("ilvl", k);
                    Val("start", lvl.StartAt);
                    Val("nfc", (int)lvl.NumberStyle);
                    Val("lvlText", lvl.NumberFormat);
                    Val("lvlJc", lvl.Alignment switch { Quorix.Folio.Lists.ListLevelAlignment.Center => "center", Quorix.Folio.Lists.ListLevelAlignment.Right => "right", _ => "left" });
                    w.WriteStartElement("pPr", WordMLNs.W);
                    w.WriteStartElement("ind", WordMLNs.W);
                    Attr("left", Twips(lvl.TextPosition));
                    Attr("hanging", Twips(Math.Max(0, lvl.TextPosition - lvl.NumberPosition)));
                    w.WriteEndElement();
                    w.WriteEndElement();
                    if (lvl.NumberStyle == Folio.NumberStyle.Bullet)
                    {
                        w.WriteStartElement("rPr", WordMLNs.W);
                        Fonts(lvl.Font.Name);
                        w.WriteEndElement();
                    }
                    w.WriteEndElement();
                }
                w.WriteEndElement();
            }
            for (int i = 0; i < lists.Count; i++)
            {
                w.WriteStartElement("list", WordMLNs.W);
                Attr("ilfo", i + 1);
                Val("ilst", i);
                w.WriteEndElement();
            }
            w.WriteEndElement();
        }

        private void Fonts(string name)
        {
            w.WriteStartElement("rFonts", WordMLNs.W);
            foreach (var a in new[] { "ascii", "fareast", "h-ansi", "cs" }) w.WriteAttributeString(a, WordMLNs.W, name);
            w.WriteEndElement();
        }

        private void Styles()
        {
            w.WriteStartElement("styles", WordMLNs.W);
            Val("versionOfBuiltInStylenames", 4);
            var normal = doc.Styles[StyleIdentifier.Normal];
            foreach (var s in doc.Styles.All.ToArray())
            {
                if (s.Type is not (StyleType.Paragraph or StyleType.Character or StyleType.Table)) continue;
                w.WriteStartElement("style", WordMLNs.W);
                w.WriteAttributeString("type", WordMLNs.W, s.Type switch { StyleType.Character => "character", StyleType.Table => "table", _ => "paragraph" });
                if (s == normal || s.StyleIdentifier is StyleIdentifier.DefaultParagraphFont or StyleIdentifier.TableNormal)
                    w.WriteAttributeString("default", WordMLNs.W, "on");
                w.WriteAttributeString("styleId", WordMLNs.W, s.StyleId);
                Val("name", s.Name);
                var baseStyle = s.BaseStyle;
                if (baseStyle != null) Val("basedOn", baseStyle.StyleId);
                if (s.NextParagraphStyleName.Length > 0 && doc.Styles[s.NextParagraphStyleName] is { } next) Val("next", next.StyleId);
                if (s.Type == StyleType.Paragraph)
                {
                    var look = ParaLook.Of(s.ParagraphFormat);
                    var from = baseStyle is { Type: StyleType.Paragraph } ? ParaLook.Of(baseStyle.ParagraphFormat) : ParaLook.Default;
                    ParagraphProperties(null, look, from, null, null);
                }
                if (s.Type != StyleType.Table)
                {
                    var from = baseStyle != null && baseStyle.Type == s.Type ? RunLook.Of(baseStyle.Font) : RunLook.Default;
                    RunProperties(null, RunLook.Of(s.Font), from);
                }
                w.WriteEndElement();
            }
            w.WriteEndElement();
        }

        private void Body()
        {
            w.WriteStartElement("body", WordMLNs.W);
            var sections = doc.Sections.ToArray();
            for (int i = 0; i < sections.Length; i++)
            {
                var s = sections[i];
                bool last = i == sections.Length - 1;
                w.WriteStartElement("wx", "sect", WordMLNs.Wx);
                // A section's properties travel in its last paragraph, the last section's after its content.
                var closing = last ? null : s.Body?.LastChild as Paragraph;
                if (s.Body != null) Blocks(s.Body, closing, s);
                if (!last && closing == null)
                {
                    w.WriteStartElement("p", WordMLNs.W);
                    w.WriteStartElement("pPr", WordMLNs.W);
                    SectionProperties(s);
                    w.WriteEndElement();
                    w.WriteEndElement();
                }
                if (last) SectionProperties(s);
                w.WriteEndElement();
            }
            w.WriteEndElement();
        }

        private void SectionProperties(Section s)
        {
            var ps = s.PageSetup;
            w.WriteStartElement("sectPr", WordMLNs.W);
            foreach (var hf in s.HeadersFooters.OfType<HeaderFooter>())
            {
                w.WriteStartElement(hf.IsHeader ? "hdr" : "ftr", WordMLNs.W);
                w.WriteAttributeString("type", WordMLNs.W, hf.HeaderFooterType switch
                {
                    HeaderFooterType.HeaderFirst or HeaderFooterType.FooterFirst => "first",
                    HeaderFooterType.HeaderEven or HeaderFooterType.FooterEven => "even",
                    _ => "odd",
                });
                Blocks(hf, null, null);
                w.WriteEndElement();
            }
            Val("type", ps.SectionStart switch
            {
                SectionStart.Continuous => "continuous",
                SectionStart.NewColumn => "column",
                SectionStart.EvenPage => "even-page",
                SectionStart.OddPage => "odd-page",
                _ => "next-page",
            });
            w.WriteStartElement("pgSz", WordMLNs.W);
            Attr("w", Twips(ps.PageWidth));
            Attr("h", Twips(ps.PageHeight));
            if (ps.Orientation == Orientation.Landscape) w.WriteAttributeString("orient", WordMLNs.W, "landscape");
            w.WriteEndElement();
            w.WriteStartElement("pgMar", WordMLNs.W);
            Attr("top", Twips(ps.TopMargin));
            Attr("right", Twips(ps.RightMargin));
            Attr("bottom", Twips(ps.BottomMargin));
            Attr("left", Twips(ps.LeftMargin));
            Attr("header", Twips(ps.HeaderDistance));
            Attr("footer", Twips(ps.FooterDistance));
            Attr("gutter", Twips(ps.Gutter));
            w.WriteEndElement();
            if (ps.RestartPageNumbering)
            {
                w.WriteStartElement("pgNumType", WordMLNs.W);
                Attr("start", ps.PageStartingNumber);
                w.WriteEndElement();
            }
            if (ps.DifferentFirstPageHeaderFooter) Empty("titlePg");
            w.WriteEndElement();
        }

        private void Blocks(CompositeNode container, Paragraph? closing, Section? section)
        {
            for (var n = container.FirstChild; n != null; n = n.NextSibling)
            {
                switch (n)
                {
                    case Paragraph p:
                        Paragraph(p, p == closing ? section : null);
                        break;
                    case Table t:
                        Table(t);
                        break;
                    case Markup.StructuredDocumentTag sdt:
                        // The format has no content controls: their content stands in their place.
                        Blocks(sdt, null, null);
                        break;
                }
            }
        }

        private void Paragraph(Paragraph p, Section? sectionEnd)
        {
            w.WriteStartElement("p", WordMLNs.W);
            var pf = p.ParagraphFormat;
            var style = pf.Style;
            ParagraphProperties(p, ParaLook.Of(pf), ParaLook.Of(style.ParagraphFormat), style, sectionEnd);
            var baseline = RunLook.Of(style.Font);
            if (p.ParentNode is HeaderFooter) TextWatermarks(p);
            Inlines(p, baseline, false);
            w.WriteEndElement();
        }

        private int watermarks;

        // A text watermark is a kept drawing, which the inline walk does not see; written afresh as
        // the VML word art this format shares with its successor.
        private void TextWatermarks(Paragraph p)
        {
            foreach (var n in p.InlineNodes())
                if (n is OpaqueNode && WatermarkMark.Of(n) is { Text: { } text } mark)
                {
                    w.WriteStartElement("r", WordMLNs.W);
                    w.WriteRaw(Watermark.TextShape(text, mark.Options(), mark.Width, mark.Height, ++watermarks));
                    w.WriteEndElement();
                }
        }

        // Properties in the order the format's schema gives them.
        private void ParagraphProperties(Paragraph? p, ParaLook look, ParaLook from, Style? style, Section? sectionEnd)
        {
            bool open = false;
            void Open()
            {
                if (open) return;
                w.WriteStartElement("pPr", WordMLNs.W);
                open = true;
            }
            if (style != null && style.StyleIdentifier != StyleIdentifier.Normal) { Open(); Val("pStyle", style.StyleId); }
            if (look.KeepNext != from.KeepNext) { Open(); Val("keepNext", look.KeepNext ? "on" : "off"); }
            if (look.KeepLines != from.KeepLines) { Open(); Val("keepLines", look.KeepLines ? "on" : "off"); }
            if (look.PageBreakBefore != from.PageBreakBefore) { Open(); Val("pageBreakBefore", look.PageBreakBefore ? "on" : "off"); }
            if (p?.ListFormat.List is { } list)
            {
                Open();
                w.WriteStartElement("listPr", WordMLNs.W);
                Val("ilvl", Math.Clamp(p.ListFormat.ListLevelNumber, 0, 8));
                Val("ilfo", lists.IndexOf(list) + 1);
                w.WriteEndElement();
            }
            if (look.Before != from.Before || look.After != from.After || look.Line != from.Line || look.LineRule != from.LineRule)
            {
                Open();
                w.WriteStartElement("spacing", WordMLNs.W);
                Attr("before", Twips(look.Before));
                Attr("after", Twips(look.After));
                if (look.Line != from.Line || look.LineRule != from.LineRule)
                {
                    Attr("line", look.LineRule == LineSpacingRule.Multiple ? (int)Math.Round(look.Line / 12 * 240) : Twips(look.Line));
                    w.WriteAttributeString("line-rule", WordMLNs.W, look.LineRule switch { LineSpacingRule.Exactly => "exact", LineSpacingRule.AtLeast => "at-least", _ => "auto" });
                }
                w.WriteEndElement();
            }
            if (look.Left != from.Left || look.Right != from.Right || look.FirstLine != from.FirstLine)
            {
                Open();
                w.WriteStartElement("ind", WordMLNs.W);
                Attr("left", Twips(look.Left));
                Attr("right", Twips(look.Right));
                if (look.FirstLine >= 0) Attr("first-line", Twips(look.FirstLine));
                else Attr("hanging", Twips(-look.FirstLine));
                w.WriteEndElement();
            }
            if (look.Alignment != from.Alignment) { Open(); Val("jc", Align(look.Alignment)); }
            if (look.Outline != from.Outline) { Open(); Val("outlineLvl", (int)look.Outline); }
            if (sectionEnd != null) { Open(); SectionProperties(sectionEnd); }
            if (open) w.WriteEndElement();
        }

        private void RunProperties(string? charStyle, RunLook look, RunLook from)
        {
            bool open = false;
            void Open()
            {
                if (open) return;
                w.WriteStartElement("rPr", WordMLNs.W);
                open = true;
            }
            void Toggle(string local, bool now, bool was)
            {
                if (now == was) return;
                Open();
                Val(local, now ? "on" : "off");
            }
            if (charStyle != null && doc.Styles.FindById(charStyle) is { } cs) { Open(); Val("rStyle", cs.StyleId); }
            if (look.Name != from.Name) { Open(); Fonts(look.Name); }
            Toggle("b", look.Bold, from.Bold);
            Toggle("i", look.Italic, from.Italic);
            Toggle("caps", look.Caps, from.Caps);
            Toggle("smallCaps", look.SmallCaps, from.SmallCaps);
            Toggle("strike", look.Strike, from.Strike);
            Toggle("dstrike", look.DoubleStrike, from.DoubleStrike);
            Toggle("vanish", look.Hidden, from.Hidden);
            if (look.Color != from.Color) { Open(); Val("color", look.Color); }
            if (look.Size != from.Size) { Open(); Val("sz", (int)Math.Round(look.Size * 2)); Val("sz-cs", (int)Math.Round(look.Size * 2)); }
            if (look.Underline != from.Underline) { Open(); Val("u", Underline(look.Underline)); }
            if (look.Superscript != from.Superscript || look.Subscript != from.Subscript)
            {
                Open();
                Val("vertAlign", look.Superscript ? "superscript" : look.Subscript ? "subscript" : "baseline");
            }
            if (open) w.WriteEndElement();
        }

        private void Inlines(CompositeNode p, RunLook baseline, bool inCode)
        {
            for (var n = p.FirstChild; n != null; n = n.NextSibling)
            {
                switch (n)
                {
                    case Run r:
                        Run(r, r.Text, baseline, inCode);
                        break;
                    case FieldStart fs:
                        FieldChar(fs, "begin", baseline);
                        inCode = true;
                        break;
                    case FieldSeparator fsep:
                        FieldChar(fsep, "separate", baseline);
                        inCode = false;
                        break;
                    case FieldEnd fe:
                        FieldChar(fe, "end", baseline);
                        inCode = false;
                        break;
                    case Footnote note:
                        Note(note, baseline);
                        break;
                    case Shape s when s.HasImage:
                        Picture(s);
                        break;
                    case BookmarkStart bs:
                        Bookmark(bs.Name, true);
                        break;
                    case BookmarkEnd be:
                        Bookmark(be.Name, false);
                        break;
                    case Markup.StructuredDocumentTag or Markup.SmartTag:
                        Inlines((CompositeNode)n, baseline, inCode);
                        break;
                }
            }
        }

        private void Bookmark(string name, bool start)
        {
            if (!bookmarkIds.TryGetValue(name, out int id))
            {
                if (!start) return;
                bookmarkIds[name] = id = bookmarks++;
            }
            w.WriteStartElement("aml", "annotation", WordMLNs.Aml);
            w.WriteAttributeString("id", WordMLNs.Aml, id.ToString(System.Globalization.CultureInfo.InvariantCulture));
            w.WriteAttributeString("type", WordMLNs.W, start ? "Word.Bookmark.Start" : "Word.Bookmark.End");
            if (start) w.WriteAttributeString("name", WordMLNs.W, name);
            w.WriteEndElement();
        }

        private void FieldChar(Inline c, string type, RunLook baseline)
        {
            w.WriteStartElement("r", WordMLNs.W);
            RunProperties(c.RPr.CharStyle, RunLook.Of(c.Font), baseline);
            w.WriteStartElement("fldChar", WordMLNs.W);
            w.WriteAttributeString("fldCharType", WordMLNs.W, type);
            w.WriteEndElement();
            w.WriteEndElement();
        }

        private void Run(Inline r, string text, RunLook baseline, bool inCode)
        {
            if (text.Length == 0) return;
            w.WriteStartElement("r", WordMLNs.W);
            RunProperties(r.RPr.CharStyle, RunLook.Of(r.Font), baseline);
            // Tabs and breaks are elements of their own between pieces of text.
            int start = 0;
            for (int i = 0; i <= text.Length; i++)
            {
                char c = i < text.Length ? text[i] : '\0';
                if (i < text.Length && c is not ('\t' or ControlChar.LineBreakChar or ControlChar.PageBreakChar or ControlChar.ColumnBreakChar or '\r' or '\a')) continue;
                if (i > start) w.WriteElementString(inCode ? "instrText" : "t", WordMLNs.W, XmlSafe(text, start, i - start));
                start = i + 1;
                if (i == text.Length) break;
                switch (c)
                {
                    case '\t': Empty("tab"); break;
                    case ControlChar.LineBreakChar: Empty("br"); break;
                    case ControlChar.PageBreakChar or ControlChar.ColumnBreakChar:
                        w.WriteStartElement("br", WordMLNs.W);
                        w.WriteAttributeString("type", WordMLNs.W, c == ControlChar.PageBreakChar ? "page" : "column");
                        w.WriteEndElement();
                        break;
                }
            }
            w.WriteEndElement();
        }

        // Characters XML cannot carry are left out rather than making the file unreadable.
        private static string XmlSafe(string s, int start, int length)
        {
            var piece = s.Substring(start, length);
            foreach (var c in piece)
                if (c < 0x20 && c != '\t' || c is '\uFFFE' or '\uFFFF') return new string(piece.Where(ch => !(ch < 0x20 && ch != '\t') && ch is not ('\uFFFE' or '\uFFFF')).ToArray());
            return piece;
        }

        private void Note(Footnote note, RunLook baseline)
        {
            w.WriteStartElement("r", WordMLNs.W);
            // The reference mark's look is its character style's.
            RunProperties(note.RPr.CharStyle, baseline with { Superscript = note.Font.Superscript || baseline.Superscript }, baseline);
            w.WriteStartElement(note.FootnoteType == FootnoteType.Endnote ? "endnote" : "footnote", WordMLNs.W);
            Blocks(note, null, null);
            w.WriteEndElement();
            w.WriteEndElement();
        }

        private void Picture(Shape s)
        {
            var bytes = s.ImageData.ImageBytes!;
            var ext = ImageInfo.Detect(bytes).Type switch
            {
                ImageType.Png => "png",
                ImageType.Jpeg => "jpg",
                ImageType.Gif => "gif",
                ImageType.Bmp => "bmp",
                ImageType.Emf => "emf",
                ImageType.Wmf => "wmf",
                ImageType.Tiff => "tif",
                var t => throw new NotSupportedException($"A {t} picture cannot be saved to WordprocessingML 2003."),
            };
            var name = $"wordml://{++pictures:D8}.{ext}";
            w.WriteStartElement("r", WordMLNs.W);
            w.WriteStartElement("pict", WordMLNs.W);
            w.WriteStartElement("binData", WordMLNs.W);
            w.WriteAttributeString("name", WordMLNs.W, name);
            w.WriteBase64(bytes, 0, bytes.Length);
            w.WriteEndElement();
            w.WriteStartElement("v", "shape", WordMLNs.V);
            w.WriteAttributeString("id", "_x0000_i" + (1024 + pictures));
            w.WriteAttributeString("type", "#_x0000_t75");
            w.WriteAttributeString("style", FormattableString.Invariant($"width:{s.Width:0.##}pt;height:{s.Height:0.##}pt"));
            if (s.AlternativeText.Length > 0) w.WriteAttributeString("alt", s.AlternativeText);
            w.WriteStartElement("v", "imagedata", WordMLNs.V);
            w.WriteAttributeString("src", name);
            if (s.Title.Length > 0) w.WriteAttributeString("title", WordMLNs.O, s.Title);
            w.WriteEndElement();
            w.WriteEndElement();
            w.WriteEndElement();
            w.WriteEndElement();
        }

        private void Table(Table t)
        {
            var rows = t.Rows.ToArray();
            if (rows.Length == 0) return;
            w.WriteStartElement("tbl", WordMLNs.W);
            w.WriteStartElement("tblPr", WordMLNs.W);
            if (t.StyleIdentifier != StyleIdentifier.TableNormal && t.TableStyle is { } ts) Val("tblStyle", ts.StyleId);
            w.WriteStartElement("tblW", WordMLNs.W);
            Attr("w", 0);
            w.WriteAttributeString("type", WordMLNs.W, "auto");
            w.WriteEndElement();
            if (t.Alignment != TableAlignment.Left) Val("jc", t.Alignment == TableAlignment.Center ? "center" : "right");
            if (t.Attrs.Where(a => a is >= FormatAttr.BorderTop and <= FormatAttr.BorderInsideV).IsEmpty is false &&
                new[] { BorderType.Top, BorderType.Left, BorderType.Bottom, BorderType.Right, BorderType.Horizontal, BorderType.Vertical }
                    .Any(side => t.Attrs.Get(Tables.Table.Side(side)) is BorderLine { Visible: true }))
            {
                w.WriteStartElement("tblBorders", WordMLNs.W);
                foreach (var side in new[] { "top", "left", "bottom", "right", "insideH", "insideV" })
                {
                    w.WriteStartElement(side, WordMLNs.W);
                    w.WriteAttributeString("val", WordMLNs.W, "single");
                    Attr("sz", 4);
                    Attr("space", 0);
                    w.WriteAttributeString("color", WordMLNs.W, "auto");
                    w.WriteEndElement();
                }
                w.WriteEndElement();
            }
            w.WriteEndElement();
            // The grid: the widest row's cells, their widths shared out where none is given.
            var widest = rows.OrderByDescending(r => r.Cells.ToArray().Sum(c => c.Span)).First();
            int cols = widest.Cells.ToArray().Sum(c => c.Span);
            var ps = ((Section?)t.GetAncestor(NodeType.Section))?.PageSetup;
            double textWidth = ps != null ? ps.PageWidth - ps.LeftMargin - ps.RightMargin : 432;
            w.WriteStartElement("tblGrid", WordMLNs.W);
            foreach (var c in widest.Cells)
            {
                double width = c.CellFormat.Width > 0 ? c.CellFormat.Width : textWidth * c.Span / cols;
                for (int k = 0; k < c.Span; k++)
                {
                    w.WriteStartElement("gridCol", WordMLNs.W);
                    Attr("w", Twips(width / c.Span));
                    w.WriteEndElement();
                }
            }
            w.WriteEndElement();
            foreach (var row in rows)
            {
                w.WriteStartElement("tr", WordMLNs.W);
                if (row.RowFormat.HeadingFormat)
                {
                    w.WriteStartElement("trPr", WordMLNs.W);
                    Val("tblHeader", "on");
                    w.WriteEndElement();
                }
                foreach (var cell in row.Cells)
                {
                    var cf = cell.CellFormat;
                    w.WriteStartElement("tc", WordMLNs.W);
                    w.WriteStartElement("tcPr", WordMLNs.W);
                    w.WriteStartElement("tcW", WordMLNs.W);
                    Attr("w", Twips(cf.Width > 0 ? cf.Width : textWidth * cell.Span / cols));
                    w.WriteAttributeString("type", WordMLNs.W, "dxa");
                    w.WriteEndElement();
                    if (cell.Span > 1) Val("gridSpan", cell.Span);
                    if (cf.HorizontalMerge != CellMerge.None) Val("hmerge", cf.HorizontalMerge == CellMerge.First ? "restart" : "continue");
                    if (cf.VerticalMerge != CellMerge.None) Val("vmerge", cf.VerticalMerge == CellMerge.First ? "restart" : "continue");
                    if (cf.VerticalAlignment != CellVerticalAlignment.Top)
                        Val("vAlign", cf.VerticalAlignment == CellVerticalAlignment.Center ? "center" : "bottom");
                    w.WriteEndElement();
                    // A cell holds at least one paragraph in every reader.
                    if (cell.FirstChild == null)
                    {
                        Empty("p");
                    }
                    else
                    {
                        Blocks(cell, null, null);
                        if (cell.LastChild is Table) Empty("p");
                    }
                    w.WriteEndElement();
                }
                w.WriteEndElement();
            }
            w.WriteEndElement();
        }
    }
}
