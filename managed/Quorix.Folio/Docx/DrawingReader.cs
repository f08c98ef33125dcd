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
        string? embed = null, link = null, descr = null, title = null;
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
                else if (r.NamespaceURI == Ns.A && r.LocalName == "blip" && embed == null && link == null)
                {
                    embed = r.GetAttribute("embed", Ns.R);
                    link = r.GetAttribute("link", Ns.R);
                }
            }
        }
        if (!isPicture) return null;
        byte[]? bytes;
        if (embed != null) bytes = ctx.Target(embed);
        // A linked picture is modelled only when its bytes can be had; the drawing, link and all, is written back as read.
        else if (link != null && ctx.Linked(link) is { } linked) (bytes, embed) = (linked, link);
        else return null;
        var shape = new Shape(ctx.Doc) { AlternativeText = descr ?? "", Title = title ?? "" };
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

    /// <summary>A text box, in either drawing vocabulary or both: a shape whose children are the
    /// box's paragraphs, read from its first copy; null for anything else, which stays as read.</summary>
    public static Shape? TryTextBox(string full, ReadContext ctx)
    {
        if (!full.Contains("txbxContent", StringComparison.Ordinal)) return null;
        var xml = RawXml.DropRootDeclarations(full, ctx.Root);
        var frame = new List<string>();
        int at = 0, open = -1;
        foreach (var m in TextBoxTags(xml))
        {
            // Each copy must open and close once, in turn: no nested boxes, no empty elements.
            if (m.Empty || m.Closing != (open >= 0)) return null;
            if (!m.Closing)
            {
                frame.Add(xml[at..(m.Index + m.Length)]);
                open = m.Index;
            }
            else open = -1;
            at = m.Closing ? m.Index : at;
        }
        if (open >= 0 || frame.Count == 0) return null;
        // Notes and comments cannot be written twice; a box holding them in two copies stays as read.
        if (frame.Count > 2 && System.Text.RegularExpressions.Regex.IsMatch(xml, "(footnote|endnote|comment)Reference")) return null;
        frame.Add(xml[at..]);
        var shape = new Shape(ctx.Doc) { TextBoxFrame = frame.ToArray() };
        using var r = DocxReader.Open(full);
        while (r.Read())
        {
            if (r.NodeType == XmlNodeType.Element && r.NamespaceURI == Ns.W && r.LocalName == "txbxContent")
            {
                BodyReader.ReadBlocks(r, shape, ctx);
                break;
            }
        }
        return shape;
    }

    private readonly record struct Tag(int Index, int Length, bool Closing, bool Empty);

    // Start and end tags of the box content element, in order; text never holds a '<'.
    private static IEnumerable<Tag> TextBoxTags(string xml)
    {
        foreach (System.Text.RegularExpressions.Match m in System.Text.RegularExpressions.Regex.Matches(xml, @"<(/?)(?:\w+:)?txbxContent\b[^>]*?(/?)>"))
            yield return new Tag(m.Index, m.Length, m.Groups[1].Length > 0, m.Groups[2].Length > 0);
    }
}
