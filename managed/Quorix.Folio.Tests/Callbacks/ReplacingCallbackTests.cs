using System.Text.RegularExpressions;
using Quorix.Folio.Replacing;

namespace Quorix.Folio.Tests.Callbacks;

/// <summary>The replacing callback decides each match; what it throws leaves the match's paragraph whole.</summary>
public class ReplacingCallbackTests
{
    private sealed class Decider : IReplacingCallback
    {
        public readonly List<string> Seen = new();
        public Func<ReplacingArgs, ReplaceAction> Decide = _ => ReplaceAction.Replace;

        public ReplaceAction Replacing(ReplacingArgs args)
        {
            Seen.Add(args.MatchString);
            return Decide(args);
        }
    }

    private static Document Paragraphs(params string[] texts)
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        foreach (var t in texts) b.Writeln(t);
        return doc;
    }

    private static string[] Texts(Document doc) =>
        doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().Select(p => p.GetText().TrimEnd('\r', '\f')).Where(t => t.Length > 0).ToArray();

    [Fact]
    public void StopEndsTheSearchAcrossParagraphsKeepingEarlierReplacements()
    {
        var doc = Paragraphs("a1 a2", "a3", "a4");
        var d = new Decider { Decide = a => a.MatchString == "a3" ? ReplaceAction.Stop : ReplaceAction.Replace };
        Assert.Equal(2, doc.Range.Replace(new Regex(@"a\d"), "X", new FindReplaceOptions { ReplacingCallback = d }));
        Assert.Equal(new[] { "a1", "a2", "a3" }, d.Seen);
        Assert.Equal(new[] { "X X", "a3", "a4" }, Texts(doc));
    }

    [Fact]
    public void GroupsAreReadableAndTheReplacementMayUseThem()
    {
        var doc = Paragraphs("name: Ada, name: Alan");
        var d = new Decider { Decide = a => { a.Replacement = a.GetGroup(1).ToUpperInvariant(); return ReplaceAction.Replace; } };
        Assert.Equal(2, doc.Range.Replace(new Regex(@"name: (\w+)"), "", new FindReplaceOptions { ReplacingCallback = d }));
        Assert.Equal(new[] { "ADA, ALAN" }, Texts(doc));
        var probe = new Decider { Decide = a => { a.GetGroup(2); return ReplaceAction.Skip; } };
        var e = Assert.Throws<ArgumentOutOfRangeException>(() => doc.Range.Replace(new Regex("(A)DA"), "", new FindReplaceOptions { ReplacingCallback = probe }));
        Assert.Contains("groups 0 to 1", e.Message);
    }

    [Fact]
    public void AnExceptionLeavesTheMatchsParagraphAsItWasAndEarlierOnesReplaced()
    {
        var doc = Paragraphs("a1", "a2 a3", "a4");
        var d = new Decider { Decide = a => a.MatchString == "a3" ? throw new TimeoutException("slow") : ReplaceAction.Replace };
        Assert.Throws<TimeoutException>(() => doc.Range.Replace(new Regex(@"a\d"), "X", new FindReplaceOptions { ReplacingCallback = d }));
        Assert.Equal(new[] { "X", "a2 a3", "a4" }, Texts(doc));
    }

    [Fact]
    public void AnActionThatIsNoneOfTheThreeIsRefused()
    {
        var doc = Paragraphs("a1");
        var d = new Decider { Decide = _ => (ReplaceAction)7 };
        var e = Assert.Throws<ArgumentOutOfRangeException>(() => doc.Range.Replace("a1", "X", new FindReplaceOptions { ReplacingCallback = d }));
        Assert.Contains("neither Replace, Skip nor Stop", e.Message);
        Assert.Equal(new[] { "a1" }, Texts(doc));
    }
}
