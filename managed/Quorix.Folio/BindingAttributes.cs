[assembly: Quorix.Folio.RealsAreMeasures]

namespace Quorix.Folio;

// Value rules that the binding generator reads from this assembly's metadata, so that bad values
// are refused in Python with ValueError before a call reaches this library.

/// <summary>Every float and double of the public API is a measure: NaN and infinities are refused.</summary>
[AttributeUsage(AttributeTargets.Assembly)]
internal sealed class RealsAreMeasuresAttribute : Attribute { }

/// <summary>A limit or count that may not be negative; the setter also checks it for managed callers.</summary>
[AttributeUsage(AttributeTargets.Property)]
internal sealed class NonNegativeAttribute : Attribute { }

/// <summary>
/// The call does enough work (reading or writing a whole document) that a host running other
/// threads should let them run meanwhile; the library serialises such calls on one document.
/// </summary>
[AttributeUsage(AttributeTargets.Method | AttributeTargets.Constructor)]
internal sealed class LongRunningAttribute : Attribute { }

/// <summary>
/// Objects of the class belong to the document the named internal property gives, as nodes belong
/// to theirs: a host serialising its threads' use of a document covers calls on them too.
/// </summary>
[AttributeUsage(AttributeTargets.Class)]
internal sealed class OfDocumentAttribute(string member) : Attribute
{
    public string Member { get; } = member;
}
