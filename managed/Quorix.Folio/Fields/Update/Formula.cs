using System.Globalization;
using Quorix.Folio.Tables;

namespace Quorix.Folio.Fields;

/// <summary>The expressions of = fields: arithmetic, comparisons (1 or 0), functions, bookmarks and
/// table references (A1, A1:B3, ABOVE, LEFT, BELOW, RIGHT) relative to the field's table.</summary>
internal sealed class Formula
{
    private readonly string s;
    private readonly FieldUpdateContext ctx;
    private readonly Node at;
    private int pos;

    private Formula(string text, FieldUpdateContext ctx, Node at)
    {
        s = text;
        this.ctx = ctx;
        this.at = at;
    }

    public static double Evaluate(string text, FieldUpdateContext ctx, Node at)
    {
        var f = new Formula(text, ctx, at);
        var v = f.Comparison();
        f.Skip();
        if (f.pos < f.s.Length) throw new FieldUpdateException($"!Syntax Error, {f.s[f.pos..]}");
        return Scalar(v);
    }

    private static double Scalar(List<double> v) => v.Count == 1 ? v[0] : throw new FieldUpdateException("A list stands where one number belongs.");

    private void Skip() { while (pos < s.Length && char.IsWhiteSpace(s[pos])) pos++; }

    private bool Eat(string op)
    {
        Skip();
        if (string.CompareOrdinal(s, pos, op, 0, op.Length) != 0) return false;
        pos += op.Length;
        return true;
    }

    private List<double> Comparison()
    {
        var left = Additive();
        foreach (var op in new[] { "<=", ">=", "<>", "=", "<", ">" })
        {
            if (!Eat(op)) continue;
            double a = Scalar(left), b = Scalar(Additive());
            bool r = op switch { "<=" => a <= b, ">=" => a >= b, "<>" => a != b, "=" => a == b, "<" => a < b, _ => a > b };
            return One(r ? 1 : 0);
        }
        return left;
    }

    private static List<double> One(double v) => new(1) { v };

    private List<double> Additive()
    {
        var v = Multiplicative();
        while (true)
        {
            if (Eat("+")) v = One(Scalar(v) + Scalar(Multiplicative()));
            else if (Eat("-")) v = One(Scalar(v) - Scalar(Multiplicative()));
            else return v;
        }
    }

    private List<double> Multiplicative()
    {
        var v = Power();
        while (true)
        {
            if (Eat("*")) v = One(Scalar(v) * Scalar(Power()));
            else if (Eat("/"))
            {
                var d = Scalar(Power());
                if (d == 0) throw new FieldUpdateException("!Zero Divide");
                v = One(Scalar(v) / d);
            }
            else return v;
        }
    }

    private List<double> Power()
    {
        var v = Unary();
        if (Eat("^")) return One(Math.Pow(Scalar(v), Scalar(Power())));
        return v;
    }

    private List<double> Unary()
    {
        if (Eat("-")) return One(-Scalar(Unary()));
        if (Eat("+")) return Unary();
        var v = Primary();
        if (Eat("%")) return One(Scalar(v) / 100);
        return v;
    }

    private List<double> Primary()
    {
        Skip();
        if (pos >= s.Length) throw new FieldUpdateException("!Syntax Error");
        if (Eat("("))
        {
            var v = Comparison();
            if (!Eat(")")) throw new FieldUpdateException("!Syntax Error, missing )");
            return v;
        }
        char c = s[pos];
        if (char.IsDigit(c) || c == '.')
        {
            int st = pos;
            while (pos < s.Length && (char.IsDigit(s[pos]) || s[pos] == '.')) pos++;
            var t = s[st..pos];
            return double.TryParse(t, NumberStyles.Float, CultureInfo.InvariantCulture, out var d) ? One(d) : throw new FieldUpdateException("!Syntax Error, " + t);
        }
        if (char.IsLetter(c) || c == '_')
        {
            int st = pos;
            while (pos < s.Length && (char.IsLetterOrDigit(s[pos]) || s[pos] == '_')) pos++;
            var word = s[st..pos];
            if (Eat("(")) return Function(word.ToUpperInvariant());
            if (Eat(":")) return Cells(word, Word());
            return Name(word);
        }
        throw new FieldUpdateException("!Syntax Error, " + s[pos..]);
    }

    private string Word()
    {
        Skip();
        int st = pos;
        while (pos < s.Length && char.IsLetterOrDigit(s[pos])) pos++;
        return s[st..pos];
    }

    private List<double> Function(string name)
    {
        var args = new List<List<double>>();
        if (!Eat(")"))
        {
            do args.Add(Comparison()); while (Eat(","));
            if (!Eat(")")) throw new FieldUpdateException("!Syntax Error, missing )");
        }
        var all = args.SelectMany(a => a).ToList();
        double A(int i) => i < args.Count ? Scalar(args[i]) : throw new FieldUpdateException($"!Missing argument of {name}");
        return One(name switch
        {
            "SUM" => all.Sum(),
            "AVERAGE" => all.Count > 0 ? all.Average() : 0,
            "COUNT" => all.Count,
            "MAX" => all.Count > 0 ? all.Max() : 0,
            "MIN" => all.Count > 0 ? all.Min() : 0,
            "PRODUCT" => all.Aggregate(1.0, (a, b) => a * b),
            "ABS" => Math.Abs(A(0)),
            "INT" => Math.Truncate(A(0)),
            "SIGN" => Math.Sign(A(0)),
            "MOD" => A(1) == 0 ? throw new FieldUpdateException("!Zero Divide") : A(0) % A(1),
            "ROUND" => Math.Round(A(0) * Math.Pow(10, A(1)), MidpointRounding.AwayFromZero) / Math.Pow(10, A(1)),
            "NOT" => A(0) == 0 ? 1 : 0,
            "AND" => A(0) != 0 && A(1) != 0 ? 1 : 0,
            "OR" => A(0) != 0 || A(1) != 0 ? 1 : 0,
            "IF" => A(0) != 0 ? A(1) : A(2),
            "TRUE" => 1,
            "FALSE" => 0,
            "DEFINED" => 1,
            _ => throw new FieldUpdateException($"!Syntax Error, {name}"),
        });
    }

    private List<double> Name(string word)
    {
        switch (word.ToUpperInvariant())
        {
            case "ABOVE": return Direction(0, -1);
            case "BELOW": return Direction(0, 1);
            case "LEFT": return Direction(-1, 0);
            case "RIGHT": return Direction(1, 0);
        }
        if (CellRef(word) is { } rc && at.GetAncestor(NodeType.Table) != null) return Cells(word, word);
        if (ctx.Bookmark(word) is { } text)
            return FieldFormatting.TryNumber(text, ctx.Culture, out var v) ? One(v) : One(0);
        throw new FieldUpdateException($"!Undefined Bookmark, {word}");
    }

    private static (int Col, int Row)? CellRef(string w)
    {
        int i = 0, col = 0;
        while (i < w.Length && char.IsLetter(w[i])) col = col * 26 + (char.ToUpperInvariant(w[i++]) - 'A' + 1);
        if (i == 0 || i == w.Length || !int.TryParse(w[i..], out var row)) return null;
        return (col - 1, row - 1);
    }

    private List<double> Cells(string from, string to)
    {
        var table = at.GetAncestor(NodeType.Table) as Table ?? throw new FieldUpdateException("!Not in a table");
        if (CellRef(from) is not { } a || CellRef(to) is not { } b) throw new FieldUpdateException($"!Syntax Error, {from}:{to}");
        var list = new List<double>();
        for (int r = Math.Min(a.Row, b.Row); r <= Math.Max(a.Row, b.Row); r++)
            for (int c = Math.Min(a.Col, b.Col); c <= Math.Max(a.Col, b.Col); c++)
                if (CellNumber(table, r, c) is { } v) list.Add(v);
        return list;
    }

    // Cells along one direction from the field's cell, up to the first cell with no number after a number.
    private List<double> Direction(int dc, int dr)
    {
        var cell = at.GetAncestor(NodeType.Cell) as Cell ?? throw new FieldUpdateException("!Not in a table");
        var row = (Row)cell.ParentNode!;
        var table = (Table)row.ParentNode!;
        int r = table.IndexOf(row), c = row.IndexOf(cell);
        var list = new List<double>();
        for (r += dr, c += dc; r >= 0 && c >= 0 && r < table.Rows.Count; r += dr, c += dc)
        {
            if (c >= ((Row)table.Rows[r]).Cells.Count) break;
            var v = CellNumber(table, r, c);
            if (v == null && list.Count > 0) break;
            if (v != null) list.Add(v.Value);
        }
        return list;
    }

    private double? CellNumber(Table t, int r, int c)
    {
        if (r >= t.Rows.Count) return null;
        var row = (Row)t.Rows[r];
        if (c >= row.Cells.Count) return null;
        var text = row.Cells[c].GetText().TrimEnd(ControlChar.CellChar, ControlChar.ParagraphBreakChar).Trim();
        return FieldFormatting.TryNumber(text, ctx.Culture, out var v) ? v : null;
    }
}
