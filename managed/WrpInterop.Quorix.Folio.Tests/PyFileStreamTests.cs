using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using Quorix.WrpGen.Interop;
using Xunit;

namespace WrpInterop.Tests;

/// <summary>
/// The Python file stream against a stand-in raw-I/O table: C# functions that keep the native
/// callbacks' result conventions (-1 with an error pending, -2 and -3 for the named conditions)
/// over an in-memory file. The "Python object" is a GC handle of that file.
/// </summary>
[Collection(nameof(FakeRawIo))]
public unsafe class PyFileStreamTests
{
    public PyFileStreamTests() => FakeRawIo.Install();

    [Fact]
    public void ShortWritesAreRepeatedUntilEverythingArrives()
    {
        using var file = new FakeFile { MaxChunk = 3 };
        var stream = new PyFileStream(file.Handle);
        byte[] text = "hello, python file"u8.ToArray();
        stream.Write(text, 2, text.Length - 2);
        stream.WriteByte((byte)'!');
        Assert.Equal("llo, python file!"u8.ToArray(), file.Data.ToArray());
        Assert.Equal(17, stream.Position);
        Assert.Equal(17, stream.Length);
    }

    [Fact]
    public void ReadsSeeksAndTruncatesTheFile()
    {
        using var file = new FakeFile("0123456789"u8.ToArray());
        var stream = new PyFileStream(file.Handle);
        Assert.Equal(7, stream.Seek(-3, SeekOrigin.End));
        Assert.Equal((int)'7', stream.ReadByte());
        stream.Position = 2;
        var buffer = new byte[4];
        Assert.Equal(4, stream.Read(buffer, 0, 4));
        Assert.Equal("2345"u8.ToArray(), buffer);
        stream.SetLength(4);
        Assert.Equal(4, stream.Position);  // pulled back to the new end
        Assert.Equal(-1, stream.ReadByte());
        Assert.Equal(0, stream.Read(buffer));
        stream.Position = 0;
        var copy = new MemoryStream();
        stream.CopyTo(copy, 3);
        Assert.Equal("0123"u8.ToArray(), copy.ToArray());
    }

    [Theory]
    [InlineData("read")]
    [InlineData("readbyte")]
    [InlineData("write")]
    [InlineData("seek")]
    [InlineData("tell")]
    [InlineData("truncate")]
    [InlineData("flush")]
    [InlineData("length")]
    public void ACallbackFailureCarriesThePythonErrorAndClearsIt(string operation)
    {
        using var file = new FakeFile("abc"u8.ToArray()) { Failing = operation };
        var stream = new PyFileStream(file.Handle);
        Action act = operation switch
        {
            "read" => () => stream.Read(new byte[2]),
            "readbyte" => () => stream.ReadByte(),
            "write" => () => stream.Write([1, 2]),
            "seek" => () => stream.Seek(1, SeekOrigin.Begin),
            "tell" => () => _ = stream.Position,
            "truncate" => () => stream.SetLength(1),
            "flush" => stream.Flush,
            _ => () => _ = stream.Length,
        };
        var e = Assert.Throws<PythonException>(act);
        Assert.Equal($"OSError: {operation} failed", e.Message);
        Assert.Null(FakeRawIo.Pending);
    }

    [Fact]
    public void CapabilitiesAnswerFalseOnFailureWithoutLeavingTheErrorPending()
    {
        using var file = new FakeFile { Failing = "readable" };
        var stream = new PyFileStream(file.Handle);
        Assert.False(stream.CanRead);
        Assert.Null(FakeRawIo.Pending);
        Assert.True(stream.CanWrite);
        Assert.True(stream.CanSeek);
        file.Seekable = false;
        Assert.False(stream.CanSeek);
        Assert.Throws<NotSupportedException>(() => stream.Length);
        file.Closed = true;
        Assert.False(stream.CanWrite);
        Assert.Throws<ObjectDisposedException>(() => stream.Length);
    }

    [Fact]
    public void DisposingLeavesThePythonFileOpen()
    {
        using var file = new FakeFile();
        var stream = new PyFileStream(file.Handle);
        using (stream)
            stream.Write("x"u8);
        Assert.False(file.Closed);
        Assert.False(stream.CanRead);
        Assert.Throws<ObjectDisposedException>(() => stream.Write("y"u8));
        Assert.Equal("x"u8.ToArray(), file.Data.ToArray());
        // the end of the call still flushes the file managed code disposed its stream of
        stream.EndCall();
        Assert.Equal(1, file.Flushes);
        Assert.False(file.Closed);
    }

    [Fact]
    public void EndingTheCallFlushesOnceAndRetiresTheStream()
    {
        using var file = new FakeFile();
        var stream = new PyFileStream(file.Handle);
        stream.Write("abc"u8);
        stream.EndCall();
        Assert.Equal(1, file.Flushes);
        Assert.Throws<ObjectDisposedException>(() => stream.Write("d"u8));
        file.Failing = "flush";
        var e = Assert.Throws<PythonException>(stream.EndCall);
        Assert.Equal("OSError: flush failed", e.Message);
    }

    [Fact]
    public void PythonIsOnlyEnteredFromTheThreadThatPassedTheFile()
    {
        using var file = new FakeFile("data"u8.ToArray());
        var stream = new PyFileStream(file.Handle);
        Exception? caught = null;
        var other = new Thread(() => caught = Record.Exception(() => stream.ReadByte()));
        other.Start();
        other.Join();
        Assert.IsType<InvalidOperationException>(caught);
        // the asynchronous forms complete on the calling thread instead of a pool thread
        var read = stream.ReadAsync(new byte[4], 0, 4);
        Assert.True(read.IsCompletedSuccessfully);
        Assert.Equal(4, read.Result);
        Assert.Equal([Environment.CurrentManagedThreadId], file.Threads.Distinct());
    }

    [Fact]
    public void StreamArgumentsByTag()
    {
        using var file = new FakeFile();
        var memory = new MemoryStream();
        IntPtr memoryHandle = Handles.New(memory), textHandle = Handles.New("not a stream");
        try
        {
            var arg = new VariantArg { Tag = VariantArg.TagHandle, Value = IntPtr.Zero };
            Assert.Null(StubValues.StreamOf(&arg, out var owned));
            Assert.Null(owned);
            arg.Value = memoryHandle;
            Assert.Same(memory, StubValues.StreamOf(&arg, out owned));
            Assert.Null(owned);
            arg = new VariantArg { Tag = VariantArg.TagPyObject, Value = file.Handle };
            var stream = StubValues.StreamOf(&arg, out owned);
            Assert.IsType<PyFileStream>(stream);
            Assert.Same(stream, owned);
            Assert.Throws<InvalidCastException>(() => OfTag(VariantArg.TagHandle, textHandle));
            Assert.Throws<ArgumentException>(() => OfTag(VariantArg.TagStructHandle, memoryHandle));
        }
        finally
        {
            Handles.Free(memoryHandle);
            Handles.Free(textHandle);
        }
    }

    private static Stream? OfTag(int tag, IntPtr value)
    {
        var arg = new VariantArg { Tag = tag, Value = value };
        return StubValues.StreamOf(&arg, out _);
    }
}

[CollectionDefinition(nameof(FakeRawIo), DisableParallelization = true)]
public sealed class FakeRawIoCollection;

/// <summary>An in-memory stand-in for a Python binary file.</summary>
public sealed class FakeFile : IDisposable
{
    public FakeFile(byte[]? content = null)
    {
        Data = new MemoryStream();
        Data.Write(content ?? []);
        Data.Position = 0;
        Handle = GCHandle.ToIntPtr(GCHandle.Alloc(this));
    }

    public MemoryStream Data { get; }
    public IntPtr Handle { get; }
    public int MaxChunk { get; init; } = int.MaxValue;
    public string? Failing { get; set; }
    public bool Seekable { get; set; } = true;
    public bool Closed { get; set; }
    public int Flushes { get; set; }
    public List<int> Threads { get; } = [];

    public static FakeFile Of(IntPtr handle)
    {
        var file = (FakeFile)GCHandle.FromIntPtr(handle).Target!;
        file.Threads.Add(Environment.CurrentManagedThreadId);
        return file;
    }

    /// <summary>True, with the Python error set, when the named operation is to fail.</summary>
    public bool Fails(string operation)
    {
        if (Failing != operation)
            return false;
        FakeRawIo.Pending = $"OSError: {operation} failed";
        return true;
    }

    public void Dispose() => GCHandle.FromIntPtr(Handle).Free();
}

/// <summary>The raw-I/O table and the error capture, installed into the interop runtime once.</summary>
public static unsafe class FakeRawIo
{
    [ThreadStatic] private static string? t_pending;

    /// <summary>The Python error the fake callbacks left pending, if any.</summary>
    public static string? Pending { get => t_pending; set => t_pending = value; }

    private static IntPtr* s_static;

    public static void Install()
    {
        if (s_static == null)
        {
            var rawio = (IntPtr*)NativeMemory.AllocZeroed(13, (nuint)sizeof(IntPtr));
            rawio[0] = (IntPtr)(delegate* unmanaged<IntPtr, byte*, int, int>)&Write;
            rawio[1] = (IntPtr)(delegate* unmanaged<IntPtr, byte, int>)&WriteByte;
            rawio[2] = (IntPtr)(delegate* unmanaged<IntPtr, byte*, int, int>)&Read;
            rawio[3] = (IntPtr)(delegate* unmanaged<IntPtr, int>)&ReadByte;
            rawio[4] = (IntPtr)(delegate* unmanaged<IntPtr, long, int, long>)&Seek;
            rawio[5] = (IntPtr)(delegate* unmanaged<IntPtr, long, int>)&Truncate;
            rawio[6] = (IntPtr)(delegate* unmanaged<IntPtr, int>)&Flush;
            rawio[7] = (IntPtr)(delegate* unmanaged<IntPtr, void>)&Close;
            rawio[8] = (IntPtr)(delegate* unmanaged<IntPtr, int>)&Readable;
            rawio[9] = (IntPtr)(delegate* unmanaged<IntPtr, int>)&Writable;
            rawio[10] = (IntPtr)(delegate* unmanaged<IntPtr, int>)&Seekable;
            rawio[11] = (IntPtr)(delegate* unmanaged<IntPtr, long>)&Tell;
            rawio[12] = (IntPtr)(delegate* unmanaged<IntPtr, long>)&Length;
            var tables = (IntPtr*)NativeMemory.AllocZeroed(9, (nuint)sizeof(IntPtr));
            tables[7] = (IntPtr)rawio;
            s_static = tables;
        }
        PyRuntime.StaticCallbacks = s_static;
        PyRuntime.CatchAndClearError = &CatchAndClear;
        Pending = null;
    }

    // The error text is handed out in 2-byte storage that lives until the next capture.
    private static char* s_text;

    [UnmanagedCallersOnly]
    private static int CatchAndClear(IntPtr* slot, PyStringArg* text)
    {
        string? pending = Pending;
        if (pending is null)
            return -1;
        Pending = null;
        NativeMemory.Free(s_text);
        s_text = (char*)NativeMemory.Alloc((nuint)Math.Max(1, pending.Length), sizeof(char));
        pending.AsSpan().CopyTo(new Span<char>(s_text, pending.Length));
        *slot = IntPtr.Zero;
        *text = new PyStringArg { Length = pending.Length, CharSize = 2, Data = s_text };
        return 0;
    }

    [UnmanagedCallersOnly]
    private static int Write(IntPtr handle, byte* data, int count)
    {
        var f = FakeFile.Of(handle);
        if (f.Fails("write"))
            return -1;
        int n = Math.Min(count, f.MaxChunk);
        f.Data.Write(new ReadOnlySpan<byte>(data, n));
        return n;
    }

    [UnmanagedCallersOnly]
    private static int WriteByte(IntPtr handle, byte value)
    {
        var f = FakeFile.Of(handle);
        if (f.Fails("write"))
            return -1;
        f.Data.WriteByte(value);
        return 1;
    }

    [UnmanagedCallersOnly]
    private static int Read(IntPtr handle, byte* data, int count)
    {
        var f = FakeFile.Of(handle);
        return f.Fails("read") ? -1 : f.Data.Read(new Span<byte>(data, count));
    }

    [UnmanagedCallersOnly]
    private static int ReadByte(IntPtr handle)
    {
        var f = FakeFile.Of(handle);
        return f.Fails("readbyte") ? -2 : f.Data.ReadByte();
    }

    [UnmanagedCallersOnly]
    private static long Seek(IntPtr handle, long offset, int origin)
    {
        var f = FakeFile.Of(handle);
        return f.Fails("seek") ? -1 : f.Data.Seek(offset, (SeekOrigin)origin);
    }

    [UnmanagedCallersOnly]
    private static int Truncate(IntPtr handle, long length)
    {
        var f = FakeFile.Of(handle);
        if (f.Fails("truncate"))
            return -1;
        f.Data.SetLength(length);
        return 0;
    }

    [UnmanagedCallersOnly]
    private static int Flush(IntPtr handle)
    {
        var f = FakeFile.Of(handle);
        if (f.Fails("flush"))
            return -1;
        f.Flushes++;
        return 0;
    }

    [UnmanagedCallersOnly]
    private static void Close(IntPtr handle) => FakeFile.Of(handle).Closed = true;

    [UnmanagedCallersOnly]
    private static int Readable(IntPtr handle) => Capability(handle, "readable", true);

    [UnmanagedCallersOnly]
    private static int Writable(IntPtr handle) => Capability(handle, "writable", true);

    [UnmanagedCallersOnly]
    private static int Seekable(IntPtr handle) => Capability(handle, "seekable", FakeFile.Of(handle).Seekable);

    private static int Capability(IntPtr handle, string name, bool answer)
    {
        var f = FakeFile.Of(handle);
        if (f.Closed)
            return 0;
        return f.Fails(name) ? -1 : answer ? 1 : 0;
    }

    [UnmanagedCallersOnly]
    private static long Tell(IntPtr handle)
    {
        var f = FakeFile.Of(handle);
        return f.Fails("tell") ? -1 : f.Data.Position;
    }

    [UnmanagedCallersOnly]
    private static long Length(IntPtr handle)
    {
        var f = FakeFile.Of(handle);
        if (f.Closed)
            return -3;
        if (!f.Seekable)
            return -2;
        return f.Fails("length") ? -1 : f.Data.Length;
    }
}
