using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Formatting;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>Writes a picture as an inline drawing, or the drawing as read when it is untouched.</summary>
internal static class DrawingWriter
{
    public static void Write(XmlWriter w, Shape s, PartWriter pw)
    {
        if (s.RawXml != null && s.RelId != null && pw.Rels.Has(s.RelId))
        {
            w.WriteRaw(s.RawXml);
            return;
        }
        var bytes = s.ImageData.ImageBytes;
        if (bytes == null || bytes.Length == 0) return;
        var info = ImageInfo.Detect(bytes);
        var part = pw.State.MediaPart(bytes, info);
        var relId = pw.Rels.Rels.Find(r => r.Type == Ns.RelImage && !r.External && OpcPackage.Resolve(pw.Rels.Part, r.Target) == part)?.Id
            ?? pw.Rels.Add(Ns.RelImage, Relative(pw.Rels.Part, part));
        long cx = (long)Math.Round(s.Width * 12700), cy = (long)Math.Round(s.Height * 12700);
        int id = ++pw.State.DocPrId;
        string name = "Picture " + id;

        w.WriteStartElement("drawing", Ns.W);
        if (s.Watermark != null)
        {
            name = Watermark.PictureName + id;
            StartWatermarkAnchor(w, cx, cy, id);
        }
        else
        {
            w.WriteStartElement("inline", Ns.WP);
            foreach (var d in new[] { "distT", "distB", "distL", "distR" }) w.WriteAttributeString(d, "0");
            w.WriteStartElement("extent", Ns.WP);
            w.WriteAttributeString("cx", Units.Str(cx));
            w.WriteAttributeString("cy", Units.Str(cy));
            w.WriteEndElement();
        }
        w.WriteStartElement("docPr", Ns.WP);
        w.WriteAttributeString("id", Units.Str(id));
        w.WriteAttributeString("name", name);
        if (s.AlternativeText.Length > 0) w.WriteAttributeString("descr", s.AlternativeText);
        if (s.Title.Length > 0) w.WriteAttributeString("title", s.Title);
        w.WriteEndElement();
        w.WriteStartElement("graphic", Ns.A);
        w.WriteStartElement("graphicData", Ns.A);
        w.WriteAttributeString("uri", Ns.Pic);
        w.WriteStartElement("pic", "pic", Ns.Pic);
        w.WriteStartElement("nvPicPr", Ns.Pic);
        w.WriteStartElement("cNvPr", Ns.Pic);
        w.WriteAttributeString("id", "0");
        w.WriteAttributeString("name", name);
        w.WriteEndElement();
        w.WriteStartElement("cNvPicPr", Ns.Pic);
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteStartElement("blipFill", Ns.Pic);
        w.WriteStartElement("blip", Ns.A);
        w.WriteAttributeString("embed", Ns.R, relId);
        if (s.Watermark == WatermarkLook.Washout)
        {
            // Faded: brighter and with less contrast, as word processors wash out a picture.
            w.WriteStartElement("lum", Ns.A);
            w.WriteAttributeString("bright", "70000");
            w.WriteAttributeString("contrast", "-70000");
            w.WriteEndElement();
        }
        w.WriteEndElement();
        w.WriteStartElement("stretch", Ns.A);
        w.WriteStartElement("fillRect", Ns.A);
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteStartElement("spPr", Ns.Pic);
        w.WriteStartElement("xfrm", Ns.A);
        w.WriteStartElement("off", Ns.A);
        w.WriteAttributeString("x", "0");
        w.WriteAttributeString("y", "0");
        w.WriteEndElement();
        w.WriteStartElement("ext", Ns.A);
        w.WriteAttributeString("cx", Units.Str(cx));
        w.WriteAttributeString("cy", Units.Str(cy));
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteStartElement("prstGeom", Ns.A);
        w.WriteAttributeString("prst", "rect");
        w.WriteStartElement("avLst", Ns.A);
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
        w.WriteEndElement();
    }

    // A picture behind the text, centred on the page's margins, that text does not flow around.
    private static void StartWatermarkAnchor(XmlWriter w, long cx, long cy, int id)
    {
        w.WriteStartElement("anchor", Ns.WP);
        foreach (var d in new[] { "distT", "distB", "distL", "distR" }) w.WriteAttributeString(d, "0");
        w.WriteAttributeString("simplePos", "0");
        w.WriteAttributeString("relativeHeight", Units.Str(251658240 - id));
        w.WriteAttributeString("behindDoc", "1");
        w.WriteAttributeString("locked", "0");
        w.WriteAttributeString("layoutInCell", "1");
        w.WriteAttributeString("allowOverlap", "1");
        w.WriteStartElement("simplePos", Ns.WP);
        w.WriteAttributeString("x", "0");
        w.WriteAttributeString("y", "0");
        w.WriteEndElement();
        foreach (var (axis, relative) in new[] { ("positionH", "margin"), ("positionV", "margin") })
        {
            w.WriteStartElement(axis, Ns.WP);
            w.WriteAttributeString("relativeFrom", relative);
            w.WriteElementString("align", Ns.WP, "center");
            w.WriteEndElement();
        }
        w.WriteStartElement("extent", Ns.WP);
        w.WriteAttributeString("cx", Units.Str(cx));
        w.WriteAttributeString("cy", Units.Str(cy));
        w.WriteEndElement();
        w.WriteStartElement("effectExtent", Ns.WP);
        foreach (var side in new[] { "l", "t", "r", "b" }) w.WriteAttributeString(side, "0");
        w.WriteEndElement();
        w.WriteStartElement("wrapNone", Ns.WP);
        w.WriteEndElement();
    }

    /// <summary>Target of a relationship from one part to another, relative to the source's folder.</summary>
    public static string Relative(string fromPart, string toPart)
    {
        int slash = fromPart.LastIndexOf('/');
        var dir = slash < 0 ? "" : fromPart[..(slash + 1)];
        return dir.Length > 0 && toPart.StartsWith(dir, StringComparison.Ordinal) ? toPart[dir.Length..] : "/" + toPart;
    }
}
