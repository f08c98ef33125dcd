namespace Quorix.WrpGen.Interop;

/// <summary>
/// A managed stream over a Python binary file object, driven through the raw-I/O callbacks.
/// Lent for one call (<see cref="PyFileStream(IntPtr)"/>), it borrows the file, serves the calling
/// thread only, and disposing it leaves the file open, because the file stays the caller's.
/// Kept (<see cref="Keep"/>: a value stored in a property, a result of a Python implementation),
/// it owns a reference, serves any thread (every callback takes the interpreter lock), and
/// disposing it closes the file: managed code that disposes a stream it was given means to close it.
/// </summary>
public sealed unsafe class PyFileStream : Stream
{
    private const int SlotWrite = CallbackSlots.RawIo.Write, SlotWriteByte = CallbackSlots.RawIo.WriteByte,
        SlotRead = CallbackSlots.RawIo.Read, SlotReadByte = CallbackSlots.RawIo.ReadByte, SlotSeek = CallbackSlots.RawIo.Seek,
        SlotTruncate = CallbackSlots.RawIo.Truncate, SlotFlush = CallbackSlots.RawIo.Flush, SlotClose = CallbackSlots.RawIo.Close,
        SlotReadable = CallbackSlots.RawIo.Readable, SlotWritable = CallbackSlots.RawIo.Writable,
        SlotSeekable = CallbackSlots.RawIo.Seekable, SlotTell = CallbackSlots.RawIo.Tell, SlotLength = CallbackSlots.RawIo.Length;
    private const int RawIoTable = CallbackSlots.Tables.RawIo;

    private readonly IntPtr _file;
    private readonly IntPtr* _table;
    private readonly int _thread;
    private readonly bool _owned;
    private bool _disposed;

    public PyFileStream(IntPtr file) : this(file, owned: false) { }

    private PyFileStream(IntPtr file, bool owned)
    {
        if (file == IntPtr.Zero)
            throw new ArgumentNullException(nameof(file));
        if (PyRuntime.StaticCallbacks == null)
            throw new InvalidOperationException("the raw-I/O callbacks were not handed over");
        _file = file;
        _table = (IntPtr*)PyRuntime.StaticCallbacks[RawIoTable];
        _thread = Environment.CurrentManagedThreadId;
        _owned = owned;
        if (owned)
            PyRuntime.IncRef(file);
        else
            GC.SuppressFinalize(this);
    }

    /// <summary>A stream that keeps the Python file for as long as managed code holds it.</summary>
    public static PyFileStream Keep(IntPtr file) => new(file, owned: true);

    ~PyFileStream() => Dispose(false);

    public override bool CanRead => !_disposed && Ask(SlotReadable);
    public override bool CanWrite => !_disposed && Ask(SlotWritable);
    public override bool CanSeek => !_disposed && Ask(SlotSeekable);

    public override long Length
    {
        get
        {
            Enter();
            long length = ((delegate* unmanaged<IntPtr, long>)_table[SlotLength])(_file);
            return length switch
            {
                >= 0 => length,
                -2 => throw new NotSupportedException("the Python file is not seekable"),
                -3 => throw new ObjectDisposedException(null, "the Python file is closed"),
                _ => throw Failure("length"),
            };
        }
    }

    public override long Position
    {
        get
        {
            Enter();
            long position = ((delegate* unmanaged<IntPtr, long>)_table[SlotTell])(_file);
            return position >= 0 ? position : throw Failure("tell()");
        }
        set => Seek(value, SeekOrigin.Begin);
    }

    public override long Seek(long offset, SeekOrigin origin)
    {
        Enter();
        // SeekOrigin and Python's whence share the values 0, 1, 2
        long position = ((delegate* unmanaged<IntPtr, long, int, long>)_table[SlotSeek])(_file, offset, (int)origin);
        return position >= 0 ? position : throw Failure("seek()");
    }

    public override void SetLength(long value)
    {
        ArgumentOutOfRangeException.ThrowIfNegative(value);
        Enter();
        if (((delegate* unmanaged<IntPtr, long, int>)_table[SlotTruncate])(_file, value) < 0)
            throw Failure("truncate()");
    }

    public override void Flush()
    {
        Enter();
        if (((delegate* unmanaged<IntPtr, int>)_table[SlotFlush])(_file) < 0)
            throw Failure("flush()");
    }

    /// <summary>
    /// Flushes the Python file when the managed call that got this stream returns, also when
    /// managed code disposed the stream (which leaves the file open, and so still to be flushed).
    /// </summary>
    public void EndCall()
    {
        if (Environment.CurrentManagedThreadId != _thread)
            throw new InvalidOperationException("a Python file can only be used on the thread that passed it");
        _disposed = true;
        if (((delegate* unmanaged<IntPtr, int>)_table[SlotFlush])(_file) < 0)
            throw Failure("flush()");
    }

    public override int Read(byte[] buffer, int offset, int count)
    {
        ValidateBufferArguments(buffer, offset, count);
        return Read(buffer.AsSpan(offset, count));
    }

    public override int Read(Span<byte> buffer)
    {
        Enter();
        if (buffer.IsEmpty)
            return 0;
        int read;
        fixed (byte* data = buffer)
            read = ((delegate* unmanaged<IntPtr, byte*, int, int>)_table[SlotRead])(_file, data, buffer.Length);
        if (read < 0)
            throw Failure("readinto()");
        if (read > buffer.Length)
            throw new IOException($"readinto() reported {read} bytes read into a buffer of {buffer.Length}");
        return read;
    }

    public override int ReadByte()
    {
        Enter();
        int value = ((delegate* unmanaged<IntPtr, int>)_table[SlotReadByte])(_file);
        return value >= -1 ? value : throw Failure("readinto()");
    }

    public override void Write(byte[] buffer, int offset, int count)
    {
        ValidateBufferArguments(buffer, offset, count);
        Write(buffer.AsSpan(offset, count));
    }

    // A raw Python file may take fewer bytes than offered: offer the rest until all are taken.
    public override void Write(ReadOnlySpan<byte> buffer)
    {
        Enter();
        fixed (byte* data = buffer)
        {
            int done = 0;
            while (done < buffer.Length)
            {
                int left = buffer.Length - done;
                int written = ((delegate* unmanaged<IntPtr, byte*, int, int>)_table[SlotWrite])(_file, data + done, left);
                if (written < 0)
                    throw Failure("write()");
                if (written == 0 || written > left)
                    throw new IOException($"write() took {written} of {left} bytes");
                done += written;
            }
        }
    }

    public override void WriteByte(byte value)
    {
        Enter();
        int written = ((delegate* unmanaged<IntPtr, byte, int>)_table[SlotWriteByte])(_file, value);
        if (written < 0)
            throw Failure("write()");
        if (written != 1)
            throw new IOException($"write() took {written} of 1 byte");
    }

    // The base class would run these on a pool thread, which holds no interpreter lock: stay on ours.
    public override Task<int> ReadAsync(byte[] buffer, int offset, int count, CancellationToken cancellationToken) =>
        ReadAsync(buffer.AsMemory(offset, count), cancellationToken).AsTask();

    public override ValueTask<int> ReadAsync(Memory<byte> buffer, CancellationToken cancellationToken = default)
    {
        cancellationToken.ThrowIfCancellationRequested();
        return ValueTask.FromResult(Read(buffer.Span));
    }

    public override Task WriteAsync(byte[] buffer, int offset, int count, CancellationToken cancellationToken) =>
        WriteAsync(buffer.AsMemory(offset, count), cancellationToken).AsTask();

    public override ValueTask WriteAsync(ReadOnlyMemory<byte> buffer, CancellationToken cancellationToken = default)
    {
        cancellationToken.ThrowIfCancellationRequested();
        Write(buffer.Span);
        return ValueTask.CompletedTask;
    }

    public override Task FlushAsync(CancellationToken cancellationToken)
    {
        cancellationToken.ThrowIfCancellationRequested();
        Flush();
        return Task.CompletedTask;
    }

    public override IAsyncResult BeginRead(byte[] buffer, int offset, int count, AsyncCallback? callback, object? state) =>
        TaskToAsyncResult.Begin(ReadAsync(buffer, offset, count, CancellationToken.None), callback, state);

    public override int EndRead(IAsyncResult asyncResult) => TaskToAsyncResult.End<int>(asyncResult);

    public override IAsyncResult BeginWrite(byte[] buffer, int offset, int count, AsyncCallback? callback, object? state) =>
        TaskToAsyncResult.Begin(WriteAsync(buffer, offset, count, CancellationToken.None), callback, state);

    public override void EndWrite(IAsyncResult asyncResult) => TaskToAsyncResult.End(asyncResult);

    protected override void Dispose(bool disposing)
    {
        if (_owned && !_disposed)
        {
            if (disposing)
            {
                ((delegate* unmanaged<IntPtr, void>)_table[SlotClose])(_file);
                PyRuntime.DecRef(_file);
            }
            else
            {
                // the finalizer thread must not wait for the interpreter lock
                PyRuntime.ReleaseLater(_file);
            }
        }
        _disposed = true;
        base.Dispose(disposing);
    }

    // A borrowed file may only be entered from the thread whose call lent it.
    private void Enter()
    {
        ObjectDisposedException.ThrowIf(_disposed, this);
        if (!_owned && Environment.CurrentManagedThreadId != _thread)
            throw new InvalidOperationException("a Python file can only be used on the thread that passed it");
    }

    // A capability question never throws: a failure answers false, and its Python error is dropped.
    private bool Ask(int slot)
    {
        if (!_owned && Environment.CurrentManagedThreadId != _thread)
            return false;
        int answer = ((delegate* unmanaged<IntPtr, int>)_table[slot])(_file);
        if (answer < 0)
            PyRuntime.CatchAndClearPythonError();
        return answer > 0;
    }

    private static PythonException Failure(string operation) =>
        new(PyRuntime.CatchAndClearPythonError() ?? $"the Python file's {operation} failed");
}
