using System.Data;
using System.Globalization;
using Quorix.Folio.Fields;
using Quorix.Folio.MailMerging;
using Quorix.Folio.Reporting;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class MailMergeTests
{
    private static (Document, DocumentBuilder) NewDoc()
    {
        var doc = new Document();
        doc.FieldOptions.FieldUpdateCulture = CultureInfo.InvariantCulture;
        return (doc, new DocumentBuilder(doc));
    }

    // What a reader sees: field results, not codes; paragraphs joined by |.
    private static string Text(Document doc) =>
        string.Join("|", doc.GetChildNodes(NodeType.Paragraph, true).Cast<Paragraph>().Select(Paragraphs.Visible)).TrimEnd('|');

    private static DataTable Table(string name, string[] cols, params object[][] rows)
    {
        var t = new DataTable(name);
        foreach (var c in cols) t.Columns.Add(c, typeof(object));
        foreach (var r in rows) t.Rows.Add(r);
        return t;
    }

    [Fact]
    public void ExecuteFillsFieldsWithTheirSwitchesAndKeepsFormatting()
    {
        var (doc, b) = NewDoc();
        b.Write("Dear ");
        b.Font.Bold = true;
        b.InsertField("MERGEFIELD FirstName \\* Upper", "«FirstName»");
        b.Font.Bold = false;
        b.InsertField("MERGEFIELD Title \\b \" (\" \\f \")\"", "");
        b.InsertField("MERGEFIELD Missing \\b \"never \"", "");
        b.Write(", you owe ");
        b.InsertField("MERGEFIELD Amount \\# \"#,##0.00\"", "");
        b.Write(" since ");
        b.InsertField("MERGEFIELD Since \\@ \"d MMMM yyyy\"", "");
        doc.MailMerge.Execute(new[] { "FirstName", "Title", "Missing", "Amount", "Since" },
            new object[] { "Ann", "Dr", "", 1234.5, new DateTime(2024, 1, 31) });
        Assert.Equal("Dear ANN (Dr), you owe 1,234.50 since 31 January 2024", Text(doc));
        Assert.Empty(doc.Range.Fields);
        var bold = doc.FirstSection!.Body!.FirstParagraph!.Runs.Cast<Run>().Single(r => r.Text == "ANN");
        Assert.True(bold.Font.Bold);
    }

    [Fact]
    public void UnusedFieldsStayUnlessCleanupRemovesThemAndTheirEmptyParagraphs()
    {
        Document Make()
        {
            var (doc, b) = NewDoc();
            b.InsertField("MERGEFIELD Name", "«Name»"); b.Writeln();
            b.InsertField("MERGEFIELD Unknown", "«Unknown»"); b.Writeln();
            b.Write("end");
            return doc;
        }
        var keep = Make();
        keep.MailMerge.Execute(new[] { "Name" }, new object[] { "Bo" });
        Assert.Equal("Bo|«Unknown»|end", Text(keep));
        Assert.Single(keep.Range.Fields);

        var clean = Make();
        clean.MailMerge.CleanupOptions = MailMergeCleanupOptions.RemoveUnusedFields | MailMergeCleanupOptions.RemoveEmptyParagraphs;
        clean.MailMerge.Execute(new[] { "Name" }, new object[] { "Bo" });
        Assert.Equal("Bo|end", Text(clean));
    }

    [Fact]
    public void IfFieldsAroundMergedValuesAreComputedAndCanBeFlattened()
    {
        foreach (var flatten in new[] { false, true })
        {
            var (doc, b) = NewDoc();
            var outer = b.InsertField("IF ", "");
            b.MoveTo(outer.Separator!);
            b.InsertField("MERGEFIELD Country", "");
            b.Write(" = \"Norway\" \"Hei\" \"Hello\" ");
            if (flatten) doc.MailMerge.CleanupOptions = MailMergeCleanupOptions.RemoveContainingFields;
            doc.MailMerge.Execute(new[] { "Country" }, new object[] { "Norway" });
            Assert.Equal("Hei", flatten ? Text(doc) : doc.Range.Fields.Single().Result);
            Assert.Equal(flatten ? 0 : 1, doc.Range.Fields.Count);
        }
    }

    [Fact]
    public void ManyRecordsMakeOneCopyEachWithRecordNumbersNextAndSkip()
    {
        var (doc, b) = NewDoc();
        b.InsertField("MERGEREC", ""); b.Write(":"); b.InsertField("MERGEFIELD Name", "");
        b.InsertField("SKIPIF ", "");
        var skip = doc.Range.Fields[^1];
        b.MoveTo(skip.Separator!);
        b.InsertField("MERGEFIELD Name", "");
        b.Write(" = \"Skip*\" ");
        b.MoveToDocumentEnd();
        b.InsertField("NEXT", "");
        b.Write("+"); b.InsertField("MERGEFIELD Name", ""); b.Write("#"); b.InsertField("MERGESEQ", "");
        var data = Table("People", new[] { "Name" }, new object[] { "A" }, new object[] { "B" }, new object[] { "Skipper" }, new object[] { "C" }, new object[] { "D" }, new object[] { "E" });
        doc.MailMerge.Execute(data);
        // Records 1-2 in the first copy, 3 skipped (4 joins it via NEXT but the copy goes), 5-6 in the last.
        Assert.Equal(new[] { "1:A+B#1", "5:D+E#2" }, doc.Sections.Cast<Section>().Select(s => s.Body!.GetText().Trim('\r', '\f')).ToArray());
    }

    private static Document RegionDoc()
    {
        var (doc, b) = NewDoc();
        b.Writeln("Orders");
        b.InsertField("MERGEFIELD TableStart:Order", ""); b.Writeln();
        b.Write("Order "); b.InsertField("MERGEFIELD Id", ""); b.Writeln();
        b.StartTable();
        b.InsertCell(); b.InsertField("MERGEFIELD TableStart:Line", ""); b.InsertField("MERGEFIELD Item", "");
        b.InsertCell(); b.InsertField("MERGEFIELD Qty", ""); b.InsertField("MERGEFIELD TableEnd:Line", "");
        b.EndRow();
        b.InsertCell(); b.Write("Total"); b.InsertCell(); b.InsertField("= SUM(ABOVE)", "");
        b.EndRow();
        b.EndTable();
        b.InsertField("MERGEFIELD TableEnd:Order", ""); b.Writeln();
        b.Write("Done");
        return doc;
    }

    [Fact]
    public void RegionsRepeatParagraphsAndNestedRegionsRepeatTableRows()
    {
        var o = new DataTable("Order"); o.Columns.Add("Id", typeof(int)); o.Rows.Add(1); o.Rows.Add(2);
        var l = new DataTable("Line"); l.Columns.Add("OrderId", typeof(int)); l.Columns.Add("Item"); l.Columns.Add("Qty", typeof(int));
        l.Rows.Add(1, "Pen", 3); l.Rows.Add(1, "Ink", 4); l.Rows.Add(2, "Pad", 5);
        var set = new DataSet(); set.Tables.Add(o); set.Tables.Add(l);
        set.Relations.Add(o.Columns["Id"]!, l.Columns["OrderId"]!);

        var doc = RegionDoc();
        doc.MailMerge.ExecuteWithRegions(set);
        doc.UpdateFields();
        var tables = doc.GetChildNodes(NodeType.Table, true).Cast<Table>().ToArray();
        Assert.Equal(2, tables.Length);
        string Rows(Table t) => string.Join(";", t.Rows.Cast<Row>().Select(r => string.Join(",", r.Cells.Cast<Cell>().Select(c => Paragraphs.Visible(c.FirstParagraph!)))));
        Assert.Equal("Pen,3;Ink,4;Total,7", Rows(tables[0]));
        Assert.Equal("Pad,5;Total,5", Rows(tables[1]));
        var paras = doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().Where(p => p.ParentNode is Body).Select(p => p.GetText().Trim('\r', '\f')).ToArray();
        Assert.Equal(new[] { "Orders", "Order 1", "Order 2", "Done" }, paras);
    }

    [Fact]
    public void RegionsWithoutDataStayOrGoAsTheCleanupSays()
    {
        var doc = RegionDoc();
        doc.MailMerge.ExecuteWithRegions(new DataSet());
        Assert.Contains("TableStart:Order", doc.MailMerge.GetFieldNames());

        doc = RegionDoc();
        doc.MailMerge.CleanupOptions = MailMergeCleanupOptions.RemoveUnusedRegions;
        doc.MailMerge.ExecuteWithRegions(new DataSet());
        Assert.Equal("Orders|Done", Text(doc));
    }

    [Fact]
    public void RegionsAreListedAsATreeAndBrokenRegionsNameTheirTag()
    {
        var doc = RegionDoc();
        var root = doc.MailMerge.GetRegionsHierarchy();
        var order = Assert.Single(root.Regions);
        Assert.Equal("Order", order.Name);
        Assert.Equal("Line", Assert.Single(order.Regions).Name);
        Assert.Equal(new[] { "Id" }, order.Fields.Select(f => f.FieldName));
        Assert.Equal(new[] { "Item", "Qty" }, doc.MailMerge.GetFieldNamesForRegion("Line"));

        var (broken, b) = NewDoc();
        b.Writeln("Head");
        b.InsertField("MERGEFIELD TableStart:Orphan", "");
        var e = Assert.Throws<TemplateException>(() => broken.MailMerge.ExecuteWithRegions(Table("Orphan", new[] { "X" }, new object[] { 1 })));
        Assert.Contains("TableStart:Orphan", e.Message);
        Assert.Contains("TableEnd:Orphan", e.Message);
        Assert.Equal("Head", Text(broken));
    }

    [Fact]
    public void MustacheTagsMergeWhenEnabledEvenAcrossRuns()
    {
        var (doc, b) = NewDoc();
        b.Write("Hi {{Fir");
        b.Font.Italic = true;
        b.Write("st}}, from {{ City }}. {{Unknown}} stays");
        doc.MailMerge.Execute(new[] { "First", "City" }, new object[] { "Ann", "Oslo" });
        Assert.Equal("Hi {{First}}, from {{ City }}. {{Unknown}} stays", Text(doc));

        doc.MailMerge.UseNonMergeFields = true;
        doc.MailMerge.Execute(new[] { "First", "City" }, new object[] { "Ann", "Oslo" });
        Assert.Equal("Hi Ann, from Oslo. {{Unknown}} stays", Text(doc));
        Assert.Empty(doc.Range.Fields);
        // The tag took the format of the run its first character was in.
        Assert.False(doc.FirstSection!.Body!.FirstParagraph!.Runs.Cast<Run>().Single(r => r.Text == "Ann").Font.Italic);
    }

    private sealed class Upper : IFieldMergingCallback
    {
        public readonly List<string> Seen = new();

        public void FieldMerging(FieldMergingArgs args)
        {
            Seen.Add($"{args.DocumentFieldName}>{args.FieldName}#{args.RecordIndex}");
            if (args.FieldValue is string s) args.Text = s.ToUpperInvariant() + "!";
        }

        public void ImageFieldMerging(ImageFieldMergingArgs args) { }
    }

    [Fact]
    public void CallbacksAndMappedNamesSeeEachField()
    {
        var (doc, b) = NewDoc();
        b.InsertField("MERGEFIELD Client", "");
        var cb = new Upper();
        doc.MailMerge.FieldMergingCallback = cb;
        doc.MailMerge.MappedDataFields.Add("Client", "CustomerName");
        doc.MailMerge.Execute(new[] { "CustomerName" }, new object[] { "acme" });
        Assert.Equal("ACME!", Text(doc));
        Assert.Equal(new[] { "Client>CustomerName#0" }, cb.Seen);
    }

    /// <summary>Orders with their lines as a hand-written source, the way an application would offer its data.</summary>
    private sealed class Orders : IMailMergeDataSource
    {
        private readonly (string Id, string[] Lines)[] rows;
        private int i = -1;

        public Orders(params (string, string[])[] rows) { this.rows = rows; }

        public string TableName => "Order";

        public bool MoveNext() => ++i < rows.Length;

        public bool GetValue(string fieldName, out object? fieldValue)
        {
            fieldValue = fieldName == "Id" ? rows[i].Id : null;
            return fieldName == "Id";
        }

        public IMailMergeDataSource? GetChildDataSource(string tableName) =>
            tableName == "Line" ? new Lines(rows[i].Lines) : null;
    }

    private sealed class Lines : IMailMergeDataSource
    {
        private readonly string[] items;
        private int i = -1;

        public Lines(string[] items) { this.items = items; }

        public string TableName => "Line";

        public bool MoveNext() => ++i < items.Length;

        public bool GetValue(string fieldName, out object? fieldValue)
        {
            fieldValue = fieldName == "Item" ? items[i] : fieldName == "Qty" ? (object)items[i].Length : null;
            return fieldValue != null;
        }

        public IMailMergeDataSource? GetChildDataSource(string tableName) => null;
    }

    [Fact]
    public void HandWrittenSourcesFillNestedRegionsAndEmptyRowsCanGo()
    {
        var doc = RegionDoc();
        doc.MailMerge.CleanupOptions = MailMergeCleanupOptions.RemoveEmptyTableRows;
        doc.MailMerge.ExecuteWithRegions(new Orders(("A", new[] { "Pen", "" }), ("B", Array.Empty<string>())));
        doc.UpdateFields();
        var tables = doc.GetChildNodes(NodeType.Table, true).Cast<Table>().ToArray();
        // The empty item's row still has its quantity (0), so it stays; order B has no lines, only its total row.
        Assert.Equal(new[] { 3, 1 }, tables.Select(t => t.Rows.Count));
        Assert.Contains("Order A", Text(doc));
        Assert.Contains("Order B", Text(doc));
    }

    [Fact]
    public void MustacheRegionsRepeatAndFieldNamesListTags()
    {
        var (doc, b) = NewDoc();
        b.Writeln("{{#Line}}");
        b.Writeln("- {{Item}} x{{Qty}}");
        b.Write("{{/Line}}");
        doc.MailMerge.UseNonMergeFields = true;
        doc.MailMerge.ExecuteWithRegions(new Lines(new[] { "Pen", "Ink" }));
        Assert.Equal("- Pen x3|- Ink x3", Text(doc));
    }

    [Fact]
    public void RegionsInOneParagraphRepeatTheTextBetween()
    {
        var (doc, b) = NewDoc();
        b.Write("Items: ");
        b.InsertField("MERGEFIELD TableStart:Line", "");
        b.InsertField("MERGEFIELD Item", "");
        b.Write(";");
        b.InsertField("MERGEFIELD TableEnd:Line", "");
        b.Write(" end");
        doc.MailMerge.ExecuteWithRegions(new Lines(new[] { "a", "b", "c" }));
        Assert.Equal("Items: a;b;c; end", Text(doc));
    }

    [Fact]
    public void DeleteFieldsLeavesPlainText()
    {
        var (doc, b) = NewDoc();
        b.Write("x");
        b.InsertField("MERGEFIELD A", "«A»");
        b.InsertField("DATE", "today");
        doc.MailMerge.DeleteFields();
        Assert.Equal("xtoday", Text(doc));
        Assert.Single(doc.Range.Fields);
    }
}
