using System.Text;
using Quorix.Folio.Drawing;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Tests.Callbacks;

/// <summary>The resource loading callback decides, for each external picture and style sheet, whether the
/// loader skips it, takes the callback's bytes, or loads it from where it lives.</summary>
public class ResourceLoadingCallbackTests
{
    private sealed class Decider : IResourceLoadingCallback
    {
        public readonly List<(ResourceType Type, string Original, string Uri)> Seen = new();
        public Func<ResourceLoadingArgs, ResourceLoadingAction> Decide = _ => ResourceLoadingAction.Default;

        public ResourceLoadingAction ResourceLoading(ResourceLoadingArgs args)
        {
            Seen.Add((args.ResourceType, args.OriginalUri, args.Uri));
            return Decide(args);
        }
    }

    private static readonly byte[] OnDisk = TestSupport.Png(5, 5);
    private static readonly byte[] Given = TestSupport.Png(9, 2);

    private static (string Dir, string Html) Page(string body)
    {
        var dir = Directory.CreateTempSubdirectory("qf-res-").FullName;
        File.WriteAllBytes(Path.Combine(dir, "pic.png"), OnDisk);
        File.WriteAllBytes(Path.Combine(dir, "other.png"), Given);
        File.WriteAllText(Path.Combine(dir, "s.css"), "p { font-weight: bold }");
        var html = Path.Combine(dir, "page.html");
        File.WriteAllText(html, "<html><head><link rel='stylesheet' href='s.css'></head><body>" + body + "</body></html>");
        return (dir, html);
    }

    private static List<Shape> Pictures(Document doc) => doc.GetChildNodes(NodeType.Shape, true).Cast<Shape>().ToList();

    [Fact]
    public void EachReferenceIsAskedAboutInOrderWithItsTypeAndFullLocation()
    {
        var (dir, html) = Page("<p>x<img src='pic.png'><img src='missing.png'></p>");
        var d = new Decider();
        var doc = new Document(html, new HtmlLoadOptions { ResourceLoadingCallback = d });
        Assert.Equal(new[]
        {
            (ResourceType.CssStyleSheet, "s.css", Path.Combine(dir, "s.css")),
            (ResourceType.Image, "pic.png", Path.Combine(dir, "pic.png")),
            (ResourceType.Image, "missing.png", Path.Combine(dir, "missing.png")),
        }, d.Seen);
        Assert.Equal(OnDisk, Assert.Single(Pictures(doc)).ImageData.ImageBytes);
        Assert.True(((Run)doc.GetChild(NodeType.Run, 0, true)!).Font.Bold);
    }

    [Fact]
    public void SkipLeavesOutUserProvidedUsesTheBytesAndANewUriIsFollowed()
    {
        var (_, html) = Page("<p><img src='pic.png'></p>");
        Assert.Empty(Pictures(new Document(html, new HtmlLoadOptions { ResourceLoadingCallback = new Decider { Decide = _ => ResourceLoadingAction.Skip } })));

        var given = new Decider { Decide = a => { a.SetData(Given); return ResourceLoadingAction.UserProvided; } };
        var doc = new Document(html, new HtmlLoadOptions { ResourceLoadingCallback = given });
        Assert.Equal(Given, Assert.Single(Pictures(doc)).ImageData.ImageBytes);
        // the style sheet was replaced by the picture's bytes, which are no CSS: nothing is bold
        Assert.False(((Run?)doc.GetChild(NodeType.Run, 0, true))?.Font.Bold ?? false);

        var moved = new Decider { Decide = a => { a.Uri = a.Uri.Replace("pic.png", "other.png"); return ResourceLoadingAction.Default; } };
        Assert.Equal(Given, Assert.Single(Pictures(new Document(html, new HtmlLoadOptions { ResourceLoadingCallback = moved }))).ImageData.ImageBytes);
    }

    [Fact]
    public void MarkdownPicturesGoThroughTheCallbackToo()
    {
        var dir = Directory.CreateTempSubdirectory("qf-res-").FullName;
        File.WriteAllText(Path.Combine(dir, "a.md"), "text ![alt](pic.png)\n");
        var d = new Decider { Decide = a => { a.SetData(Given); return ResourceLoadingAction.UserProvided; } };
        var doc = new Document(Path.Combine(dir, "a.md"), new MarkdownLoadOptions { ResourceLoadingCallback = d });
        Assert.Equal((ResourceType.Image, "pic.png"), (d.Seen.Single().Type, d.Seen.Single().Original));
        Assert.Equal(Given, Assert.Single(Pictures(doc)).ImageData.ImageBytes);
    }

    [Fact]
    public void UserProvidedWithoutDataAndExceptionsOfTheCallbackReachTheCaller()
    {
        var (_, html) = Page("<p><img src='pic.png'></p>");
        var e = Assert.Throws<InvalidOperationException>(() => new Document(html, new HtmlLoadOptions { ResourceLoadingCallback = new Decider { Decide = _ => ResourceLoadingAction.UserProvided } }));
        Assert.Contains("gave no data with SetData", e.Message);
        Assert.Throws<TimeoutException>(() => new Document(html, new HtmlLoadOptions { ResourceLoadingCallback = new Decider { Decide = _ => throw new TimeoutException() } }));
    }

    /// <summary>A DOCX whose only picture is linked to a file beside it rather than stored in the package.</summary>
    private static byte[] LinkedPictureDocx()
    {
        var doc = new Document();
        new DocumentBuilder(doc).InsertImage(TestSupport.Png(3, 3));
        var docx = TestSupport.ToBytes(doc);
        var rels = TestSupport.Part(docx, "word/_rels/document.xml.rels");
        var id = System.Text.RegularExpressions.Regex.Match(rels, "Id=\"(rId\\d+)\"[^>]*Target=\"media/").Groups[1].Value;
        Assert.NotEmpty(id);
        docx = TestSupport.WithPart(docx, "word/document.xml", x => x!.Replace($"r:embed=\"{id}\"", "r:link=\"rIdLinked\""));
        return TestSupport.WithPart(docx, "word/_rels/document.xml.rels", x => x!.Replace("</Relationships>",
            "<Relationship Id=\"rIdLinked\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/image\" Target=\"linked.png\" TargetMode=\"External\"/></Relationships>"));
    }

    [Fact]
    public void ALinkedDocxPictureIsAskedForAtLoadAndKeepsItsLinkWhenSaved()
    {
        var dir = Directory.CreateTempSubdirectory("qf-res-").FullName;
        var path = Path.Combine(dir, "linked.docx");
        File.WriteAllBytes(path, LinkedPictureDocx());

        // without a callback, a file beside the document is read
        File.WriteAllBytes(Path.Combine(dir, "linked.png"), OnDisk);
        Assert.Equal(OnDisk, Assert.Single(Pictures(new Document(path))).ImageData.ImageBytes);

        var d = new Decider { Decide = a => { a.SetData(Given); return ResourceLoadingAction.UserProvided; } };
        var doc = new Document(path, new LoadOptions { ResourceLoadingCallback = d });
        Assert.Equal((ResourceType.Image, "linked.png", Path.Combine(dir, "linked.png")), Assert.Single(d.Seen));
        Assert.Equal(Given, Assert.Single(Pictures(doc)).ImageData.ImageBytes);
        var saved = TestSupport.ToBytes(doc);
        Assert.Contains("r:link=\"rIdLinked\"", TestSupport.Part(saved, "word/document.xml"));
        Assert.Contains("TargetMode=\"External\"", TestSupport.Part(saved, "word/_rels/document.xml.rels"));

        // skipped, the drawing stays as read and nothing is modelled
        var skipped = new Document(path, new LoadOptions { ResourceLoadingCallback = new Decider { Decide = _ => ResourceLoadingAction.Skip } });
        Assert.Empty(Pictures(skipped));
        Assert.Contains("r:link=\"rIdLinked\"", TestSupport.Part(TestSupport.ToBytes(skipped), "word/document.xml"));
    }

    [Fact]
    public void ACallbacksExceptionDuringADocxLoadIsNotMistakenForDamage()
    {
        var bytes = LinkedPictureDocx();
        var e = Assert.Throws<OperationCanceledException>(() =>
            new Document(new MemoryStream(bytes), new LoadOptions { ResourceLoadingCallback = new Decider { Decide = _ => throw new OperationCanceledException("no") } }));
        Assert.Equal("no", e.Message);
        var seen = new WarningInfoCollection();
        new Document(new MemoryStream(bytes), new LoadOptions { WarningCallback = seen });
        Assert.Contains(seen, w => w.Source == WarningSource.Docx && w.Description.Contains("\"linked.png\" could not be loaded"));
    }
}
