using System.Globalization;
using QRCoder;
using SkiaSharp;

namespace Quorix.Folio.Fields;

/// <summary>The engine's own barcode drawing, used where the field options name no generator: QR
/// codes, CODE128, CODE39 and the US postal bar code, as PNG pictures at 96 dots per inch. A value or
/// type it cannot draw raises <see cref="FormatException"/> or <see cref="NotSupportedException"/>.</summary>
internal sealed class BuiltInBarcodes : IBarcodeGenerator
{
    public static readonly BuiltInBarcodes Instance = new();

    // Pixels per module at 100 %; a linear symbol's bars are half an inch high unless \h says otherwise.
    private const int QrModule = 4, LinearModule = 2, QuietModules = 10;
    private const double DefaultHeightPoints = 36;

    public byte[] GetBarcodeImage(BarcodeParameters p)
    {
        double scale = Percent(p.ScalingFactor) / 100.0;
        var fg = Color(p.ForegroundColor, SKColors.Black);
        var bg = Color(p.BackgroundColor, SKColors.White);
        int rotation = int.TryParse(p.SymbolRotation, NumberStyles.Integer, CultureInfo.InvariantCulture, out var r) && r is >= 0 and <= 3 ? r : 0;
        double heightPt = double.TryParse(p.SymbolHeight, NumberStyles.Float, CultureInfo.InvariantCulture, out var twips) && twips > 0 ? twips / 20 : DefaultHeightPoints;
        int barPx = Math.Max(1, (int)Math.Round(heightPt / 0.75 * scale));
        var type = p.BarcodeType.Trim().ToUpperInvariant();
        switch (type)
        {
            case "QR":
                return Matrix(Qr(p.BarcodeValue, p.ErrorCorrectionLevel), Math.Max(1, (int)Math.Round(QrModule * scale)), fg, bg, rotation);
            case "CODE128":
                return Linear(LinearSymbols.Code128(p.BarcodeValue), barPx, Module(scale), fg, bg, rotation, p.DisplayText ? p.BarcodeValue : null);
            case "CODE39":
                return Linear(LinearSymbols.Code39(p.BarcodeValue, p.FixCheckDigit), barPx, Module(scale), fg, bg, rotation, p.DisplayText ? "*" + p.BarcodeValue.ToUpperInvariant() + "*" : null);
            case "POSTNET" or "":
                return Postal(LinearSymbols.Postal(p.BarcodeValue), scale, fg, bg, rotation);
            default:
                throw new NotSupportedException($"The barcode type \"{p.BarcodeType}\" is not supported.");
        }
    }

    private static int Module(double scale) => Math.Max(1, (int)Math.Round(LinearModule * scale));

    private static double Percent(string? s) =>
        double.TryParse(s, NumberStyles.Float, CultureInfo.InvariantCulture, out var v) && v is >= 10 and <= 1000 ? v : 100;

    // Colours as the field writes them: 0xRRGGBB, or a decimal number of the same value.
    private static SKColor Color(string? s, SKColor fallback)
    {
        if (string.IsNullOrWhiteSpace(s)) return fallback;
        var t = s.Trim();
        bool hex = t.StartsWith("0x", StringComparison.OrdinalIgnoreCase);
        if (!uint.TryParse(hex ? t[2..] : t, hex ? NumberStyles.HexNumber : NumberStyles.Integer, CultureInfo.InvariantCulture, out var rgb) || rgb > 0xFFFFFF)
            throw new FormatException($"\"{s}\" is not a colour (0xRRGGBB).");
        return new SKColor((byte)(rgb >> 16), (byte)(rgb >> 8), (byte)rgb);
    }

    private static bool[,] Qr(string value, string? level)
    {
        if (value.Length == 0) throw new FormatException("QR needs a value.");
        var ecc = level?.Trim() switch
        {
            "1" => QRCodeGenerator.ECCLevel.M,
            "2" => QRCodeGenerator.ECCLevel.Q,
            "3" => QRCodeGenerator.ECCLevel.H,
            _ => QRCodeGenerator.ECCLevel.L,
        };
        using var generator = new QRCodeGenerator();
        // Text beyond ASCII goes as UTF-8 with its ECI mark, so readers need not guess the encoding.
        bool ascii = value.All(char.IsAscii);
        using var data = ascii ? generator.CreateQrCode(value, ecc)
            : generator.CreateQrCode(value, ecc, forceUtf8: true, utf8BOM: false, eciMode: QRCodeGenerator.EciMode.Utf8);
        var rows = data.ModuleMatrix;
        var m = new bool[rows.Count, rows.Count];
        for (int y = 0; y < rows.Count; y++)
            for (int x = 0; x < rows.Count; x++) m[y, x] = rows[y][x];
        return m;
    }

    private static byte[] Matrix(bool[,] m, int module, SKColor fg, SKColor bg, int rotation)
    {
        int n = m.GetLength(0);
        return Draw(n * module, n * module, fg, bg, rotation, (canvas, paint) =>
        {
            for (int y = 0; y < n; y++)
                for (int x = 0; x < n; x++)
                    if (m[y, x]) canvas.DrawRect(x * module, y * module, module, module, paint);
        });
    }

    private static byte[] Linear(List<int> widths, int height, int module, SKColor fg, SKColor bg, int rotation, string? caption)
    {
        int width = (widths.Sum() + 2 * QuietModules) * module;
        float textPx = caption == null ? 0 : Math.Max(8, 6 * module);
        int total = height + (caption == null ? 0 : (int)Math.Ceiling(textPx * 1.4));
        return Draw(width, total, fg, bg, rotation, (canvas, paint) =>
        {
            int x = QuietModules * module;
            for (int i = 0; i < widths.Count; i++)
            {
                if (i % 2 == 0) canvas.DrawRect(x, 0, widths[i] * module, height, paint);
                x += widths[i] * module;
            }
            if (caption == null) return;
            var face = Fonts.FontSettings.DefaultInstance.Library.Resolve("Arial", false, false).Face.Typeface;
            using var font = new SKFont(face, textPx);
            canvas.DrawText(caption, width / 2f, height + textPx * 1.1f, SKTextAlign.Center, font, paint);
        });
    }

    // Tall bars an eighth of an inch high, short ones under half that; a bar and its gap 1/22 inch.
    private static byte[] Postal(List<bool> bars, double scale, SKColor fg, SKColor bg, int rotation)
    {
        double px = 96 * scale;
        float pitch = (float)(px / 22), bar = pitch / 2, tall = (float)(px / 8), low = (float)(px * 0.05);
        int width = (int)Math.Ceiling(pitch * (bars.Count + 4)), height = (int)Math.Ceiling(tall + pitch * 2);
        return Draw(width, height, fg, bg, rotation, (canvas, paint) =>
        {
            for (int i = 0; i < bars.Count; i++)
            {
                float h = bars[i] ? tall : low;
                canvas.DrawRect(pitch * (i + 2), pitch + tall - h, bar, h, paint);
            }
        });
    }

    private static byte[] Draw(int width, int height, SKColor fg, SKColor bg, int rotation, Action<SKCanvas, SKPaint> paint)
    {
        bool across = rotation % 2 == 1;
        using var bitmap = new SKBitmap(across ? height : width, across ? width : height);
        using (var canvas = new SKCanvas(bitmap))
        {
            canvas.Clear(bg);
            switch (rotation)
            {
                case 1: canvas.Translate(height, 0); canvas.RotateDegrees(90); break;
                case 2: canvas.Translate(width, height); canvas.RotateDegrees(180); break;
                case 3: canvas.Translate(0, width); canvas.RotateDegrees(270); break;
            }
            using var ink = new SKPaint { Color = fg, IsAntialias = false };
            paint(canvas, ink);
        }
        using var image = SKImage.FromBitmap(bitmap);
        using var png = image.Encode(SKEncodedImageFormat.Png, 100);
        return png.ToArray();
    }
}
