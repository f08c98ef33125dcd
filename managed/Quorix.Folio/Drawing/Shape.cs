using System.Text;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Drawing;

public enum ImageType
{
    NoImage = 0,
    Unknown = 1,
    Emf = 2,
    Wmf = 3,
    Pict = 4,
    Jpeg = 5,
    Png = 6,
    Bmp = 7,
    Gif = 8,
    Tiff = 9,
    Svg = 10,
}

/// <summary>Base of drawing objects placed in the text.</summary>
public abstract class ShapeBase : CompositeNode, IRunFormatted
{
    internal FormatProps RPr = FormatProps.None;

    AttrSet IRunFormatted.RunAttrs { get => RPr.Attrs; set => RPr = RPr with { Attrs = value }; }

    PropBag? IRunFormatted.RunKept(bool create) => FormatProps.KeptOf(ref RPr, create);

    private protected ShapeBase(DocumentBase? doc) : base(doc) { }

    public Paragraph? ParentParagraph => parent as Paragraph;

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

    public Shape(DocumentBase doc) : base(doc) { imageData = new ImageData(this); }

    public override NodeType NodeType => NodeType.Shape;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) =>
        Walk<Shape>(visitor, visitor.VisitShapeStart(this), static (v, n) => v.VisitShapeEnd(n));

    public ImageData ImageData => imageData;

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

    public string AlternativeText { get; set; } = "";

    /// <summary>Set on a picture placed behind the text, centred on the page, as a watermark.</summary>
    internal WatermarkLook? Watermark;

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
    public override string GetText() => TextBoxFrame != null ? base.GetText() : "";

    internal override void AppendText(StringBuilder sb)
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

    public bool HasImage => bytes != null && bytes.Length > 0;

    public byte[]? ImageBytes
    {
        get => bytes;
        set => SetImage(value ?? Array.Empty<byte>());
    }

    public ImageType ImageType => ImageInfo.Detect(bytes).Type;

    public void SetImage(byte[] imageBytes)
    {
        ArgumentNullException.ThrowIfNull(imageBytes);
        bytes = imageBytes;
        owner.RawXml = null;
        owner.RelId = null;
    }

    public void SetImage(Stream stream)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        SetImage(ms.ToArray());
    }

    public void SetImage(string fileName) => SetImage(File.ReadAllBytes(fileName));

    public void Save(string fileName) => File.WriteAllBytes(fileName, bytes ?? throw new InvalidOperationException("The shape has no image."));

    public void Save(Stream stream) => stream.Write(bytes ?? throw new InvalidOperationException("The shape has no image."));

    /// <summary>The image's bytes as a new read-only stream.</summary>
    public Stream ToStream() => new MemoryStream(bytes ?? throw new InvalidOperationException("The shape has no image."), writable: false);

    /// <summary>A copy of the image's bytes.</summary>
    public byte[] ToByteArray() => (byte[])(bytes ?? throw new InvalidOperationException("The shape has no image.")).Clone();
}
