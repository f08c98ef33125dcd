using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Layout;

/// <summary>How text goes around a floating shape.</summary>
internal enum FloatWrap
{
    /// <summary>Text runs over or under the shape.</summary>
    None,
    /// <summary>No text beside the shape: text resumes below it.</summary>
    TopAndBottom,
    /// <summary>Lines beside the shape are shortened to keep clear of its rectangle and distances.</summary>
    Square,
}

/// <summary>Which sides of a square-wrapped shape text may go.</summary>
internal enum WrapSides { Both, Left, Right, Largest }

/// <summary>Where an anchored (floating) picture goes, as its drawing says: an offset or an alignment
/// relative to the page, the margins, the column or the paragraph, and how text keeps clear of it.
/// Tight and through wrapping follow the shape's bounding box, as square wrapping does: the layout
/// does not trace wrap polygons.</summary>
internal sealed record FloatPlacement(string FromH, string? AlignH, double OffsetH, string FromV, string? AlignV, double OffsetV,
    FloatWrap Wrap, double DistanceTop, double DistanceBottom, double Width, double Height)
{
    public double DistanceLeft { get; init; }
    public double DistanceRight { get; init; }
    public WrapSides Sides { get; init; }

    public bool Wraps => Wrap != FloatWrap.None;

    private const double EmuPerPoint = 12700;
    private const string WordDrawing = "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing";

    /// <summary>Centred on the page's text area, with text running over it: where watermarks go.</summary>
    public static FloatPlacement Centred(double width, double height) =>
        new("margin", "center", 0, "margin", "center", 0, FloatWrap.None, 0, 0, width, height);

    /// <summary>The float's size: its content's box, or its picture's.</summary>
    public (double Width, double Height) SizeOf(Node node, List<PageItem>? content) =>
        content != null || node is not Shape s ? (Width, Height) : (s.Width, s.Height);

    /// <summary>What a float draws with its top-left corner at (x, y): its content, or its picture.</summary>
    public static List<PageItem> Draw(Node node, List<PageItem>? content, double x, double y, double width, double height) =>
        content?.Select(i => i.Moved(x, y)).ToList()
        ?? new List<PageItem> { new ImageItem(x, y, width, height, ((Shape)node).ImageData.ImageBytes!, Watermark.IsPicture((Shape)node) && Watermark.IsWashedOut((Shape)node)) };

    /// <summary>The placement of a picture read from an anchored drawing, or of a watermark picture;
    /// null for an inline one.</summary>
    public static FloatPlacement? Of(Shape shape)
    {
        if (shape.RawXml == null && shape.Watermark != null) return Centred(shape.Width, shape.Height);
        // A text box keeps its drawing as the frame around its content; joined, the frame reads as a drawing with an empty box.
        var xml = shape.RawXml ?? (shape.TextBoxFrame is { } frame ? string.Concat(frame) : null);
        if (xml == null || !xml.Contains("anchor", StringComparison.Ordinal)) return null;
        string fromH = "column", fromV = "paragraph";
        string? alignH = null, alignV = null, axis = null;
        double offH = 0, offV = 0, distT = 0, distB = 0, distL = 0, distR = 0, cx = 0, cy = 0;
        bool anchored = false;
        var wrap = FloatWrap.None;
        var sides = WrapSides.Both;
        try
        {
            using var r = Reader(xml);
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element || r.NamespaceURI != WordDrawing && r.Prefix != "wp") continue;
                switch (r.LocalName)
                {
                    case "anchor":
                        anchored = true;
                        distT = (Units.ParseLong(r.GetAttribute("distT")) ?? 0) / EmuPerPoint;
                        distB = (Units.ParseLong(r.GetAttribute("distB")) ?? 0) / EmuPerPoint;
                        distL = (Units.ParseLong(r.GetAttribute("distL")) ?? 0) / EmuPerPoint;
                        distR = (Units.ParseLong(r.GetAttribute("distR")) ?? 0) / EmuPerPoint;
                        break;
                    case "positionH":
                        axis = "h";
                        fromH = r.GetAttribute("relativeFrom") ?? fromH;
                        break;
                    case "positionV":
                        axis = "v";
                        fromV = r.GetAttribute("relativeFrom") ?? fromV;
                        break;
                    case "posOffset":
                        double off = (Units.ParseLong(r.ReadElementContentAsString().Trim()) ?? 0) / EmuPerPoint;
                        if (axis == "h") offH = off; else offV = off;
                        break;
                    case "align":
                        var align = r.ReadElementContentAsString().Trim();
                        if (axis == "h") alignH = align; else alignV = align;
                        break;
                    case "extent" when cx == 0:
                        cx = (Units.ParseLong(r.GetAttribute("cx")) ?? 0) / EmuPerPoint;
                        cy = (Units.ParseLong(r.GetAttribute("cy")) ?? 0) / EmuPerPoint;
                        break;
                    case "wrapTopAndBottom":
                        wrap = FloatWrap.TopAndBottom;
                        distT = (Units.ParseLong(r.GetAttribute("distT")) ?? (long)(distT * EmuPerPoint)) / EmuPerPoint;
                        distB = (Units.ParseLong(r.GetAttribute("distB")) ?? (long)(distB * EmuPerPoint)) / EmuPerPoint;
                        break;
                    case "wrapSquare" or "wrapTight" or "wrapThrough":
                        wrap = FloatWrap.Square;
                        // The wrap element's own distances, where it has them, are the ones that count.
                        distL = (Units.ParseLong(r.GetAttribute("distL")) ?? (long)(distL * EmuPerPoint)) / EmuPerPoint;
                        distR = (Units.ParseLong(r.GetAttribute("distR")) ?? (long)(distR * EmuPerPoint)) / EmuPerPoint;
                        distT = (Units.ParseLong(r.GetAttribute("distT")) ?? (long)(distT * EmuPerPoint)) / EmuPerPoint;
                        distB = (Units.ParseLong(r.GetAttribute("distB")) ?? (long)(distB * EmuPerPoint)) / EmuPerPoint;
                        sides = r.GetAttribute("wrapText") switch
                        {
                            "left" => WrapSides.Left,
                            "right" => WrapSides.Right,
                            "largest" => WrapSides.Largest,
                            _ => WrapSides.Both,
                        };
                        break;
                }
            }
        }
        catch (XmlException)
        {
            return null; // a drawing we cannot read stays in the line, as an inline picture
        }
        return anchored
            ? new FloatPlacement(fromH, alignH, offH, fromV, alignV, offV, wrap, distT, distB, cx, cy) { DistanceLeft = distL, DistanceRight = distR, Sides = sides }
            : null;
    }

    /// <summary>A reader over a kept drawing, whose namespace declarations may have stayed on the
    /// document's root: every prefix it uses without declaring is declared for the reading.</summary>
    private static XmlReader Reader(string xml)
    {
        var names = new NameTable();
        var ns = new XmlNamespaceManager(names);
        foreach (System.Text.RegularExpressions.Match m in System.Text.RegularExpressions.Regex.Matches(xml, @"[<\s/]([A-Za-z_][\w.-]*):[A-Za-z_]"))
        {
            var prefix = m.Groups[1].Value;
            if (prefix != "xmlns" && prefix != "xml" && ns.LookupNamespace(prefix) == null)
                ns.AddNamespace(prefix, prefix == "wp" ? WordDrawing : "urn:x-kept:" + prefix);
        }
        var settings = new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit, XmlResolver = null, ConformanceLevel = ConformanceLevel.Fragment, NameTable = names };
        return XmlReader.Create(new StringReader(xml), settings, new XmlParserContext(names, ns, null, XmlSpace.None));
    }

    /// <summary>The picture's top-left corner on the page, given the left edge and width of the anchor
    /// paragraph's column and the page's text area (left, top, right, bottom).</summary>
    public (double X, double Y) Locate(double pageWidth, double pageHeight, (double Left, double Width) column,
        (double Left, double Top, double Right, double Bottom) margins, double paragraphTop, double width, double height)
    {
        var (left, span) = FromH switch
        {
            "page" => (0.0, pageWidth),
            "margin" => (margins.Left, margins.Right - margins.Left),
            "leftMargin" => (0.0, margins.Left),
            "rightMargin" => (margins.Right, pageWidth - margins.Right),
            _ => column,
        };
        var (top, extent) = FromV switch
        {
            "page" => (0.0, pageHeight),
            "margin" => (margins.Top, margins.Bottom - margins.Top),
            "topMargin" => (0.0, margins.Top),
            "bottomMargin" => (margins.Bottom, pageHeight - margins.Bottom),
            _ => (paragraphTop, 0.0),
        };
        double x = AlignH switch
        {
            "center" => left + (span - width) / 2,
            "right" or "outside" => left + span - width,
            "left" or "inside" => left,
            _ => left + OffsetH,
        };
        double y = AlignV switch
        {
            "center" => top + (extent - height) / 2,
            "bottom" or "outside" => top + extent - height,
            "top" or "inside" => top,
            _ => top + OffsetV,
        };
        return (x, y);
    }
}
