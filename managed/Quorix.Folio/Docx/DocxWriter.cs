using System.Text;
using System.Xml;
using Quorix.Folio.Formatting;
using Quorix.Folio.Notes;
using Quorix.Folio.Package;
using Quorix.Folio.Saving;

namespace Quorix.Folio.Docx;

/// <summary>Saves the model as a DOCX package; parts the model does not own are copied from the source file.</summary>
internal static class DocxWriter
{
    private static readonly XmlWriterSettings Settings = new()
    {
        Encoding = new UTF8Encoding(false),
        Indent = false,
        CloseOutput = false,
    };

    private static readonly HashSet<string> Owned = new()
    {
        Ns.RelHeader, Ns.RelFooter, Ns.RelComments, Ns.RelCommentsExtended, Ns.RelFootnotes, Ns.RelEndnotes,
    };

    public static void Save(Document doc, Stream output, OoxmlSaveOptions options)
    {
        // Nothing can have changed a document whose model was never built: its parts go back as stored.
        if (doc.Untouched)
        {
            if (doc.LoadedPropertyParts is not { Dirty: true } changed)
            {
                Zip(Conform(doc.Source!, doc.MainPartName!, options), output, options.CompressionLevel, doc.Warnings, doc.SaveProgress, 0);
                return;
            }
            // only the property parts changed: the rest goes back as stored
            var copy = doc.Source!.CloneShallow();
            changed.WriteTo(copy);
            copy.Parts["[Content_Types].xml"] = Render(w => ContentTypes(w, copy));
            Zip(Conform(copy, doc.MainPartName!, options), output, options.CompressionLevel, doc.Warnings, doc.SaveProgress, 0);
            return;
        }
        // Only a document without any section is completed; otherwise saving leaves the model as it is.
        if (doc.FirstSection == null) doc.EnsureMinimum();
        var pkg = doc.Source?.CloneShallow() ?? new OpcPackage();
        string main = doc.MainPartName ?? "word/document.xml";
        var state = new SaveState(doc, pkg) { Deflate = DeflateLevel(options.CompressionLevel) };
        var mainRels = new RelScope(main, doc.Source != null ? pkg.RelsOf(main, DocxReader.Settings) : new List<Relationship>());

        // Parts the model regenerates: forget the old ones, keeping header relationships for reuse.
        var oldPartRels = new Dictionary<string, List<Relationship>>(StringComparer.OrdinalIgnoreCase);
        // Identifiers of the regenerated parts' relationships, reused so that saving twice gives the same file.
        var oldIds = new Dictionary<string, string>(StringComparer.OrdinalIgnoreCase);
        foreach (var rel in mainRels.Rels.Where(r => Owned.Contains(r.Type) && !r.External).ToList())
        {
            var part = OpcPackage.Resolve(main, rel.Target);
            oldPartRels[part] = pkg.RelsOf(part, DocxReader.Settings);
            oldIds[part] = rel.Id;
            RemovePart(pkg, part);
            mainRels.Rels.Remove(rel);
        }

        EnsureReferencedStyles(doc);
        var kept = DocxState.Of(doc);
        state.FootnoteBase = NextId(kept.FootnoteSeparators, kept.KeptFootnotes);
        state.EndnoteBase = NextId(kept.EndnoteSeparators, kept.KeptEndnotes);
        foreach (var c in kept.KeptComments) state.CommentIds.Add(c.Id);
        foreach (var n in doc.GetChildNodes(NodeType.Any, true))
            if (n is CommentRangeStart rs) state.RangeIds.Add(rs.Id);

        var mainWriter = new PartWriter(state, mainRels);
        var headerParts = new List<(HeaderFooter Hf, string Part, string RelId)>();
        var usedHeaderParts = new HashSet<string>(StringComparer.OrdinalIgnoreCase);
        foreach (Section s in doc.Sections)
        {
            foreach (HeaderFooter hf in s.HeadersFooters)
            {
                string part = hf.PartName != null && oldPartRels.ContainsKey(hf.PartName) && usedHeaderParts.Add(hf.PartName)
                    ? hf.PartName
                    : NewPartName(pkg, usedHeaderParts, hf.IsHeader ? "word/header" : "word/footer");
                usedHeaderParts.Add(part);
                var relId = mainRels.Add(hf.IsHeader ? Ns.RelHeader : Ns.RelFooter, DrawingWriter.Relative(main, part), false, oldIds.GetValueOrDefault(part));
                headerParts.Add((hf, part, relId));
            }
        }
        var hfRelIds = headerParts.ToDictionary(h => h.Hf, h => h.RelId);

        pkg.Parts[main] = RenderPart(main, state, w => DocumentPart(w, doc, main, mainWriter, hfRelIds));
        pkg.Overrides["/" + main] = pkg.Overrides.TryGetValue("/" + main, out var mct) ? mct : Ns.CtDocument;

        foreach (var (hf, part, _) in headerParts)
        {
            var scope = new RelScope(part, oldPartRels.TryGetValue(part, out var old) ? old : new List<Relationship>());
            var pw = new PartWriter(state, scope);
            pkg.Parts[part] = RenderPart(part, state, w =>
            {
                RootInfo.WriteStart(w, hf.IsHeader ? "hdr" : "ftr", RootFor(doc, hf.PartName));
                BodyWriter.WriteBlocks(w, hf, pw);
                w.WriteEndElement();
            });
            pkg.Overrides["/" + part] = hf.IsHeader ? Ns.CtHeader : Ns.CtFooter;
            WriteRels(pkg, scope);
        }

        if (state.Footnotes.Count > 0 || kept.FootnoteSeparators.Count > 0 || kept.KeptFootnotes.Count > 0)
            NotesPart(pkg, state, mainRels, oldPartRels, oldIds, false);
        if (state.Endnotes.Count > 0 || kept.EndnoteSeparators.Count > 0 || kept.KeptEndnotes.Count > 0)
            NotesPart(pkg, state, mainRels, oldPartRels, oldIds, true);
        if (state.Comments.Count > 0 || kept.KeptComments.Count > 0) CommentsPart(pkg, state, mainRels, oldPartRels, oldIds);

        var stylesPart = PartOf(mainRels, main, Ns.RelStyles) ?? AddPart(mainRels, main, Ns.RelStyles, "word/styles.xml");
        pkg.Parts[stylesPart] = RenderPart(stylesPart, state, w => StylesPart(w, doc, stylesPart));
        pkg.Overrides["/" + stylesPart] = Ns.CtStyles;

        if (doc.Lists.Count > 0 || doc.Lists.Abstracts.Count > 0 || PartOf(mainRels, main, Ns.RelNumbering) != null)
        {
            var numPart = PartOf(mainRels, main, Ns.RelNumbering) ?? AddPart(mainRels, main, Ns.RelNumbering, "word/numbering.xml");
            pkg.Parts[numPart] = RenderPart(numPart, state, w => NumberingPart(w, doc, numPart));
            pkg.Overrides["/" + numPart] = Ns.CtNumbering;
        }

        WriteRels(pkg, mainRels, force: true);
        if (pkg.Get("_rels/.rels") == null)
        {
            var root = new RelScope("", new List<Relationship>());
            root.Add(Ns.RelOfficeDocument, main);
            WriteRels(pkg, root, force: true);
        }
        doc.LoadedPropertyParts?.WriteTo(pkg);
        pkg.Defaults.TryAdd("rels", Ns.CtRels);
        pkg.Defaults.TryAdd("xml", "application/xml");
        pkg.Parts["[Content_Types].xml"] = Render(w => ContentTypes(w, pkg));
        Zip(Conform(pkg, main, options), output, options.CompressionLevel, doc.Warnings, doc.SaveProgress, BodyShare);
    }

    private static OpcPackage Conform(OpcPackage pkg, string main, OoxmlSaveOptions options) =>
        options.Compliance == OoxmlCompliance.Iso29500_2008_Strict ? Conformance.SaveAsStrict(pkg, main) : pkg;

    /// <summary>The root a part was read with; new parts take the main document's, whose prefixes
    /// the markup copied between parts may use.</summary>
    private static RootInfo? RootFor(Document doc, string? part)
    {
        var roots = DocxState.Of(doc).Roots;
        if (part != null && roots.TryGetValue(part, out var info)) return info;
        return doc.MainPartName != null ? roots.GetValueOrDefault(doc.MainPartName) : null;
    }

    private static int NextId(List<PropElement> separators, List<(int Id, Footnote Note)> kept)
    {
        int max = 0;
        foreach (var (id, _) in kept) max = Math.Max(max, id);
        foreach (var e in separators) max = Math.Max(max, Units.ParseInt(e.Get("id")) ?? 0);
        return max + 1;
    }

    // Notes and comments made by code name reference styles that may not exist yet.
    private static void EnsureReferencedStyles(Document doc)
    {
        if (doc.GetChildNodes(NodeType.Comment, true).Count > 0)
        {
            doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.CommentReference);
            doc.Styles.GetOrCreateBuiltIn(StyleIdentifier.CommentText);
        }
    }

    private static void RemovePart(OpcPackage pkg, string part)
    {
        pkg.Parts.Remove(part);
        pkg.Parts.Remove(OpcPackage.RelsNameOf(part));
        pkg.Overrides.Remove("/" + part);
    }

    private static string NewPartName(OpcPackage pkg, HashSet<string> used, string stem)
    {
        for (int i = 1; ; i++)
        {
            var name = stem + i + ".xml";
            if (!pkg.Parts.ContainsKey(name) && !used.Contains(name)) return name;
        }
    }

    private static string? PartOf(RelScope rels, string main, string type)
    {
        var rel = rels.Rels.Find(r => r.Type == type && !r.External);
        return rel == null ? null : OpcPackage.Resolve(main, rel.Target);
    }

    private static string AddPart(RelScope rels, string main, string type, string part)
    {
        rels.Add(type, DrawingWriter.Relative(main, part));
        return part;
    }

    /// <summary>Writes a part straight into its compressed form.</summary>
    private static OpcPart RenderPart(string name, SaveState state, Action<XmlWriter> body)
    {
        var sink = new DeflatingPartStream(state.Deflate);
        using (var w = XmlWriter.Create(sink, Settings))
        {
            w.WriteStartDocument(true);
            body(w);
            w.WriteEndDocument();
        }
        return sink.Finish(name);
    }

    public static byte[] Render(Action<XmlWriter> body)
    {
        var ms = new MemoryStream();
        using (var w = XmlWriter.Create(ms, Settings))
        {
            w.WriteStartDocument(true);
            body(w);
            w.WriteEndDocument();
        }
        return ms.ToArray();
    }

    private static void WriteRels(OpcPackage pkg, RelScope scope, bool force = false)
    {
        var name = OpcPackage.RelsNameOf(scope.Part);
        if (scope.Rels.Count == 0 && !force)
        {
            pkg.Parts.Remove(name);
            return;
        }
        var ms = new MemoryStream();
        using (var w = XmlWriter.Create(ms, Settings)) scope.Write(w);
        pkg.Parts[name] = ms.ToArray();
    }

    private static void DocumentPart(XmlWriter w, Document doc, string main, PartWriter pw, Dictionary<HeaderFooter, string> hfRelIds)
    {
        var docxKept = DocxState.Of(doc);
        RootInfo.WriteStart(w, "document", docxKept.Roots.GetValueOrDefault(main));
        docxKept.BodyTail?.Write(w);
        w.WriteStartElement("body", Ns.W);
        doc.AcceptCore(new BodyWriter.SectionWriter(w, pw, doc, hfRelIds, BodyShare));
        w.WriteEndElement();
        w.WriteEndElement();
    }

    private static void NotesPart(OpcPackage pkg, SaveState state, RelScope mainRels, Dictionary<string, List<Relationship>> old,
        Dictionary<string, string> oldIds, bool endnotes)
    {
        var doc = state.Doc;
        var main = mainRels.Part;
        var previous = old.Keys.FirstOrDefault(k => k.EndsWith(endnotes ? "endnotes.xml" : "footnotes.xml", StringComparison.OrdinalIgnoreCase));
        var part = previous ?? (endnotes ? "word/endnotes.xml" : "word/footnotes.xml");
        mainRels.Add(endnotes ? Ns.RelEndnotes : Ns.RelFootnotes, DrawingWriter.Relative(main, part), false, oldIds.GetValueOrDefault(part));
        var scope = new RelScope(part, previous != null ? old[previous] : new List<Relationship>());
        var pw = new PartWriter(state, scope);
        var docxKept = DocxState.Of(doc);
        var separators = endnotes ? docxKept.EndnoteSeparators : docxKept.FootnoteSeparators;
        if (separators.Count == 0) separators.AddRange(DefaultSeparators(endnotes));
        var list = endnotes ? state.Endnotes : state.Footnotes;
        var refStyle = doc.Styles.FindById(endnotes ? "EndnoteReference" : "FootnoteReference")?.StyleId;
        pkg.Parts[part] = RenderPart(part, state, w =>
        {
            RootInfo.WriteStart(w, endnotes ? "endnotes" : "footnotes", RootFor(doc, part));
            foreach (var e in separators) e.Write(w);
            // Notes met while writing notes (rare nesting) are appended as the list grows.
            var kept = endnotes ? docxKept.KeptEndnotes : docxKept.KeptFootnotes;
            for (int i = 0; i < kept.Count + list.Count; i++)
            {
                var (id, note) = i < kept.Count ? kept[i] : list[i - kept.Count];
                w.WriteStartElement(endnotes ? "endnote" : "footnote", Ns.W);
                w.WriteAttributeString("id", Ns.W, Units.Str(id));
                BodyWriter.WriteBlocks(w, note, pw, x => MarkRun(x, refStyle, note.IsAuto ? (endnotes ? "endnoteRef" : "footnoteRef") : null));
                w.WriteEndElement();
            }
            w.WriteEndElement();
        });
        pkg.Overrides["/" + part] = endnotes ? Ns.CtEndnotes : Ns.CtFootnotes;
        WriteRels(pkg, scope);
    }

    private static IEnumerable<PropElement> DefaultSeparators(bool endnotes)
    {
        string el = endnotes ? "endnote" : "footnote";
        foreach (var (type, id) in new[] { ("separator", "-1"), ("continuationSeparator", "0") })
        {
            var run = new PropElement("r") { Children = new List<PropElement> { new PropElement(type) } };
            var p = new PropElement("p") { Children = new List<PropElement> { run } };
            var note = new PropElement(el).Set("type", type).Set("id", id);
            note.Children = new List<PropElement> { p };
            yield return note;
        }
    }

    private static void MarkRun(XmlWriter w, string? style, string? mark)
    {
        if (mark == null) return;
        w.WriteStartElement("r", Ns.W);
        if (style != null)
        {
            w.WriteStartElement("rPr", Ns.W);
            w.WriteStartElement("rStyle", Ns.W);
            w.WriteAttributeString("val", Ns.W, style);
            w.WriteEndElement();
            w.WriteEndElement();
        }
        w.WriteStartElement(mark, Ns.W);
        w.WriteEndElement();
        w.WriteEndElement();
    }

    private static void CommentsPart(OpcPackage pkg, SaveState state, RelScope mainRels, Dictionary<string, List<Relationship>> old,
        Dictionary<string, string> oldIds)
    {
        var doc = state.Doc;
        var previous = old.Keys.FirstOrDefault(k => k.EndsWith("comments.xml", StringComparison.OrdinalIgnoreCase));
        var part = previous ?? "word/comments.xml";
        mainRels.Add(Ns.RelComments, DrawingWriter.Relative(mainRels.Part, part), false, oldIds.GetValueOrDefault(part));
        var scope = new RelScope(part, previous != null ? old[previous] : new List<Relationship>());
        var pw = new PartWriter(state, scope);
        var refStyle = doc.Styles.FindById("CommentReference")?.StyleId;
        var all = DocxState.Of(doc).KeptComments.Concat(state.Comments).ToList();
        // Identifiers go on the comments' paragraphs before they are written.
        bool threads = CommentThreads.Prepare(doc, all);
        pkg.Parts[part] = RenderPart(part, state, w =>
        {
            RootInfo.WriteStart(w, "comments", RootFor(doc, part));
            foreach (var c in all)
            {
                w.WriteStartElement("comment", Ns.W);
                w.WriteAttributeString("id", Ns.W, Units.Str(c.Id));
                w.WriteAttributeString("author", Ns.W, c.Author);
                if (c.DateTime != DateTime.MinValue)
                    w.WriteAttributeString("date", Ns.W, c.DateTime.ToUniversalTime().ToString("yyyy-MM-dd'T'HH:mm:ss'Z'", System.Globalization.CultureInfo.InvariantCulture));
                if (c.Initial.Length > 0) w.WriteAttributeString("initials", Ns.W, c.Initial);
                BodyWriter.WriteBlocks(w, c, pw, x => MarkRun(x, refStyle, "annotationRef"));
                w.WriteEndElement();
            }
            w.WriteEndElement();
        });
        pkg.Overrides["/" + part] = Ns.CtComments;
        WriteRels(pkg, scope);
        if (threads) CommentThreads.Write(pkg, doc, all, mainRels, old.Keys, oldIds);
    }

    private static void StylesPart(XmlWriter w, Document doc, string part)
    {
        RootInfo.WriteStart(w, "styles", RootFor(doc, part));
        foreach (var e in doc.Styles.Head) e.Write(w);
        foreach (var s in doc.Styles.All) s.Element.Write(w);
        w.WriteEndElement();
    }

    private static void NumberingPart(XmlWriter w, Document doc, string part)
    {
        RootInfo.WriteStart(w, "numbering", RootFor(doc, part));
        foreach (var e in doc.Lists.Head) e.Write(w);
        foreach (var e in doc.Lists.Abstracts) e.Write(w);
        foreach (var l in doc.Lists.Lists) l.Num.Write(w);
        foreach (var e in doc.Lists.Tail) e.Write(w);
        w.WriteEndElement();
    }

    private static void ContentTypes(XmlWriter w, OpcPackage pkg)
    {
        w.WriteStartElement("Types", Ns.ContentTypes);
        foreach (var (ext, ct) in pkg.Defaults.OrderBy(kv => kv.Key, StringComparer.Ordinal))
        {
            w.WriteStartElement("Default", Ns.ContentTypes);
            w.WriteAttributeString("Extension", ext);
            w.WriteAttributeString("ContentType", ct);
            w.WriteEndElement();
        }
        // Sorted, so that the same package always gives the same bytes.
        foreach (var (part, ct) in pkg.Overrides.OrderBy(kv => kv.Key, StringComparer.Ordinal))
        {
            if (!pkg.Parts.ContainsKey(part.TrimStart('/'))) continue;
            w.WriteStartElement("Override", Ns.ContentTypes);
            w.WriteAttributeString("PartName", part);
            w.WriteAttributeString("ContentType", ct);
            w.WriteEndElement();
        }
        w.WriteEndElement();
    }

    // Normal is a middle deflate level: a seventh larger than the slowest setting, several times faster.
    private static int DeflateLevel(Saving.CompressionLevel level) => level switch
    {
        Saving.CompressionLevel.Maximum => 9,
        Saving.CompressionLevel.Fast => 2,
        Saving.CompressionLevel.SuperFast => 1,
        _ => 4,
    };

    // Of a save that renders the model, writing the body is most of the work; packing the parts the rest.
    private const double BodyShare = 0.8;

    /// <summary>Packs the parts; <paramref name="progress"/> hears of each, from <paramref name="from"/> on.</summary>
    private static void Zip(OpcPackage pkg, Stream output, Saving.CompressionLevel level, WarningLog warnings, SaveProgress? progress, double from)
    {
        int deflate = DeflateLevel(level);
        // Parts read from the source keep their compression, unless another level than the usual one was asked for.
        bool recompress = level != Saving.CompressionLevel.Normal;
        var zip = new ZipWriter(output, deflate);
        var order = new List<string> { "[Content_Types].xml", "_rels/.rels" };
        order.AddRange(pkg.Parts.Keys.Where(k => k != "[Content_Types].xml" && k != "_rels/.rels"));
        var written = new HashSet<string>(pkg.Parts.Keys.Where(EntryNames.IsSafe), StringComparer.OrdinalIgnoreCase);
        for (int i = 0; i < order.Count; i++)
            if (pkg.Parts.TryGetValue(order[i], out var data) && EntryNames.Sanitise(order[i], written, (type, message) => warnings.Add(type, WarningSource.Docx, message)) is { } safe)
            {
                written.Add(safe);
                if (recompress && !data.Fresh) zip.Add(safe, data.Bytes);
                else zip.Add(safe, data);
                progress?.Report(from + (1 - from) * (i + 1) / order.Count);
            }
        zip.Finish();
    }
}
