namespace Quorix.Folio.Loading;

/// <summary>What happens to the spaces a line of plain text starts with.</summary>
public enum TxtLeadingSpacesOptions
{
    ConvertToIndent = 0,
    Preserve = 1,
    Trim = 2,
}

/// <summary>What happens to the spaces a line of plain text ends with.</summary>
public enum TxtTrailingSpacesOptions
{
    Preserve = 0,
    Trim = 1,
}

public sealed class TxtLoadOptions : LoadOptions
{
    public TxtLoadOptions() { LoadFormat = LoadFormat.Text; }

    public TxtLeadingSpacesOptions LeadingSpacesOptions { get; set; } = TxtLeadingSpacesOptions.ConvertToIndent;

    public TxtTrailingSpacesOptions TrailingSpacesOptions { get; set; } = TxtTrailingSpacesOptions.Trim;

    /// <summary>Lines that start like "1." or "-" become list items.</summary>
    public bool DetectNumberingWithWhitespaces { get; set; } = true;
}

public sealed class MarkdownLoadOptions : LoadOptions
{
    public MarkdownLoadOptions() { LoadFormat = LoadFormat.Markdown; }

    /// <summary>Text between "++" becomes underlined instead of staying as typed.</summary>
    public bool ImportUnderlineFormatting { get; set; }

    /// <summary>Blank lines between blocks become empty paragraphs.</summary>
    public bool PreserveEmptyLines { get; set; }
}

public sealed class HtmlLoadOptions : LoadOptions
{
    public HtmlLoadOptions() { LoadFormat = LoadFormat.Html; }

    public HtmlLoadOptions(LoadFormat loadFormat, string password, string baseUri) : base(loadFormat, password) { BaseUri = baseUri; }

    /// <summary>Content of noscript elements is left out, as a browser running scripts shows it.</summary>
    public bool IgnoreNoscriptElements { get; set; }
}

public sealed class RtfLoadOptions : LoadOptions
{
    public RtfLoadOptions() { LoadFormat = LoadFormat.Rtf; }

    /// <summary>Bytes that form UTF-8 sequences are read as UTF-8 instead of the document's code page.</summary>
    public bool RecognizeUtf8Text { get; set; }
}
