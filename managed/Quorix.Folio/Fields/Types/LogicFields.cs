using System.Globalization;
using System.Text.RegularExpressions;

namespace Quorix.Folio.Fields;

/// <summary>How an IF or COMPARE comparison came out.</summary>
public enum FieldIfComparisonResult
{
    /// <summary>The comparison could not be made.</summary>
    Error = 0,
    /// <summary>The comparison holds.</summary>
    True = 1,
    /// <summary>The comparison does not hold.</summary>
    False = 2,
}

/// <summary>Comparisons as IF and COMPARE make them: numbers as numbers, text exactly, with * and ?
/// wildcards on the right of = and &lt;&gt;.</summary>
internal static class Comparison
{
    private static readonly string[] Ops = { "<=", ">=", "<>", "=", "<", ">" };

    /// <summary>The left operand, operator and right operand at the start of the arguments; how many arguments they took.</summary>
    public static (string Left, string Op, string Right, int Used)? Split(IReadOnlyList<string> args)
    {
        if (args.Count >= 3 && Array.IndexOf(Ops, args[1]) >= 0) return (args[0], args[1], args[2], 3);
        // Written without spaces: "3>2" or "a=" "b".
        if (args.Count >= 1)
            foreach (var op in Ops)
            {
                int i = args[0].IndexOf(op, StringComparison.Ordinal);
                if (i <= 0) continue;
                var right = args[0][(i + op.Length)..];
                if (right.Length > 0) return (args[0][..i], op, right, 1);
                if (args.Count >= 2) return (args[0][..i], op, args[1], 2);
            }
        return null;
    }

    public static bool Evaluate(string left, string op, string right, CultureInfo culture)
    {
        int cmp;
        if (FieldFormatting.TryNumber(left, culture, out var a) && FieldFormatting.TryNumber(right, culture, out var b)) cmp = a.CompareTo(b);
        else if (op is "=" or "<>" && (right.Contains('*') || right.Contains('?')))
        {
            var re = "^" + Regex.Escape(right).Replace("\\*", ".*").Replace("\\?", ".") + "$";
            bool match = Regex.IsMatch(left, re, RegexOptions.Singleline);
            return op == "=" ? match : !match;
        }
        else cmp = string.CompareOrdinal(left, right);
        return op switch { "=" => cmp == 0, "<>" => cmp != 0, "<" => cmp < 0, "<=" => cmp <= 0, ">" => cmp > 0, _ => cmp >= 0 };
    }
}

/// <summary>IF: one of two texts, by a comparison.</summary>
public sealed class FieldIf : Field
{
    internal FieldIf() { }

    /// <summary>The value left of the operator.</summary>
    public string? LeftExpression { get => Argument(0); set => Argument(0, value); }

    /// <summary>The operator: =, &lt;&gt;, &lt;, &lt;=, &gt; or &gt;=.</summary>
    public string? ComparisonOperator { get => Argument(1); set => Argument(1, value); }

    /// <summary>The value right of the operator.</summary>
    public string? RightExpression { get => Argument(2); set => Argument(2, value); }

    /// <summary>The result when the comparison holds.</summary>
    public string? TrueText { get => Argument(3); set => Argument(3, value); }

    /// <summary>The result when it does not.</summary>
    public string? FalseText { get => Argument(4); set => Argument(4, value); }

    /// <summary>Evaluates the comparison without changing the result.</summary>
    public FieldIfComparisonResult EvaluateCondition()
    {
        var code = ParseCode();
        var ctx = new FieldUpdateContext(Start.Document as Document);
        if (Comparison.Split(code.Args) is not { } c) return FieldIfComparisonResult.Error;
        return Comparison.Evaluate(c.Left, c.Op, c.Right, ctx.Culture) ? FieldIfComparisonResult.True : FieldIfComparisonResult.False;
    }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        if (Comparison.Split(code.Args) is not { } c) throw new FieldUpdateException("IF has no comparison.");
        int pick = c.Used + (Comparison.Evaluate(c.Left, c.Op, c.Right, ctx.Culture) ? 0 : 1);
        return code.Arg(pick);
    }
}

/// <summary>COMPARE: 1 when the comparison holds, else 0.</summary>
public sealed class FieldCompare : Field
{
    internal FieldCompare() { }

    /// <summary>The value left of the operator.</summary>
    public string? LeftExpression { get => Argument(0); set => Argument(0, value); }

    /// <summary>The operator: =, &lt;&gt;, &lt;, &lt;=, &gt; or &gt;=.</summary>
    public string? ComparisonOperator { get => Argument(1); set => Argument(1, value); }

    /// <summary>The value right of the operator.</summary>
    public string? RightExpression { get => Argument(2); set => Argument(2, value); }

    internal override string? Compute(FieldUpdateContext ctx)
    {
        if (Comparison.Split(ParseCode().Args) is not { } c) throw new FieldUpdateException("COMPARE has no comparison.");
        return Comparison.Evaluate(c.Left, c.Op, c.Right, ctx.Culture) ? "1" : "0";
    }
}

/// <summary>=: a formula over numbers, bookmarks and table cells.</summary>
public sealed class FieldFormula : Field
{
    internal FieldFormula() { }

    internal override bool FormatsResult => false;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        // The expression is everything after the sign up to the first switch, quotes and all.
        var tokens = CodeTokens();
        var parts = new List<string>();
        var first = tokens.Count > 0 ? tokens[0].Text : "";
        if (first.Length > 1) parts.Add(first[1..]);
        for (int i = 1; i < tokens.Count && !tokens[i].IsSwitch; i++) parts.Add(tokens[i].Text);
        var expr = string.Join(' ', parts);
        double v;
        try
        {
            v = Formula.Evaluate(expr, ctx, Start);
        }
        catch (FieldUpdateException e) when (e.Message.StartsWith('!'))
        {
            // The word processor shows the error as the result.
            return e.Message;
        }
        var code = ParseCode();
        var text = code.Get("\\#") is { } pic
            ? FieldFormatting.Number(v, pic, ctx.Culture)
            : Math.Round(v, 2, MidpointRounding.AwayFromZero).ToString("0.##", ctx.Culture);
        foreach (var a in code.All("\\*"))
            if (FieldFormatting.Parse(a) is { } g) text = FieldFormatting.General(text, g, ctx.Culture);
        return text;
    }
}
