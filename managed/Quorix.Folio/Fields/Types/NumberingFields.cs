using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>SEQ: numbers items of a named sequence (figures, tables) in document order.</summary>
public sealed class FieldSeq : Field
{
    internal FieldSeq() { }

    private protected override string[] ArgSwitches => new[] { "\\r", "\\s" };

    public string? SequenceIdentifier { get => Argument(0); set => Argument(0, value); }

    public string? BookmarkName { get => Argument(1); set => Argument(1, value); }

    public bool InsertNextNumber { get => Flag("\\n"); set => Flag("\\n", value); }

    public bool InsertCurrentNumber { get => Flag("\\c"); set => Flag("\\c", value); }

    public string? ResetNumber { get => SwitchText("\\r"); set => SwitchText("\\r", value); }

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

    public string? SeparatorCharacter { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    private protected abstract string Style(int n);

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var sep = ParseCode().Get("\\s") ?? ".";
        return Style(++ctx.AutoNum) + sep;
    }
}

public sealed class FieldAutoNum : FieldAutoNumBase
{
    internal FieldAutoNum() { }

    private protected override string Style(int n) => n.ToString(CultureInfo.InvariantCulture);
}

public sealed class FieldAutoNumLgl : FieldAutoNumBase
{
    internal FieldAutoNumLgl() { }

    public bool RemoveTrailingPeriod { get => Flag("\\e"); set => Flag("\\e", value); }

    private protected override string Style(int n) => n.ToString(CultureInfo.InvariantCulture);

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var text = base.Compute(ctx)!;
        return ParseCode().Has("\\e") ? text.TrimEnd('.') : text;
    }
}

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

    public string? ListName { get => Argument(0); set => Argument(0, value); }

    public string? ListLevel { get => SwitchText("\\l"); set => SwitchText("\\l", value); }

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
