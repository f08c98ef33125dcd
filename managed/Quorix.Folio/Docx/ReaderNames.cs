using System.Xml;

namespace Quorix.Folio.Docx;

/// <summary>Name tables for the part readers, holding up front the very string instances the
/// readers compare against: the XML reader then hands back those instances, and each name or
/// namespace check is settled by reference instead of comparing the namespace's sixty characters.</summary>
internal static class ReaderNames
{
    private static readonly string[] Known =
    {
        Ns.W, Ns.R, Ns.WP, Ns.A, Ns.Pic, Ns.Xml, Ns.Xmlns,
        "document", "body", "hdr", "ftr", "styles", "numbering", "footnotes", "endnotes", "comments",
        "p", "pPr", "r", "rPr", "t", "instrText", "tab", "br", "cr", "noBreakHyphen", "softHyphen",
        "lastRenderedPageBreak", "footnoteRef", "endnoteRef", "annotationRef", "fldChar", "fldCharType",
        "footnoteReference", "endnoteReference", "commentReference", "drawing", "hyperlink", "fldSimple",
        "bookmarkStart", "bookmarkEnd", "commentRangeStart", "commentRangeEnd",
        "tbl", "tblPr", "tblGrid", "gridCol", "tr", "trPr", "tblPrEx", "tc", "tcPr", "hMerge", "vMerge", "gridSpan",
        "sectPr", "headerReference", "footerReference", "style", "abstractNum", "num",
        "id", "name", "type", "val", "w", "space",
    };

    /// <summary>A fresh table for one reader (name tables are not safe to share between threads).</summary>
    public static NameTable Create()
    {
        var table = new NameTable();
        foreach (var name in Known) table.Add(name);
        return table;
    }
}
