using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Drawing;

/// <summary>The file format of a picture.</summary>
public enum ImageType
{
    /// <summary>No picture.</summary>
    NoImage = 0,
    /// <summary>A picture in a format the engine does not recognise.</summary>
    Unknown = 1,
    /// <summary>Enhanced Windows metafile.</summary>
    Emf = 2,
    /// <summary>Windows metafile.</summary>
    Wmf = 3,
    /// <summary>Macintosh PICT.</summary>
    Pict = 4,
    /// <summary>JPEG.</summary>
    Jpeg = 5,
    /// <summary>PNG.</summary>
    Png = 6,
    /// <summary>Windows bitmap.</summary>
    Bmp = 7,
    /// <summary>GIF.</summary>
    Gif = 8,
    /// <summary>TIFF.</summary>
    Tiff = 9,
    /// <summary>SVG vector drawing.</summary>
    Svg = 10,
}

/// <summary>Base of drawing objects placed in the text.</summary>
public abstract class ShapeBase : CompositeNode, IRunFormatted
{
    internal FormatProps RPr = FormatProps.None;

    AttrSet IRunFormatted.RunAttrs { get => RPr.Attrs; set => RPr = RPr with { Attrs = value }; }

    PropBag? IRunFormatted.RunKept(bool create) => FormatProps.KeptOf(ref RPr, create);

    private protected ShapeBase(DocumentBase? doc) : base(doc) { }

    /// <summary>The paragraph the shape is anchored in.</summary>
    public Paragraph? ParentParagraph => parent as Paragraph;

    /// <summary>The character formatting of the shape's anchor in the text.</summary>
    public Font Font => new Font(this, doc);

    internal override bool CanHold(Node child) => false;
}

/// <summary>An inline picture. Other drawings are kept as read but not modelled.</summary>
public sealed class Shape : ShapeBase
{
    private double width;
    private double height;
    internal readonly ImageData imageData;
    // The drawing as read; written back unchanged while picture and size are untouched.
    internal string? RawXml;
    internal string? RelId;

    /// <summary>An empty shape for doc, to be given a picture and inserted into a paragraph.</summary>
    public Shape(DocumentBase doc) : base(doc) { imageData = new ImageData(this); }

    /// <summary>Always Shape.</summary>
    public override NodeType NodeType => NodeType.Shape;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Shape>(visitor, visitor.VisitShapeStart(this), static (v, n) => v.VisitShapeEnd(n));

    /// <summary>The shape's picture: its bytes, format and the means to replace it.</summary>
    public ImageData ImageData => imageData;

    /// <summary>Whether the shape holds a picture.</summary>
    public bool HasImage => imageData.HasImage;

    /// <summary>Size in points.</summary>
    public double Width
    {
        get => width;
        set
        {
            Units.CheckRange(value, 0, 22000, nameof(value));
            width = value;
            RawXml = null;
        }
    }

    /// <summary>The shape's height, in points.</summary>
    public double Height
    {
        get => height;
        set
        {
            Units.CheckRange(value, 0, 22000, nameof(value));
            height = value;
            RawXml = null;
        }
    }

    /// <summary>The description read out in place of the picture, for accessibility.</summary>
    public string AlternativeText { get; set; } = "";

    /// <summary>Set on a picture placed behind the text, centred on the page, as a watermark.</summary>
    internal WatermarkLook? Watermark;

    /// <summary>The shape's title, shown with its alternative text.</summary>
    public string Title { get; set; } = "";

    internal void SetSizeNoReset(double w, double h)
    {
        width = w;
        height = h;
    }

    // A text box: the drawing as read, cut where the box's content stood (a drawing may carry the
    // content twice, once for readers of each drawing vocabulary). The content is the shape's children.
    internal string[]? TextBoxFrame;

    /// <summary>Whether the shape is a text box, whose paragraphs and tables are its children.</summary>
    public bool IsTextBox => TextBoxFrame != null;

    internal override bool CanHold(Node child) => TextBoxFrame != null && BlockRules.IsBlock(child);

    // A text box's text belongs to the paragraph it stands in, as a reader of the page sees it.
    /// <summary>The text of the shape's text box; empty for a picture.</summary>
    public override string GetText() => TextBoxFrame != null ? base.GetText() : "";

    internal override void AppendText(TextSink sb)
    {
        if (TextBoxFrame != null) base.AppendText(sb);
    }

    internal override Node CloneTo(DocumentBase? target, bool deep)
    {
        var s = new Shape(target!)
        {
            width = width,
            height = height,
            AlternativeText = AlternativeText,
            Title = Title,
            RPr = RPr.Clone(),
            Watermark = Watermark,
        };
        s.imageData.CopyFrom(imageData);
        // The raw drawing names a relationship of this document only.
        if (target?.SharesPackageWith(doc) == true) { s.RawXml = RawXml; s.RelId = RelId; }
        // A text box's frame travels unless it names relationships of this document's package.
        if (target?.SharesPackageWith(doc) == true || TextBoxFrame?.Any(f => f.Contains(" r:", StringComparison.Ordinal)) == false)
            s.TextBoxFrame = TextBoxFrame;
        if (deep && s.TextBoxFrame != null) CloneChildrenInto(s, target);
        return s;
    }
}

internal enum WatermarkLook { Plain, Washout }

/// <summary>The picture of a shape.</summary>
public sealed class ImageData
{
    private readonly Shape owner;
    private byte[]? bytes;

    internal ImageData(Shape owner) { this.owner = owner; }

    internal void CopyFrom(ImageData other) => bytes = other.bytes;

    internal void Load(byte[] data) => bytes = data;

    /// <summary>Whether there is a picture.</summary>
    public bool HasImage => bytes != null && bytes.Length > 0;

    /// <summary>The picture's file bytes; None when there is no picture.</summary>
    public byte[]? ImageBytes
    {
        get => bytes;
        set => SetImage(value ?? Array.Empty<byte>());
    }

    /// <summary>The picture's format, told from its bytes.</summary>
    public ImageType ImageType => ImageInfo.Detect(bytes).Type;

    /// <summary>Replaces the picture with the one in those bytes.</summary>
    public void SetImage(byte[] imageBytes)
    {
        ArgumentNullException.ThrowIfNull(imageBytes);
        bytes = imageBytes;
        owner.RawXml = null;
        owner.RelId = null;
    }

    /// <summary>Replaces the picture with the one read from stream.</summary>
    public void SetImage(Stream stream)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        SetImage(ms.ToArray());
    }

    /// <summary>Replaces the picture with the one of that file.</summary>
    public void SetImage(string fileName) => SetImage(File.ReadAllBytes(fileName));

    /// <summary>Writes the picture, as stored, to that file.</summary>
    public void Save(string fileName) => File.WriteAllBytes(fileName, bytes ?? throw new InvalidOperationException("The shape has no image."));

    /// <summary>Writes the picture, as stored, to stream.</summary>
    public void Save(Stream stream) => stream.Write(bytes ?? throw new InvalidOperationException("The shape has no image."));

    /// <summary>The image's bytes as a new read-only stream.</summary>
    public Stream ToStream() => new MemoryStream(bytes ?? throw new InvalidOperationException("The shape has no image."), writable: false);

    /// <summary>A copy of the image's bytes.</summary>
    public byte[] ToByteArray() => (byte[])(bytes ?? throw new InvalidOperationException("The shape has no image.")).Clone();
}
