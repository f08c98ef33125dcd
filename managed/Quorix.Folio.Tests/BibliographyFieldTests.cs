using Quorix.Folio.Bibliography;
using Quorix.Folio.Fields;

namespace Quorix.Folio.Tests;

public class BibliographyFieldTests
{
    private const string Sources = """
        <?xml version="1.0" encoding="UTF-8" standalone="yes"?>
        <b:Sources xmlns:b="http://schemas.openxmlformats.org/officeDocument/2006/bibliography" xmlns="http://schemas.openxmlformats.org/officeDocument/2006/bibliography" SelectedStyle="STYLE" StyleName="APA" Version="6">
          <b:Source><b:Tag>Smi10</b:Tag><b:SourceType>Book</b:SourceType><b:Author><b:Author><b:NameList>
            <b:Person><b:Last>Smith</b:Last><b:First>John</b:First><b:Middle>Alan</b:Middle></b:Person></b:NameList></b:Author></b:Author>
            <b:Title>The Art of Tests</b:Title><b:Year>2010</b:Year><b:City>Oslo</b:City><b:Publisher>Fjord Press</b:Publisher></b:Source>
          <b:Source><b:Tag>Jon15</b:Tag><b:SourceType>JournalArticle</b:SourceType><b:Author><b:Author><b:NameList>
            <b:Person><b:Last>Jones</b:Last><b:First>Mary</b:First></b:Person><b:Person><b:Last>Lee</b:Last><b:First>Kim</b:First></b:Person></b:NameList></b:Author></b:Author>
            <b:Title>Fields that compute</b:Title><b:Year>2015</b:Year><b:JournalName>Journal of Documents</b:JournalName>
            <b:Volume>3</b:Volume><b:Issue>2</b:Issue><b:Pages>10-20</b:Pages></b:Source>
          <b:Source><b:Tag>Web</b:Tag><b:SourceType>InternetSite</b:SourceType><b:Author><b:Author><b:Corporate>Quorix Group</b:Corporate></b:Author></b:Author>
            <b:Title>Release notes</b:Title><b:URL>https://example.org/notes</b:URL></b:Source>
          <b:Source><b:Tag>Three</b:Tag><b:SourceType>Book</b:SourceType><b:Author><b:Author><b:NameList>
            <b:Person><b:Last>Abel</b:Last><b:First>Ann</b:First></b:Person><b:Person><b:Last>Baker</b:Last><b:First>Bo</b:First></b:Person>
            <b:Person><b:Last>Carr</b:Last><b:First>Cy</b:First></b:Person></b:NameList></b:Author></b:Author>
            <b:Title>Three</b:Title><b:Year>2001</b:Year></b:Source>
        </b:Sources>
        """;

    private static Document WithSources(string style, params string[] codes)
    {
        var b = new DocumentBuilder();
        foreach (var code in codes) { b.InsertField(code, "old"); b.Writeln(); }
        var docx = TestSupport.WithPart(TestSupport.ToBytes(b.Document), "customXml/item1.xml", _ => Sources.Replace("STYLE", style));
        return new Document(new MemoryStream(docx));
    }

    [Fact]
    public void SourcesAreReadFromTheCustomXmlPart()
    {
        var bib = WithSources("\\APASixthEditionOfficeOnline.xsl").Bibliography;
        Assert.Equal("\\APASixthEditionOfficeOnline.xsl", bib.BibliographyStyle);
        Assert.Equal(new[] { "Smi10", "Jon15", "Web", "Three" }, bib.Sources.Select(s => s.Tag));
        var smith = bib.Sources[0];
        Assert.Equal((SourceType.Book, "The Art of Tests", "2010", "Fjord Press"), (smith.SourceType, smith.Title, smith.Year, smith.Publisher));
        var author = Assert.IsType<PersonCollection>(smith.Contributors.Author);
        Assert.Equal(("Smith", "John", "Alan"), (author[0].Last, author[0].First, author[0].Middle));
        Assert.Equal("Quorix Group", Assert.IsType<Corporate>(bib.Sources[2].Contributors.Author).Name);
        Assert.Null(smith.Contributors.Editor);
        Assert.Empty(new Document().Bibliography.Sources);
    }

    [Fact]
    public void CitationsFollowTheAuthorDateStyle()
    {
        var doc = WithSources("\\APASixthEditionOfficeOnline.xsl",
            "CITATION Smi10 \\l 1033", "CITATION Jon15 \\p 12-14", "CITATION Web \\m Smi10", "CITATION Three \\n",
            "CITATION Three \\y", "CITATION Smi10 \\f \"see \" \\s \", ch. 2\" \\y", "CITATION nope");
        doc.UpdateFields();
        Assert.Equal(new[]
        {
            "(Smith, 2010)", "(Jones & Lee, 2015, pp. 12-14)", "(Quorix Group, n.d.; Smith, 2010)", "(2001)",
            "(Abel et al.)", "(see Smith, ch. 2)", "Invalid source specified.",
        }, doc.Range.Fields.Select(f => f.Result));
        Assert.Equal("Jon15", ((FieldCitation)doc.Range.Fields[1]).SourceTag);
    }

    [Fact]
    public void TheBibliographyListsEverySourceSortedWithItalicTitles()
    {
        var doc = WithSources("", "BIBLIOGRAPHY");
        doc.UpdateFields();
        var paras = doc.FirstSection!.Body!.Paragraphs.Cast<Paragraph>().ToList();
        Assert.Equal(new[]
        {
            "Abel, A., Baker, B., & Carr, C. (2001). Three.",
            "Jones, M., & Lee, K. (2015). Fields that compute. Journal of Documents, 3(2), 10-20.",
            "Quorix Group (n.d.). Release notes. Retrieved from https://example.org/notes",
            "Smith, J. A. (2010). The Art of Tests. Oslo: Fjord Press.",
        }, paras.Take(4).Select(Paragraphs.Visible));
        var smith = paras[3].Runs.Cast<Run>().ToList();
        Assert.Equal(new[] { false, true, false }, smith.Select(r => r.Font.Italic));
        Assert.False(paras[1].Runs.Cast<Run>().Any(r => r.Font.Italic));

        // The sources part travels with the document.
        Assert.Contains("Fjord Press", TestSupport.Part(TestSupport.ToBytes(doc), "customXml/item1.xml"));
        var none = new DocumentBuilder();
        none.InsertField("BIBLIOGRAPHY", "");
        none.Document.UpdateFields();
        Assert.Equal("There are no sources in the current document.", none.Document.Range.Fields[0].Result);
    }

    private sealed class Warnings : IWarningCallback
    {
        public readonly List<string> Seen = new();
        public void Warning(WarningInfo info) => Seen.Add(info.Description);
    }

    [Fact]
    public void OtherStylesKeepTheirResultsAndWarn()
    {
        var doc = WithSources("\\MLASeventhEditionOfficeOnline.xsl", "CITATION Smi10", "BIBLIOGRAPHY");
        var warnings = new Warnings();
        doc.WarningCallback = warnings;
        doc.UpdateFields();
        Assert.Equal(new[] { "old", "old" }, doc.Range.Fields.Select(f => f.Result));
        Assert.Equal("The bibliography style \"\\MLASeventhEditionOfficeOnline.xsl\" is not supported; \"CITATION Smi10\" keeps its result.", warnings.Seen[0]);
        Assert.Equal(2, warnings.Seen.Count);
    }
}
