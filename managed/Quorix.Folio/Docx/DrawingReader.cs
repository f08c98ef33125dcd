using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Docx;

/// <summary>Recognises a picture inside a drawing element; anything else stays opaque.</summary>
internal static class DrawingReader
{
    private const double EmuPerPoint = 12700;

    public static Shape? TryPicture(string xml, ReadContext ctx)
    {
        string? embed = null, descr = null, title = null;
        long cx = 0, cy = 0;
        bool isPicture = false;
        using (var r = DocxReader.Open(xml))
        {
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element) continue;
                if (r.NamespaceURI == Ns.WP && r.LocalName == "extent" && cx == 0)
                {
                    cx = Units.ParseLong(r.GetAttribute("cx")) ?? 0;
                    cy = Units.ParseLong(r.GetAttribute("cy")) ?? 0;
                }
                else if (r.NamespaceURI == Ns.WP && r.LocalName == "docPr")
                {
                    descr = r.GetAttribute("descr");
                    title = r.GetAttribute("title");
                }
                else if (r.NamespaceURI == Ns.Pic && r.LocalName == "pic") isPicture = true;
                else if (r.NamespaceURI == Ns.A && r.LocalName == "blip" && embed == null) embed = r.GetAttribute("embed", Ns.R);
            }
        }
        if (!isPicture || embed == null) return null;
        var shape = new Shape(ctx.Doc) { AlternativeText = descr ?? "", Title = title ?? "" };
        var bytes = ctx.Target(embed);
        if (bytes != null) shape.ImageData.Load(bytes);
        shape.SetSizeNoReset(cx / EmuPerPoint, cy / EmuPerPoint);
        shape.RawXml = RawXml.DropRootDeclarations(xml, ctx.Root);
        shape.RelId = embed;
        return shape;
    }

    private const string Vml = "urn:schemas-microsoft-com:vml";

    /// <summary>A legacy (VML) picture: one shape whose only content is an image, no text box.</summary>
    public static Shape? TryVmlPicture(string xml, ReadContext ctx)
    {
        string? relId = null, alt = null, style = null;
        int shapes = 0;
        using (var r = DocxReader.Open(xml))
        {
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element || r.NamespaceURI != Vml) continue;
                switch (r.LocalName)
                {
                    case "textbox":
                        return null;
                    case "imagedata":
                        relId ??= r.GetAttribute("id", Ns.R);
                        alt ??= r.GetAttribute("title", "urn:schemas-microsoft-com:office:office");
                        break;
                    case "shape" or "rect" or "oval" or "line" or "polyline" or "roundrect" or "arc" or "group":
                        shapes++;
                        style ??= r.GetAttribute("style");
                        alt = r.GetAttribute("alt") ?? alt;
                        break;
                }
            }
        }
        if (shapes != 1 || relId == null || ctx.Target(relId) is not { } bytes) return null;
        var shape = new Shape(ctx.Doc) { AlternativeText = alt ?? "" };
        shape.ImageData.Load(bytes);
        shape.SetSizeNoReset(StylePoints(style, "width"), StylePoints(style, "height"));
        shape.RawXml = RawXml.DropRootDeclarations(xml, ctx.Root);
        shape.RelId = relId;
        return shape;
    }

    // A length from a VML style ("width:120pt;height:1in"), in points; 0 when absent or unreadable.
    private static double StylePoints(string? style, string name)
    {
        if (style == null) return 0;
        foreach (var part in style.Split(';'))
        {
            int colon = part.IndexOf(':');
            if (colon < 0 || part[..colon].Trim() != name) continue;
            var v = part[(colon + 1)..].Trim();
            double factor = v.EndsWith("pt") ? 1 : v.EndsWith("in") ? 72 : v.EndsWith("cm") ? 72 / 2.54 : v.EndsWith("mm") ? 72 / 25.4 : v.EndsWith("px") ? 0.75 : 1;
            var number = v.TrimEnd('p', 't', 'i', 'n', 'c', 'm', 'x');
            return double.TryParse(number, System.Globalization.NumberStyles.Float, System.Globalization.CultureInfo.InvariantCulture, out var d)
                ? Math.Clamp(d * factor, 0, 22000) : 0;
        }
        return 0;
    }
}
