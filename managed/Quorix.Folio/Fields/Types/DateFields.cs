using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>Fields that show a moment: the \@ picture formats it; without one, the culture's short date.</summary>
public abstract class FieldDateBase : Field
{
    private protected FieldDateBase() { }

    public string? DateTimeFormat { get => SwitchText("\\@"); set => SwitchText("\\@", value); }

    internal abstract DateTime? Moment(FieldUpdateContext ctx);

    private protected virtual string DefaultPicture(CultureInfo c) => c.DateTimeFormat.ShortDatePattern;

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (Moment(ctx) is not { } m) return null;
        var code = ParseCode();
        var text = code.Get("\\@") is { } pic ? FieldFormatting.Date(m, pic, ctx.Culture) : m.ToString(DefaultPicture(ctx.Culture), ctx.Culture);
        foreach (var a in code.All("\\*"))
            if (FieldFormatting.Parse(a) is { } g) text = FieldFormatting.General(text, g, ctx.Culture);
        return text;
    }

    // Stored times are universal; fields show them in local time.
    private protected static DateTime? Stored(FieldUpdateContext ctx, string name) =>
        ctx.PropertyValue(name) is DateTime d && d != DateTime.MinValue ? (d.Kind == DateTimeKind.Local ? d : DateTime.SpecifyKind(d, DateTimeKind.Utc).ToLocalTime()) : null;
}

public sealed class FieldDate : FieldDateBase
{
    internal FieldDate() { }

    private protected override string[] ArgSwitches => new[] { "\\@" };

    /// <summary>\l: the date of the last insertion of the field (kept for compatibility).</summary>
    public bool UseLastFormat { get => Flag("\\l"); set => Flag("\\l", value); }

    public bool UseLunarCalendar { get => Flag("\\h"); set => Flag("\\h", value); }

    public bool UseSakaEraCalendar { get => Flag("\\s"); set => Flag("\\s", value); }

    public bool UseUmAlQuraCalendar { get => Flag("\\u"); set => Flag("\\u", value); }

    internal override DateTime? Moment(FieldUpdateContext ctx) => ctx.Now;
}

public sealed class FieldTime : FieldDateBase
{
    internal FieldTime() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => ctx.Now;

    private protected override string DefaultPicture(CultureInfo c) => c.DateTimeFormat.ShortTimePattern;
}

public sealed class FieldCreateDate : FieldDateBase
{
    internal FieldCreateDate() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => Stored(ctx, "CreatedTime");
}

public sealed class FieldSaveDate : FieldDateBase
{
    internal FieldSaveDate() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => Stored(ctx, "LastSavedTime");
}

public sealed class FieldPrintDate : FieldDateBase
{
    internal FieldPrintDate() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => Stored(ctx, "LastPrinted");
}

/// <summary>Minutes spent editing the document, as the file records them.</summary>
public sealed class FieldEditTime : Field
{
    internal FieldEditTime() { }

    internal override string? Compute(FieldUpdateContext ctx) => ctx.Property("TotalEditingTime") ?? "0";
}
