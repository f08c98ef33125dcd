using System.Diagnostics;
using System.Globalization;
using Quorix.Folio;
using Quorix.Folio.Lists;
using Quorix.Folio.Saving;
using Quorix.Folio.Tables;

// Commands (timings printed as one JSON object per line, milliseconds):
//   generate <out.docx> <pages> <rows>   build the benchmark document
//   loadsave <in.docx> <out.docx>        load then save
//   markdown <in.docx> <out.md>          load then save as Markdown
//   memory <in.docx> <out.docx>          peak and live managed heap over load, first use, save,
//                                        beside the uncompressed size of the package's XML, and
//                                        what load (with first use) and save allocated in all
//   readall <in.docx> <out.docx> [n]     load, read every paragraph and table cell, save; n times,
//                                        alternating with the Open XML SDK doing the same
//   mergetemplates <fields.docx> <tags.docx>  a one-page letter with merge fields, and with {{ }} tags
//   merge <template.docx> <out.docx> <records>  mail merge of that many records, one letter each
//   fieldsdoc <out.docx> <pages> <fields>  a document with that many fields of the common kinds
//   updatefields <in.docx>                 load (model built), then update every field
static void Emit(string op, params (string Key, double Ms)[] parts)
{
    var fields = string.Join(", ", parts.Select(p => $"\"{p.Key}\": {p.Ms.ToString("F1", CultureInfo.InvariantCulture)}"));
    Console.WriteLine($"{{\"op\": \"{op}\", {fields}}}");
}

if (args.Length < 2)
{
    Console.Error.WriteLine("usage: EngineDriver generate <out.docx> <pages> <rows> | loadsave <in> <out> | markdown <in> <out.md>");
    return 2;
}

var sw = Stopwatch.StartNew();
switch (args[0])
{
    case "mergetemplates":
        MergeBench.Templates(args[1], args[2]);
        Emit("mergetemplates", ("total", sw.Elapsed.TotalMilliseconds));
        break;
    case "merge":
    {
        var (load, merge, save) = MergeBench.Merge(args[1], args[2], int.Parse(args[3], CultureInfo.InvariantCulture));
        Emit("merge", ("load", load), ("merge", merge), ("save", save), ("total", load + merge + save));
        break;
    }
    case "fieldsdoc":
        MergeBench.FieldDocument(args[1], int.Parse(args[2], CultureInfo.InvariantCulture), int.Parse(args[3], CultureInfo.InvariantCulture));
        Emit("fieldsdoc", ("total", sw.Elapsed.TotalMilliseconds));
        break;
    case "updatefields":
    {
        var (load, update, count) = MergeBench.UpdateFields(args[1]);
        Emit("updatefields", ("load", load), ("update", update), ("fields", count));
        break;
    }
    case "generate":
    {
        int pages = int.Parse(args[2], CultureInfo.InvariantCulture);
        int rows = args.Length > 3 ? int.Parse(args[3], CultureInfo.InvariantCulture) : 2000;
        Generate(args[1], pages, rows);
        Emit("generate", ("total", sw.Elapsed.TotalMilliseconds));
        break;
    }
    case "loadsave":
    {
        // An optional repeat count shows warm timings after the first, cold, run.
        int repeat = args.Length > 3 ? int.Parse(args[3], CultureInfo.InvariantCulture) : 1;
        for (int i = 0; i < repeat; i++)
        {
            sw.Restart();
            var doc = new Document(args[1]);
            double load = sw.Elapsed.TotalMilliseconds;
            doc.Save(args[2], SaveFormat.Docx);
            Emit("loadsave", ("load", load), ("save", sw.Elapsed.TotalMilliseconds - load), ("total", sw.Elapsed.TotalMilliseconds));
        }
        break;
    }
    case "readall":
    {
        // Both libraries in one process, turn about, so that both see the same machine load.
        int repeat = args.Length > 3 ? int.Parse(args[3], CultureInfo.InvariantCulture) : 1;
        for (int i = 0; i < repeat; i++)
        {
            sw.Restart();
            var doc = new Document(args[1]);
            double load = sw.Elapsed.TotalMilliseconds;
            long chars = 0;
            foreach (Paragraph p in doc.FirstSection!.Body!.Paragraphs) chars += p.GetText().Length;
            foreach (Table t in doc.FirstSection.Body.Tables)
                foreach (Row r in t.Rows)
                    foreach (Cell c in r.Cells) chars += c.GetText().Length;
            double read = sw.Elapsed.TotalMilliseconds - load;
            doc.Save(args[2], SaveFormat.Docx);
            Emit("readall", ("load", load), ("read", read), ("save", sw.Elapsed.TotalMilliseconds - load - read), ("total", sw.Elapsed.TotalMilliseconds), ("chars", chars));

            sw.Restart();
            long sdkChars = SdkReadAll(args[1], args[2] + ".sdk.docx");
            Emit("sdk-readall", ("total", sw.Elapsed.TotalMilliseconds), ("chars", sdkChars));
        }
        break;
    }
    case "memory":
    {
        long xmlBytes = 0;
        using (var zip = System.IO.Compression.ZipFile.OpenRead(args[1]))
            foreach (var e in zip.Entries)
                if (e.FullName.EndsWith(".xml", StringComparison.OrdinalIgnoreCase) || e.FullName.EndsWith(".rels", StringComparison.OrdinalIgnoreCase))
                    xmlBytes += e.Length;
        GC.Collect();
        long baseline = GC.GetTotalMemory(true), peak = baseline;
        // Sampled from another thread; the collector's own record of the largest heap backs it up.
        using var done = new ManualResetEventSlim();
        var sampler = new Thread(() =>
        {
            while (!done.IsSet)
            {
                peak = Math.Max(peak, GC.GetTotalMemory(false));
                Thread.Sleep(1);
            }
        }) { IsBackground = true };
        sampler.Start();
        long allocated = GC.GetTotalAllocatedBytes(true);
        var doc = new Document(args[1]);
        _ = doc.FirstSection!.Body!.Paragraphs.Count;
        long loadAllocated = GC.GetTotalAllocatedBytes(true) - allocated;
        allocated = GC.GetTotalAllocatedBytes(true);
        doc.Save(args[2], SaveFormat.Docx);
        long saveAllocated = GC.GetTotalAllocatedBytes(true) - allocated;
        done.Set();
        sampler.Join();
        foreach (var kind in new[] { GCKind.Ephemeral, GCKind.FullBlocking, GCKind.Background })
            peak = Math.Max(peak, GC.GetGCMemoryInfo(kind).HeapSizeBytes);
        long live = GC.GetTotalMemory(true) - baseline;
        GC.KeepAlive(doc);
        Emit("memory", ("xmlMB", xmlBytes / 1e6), ("peakMB", (peak - baseline) / 1e6), ("liveMB", live / 1e6),
            ("loadAllocMB", loadAllocated / 1e6), ("saveAllocMB", saveAllocated / 1e6));
        break;
    }
    case "markdown":
    {
        var doc = new Document(args[1]);
        double load = sw.Elapsed.TotalMilliseconds;
        doc.Save(args[2], new MarkdownSaveOptions());
        Emit("markdown", ("load", load), ("save", sw.Elapsed.TotalMilliseconds - load), ("total", sw.Elapsed.TotalMilliseconds));
        break;
    }
    default:
        Console.Error.WriteLine($"unknown command {args[0]}");
        return 2;
}
return 0;

// The same workload with the Open XML SDK: open for editing, read every paragraph's text and
// every cell's text from its DOM, and write the package out.
static long SdkReadAll(string input, string output)
{
    using var ms = new MemoryStream();
    using (var fs = File.OpenRead(input)) fs.CopyTo(ms);
    long chars = 0;
    using (var wd = DocumentFormat.OpenXml.Packaging.WordprocessingDocument.Open(ms, true))
    {
        var body = wd.MainDocumentPart!.Document.Body!;
        foreach (var p in body.Elements<DocumentFormat.OpenXml.Wordprocessing.Paragraph>()) chars += p.InnerText.Length;
        foreach (var t in body.Elements<DocumentFormat.OpenXml.Wordprocessing.Table>())
            foreach (var r in t.Elements<DocumentFormat.OpenXml.Wordprocessing.TableRow>())
                foreach (var c in r.Elements<DocumentFormat.OpenXml.Wordprocessing.TableCell>()) chars += c.InnerText.Length;
        wd.MainDocumentPart.Document.Save();
    }
    File.WriteAllBytes(output, ms.ToArray());
    return chars;
}

static void Generate(string path, int pages, int rows)
{
    var rng = new Random(1234);
    string[] words = ("lorem ipsum dolor sit amet consectetur adipiscing elit sed do eiusmod tempor incididunt ut labore et dolore " +
        "magna aliqua enim ad minim veniam quis nostrud exercitation ullamco laboris nisi aliquip ex ea commodo consequat").Split(' ');
    string Sentence(int n) => string.Join(' ', Enumerable.Range(0, n).Select(_ => words[rng.Next(words.Length)]));

    var doc = new Document();
    var b = new DocumentBuilder(doc);
    for (int page = 0; page < pages; page++)
    {
        b.ParagraphFormat.StyleIdentifier = page % 10 == 0 ? StyleIdentifier.Heading1 : StyleIdentifier.Heading2;
        b.Writeln($"Chapter {page + 1}: " + Sentence(4));
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        for (int para = 0; para < 4; para++)
        {
            b.Write(Sentence(25) + " ");
            b.Font.Bold = true;
            b.Write(Sentence(3));
            b.Font.Bold = false;
            b.Write(" " + Sentence(20) + " ");
            b.Font.Italic = true;
            b.Write(Sentence(4));
            b.Font.Italic = false;
            b.Writeln(". " + Sentence(30) + ".");
        }
        if (page % 5 == 0)
        {
            b.ListFormat.ApplyBulletDefault();
            for (int i = 0; i < 3; i++) b.Writeln(Sentence(8));
            b.ListFormat.RemoveNumbers();
        }
        if (page % 7 == 0)
        {
            b.InsertHyperlink("see the reference " + page, "https://example.org/ref/" + page, false);
            b.Writeln();
        }
        b.InsertBreak(BreakType.PageBreak);
    }
    b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
    b.Writeln("Data table");
    b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
    b.StartTable();
    foreach (var h in new[] { "Id", "Name", "Region", "Amount" }) { b.InsertCell(); b.Write(h); }
    b.RowFormat.HeadingFormat = true;
    b.EndRow();
    b.RowFormat.HeadingFormat = false;
    for (int r = 0; r < rows; r++)
    {
        bool merge = r % 50 == 49;
        b.InsertCell(); b.Write((r + 1).ToString(CultureInfo.InvariantCulture));
        if (merge) b.CellFormat.HorizontalMerge = CellMerge.First;
        b.InsertCell(); b.Write(Sentence(2));
        if (merge) b.CellFormat.HorizontalMerge = CellMerge.Previous;
        b.InsertCell(); if (!merge) b.Write(Sentence(1));
        b.CellFormat.HorizontalMerge = CellMerge.None;
        b.InsertCell(); b.Write((rng.NextDouble() * 10000).ToString("F2", CultureInfo.InvariantCulture));
        b.EndRow();
    }
    b.EndTable();
    b.Writeln("End of document.");
    doc.Save(path);
}
