using System.Globalization;
using System.Text.RegularExpressions;

namespace Quorix.Folio.Fields;

/// <summary>Fields that show one document property; an argument, where given, sets it.</summary>
public abstract class FieldPropertyBase : Field
{
    private protected FieldPropertyBase() { }

    private protected abstract string PropertyName { get; }

    // An argument sets the property, as the word processor does when the field is updated.
    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        if (code.Args.Count > 0 && ctx.Doc != null
            && typeof(Properties.BuiltInDocumentProperties).GetProperty(PropertyName) is { PropertyType: var t } p && t == typeof(string))
            p.SetValue(ctx.Doc.BuiltInDocumentProperties, string.Join(' ', code.Args));
        return ctx.Property(PropertyName) ?? "";
    }
}

public sealed class FieldAuthor : FieldPropertyBase
{
    internal FieldAuthor() { }

    private protected override string PropertyName => "Author";

    public string? AuthorName { get => Argument(0); set => Argument(0, value); }
}

public sealed class FieldTitle : FieldPropertyBase
{
    internal FieldTitle() { }

    private protected override string PropertyName => "Title";

    public string? Text { get => Argument(0); set => Argument(0, value); }
}

public sealed class FieldSubject : FieldPropertyBase
{
    internal FieldSubject() { }

    private protected override string PropertyName => "Subject";

    public string? Text { get => Argument(0); set => Argument(0, value); }
}

public sealed class FieldKeywords : FieldPropertyBase
{
    internal FieldKeywords() { }

    private protected override string PropertyName => "Keywords";

    public string? Text { get => Argument(0); set => Argument(0, value); }
}

public sealed class FieldComments : FieldPropertyBase
{
    internal FieldComments() { }

    private protected override string PropertyName => "Comments";

    public string? Text { get => Argument(0); set => Argument(0, value); }
}

public sealed class FieldLastSavedBy : FieldPropertyBase
{
    internal FieldLastSavedBy() { }

    private protected override string PropertyName => "LastSavedBy";
}

public sealed class FieldTemplate : FieldPropertyBase
{
    internal FieldTemplate() { }

    private protected override string PropertyName => "Template";
}

public sealed class FieldRevNum : FieldPropertyBase
{
    internal FieldRevNum() { }

    private protected override string PropertyName => "RevisionNumber";
}

/// <summary>DOCPROPERTY: any built-in or custom property by name.</summary>
public sealed class FieldDocProperty : Field
{
    internal FieldDocProperty() { }

    public string? PropertyName { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var name = ParseCode().Arg(0);
        if (name.Length == 0) throw new FieldUpdateException("DOCPROPERTY names no property.");
        return ctx.Property(name) ?? ctx.Property(name.Replace(" ", "")) ?? "Error! Unknown document property name.";
    }
}

/// <summary>INFO: a property named by the first argument, as the dedicated fields show it.</summary>
public sealed class FieldInfo : Field
{
    internal FieldInfo() { }

    public string? InfoType { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var name = code.Arg(0).ToUpperInvariant() switch
        {
            "KEYWORDS" => "Keywords", "LASTSAVEDBY" => "LastSavedBy", "CREATEDATE" => "CreatedTime", "SAVEDATE" => "LastSavedTime",
            var other => other,
        };
        return ctx.Property(name);
    }
}

public sealed class FieldDocVariable : Field
{
    internal FieldDocVariable() { }

    public string? VariableName { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) =>
        ctx.Options.DocumentVariables.TryGetValue(ParseCode().Arg(0), out var v) ? v : "Error! No document variable supplied.";
}

public sealed class FieldFileName : Field
{
    internal FieldFileName() { }

    /// <summary>\p: the full path rather than the name.</summary>
    public bool IncludeFullPath { get => Flag("\\p"); set => Flag("\\p", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var path = ctx.Options.FileName ?? ctx.Doc?.OriginalFileName;
        if (path == null) return null;
        return ParseCode().Has("\\p") ? path : Path.GetFileName(path);
    }
}

public sealed class FieldFileSize : Field
{
    internal FieldFileSize() { }

    public bool IsInKilobytes { get => Flag("\\k"); set => Flag("\\k", value); }

    public bool IsInMegabytes { get => Flag("\\m"); set => Flag("\\m", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var path = ctx.Options.FileName ?? ctx.Doc?.OriginalFileName;
        if (path == null || !File.Exists(path)) return null;
        double size = new FileInfo(path).Length;
        var code = ParseCode();
        if (code.Has("\\k")) size = Math.Round(size / 1024);
        else if (code.Has("\\m")) size = Math.Round(size / (1024 * 1024));
        return size.ToString(CultureInfo.InvariantCulture);
    }
}

/// <summary>Counts over the body text: words separated by white space.</summary>
public sealed class FieldNumWords : Field
{
    internal FieldNumWords() { }

    internal override string? Compute(FieldUpdateContext ctx) => ctx.Doc == null ? null : DocumentCounts.Words(ctx.Doc).ToString(CultureInfo.InvariantCulture);
}

/// <summary>Characters of the body text, not counting spaces.</summary>
public sealed class FieldNumChars : Field
{
    internal FieldNumChars() { }

    internal override string? Compute(FieldUpdateContext ctx) => ctx.Doc == null ? null : DocumentCounts.Characters(ctx.Doc).ToString(CultureInfo.InvariantCulture);
}

internal static class DocumentCounts
{
    private static IEnumerable<string> BodyTexts(Document doc)
    {
        foreach (Section s in doc.Sections)
            if (s.Body is { } b)
                foreach (Paragraph p in b.GetChildNodes(NodeType.Paragraph, true)) yield return Paragraphs.Visible(p);
    }

    public static int Words(Document doc) => BodyTexts(doc).Sum(t => Regex.Matches(t, @"\S+").Count);

    public static int Characters(Document doc) => BodyTexts(doc).Sum(t => t.Count(c => !char.IsWhiteSpace(c)));
}

public sealed class FieldUserName : Field
{
    internal FieldUserName() { }

    public string? UserName { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => ParseCode().Args.FirstOrDefault() ?? ctx.Options.CurrentUser.Name;
}

public sealed class FieldUserInitials : Field
{
    internal FieldUserInitials() { }

    public string? UserInitials { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => ParseCode().Args.FirstOrDefault() ?? ctx.Options.CurrentUser.Initials;
}

public sealed class FieldUserAddress : Field
{
    internal FieldUserAddress() { }

    public string? UserAddress { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => ParseCode().Args.FirstOrDefault() ?? ctx.Options.CurrentUser.Address;
}
