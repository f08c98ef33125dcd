using Quorix.Folio.Layout;

namespace Quorix.Folio.Rendering;

/// <summary>Size and orientation of one laid-out page.</summary>
public sealed class PageInfo
{
    internal PageInfo(LayoutPage page)
    {
        WidthInPoints = (float)page.Width;
        HeightInPoints = (float)page.Height;
        Landscape = page.Landscape;
        PageNumber = page.Number;
    }

    /// <summary>The page's width in points.</summary>
    public float WidthInPoints { get; }

    /// <summary>The page's height in points.</summary>
    public float HeightInPoints { get; }

    /// <summary>Whether the page is wider than tall.</summary>
    public bool Landscape { get; }

    /// <summary>The number the page shows, after restarts of numbering.</summary>
    public int PageNumber { get; }

    /// <summary>The page's size in pixels at the given resolution.</summary>
    public System.Drawing.Size GetSizeInPixels(float scale, float dpi) =>
        new((int)Math.Round(WidthInPoints / 72f * dpi * scale), (int)Math.Round(HeightInPoints / 72f * dpi * scale));
}
