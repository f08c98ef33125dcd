namespace Quorix.Folio;

/// <summary>The input is damaged: a broken archive, malformed XML, a missing part, or limits exceeded.</summary>
public class FileCorruptedException : Exception
{
    /// <summary>The error of a document too damaged to read.</summary>
    public FileCorruptedException() : base("The document appears to be corrupted and cannot be loaded.") { }
    /// <summary>The error of a document too damaged to read, with the given message.</summary>
    public FileCorruptedException(string message) : base(message) { }
    /// <summary>The damage described by message, caused by innerException.</summary>
    public FileCorruptedException(string message, Exception innerException) : base(message, innerException) { }
}

/// <summary>The input is not in a format the engine reads.</summary>
public class UnsupportedFileFormatException : Exception
{
    /// <summary>The error of a file whose format the engine does not read or write.</summary>
    public UnsupportedFileFormatException() : base("The file format is not supported.") { }
    /// <summary>The error of an unsupported format, with the given message.</summary>
    public UnsupportedFileFormatException(string message) : base(message) { }
}

/// <summary>The document is encrypted and no (or a wrong) password was given.</summary>
public class IncorrectPasswordException : Exception
{
    /// <summary>The error of a wrong or missing password for an encrypted document.</summary>
    public IncorrectPasswordException() : base("The document password is incorrect.") { }
    /// <summary>The error of a wrong password, with the given message.</summary>
    public IncorrectPasswordException(string message) : base(message) { }
}

/// <summary>The document is encrypted with a scheme the engine cannot open.</summary>
public class UnsupportedEncryptionException : Exception
{
    /// <summary>The error of a document encrypted in a way the engine cannot decrypt.</summary>
    public UnsupportedEncryptionException() : base("The encryption of the document is not supported.") { }
    /// <summary>The error of an unsupported encryption, with the given message.</summary>
    public UnsupportedEncryptionException(string message) : base(message) { }
}
