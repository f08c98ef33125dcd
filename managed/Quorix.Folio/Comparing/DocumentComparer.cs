using System.Globalization;
using System.Text;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Formatting;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Comparing;

/// <summary>Turns the original document into the other one as tracked changes: blocks of the main text
/// are matched first, then the words (or characters) of paragraphs that changed, so accepting every
/// change gives the other document's text and rejecting every change gives the original back.</summary>
internal sealed class DocumentComparer
{
    private readonly Document doc;
    private readonly Document other;
    private readonly CompareOptions options;
    private readonly string author;
    private readonly string date;
    // With the other document as the target its formatting is taken as it is, not tracked.
    private readonly bool trackFormatting;
    private int nextId = 9000;
    private int moves;

    public DocumentComparer(Document doc, Document other, string author, DateTime when, CompareOptions options)
    {
        this.doc = doc;
        this.other = other;
        this.author = author;
        this.options = options;
        trackFormatting = options.Target == ComparisonTargetType.Current;
        date = when.ToUniversalTime().ToString("yyyy-MM-dd'T'HH:mm:ss'Z'", CultureInfo.InvariantCulture);
    }

    public void Execute()
    {
        if (doc.HasRevisions || other.HasRevisions)
            throw new InvalidOperationException("Documents with tracked changes cannot be compared: accept or reject them first.");
        if (!trackFormatting) TakeSectionLayout();
        CompareStory(Blocks(doc), Blocks(other), doc.FirstSection!.Body!);
        if (!options.IgnoreHeadersAndFooters) CompareHeadersAndFooters();
        doc.Changed();
    }

    // Where a story's first block goes when nothing of the original comes before it.
    private CompositeNode storyStart = null!;

    /// <summary>Turns one story's blocks into the other's: the main text, or a header or footer.</summary>
    private void CompareStory(List<Node> mine, List<Node> theirs, CompositeNode start)
    {
        storyStart = start;
        var keyComparer = options.IgnoreCaseChanges ? StringComparer.OrdinalIgnoreCase : StringComparer.Ordinal;
        var mineKeys = mine.ConvertAll(Key);
        var theirKeys = theirs.ConvertAll(Key);
        var edits = SequenceDiff.Compute(mineKeys, theirKeys, keyComparer);
        var (movedFrom, movedTo) = Moves(edits, mineKeys, theirKeys, keyComparer);
        Node? anchor = null;
        for (int e = 0; e < edits.Count; e++)
        {
            var edit = edits[e];
            switch (edit.Kind)
            {
                case EditKind.Equal:
                    for (int k = 0; k < edit.Length && !options.IgnoreFormatting; k++)
                        if (mine[edit.OldIndex + k] is Paragraph p && theirs[edit.NewIndex + k] is Paragraph q)
                        {
                            Reformat(p, q);
                            Restyle(p, q);
                        }
                    anchor = mine[edit.OldIndex + edit.Length - 1];
                    break;
                case EditKind.Delete when e + 1 < edits.Count && edits[e + 1].Kind == EditKind.Insert:
                    anchor = Replace(mine, theirs, edit, edits[++e], movedFrom, movedTo, anchor);
                    break;
                case EditKind.Delete:
                    for (int k = 0; k < edit.Length; k++) Delete(mine[edit.OldIndex + k], movedFrom.GetValueOrDefault(edit.OldIndex + k));
                    anchor = mine[edit.OldIndex + edit.Length - 1];
                    break;
                case EditKind.Insert:
                    for (int k = 0; k < edit.Length; k++) anchor = Insert(theirs[edit.NewIndex + k], anchor, movedTo.GetValueOrDefault(edit.NewIndex + k));
                    break;
            }
        }
    }

    /// <summary>Each section's headers and footers against the other document's of the same kind. A
    /// section after the first without one shows the previous section's, so only the first section's
    /// missing ones count as empty.</summary>
    private void CompareHeadersAndFooters()
    {
        var mineSections = doc.Sections.ToArray();
        var theirSections = other.Sections.ToArray();
        for (int i = 0; i < Math.Min(mineSections.Length, theirSections.Length); i++)
            foreach (var type in Enum.GetValues<HeaderFooterType>())
            {
                var mine = mineSections[i].HeadersFooters[type];
                var theirs = theirSections[i].HeadersFooters[type];
                if (mine == null && theirs == null || i > 0 && (mine == null || theirs == null)) continue;
                if (mine == null)
                {
                    mine = new HeaderFooter(doc, type);
                    mineSections[i].AppendChild(mine);
                }
                CompareStory(StoryBlocks(mine), theirs != null ? StoryBlocks(theirs) : new List<Node>(), mine);
            }
    }

    private List<Node> StoryBlocks(CompositeNode story)
    {
        var list = new List<Node>();
        for (var n = story.FirstChild; n != null; n = n.NextSibling)
            if (n is Paragraph || (n is Table && !options.IgnoreTables)) list.Add(n);
        return list;
    }

    /// <summary>Paragraphs deleted in one place and inserted unchanged in another, each text found once on
    /// either side: the move's name by old index and by new index.</summary>
    private (Dictionary<int, string> From, Dictionary<int, string> To) Moves(List<SequenceDiff.Edit> edits, List<string> mineKeys, List<string> theirKeys, StringComparer cmp)
    {
        var from = new Dictionary<int, string>();
        var to = new Dictionary<int, string>();
        var advanced = options.AdvancedOptions;
        if (advanced.ReportMovesAsInsertionsAndDeletions) return (from, to);
        var deleted = new Dictionary<string, (int Index, int Count)>(cmp);
        var inserted = new Dictionary<string, (int Index, int Count)>(cmp);
        void Note(Dictionary<string, (int Index, int Count)> into, string key, int index)
        {
            if (key[0] != 'P' || key.Count(c => !char.IsWhiteSpace(c)) - 2 < advanced.MinimumMoveLength) return;
            into[key] = into.TryGetValue(key, out var seen) ? (seen.Index, seen.Count + 1) : (index, 1);
        }
        foreach (var e in edits)
            for (int k = 0; k < e.Length; k++)
            {
                if (e.Kind == EditKind.Delete) Note(deleted, mineKeys[e.OldIndex + k], e.OldIndex + k);
                else if (e.Kind == EditKind.Insert) Note(inserted, theirKeys[e.NewIndex + k], e.NewIndex + k);
            }
        foreach (var (key, d) in deleted)
        {
            if (d.Count != 1 || !inserted.TryGetValue(key, out var i) || i.Count != 1) continue;
            var name = "move" + (++moves).ToString(CultureInfo.InvariantCulture);
            from[d.Index] = name;
            to[i.Index] = name;
        }
        return (from, to);
    }

    // A replaced stretch: paragraphs side by side are compared word by word, in the order of the other
    // document; moved paragraphs take no part in the pairing.
    private Node? Replace(List<Node> mine, List<Node> theirs, SequenceDiff.Edit del, SequenceDiff.Edit ins,
                          Dictionary<int, string> movedFrom, Dictionary<int, string> movedTo, Node? anchor)
    {
        var pairedOld = Enumerable.Range(del.OldIndex, del.Length).Where(i => !movedFrom.ContainsKey(i)).ToList();
        var pairedNew = Enumerable.Range(ins.NewIndex, ins.Length).Where(j => !movedTo.ContainsKey(j)).ToList();
        int pairs = Math.Min(pairedOld.Count, pairedNew.Count), paired = 0, nextNew = ins.NewIndex;
        for (int i = del.OldIndex; i < del.OldIndex + del.Length; i++)
        {
            var old = mine[i];
            if (movedFrom.TryGetValue(i, out var move) || paired >= pairs)
            {
                Delete(old, move);
                anchor = old;
                continue;
            }
            int j = pairedNew[paired++];
            // What the other document has before this pair's new paragraph comes first.
            for (; nextNew < j; nextNew++) anchor = Insert(theirs[nextNew], anchor, movedTo.GetValueOrDefault(nextNew));
            nextNew = j + 1;
            var now = theirs[j];
            if (old is Paragraph p && now is Paragraph q)
            {
                if (!options.IgnoreFormatting) Reformat(p, q);
                Words(p, q);
            }
            else
            {
                Delete(old, null);
                anchor = Insert(now, old, null);
            }
            anchor = old.ParentNode != null ? old : anchor;
        }
        for (; nextNew < ins.NewIndex + ins.Length; nextNew++) anchor = Insert(theirs[nextNew], anchor, movedTo.GetValueOrDefault(nextNew));
        return anchor;
    }

    private List<Node> Blocks(Document d)
    {
        var list = new List<Node>();
        foreach (var s in d.Sections.ToArray())
            if (s.Body != null) list.AddRange(StoryBlocks(s.Body));
        return list;
    }

    /// <summary>What decides whether two blocks are the same: their text as the options see it, with the
    /// text of their notes and comments unless those are ignored, without fields or text boxes when they are.</summary>
    private string Key(Node n)
    {
        var sb = new StringBuilder(n is Table ? "T" : "P");
        foreach (var p in Paragraphs(n)) AppendKey(sb, p);
        return sb.ToString();
    }

    private void AppendKey(StringBuilder sb, Paragraph p)
    {
        int fields = 0;
        foreach (var n in p.InlineNodes())
        {
            switch (n)
            {
                case Fields.FieldStart when options.IgnoreFields:
                    // A field stands as one mark whatever its code and result.
                    if (fields++ == 0) sb.Append(ControlChar.FieldStartChar);
                    continue;
                case Fields.FieldEnd when options.IgnoreFields:
                    fields = Math.Max(0, fields - 1);
                    continue;
                case Notes.Footnote note:
                    if (!options.IgnoreFootnotes) Story(sb, note, '\u0002');
                    continue;
                case Comment comment:
                    if (!options.IgnoreComments) Story(sb, comment, '\u0005');
                    continue;
                case Drawing.Shape { IsTextBox: true } box:
                    if (!options.IgnoreTextboxes) Story(sb, box, '\u0001');
                    continue;
            }
            if (fields == 0) sb.Append(n.GetText());
        }
        sb.Append(ControlChar.ParagraphBreakChar);
    }

    // An inline story's text between marks, so that it cannot run into the text around it.
    private void Story(StringBuilder sb, CompositeNode story, char mark)
    {
        sb.Append(mark);
        foreach (var p in Paragraphs(story)) AppendKey(sb, p);
        sb.Append(mark);
    }

    private PropElement Mark(string kind) =>
        new PropElement(kind).Set("id", (nextId++).ToString(CultureInfo.InvariantCulture)).Set("author", author).Set("date", date);

    private static void MarkParagraph(Paragraph p, PropElement mark)
    {
        var rPr = p.PPr.GetOrAdd("rPr");
        (rPr.Children ??= new List<PropElement>()).Add(mark);
    }

    /// <summary>Marks a block deleted, or moved away when <paramref name="move"/> names the move.</summary>
    private void Delete(Node block, string? move)
    {
        var kind = move == null ? "del" : "moveFrom";
        var mark = Mark(kind);
        foreach (var p in Paragraphs(block))
        {
            for (var n = p.FirstChild; n != null; n = n.NextSibling) n.Rev = mark;
            MarkParagraph(p, Mark(kind));
            if (move != null) MoveRange(p, "moveFrom", move);
        }
        if (block is Table t) foreach (var r in t.Rows) r.Kept.Add(Mark("del"));
    }

    /// <summary>Brings a block of the other document in after <paramref name="anchor"/>, as inserted or as
    /// the target of the named move; returns it.</summary>
    private Node Insert(Node block, Node? anchor, string? move)
    {
        var copy = doc.ImportNode(block, true, ImportFormatMode.KeepSourceFormatting);
        if (anchor?.ParentNode is CompositeNode parent) parent.InsertAfter(copy, anchor);
        else storyStart.InsertBefore(copy, storyStart.FirstChild);
        var kind = move == null ? "ins" : "moveTo";
        var mark = Mark(kind);
        foreach (var p in Paragraphs(copy))
        {
            for (var n = p.FirstChild; n != null; n = n.NextSibling) n.Rev = mark;
            MarkParagraph(p, Mark(kind));
            if (move != null) MoveRange(p, "moveTo", move);
        }
        if (copy is Table t) foreach (var r in t.Rows) r.Kept.Add(Mark("ins"));
        return copy;
    }

    // Word processors pair a move's source and target by the name on the ranges around them.
    private void MoveRange(Paragraph p, string kind, string name)
    {
        var id = (nextId++).ToString(CultureInfo.InvariantCulture);
        var start = new OpaqueNode(doc, OpaqueKind.Inline,
            $"<w:{kind}RangeStart w:id=\"{id}\" w:author=\"{System.Security.SecurityElement.Escape(author)}\" w:date=\"{date}\" w:name=\"{name}\"/>");
        var end = new OpaqueNode(doc, OpaqueKind.Inline, $"<w:{kind}RangeEnd w:id=\"{id}\"/>");
        var content = new List<Node>();
        for (var n = p.FirstChild; n != null; n = n.NextSibling) content.Add(n);
        foreach (var n in content) p.Unlink(n);
        p.LinkLast(start);
        foreach (var n in content) p.LinkLast(n);
        p.LinkLast(end);
    }

    private static IEnumerable<Paragraph> Paragraphs(Node block) =>
        block is Paragraph p ? new[] { p } : ((CompositeNode)block).GetChildNodes(NodeType.Paragraph, true).OfType<Paragraph>().ToArray();

    // Paragraphs of runs alone are compared by their words; others (fields, pictures, notes) are
    // replaced whole inside the paragraph.
    private void Words(Paragraph p, Paragraph q)
    {
        if (!OnlyRuns(p) || !OnlyRuns(q))
        {
            var del = Mark("del");
            for (var n = p.FirstChild; n != null; n = n.NextSibling) n.Rev = del;
            var ins = Mark("ins");
            foreach (var n in q.ChildNodes.ToArray())
            {
                var c = doc.ImportNode(n, true, ImportFormatMode.KeepSourceFormatting);
                c.Rev = ins;
                p.AppendChild(c);
            }
            return;
        }
        var oldRuns = p.ChildNodes.OfType<Run>().ToArray();
        var newRuns = q.ChildNodes.OfType<Run>().ToArray();
        var oldText = string.Concat(oldRuns.Select(r => r.Text));
        var newText = string.Concat(newRuns.Select(r => r.Text));
        var a = Tokens(oldText);
        var b = Tokens(newText);
        var cmp = new TokenComparer(oldText, newText, options.IgnoreCaseChanges);
        var edits = SequenceDiff.Compute(a, b, cmp);
        var pieces = new List<Run>();
        foreach (var e in edits)
        {
            if (e.Kind == EditKind.Insert)
            {
                int from = b[e.NewIndex].Start, to = b[e.NewIndex + e.Length - 1].End;
                var mark = Mark("ins");
                foreach (var r in Slice(newRuns, from, to, imported: true)) { r.Rev = mark; pieces.Add(r); }
            }
            else if (e.Kind == EditKind.Delete)
            {
                int from = a[e.OldIndex].Start, to = a[e.OldIndex + e.Length - 1].End;
                var mark = Mark("del");
                foreach (var r in Slice(oldRuns, from, to, imported: false)) { r.Rev = mark; pieces.Add(r); }
            }
            else
            {
                int from = a[e.OldIndex].Start, to = a[e.OldIndex + e.Length - 1].End;
                pieces.AddRange(Kept(oldRuns, from, to, newRuns, b[e.NewIndex].Start));
            }
        }
        foreach (var r in oldRuns) r.Remove();
        foreach (var r in pieces) p.AppendChild(r);
    }

    /// <summary>Paragraphs of the same text: where the other document formats the text differently, the
    /// text takes that formatting with the old recorded as a formatting change.</summary>
    private void Restyle(Paragraph p, Paragraph q)
    {
        if (!OnlyRuns(p) || !OnlyRuns(q)) return;
        var oldRuns = p.ChildNodes.OfType<Run>().ToArray();
        var newRuns = q.ChildNodes.OfType<Run>().ToArray();
        int length = oldRuns.Sum(r => r.Text.Length);
        if (length != newRuns.Sum(r => r.Text.Length) || length == 0) return;
        bool differs = false;
        foreach (var (o, n, _, _, _) in Segments(oldRuns, 0, length, newRuns, 0))
            if (!SameLook(oldRuns[o], newRuns[n])) { differs = true; break; }
        if (!differs) return;
        var pieces = Kept(oldRuns, 0, length, newRuns, 0).ToList();
        foreach (var r in oldRuns) r.Remove();
        foreach (var r in pieces) p.AppendChild(r);
    }

    // The old text from..to, split where either document's runs change, in the other document's
    // formatting (recorded as a change) where it differs; with formatting ignored, as it was.
    private IEnumerable<Run> Kept(Run[] oldRuns, int from, int to, Run[] newRuns, int newFrom)
    {
        if (options.IgnoreFormatting)
        {
            foreach (var r in Slice(oldRuns, from, to, imported: false)) yield return r;
            yield break;
        }
        foreach (var (o, n, start, end, runStart) in Segments(oldRuns, from, to, newRuns, newFrom))
        {
            var text = oldRuns[o].Text.Substring(start - runStart, end - start);
            if (SameLook(oldRuns[o], newRuns[n]))
            {
                var copy = (Run)oldRuns[o].Clone(false);
                copy.Text = text;
                yield return copy;
                continue;
            }
            var changed = (Run)doc.ImportNode(newRuns[n], false, ImportFormatMode.KeepSourceFormatting);
            changed.Text = text;
            if (!trackFormatting)
            {
                yield return changed;
                continue;
            }
            var record = Mark("rPrChange");
            // The record holds the old run's whole formatting, as rejecting decodes it back.
            var before = oldRuns[o].RPr;
            var oldItems = Docx.PropsCodec.Run.Encode(before.Attrs);
            if (before.Kept is { } kept) oldItems.AddRange(kept.Items.Where(x => x.Local != "rPrChange").Select(x => x.Clone()));
            record.Children = new List<PropElement> { new PropElement("rPr") { Children = oldItems } };
            (changed.RunKept ??= new PropBag(PropOrder.Run)).Add(record);
            yield return changed;
        }
    }

    /// <summary>Paragraphs side by side whose paragraph formatting or style differs: the original's takes
    /// the other's properties, its own recorded as a paragraph formatting change (or not, with the other
    /// document as the target). The paragraph mark's character formatting stays.</summary>
    private void Reformat(Paragraph p, Paragraph q)
    {
        var mineFormat = p.ParagraphFormat;
        var theirFormat = q.ParagraphFormat;
        if (ParaLook.Of(mineFormat) == ParaLook.Of(theirFormat) && mineFormat.StyleName == theirFormat.StyleName) return;
        PropElement? record = null;
        if (trackFormatting)
        {
            record = Mark("pPrChange");
            var oldItems = Docx.PropsCodec.Paragraph.Encode(p.ParaAttrs);
            oldItems.AddRange(p.PPr.Items.Where(x => x.Local is not ("rPr" or "sectPr" or "pPrChange")).Select(x => x.Clone()));
            record.Children = new List<PropElement> { new PropElement("pPr") { Children = oldItems } };
        }
        var taken = (Paragraph)doc.ImportNode(q, false, ImportFormatMode.KeepSourceFormatting);
        p.ParaAttrs = taken.ParaAttrs;
        p.PPr.RemoveAll(x => x.Local is not ("rPr" or "sectPr"));
        foreach (var x in taken.PPr.Items)
            if (x.Local is not ("rPr" or "sectPr" or "pPrChange")) p.PPr.Add(x.Clone());
        if (record != null) p.PPr.Add(record);
    }

    // The page's geometry of each section the other document has too, for the other document as the target.
    private void TakeSectionLayout()
    {
        var mineSections = doc.Sections.ToArray();
        var theirSections = other.Sections.ToArray();
        for (int i = 0; i < Math.Min(mineSections.Length, theirSections.Length); i++)
        {
            var to = mineSections[i];
            var from = theirSections[i];
            to.Attrs = to.Attrs.Where(a => !IsPageLayout(a)).Then(from.Attrs.Where(IsPageLayout));
            // text direction is not modelled: it travels in the kept markup
            to.Kept.Remove("textDirection");
            if (from.Kept.Find("textDirection") is { } e) to.Kept.Add(e.Clone());
        }
    }

    private static bool IsPageLayout(FormatAttr a) =>
        a is >= FormatAttr.PageWidth and <= FormatAttr.MarginGutter
          or >= FormatAttr.ColumnCount and <= FormatAttr.ColumnList
          or >= FormatAttr.GridType and <= FormatAttr.GridCharSpace
          or FormatAttr.SectionVerticalAlignment or FormatAttr.GutterRight or FormatAttr.TitlePage
          or FormatAttr.PageNumberStart or FormatAttr.PageNumberFormat;

    /// <summary>Stretches of equal text, old from..to matched with new from newFrom, over which neither
    /// document's run changes: the old and new run indexes, the old offsets and where the old run starts.</summary>
    private static IEnumerable<(int Old, int New, int Start, int End, int OldRunStart)> Segments(Run[] oldRuns, int from, int to, Run[] newRuns, int newFrom)
    {
        int o = 0, oStart = 0;
        while (o < oldRuns.Length && oStart + oldRuns[o].Text.Length <= from) oStart += oldRuns[o++].Text.Length;
        int n = 0, nStart = 0;
        while (n < newRuns.Length && nStart + newRuns[n].Text.Length <= newFrom) nStart += newRuns[n++].Text.Length;
        int pos = from, shift = newFrom - from;
        while (pos < to && o < oldRuns.Length && n < newRuns.Length)
        {
            int oEnd = oStart + oldRuns[o].Text.Length, nEnd = nStart + newRuns[n].Text.Length - shift;
            int end = Math.Min(to, Math.Min(oEnd, nEnd));
            if (end > pos) yield return (o, n, pos, end, oStart);
            pos = end;
            if (oEnd <= pos) oStart += oldRuns[o++].Text.Length;
            if (nEnd <= pos) nStart += newRuns[n++].Text.Length;
        }
    }

    // The look a reader sees: the resolved character formatting and the character style's name.
    private static bool SameLook(Run a, Run b) =>
        Formats.Flow.RunLook.Of(a.Font) == Formats.Flow.RunLook.Of(b.Font) && a.Font.StyleName == b.Font.StyleName;

    private static bool OnlyRuns(Paragraph p)
    {
        for (var n = p.FirstChild; n != null; n = n.NextSibling)
            if (n is not (Run or BookmarkStart or BookmarkEnd)) return false;
        return true;
    }

    // Copies of the runs' characters from..to, each keeping its run's formatting.
    private IEnumerable<Run> Slice(Run[] runs, int from, int to, bool imported)
    {
        int pos = 0;
        foreach (var r in runs)
        {
            int s = Math.Max(from, pos), e = Math.Min(to, pos + r.Text.Length);
            if (s < e)
            {
                var copy = imported ? (Run)doc.ImportNode(r, false, ImportFormatMode.KeepSourceFormatting) : (Run)r.Clone(false);
                copy.Text = r.Text.Substring(s - pos, e - s);
                yield return copy;
            }
            pos += r.Text.Length;
        }
    }

    private readonly record struct Token(int Start, int End);

    private List<Token> Tokens(string text)
    {
        var list = new List<Token>();
        int i = 0;
        while (i < text.Length)
        {
            int start = i;
            if (options.Granularity == Granularity.CharLevel) i++;
            else if (char.IsLetterOrDigit(text[i])) while (i < text.Length && char.IsLetterOrDigit(text[i])) i++;
            else if (char.IsWhiteSpace(text[i])) while (i < text.Length && char.IsWhiteSpace(text[i])) i++;
            else i++;
            list.Add(new Token(start, i));
        }
        return list;
    }

    private sealed class TokenComparer : IEqualityComparer<Token>
    {
        private readonly string a, b;
        private readonly StringComparison how;

        public TokenComparer(string a, string b, bool ignoreCase)
        {
            this.a = a;
            this.b = b;
            how = ignoreCase ? StringComparison.OrdinalIgnoreCase : StringComparison.Ordinal;
        }

        // Tokens of the original are compared with tokens of the other document.
        public bool Equals(Token x, Token y) =>
            x.End - x.Start == y.End - y.Start && string.Compare(a, x.Start, b, y.Start, x.End - x.Start, how) == 0;

        public int GetHashCode(Token t) => t.End - t.Start;
    }
}
