namespace Quorix.Folio.Loading;

/// <summary>An input stream that tells a loading callback how much of it has been read. Reads are cut
/// into slices of about a percent, so a reader that takes everything at once still shows progress; the callback hears of
/// each whole percent at most once. Reading the input counts for <see cref="ReadShare"/> percent, the
/// rest is building the model.</summary>
internal sealed class LoadProgressStream : Stream
{
    public const double ReadShare = 90;

    private readonly Stream inner;
    private readonly IDocumentLoadingCallback callback;
    private readonly long length;
    private readonly int slice;
    private int reported;

    public LoadProgressStream(Stream inner, IDocumentLoadingCallback callback)
    {
        this.inner = inner;
        this.callback = callback;
        length = Math.Max(1, inner.Length);
        slice = (int)Math.Clamp(length / 100, 4096, 1 << 16);
    }

    public override int Read(byte[] buffer, int offset, int count) => Read(buffer.AsSpan(offset, count));

    public override int Read(Span<byte> buffer)
    {
        int n = inner.Read(buffer[..Math.Min(buffer.Length, slice)]);
        int percent = (int)(Math.Min(inner.Position, length) * ReadShare / length);
        if (percent > reported)
        {
            reported = percent;
            callback.Notify(new DocumentLoadingArgs(percent));
        }
        return n;
    }

    public override bool CanRead => true;
    public override bool CanSeek => inner.CanSeek;
    public override bool CanWrite => false;
    public override long Length => inner.Length;

    public override long Position
    {
        get => inner.Position;
        set => inner.Position = value;
    }

    public override long Seek(long offset, SeekOrigin origin) => inner.Seek(offset, origin);
    public override void Flush() { }
    public override void SetLength(long value) => throw new NotSupportedException();
    public override void Write(byte[] buffer, int offset, int count) => throw new NotSupportedException();
}
