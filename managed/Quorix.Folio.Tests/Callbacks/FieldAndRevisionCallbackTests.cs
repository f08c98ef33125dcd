using Quorix.Folio.Fields;

namespace Quorix.Folio.Tests.Callbacks;

/// <summary>Field update tells a callback of each field and reports its progress; revision criteria choose the changes decided.</summary>
public class FieldAndRevisionCallbackTests
{
    private sealed class Watcher : IFieldUpdatingCallback, IFieldUpdatingProgressCallback
    {
        public readonly List<string> Log = new();
        public string? FailOn;

        public void FieldUpdating(Field field)
        {
            Log.Add("updating " + field.Type + " " + field.Result);
            if (field.GetFieldCode().Trim() == FailOn) throw new InvalidOperationException("failed on " + FailOn);
        }

        public void FieldUpdated(Field field) => Log.Add("updated " + field.Type + " " + field.Result);

        public void Notify(FieldUpdatingProgressArgs args) =>
            Log.Add($"progress {args.UpdatedFieldsCount}/{args.TotalFieldsCount}{(args.UpdateCompleted ? " done" : "")}");
    }

    private static Document WithFields()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.InsertField("= 1 + 1", "old");
        b.Write(" ");
        b.InsertField("= 2 * 3", "old");
        b.Write(" ");
        b.InsertField("= 10 - 1", "old");
        return doc;
    }

    [Fact]
    public void EachFieldIsToldBeforeAndAfterAndProgressCountsTheWholeDocument()
    {
        var doc = WithFields();
        var w = new Watcher();
        doc.FieldOptions.FieldUpdatingCallback = w;
        doc.FieldOptions.FieldUpdatingProgressCallback = w;
        Assert.Equal(3, doc.UpdateFields());
        Assert.Equal(new[]
        {
            "updating FieldFormula old", "updated FieldFormula 2", "progress 1/3",
            "updating FieldFormula old", "updated FieldFormula 6", "progress 2/3",
            "updating FieldFormula old", "updated FieldFormula 9", "progress 3/3 done",
        }, w.Log);
    }

    [Fact]
    public void AnExceptionStopsTheUpdateAndFieldsAfterItKeepTheirResults()
    {
        var doc = WithFields();
        var w = new Watcher { FailOn = "= 2 * 3" };
        doc.FieldOptions.FieldUpdatingCallback = w;
        var e = Assert.Throws<InvalidOperationException>(() => doc.UpdateFields());
        Assert.Equal("failed on = 2 * 3", e.Message);
        Assert.Equal(new[] { "2", "old", "old" }, doc.Range.Fields.Select(f => f.Result));
        doc.FieldOptions.FieldUpdatingCallback = null;
        Assert.Equal(3, doc.UpdateFields());
        Assert.Equal(new[] { "2", "6", "9" }, doc.Range.Fields.Select(f => f.Result));
    }

    private sealed class OfType : IRevisionCriteria
    {
        private readonly RevisionType type;
        public int Asked;

        public OfType(RevisionType type) { this.type = type; }

        public bool IsMatch(Revision revision)
        {
            Asked++;
            return revision.RevisionType == type;
        }
    }

    [Fact]
    public void RevisionCriteriaChooseWhichChangesAreAcceptedOrRejected()
    {
        var original = new Document();
        new DocumentBuilder(original).Write("keep old words here");
        var edited = new Document();
        new DocumentBuilder(edited).Write("keep new words there");
        original.Compare(edited, "reviewer", new DateTime(2026, 1, 1));
        int total = original.Revisions.Count;
        var insertions = new OfType(RevisionType.Insertion);
        int accepted = original.Revisions.Accept(insertions);
        Assert.Equal(total, insertions.Asked);
        Assert.True(accepted > 0);
        Assert.All(original.Revisions, r => Assert.Equal(RevisionType.Deletion, r.RevisionType));
        Assert.Equal(total - accepted, original.Revisions.Reject(new OfType(RevisionType.Deletion)));
        Assert.Equal(0, original.Revisions.Count);
        // inserted words accepted, deleted words kept: both are there
        Assert.Equal("keep oldnew words herethere", original.GetText().Trim());
    }
}
