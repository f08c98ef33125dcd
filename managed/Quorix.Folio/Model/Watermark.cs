using System.Globalization;
using System.Security;
using Quorix.Folio.Drawing;

namespace Quorix.Folio;

/// <summary>What kind of watermark a document has.</summary>
public enum WatermarkType
{
    /// <summary>Text, such as DRAFT, behind the page's text.</summary>
    Text = 0,
    /// <summary>A picture behind the page's text.</summary>
    Image = 1,
    /// <summary>No watermark.</summary>
    None = 2,
}

/// <summary>How a text watermark looks; a size of 0 lets the text fill the page's width.</summary>
public sealed class TextWatermarkOptions
{
    private string fontFamily = "Calibri";
    private double fontSize;
    private string colorHex = "C0C0C0";

    /// <summary>The font the watermark text is drawn in.</summary>
    public string FontFamily
    {
        get => fontFamily;
        set
        {
            ArgumentException.ThrowIfNullOrEmpty(value);
            fontFamily = value;
        }
    }

    /// <summary>Size in points, 0 for automatic.</summary>
    public double FontSize
    {
        get => fontSize;
        set
        {
            if (value != 0) Formatting.Units.CheckRange(value, 1, 1638, nameof(value));
            fontSize = value;
        }
    }

    /// <summary>Colour as six hexadecimal digits.</summary>
    public string ColorHex
    {
        get => colorHex;
        set
        {
            if (value is not { Length: 6 } || !int.TryParse(value, NumberStyles.HexNumber, CultureInfo.InvariantCulture, out _))
                throw new ArgumentException("The colour must be six hexadecimal digits.", nameof(value));
            colorHex = value.ToUpperInvariant();
        }
    }

    /// <summary>Whether the watermark text runs level or diagonally.</summary>
    public WatermarkLayout Layout { get; set; } = WatermarkLayout.Diagonal;

    /// <summary>Whether the text is drawn half transparent, so that the page's text stays readable.</summary>
    public bool IsSemitransparent { get; set; } = true;
}

/// <summary>How an image watermark looks; a scale of 0 fits the picture to the page's text area.</summary>
public sealed class ImageWatermarkOptions
{
    private double scale;

    /// <summary>The picture's size as a multiple of its own; 0 fits it to the page.</summary>
    public double Scale
    {
        get => scale;
        set
        {
            if (value != 0) Formatting.Units.CheckRange(value, 0.01, 65.5, nameof(value));
            scale = value;
        }
    }

    /// <summary>Whether the picture is faded so that the text over it stays readable.</summary>
    public bool IsWashout { get; set; } = true;
}

/// <summary>Text or a picture behind the text of every page: a shape in each section's headers,
/// written the way word processors write their own watermarks so that they show and edit it as one.</summary>
public sealed class Watermark
{
    // Names word processors give their watermark shapes, by which they (and we) find them again.
    internal const string TextShapeId = "PowerPlusWaterMarkObject";
    internal const string PictureName = "WordPictureWatermark";

    private readonly Document doc;

    internal Watermark(Document doc) { this.doc = doc; }

    /// <summary>Which kind of watermark the document has, if any.</summary>
    public WatermarkType Type
    {
        get
        {
            foreach (var n in Marks())
                return n is OpaqueNode o && o.Xml.Contains(TextShapeId, StringComparison.Ordinal) ? WatermarkType.Text : WatermarkType.Image;
            return WatermarkType.None;
        }
    }

    /// <summary>Puts that text behind the text of every page, with default font, size and colour.</summary>
    public void SetText(string text) => SetText(text, null);

    /// <summary>Puts that text behind the text of every page, drawn as options say.</summary>
    public void SetText(string text, TextWatermarkOptions? options)
    {
        ArgumentException.ThrowIfNullOrEmpty(text);
        if (text.Length > 200) throw new ArgumentOutOfRangeException(nameof(text), "A watermark's text is at most 200 characters long.");
        var o = options ?? new TextWatermarkOptions();
        Remove();
        int n = 0;
        foreach (var (header, ps) in Headers())
        {
            double textWidth = Math.Max(36, ps.PageWidth - ps.LeftMargin - ps.RightMargin);
            // Automatic size: the text spans the text area's width; letters are about half as wide as high.
            double height = o.FontSize > 0 ? o.FontSize : Math.Min(textWidth / text.Length * 1.6, textWidth / 2);
            double width = o.FontSize > 0 ? o.FontSize * 0.55 * text.Length : textWidth;
            var xml = TextShape(text, o, width, height, ++n);
            // Kept markup is linked, not appended: the public tree edits refuse nodes the engine does not model.
            Anchor(header).LinkLast(new OpaqueNode(doc, OpaqueKind.RunContent, xml, null, ""));
        }
        doc.Changed();
    }

    /// <summary>Puts the picture in those bytes behind the text of every page.</summary>
    public void SetImage(byte[] imageBytes) => SetImage(imageBytes, null);

    /// <summary>Puts the picture in those bytes behind the text of every page, sized as options say.</summary>
    public void SetImage(byte[] imageBytes, ImageWatermarkOptions? options)
    {
        ArgumentNullException.ThrowIfNull(imageBytes);
        var info = ImageInfo.Detect(imageBytes);
        if (info.Type is ImageType.NoImage or ImageType.Unknown)
            throw new ArgumentException("The data is not an image in a known format.", nameof(imageBytes));
        var o = options ?? new ImageWatermarkOptions();
        Remove();
        foreach (var (header, ps) in Headers())
        {
            double w = info.Width > 0 ? info.Width * 0.75 : 100, h = info.Height > 0 ? info.Height * 0.75 : 100;
            double factor = o.Scale;
            if (factor == 0)
            {
                double textWidth = Math.Max(36, ps.PageWidth - ps.LeftMargin - ps.RightMargin);
                double textHeight = Math.Max(36, ps.PageHeight - ps.TopMargin - ps.BottomMargin);
                factor = Math.Min(textWidth / w, textHeight / h);
            }
            var shape = new Shape(doc) { Watermark = o.IsWashout ? WatermarkLook.Washout : WatermarkLook.Plain };
            shape.ImageData.SetImage(imageBytes);
            shape.Width = Math.Min(22000, w * factor);
            shape.Height = Math.Min(22000, h * factor);
            Anchor(header).AppendChild(shape);
        }
        doc.Changed();
    }

    /// <summary>Puts the picture read from stream behind the text of every page.</summary>
    public void SetImage(Stream stream) => SetImage(stream, null);

    /// <summary>Puts the picture read from stream behind the text of every page, sized as options say.</summary>
    public void SetImage(Stream stream, ImageWatermarkOptions? options)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        SetImage(ms.ToArray(), options);
    }

    /// <summary>Puts the picture of that file behind the text of every page.</summary>
    public void SetImage(string fileName) => SetImage(fileName, null);

    /// <summary>Puts the picture of that file behind the text of every page, sized as options say.</summary>
    public void SetImage(string fileName, ImageWatermarkOptions? options) => SetImage(File.ReadAllBytes(fileName), options);

    /// <summary>Takes the watermark away from every header; does nothing when there is none.</summary>
    public void Remove()
    {
        var marks = Marks().ToList();
        foreach (var m in marks) m.Remove();
        if (marks.Count > 0) doc.Changed();
    }

    // Every header a page can show: the primary one of each section, made when missing, and the
    // first-page and even-page ones the section has.
    private IEnumerable<(HeaderFooter Header, PageSetup PageSetup)> Headers()
    {
        foreach (var s in doc.Sections.ToArray())
        {
            if (s.HeadersFooters[HeaderFooterType.HeaderPrimary] == null)
            {
                var hf = new HeaderFooter(doc, HeaderFooterType.HeaderPrimary);
                s.AppendChild(hf);
            }
            foreach (var type in new[] { HeaderFooterType.HeaderPrimary, HeaderFooterType.HeaderFirst, HeaderFooterType.HeaderEven })
                if (s.HeadersFooters[type] is { } h) yield return (h, s.PageSetup);
        }
    }

    private Paragraph Anchor(HeaderFooter header)
    {
        if (header.FirstChild is Paragraph p) return p;
        p = new Paragraph(doc);
        header.InsertBefore(p, header.FirstChild);
        return p;
    }

    private IEnumerable<Node> Marks()
    {
        foreach (var s in doc.Sections.ToArray())
            foreach (var hf in s.HeadersFooters.ToArray())
                if (hf.IsHeader)
                    for (Node? n = hf.FirstChild; n != null; n = n.NextPreOrder(hf))
                        if (IsMark(n)) yield return n;
    }

    private static bool IsMark(Node n) => n switch
    {
        OpaqueNode o => o.Xml.Contains(TextShapeId, StringComparison.Ordinal) || o.Xml.Contains(PictureName, StringComparison.Ordinal),
        Shape s => IsPicture(s),
        _ => false,
    };

    /// <summary>Whether the shape is a watermark picture, set here or read from a document.</summary>
    internal static bool IsPicture(Shape s) => s.Watermark != null || s.RawXml?.Contains(PictureName, StringComparison.Ordinal) == true;

    /// <summary>Whether a watermark picture is faded: set so, or read with the brightness change that fades it.</summary>
    internal static bool IsWashedOut(Shape s) =>
        s.Watermark == WatermarkLook.Washout || s.Watermark == null && s.RawXml?.Contains(":lum ", StringComparison.Ordinal) == true;

    private static string Num(double v) => v.ToString("0.##", CultureInfo.InvariantCulture);

    /// <summary>Word art along a text path, centred on the page's margins, behind the text.</summary>
    internal static string TextShape(string text, TextWatermarkOptions o, double width, double height, int n)
    {
        var style = $"position:absolute;margin-left:0;margin-top:0;width:{Num(width)}pt;height:{Num(height)}pt;" +
                    (o.Layout == WatermarkLayout.Diagonal ? "rotation:315;" : "") +
                    "z-index:-251657216;mso-position-horizontal:center;mso-position-horizontal-relative:margin;" +
                    "mso-position-vertical:center;mso-position-vertical-relative:margin";
        var font = SecurityElement.Escape(o.FontFamily)!.Replace("\"", "&quot;");
        return "<w:pict xmlns:v=\"urn:schemas-microsoft-com:vml\" xmlns:o=\"urn:schemas-microsoft-com:office:office\" xmlns:w10=\"urn:schemas-microsoft-com:office:word\">" +
               "<v:shapetype id=\"_x0000_t136\" coordsize=\"21600,21600\" o:spt=\"136\" adj=\"10800\" path=\"m@7,l@8,m@5,21600l@6,21600e\">" +
               "<v:formulas><v:f eqn=\"sum #0 0 10800\"/><v:f eqn=\"prod #0 2 1\"/><v:f eqn=\"sum 21600 0 @1\"/><v:f eqn=\"sum 0 0 @2\"/>" +
               "<v:f eqn=\"sum 21600 0 @3\"/><v:f eqn=\"if @0 @3 0\"/><v:f eqn=\"if @0 21600 @1\"/><v:f eqn=\"if @0 0 @2\"/>" +
               "<v:f eqn=\"if @0 @4 21600\"/><v:f eqn=\"mid @5 @6\"/><v:f eqn=\"mid @8 @5\"/><v:f eqn=\"mid @7 @8\"/>" +
               "<v:f eqn=\"mid @6 @7\"/><v:f eqn=\"sum @6 0 @5\"/></v:formulas>" +
               "<v:path textpathok=\"t\" o:connecttype=\"custom\" o:connectlocs=\"@9,0;@10,10800;@11,21600;@12,10800\" o:connectangles=\"270,180,90,0\"/>" +
               "<v:textpath on=\"t\" fitshape=\"t\"/><o:lock v:ext=\"edit\" text=\"t\" shapetype=\"t\"/></v:shapetype>" +
               $"<v:shape id=\"{TextShapeId}{n}\" o:spid=\"_x0000_s{2048 + n}\" type=\"#_x0000_t136\" style=\"{style}\" o:allowincell=\"f\" fillcolor=\"#{o.ColorHex}\" stroked=\"f\">" +
               (o.IsSemitransparent ? "<v:fill opacity=\".5\"/>" : "") +
               $"<v:textpath style=\"font-family:&quot;{font}&quot;;font-size:{(o.FontSize > 0 ? Num(o.FontSize) : "1")}pt\" string=\"{SecurityElement.Escape(text)}\"/>" +
               "<w10:wrap anchorx=\"margin\" anchory=\"margin\"/></v:shape></w:pict>";
    }
}
