using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Fonts;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;

namespace Quorix.Folio.Layout;

/// <summary>Turns one paragraph into line blocks: collects its visible text with the formatting of
/// each piece, shapes it, breaks it into lines and places the glyphs.</summary>
internal sealed class ParagraphLayout
{
    // Object replacement character: stands for an inline picture in the paragraph's text.
    private const char ObjectChar = '\uFFFC';

    private sealed record Piece(int Start, int End, TextStyle Style, Node? Node, Shape? Image, string? Link);

    /// <summary>Shaped glyphs of one piece of text in one face. Clusters are paragraph text offsets;
    /// right-to-left text comes back from shaping in visual order.</summary>
    private sealed record Segment(int Start, int End, TextStyle Style, ResolvedFont Font, ushort[] Glyphs, int[] Clusters, float[] Advances, float[] OffsetsX, float[] OffsetsY)
    {
        public bool RightToLeft { get; init; }
    }

    private readonly LayoutContext ctx;
    private readonly Paragraph para;
    private readonly StringBuilder sb = new();
    private readonly List<Piece> pieces = new();
    private readonly List<Segment> segments = new();
    private readonly List<(int At, string Name)> anchors = new();
    private List<(Node Node, FloatPlacement Placement, List<PageItem>? Content)>? floats;
    private string text = "";
    private double[] advance = Array.Empty<double>();
    private List<TabStop> tabStops = new();
    // The leader drawn across each tab, set when the tab's stop is chosen.
    private char[] leaders = Array.Empty<char>();
    private TextStyle markStyle = null!;
    // Each line's character positions, reused from line to line.
    private double[] linePos = new double[64];
    // A right-to-left paragraph: lines are laid out from the left and mirrored in their box.
    private bool rtl;
    // The axis a right-to-left line is mirrored about: twice its box's centre.
    private double mirror;

    private ParagraphLayout(LayoutContext ctx, Paragraph para)
    {
        this.ctx = ctx;
        this.para = para;
    }

    /// <summary>The paragraph's lines at the given width; the first <paramref name="dropLines"/> of them
    /// pushed right by <paramref name="dropIndent"/>, beside a dropped capital.</summary>
    public static List<Block> Lay(LayoutContext ctx, Paragraph para, double width, int dropLines = 0, double dropIndent = 0)
    {
        var p = new ParagraphLayout(ctx, para) { dropLines = dropLines, dropIndent = dropIndent };
        p.Collect();
        p.Shape();
        return p.Lines(width);
    }

    private int dropLines;
    private double dropIndent;

    // ---- collecting the visible text ----

    private sealed class FieldState
    {
        public FieldStart? Start;
        public readonly StringBuilder Code = new();
        public bool InResult;
        public bool SkipResult;
        public string? Link;
    }

    private void Collect()
    {
        rtl = para.ParagraphFormat.Bidi;
        markStyle = TextStyle.Of(new Font(new FormatPropsBox(), para.Document, para.InheritedRunAttrs), ctx);
        if (para.IsListItem && para.ListLabel.LabelString is { Length: > 0 } label)
        {
            var first = para.Runs.Count > 0 ? TextStyle.Of(para.Runs[0].Font, ctx) : markStyle;
            var trailing = para.ListFormat.ListLevel?.TrailingCharacter switch
            {
                Lists.ListTrailingCharacter.Space => " ",
                Lists.ListTrailingCharacter.Nothing => "",
                _ => "\t",
            };
            Add(SymbolBullets(label) + trailing, first, null, null, null);
        }
        // A note's text opens with its reference mark.
        if (para.ParentNode is Footnote own && own.FirstChild == para && ctx.Notes != null)
        {
            var first = para.Runs.Count > 0 ? TextStyle.Of(para.Runs[0].Font, ctx) : markStyle;
            var mark = ctx.Notes.Of(own);
            Add(mark, MarkStyle(first), null, null, null);
            if (para.Runs.Count == 0 || !para.Runs[0].Text.StartsWith(' ')) Add(" ", first, null, null, null);
        }
        var fields = new List<FieldState>();
        for (var n = para.FirstChild; n != null; n = n.NextSibling)
        {
            switch (n)
            {
                case FieldStart start:
                    fields.Add(new FieldState { Start = start });
                    break;
                case FieldSeparator when fields.Count > 0:
                    BeginResult(fields[^1]);
                    break;
                case FieldEnd when fields.Count > 0:
                    if (!fields[^1].InResult) BeginResult(fields[^1]);
                    fields.RemoveAt(fields.Count - 1);
                    break;
                case Run run:
                    if (fields.Count > 0 && !fields[^1].InResult) { fields[^1].Code.Append(run.Text); break; }
                    if (fields.Any(f => f.SkipResult || !f.InResult) || run.Font.Hidden || run.Text.Length == 0) break;
                    var style = TextStyle.Of(run.Font, ctx);
                    Add(style.Caps ? run.Text.ToUpperInvariant() : run.Text, style, run, null, fields.LastOrDefault(f => f.Link != null)?.Link);
                    break;
                case Shape shape when shape.HasImage && shape.Width > 0 && shape.Height > 0:
                    if (fields.Any(f => f.SkipResult || !f.InResult)) break;
                    // A floating picture takes no room in the line; the paginator places it.
                    if (FloatPlacement.Of(shape) is { } placement) { (floats ??= new()).Add((shape, placement, null)); break; }
                    Add(ObjectChar.ToString(), markStyle, shape, shape, fields.LastOrDefault(f => f.Link != null)?.Link);
                    break;
                case Shape box when box.IsTextBox && FloatPlacement.Of(box) is { Width: > 0, Height: > 0 } boxPlacement:
                    if (fields.Any(f => f.SkipResult || !f.InResult)) break;
                    (floats ??= new()).Add((box, boxPlacement, TextBoxContent(box, boxPlacement)));
                    break;
                case Footnote note when ctx.Notes != null:
                    if (fields.Any(f => f.SkipResult || !f.InResult)) break;
                    Add(ctx.Notes.Of(note), MarkStyle(TextStyle.Of(note.Font, ctx)), note, null, null);
                    break;
                case BookmarkStart b:
                    anchors.Add((sb.Length, b.Name));
                    break;
            }
        }
        // A text watermark is a kept drawing in a header, which the walk above does not see.
        if (ctx.Page != null)
            foreach (var n in para.InlineNodes())
                if (n is OpaqueNode kept && WatermarkMark.Of(kept) is { Text: not null } mark)
                    (floats ??= new()).Add((kept, FloatPlacement.Centred(mark.Width, mark.Height), WatermarkText.Items(ctx, mark)));
        text = sb.ToString();
        if (text.Contains('\t')) tabStops = TabStops.Of(para);
        leaders = new char[text.Length];
    }

    // A text box's default insets: a tenth of an inch at the sides, half that above and below.
    private const double BoxInsetX = 7.2, BoxInsetY = 3.6;

    /// <summary>What a floating text box shows, relative to its top-left corner: its outline and its
    /// paragraphs set inside the insets.</summary>
    private List<PageItem> TextBoxContent(Shape box, FloatPlacement placement)
    {
        var items = new List<PageItem>();
        Stack.Emit(ctx.Blocks(box, Math.Max(1, placement.Width - 2 * BoxInsetX)), items, BoxInsetX, BoxInsetY);
        double w = placement.Width, h = placement.Height;
        items.Add(new LineItem(0, 0, w, 0, 0.75, TextStyle.Black));
        items.Add(new LineItem(w, 0, w, h, 0.75, TextStyle.Black));
        items.Add(new LineItem(w, h, 0, h, 0.75, TextStyle.Black));
        items.Add(new LineItem(0, h, 0, 0, 0.75, TextStyle.Black));
        return items;
    }

    /// <summary>Note marks are raised and smaller, whether or not their character style says so.</summary>
    private static TextStyle MarkStyle(TextStyle style) => style.Rise > 0 ? style : style with { Size = style.Size * 2 / 3, Rise = style.Size / 3 };

    /// <summary>Bullets stored as the private-use codes of the Symbol and Wingdings fonts, which
    /// substitute faces lack, as the Unicode characters they show.</summary>
    internal static string SymbolBullets(string label) => string.Create(label.Length, label, static (span, l) =>
    {
        for (int i = 0; i < l.Length; i++)
            span[i] = l[i] switch
            {
                '\uF0B7' => '\u2022',
                '\uF0A7' => '\u25AA',
                '\uF0D8' => '\u27A2',
                '\uF076' => '\u2756',
                '\uF0FC' => '\u2713',
                '\uF06E' => '\u25A0',
                '\uF071' => '\u25A1',
                _ => l[i],
            };
    });

    /// <summary>At a field's separator: page fields show the number for the page being laid out.</summary>
    private void BeginResult(FieldState f)
    {
        f.InResult = true;
        var code = f.Code.ToString().Trim();
        var word = code.Split(' ', 2)[0].ToUpperInvariant();
        if (word == "HYPERLINK") f.Link = HyperlinkTarget(code);
        if ((ctx.PageFieldValue(word, code) ?? FormField.Shown(f.Start!, word)) is { } value)
        {
            // Page numbers take the formatting of the text before them, or of the paragraph mark.
            f.SkipResult = true;
            Add(value, pieces.Count > 0 ? pieces[^1].Style : markStyle, null, null, null);
        }
    }

    internal static string? HyperlinkTarget(string code)
    {
        var parts = new List<string>();
        var rest = code.Substring("HYPERLINK".Length).Trim();
        bool local = false;
        while (rest.Length > 0)
        {
            if (rest.StartsWith("\\l", StringComparison.Ordinal)) { local = true; rest = rest[2..].TrimStart(); continue; }
            if (rest[0] == '\\') { int sp = rest.IndexOf(' '); rest = sp < 0 ? "" : rest[sp..].TrimStart(); if (rest.StartsWith('"')) { int q = rest.IndexOf('"', 1); rest = q < 0 ? "" : rest[(q + 1)..].TrimStart(); } continue; }
            string arg;
            if (rest[0] == '"') { int q = rest.IndexOf('"', 1); arg = q < 0 ? rest[1..] : rest[1..q]; rest = q < 0 ? "" : rest[(q + 1)..].TrimStart(); }
            else { int sp = rest.IndexOf(' '); arg = sp < 0 ? rest : rest[..sp]; rest = sp < 0 ? "" : rest[sp..].TrimStart(); }
            if (local) return "#" + arg;
            parts.Add(arg);
        }
        return parts.Count > 0 ? parts[0] : null;
    }

    private void Add(string s, TextStyle style, Node? node, Shape? image, string? link)
    {
        if (s.Length == 0) return;
        pieces.Add(new Piece(sb.Length, sb.Length + s.Length, style, node, image, link));
        sb.Append(s);
    }

    // ---- shaping ----

    private static bool IsControl(char c) => c is '\t' or '\v' or '\f' or '\u000e' or '\r' or '\n' or ObjectChar;

    private void Shape()
    {
        advance = new double[text.Length];
        foreach (var piece in pieces)
        {
            if (piece.Image != null) { advance[piece.Start] = piece.Image.Width; continue; }
            int i = piece.Start;
            while (i < piece.End)
            {
                if (IsControl(text[i])) { i++; continue; }
                var font = FaceFor(piece.Style.Font, i);
                int dir = BidiClass(text[i]);
                int j = i + CharLen(i), strongEnd = dir != 0 ? j : i;
                while (j < piece.End && !IsControl(text[j]) && FaceFor(piece.Style.Font, j) == font)
                {
                    int d = BidiClass(text[j]);
                    if (d != 0 && dir != 0 && d != dir) break;
                    if (dir == 0) dir = d;
                    j += CharLen(j);
                    if (d != 0) strongEnd = j;
                }
                // Spaces after right-to-left words belong to the left-to-right text around them.
                if (dir == 1 && strongEnd > i && !rtl) j = strongEnd;
                ShapeRange(i, j, piece.Style, font, rtl && dir == 0, dir != 1 && !(rtl && dir == 0));
                i = j;
            }
        }
    }

    /// <summary>1 for right-to-left letters (Hebrew, Arabic and their presentation forms), -1 for other
    /// letters and digits, 0 for the neutrals that take the direction of the text around them.</summary>
    private static int BidiClass(char c) =>
        c is (>= '\u0590' and <= '\u08FF') or (>= '\uFB1D' and <= '\uFDFF') or (>= '\uFE70' and <= '\uFEFF') ? 1
        : char.IsLetterOrDigit(c) ? -1 : 0;

    private int CharLen(int i) => char.IsHighSurrogate(text[i]) && i + 1 < text.Length && char.IsLowSurrogate(text[i + 1]) ? 2 : 1;

    /// <summary>The run's own face unless it lacks the character; spaces stay with the run's face.</summary>
    private ResolvedFont FaceFor(ResolvedFont font, int i)
    {
        int cp = char.ConvertToUtf32(text, i);
        if (cp <= 0x20 || font.Face.Has(cp)) return font;
        var other = ctx.Fonts.Fallback(font.Face, cp);
        return other == null ? font : new ResolvedFont(other, font.FakeBold && !other.Bold, font.FakeItalic && !other.Italic, font.RequestedName);
    }

    // Shaped pieces of the range being shaped, with where each starts in the paragraph's text.
    private readonly List<(int At, Shaping.ShapedText Shaped)> shapedPieces = new();

    /// <summary>Shapes text[start..end) in one face. Left-to-right text is shaped word by word (each
    /// with the spaces after it) through the face's cache: words repeat, and no font we lay out with
    /// kerns across a space. Right-to-left text is shaped whole, as its visual order spans words.</summary>
    private void ShapeRange(int start, int end, TextStyle style, ResolvedFont font, bool neutralRightToLeft, bool byWords)
    {
        var cache = font.Face.Words;
        shapedPieces.Clear();
        int n = 0;
        if (byWords)
        {
            for (int k = start; k < end;)
            {
                int m = k;
                while (m < end && text[m] != ' ') m++;
                while (m < end && text[m] == ' ') m++;
                var shaped = cache.Get(text.AsSpan(k, m - k), false);
                shapedPieces.Add((k, shaped));
                n += shaped.Glyphs.Length;
                k = m;
            }
        }
        else
        {
            var shaped = cache.Get(text.AsSpan(start, end - start), neutralRightToLeft);
            shapedPieces.Add((start, shaped));
            n = shaped.Glyphs.Length;
        }
        double scale = style.Size / font.Face.UnitsPerEm;
        var seg = new Segment(start, end, style, font, new ushort[n], new int[n], new float[n], new float[n], new float[n])
        {
            RightToLeft = !byWords && shapedPieces[0].Shaped.RightToLeft,
        };
        int g = 0;
        foreach (var (at, shaped) in shapedPieces)
        {
            for (int i = 0; i < shaped.Glyphs.Length; i++, g++)
            {
                seg.Glyphs[g] = shaped.Glyphs[i];
                seg.Clusters[g] = at + shaped.Clusters[i];
                seg.Advances[g] = (float)(shaped.Advances[i] * scale);
                seg.OffsetsX[g] = (float)(shaped.OffsetsX[i] * scale);
                seg.OffsetsY[g] = (float)(shaped.OffsetsY[i] * scale);
                advance[seg.Clusters[g]] += seg.Advances[g];
            }
        }
        segments.Add(seg);
    }

    // ---- lines ----

    private enum LineEnd { Wrap, Paragraph, Line, Page, Column }

    /// <summary>Where a line of this paragraph was laid, so that the paginator can lay the rest again
    /// beside a floating shape or in a column of another width: its paragraph, first character,
    /// index, the width it was laid at and the column's spans kept clear when it was laid (x1, x2
    /// pairs from the column's left edge; null for none).</summary>
    internal sealed record LineOrigin(ParagraphLayout Paragraph, int Start, int Index, double Width, double[]? Beside);

    /// <summary>Gives the spans of the column to keep clear for a line at <c>offset</c> below the
    /// first line laid again, of the given height.</summary>
    internal delegate double[]? BesideAt(double offset, double height);

    // The narrowest piece of a line text is set in beside a floating shape; a narrower gap stays empty.
    internal const double MinLineSpan = 18;

    private double width;

    private List<Block> Lines(double width)
    {
        this.width = width;
        var blocks = Lines(0, 0, para.ParagraphFormat.PageBreakBefore, false, 0, null);
        blocks[0].SpaceBefore = CellParagraphSpacing.Of(para, para.ParagraphFormat).Before;
        blocks[0].Floats = floats;
        return blocks;
    }

    /// <summary>The paragraph's lines again from <paramref name="from"/>'s line at the given width, each
    /// kept clear of what <paramref name="beside"/> gives for it; the first takes the replaced line's
    /// place and spacing.</summary>
    internal List<Block> Relay(ItemsBlock from, double width, BesideAt beside)
    {
        var origin = from.Origin!;
        this.width = width;
        var blocks = Lines(origin.Start, origin.Index, from.BreakBefore, from.ColumnBreakBefore, from.Height, beside);
        blocks[0].SpaceBefore = from.SpaceBefore;
        blocks[0].Floats = from.Floats;
        ((ItemsBlock)blocks[0]).Relaid = true;
        return blocks;
    }

    private List<Block> Lines(int start, int index, bool breakBefore, bool columnBreak, double heightHint, BesideAt? beside)
    {
        var pf = para.ParagraphFormat;
        double left = pf.LeftIndent, right = pf.RightIndent, firstLine = pf.FirstLineIndent;
        // A list paragraph without indents of its own takes its level's: text position and label position.
        if (para.IsListItem && left == 0 && firstLine == 0 && para.ListFormat.ListLevel is { } level)
        {
            left = level.TextPosition;
            firstLine = level.NumberPosition - level.TextPosition;
        }
        var align = pf.Alignment;
        var (_, spaceAfter, rule, spacing) = CellParagraphSpacing.Of(para, pf);
        var blocks = new List<Block>();
        var x = new double[text.Length + 1];
        double offset = 0;
        do
        {
            bool first = start == 0;
            double indent = left + (first ? firstLine : 0) + (index + blocks.Count < dropLines ? dropIndent : 0);
            var clear = beside?.Invoke(offset, blocks.Count > 0 ? blocks[^1].Height : heightHint);
            var spans = Spans(indent, width - right, clear);
            ItemsBlock? block = null;
            LineEnd kind;
            int next, lineFirst = start, s = 0;
            do
            {
                var (spanLeft, spanWidth) = spans[s];
                var (end, k) = Fill(start, spanLeft, spanWidth, left, first && firstLine < 0 && s == 0, x);
                kind = k;
                next = kind == LineEnd.Wrap || kind == LineEnd.Paragraph ? end : end + 1;
                var part = Line(start, end, kind, spanLeft, spanWidth, align, rule, spacing, x);
                block = block == null ? part : Beside(block, part);
                start = next;
            } while (kind == LineEnd.Wrap && ++s < spans.Count);
            block.Origin = new LineOrigin(this, lineFirst, index + blocks.Count, width, clear);
            block.BreakBefore = breakBefore;
            block.ColumnBreakBefore = columnBreak;
            breakBefore = kind == LineEnd.Page;
            columnBreak = kind == LineEnd.Column;
            blocks.Add(block);
            offset += block.Height;
            if (kind == LineEnd.Paragraph) break;
        } while (true);

        blocks[^1].SpaceAfter = spaceAfter;
        // Keep rules: lines of a kept-together paragraph, no single first or last line on a page,
        // and the last line of a keep-with-next paragraph with what follows.
        if (pf.KeepTogether) for (int i = 0; i < blocks.Count - 1; i++) blocks[i].KeepWithNext = true;
        if (pf.WidowControl && index + blocks.Count >= 2)
        {
            if (index == 0) blocks[0].KeepWithNext = true;
            if (blocks.Count >= 2) blocks[^2].KeepWithNext = true;
        }
        if (pf.KeepWithNext) blocks[^1].KeepWithNext = true;
        Frame(blocks, left, Math.Max(1, width - left - right), index == 0);
        return blocks;
    }

    /// <summary>The pieces of the span from <paramref name="from"/> to <paramref name="to"/> (from the
    /// column's left edge) outside the spans kept clear, at most two, none narrower than
    /// <see cref="MinLineSpan"/>; the whole span when nothing is kept clear or no piece is wide enough
    /// (the paginator then moves the line below what is in the way).</summary>
    private static List<(double Left, double Width)> Spans(double from, double to, double[]? clear)
    {
        var whole = new List<(double, double)> { (from, Math.Max(1, to - from)) };
        if (clear == null) return whole;
        var pieces = new List<(double Left, double Width)>();
        double at = from;
        for (int i = 0; i + 1 < clear.Length && at < to; i += 2)
        {
            if (clear[i] > at) pieces.Add((at, Math.Min(clear[i], to) - at));
            at = Math.Max(at, clear[i + 1]);
        }
        if (at < to) pieces.Add((at, to - at));
        pieces.RemoveAll(p => p.Width < MinLineSpan);
        if (pieces.Count > 2) pieces.RemoveRange(2, pieces.Count - 2);
        return pieces.Count == 0 ? whole : pieces;
    }

    /// <summary>One line of two pieces either side of a shape: the second's items join the first's.</summary>
    private static ItemsBlock Beside(ItemsBlock block, ItemsBlock part)
    {
        block.Items.AddRange(part.Items);
        block.Height = Math.Max(block.Height, part.Height);
        foreach (var n in part.Nodes)
            if (!block.Nodes.Contains(n)) block.Nodes.Add(n);
        if (part.Notes != null) (block.Notes ??= new List<Footnote>()).AddRange(part.Notes);
        return block;
    }

    /// <summary>Paragraph shading behind the lines and borders around them, between the indents.</summary>
    private void Frame(List<Block> blocks, double x, double w, bool withTop)
    {
        var pf = para.ParagraphFormat;
        var fill = pf.Shading.BackgroundPatternColorHex;
        Edge? Side(BorderType side) => TableLayout.Side(pf.GetBorder(side).Line);
        Edge? top = Side(BorderType.Top), bottom = Side(BorderType.Bottom), l = Side(BorderType.Left), r = Side(BorderType.Right);
        if ((fill is null or "auto") && top == null && bottom == null && l == null && r == null) return;
        for (int i = 0; i < blocks.Count; i++)
        {
            var items = ((ItemsBlock)blocks[i]).Items;
            double h = blocks[i].Height;
            if (fill is not (null or "auto")) items.Insert(0, new FillItem(x, 0, w, h, TextStyle.ParseColor(fill)));
            if (i == 0 && withTop && top is { } t) items.Add(new LineItem(x, 0, x + w, 0, t.Width, t.Color));
            if (i == blocks.Count - 1 && bottom is { } b) items.Add(new LineItem(x, h, x + w, h, b.Width, b.Color));
            if (l is { } le) items.Add(new LineItem(x, 0, x, h, le.Width, le.Color));
            if (r is { } ri) items.Add(new LineItem(x + w, 0, x + w, h, ri.Width, ri.Color));
        }
    }

    /// <summary>Finds where the line starting at <paramref name="start"/> ends; fills x with each
    /// character's offset from the line start, tabs resolved against the stops.</summary>
    private (int End, LineEnd Kind) Fill(int start, double indent, double avail, double leftIndent, bool hanging, double[] x)
    {
        double pos = 0;
        int lastBreak = -1;
        for (int i = start; i < text.Length; i++)
        {
            char c = text[i];
            x[i] = pos;
            switch (c)
            {
                case '\v' or '\n' or '\r': return (i, LineEnd.Line);
                case '\f': return (i, LineEnd.Page);
                case '\u000e': return (i, LineEnd.Column);
            }
            double w = c == '\t' ? TabWidth(i, indent + pos, leftIndent, hanging) : advance[i];
            if (pos + w > avail + 0.01 && !LineBreaking.IsSpace(c) && i > start)
            {
                if (lastBreak >= start) return (lastBreak + 1, LineEnd.Wrap);
                int cut = i;
                while (cut > start + 1 && advance[cut] == 0 && !char.IsWhiteSpace(text[cut])) cut--; // not inside a cluster
                return (cut, LineEnd.Wrap);
            }
            pos += w;
            if (LineBreaking.BreakAfter(text, i)) lastBreak = i;
        }
        x[text.Length] = pos;
        return (text.Length, LineEnd.Paragraph);
    }

    /// <summary>The width of the tab at <paramref name="i"/>, starting at <paramref name="at"/>: up to the
    /// next custom stop (right and centre stops align the text after the tab), else the next default
    /// stop every half inch; a hanging indent adds a stop at the indent, where list text starts.</summary>
    private double TabWidth(int i, double at, double leftIndent, bool hanging)
    {
        leaders[i] = '\0';
        double? indentStop = hanging && at < leftIndent - 0.01 ? leftIndent : null;
        foreach (var stop in tabStops)
        {
            if (stop.Position <= at + 0.01) continue;
            if (indentStop is { } ind && ind < stop.Position) return ind - at;
            leaders[i] = stop.Leader;
            double follow = stop.Align == 'l' ? 0 : FollowingWidth(i + 1);
            double w = stop.Position - at - (stop.Align == 'r' ? follow : stop.Align == 'c' ? follow / 2 : 0);
            return Math.Max(0, w);
        }
        if (indentStop is { } only) return only - at;
        double step = ctx.DefaultTabStop;
        double next = Math.Floor(at / step + 1e-6) * step + step;
        return next - at;
    }

    /// <summary>Width of the text after a tab, up to the next tab or break.</summary>
    private double FollowingWidth(int from)
    {
        double w = 0;
        for (int k = from; k < text.Length && text[k] is not ('\t' or '\v' or '\f' or '\u000e' or '\r' or '\n'); k++) w += advance[k];
        return w;
    }

    private ItemsBlock Line(int start, int end, LineEnd kind, double indent, double avail, ParagraphAlignment align,
        LineSpacingRule rule, double spacing, double[] x)
    {
        double ascent = 0, descent = 0, gap = 0;
        bool any = false;
        foreach (var p in pieces)
        {
            if (p.End <= start || p.Start >= end) continue;
            if (p.Image != null) { ascent = Math.Max(ascent, p.Image.Height); any = true; continue; }
            ascent = Math.Max(ascent, p.Style.Ascent);
            descent = Math.Max(descent, p.Style.Descent);
            gap = Math.Max(gap, p.Style.Gap);
            any = true;
        }
        foreach (var s in segments)
        {
            if (s.End <= start || s.Start >= end) continue;
            ascent = Math.Max(ascent, s.Font.Face.Ascent * s.Style.Size);
            descent = Math.Max(descent, s.Font.Face.Descent * s.Style.Size);
        }
        if (!any) { ascent = markStyle.Ascent; descent = markStyle.Descent; gap = markStyle.Gap; }
        double natural = ascent + descent + gap;
        double height = rule switch
        {
            LineSpacingRule.Exactly => spacing,
            LineSpacingRule.AtLeast => Math.Max(natural, spacing),
            _ => natural * spacing / 12,
        };
        double baseline = rule == LineSpacingRule.Exactly ? height * ascent / Math.Max(0.01, ascent + descent) : height - descent - gap;

        // Trailing spaces hang past the margin and do not count for alignment.
        int visibleEnd = end;
        while (visibleEnd > start && LineBreaking.IsSpace(text[visibleEnd - 1])) visibleEnd--;
        double used = visibleEnd > start ? x[visibleEnd - 1] + Width(visibleEnd - 1, x) : 0;
        double free = Math.Max(0, avail - used);
        double shift = indent;
        double perSpace = 0;
        switch (align)
        {
            case ParagraphAlignment.Center: shift += free / 2; break;
            case ParagraphAlignment.Right: shift += free; break;
            case ParagraphAlignment.Justify or ParagraphAlignment.Distributed when kind == LineEnd.Wrap:
                int lastTab = text.LastIndexOf('\t', Math.Max(start, visibleEnd - 1), Math.Max(0, visibleEnd - start));
                int spaces = 0;
                for (int i = Math.Max(start, lastTab + 1); i < visibleEnd; i++) if (text[i] == ' ') spaces++;
                if (spaces > 0) perSpace = free / spaces;
                break;
        }
        if (linePos.Length < end - start + 1) linePos = new double[Math.Max(end - start + 1, 2 * linePos.Length)];
        var pos = linePos;
        double extra = 0;
        int justifyFrom = perSpace > 0 ? Math.Max(start, text.LastIndexOf('\t', Math.Max(start, visibleEnd - 1), Math.Max(0, visibleEnd - start)) + 1) : int.MaxValue;
        for (int i = start; i < end; i++)
        {
            pos[i - start] = shift + x[i] + extra;
            if (i >= justifyFrom && i < visibleEnd && text[i] == ' ') extra += perSpace;
        }
        pos[end - start] = shift + (end > start ? x[end - 1] + Width(end - 1, x) : 0) + extra;

        var block = new ItemsBlock { Height = height };
        block.Nodes.Add(para);
        block.Items.Add(new LineBox(indent, 0, avail, height));
        mirror = 2 * indent + avail;
        EmitGlyphs(block, start, end, pos, baseline);
        EmitDecorations(block, start, end, visibleEnd, pos, baseline);
        EmitLeaders(block, start, end, pos, baseline);
        foreach (var p in pieces)
            if (p.Node is Footnote note && p.Start >= start && p.Start < end) (block.Notes ??= new List<Footnote>()).Add(note);
        foreach (var (at, name) in anchors)
            if (at >= start && (at < end || at == end && kind == LineEnd.Paragraph))
                block.Items.Add(new AnchorItem(Left(pos[Math.Min(at, end) - start], pos[Math.Min(at, end) - start]), 0, name));
        return block;
    }

    private double Width(int i, double[] x) => text[i] == '\t' ? (i + 1 < x.Length ? x[i + 1] - x[i] : 0) : advance[i];

    /// <summary>Left edge of the span between two offsets from the line's start: mirrored on a right-to-left line.</summary>
    private double Left(double from, double to) => rtl ? mirror - to : from;

    private void EmitGlyphs(ItemsBlock block, int start, int end, double[] pos, double baseline)
    {
        foreach (var s in segments)
        {
            if (s.End <= start || s.Start >= end) continue;
            int count = 0;
            foreach (int c in s.Clusters)
                if (c >= start && c < end) count++;
            if (count == 0) continue;
            var glyphs = new ushort[count];
            var xs = new float[count];
            double yOff = 0;
            int lastCluster = -1, k = 0;
            double inCluster = 0;
            int a = Math.Max(s.Start, start), b = Math.Min(s.End, end);
            // Visual-order glyphs fill the run's span on the line from its left edge; left-to-right
            // glyphs keep their offsets from the span's start, wherever a mirrored line puts the span.
            double left = Left(pos[a - start], pos[b - start]), pen = left;
            for (int g = 0; g < s.Glyphs.Length; g++)
            {
                int c = s.Clusters[g];
                if (c < start || c >= end) continue;
                if (c != lastCluster) { inCluster = 0; lastCluster = c; }
                glyphs[k] = s.Glyphs[g];
                xs[k++] = (float)((s.RightToLeft ? pen : left + pos[c - start] - pos[a - start] + inCluster) + s.OffsetsX[g]);
                inCluster += s.Advances[g];
                pen += s.Advances[g];
                yOff = s.OffsetsY[g];
            }
            block.Items.Add(new GlyphRun(s.Font, s.Style.Size, glyphs, xs, 0, baseline - s.Style.Rise - yOff, s.Style.Color, text[a..b]));
            if (NodeAt(s.Start) is { } node && !block.Nodes.Contains(node)) block.Nodes.Add(node);
        }
    }

    /// <summary>The model node of the piece holding text offset <paramref name="at"/>, or null.</summary>
    private Node? NodeAt(int at)
    {
        foreach (var p in pieces)
            if (p.Start <= at && at < p.End) return p.Node;
        return null;
    }

    /// <summary>Leader characters across the gap of each tab that has them, on a grid of their own
    /// width so that the leaders of successive lines line up.</summary>
    private void EmitLeaders(ItemsBlock block, int start, int end, double[] pos, double baseline)
    {
        for (int i = start; i < end; i++)
        {
            if (text[i] != '\t' || leaders[i] == '\0') continue;
            var style = pieces.First(p => p.Start <= i && i < p.End).Style;
            var face = style.Font.Face;
            if (!face.Shaper.TryGetGlyph(leaders[i], out var glyph)) continue;
            double adv = face.Shaper.GetHorizontalGlyphAdvance(glyph) * style.Size / face.UnitsPerEm;
            if (adv <= 0) continue;
            double x1 = Left(pos[i - start], pos[i - start + 1]), x2 = x1 + pos[i - start + 1] - pos[i - start];
            var xs = new List<float>();
            for (double gx = Math.Ceiling(x1 / adv) * adv; gx + adv <= x2 - adv / 2; gx += adv) xs.Add((float)gx);
            if (xs.Count == 0) continue;
            block.Items.Add(new GlyphRun(style.Font, style.Size, Enumerable.Repeat((ushort)glyph, xs.Count).ToArray(), xs.ToArray(), 0, baseline - style.Rise,
                style.Color, new string(leaders[i], xs.Count)));
        }
    }

    private void EmitDecorations(ItemsBlock block, int start, int end, int visibleEnd, double[] pos, double baseline)
    {
        foreach (var p in pieces)
        {
            int a = Math.Max(p.Start, start), b = Math.Min(p.End, p.Image == null ? visibleEnd : end);
            if (a >= b) continue;
            double x1 = Left(pos[a - start], pos[b - start]), x2 = x1 + pos[b - start] - pos[a - start];
            if (p.Image != null)
            {
                block.Items.Add(new ImageItem(x1, baseline - p.Image.Height, p.Image.Width, p.Image.Height, p.Image.ImageData.ImageBytes!, false));
                if (!block.Nodes.Contains(p.Image)) block.Nodes.Add(p.Image);
            }
            var st = p.Style;
            double stroke = Math.Max(0.5, st.Size / 18);
            if (st.Underline) block.Items.Add(new LineItem(x1, baseline + st.Size * 0.12, x2, baseline + st.Size * 0.12, stroke, st.Color));
            if (st.Strike) block.Items.Add(new LineItem(x1, baseline - st.Size * 0.3, x2, baseline - st.Size * 0.3, stroke, st.Color));
            if (p.Link != null)
            {
                double top = baseline - (p.Image?.Height ?? st.Ascent);
                block.Items.Add(new LinkItem(x1, top, x2 - x1, baseline + st.Descent - top, p.Link));
            }
        }
    }
}
