using System.Xml;
using Quorix.Folio.Formats;
using Quorix.Folio.Formatting;
using Quorix.Folio.Loading;
using Quorix.Folio.Package;

namespace Quorix.Folio.Docx;

/// <summary>Loads a DOCX package into the model; every failure becomes one of the engine's load exceptions.</summary>
internal static class DocxReader
{
    public static readonly XmlReaderSettings Settings = new()
    {
        DtdProcessing = DtdProcessing.Prohibit,
        XmlResolver = null,
        IgnoreComments = true,
        IgnoreProcessingInstructions = true,
        IgnoreWhitespace = true,
        MaxCharactersFromEntities = 1024,
        CloseInput = true,
    };

    /// <summary>Reads and checks the package; the model itself is built by <see cref="Build"/>
    /// when the document is first used.</summary>
    public static void Load(Document doc, Stream input, LoadOptions options)
    {
        var data = InputBuffer.ReadAll(input, options.MaxTotalSize);
        switch (FormatSniffer.Sniff(new MemoryStream(data, false)))
        {
            case SniffedKind.Docx:
                break;
            case SniffedKind.EncryptedOoxml:
                if (string.IsNullOrEmpty(options.Password))
                    throw new IncorrectPasswordException("The document is password protected; open it with the password in the load options.");
                try
                {
                    data = AgileDecryptor.Decrypt(data, options.Password, options.MaxTotalSize);
                }
                catch (Exception e) when (e is System.Security.Cryptography.CryptographicException or ArgumentException or IndexOutOfRangeException or OverflowException)
                {
                    throw new FileCorruptedException("The encrypted document is damaged: " + e.Message, e);
                }
                if (FormatSniffer.Sniff(new MemoryStream(data, false)) != SniffedKind.Docx)
                    throw new FileCorruptedException("The decrypted document is not a DOCX package.");
                break;
            case SniffedKind.LegacyCompound:
                throw new UnsupportedFileFormatException("The file is a legacy binary word-processing document; only DOCX can be loaded.");
            case SniffedKind.Empty:
                throw new FileCorruptedException("The file is empty.");
            default:
                throw new UnsupportedFileFormatException("The file is not a DOCX document; its format is not recognised.");
        }
        Guarded(() =>
        {
            var pkg = OpcPackage.Read(data, options.MaxPartSize, options.MaxTotalSize);
            Conformance.LoadAsTransitional(pkg);
            string main = MainPart(pkg);
            PackageCheck.Run(pkg, main);
            doc.Source = pkg;
            doc.MainPartName = main;
        });
        doc.BuildOnFirstUse(d => Build(d, options));
    }

    /// <summary>Builds the model of a loaded document from its package.</summary>
    private static void Build(Document doc, LoadOptions options) => Guarded(() => Parse(doc, doc.Source!, doc.MainPartName!, options));

    /// <summary>Runs a reading step, turning whatever a damaged package makes it throw into the engine's exception.</summary>
    private static void Guarded(Action step)
    {
        try
        {
            step();
        }
        catch (Exception e) when (e is FileCorruptedException or UnsupportedFileFormatException || UserCode.Threw(e)) { throw; }
        catch (XmlException e)
        {
            throw new FileCorruptedException("The document contains malformed XML: " + e.Message, e);
        }
        catch (Exception e) when (e is InvalidDataException or EndOfStreamException or IOException)
        {
            throw new FileCorruptedException("The file is not a readable DOCX package: " + e.Message, e);
        }
        catch (Exception e) when (e is not OutOfMemoryException)
        {
            throw new FileCorruptedException("The document structure is invalid: " + e.Message, e);
        }
    }

    private static string MainPart(OpcPackage pkg)
    {
        var rootRels = pkg.RelsOf("", Settings);
        var mainRel = rootRels.Find(r => r.Type == Ns.RelOfficeDocument || r.Type.EndsWith("/officeDocument", StringComparison.Ordinal));
        string main = mainRel != null ? OpcPackage.Resolve("", mainRel.Target) : "word/document.xml";
        if (!pkg.Parts.ContainsKey(main)) throw new FileCorruptedException("The package has no main document part.");
        var ct = pkg.ContentTypeOf(main);
        if (ct != null && ct != Ns.CtDocument && ct != Ns.CtDocumentMacro && ct != Ns.CtTemplate && !ct.Contains("wordprocessingml", StringComparison.Ordinal) && !ct.Contains("ms-word", StringComparison.Ordinal))
            throw new UnsupportedFileFormatException($"The package is not a word-processing document (its main part is '{ct}').");
        return main;
    }

    private static void Parse(Document doc, OpcPackage pkg, string main, LoadOptions options)
    {
        var notes = new SharedNotes { Links = new Formats.Flow.ResourceResolver(options, doc, WarningSource.Docx) };
        var ctx = new ReadContext(doc, pkg, main, notes);
        foreach (var rel in ctx.Rels.Values)
        {
            if (rel.External) continue;
            var part = OpcPackage.Resolve(main, rel.Target);
            switch (rel.Type)
            {
                case Ns.RelStyles: ReadStyles(doc, pkg, part); break;
                case Ns.RelNumbering: ReadNumbering(doc, pkg, part); break;
            }
        }
        if (doc.Styles.Count == 0) doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.Normal);
        foreach (var rel in ctx.Rels.Values)
        {
            if (rel.External) continue;
            var part = OpcPackage.Resolve(main, rel.Target);
            switch (rel.Type)
            {
                case Ns.RelFootnotes: NotesReader.ReadNotes(doc, pkg, part, notes, false); break;
                case Ns.RelEndnotes: NotesReader.ReadNotes(doc, pkg, part, notes, true); break;
                case Ns.RelComments: NotesReader.ReadComments(doc, pkg, part, notes); break;
            }
        }
        // Threads name comments, so they are read once every comment is.
        foreach (var rel in ctx.Rels.Values)
            if (!rel.External && rel.Type == Ns.RelCommentsExtended)
                CommentThreads.Read(doc, pkg, OpcPackage.Resolve(main, rel.Target), notes.Comments.Values);
        BodyReader.ReadDocument(doc, ctx);
        var kept = DocxState.Of(doc);
        Keep(notes.Footnotes, kept.KeptFootnotes);
        Keep(notes.Endnotes, kept.KeptEndnotes);
        foreach (var c in notes.Comments.Values) kept.KeptComments.Add(c);
        doc.Changed();
    }

    // Notes no reference in the model claimed are referenced from content kept as read.
    private static void Keep(Dictionary<string, Notes.Footnote> unclaimed, List<(int, Notes.Footnote)> kept)
    {
        foreach (var (id, note) in unclaimed)
            if (Units.ParseInt(id) is int n) kept.Add((n, note));
    }

    public static XmlReader Open(byte[] bytes) => XmlReader.Create(new MemoryStream(bytes, false), WithNames());

    public static XmlReader Open(Stream stream) => XmlReader.Create(stream, WithNames());

    /// <summary>A reader over markup already in memory, such as a kept fragment.</summary>
    public static XmlReader Open(string xml) => XmlReader.Create(new StringReader(xml), WithNames());

    private static XmlReaderSettings WithNames()
    {
        var s = Settings.Clone();
        s.NameTable = ReaderNames.Create();
        return s;
    }

    /// <summary>Moves to the root element and checks its name.</summary>
    public static RootInfo Root(XmlReader r, string local, string part)
    {
        if (r.MoveToContent() != XmlNodeType.Element || r.LocalName != local || r.NamespaceURI != Ns.W)
            throw new FileCorruptedException($"The part '{part}' does not start with the expected '{local}' element.");
        return RootInfo.Read(r);
    }

    private static void ReadStyles(Document doc, OpcPackage pkg, string part)
    {
        var bytes = pkg.Get(part);
        if (bytes == null) return;
        using var r = Open(bytes);
        DocxState.Of(doc).Roots[part] = Root(r, "styles", part);
        var root = PropElement.Read(r);
        foreach (var e in root.Children ?? new List<PropElement>())
        {
            if (e.Local == "style" && e.Ns == Ns.W) doc.Styles.AddLoaded(e);
            else doc.Styles.Head.Add(e);
        }
    }

    private static void ReadNumbering(Document doc, OpcPackage pkg, string part)
    {
        var bytes = pkg.Get(part);
        if (bytes == null) return;
        using var r = Open(bytes);
        DocxState.Of(doc).Roots[part] = Root(r, "numbering", part);
        var root = PropElement.Read(r);
        var nums = new List<PropElement>();
        foreach (var e in root.Children ?? new List<PropElement>())
        {
            if (e.Ns != Ns.W) { doc.Lists.Head.Add(e); continue; }
            switch (e.Local)
            {
                case "abstractNum": doc.Lists.Abstracts.Add(e); break;
                case "num": nums.Add(e); break;
                case "numIdMacAtCleanup": doc.Lists.Tail.Add(e); break;
                default: doc.Lists.Head.Add(e); break;
            }
        }
        foreach (var n in nums) doc.Lists.AddLoaded(n);
    }
}
