namespace Quorix.Folio.Package;

/// <summary>
/// Archive entry names a saved package may carry. A name read from a hostile file can point outside
/// the folder a careless unzip writes to: an absolute name, a ".." segment, a backslash taken for a
/// separator, or a NUL that cuts the name short. Such entries are renamed when a plain relative name
/// is evident, else dropped; either way a warning says what happened.
/// </summary>
internal static class EntryNames
{
    /// <summary>The name to write, or null to leave the entry out; <paramref name="warn"/> hears of every change.</summary>
    public static string? Sanitise(string name, ISet<string> taken, Action<WarningType, string> warn)
    {
        if (IsSafe(name))
            return name;
        string? renamed = null;
        if (!name.Contains('\0'))
        {
            string candidate = name.Replace('\\', '/');
            // drive letters and leading separators make a name absolute
            if (candidate.Length >= 2 && char.IsAsciiLetter(candidate[0]) && candidate[1] == ':')
                candidate = candidate[2..];
            candidate = candidate.TrimStart('/');
            if (IsSafe(candidate) && !taken.Contains(candidate))
                renamed = candidate;
        }
        warn(renamed is null ? WarningType.DataLoss : WarningType.UnexpectedContent, renamed is null
            ? $"The package entry \"{Printable(name)}\" has an unsafe name and was left out."
            : $"The package entry \"{Printable(name)}\" has an unsafe name and was saved as \"{renamed}\".");
        return renamed;
    }

    public static bool IsSafe(string name)
    {
        if (name.Length == 0 || name[0] == '/' || name.Contains('\\') || name.Contains('\0') || name.Contains(':'))
            return false;
        foreach (var segment in name.Split('/'))
            if (segment is "" or "." or "..")
                return false;
        return true;
    }

    private static string Printable(string name) => name.Replace("\0", "\\0");
}
