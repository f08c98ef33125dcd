using System.Data;
using System.Diagnostics;
using Quorix.Folio;
using Quorix.Folio.Saving;

/// <summary>The mail merge and field update workloads of the engine benchmark.</summary>
static class MergeBench
{
    static readonly string[] Columns = { "FirstName", "LastName", "Street", "City", "Amount", "Due", "Account", "Advisor" };

    static readonly string[] Body =
    {
        "Thank you for the trust you have shown us over the past year. We write to confirm the details of your account and the payment that falls due shortly.",
        "Please check that the address above is correct. If anything has changed, let us know before the due date so that our records stay accurate.",
        "Payments can be made by bank transfer to the account given below, quoting your account number as the reference.",
        "If you have already paid, please disregard this letter. Should you have any questions, your advisor will be glad to help.",
    };

    /// <summary>One page letter twice: with merge fields, and with the same places as {{ name }} text tags.</summary>
    public static void Templates(string fieldsPath, string tagsPath)
    {
        foreach (var (path, tags) in new[] { (fieldsPath, false), (tagsPath, true) })
        {
            var doc = new Document();
            var b = new DocumentBuilder(doc);
            void Put(string name, string picture = "")
            {
                if (tags) b.Write("{{ " + name + " }}");
                else b.InsertField("MERGEFIELD " + name + picture, "«" + name + "»");
            }
            Put("FirstName"); b.Write(" "); Put("LastName"); b.Writeln();
            Put("Street"); b.Writeln();
            Put("City"); b.Writeln();
            b.Writeln();
            b.Write("Dear "); Put("FirstName"); b.Writeln(",");
            foreach (var p in Body) b.Writeln(p);
            b.Write("Amount due: "); Put("Amount"); b.Write(" by "); Put("Due"); b.Writeln(".");
            b.Write("Account: "); Put("Account"); b.Writeln();
            b.Writeln();
            b.Writeln("Yours sincerely,");
            Put("Advisor");
            doc.Save(path, SaveFormat.Docx);
        }
    }

    public static DataTable Records(int n)
    {
        var t = new DataTable("Letters");
        foreach (var c in Columns) t.Columns.Add(c);
        for (int i = 0; i < n; i++)
            t.Rows.Add("Ann" + i, "Berg", i + " Harbour Street", "Oslo", (100 + i % 900) + ".50", "31 March 2025", "NO93 8601 " + i, "Kari Nordmann");
        return t;
    }

    public static (double Load, double Merge, double Save) Merge(string template, string output, int records)
    {
        var data = Records(records);
        var sw = Stopwatch.StartNew();
        var doc = new Document(template);
        double load = sw.Elapsed.TotalMilliseconds;
        doc.MailMerge.Execute(data);
        double merge = sw.Elapsed.TotalMilliseconds - load;
        doc.Save(output, SaveFormat.Docx);
        return (load, merge, sw.Elapsed.TotalMilliseconds - load - merge);
    }

    /// <summary>A document of the given pages holding the given number of fields of the common kinds.</summary>
    public static void FieldDocument(string path, int pages, int fields)
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.StartBookmark("rate"); b.Write("12.5"); b.EndBookmark("rate"); b.Writeln();
        string[] codes =
        {
            "DATE \\@ \"d MMMM yyyy\"", "SEQ Item", "= rate * 4 \\# \"#,##0.00\"", "REF rate", "IF 3 > 2 \"larger\" \"smaller\"",
            "QUOTE \"quoted\" \\* Upper", "= SUM(1, 2, 3)", "SEQ Figure \\* ROMAN", "AUTHOR", "SYMBOL 169",
        };
        int perPage = Math.Max(1, fields / pages), made = 0;
        for (int p = 0; p < pages; p++)
        {
            for (int i = 0; i < perPage && made < fields; i++, made++)
            {
                b.Write("Line with a computed value: ");
                b.InsertField(codes[made % codes.Length], "");
                b.Writeln(" and some words after it to fill the line.");
            }
            if (p < pages - 1) b.InsertBreak(BreakType.PageBreak);
        }
        doc.Save(path, SaveFormat.Docx);
    }

    public static (double Load, double Update, int Count) UpdateFields(string path)
    {
        var sw = Stopwatch.StartNew();
        var doc = new Document(path);
        _ = doc.FirstSection;   // the model is built on first use: loading counts it
        double load = sw.Elapsed.TotalMilliseconds;
        int n = doc.UpdateFields();
        return (load, sw.Elapsed.TotalMilliseconds - load, n);
    }
}
