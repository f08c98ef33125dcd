using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Lists;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Formats.Flow;

/// <summary>Character formatting a flow reader has in effect; null means "as the style says".</summary>
internal sealed record CharFormat
{
    public static readonly CharFormat Plain = new();

    public bool Bold { get; init; }
    public bool Italic { get; init; }
    public Underline Underline { get; init; }
    public bool Strike { get; init; }
    public bool Code { get; init; }
    public bool Superscript { get; init; }
    public bool Subscript { get; init; }
    public string? Color { get; init; }
    public double? Size { get; init; }
    public string? FontName { get; init; }
}

/// <summary>What kind of block a paragraph is in the formats that tell blocks apart by meaning.</summary>
internal enum BlockKind { Normal, Heading, Quote, Code, Title }

/// <summary>Paragraph properties a flow reader sets.</summary>
internal sealed record ParaFormat
{
    public static readonly ParaFormat Normal = new();

    public BlockKind Kind { get; init; }
    public int HeadingLevel { get; init; }
    public ParagraphAlignment? Alignment { get; init; }
    public double? LeftIndent { get; init; }
    public double? FirstLineIndent { get; init; }
    public double? SpaceBefore { get; init; }
    public double? SpaceAfter { get; init; }
    /// <summary>The list the paragraph is an item of, and its level from 0.</summary>
    public List? List { get; init; }
    public int ListLevel { get; init; }
    public string? StyleName { get; init; }
}

/// <summary>Builds the model for the readers of flow formats (Markdown, HTML, RTF, ODT, text):
/// they say what comes next in reading order and this class places it in sections, paragraphs and tables.</summary>
internal sealed class FlowBuilder
{
    public const string CodeFont = "Courier New";
    public const string CodeBlockStyle = "HTML Preformatted";

    private readonly Document doc;
    // Each container remembers the paragraph that was being filled when it was entered.
    private readonly Stack<(CompositeNode Node, Paragraph? Resume)> containers = new();
    private readonly Stack<(Table Table, Row? Row)> tables = new();
    private Paragraph? paragraph;
    private FieldStart? openLink;

    public FlowBuilder(Document doc)
    {
        this.doc = doc;
        foreach (var sti in new[] { StyleIdentifier.Normal, StyleIdentifier.DefaultParagraphFont, StyleIdentifier.TableNormal, StyleIdentifier.NoList })
            doc.Styles.GetOrCreateBuiltIn(sti);
        // The same defaults as a new document, so that loaded and created documents look alike.
        doc.Styles.DefaultFont.Name = "Times New Roman";
        doc.Styles.DefaultFont.Size = 12;
        var section = new Section(doc);
        section.PageSetup.ApplyDefaults();
        doc.AppendChild(section);
        var body = new Body(doc);
        section.AppendChild(body);
        containers.Push((body, null));
    }

    public Document Document => doc;

    public Section CurrentSection => (Section)doc.LastChild!;

    /// <summary>The paragraph being filled; one is started when text arrives outside any.</summary>
    public Paragraph Paragraph => paragraph ??= StartParagraph(ParaFormat.Normal);

    public bool InParagraph => paragraph != null;

    public Paragraph StartParagraph(ParaFormat f)
    {
        EndLink();
        var p = new Paragraph(doc);
        containers.Peek().Node.AppendChild(p);
        paragraph = p;
        Apply(p, f);
        return p;
    }

    public void EndParagraph()
    {
        EndLink();
        paragraph = null;
    }

    private void Apply(Paragraph p, ParaFormat f)
    {
        var pf = p.ParagraphFormat;
        switch (f.Kind)
        {
            case BlockKind.Heading:
                pf.StyleIdentifier = StyleIdentifier.Heading1 + Math.Clamp(f.HeadingLevel, 1, 9) - 1;
                break;
            case BlockKind.Title:
                pf.StyleIdentifier = StyleIdentifier.Title;
                break;
            case BlockKind.Quote:
                pf.StyleIdentifier = StyleIdentifier.Quote;
                break;
            case BlockKind.Code:
                pf.Style = CodeStyle();
                break;
        }
        if (f.StyleName != null && doc.Styles[f.StyleName] is { Type: StyleType.Paragraph } named) pf.Style = named;
        if (f.Alignment is { } a) pf.Alignment = a;
        if (f.LeftIndent is { } li) pf.LeftIndent = li;
        if (f.FirstLineIndent is { } fi) pf.FirstLineIndent = fi;
        if (f.SpaceBefore is { } sb) pf.SpaceBefore = sb;
        if (f.SpaceAfter is { } sa) pf.SpaceAfter = sa;
        if (f.List != null)
        {
            p.ListFormat.List = f.List;
            p.ListFormat.ListLevelNumber = Math.Clamp(f.ListLevel, 0, 8);
        }
    }

    private Style CodeStyle()
    {
        if (doc.Styles[CodeBlockStyle] is { } s) return s;
        s = doc.Styles.Add(StyleType.Paragraph, CodeBlockStyle);
        s.Font.Name = CodeFont;
        s.Font.Size = 10;
        return s;
    }

    /// <summary>A new list whose first level numbers or bullets as asked; deeper levels follow the template.</summary>
    public List NewList(bool numbered, int start = 1)
    {
        var list = doc.Lists.Add(numbered ? ListTemplate.NumberDefault : ListTemplate.BulletDefault);
        if (numbered && start != 1) list.ListLevels[0].StartAt = start;
        return list;
    }

    /// <summary>A list nested in an item of <paramref name="parent"/>: the parent's next level, numbered or
    /// bulleted as the source wrote it.</summary>
    public static (List List, int Level) NestedList(List parent, int parentLevel, bool numbered)
    {
        int level = Math.Min(8, parentLevel + 1);
        var lvl = parent.ListLevels[level];
        if (numbered && lvl.NumberStyle == NumberStyle.Bullet)
        {
            lvl.NumberStyle = NumberStyle.Arabic;
            lvl.NumberFormat = "%" + (level + 1) + ".";
        }
        else if (!numbered && lvl.NumberStyle != NumberStyle.Bullet)
        {
            lvl.NumberStyle = NumberStyle.Bullet;
            lvl.NumberFormat = "\u2022";
        }
        return (parent, level);
    }

    /// <summary>Whether character formats say everything about the text (RTF, ODT), so that what the
    /// paragraph's style already gives is not repeated on the run; otherwise they only add to the style.</summary>
    public bool AbsoluteFormatting { get; set; }

    public Run Text(string text, CharFormat f)
    {
        var r = new Run(doc, text);
        Paragraph.AppendChild(r);
        if (AbsoluteFormatting) ApplyDifference(r.Font, f);
        else ApplyFont(r.Font, f);
        return r;
    }

    private readonly HashSet<StyleIdentifier> adopted = new();

    /// <summary>The look a source gives its heading or title style becomes, once, the look of the matching
    /// style here, so that the text of those paragraphs needs no formatting of its own.</summary>
    public void AdoptLook(StyleIdentifier sti, CharFormat f)
    {
        if (adopted.Add(sti)) ApplyDifference(doc.Styles.GetOrCreateBuiltIn(sti).Font, f);
    }

    private static void ApplyDifference(Font font, CharFormat f)
    {
        if (font.Bold != f.Bold) font.Bold = f.Bold;
        if (font.Italic != f.Italic) font.Italic = f.Italic;
        if (font.Underline != f.Underline) font.Underline = f.Underline;
        if (font.StrikeThrough != f.Strike) font.StrikeThrough = f.Strike;
        if (f.Superscript) font.Superscript = true;
        else if (f.Subscript) font.Subscript = true;
        var name = f.Code ? CodeFont : f.FontName;
        if (!string.IsNullOrEmpty(name) && font.Name != name) font.Name = name;
        if (f.Color != null && font.ColorHex != f.Color) font.ColorHex = f.Color;
        var size = Math.Clamp(f.Size ?? 12, 1, 1638);
        if (Math.Abs(font.Size - size) > 0.01) font.Size = size;
    }

    internal static void ApplyFont(Font font, CharFormat f)
    {
        if (f.Bold) font.Bold = true;
        if (f.Italic) font.Italic = true;
        if (f.Underline != Underline.None) font.Underline = f.Underline;
        if (f.Strike) font.StrikeThrough = true;
        if (f.Superscript) font.Superscript = true;
        else if (f.Subscript) font.Subscript = true;
        if (f.Code) font.Name = CodeFont;
        else if (!string.IsNullOrEmpty(f.FontName)) font.Name = f.FontName;
        if (f.Color != null) font.ColorHex = f.Color;
        if (f.Size is { } size) font.Size = Math.Clamp(size, 1, 1638);
    }

    public void LineBreak(CharFormat f) => Text(ControlChar.LineBreak, f);

    public void PageBreak() => Text(ControlChar.PageBreak, CharFormat.Plain);

    /// <summary>Text that follows, up to <see cref="EndLink"/>, is the shown text of a link.</summary>
    public void StartLink(string target)
    {
        EndLink();
        bool bookmark = target.StartsWith('#') && target.Length > 1;
        var quoted = (bookmark ? target[1..] : target).Replace("\"", "%22");
        var p = Paragraph;
        openLink = new FieldStart(doc);
        p.AppendChild(openLink);
        p.AppendChild(new Run(doc, bookmark ? $" HYPERLINK \\l \"{quoted}\" " : $" HYPERLINK \"{quoted}\" "));
        p.AppendChild(new FieldSeparator(doc));
    }

    public void EndLink()
    {
        if (openLink == null || paragraph == null) { openLink = null; return; }
        // Runs of the link take the link look unless the source said otherwise.
        var style = doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Hyperlink).StyleId;
        for (var n = openLink.next; n != null; n = n.next)
            if (n is Run r && n.PreviousSibling is not FieldStart && r.RPr.CharStyle == null && PastSeparator(r))
                r.RPr = r.RPr.WithCharStyle(style);
        paragraph.AppendChild(new FieldEnd(doc));
        openLink = null;
    }

    private bool PastSeparator(Node n)
    {
        for (var q = n.PreviousSibling; q != null && q != openLink; q = q.PreviousSibling)
            if (q is FieldSeparator) return true;
        return false;
    }

    public Shape Image(byte[] bytes, double width, double height, string alt)
    {
        var info = ImageInfo.Detect(bytes);
        if (info.Type is ImageType.NoImage or ImageType.Unknown)
            throw new ArgumentException("The data is not an image in a known format.", nameof(bytes));
        var shape = new Shape(doc);
        shape.ImageData.SetImage(bytes);
        shape.Width = width > 0 ? width : info.Width > 0 ? info.Width * 0.75 : 100;
        shape.Height = height > 0 ? height : info.Height > 0 ? info.Height * 0.75 : 100;
        shape.AlternativeText = alt ?? "";
        Paragraph.AppendChild(shape);
        return shape;
    }

    /// <summary>A footnote at the current position; the returned note is where its paragraphs go.</summary>
    public Footnote StartFootnote(FootnoteType type = FootnoteType.Footnote)
    {
        var note = new Footnote(doc, type);
        note.RPr = note.RPr.WithCharStyle(doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.FootnoteReference).StyleId);
        Paragraph.AppendChild(note);
        EnterContainer(note);
        return note;
    }

    /// <summary>Paragraphs go into <paramref name="c"/> until <see cref="LeaveContainer"/>.</summary>
    public void EnterContainer(CompositeNode c)
    {
        EndLink();
        containers.Push((c, paragraph));
        paragraph = null;
    }

    public void LeaveContainer()
    {
        EndLink();
        var (c, resume) = containers.Pop();
        if (c is Footnote or Cell or HeaderFooter && c.FirstChild == null) c.AppendChild(new Paragraph(doc));
        paragraph = resume;
    }

    public Table StartTable()
    {
        EndParagraph();
        var t = new Table(doc);
        containers.Peek().Node.AppendChild(t);
        tables.Push((t, null));
        return t;
    }

    public Row StartRow()
    {
        var (t, _) = tables.Pop();
        var row = new Row(doc);
        t.AppendChild(row);
        tables.Push((t, row));
        return row;
    }

    public Cell StartCell()
    {
        var (t, row) = tables.Peek();
        row ??= StartRow();
        var cell = new Cell(doc);
        row.AppendChild(cell);
        EnterContainer(cell);
        return cell;
    }

    public void EndCell() => LeaveContainer();

    /// <summary>Marks the row being filled as a heading row, repeated on each page.</summary>
    public void CurrentRowHeading()
    {
        if (tables.Peek().Row is { } r) r.RowFormat.HeadingFormat = true;
    }

    public bool InTable => tables.Count > 0;

    public void EndTable()
    {
        var (t, _) = tables.Pop();
        // A table needs rows and rows need cells to be a table anywhere.
        foreach (var r in t.Rows.ToArray())
            if (r.FirstCell == null) r.Remove();
        if (t.FirstRow == null) t.Remove();
        paragraph = null;
    }

    /// <summary>Starts a new section after the current one, with the same page set-up.</summary>
    public Section StartSection(SectionStart start)
    {
        EndParagraph();
        var old = CurrentSection;
        var s = new Section(doc, old.Props.Clone());
        s.PageSetup.SectionStart = start;
        doc.AppendChild(s);
        var body = new Body(doc);
        s.AppendChild(body);
        containers.Clear();
        containers.Push((body, null));
        return s;
    }

    /// <summary>Header or footer of the current section; paragraphs go there until <see cref="LeaveContainer"/>.</summary>
    public void EnterHeaderFooter(HeaderFooterType type)
    {
        var hf = CurrentSection.HeadersFooters[type];
        if (hf == null)
        {
            hf = new HeaderFooter(doc, type);
            CurrentSection.AppendChild(hf);
        }
        EnterContainer(hf);
    }

    /// <summary>Leaves the model loadable by every writer: no empty stories, no dangling link.</summary>
    public void Finish()
    {
        EndLink();
        while (tables.Count > 0) EndTable();
        foreach (var s in doc.Sections) s.EnsureMinimum();
    }
}
