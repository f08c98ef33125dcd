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
        // The section's properties, written in the pPr of its last block when that is a paragraph.
        public Action<XmlWriter>? SectionProps;
        public Node? LastBlock;

        public BlockWriter(XmlWriter w, PartWriter pw, Action<XmlWriter>? prefix)
        {
            this.w = w;
            this.pw = pw;
            Prefix = prefix;
        }

        public override VisitorAction VisitParagraphStart(Paragraph p)
        {
            WriteParagraph(w, p, pw, p == LastBlock ? SectionProps : null, Prefix);
            Prefix = null;
            LastWasParagraph = true;
            return VisitorAction.SkipThisNode;
        }

        // Rows and cells are written as the walk reaches them; a cell's own blocks by a writer of their own.
        private int tableDepth;
        private bool rowHasCells;

        public override VisitorAction VisitTableStart(Table t)
        {
            if (t.FirstRow == null) return VisitorAction.SkipThisNode;
            StartTable(w, t, pw);
            tableDepth++;
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitTableEnd(Table t)
        {
            w.WriteEndElement();
            tableDepth--;
            LastWasParagraph = false;
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitRowStart(Row row)
        {
            StartRow(w, row, pw);
            rowHasCells = false;
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitRowEnd(Row row)
        {
            if (!rowHasCells) EmptyCell(w);
            w.WriteEndElement();
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitCellStart(Cell cell)
        {
            // The cells a merged group swallows are written as part of its first cell.
            if (!Swallowed(cell))
            {
                WriteCell(w, cell, pw);
                rowHasCells = true;
            }
            return VisitorAction.SkipThisNode;
        }

        public override VisitorAction VisitStructuredDocumentTagStart(StructuredDocumentTag sdt)
        {
            LastWasParagraph = WriteControl(w, sdt, pw, Prefix, null);
            Prefix = null;
            return VisitorAction.SkipThisNode;
        }

        private static bool Swallowed(Cell cell)
        {
            if (cell.HMerge != CellMerge.Previous) return false;
            for (var n = cell.prev; n is Cell p; n = n.prev)
            {
                if (p.HMerge == CellMerge.First) return true;
                if (p.HMerge != CellMerge.Previous) return false;
            }
            return false;
        }

        internal override VisitorAction VisitKept(OpaqueNode o)
        {
            // Inside a table, kept rows and cells are written where they stood.
            if (tableDepth > 0) w.WriteRaw(o.Xml);
            // The content between a container's markers decides how the container ends.
            else if (o.Partner != null) Kept.Write(w, o);
            else
            {
                w.WriteRaw(o.Xml);
                LastWasParagraph = o.Xml.StartsWith("<w:p", StringComparison.Ordinal) && !o.Xml.StartsWith("<w:pPr", StringComparison.Ordinal);
            }
            return VisitorAction.Continue;
        }
    }
}
