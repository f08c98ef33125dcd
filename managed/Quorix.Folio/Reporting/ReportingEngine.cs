using System.Collections;
using System.Globalization;
using System.Text.RegularExpressions;
using Quorix.Folio.Fields;

namespace Quorix.Folio.Reporting;

/// <summary>How a report is built from a template.</summary>
[Flags]
public enum ReportBuildOptions
{
    /// <summary>The default behaviour.</summary>
    None = 0,
    /// <summary>A missing name or member is empty rather than an error.</summary>
    AllowMissingMembers = 1,
    /// <summary>Paragraphs left empty once their tags are gone are removed.</summary>
    RemoveEmptyParagraphs = 2,
    /// <summary>A broken tag is replaced by its error message, and the build goes on.</summary>
    InlineErrorMessages = 4,
}

/// <summary>Types whose static members templates may read by the type's name.</summary>
public sealed class KnownTypeSet : IEnumerable<Type>
{
    private readonly List<Type> types = new();

    /// <summary>How many types the template's expressions may use.</summary>
    public int Count => types.Count;

    /// <summary>Lets templates read that type's static members by its name.</summary>
    public void Add(Type type)
    {
        ArgumentNullException.ThrowIfNull(type);
        if (!types.Contains(type)) types.Add(type);
    }

    /// <summary>No longer lets templates read that type's static members.</summary>
    public void Remove(Type type) => types.Remove(type);

    /// <summary>Removes every type from the set.</summary>
    public void Clear() => types.Clear();

    internal Type? Find(string name) => types.Find(t => t.Name.Equals(name, StringComparison.OrdinalIgnoreCase));

    /// <summary>The types templates may use.</summary>
    public IEnumerator<Type> GetEnumerator() => types.GetEnumerator();

    IEnumerator IEnumerable.GetEnumerator() => GetEnumerator();
}

/// <summary>Builds a report from a template document: tags written in double square brackets are
/// replaced by data (see the user's guide for the tags).</summary>
public sealed class ReportingEngine
{
    private static readonly Regex Tag = new(@"\[\[(?:[^\[\]""']|""[^""]*""|'[^']*'|\[(?:[^\[\]]|\[[^\[\]]*\])*\])*\]\]", RegexOptions.Compiled);
    private static readonly Regex EachTag = new(@"^([A-Za-z_]\w*)\s+in\s+(.+)$", RegexOptions.Compiled | RegexOptions.Singleline);

    /// <summary>How reports are built.</summary>
    public ReportBuildOptions Options { get; set; }

    /// <summary>The types whose static members template expressions may use.</summary>
    public KnownTypeSet KnownTypes { get; } = new();

    private readonly HashSet<Paragraph> emptied = new();
    private bool failed;

    /// <summary>Builds the report with the data object reachable through its members only.</summary>
    public bool BuildReport(Document document, object dataSource) => BuildReport(document, new[] { dataSource }, new string?[] { null });

    /// <summary>Builds the report with the data under the given name.</summary>
    public bool BuildReport(Document document, object dataSource, string dataSourceName) =>
        BuildReport(document, new[] { dataSource }, new string?[] { dataSourceName });

    /// <summary>Builds the report; false when a tag failed and its message was written in its place.</summary>
    public bool BuildReport(Document document, object[] dataSources, string?[] dataSourceNames)
    {
        ArgumentNullException.ThrowIfNull(document);
        ArgumentNullException.ThrowIfNull(dataSources);
        ArgumentNullException.ThrowIfNull(dataSourceNames);
        if (dataSources.Length != dataSourceNames.Length) throw new ArgumentException("There must be as many names as data sources.");
        var scope = new Scope(this);
        for (int i = 0; i < dataSources.Length; i++)
        {
            var data = Unwrap(dataSources[i]);
            if (dataSourceNames[i] is { Length: > 0 } name) scope.Set(name, data);
            // Members of an unnamed object are names of their own.
            else if (data is Dictionary<string, object?> o) foreach (var (k, v) in o) scope.Set(k, v);
            else throw new ArgumentException("A data source without a name must be an object with members.");
        }
        emptied.Clear();
        failed = false;
        var stories = new List<Node>();
        foreach (Section s in document.Sections) stories.AddRange(s.ChildNodes);
        TagRuns.Isolate(stories, Tag);
        Process(stories, scope);
        if (Options.HasFlag(ReportBuildOptions.RemoveEmptyParagraphs))
            foreach (var p in emptied)
                if (p.ParentNode != null && p.ChildNodes.All(n => n is Run r && r.Text.Length == 0) && p.ParentNode.GetChildNodes(NodeType.Paragraph, false).Count > 1)
                    p.Remove();
        return !failed;
    }

    private static object? Unwrap(object? data) => data switch
    {
        JsonDataSource j => j.Root,
        XmlDataSource x => x.Root,
        CsvDataSource c => c.Root,
        _ => data,
    };

    private enum Kind { Value, Each, If, Else, EndEach, EndIf, Link, Image }

    private static (Kind Kind, string Body) Parse(string tag)
    {
        var body = tag[2..^2].Trim();
        if (body == "else") return (Kind.Else, "");
        if (body == "/each") return (Kind.EndEach, "");
        if (body == "/if") return (Kind.EndIf, "");
        if (body.StartsWith("each ", StringComparison.Ordinal)) return (Kind.Each, body[5..]);
        if (body.StartsWith("if ", StringComparison.Ordinal)) return (Kind.If, body[3..]);
        if (body.StartsWith("link ", StringComparison.Ordinal)) return (Kind.Link, body[5..]);
        if (body.StartsWith("image ", StringComparison.Ordinal)) return (Kind.Image, body[6..]);
        return (Kind.Value, body);
    }

    private static bool IsTag(Node n) => n is Run r && r.Text.Length > 4 && r.Text.StartsWith("[[") && r.Text.EndsWith("]]") && Tag.Match(r.Text).Length == r.Text.Length;

    private void Process(IReadOnlyList<Node> roots, Scope scope)
    {
        var tags = new List<Run>();
        foreach (var root in roots)
            for (Node? n = root; n != null; n = n.NextPreOrder(root))
                if (IsTag(n)) tags.Add((Run)n);
        for (int i = 0; i < tags.Count; i++)
        {
            var run = tags[i];
            var (kind, body) = Parse(run.Text);
            try
            {
                switch (kind)
                {
                    case Kind.Value:
                        Value(run, body, scope);
                        break;
                    case Kind.Link:
                        Link(run, body, scope);
                        break;
                    case Kind.Image:
                        Image(run, body, scope);
                        break;
                    case Kind.Each or Kind.If:
                        i = Block(tags, i, kind, body, scope);
                        break;
                    default:
                        throw new TemplateException(Describe(run), "has no opening tag before it");
                }
            }
            catch (Exception e) when (e is ArgumentException or TemplateException or FormatException or InvalidCastException)
            {
                var te = e as TemplateException ?? new TemplateException(Describe(run), "cannot be built: " + e.Message);
                if (!Options.HasFlag(ReportBuildOptions.InlineErrorMessages)) throw te;
                failed = true;
                if (run.ParentNode != null) run.Text = te.Message;
                if (kind is Kind.Each or Kind.If) i = Math.Max(i, MatchingClose(tags, i, kind).Close);
            }
        }
    }

    private static string Describe(Run run)
    {
        var p = run.ParentNode as Paragraph;
        var text = p == null ? "" : Paragraphs.Visible(p).Trim();
        return $"{run.Text} (in the paragraph \"{(text.Length > 40 ? text[..40] + "…" : text)}\")";
    }

    private static (int Close, int Else) MatchingClose(List<Run> tags, int open, Kind kind)
    {
        int depth = 0, elseAt = -1;
        for (int j = open + 1; j < tags.Count; j++)
        {
            var k = Parse(tags[j].Text).Kind;
            if (k is Kind.Each or Kind.If) depth++;
            else if (k is Kind.EndEach or Kind.EndIf)
            {
                if (depth-- > 0) continue;
                if (k != (kind == Kind.Each ? Kind.EndEach : Kind.EndIf)) throw new TemplateException(Describe(tags[open]), $"is closed by {tags[j].Text}");
                return (j, elseAt);
            }
            else if (k == Kind.Else && depth == 0)
            {
                if (kind != Kind.If || elseAt >= 0) throw new TemplateException(Describe(tags[j]), "does not belong to an if");
                elseAt = j;
            }
        }
        throw new TemplateException(Describe(tags[open]), $"has no {(kind == Kind.Each ? "[[/each]]" : "[[/if]]")} after it");
    }

    private int Block(List<Run> tags, int open, Kind kind, string body, Scope scope)
    {
        var run = tags[open];
        var name = Describe(run);
        if (kind == Kind.Each && !EachTag.IsMatch(body)) throw new TemplateException(name, "must read [[each name in list]]");
        var (close, elseAt) = MatchingClose(tags, open, kind);
        string? variable = null;
        IEnumerable<object?>? items = null;
        bool condition = false;
        if (kind == Kind.Each)
        {
            var m = EachTag.Match(body);
            variable = m.Groups[1].Value;
            var v = Expression.Evaluate(m.Groups[2].Value, scope);
            items = v switch
            {
                null => Array.Empty<object?>(),
                string => throw new TemplateException(name, "repeats over text, not a list"),
                IEnumerable e => e.Cast<object?>().ToList(),
                _ => new[] { v },
            };
        }
        else condition = Expression.Truthy(Expression.Evaluate(body, scope));
        foreach (var t in new[] { run, tags[close] }.Concat(elseAt >= 0 ? new[] { tags[elseAt] } : Array.Empty<Run>()))
            if (t.ParentNode is Paragraph p) emptied.Add(p);
        var block = TemplateBlock.Cut((run, run), (tags[close], tags[close]), elseAt >= 0 ? (tags[elseAt], tags[elseAt]) : null, name);
        if (kind == Kind.Each)
        {
            var list = items!.ToList();
            int index = 0;
            foreach (var item in list)
            {
                var inner = scope.With(variable!, item).With(variable + "_index", (long)index + 1).With(variable + "_last", index == list.Count - 1);
                block.Emit(block.First, 1, (_, copy) => Process(copy, inner));
                index++;
            }
        }
        else block.Emit(condition ? block.First : block.Second, 1, (_, copy) => Process(copy, scope));
        block.RemoveTemplate();
        return close;
    }

    private void Value(Run run, string body, Scope scope)
    {
        // "expression | format": the last bar outside quotes separates the format.
        var (expr, format) = SplitFormat(body);
        var v = Expression.Evaluate(expr, scope);
        var text = Format(v, format);
        run.Text = text.Replace("\r\n", "\v").Replace('\n', '\v');
        if (text.Length == 0 && run.ParentNode is Paragraph p) emptied.Add(p);
    }

    private void Link(Run run, string body, Scope scope)
    {
        var parts = SplitTop(body, ',');
        var target = Expression.Text(Expression.Evaluate(parts[0], scope));
        var shown = parts.Count > 1 ? Expression.Text(Expression.Evaluate(parts[1], scope)) : target;
        var doc = (Document)run.Document!;
        var b = new DocumentBuilder(doc);
        b.MoveTo(run);
        b.Font.Bold = run.Font.Bold;
        b.InsertHyperlink(shown, target, false);
        run.Remove();
    }

    // The picture is bytes, base64 text or a local file's name; an optional width and height in points follow.
    private void Image(Run run, string body, Scope scope)
    {
        var parts = SplitTop(body, ',');
        var v = Expression.Evaluate(parts[0], scope);
        byte[] bytes = v switch
        {
            byte[] b => b,
            string or LooseText when File.Exists(Expression.Text(v)) => File.ReadAllBytes(Expression.Text(v)),
            string or LooseText => Convert.FromBase64String(Expression.Text(v)),
            null => Array.Empty<byte>(),
            _ => throw new ArgumentException("an image must be bytes, base64 text or a file name"),
        };
        if (bytes.Length > 0)
        {
            double w = parts.Count > 1 ? Expression.Num(Expression.Evaluate(parts[1], scope)) : -1;
            double h = parts.Count > 2 ? Expression.Num(Expression.Evaluate(parts[2], scope)) : -1;
            var b = new DocumentBuilder((Document)run.Document!);
            b.MoveTo(run);
            b.InsertImage(bytes, w, h);
        }
        else if (run.ParentNode is Paragraph p) emptied.Add(p);
        run.Remove();
    }

    private static (string Expr, string? Format) SplitFormat(string body)
    {
        var parts = SplitTop(body, '|');
        if (parts.Count == 1) return (body, null);
        // "||" is "or", not a format.
        if (body.Contains("||")) return (body, null);
        return (string.Join("|", parts.Take(parts.Count - 1)), parts[^1].Trim());
    }

    private static List<string> SplitTop(string s, char sep)
    {
        var list = new List<string>();
        int depth = 0, st = 0;
        char quote = '\0';
        for (int i = 0; i < s.Length; i++)
        {
            char c = s[i];
            if (quote != '\0') { if (c == quote) quote = '\0'; continue; }
            if (c is '"' or '\'') quote = c;
            else if (c is '(' or '[') depth++;
            else if (c is ')' or ']') depth--;
            else if (c == sep && depth == 0) { list.Add(s[st..i]); st = i + 1; }
        }
        list.Add(s[st..]);
        return list;
    }

    /// <summary>Formats: the \* names (upper, caps, roman, cardtext, ...), else a number or date picture.</summary>
    private static string Format(object? v, string? format)
    {
        if (format == null) return Expression.Text(v);
        var culture = CultureInfo.InvariantCulture;
        if (FieldFormatting.Parse(format) is { } g) return FieldFormatting.General(Expression.Text(v), g, culture);
        if (Expression.AsDate(v) is { } d) return FieldFormatting.Date(d, format, culture);
        if (Expression.IsNumber(v)) return FieldFormatting.Number(Expression.Num(v), format, culture);
        throw new FormatException($"\"{format}\" is no format for {Expression.Text(v)}");
    }
}
