using System.Xml;
using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Formatting;
using Quorix.Folio.Markup;
using Quorix.Folio.Notes;

namespace Quorix.Folio.Docx;

internal static partial class BodyWriter
{
    /// <summary>Writes one inline node of a paragraph. Nodes with content of their own (notes,
    /// comments, text boxes, content controls) write it themselves and skip the walk below them.</summary>
    private sealed class InlineWriter : DocumentVisitor
    {
        public readonly XmlWriter Writer;
        private readonly XmlWriter w;
        private readonly PartWriter pw;
        // The containers kept as markup that are open around the node, if it is written in a paragraph's flow.
        public KeptContainers? Kept;
        // Set by a field written in its wrapped form: the walk goes on after its end marker.
        public Node? ResumeAfter;

        public InlineWriter(XmlWriter w, PartWriter pw)
        {
            Writer = this.w = w;
            this.pw = pw;
        }

        public override VisitorAction VisitRun(Run r)
        {
            WriteRun(w, pw, r.RPr, r.Text, pw.InFieldCode, r.XAttrs, r.Rev?.Local is "del" or "moveFrom");
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitFieldStart(FieldStart fs)
        {
            if (Kept != null && fs.Wrapper != null && TryWriteWrapped(w, fs, pw) is { } end)
            {
                ResumeAfter = end;
                return VisitorAction.Continue;
            }
            StartRun(w, pw, fs.RPr);
            if (fs.Raw != null) fs.Raw.Write(w);
            else
            {
                w.WriteStartElement("fldChar", Ns.W);
                w.WriteAttributeString("fldCharType", Ns.W, "begin");
                w.WriteEndElement();
            }
            w.WriteEndElement();
            pw.Fields.Push(true);
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitFieldSeparator(FieldSeparator sep)
        {
            WriteFieldChar(w, pw, sep.RPr, "separate");
            if (pw.Fields.Count > 0) { pw.Fields.Pop(); pw.Fields.Push(false); }
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitFieldEnd(FieldEnd end)
        {
            WriteFieldChar(w, pw, end.RPr, "end");
            if (pw.Fields.Count > 0) pw.Fields.Pop();
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitBookmarkStart(BookmarkStart bs)
        {
            int id = pw.State.BookmarkId++;
            pw.BookmarkIds[bs.Name] = id;
            w.WriteStartElement("bookmarkStart", Ns.W);
            w.WriteAttributeString("id", Ns.W, Units.Str(id));
            w.WriteAttributeString("name", Ns.W, bs.Name);
            w.WriteEndElement();
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitBookmarkEnd(BookmarkEnd be)
        {
            if (!pw.BookmarkIds.Remove(be.Name, out var id)) return VisitorAction.Continue;
            w.WriteStartElement("bookmarkEnd", Ns.W);
            w.WriteAttributeString("id", Ns.W, Units.Str(id));
            w.WriteEndElement();
            return VisitorAction.Continue;
        }

        public override VisitorAction VisitCommentRangeStart(CommentRangeStart cs) => RangeMark("commentRangeStart", cs.Id);

        public override VisitorAction VisitCommentRangeEnd(CommentRangeEnd ce) => RangeMark("commentRangeEnd", ce.Id);

        private VisitorAction RangeMark(string local, int id)
        {
            w.WriteStartElement(local, Ns.W);
            w.WriteAttributeString("id", Ns.W, Units.Str(id));
            w.WriteEndElement();
            return VisitorAction.Continue;
        }

        // The comment's text goes to the comments part; here only its reference.
        public override VisitorAction VisitCommentStart(Comment c)
        {
            int id = c.Id >= 0 && !pw.State.CommentIds.Contains(c.Id) ? c.Id : NextFree(pw.State.CommentIds, pw.State.RangeIds);
            c.Id = id;
            pw.State.CommentIds.Add(id);
            pw.State.Comments.Add(c);
            StartRun(w, pw, c.RPr);
            w.WriteStartElement("commentReference", Ns.W);
            w.WriteAttributeString("id", Ns.W, Units.Str(id));
            w.WriteEndElement();
            w.WriteEndElement();
            return VisitorAction.SkipThisNode;
        }

        // The note's text goes to its notes part; here only its reference and custom mark.
        public override VisitorAction VisitFootnoteStart(Footnote f)
        {
            bool footnote = f.FootnoteType == FootnoteType.Footnote;
            var list = footnote ? pw.State.Footnotes : pw.State.Endnotes;
            int id = list.Count + (footnote ? pw.State.FootnoteBase : pw.State.EndnoteBase);
            list.Add((id, f));
            StartRun(w, pw, f.RPr);
            w.WriteStartElement(footnote ? "footnoteReference" : "endnoteReference", Ns.W);
            if (!f.IsAuto) w.WriteAttributeString("customMarkFollows", Ns.W, "1");
            w.WriteAttributeString("id", Ns.W, Units.Str(id));
            w.WriteEndElement();
            if (!f.IsAuto) WriteText(w, f.ReferenceMark, false);
            w.WriteEndElement();
            return VisitorAction.SkipThisNode;
        }

        public override VisitorAction VisitStructuredDocumentTagStart(StructuredDocumentTag sdt)
        {
            WriteControl(w, sdt, pw, null, Kept);
            return VisitorAction.SkipThisNode;
        }

        public override VisitorAction VisitSmartTagStart(SmartTag tag)
        {
            WriteSmartTag(w, tag, pw, Kept);
            return VisitorAction.SkipThisNode;
        }

        public override VisitorAction VisitShapeStart(Shape s)
        {
            StartRun(w, pw, s.RPr);
            if (s.TextBoxFrame is { } frame)
            {
                // Every copy of the box's content is written from the one model of it.
                for (int i = 0; i < frame.Length - 1; i++)
                {
                    w.WriteRaw(frame[i]);
                    WriteBlocks(w, s, pw);
                }
                w.WriteRaw(frame[^1]);
            }
            else DrawingWriter.Write(w, s, pw);
            w.WriteEndElement();
            return VisitorAction.SkipThisNode;
        }

        internal override VisitorAction VisitKept(OpaqueNode o)
        {
            // The content between a container's markers decides how the container ends.
            if (o.Partner != null && Kept != null)
            {
                Kept.Write(w, o);
                return VisitorAction.Continue;
            }
            if (o.Kind != OpaqueKind.RunContent)
            {
                w.WriteRaw(o.Xml);
                return VisitorAction.Continue;
            }
            StartRun(w, pw, o.RPr);
            w.WriteRaw(o.Xml);
            w.WriteEndElement();
            return VisitorAction.Continue;
        }
    }
}
