using Quorix.Folio.Drawing;
using Quorix.Folio.Fields;

namespace Quorix.Folio.Tests;

public class BarcodeFieldTests
{
    private sealed class Warnings : IWarningCallback
    {
        public readonly List<string> Seen = new();
        public void Warning(WarningInfo info) => Seen.Add(info.Description);
    }

    private static Shape Picture(Field f)
    {
        for (Node? n = f.Separator!.NextSibling; n != null && n != f.End; n = n.NextSibling)
            if (n is Shape { HasImage: true } s) return s;
        throw new Xunit.Sdk.XunitException("the field shows no picture");
    }

    // What a barcode reader we did not write makes of our picture.
    private static string Decode(Shape shape)
    {
        var path = Path.Combine(TestSupport.TempDir(), "code.png");
        shape.ImageData.Save(path);
        var (code, output, err) = TestSupport.Run("zbarimg", $"--raw -q {path}");
        Assert.True(code == 0, $"zbarimg: {err}");
        return output.TrimEnd('\n');
    }

    [Theory]
    [InlineData("DISPLAYBARCODE \"https://example.org/invoice?id=42\" QR \\q 3", "https://example.org/invoice?id=42")]
    [InlineData("DISPLAYBARCODE \"Ærlig talt\" QR", "Ærlig talt")]
    [InlineData("DISPLAYBARCODE \"Order A-17/x\" CODE128 \\t", "Order A-17/x")]
    [InlineData("DISPLAYBARCODE \"00123456\" CODE128 \\s 150", "00123456")]
    [InlineData("DISPLAYBARCODE \"part 42-b\" CODE39 \\r 1", "PART 42-B")]
    public void DrawnCodesReadBackAsTheirValues(string code, string expected)
    {
        var b = new DocumentBuilder();
        var f = b.InsertField(code, "");
        b.Document.UpdateFields();
        Assert.Equal(expected, Decode(Picture(f)));
    }

    [Fact]
    public void SizeColourAndRotationFollowTheSwitches()
    {
        var b = new DocumentBuilder();
        var plain = b.InsertField("DISPLAYBARCODE \"ABC\" CODE128", "");
        var big = b.InsertField("DISPLAYBARCODE \"ABC\" CODE128 \\s 200 \\h 1440", "");
        var turned = b.InsertField("DISPLAYBARCODE \"ABC\" CODE128 \\r 1 \\f 0xFF0000", "");
        b.Document.UpdateFields();
        var (p, g, t) = (Picture(plain), Picture(big), Picture(turned));
        // (3 data symbols + start + check) x 11 + stop 13 + 20 quiet modules, 2 pixels each, at 96 dpi.
        Assert.Equal((5 * 11 + 13 + 20) * 2 * 0.75, p.Width);
        Assert.Equal(36, p.Height);
        // An inch high (1440 twentieths of a point), the whole symbol then scaled to twice its size.
        Assert.Equal((2 * p.Width, 144.0), (g.Width, g.Height));
        Assert.Equal((p.Height, p.Width), (t.Width, t.Height));
        using var bitmap = SkiaSharp.SKBitmap.Decode(t.ImageData.ImageBytes);
        Assert.Contains(Enumerable.Range(0, bitmap.Height).Select(y => bitmap.GetPixel(bitmap.Width / 2, y)), c => c == SkiaSharp.SKColors.Red);
    }

    [Fact]
    public void PostalCodesCarryTheirCheckDigitBetweenFrameBars()
    {
        var bars = LinearSymbols.Postal("12345-6789");
        Assert.Equal(2 + 5 * 10, bars.Count);
        Assert.True(bars[0] && bars[^1]);
        // 1+2+...+9 = 45: the check digit is 5, two tall bars of five.
        Assert.Equal("01010", string.Concat(bars.Skip(1 + 5 * 9).Take(5).Select(x => x ? '1' : '0')));
        Assert.Throws<FormatException>(() => LinearSymbols.Postal("1234"));

        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.StartBookmark("to");
        b.Write("1 Main St, Springfield IL 62704");
        b.EndBookmark("to");
        var f = b.InsertField("BARCODE to \\b \\u", "");
        doc.UpdateFields();
        Assert.True(Picture(f).Width > 0);
        Assert.Equal(("to", true, true), (((FieldBarcode)f).PostalAddress, ((FieldBarcode)f).IsBookmark, ((FieldBarcode)f).IsUSPostalAddress));
    }

    [Fact]
    public void SymbolTablesAreWellFormed()
    {
        Assert.Equal(106, LinearSymbols.Code128Table.Count);
        Assert.All(LinearSymbols.Code128Table, w => Assert.Equal(11, w.Sum(c => c - '0')));
        Assert.Equal(LinearSymbols.Code128Table.Count, LinearSymbols.Code128Table.Distinct().Count());
        var (chars, elements) = LinearSymbols.Code39Table;
        Assert.Equal(chars.Length, elements.Count);
        Assert.All(elements, e => Assert.Equal(3, e.Count(c => c == 'w')));
        Assert.Equal(elements.Count, elements.Distinct().Count());
    }

    private sealed class OwnGenerator : IBarcodeGenerator
    {
        public readonly List<BarcodeParameters> Asked = new();
        public byte[]? GetBarcodeImage(BarcodeParameters parameters)
        {
            Asked.Add(parameters);
            return parameters.BarcodeValue == "none" ? null : TestSupport.Png(30, 30);
        }
    }

    [Fact]
    public void AGeneratorOfTheOptionsDrawsInstead()
    {
        var doc = new Document();
        var own = new OwnGenerator();
        doc.FieldOptions.BarcodeGenerator = own;
        var b = new DocumentBuilder(doc);
        var f = b.InsertField("DISPLAYBARCODE \"4006381333931\" EAN13 \\t \\h 720 \\x", "");
        b.InsertField("DISPLAYBARCODE none QR", "old");
        doc.UpdateFields();
        Assert.Equal(TestSupport.Png(30, 30), Picture(f).ImageData.ImageBytes);
        var p = own.Asked[0];
        Assert.Equal(("4006381333931", "EAN13", "720", true, true), (p.BarcodeValue, p.BarcodeType, p.SymbolHeight, p.DisplayText, p.FixCheckDigit));
        Assert.Equal("old", doc.Range.Fields[1].Result);
    }

    [Fact]
    public void WhatCannotBeDrawnKeepsTheResultAndWarns()
    {
        var doc = new Document();
        var warnings = new Warnings();
        doc.WarningCallback = warnings;
        var b = new DocumentBuilder(doc);
        b.InsertField("DISPLAYBARCODE \"4006381333931\" EAN13", "kept 1");
        b.InsertField("DISPLAYBARCODE \"naïve\" CODE128", "kept 2");
        b.InsertField("DISPLAYBARCODE \"x\" QR \\f red", "kept 3");
        b.InsertField("DISPLAYBARCODE \"x\"", "kept 4");
        doc.UpdateFields();
        Assert.Equal(new[] { "kept 1", "kept 2", "kept 3", "kept 4" }, doc.Range.Fields.Select(f => f.Result));
        Assert.Empty(doc.GetChildNodes(NodeType.Shape, true));
        Assert.Equal(new[]
        {
            "The barcode of \"DISPLAYBARCODE \"4006381333931\" EAN13\" cannot be drawn: The barcode type \"EAN13\" is not supported. The field keeps its result.",
            "The barcode of \"DISPLAYBARCODE \"naïve\" CODE128\" cannot be drawn: CODE128 cannot encode the character U+00EF. The field keeps its result.",
            "The barcode of \"DISPLAYBARCODE \"x\" QR \\f red\" cannot be drawn: \"red\" is not a colour (0xRRGGBB). The field keeps its result.",
            "The barcode of \"DISPLAYBARCODE \"x\"\" cannot be drawn: it names no barcode type. The field keeps its result.",
        }, warnings.Seen);
    }
}
