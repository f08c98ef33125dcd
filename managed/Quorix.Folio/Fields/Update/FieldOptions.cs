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

/// <summary>Draws BARCODE and DISPLAYBARCODE fields; without one, their results are kept.</summary>
public interface IBarcodeGenerator
{
    /// <summary>PNG bytes of the barcode.</summary>
    byte[] GetBarcodeImage(BarcodeParameters parameters);
}

/// <summary>What a barcode field asks for.</summary>
public sealed class BarcodeParameters
{
    /// <summary>The kind of barcode, such as "QR" or "CODE128".</summary>
    public string BarcodeType { get; set; } = "";

    /// <summary>The value the barcode encodes.</summary>
    public string BarcodeValue { get; set; } = "";

    /// <summary>The barcode's height, as the field gives it.</summary>
    public string? SymbolHeight { get; set; }

    /// <summary>The colour of the bars, as the field gives it.</summary>
    public string? ForegroundColor { get; set; }

    /// <summary>The colour behind the bars, as the field gives it.</summary>
    public string? BackgroundColor { get; set; }
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

    /// <summary>Draws the pictures of barcode fields; null leaves them as they are.</summary>
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
