using Quorix.Folio.Fonts;
using Quorix.Folio.Layout;

namespace Quorix.Folio.Tests.Pages;

/// <summary>Which faces the layout gets for the fonts a document names.</summary>
public class FontTests
{
    [Theory]
    [InlineData("Calibri", "Carlito")]
    [InlineData("Cambria", "Caladea")]
    [InlineData("Arial", "Liberation Sans")]
    [InlineData("Helvetica", "Liberation Sans")]
    [InlineData("Times New Roman", "Liberation Serif")]
    [InlineData("Courier New", "Liberation Mono")]
    [InlineData("DejaVu Sans", "DejaVu Sans")]
    public void CommonOfficeFontsGetTheirMetricCompatibleFaces(string name, string family)
    {
        var f = FontSettings.DefaultInstance.Library.Resolve(name, false, false);
        Assert.Equal(family, f.Face.Family);
        Assert.False(f.FakeBold);
    }

    [Fact]
    public void BoldAndItalicPickTheirOwnFilesWhenThereAreSome()
    {
        var f = FontSettings.DefaultInstance.Library.Resolve("Arial", true, true);
        Assert.True(f.Face.Bold && f.Face.Italic);
        Assert.False(f.FakeBold || f.FakeItalic);
    }

    [Fact]
    public void TableRulesCanBeChangedPerSettings()
    {
        var settings = new FontSettings();
        settings.SubstitutionSettings.TableSubstitution.SetSubstitutes("Calibri", "DejaVu Serif");
        Assert.Equal("DejaVu Serif", settings.Library.Resolve("Calibri", false, false).Face.Family);
        Assert.Equal("Carlito", FontSettings.DefaultInstance.Library.Resolve("Calibri", false, false).Face.Family);
    }

    [Fact]
    public void AnUnknownFontFallsBackToAnInstalledFace()
    {
        var settings = new FontSettings();
        settings.SubstitutionSettings.FontConfigSubstitution.Enabled = false;
        Assert.Equal("DejaVu Sans", settings.Library.Resolve("No Such Font 12345", false, false).Face.Family);
    }

    [Fact]
    public void FolderSourcesLimitTheFacesToThatFolder()
    {
        var folder = Directory.CreateTempSubdirectory("qf-fonts-");
        try
        {
            var mono = FontSettings.DefaultInstance.Library.Resolve("Courier New", false, false).Face;
            var settings = new FontSettings();
            Assert.Throws<InvalidOperationException>(() => { settings.SetFontsFolder(folder.FullName, false); settings.Library.Resolve("Arial", false, false); });
            var path = Directory.GetFiles("/usr/share/fonts", "LiberationMono-Regular.ttf", SearchOption.AllDirectories).First();
            File.Copy(path, Path.Combine(folder.FullName, "mono.ttf"));
            settings.SetFontsFolder(folder.FullName, false);
            // Every name now lands on the one face there is.
            Assert.Equal(mono.Family, settings.Library.Resolve("Arial", false, false).Face.Family);
            Assert.True(settings.Library.Resolve("Arial", true, false).FakeBold);
        }
        finally { folder.Delete(true); }
    }

    [Fact]
    public void CharactersAFaceLacksComeFromAFallbackFace()
    {
        var b = new DocumentBuilder();
        b.Font.Name = "Calibri";
        b.Write("a\u222Eb"); // a contour integral: not in Carlito
        var runs = b.Document.PageLayout.Pages[0].Items.OfType<GlyphRun>().ToList();
        var faces = runs.OrderBy(r => r.Xs[0] + r.X).Select(r => r.Font.Face).ToArray();
        Assert.Equal(3, faces.Length);
        Assert.Equal("Carlito", faces[0].Family);
        Assert.NotEqual("Carlito", faces[1].Family);
        Assert.True(faces[1].Has(0x222E));
        Assert.Same(faces[0], faces[2]);
        Assert.DoesNotContain(runs, r => r.Glyphs.Contains((ushort)0));
    }

    [Fact]
    public void ADocumentUsesItsOwnFontSettings()
    {
        var b = new DocumentBuilder();
        b.Font.Name = "Calibri";
        b.Write("text");
        var doc = b.Document;
        Assert.Equal("Carlito", doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().First().Font.Face.Family);
        var settings = new FontSettings();
        settings.SubstitutionSettings.TableSubstitution.SetSubstitutes("Calibri", "Liberation Mono");
        doc.FontSettings = settings;
        Assert.Equal("Liberation Mono", doc.PageLayout.Pages[0].Items.OfType<GlyphRun>().First().Font.Face.Family);
    }
}
