namespace Quorix.Folio.Saving;

/// <summary>Passes a save's progress to its callback: 0 at the start, what the writer reports on the way
/// (at most once per whole percent, never 100), and 100 at the end.</summary>
internal sealed class SaveProgress
{
    private readonly IDocumentSavingCallback callback;
    private int reported;

    private SaveProgress(IDocumentSavingCallback callback) { this.callback = callback; }

    /// <summary>A reporter that has told the callback the save starts; null without a callback.</summary>
    public static SaveProgress? Start(IDocumentSavingCallback? callback)
    {
        if (callback == null) return null;
        callback.Notify(new DocumentSavingArgs(0));
        return new SaveProgress(callback);
    }

    /// <summary>The writer has done <paramref name="fraction"/> (0 to 1) of its work.</summary>
    public void Report(double fraction)
    {
        int percent = (int)(Math.Clamp(fraction, 0, 1) * 99);
        if (percent <= reported) return;
        reported = percent;
        callback.Notify(new DocumentSavingArgs(percent));
    }

    /// <summary>The output is complete.</summary>
    public void Done() => callback.Notify(new DocumentSavingArgs(100));
}
