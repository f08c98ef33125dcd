using System.Globalization;
using System.Text;
using System.Text.Json;
using System.Xml;
using Quorix.Folio.MailMerging;

namespace Quorix.Folio.Reporting;

/// <summary>How JSON strings become values: as written, or numbers and dates where they read as such.</summary>
public enum JsonSimpleValueParseMode
{
    /// <summary>Strings that read as numbers or ISO dates become numbers or dates.</summary>
    Loose = 0,
    /// <summary>JSON types only: strings stay strings.</summary>
    Strict = 1,
}

/// <summary>How a JSON data source for reports is read.</summary>
public sealed class JsonDataLoadOptions
{
    /// <summary>Whether JSON strings are read as the numbers, dates or booleans they look like, or kept as written.</summary>
    public JsonSimpleValueParseMode SimpleValueParseMode { get; set; }
}

/// <summary>How an XML data source for reports is read.</summary>
public sealed class XmlDataLoadOptions
{
    /// <summary>Whether the root element is a member of its own (true) or the data starts inside it (false).</summary>
    public bool AlwaysGenerateRootObject { get; set; }
}

/// <summary>How a CSV data source for reports is read.</summary>
public sealed class CsvDataLoadOptions
{
    /// <summary>Options for CSV without a header line, comma-separated.</summary>
    public CsvDataLoadOptions() { }

    /// <summary>Options for CSV whose first line names the columns when hasHeaders.</summary>
    public CsvDataLoadOptions(bool hasHeaders) { HasHeaders = hasHeaders; }

    /// <summary>Whether the first line names the columns; without, they are Column1, Column2, ...</summary>
    public bool HasHeaders { get; set; }

    /// <summary>The character between values; a comma unless set.</summary>
    public char Delimiter { get; set; } = ',';

    /// <summary>The character that quotes values; a double quote unless set.</summary>
    public char QuoteChar { get; set; } = '"';

    /// <summary>The character that starts a comment line; '#' unless set.</summary>
    public char CommentChar { get; set; } = '#';
}

/// <summary>Text from data without types (XML, CSV, JSON strings read loosely): shown exactly as
/// written, yet a number or a date where arithmetic, comparisons and formats need one.</summary>
internal sealed class LooseText
{
    public readonly string Text;
    private bool parsed;
    private double? number;
    private DateTime? date;

    public LooseText(string text) { Text = text; }

    public double? Number { get { Parse(); return number; } }

    public DateTime? Date { get { Parse(); return date; } }

    private void Parse()
    {
        if (parsed) return;
        parsed = true;
        var s = Text.Trim();
        if (double.TryParse(s, NumberStyles.Float, CultureInfo.InvariantCulture, out var d) && s.Any(char.IsDigit)) number = d;
        else if (s.Length >= 10 && char.IsDigit(s[0]) && s[4] == '-' && DateTime.TryParse(s, CultureInfo.InvariantCulture, DateTimeStyles.RoundtripKind, out var t)) date = t;
    }

    public override string ToString() => Text;
}

/// <summary>Data read into members (case-insensitive names), lists and simple values.</summary>
internal static class DataTree
{
    public static Dictionary<string, object?> NewObject() => new(StringComparer.OrdinalIgnoreCase);

    public static IMailMergeDataSource? Source(object? root, string name)
    {
        if (name.Length == 0) return root is Dictionary<string, object?> ? new TreeSource("", new List<object?> { root }) : null;
        return (root is List<object?> l ? l : FindList(root, name)) is { } list ? new TreeSource(name, list) : null;
    }

    /// <summary>The first list named so, searching members depth first.</summary>
    public static List<object?>? FindList(object? node, string name)
    {
        if (node is Dictionary<string, object?> o)
        {
            if (o.TryGetValue(name, out var v) && v is List<object?> l) return l;
            if (o.TryGetValue(name, out var single) && single is Dictionary<string, object?>) return new List<object?> { single };
            foreach (var child in o.Values)
                if (FindList(child, name) is { } found) return found;
        }
        else if (node is List<object?> list)
            foreach (var item in list)
                if (FindList(item, name) is { } found) return found;
        return null;
    }
}

/// <summary>A list of data objects as mail merge reads records.</summary>
internal sealed class TreeSource : IMailMergeDataSource
{
    private readonly List<object?> items;
    private int index = -1;

    public TreeSource(string name, List<object?> items)
    {
        TableName = name;
        this.items = items;
    }

    public string TableName { get; }

    public bool MoveNext() => ++index < items.Count;

    public bool GetValue(string fieldName, out object? fieldValue)
    {
        fieldValue = null;
        if (items[index] is not Dictionary<string, object?> o || !o.TryGetValue(fieldName, out fieldValue)) return false;
        if (fieldValue is LooseText t) fieldValue = t.Text;
        return fieldValue is not List<object?> and not Dictionary<string, object?>;
    }

    public IMailMergeDataSource? GetChildDataSource(string tableName) =>
        items[index] is Dictionary<string, object?> o && DataTree.FindList(o, tableName) is { } l ? new TreeSource(tableName, l) : null;
}

/// <summary>Data from a JSON file or stream, for report templates and mail merge regions.</summary>
public sealed class JsonDataSource : IMailMergeDataSourceRoot
{
    internal readonly object? Root;

    /// <summary>The data of a JSON file.</summary>
    public JsonDataSource(string jsonPath) : this(jsonPath, new JsonDataLoadOptions()) { }

    /// <summary>The data of a JSON file, read as options say.</summary>
    public JsonDataSource(string jsonPath, JsonDataLoadOptions options) : this(File.OpenRead(jsonPath), options, true) { }

    /// <summary>The JSON data read from a stream.</summary>
    public JsonDataSource(Stream jsonStream) : this(jsonStream, new JsonDataLoadOptions()) { }

    /// <summary>The JSON data read from a stream as options say.</summary>
    public JsonDataSource(Stream jsonStream, JsonDataLoadOptions options) : this(jsonStream, options, false) { }

    private JsonDataSource(Stream s, JsonDataLoadOptions options, bool own)
    {
        ArgumentNullException.ThrowIfNull(s);
        try
        {
            using var doc = JsonDocument.Parse(s, new JsonDocumentOptions { AllowTrailingCommas = true, CommentHandling = JsonCommentHandling.Skip });
            Root = Convert(doc.RootElement, options.SimpleValueParseMode == JsonSimpleValueParseMode.Loose);
        }
        catch (JsonException e)
        {
            throw new InvalidDataException($"The JSON data cannot be read: {e.Message}", e);
        }
        finally
        {
            if (own) s.Dispose();
        }
    }

    private static object? Convert(JsonElement e, bool loose) => e.ValueKind switch
    {
        JsonValueKind.Object => e.EnumerateObject().Aggregate(DataTree.NewObject(), (o, p) => { o[p.Name] = Convert(p.Value, loose); return o; }),
        JsonValueKind.Array => e.EnumerateArray().Select(x => Convert(x, loose)).ToList(),
        JsonValueKind.String => loose ? new LooseText(e.GetString()!) : e.GetString(),
        JsonValueKind.Number => e.TryGetInt64(out var l) ? l : e.GetDouble(),
        JsonValueKind.True => true,
        JsonValueKind.False => false,
        _ => null,
    };

    /// <summary>The records of a region; with an empty name, the root object as the one record for
    /// fields outside regions.</summary>
    public IMailMergeDataSource? GetDataSource(string tableName) => DataTree.Source(Root, tableName);
}

/// <summary>Data from an XML file or stream: elements are objects, repeated elements lists, attributes members.</summary>
public sealed class XmlDataSource : IMailMergeDataSourceRoot
{
    internal readonly object? Root;

    /// <summary>The data of an XML file.</summary>
    public XmlDataSource(string xmlPath) : this(xmlPath, new XmlDataLoadOptions()) { }

    /// <summary>The data of an XML file, read as options say.</summary>
    public XmlDataSource(string xmlPath, XmlDataLoadOptions options) : this(File.OpenRead(xmlPath), options, true) { }

    /// <summary>The XML data read from a stream.</summary>
    public XmlDataSource(Stream xmlStream) : this(xmlStream, new XmlDataLoadOptions()) { }

    /// <summary>The XML data read from a stream as options say.</summary>
    public XmlDataSource(Stream xmlStream, XmlDataLoadOptions options) : this(xmlStream, options, false) { }

    private XmlDataSource(Stream s, XmlDataLoadOptions options, bool own)
    {
        ArgumentNullException.ThrowIfNull(s);
        try
        {
            var x = new XmlDocument { XmlResolver = null };
            using (var r = XmlReader.Create(s, new XmlReaderSettings { DtdProcessing = DtdProcessing.Prohibit }))
                x.Load(r);
            var root = x.DocumentElement!;
            var value = Convert(root);
            if (options.AlwaysGenerateRootObject)
            {
                var o = DataTree.NewObject();
                o[root.LocalName] = value;
                Root = o;
            }
            else Root = value;
        }
        catch (XmlException e)
        {
            throw new InvalidDataException($"The XML data cannot be read: {e.Message}", e);
        }
        finally
        {
            if (own) s.Dispose();
        }
    }

    private static object? Convert(XmlElement e)
    {
        var elements = e.ChildNodes.OfType<XmlElement>().ToList();
        if (elements.Count == 0 && e.Attributes.Count == 0) return new LooseText(e.InnerText);
        var o = DataTree.NewObject();
        foreach (XmlAttribute a in e.Attributes)
            if (a.Prefix != "xmlns" && a.Name != "xmlns") o[a.LocalName] = new LooseText(a.Value);
        foreach (var group in elements.GroupBy(c => c.LocalName))
        {
            var values = group.Select(Convert).ToList();
            o[group.Key] = values.Count == 1 ? values[0] : values;
        }
        if (elements.Count == 0 && e.InnerText.Length > 0) o["value"] = new LooseText(e.InnerText);
        return o;
    }

    /// <summary>The records of a region; with an empty name, the root element as the one record for
    /// fields outside regions.</summary>
    public IMailMergeDataSource? GetDataSource(string tableName) => DataTree.Source(Root, tableName);
}

/// <summary>Data from a CSV file or stream: a list of rows, each with its columns as members.</summary>
public sealed class CsvDataSource : IMailMergeDataSourceRoot
{
    internal readonly List<object?> Root = new();

    /// <summary>The data of a CSV file.</summary>
    public CsvDataSource(string csvPath) : this(csvPath, new CsvDataLoadOptions()) { }

    /// <summary>The data of a CSV file, read as options say.</summary>
    public CsvDataSource(string csvPath, CsvDataLoadOptions options) : this(File.OpenRead(csvPath), options, true) { }

    /// <summary>The CSV data read from a stream.</summary>
    public CsvDataSource(Stream csvStream) : this(csvStream, new CsvDataLoadOptions()) { }

    /// <summary>The CSV data read from a stream as options say.</summary>
    public CsvDataSource(Stream csvStream, CsvDataLoadOptions options) : this(csvStream, options, false) { }

    private CsvDataSource(Stream s, CsvDataLoadOptions options, bool own)
    {
        ArgumentNullException.ThrowIfNull(s);
        ArgumentNullException.ThrowIfNull(options);
        try
        {
            using var reader = new StreamReader(s, Encoding.UTF8, true, 1 << 16, leaveOpen: !own);
            string[]? headers = null;
            foreach (var rec in Records(reader.ReadToEnd(), options))
            {
                if (headers == null && options.HasHeaders) { headers = rec.ToArray(); continue; }
                var o = DataTree.NewObject();
                for (int i = 0; i < rec.Count; i++)
                    o[headers != null && i < headers.Length ? headers[i] : "Column" + (i + 1)] = new LooseText(rec[i]);
                Root.Add(o);
            }
        }
        finally
        {
            if (own) s.Dispose();
        }
    }

    // Quoted fields may hold delimiters, doubled quotes and line breaks.
    private static IEnumerable<List<string>> Records(string text, CsvDataLoadOptions o)
    {
        int i = 0;
        while (i < text.Length)
        {
            if (text[i] == o.CommentChar) { while (i < text.Length && text[i] != '\n') i++; i++; continue; }
            if (text[i] is '\r' or '\n') { i++; continue; }
            var rec = new List<string>();
            var sb = new StringBuilder();
            bool quoted = false, end = false;
            while (i < text.Length && !end)
            {
                char c = text[i++];
                if (quoted)
                {
                    if (c == o.QuoteChar && i < text.Length && text[i] == o.QuoteChar) { sb.Append(c); i++; }
                    else if (c == o.QuoteChar) quoted = false;
                    else sb.Append(c);
                }
                else if (c == o.QuoteChar) quoted = true;
                else if (c == o.Delimiter) { rec.Add(sb.ToString()); sb.Clear(); }
                else if (c is '\r' or '\n') end = true;
                else sb.Append(c);
            }
            rec.Add(sb.ToString());
            yield return rec;
        }
    }

    /// <summary>The rows of the CSV as the mail merge data source of the region tableName.</summary>
    public IMailMergeDataSource? GetDataSource(string tableName) => new TreeSource(tableName, Root);
}
