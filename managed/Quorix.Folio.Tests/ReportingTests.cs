using System.Text;
using Quorix.Folio.Fields;
using Quorix.Folio.MailMerging;
using Quorix.Folio.Reporting;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class ReportingTests
{
    private const string Orders = """
        { "period": "Q1", "customer": { "name": "Acme AS", "city": "Oslo" },
          "orders": [
            { "id": 7, "date": "2024-02-01", "lines": [ { "item": "Pen", "qty": 3, "price": 2.5 }, { "item": "Ink", "qty": 1, "price": 12 } ] },
            { "id": 8, "date": "2024-03-15", "lines": [ { "item": "Pad", "qty": 10, "price": 1.2 } ] } ] }
        """;

    private static JsonDataSource Json(string s) => new(new MemoryStream(Encoding.UTF8.GetBytes(s)));

    private static string Text(Document doc) =>
        string.Join("|", doc.GetChildNodes(NodeType.Paragraph, true).Cast<Paragraph>().Select(Paragraphs.Visible));

    private static Document Template(params string[] paragraphs)
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        for (int i = 0; i < paragraphs.Length; i++)
        {
            if (i < paragraphs.Length - 1) b.Writeln(paragraphs[i]);
            else b.Write(paragraphs[i]);
        }
        return doc;
    }

    [Fact]
    public void ExpressionsReadMembersComputeAndFormat()
    {
        var doc = Template(
            "[[data.customer.name | upper]] of [[data.customer.city]]",
            "[[count(data.orders)]] orders, [[sum(data.orders[0].lines.qty)]] items in the first",
            "Total [[data.orders[0].lines[0].qty * data.orders[0].lines[0].price + 1 | 0.00]] on [[data.orders[1].date | d MMMM yyyy]]",
            "[[data.orders[0].id == 7 && !empty(data.customer) | upper]] [[3 | roman]] [[\"a|b\"]]");
        new ReportingEngine().BuildReport(doc, Json(Orders), "data");
        Assert.Equal("ACME AS of Oslo|2 orders, 4 items in the first|Total 8.50 on 15 March 2024|TRUE iii a|b", Text(doc));
    }

    [Fact]
    public void LoopsRepeatParagraphsTableRowsAndInlineText()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Writeln("Customer: [[customer.name]]");
        b.Writeln("[[each o in orders]]");
        b.Writeln("Order [[o.id]] ([[o_index]] of [[count(orders)]]): [[each l in o.lines]][[l.item]][[if !l_last]], [[/if]][[/each]]");
        b.StartTable();
        b.InsertCell(); b.Write("[[each l in o.lines]][[l.item]]"); b.InsertCell(); b.Write("[[l.qty * l.price | 0.00]][[/each]]");
        b.EndRow();
        b.InsertCell(); b.Write("Sum"); b.InsertCell(); b.InsertField("= SUM(ABOVE) \\# 0.00", "");
        b.EndRow();
        b.EndTable();
        b.Writeln("[[/each]]");
        b.Write("End");
        new ReportingEngine().BuildReport(doc, Json(Orders));
        doc.UpdateFields();

        var body = doc.FirstSection!.Body!;
        var paras = body.ChildNodes.OfType<Paragraph>().Select(Paragraphs.Visible).ToArray();
        Assert.Equal(new[] { "Customer: Acme AS", "Order 7 (1 of 2): Pen, Ink", "Order 8 (2 of 2): Pad", "End" }, paras.Where(p => p.Length > 0));
        var tables = body.ChildNodes.OfType<Table>().ToArray();
        string Rows(Table t) => string.Join(";", t.Rows.Cast<Row>().Select(r => string.Join(",", r.Cells.Cast<Cell>().Select(c => Paragraphs.Visible(c.FirstParagraph!)))));
        Assert.Equal(new[] { "Pen,7.50;Ink,12.00;Sum,19.50", "Pad,12.00;Sum,12.00" }, tables.Select(Rows));
        // The order: heading line, its table, next order's line, its table.
        Assert.Equal(new[] { "Paragraph", "Paragraph", "Table", "Paragraph", "Table", "Paragraph" },
            body.ChildNodes.Where(n => n is not Paragraph p || Paragraphs.Visible(p).Length > 0).Select(n => n.NodeType.ToString()));
    }

    [Fact]
    public void ConditionsChooseBranchesAndKeepFormatting()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.Write("[[if total > 100]]");
        b.Font.Bold = true;
        b.Write("Big order");
        b.Font.Bold = false;
        b.Write("[[else]]small order[[/if]] of [[total]]");
        var data = new Dictionary<string, object?> { ["total"] = 250 };
        new ReportingEngine().BuildReport(doc, data);
        Assert.Equal("Big order of 250", Text(doc));
        Assert.True(doc.FirstSection!.Body!.FirstParagraph!.Runs.Cast<Run>().Single(r => r.Text == "Big order").Font.Bold);
    }

    [Fact]
    public void XmlAndCsvSourcesReadAsObjectsAndLists()
    {
        var xml = "<shop name='Nord'><item sku='1'><title>Pen</title><price>2.5</price></item><item sku='2'><title>Ink</title><price>12</price></item></shop>";
        var doc = Template("[[shop.name]]: [[each i in shop.item]][[i.title]]=[[i.price * 2]] [[/each]]");
        new ReportingEngine().BuildReport(doc, new XmlDataSource(new MemoryStream(Encoding.UTF8.GetBytes(xml))), "shop");
        Assert.Equal("Nord: Pen=5 Ink=24 ", Text(doc));

        var csv = "# stock list\nname;qty\n\"Pen; blue\";3\nInk;4\n";
        doc = Template("[[each r in rows]][[r.name]]:[[r.qty + 1]] [[/each]]");
        new ReportingEngine().BuildReport(doc, new CsvDataSource(new MemoryStream(Encoding.UTF8.GetBytes(csv)), new CsvDataLoadOptions(true) { Delimiter = ';' }), "rows");
        Assert.Equal("Pen; blue:4 Ink:5 ", Text(doc));
    }

    [Fact]
    public void JsonSourcesFillMailMergeRegions()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.InsertField("MERGEFIELD period", ""); b.Write(": ");
        b.InsertField("MERGEFIELD TableStart:orders", ""); b.Write("#"); b.InsertField("MERGEFIELD id", "");
        b.InsertField("MERGEFIELD TableStart:lines", ""); b.Write(" "); b.InsertField("MERGEFIELD item", ""); b.InsertField("MERGEFIELD TableEnd:lines", "");
        b.InsertField("MERGEFIELD TableEnd:orders", "");
        doc.MailMerge.ExecuteWithRegions(Json(Orders));
        // Fields outside regions read the root object's members.
        Assert.Equal("Q1: #7 Pen Ink#8 Pad", Text(doc));
    }

    [Fact]
    public void LooseTextKeepsItsWritingYetCountsAsNumberOrDate()
    {
        const string data = """{ "price": "12.50", "when": "2024-05-06", "code": "007", "rows": [[1, 2], [3]] }""";
        var doc = Template("[[d.price]] [[d.price + 1]] [[d.when]] [[d.when | d MMM]] [[d.code]] [[d.price > 9]] [[d.rows[1][0]]]");
        new ReportingEngine().BuildReport(doc, Json(data), "d");
        Assert.Equal("12.50 13.5 2024-05-06 6 May 007 true 3", Text(doc));

        var strict = new JsonDataSource(new MemoryStream(Encoding.UTF8.GetBytes(data)), new JsonDataLoadOptions { SimpleValueParseMode = JsonSimpleValueParseMode.Strict });
        doc = Template("[[d.price * 2]]");
        Assert.Throws<TemplateException>(() => new ReportingEngine().BuildReport(doc, strict, "d"));
    }

    [Theory]
    [InlineData("[[each x in]]", "[[each x in]]", "must read")]
    [InlineData("[[if a]]open", "[[if a]]", "has no [[/if]]")]
    [InlineData("[[/each]]", "[[/each]]", "has no opening tag")]
    [InlineData("[[each x in list]] [[/if]]", "[[each x in list]]", "is closed by [[/if]]")]
    [InlineData("[[nothing.here]]", "[[nothing.here]]", "\"nothing\" is not defined")]
    [InlineData("[[1 +]]", "[[1 +]]", "ends too soon")]
    [InlineData("[[name | #0.0]]", "[[name | #0.0]]", "is no format")]
    public void BrokenTemplatesNameTheTagAndItsPlace(string template, string tag, string problem)
    {
        var doc = Template("Intro", template);
        var data = new Dictionary<string, object?> { ["a"] = true, ["list"] = new List<object?> { 1 }, ["name"] = "Bo" };
        var e = Assert.Throws<TemplateException>(() => new ReportingEngine().BuildReport(doc, data));
        Assert.StartsWith("Template tag " + tag + " (in the paragraph", e.Message);
        Assert.Contains(problem, e.Message);
    }

    [Fact]
    public void OptionsAllowMissingMembersAndWriteErrorsInline()
    {
        var doc = Template("[[a.b.c]]x", "[[oops(]] and [[ok]]");
        var engine = new ReportingEngine { Options = ReportBuildOptions.AllowMissingMembers | ReportBuildOptions.InlineErrorMessages | ReportBuildOptions.RemoveEmptyParagraphs };
        Assert.False(engine.BuildReport(doc, new Dictionary<string, object?> { ["ok"] = "fine" }));
        var text = Text(doc);
        Assert.StartsWith("x|Template tag [[oops(]]", text);
        Assert.EndsWith(" and fine", text);

        doc = Template("[[if missing]]gone[[/if]]", "kept");
        engine.BuildReport(doc, new Dictionary<string, object?>());
        Assert.Equal("kept", Text(doc));
    }

    [Fact]
    public void LinksAndImagesComeFromData()
    {
        // A 1x1 PNG, as base64 text in the data.
        const string png = "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mP8z8BQDwAEhQGAhKmMIQAAAABJRU5ErkJggg==";
        var data = $$"""{ "site": "https://example.org/a", "name": "Example", "logo": "{{png}}", "none": null }""";
        var doc = Template("Visit [[link d.site, d.name]] [[image d.logo, 20, 10]][[image d.none]]");
        new ReportingEngine().BuildReport(doc, Json(data), "d");
        var link = Assert.Single(doc.Range.Fields.OfType<FieldHyperlink>());
        Assert.Equal(("https://example.org/a", "Example"), (link.Address, link.Result));
        var shape = Assert.Single(doc.GetChildNodes(NodeType.Shape, true).Cast<Drawing.Shape>());
        Assert.Equal((20.0, 10.0), (shape.Width, shape.Height));
    }

    public sealed class Invoice
    {
        public string Number { get; set; } = "";
        public List<decimal> Amounts { get; } = new();
    }

    [Fact]
    public void PlainObjectsAndKnownTypesServeAsData()
    {
        var doc = Template("[[inv.Number]]: [[sum(inv.Amounts) | #,##0.00]] [[Math.PI | 0.000]]");
        var engine = new ReportingEngine();
        engine.KnownTypes.Add(typeof(Math));
        var inv = new Invoice { Number = "A-1" };
        inv.Amounts.AddRange(new[] { 1000m, 234.5m });
        engine.BuildReport(doc, inv, "inv");
        Assert.Equal("A-1: 1,234.50 3.142", Text(doc));
    }
}
