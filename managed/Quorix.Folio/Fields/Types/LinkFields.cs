using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>SYMBOL: one character by its code, decimal or (\h, 0x) hexadecimal.</summary>
public sealed class FieldSymbol : Field
{
    internal FieldSymbol() { }

    private protected override string[] ArgSwitches => new[] { "\\f", "\\s" };

    public string? CharacterCode { get => Argument(0); set => Argument(0, value); }

    public string? FontName { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    public string? FontSize { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    public bool IsUnicode { get => Flag("\\u"); set => Flag("\\u", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var arg = ParseCode().Arg(0);
        bool hex = arg.StartsWith("0x", StringComparison.OrdinalIgnoreCase);
        if (!int.TryParse(hex ? arg[2..] : arg, hex ? NumberStyles.HexNumber : NumberStyles.Integer, CultureInfo.InvariantCulture, out var c)
            || c <= 0 || c > 0x10FFFF || c is >= 0xD800 and <= 0xDFFF)
            throw new FieldUpdateException("SYMBOL has no character code.");
        return char.ConvertFromUtf32(c);
    }
}

/// <summary>HYPERLINK: a link; its shown text is the user's and stays.</summary>
public sealed class FieldHyperlink : Field
{
    internal FieldHyperlink() { }

    private protected override string[] ArgSwitches => new[] { "\\l", "\\o", "\\t" };

    public string? Address { get => Argument(0); set => Argument(0, value); }

    public string? SubAddress { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    public string? ScreenTip { get => SwitchText("\\o"); set => SwitchText("\\o", value); }

    public string? Target { get => SwitchText("\\t"); set => SwitchText("\\t", value); }

    public bool OpenInNewWindow { get => Flag("\\n"); set => Flag("\\n", value); }

    internal override string? Compute(FieldUpdateContext ctx) => Result.Length > 0 ? null : Argument(0) ?? SwitchText("\\l");
}

/// <summary>INCLUDETEXT: the text of a local file, or of one bookmark in it when it is a document.</summary>
public sealed class FieldIncludeText : Field
{
    internal FieldIncludeText() { }

    public string? SourceFullName { get => Argument(0); set => Argument(0, value); }

    public string? BookmarkName { get => Argument(1); set => Argument(1, value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var path = code.Arg(0);
        if (!ctx.Options.AllowIncludes || path.Length == 0 || !File.Exists(path)) return null;
        var lower = path.ToLowerInvariant();
        if (lower.EndsWith(".txt")) return File.ReadAllText(path).TrimEnd('\r', '\n').Replace("\r\n", "\v").Replace('\n', '\v');
        var other = new Document(path);
        var text = code.Args.Count > 1 ? other.Range.Bookmarks[code.Args[1]]?.Text : other.GetText();
        return text?.TrimEnd(ControlChar.ParagraphBreakChar, ControlChar.SectionBreakChar).Replace(ControlChar.ParagraphBreakChar, '\v');
    }
}
