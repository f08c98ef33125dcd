using Quorix.Folio.Saving;

namespace Quorix.Folio.LowCode;

/// <summary>How the documents being merged keep their look.</summary>
public enum MergeFormatMode
{
    /// <summary>Styles of the first document win; every part takes its page layout.</summary>
    MergeFormatting = 0,
    /// <summary>Each part keeps its styles (renamed where they clash); every part takes the first document's page layout.</summary>
    KeepSourceFormatting = 1,
    /// <summary>Each part keeps its styles and its own page layout.</summary>
    KeepSourceLayout = 2,
}

/// <summary>Joins documents, each starting a new section, into one.</summary>
public static class Merger
{
    public static void Merge(string outputFile, IEnumerable<string> inputFiles) =>
        Merge(outputFile, inputFiles, SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFile))), MergeFormatMode.KeepSourceFormatting);

    public static void Merge(string outputFile, IEnumerable<string> inputFiles, MergeFormatMode mergeFormatMode) =>
        Merge(outputFile, inputFiles, SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFile))), mergeFormatMode);

    public static void Merge(string outputFile, IEnumerable<string> inputFiles, SaveFormat saveFormat, MergeFormatMode mergeFormatMode) =>
        Merge(outputFile, inputFiles, SaveOptions.CreateSaveOptions(saveFormat), mergeFormatMode);

    public static void Merge(string outputFile, IEnumerable<string> inputFiles, SaveOptions saveOptions, MergeFormatMode mergeFormatMode)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        ArgumentNullException.ThrowIfNull(saveOptions);
        Merge(inputFiles, mergeFormatMode).Save(outputFile, saveOptions);
    }

    public static Document Merge(IEnumerable<string> inputFiles, MergeFormatMode mergeFormatMode)
    {
        ArgumentNullException.ThrowIfNull(inputFiles);
        return Join(inputFiles.Select(f => new Document(f ?? throw new ArgumentException("An input file name is null.", nameof(inputFiles)))), mergeFormatMode);
    }

    public static Document Merge(IEnumerable<Stream> inputStreams, MergeFormatMode mergeFormatMode)
    {
        ArgumentNullException.ThrowIfNull(inputStreams);
        return Join(inputStreams.Select(s => new Document(s ?? throw new ArgumentException("An input stream is null.", nameof(inputStreams)))), mergeFormatMode);
    }

    public static void Merge(Stream outputStream, IEnumerable<Stream> inputStreams, SaveFormat saveFormat, MergeFormatMode mergeFormatMode)
    {
        ArgumentNullException.ThrowIfNull(outputStream);
        Merge(inputStreams, mergeFormatMode).Save(outputStream, saveFormat);
    }

    private static Document Join(IEnumerable<Document> docs, MergeFormatMode mode)
    {
        Document? result = null;
        foreach (var d in docs)
        {
            if (result == null)
            {
                result = d;
                continue;
            }
            int before = result.Sections.Count;
            result.AppendDocument(d, mode == MergeFormatMode.MergeFormatting ? ImportFormatMode.UseDestinationStyles : ImportFormatMode.KeepSourceFormatting);
            var first = result.FirstSection!.PageSetup;
            for (int i = before; i < result.Sections.Count; i++)
            {
                var ps = result.Sections[i].PageSetup;
                if (i == before) ps.SectionStart = SectionStart.NewPage;
                if (mode == MergeFormatMode.KeepSourceLayout) continue;
                ps.PageWidth = first.PageWidth;
                ps.PageHeight = first.PageHeight;
                ps.TopMargin = first.TopMargin;
                ps.BottomMargin = first.BottomMargin;
                ps.LeftMargin = first.LeftMargin;
                ps.RightMargin = first.RightMargin;
            }
        }
        return result ?? throw new ArgumentException("There is nothing to merge: no input was given.");
    }
}
