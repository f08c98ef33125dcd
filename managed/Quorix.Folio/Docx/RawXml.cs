using System.Text;

namespace Quorix.Folio.Docx;

/// <summary>Tidies markup captured from a part: the reader repeats namespace declarations on
/// the captured elements even where the part's root already makes them.</summary>
internal static class RawXml
{
    private readonly record struct Decl(int Start, int End, string Prefix, string Uri);

    public static string DropRootDeclarations(string xml, RootInfo? root)
    {
        if (root == null || root.Namespaces.Count == 0 || xml.IndexOf(" xmlns:", StringComparison.Ordinal) < 0) return xml;
        var decls = Declarations(xml);
        if (decls.Count == 0) return xml;
        // A prefix bound to another URI somewhere in the fragment keeps all its declarations.
        var conflicting = new HashSet<string>(decls.Where(d => !root.Namespaces.Exists(n => n.Prefix == d.Prefix && n.Uri == d.Uri)).Select(d => d.Prefix));
        var sb = new StringBuilder(xml.Length);
        int at = 0;
        foreach (var d in decls)
        {
            if (conflicting.Contains(d.Prefix)) continue;
            sb.Append(xml, at, d.Start - at);
            at = d.End;
        }
        sb.Append(xml, at, xml.Length - at);
        return sb.ToString();
    }

    // Prefixed declarations inside start tags only; text and CDATA are never touched.
    private static List<Decl> Declarations(string xml)
    {
        var list = new List<Decl>();
        int i = 0;
        while (i < xml.Length)
        {
            int lt = xml.IndexOf('<', i);
            if (lt < 0) break;
            if (string.CompareOrdinal(xml, lt, "<![CDATA[", 0, 9) == 0)
            {
                int close = xml.IndexOf("]]>", lt, StringComparison.Ordinal);
                i = close < 0 ? xml.Length : close + 3;
                continue;
            }
            int j = lt + 1;
            char quote = '\0';
            for (; j < xml.Length; j++)
            {
                char c = xml[j];
                if (quote != '\0') { if (c == quote) quote = '\0'; continue; }
                if (c == '"' || c == '\'') { quote = c; continue; }
                if (c == '>') break;
                if (c == ' ' && string.CompareOrdinal(xml, j, " xmlns:", 0, 7) == 0)
                {
                    int eq = xml.IndexOf('=', j);
                    if (eq < 0 || eq + 1 >= xml.Length) break;
                    char q = xml[eq + 1];
                    if (q != '"' && q != '\'') continue;
                    int q2 = xml.IndexOf(q, eq + 2);
                    if (q2 < 0) break;
                    list.Add(new Decl(j, q2 + 1, xml.Substring(j + 7, eq - j - 7), xml.Substring(eq + 2, q2 - eq - 2)));
                    j = q2;
                }
            }
            i = j + 1;
        }
        return list;
    }
}
