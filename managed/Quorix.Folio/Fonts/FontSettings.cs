namespace Quorix.Folio.Fonts;

/// <summary>Where a font source finds its fonts.</summary>
public enum FontSourceType
{
    /// <summary>One font file.</summary>
    FontFile = 0,
    /// <summary>The font files of a folder.</summary>
    FontsFolder = 1,
    /// <summary>The fonts installed on the machine.</summary>
    SystemFonts = 2,
    /// <summary>A font held in memory as bytes.</summary>
    MemoryFont = 3,
    /// <summary>A font read from a stream.</summary>
    FontStream = 4,
}

/// <summary>Where font files come from. Sources of a higher priority win when two hold the same face.</summary>
public abstract class FontSourceBase
{
    private protected FontSourceBase(int priority) { Priority = priority; }

    /// <summary>The source's rank when several hold a font of the same name; the higher wins.</summary>
    public int Priority { get; }

    /// <summary>Where this source finds its fonts.</summary>
    public abstract FontSourceType Type { get; }

    /// <summary>Each font file's bytes or path, as the library scans them.</summary>
    internal abstract IEnumerable<FontFileRef> Files();
}

/// <summary>A font file on disk, or bytes held in memory.</summary>
internal readonly record struct FontFileRef(string? Path, byte[]? Data);

/// <summary>The font files of a folder, as a source of fonts for layout.</summary>
public sealed class FolderFontSource : FontSourceBase
{
    /// <summary>The fonts of folderPath, and of its subfolders when scanSubfolders, at the given priority.</summary>
    public FolderFontSource(string folderPath, bool scanSubfolders, int priority = 0) : base(priority)
    {
        ArgumentException.ThrowIfNullOrEmpty(folderPath);
        FolderPath = folderPath;
        ScanSubfolders = scanSubfolders;
    }

    /// <summary>The folder the fonts are read from.</summary>
    public string FolderPath { get; }

    /// <summary>Whether the fonts of subfolders are read too.</summary>
    public bool ScanSubfolders { get; }

    /// <summary>Always FontsFolder.</summary>
    public override FontSourceType Type => FontSourceType.FontsFolder;

    internal override IEnumerable<FontFileRef> Files() => FontFiles.In(FolderPath, ScanSubfolders);
}

/// <summary>One font file, as a source of fonts for layout.</summary>
public sealed class FileFontSource : FontSourceBase
{
    /// <summary>The font of filePath at the given priority.</summary>
    public FileFontSource(string filePath, int priority = 0) : base(priority)
    {
        ArgumentException.ThrowIfNullOrEmpty(filePath);
        FilePath = filePath;
    }

    /// <summary>The font file's path.</summary>
    public string FilePath { get; }

    /// <summary>Always FontFile.</summary>
    public override FontSourceType Type => FontSourceType.FontFile;

    internal override IEnumerable<FontFileRef> Files()
    {
        if (File.Exists(FilePath)) yield return new FontFileRef(FilePath, null);
    }
}

/// <summary>A font held in memory, as a source of fonts for layout.</summary>
public sealed class MemoryFontSource : FontSourceBase
{
    private readonly byte[] data;

    /// <summary>The font in fontData at the given priority.</summary>
    public MemoryFontSource(byte[] fontData, int priority = 0) : base(priority)
    {
        ArgumentNullException.ThrowIfNull(fontData);
        data = fontData;
    }

    /// <summary>The font file's bytes.</summary>
    public byte[] FontData => data;

    /// <summary>Always MemoryFont.</summary>
    public override FontSourceType Type => FontSourceType.MemoryFont;

    internal override IEnumerable<FontFileRef> Files() { yield return new FontFileRef(null, data); }
}

/// <summary>A font read from a stream, as a source of fonts for layout.</summary>
public sealed class StreamFontSource : FontSourceBase
{
    private readonly byte[] data;

    /// <summary>The font read from stream at the given priority.</summary>
    public StreamFontSource(Stream stream, int priority = 0) : base(priority)
    {
        ArgumentNullException.ThrowIfNull(stream);
        using var ms = new MemoryStream();
        stream.CopyTo(ms);
        data = ms.ToArray();
    }

    /// <summary>Always FontStream.</summary>
    public override FontSourceType Type => FontSourceType.FontStream;

    internal override IEnumerable<FontFileRef> Files() { yield return new FontFileRef(null, data); }
}

/// <summary>The fonts installed on the machine: the usual Linux font folders.</summary>
public sealed class SystemFontSource : FontSourceBase
{
    /// <summary>The fonts installed on the machine at the given priority.</summary>
    public SystemFontSource(int priority = 0) : base(priority) { }

    /// <summary>Always SystemFonts.</summary>
    public override FontSourceType Type => FontSourceType.SystemFonts;

    /// <summary>The folders of this machine where installed fonts are looked for, those that exist.</summary>
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

    /// <summary>The settings of documents that have none of their own.</summary>
    public static FontSettings DefaultInstance { get; } = new FontSettings();

    /// <summary>How a font the sources lack is replaced.</summary>
    public FontSubstitutionSettings SubstitutionSettings { get; } = new FontSubstitutionSettings();

    /// <summary>Which fonts draw the characters a chosen font lacks.</summary>
    public FontFallbackSettings FallbackSettings { get; } = new FontFallbackSettings();

    /// <summary>A copy of the sources fonts are looked up in, in order.</summary>
    public FontSourceBase[] GetFontsSources() => (FontSourceBase[])sources.Clone();

    /// <summary>Makes those sources the only places fonts are taken from.</summary>
    public void SetFontsSources(FontSourceBase[] sources)
    {
        ArgumentNullException.ThrowIfNull(sources);
        if (sources.Any(s => s == null)) throw new ArgumentException("A font source is null.", nameof(sources));
        this.sources = (FontSourceBase[])sources.Clone();
        library = null;
    }

    /// <summary>Makes one folder, with its subfolders when recursive, the only source of fonts.</summary>
    public void SetFontsFolder(string fontFolder, bool recursive) => SetFontsFolders(new[] { fontFolder }, recursive);

    /// <summary>Makes those folders, with their subfolders when recursive, the only places fonts are taken from.</summary>
    public void SetFontsFolders(string[] fontsFolders, bool recursive)
    {
        ArgumentNullException.ThrowIfNull(fontsFolders);
        SetFontsSources(fontsFolders.Select(f => (FontSourceBase)new FolderFontSource(f, recursive)).ToArray());
    }

    /// <summary>Makes the machine's installed fonts the only source of fonts again.</summary>
    public void ResetFontSources() => SetFontsSources(new FontSourceBase[] { new SystemFontSource() });

    /// <summary>The scanned faces; built on first use and again after the sources change.</summary>
    internal FontLibrary Library => library ??= new FontLibrary(this, sources);
}

/// <summary>The rules, tried in order, that replace a font the sources lack.</summary>
public sealed class FontSubstitutionSettings
{
    /// <summary>Replacement by a table of font names to the names that stand for them.</summary>
    public TableSubstitutionRule TableSubstitution { get; } = new TableSubstitutionRule();

    /// <summary>Replacement by the font the machine's fontconfig matches.</summary>
    public FontConfigSubstitutionRule FontConfigSubstitution { get; } = new FontConfigSubstitutionRule();

    /// <summary>Replacement by one default font, the last resort.</summary>
    public DefaultFontSubstitutionRule DefaultFontSubstitution { get; } = new DefaultFontSubstitutionRule();
}

/// <summary>One way of replacing a font the sources lack.</summary>
public abstract class FontSubstitutionRule
{
    /// <summary>Whether the rule is tried.</summary>
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

    /// <summary>The fonts tried, in order, in place of that font when it is missing.</summary>
    public IEnumerable<string> GetSubstitutes(string originalFontName) =>
        table.TryGetValue(originalFontName, out var l) ? l.ToArray() : Array.Empty<string>();

    /// <summary>Sets the fonts tried, in order, in place of that font when it is missing.</summary>
    public void SetSubstitutes(string originalFontName, params string[] substituteFontNames)
    {
        ArgumentException.ThrowIfNullOrEmpty(originalFontName);
        table[originalFontName] = substituteFontNames.ToList();
    }

    /// <summary>Adds fonts to try, after those already listed, in place of that font when it is missing.</summary>
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

    /// <summary>Whether the machine has fontconfig's fc-match to ask.</summary>
    public bool IsFontConfigAvailable() => FcMatch.Path != null;

    /// <summary>Forgets fontconfig's earlier answers, so that newly installed fonts are found.</summary>
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

/// <summary>Replaces any font the sources lack by one default font.</summary>
public sealed class DefaultFontSubstitutionRule : FontSubstitutionRule
{
    /// <summary>The font that stands for missing ones; "DejaVu Sans" unless set.</summary>
    public string DefaultFontName { get; set; } = "DejaVu Sans";
}

/// <summary>The faces tried, in order, for a character the chosen font does not have.</summary>
public sealed class FontFallbackSettings
{
    internal string[] Fallbacks = { "DejaVu Sans", "DejaVu Serif", "Liberation Sans", "Noto Sans", "Noto Sans CJK SC", "Noto Color Emoji" };

    /// <summary>The fonts tried, in order, for characters the text's own font lacks.</summary>
    public string[] GetFallbackFontNames() => (string[])Fallbacks.Clone();

    /// <summary>Sets the fonts tried, in order, for characters the text's own font lacks.</summary>
    public void SetFallbackFontNames(params string[] names)
    {
        ArgumentNullException.ThrowIfNull(names);
        Fallbacks = (string[])names.Clone();
    }
}
