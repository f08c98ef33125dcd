using Quorix.Folio.Formatting;

namespace Quorix.Folio.Fields;

/// <summary>A field marker: start, separator or end.</summary>
public abstract class FieldChar : SpecialChar
{
    private protected FieldChar(DocumentBase? doc, FormatProps rPr) : base(doc, rPr) { }

    /// <summary>The kind of the field this marker belongs to.</summary>
    public FieldType FieldType => GetField()?.Type ?? FieldType.FieldNone;

    /// <summary>The field this marker belongs to, found by pairing markers in document order.</summary>
    public Field? GetField()
    {
        var start = this as FieldStart ?? FieldPairing.FindStart(this);
        return start == null ? null : FieldPairing.Complete(start);
    }
}

/// <summary>The marker that starts a field, before its code.</summary>
public sealed class FieldStart : FieldChar
{
    /// <summary>A field start marker for doc.</summary>
    public FieldStart(DocumentBase doc) : base(doc, FormatProps.None) { }

    internal FieldStart(DocumentBase? doc, FormatProps rPr) : base(doc, rPr) { }

    /// <summary>Always FieldStart.</summary>
    public override NodeType NodeType => NodeType.FieldStart;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitFieldStart(this);

    internal override char Char => ControlChar.FieldStartChar;

    // The begin marker as read: locks, dirty flags and form-field data the model does not interpret.
    internal PropElement? Raw;

    // A link or simple-field element the field was read from, with the code it implied: written
    // back in that form while the field is intact and its code unchanged.
    internal PropElement? Wrapper;
    internal string? WrapperCode;

    internal override Node CloneTo(DocumentBase? target, bool deep) =>
        new FieldStart(target, RPr.Clone()) { Raw = Raw?.Clone(), Wrapper = Wrapper?.Clone(), WrapperCode = WrapperCode };
}

/// <summary>The marker between a field's code and its result.</summary>
public sealed class FieldSeparator : FieldChar
{
    /// <summary>A field separator marker for doc.</summary>
    public FieldSeparator(DocumentBase doc) : base(doc, FormatProps.None) { }

    internal FieldSeparator(DocumentBase? doc, FormatProps rPr) : base(doc, rPr) { }

    /// <summary>Always FieldSeparator.</summary>
    public override NodeType NodeType => NodeType.FieldSeparator;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitFieldSeparator(this);

    internal override char Char => ControlChar.FieldSeparatorChar;

    internal override Node CloneTo(DocumentBase? target, bool deep) => new FieldSeparator(target, RPr.Clone());
}

/// <summary>The marker that ends a field, after its result.</summary>
public sealed class FieldEnd : FieldChar
{
    /// <summary>A field end marker for doc.</summary>
    public FieldEnd(DocumentBase doc) : base(doc, FormatProps.None) { }

    internal FieldEnd(DocumentBase? doc, FormatProps rPr) : base(doc, rPr) { }

    /// <summary>Always FieldEnd.</summary>
    public override NodeType NodeType => NodeType.FieldEnd;

    internal override VisitorAction AcceptCore(DocumentVisitor visitor) => visitor.VisitFieldEnd(this);

    internal override char Char => ControlChar.FieldEndChar;

    internal override Node CloneTo(DocumentBase? target, bool deep) => new FieldEnd(target, RPr.Clone());
}
