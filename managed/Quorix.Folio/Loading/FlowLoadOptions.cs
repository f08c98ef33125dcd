namespace Quorix.Folio.Loading;

/// <summary>What happens to the spaces a line of plain text starts with.</summary>
public enum TxtLeadingSpacesOptions
{
    /// <summary>Leading spaces become the paragraph's indent.</summary>
    ConvertToIndent = 0,
    /// <summary>Leading spaces stay as text.</summary>
    Preserve = 1,
    /// <summary>Leading spaces are dropped.</summary>
    Trim = 2,
}

/// <summary>What happens to the spaces a line of plain text ends with.</summary>
public enum TxtTrailingSpacesOptions
{
    /// <summary>Trailing spaces stay as text.</summary>
    Preserve = 0,
    /// <summary>Trailing spaces are dropped.</summary>
    Trim = 1,
}

/// <summary>Options of reading plain text.</summary>
public sealed class TxtLoadOptions : LoadOptions
{
    /// <summary>Options of reading plain text, with their defaults.</summary>
    public TxtLoadOptions() { LoadFormat = LoadFormat.Text; }

    /// <summary>What becomes of spaces at the start of lines.</summary>
    public TxtLeadingSpacesOptions LeadingSpacesOptions { get; set; } = TxtLeadingSpacesOptions.ConvertToIndent;

    /// <summary>What becomes of spaces at the end of lines.</summary>
    public TxtTrailingSpacesOptions TrailingSpacesOptions { get; set; } = TxtTrailingSpacesOptions.Trim;

    /// <summary>Lines that start like "1." or "-" become list items.</summary>
    public bool DetectNumberingWithWhitespaces { get; set; } = true;
}

/// <summary>Options of reading Markdown.</summary>
public sealed class MarkdownLoadOptions : LoadOptions
{
    /// <summary>Options of reading Markdown, with their defaults.</summary>
    public MarkdownLoadOptions() { LoadFormat = LoadFormat.Markdown; }

    /// <summary>Text between "++" becomes underlined instead of staying as typed.</summary>
    public bool ImportUnderlineFormatting { get; set; }

    /// <summary>Blank lines between blocks become empty paragraphs.</summary>
    public bool PreserveEmptyLines { get; set; }
}

/// <summary>Options of reading HTML and MHTML.</summary>
public sealed class HtmlLoadOptions : LoadOptions
{
    /// <summary>Options of reading HTML, with their defaults.</summary>
    public HtmlLoadOptions() { LoadFormat = LoadFormat.Html; }

    /// <summary>Options of reading loadFormat with a password and a base URI for relative links.</summary>
    public HtmlLoadOptions(LoadFormat loadFormat, string password, string baseUri) : base(loadFormat, password) { BaseUri = baseUri; }

    /// <summary>Content of noscript elements is left out, as a browser running scripts shows it.</summary>
    public bool IgnoreNoscriptElements { get; set; }
}

/// <summary>Options of reading RTF.</summary>
public sealed class RtfLoadOptions : LoadOptions
{
    /// <summary>Options of reading RTF, with their defaults.</summary>
    public RtfLoadOptions() { LoadFormat = LoadFormat.Rtf; }

    /// <summary>Bytes that form UTF-8 sequences are read as UTF-8 instead of the document's code page.</summary>
    public bool RecognizeUtf8Text { get; set; }
}
