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
}
