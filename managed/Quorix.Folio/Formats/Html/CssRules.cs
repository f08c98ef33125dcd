using System.Text;

namespace Quorix.Folio.Formats.Html;

/// <summary>Formatting as style attributes, or as classes collected for a style sheet: the same
/// declarations share one class.</summary>
internal sealed class CssRules
{
    private readonly bool inline;
    private readonly Dictionary<string, string> classes = new();

    public CssRules(bool inline) { this.inline = inline; }

    public string Attribute(string declarations)
    {
        if (declarations.Length == 0) return "";
        if (inline) return " style=\"" + HtmlRenderer.Attr(declarations) + "\"";
        if (!classes.TryGetValue(declarations, out var name))
            classes[declarations] = name = "q" + (classes.Count + 1);
        return " class=\"" + name + "\"";
    }

    public string Sheet(string bodyDeclarations)
    {
        var sb = new StringBuilder();
        sb.Append("body{").Append(bodyDeclarations).Append("}\n");
        foreach (var (decl, name) in classes) sb.Append('.').Append(name).Append('{').Append(decl).Append("}\n");
        return sb.ToString();
    }
}
