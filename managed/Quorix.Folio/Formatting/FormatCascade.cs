namespace Quorix.Folio.Formatting;

/// <summary>The formatting a document's nodes inherit, resolved once per combination of styles:
/// document defaults, then the paragraph style and those it is based on, then the character style
/// and its bases. Direct formatting goes over it. Dropped whole at the next formatting edit.</summary>
internal sealed class FormatCascade
{
    private readonly DocumentBase doc;
    private long stamp = -1;
    private readonly Dictionary<(Style? Paragraph, string? Character), AttrSet> runs = new();
    private readonly Dictionary<(Style? Paragraph, string? Character, TableStyleCascade.Layer Table), AttrSet> cellRuns = new();
    private readonly Dictionary<(Style? Paragraph, TableStyleCascade.Layer Table), AttrSet> cellParagraphs = new();

    /// <summary>Table styles with the formatting they give each part of a table.</summary>
    public readonly TableStyleCascade Tables;
    private readonly Dictionary<Style, AttrSet> styleBases = new();
    private readonly Dictionary<Style, AttrSet> paragraphs = new(), paragraphStyleBases = new(), characterStyles = new();
    private AttrSet? paragraphDefaults;
    // One instance per distinct formatting in the document, whichever node or edit made it.
    private readonly Dictionary<AttrSet, AttrSet> shared = new();

    public FormatCascade(DocumentBase doc)
    {
        this.doc = doc;
        Tables = new TableStyleCascade(doc);
    }

    /// <summary>The document's instance of a set equal to this one.</summary>
    public AttrSet Shared(AttrSet set) => set.Intern(shared);

    internal Dictionary<AttrSet, AttrSet> SharedTable => shared;

    private void Check()
    {
        long now = FormatStamp.Current;
        if (now == stamp) return;
        runs.Clear();
        cellRuns.Clear();
        cellParagraphs.Clear();
        styleBases.Clear();
        paragraphs.Clear();
        paragraphStyleBases.Clear();
        characterStyles.Clear();
        paragraphDefaults = null;
        stamp = now;
    }

    /// <summary>What a run in a paragraph of that style (null: the default one), with that character style, inherits.</summary>
    public AttrSet Run(Style? paragraphStyle, string? characterStyleId)
    {
        Check();
        paragraphStyle ??= doc.Styles.DefaultParagraphStyle;
        if (runs.TryGetValue((paragraphStyle, characterStyleId), out var set)) return set;
        var result = paragraphStyle != null ? Chain(paragraphStyle, RunCodec, true, true) : RunCodec.Decode(doc.Styles.DefaultsFor("rPr")).Attrs;
        if (doc.Styles.FindById(characterStyleId) is { Type: StyleType.Character } cs) result = result.Then(Chain(cs, RunCodec, true, false));
        return runs[(paragraphStyle, characterStyleId)] = result;
    }

    /// <summary>What a run inherits in a paragraph of a table cell: the table style's formatting for the
    /// cell's place sits between the document defaults and the paragraph's style.</summary>
    public AttrSet Run(Style? paragraphStyle, string? characterStyleId, TableStyleCascade.Layer? table)
    {
        if (table == null || table.Run.IsEmpty) return Run(paragraphStyle, characterStyleId);
        Check();
        paragraphStyle ??= doc.Styles.DefaultParagraphStyle;
        if (cellRuns.TryGetValue((paragraphStyle, characterStyleId, table), out var set)) return set;
        var result = RunCodec.Decode(doc.Styles.DefaultsFor("rPr")).Attrs.Then(table.Run);
        if (paragraphStyle != null) result = result.Then(Chain(paragraphStyle, RunCodec, true, false));
        if (doc.Styles.FindById(characterStyleId) is { Type: StyleType.Character } cs) result = result.Then(Chain(cs, RunCodec, true, false));
        return cellRuns[(paragraphStyle, characterStyleId, table)] = result;
    }

    /// <summary>What a paragraph of that style inherits in a table cell, the table style's formatting beneath its style.</summary>
    public AttrSet Paragraph(Style? style, TableStyleCascade.Layer? table)
    {
        if (table == null || table.Paragraph.IsEmpty) return Paragraph(style);
        Check();
        if (cellParagraphs.TryGetValue((style, table), out var set)) return set;
        var result = Para.Decode(doc.Styles.DefaultsFor("pPr")).Attrs.Then(table.Paragraph);
        if (style != null) result = result.Then(Chain(style, Para, true, false));
        return cellParagraphs[(style, table)] = result;
    }

    /// <summary>What a style's own character formatting falls back on: its bases and the document defaults.</summary>
    public AttrSet StyleBase(Style style)
    {
        Check();
        if (styleBases.TryGetValue(style, out var set)) return set;
        return styleBases[style] = Chain(style, RunCodec, false, true);
    }

    /// <summary>What a paragraph of that style (null: none at all) inherits: its style chain over the document defaults.</summary>
    public AttrSet Paragraph(Style? style)
    {
        Check();
        if (style == null) return paragraphDefaults ??= Para.Decode(doc.Styles.DefaultsFor("pPr")).Attrs;
        if (paragraphs.TryGetValue(style, out var set)) return set;
        return paragraphs[style] = Chain(style, Para, true, true);
    }

    /// <summary>What a style's own paragraph formatting falls back on: its bases and the document defaults.</summary>
    public AttrSet ParagraphStyleBase(Style style)
    {
        Check();
        if (paragraphStyleBases.TryGetValue(style, out var set)) return set;
        return paragraphStyleBases[style] = Chain(style, Para, false, true);
    }

    /// <summary>A character style with its bases, without the document defaults.</summary>
    public AttrSet CharacterStyle(Style style)
    {
        Check();
        if (characterStyles.TryGetValue(style, out var set)) return set;
        return characterStyles[style] = Chain(style, RunCodec, true, false);
    }

    private static Docx.PropsCodec RunCodec => Docx.PropsCodec.Run;

    private static Docx.PropsCodec Para => Docx.PropsCodec.Paragraph;

    // The style's chain from the farthest base to the style itself (when self), over the defaults when asked.
    private AttrSet Chain(Style style, Docx.PropsCodec codec, bool self, bool defaults)
    {
        var (local, order) = codec == RunCodec ? ("rPr", PropOrder.Run) : ("pPr", PropOrder.Paragraph);
        var levels = new List<PropBag>();
        if (self && style.SubOrNull(local, order) is { } own) levels.Add(own);
        foreach (var s in style.Ancestors())
            if (s.SubOrNull(local, order) is { } b) levels.Add(b);
        if (defaults && doc.Styles.DefaultsFor(local) is { } d) levels.Add(d);
        var result = AttrSet.Empty;
        for (int i = levels.Count - 1; i >= 0; i--) result = result.Then(codec.Decode(levels[i]).Attrs);
        return result;
    }
}
