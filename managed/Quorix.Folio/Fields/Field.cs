using System.Text;

namespace Quorix.Folio.Fields;

/// <summary>A field as its three markers delimit it: code between start and separator, result after.</summary>
public partial class Field
{
    internal Field(FieldStart start, FieldSeparator? separator, FieldEnd end)
    {
        Start = start;
        Separator = separator;
        End = end;
    }

    /// <summary>The character that starts the field.</summary>
    public FieldStart Start { get; private set; }

    /// <summary>The character between the code and the result; null when the field has no result.</summary>
    public FieldSeparator? Separator { get; private set; }

    /// <summary>The character that ends the field.</summary>
    public FieldEnd End { get; private set; }

    /// <summary>The field's type, told from its code.</summary>
    public FieldType Type => FieldKinds.TypeOf(GetFieldCode());

    /// <summary>The field's code, such as "PAGE \* MERGEFORMAT".</summary>
    public string GetFieldCode() => Collect(Start, (Node?)Separator ?? End).Trim();

    internal static string CodeText(FieldStart start, Node stop) => Collect(start, stop);

    /// <summary>The field's result text as it stands in the document.</summary>
    public string Result
    {
        get => Separator == null ? "" : Collect(Separator, End);
        set
        {
            if (Separator == null) throw new InvalidOperationException("The field has no result part.");
            TextRange.ReplaceBetween(Separator, End, value ?? "");
        }
    }

    /// <summary>The text the field shows.</summary>
    public string DisplayResult => Result;

    /// <summary>Removes the markers and code; the result stays as plain text.</summary>
    public void Unlink()
    {
        foreach (var n in Span(Start, (Node?)Separator ?? End)) n.Remove();
        Start.Remove();
        Separator?.Remove();
        End.Remove();
    }

    /// <summary>Removes the field, its code and its result from the document.</summary>
    public void Remove()
    {
        foreach (var n in Span(Start, End)) n.Remove();
        Start.Remove();
        End.Remove();
    }

    private static List<Node> Span(Node from, Node to)
    {
        var list = new List<Node>();
        var root = (Node?)from.Document ?? from;
        for (var n = from.NextPreOrder(root); n != null && n != to; n = n.NextPreOrder(root))
            if (n is Inline) list.Add(n);
        return list;
    }

    // Nested fields contribute their displayed result only.
    private static string Collect(Node from, Node to)
    {
        var sb = new StringBuilder();
        int depth = 0;
        bool inCode = false;
        foreach (var n in Span(from, to))
        {
            if (n is FieldStart) { depth++; inCode = true; continue; }
            if (n is FieldSeparator && depth > 0) { inCode = false; continue; }
            if (n is FieldEnd && depth > 0) { depth--; inCode = false; continue; }
            if (depth > 0 && inCode) continue;
            if (n is Run r) sb.Append(r.Text);
        }
        return sb.ToString();
    }
}

internal static class FieldPairing
{
    public static FieldStart? FindStart(FieldChar c)
    {
        int depth = 0;
        for (Node? n = c.PreviousSibling ?? Up(c); n != null; n = n.PreviousSibling ?? Up(n))
        {
            if (n is FieldEnd) depth++;
            else if (n is FieldStart s)
            {
                if (depth == 0) return s;
                depth--;
            }
        }
        return null;
    }

    // Fields may span paragraphs: walk back into the previous paragraph's last node.
    private static Node? Up(Node n)
    {
        if (n.ParentNode is Paragraph p && p.PreviousSibling is Paragraph prev) return prev.LastChild ?? prev;
        return null;
    }

    public static Field? Complete(FieldStart start)
    {
        int depth = 0;
        FieldSeparator? sep = null;
        var root = (Node?)start.Document ?? start;
        for (var n = start.NextPreOrder(root); n != null; n = n.NextPreOrder(root))
        {
            switch (n)
            {
                case FieldStart: depth++; break;
                case FieldSeparator s when depth == 0: sep ??= s; break;
                case FieldEnd e when depth == 0: return FieldKinds.Create(start, sep, e);
                case FieldEnd: depth--; break;
            }
        }
        return null;
    }

    public static FieldType TypeOf(string code) => FieldKinds.TypeOf(code);

    /// <summary>Target of a HYPERLINK code: (address, isBookmark), or null.</summary>
    public static (string Target, bool IsBookmark)? Hyperlink(string code)
    {
        var parts = Tokenize(code);
        if (parts.Count == 0 || !parts[0].Equals("HYPERLINK", StringComparison.OrdinalIgnoreCase)) return null;
        string? url = null, anchor = null;
        for (int i = 1; i < parts.Count; i++)
        {
            if (parts[i] == "\\l" && i + 1 < parts.Count) anchor = parts[++i];
            else if (parts[i].StartsWith('\\')) { if (parts[i] is "\\o" or "\\t") i++; }
            else url ??= parts[i];
        }
        if (url != null) return (anchor != null ? url + "#" + anchor : url, false);
        if (anchor != null) return (anchor, true);
        return null;
    }

    public static List<string> Tokenize(string code)
    {
        var list = new List<string>();
        int i = 0;
        while (i < code.Length)
        {
            if (char.IsWhiteSpace(code[i])) { i++; continue; }
            if (code[i] == '"')
            {
                int j = code.IndexOf('"', i + 1);
                if (j < 0) j = code.Length;
                list.Add(code.Substring(i + 1, j - i - 1));
                i = j + 1;
            }
            else
            {
                int j = i;
                while (j < code.Length && !char.IsWhiteSpace(code[j])) j++;
                list.Add(code.Substring(i, j - i));
                i = j;
            }
        }
        return list;
    }
}
