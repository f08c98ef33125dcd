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
}
