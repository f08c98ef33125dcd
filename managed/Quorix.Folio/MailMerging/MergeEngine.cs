using System.Globalization;
using System.Text.RegularExpressions;
using Quorix.Folio.Fields;
using Quorix.Folio.Reporting;
using Quorix.Folio.Tables;

namespace Quorix.Folio.MailMerging;

/// <summary>One merge: fields replaced by values, regions repeated, then the cleanup the options ask for.</summary>
internal sealed class MergeEngine
{
    private static readonly Regex Mustache = new(@"\{\{\s*([^{}\s][^{}]*?)\s*\}\}", RegexOptions.Compiled);

    private readonly Document doc;
    private readonly MailMerge mm;
    private readonly FieldUpdateContext ctx;
    private readonly HashSet<Paragraph> touched = new();
    private readonly Dictionary<FieldStart, MustacheTag> tags = new();
    private int merged;

    public MergeEngine(Document doc, MailMerge mm)
    {
        this.doc = doc;
        this.mm = mm;
        ctx = new FieldUpdateContext(doc);
    }

    private MailMergeCleanupOptions Cleanup => mm.CleanupOptions;

    private sealed class Record
    {
        public readonly IMailMergeDataSource Source;
        public int Index;
        public bool Has = true;

        public Record(IMailMergeDataSource source, int index) { Source = source; Index = index; }

        public bool Get(string name, out object? value)
        {
            value = null;
            return Has && Source.GetValue(name, out value);
        }

        public void Next()
        {
            Has = Source.MoveNext();
            Index++;
        }
    }

    public List<Node> Stories()
    {
        var list = new List<Node>();
        foreach (Section s in doc.Sections)
            foreach (var story in s.ChildNodes)
                if (story is Body || mm.MergeHeadersFooters) list.Add(story);
        return list;
    }

    public List<FieldMergeField> MergeFieldsOf(IEnumerable<Node> scope)
    {
        var order = new Dictionary<FieldStart, int>();
        var fields = FieldUpdater.Collect(scope).OfType<FieldMergeField>().ToList();
        foreach (var root in scope)
            for (Node? n = root; n != null; n = n.NextPreOrder(root))
                if (n is FieldStart s) order[s] = order.Count;
        fields.Sort((a, b) => order[a.Start].CompareTo(order[b.Start]));
        return fields;
    }

    public void MergeInPlace(IMailMergeDataSource source)
    {
        var scope = Stories();
        ConvertTags(scope);
        var rec = new Record(source, 0);
        rec.Has = source.MoveNext();
        MergeFields(scope, rec, "");
        Finish(scope);
    }

    public void MergeCopies(IMailMergeDataSource source)
    {
        var template = doc.Sections.Cast<Section>().ToList();
        ConvertTags(template);
        foreach (var s in template) s.Remove();
        var rec = new Record(source, -1);
        for (rec.Next(); rec.Has; rec.Next())
        {
            var copies = template.Select(s => s.Clone(true)).ToList();
            foreach (var c in copies) doc.AppendChild(c);
            if (MergeFields(copies, rec, "")) foreach (var c in copies) c.Remove();
        }
        doc.EnsureMinimum();
        Finish(Stories());
    }

    public void MergeRegions(Func<string, IMailMergeDataSource?> sourceFor, bool onlyNamed)
    {
        var scope = Stories();
        ConvertTags(scope);
        ExpandRegions(scope, sourceFor, onlyNamed);
        // A root that offers a record under the empty name fills the fields outside regions.
        if (!onlyNamed && sourceFor("") is { } top)
        {
            var rec = new Record(top, 0);
            rec.Has = top.MoveNext();
            MergeFields(scope, rec, "");
        }
        Finish(scope);
    }

    private void ExpandRegions(List<Node> scope, Func<string, IMailMergeDataSource?> sourceFor, bool skipUnknown)
    {
        var passed = new HashSet<FieldStart>();
        while (true)
        {
            var fields = MergeFieldsOf(scope);
            int si = fields.FindIndex(f => !passed.Contains(f.Start) && f.Prefix.Equals(mm.RegionStartTag, StringComparison.OrdinalIgnoreCase));
            if (si < 0) return;
            var start = fields[si];
            var name = start.FieldName;
            var end = MatchingEnd(fields, si) ?? throw new TemplateException($"{mm.RegionStartTag}:{name} ({Place(start)})", $"has no {mm.RegionEndTag}:{name} after it");
            var source = sourceFor(name);
            if (source == null && (skipUnknown || !Cleanup.HasFlag(MailMergeCleanupOptions.RemoveUnusedRegions)))
            {
                passed.Add(start.Start);
                passed.Add(end.Start);
                continue;
            }
            // Paragraphs that held the markers may be left empty.
            foreach (var marker in new[] { start, end }) if (marker.Start.ParentNode is Paragraph mp) touched.Add(mp);
            var block = TemplateBlock.Cut((start.Start, start.End), (end.Start, end.End), null, $"{mm.RegionStartTag}:{name} ({Place(start)})");
            if (source != null)
            {
                var rec = new Record(source, -1);
                for (rec.Next(); rec.Has; rec.Next())
                {
                    var current = rec;
                    block.Emit(block.First, 1, (_, copy) =>
                    {
                        ExpandRegions(copy, child => current.Has ? current.Source.GetChildDataSource(child) : null, skipUnknown: false);
                        MergeFields(copy, current, name);
                    });
                }
            }
            block.RemoveTemplate();
        }
    }

    private FieldMergeField? MatchingEnd(List<FieldMergeField> fields, int si)
    {
        var name = fields[si].FieldName;
        int depth = 0;
        for (int i = si + 1; i < fields.Count; i++)
        {
            if (!fields[i].FieldName.Equals(name, StringComparison.OrdinalIgnoreCase)) continue;
            if (fields[i].Prefix.Equals(mm.RegionStartTag, StringComparison.OrdinalIgnoreCase)) depth++;
            else if (fields[i].Prefix.Equals(mm.RegionEndTag, StringComparison.OrdinalIgnoreCase) && depth-- == 0) return fields[i];
        }
        return null;
    }

    private static string Place(Field f)
    {
        var p = f.Start.ParentParagraph;
        var text = p == null ? "" : Paragraphs.Visible(p).Trim();
        return "in the paragraph \"" + (text.Length > 40 ? text[..40] + "…" : text) + "\"";
    }

    /// <summary>Merges the fields of the nodes from one record; true when a SKIPIF dropped the record.</summary>
    private bool MergeFields(IEnumerable<Node> scope, Record rec, string table)
    {
        bool skip = false;
        foreach (var f in FieldUpdater.Collect(scope))
        {
            if (f.Start.ParentNode == null || f.End.ParentNode == null) continue;
            switch (f)
            {
                case FieldMergeField m when m.Prefix.Length == 0 || m.Prefix.Equals("Image", StringComparison.OrdinalIgnoreCase):
                    MergeOne(m, rec, table);
                    break;
                case FieldMergeField:
                    break;
                case FieldMergeRec:
                    Replace(f, (rec.Index + 1).ToString(CultureInfo.InvariantCulture));
                    break;
                case FieldMergeSeq:
                    Replace(f, (merged + 1).ToString(CultureInfo.InvariantCulture));
                    break;
                case FieldNext:
                    rec.Next();
                    Remove(f);
                    break;
                case FieldNextIf or FieldSkipIf:
                    bool holds = Comparison.Split(f.ParseCode().Args) is { } c && Comparison.Evaluate(c.Left, c.Op, c.Right, ctx.Culture);
                    if (holds && f is FieldNextIf) rec.Next();
                    if (holds && f is FieldSkipIf) skip = true;
                    Remove(f);
                    break;
                case FieldIf or FieldFormula or FieldCompare or FieldQuote:
                    FieldUpdater.Update(new List<Field> { f }, ctx);
                    if (Cleanup.HasFlag(MailMergeCleanupOptions.RemoveContainingFields)) f.Unlink();
                    break;
            }
        }
        if (!skip) merged++;
        return skip;
    }

    private void MergeOne(FieldMergeField m, Record rec, string table)
    {
        var docName = m.FieldName;
        var dataName = mm.MappedDataFields.Resolve(docName);
        bool found = rec.Get(dataName, out var value);
        tags.TryGetValue(m.Start, out var tag);
        if (m.Prefix.Length > 0)
        {
            if (found) MergeImage(m, rec, table, dataName, docName, value);
            return;
        }
        if (!found)
        {
            if (Cleanup.HasFlag(MailMergeCleanupOptions.RemoveUnusedFields)) Remove(m);
            return;
        }
        string? text = null;
        if (mm.FieldMergingCallback is { } cb)
        {
            var args = new FieldMergingArgs(doc, table, rec.Index, dataName, docName, value, tag == null ? m : null, tag);
            cb.FieldMerging(args);
            value = args.FieldValue;
            text = args.Text;
        }
        Replace(m, text ?? m.Render(ToText(value), ctx));
    }

    private void MergeImage(FieldMergeField m, Record rec, string table, string dataName, string docName, object? value)
    {
        var args = new ImageFieldMergingArgs(doc, table, rec.Index, dataName, docName, value, m);
        if (value is string path) args.ImageFileName = path;
        mm.FieldMergingCallback?.ImageFieldMerging(args);
        byte[]? bytes = value as byte[];
        if (args.ImageStream != null) { using var ms = new MemoryStream(); args.ImageStream.CopyTo(ms); bytes = ms.ToArray(); }
        else if (args.ImageFileName != null && File.Exists(args.ImageFileName)) bytes = File.ReadAllBytes(args.ImageFileName);
        if (bytes == null) { Remove(m); return; }
        var b = new DocumentBuilder(doc);
        b.MoveTo(m.Start);
        var shape = b.InsertImage(bytes);
        if (args.ImageWidth is { } w) shape.Width = w.Unit == MergeFieldImageDimensionUnit.Point ? w.Value : shape.Width * w.Value / 100;
        if (args.ImageHeight is { } h) shape.Height = h.Unit == MergeFieldImageDimensionUnit.Point ? h.Value : shape.Height * h.Value / 100;
        m.Remove();
    }

    private static string ToText(object? v) => (v switch
    {
        null or DBNull => "",
        string s => s,
        IFormattable f => f.ToString(null, CultureInfo.CurrentCulture),
        _ => v.ToString() ?? "",
    }).Replace("\r\n", "\v").Replace('\n', '\v').Replace('\r', '\v');

    /// <summary>Puts the text where the field was, in the format of its result (else of its start).</summary>
    private void Replace(Field f, string text)
    {
        var para = f.Start.ParentNode as Paragraph;
        if (text.Length > 0 && para != null)
        {
            var model = f.Separator?.NextSibling as Run;
            para.InsertBefore(new Run(doc, text, (model?.RPr ?? f.Start.RPr).Clone()), f.Start);
        }
        Remove(f);
    }

    private void Remove(Field f)
    {
        if (f.Start.ParentNode is Paragraph p) touched.Add(p);
        f.Remove();
    }

    private void ConvertTags(IEnumerable<Node> scope)
    {
        if (!mm.UseNonMergeFields) return;
        foreach (var run in TagRuns.Isolate(scope, Mustache))
        {
            var name = Mustache.Match(run.Text).Groups[1].Value;
            // {{#name}} and {{/name}} open and close a region, as TableStart and TableEnd do.
            if (name.StartsWith('#')) name = mm.RegionStartTag + ":" + name[1..];
            else if (name.StartsWith('/')) name = mm.RegionEndTag + ":" + name[1..];
            var p = (Paragraph)run.ParentNode!;
            var start = new FieldStart(doc, run.RPr.Clone());
            p.InsertBefore(start, run);
            p.InsertBefore(new Run(doc, " MERGEFIELD " + Field.Quote(name) + " ", run.RPr.Clone()), run);
            p.InsertBefore(new FieldSeparator(doc, run.RPr.Clone()), run);
            p.InsertAfter(new FieldEnd(doc, run.RPr.Clone()), run);
            tags[start] = new MustacheTag(run, run.Text);
        }
    }

    private void Finish(List<Node> scope)
    {
        // Tags nothing filled go back to being the text they were.
        foreach (var start in tags.Keys)
            if (start.ParentNode != null && FieldPairing.Complete(start) is { } f)
            {
                if (Cleanup.HasFlag(MailMergeCleanupOptions.RemoveUnusedFields)) Remove(f);
                else f.Unlink();
            }
        if (Cleanup.HasFlag(MailMergeCleanupOptions.RemoveUnusedFields))
            foreach (var m in MergeFieldsOf(Stories()))
                if (m.Prefix.Length == 0 && m.Start.ParentNode != null) Remove(m);
        if (Cleanup.HasFlag(MailMergeCleanupOptions.RemoveEmptyTableRows))
            foreach (var row in touched.Select(p => p.GetAncestor(NodeType.Row)).OfType<Row>().Distinct().ToList())
                if (row.ParentNode != null && row.Cells.Cast<Cell>().All(c => c.GetChildNodes(NodeType.Paragraph, true).Cast<Paragraph>().All(IsBlank)))
                    row.Remove();
        if (Cleanup.HasFlag(MailMergeCleanupOptions.RemoveEmptyParagraphs))
            foreach (var p in touched)
                if (p.ParentNode is { } parent && IsBlank(p) && !(p.ParentNode is Cell or Body && parent.GetChildNodes(NodeType.Paragraph, false).Count == 1))
                    p.Remove();
        mm.MailMergeCallback?.TagsReplaced();
    }

    private static bool IsBlank(Paragraph p) => p.ChildNodes.All(n => n is Run r && r.Text.Trim().Length == 0 || n is BookmarkStart or BookmarkEnd);
}
