using Quorix.Folio.Fonts;
using Quorix.Folio.Formatting;
using Quorix.Folio.Layout;
using Quorix.Folio.Rendering;

namespace Quorix.Folio;

/// <summary>The document's pages: laid out when first asked for and kept until the document changes.</summary>
public sealed partial class Document
{
    private DocumentLayout? pageLayout;
    private (int Version, int Text, long Format, FontSettings? Fonts) pageLayoutKey;

    /// <summary>The fonts this document is laid out with; <see cref="FontSettings.DefaultInstance"/> when null.</summary>
    public FontSettings? FontSettings { get; set; }

    /// <summary>How many pages the document is laid out on.</summary>
    public int PageCount => PageLayout.Pages.Count;

    /// <summary>Lays the document out again now, whatever the cached pages say.</summary>
    public void UpdatePageLayout() => pageLayout = Rebuild();

    /// <summary>The size and orientation of the page at pageIndex, counted from 0.</summary>
    public PageInfo GetPageInfo(int pageIndex)
    {
        var pages = PageLayout.Pages;
        if (pageIndex < 0 || pageIndex >= pages.Count)
            throw new ArgumentOutOfRangeException(nameof(pageIndex), $"The document has {pages.Count} pages; page index {pageIndex} does not exist.");
        return new PageInfo(pages[pageIndex]);
    }

    internal DocumentLayout PageLayout
    {
        get
        {
            if (pending) BuildPending();
            if (pageLayout == null || pageLayoutKey != Key()) pageLayout = Rebuild();
            return pageLayout;
        }
    }

    private (int, int, long, FontSettings?) Key() => (version, textVersion, FormatStamp.Current, FontSettings);

    private DocumentLayout Rebuild()
    {
        if (pending) BuildPending();
        var key = Key();
        var layout = DocumentLayout.Build(this, FontSettings ?? FontSettings.DefaultInstance);
        pageLayoutKey = key;
        return layout;
    }
}
