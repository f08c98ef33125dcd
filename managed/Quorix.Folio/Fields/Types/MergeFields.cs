namespace Quorix.Folio.Fields;

/// <summary>MERGEFIELD: a place for one data field's value; mail merge fills it.</summary>
public sealed class FieldMergeField : Field
{
    internal FieldMergeField() { }

    private protected override string[] ArgSwitches => new[] { "\\b", "\\f" };

    /// <summary>The data field's name, with any TableStart: or Image: prefix removed.</summary>
    public string FieldName => FieldNameNoPrefix;

    /// <summary>The name as written in the code.</summary>
    public string? FieldNameFull { get => Argument(0); set => Argument(0, value); }

    internal string FieldNameNoPrefix
    {
        get
        {
            var n = ParseCode().Arg(0);
            int colon = n.IndexOf(':');
            return colon > 0 && Prefixes.Contains(n[..colon]) ? n[(colon + 1)..] : n;
        }
    }

    internal string Prefix
    {
        get
        {
            var n = ParseCode().Arg(0);
            int colon = n.IndexOf(':');
            return colon > 0 && Prefixes.Contains(n[..colon]) ? n[..colon] : "";
        }
    }

    private static readonly HashSet<string> Prefixes = new(StringComparer.OrdinalIgnoreCase) { "TableStart", "TableEnd", "Image", "BeginGroup", "EndGroup" };

    /// <summary>Text put before the merged value when it is not empty (the \b switch).</summary>
    public string? TextBefore { get => SwitchText("\\b"); set => SwitchText("\\b", value); }

    /// <summary>Text put after the merged value when it is not empty (the \f switch).</summary>
    public string? TextAfter { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>Whether the field names a mapped field rather than a data column (the \m switch).</summary>
    public bool IsMapped { get => Flag("\\m"); set => Flag("\\m", value); }

    /// <summary>Whether the merged text runs vertically (the \v switch).</summary>
    public bool IsVerticalFormatting { get => Flag("\\v"); set => Flag("\\v", value); }

    /// <summary>What the field shows for a value: the value formatted by its switches, between the \b and \f texts.</summary>
    internal string Render(string value, FieldUpdateContext ctx)
    {
        var code = ParseCode();
        value = FieldFormatting.Apply(value, code, ctx.Culture);
        if (value.Length == 0) return "";
        return (code.Get("\\b") ?? "") + value + (code.Get("\\f") ?? "");
    }
}

/// <summary>NEXT: the merge moves to the next record without starting a new copy.</summary>
public sealed class FieldNext : Field
{
    internal FieldNext() { }
}

/// <summary>NEXTIF: moves to the next record when the comparison holds.</summary>
public sealed class FieldNextIf : Field
{
    internal FieldNextIf() { }

    /// <summary>The value left of the operator.</summary>
    public string? LeftExpression { get => Argument(0); set => Argument(0, value); }

    /// <summary>The operator: =, &lt;&gt;, &lt;, &lt;=, &gt; or &gt;=.</summary>
    public string? ComparisonOperator { get => Argument(1); set => Argument(1, value); }

    /// <summary>The value right of the operator.</summary>
    public string? RightExpression { get => Argument(2); set => Argument(2, value); }
}

/// <summary>SKIPIF: drops the current copy when the comparison holds.</summary>
public sealed class FieldSkipIf : Field
{
    internal FieldSkipIf() { }

    /// <summary>The value left of the operator.</summary>
    public string? LeftExpression { get => Argument(0); set => Argument(0, value); }

    /// <summary>The operator: =, &lt;&gt;, &lt;, &lt;=, &gt; or &gt;=.</summary>
    public string? ComparisonOperator { get => Argument(1); set => Argument(1, value); }

    /// <summary>The value right of the operator.</summary>
    public string? RightExpression { get => Argument(2); set => Argument(2, value); }
}

/// <summary>MERGEREC: the number of the record being merged.</summary>
public sealed class FieldMergeRec : Field
{
    internal FieldMergeRec() { }
}

/// <summary>MERGESEQ: how many records have been merged so far, skipped ones not counted.</summary>
public sealed class FieldMergeSeq : Field
{
    internal FieldMergeSeq() { }
}
