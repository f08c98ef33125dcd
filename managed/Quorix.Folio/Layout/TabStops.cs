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
        var levels = para.StyleChain().Reverse().Select(bag => Docx.PropsCodec.Paragraph.Decode(bag).Attrs).Append(para.ParaAttrs);
        foreach (var level in levels)
        {
            if (level.Get(FormatAttr.Tabs) is not TabList tabs) continue;
            foreach (var tab in tabs.Entries)
            {
                int pos = tab.Position;
                if (tab.Kind == "clear") { stops.Remove(pos); continue; }
                if (tab.Kind == "bar") continue; // a bar tab draws a line, it is not a stop
                char align = tab.Kind switch { "right" or "end" or "decimal" => 'r', "center" => 'c', _ => 'l' };
                char leader = tab.Leader switch { "dot" => '.', "hyphen" => '-', "underscore" or "heavy" => '_', "middleDot" => '\u00B7', _ => '\0' };
                stops[pos] = new TabStop(Units.TwipsToPoints(pos), align, leader);
            }
        }
        return stops.Values.ToList();
    }
}
