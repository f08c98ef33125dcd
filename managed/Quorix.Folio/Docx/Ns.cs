namespace Quorix.Folio.Docx;

internal static class Ns
{
    public const string W = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";
    public const string R = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    public const string WP = "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing";
    public const string A = "http://schemas.openxmlformats.org/drawingml/2006/main";
    public const string Pic = "http://schemas.openxmlformats.org/drawingml/2006/picture";
    public const string PkgRels = "http://schemas.openxmlformats.org/package/2006/relationships";
    public const string ContentTypes = "http://schemas.openxmlformats.org/package/2006/content-types";
    public const string Xml = "http://www.w3.org/XML/1998/namespace";
    public const string Xmlns = "http://www.w3.org/2000/xmlns/";
    public const string W14 = "http://schemas.microsoft.com/office/word/2010/wordml";
    public const string W15 = "http://schemas.microsoft.com/office/word/2012/wordml";

    public const string RelOfficeDocument = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument";
    public const string RelStyles = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles";
    public const string RelNumbering = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/numbering";
    public const string RelHeader = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/header";
    public const string RelFooter = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/footer";
    public const string RelComments = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/comments";
    public const string RelCommentsExtended = "http://schemas.microsoft.com/office/2011/relationships/commentsExtended";
    public const string RelFootnotes = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/footnotes";
    public const string RelEndnotes = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/endnotes";
    public const string RelImage = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/image";
    public const string RelHyperlink = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/hyperlink";

    public const string CtDocument = "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml";
    public const string CtDocumentMacro = "application/vnd.ms-word.document.macroEnabled.main+xml";
    public const string CtTemplate = "application/vnd.openxmlformats-officedocument.wordprocessingml.template.main+xml";
    public const string CtStyles = "application/vnd.openxmlformats-officedocument.wordprocessingml.styles+xml";
    public const string CtNumbering = "application/vnd.openxmlformats-officedocument.wordprocessingml.numbering+xml";
    public const string CtHeader = "application/vnd.openxmlformats-officedocument.wordprocessingml.header+xml";
    public const string CtFooter = "application/vnd.openxmlformats-officedocument.wordprocessingml.footer+xml";
    public const string CtComments = "application/vnd.openxmlformats-officedocument.wordprocessingml.comments+xml";
    public const string CtCommentsExtended = "application/vnd.openxmlformats-officedocument.wordprocessingml.commentsExtended+xml";
    public const string CtFootnotes = "application/vnd.openxmlformats-officedocument.wordprocessingml.footnotes+xml";
    public const string CtEndnotes = "application/vnd.openxmlformats-officedocument.wordprocessingml.endnotes+xml";
    public const string CtRels = "application/vnd.openxmlformats-package.relationships+xml";
}
