using System.Globalization;
using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Notes;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;
using Quorix.Folio.Text;

namespace Quorix.Folio.Formats.Rtf;

/// <summary>Rich Text Format: font and colour tables, a style sheet with the paragraph styles used,
/// list tables, paragraphs with their formatting, runs, fields, pictures, notes, tables, headers and
/// footers, and sections with their page set-up.</summary>
internal sealed class RtfWriter : IDocumentWriter
{
    public SaveFormat Format => SaveFormat.Rtf;

    static RtfWriter() => Encoding.RegisterProvider(CodePagesEncodingProvider.Instance);

    public SaveOutputParameters Write(Document document, Stream output, SaveOptions options, string? path)
    {
        var o = options as RtfSaveOptions ?? throw new ArgumentException("RTF is saved with RtfSaveOptions.", nameof(options));
        var body = new Emitter(document, o);
        var text = body.Document();
        // RTF is 7-bit: everything else was written as escapes.
        output.Write(Encoding.ASCII.GetBytes(text));
        return new SaveOutputParameters("application/rtf");
    }

    private sealed class Emitter
    {
        private readonly Document doc;
        private readonly RtfSaveOptions options;
        private readonly List<string> fonts = new();
        private readonly List<string> colors = new();
        private readonly List<Style> styles = new();
        private readonly List<Lists.List> lists = new();
        private readonly ListLabeler labels;
        private readonly StringBuilder sb = new(1 << 16);

        public Emitter(Document doc, RtfSaveOptions options)
        {
            this.doc = doc;
            this.options = options;
            labels = new ListLabeler(doc);
            Font(doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal).Font.Name);
        }

        private int Font(string name)
        {
            int i = fonts.IndexOf(name);
            if (i >= 0) return i;
            fonts.Add(name);
            return fonts.Count - 1;
        }

        // Colour 0 is "auto".
        private int Color(string hex)
        {
            int i = colors.IndexOf(hex);
            if (i >= 0) return i + 1;
            colors.Add(hex);
            return colors.Count;
        }

        private int StyleIndex(Style s)
        {
            int i = styles.IndexOf(s);
            if (i >= 0) return i;
            styles.Add(s);
            return styles.Count - 1;
        }

        private int ListIndex(Lists.List l)
        {
            int i = lists.IndexOf(l);
            if (i >= 0) return i + 1;
            lists.Add(l);
            return lists.Count;
        }

        public string Document()
        {
            StyleIndex(doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal));
            var secs = doc.Sections.ToArray();
            for (int i = 0; i < secs.Length; i++)
            {
                if (i > 0) sb.Append("\\sect");
                Section(secs[i], i == 0);
            }
            var head = new StringBuilder();
            head.Append("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1");
            head.Append("{\\fonttbl");
            for (int i = 0; i < fonts.Count; i++) head.Append("{\\f").Append(i).Append(' ').Append(Escape(fonts[i])).Append(";}");
            head.Append("}\n{\\colortbl;");
            foreach (var c in colors)
                head.Append("\\red").Append(Convert.ToInt32(c[..2], 16)).Append("\\green").Append(Convert.ToInt32(c[2..4], 16)).Append("\\blue").Append(Convert.ToInt32(c[4..], 16)).Append(';');
            head.Append("}\n{\\stylesheet");
            for (int i = 0; i < styles.Count; i++)
            {
                var s = styles[i];
                head.Append("{\\s").Append(i);
                int level = s.IsHeading ? s.StyleIdentifier - StyleIdentifier.Heading1 : -1;
                if (level >= 0) head.Append("\\outlinelevel").Append(level);
                var f = s.Font;
                if (f.Bold) head.Append("\\b");
                if (f.Italic) head.Append("\\i");
                head.Append("\\f").Append(Font(f.Name)).Append("\\fs").Append(HalfPoints(f.Size));
                head.Append(' ').Append(Escape(s.Name)).Append(";}");
            }
            head.Append("}\n");
            if (lists.Count > 0) head.Append(ListTables());
            head.Append(sb).Append("}\n");
            return head.ToString();
        }

        private static int HalfPoints(double pt) => (int)Math.Round(pt * 2);

        private static int Twips(double pt) => (int)Math.Round(pt * 20);

        private string ListTables()
        {
            var t = new StringBuilder("{\\*\\listtable");
            for (int i = 0; i < lists.Count; i++)
            {
                var l = lists[i];
                t.Append("{\\list\\listtemplateid").Append(i + 1);
                for (int k = 0; k < 9; k++)
                {
                    var lvl = l.ListLevels[k];
                    bool bullet = lvl.NumberStyle == NumberStyle.Bullet;
                    int nfc = bullet ? 23 : lvl.NumberStyle switch
                    {
                        NumberStyle.UppercaseRoman => 1,
                        NumberStyle.LowercaseRoman => 2,
                        NumberStyle.UppercaseLetter => 3,
                        NumberStyle.LowercaseLetter => 4,
                        _ => 0,
                    };
                    t.Append("{\\listlevel\\levelnfc").Append(nfc).Append("\\leveljc0\\levelfollow0\\levelstartat").Append(lvl.StartAt);
                    // The level text is a length-prefixed pattern whose level placeholders are numbered 0x00.. .
                    var pattern = bullet ? (lvl.NumberFormat.Length > 0 ? lvl.NumberFormat : "\u2022") : lvl.NumberFormat;
                    var text = new StringBuilder();
                    var numbers = new StringBuilder();
                    for (int c = 0; c < pattern.Length; c++)
                    {
                        if (!bullet && pattern[c] == '%' && c + 1 < pattern.Length && pattern[c + 1] is >= '1' and <= '9')
                        {
                            numbers.Append("\\'").Append((text.Length + 1).ToString("x2"));
                            text.Append((char)(pattern[c + 1] - '1'));
                            c++;
                        }
                        else text.Append(pattern[c]);
                    }
                    t.Append("{\\leveltext\\'").Append(text.Length.ToString("x2"));
                    foreach (var ch in text.ToString()) t.Append(ch < 10 ? "\\'" + ((int)ch).ToString("x2") : Escape(ch.ToString()));
                    t.Append(";}{\\levelnumbers").Append(numbers).Append(";}");
                    t.Append("\\fi-360\\li").Append(720 * (k + 1)).Append('}');
                }
                t.Append("\\listid").Append(i + 1).Append('}');
            }
            t.Append("}\n{\\*\\listoverridetable");
            for (int i = 0; i < lists.Count; i++) t.Append("{\\listoverride\\listid").Append(i + 1).Append("\\listoverridecount0\\ls").Append(i + 1).Append('}');
            t.Append("}\n");
            return t.ToString();
        }

        private void Section(Section s, bool first)
        {
            var ps = s.PageSetup;
            sb.Append("\\sectd");
            if (!first) sb.Append(ps.SectionStart switch { SectionStart.Continuous => "\\sbknone", SectionStart.EvenPage => "\\sbkeven", SectionStart.OddPage => "\\sbkodd", _ => "\\sbkpage" });
            sb.Append("\\pgwsxn").Append(Twips(ps.PageWidth)).Append("\\pghsxn").Append(Twips(ps.PageHeight))
              .Append("\\marglsxn").Append(Twips(ps.LeftMargin)).Append("\\margrsxn").Append(Twips(ps.RightMargin))
              .Append("\\margtsxn").Append(Twips(ps.TopMargin)).Append("\\margbsxn").Append(Twips(ps.BottomMargin));
            if (ps.DifferentFirstPageHeaderFooter) sb.Append("\\titlepg");
            foreach (var (type, word) in new[]
                     {
                         (HeaderFooterType.HeaderPrimary, "header"), (HeaderFooterType.FooterPrimary, "footer"),
                         (HeaderFooterType.HeaderFirst, "headerf"), (HeaderFooterType.FooterFirst, "footerf"),
                     })
                if (s.HeadersFooters[type] is { } hf)
                {
                    sb.Append("{\\").Append(word).Append(' ');
                    inHeader = hf.IsHeader;
                    Blocks(hf, false);
                    inHeader = false;
                    sb.Append('}');
                }
            sb.Append('\n');
            if (s.Body != null) Blocks(s.Body, false);
        }

        private void Blocks(CompositeNode container, bool inCell)
        {
            for (var n = container.FirstChild; n != null; n = n.NextSibling)
            {
                switch (n)
                {
                    case Paragraph p:
                        Paragraph(p, inCell && n.NextSibling == null, inCell);
                        break;
                    case Table t when inCell:
                        // Nested tables are written flat: their cells' paragraphs stay in the outer cell.
                        foreach (var inner in t.GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>().ToArray())
                            Paragraph(inner, false, true);
                        break;
                    case Table t:
                        Table(t);
                        break;
                }
            }
        }

        private void Paragraph(Paragraph p, bool endsCell, bool inTable)
        {
            sb.Append("\\pard\\plain");
            if (inTable) sb.Append("\\intbl");
            var pf = p.ParagraphFormat;
            var style = pf.Style;
            sb.Append("\\s").Append(StyleIndex(style));
            int heading = ModelFacts.HeadingLevel(p);
            if (heading > 0) sb.Append("\\outlinelevel").Append(heading - 1);
            sb.Append(pf.Alignment switch { ParagraphAlignment.Center => "\\qc", ParagraphAlignment.Right => "\\qr", ParagraphAlignment.Justify or ParagraphAlignment.Distributed => "\\qj", _ => "\\ql" });
            if (pf.LeftIndent != 0) sb.Append("\\li").Append(Twips(pf.LeftIndent));
            if (pf.RightIndent != 0) sb.Append("\\ri").Append(Twips(pf.RightIndent));
            if (pf.FirstLineIndent != 0) sb.Append("\\fi").Append(Twips(pf.FirstLineIndent));
            if (pf.SpaceBefore != 0) sb.Append("\\sb").Append(Twips(pf.SpaceBefore));
            if (pf.SpaceAfter != 0) sb.Append("\\sa").Append(Twips(pf.SpaceAfter));
            if (pf.PageBreakBefore) sb.Append("\\pagebb");
            if (pf.KeepWithNext) sb.Append("\\keepn");
            var label = labels.Next(p);
            if (label is { } l)
            {
                int ls = ListIndex(p.ListFormat.List!);
                sb.Append("\\ls").Append(ls).Append("\\ilvl").Append(l.Level);
                if (p.ParagraphFormat.LeftIndent == 0) sb.Append("\\li").Append(720 * (l.Level + 1)).Append("\\fi-360");
                // Readers that ignore list tables still show the label.
                if (!options.ExportCompactSize) sb.Append("{\\listtext ").Append(Escape(l.Text)).Append("\\tab}");
            }
            var styleFont = style.Font;
            sb.Append("\\f").Append(Font(styleFont.Name)).Append("\\fs").Append(HalfPoints(styleFont.Size));
            if (heading > 0 && styleFont.Bold) sb.Append("\\b");
            sb.Append(' ');
            Inlines(p);
            sb.Append(endsCell ? "\\cell" : "\\par");
            if (options.PrettyFormat) sb.Append('\n');
        }

        private void Inlines(Paragraph p)
        {
            // Text watermarks are kept drawings, which the walk below does not see.
            if (inHeader)
                foreach (var kept in p.InlineNodes())
                    if (kept is OpaqueNode && WatermarkMark.Of(kept) is { } textMark) WatermarkShape(textMark, p);
            for (var n = p.FirstChild; n != null; n = n.NextSibling)
            {
                switch (n)
                {
                    case FieldStart fs:
                        n = Field(fs);
                        break;
                    case Run r:
                        Run(r, r.Text);
                        break;
                    case Footnote note:
                        sb.Append("{\\super\\chftn}{\\footnote");
                        if (note.FootnoteType == FootnoteType.Endnote) sb.Append("\\ftnalt");
                        sb.Append("{\\super\\chftn} ");
                        bool firstPara = true;
                        foreach (var np in note.Paragraphs.ToArray())
                        {
                            if (!firstPara) sb.Append("\\par ");
                            Inlines(np);
                            firstPara = false;
                        }
                        sb.Append('}');
                        break;
                    case Shape s when WatermarkMark.Of(s) is { } pictureMark:
                        WatermarkShape(pictureMark, p);
                        break;
                    case Shape s when s.HasImage:
                        Picture(s);
                        break;
                    case OpaqueNode o when o.VisibleText.Length > 0 && o.Kind != OpaqueKind.Block:
                        sb.Append(Escape(o.VisibleText));
                        break;
                }
            }
        }

        // A field is written whole: its code as the instruction, its result as what readers show.
        private Node Field(FieldStart start)
        {
            var code = new StringBuilder();
            Node? n = start.NextSibling;
            int depth = 0;
            for (; n != null && !(depth == 0 && n is FieldSeparator or FieldEnd); n = n.NextSibling)
            {
                if (n is FieldStart) depth++;
                else if (n is FieldEnd) depth--;
                else if (n is Run r) code.Append(r.Text);
            }
            sb.Append("{\\field{\\*\\fldinst{").Append(Escape(code.ToString().Trim())).Append("}}{\\fldrslt{");
            if (n is FieldSeparator)
            {
                depth = 0;
                for (n = n.NextSibling; n != null && !(depth == 0 && n is FieldEnd); n = n.NextSibling)
                {
                    if (n is FieldStart) depth++;
                    else if (n is FieldEnd) depth--;
                    else if (n is Run r) Run(r, r.Text);
                }
            }
            sb.Append("}}}");
            return n ?? start.ParentNode!.LastChild!;
        }

        private void Run(Inline r, string text)
        {
            if (text.Length == 0) return;
            var f = r.Font;
            sb.Append('{');
            if (f.Bold) sb.Append("\\b");
            if (f.Italic) sb.Append("\\i");
            if (f.Underline != Underline.None) sb.Append(f.Underline switch { Underline.Double => "\\uldb", Underline.Dotted => "\\uld", Underline.Words => "\\ulw", _ => "\\ul" });
            if (f.StrikeThrough) sb.Append("\\strike");
            if (f.Superscript) sb.Append("\\super");
            else if (f.Subscript) sb.Append("\\sub");
            if (f.AllCaps) sb.Append("\\caps");
            if (f.SmallCaps) sb.Append("\\scaps");
            if (f.Hidden) sb.Append("\\v");
            sb.Append("\\f").Append(Font(f.Name)).Append("\\fs").Append(HalfPoints(f.Size));
            if (f.ColorHex is { Length: 6 } c) sb.Append("\\cf").Append(Color(c));
            sb.Append(' ').Append(Escape(text)).Append('}');
        }

        private void Picture(Shape s)
        {
            var bytes = s.ImageData.ImageBytes!;
            var info = ImageInfo.Detect(bytes);
            string? kind = info.Type switch { ImageType.Png => "\\pngblip", ImageType.Jpeg => "\\jpegblip", _ => null };
            if (kind == null)
                throw new NotSupportedException($"A {info.Type} picture cannot be saved to RTF; only PNG and JPEG pictures can.");
            sb.Append("{\\pict").Append(kind)
              .Append("\\picw").Append(Math.Max(1, info.Width)).Append("\\pich").Append(Math.Max(1, info.Height))
              .Append("\\picwgoal").Append(Twips(s.Width)).Append("\\pichgoal").Append(Twips(s.Height)).Append('\n');
            sb.Append(Convert.ToHexString(bytes).ToLowerInvariant()).Append('}');
        }

        private int shapeIds;
        private bool inHeader;

        /// <summary>A watermark as word processors write one in RTF: a shape behind the text, centred on
        /// the margins, of word-art text (turned, in a colour with an opacity) or of a picture.</summary>
        private void WatermarkShape(WatermarkMark mark, Paragraph anchor)
        {
            var ps = ((Section?)anchor.GetAncestor(NodeType.Section))?.PageSetup;
            double areaWidth = ps != null ? ps.PageWidth - ps.LeftMargin - ps.RightMargin : 468;
            double areaHeight = ps != null ? ps.PageHeight - ps.TopMargin - ps.BottomMargin : 648;
            double left = (areaWidth - mark.Width) / 2, top = (areaHeight - mark.Height) / 2;
            int id = ++shapeIds;
            sb.Append("{\\shp{\\*\\shpinst\\shpleft").Append(Twips(left)).Append("\\shptop").Append(Twips(top))
              .Append("\\shpright").Append(Twips(left + mark.Width)).Append("\\shpbottom").Append(Twips(top + mark.Height))
              .Append("\\shpfhdr1\\shpbxmargin\\shpbxignore\\shpbymargin\\shpbyignore\\shpwr3\\shpwrk0\\shpfblwtxt1\\shpz0\\shplid").Append(2048 + id);
            void Prop(string name, string value) => sb.Append("{\\sp{\\sn ").Append(name).Append("}{\\sv ").Append(value).Append("}}");
            string Int(double v) => ((long)Math.Round(v)).ToString(CultureInfo.InvariantCulture);
            if (mark.Picture is { } picture)
            {
                Prop("shapeType", "75");
                sb.Append("{\\sp{\\sn pib}{\\sv ");
                Picture(picture);
                sb.Append("}}");
                if (mark.Washout)
                {
                    // The fade word processors give a washed-out picture: brighter, with less contrast.
                    Prop("pictureBrightness", "22938");
                    Prop("pictureContrast", "19661");
                }
                Prop("wzName", Watermark.PictureName + id);
            }
            else
            {
                var rgb = mark.Argb & 0xFFFFFF;
                Prop("shapeType", "136");
                Prop("rotation", Int(mark.Rotation * 65536));
                Prop("gtextUNICODE", Escape(mark.Text!));
                Prop("gtextSize", "65536");
                Prop("gtextFont", Escape(mark.FontFamily));
                Prop("fGtext", "1");
                Prop("fillColor", Int((rgb >> 16) | (rgb & 0xFF00) | (rgb & 0xFF) << 16));
                Prop("fillOpacity", Int(mark.Opacity * 65536));
                Prop("fLine", "0");
                Prop("wzName", Watermark.TextShapeId + id);
            }
            Prop("posh", "2");
            Prop("posrelh", "0");
            Prop("posv", "2");
            Prop("posrelv", "0");
            Prop("fBehindDocument", "1");
            Prop("fLayoutInCell", "1");
            sb.Append("}}");
        }

        private void Table(Table t)
        {
            var rows = t.Rows.ToArray();
            int cols = rows.Max(r => r.Cells.ToArray().Sum(c => c.Span));
            // Cells without a width share the text width.
            var ps = ((Section?)t.GetAncestor(NodeType.Section))?.PageSetup;
            double textWidth = ps != null ? ps.PageWidth - ps.LeftMargin - ps.RightMargin : 432;
            foreach (var row in rows)
            {
                sb.Append("\\trowd\\trgaph108");
                if (row.RowFormat.HeadingFormat) sb.Append("\\trhdr");
                double x = 0;
                foreach (var cell in row.Cells)
                {
                    var cf = cell.CellFormat;
                    if (cf.VerticalMerge == CellMerge.First) sb.Append("\\clvmgf");
                    else if (cf.VerticalMerge == CellMerge.Previous) sb.Append("\\clvmrg");
                    sb.Append("\\clbrdrt\\brdrs\\clbrdrl\\brdrs\\clbrdrb\\brdrs\\clbrdrr\\brdrs");
                    x += cf.Width > 0 ? cf.Width : textWidth * cell.Span / cols;
                    sb.Append("\\cellx").Append(Twips(x));
                }
                sb.Append('\n');
                foreach (var cell in row.Cells)
                {
                    if (cell.FirstChild == null) sb.Append("\\pard\\intbl\\cell");
                    else Blocks(cell, true);
                }
                sb.Append("\\row\n");
            }
        }

        private static readonly Encoding Western = Encoding.GetEncoding(1252, EncoderFallback.ExceptionFallback, DecoderFallback.ExceptionFallback);

        private static byte? WesternByte(char c)
        {
            try
            {
                var bytes = Western.GetBytes(new[] { c });
                return bytes.Length == 1 ? bytes[0] : null;
            }
            catch (EncoderFallbackException) { return null; }
        }

        internal static string Escape(string s)
        {
            var e = new StringBuilder(s.Length + 8);
            foreach (var c in s)
            {
                switch (c)
                {
                    case '\\': e.Append("\\\\"); break;
                    case '{': e.Append("\\{"); break;
                    case '}': e.Append("\\}"); break;
                    case '\t': e.Append("\\tab "); break;
                    case ControlChar.LineBreakChar: e.Append("\\line "); break;
                    case ControlChar.PageBreakChar: e.Append("\\page "); break;
                    case ControlChar.ColumnBreakChar: e.Append("\\column "); break;
                    case '\u00a0': e.Append("\\~"); break;
                    case '\r' or '\n' or '\a': break;
                    default:
                        if (c >= 0x20 && c < 0x80) e.Append(c);
                        // Characters of the code page as its bytes, which every reader decodes alike;
                        // others as Unicode escapes with a question mark for readers without them.
                        else if (c >= 0xA0 && WesternByte(c) is { } hh) e.Append("\\'").Append(hh.ToString("x2"));
                        else if (c >= 0x20) e.Append("\\u").Append(((short)c).ToString(CultureInfo.InvariantCulture)).Append('?');
                        break;
                }
            }
            return e.ToString();
        }
    }
}
