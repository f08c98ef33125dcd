using Quorix.Folio.Drawing;
using Quorix.Folio.Formats.Flow;
using Quorix.Folio.Loading;

namespace Quorix.Folio.Fields;

/// <summary>INCLUDEPICTURE: a picture read from a file, or handed over by the resource loading
/// callback of the field options; a picture that cannot be had keeps the old result and is reported
/// as a warning.</summary>
public sealed class FieldIncludePicture : Field
{
    internal FieldIncludePicture() { }

    private protected override string[] ArgSwitches => new[] { "\\c" };

    /// <summary>The path or address of the picture.</summary>
    public string? SourceFullName { get => Argument(0); set => Argument(0, value); }

    /// <summary>The graphics filter the word processor reads the picture with (the \c switch).</summary>
    public string? GraphicFilter { get => SwitchText("\\c"); set => SwitchText("\\c", value); }

    /// <summary>Whether the word processor keeps only the link, not the picture (the \d switch);
    /// this engine stores the picture in the result either way, so that it can be shown.</summary>
    public bool IsLinked { get => Flag("\\d"); set => Flag("\\d", value); }

    /// <summary>Whether the picture is scaled across (the \x switch).</summary>
    public bool ResizeHorizontally { get => Flag("\\x"); set => Flag("\\x", value); }

    /// <summary>Whether the picture is scaled down (the \y switch).</summary>
    public bool ResizeVertically { get => Flag("\\y"); set => Flag("\\y", value); }

    internal override bool WritesOwnResult => true;

    internal override string? Compute(FieldUpdateContext ctx)
    {
        var source = ParseCode().Arg(0);
        if (ctx.Doc == null || source.Length == 0 || !ctx.Options.AllowIncludes) return null;
        var options = new LoadOptions
        {
            ResourceLoadingCallback = ctx.Options.ResourceLoadingCallback,
            BaseUri = Path.GetDirectoryName(ctx.Doc.OriginalFileName) ?? Environment.CurrentDirectory,
        };
        var bytes = new ResourceResolver(options, ctx.Doc, WarningSource.Unknown).Get(source, ResourceType.Image);
        if (bytes == null) return null;
        if (ImageInfo.Detect(bytes) is not { Type: not (ImageType.NoImage or ImageType.Unknown) } info)
        {
            ctx.Doc.Warnings.Add(WarningType.DataLoss, WarningSource.Unknown, $"The image \"{source}\" is not a picture in a known format.");
            return null;
        }
        WritePicture(bytes, info);
        return null;
    }
}

public partial class Field
{
    /// <summary>Makes a picture the field's result: with keepSize, at the size of the picture the
    /// result showed before; else at the picture's own size at 96 dots per inch.</summary>
    internal Shape WritePicture(byte[] bytes, ImageInfo info, bool keepSize = true)
    {
        Shape? old = null;
        for (Node? n = Separator?.NextSibling; n != null && n != End; n = n.NextSibling)
            if (n is Shape s && s.HasImage) { old = s; break; }
        if (!keepSize) old = null;
        var shape = new Shape(Start.Document!) { RPr = (old?.RPr ?? End.RPr).Clone() };
        shape.ImageData.SetImage(bytes);
        shape.Width = old?.Width ?? (info.Width > 0 ? info.Width * 0.75 : 100);
        shape.Height = old?.Height ?? (info.Height > 0 ? info.Height * 0.75 : 100);
        WriteResult("");
        End.ParentNode!.InsertBefore(shape, End);
        return shape;
    }
}
