using Quorix.Folio.Bibliography;

namespace Quorix.Folio.Fields;

/// <summary>CITATION: a citation of a source of the document's bibliography, in its author-date style.</summary>
public sealed class FieldCitation : Field
{
    internal FieldCitation() { }

    private protected override string[] ArgSwitches => new[] { "\\f", "\\l", "\\m", "\\p", "\\s", "\\v" };

    /// <summary>The tag of the source cited.</summary>
    public string? SourceTag { get => Argument(0); set => Argument(0, value); }

    /// <summary>The pages cited (the \p switch).</summary>
    public string? PageNumber { get => SwitchText("\\p"); set => SwitchText("\\p", value); }

    /// <summary>Text put before the citation (the \f switch).</summary>
    public string? Prefix { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>Text put after the citation (the \s switch).</summary>
    public string? Suffix { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    /// <summary>The tag of another source cited with this one (the \m switch).</summary>
    public string? AnotherSourceTag { get => SwitchText("\\m"); set => SwitchText("\\m", value); }

    /// <summary>The language of the citation (the \l switch).</summary>
    public string? FormatLanguageId { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>The volume cited (the \v switch).</summary>
    public string? VolumeNumber { get => SwitchText("\\v"); set => SwitchText("\\v", value); }

    /// <summary>Whether the authors are left out (the \n switch).</summary>
    public bool SuppressAuthor { get => Flag("\\n"); set => Flag("\\n", value); }

    /// <summary>Whether the year is left out (the \y switch).</summary>
    public bool SuppressYear { get => Flag("\\y"); set => Flag("\\y", value); }

    /// <summary>Whether the title is left out (the \t switch).</summary>
    public bool SuppressTitle { get => Flag("\\t"); set => Flag("\\t", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (ctx.Doc == null || !BibliographyStyleServed(ctx, this)) return null;
        var c = ParseCode();
        var sources = ctx.Doc.Bibliography;
        var cited = new List<string>();
        var tags = new List<string> { c.Arg(0) };
        tags.AddRange(c.All("\\m"));
        foreach (var tag in tags)
        {
            if (sources.Find(tag) is not { } s) return "Invalid source specified.";
            bool first = cited.Count == 0;
            cited.Add(ApaStyle.Cite(s, first ? c.Get("\\p") : null, first ? c.Get("\\f") : null, c.Has("\\n"), c.Has("\\y"), c.Has("\\t"))
                + (first ? c.Get("\\s") : null));
        }
        return "(" + string.Join("; ", cited) + ")";
    }

    /// <summary>Whether the document's citation style is one this engine writes; else warns, and the result stays.</summary>
    internal static bool BibliographyStyleServed(FieldUpdateContext ctx, Field field)
    {
        var style = ctx.Doc!.Bibliography.BibliographyStyle;
        if (ApaStyle.Serves(style)) return true;
        ctx.Doc.Warnings.Add(WarningType.MinorFormattingLoss, WarningSource.Unknown,
            $"The bibliography style \"{style}\" is not supported; \"{field.GetFieldCode()}\" keeps its result.");
        return false;
    }
}

/// <summary>BIBLIOGRAPHY: the reference list of the document's sources, sorted by author.</summary>
public sealed class FieldBibliography : Field
{
    internal FieldBibliography() { }

    private protected override string[] ArgSwitches => new[] { "\\l", "\\f", "\\m" };

    /// <summary>The language of the list (the \l switch).</summary>
    public string? FormatLanguageId { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    internal override bool WritesOwnResult => true;

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (ctx.Doc == null || !FieldCitation.BibliographyStyleServed(ctx, this)) return null;
        var doc = ctx.Doc;
        var style = doc.Styles["Bibliography"]?.Name;
        var paras = new List<Paragraph>();
        foreach (var s in doc.Bibliography.Sources.OrderBy(ApaStyle.SortKey, StringComparer.CurrentCultureIgnoreCase))
        {
            var p = new Paragraph(doc);
            if (style != null) p.ParagraphFormat.StyleName = style;
            foreach (var (text, italic) in ApaStyle.Entry(s))
            {
                var run = new Run(doc, text);
                if (italic) run.Font.Italic = true;
                p.AppendChild(run);
            }
            paras.Add(p);
        }
        WriteParagraphs(paras, "There are no sources in the current document.");
        return null;
    }
}
