using System.Text;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Loading;
using Quorix.Folio.Tables;
using List = Quorix.Folio.Lists.List;

namespace Quorix.Folio.Formats.Rtf;

/// <summary>Rich Text Format: text with character and paragraph formatting, styles (headings), lists,
/// tables with merged cells, pictures, hyperlinks and other field results, notes, headers and footers,
/// and sections. Groups it does not know are skipped whole.</summary>
internal sealed class RtfReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.Rtf;

    static RtfReader() => Encoding.RegisterProvider(CodePagesEncodingProvider.Instance);

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        FormatDetection.CheckIsText(data, Format);
        if (!Encoding.ASCII.GetString(data, 0, Math.Min(data.Length, 64)).TrimStart().StartsWith("{\\rtf", StringComparison.Ordinal))
            throw new FileCorruptedException("The data is not RTF: it does not start with the RTF header.");
        var b = new FlowBuilder(document) { AbsoluteFormatting = true };
        new Parser(data, b, options as RtfLoadOptions ?? new RtfLoadOptions()).Run();
    }

    private enum Dest
    {
        Text, Skip, FontTable, Font, ColorTable, StyleSheet, Style, ListTable, List, ListLevel, ListOverride,
        FieldInstruction, FieldResult, Picture, Footnote, HeaderFooter,
    }

    // Everything a group carries; copied when a group opens and restored when it closes.
    private sealed record State
    {
        public Dest Dest { get; init; }
        public CharFormat Char { get; init; } = CharFormat.Plain;
        public int FontSize { get; init; } = 24;
        public int Font { get; init; } = -1;
        public int Color { get; init; }
        public bool Hidden { get; init; }
        public int SkipAfterUnicode { get; init; } = 1;
        public Para Para { get; init; } = new();
    }

    private sealed record Para
    {
        public ParagraphAlignment Alignment { get; init; }
        public double Left { get; init; }
        public double Right { get; init; }
        public double First { get; init; }
        public double Before { get; init; }
        public double After { get; init; }
        public int Style { get; init; }
        public int Outline { get; init; } = -1;
        public bool InTable { get; init; }
        public int ListOverride { get; init; }
        public int ListLevel { get; init; }
    }

    private sealed class Parser
    {
        private readonly byte[] src;
        private readonly FlowBuilder b;
        private readonly RtfLoadOptions options;
        private int pos;
        private State st = new();
        private readonly Stack<State> stack = new();
        private Encoding codePage = Encoding.GetEncoding(1252);

        private readonly Dictionary<int, string> fonts = new();
        private int defaultFont;
        private readonly List<string?> colors = new();
        private readonly Dictionary<int, (string Name, int Outline)> styles = new();
        private readonly Dictionary<int, int[]> listFormats = new(); // list id -> number format per level
        private readonly Dictionary<int, int> overrides = new();      // ls -> list id
        private readonly Dictionary<int, List> madeLists = new();

        // What the destination being read collects.
        private readonly StringBuilder collected = new();
        private int entryNumber = -1, entryOutline = -1, listId, red, green, blue;
        private readonly List<int> levels = new();
        private string pictureKind = "";
        private double pictureWidth, pictureHeight;
        private string? link;

        // Text not yet written, in one formatting; bytes of \'hh escapes not yet decoded.
        private readonly StringBuilder pending = new();
        private CharFormat pendingFormat = CharFormat.Plain;
        private readonly List<byte> pendingBytes = new();

        // Table being read: cell definitions of the current row, and where the row stands.
        private readonly List<CellMerge> rowMerges = new();
        private readonly List<CellMerge> nextMerges = new();
        private bool rowOpen, cellOpen;
        private int cellIndex;
        private bool headingRow, nextHeadingRow;

        public Parser(byte[] src, FlowBuilder b, RtfLoadOptions options)
        {
            this.src = src;
            this.b = b;
            this.options = options;
        }

        public void Run()
        {
            while (pos < src.Length)
            {
                byte c = src[pos++];
                switch (c)
                {
                    case (byte)'{':
                        FlushBytes();
                        stack.Push(st);
                        if (stack.Count > 4096) throw new FileCorruptedException("The RTF groups nest too deeply.");
                        break;
                    case (byte)'}':
                        FlushBytes();
                        if (stack.Count == 0) { pos = src.Length; break; }
                        var closing = st;
                        st = stack.Pop();
                        if (closing.Dest != st.Dest) EndDestination(closing.Dest);
                        break;
                    case (byte)'\\':
                        Control();
                        break;
                    case (byte)'\r' or (byte)'\n':
                        break;
                    default:
                        if (c >= 0x80) pendingBytes.Add(c);
                        else
                        {
                            FlushBytes();
                            Char((char)c);
                        }
                        break;
                }
            }
            FlushText();
            CloseTable();
            b.Finish();
        }

        private void Control()
        {
            if (pos >= src.Length) return;
            byte c = src[pos];
            if (!IsLetter(c))
            {
                pos++;
                switch ((char)c)
                {
                    case '\'':
                        if (pos + 2 <= src.Length && byte.TryParse(Encoding.ASCII.GetString(src, pos, 2), System.Globalization.NumberStyles.HexNumber, null, out var v))
                        {
                            pos += 2;
                            if (st.Dest is Dest.Text or Dest.FieldResult or Dest.Footnote or Dest.HeaderFooter or Dest.Font or Dest.Style or Dest.FieldInstruction)
                                pendingBytes.Add(v);
                        }
                        break;
                    case '*':
                        // An optional destination: read only the ones we know, skip the rest whole.
                        ReadStarredDestination();
                        break;
                    case '~': FlushBytes(); Char('\u00a0'); break;
                    case '_': FlushBytes(); Char('\u2011'); break;
                    case '-': break;
                    case '\n' or '\r': Word("par", null); break;
                    default: FlushBytes(); Char((char)c); break;
                }
                return;
            }
            int start = pos;
            while (pos < src.Length && IsLetter(src[pos])) pos++;
            var word = Encoding.ASCII.GetString(src, start, pos - start);
            int? arg = null;
            int numStart = pos;
            if (pos < src.Length && (src[pos] == '-' || IsDigit(src[pos])))
            {
                pos++;
                while (pos < src.Length && IsDigit(src[pos])) pos++;
                if (int.TryParse(Encoding.ASCII.GetString(src, numStart, pos - numStart), out var n)) arg = n;
            }
            if (pos < src.Length && src[pos] == ' ') pos++;
            if (word != "u") FlushBytes();
            Word(word, arg);
        }

        private void ReadStarredDestination()
        {
            int save = pos;
            if (pos < src.Length && src[pos] == '\\')
            {
                pos++;
                int start = pos;
                while (pos < src.Length && IsLetter(src[pos])) pos++;
                var word = Encoding.ASCII.GetString(src, start, pos - start);
                if (word is "fldinst" or "listtable" or "listoverridetable" or "shppict" or "cs" or "ds" or "ts")
                {
                    pos = save;
                    return;
                }
            }
            st = st with { Dest = Dest.Skip };
        }

        private static bool IsLetter(byte c) => c is >= (byte)'a' and <= (byte)'z' or >= (byte)'A' and <= (byte)'Z';

        private static bool IsDigit(byte c) => c is >= (byte)'0' and <= (byte)'9';

        private void FlushBytes()
        {
            if (pendingBytes.Count == 0) return;
            var bytes = pendingBytes.ToArray();
            pendingBytes.Clear();
            string s;
            if (options.RecognizeUtf8Text)
            {
                try { s = new UTF8Encoding(false, true).GetString(bytes); }
                catch (DecoderFallbackException) { s = codePage.GetString(bytes); }
            }
            else s = codePage.GetString(bytes);
            foreach (var ch in s) Char(ch);
        }

        private void Char(char c)
        {
            switch (st.Dest)
            {
                case Dest.Text or Dest.FieldResult or Dest.Footnote or Dest.HeaderFooter:
                    if (st.Hidden) return;
                    var f = Current();
                    if (pending.Length > 0 && f != pendingFormat) FlushText();
                    pendingFormat = f;
                    pending.Append(c);
                    break;
                case Dest.Font or Dest.Style or Dest.FieldInstruction:
                    collected.Append(c);
                    break;
                case Dest.ColorTable when c == ';':
                    colors.Add(red < 0 ? null : $"{red:X2}{green:X2}{blue:X2}");
                    red = -1;
                    break;
                case Dest.Picture:
                    collected.Append(c);
                    break;
            }
        }

        private CharFormat Current()
        {
            var f = st.Char;
            if (st.FontSize != 24) f = f with { Size = st.FontSize / 2.0 };
            int font = st.Font < 0 ? defaultFont : st.Font;
            if (font != defaultFont && fonts.TryGetValue(font, out var name)) f = f with { FontName = name };
            if (st.Color > 0 && st.Color < colors.Count && colors[st.Color] is { } hex) f = f with { Color = hex };
            return f;
        }

        private void FlushText()
        {
            if (pending.Length == 0) return;
            EnsureParagraph();
            b.Text(pending.ToString(), pendingFormat);
            pending.Clear();
        }

        private void EnsureParagraph()
        {
            if (b.InParagraph) return;
            var p = st.Para;
            // Tables are read in the main text only; notes and headers keep their text as paragraphs.
            if (st.Dest == Dest.Text)
            {
                if (p.InTable) EnsureCell();
                else CloseTable();
            }
            var f = new ParaFormat
            {
                Alignment = p.Alignment,
                LeftIndent = p.Left != 0 ? p.Left : null,
                FirstLineIndent = p.First != 0 ? p.First : null,
                SpaceBefore = p.Before != 0 ? p.Before : null,
                SpaceAfter = p.After != 0 ? p.After : null,
            };
            int outline = p.Outline;
            if (styles.TryGetValue(p.Style, out var style))
            {
                if (outline < 0) outline = style.Outline;
                if (outline < 0 && style.Name.StartsWith("heading ", StringComparison.OrdinalIgnoreCase) && int.TryParse(style.Name[8..], out var hn)) outline = hn - 1;
                if (style.Name.Equals("Title", StringComparison.OrdinalIgnoreCase)) f = f with { Kind = BlockKind.Title };
                else if (style.Name is "Quote" or "Block Text" or "Intense Quote") f = f with { Kind = BlockKind.Quote };
            }
            if (outline is >= 0 and < 9) f = f with { Kind = BlockKind.Heading, HeadingLevel = outline + 1 };
            if (p.ListOverride > 0 && ListFor(p.ListOverride) is { } list)
                f = f with { List = list, ListLevel = p.ListLevel, LeftIndent = null, FirstLineIndent = null };
            b.StartParagraph(f);
        }

        private List? ListFor(int ls)
        {
            if (madeLists.TryGetValue(ls, out var made)) return made;
            var id = overrides.GetValueOrDefault(ls, -1);
            var formats = listFormats.GetValueOrDefault(id);
            var list = b.NewList(formats == null || formats[0] != 23);
            if (formats != null)
                for (int k = 1; k < Math.Min(9, formats.Length); k++)
                    FlowBuilder.NestedList(list, k - 1, formats[k] != 23);
            return madeLists[ls] = list;
        }

        private void EndParagraph()
        {
            FlushText();
            if (!b.InParagraph) EnsureParagraph();
            b.EndParagraph();
        }

        private void EnsureCell()
        {
            if (!b.InTable) b.StartTable();
            if (!rowOpen)
            {
                b.StartRow();
                rowOpen = true;
                cellIndex = 0;
                rowMerges.Clear();
                rowMerges.AddRange(nextMerges);
                headingRow = nextHeadingRow;
                if (headingRow) b.CurrentRowHeading();
            }
            if (!cellOpen)
            {
                var cell = b.StartCell();
                if (cellIndex < rowMerges.Count && rowMerges[cellIndex] != CellMerge.None) cell.CellFormat.VerticalMerge = rowMerges[cellIndex];
                cellOpen = true;
            }
        }

        private void CloseTable()
        {
            if (!b.InTable) return;
            if (cellOpen) b.EndCell();
            cellOpen = rowOpen = false;
            b.EndTable();
        }

        private void EndDestination(Dest d)
        {
            switch (d)
            {
                case Dest.Font:
                    if (entryNumber >= 0) fonts[entryNumber] = collected.ToString().TrimEnd(';', ' ');
                    break;
                case Dest.Style:
                    if (entryNumber >= 0) styles[entryNumber] = (collected.ToString().Trim().TrimEnd(';'), entryOutline);
                    break;
                case Dest.List:
                    listFormats[listId] = levels.ToArray();
                    break;
                case Dest.FieldInstruction:
                    link = Hyperlink(collected.ToString());
                    break;
                case Dest.FieldResult:
                    FlushText();
                    if (link != null) b.EndLink();
                    link = null;
                    break;
                case Dest.Picture:
                    Picture();
                    break;
                case Dest.Footnote or Dest.HeaderFooter:
                    FlushText();
                    b.LeaveContainer();
                    break;
            }
        }

        private static string? Hyperlink(string instruction)
        {
            var t = instruction.Trim();
            if (!t.StartsWith("HYPERLINK", StringComparison.OrdinalIgnoreCase)) return null;
            bool bookmark = t.Contains("\\l", StringComparison.Ordinal);
            int q = t.IndexOf('"');
            int q2 = q >= 0 ? t.IndexOf('"', q + 1) : -1;
            var target = q >= 0 && q2 > q ? t[(q + 1)..q2] : t[9..].Trim().Split(' ')[0];
            return target.Length == 0 ? null : bookmark ? "#" + target : target;
        }

        private void Picture()
        {
            if (pictureKind is not ("png" or "jpeg")) return;
            var hex = new StringBuilder(collected.Length);
            foreach (var ch in collected.ToString()) if (Uri.IsHexDigit(ch)) hex.Append(ch);
            if (hex.Length % 2 == 1) hex.Length--;
            var bytes = Convert.FromHexString(hex.ToString());
            if (Drawing.ImageInfo.Detect(bytes).Type is Drawing.ImageType.NoImage or Drawing.ImageType.Unknown)
            {
                if (bytes.Length > 0)
                    b.Document.Warnings.Add(WarningType.DataLoss, WarningSource.Rtf, "A picture in a format that is not recognised was left out.");
                return;
            }
            FlushText();
            EnsureParagraph();
            b.Image(bytes, pictureWidth, pictureHeight, "");
        }

        private void Begin(Dest d)
        {
            FlushText();
            collected.Clear();
            entryNumber = -1;
            entryOutline = -1;
            st = st with { Dest = d };
        }

        private bool InBody => st.Dest is Dest.Text or Dest.FieldResult or Dest.Footnote or Dest.HeaderFooter;

        private void Word(string w, int? arg)
        {
            int n = arg ?? 1;
            if (st.Dest == Dest.Skip) return;
            switch (w)
            {
                // Header tables and destinations.
                case "ansicpg":
                    try { codePage = Encoding.GetEncoding(n); }
                    catch (Exception e) when (e is ArgumentException or NotSupportedException) { }
                    return;
                case "deff": defaultFont = n; return;
                case "uc": st = st with { SkipAfterUnicode = Math.Max(0, n) }; return;
                case "fonttbl": Begin(Dest.FontTable); return;
                case "f" when st.Dest == Dest.FontTable: Begin(Dest.Font); entryNumber = n; return;
                case "f" when st.Dest == Dest.Font: entryNumber = n; return;
                case "colortbl": Begin(Dest.ColorTable); red = -1; return;
                case "red": red = n; return;
                case "green": green = n; if (red < 0) red = 0; return;
                case "blue": blue = n; if (red < 0) red = 0; return;
                case "stylesheet": Begin(Dest.StyleSheet); return;
                case "s" or "cs" or "ds" or "ts" when st.Dest == Dest.StyleSheet:
                    Begin(Dest.Style);
                    entryNumber = w == "s" ? n : -1;
                    return;
                case "s" when st.Dest == Dest.Style: entryNumber = n; return;
                case "outlinelevel" when st.Dest == Dest.Style: entryOutline = n; return;
                case "listtable": Begin(Dest.ListTable); return;
                case "list" when st.Dest == Dest.ListTable: Begin(Dest.List); levels.Clear(); return;
                case "listlevel" when st.Dest == Dest.List: st = st with { Dest = Dest.ListLevel }; levels.Add(0); return;
                case "levelnfc" or "levelnfcn" when st.Dest == Dest.ListLevel: levels[^1] = n; return;
                case "listid" when st.Dest == Dest.List: listId = n; return;
                case "listoverridetable": Begin(Dest.ListOverride); return;
                case "listid" when st.Dest == Dest.ListOverride: listId = n; return;
                case "ls" when st.Dest == Dest.ListOverride: overrides[n] = listId; return;
                case "info" or "listtext" or "pntext" or "pn" or "nonshppict" or "filetbl" or "revtbl" or "xmlnstbl" or "object" or "fldtype" or "bkmkstart" or "bkmkend" or "themedata" or "colorschememapping" or "latentstyles" or "datastore" or "generator" or "userprops" or "docvar" or "template" or "rsidtbl" or "mmathPr" or "pgdsctbl":
                    st = st with { Dest = Dest.Skip };
                    return;
                case "fldinst": Begin(Dest.FieldInstruction); return;
                case "fldrslt":
                    FlushText();
                    st = st with { Dest = Dest.FieldResult };
                    if (link != null)
                    {
                        EnsureParagraph();
                        b.StartLink(link);
                    }
                    return;
                case "pict": Begin(Dest.Picture); pictureKind = ""; pictureWidth = pictureHeight = -1; return;
                case "pngblip": pictureKind = "png"; return;
                case "jpegblip": pictureKind = "jpeg"; return;
                case "picwgoal": pictureWidth = n / 20.0; return;
                case "pichgoal": pictureHeight = n / 20.0; return;
                case "footnote" when InBody:
                    FlushText();
                    EnsureParagraph();
                    b.StartFootnote();
                    st = st with { Dest = Dest.Footnote, Para = new Para() };
                    return;
                case "header" or "headerr" or "footer" or "footerr" or "headerf" or "footerf" or "headerl" or "footerl" when InBody:
                    FlushText();
                    b.EnterHeaderFooter(w switch
                    {
                        "header" or "headerr" => HeaderFooterType.HeaderPrimary,
                        "footer" or "footerr" => HeaderFooterType.FooterPrimary,
                        "headerf" => HeaderFooterType.HeaderFirst,
                        "footerf" => HeaderFooterType.FooterFirst,
                        "headerl" => HeaderFooterType.HeaderEven,
                        _ => HeaderFooterType.FooterEven,
                    });
                    st = st with { Dest = Dest.HeaderFooter, Para = new Para() };
                    return;
            }
            if (!InBody) return;
            switch (w)
            {
                // Character formatting.
                case "plain": st = st with { Char = CharFormat.Plain, FontSize = 24, Font = -1, Color = 0, Hidden = false }; break;
                case "b": st = st with { Char = st.Char with { Bold = n != 0 } }; break;
                case "i": st = st with { Char = st.Char with { Italic = n != 0 } }; break;
                case "ul" or "ulth": st = st with { Char = st.Char with { Underline = n != 0 ? Underline.Single : Underline.None } }; break;
                case "uldb": st = st with { Char = st.Char with { Underline = Underline.Double } }; break;
                case "uld": st = st with { Char = st.Char with { Underline = Underline.Dotted } }; break;
                case "ulw": st = st with { Char = st.Char with { Underline = Underline.Words } }; break;
                case "ulnone": st = st with { Char = st.Char with { Underline = Underline.None } }; break;
                case "strike" or "striked": st = st with { Char = st.Char with { Strike = n != 0 } }; break;
                case "super": st = st with { Char = st.Char with { Superscript = true, Subscript = false } }; break;
                case "sub": st = st with { Char = st.Char with { Subscript = true, Superscript = false } }; break;
                case "nosupersub": st = st with { Char = st.Char with { Subscript = false, Superscript = false } }; break;
                case "f": st = st with { Font = n }; break;
                case "fs": st = st with { FontSize = Math.Clamp(n, 2, 3276) }; break;
                case "cf": st = st with { Color = n }; break;
                case "v": st = st with { Hidden = n != 0 }; break;

                // Paragraph formatting.
                case "pard": st = st with { Para = new Para() }; break;
                case "ql": st = st with { Para = st.Para with { Alignment = ParagraphAlignment.Left } }; break;
                case "qc": st = st with { Para = st.Para with { Alignment = ParagraphAlignment.Center } }; break;
                case "qr": st = st with { Para = st.Para with { Alignment = ParagraphAlignment.Right } }; break;
                case "qj": st = st with { Para = st.Para with { Alignment = ParagraphAlignment.Justify } }; break;
                case "li": st = st with { Para = st.Para with { Left = n / 20.0 } }; break;
                case "ri": st = st with { Para = st.Para with { Right = n / 20.0 } }; break;
                case "fi": st = st with { Para = st.Para with { First = n / 20.0 } }; break;
                case "sb": st = st with { Para = st.Para with { Before = Math.Max(0, n) / 20.0 } }; break;
                case "sa": st = st with { Para = st.Para with { After = Math.Max(0, n) / 20.0 } }; break;
                case "s": st = st with { Para = st.Para with { Style = n } }; break;
                case "outlinelevel": st = st with { Para = st.Para with { Outline = n } }; break;
                case "intbl": st = st with { Para = st.Para with { InTable = true } }; break;
                case "ls": st = st with { Para = st.Para with { ListOverride = n } }; break;
                case "ilvl": st = st with { Para = st.Para with { ListLevel = Math.Clamp(n, 0, 8) } }; break;

                // Tables.
                case "trowd":
                    nextMerges.Clear();
                    nextHeadingRow = false;
                    break;
                case "trhdr": nextHeadingRow = true; break;
                case "clvmgf": pendingMerge = CellMerge.First; break;
                case "clvmrg": pendingMerge = CellMerge.Previous; break;
                case "cellx":
                    nextMerges.Add(pendingMerge);
                    pendingMerge = CellMerge.None;
                    break;
                case "cell" or "nestcell":
                    FlushText();
                    if (!b.InParagraph && !cellOpen) st = st with { Para = st.Para with { InTable = true } };
                    if (!b.InParagraph) EnsureParagraph();
                    b.EndParagraph();
                    if (cellOpen) b.EndCell();
                    cellOpen = false;
                    cellIndex++;
                    break;
                case "row" or "nestrow":
                    FlushText();
                    if (cellOpen) { b.EndParagraph(); b.EndCell(); }
                    cellOpen = false;
                    rowOpen = false;
                    break;

                // Text and breaks.
                case "par": EndParagraph(); break;
                case "line": Char('\v'); break;
                case "tab": Char('\t'); break;
                case "page":
                    FlushText();
                    EnsureParagraph();
                    b.PageBreak();
                    break;
                case "sect":
                    EndParagraph();
                    CloseTable();
                    b.StartSection(SectionStart.NewPage);
                    break;
                case "sbknone": b.CurrentSection.PageSetup.SectionStart = SectionStart.Continuous; break;
                case "sbkeven": b.CurrentSection.PageSetup.SectionStart = SectionStart.EvenPage; break;
                case "sbkodd": b.CurrentSection.PageSetup.SectionStart = SectionStart.OddPage; break;
                case "pgwsxn" or "paperw" when n > 0: b.CurrentSection.PageSetup.PageWidth = n / 20.0; break;
                case "pghsxn" or "paperh" when n > 0: b.CurrentSection.PageSetup.PageHeight = n / 20.0; break;
                case "emdash": Char('\u2014'); break;
                case "endash": Char('\u2013'); break;
                case "bullet": Char('\u2022'); break;
                case "lquote": Char('\u2018'); break;
                case "rquote": Char('\u2019'); break;
                case "ldblquote": Char('\u201c'); break;
                case "rdblquote": Char('\u201d'); break;
                case "u":
                    FlushBytes();
                    Char((char)(short)n);
                    // The characters that stand in for the Unicode one in older readers are skipped.
                    for (int k = 0; k < st.SkipAfterUnicode && pos < src.Length; k++)
                    {
                        if (src[pos] == '\\' && pos + 1 < src.Length && src[pos + 1] == '\'') pos += 4;
                        else if (src[pos] is (byte)'{' or (byte)'}' or (byte)'\\') break;
                        else pos++;
                    }
                    break;
            }
        }

        private CellMerge pendingMerge = CellMerge.None;
    }
}
