using System;
using System.Collections.Generic;
using System.IO;

[assembly: Quorix.Folio.RealsAreMeasures]
// the stubs compiled by the generator's tests read the internal member OfDocument names
[assembly: System.Runtime.CompilerServices.InternalsVisibleTo("StubCheck")]

// Declared before their bases on purpose: the model must still place every class after its base.
namespace Quorix.Folio.Saving
{
    public class PdfSaveOptions : Quorix.Folio.SaveOptions
    {
        public PdfSaveOptions() { }
        public bool EmbedFullFonts { get; set; }
        public Quorix.Folio.Drawing.Charts.ChartType PreferredChart { get; set; }
    }
}

namespace Quorix.Folio
{
    /// <summary>A document: <see cref="Save(string)"/> writes it,
    /// <see cref="Quorix.Folio.Saving.PdfSaveOptions">as PDF too</see>.</summary>
    public class Document : DocumentBase
    {
        /// <summary>An empty document.</summary>
        public Document() { }
        [LongRunning]
        public Document(string fileName) { }
        public Document(Stream stream) { }
        public Document(string fileName, LoadOptions loadOptions) { }

        public Document Clone() => new Document();
        public override NodeType NodeType => NodeType.Document;

        /// <summary>Saves to <paramref name="fileName"/>; the format follows the extension.</summary>
        [LongRunning]
        public SaveOutputParameters Save(string fileName) => new SaveOutputParameters();
        /// <summary>Saves to a file in the given format.</summary>
        /// <remarks>Remarks are not carried.</remarks>
        public SaveOutputParameters Save(string fileName, SaveFormat saveFormat) => new SaveOutputParameters();
        public SaveOutputParameters Save(Stream stream, SaveFormat saveFormat) => new SaveOutputParameters();
        public SaveOutputParameters Save(int[] pages) => new SaveOutputParameters();
        public SaveOutputParameters Save(string fileName, SaveOptions saveOptions) => new SaveOutputParameters();

        /// <summary>
        ///   True for documents read from HTML.
        ///   <para>Says "yes" with <c>true</c>; backslashes \ and quotes """ survive.</para>
        /// </summary>
        public bool IsHTMLDocument => false;
        public string ToUTF8String() => "";
        public void Writeln(string text) { }
        public void Writeln() { }
        public void Load(byte[] data) { }
        public byte[] ToBytes() => Array.Empty<byte>();
        public static Document FromText(string text) => new Document();
        public Stream ToStream() => Stream.Null;
        public MemoryStream ToMemoryStream() => new MemoryStream();
        public void Import(Node node) { }

        public T Find<T>() where T : Node => throw new NotSupportedException();
        public void Touch(ref int count) { }
        public unsafe void Raw(byte* data) { }
        public int[] Counts() => Array.Empty<int>();
        public List<int> Numbers() => new List<int>();
        public string[] Names(IEnumerable<string> filter, object[] values, Node[] nodes) => Array.Empty<string>();
        public void Fill(IList<string> names) { }
        public IDictionary<string, string> Variables { get; } = new Dictionary<string, string>();
        public void Merge(IDictionary<string, string> values) { }
        public int[][] Grid() => Array.Empty<int[]>();
        public void Attach(Quorix.Other.Attachment attachment) { }
        public void Nest(Inner inner) { }
        public override string ToString() => "";
        public override bool Equals(object? obj) => false;
        public override int GetHashCode() => 0;
        public static bool operator ==(Document a, Document b) => false;
        public static bool operator !=(Document a, Document b) => true;

        public object? Tag { get; set; }
        public Action? Callback { get; set; }
        public string Title { get; init; } = "";
        public string Secret { set { } }
        public string this[int index] => "";
        public DateOnly Created { get; set; }
        public StyleIdentifier DefaultStyle { get; set; }
        public int Revision;
        public event EventHandler? Changed;

        public class Inner { }
    }

    public abstract class DocumentBase : Node
    {
        protected DocumentBase() { }
        public string GetText() => "";
        public Font DefaultFont { get; } = new Font();
    }

    public abstract class Node
    {
        protected Node() { }
        public Node Clone(bool isCloneChildren) => this;
        public abstract NodeType NodeType { get; }
        public Document? Document => null;
        public DocumentBase? GetChildNodes(NodeType nodeType, bool isDeep) => null;
        public DocumentBase? GetChildNodes() => null;
    }

    /// <summary>Item access by position and by name, iteration, an array and a read-only list.</summary>
    [OfDocument(nameof(Owner))]
    public class NodeList : IEnumerable<Node>
    {
        internal Document? Owner => null;
        public int Count => 0;
        public Node this[int index] { get => throw new ArgumentOutOfRangeException(nameof(index)); set { } }
        public Run? this[string name] { get => null; set { } }
        public void RemoveAt(int index) { }
        public bool Remove(string name) => false;
        public Node this[int row, int column] => throw new NotSupportedException();
        public Node[] ToArray() => Array.Empty<Node>();
        public IReadOnlyList<Run> Runs => Array.Empty<Run>();
        public IEnumerator<Node> GetEnumerator() => ((IEnumerable<Node>)ToArray()).GetEnumerator();
        System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
    }

    public class Run : Node
    {
        public Run(DocumentBase doc, string text) { }
        public override NodeType NodeType => NodeType.Run;
        public string Text { get; set; } = "";
        // parameter names that generated stubs also use for their own locals
        public void Apply(int self, int result, string target, bool e, Stream arg0) { }
    }

    public enum NodeType
    {
        Any = -1,
        Document = 0,
        Paragraph = 8,
        Run = 21,
    }

    public enum SaveFormat
    {
        Unknown = 0,
        /// <summary>Office Open XML.</summary>
        Docx = 20,
        HtmlFixed = 45,
        Pdf = 40,
        Text = 70,
    }

    [Flags]
    public enum GlyphFlags : uint
    {
        None = 0,
        UnsafeToBreak = 1,
        UnsafeToConcat = 2,
        SafeToInsertTatweel = 4,
        Defined = 7,
        High = 0x80000000,
    }

    public enum PaperSize : short
    {
        Custom = -1,
        A4 = 0,
        Letter = 1,
        Number10Envelope = 2,
    }

    public enum HugeEnum : long
    {
        Small = 1,
        Big = 1L << 40,
    }

    public enum StyleIdentifier
    {
        Normal = 0,
        Heading1 = 1,
        TOC9 = 27,
        User = 4094,
    }

    public sealed class SaveOutputParameters
    {
        internal SaveOutputParameters() { }
        public string ContentType => "";
    }

    public class SaveOptions
    {
        public SaveFormat SaveFormat { get; set; }
        public static SaveOptions CreateSaveOptions(SaveFormat saveFormat) => new SaveOptions();
        public static SaveOptions CreateSaveOptions(string fileName) => new SaveOptions();
    }

    public class LoadOptions
    {
        public LoadOptions() { }
        public LoadOptions(string password) { }
        public string? Password { get; set; }
        public System.Text.Encoding? Encoding { get; set; }
        public System.Globalization.CultureInfo Culture { get; set; } = System.Globalization.CultureInfo.InvariantCulture;
        public System.Drawing.Size GetSize(float scale) => default;
        public System.Drawing.RectangleF Bounds { get; set; }
        public void MoveTo(System.Drawing.Point point) { }
    }

    // The value rules are read by simple name; internal, so never bound themselves.
    [AttributeUsage(AttributeTargets.Assembly)]
    internal sealed class RealsAreMeasuresAttribute : Attribute { }

    [AttributeUsage(AttributeTargets.Property)]
    internal sealed class NonNegativeAttribute : Attribute { }

    [AttributeUsage(AttributeTargets.Method | AttributeTargets.Constructor)]
    internal sealed class LongRunningAttribute : Attribute { }

    [AttributeUsage(AttributeTargets.Class)]
    internal sealed class OfDocumentAttribute(string member) : Attribute
    {
        public string Member { get; } = member;
    }

    public class Font
    {
        public double Size { get; set; }
        public bool Bold { get; set; }
        public char Marker { get; set; }
        [NonNegative]
        public sbyte Kerning { get; set; }
        public byte Alpha { get; set; }
        public short Spacing { get; set; }
        public ushort Scale { get; set; }
        public uint Color { get; set; }
        public long Ticks { get; set; }
        public ulong Mask { get; set; }
        public float Position { get; set; }
        public string Name { get; set; } = "";
        public IntPtr Native { get; set; }
        public decimal Price { get; set; }
    }

    public sealed class ControlChar
    {
        private ControlChar() { }
        /// <summary>Ends a table cell.</summary>
        public const char CellChar = '\u0007';
        public const string CrLf = "\r\n";
        public static readonly string ParagraphBreak = "\r";
        public static int UsageCount;
        public static readonly object Sentinel = new object();
        internal const char FieldStartChar = '\u0013';
    }

    public static class Hyphenation
    {
        public static IHyphenationCallback? Callback { get; set; }
        public static int DictionaryCount => 0;
        public static void RegisterDictionary(string language, Stream stream) { }
        public static void RegisterDictionary(string language, string fileName) { }
        public static bool IsDictionaryRegistered(string language) => false;
    }

    public interface IHyphenationCallback
    {
        void RequestDictionary(string language);
        string Name { get; }
        static IHyphenationCallback? Default => null;
    }

    public struct Cluster
    {
        public Cluster(int start, int end) { Start = start; End = end; }
        public static string GetString(Cluster cluster) => "";
        public string GetString() => "";
        public int Start { get; }
        public int End { get; set; }
        public static implicit operator int(Cluster c) => c.Start;
    }

    // The instance form comes first here (Cluster has the static one first), and a static
    // GetType shares its Python name with the built-in get_type.
    public class Style
    {
        public string Describe() => "";
        public static string Describe(Style style) => "";
        public static string Describe(Style style, bool verbose) => "";
        public static Style? GetType(string name) => null;
    }

    public readonly struct PageRange
    {
        public PageRange() { }
        public PageRange(int from, int to) { }
        public int From => 0;
    }

    public class FolioException : Exception
    {
        public FolioException(string message) : base(message) { }
    }

    public delegate void NodeChangedHandler(Node node);

    public class Box<T>
    {
        public T? Value { get; set; }
    }
}

namespace Quorix.Folio.Drawing.Charts
{
    public enum ChartType
    {
        Area = 0,
        Bar3DClustered = 3,
        Pie = 12,
    }

    public class Chart
    {
        public ChartType Type { get; set; }
        public Quorix.Folio.Font? TitleFont { get; }
    }
}

namespace Quorix.Other
{
    public class Attachment { }
}

namespace Quorix.Folio.Values
{
    using System.Collections.Generic;

    /// <summary>Enumerations of values that are no bound objects: enumeration members, types, string pairs.</summary>
    public sealed class StyleSet : IEnumerable<StyleIdentifier>
    {
        public int Count => 0;
        public StyleIdentifier this[int index] => StyleIdentifier.Normal;
        public IEnumerator<StyleIdentifier> GetEnumerator() => new List<StyleIdentifier>().GetEnumerator();
        System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
    }

    public sealed class TypeSet : IEnumerable<Type>
    {
        public int Count => 0;
        public void Add(Type type) { }
        public Type? Find(string name) => null;
        public IEnumerator<Type> GetEnumerator() => new List<Type>().GetEnumerator();
        System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
    }

    public sealed class NameMap : IEnumerable<KeyValuePair<string, string>>
    {
        public int Count => 0;
        public string this[string name] { get => name; set { } }
        public IEnumerator<KeyValuePair<string, string>> GetEnumerator() => new Dictionary<string, string>().GetEnumerator();
        System.Collections.IEnumerator System.Collections.IEnumerable.GetEnumerator() => GetEnumerator();
    }
}
