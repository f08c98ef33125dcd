namespace Quorix.Folio;

/// <summary>The input is damaged: a broken archive, malformed XML, a missing part, or limits exceeded.</summary>
public class FileCorruptedException : Exception
{
    public FileCorruptedException() : base("The document appears to be corrupted and cannot be loaded.") { }
    public FileCorruptedException(string message) : base(message) { }
    public FileCorruptedException(string message, Exception innerException) : base(message, innerException) { }
}

/// <summary>The input is not in a format the engine reads.</summary>
public class UnsupportedFileFormatException : Exception
{
    public UnsupportedFileFormatException() : base("The file format is not supported.") { }
    public UnsupportedFileFormatException(string message) : base(message) { }
}

/// <summary>The document is encrypted and no (or a wrong) password was given.</summary>
public class IncorrectPasswordException : Exception
{
    public IncorrectPasswordException() : base("The document password is incorrect.") { }
    public IncorrectPasswordException(string message) : base(message) { }
}

/// <summary>The document is encrypted with a scheme the engine cannot open.</summary>
public class UnsupportedEncryptionException : Exception
{
    public UnsupportedEncryptionException() : base("The encryption of the document is not supported.") { }
    public UnsupportedEncryptionException(string message) : base(message) { }
}
