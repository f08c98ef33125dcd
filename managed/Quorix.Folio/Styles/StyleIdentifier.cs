namespace Quorix.Folio;

/// <summary>The locale-independent identifier of a built-in style.</summary>
public enum StyleIdentifier
{
    /// <summary>The default paragraph style, Normal.</summary>
    Normal = 0,
    /// <summary>Heading 1, the outline's first level.</summary>
    Heading1 = 1,
    /// <summary>Heading 2, the outline's second level.</summary>
    Heading2 = 2,
    /// <summary>Heading 3, the outline's third level.</summary>
    Heading3 = 3,
    /// <summary>Heading 4, the outline's fourth level.</summary>
    Heading4 = 4,
    /// <summary>Heading 5, the outline's fifth level.</summary>
    Heading5 = 5,
    /// <summary>Heading 6, the outline's sixth level.</summary>
    Heading6 = 6,
    /// <summary>Heading 7, the outline's seventh level.</summary>
    Heading7 = 7,
    /// <summary>Heading 8, the outline's eighth level.</summary>
    Heading8 = 8,
    /// <summary>Heading 9, the outline's ninth level.</summary>
    Heading9 = 9,
    /// <summary>TOC 1, the first level of a table of contents.</summary>
    Toc1 = 19,
    /// <summary>TOC 2, the second level of a table of contents.</summary>
    Toc2 = 20,
    /// <summary>TOC 3, the third level of a table of contents.</summary>
    Toc3 = 21,
    /// <summary>Footnote Text, the paragraphs of footnotes.</summary>
    FootnoteText = 29,
    /// <summary>Comment Text, the paragraphs of comments.</summary>
    CommentText = 30,
    /// <summary>Header, the paragraphs of headers.</summary>
    Header = 31,
    /// <summary>Footer, the paragraphs of footers.</summary>
    Footer = 32,
    /// <summary>Caption, the captions of tables and figures.</summary>
    Caption = 34,
    /// <summary>Footnote Reference, the character style of footnote marks.</summary>
    FootnoteReference = 38,
    /// <summary>Comment Reference, the character style of comment marks.</summary>
    CommentReference = 39,
    /// <summary>Endnote Reference, the character style of endnote marks.</summary>
    EndnoteReference = 42,
    /// <summary>Endnote Text, the paragraphs of endnotes.</summary>
    EndnoteText = 43,
    /// <summary>Title, the document's title.</summary>
    Title = 62,
    /// <summary>Default Paragraph Font, the character style of text with no other.</summary>
    DefaultParagraphFont = 65,
    /// <summary>Body Text.</summary>
    BodyText = 66,
    /// <summary>Subtitle.</summary>
    Subtitle = 74,
    /// <summary>Hyperlink, the character style of links.</summary>
    Hyperlink = 85,
    /// <summary>FollowedHyperlink, the character style of links already visited.</summary>
    FollowedHyperlink = 86,
    /// <summary>Strong, a bold character style.</summary>
    Strong = 87,
    /// <summary>Emphasis, an italic character style.</summary>
    Emphasis = 88,
    /// <summary>Normal Table, the default table style.</summary>
    TableNormal = 105,
    /// <summary>No List, the default list style.</summary>
    NoList = 107,
    /// <summary>Table Grid, a table style with every border.</summary>
    TableGrid = 154,
    /// <summary>List Paragraph, the paragraphs of lists.</summary>
    ListParagraph = 179,
    /// <summary>Quote, a quoted paragraph.</summary>
    Quote = 180,
    /// <summary>Intense Quote, a highlighted quoted paragraph.</summary>
    IntenseQuote = 181,
    /// <summary>A style the user defined, not built in.</summary>
    User = 4094,
    /// <summary>No style.</summary>
    Nil = 4095,
}
