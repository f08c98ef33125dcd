using System.Text;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests.Callbacks;

/// <summary>Pictures, style sheets and further parts that HTML and Markdown saves write beside the
/// output go where the callbacks say: renamed, into a stream of the callback's, or left be.</summary>
public class ResourceSavingCallbackTests
{
    private static readonly byte[] Picture = TestSupport.Png(6, 6);

    private static Document WithPictures()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("before ");
        b.InsertImage(Picture);
        b.InsertImage(TestSupport.Png(2, 7));
        var again = b.InsertImage(Picture);
        again.ImageData.ImageBytes = doc.GetChildNodes(NodeType.Shape, true).Cast<Drawing.Shape>().First().ImageData.ImageBytes;
        b.Write(" after");
        return doc;
    }

    private sealed class Images : IImageSavingCallback, IResourceSavingCallback
    {
        public readonly List<string> Log = new();
        public Action<ImageSavingArgs> OnImage = _ => { };
        public Action<ResourceSavingArgs> OnResource = _ => { };

        public void ImageSaving(ImageSavingArgs args)
        {
            Log.Add($"image {args.ImageFileName} {args.IsImageAvailable} {args.CurrentShape.NodeType}");
            OnImage(args);
        }

        public void ResourceSaving(ResourceSavingArgs args)
        {
            Log.Add($"resource {args.ResourceFileName} {args.ResourceFileUri}");
            OnResource(args);
        }
    }

    private static string Dir() => Directory.CreateTempSubdirectory("qf-save-").FullName;

    [Fact]
    public void MarkdownPicturesAreRenamedOnceEachAndTheTextRefersToTheNewNames()
    {
        var dir = Dir();
        var cb = new Images { OnImage = a => a.ImageFileName = "pic-" + a.ImageFileName };
        var doc = WithPictures();
        doc.Save(Path.Combine(dir, "out.md"), new MarkdownSaveOptions { ImageSavingCallback = cb, ResourceSavingCallback = cb });
        Assert.Equal(new[]
        {
            "image out.001.png True Shape", "resource pic-out.001.png pic-out.001.png",
            "image out.002.png True Shape", "resource pic-out.002.png pic-out.002.png",
        }, cb.Log);
        Assert.Equal(Picture, File.ReadAllBytes(Path.Combine(dir, "pic-out.001.png")));
        Assert.False(File.Exists(Path.Combine(dir, "out.001.png")));
        var md = File.ReadAllText(Path.Combine(dir, "out.md"));
        Assert.Equal(2, md.Split("](pic-out.001.png)").Length - 1);
        Assert.Contains("](pic-out.002.png)", md);
    }

    [Fact]
    public void PicturesGoToTheCallbacksStreamsWhichAreClosedUnlessKeptOpen()
    {
        var kept = new MemoryStream();
        var closed = new MemoryStream();
        var cb = new Images();
        cb.OnImage = a =>
        {
            if (a.ImageFileName.EndsWith("001.png")) { a.ImageStream = kept; a.KeepImageStreamOpen = true; }
        };
        cb.OnResource = a =>
        {
            a.ResourceFileUri = "https://cdn.example/" + a.ResourceFileName;
            if (a.ResourceFileName.EndsWith("002.png")) a.ResourceStream = closed;
        };
        // to a stream without an images folder: the callbacks give every picture its place
        var md = Encoding.UTF8.GetString(TestSupport.ToBytes(WithPictures(), new MarkdownSaveOptions { ImageSavingCallback = cb, ResourceSavingCallback = cb }));
        Assert.Equal(Picture, kept.ToArray());
        Assert.True(kept.CanWrite);
        Assert.False(closed.CanWrite);
        Assert.Contains("](https://cdn.example/image.001.png)", md);
        Assert.Contains("](https://cdn.example/image.002.png)", md);
        Assert.DoesNotContain("data:", md);
    }

    [Fact]
    public void APictureWithNowhereToGoIsAnErrorAndBase64NeedsNoCallback()
    {
        var cb = new Images();
        var e = Assert.Throws<ArgumentException>(() => TestSupport.ToBytes(WithPictures(), new MarkdownSaveOptions { ImageSavingCallback = cb }));
        Assert.Contains("needs ExportImagesAsBase64, an ImagesFolder, or an image or resource saving callback", e.Message);
        var unasked = new Images();
        var md = Encoding.UTF8.GetString(TestSupport.ToBytes(WithPictures(), new MarkdownSaveOptions { ImageSavingCallback = unasked, ExportImagesAsBase64 = true }));
        Assert.Contains("data:image/png;base64,", md);
        Assert.Empty(unasked.Log);
        Assert.Throws<ArgumentException>(() => new ImageSavingArgsProbe().Rename("sub/x.png"));
    }

    // The file name a callback sets names a file, never a folder.
    private sealed class ImageSavingArgsProbe
    {
        public void Rename(string name)
        {
            var dir = Dir();
            var cb = new Images { OnImage = a => a.ImageFileName = name };
            WithPictures().Save(Path.Combine(dir, "x.md"), new MarkdownSaveOptions { ImageSavingCallback = cb });
        }
    }

    [Fact]
    public void HtmlPicturesGoThroughTheSameCallbacks()
    {
        var dir = Dir();
        var cb = new Images { OnImage = a => a.ImageFileName = "h" + a.ImageFileName };
        WithPictures().Save(Path.Combine(dir, "page.html"), new HtmlSaveOptions { ImageSavingCallback = cb, ResourceSavingCallback = cb });
        var html = File.ReadAllText(Path.Combine(dir, "page.html"));
        Assert.Contains("src=\"hpage.001.png\"", html);
        Assert.Contains("src=\"hpage.002.png\"", html);
        Assert.Equal(Picture, File.ReadAllBytes(Path.Combine(dir, "hpage.001.png")));
        Assert.Equal(4, cb.Log.Count);
    }

    [Fact]
    public void AnExceptionOfTheCallbackLeavesNoOutputFile()
    {
        var dir = Dir();
        var cb = new Images { OnImage = _ => throw new OperationCanceledException("no pictures") };
        var e = Assert.Throws<OperationCanceledException>(() => WithPictures().Save(Path.Combine(dir, "out.md"), new MarkdownSaveOptions { ImageSavingCallback = cb }));
        Assert.Equal("no pictures", e.Message);
        Assert.Empty(Directory.GetFiles(dir));
    }

    private sealed class Sheet : ICssSavingCallback, IDocumentPartSavingCallback
    {
        public readonly MemoryStream Css = new();
        public bool Export = true;
        public readonly Dictionary<string, MemoryStream> Parts = new();

        public void CssSaving(CssSavingArgs args)
        {
            args.IsExportNeeded = Export;
            args.CssStream = Css;
            args.KeepCssStreamOpen = true;
        }

        public void DocumentPartSaving(DocumentPartSavingArgs args)
        {
            args.DocumentPartFileName = "part-" + args.DocumentPartFileName;
            args.DocumentPartStream = Parts[args.DocumentPartFileName] = new MemoryStream();
            args.KeepDocumentPartStreamOpen = true;
        }
    }

    [Fact]
    public void TheStyleSheetGoesToTheCallbacksStreamOrIsNotWritten()
    {
        var dir = Dir();
        var doc = new Document();
        new DocumentBuilder(doc).Writeln("styled");
        var sheet = new Sheet();
        doc.Save(Path.Combine(dir, "p.html"), new HtmlSaveOptions { CssStyleSheetType = CssStyleSheetType.External, CssSavingCallback = sheet });
        Assert.Contains("font-family", Encoding.UTF8.GetString(sheet.Css.ToArray()));
        Assert.False(File.Exists(Path.Combine(dir, "p.css")));
        Assert.Contains("href=\"p.css\"", File.ReadAllText(Path.Combine(dir, "p.html")));

        var none = new Sheet { Export = false };
        var html = Encoding.UTF8.GetString(TestSupport.ToBytes(doc, new HtmlSaveOptions { CssStyleSheetType = CssStyleSheetType.External, CssSavingCallback = none, ExportImagesAsBase64 = true }));
        Assert.Equal(0, none.Css.Length);
        Assert.Contains("href=\"document.css\"", html);
    }

    [Fact]
    public void FurtherPartsOfASplitPageGoWhereTheCallbackSays()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        foreach (var h in new[] { "One", "Two", "Three" })
        {
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
            b.Writeln(h);
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
            b.Writeln("text of " + h);
        }
        var parts = new Sheet();
        var first = Encoding.UTF8.GetString(TestSupport.ToBytes(doc, new HtmlSaveOptions
        {
            DocumentSplitCriteria = DocumentSplitCriteria.HeadingParagraph,
            DocumentPartSavingCallback = parts,
            ExportImagesAsBase64 = true,
        }));
        Assert.Contains("One", first);
        Assert.Equal(new[] { "part-document-1.html", "part-document-2.html" }, parts.Parts.Keys.Order());
        Assert.Contains("text of Three", Encoding.UTF8.GetString(parts.Parts["part-document-2.html"].ToArray()));
    }
}
