using Quorix.Folio.Drawing;

namespace Quorix.Folio.Fields;

/// <summary>DISPLAYBARCODE: a barcode of a value, drawn by the field options' barcode generator or by
/// the engine (QR, CODE128, CODE39); a value or type that cannot be drawn keeps the old result and is
/// reported as a warning.</summary>
public sealed class FieldDisplayBarcode : Field
{
    internal FieldDisplayBarcode() { }

    private protected override string[] ArgSwitches => new[] { "\\b", "\\c", "\\f", "\\h", "\\p", "\\q", "\\r", "\\s" };

    /// <summary>The value encoded.</summary>
    public string? BarcodeValue { get => Argument(0); set => Argument(0, value); }

    /// <summary>The kind of barcode, such as "QR" or "CODE128".</summary>
    public string? BarcodeType { get => Argument(1); set => Argument(1, value); }

    /// <summary>The height of the bars in twentieths of a point (the \h switch).</summary>
    public string? SymbolHeight { get => SwitchText("\\h"); set => SwitchText("\\h", value); }

    /// <summary>The size in percent of the normal size (the \s switch).</summary>
    public string? ScalingFactor { get => SwitchText("\\s"); set => SwitchText("\\s", value); }

    /// <summary>The QR error correction level, 0 to 3 (the \q switch).</summary>
    public string? ErrorCorrectionLevel { get => SwitchText("\\q"); set => SwitchText("\\q", value); }

    /// <summary>The colour of the bars (the \f switch).</summary>
    public string? ForegroundColor { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    /// <summary>The colour behind the bars (the \b switch).</summary>
    public string? BackgroundColor { get => SwitchText("\\b"); set => SwitchText("\\b", value); }

    /// <summary>Quarter turns clockwise, 0 to 3 (the \r switch).</summary>
    public string? SymbolRotation { get => SwitchText("\\r"); set => SwitchText("\\r", value); }

    /// <summary>The style of a point-of-sale code (the \p switch).</summary>
    public string? PosCodeStyle { get => SwitchText("\\p"); set => SwitchText("\\p", value); }

    /// <summary>The style of a case code (the \c switch).</summary>
    public string? CaseCodeStyle { get => SwitchText("\\c"); set => SwitchText("\\c", value); }

    /// <summary>Whether the value is printed under the bars (the \t switch).</summary>
    public bool DisplayText { get => Flag("\\t"); set => Flag("\\t", value); }

    /// <summary>Whether CODE39 start and stop characters are shown (the \d switch).</summary>
    public bool AddStartStopChar { get => Flag("\\d"); set => Flag("\\d", value); }

    /// <summary>Whether a check digit is added (the \x switch).</summary>
    public bool FixCheckDigit { get => Flag("\\x"); set => Flag("\\x", value); }

    internal override bool WritesOwnResult => true;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var c = ParseCode();
        var p = new BarcodeParameters
        {
            BarcodeValue = c.Arg(0), BarcodeType = c.Arg(1), SymbolHeight = c.Get("\\h"), ScalingFactor = c.Get("\\s"),
            ErrorCorrectionLevel = c.Get("\\q"), ForegroundColor = c.Get("\\f"), BackgroundColor = c.Get("\\b"),
            SymbolRotation = c.Get("\\r"), PosCodeStyle = c.Get("\\p"), CaseCodeStyle = c.Get("\\c"),
            DisplayText = c.Has("\\t"), AddStartStopChar = c.Has("\\d"), FixCheckDigit = c.Has("\\x"),
        };
        if (p.BarcodeType.Length == 0) throw Barcodes.Refuse(ctx, this, "it names no barcode type");
        return Barcodes.Draw(this, p, ctx);
    }
}

/// <summary>BARCODE: the US postal bar code of a ZIP code, given or held by a bookmark (\b).</summary>
public sealed class FieldBarcode : Field
{
    internal FieldBarcode() { }

    private protected override string[] ArgSwitches => new[] { "\\f" };

    /// <summary>The postal address, or the name of the bookmark that holds it.</summary>
    public string? PostalAddress { get => Argument(0); set => Argument(0, value); }

    /// <summary>Whether <see cref="PostalAddress"/> names a bookmark (the \b switch).</summary>
    public bool IsBookmark { get => Flag("\\b"); set => Flag("\\b", value); }

    /// <summary>Whether the address is a US postal address (the \u switch).</summary>
    public bool IsUSPostalAddress { get => Flag("\\u"); set => Flag("\\u", value); }

    /// <summary>The facing identification mark, "A" or "C" (the \f switch).</summary>
    public string? FacingIdentificationMark { get => SwitchText("\\f"); set => SwitchText("\\f", value); }

    internal override bool WritesOwnResult => true;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var c = ParseCode();
        var address = c.Arg(0);
        var value = c.Has("\\b") ? ctx.Bookmark(address) ?? throw Barcodes.Refuse(ctx, this, $"the bookmark \"{address}\" does not exist") : address;
        // The ZIP code is the last group of digits (with its hyphen) of the address.
        var zip = System.Text.RegularExpressions.Regex.Match(value, @"\d{5}(?:-?\d{4}(?:\d{2})?)?(?!.*\d)", System.Text.RegularExpressions.RegexOptions.Singleline).Value;
        var p = new BarcodeParameters
        {
            BarcodeValue = zip.Length > 0 ? zip : value, PostalAddress = address, IsBookmark = c.Has("\\b"),
            IsUSPostalAddress = c.Has("\\u"), FacingIdentificationMark = c.Get("\\f"),
        };
        return Barcodes.Draw(this, p, ctx);
    }
}

internal static class Barcodes
{
    /// <summary>Draws the barcode as the field's result; null always, the result being written here.</summary>
    public static string? Draw(Field field, BarcodeParameters p, FieldUpdateContext ctx)
    {
        byte[]? bytes;
        if (ctx.Options.BarcodeGenerator is { } own) bytes = own.GetBarcodeImage(p);
        else
        {
            try
            {
                bytes = BuiltInBarcodes.Instance.GetBarcodeImage(p);
            }
            catch (Exception e) when (e is FormatException or NotSupportedException)
            {
                throw Refuse(ctx, field, e.Message.TrimEnd('.'));
            }
        }
        if (bytes == null) return null;
        var info = ImageInfo.Detect(bytes);
        if (info.Type is ImageType.NoImage or ImageType.Unknown) throw Refuse(ctx, field, "the barcode generator gave no picture in a known format");
        field.WritePicture(bytes, info, keepSize: false);
        return null;
    }

    public static FieldUpdateException Refuse(FieldUpdateContext ctx, Field field, string why)
    {
        var message = $"The barcode of \"{field.GetFieldCode()}\" cannot be drawn: {why}. The field keeps its result.";
        ctx.Doc?.Warnings.Add(WarningType.MinorFormattingLoss, WarningSource.Unknown, message);
        return new FieldUpdateException(message);
    }
}
