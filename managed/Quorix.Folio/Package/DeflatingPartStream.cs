using System.IO.Compression;

namespace Quorix.Folio.Package;

/// <summary>Takes a part as it is written and keeps only its compressed form, with the checksum
/// and size the archive needs: a large part never exists uncompressed in memory.</summary>
internal sealed class DeflatingPartStream : Stream
{
    private readonly MemoryStream compressed = new();
    private readonly DeflateStream deflate;
    private uint crc;
    private long size;

    public DeflatingPartStream(int level)
    {
        deflate = new DeflateStream(compressed, new ZLibCompressionOptions { CompressionLevel = level }, leaveOpen: true);
    }

    public override void Write(ReadOnlySpan<byte> buffer)
    {
        crc = Crc32.Append(crc, buffer);
        size += buffer.Length;
        deflate.Write(buffer);
    }

    public override void Write(byte[] buffer, int offset, int count) => Write(buffer.AsSpan(offset, count));

    public override void WriteByte(byte value) => Write(new ReadOnlySpan<byte>(in value));

    /// <summary>The finished part; nothing may be written after.</summary>
    public OpcPart Finish(string name)
    {
        deflate.Dispose();
        var entry = new ZipEntryData(name, ZipEntryData.Deflated, crc, size, compressed.GetBuffer(), 0, (int)compressed.Length);
        return new OpcPart(entry) { Fresh = true };
    }

    public override bool CanRead => false;
    public override bool CanSeek => false;
    public override bool CanWrite => true;
    public override long Length => size;
    public override long Position { get => size; set => throw new NotSupportedException(); }
    public override void Flush() { }
    public override int Read(byte[] buffer, int offset, int count) => throw new NotSupportedException();
    public override long Seek(long offset, SeekOrigin origin) => throw new NotSupportedException();
    public override void SetLength(long value) => throw new NotSupportedException();
}
