using Quorix.Folio.Drawing;

namespace Quorix.Folio.Formats.Html;

/// <summary>A file the page refers to: a picture or the style sheet.</summary>
internal sealed record HtmlResource(string Name, string ContentType, byte[] Bytes);

/// <summary>How the page refers to its pictures: data URIs, files beside it, or parts of one package.</summary>
internal sealed class HtmlResources
{
    public enum Mode { Base64, Files, Collect }

    private readonly Mode mode;
    private readonly string? folder;
    private readonly string? alias;
    private readonly string stem;
    private readonly Dictionary<byte[], string> known = new(ReferenceEqualityComparer.Instance);

    public List<HtmlResource> Collected { get; } = new();

    public HtmlResources(Mode mode, string stem, string? folder = null, string? alias = null)
    {
        this.mode = mode;
        this.stem = stem;
        this.folder = folder;
        this.alias = alias;
    }

    public string Image(byte[] bytes)
    {
        if (known.TryGetValue(bytes, out var r)) return r;
        var info = ImageInfo.Detect(bytes);
        var name = $"{stem}.{known.Count + 1:000}.{info.Extension}";
        switch (mode)
        {
            case Mode.Base64:
                r = $"data:{info.ContentType};base64,{Convert.ToBase64String(bytes)}";
                break;
            case Mode.Files:
                Directory.CreateDirectory(folder!);
                File.WriteAllBytes(Path.Combine(folder!, name), bytes);
                r = string.IsNullOrEmpty(alias) ? name : alias.TrimEnd('/') + "/" + name;
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
