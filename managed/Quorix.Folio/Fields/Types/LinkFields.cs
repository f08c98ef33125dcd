using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>SYMBOL: one character by its code, decimal or (\h, 0x) hexadecimal.</summary>
public sealed class FieldSymbol : Field
{
    internal FieldSymbol() { }

    private protected override string[] ArgSwitches => new[] { "\\f", "\\s" };

    /// <summary>The code of the character shown, decimal or hexadecimal.</summary>
    public string? CharacterCode { get => Argument(0); set => Argument(0, value); }

    /// <summary>The font the character is drawn in (the \f switch).</summary>
    public string? FontName { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>The size of the character in points (the \s switch).</summary>
    public string? FontSize { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    /// <summary>Whether the code is a Unicode code point (the \u switch).</summary>
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

    /// <summary>The address the link goes to.</summary>
    public string? Address { get => Argument(0); set => Argument(0, value); }

    /// <summary>The place inside the target, such as a bookmark (the \l switch).</summary>
    public string? SubAddress { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>The text shown when the pointer rests on the link (the \o switch).</summary>
    public string? ScreenTip { get => SwitchText("\\o"); set => SwitchText("\\o", value); }

    /// <summary>The frame the link opens in (the \t switch).</summary>
    public string? Target { get => SwitchText("\\t"); set => SwitchText("\\t", value); }

    /// <summary>Whether the link opens in a new window (the \n switch).</summary>
    public bool OpenInNewWindow { get => Flag("\\n"); set => Flag("\\n", value); }

    internal override string? Compute(FieldUpdateContext ctx) => Result.Length > 0 ? null : Argument(0) ?? SwitchText("\\l");
}

/// <summary>INCLUDETEXT: the text of a local file, or of one bookmark in it when it is a document.</summary>
public sealed class FieldIncludeText : Field
{
    internal FieldIncludeText() { }

    /// <summary>The path of the document whose text is included.</summary>
    public string? SourceFullName { get => Argument(0); set => Argument(0, value); }

    /// <summary>The bookmark whose text alone is included.</summary>
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
