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
