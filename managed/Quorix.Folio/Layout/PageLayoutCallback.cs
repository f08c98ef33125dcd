namespace Quorix.Folio.Layout;

/// <summary>A moment of page layout a callback hears of.</summary>
public enum PageLayoutEvent
{
    /// <summary>Nothing in particular.</summary>
    None = 0,
    /// <summary>Layout is still running; sent from time to time so a long layout can be cancelled.</summary>
    WatchDog = 1,
    /// <summary>Layout of a section (a part of the document) starts.</summary>
    PartReflowStarted = 2,
    /// <summary>Layout of a section is done.</summary>
    PartReflowFinished = 3,
    /// <summary>Drawing of a page starts.</summary>
    PartRenderingStarted = 4,
    /// <summary>Drawing of a page is done.</summary>
    PartRenderingFinished = 5,
    /// <summary>The whole layout is done.</summary>
    ConversionFinished = 6,
}

/// <summary>What a page layout callback is told.</summary>
public sealed class PageLayoutCallbackArgs
{
    /// <summary>Describes one layout event.</summary>
    public PageLayoutCallbackArgs(PageLayoutEvent @event, Document document, int pageIndex)
    {
        Event = @event;
        Document = document;
        PageIndex = pageIndex;
    }

    /// <summary>The moment of layout.</summary>
    public PageLayoutEvent Event { get; }

    /// <summary>The document laid out.</summary>
    public Document Document { get; }

    /// <summary>The page concerned, from 0; -1 when the event concerns no one page.</summary>
    public int PageIndex { get; }
}

/// <summary>Told of the moments of page layout, and able to cancel it by throwing. Page layout has no
/// options object to set it on yet, so nothing calls it.</summary>
public interface IPageLayoutCallback
{
    /// <summary>Called at each moment of layout.</summary>
    void Notify(PageLayoutCallbackArgs args);
}
