using Quorix.Folio.Loading;

namespace Quorix.Folio.Formats.Flow;

/// <summary>Finds the bytes a flow document refers to: data URIs, files relative to the document, or
/// parts of the same archive. Nothing is fetched from the network.</summary>
internal sealed class ResourceResolver
{
    private readonly string? baseDir;
    private readonly Func<string, byte[]?>? local;

    public ResourceResolver(LoadOptions options, Func<string, byte[]?>? local = null)
    {
        this.local = local;
        var b = options.BaseUri;
        if (string.IsNullOrEmpty(b)) return;
        if (Uri.TryCreate(b, UriKind.Absolute, out var u) && u.IsFile) b = u.LocalPath;
        else if (u != null && !u.IsFile) return;
        baseDir = Directory.Exists(b) ? b : Path.GetDirectoryName(Path.GetFullPath(b));
    }

    /// <summary>The bytes, or null when the reference is not local or cannot be read.</summary>
    public byte[]? Get(string reference)
    {
        if (string.IsNullOrWhiteSpace(reference)) return null;
        reference = reference.Trim();
        if (reference.StartsWith("data:", StringComparison.OrdinalIgnoreCase)) return DataUri(reference);
        if (local?.Invoke(reference) is { } found) return found;
        string path;
        if (Uri.TryCreate(reference, UriKind.Absolute, out var u) && u.Scheme.Length > 1)
        {
            if (!u.IsFile) return null;
            path = u.LocalPath;
        }
        else
        {
            if (baseDir == null) return null;
            var clean = Uri.UnescapeDataString(reference.Split('#', '?')[0]);
            path = Path.Combine(baseDir, clean);
        }
        try
        {
            return File.Exists(path) ? File.ReadAllBytes(path) : null;
        }
        catch (IOException) { return null; }
        catch (UnauthorizedAccessException) { return null; }
    }

    private static byte[]? DataUri(string uri)
    {
        int comma = uri.IndexOf(',');
        if (comma < 0) return null;
        var head = uri[5..comma];
        var data = uri[(comma + 1)..];
        try
        {
            if (head.EndsWith(";base64", StringComparison.OrdinalIgnoreCase))
                return Convert.FromBase64String(data.Replace(" ", "").Replace("\n", "").Replace("\r", ""));
            return System.Text.Encoding.UTF8.GetBytes(Uri.UnescapeDataString(data));
        }
        catch (FormatException) { return null; }
    }
}
