using System.Text;
using System.Text.RegularExpressions;
using Quorix.Folio.Notes;
using Quorix.Folio.Replacing;

namespace Quorix.Folio.Tests;

public class ReplaceTests
{
    private static Paragraph ParagraphOf(Document doc, params (string Text, double Size)[] runs)
    {
        var p = doc.FirstSection!.Body!.FirstParagraph!;
        foreach (var (text, size) in runs)
        {
            var r = new Run(doc, text);
            r.Font.Size = size;
            p.AppendChild(r);
        }
        return p;
    }

    [Fact]
    public void SeveralMatchesInOneRunAreEachReplacedOnce()
    {
        var doc = new Document();
        var p = ParagraphOf(doc, ("Invoice for ACME Ltd: ACME Ltd invoices monthly.", 10));
        Assert.Equal(2, doc.Range.Replace("ACME Ltd", "Contoso Holdings plc"));
        Assert.Equal("Invoice for Contoso Holdings plc: Contoso Holdings plc invoices monthly.", p.Runs[0].Text);
        Assert.Equal(1, doc.Range.Replace("Contoso Holdings plc invoices", "X"));
        Assert.Equal("Invoice for Contoso Holdings plc: X monthly.", p.Runs[0].Text);
    }

    [Fact]
    public void MatchAcrossRunsGoesIntoItsFirstRunAndOtherRunsKeepTheirFormatting()
    {
        var doc = new Document();
        var p = ParagraphOf(doc, ("one AC", 10), ("ME L", 11), ("td two", 12), ("three", 13));
        Assert.Equal(1, doc.Range.Replace("ACME Ltd", "Contoso"));
        Assert.Equal(new[] { "one Contoso", " two", "three" }, p.Runs.Cast<Run>().Select(r => r.Text));
        Assert.Equal(new[] { 10.0, 12, 13 }, p.Runs.Cast<Run>().Select(r => r.Font.Size));
    }

    [Fact]
    public void EveryStoryIsSearched()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("head old");
        b.MoveToHeaderFooter(HeaderFooterType.FooterPrimary);
        b.Write("foot old");
        b.MoveToDocumentEnd();
        b.Write("body old");
        b.InsertFootnote(FootnoteType.Footnote, "footnote old");
        b.InsertFootnote(FootnoteType.Endnote, "endnote old");
        var comment = new Comment(doc, "A", "A", DateTime.MinValue);
        var cp = new Paragraph(doc);
        cp.AppendChild(new Run(doc, "comment old"));
        comment.AppendChild(cp);
        b.CurrentParagraph.AppendChild(comment);
        b.StartTable();
        b.InsertCell();
        b.Write("cell old");
        b.EndRow();
        b.EndTable();
        Assert.Equal(7, doc.Range.Replace("old", "new"));
        var back = TestSupport.RoundTrip(doc);
        Assert.DoesNotContain("old", back.GetText() + string.Concat(back.GetChildNodes(NodeType.Any, true).OfType<InlineStory>().Select(s => s.GetText())));
        Assert.Equal("comment new", back.GetChild(NodeType.Comment, 0, true)!.GetText().Trim());
        Assert.Contains("head new", back.FirstSection!.HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetText());
    }

    [Fact]
    public void CaseIsMatchedUnlessTurnedOffAndWholeWordsRespectBoundaries()
    {
        var doc = new Document();
        var p = ParagraphOf(doc, ("Cat cat scatter cat_x cat.", 10));
        Assert.Equal(4, doc.Range.Replace("cat", "dog"));
        Assert.Equal("Cat dog sdogter dog_x dog.", p.GetText().TrimEnd('\f'));
        Assert.Equal(2, doc.Range.Replace("DOG", "cow", new FindReplaceOptions { MatchCase = false, FindWholeWordsOnly = true }));
        Assert.Equal("Cat cow sdogter dog_x cow.", p.GetText().TrimEnd('\f'));
    }

    [Fact]
    public void SubstitutionsOnlyWhenAskedForAndRegexOptionsDecideCase()
    {
        var doc = new Document();
        var p = ParagraphOf(doc, ("a1 b22 A3", 10));
        Assert.Equal(3, doc.Range.Replace(new Regex(@"([a-z])(\d+)", RegexOptions.IgnoreCase), "$2$1", new FindReplaceOptions { UseSubstitutions = true }));
        Assert.Equal("1a 22b 3A", p.GetText().TrimEnd('\f'));
        Assert.Equal(1, doc.Range.Replace(new Regex("22"), "$1$$", new FindReplaceOptions()));
        Assert.Equal("1a $1$$b 3A", p.GetText().TrimEnd('\f'));
        Assert.Equal(1, doc.Range.Replace("1a", "<$0>", new FindReplaceOptions { UseSubstitutions = true }));
        Assert.Equal("<1a> $1$$b 3A", p.GetText().TrimEnd('\f'));
    }

    [Fact]
    public void MatchesDoNotCrossFieldMarkersNotesOrPictures()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("total ");
        b.InsertField("PAGE", "7");
        b.Write(" pages");
        b.InsertFootnote(FootnoteType.Footnote, "n");
        b.Write(" end");
        // The pattern would span the field's markers and the note: nothing is replaced.
        Assert.Equal(0, doc.Range.Replace(new Regex("total.*end"), "x"));
        Assert.Equal(1, doc.Range.Replace(new Regex("pages"), "sheets"));
        Assert.Single(doc.Range.Fields);
        Assert.NotNull(doc.GetChild(NodeType.Footnote, 0, true));
    }

    private sealed class Decider : IReplacingCallback
    {
        public readonly List<string> Seen = new();
        public Func<ReplacingArgs, ReplaceAction> Decide = _ => ReplaceAction.Replace;

        public ReplaceAction Replacing(ReplacingArgs args)
        {
            Seen.Add(args.Match.Value + "@" + ((Run)args.MatchNode).Text + ":" + args.MatchOffset);
            return Decide(args);
        }
    }

    [Fact]
    public void CallbackSeesMatchesInTheChosenDirectionAndMaySkipChangeOrStop()
    {
        var doc = new Document();
        var p = ParagraphOf(doc, ("x1 x2", 10), (" x3", 11));
        var d = new Decider
        {
            Decide = a => a.Match.Value switch
            {
                "x3" => ReplaceAction.Skip,
                "x2" => (a.Replacement = "two") is { } ? ReplaceAction.Replace : ReplaceAction.Stop,
                _ => ReplaceAction.Stop,
            },
        };
        var n = doc.Range.Replace(new Regex(@"x\d"), "?", new FindReplaceOptions(FindReplaceDirection.Backward) { ReplacingCallback = d });
        Assert.Equal(new[] { "x3@ x3:1", "x2@x1 x2:3", "x1@x1 x2:0" }, d.Seen);
        Assert.Equal(1, n);
        Assert.Equal("x1 two x3", p.GetText().TrimEnd('\f'));
    }

    // Random paragraphs of runs over a small alphabet, so that matches are many, adjacent, empty,
    // and cross run boundaries; random expressions from a small grammar.
    private static readonly string[] Patterns =
    {
        "a", "ab", "ba+", "a|bc", "(a)(b)?", "c*", "b?", @"\s+", "[ac]{2}", "^a", "c$", "(?<x>b)c", "a.b", @"\bab", "",
    };
    private static readonly string[] Replacements = { "", "X", "$1", "[$0]", "${x}$1", "$$", "long replacement" };

    [Fact]
    public void ReplacingGivesWhatRegexGivesOnTheTextAndLeavesUntouchedRunsAlone()
    {
        var rnd = new Random(20261123);
        for (int trial = 0; trial < 400; trial++)
        {
            var doc = new Document();
            var pieces = Enumerable.Range(0, 1 + rnd.Next(6))
                .Select(i => (new string(Enumerable.Range(0, rnd.Next(7)).Select(_ => "abc "[rnd.Next(4)]).ToArray()), 10.0 + i)).ToArray();
            var p = ParagraphOf(doc, pieces);
            var re = new Regex(Patterns[rnd.Next(Patterns.Length)]);
            var repl = Replacements[rnd.Next(Replacements.Length)];
            var before = string.Concat(pieces.Select(x => x.Item1));
            var expected = re.Replace(before, repl);
            var ctx = $"trial {trial}: /{re}/ -> '{repl}' on [{string.Join("|", pieces.Select(x => x.Item1))}]";

            // Runs that no match touches must come through as they were, in size and text.
            var untouched = new List<(string, double)>();
            int offset = 0;
            var ms = re.Matches(before);
            foreach (var (t, size) in pieces)
            {
                int s = offset, e = offset + t.Length;
                offset = e;
                if (t.Length > 0 && !ms.Any(m => m.Index < e && m.Index + m.Length > s) && !ms.Any(m => m.Length == 0 && m.Index >= s && m.Index < e))
                    untouched.Add((t, size));
            }

            int n = doc.Range.Replace(re, repl);
            var runs = p.Runs.Cast<Run>().Select(r => (r.Text, r.Font.Size)).ToList();
            Assert.True(expected == string.Concat(runs.Select(r => r.Text)), ctx + $" gave '{string.Concat(runs.Select(r => r.Text))}', expected '{expected}'");
            Assert.True(ms.Count == n, ctx + $" counted {n}");
            foreach (var u in untouched) Assert.True(runs.Contains(u), ctx + $" lost untouched run {u}");
        }
    }
}
