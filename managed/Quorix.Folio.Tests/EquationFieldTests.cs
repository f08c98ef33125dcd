using Quorix.Folio.Fields;

namespace Quorix.Folio.Tests;

public class EquationFieldTests
{
    private sealed class Warnings : IWarningCallback
    {
        public readonly List<string> Seen = new();
        public void Warning(WarningInfo info) => Seen.Add(info.Description);
    }

    private static (string Result, List<string> Warnings) Update(string code, string old = "")
    {
        var doc = new Document();
        var warnings = new Warnings();
        doc.WarningCallback = warnings;
        var f = new DocumentBuilder(doc).InsertField(code, old);
        Assert.IsType<FieldEQ>(f);
        doc.UpdateFields();
        return (doc.Range.Fields[0].Result, warnings.Seen);
    }

    [Theory]
    [InlineData("EQ \\f(1,2)", "1/2")]
    [InlineData("EQ \\F(a+b;c)", "(a+b)/c")]
    [InlineData("EQ \\r(,x)", "\u221Ax")]
    [InlineData("EQ \\r(3,x+1)", "\u221B(x+1)")]
    [InlineData("EQ \\r(5,y)", "\u2075\u221Ay")]
    [InlineData("EQ x\\s\\up8(2)+y\\s\\do4(10)", "x\u00B2+y\u2081\u2080")]
    [InlineData("EQ e\\s\\up(ix)", "e^(ix)")]
    [InlineData("EQ \\b(\\f(1,2))", "(1/2)")]
    [InlineData("EQ \\b\\bc\\[(\\l(a,b,c))", "[a,b,c]")]
    [InlineData("EQ \\b\\lc\\{\\rc\\|(x)", "{x|")]
    [InlineData("EQ price \\( net \\)", "price ( net )")]
    public void SwitchesAreShownAsText(string code, string expected)
    {
        var (result, warnings) = Update(code);
        Assert.Equal(expected, result);
        Assert.Empty(warnings);
    }

    [Theory]
    [InlineData("EQ \\i(0,1,x)", "the \\i switch cannot be shown as text.")]
    [InlineData("EQ \\a\\al(1,2)", "the \\a switch cannot be shown as text.")]
    [InlineData("EQ \\f(1,2", "a parenthesis is not closed.")]
    [InlineData("EQ \\f(1)", "a switch has 1 arguments where it takes 2 to 2.")]
    [InlineData("EQ \\r x", "a switch is missing its parenthesised arguments.")]
    [InlineData("EQ a)", "the \")\" at 2 closes nothing.")]
    public void WhatCannotBeShownKeepsTheResultAndWarns(string code, string reason)
    {
        var (result, warnings) = Update(code, "as drawn");
        Assert.Equal("as drawn", result);
        Assert.Equal($"EQ field \"{code}\": {reason} Its result is kept.", Assert.Single(warnings));
    }

    [Fact]
    public void DeepNestingIsRefusedBeforeTheStackRunsOut()
    {
        var code = "EQ " + string.Concat(Enumerable.Repeat("\\b(", 100_000)) + "x";
        var (result, warnings) = Update(code, "kept");
        Assert.Equal("kept", result);
        Assert.EndsWith("the equation nests more than 64 levels deep. Its result is kept.", Assert.Single(warnings));
    }
}
