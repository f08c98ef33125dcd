using System.Xml;
using Quorix.Folio.Formatting;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Docx;

internal static partial class BodyWriter
{
    /// <summary>Writes the main story section by section: each section's blocks, its properties on
    /// its last paragraph (the last section's at the end of the body).</summary>
    internal sealed class SectionWriter : DocumentVisitor
    {
        private readonly XmlWriter w;
        private readonly PartWriter pw;
        private readonly Dictionary<HeaderFooter, string> hfRelIds;
        private readonly SaveProgress? progress;
        private readonly double share;
        private readonly int blocks;
        private int written;

        public SectionWriter(XmlWriter w, PartWriter pw, Document doc, Dictionary<HeaderFooter, string> hfRelIds, double share)
        {
            this.w = w;
            this.pw = pw;
            this.hfRelIds = hfRelIds;
            this.share = share;
            progress = doc.SaveProgress;
            if (progress != null)
                foreach (Section s in doc.Sections) blocks += s.Body?.RawChildren().Count() ?? 0;
        }

        public override VisitorAction VisitSectionStart(Section s)
        {
            bool lastSection = s.NextSibling is not Section;
            Action<XmlWriter> sectPr = x => WriteSectionProps(x, s, pw, hfRelIds);
            var body = s.Body;
            Node? lastBlock = body?.last;
            while (lastBlock is OpaqueNode) lastBlock = lastBlock.prev;
            if (body != null)
            {
                var writer = new BlockWriter(w, pw, null) { SectionProps = lastSection ? null : sectPr, LastBlock = lastBlock };
                for (var n = body.first; n != null; n = n.next)
                {
                    n.AcceptCore(writer);
                    progress?.Report(share * ++written / blocks);
                }
                writer.Kept.CloseAll(w);
            }
            if (lastBlock == null && lastSection)
            {
                // Word processors expect at least one paragraph in the body.
                w.WriteStartElement("p", Ns.W);
                w.WriteEndElement();
            }
            if (!lastSection && lastBlock is not Paragraph)
            {
                w.WriteStartElement("p", Ns.W);
                w.WriteStartElement("pPr", Ns.W);
                sectPr(w);
                w.WriteEndElement();
                w.WriteEndElement();
            }
            if (lastSection) sectPr(w);
            return VisitorAction.SkipThisNode;
        }
    }

    private static void WriteSectionProps(XmlWriter w, Section s, PartWriter pw, Dictionary<HeaderFooter, string> hfRelIds)
    {
        w.WriteStartElement("sectPr", Ns.W);
        PropElement.WriteAttrs(w, s.XAttrs);
        foreach (HeaderFooter hf in s.HeadersFooters)
        {
            if (!hfRelIds.TryGetValue(hf, out var id)) continue;
            w.WriteStartElement(hf.IsHeader ? "headerReference" : "footerReference", Ns.W);
            w.WriteAttributeString("type", Ns.W, HeaderFooter.XmlType(hf.HeaderFooterType));
            w.WriteAttributeString("id", Ns.R, id);
            w.WriteEndElement();
        }
        PropsCodec.Section.WriteItems(w, pw.State.Elements(PropsCodec.Section, s.Attrs), s.Props.Kept, null);
        w.WriteEndElement();
    }
}
