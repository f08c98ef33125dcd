namespace Quorix.Folio.Properties;

/// <summary>The kind of value a document property holds.</summary>
public enum PropertyType
{
    Boolean = 0,
    DateTime = 1,
    Double = 2,
    Number = 3,
    String = 4,
    StringArray = 5,
    ByteArray = 6,
    Decimal = 7,
    Other = 8,
}

/// <summary>The protection a document asks its editors to apply (the extended property DocSecurity).</summary>
[Flags]
public enum DocumentSecurity
{
    None = 0,
    PasswordProtected = 1,
    ReadOnlyRecommended = 2,
    ReadOnlyEnforced = 4,
    ReadOnlyExceptAnnotations = 8,
}
