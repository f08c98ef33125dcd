using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

public class NamingTests
{
    [Theory]
    [InlineData("Save", "save")]
    [InlineData("Writeln", "writeln")]
    [InlineData("GetChildNodes", "get_child_nodes")]
    [InlineData("RegisterDictionary", "register_dictionary")]
    [InlineData("ExpandTableStylesToDirectFormatting", "expand_table_styles_to_direct_formatting")]
    [InlineData("IncludeTextboxesFootnotesEndnotesInStat", "include_textboxes_footnotes_endnotes_in_stat")]
    [InlineData("fileName", "file_name")]
    [InlineData("horzPos", "horz_pos")]
    [InlineData("X", "x")]
    public void SnakeSplitsAtInteriorCapitals(string managed, string python) => Assert.Equal(python, Naming.Snake(managed));

    [Theory]
    [InlineData("IsHTMLDocument", "is_html_document")]
    [InlineData("HasDmlEffect", "has_dml_effect")]
    [InlineData("VbaProject", "vba_project")]
    [InlineData("IOStream", "io_stream")]
    [InlineData("PDF", "pdf")]
    [InlineData("GetIDs", "get_ids")]
    [InlineData("URLsList", "urls_list")]
    [InlineData("UseHTMLs", "use_htmls")]
    public void SnakeKeepsAbbreviationsWhole(string managed, string python) => Assert.Equal(python, Naming.Snake(managed));

    [Theory]
    [InlineData("ToUTF8String", "to_utf8_string")]
    [InlineData("Html5Export", "html5_export")]
    [InlineData("Level2", "level2")]
    [InlineData("Win32api", "win32api")]
    [InlineData("Pdf2Word", "pdf2_word")]
    public void SnakeKeepsDigitsOnTheWordBefore(string managed, string python) => Assert.Equal(python, Naming.Snake(managed));

    [Theory]
    [InlineData("Import", "import_")]
    [InlineData("from", "from_")]
    [InlineData("Class", "class_")]
    [InlineData("None", "none")]  // lower case is no keyword
    [InlineData("Print", "print")]
    public void SnakeAvoidsPythonKeywords(string managed, string python) => Assert.Equal(python, Naming.Snake(managed));

    [Theory]
    [InlineData("Horizontal", "HORIZONTAL")]
    [InlineData("Diagonal", "DIAGONAL")]
    [InlineData("UnsafeToBreak", "UNSAFE_TO_BREAK")]
    [InlineData("SafeToInsertTatweel", "SAFE_TO_INSERT_TATWEEL")]
    [InlineData("Number10Envelope", "NUMBER_10_ENVELOPE")]
    [InlineData("A4", "A_4")]
    [InlineData("TOC9", "TOC_9")]
    [InlineData("Utf8", "UTF_8")]
    [InlineData("HTMLFixed", "HTML_FIXED")]
    [InlineData("CellChar", "CELL_CHAR")]
    [InlineData("Word2007To2010", "WORD_2007_TO_2010")]
    [InlineData("None", "NONE")]
    public void UpperSnakeMakesDigitRunsWords(string managed, string python) => Assert.Equal(python, Naming.UpperSnake(managed));

    [Theory]
    [InlineData("Pdf_A1b", "pdf_a1b", "PDF_A_1_B")]
    [InlineData("__Odd__Name", "odd_name", "ODD_NAME")]
    public void UnderscoresSeparateWordsAndCollapse(string managed, string snake, string upper)
    {
        Assert.Equal(snake, Naming.Snake(managed));
        Assert.Equal(upper, Naming.UpperSnake(managed));
    }

    [Fact]
    public void WordsDifferOnlyInDigitHandling()
    {
        Assert.Equal(["To", "UTF8", "String"], Naming.Words("ToUTF8String", digitsAreWords: false));
        Assert.Equal(["To", "UTF", "8", "String"], Naming.Words("ToUTF8String", digitsAreWords: true));
        Assert.Empty(Naming.Words("___", digitsAreWords: false));
        Assert.Equal("___", Naming.Snake("___"));
    }
}
