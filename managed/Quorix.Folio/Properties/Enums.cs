namespace Quorix.Folio.Properties;

/// <summary>The kind of value a document property holds.</summary>
public enum PropertyType
{
    /// <summary>A true or false value.</summary>
    Boolean = 0,
    /// <summary>A date and time.</summary>
    DateTime = 1,
    /// <summary>A floating-point number.</summary>
    Double = 2,
    /// <summary>A whole number.</summary>
    Number = 3,
    /// <summary>Text.</summary>
    String = 4,
    /// <summary>A list of texts.</summary>
    StringArray = 5,
    /// <summary>Raw bytes.</summary>
    ByteArray = 6,
    /// <summary>A decimal number.</summary>
    Decimal = 7,
    /// <summary>A value of another kind, kept as read.</summary>
    Other = 8,
}

/// <summary>The protection a document asks its editors to apply (the extended property DocSecurity).</summary>
[Flags]
public enum DocumentSecurity
{
    /// <summary>No protection asked for.</summary>
    None = 0,
    /// <summary>The document is protected by a password.</summary>
    PasswordProtected = 1,
    /// <summary>Readers are advised to open the document read-only.</summary>
    ReadOnlyRecommended = 2,
    /// <summary>The document is meant to be opened read-only.</summary>
    ReadOnlyEnforced = 4,
    /// <summary>Only comments may be added to the document.</summary>
    ReadOnlyExceptAnnotations = 8,
}
