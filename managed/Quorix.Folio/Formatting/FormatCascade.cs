namespace Quorix.Folio.Formatting;

/// <summary>The formatting a document's nodes inherit, resolved once per combination of styles:
/// document defaults, then the paragraph style and those it is based on, then the character style
/// and its bases. Direct formatting goes over it. Dropped whole at the next formatting edit.</summary>
internal sealed class FormatCascade
{
    private readonly DocumentBase doc;
    private long stamp = -1;
    private readonly Dictionary<(Style? Paragraph, string? Character), AttrSet> runs = new();
    private readonly Dictionary<Style, AttrSet> styleBases = new();
    // One instance per distinct formatting in the document, whichever node or edit made it.
    private readonly Dictionary<AttrSet, AttrSet> shared = new();

    public FormatCascade(DocumentBase doc) { this.doc = doc; }

    /// <summary>The document's instance of a set equal to this one.</summary>
    public AttrSet Shared(AttrSet set) => set.Intern(shared);

    internal Dictionary<AttrSet, AttrSet> SharedTable => shared;

    private void Check()
    {
        long now = FormatStamp.Current;
        if (now == stamp) return;
        runs.Clear();
        styleBases.Clear();
        stamp = now;
    }

    /// <summary>What a run in a paragraph of that style (null: the default one), with that character style, inherits.</summary>
    public AttrSet Run(Style? paragraphStyle, string? characterStyleId)
    {
        Check();
        paragraphStyle ??= doc.Styles.DefaultParagraphStyle;
        if (runs.TryGetValue((paragraphStyle, characterStyleId), out var set)) return set;
        var result = paragraphStyle != null ? Chain(paragraphStyle, true, true) : Decode(doc.Styles.DefaultsFor("rPr"));
        if (doc.Styles.FindById(characterStyleId) is { Type: StyleType.Character } cs) result = result.Then(Chain(cs, true, false));
        return runs[(paragraphStyle, characterStyleId)] = result;
    }

    /// <summary>What a style's own character formatting falls back on: its bases and the document defaults.</summary>
    public AttrSet StyleBase(Style style)
    {
        Check();
        if (styleBases.TryGetValue(style, out var set)) return set;
        return styleBases[style] = Chain(style, false, true);
    }

    /// <summary>A character style with its bases, without the document defaults.</summary>
    public AttrSet CharacterStyle(Style style) => Chain(style, true, false);

    // The style's chain from the farthest base to the style itself (when self), over the defaults when asked.
    private AttrSet Chain(Style style, bool self, bool defaults)
    {
        var levels = new List<PropBag>();
        if (self && style.SubOrNull("rPr", PropOrder.Run) is { } own) levels.Add(own);
        foreach (var s in style.Ancestors())
            if (s.SubOrNull("rPr", PropOrder.Run) is { } b) levels.Add(b);
        if (defaults && doc.Styles.DefaultsFor("rPr") is { } d) levels.Add(d);
        var result = AttrSet.Empty;
        for (int i = levels.Count - 1; i >= 0; i--) result = result.Then(Decode(levels[i]));
        return result;
    }

    private static AttrSet Decode(PropBag? bag) => Docx.RunPropsCodec.Decode(bag).Attrs;
}
