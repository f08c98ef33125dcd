using Quorix.Folio.Formatting;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Layout;

/// <summary>Spacing of a paragraph in a table cell. The table style's paragraph properties sit between
/// the document defaults and the paragraph's own style: a table style that removes the space after
/// paragraphs applies to cell text whose style says nothing about it.</summary>
internal static class CellParagraphSpacing
{
    public static (double Before, double After, LineSpacingRule Rule, double Line) Of(Paragraph para, ParagraphFormat pf)
    {
        var result = (pf.SpaceBefore, pf.SpaceAfter, pf.LineSpacingRule, pf.LineSpacing);
        if (para.ParentNode is not Cell { ParentRow.ParentTable: { } table } || para.Document is not { } doc) return result;
        var tableStyle = doc.Styles.FindById(table.TblPr.Val("tblStyle"));
        if (tableStyle == null) return result;
        var fromTable = new[] { tableStyle }.Concat(tableStyle.Ancestors()).Select(s => s.SubOrNull("pPr", PropOrder.Paragraph)).OfType<PropBag>().ToList();
        var own = new List<PropBag> { para.PPr };
        if (para.ParagraphStyle is { } ps)
            own.AddRange(new[] { ps }.Concat(ps.Ancestors()).Select(s => s.SubOrNull("pPr", PropOrder.Paragraph)).OfType<PropBag>());

        string? Said(List<PropBag> bags, string attr) => bags.Select(b => b.Find("spacing")?.Get(attr)).FirstOrDefault(v => v != null);
        double? Table(string attr) => Said(own, attr) == null && Units.ParseInt(Said(fromTable, attr)) is { } v ? v : null;

        if (Table("before") is { } before) result.SpaceBefore = Units.TwipsToPoints((int)before);
        if (Table("after") is { } after) result.SpaceAfter = Units.TwipsToPoints((int)after);
        if (Table("line") is { } line)
        {
            var rule = Said(own, "lineRule") ?? Said(fromTable, "lineRule");
            result.LineSpacingRule = rule switch { "exact" => LineSpacingRule.Exactly, "atLeast" => LineSpacingRule.AtLeast, _ => LineSpacingRule.Multiple };
            result.LineSpacing = result.LineSpacingRule == LineSpacingRule.Multiple ? line / 240.0 * 12 : Units.TwipsToPoints((int)line);
        }
        return result;
    }
}
