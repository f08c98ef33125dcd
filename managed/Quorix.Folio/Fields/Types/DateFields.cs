using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>Fields that show a moment: the \@ picture formats it; without one, the culture's short date.</summary>
public abstract class FieldDateBase : Field
{
    private protected FieldDateBase() { }

    /// <summary>The picture the date is written with, such as "d MMMM yyyy" (the \@ switch).</summary>
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

/// <summary>The DATE field: today's date.</summary>
public sealed class FieldDate : FieldDateBase
{
    internal FieldDate() { }

    private protected override string[] ArgSwitches => new[] { "\\@" };

    /// <summary>\l: the date of the last insertion of the field (kept for compatibility).</summary>
    public bool UseLastFormat { get => Flag("\\l"); set => Flag("\\l", value); }

    /// <summary>Whether the Hijri lunar calendar is used (the \h switch).</summary>
    public bool UseLunarCalendar { get => Flag("\\h"); set => Flag("\\h", value); }

    /// <summary>Whether the Saka era calendar is used (the \s switch).</summary>
    public bool UseSakaEraCalendar { get => Flag("\\s"); set => Flag("\\s", value); }

    /// <summary>Whether the Um-al-Qura calendar is used (the \u switch).</summary>
    public bool UseUmAlQuraCalendar { get => Flag("\\u"); set => Flag("\\u", value); }

    internal override DateTime? Moment(FieldUpdateContext ctx) => ctx.Now;
}

/// <summary>The TIME field: the current time.</summary>
public sealed class FieldTime : FieldDateBase
{
    internal FieldTime() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => ctx.Now;

    private protected override string DefaultPicture(CultureInfo c) => c.DateTimeFormat.ShortTimePattern;
}

/// <summary>The CREATEDATE field: when the document was created.</summary>
public sealed class FieldCreateDate : FieldDateBase
{
    internal FieldCreateDate() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => Stored(ctx, "CreatedTime");
}

/// <summary>The SAVEDATE field: when the document was saved last.</summary>
public sealed class FieldSaveDate : FieldDateBase
{
    internal FieldSaveDate() { }

    internal override DateTime? Moment(FieldUpdateContext ctx) => Stored(ctx, "LastSavedTime");
}

/// <summary>The PRINTDATE field: when the document was printed last.</summary>
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
