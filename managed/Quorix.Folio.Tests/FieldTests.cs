using System.Globalization;
using Quorix.Folio.Fields;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Tests;

public class FieldTests
{
    private static (Document Doc, DocumentBuilder Builder) NewDoc()
    {
        var doc = new Document();
        doc.FieldOptions.FieldUpdateCulture = CultureInfo.InvariantCulture;
        doc.FieldOptions.CurrentDateTime = new DateTime(2024, 3, 5, 14, 7, 9);
        return (doc, new DocumentBuilder(doc));
    }

    private static string Updated(string code, Action<Document, DocumentBuilder>? setup = null)
    {
        var (doc, b) = NewDoc();
        setup?.Invoke(doc, b);
        var f = b.InsertField(code, "");
        f.Update();
        return doc.Range.Fields[doc.Range.Fields.Count - 1].Result;
    }

    [Theory]
    [InlineData("= 123 \\* CardText", "one hundred twenty-three")]
    [InlineData("= 21 \\* OrdText", "twenty-first")]
    [InlineData("= 12 \\* OrdText", "twelfth")]
    [InlineData("= 1994 \\* Roman", "MCMXCIV")]
    [InlineData("= 14 \\* roman", "xiv")]
    [InlineData("= 28 \\* ALPHABETIC", "BB")]
    [InlineData("= 3 \\* alphabetic", "c")]
    [InlineData("= 113 \\* Ordinal", "113th")]
    [InlineData("= 22 \\* Ordinal", "22nd")]
    [InlineData("= 255 \\* Hex", "FF")]
    [InlineData("= 1234.56 \\* DollarText", "one thousand two hundred thirty-four and 56/100")]
    [InlineData("QUOTE \"hello big world\" \\* Caps", "Hello Big World")]
    [InlineData("QUOTE \"hello world\" \\* FirstCap", "Hello world")]
    [InlineData("QUOTE \"Mixed\" \\* Upper \\* MERGEFORMAT", "MIXED")]
    [InlineData("QUOTE \"Mixed\" \\*Lower", "mixed")]
    public void GeneralFormatsWriteNumbersAndCase(string code, string expected) => Assert.Equal(expected, Updated(code));

    [Theory]
    [InlineData("1234.5", "#,##0.00", "1,234.50")]
    [InlineData("0.5", "0.00", "0.50")]
    [InlineData("7", "00", "07")]
    [InlineData("-3.14159", "0.0", "-3.1")]
    [InlineData("-12", "0;(0)", "(12)")]
    [InlineData("0", "0.00;-0.00;'nil'", "nil")]
    [InlineData("42", "$#,##0.00", "$42.00")]
    [InlineData("1234567", "#,##0", "1,234,567")]
    [InlineData("2.5", "#.##", "2.5")]
    [InlineData("123456", "x##", "456")]
    [InlineData("5", "0 'units'", "5 units")]
    public void NumericPicturesFormatLikeTheWordProcessor(string value, string picture, string expected) =>
        Assert.Equal(expected, Updated($"= {value} \\# \"{picture}\""));

    [Theory]
    [InlineData("DATE \\@ \"d MMMM yyyy\"", "5 March 2024")]
    [InlineData("DATE \\@ \"dddd, MMM d, yy\"", "Tuesday, Mar 5, 24")]
    [InlineData("DATE \\@ \"dd/MM/yyyy\"", "05/03/2024")]
    [InlineData("TIME \\@ \"h:mm AM/PM\"", "2:07 PM")]
    [InlineData("TIME \\@ \"HH:mm:ss\"", "14:07:09")]
    [InlineData("DATE \\@ \"'Week of' MMMM\"", "Week of March")]
    [InlineData("DATE \\@ \"MMMM\" \\* Upper", "MARCH")]
    public void DatePicturesFormatTheFixedClock(string code, string expected) => Assert.Equal(expected, Updated(code));

    [Theory]
    [InlineData("= 2 + 3 * 4", "14")]
    [InlineData("=(2+3)*4", "20")]
    [InlineData("= 2 ^ 10", "1024")]
    [InlineData("= 10 / 4", "2.5")]
    [InlineData("= 10 / 3", "3.33")]
    [InlineData("= 50%", "0.5")]
    [InlineData("= SUM(1, 2, 3) + AVERAGE(2, 4)", "9")]
    [InlineData("= ROUND(2.345, 2)", "2.35")]
    [InlineData("= IF(3 > 2, 10, 20)", "10")]
    [InlineData("= AND(1, 0) + OR(1, 0) * 10", "10")]
    [InlineData("= MAX(4, 9, 2) - MIN(4, 9, 2)", "7")]
    [InlineData("= MOD(17, 5) + ABS(-3) + INT(2.9) + SIGN(-4)", "6")]
    [InlineData("= PRODUCT(2, 3, 4) + NOT(0)", "25")]
    [InlineData("= 3 >= 3", "1")]
    [InlineData("= 1 / 0", "!Zero Divide")]
    [InlineData("= 2 +* 3", "!Syntax Error, * 3")]
    public void FormulasComputeArithmeticAndFunctions(string code, string expected) => Assert.Equal(expected, Updated(code));

    [Fact]
    public void FormulasReadBookmarksAndTableCells()
    {
        Assert.Equal("84", Updated("= price * 2", (d, b) =>
        {
            b.StartBookmark("price"); b.Write("42"); b.EndBookmark("price"); b.Writeln();
        }));

        var (doc, b) = NewDoc();
        b.StartTable();
        foreach (var row in new[] { new[] { "1", "10" }, new[] { "2", "20" }, new[] { "3", "30" } })
        {
            foreach (var v in row) { b.InsertCell(); b.Write(v); }
            b.EndRow();
        }
        b.InsertCell(); var sumAbove = b.InsertField("= SUM(ABOVE)", "");
        b.InsertCell(); var range = b.InsertField("= SUM(A1:B2) \\# 0.0", "");
        b.EndRow();
        b.InsertCell(); b.Write("5"); b.InsertCell(); var left = b.InsertField("= SUM(LEFT)", "");
        b.EndRow();
        b.EndTable();
        doc.UpdateFields();
        var results = doc.Range.Fields.Select(f => f.Result).ToArray();
        Assert.Equal(new[] { "6", "33.0", "5" }, results);
    }

    [Theory]
    [InlineData("IF 5 > 3 \"yes\" \"no\"", "yes")]
    [InlineData("IF 10 < 9 \"yes\" \"no\"", "no")]
    [InlineData("IF \"apple\" = \"a*e\" \"match\" \"none\"", "match")]
    [InlineData("IF \"apple\" = \"a?e\" \"match\" \"none\"", "none")]
    [InlineData("IF \"Oslo\" <> \"Bergen\" \"differ\" \"same\"", "differ")]
    [InlineData("IF 3>2 \"tight\" \"loose\"", "tight")]
    [InlineData("IF 2 = 2.0 \"numeric\" \"text\"", "numeric")]
    [InlineData("COMPARE \"b\" > \"a\"", "1")]
    public void IfComparesNumbersTextAndWildcards(string code, string expected) => Assert.Equal(expected, Updated(code));

    [Fact]
    public void NestedFieldsEvaluateInsideOutAndCountAsOneWord()
    {
        var (doc, b) = NewDoc();
        b.StartBookmark("city"); b.Write("New York"); b.EndBookmark("city"); b.Writeln();
        // IF { REF city } = "New York" "big" "small": the nested result has a space, yet is one operand.
        var outer = b.InsertField("IF ", "");
        b.MoveTo(outer.Separator!);
        var inner = b.InsertField("REF city", "stale");
        b.Write(" = \"New York\" \"big\" \"small\" ");
        doc.UpdateFields();
        var ifField = doc.Range.Fields.OfType<FieldIf>().Single();
        Assert.Equal("big", ifField.Result);
        Assert.Equal("New York", doc.Range.Fields.OfType<FieldRef>().Single().Result);
    }

    [Fact]
    public void SeqNumbersInDocumentOrderWithResetsAndRepeats()
    {
        var (doc, b) = NewDoc();
        string[] codes = { "SEQ Figure", "SEQ Figure", "SEQ Table", "SEQ Figure \\c", "SEQ Figure \\r 10", "SEQ Figure", "SEQ Figure \\h" };
        foreach (var c in codes) { b.InsertField(c, "?"); b.Writeln(); }
        doc.UpdateFields();
        Assert.Equal(new[] { "1", "2", "1", "2", "10", "11", "" }, doc.Range.Fields.Select(f => f.Result).ToArray());
    }

    [Fact]
    public void SeqRestartsAfterEachHeadingOfTheLevel()
    {
        var (doc, b) = NewDoc();
        foreach (var chapter in new[] { "One", "Two" })
        {
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
            b.Writeln(chapter);
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
            b.InsertField("SEQ Fig \\s 1", ""); b.Writeln();
            b.InsertField("SEQ Fig \\s 1", ""); b.Writeln();
        }
        doc.UpdateFields();
        Assert.Equal(new[] { "1", "2", "1", "2" }, doc.Range.Fields.Select(f => f.Result).ToArray());
    }

    [Fact]
    public void RefSetAndUserFieldsReadTheirSources()
    {
        var (doc, b) = NewDoc();
        doc.FieldOptions.CurrentUser.Name = "Ann Berg";
        doc.FieldOptions.CurrentUser.Initials = "AB";
        doc.FieldOptions.DocumentVariables["Client"] = "Acme";
        b.StartBookmark("total"); b.Write("42"); b.EndBookmark("total"); b.Writeln();
        b.InsertField("REF total", ""); b.Writeln();
        b.InsertField("REF missing", ""); b.Writeln();
        b.InsertField("SET rate 7", ""); b.InsertField("REF rate \\* CardText", ""); b.Writeln();
        b.InsertField("USERNAME \\* Upper", ""); b.InsertField("USERINITIALS", ""); b.Writeln();
        b.InsertField("DOCVARIABLE Client", ""); b.Writeln();
        b.InsertField("SYMBOL 169", ""); b.InsertField("SYMBOL 0x41", ""); b.Writeln();
        b.InsertField("total", ""); b.Writeln();
        doc.UpdateFields();
        Assert.Equal(new[] { "42", "Error! Reference source not found.", "", "seven", "ANN BERG", "AB", "Acme", "©", "A", "42" },
            doc.Range.Fields.Select(f => f.Result).ToArray());
    }

    [Fact]
    public void DocumentPropertiesComeFromTheFileAndCountsFromTheText()
    {
        var (doc, b) = NewDoc();
        doc.BuiltInDocumentProperties.Author = "Kari";
        doc.BuiltInDocumentProperties.Title = "Plan";
        doc.CustomDocumentProperties.Add("Project", "Apollo");
        doc.BuiltInDocumentProperties.CreatedTime = new DateTime(2023, 11, 2, 12, 0, 0, DateTimeKind.Utc);
        doc = TestSupport.RoundTrip(doc);
        doc.FieldOptions.FieldUpdateCulture = CultureInfo.InvariantCulture;
        b = new DocumentBuilder(doc);
        b.MoveToDocumentEnd();
        b.InsertField("AUTHOR", ""); b.InsertField("TITLE \\* Upper", ""); b.InsertField("DOCPROPERTY Project", "");
        b.InsertField("DOCPROPERTY Nope", ""); b.InsertField("CREATEDATE \\@ yyyy-MM-dd", "");
        doc.UpdateFields();
        Assert.Equal(new[] { "Kari", "PLAN", "Apollo", "Error! Unknown document property name.", "2023-11-02" },
            doc.Range.Fields.Select(f => f.Result).ToArray());

        // An argument sets the property.
        b.InsertField("SUBJECT \"Budget 2024\"", "").Update();
        Assert.Equal("Budget 2024", doc.BuiltInDocumentProperties.Subject);

        // Field codes are not counted; the words of the text are.
        Assert.Equal("3", Updated("NUMWORDS", (d, b) => b.Writeln("three little words")));
        Assert.Equal("16", Updated("NUMCHARS", (d, b) => b.Writeln("three little words")));
    }

    [Fact]
    public void UnknownAndMalformedCodesKeepTheirResults()
    {
        var (doc, b) = NewDoc();
        b.InsertField("FROBNICATE 1 2", "kept");
        b.InsertField("SYMBOL", "sym");
        b.InsertField("IF \"unterminated", "if");
        b.InsertField("SEQ", "seq");
        b.InsertField("PAGE", "7");
        doc.UpdateFields();
        // PAGE is no malformed code: the layout gives it its page.
        Assert.Equal(new[] { "kept", "sym", "if", "seq", "1" }, doc.Range.Fields.Select(f => f.Result).ToArray());
        Assert.IsType<FieldUnknown>(doc.Range.Fields[0]);
        Assert.Equal(FieldType.FieldPage, doc.Range.Fields[4].Type);
    }

    [Fact]
    public void LockedFieldsAreNotUpdated()
    {
        var (doc, b) = NewDoc();
        var f = b.InsertField("= 1 + 1", "old");
        f.IsLocked = true;
        doc.UpdateFields();
        Assert.Equal("old", doc.Range.Fields[0].Result);
        Assert.True(TestSupport.RoundTrip(doc).Range.Fields[0].IsLocked);
    }

    [Fact]
    public void TypedPropertiesReadAndRewriteTheCode()
    {
        var (doc, b) = NewDoc();
        var f = (FieldToc)b.InsertField("TOC \\o \"1-3\" \\h", "");
        Assert.Equal("1-3", f.HeadingLevelRange);
        Assert.True(f.InsertHyperlinks);
        f.HeadingLevelRange = "2-4";
        f.InsertHyperlinks = false;
        f.UseParagraphOutlineLevel = true;
        Assert.Equal("TOC \\o \"2-4\" \\u", f.GetFieldCode());

        var d = (FieldDate)b.InsertField("DATE", "");
        d.DateTimeFormat = "yyyy";
        d.Format.GeneralFormats.Add(GeneralFormat.MergeFormat);
        Assert.Equal("DATE \\@ \"yyyy\" \\* \"MERGEFORMAT\"", d.GetFieldCode());
        Assert.Equal(new[] { GeneralFormat.MergeFormat }, d.Format.GeneralFormats.ToArray());
        var m = (FieldMergeField)b.InsertField("MERGEFIELD  \"Full Name\" \\b \"Dear \"", "");
        Assert.Equal("Full Name", m.FieldName);
        Assert.Equal("Dear ", m.TextBefore);
    }

    [Fact]
    public void TocListsHeadingsStylesAndEntriesWithLinks()
    {
        var (doc, b) = NewDoc();
        var toc = b.InsertField("TOC \\o \"1-2\" \\h \\t \"Title,1\" \\f", "");
        b.Writeln();
        void Para(StyleIdentifier s, string text) { b.ParagraphFormat.StyleIdentifier = s; b.Writeln(text); }
        Para(StyleIdentifier.Title, "Overview");
        Para(StyleIdentifier.Heading1, "Intro");
        Para(StyleIdentifier.Heading2, "Scope");
        Para(StyleIdentifier.Heading3, "Too deep");
        Para(StyleIdentifier.Normal, "Body text");
        b.InsertField("TC \"Hand entry\" \\l 2", "");
        b.Writeln();
        doc.UpdateFields();

        var entries = doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>()
            .Where(p => p.ParagraphFormat.StyleName.StartsWith("toc", StringComparison.OrdinalIgnoreCase))
            .Select(p => (p.ParagraphFormat.StyleIdentifier, Paragraphs.Visible(p))).ToArray();
        // Each entry ends with a tab and the page its heading is on.
        Assert.Equal(new[]
        {
            (StyleIdentifier.Toc1, "Overview\t1"), (StyleIdentifier.Toc1, "Intro\t1"), (StyleIdentifier.Toc2, "Scope\t1"), (StyleIdentifier.Toc2, "Hand entry\t1"),
        }, entries);
        var links = doc.Range.Fields.OfType<FieldHyperlink>().Select(h => h.SubAddress!).ToArray();
        Assert.Equal(4, links.Length);
        Assert.All(links, l => Assert.NotNull(doc.Range.Bookmarks[l]));
        // Updating again reuses the bookmarks and does not nest or duplicate entries.
        doc.UpdateFields();
        Assert.Equal(4, doc.Range.Fields.OfType<FieldHyperlink>().Count());
        Assert.Equal(4, doc.Range.Bookmarks.Count(bm => bm.Name.StartsWith("_Toc")));
        var saved = TestSupport.RoundTrip(doc);
        Assert.Equal(4, saved.Range.Fields.Count(f => f.Type == FieldType.FieldPageRef));
        Assert.Equal(4, saved.Range.Fields.OfType<FieldHyperlink>().Count());
    }

    [Fact]
    public void FieldBuilderNestsFieldsAndQuotesArguments()
    {
        var (doc, b) = NewDoc();
        b.StartBookmark("n"); b.Write("5"); b.EndBookmark("n"); b.Writeln();
        var para = doc.FirstSection!.Body!.LastParagraph!;
        // IF { = n * 2 } > 9 "big: { QUOTE "ten" }" "small"
        var formula = new FieldBuilder(FieldType.FieldFormula).AddArgument(new FieldBuilder(FieldType.FieldRef).AddArgument("n")).AddArgument("*").AddArgument(2);
        var text = new FieldArgumentBuilder().AddText("big \"x\": ").AddField(new FieldBuilder(FieldType.FieldQuote).AddArgument("ten"));
        var f = new FieldBuilder(FieldType.FieldIf).AddArgument(formula).AddArgument(">").AddArgument(9).AddArgument(text).AddArgument("small")
            .AddSwitch("\\*", "Upper").BuildAndInsert(para);
        Assert.IsType<FieldIf>(f);
        Assert.Equal("BIG \"X\": TEN", f.Result);
        Assert.Throws<ArgumentException>(() => new FieldBuilder(FieldType.FieldNone));
        Assert.Throws<ArgumentException>(() => new FieldBuilder(FieldType.FieldIf).AddSwitch("x"));
    }

    [Fact]
    public void IndexSortsGroupsAndNestsEntries()
    {
        var (doc, b) = NewDoc();
        var index = b.InsertField("INDEX \\h \"— A —\" \\f I", "");
        b.Writeln();
        foreach (var code in new[] { "XE \"pear\"", "XE \"Apple:green\"", "XE \"apple:Red\"", "XE \"banana\" \\t \"See fruit\"", "XE \"secret\" \\f X", "XE \"Apple\"" })
        {
            b.Write("text ");
            b.InsertField(code, "");
            b.Writeln();
        }
        doc.UpdateFields();
        var lines = doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().Select(Paragraphs.Visible).TakeWhile(t => !t.StartsWith("text")).ToArray();
        Assert.Equal(new[] { "— A —", "Apple, 1", "green, 1", "Red, 1", "— B —", "banana. See fruit", "— P —", "pear, 1" }, lines);
        var indents = doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().Skip(2).Take(2).Select(p => p.ParagraphFormat.LeftIndent);
        Assert.Equal(new[] { 18.0, 18.0 }, indents);
    }

    private sealed class Respondent : IFieldUserPromptRespondent
    {
        public readonly List<string> Prompts = new();

        public string? Respond(string promptText, string defaultResponse)
        {
            Prompts.Add(promptText + "|" + defaultResponse);
            return promptText.StartsWith("Skip") ? null : "answer to " + promptText;
        }
    }

    [Fact]
    public void PromptsIncludesStyleRefsAndAutomaticNumbers()
    {
        var (doc, b) = NewDoc();
        var respondent = new Respondent();
        doc.FieldOptions.UserPromptRespondent = respondent;
        var include = Path.Combine(Path.GetTempPath(), $"qrx-include-{Guid.NewGuid():N}.txt");
        File.WriteAllText(include, "line one\nline two\n");
        try
        {
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
            b.Writeln("Chapter A");
            b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
            b.InsertField("ASK who \"Name?\" \\d \"nobody\"", ""); b.InsertField("REF who", ""); b.Writeln();
            b.InsertField("FILLIN \"Skip me\" \\d \"fallback\"", ""); b.Writeln();
            b.InsertField($"INCLUDETEXT \"{include.Replace("\\", "\\\\")}\"", ""); b.Writeln();
            b.InsertField("STYLEREF \"heading 1\"", ""); b.Writeln();
            b.InsertField("AUTONUM", ""); b.InsertField("AUTONUM", ""); b.InsertField("AUTONUMOUT", ""); b.Writeln();
            b.InsertField("LISTNUM Steps", ""); b.InsertField("LISTNUM Steps", ""); b.InsertField("LISTNUM Steps \\s 7", "");
            doc.UpdateFields();
        }
        finally
        {
            File.Delete(include);
        }
        Assert.Equal(new[] { "", "answer to Name?", "fallback", "line one\vline two", "Chapter A", "1.", "2.", "III.", "1)", "2)", "7)" },
            doc.Range.Fields.Select(f => f.Result).ToArray());
        Assert.Equal(new[] { "Name?|nobody", "Skip me|fallback" }, respondent.Prompts);
    }

    [Fact]
    public void TocWithoutEntriesSaysSo()
    {
        var (doc, b) = NewDoc();
        b.InsertField("TOC \\o \"1-3\"", "");
        doc.UpdateFields();
        Assert.Equal("No table of contents entries found.", doc.Range.Fields[0].Result);
    }
}
