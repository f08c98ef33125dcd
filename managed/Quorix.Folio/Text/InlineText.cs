using System.Text;
using Quorix.Folio.Fields;

namespace Quorix.Folio.Text;

/// <summary>Walks a paragraph's inline nodes as a reader sees them: field results, not codes.</summary>
internal static class InlineText
{
    public enum Kind { Text, LinkStart, LinkEnd, Note, Image }

    public readonly record struct Piece(Kind Kind, Node Node, string Text, string? Target = null, bool IsBookmark = false);

    public static IEnumerable<Piece> Walk(Paragraph p)
    {
        // Per open field: whether we are in its code, its collected code, and whether it is a link.
        var stack = new List<(bool InCode, StringBuilder Code, bool Link, FieldStart? Start)>();
        foreach (var n in p.InlineNodes())
        {
            // Tracked deletions are shown as the document reads once they are accepted: gone.
            if (n.Rev?.Local is "del" or "moveFrom") continue;
            switch (n)
            {
                case FieldStart start:
                    stack.Add((true, new StringBuilder(), false, start));
                    continue;
                case FieldSeparator:
                    if (stack.Count > 0)
                    {
                        var top = stack[^1];
                        // Check boxes and drop-down lists show their form data in place of the result.
                        if (Shown(top) is { } form)
                        {
                            // Its result is skipped as code is; a null start marks it shown.
                            stack[^1] = (true, top.Code, false, null);
                            if (stack.Count(s => s.InCode) == 1) yield return new Piece(Kind.Text, n, form);
                            continue;
                        }
                        var link = stack.Count == 1 ? FieldPairing.Hyperlink(top.Code.ToString()) : null;
                        stack[^1] = (false, top.Code, link != null, top.Start);
                        if (link is { } l) yield return new Piece(Kind.LinkStart, n, "", l.Target, l.IsBookmark);
                    }
                    continue;
                case FieldEnd:
                    if (stack.Count > 0)
                    {
                        var top = stack[^1];
                        // A check box is often written without a result part.
                        if (top.InCode && stack.Count(s => s.InCode) == 1 && Shown(top) is { } form) yield return new Piece(Kind.Text, n, form);
                        stack.RemoveAt(stack.Count - 1);
                        if (top.Link) yield return new Piece(Kind.LinkEnd, n, "");
                    }
                    continue;
            }
            bool inCode = stack.Exists(s => s.InCode);
            if (inCode)
            {
                if (n is Run cr) stack.FindLast(s => s.InCode).Code.Append(cr.Text);
                continue;
            }
            switch (n)
            {
                case Run r:
                    if (r.Text.Length > 0) yield return new Piece(Kind.Text, r, r.Text);
                    break;
                case Notes.Footnote f:
                    yield return new Piece(Kind.Note, f, "");
                    break;
                case Drawing.Shape { IsTextBox: true } box when box.GetText().TrimEnd(ControlChar.ParagraphBreakChar) is { Length: > 0 } boxText:
                    yield return new Piece(Kind.Text, box, boxText);
                    break;
                case Drawing.Shape s when s.HasImage:
                    yield return new Piece(Kind.Image, s, s.AlternativeText);
                    break;
                case OpaqueNode o when o.VisibleText.Length > 0 && o.Kind != OpaqueKind.Block:
                    yield return new Piece(Kind.Text, o, o.VisibleText);
                    break;
            }
        }
    }

    private static string? Shown((bool InCode, StringBuilder Code, bool Link, FieldStart? Start) field) =>
        field.InCode && field.Start != null ? FormField.Shown(field.Start, FieldKinds.FirstWord(field.Code.ToString())) : null;
}
