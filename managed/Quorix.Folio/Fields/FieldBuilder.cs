using System.Globalization;

namespace Quorix.Folio.Fields;

/// <summary>Builds a field code piece by piece, nested fields included, and inserts the field.</summary>
public sealed class FieldBuilder
{
    // Each piece is code text or a nested field built in its place.
    private readonly List<object> pieces = new();
    private readonly string word;

    /// <summary>Starts building the code of a field of fieldType.</summary>
    public FieldBuilder(FieldType fieldType)
    {
        word = FieldKinds.WordOf(fieldType) ?? throw new ArgumentException($"{fieldType} is not a kind of field that can be built.", nameof(fieldType));
    }

    /// <summary>Adds a text argument, quoted where needed, to the field code being built.</summary>
    public FieldBuilder AddArgument(string argument)
    {
        ArgumentNullException.ThrowIfNull(argument);
        pieces.Add(Field.Quote(argument) + " ");
        return this;
    }

    /// <summary>Adds a whole-number argument to the field code being built.</summary>
    public FieldBuilder AddArgument(int argument) => Add(argument.ToString(CultureInfo.InvariantCulture));

    /// <summary>Adds a number argument to the field code being built.</summary>
    public FieldBuilder AddArgument(double argument) => Add(argument.ToString(CultureInfo.InvariantCulture));

    /// <summary>A nested field as one argument.</summary>
    public FieldBuilder AddArgument(FieldBuilder argument)
    {
        ArgumentNullException.ThrowIfNull(argument);
        if (argument == this) throw new ArgumentException("A field cannot hold itself.", nameof(argument));
        pieces.Add(argument);
        pieces.Add(" ");
        return this;
    }

    /// <summary>An argument made of text and nested fields, quoted as one.</summary>
    public FieldBuilder AddArgument(FieldArgumentBuilder argument)
    {
        ArgumentNullException.ThrowIfNull(argument);
        pieces.Add("\"");
        pieces.AddRange(argument.Pieces);
        pieces.Add("\" ");
        return this;
    }

    /// <summary>Adds a switch without argument, such as \h, to the field code being built.</summary>
    public FieldBuilder AddSwitch(string switchName)
    {
        if (string.IsNullOrEmpty(switchName) || switchName[0] != '\\') throw new ArgumentException("A switch starts with a backslash.", nameof(switchName));
        return Add(switchName);
    }

    /// <summary>Adds a switch with a text argument to the field code being built.</summary>
    public FieldBuilder AddSwitch(string switchName, string switchArgument) => AddSwitch(switchName).AddArgument(switchArgument);

    /// <summary>Adds a switch with a whole-number argument to the field code being built.</summary>
    public FieldBuilder AddSwitch(string switchName, int switchArgument) => AddSwitch(switchName).AddArgument(switchArgument);

    /// <summary>Adds a switch with a number argument to the field code being built.</summary>
    public FieldBuilder AddSwitch(string switchName, double switchArgument) => AddSwitch(switchName).AddArgument(switchArgument);

    private FieldBuilder Add(string text)
    {
        pieces.Add(text + " ");
        return this;
    }

    /// <summary>Inserts the field at the end of the paragraph; its result is computed.</summary>
    public Field BuildAndInsert(Paragraph refNode)
    {
        ArgumentNullException.ThrowIfNull(refNode);
        var f = Build(refNode, null);
        f.Update();
        return f;
    }

    /// <summary>Inserts the field after an inline node; its result is computed.</summary>
    public Field BuildAndInsert(Inline refNode)
    {
        ArgumentNullException.ThrowIfNull(refNode);
        var p = refNode.ParentNode as Paragraph ?? throw new ArgumentException("The node is not in a paragraph.", nameof(refNode));
        var f = Build(p, refNode.NextSibling);
        f.Update();
        return f;
    }

    private Field Build(Paragraph p, Node? before)
    {
        var doc = p.Document ?? throw new ArgumentException("The paragraph belongs to no document.");
        Node Put(Node n) => p.InsertBefore(n, before);
        var start = (FieldStart)Put(new FieldStart(doc));
        Put(new Run(doc, " " + word + " "));
        foreach (var piece in pieces)
        {
            if (piece is FieldBuilder nested) nested.Build(p, before);
            else Put(new Run(doc, (string)piece));
        }
        var sep = (FieldSeparator)Put(new FieldSeparator(doc));
        var end = (FieldEnd)Put(new FieldEnd(doc));
        return FieldKinds.Create(start, sep, end);
    }
}

/// <summary>One field argument made of text and nested fields.</summary>
public sealed class FieldArgumentBuilder
{
    internal readonly List<object> Pieces = new();

    /// <summary>Adds text to the argument being built.</summary>
    public FieldArgumentBuilder AddText(string text)
    {
        ArgumentNullException.ThrowIfNull(text);
        Pieces.Add(text.Replace("\\", "\\\\").Replace("\"", "\\\""));
        return this;
    }

    /// <summary>Adds a nested field to the argument being built.</summary>
    public FieldArgumentBuilder AddField(FieldBuilder fieldBuilder)
    {
        ArgumentNullException.ThrowIfNull(fieldBuilder);
        Pieces.Add(fieldBuilder);
        return this;
    }
}
