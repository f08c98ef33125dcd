using Quorix.Folio.Drawing;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Formats.Html;

/// <summary>A file the page refers to: a picture or the style sheet.</summary>
internal sealed record HtmlResource(string Name, string ContentType, byte[] Bytes);

/// <summary>How the page refers to its pictures: data URIs, files beside it, or parts of one package.</summary>
internal sealed class HtmlResources
{
    public enum Mode { Base64, Files, Collect }

    private readonly Mode mode;
    private readonly string stem;
    private readonly ResourceOutput? files;
    private readonly Dictionary<byte[], string> known = new(ReferenceEqualityComparer.Instance);

    public List<HtmlResource> Collected { get; } = new();

    public HtmlResources(Mode mode, string stem, ResourceOutput? files = null)
    {
        this.mode = mode;
        this.stem = stem;
        this.files = files;
    }

    public string Image(Shape shape)
    {
        var bytes = shape.ImageData.ImageBytes!;
        if (known.TryGetValue(bytes, out var r)) return r;
        var info = ImageInfo.Detect(bytes);
        var name = $"{stem}.{known.Count + 1:000}.{info.Extension}";
        switch (mode)
        {
            case Mode.Base64:
                r = $"data:{info.ContentType};base64,{Convert.ToBase64String(bytes)}";
                break;
            case Mode.Files:
                r = files!.Image(shape, bytes, name);
                break;
            default:
                r = "images/" + name;
                Collected.Add(new HtmlResource(r, info.ContentType, bytes));
                break;
        }
        known[bytes] = r;
        return r;
    }
}
