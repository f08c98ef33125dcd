using System.Buffers.Binary;

namespace Quorix.Folio.Drawing;

/// <summary>Type and pixel size from an image's header, without decoding it.</summary>
internal readonly record struct ImageInfo(ImageType Type, int Width, int Height)
{
    public string Extension => Type switch
    {
        ImageType.Png => "png",
        ImageType.Jpeg => "jpeg",
        ImageType.Gif => "gif",
        ImageType.Bmp => "bmp",
        ImageType.Tiff => "tiff",
        ImageType.Emf => "emf",
        ImageType.Wmf => "wmf",
        ImageType.Svg => "svg",
        _ => "bin",
    };

    public string ContentType => Type switch
    {
        ImageType.Png => "image/png",
        ImageType.Jpeg => "image/jpeg",
        ImageType.Gif => "image/gif",
        ImageType.Bmp => "image/bmp",
        ImageType.Tiff => "image/tiff",
        ImageType.Emf => "image/x-emf",
        ImageType.Wmf => "image/x-wmf",
        ImageType.Svg => "image/svg+xml",
        _ => "application/octet-stream",
    };

    public static ImageInfo Detect(byte[]? b)
    {
        if (b == null || b.Length == 0) return new(ImageType.NoImage, 0, 0);
        var s = b.AsSpan();
        if (s.Length >= 24 && s[..8].SequenceEqual(new byte[] { 0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A }))
            return new(ImageType.Png, BinaryPrimitives.ReadInt32BigEndian(s[16..]), BinaryPrimitives.ReadInt32BigEndian(s[20..]));
        if (s.Length >= 10 && s[0] == 'G' && s[1] == 'I' && s[2] == 'F')
            return new(ImageType.Gif, BinaryPrimitives.ReadUInt16LittleEndian(s[6..]), BinaryPrimitives.ReadUInt16LittleEndian(s[8..]));
        if (s.Length >= 26 && s[0] == 'B' && s[1] == 'M')
            return new(ImageType.Bmp, BinaryPrimitives.ReadInt32LittleEndian(s[18..]), Math.Abs(BinaryPrimitives.ReadInt32LittleEndian(s[22..])));
        if (s.Length >= 4 && s[0] == 0xFF && s[1] == 0xD8) return Jpeg(s);
        if (s.Length >= 4 && ((s[0] == 'I' && s[1] == 'I') || (s[0] == 'M' && s[1] == 'M')) && (s[2] == 42 || s[3] == 42))
            return new(ImageType.Tiff, 0, 0);
        if (s.Length >= 44 && BinaryPrimitives.ReadUInt32LittleEndian(s) == 1 && s[40] == ' ' && s[41] == 'E' && s[42] == 'M' && s[43] == 'F')
            return new(ImageType.Emf, 0, 0);
        if (s.Length >= 4 && BinaryPrimitives.ReadUInt32LittleEndian(s) == 0x9AC6CDD7) return new(ImageType.Wmf, 0, 0);
        if (s.Length >= 5 && (s.IndexOf("<svg"u8) is >= 0 and < 1024)) return new(ImageType.Svg, 0, 0);
        return new(ImageType.Unknown, 0, 0);
    }

    private static ImageInfo Jpeg(ReadOnlySpan<byte> s)
    {
        int i = 2;
        while (i + 9 < s.Length)
        {
            if (s[i] != 0xFF) { i++; continue; }
            byte marker = s[i + 1];
            if (marker == 0xD8 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) { i += 2; continue; }
            int len = BinaryPrimitives.ReadUInt16BigEndian(s[(i + 2)..]);
            bool sof = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
            if (sof)
                return new(ImageType.Jpeg, BinaryPrimitives.ReadUInt16BigEndian(s[(i + 7)..]), BinaryPrimitives.ReadUInt16BigEndian(s[(i + 5)..]));
            i += 2 + len;
        }
        return new(ImageType.Jpeg, 0, 0);
    }
}
