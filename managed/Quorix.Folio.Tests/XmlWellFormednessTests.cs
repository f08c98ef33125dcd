using System.IO.Compression;
using System.Text;
using System.Text.RegularExpressions;
using System.Xml;
using Quorix.Folio.Docx;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;
using static Quorix.Folio.Package.XmlWellFormedness;

namespace Quorix.Folio.Tests;

/// <summary>
/// The load-time markup check must reach the verdict the document reader's XmlReader reaches over the whole part:
/// every case runs both and compares, and the fast scan is held to it on its own, without the reader behind it.
/// </summary>
public class XmlWellFormednessTests
{
    private sealed record Reading(XmlException? Error, XmlRootName Root);

    private static Reading ReadWithReader(byte[] xml)
    {
        try
        {
            using var r = XmlReader.Create(new MemoryStream(xml), DocxReader.Settings);
            XmlRootName? root = null;
            int depth = 0;
            while (r.Read())
            {
                if (r.NodeType != XmlNodeType.Element) continue;
                root ??= new XmlRootName(r.LocalName, r.NamespaceURI);
                depth = Math.Max(depth, r.Depth);
            }
            return new Reading(null, root!.Value with { MaxDepth = depth });
        }
        catch (XmlException e)
        {
            return new Reading(e, default);
        }
    }

    /// <summary>Text as UTF-8, except that {HH} stands for one raw byte.</summary>
    private static byte[] Bytes(string text)
    {
        var parts = Regex.Split(text, @"(\{[0-9A-F]{2}\})");
        var bytes = new List<byte>();
        foreach (var part in parts)
        {
            if (part.Length == 4 && part[0] == '{' && part[3] == '}') bytes.Add(Convert.ToByte(part.Substring(1, 2), 16));
            else bytes.AddRange(Encoding.UTF8.GetBytes(part));
        }
        return bytes.ToArray();
    }

    private static string Show(byte[] xml) => xml.Length <= 200 ? Encoding.UTF8.GetString(xml) : $"{xml.Length} bytes";

    /// <summary>Check throws exactly when the reader does (the reader's own exception), else returns the reader's root.</summary>
    private static void AssertCheckAgrees(byte[] xml, Reading reader)
    {
        if (reader.Error is { } expected)
        {
            var thrown = Assert.Throws<XmlException>(() => XmlWellFormedness.Check(xml));
            Assert.Equal((expected.Message, expected.LineNumber, expected.LinePosition), (thrown.Message, thrown.LineNumber, thrown.LinePosition));
        }
        else
        {
            Assert.Equal(reader.Root, XmlWellFormedness.Check(xml));
        }
    }

    /// <summary>The scan on its own agrees with the reader (or declines); null when it does.</summary>
    private static string? ScanDisagreement(byte[] xml, Reading reader)
    {
        var scan = XmlWellFormedness.Scan(xml);
        if (scan.Verdict == ScanVerdict.NotHandled) return null;
        bool ok = scan.Verdict == ScanVerdict.WellFormed;
        if (ok != (reader.Error == null))
            return $"scan says {scan.Verdict} ({scan.Reason} at {scan.Offset}), reader says {reader.Error?.Message ?? "well-formed"}: {Show(xml)}";
        if (ok && scan.Root != reader.Root)
            return $"scan found {scan.Root}, reader {reader.Root}: {Show(xml)}";
        return null;
    }

    private static void AssertVerdict(string text, bool wellFormed)
    {
        var xml = Bytes(text);
        var reader = ReadWithReader(xml);
        // The case itself must be what it claims, or it tests nothing.
        Assert.True((reader.Error == null) == wellFormed, $"the reader says {reader.Error?.Message ?? "well-formed"}: {text}");
        var scan = XmlWellFormedness.Scan(xml);
        Assert.True(scan.Verdict != ScanVerdict.NotHandled, $"the scan left this to the reader ({scan.Reason}): {text}");
        Assert.Null(ScanDisagreement(xml, reader));
        AssertCheckAgrees(xml, reader);
    }

    [Theory]
    [InlineData("<a>é 漢字 😀</a>", true)]
    [InlineData("{EF}{BB}{BF}<a/>", true)]
    [InlineData("<a>{7F}{C2}{80}{C2}{9F}</a>", true)]            // DEL and C1 controls are XML characters
    [InlineData("<a>{EF}{BF}{BD}{EF}{BB}{BF}</a>", true)]        // U+FFFD, U+FEFF in content
    [InlineData("<a>\t\n\r</a>", true)]
    [InlineData("<a/>{C3}", true)]                               // an unfinished sequence at the very end is dropped
    [InlineData("<a/>\n{F0}{9F}{98}", true)]
    [InlineData("<a>{FF}</a>", false)]
    [InlineData("<a>{C3}</a>", false)]
    [InlineData("<a>{ED}{A0}{80}</a>", false)]                   // an encoded surrogate
    [InlineData("<a>{C0}{AF}</a>", false)]                       // overlong
    [InlineData("<a>{EF}{BF}{BE}</a>", false)]
    [InlineData("<a>{EF}{BF}{BF}</a>", false)]
    [InlineData("<a/><!--{EF}{BF}{BF}-->", false)]
    [InlineData("<a>{01}</a>", false)]
    [InlineData("<a>{00}</a>", false)]
    [InlineData("<a b=\"{0B}\"/>", false)]
    [InlineData("<!--{1F}--><a/>", false)]
    [InlineData("<a/><?p {08}?>", false)]
    [InlineData("{EF}{BB}{BF}{EF}{BB}{BF}<a/>", false)]
    [InlineData("<a/>{ED}{A0}", false)]                          // unfinished, but already not a prefix of a character
    [InlineData("<a/>{F5}", false)]
    [InlineData("<a/>x{E2}{82}", false)]
    public void CharactersAndUtf8(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    [Theory]
    [InlineData("<?xml version=\"1.0\"?><a/>", true)]
    [InlineData("<?xml version='1.0' encoding='UTF-8' standalone='no' ?>\r\n<a/>", true)]
    [InlineData("<?xml version = \"1.0\" standalone=\"yes\"?><a/>", true)]
    [InlineData("{EF}{BB}{BF}<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>", true)]
    [InlineData(" <?xml version=\"1.0\"?><a/>", false)]
    [InlineData("<a/><?xml version=\"1.0\"?>", false)]
    [InlineData("<?xml?><a/>", false)]
    [InlineData("<?xml encoding=\"utf-8\"?><a/>", false)]
    [InlineData("<?xml version=\"1.1\"?><a/>", false)]
    [InlineData("<?xml version=\"1.\"?><a/>", false)]
    [InlineData("<?xml version=\"1.0\"encoding=\"utf-8\"?><a/>", false)]
    [InlineData("<?xml version=\"1.0\" standalone=\"yes\" encoding=\"utf-8\"?><a/>", false)]
    [InlineData("<?xml version=\"1.0\" standalone=\"maybe\"?><a/>", false)]
    [InlineData("<?xml version=\"1.0\" standalone=\"yes\" standalone=\"yes\"?><a/>", false)]
    [InlineData("<?xml version=\"1.0\"><a/>", false)]
    [InlineData("<?XML version=\"1.0\"?><a/>", false)]
    public void Declaration(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    [Theory]
    [InlineData("<a><b><c/></b></a >", true)]
    [InlineData("<a\n\tb\r=\r\"x\"\n/>", true)]
    [InlineData("<a b='\"' c=\"'\" d=\">\" e=\"]]>\"/>", true)]
    [InlineData("<!-- x --> <a/>\r\n <?p?> ", true)]
    [InlineData("", false)]
    [InlineData("  \n", false)]
    [InlineData("</a>", false)]
    [InlineData("<a></b>", false)]
    [InlineData("<a></ab>", false)]
    [InlineData("<ab></a>", false)]
    [InlineData("<a></ a>", false)]
    [InlineData("<a><b></a></b>", false)]
    [InlineData("<a>", false)]
    [InlineData("<a", false)]
    [InlineData("<a b=\"1\"c=\"2\"/>", false)]
    [InlineData("<a b=\"1\"/ >", false)]
    [InlineData("<a b=1/>", false)]
    [InlineData("<a b/>", false)]
    [InlineData("<a b=\"<\"/>", false)]
    [InlineData("<a b=\"x/>", false)]
    [InlineData("<a b=\"1\" b=\"2\"/>", false)]
    [InlineData("<a/><b/>", false)]
    [InlineData("<a/>text", false)]
    [InlineData("text<a/>", false)]
    [InlineData("<a/>&#32;", false)]
    [InlineData("<1a/>", false)]
    [InlineData("<a =\"\"/>", false)]
    public void TagsAndAttributes(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    [Theory]
    [InlineData("<a>&lt;&gt;&amp;&apos;&quot;</a>", true)]
    [InlineData("<a>&#65;&#x41;&#x1F600;&#0000065;&#1114111;&#9;&#xd;</a>", true)]
    [InlineData("<a b=\"&#9;&lt;&quot;\"/>", true)]
    [InlineData("<a>]] > ] x]]</a>", true)]
    [InlineData("<a>]]></a>", false)]
    [InlineData("<a>x]]]>y</a>", false)]
    [InlineData("<a>&foo;</a>", false)]
    [InlineData("<a b=\"&foo;\"/>", false)]
    [InlineData("<a>&amp</a>", false)]
    [InlineData("<a>&AMP;</a>", false)]
    [InlineData("<a>& b</a>", false)]
    [InlineData("<a>&#X41;</a>", false)]
    [InlineData("<a>&#x;</a>", false)]
    [InlineData("<a>&#;</a>", false)]
    [InlineData("<a>&#65</a>", false)]
    [InlineData("<a>&#0;</a>", false)]
    [InlineData("<a>&#xD800;</a>", false)]
    [InlineData("<a>&#xFFFE;</a>", false)]
    public void TextAndReferences(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    [Theory]
    [InlineData("<!-- c --><a><!----><!-- a-b --></a><!-- after -->", true)]
    [InlineData("<?pi?><a><?pi data?></a><?x-y z?>", true)]
    [InlineData("<?xml-stylesheet href=\"a\"?><a/>", true)]
    [InlineData("<a><![CDATA[<b>&amp;]]]></a>", true)]
    [InlineData("<a><![CDATA[]]></a>", true)]
    [InlineData("<a><!-- a -- b --></a>", false)]
    [InlineData("<a><!-- a---></a>", false)]
    [InlineData("<a><!---></a>", false)]
    [InlineData("<a><!-- x</a>", false)]
    [InlineData("<a><?xml x?></a>", false)]
    [InlineData("<a><?XmL?></a>", false)]
    [InlineData("<a><?p:q?></a>", false)]
    [InlineData("<a><?pi?x?></a>", false)]
    [InlineData("<a><?pi x</a>", false)]
    [InlineData("<![CDATA[x]]><a/>", false)]
    [InlineData("<a/><![CDATA[x]]>", false)]
    [InlineData("<a><![CDATA[x</a>", false)]
    [InlineData("<a><![cdata[x]]></a>", false)]
    [InlineData("<!DOCTYPE a><a/>", false)]
    [InlineData("<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>", false)]
    [InlineData("<a><!DOCTYPE a></a>", false)]
    [InlineData("<a><!x></a>", false)]
    public void CommentsInstructionsCData(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    [Theory]
    [InlineData("<p:a xmlns:p=\"urn:p\"/>", true)]
    [InlineData("<a xmlns:p=\"urn:p\"><p:b p:c=\"1\"/></a>", true)]
    [InlineData("<a p:b=\"1\" xmlns:p=\"urn:p\"/>", true)]                    // a declaration applies to its whole tag
    [InlineData("<a xmlns:p=\"urn:p\" b=\"1\" p:b=\"2\"/>", true)]
    [InlineData("<a xmlns:p=\"u\" xmlns:q=\"u \" p:x=\"\" q:x=\"\"/>", true)]
    [InlineData("<xml:a xml:lang=\"\" xml:space=\"preserve\"/>", true)]
    [InlineData("<a xml:space=\" default\r\n\"/>", true)]
    [InlineData("<a xmlns:xml=\"http://www.w3.org/XML/1998/namespace\"/>", true)]
    [InlineData("<a xmlns=\"\"/>", true)]
    [InlineData("<xmlns:a/>", true)]
    [InlineData("<a><p:b xmlns:p=\"u\"/><c xmlns:p=\"v\"><p:d/></c></a>", true)]
    [InlineData("<p:a xmlns:p=\"u\"><p:b xmlns:p=\"v\"/><p:c/></p:a>", true)]
    [InlineData("<abcdefghij:a xmlns:abcdefghij=\"u\"/>", true)]
    [InlineData("<a xmlns:abcdefghiX=\"u1\" xmlns:abcdefghiY=\"u2\"><abcdefghiY:b/><abcdefghiX:b/></a>", true)]
    [InlineData("<a xmlns:p=\"u\" xmlns:q=\"u\" p:abcdefghijk=\"\" q:abcdefghijX=\"\"/>", true)]
    [InlineData("<p:a/>", false)]
    [InlineData("<a p:b=\"1\"/>", false)]
    [InlineData("<a><p:b xmlns:p=\"u\"/><p:c/></a>", false)]                 // the scope ended with b
    [InlineData("<a><p:b xmlns:p=\"u\"></p:b><p:c/></a>", false)]
    [InlineData("<abcdefghiZ:a xmlns:abcdefghiX=\"u\"/>", false)]
    [InlineData("<a xmlns:p=\"\"/>", false)]
    [InlineData("<a xmlns:xml=\"urn:x\"/>", false)]
    [InlineData("<a xmlns:xmlns=\"urn:x\"/>", false)]
    [InlineData("<a xmlns:p=\"http://www.w3.org/XML/1998/namespace\"/>", false)]
    [InlineData("<a xmlns=\"http://www.w3.org/2000/xmlns/\"/>", false)]
    [InlineData("<a xmlns:p=\"u\" xmlns:q=\"u\" p:x=\"\" q:x=\"\"/>", false)]  // duplicates once the prefixes resolve
    [InlineData("<a xmlns:p=\"u\" xmlns:q=\"u\" p:abcdefghijk=\"\" q:abcdefghijk=\"\"/>", false)]
    [InlineData("<a xmlns:p=\"u\" xmlns:q=\"v\"><p:x/><b xmlns:p=\"v\" p:k=\"\" q:k=\"\"/></a>", false)]  // p rebound after use
    [InlineData("<a xmlns:p=\"u\" xmlns:q=\"u\"><b xmlns:p=\"v\"><p:x/></b><c p:k=\"\" q:k=\"\"/></a>", false)] // p back in scope
    [InlineData("<a xmlns:p=\"u\" xmlns:p=\"v\"/>", false)]
    [InlineData("<a xmlns=\"u\" xmlns=\"v\"/>", false)]
    [InlineData("<a xml:space=\"Preserve\"/>", false)]
    [InlineData("<a xml:space=\"\"/>", false)]
    [InlineData("<:a/>", false)]
    [InlineData("<a:/>", false)]
    [InlineData("<a:b:c xmlns:a=\"u\"/>", false)]
    [InlineData("<a xmlns:p=\"u\" :b=\"1\"/>", false)]
    public void Namespaces(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    [Theory]
    [InlineData("<é·-._1 a·é=\"1\"/>", true)]
    [InlineData("<漢字/>", true)]
    [InlineData("<a\u0300/>", true)]
    [InlineData("<_A.B-C_D/>", true)]
    [InlineData("<\u0300a/>", false)]
    [InlineData("<a😀/>", false)]              // no name characters outside the BMP
    [InlineData("<😀/>", false)]
    [InlineData("<a\U00010041/>", false)]      // its low half alone would be 'A'
    [InlineData("<\U00010041/>", false)]
    [InlineData("<-a/>", false)]
    [InlineData("<p:1a xmlns:p=\"u\"/>", false)]
    [InlineData("<.a/>", false)]
    [InlineData("<a\uFF1A/>", false)]
    [InlineData("<a\u00D7/>", false)]
    [InlineData("<a b\u00F7=\"1\"/>", false)]
    public void Names(string xml, bool wellFormed) => AssertVerdict(xml, wellFormed);

    public static TheoryData<byte[]> LeftToTheReader() => new()
    {
        Encoding.Unicode.GetPreamble().Concat(Encoding.Unicode.GetBytes("<a xmlns=\"urn:u\"/>")).ToArray(),
        Encoding.Unicode.GetPreamble().Concat(Encoding.Unicode.GetBytes("<a>")).ToArray(),
        Encoding.BigEndianUnicode.GetBytes("<?xml version=\"1.0\"?><a/>"),
        Bytes("<?xml version=\"1.0\" encoding=\"us-ascii\"?><a/>"),
        Bytes("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>{E9}</a>"),
        Bytes("<?xml version=\"1.0\" encoding=\"utf8\"?><a/>"),
        Bytes("<?xml version=\"1.0 \"?><a/>"),
        Bytes("<p:a xmlns:p=\"urn:&#112;\"/>"),
        Bytes("<a xmlns=\"http://www.w3.org/XML/1998/namespac&#101;\"/>"),
        Bytes("<a xmlns:p=\"\n\"/>"),
        Bytes("<a>&#x110000;</a>"),
        Bytes("<a>&#x10010000;</a>"),
        Bytes("<a b=\"&#99999999999;\"/>"),
        Bytes("<a xml:space=\"&#112;reserve\"/>"),
        Bytes("<a xml:space=\"&#112;\"/>"),
        Bytes("<a " + string.Join(" ", Enumerable.Range(0, 300).Select(i => $"x{i}=\"{i}\"")) + "/>"),
        Bytes("<a " + string.Join(" ", Enumerable.Range(0, 300).Select(i => $"x{i % 299}=\"{i}\"")) + "/>"),
    };

    [Theory]
    [MemberData(nameof(LeftToTheReader))]
    public void OtherEncodingsAndRareConstructsGoToTheReader(byte[] xml)
    {
        Assert.Equal(ScanVerdict.NotHandled, XmlWellFormedness.Scan(xml).Verdict);
        AssertCheckAgrees(xml, ReadWithReader(xml));
    }

    [Theory]
    [InlineData("<a/>", "a", "")]
    [InlineData("<?xml version=\"1.0\"?><w:document xmlns:w=\"urn:w\"><w:body/></w:document>", "document", "urn:w")]
    [InlineData("<r xmlns=\"urn:d\" xmlns:p=\"urn:p\"><p:x/></r>", "r", "urn:d")]
    [InlineData("<p:r xmlns=\"urn:d\" xmlns:p=\"urn:p\"/>", "r", "urn:p")]
    [InlineData("<xml:r/>", "r", "http://www.w3.org/XML/1998/namespace")]
    [InlineData("<xmlns:r/>", "r", "http://www.w3.org/2000/xmlns/")]
    [InlineData("<é:漢 xmlns:é=\"urn:ü\"/>", "漢", "urn:ü")]
    public void RootNameIsResolved(string xml, string local, string ns)
    {
        var bytes = Bytes(xml);
        var found = XmlWellFormedness.Check(bytes);
        Assert.Equal((local, ns), (found.LocalName, found.NamespaceUri));
        Assert.Equal(ReadWithReader(bytes).Root, found);
    }

    [Fact]
    public void DepthIsCountedLikeTheReader()
    {
        var sb = new StringBuilder();
        const int levels = 3000;
        for (int i = 0; i < levels; i++) sb.Append(i % 100 == 0 ? $"<p:e xmlns:p=\"urn:{i}\">" : "<p:e>");
        sb.Append("<leaf/>");
        for (int i = 0; i < levels; i++) sb.Append("</p:e>");
        var xml = Bytes(sb.ToString());
        var found = XmlWellFormedness.Check(xml);
        Assert.Equal(levels, found.MaxDepth);
        Assert.Equal(ReadWithReader(xml).Root, found);

        var unbalanced = Bytes(sb.ToString()[..^6]);
        Assert.Equal(ScanVerdict.Malformed, XmlWellFormedness.Scan(unbalanced).Verdict);
    }

    [Fact]
    public void FaultsCarryTheReadersLineAndPosition()
    {
        foreach (var text in new[] { "<a>\n  <b>\r\n\t<c></b>\n</a>", "<a>\n\n  text &bad; more</a>", "<a/>\n<b/>", "<a>\n{FF}</a>" })
        {
            var xml = Bytes(text);
            var reader = ReadWithReader(xml);
            Assert.NotNull(reader.Error);
            Assert.True(reader.Error!.LineNumber > 1);
            AssertCheckAgrees(xml, reader);
        }
    }

    [Fact]
    public void ScanningAllocatesNothingPerElement()
    {
        // The scan's working arrays come from the shared pool, which a collection on another thread may trim
        // between calls; the least of several runs is the scan's own cost, and it must not grow with the markup.
        var small = Markup(10);
        var large = Markup(5000);
        long smallCost = LeastAllocated(small);
        long largeCost = LeastAllocated(large);
        string cost = $"{largeCost} bytes allocated for {large.Length} bytes of markup, {smallCost} for {small.Length}";
        Assert.True(largeCost < 2048, cost);
        Assert.True(largeCost - smallCost < 256, cost);

        static byte[] Markup(int paragraphs)
        {
            var sb = new StringBuilder("<w:document xmlns:w=\"urn:w\" xmlns:w14=\"urn:w14\"><w:body>");
            for (int i = 0; i < paragraphs; i++)
                sb.Append($"<w:p w14:paraId=\"{i:X8}\" w:rsidR=\"00A1\"><w:r><w:rPr><w:b/></w:rPr><w:t xml:space=\"preserve\">text &amp; {i} </w:t></w:r></w:p>");
            sb.Append("</w:body></w:document>");
            return Bytes(sb.ToString());
        }

        static long LeastAllocated(byte[] xml)
        {
            long least = long.MaxValue;
            for (int run = 0; run < 5; run++)
            {
                long before = GC.GetAllocatedBytesForCurrentThread();
                var found = XmlWellFormedness.Check(xml);
                least = Math.Min(least, GC.GetAllocatedBytesForCurrentThread() - before);
                Assert.Equal("document", found.LocalName);
            }
            return least;
        }
    }

    private static Dictionary<string, byte[]> EngineParts()
    {
        var doc = new Document();
        var b = new DocumentBuilder(doc);
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Heading1;
        b.Writeln("Title <with> markup & \"quotes\" 'and' ]]> é 漢字 😀");
        b.ParagraphFormat.StyleIdentifier = StyleIdentifier.Normal;
        b.Font.Bold = true;
        b.Write("bold ");
        b.Font.Bold = false;
        b.InsertHyperlink("a link", "https://example.org/?a=1&b=<2>", false);
        b.Writeln();
        b.StartTable();
        b.InsertCell(); b.Write("c1");
        b.InsertCell(); b.Write("c2");
        b.EndRow();
        b.InsertCell(); b.Write("c3");
        b.InsertCell(); b.Write("c4");
        b.EndRow();
        b.EndTable();
        b.Write("noted");
        b.InsertFootnote(FootnoteType.Footnote, "the footnote");
        b.Writeln();
        b.ListFormat.ApplyBulletDefault();
        b.Writeln("item");
        b.ListFormat.RemoveNumbers();
        b.StartBookmark("mark");
        b.Write("marked");
        b.EndBookmark("mark");
        b.InsertField("PAGE", "1");
        b.InsertImage(TestSupport.Png(2, 2));
        b.MoveToHeaderFooter(HeaderFooterType.HeaderPrimary);
        b.Write("header");
        var parts = new Dictionary<string, byte[]>();
        using var zip = new ZipArchive(new MemoryStream(TestSupport.ToBytes(doc)), ZipArchiveMode.Read);
        foreach (var e in zip.Entries)
        {
            if (!e.FullName.EndsWith(".xml", StringComparison.Ordinal) && !e.FullName.EndsWith(".rels", StringComparison.Ordinal)) continue;
            using var s = e.Open();
            var ms = new MemoryStream();
            s.CopyTo(ms);
            parts[e.FullName] = ms.ToArray();
        }
        return parts;
    }

    [Fact]
    public void EnginePartsAreScannedWithoutTheReader()
    {
        var parts = EngineParts();
        Assert.Contains("word/document.xml", parts.Keys);
        Assert.Contains("word/footnotes.xml", parts.Keys);
        foreach (var (name, xml) in parts)
        {
            var scan = XmlWellFormedness.Scan(xml);
            Assert.True(scan.Verdict == ScanVerdict.WellFormed, $"{name}: {scan.Verdict} ({scan.Reason} at {scan.Offset})");
            Assert.Equal(ReadWithReader(xml).Root, scan.Root);
        }
        Assert.Equal(new XmlRootName("document", Ns.W), XmlWellFormedness.Check(parts["word/document.xml"]) with { MaxDepth = 0 });
    }

    [Fact]
    public void MutatedPartsGetTheReadersVerdict()
    {
        var seeds = EngineParts().Values.Where(x => x.Length <= 64 * 1024).ToList();
        seeds.Add(Bytes("{EF}{BB}{BF}<?xml version='1.0' standalone='yes'?>\r\n<!-- c --><?pi x?><r xmlns=\"urn:d\" xmlns:p=\"urn:p\" a=\"1\" p:b='2'>"
            + "<p:c xml:space=\"preserve\"> t &amp; &#x41; &#66; ]] </p:c><d><![CDATA[<x>]]></d><e/><é·/></r>\n<!-- after -->"));
        byte[] near = "<>&;\"'=:/?!-#x "u8.ToArray();
        string[] snippets =
        {
            "<", ">", "&", "]]>", "<![CDATA[", "<!--", "-->", "<?", "?>", "<?xml ", "xmlns:q=\"u\" ", "xmlns=\"\" ", "xmlns:p=\"\" ",
            "q:", "xml:", "xml:space=\"x\" ", "&#x0;", "&#65;", "&#xD800;", "&lt", "&foo;", "\t", "\r\n", "é", "\u0300", "😀",
            "\uFFFE", "\u0001", "<!DOCTYPE a>", "</a>", "<b/>", "w:val=\"1\" ", "a=\"1\" ",
        };
        var rnd = new Random(20250611);
        var disagreements = new List<string>();
        int accepted = 0, declined = 0;
        const int mutants = 3000;
        for (int n = 0; n < mutants; n++)
        {
            var m = new List<byte>(seeds[rnd.Next(seeds.Count)]);
            for (int k = rnd.Next(4) == 0 ? 3 : 1; k > 0; k--)
            {
                // Mostly next to markup, where a slip changes the structure rather than the text.
                int pos = rnd.Next(m.Count + 1);
                for (int tries = 0; tries < 40 && rnd.Next(3) > 0; tries++)
                {
                    int q = rnd.Next(m.Count);
                    if (Array.IndexOf(near, m[q]) >= 0) { pos = Math.Clamp(q + rnd.Next(-2, 3), 0, m.Count); break; }
                }
                switch (rnd.Next(5))
                {
                    case 0 when pos < m.Count: m.RemoveRange(pos, Math.Min(1 + rnd.Next(3), m.Count - pos)); break;
                    case 1: m.Insert(pos, near[rnd.Next(near.Length)]); break;
                    case 2: m.InsertRange(pos, Encoding.UTF8.GetBytes(snippets[rnd.Next(snippets.Length)])); break;
                    case 3 when pos < m.Count: m[pos] = (byte)(rnd.Next(2) == 0 ? near[rnd.Next(near.Length)] : rnd.Next(256)); break;
                    case 4 when m.Count > 16:
                        int from = rnd.Next(m.Count - 12);
                        m.InsertRange(pos, m.GetRange(from, 1 + rnd.Next(12)));
                        break;
                }
            }
            var xml = m.ToArray();
            var reader = ReadWithReader(xml);
            if (XmlWellFormedness.Scan(xml).Verdict == ScanVerdict.NotHandled) declined++;
            else if (reader.Error == null) accepted++;
            if (ScanDisagreement(xml, reader) is { } d) disagreements.Add(d);
        }
        Assert.True(disagreements.Count == 0, string.Join("\n", disagreements.Take(5)));
        // The mutants exercise both verdicts, and the scan itself decides nearly all of them.
        Assert.InRange(accepted, mutants / 20, mutants);
        Assert.InRange(declined, 0, mutants / 10);
    }
}
