using HarfBuzzSharp;
using SkiaSharp;

namespace Quorix.Folio.Fonts;

/// <summary>One loaded face: what Skia draws with and what HarfBuzz shapes with, from the same bytes.</summary>
internal sealed class FontFace
{
    public readonly string Family;
    public readonly bool Bold;
    public readonly bool Italic;
    public readonly SKTypeface Typeface;
    public readonly HarfBuzzSharp.Font Shaper;
    public readonly int UnitsPerEm;
    // Per point of size, positive downwards from the baseline for descent.
    public readonly double Ascent;
    public readonly double Descent;
    public readonly double LineGap;
    // Held for the face's lifetime: the shaper reads from them natively, and a collected
    // wrapper would free what it still uses.
    private readonly Blob blob;
    private readonly Face face;

    public FontFace(string family, bool bold, bool italic, byte[] data, int index)
    {
        Family = family;
        Bold = bold;
        Italic = italic;
        using (var skData = SKData.CreateCopy(data))
            Typeface = SKTypeface.FromData(skData, index) ?? throw new InvalidDataException($"The font '{family}' cannot be loaded.");
        // HarfBuzz takes its own copy, so no managed array has to stay pinned behind its back.
        var pin = System.Runtime.InteropServices.GCHandle.Alloc(data, System.Runtime.InteropServices.GCHandleType.Pinned);
        try { blob = new Blob(pin.AddrOfPinnedObject(), data.Length, MemoryMode.Duplicate); }
        finally { pin.Free(); }
        face = new Face(blob, index);
        UnitsPerEm = face.UnitsPerEm;
        Shaper = new HarfBuzzSharp.Font(face);
        Shaper.SetScale(UnitsPerEm, UnitsPerEm);
        Shaper.SetFunctionsOpenType();
        Words = new Shaping.ShapeCache(Shaper);
        using var font = new SKFont(Typeface, 1000);
        var m = font.Metrics;
        Ascent = -m.Ascent / 1000.0;
        Descent = m.Descent / 1000.0;
        LineGap = m.Leading / 1000.0;
    }

    /// <summary>Shaped words of this face, kept across layouts.</summary>
    public readonly Shaping.ShapeCache Words;

    // Whether the face has each character of the basic plane: 0 not asked yet, 1 yes, 2 no. Layout
    // asks for every character of every run; the answer never changes.
    private readonly byte[] coverage = new byte[0x10000];

    public bool Has(int codePoint)
    {
        if (codePoint > 0xFFFF) return Shaper.TryGetGlyph((uint)codePoint, out _);
        byte known = coverage[codePoint];
        if (known != 0) return known == 1;
        bool has = Shaper.TryGetGlyph((uint)codePoint, out _);
        coverage[codePoint] = has ? (byte)1 : (byte)2;
        return has;
    }

    public override string ToString() => $"{Family}{(Bold ? " Bold" : "")}{(Italic ? " Italic" : "")}";
}

/// <summary>A face the layout asked for, with the style it could not get from the file drawn synthetically.</summary>
/// <summary>A face found for a requested font; <see cref="Substitution"/> says why another family stood
/// in for the requested one, and is null when the family itself was found.</summary>
internal sealed record ResolvedFont(FontFace Face, bool FakeBold, bool FakeItalic, string RequestedName, FontSubstitutionReason? Substitution = null);

/// <summary>The faces of a <see cref="FontSettings"/>' sources, found by family and style, with
/// substitution for missing families and per-character fallback.</summary>
internal sealed class FontLibrary
{
    private sealed record Entry(string Family, bool Bold, bool Italic, FontFileRef File, int Index, int Priority);

    private readonly FontSettings settings;
    private readonly Dictionary<string, List<Entry>> families = new(StringComparer.OrdinalIgnoreCase);
    private readonly Dictionary<Entry, FontFace> loaded = new();
    private readonly Dictionary<(string, bool, bool), ResolvedFont> resolved = new();
    private readonly Dictionary<(FontFace, int), FontFace?> fallbacks = new();
    private readonly object gate = new();

    public FontLibrary(FontSettings settings, IEnumerable<FontSourceBase> sources)
    {
        this.settings = settings;
        foreach (var source in sources.OrderByDescending(s => s.Priority))
            foreach (var file in source.Files())
                Scan(file, source.Priority);
    }

    public IEnumerable<string> FamilyNames => families.Keys;

    private void Scan(FontFileRef file, int priority)
    {
        try
        {
            using var data = file.Path != null ? SKData.Create(file.Path) : SKData.CreateCopy(file.Data!);
            if (data == null) return;
            for (int index = 0; index < 64; index++)
            {
                using var tf = SKTypeface.FromData(data, index);
                if (tf == null) break;
                var style = tf.FontStyle;
                var entry = new Entry(tf.FamilyName, style.Weight >= 600, style.Slant != SKFontStyleSlant.Upright, file, index, priority);
                if (!families.TryGetValue(entry.Family, out var list)) families[entry.Family] = list = new List<Entry>();
                list.Add(entry);
                if (!file.Path?.EndsWith("c", StringComparison.OrdinalIgnoreCase) ?? true) break; // only collections hold more faces
            }
        }
        catch (IOException)
        {
            // An unreadable file is simply not a font we can use.
        }
    }

    public bool HasFamily(string name) => families.ContainsKey(name);

    /// <summary>The face for a font name and style: the family itself, then the substitution rules in
    /// order (table, fontconfig, default); never null while any font is installed.</summary>
    public ResolvedFont Resolve(string name, bool bold, bool italic)
    {
        lock (gate)
        {
            if (resolved.TryGetValue((name, bold, italic), out var r)) return r;
            var (family, reason) = FindFamily(name);
            if (family == null) throw new InvalidOperationException("No fonts were found in the configured font sources.");
            var entry = BestStyle(families[family], bold, italic);
            var face = Load(entry);
            r = new ResolvedFont(face, bold && !face.Bold, italic && !face.Italic, name, reason);
            resolved[(name, bold, italic)] = r;
            return r;
        }
    }

    /// <summary>The family to use for a name, and the rule that chose it when it is not the name's own.</summary>
    private (string? Family, FontSubstitutionReason? Reason) FindFamily(string name)
    {
        if (families.ContainsKey(name)) return (name, null);
        var subs = settings.SubstitutionSettings;
        if (subs.TableSubstitution.Enabled)
            foreach (var s in subs.TableSubstitution.GetSubstitutes(name))
                if (families.ContainsKey(s)) return (s, FontSubstitutionReason.TableSubstitutionRule);
        if (subs.FontConfigSubstitution.Match(name) is { } fc && families.ContainsKey(fc)) return (fc, FontSubstitutionReason.FontConfigSubstitutionRule);
        if (subs.DefaultFontSubstitution.Enabled && families.ContainsKey(subs.DefaultFontSubstitution.DefaultFontName))
            return (subs.DefaultFontSubstitution.DefaultFontName, FontSubstitutionReason.DefaultFontSetting);
        foreach (var f in settings.FallbackSettings.Fallbacks)
            if (families.ContainsKey(f)) return (f, FontSubstitutionReason.FallbackSetting);
        return (families.Keys.OrderBy(k => k, StringComparer.Ordinal).FirstOrDefault(), FontSubstitutionReason.FirstAvailableFont);
    }

    private static Entry BestStyle(List<Entry> list, bool bold, bool italic) =>
        list.OrderBy(e => (e.Bold == bold ? 0 : 2) + (e.Italic == italic ? 0 : 1)).ThenByDescending(e => e.Priority).First();

    private FontFace Load(Entry e)
    {
        if (loaded.TryGetValue(e, out var f)) return f;
        var data = e.File.Path != null ? File.ReadAllBytes(e.File.Path) : e.File.Data!;
        f = new FontFace(e.Family, e.Bold, e.Italic, data, e.Index);
        loaded[e] = f;
        return f;
    }

    /// <summary>A face that has the character when <paramref name="primary"/> does not: the fallback
    /// list first, then any installed family; null when no font has it.</summary>
    public FontFace? Fallback(FontFace primary, int codePoint)
    {
        lock (gate)
        {
            if (fallbacks.TryGetValue((primary, codePoint), out var f)) return f;
            f = null;
            foreach (var name in settings.FallbackSettings.Fallbacks.Concat(families.Keys.OrderBy(k => k, StringComparer.Ordinal)))
            {
                if (!families.TryGetValue(name, out var list)) continue;
                var candidate = Load(BestStyle(list, primary.Bold, primary.Italic));
                if (candidate.Has(codePoint)) { f = candidate; break; }
            }
            fallbacks[(primary, codePoint)] = f;
            return f;
        }
    }
}
