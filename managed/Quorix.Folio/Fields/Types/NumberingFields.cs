using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>SEQ: numbers items of a named sequence (figures, tables) in document order.</summary>
public sealed class FieldSeq : Field
{
    internal FieldSeq() { }

    private protected override string[] ArgSwitches => new[] { "\\r", "\\s" };

    /// <summary>The name of the sequence being numbered, such as "Figure".</summary>
    public string? SequenceIdentifier { get => Argument(0); set => Argument(0, value); }

    /// <summary>The bookmark whose sequence number the field shows instead.</summary>
    public string? BookmarkName { get => Argument(1); set => Argument(1, value); }

    /// <summary>Whether the field shows the next number (the \n switch, the default).</summary>
    public bool InsertNextNumber { get => Flag("\\n"); set => Flag("\\n", value); }

    /// <summary>Whether the field repeats the last number (the \c switch).</summary>
    public bool InsertCurrentNumber { get => Flag("\\c"); set => Flag("\\c", value); }

    /// <summary>The number the sequence restarts at (the \r switch).</summary>
    public string? ResetNumber { get => SwitchText("\\r"); set => SwitchText("\\r", value); }

    /// <summary>The heading level at which the sequence restarts (the \s switch).</summary>
    public string? ResetHeadingLevel { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var id = code.Arg(0);
        if (id.Length == 0) throw new FieldUpdateException("SEQ names no sequence.");
        ctx.Sequences.TryGetValue(id, out var n);
        if (code.Get("\\s") is { } lvl && int.TryParse(lvl, out var level) && HeadingBefore(level) is { } heading)
        {
            // A new heading of the level starts the sequence again.
            if (!ctx.SequenceHeadings.TryGetValue(id, out var seen) || seen != heading) n = 0;
            ctx.SequenceHeadings[id] = heading;
        }
        if (code.Get("\\r") is { } r && int.TryParse(r, out var reset)) n = reset;
        else if (!code.Has("\\c")) n++;
        ctx.Sequences[id] = n;
        return code.Has("\\h") ? "" : n.ToString(CultureInfo.InvariantCulture);
    }

    private Paragraph? HeadingBefore(int level)
    {
        var target = StyleIdentifier.Heading1 + (level - 1);
        for (Node? n = Start.ParentParagraph; n != null; n = n.PreviousSibling)
            if (n is Paragraph p && p.ParagraphFormat.StyleIdentifier == target) return p;
        return null;
    }
}

/// <summary>AUTONUM and its legal and outline forms: paragraph numbers counted in document order.</summary>
public abstract class FieldAutoNumBase : Field
{
    private protected FieldAutoNumBase() { }

    private protected override string[] ArgSwitches => new[] { "\\s" };

    /// <summary>The character that follows the number (the \s switch).</summary>
    public string? SeparatorCharacter { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    private protected abstract string Style(int n);

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var sep = ParseCode().Get("\\s") ?? ".";
        return Style(++ctx.AutoNum) + sep;
    }
}

/// <summary>The AUTONUM field: a number that counts the paragraphs holding one.</summary>
public sealed class FieldAutoNum : FieldAutoNumBase
{
    internal FieldAutoNum() { }

    private protected override string Style(int n) => n.ToString(CultureInfo.InvariantCulture);
}

/// <summary>The AUTONUMLGL field: a legal-style number such as 1.1.2.</summary>
public sealed class FieldAutoNumLgl : FieldAutoNumBase
{
    internal FieldAutoNumLgl() { }

    /// <summary>Whether the number ends without a period (the \e switch).</summary>
    public bool RemoveTrailingPeriod { get => Flag("\\e"); set => Flag("\\e", value); }

    private protected override string Style(int n) => n.ToString(CultureInfo.InvariantCulture);

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var text = base.Compute(ctx)!;
        return ParseCode().Has("\\e") ? text.TrimEnd('.') : text;
    }
}

/// <summary>The AUTONUMOUT field: an outline-style number.</summary>
public sealed class FieldAutoNumOut : FieldAutoNumBase
{
    internal FieldAutoNumOut() { }

    private protected override string Style(int n) => NumberWords.Roman(n);
}

/// <summary>LISTNUM: numbers in a named list, counted in document order.</summary>
public sealed class FieldListNum : Field
{
    internal FieldListNum() { }

    private protected override string[] ArgSwitches => new[] { "\\l", "\\s" };

    /// <summary>The name of the list the field numbers in.</summary>
    public string? ListName { get => Argument(0); set => Argument(0, value); }

    /// <summary>The list level of the number (the \l switch).</summary>
    public string? ListLevel { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

    /// <summary>The number the field starts at (the \s switch).</summary>
    public string? StartingNumber { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        var key = code.Arg(0) + "/" + (code.Get("\\l") ?? "1");
        ctx.ListNums.TryGetValue(key, out var n);
        n = code.Get("\\s") is { } s && int.TryParse(s, out var start) ? start : n + 1;
        ctx.ListNums[key] = n;
        return n.ToString(CultureInfo.InvariantCulture) + ")";
    }
}
