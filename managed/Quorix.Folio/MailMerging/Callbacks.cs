using Quorix.Folio.Fields;

namespace Quorix.Folio.MailMerging;

/// <summary>What a merge callback learns about the field being merged.</summary>
public abstract class FieldMergingArgsBase
{
    private protected FieldMergingArgsBase(Document document, string tableName, int recordIndex, string fieldName, string documentFieldName, object? fieldValue, FieldMergeField? field, MustacheTag? tag)
    {
        Document = document;
        TableName = tableName;
        RecordIndex = recordIndex;
        FieldName = fieldName;
        DocumentFieldName = documentFieldName;
        FieldValue = fieldValue;
        Field = field;
        MustacheTag = tag;
    }

    /// <summary>The document being merged.</summary>
    public Document Document { get; }

    /// <summary>The region being merged; empty outside regions.</summary>
    public string TableName { get; }

    /// <summary>The record's index from 0.</summary>
    public int RecordIndex { get; }

    /// <summary>The data's name for the field (after mapping).</summary>
    public string FieldName { get; }

    /// <summary>The name as the document writes it.</summary>
    public string DocumentFieldName { get; }

    /// <summary>The value from the data; change it to merge another.</summary>
    public object? FieldValue { get; set; }

    /// <summary>The merge field, or null when a {{name}} tag is being merged.</summary>
    public FieldMergeField? Field { get; }

    /// <summary>The {{name}} tag being merged, or null for a merge field.</summary>
    public MustacheTag? MustacheTag { get; }
}

/// <summary>What a mail merge is about to put in a merge field, for a callback to change.</summary>
public sealed class FieldMergingArgs : FieldMergingArgsBase
{
    internal FieldMergingArgs(Document d, string t, int r, string f, string df, object? v, FieldMergeField? field, MustacheTag? tag)
        : base(d, t, r, f, df, v, field, tag) { }

    /// <summary>Text to put in the field's place instead of the value; null to merge the value.</summary>
    public string? Text { get; set; }
}

/// <summary>Size of an image merged from data: points or a percentage of the image's own size.</summary>
public enum MergeFieldImageDimensionUnit
{
    /// <summary>In points.</summary>
    Point = 0,
    /// <summary>In percent of the picture's own size.</summary>
    Percent = 1,
}

/// <summary>A width or height of a picture put in by a mail merge.</summary>
public sealed class MergeFieldImageDimension
{
    /// <summary>A dimension of value points.</summary>
    public MergeFieldImageDimension(double value) : this(value, MergeFieldImageDimensionUnit.Point) { }

    /// <summary>A dimension of value in unit.</summary>
    public MergeFieldImageDimension(double value, MergeFieldImageDimensionUnit unit)
    {
        Value = value;
        Unit = unit;
    }

    /// <summary>The dimension's amount.</summary>
    public double Value { get; set; }

    /// <summary>The unit of Value.</summary>
    public MergeFieldImageDimensionUnit Unit { get; set; }
}

/// <summary>An Image:Name merge field: the callback may give the picture as a file, stream or bytes.</summary>
public sealed class ImageFieldMergingArgs : FieldMergingArgsBase
{
    internal ImageFieldMergingArgs(Document d, string t, int r, string f, string df, object? v, FieldMergeField? field)
        : base(d, t, r, f, df, v, field, null) { }

    /// <summary>The file of the picture to put in the field.</summary>
    public string? ImageFileName { get; set; }

    /// <summary>A stream of the picture to put in the field.</summary>
    public Stream? ImageStream { get; set; }

    /// <summary>The picture's width; null for its own.</summary>
    public MergeFieldImageDimension? ImageWidth { get; set; }

    /// <summary>The picture's height; null for its own.</summary>
    public MergeFieldImageDimension? ImageHeight { get; set; }
}

/// <summary>Lets code change what each merge field receives.</summary>
public interface IFieldMergingCallback
{
    /// <summary>Called for each merge field or {{name}} tag before its value is merged; may change the value or set the text.</summary>
    void FieldMerging(FieldMergingArgs args);

    /// <summary>Called for each Image:Name merge field; may give the picture as a file, stream or bytes.</summary>
    void ImageFieldMerging(ImageFieldMergingArgs args);
}

/// <summary>Told when the merge has replaced the {{name}} tags.</summary>
public interface IMailMergeCallback
{
    /// <summary>Called once the {{name}} tags have been turned into merge fields.</summary>
    void TagsReplaced();
}
