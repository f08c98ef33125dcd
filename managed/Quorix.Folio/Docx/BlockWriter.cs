using System.Xml;
using Quorix.Folio.Markup;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Docx;

internal static partial class BodyWriter
{
    /// <summary>Writes the blocks of one container (a story, a cell, a content control) in order;
    /// each block writes what is below it itself.</summary>
    private sealed class BlockWriter : DocumentVisitor
    {
        private readonly XmlWriter w;
        private readonly PartWriter pw;
        public readonly KeptContainers Kept = new();
        // Written at the start of the first paragraph, then dropped.
        public Action<XmlWriter>? Prefix;
        public bool LastWasParagraph;

        public BlockWriter(XmlWriter w, PartWriter pw, Action<XmlWriter>? prefix)
        {
            this.w = w;
            this.pw = pw;
            Prefix = prefix;
        }

        public override VisitorAction VisitParagraphStart(Paragraph p)
        {
            WriteParagraph(w, p, pw, null, Prefix);
            Prefix = null;
            LastWasParagraph = true;
            return VisitorAction.SkipThisNode;
        }

        public override VisitorAction VisitTableStart(Table t)
        {
            WriteTable(w, t, pw);
            LastWasParagraph = false;
            return VisitorAction.SkipThisNode;
        }

        public override VisitorAction VisitStructuredDocumentTagStart(StructuredDocumentTag sdt)
        {
            LastWasParagraph = WriteControl(w, sdt, pw, Prefix, null);
            Prefix = null;
            return VisitorAction.SkipThisNode;
        }

        internal override VisitorAction VisitKept(OpaqueNode o)
        {
            // The content between a container's markers decides how the container ends.
            if (o.Partner != null) Kept.Write(w, o);
            else
            {
                w.WriteRaw(o.Xml);
                LastWasParagraph = o.Xml.StartsWith("<w:p", StringComparison.Ordinal) && !o.Xml.StartsWith("<w:pPr", StringComparison.Ordinal);
            }
            return VisitorAction.Continue;
        }
    }
}
