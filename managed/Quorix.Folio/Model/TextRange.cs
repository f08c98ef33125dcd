using System.Text;

namespace Quorix.Folio;

/// <summary>Text between two marker nodes of the tree, and its replacement.</summary>
internal static class TextRange
{
    public static string Between(Node start, Node? end)
    {
        if (end == null) return "";
        var sb = new TextSink();
        var root = (Node?)start.Document ?? start;
        for (var n = start.NextPreOrder(root); n != null && n != end; n = n.NextPreOrder(root))
        {
            // Entering a paragraph means the one before it ended.
            if (n is Paragraph) sb.Append(ControlChar.ParagraphBreakChar);
            else if (n is Run || n is SpecialChar) n.AppendText(sb);
        }
        return sb.ToString();
    }

    /// <summary>Removes everything between the markers and puts one run with the text there.</summary>
    public static void ReplaceBetween(Node start, Node? end, string text)
    {
        if (end == null) throw new InvalidOperationException($"The bookmark has no end.");
        var startPara = start.ParentNode as Paragraph ?? throw new InvalidOperationException("The bookmark does not start inside a paragraph.");
        var endPara = end.ParentNode as Paragraph ?? throw new InvalidOperationException("The bookmark does not end inside a paragraph.");
        Run? model = null;
        if (startPara == endPara)
        {
            for (var n = start.next; n != null && n != end;)
            {
                var nx = n.next;
                if (n is Run r && model == null) model = r;
                if (n is not BookmarkStart && n is not BookmarkEnd) startPara.Unlink(n);
                n = nx;
            }
        }
        else
        {
            for (var n = start.next; n != null;)
            {
                var nx = n.next;
                if (n is Run r && model == null) model = r;
                if (n is not BookmarkStart && n is not BookmarkEnd) startPara.Unlink(n);
                n = nx;
            }
            // Whole blocks between the two paragraphs go; the end paragraph's tail joins the start one.
            var root = startPara.ParentNode;
            for (var b = startPara.next; b != null && b != endPara;)
            {
                var nx = b.next;
                if (b.ParentNode == root) root!.Unlink(b);
                b = nx;
            }
            for (var n = endPara.first; n != null && n != end;)
            {
                var nx = n.next;
                endPara.Unlink(n);
                n = nx;
            }
            for (var n = endPara.first; n != null;)
            {
                var nx = n.next;
                endPara.Unlink(n);
                startPara.LinkLast(n);
                n = nx;
            }
            endPara.Remove();
        }
        var run = new Run(start.Document, text, model?.RPr.Clone() ?? Formatting.FormatProps.None);
        startPara.InsertAfter(run, start);
    }
}
