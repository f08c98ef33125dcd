using Quorix.Folio.Saving;

namespace Quorix.Folio.LowCode;

/// <summary>Where a document is cut into parts.</summary>
public enum SplitCriteria
{
    /// <summary>Each section is a part.</summary>
    SectionBreak = 0,
    /// <summary>A part ends at each page break written in the text.</summary>
    PageBreak = 1,
    /// <summary>A part starts at each paragraph of the style <see cref="SplitOptions.SplitStyle"/>.</summary>
    Style = 2,
}

/// <summary>How a document is split into several.</summary>
public sealed class SplitOptions
{
    /// <summary>Where the document is cut: at section breaks, page breaks, headings or pages.</summary>
    public SplitCriteria SplitCriteria { get; set; } = SplitCriteria.SectionBreak;

    /// <summary>The paragraph style that starts a part when splitting by style.</summary>
    public string SplitStyle { get; set; } = "heading 1";
}

/// <summary>Cuts a document into several, each saved on its own.</summary>
public static class Splitter
{
    /// <summary>Writes the parts beside <paramref name="outputFileName"/> as name_1.ext, name_2.ext, ...;
    /// returns how many there are.</summary>
    public static int Split(string inputFileName, string outputFileName, SplitOptions splitOptions)
    {
        ArgumentException.ThrowIfNullOrEmpty(outputFileName);
        var options = SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(outputFileName)));
        var parts = Parts(new Document(inputFileName), splitOptions);
        SaveParts(parts, outputFileName, options);
        return parts.Count;
    }

    private static void SaveParts(List<Document> parts, string pattern, SaveOptions? options)
    {
        var full = Path.GetFullPath(pattern);
        options ??= SaveOptions.CreateSaveOptions(FileFormatUtil.ExtensionToSaveFormat(Path.GetExtension(full)));
        for (int i = 0; i < parts.Count; i++)
            parts[i].Save(Path.Combine(Path.GetDirectoryName(full)!, $"{Path.GetFileNameWithoutExtension(full)}_{i + 1}{Path.GetExtension(full)}"), options);
    }

    /// <summary>Cuts the document read from inputStream into parts, each returned as a stream in saveFormat.</summary>
    public static Stream[] Split(Stream inputStream, SaveFormat saveFormat, SplitOptions splitOptions)
    {
        ArgumentNullException.ThrowIfNull(inputStream);
        return Parts(new Document(inputStream), splitOptions).Select(p =>
        {
            var ms = new MemoryStream();
            p.Save(ms, saveFormat);
            ms.Position = 0;
            return (Stream)ms;
        }).ToArray();
    }

    /// <summary>Each output file name is the pattern of the parts' names, as for <see cref="Split(string, string, SplitOptions)"/>.</summary>
    public static Processor Create(SplitterContext context)
    {
        ArgumentNullException.ThrowIfNull(context);
        return new Processor("Splitting", 1, 1, p =>
        {
            var parts = Parts(p.Load(0), context.SplitOptions);
            foreach (var (target, options) in p.Outputs)
            {
                if (target is not string file)
                    throw new NotSupportedException("A split makes several documents, which one stream cannot hold: give a file name.");
                SaveParts(parts, file, options);
            }
        });
    }

    /// <summary>The parts as documents; each is a copy of the source cut down to its blocks, so that it
    /// keeps the styles, lists, headers, footers and page set-up of the source.</summary>
    public static List<Document> Parts(Document doc, SplitOptions options)
    {
        ArgumentNullException.ThrowIfNull(doc);
        ArgumentNullException.ThrowIfNull(options);
        if (options.SplitCriteria == SplitCriteria.Style && doc.Styles[options.SplitStyle] == null)
            throw new ArgumentException($"The document has no style named '{options.SplitStyle}' to split at.", nameof(options));
        // The part of each block of the main text, in document order.
        var partOf = new List<int>();
        int part = 0;
        bool any = false, cutAfter = false;
        foreach (var s in doc.Sections.ToArray())
        {
            if (options.SplitCriteria == SplitCriteria.SectionBreak && any) part++;
            for (var n = s.Body?.FirstChild; n != null; n = n.NextSibling)
            {
                bool starts = options.SplitCriteria == SplitCriteria.Style && n is Paragraph sp &&
                              sp.ParagraphFormat.StyleName.Equals(options.SplitStyle, StringComparison.OrdinalIgnoreCase);
                if ((starts || cutAfter) && any) part++;
                cutAfter = options.SplitCriteria == SplitCriteria.PageBreak && n is Paragraph pb && pb.GetText().Contains(ControlChar.PageBreakChar);
                partOf.Add(part);
                any = true;
            }
        }
        var parts = new List<Document>();
        for (int k = 0; k <= part && any; k++)
        {
            var copy = doc.Clone();
            int i = 0;
            foreach (var s in copy.Sections.ToArray())
            {
                bool kept = false;
                for (var n = s.Body?.FirstChild; n != null;)
                {
                    var next = n.NextSibling;
                    if (partOf[i++] != k) n.Remove();
                    else kept = true;
                    n = next;
                }
                if (!kept) s.Remove();
            }
            copy.EnsureMinimum();
            parts.Add(copy);
        }
        return parts;
    }
}
