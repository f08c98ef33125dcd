using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;
using Quorix.Folio.Notes;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>What a visitor asks the walk to do next.</summary>
public enum VisitorAction
{
    /// <summary>Go on with the node's children, then its siblings.</summary>
    Continue = 0,
    /// <summary>Skip the node's children and its end visit; go on with its next sibling.</summary>
    SkipThisNode = 1,
    /// <summary>End the walk.</summary>
    Stop = 2,
}

/// <summary>Walks a document in document order: one call per leaf node, a start and an end call per
/// node with children. Every method continues by default, so a visitor overrides only what it needs.</summary>
public abstract class DocumentVisitor
{
    /// <summary>Called before the children of the document are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitDocumentStart(Document doc) => VisitorAction.Continue;
    /// <summary>Called after the children of the document were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitDocumentEnd(Document doc) => VisitorAction.Continue;
    /// <summary>Called before the children of a section are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitSectionStart(Section section) => VisitorAction.Continue;
    /// <summary>Called after the children of a section were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitSectionEnd(Section section) => VisitorAction.Continue;
    /// <summary>Called before the children of a section's body are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitBodyStart(Body body) => VisitorAction.Continue;
    /// <summary>Called after the children of a section's body were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitBodyEnd(Body body) => VisitorAction.Continue;
    /// <summary>Called before the children of a header or footer are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitHeaderFooterStart(HeaderFooter headerFooter) => VisitorAction.Continue;
    /// <summary>Called after the children of a header or footer were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitHeaderFooterEnd(HeaderFooter headerFooter) => VisitorAction.Continue;
    /// <summary>Called before the children of a paragraph are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitParagraphStart(Paragraph paragraph) => VisitorAction.Continue;
    /// <summary>Called after the children of a paragraph were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitParagraphEnd(Paragraph paragraph) => VisitorAction.Continue;
    /// <summary>Called before the children of a table are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitTableStart(Table table) => VisitorAction.Continue;
    /// <summary>Called after the children of a table were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitTableEnd(Table table) => VisitorAction.Continue;
    /// <summary>Called before the children of a table row are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitRowStart(Row row) => VisitorAction.Continue;
    /// <summary>Called after the children of a table row were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitRowEnd(Row row) => VisitorAction.Continue;
    /// <summary>Called before the children of a table cell are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitCellStart(Cell cell) => VisitorAction.Continue;
    /// <summary>Called after the children of a table cell were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitCellEnd(Cell cell) => VisitorAction.Continue;
    /// <summary>Called for a run of text; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitRun(Run run) => VisitorAction.Continue;
    /// <summary>Called for the start of a field; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitFieldStart(FieldStart fieldStart) => VisitorAction.Continue;
    /// <summary>Called for the separator between a field's code and result; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitFieldSeparator(FieldSeparator fieldSeparator) => VisitorAction.Continue;
    /// <summary>Called for the end of a field; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitFieldEnd(FieldEnd fieldEnd) => VisitorAction.Continue;
    /// <summary>Called for the start of a bookmark; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitBookmarkStart(BookmarkStart bookmarkStart) => VisitorAction.Continue;
    /// <summary>Called for the end of a bookmark; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitBookmarkEnd(BookmarkEnd bookmarkEnd) => VisitorAction.Continue;
    /// <summary>Called before the children of a comment are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitCommentStart(Comment comment) => VisitorAction.Continue;
    /// <summary>Called after the children of a comment were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitCommentEnd(Comment comment) => VisitorAction.Continue;
    /// <summary>Called for the start of a comment's anchored text; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitCommentRangeStart(CommentRangeStart commentRangeStart) => VisitorAction.Continue;
    /// <summary>Called for the end of a comment's anchored text; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitCommentRangeEnd(CommentRangeEnd commentRangeEnd) => VisitorAction.Continue;
    /// <summary>Called before the children of a footnote or endnote are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitFootnoteStart(Footnote footnote) => VisitorAction.Continue;
    /// <summary>Called after the children of a footnote or endnote were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitFootnoteEnd(Footnote footnote) => VisitorAction.Continue;
    /// <summary>Called before the children of a shape are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitShapeStart(Shape shape) => VisitorAction.Continue;
    /// <summary>Called after the children of a shape were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitShapeEnd(Shape shape) => VisitorAction.Continue;
    /// <summary>Called before the children of a content control are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitStructuredDocumentTagStart(Markup.StructuredDocumentTag sdt) => VisitorAction.Continue;
    /// <summary>Called after the children of a content control were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitStructuredDocumentTagEnd(Markup.StructuredDocumentTag sdt) => VisitorAction.Continue;
    /// <summary>Called before the children of a smart tag are visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitSmartTagStart(Markup.SmartTag smartTag) => VisitorAction.Continue;
    /// <summary>Called after the children of a smart tag were visited; the answer says whether to go on.</summary>
    public virtual VisitorAction VisitSmartTagEnd(Markup.SmartTag smartTag) => VisitorAction.Continue;

    /// <summary>Content kept as read because the model does not understand it; writers of the format
    /// it came from write it back, every other visitor passes over it.</summary>
    internal virtual VisitorAction VisitKept(OpaqueNode node) => VisitorAction.Continue;
}
