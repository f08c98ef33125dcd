using Quorix.Folio.Docx;
using Quorix.Folio.Formatting;
using Quorix.Folio.Package;
using Quorix.Folio.Tables;

namespace Quorix.Folio;

/// <summary>Accepts or rejects the tracked changes a loaded document carries: insertions and
/// deletions of text and table rows, and recorded formatting changes.</summary>
internal static class Revisions
{
    private static readonly HashSet<string> Insertions = new() { "ins", "moveTo" };
    private static readonly HashSet<string> Deletions = new() { "del", "moveFrom" };
    private static readonly HashSet<string> RangeMarks = new() { "moveFromRangeStart", "moveFromRangeEnd", "moveToRangeStart", "moveToRangeEnd" };
    private static readonly string[] ChangeRecords = { "rPrChange", "pPrChange", "tblPrChange", "trPrChange", "tcPrChange", "sectPrChange", "numberingChange" };

    public static int Process(Document doc, bool accept)
    {
        int count = 0;
        var ctx = Context(doc);
        var all = new List<Node>();
        for (Node? n = doc.first; n != null; n = n.NextPreOrder(doc)) all.Add(n);
        foreach (var n in all)
        {
            switch (n)
            {
                case OpaqueNode o when o.Kind == OpaqueKind.Inline && o.ParentNode is Paragraph p:
                    count += Inline(o, p, ctx, accept);
                    break;
                case Paragraph p:
                    count += Props(p.PPr, accept, "pPrChange");
                    if (p.PPr.Find("rPr") is { Children: { } mark })
                        count += Props(new PropBag(PropOrder.Run, mark), accept, "rPrChange", dropMarks: true);
                    break;
                case Inline i:
                    count += Props(i.RPr, accept, "rPrChange");
                    break;
                case Row row:
                    count += RowMark(row, accept);
                    count += Props(row.TrPr, accept, "trPrChange");
                    break;
                case Table t:
                    count += Props(t.TblPr, accept, "tblPrChange");
                    break;
                case Cell c:
                    count += Props(c.TcPr, accept, "tcPrChange");
                    break;
                case Section s:
                    count += Props(s.SectPr, accept, "sectPrChange");
                    break;
            }
        }
        if (count > 0) doc.Changed();
        return count;
    }

    private static ReadContext Context(Document doc)
    {
        var pkg = doc.Source ?? new OpcPackage();
        var part = doc.MainPartName ?? "word/document.xml";
        return new ReadContext(doc, pkg, part, new SharedNotes()) { Root = doc.Docx.Roots.GetValueOrDefault(part) };
    }

    private static string RootName(string xml)
    {
        int end = 1;
        while (end < xml.Length && xml[end] != ' ' && xml[end] != '>' && xml[end] != '/') end++;
        var name = xml[1..end];
        int colon = name.IndexOf(':');
        return colon < 0 ? name : name[(colon + 1)..];
    }

    private static int Inline(OpaqueNode o, Paragraph p, ReadContext ctx, bool accept)
    {
        var name = RootName(o.Xml);
        if (RangeMarks.Contains(name))
        {
            p.Unlink(o);
            return 1;
        }
        bool inserted = Insertions.Contains(name), deleted = Deletions.Contains(name);
        if (!inserted && !deleted) return 0;
        if (inserted != accept)
        {
            p.Unlink(o);
            return 1;
        }
        // Kept content: deleted text becomes ordinary text again when a deletion is rejected.
        Func<string, string>? rewrite = deleted ? x => x.Replace("<w:delText", "<w:t").Replace("</w:delText>", "</w:t>").Replace("<w:delInstrText", "<w:instrText").Replace("</w:delInstrText>", "</w:instrText>") : null;
        foreach (var n in BodyReader.ReadChildrenOf(o.Xml, ctx, rewrite))
        {
            p.InsertBefore(n, o);
            if (n is Inline i) Props(i.RPr, accept, "rPrChange");
        }
        p.Unlink(o);
        return 1;
    }

    /// <summary>Drops a change record, restoring the recorded old properties when rejecting.</summary>
    private static int Props(PropBag bag, bool accept, string record, bool dropMarks = false)
    {
        int count = 0;
        if (dropMarks)
        {
            count += bag.Items.Count(e => e.Local is "ins" or "del" or "moveFrom" or "moveTo");
            bag.RemoveAll(e => e.Ns == Ns.W && e.Local is "ins" or "del" or "moveFrom" or "moveTo");
        }
        var change = bag.Find(record);
        if (change == null) return count;
        bag.Remove(record);
        if (!accept)
        {
            // The record holds the properties as they were, in one child element.
            var old = change.Children?.FirstOrDefault();
            var keep = bag.Items.Where(e => e.Local == "rPr" && record == "pPrChange").Select(e => e.Clone()).ToList();
            bag.Clear();
            foreach (var e in old?.Children ?? new List<PropElement>()) bag.Add(e.Clone());
            foreach (var e in keep) if (!bag.Has(e.Local)) bag.Add(e);
        }
        return count + 1;
    }

    private static int RowMark(Row row, bool accept)
    {
        bool inserted = row.TrPr.Has("ins"), deleted = row.TrPr.Has("del");
        if (!inserted && !deleted) return 0;
        if (inserted != accept) row.Remove();
        else row.TrPr.RemoveAll(e => e.Ns == Ns.W && e.Local is "ins" or "del");
        return 1;
    }

    public static bool Any(Document doc)
    {
        for (Node? n = doc.first; n != null; n = n.NextPreOrder(doc))
        {
            if (n is OpaqueNode { Kind: OpaqueKind.Inline } o)
            {
                var name = RootName(o.Xml);
                if (Insertions.Contains(name) || Deletions.Contains(name)) return true;
            }
            else if (n is Inline i && i.RPr.Has("rPrChange")) return true;
            else if (n is Paragraph p && p.PPr.Has("pPrChange")) return true;
            else if (n is Row r && (r.TrPr.Has("ins") || r.TrPr.Has("del"))) return true;
        }
        return false;
    }
}
