using Quorix.Folio.Comparing;

namespace Quorix.Folio.Tests;

public class CompareTests
{
    private static Document Doc(params string[] paragraphs)
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        foreach (var p in paragraphs)
        {
            if (p.StartsWith('|'))
            {
                b.StartTable();
                foreach (var cell in p.Trim('|').Split('|')) { b.InsertCell(); b.Write(cell); }
                b.EndRow();
                b.EndTable();
                continue;
            }
            if (p.StartsWith("**")) { b.Font.Bold = true; b.Writeln(p[2..]); b.Font.Bold = false; }
            else b.Writeln(p);
        }
        return doc;
    }

    private static readonly DateTime When = new(2026, 3, 4, 5, 6, 7, DateTimeKind.Utc);

    // What every property of a comparison comes down to: accepting gives the new text, rejecting the old.
    private static void AssertBothWays(Document v1, Document v2, CompareOptions? options = null)
    {
        var compared = v1.Clone();
        compared.Compare(v2, "Reviewer", When, options ?? new CompareOptions());
        var accepted = TestSupport.RoundTrip(compared);
        var rejected = TestSupport.RoundTrip(compared);
        accepted.AcceptAllRevisions();
        rejected.RejectAllRevisions();
        Assert.Equal(v2.GetText(), accepted.GetText());
        Assert.Equal(v1.GetText(), rejected.GetText());
    }

    [Fact]
    public void ChangedWordsBecomeInsertionsAndDeletions()
    {
        var v1 = Doc("The quick brown fox jumps.", "Unchanged line.", "Gone paragraph.", "End.");
        var v2 = Doc("The slow brown fox leaps far.", "Unchanged line.", "End.", "A new paragraph.");
        var c = v1.Clone();
        c.Compare(v2, "Reviewer", When);
        var revs = c.Revisions.ToArray();
        Assert.All(revs, r => Assert.Equal("Reviewer", r.Author));
        Assert.All(revs, r => Assert.Equal(When, r.DateTime));
        var groups = c.Revisions.Groups.ToArray();
        Assert.Contains(groups, g => g.RevisionType == RevisionType.Deletion && g.Text == "quick");
        Assert.Contains(groups, g => g.RevisionType == RevisionType.Insertion && g.Text == "slow");
        Assert.Contains(groups, g => g.RevisionType == RevisionType.Deletion && g.Text == "Gone paragraph.");
        Assert.Contains(groups, g => g.RevisionType == RevisionType.Insertion && g.Text == "A new paragraph.");
        // The words that stayed are not revisions.
        Assert.DoesNotContain(groups, g => g.Text.Contains("brown"));
        AssertBothWays(v1, v2);
    }

    [Fact]
    public void ManyShapesOfChangeRoundTrip()
    {
        AssertBothWays(Doc("a b c"), Doc("a b c"));
        AssertBothWays(Doc("one", "two"), Doc("zero", "one", "two", "three"));
        AssertBothWays(Doc("x", "|a|b|", "y"), Doc("x", "|a|c|", "y"));
        AssertBothWays(Doc("**Bold start", "text"), Doc("Plain start", "text"));
        AssertBothWays(Doc("first", "second", "third"), Doc("third", "second", "first"));
        AssertBothWays(Doc(), Doc("all new", "lines"));
    }

    [Fact]
    public void OptionsChangeWhatCounts()
    {
        var v1 = Doc("Hello World", "|t|");
        var v2 = Doc("hello world", "|u|");
        var c = v1.Clone();
        c.Compare(v2, "r", When, new CompareOptions { IgnoreCaseChanges = true, IgnoreTables = true });
        Assert.False(c.HasRevisions);

        var chars = Doc("colour").Clone();
        chars.Compare(Doc("color"), "r", When, new CompareOptions { Granularity = Granularity.CharLevel });
        Assert.Equal("u", Assert.Single(chars.Revisions.Groups).Text);
        var words = Doc("colour").Clone();
        words.Compare(Doc("color"), "r", When);
        Assert.Equal(2, words.Revisions.Groups.Count);
    }

    [Fact]
    public void DocumentsWithChangesAreRefused()
    {
        var c = Doc("a").Clone();
        c.Compare(Doc("b"), "r", When);
        Assert.Throws<InvalidOperationException>(() => c.Compare(Doc("c"), "r", When));
    }

    [Fact]
    public void PandocSeesTheSameChanges()
    {
        var dir = TestSupport.TempDir();
        try
        {
            var v1 = Doc("The quick brown fox.", "Old line.");
            var v2 = Doc("The slow brown fox.", "New line here.");
            v1.Compare(v2, "Reviewer", When);
            var path = Path.Combine(dir, "diff.docx");
            v1.Save(path);
            string Pandoc(string mode) => TestSupport.Run("/usr/bin/pandoc", $"--track-changes={mode} -f docx -t plain \"{path}\"").Out.Replace("\n", " ").Trim();
            Assert.Equal("The slow brown fox.  New line here.", Pandoc("accept"));
            Assert.Equal("The quick brown fox.  Old line.", Pandoc("reject"));
        }
        finally { Directory.Delete(dir, true); }
    }

    private static Run RunWith(Document d, string text) =>
        d.GetChildNodes(NodeType.Run, true).OfType<Run>().Single(r => r.Text == text);

    [Fact]
    public void FormattingChangesAreRecordedAndDecidedLikeOtherChanges()
    {
        static Document Styled(string before, string styled, string after, Action<Font> look)
        {
            var d = new Document();
            var b = new DocumentBuilder(d);
            b.Write(before);
            look(b.Font);
            b.Write(styled);
            b.Font.ClearFormatting();
            b.Writeln(after);
            b.Writeln("An untouched paragraph.");
            return d;
        }
        var v1 = Styled("Plain ", "words", " here.", _ => { });
        var v2 = Styled("Plain ", "words", " here.", f => { f.Bold = true; f.ColorHex = "FF0000"; });
        var c = v1.Clone();
        c.Compare(v2, "Reviewer", When);
        var rev = Assert.Single(c.Revisions);
        Assert.Equal((RevisionType.FormatChange, "Reviewer", When), (rev.RevisionType, rev.Author, rev.DateTime));
        Assert.Equal("words", rev.ParentNode.GetText());
        Assert.Contains("<w:rPrChange", TestSupport.Part(TestSupport.ToBytes(c), "word/document.xml"));
        var accepted = TestSupport.RoundTrip(c);
        accepted.AcceptAllRevisions();
        Assert.Equal((true, "FF0000"), (RunWith(accepted, "words").Font.Bold, RunWith(accepted, "words").Font.ColorHex));
        var rejected = TestSupport.RoundTrip(c);
        rejected.RejectAllRevisions();
        Assert.False(rejected.GetChildNodes(NodeType.Run, true).OfType<Run>().Any(r => r.Font.Bold));
        Assert.Equal(v1.GetText(), rejected.GetText());

        var ignored = v1.Clone();
        ignored.Compare(v2, "Reviewer", When, new CompareOptions { IgnoreFormatting = true });
        Assert.False(ignored.HasRevisions);

        // Inside a paragraph whose words changed, the kept words' new look is a formatting change too.
        var w1 = Styled("The quick ", "brown", " fox.", _ => { });
        var w2 = Styled("The slow ", "brown", " fox.", f => f.Italic = true);
        var cw = w1.Clone();
        cw.Compare(w2, "Reviewer", When);
        var kinds = cw.Revisions.Select(r => (r.RevisionType, r.ParentNode.GetText())).ToArray();
        Assert.Contains((RevisionType.Deletion, "quick"), kinds);
        Assert.Contains((RevisionType.Insertion, "slow"), kinds);
        Assert.Contains((RevisionType.FormatChange, "brown"), kinds);
        AssertBothWays(w1, w2);
        var both = TestSupport.RoundTrip(cw);
        both.AcceptAllRevisions();
        Assert.True(RunWith(both, "brown").Font.Italic);
    }

    /// <summary>Three paragraphs; the middle one's paragraph formatting set by <paramref name="look"/>.</summary>
    private static Document Laid(string middle, Action<ParagraphFormat> look)
    {
        var d = new Document();
        var b = new DocumentBuilder(d);
        b.Writeln("A first paragraph.");
        look(b.ParagraphFormat);
        b.Writeln(middle);
        b.ParagraphFormat.ClearFormatting();
        b.Writeln("A last paragraph.");
        return d;
    }

    private static Paragraph ParagraphWith(Document d, string text) =>
        d.FirstSection!.Body!.Paragraphs.ToArray().Single(p => p.GetText().Trim() == text);

    [Fact]
    public void ParagraphFormattingChangesAreRecordedAndDecidedLikeOtherChanges()
    {
        var v1 = Laid("The middle one.", _ => { });
        var v2 = Laid("The middle one.", f => { f.Alignment = ParagraphAlignment.Center; f.LeftIndent = 36; f.StyleIdentifier = StyleIdentifier.Heading2; });
        var c = v1.Clone();
        c.Compare(v2, "Reviewer", When);
        var rev = Assert.Single(c.Revisions);
        Assert.Equal((RevisionType.FormatChange, "Reviewer", When), (rev.RevisionType, rev.Author, rev.DateTime));
        Assert.IsType<Paragraph>(rev.ParentNode);
        Assert.Contains("<w:pPrChange", TestSupport.Part(TestSupport.ToBytes(c), "word/document.xml"));
        // Until decided, the paragraph shows the other document's formatting.
        Assert.Equal(ParagraphAlignment.Center, ParagraphWith(c, "The middle one.").ParagraphFormat.Alignment);
        var accepted = TestSupport.RoundTrip(c);
        accepted.AcceptAllRevisions();
        var a = ParagraphWith(accepted, "The middle one.").ParagraphFormat;
        Assert.Equal((ParagraphAlignment.Center, 36.0, StyleIdentifier.Heading2), (a.Alignment, a.LeftIndent, a.StyleIdentifier));
        Assert.False(accepted.HasRevisions);
        var rejected = TestSupport.RoundTrip(c);
        rejected.RejectAllRevisions();
        var r = ParagraphWith(rejected, "The middle one.").ParagraphFormat;
        Assert.Equal((ParagraphAlignment.Left, 0.0, StyleIdentifier.Normal), (r.Alignment, r.LeftIndent, r.StyleIdentifier));

        // A paragraph whose words changed too: both kinds of change, and each way gives its document back.
        var w2 = Laid("The middle two.", f => f.Alignment = ParagraphAlignment.Right);
        var cw = v1.Clone();
        cw.Compare(w2, "Reviewer", When);
        var kinds = cw.Revisions.Select(x => x.RevisionType).ToArray();
        Assert.Contains(RevisionType.FormatChange, kinds);
        Assert.Contains(RevisionType.Insertion, kinds);
        AssertBothWays(v1, w2);
        var both = TestSupport.RoundTrip(cw);
        both.AcceptAllRevisions();
        Assert.Equal(ParagraphAlignment.Right, ParagraphWith(both, "The middle two.").ParagraphFormat.Alignment);

        var ignored = v1.Clone();
        ignored.Compare(v2, "Reviewer", When, new CompareOptions { IgnoreFormatting = true });
        Assert.False(ignored.HasRevisions);
        Assert.Equal(ParagraphAlignment.Left, ParagraphWith(ignored, "The middle one.").ParagraphFormat.Alignment);
    }

    [Fact]
    public void TheNewDocumentAsTargetGivesItsFormattingWithoutTrackingIt()
    {
        var v1 = Laid("Same words here.", _ => { });
        var v2 = Laid("Same words there.", f => f.Alignment = ParagraphAlignment.Justify);
        RunWith(v2, "A first paragraph.").Font.Bold = true;
        v2.FirstSection!.PageSetup.Orientation = Orientation.Landscape;
        var options = new CompareOptions { Target = ComparisonTargetType.New };
        var c = v1.Clone();
        c.Compare(v2, "Reviewer", When, options);
        // Only the changed word is tracked; the formatting is the other document's already.
        Assert.All(c.Revisions, x => Assert.NotEqual(RevisionType.FormatChange, x.RevisionType));
        Assert.Contains(c.Revisions.Groups, g => g.RevisionType == RevisionType.Insertion && g.Text == "there");
        Assert.Equal(ParagraphAlignment.Justify, c.FirstSection!.Body!.Paragraphs[1].ParagraphFormat.Alignment);
        Assert.True(RunWith(c, "A first paragraph.").Font.Bold);
        Assert.Equal(Orientation.Landscape, c.FirstSection!.PageSetup.Orientation);
        var rejected = TestSupport.RoundTrip(c);
        rejected.RejectAllRevisions();
        Assert.Equal(v1.GetText(), rejected.GetText());

        // The default target keeps the document's own layout and tracks the formatting.
        var current = v1.Clone();
        current.Compare(v2, "Reviewer", When);
        Assert.Equal(Orientation.Portrait, current.FirstSection!.PageSetup.Orientation);
        Assert.Equal(2, current.Revisions.Count(x => x.RevisionType == RevisionType.FormatChange));
        Assert.Equal(ComparisonTargetType.Current, new CompareOptions().Target);
    }

    /// <summary>A body paragraph with a footnote, a comment and a field, and a header, each with the given text.</summary>
    private static Document WithStories(string note, string comment, string fieldResult, string header)
    {
        var d = new Document();
        var b = new DocumentBuilder(d);
        b.Write("Body words");
        b.InsertFootnote(Notes.FootnoteType.Footnote, note);
        var c = new Comment(d, "Ann", "A", When);
        c.SetText(comment);
        b.CurrentParagraph.AppendChild(c);
        b.Write(" and ");
        b.InsertField("QUOTE \"" + fieldResult + "\"", fieldResult);
        b.Writeln(".");
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write(header);
        return d;
    }

    [Fact]
    public void NotesCommentsFieldsAndHeadersAreComparedUnlessIgnored()
    {
        var v1 = WithStories("first note", "first remark", "one", "Draft header");
        int Changes(Document v2, CompareOptions o)
        {
            var c = v1.Clone();
            c.Compare(v2, "Reviewer", When, o);
            return c.Revisions.Count;
        }
        var cases = new (Document V2, CompareOptions Ignoring)[]
        {
            (WithStories("second note", "first remark", "one", "Draft header"), new CompareOptions { IgnoreFootnotes = true }),
            (WithStories("first note", "second remark", "one", "Draft header"), new CompareOptions { IgnoreComments = true }),
            (WithStories("first note", "first remark", "two", "Draft header"), new CompareOptions { IgnoreFields = true }),
            (WithStories("first note", "first remark", "one", "Final header"), new CompareOptions { IgnoreHeadersAndFooters = true }),
        };
        foreach (var (v2, ignoring) in cases)
        {
            Assert.True(Changes(v2, new CompareOptions()) > 0);
            Assert.Equal(0, Changes(v2, ignoring));
        }
        Assert.Equal(0, Changes(v1.Clone(), new CompareOptions()));

        // A header's change is tracked in the header, word by word, and decided like any other.
        var final = cases[3].V2;
        var c = v1.Clone();
        c.Compare(final, "Reviewer", When);
        Assert.All(c.Revisions, r => Assert.NotNull(r.ParentNode.GetAncestor(NodeType.HeaderFooter)));
        Assert.Contains(c.Revisions.Groups, g => g.RevisionType == RevisionType.Deletion && g.Text == "Draft");
        Assert.Contains(c.Revisions.Groups, g => g.RevisionType == RevisionType.Insertion && g.Text == "Final");
        var accepted = TestSupport.RoundTrip(c);
        accepted.AcceptAllRevisions();
        Assert.Equal("Final header", accepted.FirstSection!.HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetText().Trim());
        var rejected = TestSupport.RoundTrip(c);
        rejected.RejectAllRevisions();
        Assert.Equal("Draft header", rejected.FirstSection!.HeadersFooters[HeaderFooterType.HeaderPrimary]!.GetText().Trim());

        // A footer only the other document has comes in as inserted.
        var footed = v1.Clone();
        var fb = new DocumentBuilder(footed);
        fb.MoveToHeaderFooter(HeaderFooterType.FooterPrimary);
        fb.Write("Page footer");
        var cf = v1.Clone();
        cf.Compare(footed, "Reviewer", When);
        Assert.Contains(cf.Revisions.Groups, g => g.RevisionType == RevisionType.Insertion && g.Text.Contains("Page footer"));
    }

    [Fact]
    public void MovedParagraphsBecomeMoves()
    {
        const string a = "The first clause, which moves to the end.", b = "The second clause stays.", c = "The third clause stays too.";
        var v1 = Doc(a, b, c, "ok");
        var v2 = Doc(b, c, a, "ok");
        var moved = v1.Clone();
        moved.Compare(v2, "Reviewer", When);
        var revs = moved.Revisions.ToArray();
        Assert.NotEmpty(revs);
        Assert.All(revs, r => Assert.Equal(RevisionType.Moving, r.RevisionType));
        var groups = moved.Revisions.Groups.ToArray();
        Assert.Equal(new[] { a, a }, groups.Select(g => g.Text));
        var xml = TestSupport.Part(TestSupport.ToBytes(moved), "word/document.xml");
        Assert.Contains("<w:moveFrom ", xml);
        Assert.Contains("<w:moveTo ", xml);
        Assert.Contains("<w:moveFromRangeStart", xml);
        Assert.Matches("moveFromRangeStart[^>]*w:name=\"move1\"[\\s\\S]*moveToRangeStart[^>]*w:name=\"move1\"", xml);
        AssertBothWays(v1, v2);

        // As insertions and deletions when asked, and for text too short to be taken for a move.
        var plain = v1.Clone();
        plain.Compare(v2, "Reviewer", When, new CompareOptions { AdvancedOptions = new AdvancedCompareOptions { ReportMovesAsInsertionsAndDeletions = true } });
        Assert.DoesNotContain(plain.Revisions, r => r.RevisionType == RevisionType.Moving);
        Assert.Contains(plain.Revisions, r => r.RevisionType == RevisionType.Deletion);
        var shortOnes = Doc("x1", b, c).Clone();
        shortOnes.Compare(Doc(b, c, "x1"), "Reviewer", When);
        Assert.DoesNotContain(shortOnes.Revisions, r => r.RevisionType == RevisionType.Moving);
        Assert.Throws<ArgumentOutOfRangeException>(() => new AdvancedCompareOptions { MinimumMoveLength = 0 });

        // A paragraph moved into a stretch that also changed stays a move; its neighbours are compared word by word.
        var m1 = Doc("alpha beta gamma", a, b, c);
        var m2 = Doc("alpha beta GAMMA", b, c, a);
        var cm = m1.Clone();
        cm.Compare(m2, "Reviewer", When);
        Assert.Equal(new[] { (RevisionType.Deletion, "gamma"), (RevisionType.Insertion, "GAMMA"), (RevisionType.Moving, a), (RevisionType.Moving, a) },
            cm.Revisions.Groups.Select(g => (g.RevisionType, g.Text)));
        AssertBothWays(m1, m2);
    }
}
