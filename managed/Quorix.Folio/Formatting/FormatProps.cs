namespace Quorix.Folio.Formatting;

/// <summary>The formatting a node holds: its modelled attributes, shared between equal formattings,
/// and what its file said that the engine does not model, kept by the format that read it.</summary>
internal readonly struct FormatProps
{
    private readonly AttrSet? attrs;

    public AttrSet Attrs { get => attrs ?? AttrSet.Empty; init => attrs = value; }

    public PropBag? Kept { get; init; }

    public FormatProps(AttrSet attrs, PropBag? kept)
    {
        this.attrs = attrs;
        Kept = kept;
    }

    public static FormatProps None => new(AttrSet.Empty, null);

    /// <summary>A copy that can be changed apart: the attributes are immutable, the kept markup is copied.</summary>
    public FormatProps Clone() => new(Attrs, Kept?.Clone());

    /// <summary>The kept markup of the formatting in the variable, made first when asked to.</summary>
    public static PropBag? KeptOf(ref FormatProps props, bool create, PropOrder? order = null)
    {
        if (create && props.Kept == null) props = props with { Kept = new PropBag(order ?? PropOrder.Run) };
        return props.Kept;
    }

    /// <summary>Gives the formatting in the variable new attributes, shared through the document when
    /// there is one; resolved formatting and laid-out pages depend on them, so the stamp moves.</summary>
    public static void Put(ref FormatProps props, DocumentBase? doc, AttrSet attrs)
    {
        props = props with { Attrs = doc?.Cascade.Shared(attrs) ?? attrs };
        FormatStamp.Bump();
    }

    public string? CharStyle => Attrs.String(FormatAttr.CharStyle);

    public FormatProps WithCharStyle(string? id) => this with { Attrs = Attrs.With(FormatAttr.CharStyle, id) };
}

/// <summary>A block that holds its own typed formatting: a table, row, cell or section.</summary>
internal interface IBlockFormatted
{
    ref FormatProps Props { get; }

    /// <summary>The codec that reads and writes this kind's formatting.</summary>
    Docx.PropsCodec Codec { get; }
}

/// <summary>Something that holds paragraph formatting: a paragraph, a style, a list level.</summary>
internal interface IParaFormatted
{
    AttrSet ParaAttrs { get; set; }

    /// <summary>The markup kept beside the attributes: list membership, tabs, borders, the mark's formatting.</summary>
    PropBag ParaKept { get; }
}

/// <summary>Something that holds character formatting: a run or another inline node, a style, the builder.</summary>
internal interface IRunFormatted
{
    AttrSet RunAttrs { get; set; }

    /// <summary>The markup kept beside the attributes, made on first use when asked to.</summary>
    PropBag? RunKept(bool create);
}

/// <summary>Character formatting held on its own, as the builder holds that of the runs it will insert.</summary>
internal sealed class FormatPropsBox : IRunFormatted
{
    public FormatProps Props = FormatProps.None;

    public AttrSet RunAttrs
    {
        get => Props.Attrs;
        set => Props = Props with { Attrs = value };
    }

    public PropBag? RunKept(bool create) => FormatProps.KeptOf(ref Props, create);
}
