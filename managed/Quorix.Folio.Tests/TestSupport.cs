using System.Diagnostics;
using System.IO.Compression;
using System.Text;

namespace Quorix.Folio.Tests;

internal static class TestSupport
{
    public static Document RoundTrip(Document doc)
    {
        var ms = new MemoryStream();
        doc.Save(ms, SaveFormat.Docx);
        ms.Position = 0;
        return new Document(ms);
    }

    /// <summary>The document with its model built, so that saving it goes through the model.</summary>
    public static Document Built(Document doc)
    {
        _ = doc.FirstSection;
        return doc;
    }

    public static byte[] ToBytes(Document doc, SaveFormat format = SaveFormat.Docx)
    {
        var ms = new MemoryStream();
        doc.Save(ms, format);
        return ms.ToArray();
    }

    public static byte[] ToBytes(Document doc, Saving.SaveOptions options)
    {
        var ms = new MemoryStream();
        doc.Save(ms, options);
        return ms.ToArray();
    }

    public static string ToText(Document doc, SaveFormat format) => Encoding.UTF8.GetString(ToBytes(doc, format));

    /// <summary>The XML of one part of a saved package.</summary>
    public static string Part(byte[] docx, string name)
    {
        using var zip = new ZipArchive(new MemoryStream(docx), ZipArchiveMode.Read);
        var e = zip.GetEntry(name) ?? throw new Xunit.Sdk.XunitException($"no part {name}");
        using var r = new StreamReader(e.Open());
        return r.ReadToEnd();
    }

    /// <summary>Rewrites one part of a package, the way a hand-edited or foreign file would differ.</summary>
    public static byte[] WithPart(byte[] docx, string name, Func<string?, string?> edit)
    {
        var src = new ZipArchive(new MemoryStream(docx), ZipArchiveMode.Read);
        var outMs = new MemoryStream();
        using (var dst = new ZipArchive(outMs, ZipArchiveMode.Create, true))
        {
            bool seen = false;
            foreach (var e in src.Entries)
            {
                string? content;
                if (e.FullName == name)
                {
                    seen = true;
                    using var r = new StreamReader(e.Open());
                    content = edit(r.ReadToEnd());
                    if (content == null) continue;
                    using var w = new StreamWriter(dst.CreateEntry(name).Open(), new UTF8Encoding(false));
                    w.Write(content);
                    continue;
                }
                using var es = e.Open();
                using var ds = dst.CreateEntry(e.FullName).Open();
                es.CopyTo(ds);
            }
            if (!seen && edit(null) is { } added)
            {
                using var w = new StreamWriter(dst.CreateEntry(name).Open(), new UTF8Encoding(false));
                w.Write(added);
            }
        }
        return outMs.ToArray();
    }

    public static string TempDir()
    {
        var d = Path.Combine(Path.GetTempPath(), "qfolio-tests-" + Guid.NewGuid().ToString("N")[..8]);
        Directory.CreateDirectory(d);
        return d;
    }

    public static (int Code, string Out, string Err) Run(string exe, string args, string? stdin = null, int timeoutMs = 60000)
    {
        var psi = new ProcessStartInfo(exe, args)
        {
            RedirectStandardOutput = true,
            RedirectStandardError = true,
            RedirectStandardInput = stdin != null,
            UseShellExecute = false,
            StandardOutputEncoding = Encoding.UTF8,
        };
        using var p = Process.Start(psi)!;
        if (stdin != null)
        {
            p.StandardInput.Write(stdin);
            p.StandardInput.Close();
        }
        var outTask = p.StandardOutput.ReadToEndAsync();
        var errTask = p.StandardError.ReadToEndAsync();
        if (!p.WaitForExit(timeoutMs))
        {
            p.Kill(true);
            throw new TimeoutException($"{exe} did not finish");
        }
        return (p.ExitCode, outTask.Result, errTask.Result);
    }

    public static bool HasTool(string path) => File.Exists(path);

    /// <summary>A tiny valid PNG of the given size.</summary>
    public static byte[] Png(int width, int height)
    {
        var ms = new MemoryStream();
        ms.Write(new byte[] { 0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A });
        void Chunk(string type, byte[] data)
        {
            var len = BitConverter.GetBytes(data.Length);
            Array.Reverse(len);
            ms.Write(len);
            var td = Encoding.ASCII.GetBytes(type).Concat(data).ToArray();
            ms.Write(td);
            var crc = BitConverter.GetBytes(Crc32(td));
            Array.Reverse(crc);
            ms.Write(crc);
        }
        var ihdr = new byte[13];
        BitConverter.GetBytes(width).Reverse().ToArray().CopyTo(ihdr, 0);
        BitConverter.GetBytes(height).Reverse().ToArray().CopyTo(ihdr, 4);
        ihdr[8] = 8; ihdr[9] = 2;
        Chunk("IHDR", ihdr);
        var raw = new MemoryStream();
        for (int y = 0; y < height; y++)
        {
            raw.WriteByte(0);
            for (int x = 0; x < width; x++) { raw.WriteByte(200); raw.WriteByte(30); raw.WriteByte(30); }
        }
        var z = new MemoryStream();
        using (var zs = new ZLibStream(z, CompressionLevel.Optimal, true)) raw.WriteTo(zs);
        Chunk("IDAT", z.ToArray());
        Chunk("IEND", Array.Empty<byte>());
        return ms.ToArray();
    }

    private static uint Crc32(byte[] data)
    {
        uint crc = 0xFFFFFFFF;
        foreach (var b in data)
        {
            crc ^= b;
            for (int k = 0; k < 8; k++) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320 : crc >> 1;
        }
        return ~crc;
    }
}
