using System.Globalization;
using System.Xml;
using System.Xml.Linq;
using Quorix.Folio.Fields;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Loading;
using Quorix.Folio.Tables;
using static Quorix.Folio.Formats.WordML.WordMLValues;
using List = Quorix.Folio.Lists.List;
using LoadOptions = Quorix.Folio.Loading.LoadOptions;

namespace Quorix.Folio.Formats.WordML;

/// <summary>WordprocessingML 2003: styles resolved through their bases, lists, paragraphs, runs with
/// their formatting, fields, links, bookmarks, notes, tables with spans and merges, pictures from
/// their base64 data, and sections with page set-up, headers and footers.</summary>
internal sealed class WordMLReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.WordML;

    private static readonly XNamespace W = WordMLNs.W;
    private static readonly XNamespace Wx = WordMLNs.Wx;
    private static readonly XNamespace V = WordMLNs.V;
    private static readonly XNamespace O = WordMLNs.O;
    private static readonly XNamespace Aml = WordMLNs.Aml;

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        var settings = new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null };
        XDocument x;
        try
        {
            using var r = XmlReader.Create(new MemoryStream(data, false), settings);
            x = XDocument.Load(r, System.Xml.Linq.LoadOptions.PreserveWhitespace);
        }
        catch (XmlException e)
        {
            throw new FileCorruptedException("The WordprocessingML 2003 document is not well-formed XML: " + e.Message, e);
        }
        if (x.Root?.Name != W + "wordDocument")
            throw new FileCorruptedException("The XML is not a WordprocessingML 2003 document: its root is not w:wordDocument.");
        new Walker(new FlowBuilder(document), x.Root).Run();
    }

    private static string? Val(XElement? e) => e?.Attribute(W + "val")?.Value;

    private static int? Int(string? s) =>
        int.TryParse(s, NumberStyles.Integer, CultureInfo.InvariantCulture, out var v) ? v : null;

    private static double Points(string? twips, double otherwise) => Int(twips) is { } t ? t / 20.0 : otherwise;

    // Lengths as far as the model takes them: a file's wild value is kept at the nearest it allows.
    private static double Bounded(double points, double min = -1584) => Math.Clamp(points, min, 1584);

    private static bool Toggle(XElement e) => On(Val(e));

    private sealed class Walker
    {
        private readonly FlowBuilder b;
        private readonly Document doc;
        private readonly XElement root;
        private readonly Dictionary<string, Style> styles = new();
        private readonly Dictionary<string, XElement> listDefs = new();
        private readonly Dictionary<string, List?> lists = new();
        private readonly Dictionary<string, byte[]> pictures = new();
        private readonly Dictionary<string, string> bookmarkNames = new();

        public Walker(FlowBuilder b, XElement root)
        {
            this.b = b;
            doc = b.Document;
            this.root = root;
        }

        public void Run()
        {
            foreach (var bin in root.Descendants(W + "binData"))
            {
                if (bin.Attribute(W + "name")?.Value is not { } name) continue;
                try
                {
                    pictures[name] = Convert.FromBase64String(bin.Value);
                }
                catch (FormatException e)
                {
                    throw new FileCorruptedException($"The picture data '{name}' is not valid base64.", e);
                }
            }
            Properties();
            // The format has no document defaults beyond the default font; sizes default to 10 pt.
            var fonts = root.Element(W + "fonts")?.Element(W + "defaultFonts");
            doc.Styles.DefaultFont.Name = fonts?.Attribute(W + "ascii")?.Value is { Length: > 0 } df ? df : "Times New Roman";
            doc.Styles.DefaultFont.Size = 10;
            Styles();
            foreach (var def in root.Element(W + "lists")?.Elements(W + "listDef") ?? Enumerable.Empty<XElement>())
                if (def.Attribute(W + "listDefId")?.Value is { } id) listDefs[id] = def;
            var body = root.Element(W + "body") ?? throw new FileCorruptedException("The WordprocessingML 2003 document has no body.");
            Blocks(body, true);
            b.Finish();
            // Every header had it; set once, it goes back into every header.
            if (watermark is { Text: { } text } mark) doc.Watermark.SetText(text, mark.Options());
        }

        private WatermarkMark? watermark;

        private void Properties()
        {
            var p = root.Element(O + "DocumentProperties");
            if (p == null) return;
            var props = doc.BuiltInDocumentProperties;
            if (p.Element(O + "Title")?.Value is { } t) props.Title = t;
            if (p.Element(O + "Subject")?.Value is { } s) props.Subject = s;
            if (p.Element(O + "Author")?.Value is { } a) props.Author = a;
            if (p.Element(O + "Keywords")?.Value is { } k) props.Keywords = k;
            if (p.Element(O + "Description")?.Value is { } d) props.Comments = d;
        }

        private void Styles()
        {
            var defs = new List<(XElement X, Style S)>();
            foreach (var x in root.Element(W + "styles")?.Elements(W + "style") ?? Enumerable.Empty<XElement>())
            {
                var id = x.Attribute(W + "styleId")?.Value;
                var name = Val(x.Element(W + "name")) ?? id;
                if (string.IsNullOrEmpty(id) || string.IsNullOrEmpty(name) || styles.ContainsKey(id)) continue;
                var type = x.Attribute(W + "type")?.Value switch { "character" => StyleType.Character, "table" => StyleType.Table, "list" => StyleType.List, _ => StyleType.Paragraph };
                if (type == StyleType.List) continue;
                var s = doc.Styles[name] is { } existing && existing.Type == type ? existing : doc.Styles[name] == null ? doc.Styles.Add(type, name) : null;
                if (s == null) continue;
                s.Font.ClearFormatting();
                if (type == StyleType.Paragraph) s.ParagraphFormat.ClearFormatting();
                styles[id] = s;
                defs.Add((x, s));
            }
            foreach (var (x, s) in defs)
            {
                var baseStyle = Val(x.Element(W + "basedOn")) is { } bid && styles.TryGetValue(bid, out var bs) && bs != s ? bs : null;
                if (baseStyle != null && !baseStyle.Ancestors().Contains(s) && baseStyle.Type == s.Type) s.BaseStyleName = baseStyle.Name;
                else if (s.Type == StyleType.Paragraph) s.BaseStyleName = "";
                if (Val(x.Element(W + "next")) is { } nid && styles.TryGetValue(nid, out var next) && next.Type == StyleType.Paragraph) s.NextParagraphStyleName = next.Name;
            }
            // Bases first, so that each style states only what differs from its base.
            var done = new HashSet<Style>();
            var byStyle = defs.ToDictionary(d => d.S, d => d.X);
            void Resolve(Style s)
            {
                if (!done.Add(s)) return;
                foreach (var a in s.Ancestors()) if (byStyle.ContainsKey(a)) Resolve(a);
                var x = byStyle[s];
                if (s.Type == StyleType.Paragraph)
                {
                    var from = ParaLook.Of(s.ParagraphFormat);
                    ReadPara(x.Element(W + "pPr"), from).ApplyTo(s.ParagraphFormat, from);
                }
                if (s.Type != StyleType.Table)
                {
                    var from = RunLook.Of(s.Font);
                    ReadRun(x.Element(W + "rPr"), from).ApplyTo(s.Font, from);
                }
            }
            foreach (var (_, s) in defs) Resolve(s);
        }

        private static ParaLook ReadPara(XElement? pPr, ParaLook look)
        {
            if (pPr == null) return look;
            foreach (var e in pPr.Elements())
            {
                if (e.Name.Namespace != W) continue;
                switch (e.Name.LocalName)
                {
                    case "jc": look = look with { Alignment = Align(Val(e)) }; break;
                    case "keepNext": look = look with { KeepNext = Toggle(e) }; break;
                    case "keepLines": look = look with { KeepLines = Toggle(e) }; break;
                    case "pageBreakBefore": look = look with { PageBreakBefore = Toggle(e) }; break;
                    case "outlineLvl":
                        if (Int(Val(e)) is { } ol && ol is >= 0 and <= 9) look = look with { Outline = (OutlineLevel)ol };
                        break;
                    case "spacing":
                        look = look with { Before = Bounded(Points(e.Attribute(W + "before")?.Value, look.Before)), After = Bounded(Points(e.Attribute(W + "after")?.Value, look.After)) };
                        if (Int(e.Attribute(W + "line")?.Value) is { } line)
                        {
                            var rule = e.Attribute(W + "line-rule")?.Value switch { "exact" => LineSpacingRule.Exactly, "at-least" => LineSpacingRule.AtLeast, _ => LineSpacingRule.Multiple };
                            look = look with { LineRule = rule, Line = Bounded(rule == LineSpacingRule.Multiple ? line / 240.0 * 12 : line / 20.0, 0) };
                        }
                        break;
                    case "ind":
                        look = look with { Left = Bounded(Points(e.Attribute(W + "left")?.Value, look.Left)), Right = Bounded(Points(e.Attribute(W + "right")?.Value, look.Right)) };
                        if (Int(e.Attribute(W + "first-line")?.Value) is { } fl) look = look with { FirstLine = Bounded(fl / 20.0) };
                        if (Int(e.Attribute(W + "hanging")?.Value) is { } h) look = look with { FirstLine = Bounded(-h / 20.0) };
                        break;
                }
            }
            return look;
        }

        private static RunLook ReadRun(XElement? rPr, RunLook look)
        {
            if (rPr == null) return look;
            foreach (var e in rPr.Elements())
            {
                if (e.Name.Namespace != W) continue;
                switch (e.Name.LocalName)
                {
                    case "rFonts":
                        if ((e.Attribute(W + "ascii") ?? e.Attribute(W + "h-ansi"))?.Value is { Length: > 0 } name) look = look with { Name = name };
                        break;
                    case "b": look = look with { Bold = Toggle(e) }; break;
                    case "i": look = look with { Italic = Toggle(e) }; break;
                    case "caps": look = look with { Caps = Toggle(e) }; break;
                    case "smallCaps": look = look with { SmallCaps = Toggle(e) }; break;
                    case "strike": look = look with { Strike = Toggle(e) }; break;
                    case "dstrike": look = look with { DoubleStrike = Toggle(e) }; break;
                    case "vanish": look = look with { Hidden = Toggle(e) }; break;
                    case "color":
                        var c = Val(e);
                        if (c == "auto" || (c is { Length: 6 } && int.TryParse(c, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out _)))
                            look = look with { Color = c.ToUpperInvariant() == "AUTO" ? "auto" : c.ToUpperInvariant() };
                        break;
                    case "sz":
                        if (Int(Val(e)) is { } half && half is >= 2 and <= 3276) look = look with { Size = half / 2.0 };
                        break;
                    case "u":
                        look = look with { Underline = Val(e) == "none" ? Folio.Underline.None : Underline(Val(e)) };
                        break;
                    case "vertAlign":
                        look = look with { Superscript = Val(e) == "superscript", Subscript = Val(e) == "subscript" };
                        break;
                }
            }
            return look;
        }

        // Blocks of the body, a cell, a header, a footer or a note; sections end where their properties stand.
        private void Blocks(XElement container, bool body)
        {
            foreach (var e in container.Elements())
            {
                if (e.Name == W + "p") Paragraph(e, body);
                else if (e.Name == W + "tbl") Table(e);
                else if (e.Name == Wx + "sect" || e.Name == Wx + "sub-section") Blocks(e, body);
                else if (e.Name == W + "sectPr" && body) Section(e);
            }
        }

        private void Paragraph(XElement x, bool body)
        {
            var pPr = x.Element(W + "pPr");
            var p = b.StartParagraph(ParaFormat.Normal);
            var pf = p.ParagraphFormat;
            if (Val(pPr?.Element(W + "pStyle")) is { } sid && styles.TryGetValue(sid, out var style) && style.Type == StyleType.Paragraph) pf.Style = style;
            var from = ParaLook.Of(pf);
            ReadPara(pPr, from).ApplyTo(pf, from);
            if (pPr?.Element(W + "listPr") is { } lp && List(Val(lp.Element(W + "ilfo"))) is { } list)
            {
                p.ListFormat.List = list;
                p.ListFormat.ListLevelNumber = Math.Clamp(Int(Val(lp.Element(W + "ilvl"))) ?? 0, 0, 8);
            }
            Inlines(x, p, false);
            b.EndParagraph();
            if (body && pPr?.Element(W + "sectPr") is { } sectPr)
            {
                Section(sectPr);
                b.StartSection(SectionStart.NewPage);
            }
        }

        private List? List(string? ilfo)
        {
            if (ilfo == null || ilfo == "0") return null;
            if (lists.TryGetValue(ilfo, out var known)) return known;
            var instance = root.Element(W + "lists")?.Elements(W + "list").FirstOrDefault(l => l.Attribute(W + "ilfo")?.Value == ilfo);
            List? list = null;
            if (instance != null && Val(instance.Element(W + "ilst")) is { } defId && listDefs.TryGetValue(defId, out var def))
            {
                list = doc.Lists.Add(Lists.ListTemplate.NumberDefault);
                foreach (var lvl in def.Elements(W + "lvl"))
                {
                    if (Int(lvl.Attribute(W + "ilvl")?.Value) is not { } k || k is < 0 or > 8) continue;
                    var level = list.ListLevels[k];
                    if (Int(Val(lvl.Element(W + "nfc"))) is { } nfc) level.NumberStyle = NumberStyle(nfc);
                    if (Int(Val(lvl.Element(W + "start"))) is { } start) level.StartAt = Math.Clamp(start, 0, 32767);
                    if (Val(lvl.Element(W + "lvlText")) is { } text) level.NumberFormat = text;
                    level.Alignment = Val(lvl.Element(W + "lvlJc")) switch { "center" => Lists.ListLevelAlignment.Center, "right" => Lists.ListLevelAlignment.Right, _ => Lists.ListLevelAlignment.Left };
                    if (lvl.Element(W + "pPr")?.Element(W + "ind") is { } ind && Int(ind.Attribute(W + "left")?.Value) is { } left)
                    {
                        level.TextPosition = Bounded(left / 20.0);
                        level.NumberPosition = Bounded((left - (long)(Int(ind.Attribute(W + "hanging")?.Value) ?? 0)) / 20.0);
                    }
                    if (lvl.Element(W + "rPr")?.Element(W + "rFonts")?.Attribute(W + "ascii")?.Value is { Length: > 0 } font) level.Font.Name = font;
                }
            }
            lists[ilfo] = list;
            return list;
        }

        private void Inlines(XElement container, Paragraph p, bool inCode)
        {
            foreach (var e in container.Elements())
            {
                if (e.Name == W + "r") inCode = RunContent(e, p, inCode);
                else if (e.Name == W + "hlink") Link(e, p);
                else if (e.Name == W + "fldSimple") SimpleField(e, p);
                else if (e.Name == Aml + "annotation") Annotation(e, p, inCode);
                else if (e.Name == W + "smartTag" || e.Name == W + "sdt" || e.Name == W + "sdtContent") Inlines(e, p, inCode);
            }
        }

        private void Annotation(XElement e, Paragraph p, bool inCode)
        {
            var id = e.Attribute(Aml + "id")?.Value ?? "";
            switch (e.Attribute(W + "type")?.Value)
            {
                case "Word.Bookmark.Start" when e.Attribute(W + "name")?.Value is { Length: > 0 } name:
                    bookmarkNames[id] = name;
                    p.AppendChild(new BookmarkStart(doc, name));
                    break;
                case "Word.Bookmark.End" when bookmarkNames.TryGetValue(id, out var name):
                    p.AppendChild(new BookmarkEnd(doc, name));
                    break;
                case "Word.Insertion":
                    // Tracked changes are read as their outcome: insertions kept, deletions gone.
                    foreach (var c in e.Elements(Aml + "content")) Inlines(c, p, inCode);
                    break;
            }
        }

        private void Link(XElement e, Paragraph p)
        {
            var dest = e.Attribute(W + "dest")?.Value;
            var mark = e.Attribute(W + "bookmark")?.Value;
            var target = !string.IsNullOrEmpty(dest) ? dest + (string.IsNullOrEmpty(mark) ? "" : "#" + mark) : !string.IsNullOrEmpty(mark) ? "#" + mark : null;
            if (target != null) b.StartLink(target);
            Inlines(e, p, false);
            if (target != null) b.EndLink();
        }

        private void SimpleField(XElement e, Paragraph p)
        {
            p.AppendChild(new FieldStart(doc));
            p.AppendChild(new Run(doc, e.Attribute(W + "instr")?.Value ?? ""));
            p.AppendChild(new FieldSeparator(doc));
            Inlines(e, p, false);
            p.AppendChild(new FieldEnd(doc));
        }

        /// <summary>One run's content; returns whether a field's code is being read after it.</summary>
        private bool RunContent(XElement r, Paragraph p, bool inCode)
        {
            var rPr = r.Element(W + "rPr");
            foreach (var e in r.Elements())
            {
                if (e.Name.Namespace != W) continue;
                switch (e.Name.LocalName)
                {
                    case "t":
                        if (!inCode) Text(p, e.Value, rPr);
                        break;
                    case "instrText":
                        if (inCode) Text(p, e.Value, rPr);
                        break;
                    case "tab": Text(p, "\t", rPr); break;
                    case "br":
                        Text(p, e.Attribute(W + "type")?.Value switch { "page" => ControlChar.PageBreak, "column" => ControlChar.ColumnBreak, _ => ControlChar.LineBreak }, rPr);
                        break;
                    case "noBreakHyphen": Text(p, "\u2011", rPr); break;
                    case "softHyphen": Text(p, "\u00AD", rPr); break;
                    case "sym":
                        if (int.TryParse(e.Attribute(W + "char")?.Value, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out var code) && code is > 0x1F and < 0xFFFE)
                            Text(p, ((char)code).ToString(), rPr);
                        break;
                    case "fldChar":
                        switch (e.Attribute(W + "fldCharType")?.Value)
                        {
                            case "begin": p.AppendChild(new FieldStart(doc)); inCode = true; break;
                            case "separate": p.AppendChild(new FieldSeparator(doc)); inCode = false; break;
                            case "end": p.AppendChild(new FieldEnd(doc)); inCode = false; break;
                        }
                        break;
                    case "pict":
                        Picture(e);
                        break;
                    case "footnote" or "endnote":
                        Note(e);
                        break;
                }
            }
            return inCode;
        }

        private void Text(Paragraph p, string text, XElement? rPr)
        {
            if (text.Length == 0) return;
            var run = new Run(doc, text);
            p.AppendChild(run);
            if (Val(rPr?.Element(W + "rStyle")) is { } sid && styles.TryGetValue(sid, out var cs) && cs.Type == StyleType.Character)
                run.Font.StyleName = cs.Name;
            if (rPr == null) return;
            var from = RunLook.Of(run.Font);
            ReadRun(rPr, from).ApplyTo(run.Font, from);
        }

        private void Picture(XElement pict)
        {
            if (WatermarkMark.OfVml(pict.ToString(SaveOptions.DisableFormatting)) is { } mark)
            {
                watermark ??= mark;
                return;
            }
            var data = pict.Element(W + "binData");
            var shape = pict.Element(V + "shape");
            var src = shape?.Element(V + "imagedata")?.Attribute("src")?.Value ?? data?.Attribute(W + "name")?.Value;
            if (src == null || !pictures.TryGetValue(src, out var bytes)) return;
            double width = 0, height = 0;
            foreach (var decl in (shape?.Attribute("style")?.Value ?? "").Split(';'))
            {
                var kv = decl.Split(':', 2);
                if (kv.Length != 2) continue;
                var v = Length(kv[1].Trim());
                if (kv[0].Trim() == "width") width = v;
                else if (kv[0].Trim() == "height") height = v;
            }
            try
            {
                var s = b.Image(bytes, Math.Min(width, 22000), Math.Min(height, 22000), shape?.Attribute("alt")?.Value ?? "");
                if (shape?.Element(V + "imagedata")?.Attribute(O + "title")?.Value is { } title) s.Title = title;
            }
            catch (ArgumentException)
            {
                // Data that is no picture we know is left out, as a word processor shows a blank frame.
            }
        }

        // VML lengths: points, inches, centimetres, millimetres or pixels.
        private static double Length(string s)
        {
            (string Unit, double Factor)[] units = { ("pt", 1), ("in", 72), ("cm", 72 / 2.54), ("mm", 72 / 25.4), ("px", 0.75) };
            foreach (var (unit, factor) in units)
                if (s.EndsWith(unit, StringComparison.Ordinal) && double.TryParse(s[..^unit.Length], NumberStyles.Float, CultureInfo.InvariantCulture, out var v) && v >= 0)
                    return v * factor;
            return double.TryParse(s, NumberStyles.Float, CultureInfo.InvariantCulture, out var px) && px >= 0 ? px * 0.75 : 0;
        }

        private void Note(XElement e)
        {
            b.StartFootnote(e.Name.LocalName == "endnote" ? Notes.FootnoteType.Endnote : Notes.FootnoteType.Footnote);
            Blocks(e, false);
            b.LeaveContainer();
        }

        private void Table(XElement x)
        {
            var t = b.StartTable();
            var tblPr = x.Element(W + "tblPr");
            if (Val(tblPr?.Element(W + "tblStyle")) is { } sid && styles.TryGetValue(sid, out var ts) && ts.Type == StyleType.Table) t.StyleName = ts.Name;
            switch (Val(tblPr?.Element(W + "jc")))
            {
                case "center": t.Alignment = TableAlignment.Center; break;
                case "right": t.Alignment = TableAlignment.Right; break;
            }
            if (tblPr?.Element(W + "tblBorders") is { } borders && borders.Elements().Any(e => Val(e) is not (null or "nil" or "none")))
                t.SetBorders(LineStyle.Single, 0.5);
            foreach (var tr in x.Elements(W + "tr"))
            {
                b.StartRow();
                if (tr.Element(W + "trPr")?.Element(W + "tblHeader") is { } th && Toggle(th)) b.CurrentRowHeading();
                foreach (var tc in tr.Elements(W + "tc"))
                {
                    var cell = b.StartCell();
                    var tcPr = tc.Element(W + "tcPr");
                    var cf = cell.CellFormat;
                    if (tcPr?.Element(W + "tcW") is { } tcW && tcW.Attribute(W + "type")?.Value is null or "dxa" && Int(tcW.Attribute(W + "w")?.Value) is { } tw && tw is > 0 and <= 31680)
                        cf.Width = tw / 20.0;
                    if (Int(Val(tcPr?.Element(W + "gridSpan"))) is { } span && span is > 1 and <= 63) cell.Span = span;
                    if (tcPr?.Element(W + "vmerge") is { } vm) cf.VerticalMerge = Val(vm) == "restart" ? CellMerge.First : CellMerge.Previous;
                    if (tcPr?.Element(W + "hmerge") is { } hm) cf.HorizontalMerge = Val(hm) == "restart" ? CellMerge.First : CellMerge.Previous;
                    cf.VerticalAlignment = Val(tcPr?.Element(W + "vAlign")) switch { "center" => CellVerticalAlignment.Center, "bottom" => CellVerticalAlignment.Bottom, _ => CellVerticalAlignment.Top };
                    Blocks(tc, false);
                    b.EndCell();
                }
            }
            b.EndTable();
        }

        private void Section(XElement sectPr)
        {
            var s = b.CurrentSection;
            var ps = s.PageSetup;
            ps.SectionStart = Val(sectPr.Element(W + "type")) switch
            {
                "continuous" => SectionStart.Continuous,
                "column" => SectionStart.NewColumn,
                "even-page" => SectionStart.EvenPage,
                "odd-page" => SectionStart.OddPage,
                _ => SectionStart.NewPage,
            };
            if (sectPr.Element(W + "pgSz") is { } sz)
            {
                double width = Points(sz.Attribute(W + "w")?.Value, ps.PageWidth), height = Points(sz.Attribute(W + "h")?.Value, ps.PageHeight);
                if (width is >= 1 and <= 1584) ps.PageWidth = width;
                if (height is >= 1 and <= 1584) ps.PageHeight = height;
                if (sz.Attribute(W + "orient")?.Value == "landscape") ps.Orientation = Orientation.Landscape;
            }
            if (sectPr.Element(W + "pgMar") is { } m)
            {
                void Margin(string name, Action<double> set, double min)
                {
                    if (Int(m.Attribute(W + name)?.Value) is { } tw && tw / 20.0 is var pt && pt >= min && pt <= 1584) set(pt);
                }
                Margin("top", v => ps.TopMargin = v, -1584);
                Margin("bottom", v => ps.BottomMargin = v, -1584);
                Margin("left", v => ps.LeftMargin = v, 0);
                Margin("right", v => ps.RightMargin = v, 0);
                Margin("header", v => ps.HeaderDistance = v, 0);
                Margin("footer", v => ps.FooterDistance = v, 0);
                Margin("gutter", v => ps.Gutter = v, 0);
            }
            if (Int(sectPr.Element(W + "pgNumType")?.Attribute(W + "start")?.Value) is { } first && first >= 0)
            {
                ps.RestartPageNumbering = true;
                ps.PageStartingNumber = first;
            }
            if (sectPr.Element(W + "titlePg") is { } tp) ps.DifferentFirstPageHeaderFooter = Toggle(tp);
            foreach (var hf in sectPr.Elements().Where(e => e.Name == W + "hdr" || e.Name == W + "ftr"))
            {
                bool header = hf.Name.LocalName == "hdr";
                var type = hf.Attribute(W + "type")?.Value switch
                {
                    "first" => header ? HeaderFooterType.HeaderFirst : HeaderFooterType.FooterFirst,
                    "even" => header ? HeaderFooterType.HeaderEven : HeaderFooterType.FooterEven,
                    _ => header ? HeaderFooterType.HeaderPrimary : HeaderFooterType.FooterPrimary,
                };
                if (s.HeadersFooters[type] != null) continue;
                b.EnterHeaderFooter(type);
                Blocks(hf, false);
                b.LeaveContainer();
            }
        }
    }
}
