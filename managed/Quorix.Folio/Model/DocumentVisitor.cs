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
    public virtual VisitorAction VisitDocumentStart(Document doc) => VisitorAction.Continue;
    public virtual VisitorAction VisitDocumentEnd(Document doc) => VisitorAction.Continue;
    public virtual VisitorAction VisitSectionStart(Section section) => VisitorAction.Continue;
    public virtual VisitorAction VisitSectionEnd(Section section) => VisitorAction.Continue;
    public virtual VisitorAction VisitBodyStart(Body body) => VisitorAction.Continue;
    public virtual VisitorAction VisitBodyEnd(Body body) => VisitorAction.Continue;
    public virtual VisitorAction VisitHeaderFooterStart(HeaderFooter headerFooter) => VisitorAction.Continue;
    public virtual VisitorAction VisitHeaderFooterEnd(HeaderFooter headerFooter) => VisitorAction.Continue;
    public virtual VisitorAction VisitParagraphStart(Paragraph paragraph) => VisitorAction.Continue;
    public virtual VisitorAction VisitParagraphEnd(Paragraph paragraph) => VisitorAction.Continue;
    public virtual VisitorAction VisitTableStart(Table table) => VisitorAction.Continue;
    public virtual VisitorAction VisitTableEnd(Table table) => VisitorAction.Continue;
    public virtual VisitorAction VisitRowStart(Row row) => VisitorAction.Continue;
    public virtual VisitorAction VisitRowEnd(Row row) => VisitorAction.Continue;
    public virtual VisitorAction VisitCellStart(Cell cell) => VisitorAction.Continue;
    public virtual VisitorAction VisitCellEnd(Cell cell) => VisitorAction.Continue;
    public virtual VisitorAction VisitRun(Run run) => VisitorAction.Continue;
    public virtual VisitorAction VisitFieldStart(FieldStart fieldStart) => VisitorAction.Continue;
    public virtual VisitorAction VisitFieldSeparator(FieldSeparator fieldSeparator) => VisitorAction.Continue;
    public virtual VisitorAction VisitFieldEnd(FieldEnd fieldEnd) => VisitorAction.Continue;
    public virtual VisitorAction VisitBookmarkStart(BookmarkStart bookmarkStart) => VisitorAction.Continue;
    public virtual VisitorAction VisitBookmarkEnd(BookmarkEnd bookmarkEnd) => VisitorAction.Continue;
    public virtual VisitorAction VisitCommentStart(Comment comment) => VisitorAction.Continue;
    public virtual VisitorAction VisitCommentEnd(Comment comment) => VisitorAction.Continue;
    public virtual VisitorAction VisitCommentRangeStart(CommentRangeStart commentRangeStart) => VisitorAction.Continue;
    public virtual VisitorAction VisitCommentRangeEnd(CommentRangeEnd commentRangeEnd) => VisitorAction.Continue;
    public virtual VisitorAction VisitFootnoteStart(Footnote footnote) => VisitorAction.Continue;
    public virtual VisitorAction VisitFootnoteEnd(Footnote footnote) => VisitorAction.Continue;
    public virtual VisitorAction VisitShapeStart(Shape shape) => VisitorAction.Continue;
    public virtual VisitorAction VisitShapeEnd(Shape shape) => VisitorAction.Continue;
    public virtual VisitorAction VisitStructuredDocumentTagStart(Markup.StructuredDocumentTag sdt) => VisitorAction.Continue;
    public virtual VisitorAction VisitStructuredDocumentTagEnd(Markup.StructuredDocumentTag sdt) => VisitorAction.Continue;
    public virtual VisitorAction VisitSmartTagStart(Markup.SmartTag smartTag) => VisitorAction.Continue;
    public virtual VisitorAction VisitSmartTagEnd(Markup.SmartTag smartTag) => VisitorAction.Continue;

    /// <summary>Content kept as read because the model does not understand it; writers of the format
    /// it came from write it back, every other visitor passes over it.</summary>
    internal virtual VisitorAction VisitKept(OpaqueNode node) => VisitorAction.Continue;
}
