namespace Quorix.Folio;

/// <summary>
/// Collects a subtree's text for <see cref="Node.GetText"/>: pieces are kept by reference and
/// copied once, into the result, so a document's text costs its own size and not twice that
/// (a builder holds a copy until it makes the string).
/// </summary>
internal sealed class TextSink
{
    private static readonly string[] Ascii = Enumerable.Range(0, 128).Select(c => ((char)c).ToString()).ToArray();

    private readonly List<string> pieces = new();
    private int length;

    public TextSink Append(string? text)
    {
        if (string.IsNullOrEmpty(text)) return this;
        length = checked(length + text.Length);
        pieces.Add(text);
        return this;
    }

    public TextSink Append(char c) => Append(c < Ascii.Length ? Ascii[c] : c.ToString());

    public override string ToString() => pieces.Count switch
    {
        0 => "",
        1 => pieces[0],
        _ => string.Create(length, pieces, static (span, list) =>
        {
            foreach (var piece in list)
            {
                piece.CopyTo(span);
                span = span[piece.Length..];
            }
        }),
    };
}
