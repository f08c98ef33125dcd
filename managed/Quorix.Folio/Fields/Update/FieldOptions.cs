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
    public string Name { get; set; } = "";

    public string Initials { get; set; } = "";

    public string Address { get; set; } = "";

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
    public string BarcodeType { get; set; } = "";

    public string BarcodeValue { get; set; } = "";

    public string? SymbolHeight { get; set; }

    public string? ForegroundColor { get; set; }

    public string? BackgroundColor { get; set; }
}

/// <summary>Settings that field update reads: the current user, culture, fixed time and helpers.</summary>
public sealed class FieldOptions
{
    public UserInformation CurrentUser { get; set; } = new();

    public FieldUpdateCultureSource FieldUpdateCultureSource { get; set; }

    /// <summary>The culture for dates and numbers; the thread's when not set.</summary>
    public CultureInfo? FieldUpdateCulture { get; set; }

    public IFieldUserPromptRespondent? UserPromptRespondent { get; set; }

    public IBarcodeGenerator? BarcodeGenerator { get; set; }

    /// <summary>Told before and after each field is updated; none when null.</summary>
    public IFieldUpdatingCallback? FieldUpdatingCallback { get; set; }

    /// <summary>Told how an update of fields progresses; none when null.</summary>
    public IFieldUpdatingProgressCallback? FieldUpdatingProgressCallback { get; set; }

    /// <summary>The moment DATE and TIME show; the clock's when not set, so results can be reproduced.</summary>
    public DateTime? CurrentDateTime { get; set; }

    /// <summary>The file FILENAME and FILESIZE describe; the document's own when not set.</summary>
    public string? FileName { get; set; }

    /// <summary>Whether INCLUDETEXT and INCLUDEPICTURE may read local files.</summary>
    public bool AllowIncludes { get; set; } = true;

    /// <summary>Values of DOCVARIABLE fields, by name.</summary>
    public IDictionary<string, string> DocumentVariables { get; } = new Dictionary<string, string>(StringComparer.OrdinalIgnoreCase);

    internal CultureInfo Culture => FieldUpdateCulture ?? CultureInfo.CurrentCulture;
}
