namespace Quorix.Folio.Lists;

/// <summary>The number or bullet a list paragraph shows, as counted from the start of the document.</summary>
public sealed class ListLabel
{
    internal ListLabel(string labelString, int labelValue)
    {
        LabelString = labelString;
        LabelValue = labelValue;
    }

    /// <summary>The label as displayed ("2.", "b)", "•"); empty for paragraphs outside lists.</summary>
    public string LabelString { get; }

    /// <summary>The counter of the paragraph's own level; 0 for bullets and non-list paragraphs.</summary>
    public int LabelValue { get; }
}
