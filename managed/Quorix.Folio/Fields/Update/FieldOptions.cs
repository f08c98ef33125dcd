using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>Where a field's culture comes from when it formats dates and numbers.</summary>
public enum FieldUpdateCultureSource
{
    /// <summary>The culture of the running thread.</summary>
    CurrentThread = 0,
    /// <summary>The language the field's own text is marked with; the thread's where none is.</summary>
    FieldCode = 1,
}

/// <summary>The person USERNAME, USERINITIALS and USERADDRESS show.</summary>
public sealed class UserInformation
{
    /// <summary>The user's name, which USERNAME fields show.</summary>
    public string Name { get; set; } = "";

    /// <summary>The user's initials, which USERINITIALS fields show.</summary>
    public string Initials { get; set; } = "";

    /// <summary>The user's postal address, which USERADDRESS fields show.</summary>
    public string Address { get; set; } = "";

    /// <summary>The user of documents whose field options name none.</summary>
    public static UserInformation DefaultUser { get; } = new();
}

/// <summary>Answers ASK and FILLIN fields while they are updated.</summary>
public interface IFieldUserPromptRespondent
{
    /// <summary>The answer to the prompt, or null to keep the default response.</summary>
    string? Respond(string promptText, string defaultResponse);
}

/// <summary>Draws the pictures of BARCODE and DISPLAYBARCODE fields in a way of the application's own.</summary>
public interface IBarcodeGenerator
{
    /// <summary>PNG (or other picture) bytes of the barcode; null keeps the field's result.</summary>
    byte[]? GetBarcodeImage(BarcodeParameters parameters);
}

/// <summary>What a barcode field asks for, its switches as the field writes them.</summary>
public sealed class BarcodeParameters
{
    /// <summary>Parameters with nothing set, for a generator's tests or the application's own drawing.</summary>
    public BarcodeParameters() { }

    /// <summary>The kind of barcode, such as "QR" or "CODE128"; empty for the postal bar code of BARCODE.</summary>
    public string BarcodeType { get; set; } = "";

    /// <summary>The value the barcode encodes.</summary>
    public string BarcodeValue { get; set; } = "";

    /// <summary>The height of a linear symbol's bars in twentieths of a point (the \h switch).</summary>
    public string? SymbolHeight { get; set; }

    /// <summary>The colour of the bars, 0xRRGGBB (the \f switch).</summary>
    public string? ForegroundColor { get; set; }

    /// <summary>The colour behind the bars, 0xRRGGBB (the \b switch).</summary>
    public string? BackgroundColor { get; set; }

    /// <summary>The size in percent of the normal size, 10 to 1000 (the \s switch).</summary>
    public string? ScalingFactor { get; set; }

    /// <summary>The QR error correction level, 0 (L) to 3 (H) (the \q switch).</summary>
    public string? ErrorCorrectionLevel { get; set; }

    /// <summary>Quarter turns clockwise, 0 to 3 (the \r switch).</summary>
    public string? SymbolRotation { get; set; }

    /// <summary>Whether the encoded text is printed under a linear symbol (the \t switch).</summary>
    public bool DisplayText { get; set; }

    /// <summary>Whether CODE39 start and stop characters are shown in the text (the \d switch).</summary>
    public bool AddStartStopChar { get; set; }

    /// <summary>Whether a check digit is added (the \x switch).</summary>
    public bool FixCheckDigit { get; set; }

    /// <summary>The style of a case code (the \c switch).</summary>
    public string? CaseCodeStyle { get; set; }

    /// <summary>The style of a point-of-sale code (the \p switch).</summary>
    public string? PosCodeStyle { get; set; }

    /// <summary>Of a BARCODE field: the postal address or the bookmark that holds it.</summary>
    public string? PostalAddress { get; set; }

    /// <summary>Of a BARCODE field: whether <see cref="PostalAddress"/> names a bookmark (the \b switch).</summary>
    public bool IsBookmark { get; set; }

    /// <summary>Of a BARCODE field: whether the address is a US postal address (the \u switch).</summary>
    public bool IsUSPostalAddress { get; set; }

    /// <summary>Of a BARCODE field: the facing identification mark, "A" or "C" (the \f switch).</summary>
    public string? FacingIdentificationMark { get; set; }
}

/// <summary>Settings that field update reads: the current user, culture, fixed time and helpers.</summary>
public sealed class FieldOptions
{
    /// <summary>The user that user fields show.</summary>
    public UserInformation CurrentUser { get; set; } = new();

    /// <summary>Whose culture formats field results: the field code's or the document's.</summary>
    public FieldUpdateCultureSource FieldUpdateCultureSource { get; set; }

    /// <summary>The culture for dates and numbers; the thread's when not set.</summary>
    public CultureInfo? FieldUpdateCulture { get; set; }

    /// <summary>Answers the questions of ASK and FILLIN fields; null leaves their defaults.</summary>
    public IFieldUserPromptRespondent? UserPromptRespondent { get; set; }

    /// <summary>Draws the pictures of barcode fields; when null, the engine draws QR, CODE128, CODE39
    /// and postal bar codes itself.</summary>
    public IBarcodeGenerator? BarcodeGenerator { get; set; }

    /// <summary>Told before and after each field is updated; none when null.</summary>
    public IFieldUpdatingCallback? FieldUpdatingCallback { get; set; }

    /// <summary>Told how an update of fields progresses; none when null.</summary>
    public IFieldUpdatingProgressCallback? FieldUpdatingProgressCallback { get; set; }

    /// <summary>The moment DATE and TIME show; the clock's when not set, so results can be reproduced.</summary>
    public DateTime? CurrentDateTime { get; set; }

    /// <summary>The file FILENAME and FILESIZE describe; the document's own when not set.</summary>
    public string? FileName { get; set; }

    /// <summary>Decides how INCLUDEPICTURE fields get their pictures; without one they are read from
    /// their paths, relative to the document's folder.</summary>
    public Loading.IResourceLoadingCallback? ResourceLoadingCallback { get; set; }

    /// <summary>The names of the categories of a table of authorities, which TOA fields show as headings.</summary>
    public ToaCategories ToaCategories { get; set; } = new();

    /// <summary>Whether INCLUDETEXT and INCLUDEPICTURE may read local files.</summary>
    public bool AllowIncludes { get; set; } = true;

    /// <summary>Values of DOCVARIABLE fields, by name.</summary>
    public IDictionary<string, string> DocumentVariables { get; } = new Dictionary<string, string>(StringComparer.OrdinalIgnoreCase);

    internal CultureInfo Culture => FieldUpdateCulture ?? CultureInfo.CurrentCulture;
}
