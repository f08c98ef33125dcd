using System.Globalization;
using System.Text;
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
    private int nextId = 9000;

    public DocumentComparer(Document doc, Document other, string author, DateTime when, CompareOptions options)
    {
        this.doc = doc;
        this.other = other;
        this.author = author;
        this.options = options;
        date = when.ToUniversalTime().ToString("yyyy-MM-dd'T'HH:mm:ss'Z'", CultureInfo.InvariantCulture);
    }

    public void Execute()
    {
        if (doc.HasRevisions || other.HasRevisions)
            throw new InvalidOperationException("Documents with tracked changes cannot be compared: accept or reject them first.");
        var mine = Blocks(doc);
        var theirs = Blocks(other);
        var keyComparer = options.IgnoreCaseChanges ? StringComparer.OrdinalIgnoreCase : StringComparer.Ordinal;
        var edits = SequenceDiff.Compute(mine.ConvertAll(Key), theirs.ConvertAll(Key), keyComparer);
        Node? anchor = null;
        for (int e = 0; e < edits.Count; e++)
        {
            var edit = edits[e];
            switch (edit.Kind)
            {
                case EditKind.Equal:
                    anchor = mine[edit.OldIndex + edit.Length - 1];
                    break;
                case EditKind.Delete when e + 1 < edits.Count && edits[e + 1].Kind == EditKind.Insert:
                {
                    // A replaced stretch: paragraphs side by side are compared word by word.
                    var ins = edits[++e];
                    int pairs = Math.Min(edit.Length, ins.Length);
                    for (int k = 0; k < pairs; k++)
                    {
                        var old = mine[edit.OldIndex + k];
                        var now = theirs[ins.NewIndex + k];
                        if (old is Paragraph p && now is Paragraph q) Words(p, q);
                        else
                        {
                            Delete(old);
                            anchor = old;
                            anchor = Insert(now, anchor);
                        }
                        anchor = old.ParentNode != null ? old : anchor;
                    }
                    for (int k = pairs; k < edit.Length; k++) { Delete(mine[edit.OldIndex + k]); anchor = mine[edit.OldIndex + k]; }
                    for (int k = pairs; k < ins.Length; k++) anchor = Insert(theirs[ins.NewIndex + k], anchor);
                    break;
                }
                case EditKind.Delete:
                    for (int k = 0; k < edit.Length; k++) Delete(mine[edit.OldIndex + k]);
                    anchor = mine[edit.OldIndex + edit.Length - 1];
                    break;
                case EditKind.Insert:
                    for (int k = 0; k < edit.Length; k++) anchor = Insert(theirs[edit.NewIndex + k], anchor);
                    break;
            }
        }
        doc.Changed();
    }

    private List<Node> Blocks(Document d)
    {
        var list = new List<Node>();
        foreach (var s in d.Sections.ToArray())
            for (var n = s.Body?.FirstChild; n != null; n = n.NextSibling)
                if (n is Paragraph || (n is Table && !options.IgnoreTables)) list.Add(n);
        return list;
    }

    private static string Key(Node n) => (n is Table ? "T" : "P") + n.GetText();

    private PropElement Mark(string kind) =>
        new PropElement(kind).Set("id", (nextId++).ToString(CultureInfo.InvariantCulture)).Set("author", author).Set("date", date);

    private static void MarkParagraph(Paragraph p, PropElement mark)
    {
        var rPr = p.PPr.GetOrAdd("rPr");
        (rPr.Children ??= new List<PropElement>()).Add(mark);
    }

    private void Delete(Node block)
    {
        var mark = Mark("del");
        foreach (var p in Paragraphs(block))
        {
            for (var n = p.FirstChild; n != null; n = n.NextSibling) n.Rev = mark;
            MarkParagraph(p, Mark("del"));
        }
        if (block is Table t) foreach (var r in t.Rows) r.TrPr.Add(Mark("del"));
    }

    /// <summary>Brings a block of the other document in after <paramref name="anchor"/>; returns it.</summary>
    private Node Insert(Node block, Node? anchor)
    {
        var copy = doc.ImportNode(block, true, ImportFormatMode.KeepSourceFormatting);
        if (anchor?.ParentNode is CompositeNode parent) parent.InsertAfter(copy, anchor);
        else
        {
            var body = doc.FirstSection!.Body!;
            body.InsertBefore(copy, body.FirstChild);
        }
        var mark = Mark("ins");
        foreach (var p in Paragraphs(copy))
        {
            for (var n = p.FirstChild; n != null; n = n.NextSibling) n.Rev = mark;
            MarkParagraph(p, Mark("ins"));
        }
        if (copy is Table t) foreach (var r in t.Rows) r.TrPr.Add(Mark("ins"));
        return copy;
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
            else
            {
                int from = a[e.OldIndex].Start, to = a[e.OldIndex + e.Length - 1].End;
                var mark = e.Kind == EditKind.Delete ? Mark("del") : null;
                foreach (var r in Slice(oldRuns, from, to, imported: false)) { r.Rev = mark; pieces.Add(r); }
            }
        }
        foreach (var r in oldRuns) r.Remove();
        foreach (var r in pieces) p.AppendChild(r);
    }

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
