using Quorix.Folio.Drawing;

namespace Quorix.Folio.Saving;

/// <summary>Writes the pictures of an HTML or Markdown save beside the output, letting the image and
/// resource saving callbacks rename each one, send it to a stream of their own, or leave it be.</summary>
internal sealed class ResourceOutput
{
    private readonly Document doc;
    private readonly string? folder;
    private readonly Func<string, string> uriOf;
    private readonly IImageSavingCallback? imageCallback;
    private readonly IResourceSavingCallback? resourceCallback;
    private readonly string format;

    /// <param name="doc">The document saved, handed to the callbacks.</param>
    /// <param name="folder">Where files go; null when only a callback's stream can take them.</param>
    /// <param name="uriOf">How the output refers to a file of the given name in <paramref name="folder"/>.</param>
    /// <param name="imageCallback">Asked first about each picture; may be null.</param>
    /// <param name="resourceCallback">Asked next about each picture; may be null.</param>
    /// <param name="format">The output's format, named in the error when a picture has nowhere to go.</param>
    public ResourceOutput(Document doc, string? folder, Func<string, string> uriOf, IImageSavingCallback? imageCallback, IResourceSavingCallback? resourceCallback, string format)
    {
        this.doc = doc;
        this.folder = folder;
        this.uriOf = uriOf;
        this.imageCallback = imageCallback;
        this.resourceCallback = resourceCallback;
        this.format = format;
    }

    /// <summary>Whether a callback may give pictures a place when the save has no folder for them.</summary>
    public static bool HasCallbacks(IImageSavingCallback? image, IResourceSavingCallback? resource) => image != null || resource != null;

    /// <summary>Writes the picture of <paramref name="shape"/> under <paramref name="name"/> (or what the
    /// callbacks choose); returns how the output refers to it.</summary>
    public string Image(Shape shape, byte[] bytes, string name)
    {
        Stream? target = null;
        bool keepOpen = false;
        if (imageCallback != null)
        {
            var args = new ImageSavingArgs(doc, shape, name);
            imageCallback.ImageSaving(args);
            name = args.ImageFileName;
            target = args.ImageStream;
            keepOpen = args.KeepImageStreamOpen;
        }
        return Place(doc, resourceCallback, name, uriOf(name), bytes, target, keepOpen, folder, format);
    }

    /// <summary>Writes one resource: to the stream an image callback gave, else to the one the resource
    /// callback gives, else to <paramref name="name"/> in <paramref name="folder"/>; returns how the output
    /// refers to it, which the resource callback may change.</summary>
    public static string Place(Document doc, IResourceSavingCallback? callback, string name, string uri, byte[] bytes,
        Stream? target, bool keepOpen, string? folder, string format)
    {
        if (callback != null)
        {
            var args = new ResourceSavingArgs(doc, name, uri);
            callback.ResourceSaving(args);
            uri = args.ResourceFileUri;
            if (target == null)
            {
                target = args.ResourceStream;
                keepOpen = args.KeepResourceStreamOpen;
            }
        }
        if (target != null) WriteTo(target, bytes, keepOpen);
        else if (folder != null)
        {
            Directory.CreateDirectory(folder);
            File.WriteAllBytes(Path.Combine(folder, name), bytes);
        }
        else throw NowhereToGo(format);
        return uri;
    }

    internal static void WriteTo(Stream target, byte[] bytes, bool keepOpen)
    {
        try
        {
            target.Write(bytes);
            target.Flush();
        }
        finally
        {
            if (!keepOpen) target.Dispose();
        }
    }

    private static ArgumentException NowhereToGo(string format) =>
        new($"Saving {format} with pictures to a stream needs ExportImagesAsBase64, an ImagesFolder, or an image or resource saving callback that gives each picture a stream.");
}
