namespace Quorix.Folio.Fonts;

public enum FontSourceType
{
    FontFile = 0,
    FontsFolder = 1,
    SystemFonts = 2,
    MemoryFont = 3,
    FontStream = 4,
}

/// <summary>Where font files come from. Sources of a higher priority win when two hold the same face.</summary>
public abstract class FontSourceBase
{
    private protected FontSourceBase(int priority) { Priority = priority; }

    public int Priority { get; }

    public abstract FontSourceType Type { get; }

    /// <summary>Each font file's bytes or path, as the library scans them.</summary>
    internal abstract IEnumerable<FontFileRef> Files();
}

/// <summary>A font file on disk, or bytes held in memory.</summary>
internal readonly record struct FontFileRef(string? Path, byte[]? Data);

public sealed class FolderFontSource : FontSourceBase
{
    public FolderFontSource(string folderPath, bool scanSubfolders, int priority = 0) : base(priority)
    {
        ArgumentException.ThrowIfNullOrEmpty(folderPath);
        FolderPath = folderPath;
        ScanSubfolders = scanSubfolders;
    }

    public string FolderPath { get; }

    public bool ScanSubfolders { get; }

    public override FontSourceType Type => FontSourceType.FontsFolder;

    internal override IEnumerable<FontFileRef> Files() => FontFiles.In(FolderPath, ScanSubfolders);
}

public sealed class FileFontSource : FontSourceBase
{
    public FileFontSource(string filePath, int priority = 0) : base(priority)
    {
        ArgumentException.ThrowIfNullOrEmpty(filePath);
        FilePath = filePath;
    }

    public string FilePath { get; }

    public override FontSourceType Type => FontSourceType.FontFile;

    internal override IEnumerable<FontFileRef> Files()
    {
        if (File.Exists(FilePath)) yield return new FontFileRef(FilePath, null);
    }
}

public sealed class MemoryFontSource : FontSourceBase
{
    private readonly byte[] data;

    public MemoryFontSource(byte[] fontData, int priority = 0) : base(priority)
    {
        ArgumentNullException.ThrowIfNull(fontData);
        data = fontData;
    }

    public byte[] FontData => data;

    public override FontSourceType Type => FontSourceType.MemoryFont;

    internal override IEnumerable<FontFileRef> Files() { yield return new FontFileRef(null, data); }
}

public sealed class StreamFontSource : FontSourceBase
{
    private readonly byte[] data;

    public StreamFontSource(Stream stream, int priority = 0) : base(priority)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        data = ms.ToArray();
    }

    public override FontSourceType Type => FontSourceType.FontStream;

    internal override IEnumerable<FontFileRef> Files() { yield return new FontFileRef(null, data); }
}

/// <summary>The fonts installed on the machine: the usual Linux font folders.</summary>
public sealed class SystemFontSource : FontSourceBase
{
    public SystemFontSource(int priority = 0) : base(priority) { }

    public override FontSourceType Type => FontSourceType.SystemFonts;

    public static string[] GetSystemFontFolders()
    {
        var home = Environment.GetFolderPath(Environment.SpecialFolder.UserProfile);
        var all = new[] { "/usr/share/fonts", "/usr/local/share/fonts", Path.Combine(home, ".fonts"), Path.Combine(home, ".local/share/fonts") };
        return all.Where(Directory.Exists).ToArray();
    }

    internal override IEnumerable<FontFileRef> Files() => GetSystemFontFolders().SelectMany(f => FontFiles.In(f, true));
}

internal static class FontFiles
{
    private static readonly string[] Extensions = { ".ttf", ".otf", ".ttc", ".otc" };

    public static IEnumerable<FontFileRef> In(string folder, bool recursive)
    {
        if (!Directory.Exists(folder)) return Array.Empty<FontFileRef>();
        return Directory.EnumerateFiles(folder, "*", new EnumerationOptions { RecurseSubdirectories = recursive, IgnoreInaccessible = true })
            .Where(f => Extensions.Contains(Path.GetExtension(f).ToLowerInvariant()))
            .OrderBy(f => f, StringComparer.Ordinal)
            .Select(f => new FontFileRef(f, null));
    }
}

/// <summary>Which font files the layout may use and how missing fonts are replaced. A document uses
/// <see cref="DefaultInstance"/> unless given its own.</summary>
public sealed class FontSettings
{
    private FontSourceBase[] sources = { new SystemFontSource() };
    private FontLibrary? library;

    public static FontSettings DefaultInstance { get; } = new FontSettings();

    public FontSubstitutionSettings SubstitutionSettings { get; } = new FontSubstitutionSettings();

    public FontFallbackSettings FallbackSettings { get; } = new FontFallbackSettings();

    public FontSourceBase[] GetFontsSources() => (FontSourceBase[])sources.Clone();

    public void SetFontsSources(FontSourceBase[] sources)
    {
        ArgumentNullException.ThrowIfNull(sources);
        if (sources.Any(s => s == null)) throw new ArgumentException("A font source is null.", nameof(sources));
        this.sources = (FontSourceBase[])sources.Clone();
        library = null;
    }

    public void SetFontsFolder(string fontFolder, bool recursive) => SetFontsFolders(new[] { fontFolder }, recursive);

    public void SetFontsFolders(string[] fontsFolders, bool recursive)
    {
        ArgumentNullException.ThrowIfNull(fontsFolders);
        SetFontsSources(fontsFolders.Select(f => (FontSourceBase)new FolderFontSource(f, recursive)).ToArray());
    }

    public void ResetFontSources() => SetFontsSources(new FontSourceBase[] { new SystemFontSource() });

    /// <summary>The scanned faces; built on first use and again after the sources change.</summary>
    internal FontLibrary Library => library ??= new FontLibrary(this, sources);
}

public sealed class FontSubstitutionSettings
{
    public TableSubstitutionRule TableSubstitution { get; } = new TableSubstitutionRule();

    public FontConfigSubstitutionRule FontConfigSubstitution { get; } = new FontConfigSubstitutionRule();

    public DefaultFontSubstitutionRule DefaultFontSubstitution { get; } = new DefaultFontSubstitutionRule();
}

public abstract class FontSubstitutionRule
{
    public bool Enabled { get; set; } = true;
}

/// <summary>Substitutes by name: each font may list replacements tried in order. Filled with the
/// metric-compatible free faces of the common office fonts.</summary>
public sealed class TableSubstitutionRule : FontSubstitutionRule
{
    private readonly Dictionary<string, List<string>> table = new(StringComparer.OrdinalIgnoreCase)
    {
        ["Calibri"] = new() { "Carlito" },
        ["Cambria"] = new() { "Caladea" },
        ["Arial"] = new() { "Liberation Sans", "Arimo" },
        ["Helvetica"] = new() { "Liberation Sans", "Arimo" },
        ["Times New Roman"] = new() { "Liberation Serif", "Tinos" },
        ["Times"] = new() { "Liberation Serif", "Tinos" },
        ["Courier New"] = new() { "Liberation Mono", "Cousine" },
        ["Courier"] = new() { "Liberation Mono", "Cousine" },
        ["Arial Narrow"] = new() { "Liberation Sans Narrow" },
        ["Segoe UI"] = new() { "DejaVu Sans" },
        ["Verdana"] = new() { "DejaVu Sans" },
        ["Consolas"] = new() { "DejaVu Sans Mono", "Liberation Mono" },
    };

    public IEnumerable<string> GetSubstitutes(string originalFontName) =>
        table.TryGetValue(originalFontName, out var l) ? l.ToArray() : Array.Empty<string>();

    public void SetSubstitutes(string originalFontName, params string[] substituteFontNames)
    {
        ArgumentException.ThrowIfNullOrEmpty(originalFontName);
        table[originalFontName] = substituteFontNames.ToList();
    }

    public void AddSubstitutes(string originalFontName, params string[] substituteFontNames)
    {
        ArgumentException.ThrowIfNullOrEmpty(originalFontName);
        if (!table.TryGetValue(originalFontName, out var l)) table[originalFontName] = l = new List<string>();
        l.AddRange(substituteFontNames);
    }
}

/// <summary>Asks the machine's fontconfig (fc-match) for the closest family when nothing else matched.</summary>
public sealed class FontConfigSubstitutionRule : FontSubstitutionRule
{
    private readonly Dictionary<string, string?> answers = new(StringComparer.OrdinalIgnoreCase);

    public bool IsFontConfigAvailable() => FcMatch.Path != null;

    public void ResetCache()
    {
        lock (answers) answers.Clear();
    }

    internal string? Match(string name)
    {
        if (!Enabled || FcMatch.Path == null) return null;
        lock (answers)
        {
            if (!answers.TryGetValue(name, out var family)) answers[name] = family = FcMatch.Family(name);
            return family;
        }
    }
}

internal static class FcMatch
{
    public static readonly string? Path = new[] { "/usr/bin/fc-match", "/bin/fc-match", "/usr/local/bin/fc-match" }.FirstOrDefault(File.Exists);

    public static string? Family(string name)
    {
        try
        {
            var psi = new System.Diagnostics.ProcessStartInfo(Path!) { RedirectStandardOutput = true, RedirectStandardError = true, UseShellExecute = false };
            psi.ArgumentList.Add("-f");
            psi.ArgumentList.Add("%{family[0]}");
            psi.ArgumentList.Add(name);
            using var p = System.Diagnostics.Process.Start(psi)!;
            var output = p.StandardOutput.ReadToEnd().Trim();
            return p.WaitForExit(5000) && p.ExitCode == 0 && output.Length > 0 ? output : null;
        }
        catch (System.ComponentModel.Win32Exception)
        {
            return null;
        }
    }
}

public sealed class DefaultFontSubstitutionRule : FontSubstitutionRule
{
    public string DefaultFontName { get; set; } = "DejaVu Sans";
}

/// <summary>The faces tried, in order, for a character the chosen font does not have.</summary>
public sealed class FontFallbackSettings
{
    internal string[] Fallbacks = { "DejaVu Sans", "DejaVu Serif", "Liberation Sans", "Noto Sans", "Noto Sans CJK SC", "Noto Color Emoji" };

    public string[] GetFallbackFontNames() => (string[])Fallbacks.Clone();

    public void SetFallbackFontNames(params string[] names)
    {
        ArgumentNullException.ThrowIfNull(names);
        Fallbacks = (string[])names.Clone();
    }
}
