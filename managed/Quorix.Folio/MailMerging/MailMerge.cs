using System.Data;
using Quorix.Folio.Fields;

namespace Quorix.Folio.MailMerging;

/// <summary>Fills a document's merge fields ({{name}} tags too, when asked) from data: one record in
/// place, many records as one copy of the document each, or regions that repeat per record.</summary>
[OfDocument(nameof(OwnerDocument))]
public sealed class MailMerge
{
    internal Document OwnerDocument => doc;

    private readonly Document doc;

    internal MailMerge(Document doc) { this.doc = doc; }

    /// <summary>What the merge removes afterwards: unused fields, empty paragraphs, regions and so on.</summary>
    public MailMergeCleanupOptions CleanupOptions { get; set; }

    /// <summary>Whether {{name}} tags in the text merge as merge fields do ({{TableStart:x}} and {{TableEnd:x}} included).</summary>
    public bool UseNonMergeFields { get; set; }

    /// <summary>Whether fields in the document's headers and footers merge too.</summary>
    public bool MergeHeadersFooters { get; set; } = true;

    /// <summary>Called for each field merged, to change what goes in; null for none.</summary>
    public IFieldMergingCallback? FieldMergingCallback { get; set; }

    /// <summary>Told of the merge's own events; null for none.</summary>
    public IMailMergeCallback? MailMergeCallback { get; set; }

    /// <summary>Merge field names mapped to the data source's field names.</summary>
    public MappedDataFieldCollection MappedDataFields { get; } = new();

    /// <summary>The name a region's start merge field carries before the region's name.</summary>
    public string RegionStartTag => "TableStart";

    /// <summary>The merge field name that ends a region, "TableEnd".</summary>
    public string RegionEndTag => "TableEnd";

    /// <summary>Merges one record given as names and values, in place.</summary>
    public void Execute(string[] fieldNames, object[] values)
    {
        ArgumentNullException.ThrowIfNull(fieldNames);
        ArgumentNullException.ThrowIfNull(values);
        new MergeEngine(doc, this).MergeInPlace(new ArraySource(fieldNames, values));
    }

    /// <summary>Merges one record: a row of a data table.</summary>
    public void Execute(DataRow row)
    {
        ArgumentNullException.ThrowIfNull(row);
        new MergeEngine(doc, this).MergeInPlace(new DataTableSource(row.Table, new[] { row }));
    }

    /// <summary>Merges every record: the document becomes one copy of itself per record.</summary>
    public void Execute(IMailMergeDataSource dataSource)
    {
        ArgumentNullException.ThrowIfNull(dataSource);
        new MergeEngine(doc, this).MergeCopies(dataSource);
    }

    /// <summary>Merges every row of the table: the document becomes one copy of itself per row.</summary>
    public void Execute(DataTable table)
    {
        ArgumentNullException.ThrowIfNull(table);
        Execute(new DataTableSource(table));
    }

    /// <summary>Repeats the regions named after the source's table once per record; nested regions take
    /// their records from the source's child tables.</summary>
    public void ExecuteWithRegions(IMailMergeDataSource dataSource)
    {
        ArgumentNullException.ThrowIfNull(dataSource);
        new MergeEngine(doc, this).MergeRegions(name => name.Equals(dataSource.TableName, StringComparison.OrdinalIgnoreCase) ? dataSource : null, onlyNamed: true);
    }

    /// <summary>Fills every region from the table of its name.</summary>
    public void ExecuteWithRegions(IMailMergeDataSourceRoot dataSourceRoot)
    {
        ArgumentNullException.ThrowIfNull(dataSourceRoot);
        new MergeEngine(doc, this).MergeRegions(dataSourceRoot.GetDataSource, onlyNamed: false);
    }

    /// <summary>Repeats the region named after the table once per row.</summary>
    public void ExecuteWithRegions(DataTable table)
    {
        ArgumentNullException.ThrowIfNull(table);
        ExecuteWithRegions(new DataTableSource(table));
    }

    /// <summary>Repeats each region named after a table of the set once per row; nested regions take the related rows.</summary>
    public void ExecuteWithRegions(DataSet dataSet)
    {
        ArgumentNullException.ThrowIfNull(dataSet);
        ExecuteWithRegions(new DataSetRoot(dataSet));
    }

    /// <summary>The names of the merge fields (and, when enabled, {{name}} tags), in document order, region markers included.</summary>
    public string[] GetFieldNames()
    {
        var engine = new MergeEngine(doc, this);
        return engine.MergeFieldsOf(engine.Stories()).Select(f => f.GetFieldCode().Length > 0 ? f.ParseCode().Arg(0) : "").ToArray();
    }

    /// <summary>The names of the fields directly inside the regions of that name.</summary>
    public string[] GetFieldNamesForRegion(string regionName) =>
        GetRegionsByName(regionName).SelectMany(r => r.Fields).Select(f => f.FieldNameFull ?? "").ToArray();

    /// <summary>The document's regions as a tree whose root is the whole document.</summary>
    public MailMergeRegionInfo GetRegionsHierarchy()
    {
        var engine = new MergeEngine(doc, this);
        var root = new MailMergeRegionInfo(null, null, null, 0, null);
        var cur = root;
        foreach (var f in engine.MergeFieldsOf(engine.Stories()))
        {
            switch (f.Prefix.ToLowerInvariant())
            {
                case "tablestart":
                    var region = new MailMergeRegionInfo(f.FieldName, f, null, cur.Level + 1, cur);
                    cur.Regions.Add(region);
                    cur = region;
                    break;
                case "tableend" when cur.ParentRegion != null && cur.Name!.Equals(f.FieldName, StringComparison.OrdinalIgnoreCase):
                    var done = new MailMergeRegionInfo(cur.Name, cur.StartField, f, cur.Level, cur.ParentRegion);
                    foreach (var r in cur.Regions) done.Regions.Add(r);
                    foreach (var x in cur.Fields) done.Fields.Add(x);
                    var parent = cur.ParentRegion;
                    parent.Regions[parent.Regions.Count - 1] = done;
                    cur = parent;
                    break;
                default:
                    cur.Fields.Add(f);
                    break;
            }
        }
        return root;
    }

    /// <summary>Every merge region of that name in the document, in order.</summary>
    public IList<MailMergeRegionInfo> GetRegionsByName(string regionName)
    {
        var list = new List<MailMergeRegionInfo>();
        void Walk(MailMergeRegionInfo r)
        {
            foreach (var c in r.Regions)
            {
                if (string.Equals(c.Name, regionName, StringComparison.OrdinalIgnoreCase)) list.Add(c);
                Walk(c);
            }
        }
        Walk(GetRegionsHierarchy());
        return list;
    }

    /// <summary>Removes every merge field, results and all, without merging data.</summary>
    public void DeleteFields()
    {
        var engine = new MergeEngine(doc, this);
        foreach (var f in engine.MergeFieldsOf(engine.Stories()))
            if (f.Start.ParentNode != null) f.Remove();
    }
}
