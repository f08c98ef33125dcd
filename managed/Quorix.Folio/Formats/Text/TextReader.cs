using System.Text.RegularExpressions;
using Quorix.Folio.Formats.Flow;
using List = Quorix.Folio.Lists.List;
using Quorix.Folio.Lists;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Formats.Text;

/// <summary>Plain text: one paragraph per line; leading spaces become indents and lines that start
/// like list items become lists, as the load options ask.</summary>
internal sealed partial class TextReader : IDocumentReader
{
    // Width of one leading space when it becomes an indent, in points (a typical monospaced advance).
    private const double SpaceIndent = 6;

    public LoadFormat Format => LoadFormat.Text;

    [GeneratedRegex(@"^(?<label>(?<num>\d{1,9})[.)]|[-*\u2022\u25CF\u25E6\u25AA\u2023])[ \t]+(?=\S)")]
    private static partial Regex ListStart();

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var o = options as TxtLoadOptions ?? new TxtLoadOptions();
        var text = TextDecoding.ReadAll(input, options, Format);
        var b = new FlowBuilder(document);
        var lines = text.Split('\n');
        int count = lines.Length;
        // The line break that ends the last line does not start another paragraph.
        if (count > 1 && lines[^1].Length == 0) count--;
        List? list = null;
        bool? numbered = null;
        for (int i = 0; i < count; i++)
        {
            var line = lines[i].TrimEnd('\r');
            if (o.TrailingSpacesOptions == TxtTrailingSpacesOptions.Trim) line = line.TrimEnd(' ', '\t');
            int lead = 0;
            while (lead < line.Length && line[lead] == ' ') lead++;
            var f = ParaFormat.Normal;
            var body = line;
            switch (o.LeadingSpacesOptions)
            {
                case TxtLeadingSpacesOptions.ConvertToIndent when lead > 0 && lead < line.Length:
                    f = f with { LeftIndent = lead * SpaceIndent };
                    body = line[lead..];
                    break;
                case TxtLeadingSpacesOptions.Trim:
                    body = line[lead..];
                    break;
            }
            var m = o.DetectNumberingWithWhitespaces ? ListStart().Match(body) : Match.Empty;
            if (m.Success)
            {
                bool isNumber = m.Groups["num"].Success;
                if (list == null || numbered != isNumber)
                {
                    list = b.NewList(isNumber, isNumber ? int.Parse(m.Groups["num"].Value) : 1);
                    numbered = isNumber;
                }
                f = f with { List = list, ListLevel = f.LeftIndent is { } li ? Math.Min(8, (int)(li / SpaceIndent) / 2) : 0, LeftIndent = null };
                body = body[m.Length..];
            }
            else
            {
                list = null;
                numbered = null;
            }
            b.StartParagraph(f);
            WriteLine(b, body);
            b.EndParagraph();
        }
        b.Finish();
    }

    private static void WriteLine(FlowBuilder b, string line)
    {
        // Form feeds are the page breaks of plain text; other control characters are dropped.
        int start = 0;
        for (int i = 0; i <= line.Length; i++)
        {
            if (i < line.Length && line[i] != '\f' && (line[i] >= ' ' || line[i] == '\t')) continue;
            if (i > start) b.Text(line[start..i], CharFormat.Plain);
            if (i < line.Length && line[i] == '\f') b.PageBreak();
            start = i + 1;
        }
    }
}
