using System.Collections;
using System.Globalization;
using System.Reflection;

namespace Quorix.Folio.Reporting;

/// <summary>Names in scope while a template is built: the data, loop variables, known types.</summary>
internal sealed class Scope
{
    private readonly Scope? parent;
    private readonly Dictionary<string, object?> vars = new(StringComparer.OrdinalIgnoreCase);
    public readonly ReportingEngine Engine;

    public Scope(ReportingEngine engine, Scope? parent = null)
    {
        Engine = engine;
        this.parent = parent;
    }

    public Scope With(string name, object? value)
    {
        var s = new Scope(Engine, this);
        s.vars[name] = value;
        return s;
    }

    public void Set(string name, object? value) => vars[name] = value;

    public bool TryGet(string name, out object? value)
    {
        for (var s = this; s != null; s = s.parent)
            if (s.vars.TryGetValue(name, out value)) return true;
        value = null;
        return false;
    }
}

/// <summary>Expressions of report tags: literals, names, member access (which maps over lists), indexing,
/// arithmetic, comparison, logic and a few functions.</summary>
internal sealed class Expression
{
    private readonly string s;
    private readonly Scope scope;
    private int pos;

    private Expression(string s, Scope scope)
    {
        this.s = s;
        this.scope = scope;
    }

    public static object? Evaluate(string text, Scope scope)
    {
        var e = new Expression(text, scope);
        var v = e.Or();
        e.Skip();
        if (e.pos < e.s.Length) throw e.Error($"unexpected \"{e.s[e.pos..]}\"");
        return v;
    }

    private ArgumentException Error(string what) => new(what);

    private void Skip() { while (pos < s.Length && char.IsWhiteSpace(s[pos])) pos++; }

    private bool Eat(string op)
    {
        Skip();
        if (string.CompareOrdinal(s, pos, op, 0, op.Length) != 0) return false;
        // "and"/"or"/"not" are words: "order" does not start with "or".
        if (char.IsLetter(op[0]) && pos + op.Length < s.Length && char.IsLetterOrDigit(s[pos + op.Length])) return false;
        pos += op.Length;
        return true;
    }

    private object? Or()
    {
        var v = And();
        while (Eat("||") || Eat("or")) { var r = And(); v = Truthy(v) || Truthy(r); }
        return v;
    }

    private object? And()
    {
        var v = Compare();
        while (Eat("&&") || Eat("and")) { var r = Compare(); v = Truthy(v) && Truthy(r); }
        return v;
    }

    private object? Compare()
    {
        var v = Add();
        foreach (var op in new[] { "==", "!=", "<=", ">=", "<", ">" })
        {
            if (!Eat(op)) continue;
            var r = Add();
            int c = CompareValues(v, r);
            return op switch { "==" => c == 0, "!=" => c != 0, "<=" => c <= 0, ">=" => c >= 0, "<" => c < 0, _ => c > 0 };
        }
        return v;
    }

    private static int CompareValues(object? a, object? b)
    {
        if (a == null || b == null) return a == null && b == null ? 0 : a == null ? -1 : 1;
        if (IsNumber(a) && IsNumber(b)) return Num(a).CompareTo(Num(b));
        if (AsDate(a) is { } da && AsDate(b) is { } db) return da.CompareTo(db);
        if (a is bool ba && b is bool bb) return ba.CompareTo(bb);
        return string.CompareOrdinal(Text(a), Text(b));
    }

    private object? Add()
    {
        var v = Mul();
        while (true)
        {
            if (Eat("+"))
            {
                var r = Mul();
                v = IsNumber(v) && IsNumber(r) && !(v is LooseText && r is string || v is string && r is LooseText) ? Num(v) + Num(r) : Text(v) + Text(r);
            }
            else if (Eat("-")) v = Num(v) - Num(Mul());
            else return v;
        }
    }

    private object? Mul()
    {
        var v = Unary();
        while (true)
        {
            if (Eat("*")) v = Num(v) * Num(Unary());
            else if (Eat("/")) { var d = Num(Unary()); v = d == 0 ? throw Error("division by zero") : Num(v) / d; }
            else if (Eat("%")) { var d = Num(Unary()); v = d == 0 ? throw Error("division by zero") : Num(v) % d; }
            else return v;
        }
    }

    private object? Unary()
    {
        if (Eat("-")) return -Num(Unary());
        if (Eat("!") || Eat("not")) return !Truthy(Unary());
        return Postfix(Primary());
    }

    private object? Postfix(object? v)
    {
        while (true)
        {
            if (Eat("."))
            {
                var name = Name();
                v = Member(v, name);
            }
            else if (Eat("["))
            {
                var i = Or();
                if (!Eat("]")) throw Error("missing ]");
                v = Index(v, i);
            }
            else return v;
        }
    }

    private string Name()
    {
        Skip();
        int st = pos;
        while (pos < s.Length && (char.IsLetterOrDigit(s[pos]) || s[pos] == '_')) pos++;
        if (st == pos) throw Error("a name is missing");
        return s[st..pos];
    }

    private object? Primary()
    {
        Skip();
        if (pos >= s.Length) throw Error("the expression ends too soon");
        char c = s[pos];
        if (Eat("("))
        {
            var v = Or();
            if (!Eat(")")) throw Error("missing )");
            return v;
        }
        if (c is '"' or '\'')
        {
            int end = s.IndexOf(c, pos + 1);
            if (end < 0) throw Error("a string is not closed");
            var str = s[(pos + 1)..end];
            pos = end + 1;
            return str;
        }
        if (char.IsDigit(c))
        {
            int st = pos;
            while (pos < s.Length && (char.IsDigit(s[pos]) || s[pos] == '.')) pos++;
            var t = s[st..pos];
            return t.Contains('.') ? double.Parse(t, CultureInfo.InvariantCulture) : (object)long.Parse(t, CultureInfo.InvariantCulture);
        }
        var name = Name();
        if (Eat("("))
        {
            var args = new List<object?>();
            if (!Eat(")"))
            {
                do args.Add(Or()); while (Eat(","));
                if (!Eat(")")) throw Error("missing )");
            }
            return Functions.Call(name, args);
        }
        switch (name)
        {
            case "true": return true;
            case "false": return false;
            case "null": return null;
        }
        if (scope.TryGet(name, out var value)) return value;
        if (scope.Engine.KnownTypes.Find(name) is { } type) return new StaticType(type);
        if (scope.Engine.Options.HasFlag(ReportBuildOptions.AllowMissingMembers)) return null;
        throw Error($"\"{name}\" is not defined");
    }

    internal sealed record StaticType(Type Type);

    private object? Member(object? v, string name)
    {
        switch (v)
        {
            case null:
                return scope.Engine.Options.HasFlag(ReportBuildOptions.AllowMissingMembers) ? null : throw Error($"\"{name}\" is read from nothing");
            case Dictionary<string, object?> o:
                if (o.TryGetValue(name, out var m)) return m;
                break;
            case IDictionary d:
                if (d.Contains(name)) return d[name];
                break;
            case string:
                break;
            case IEnumerable list when !name.Equals("Count", StringComparison.OrdinalIgnoreCase):
                // A member of a list is that member of each item.
                return list.Cast<object?>().Select(x => Member(x, name)).ToList();
            case StaticType st:
                var sp = st.Type.GetProperty(name, BindingFlags.Public | BindingFlags.Static | BindingFlags.IgnoreCase);
                if (sp != null) return sp.GetValue(null);
                var sf = st.Type.GetField(name, BindingFlags.Public | BindingFlags.Static | BindingFlags.IgnoreCase);
                if (sf != null) return sf.GetValue(null);
                break;
        }
        if (v is IEnumerable e && v is not string && name.Equals("Count", StringComparison.OrdinalIgnoreCase)) return (long)e.Cast<object?>().Count();
        var p = v.GetType().GetProperty(name, BindingFlags.Public | BindingFlags.Instance | BindingFlags.IgnoreCase);
        if (p != null && p.GetIndexParameters().Length == 0) return p.GetValue(v);
        var f = v.GetType().GetField(name, BindingFlags.Public | BindingFlags.Instance | BindingFlags.IgnoreCase);
        if (f != null) return f.GetValue(v);
        if (scope.Engine.Options.HasFlag(ReportBuildOptions.AllowMissingMembers)) return null;
        throw Error($"there is no member \"{name}\"");
    }

    private object? Index(object? v, object? i)
    {
        if (v is IList list && IsNumber(i))
        {
            int k = (int)Num(i);
            return k >= 0 && k < list.Count ? list[k] : throw Error($"index {k} is outside the list of {list.Count}");
        }
        if (i is string key) return Member(v, key);
        throw Error("only lists take a number in []");
    }

    public static bool IsNumber(object? v) => v is long or int or double or decimal or float or short or byte or uint or ulong || v is LooseText { Number: not null };

    public static DateTime? AsDate(object? v) => v as DateTime? ?? (v as LooseText)?.Date;

    public static double Num(object? v) => v switch
    {
        null => 0,
        bool b => b ? 1 : 0,
        LooseText t => t.Number ?? throw new ArgumentException($"\"{t.Text}\" is not a number"),
        string str => throw new ArgumentException($"\"{str}\" is text, not a number"),
        _ when IsNumber(v) => Convert.ToDouble(v, CultureInfo.InvariantCulture),
        _ => throw new ArgumentException($"{v} is not a number"),
    };

    public static bool Truthy(object? v) => v switch
    {
        null => false,
        bool b => b,
        string str => str.Length > 0,
        LooseText t => t.Text.Length > 0,
        IEnumerable e => e.Cast<object?>().Any(),
        _ when IsNumber(v) => Num(v) != 0,
        _ => true,
    };

    public static string Text(object? v) => v switch
    {
        null => "",
        string str => str,
        LooseText t => t.Text,
        bool b => b ? "true" : "false",
        double d => d.ToString(CultureInfo.InvariantCulture),
        IFormattable f => f.ToString(null, CultureInfo.InvariantCulture),
        IEnumerable e => string.Join(", ", e.Cast<object?>().Select(Text)),
        _ => v.ToString() ?? "",
    };
}

internal static class Functions
{
    public static object? Call(string name, List<object?> a)
    {
        IEnumerable<object?> Items(int i) => i < a.Count && a[i] is IEnumerable e && a[i] is not string ? e.Cast<object?>() : throw new ArgumentException($"{name}() needs a list");
        object? Arg(int i) => i < a.Count ? a[i] : throw new ArgumentException($"{name}() needs {i + 1} argument(s)");
        return name.ToLowerInvariant() switch
        {
            "count" => (long)Items(0).Count(),
            "sum" => Items(0).Sum(Expression.Num),
            "avg" => Items(0).Select(Expression.Num).DefaultIfEmpty(0).Average(),
            "min" => Items(0).Select(Expression.Num).DefaultIfEmpty(0).Min(),
            "max" => Items(0).Select(Expression.Num).DefaultIfEmpty(0).Max(),
            "first" => Items(0).FirstOrDefault(),
            "last" => Items(0).LastOrDefault(),
            "join" => string.Join(a.Count > 1 ? Expression.Text(a[1]) : ", ", Items(0).Select(Expression.Text)),
            "upper" => Expression.Text(Arg(0)).ToUpperInvariant(),
            "lower" => Expression.Text(Arg(0)).ToLowerInvariant(),
            "round" => Math.Round(Expression.Num(Arg(0)), a.Count > 1 ? (int)Expression.Num(a[1]) : 0, MidpointRounding.AwayFromZero),
            "abs" => Math.Abs(Expression.Num(Arg(0))),
            "empty" => !Expression.Truthy(Arg(0)),
            "default" => Expression.Truthy(Arg(0)) ? a[0] : Arg(1),
            _ => throw new ArgumentException($"there is no function {name}()"),
        };
    }
}
