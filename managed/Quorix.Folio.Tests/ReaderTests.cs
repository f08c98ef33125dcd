using System.Text;
using System.Xml;
using Quorix.Folio.Docx;
using Quorix.Folio.Formatting;

namespace Quorix.Folio.Tests;

/// <summary>The part readers: shared name instances, property bags read in one pass, and the
/// ownership of run properties when one run element becomes several nodes.</summary>
public class ReaderTests
{
    private const string W = "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"";

    [Fact]
    public void ReadersHandBackTheNamesTheyAreComparedWith()
    {
        // Built at run time so that an equal but distinct instance would be caught.
        var xml = new StringBuilder("<w:document ").Append(W).Append("><w:body><w:p/></w:body></w:document>").ToString();
        using var fromBytes = DocxReader.Open(Encoding.UTF8.GetBytes(xml));
        using var fromText = DocxReader.Open(xml);
        foreach (var r in new[] { fromBytes, fromText })
        {
            r.MoveToContent();
            Assert.Same(Ns.W, r.NamespaceURI);
            Assert.Same("document", r.LocalName);
            r.Read();
            r.Read();
            Assert.Same("p", r.LocalName);
        }
        // Name tables are not thread-safe: documents loading side by side must not share one.
        Assert.NotSame(fromBytes.NameTable, fromText.NameTable);
    }

    [Theory]
    [InlineData(0)]
    [InlineData(5)]
    [InlineData(8191)]
    [InlineData(8192)]
    [InlineData(8193)]
    [InlineData(100_000)]
    public void TextValuesOfAnyLengthAreReadWhole(int length)
    {
        // entities, a surrogate pair and a CDATA section land on and across the chunk boundaries
        string unit = "ab\u00e9 &amp;\ud834\udd1e<![CDATA[<x>]]>";
        string decoded = "ab\u00e9 &\ud834\udd1e<x>";
        var xml = new StringBuilder($"<w:t {W} xml:space=\"preserve\">");
        var expected = new StringBuilder();
        while (expected.Length < length)
        {
            xml.Append(unit);
            expected.Append(decoded);
        }
        xml.Append("</w:t>");
        using var r = XmlReader.Create(new StringReader(xml.ToString()), DocxReader.Settings);
        r.MoveToContent();
        r.Read();
        var text = new TextBuffer();
        while (r.NodeType != XmlNodeType.EndElement)
        {
            text.AppendValue(r);
            r.Read();
        }
        Assert.Equal(expected.ToString(), text.Take());
        // the buffer is empty and reusable afterwards
        text.Append("next");
        Assert.Equal("next", text.Take());
    }

    [Fact]
    public void PropertyBagsKeepChildrenTextAndForeignMarkup()
    {
        using var r = DocxReader.Open("<w:r " + W + " xmlns:x=\"urn:x\"><w:rPr w:rsidR=\"00A1\"><w:b/><w:color w:val=\"FF0000\"/>" +
                                      "<x:extra x:a=\"1\"><x:inner>kept</x:inner></x:extra></w:rPr><w:after/></w:r>");
        r.MoveToContent();
        r.Read();
        var bag = PropBag.Read(r, PropOrder.Run);
        Assert.Equal(new[] { "b", "color", "extra" }, bag.Items.Select(e => e.Local).ToArray());
        Assert.Equal("FF0000", bag.Val("color"));
        var extra = bag.Items[2];
        Assert.Equal(("urn:x", "x", "1"), (extra.Ns, extra.Prefix, extra.Get("a", "urn:x")));
        Assert.Equal("kept", extra.Children![0].Text);
        // The reader is left on what follows the bag.
        Assert.Equal("after", r.LocalName);

        using var empty = DocxReader.Open("<w:pPr " + W + "/>");
        empty.MoveToContent();
        Assert.Equal(0, PropBag.Read(empty, PropOrder.Paragraph).Count);
    }

    [Fact]
    public void PropertiesNestedBeyondTheLimitAreRefused()
    {
        var deep = new StringBuilder("<w:document ").Append(W).Append("><w:body><w:p><w:pPr>");
        for (int i = 0; i < 260; i++) deep.Append("<w:x>");
        for (int i = 0; i < 260; i++) deep.Append("</w:x>");
        deep.Append("</w:pPr></w:p></w:body></w:document>");
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml", _ => deep.ToString());
        Assert.Throws<FileCorruptedException>(() => new Document(new MemoryStream(bytes)));
    }

    public static TheoryData<string> SplitRuns => new()
    {
        // Without properties, and with them: every node made from the run needs a bag of its own.
        "<w:r><w:t>a</w:t><w:fldChar w:fldCharType=\"begin\"/><w:instrText>PAGE</w:instrText><w:fldChar w:fldCharType=\"separate\"/><w:t>1</w:t><w:fldChar w:fldCharType=\"end\"/><w:t>z</w:t></w:r>",
        "<w:r><w:rPr><w:i/></w:rPr><w:t>a</w:t><w:fldChar w:fldCharType=\"begin\"/><w:instrText>PAGE</w:instrText><w:fldChar w:fldCharType=\"separate\"/><w:t>1</w:t><w:fldChar w:fldCharType=\"end\"/><w:t>z</w:t></w:r>",
    };

    [Theory]
    [MemberData(nameof(SplitRuns))]
    public void NodesSplitFromOneRunOwnTheirProperties(string run)
    {
        var bytes = TestSupport.WithPart(TestSupport.ToBytes(new Document()), "word/document.xml",
            _ => "<w:document " + W + "><w:body><w:p>" + run + "</w:p></w:body></w:document>");
        var doc = new Document(new MemoryStream(bytes));
        var para = doc.FirstSection!.Body!.FirstParagraph!;
        var inlines = new List<Inline>();
        for (var n = para.first; n != null; n = n.next) inlines.Add((Inline)n);
        Assert.Equal(7, inlines.Count);
        bool italic = run.Contains("<w:i/>");
        Assert.All(inlines, x => Assert.Equal(italic, x.RunAttrs.Has(FormatAttr.Italic)));
        // The nodes share one immutable formatting; an edit of one gives it a formatting of its own.

        ((Run)inlines[0]).Font.Bold = true;
        Assert.True(((Run)inlines[0]).Font.Bold);
        Assert.False(((Run)inlines[^1]).Font.Bold);
        Assert.Equal("a", ((Run)inlines[0]).Text);
        Assert.Equal("z", ((Run)inlines[^1]).Text);
    }
}
