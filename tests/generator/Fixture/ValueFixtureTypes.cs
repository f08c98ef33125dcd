using System;
using System.IO;
using System.Text.RegularExpressions;

namespace Quorix.Folio
{
    /// <summary>Members whose values cross as Python's own types, by reference, or not at all.</summary>
    public class Stamp
    {
        public DateTime When { get; set; }
        public DateTime? Printed { get; set; }
        public DateTimeOffset Seen => default;
        public TimeSpan Span { get; set; }
        public Guid Id { get; set; }
        public Version? Release { get; set; }
        public decimal? Amount { get; set; }
        public static TimeSpan Grace { get; set; }

        public bool TryGet(string name, out object? value)
        {
            value = null;
            return false;
        }

        public void Shift(ref DateTime when, in TimeSpan by) { }
        public int Count(Regex pattern) => 0;
        public int Sum(System.Collections.IEnumerable items, System.Collections.IList into) => 0;
        public System.Collections.IList? Kept => null;
        public void Swap(ref Stream stream) { }

        public Regex? Pattern => null;
        public float? Ratio { get; set; }
    }
}
