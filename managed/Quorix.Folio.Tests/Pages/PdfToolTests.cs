using System.Diagnostics;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Our PDFs as tools we did not write see them: qpdf, pdfinfo, pdffonts and pdftotext.</summary>
public class PdfToolTests
{
    internal static (int Code, string Out) Run(string tool, params string[] args)
    {
        var psi = new ProcessStartInfo(tool) { RedirectStandardOutput = true, RedirectStandardError = true };
        foreach (var a in args) psi.ArgumentList.Add(a);
        using var p = Process.Start(psi)!;
        var output = p.StandardOutput.ReadToEnd() + p.StandardError.ReadToEnd();
        p.WaitForExit();
        return (p.ExitCode, output);
    }

    private static string SavePdf(Document doc, PdfSaveOptions? options = null)
    {
        var path = Path.Combine(Path.GetTempPath(), $"qf-{Guid.NewGuid():N}.pdf");
        if (options == null) doc.Save(path);
        else doc.Save(path, options);
        return path;
    }

    /// <summary>Several pages of numbered paragraphs in two fonts, with a table.</summary>
    internal static Document Report(int paragraphs)
    {
        var b = new DocumentBuilder();
        b.Font.Name = "Calibri";
        b.Font.Size = 11;
        for (int i = 1; i <= paragraphs; i++)
        {
            b.Font.Name = i % 2 == 0 ? "Times New Roman" : "Calibri";
            b.Writeln($"Paragraph {i} opens here and runs on for a while so that it wraps over more than one line of the page, " +
                      $"which is what the layout has to break correctly; it ends with the word end{i}.");
        }
        b.StartTable();
        for (int r = 0; r < 3; r++)
        {
            for (int c = 0; c < 3; c++) { b.InsertCell(); b.Write($"cell{r}{c}"); }
            b.EndRow();
        }
        b.EndTable();
        return b.Document;
    }

    [Fact]
    public void PdfPassesQpdfAndPageCountsAgree()
    {
        var doc = Report(60);
        var path = SavePdf(doc);
        try
        {
            var (code, output) = Run("qpdf", "--check", path);
            Assert.True(code == 0, output);
            var info = Run("pdfinfo", path).Out;
            var pages = info.Split('\n').First(l => l.StartsWith("Pages:")).Split(':')[1].Trim();
            Assert.True(doc.PageCount > 1);
            Assert.Equal(doc.PageCount.ToString(), pages);
        }
        finally { File.Delete(path); }
    }

    [Fact]
    public void FontsAreEmbeddedSubsetsOfTheSubstitutes()
    {
        var path = SavePdf(Report(4));
        try
        {
            var fonts = Run("pdffonts", path).Out.Split('\n').Skip(2).Where(l => l.Trim().Length > 0).ToList();
            Assert.NotEmpty(fonts);
            // name, type, encoding, emb, sub, uni, object: every font embedded and subset
            Assert.All(fonts, l => Assert.Matches(@"^[A-Z]{6}\+\S+\s.*\byes\s+yes\b", l));
            Assert.Contains(fonts, l => l.Contains("Carlito"));
            Assert.Contains(fonts, l => l.Contains("LiberationSerif"));
        }
        finally { File.Delete(path); }
    }

    [Fact]
    public void TextComesOutInReadingOrder()
    {
        var doc = Report(30);
        var path = SavePdf(doc);
        try
        {
            var text = Run("pdftotext", "-layout", path, "-").Out;
            int last = -1;
            for (int i = 1; i <= 30; i++)
            {
                int at = text.IndexOf($"end{i}.", StringComparison.Ordinal);
                Assert.True(at > last, $"end{i} is missing or out of order");
                last = at;
            }
            Assert.Matches(@"cell00\s+cell01\s+cell02", text);
        }
        finally { File.Delete(path); }
    }
}

/// <summary>Links survive into the PDF as link annotations: web addresses and jumps to bookmarks.</summary>
public class PdfLinkTests
{
    [Fact]
    public void HyperlinksBecomeLinkAnnotations()
    {
        var b = new DocumentBuilder();
        b.Write("See ");
        b.InsertHyperlink("the site", "https://example.com/page", false);
        b.Write(" or ");
        b.InsertHyperlink("the target", "target", true);
        b.InsertBreak(BreakType.PageBreak);
        b.StartBookmark("target");
        b.Write("Target text");
        b.EndBookmark("target");
        var path = Path.Combine(Path.GetTempPath(), $"qf-{Guid.NewGuid():N}.pdf");
        try
        {
            b.Document.Save(path);
            // Written out uncompressed by qpdf, the annotations can be read as text.
            var (code, output) = PdfToolTests.Run("qpdf", "--qdf", "--object-streams=disable", path, path + ".qdf");
            Assert.True(code == 0, output);
            var raw = System.Text.Encoding.Latin1.GetString(File.ReadAllBytes(path + ".qdf"));
            Assert.Matches(@"/URI\s*\(https://example.com/page\)", raw);
            Assert.Matches(@"/Subtype\s*/Link", raw);
            Assert.Matches(@"/Dest\s*\(target\)|/Dest\s*/target", raw);
        }
        finally
        {
            File.Delete(path);
            File.Delete(path + ".qdf");
        }
    }
}
