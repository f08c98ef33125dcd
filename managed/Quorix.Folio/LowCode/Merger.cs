using System.Collections;
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

/// <summary>Joins documents, each starting a new section, into one. Inputs are any sequence of file
/// names or streams, so that a Python list serves as well as an array.</summary>
public static class Merger
{
    /// <summary>Joins the documents of inputFiles, in order, into outputFile.</summary>
    public static void Merge(string outputFile, IEnumerable inputFiles) =>
        Merge(outputFile, inputFiles, SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFile))), MergeFormatMode.KeepSourceFormatting);

    /// <summary>Joins the documents of inputFiles into outputFile, their formatting resolved as mode says.</summary>
    public static void Merge(string outputFile, IEnumerable inputFiles, MergeFormatMode mergeFormatMode) =>
        Merge(outputFile, inputFiles, SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFile))), mergeFormatMode);

    /// <summary>Joins the documents of inputFiles into outputFile in saveFormat.</summary>
    public static void Merge(string outputFile, IEnumerable inputFiles, SaveFormat saveFormat, MergeFormatMode mergeFormatMode) =>
        Merge(outputFile, inputFiles, SaveOptions.CreateSaveOptions(saveFormat), mergeFormatMode);

    /// <summary>Joins the documents of inputFiles into outputFile with the given save options.</summary>
    public static void Merge(string outputFile, IEnumerable inputFiles, SaveOptions saveOptions, MergeFormatMode mergeFormatMode)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFile);
        ArgumentNullException.ThrowIfNull(saveOptions);
        Merge(inputFiles, mergeFormatMode).Save(outputFile, saveOptions);
    }

    /// <summary>Each input is a file name or a stream.</summary>
    public static Document Merge(IEnumerable inputs, MergeFormatMode mergeFormatMode)
    {
        ArgumentNullException.ThrowIfNull(inputs);
        return Join(inputs.Cast<object?>().Select(i => i switch
        {
            string file => new Document(file),
            Stream stream => new Document(stream),
            _ => throw new ArgumentException("Each input must be a file name or a stream.", nameof(inputs)),
        }), mergeFormatMode);
    }

    /// <summary>Joins the documents of inputFiles and writes the result to a stream in saveFormat.</summary>
    public static void Merge(Stream outputStream, IEnumerable inputs, SaveFormat saveFormat, MergeFormatMode mergeFormatMode)
    {
        ArgumentNullException.ThrowIfNull(outputStream);
        Merge(inputs, mergeFormatMode).Save(outputStream, saveFormat);
    }

    /// <summary>The inputs are joined in the order they were given.</summary>
    public static Processor Create(MergerContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return new Processor("Merging", 1, int.MaxValue, p =>
            p.Save(Join(Enumerable.Range(0, p.InputCount).Select(p.Load), context.MergeFormatMode)));
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
