namespace Quorix.Folio.Drawing.Charts;

/// <summary>What a point of a chart series offers, whatever the chart's type. Charts are kept as read
/// and not modelled yet, so the engine has no points of its own.</summary>
public interface IChartDataPoint
{
    /// <summary>How far a pie slice is pulled out of the pie, in percent of its radius.</summary>
    int Explosion { get; set; }

    /// <summary>Whether a bar of a negative value is drawn in inverted colours.</summary>
    bool InvertIfNegative { get; set; }

    /// <summary>Whether a bubble is drawn with a three-dimensional look.</summary>
    bool Bubble3D { get; set; }
}
