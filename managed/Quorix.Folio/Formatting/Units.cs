using System.Globalization;

namespace Quorix.Folio.Formatting;

internal static class Units
{
    public static double TwipsToPoints(int twips) => twips / 20.0;

    public static string PointsToTwips(double points) => ((int)Math.Round(points * 20)).ToString(CultureInfo.InvariantCulture);

    public static string Str(int v) => v.ToString(CultureInfo.InvariantCulture);

    public static string Str(long v) => v.ToString(CultureInfo.InvariantCulture);

    public static int? ParseInt(string? s)
    {
        if (s == null) return null;
        // Nearly every stored measure is a short run of plain digits; anything else takes the full parse.
        if (s.Length is > 0 and <= 9)
        {
            int n = 0;
            foreach (var c in s)
            {
                if ((uint)(c - '0') > 9) goto Full;
                n = n * 10 + (c - '0');
            }
            return n;
        }
    Full:
        if (int.TryParse(s, NumberStyles.Integer, CultureInfo.InvariantCulture, out var v)) return v;
        // Some writers emit fractional measures; take the whole part rather than fail the load.
        if (double.TryParse(s, NumberStyles.Float, CultureInfo.InvariantCulture, out var d)) return (int)d;
        return null;
    }

    public static long? ParseLong(string? s) =>
        s != null && long.TryParse(s, NumberStyles.Integer, CultureInfo.InvariantCulture, out var v) ? v : null;

    public static void CheckRange(double value, double min, double max, string name)
    {
        if (double.IsNaN(value) || value < min || value > max)
            throw new ArgumentOutOfRangeException(name, $"The value must be between {min} and {max}.");
    }
}
