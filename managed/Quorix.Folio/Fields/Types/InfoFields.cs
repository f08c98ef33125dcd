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

/// <summary>The AUTHOR field: the document's author.</summary>
public sealed class FieldAuthor : FieldPropertyBase
{
    internal FieldAuthor() { }

    private protected override string PropertyName => "Author";

    /// <summary>The name the field sets as author when updated; null to show the author.</summary>
    public string? AuthorName { get => Argument(0); set => Argument(0, value); }
}

/// <summary>The TITLE field: the document's title.</summary>
public sealed class FieldTitle : FieldPropertyBase
{
    internal FieldTitle() { }

    private protected override string PropertyName => "Title";

    /// <summary>The title the field sets when updated; null to show the title.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }
}

/// <summary>The SUBJECT field: the document's subject.</summary>
public sealed class FieldSubject : FieldPropertyBase
{
    internal FieldSubject() { }

    private protected override string PropertyName => "Subject";

    /// <summary>The subject the field sets when updated; null to show the subject.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }
}

/// <summary>The KEYWORDS field: the document's keywords.</summary>
public sealed class FieldKeywords : FieldPropertyBase
{
    internal FieldKeywords() { }

    private protected override string PropertyName => "Keywords";

    /// <summary>The keywords the field sets when updated; null to show them.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }
}

/// <summary>The COMMENTS field: the comments of the document's properties.</summary>
public sealed class FieldComments : FieldPropertyBase
{
    internal FieldComments() { }

    private protected override string PropertyName => "Comments";

    /// <summary>The comments the field sets when updated; null to show them.</summary>
    public string? Text { get => Argument(0); set => Argument(0, value); }
}

/// <summary>The LASTSAVEDBY field: who saved the document last.</summary>
public sealed class FieldLastSavedBy : FieldPropertyBase
{
    internal FieldLastSavedBy() { }

    private protected override string PropertyName => "LastSavedBy";
}

/// <summary>The TEMPLATE field: the name of the document's template.</summary>
public sealed class FieldTemplate : FieldPropertyBase
{
    internal FieldTemplate() { }

    private protected override string PropertyName => "Template";
}

/// <summary>The REVNUM field: how many times the document was saved.</summary>
public sealed class FieldRevNum : FieldPropertyBase
{
    internal FieldRevNum() { }

    private protected override string PropertyName => "RevisionNumber";
}

/// <summary>DOCPROPERTY: any built-in or custom property by name.</summary>
public sealed class FieldDocProperty : Field
{
    internal FieldDocProperty() { }

    /// <summary>The name of the document property the field shows.</summary>
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

    /// <summary>The name of the document information the field shows, such as Author.</summary>
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

/// <summary>The DOCVARIABLE field: the value of a document variable.</summary>
public sealed class FieldDocVariable : Field
{
    internal FieldDocVariable() { }

    /// <summary>The name of the variable the field shows.</summary>
    public string? VariableName { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) =>
        ctx.Options.DocumentVariables.TryGetValue(ParseCode().Arg(0), out var v) ? v : "Error! No document variable supplied.";
}

/// <summary>The FILENAME field: the document's file name.</summary>
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

/// <summary>The FILESIZE field: the size of the document's file.</summary>
public sealed class FieldFileSize : Field
{
    internal FieldFileSize() { }

    /// <summary>Whether the size is shown in kilobytes.</summary>
    public bool IsInKilobytes { get => Flag("\\k"); set => Flag("\\k", value); }

    /// <summary>Whether the size is shown in megabytes.</summary>
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

/// <summary>The USERNAME field: the user's name.</summary>
public sealed class FieldUserName : Field
{
    internal FieldUserName() { }

    /// <summary>The name the field shows instead of the user's own.</summary>
    public string? UserName { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => ParseCode().Args.FirstOrDefault() ?? ctx.Options.CurrentUser.Name;
}

/// <summary>The USERINITIALS field: the user's initials.</summary>
public sealed class FieldUserInitials : Field
{
    internal FieldUserInitials() { }

    /// <summary>The initials the field shows instead of the user's own.</summary>
    public string? UserInitials { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => ParseCode().Args.FirstOrDefault() ?? ctx.Options.CurrentUser.Initials;
}

/// <summary>The USERADDRESS field: the user's postal address.</summary>
public sealed class FieldUserAddress : Field
{
    internal FieldUserAddress() { }

    /// <summary>The address the field shows instead of the user's own.</summary>
    public string? UserAddress { get => Argument(0); set => Argument(0, value); }

    internal override string? Compute(FieldUpdateContext ctx) => ParseCode().Args.FirstOrDefault() ?? ctx.Options.CurrentUser.Address;
}
