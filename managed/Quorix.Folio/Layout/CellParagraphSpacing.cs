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
        var tableStyle = table.TableStyle;
        if (tableStyle == null) return result;
        static AttrSet Decoded(Style s) => s.SubOrNull("pPr", PropOrder.Paragraph) is { } b ? Docx.PropsCodec.Paragraph.Decode(b).Attrs : AttrSet.Empty;
        var fromTable = new[] { tableStyle }.Concat(tableStyle.Ancestors()).Select(Decoded).ToList();
        var own = new List<AttrSet> { para.ParaAttrs };
        if (para.ParagraphStyle is { } ps)
            own.AddRange(new[] { ps }.Concat(ps.Ancestors()).Select(Decoded));

        static object? Said(List<AttrSet> sets, FormatAttr a) => sets.Select(x => x.Get(a)).FirstOrDefault(v => v != null);
        double? Table(FormatAttr a) => Said(own, a) == null && Said(fromTable, a) is int v ? v : null;

        if (Table(FormatAttr.SpaceBefore) is { } before) result.SpaceBefore = Units.TwipsToPoints((int)before);
        if (Table(FormatAttr.SpaceAfter) is { } after) result.SpaceAfter = Units.TwipsToPoints((int)after);
        if (Table(FormatAttr.LineSpacing) is { } line)
        {
            var rule = Said(own, FormatAttr.LineRule) ?? Said(fromTable, FormatAttr.LineRule);
            result.LineSpacingRule = rule switch { "exact" => LineSpacingRule.Exactly, "atLeast" => LineSpacingRule.AtLeast, _ => LineSpacingRule.Multiple };
            result.LineSpacing = result.LineSpacingRule == LineSpacingRule.Multiple ? line / 240.0 * 12 : Units.TwipsToPoints((int)line);
        }
        return result;
    }
}
