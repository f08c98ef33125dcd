using Quorix.Folio.Formatting;

namespace Quorix.Folio.Layout;

/// <summary>A custom tab stop: position from the text area's left edge, alignment ('l', 'c', 'r')
/// and the leader character drawn across the gap ('\0' for none).</summary>
internal readonly record struct TabStop(double Position, char Align, char Leader);

internal static class TabStops
{
    /// <summary>The paragraph's stops: those of its style chain, then its own, each level adding
    /// stops or clearing inherited ones at a position.</summary>
    public static List<TabStop> Of(Paragraph para)
    {
        var stops = new SortedDictionary<int, TabStop>();
        var bags = para.StyleChain().Reverse().Append(para.PPr);
        foreach (var bag in bags)
        {
            if (bag.Find("tabs")?.Children is not { } tabs) continue;
            foreach (var tab in tabs)
            {
                if (tab.Local != "tab" || Units.ParseInt(tab.Get("pos")) is not { } pos) continue;
                var val = tab.Get("val");
                if (val is "clear" or null) { stops.Remove(pos); continue; }
                if (val == "bar") continue; // a bar tab draws a line, it is not a stop
                char align = val switch { "right" or "end" or "decimal" => 'r', "center" => 'c', _ => 'l' };
                char leader = tab.Get("leader") switch { "dot" => '.', "hyphen" => '-', "underscore" or "heavy" => '_', "middleDot" => '\u00B7', _ => '\0' };
                stops[pos] = new TabStop(Units.TwipsToPoints(pos), align, leader);
            }
        }
        return stops.Values.ToList();
    }
}
