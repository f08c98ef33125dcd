using System.Globalization;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Tests;

public class AuthorityFieldTests
{
    // Citations on pages 1 to 6: one case cited on five pages, one on two, a statute on a range.
    private static Document Brief(string toaCode)
    {
        var doc = new Document();
        doc.FieldOptions.FieldUpdateCulture = CultureInfo.InvariantCulture;
        var b = new DocumentBuilder(doc);
        b.InsertField(toaCode, "");
        b.Writeln();
        b.InsertBreak(BreakType.PageBreak);
        void Cite(string code) { b.Write("As held "); b.InsertField(code, ""); b.Writeln(); }
        Cite("TA \\l \"Smith v. Jones, 1 U.S. 1 (1900)\" \\s \"Smith\" \\c 1");
        Cite("TA \\l \"Adams v. Baker, 2 U.S. 2 (1901)\" \\s \"Adams\" \\c 1");
        for (int page = 2; page <= 5; page++)
        {
            b.InsertBreak(BreakType.PageBreak);
            Cite("TA \\s \"Smith\"");
            if (page == 3) Cite("TA \\s \"Adams\"");
        }
        b.InsertBreak(BreakType.PageBreak);
        b.StartBookmark("act");
        b.Writeln("The act says");
        b.InsertBreak(BreakType.PageBreak);
        b.Writeln("more.");
        b.EndBookmark("act");
        Cite("TA \\l \"Clean Water Act\" \\c 2 \\r act");
        return doc;
    }

    private static string[] Lines(Document doc) =>
        doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().Select(Paragraphs.Visible).TakeWhile(t => !t.TrimStart('\f').StartsWith("As held")).Where(t => t.Length > 0).ToArray();

    [Fact]
    public void TableListsACategorySortedWithPagesFromTheLayout()
    {
        var doc = Brief("TOA \\c 1 \\h");
        doc.UpdateFields();
        // The TOA's own page comes first, so the citations start on page 2.
        Assert.Equal(new[] { "Cases", "Adams v. Baker, 2 U.S. 2 (1901)\t2, 4", "Smith v. Jones, 1 U.S. 1 (1900)\t2, 3, 4, 5, 6" }, Lines(doc));
    }

    [Fact]
    public void PassimRangesSeparatorsAndEveryCategory()
    {
        var doc = Brief("TOA \\h \\p \\e \" ... \" \\l \"; \" \\g \"-\"");
        doc.FieldOptions.ToaCategories[2] = "Acts";
        doc.UpdateFields();
        Assert.Equal(new[] { "Cases", "Adams v. Baker, 2 U.S. 2 (1901) ... 2; 4", "Smith v. Jones, 1 U.S. 1 (1900) ... passim", "Acts", "Clean Water Act ... 7-8" }, Lines(doc));
        Assert.Equal("Statutes", ToaCategories.DefaultCategories[2]);
        Assert.Throws<ArgumentOutOfRangeException>(() => doc.FieldOptions.ToaCategories[17]);
    }

    [Fact]
    public void EmptyOrBadCategoriesSaySoOrKeepTheResult()
    {
        var doc = Brief("TOA \\c 5");
        doc.UpdateFields();
        Assert.Equal("No table of authorities entries found.", doc.Range.Fields[0].Result);

        var bad = Brief("TOA \\c x");
        bad.Range.Fields[0].Result = "kept";
        bad.UpdateFields();
        Assert.Equal("kept", bad.Range.Fields[0].Result);
        var ta = (FieldTA)bad.Range.Fields[1];
        Assert.Equal(("Smith v. Jones, 1 U.S. 1 (1900)", "Smith", "1"), (ta.LongCitation, ta.ShortCitation, ta.EntryCategory));
    }
}

public class IncludePictureFieldTests
{
    private sealed class Warnings : IWarningCallback
    {
        public readonly List<string> Seen = new();
        public void Warning(WarningInfo info) => Seen.Add(info.Description);
    }

    private sealed class Provider : IResourceLoadingCallback
    {
        public readonly List<string> Asked = new();
        public ResourceLoadingAction ResourceLoading(ResourceLoadingArgs args)
        {
            Asked.Add(args.OriginalUri);
            if (args.OriginalUri == "skip.png") return ResourceLoadingAction.Skip;
            args.SetData(TestSupport.Png(40, 20));
            return ResourceLoadingAction.UserProvided;
        }
    }

    [Fact]
    public void PicturesComeFromFilesRelativeToTheDocument()
    {
        var dir = TestSupport.TempDir();
        File.WriteAllBytes(Path.Combine(dir, "logo.png"), TestSupport.Png(64, 32));
        var b = new DocumentBuilder();
        b.InsertField("INCLUDEPICTURE \"logo.png\" \\d", "");
        b.Document.Save(Path.Combine(dir, "with-picture.docx"));

        var doc = new Document(Path.Combine(dir, "with-picture.docx"));
        doc.UpdateFields();
        var shape = Assert.IsType<Shape>(doc.GetChildNodes(NodeType.Shape, true).Cast<Node>().Single());
        Assert.Equal((48.0, 24.0, ImageType.Png), (shape.Width, shape.Height, shape.ImageData.ImageType));
        var field = Assert.IsType<FieldIncludePicture>(doc.Range.Fields[0]);
        Assert.Equal(("logo.png", true), (field.SourceFullName, field.IsLinked));

        // A new picture takes the place, and the size, of the one shown before.
        shape.Width = 30;
        File.WriteAllBytes(Path.Combine(dir, "logo.png"), TestSupport.Png(10, 10));
        field.Update();
        var again = (Shape)doc.GetChildNodes(NodeType.Shape, true)[0];
        Assert.Equal(1, doc.GetChildNodes(NodeType.Shape, true).Count);
        Assert.Equal((30.0, 24.0), (again.Width, again.Height));
        Assert.Equal(TestSupport.Png(10, 10), again.ImageData.ImageBytes);

        var saved = TestSupport.RoundTrip(doc);
        Assert.Equal(1, saved.GetChildNodes(NodeType.Shape, true).Count);
        Assert.Equal("INCLUDEPICTURE \"logo.png\" \\d", saved.Range.Fields[0].GetFieldCode());
    }

    [Fact]
    public void TheResourceCallbackProvidesOrSkipsAndMissingFilesWarn()
    {
        var doc = new Document();
        var warnings = new Warnings();
        doc.WarningCallback = warnings;
        var provider = new Provider();
        doc.FieldOptions.ResourceLoadingCallback = provider;
        var b = new DocumentBuilder(doc);
        b.InsertField("INCLUDEPICTURE \"http://example.invalid/chart.png\"", "");
        b.InsertField("INCLUDEPICTURE \"skip.png\"", "old picture");
        doc.UpdateFields();
        Assert.Equal(new[] { "http://example.invalid/chart.png", "skip.png" }, provider.Asked);
        Assert.Equal(1, doc.GetChildNodes(NodeType.Shape, true).Count);
        Assert.Equal("old picture", doc.Range.Fields[1].Result);

        doc.FieldOptions.ResourceLoadingCallback = null;
        var missing = Path.Combine(TestSupport.TempDir(), "gone.png");
        b.InsertField($"INCLUDEPICTURE \"{missing}\"", "kept");
        var notPicture = Path.Combine(TestSupport.TempDir(), "notes.txt");
        File.WriteAllText(notPicture, "plain text");
        b.InsertField($"INCLUDEPICTURE \"{notPicture}\"", "also kept");
        doc.Range.Fields[2].Update();
        doc.Range.Fields[3].Update();
        Assert.Equal(("kept", "also kept"), (doc.Range.Fields[2].Result, doc.Range.Fields[3].Result));
        Assert.Equal(new[] { $"The image \"{missing}\" could not be loaded.", $"The image \"{notPicture}\" is not a picture in a known format." }, warnings.Seen);
    }
}
