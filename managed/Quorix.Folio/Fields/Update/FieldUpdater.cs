namespace Quorix.Folio.Fields;

/// <summary>Updates fields in the order their ends appear: nested fields before the fields holding them.</summary>
internal static class FieldUpdater
{
    /// <summary>The complete fields met walking from <paramref name="from"/> (inside <paramref name="root"/>)
    /// until <paramref name="last"/>, in the order their ends appear.</summary>
    public static List<Field> Collect(Node from, Node root, Node? last = null)
    {
        var list = new List<Field>();
        Walk(from, root, last, new Stack<(FieldStart, FieldSeparator?)>(), list);
        return list;
    }

    /// <summary>The complete fields of a run of sibling nodes, whose markers may be siblings themselves.</summary>
    public static List<Field> Collect(IEnumerable<Node> siblings)
    {
        var list = new List<Field>();
        var stack = new Stack<(FieldStart, FieldSeparator?)>();
        foreach (var n in siblings) Walk(n, n, null, stack, list);
        return list;
    }

    private static void Walk(Node from, Node root, Node? last, Stack<(FieldStart Start, FieldSeparator? Sep)> stack, List<Field> list)
    {
        for (Node? n = from; n != null; n = n.NextPreOrder(root))
        {
            if (n is FieldStart s) stack.Push((s, null));
            else if (n is FieldSeparator sep && stack.Count > 0) { var t = stack.Pop(); stack.Push((t.Start, t.Sep ?? sep)); }
            else if (n is FieldEnd e && stack.Count > 0) { var (st, sp) = stack.Pop(); list.Add(FieldKinds.Create(st, sp, e)); }
            if (n == last) break;
        }
    }

    public static int Update(List<Field> fields, FieldUpdateContext ctx)
    {
        int changed = 0;
        var watcher = ctx.Options.FieldUpdatingCallback;
        var progress = ctx.Options.FieldUpdatingProgressCallback;
        int reported = -1;
        for (int i = 0; i < fields.Count; i++)
        {
            var f = fields[i];
            // A field inside the result of one updated before it has gone with that result.
            if (f.Start.ParentNode != null && f.End.ParentNode != null && !f.IsLocked)
            {
                watcher?.FieldUpdating(f);
                if (UpdateOne(f, ctx)) changed++;
                watcher?.FieldUpdated(f);
            }
            if (progress != null && ((i + 1) * 100 / fields.Count) is var percent && percent > reported)
            {
                reported = percent;
                progress.Notify(new FieldUpdatingProgressArgs(fields.Count, i + 1));
            }
        }
        return changed;
    }

    /// <summary>Computes and writes one field's result; false when the field keeps the one it had.</summary>
    private static bool UpdateOne(Field f, FieldUpdateContext ctx)
    {
        string? result;
        try
        {
            result = f.Compute(ctx);
        }
        catch (FieldUpdateException)
        {
            // Malformed codes keep the result they had, as a word processor leaves them.
            return false;
        }
        if (f.WritesOwnResult) return true;
        if (result == null) return false;
        if (f.FormatsResult) result = FieldFormatting.Apply(result, f.ParseCode(), ctx.Culture);
        if (result != f.Result) f.WriteResult(result);
        return true;
    }
}

/// <summary>A field code that cannot be computed; update keeps the field's old result.</summary>
internal sealed class FieldUpdateException : Exception
{
    public FieldUpdateException(string message) : base(message) { }
}
