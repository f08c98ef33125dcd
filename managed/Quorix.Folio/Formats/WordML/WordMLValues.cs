namespace Quorix.Folio.Formats.WordML;

/// <summary>The namespaces of WordprocessingML 2003 and its companions.</summary>
internal static class WordMLNs
{
    public const string W = "http://schemas.microsoft.com/office/word/2003/wordml";
    public const string Wx = "http://schemas.microsoft.com/office/word/2003/auxHint";
    public const string V = "urn:schemas-microsoft-com:vml";
    public const string O = "urn:schemas-microsoft-com:office:office";
    public const string Aml = "http://schemas.microsoft.com/aml/2001/core";
}

/// <summary>The format's words for values the model names by enumeration.</summary>
internal static class WordMLValues
{
    public static string Align(ParagraphAlignment a) => a switch
    {
        ParagraphAlignment.Center => "center",
        ParagraphAlignment.Right => "right",
        ParagraphAlignment.Justify => "both",
        ParagraphAlignment.Distributed => "distribute",
        _ => "left",
    };

    public static ParagraphAlignment Align(string? v) => v switch
    {
        "center" => ParagraphAlignment.Center,
        "right" => ParagraphAlignment.Right,
        "both" => ParagraphAlignment.Justify,
        "distribute" => ParagraphAlignment.Distributed,
        _ => ParagraphAlignment.Left,
    };

    // The format's underline names are the later format's, except those it spells with hyphens.
    public static string Underline(Underline u) => u switch
    {
        Folio.Underline.DotDash => "dot-dash",
        Folio.Underline.DotDotDash => "dot-dot-dash",
        _ => Font.UnderlineToXml(u),
    };

    public static Underline Underline(string? v) => v switch
    {
        null or "" => Folio.Underline.Single,
        "dot-dash" => Folio.Underline.DotDash,
        "dot-dot-dash" => Folio.Underline.DotDotDash,
        _ => Font.UnderlineFromXml(v),
    };

    /// <summary>The model's number styles are the format's "nfc" codes.</summary>
    public static Folio.NumberStyle NumberStyle(int nfc) =>
        Enum.IsDefined((Folio.NumberStyle)nfc) ? (Folio.NumberStyle)nfc : Folio.NumberStyle.Arabic;

    public static bool On(string? v) => v is null or "on" or "1" or "true";

    public static int Twips(double pt) => (int)Math.Round(pt * 20);
}
