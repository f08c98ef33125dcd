// Python binary files serving managed streams through the raw I/O callbacks: io.BytesIO and
// hand-written raw files that answer None, refuse seeking or fail in their own ways.
#include <cstring>
#include <string>

#include "builtins/callback_tables.h"
#include "builtins/py_callbacks.h"
#include "tests/cpp/embedded_python.h"

namespace {

class RawIoCallbacks : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(),
                            "import io, sys\n"
                            "seen = []\n"
                            "def hook(u): seen.append((u.exc_type.__name__, str(u.exc_value)))\n"
                            "class Starved(io.RawIOBase):\n"
                            "    # Non-blocking source with nothing available.\n"
                            "    def readable(self): return True\n"
                            "    def readinto(self, b): return None\n"
                            "class Pipe(io.RawIOBase):\n"
                            "    def __init__(self): self.kept = None\n"
                            "    def readable(self): return True\n"
                            "    def seekable(self): return False\n"
                            "    def readinto(self, b):\n"
                            "        self.kept = b\n"
                            "        memoryview(b)[:2] = b'ok'\n"
                            "        return 2\n"
                            "class BadClosed(io.RawIOBase):\n"
                            "    @property\n"
                            "    def closed(self): raise OSError('gone')\n"
                            "class BadClose(io.BytesIO):\n"
                            "    def close(self): raise OSError('cannot close')\n"
                            "class BadSeek(io.BytesIO):\n"
                            "    def seek(self, *a): raise OSError('no seek today')\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    PyShRef ns_;
};

TEST_F(RawIoCallbacks, BytesIoReadsWritesAndSeeksThroughManagedBuffers) {
    PyShRef file = value("io.BytesIO(b'0123456789')");
    Py_ssize_t refs = Py_REFCNT(file.get());
    char buffer[4] = {};
    EXPECT_EQ(fn_clbk_rawio_read(file.get(), buffer, 4), 4);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    EXPECT_EQ(fn_clbk_rawio_readbyte(file.get()), '4');
    EXPECT_EQ(fn_clbk_rawio_tell(file.get()), 5);
    EXPECT_EQ(fn_clbk_rawio_seek(file.get(), -2, 2), 8);
    EXPECT_EQ(fn_clbk_rawio_read(file.get(), buffer, 4), 2);
    EXPECT_EQ(fn_clbk_rawio_read(file.get(), buffer, 4), 0);
    EXPECT_EQ(fn_clbk_rawio_readbyte(file.get()), -1);  // end of stream, no error
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    const char data[] = "AB";
    EXPECT_EQ(fn_clbk_rawio_seek(file.get(), 0, 0), 0);
    EXPECT_EQ(fn_clbk_rawio_write(file.get(), data, 2), 2);
    EXPECT_EQ(fn_clbk_rawio_write_byte(file.get(), 0xFF), 1);
    EXPECT_EQ(fn_clbk_rawio_flush(file.get()), 0);
    PyShRef contents(PyObject_CallMethod(file.get(), "getvalue", nullptr));
    EXPECT_EQ(std::string(PyBytes_AS_STRING(contents.get()), 10), std::string("AB\xff" "3456789"));
    EXPECT_EQ(Py_REFCNT(file.get()), refs);
}

TEST_F(RawIoCallbacks, LengthSeeksToTheEndAndBack) {
    PyShRef file = value("io.BytesIO(b'0123456789')");
    EXPECT_EQ(fn_clbk_rawio_seek(file.get(), 3, 0), 3);
    EXPECT_EQ(fn_clbk_rawio_length(file.get()), 10);
    EXPECT_EQ(fn_clbk_rawio_tell(file.get()), 3);

    PyShRef pipe = value("Pipe()");
    EXPECT_EQ(fn_clbk_rawio_length(pipe.get()), -2);
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    PyShRef closed = value("io.BytesIO(b'x')");
    fn_clbk_rawio_close(closed.get());
    EXPECT_EQ(fn_clbk_rawio_length(closed.get()), -3);

    PyShRef bad = value("BadSeek(b'abc')");
    EXPECT_EQ(fn_clbk_rawio_length(bad.get()), -1);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "TypeError: While calculating the length of the stream, an error occurred.");
    PyShRef cause(PyException_GetCause(exc.get()));
    EXPECT_EQ(describe(cause.get()), "OSError: no seek today");
}

TEST_F(RawIoCallbacks, TruncateLeavesNoPositionBeyondTheEnd) {
    PyShRef file = value("io.BytesIO(b'0123456789')");
    EXPECT_EQ(fn_clbk_rawio_seek(file.get(), 8, 0), 8);
    EXPECT_EQ(fn_clbk_rawio_truncate(file.get(), 4), 0);
    EXPECT_EQ(fn_clbk_rawio_tell(file.get()), 4);
    EXPECT_EQ(fn_clbk_rawio_length(file.get()), 4);
    EXPECT_EQ(fn_clbk_rawio_seek(file.get(), 1, 0), 1);
    EXPECT_EQ(fn_clbk_rawio_truncate(file.get(), 3), 0);
    EXPECT_EQ(fn_clbk_rawio_tell(file.get()), 1);
    EXPECT_EQ(fn_clbk_rawio_truncate(file.get(), -1), -1);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_ValueError), 1);
    PyErr_Clear();
}

TEST_F(RawIoCallbacks, NoneFromReadintoMeansNothingAvailable) {
    PyShRef starved = value("Starved()");
    char buffer[8];
    EXPECT_EQ(fn_clbk_rawio_read(starved.get(), buffer, 8), 0);
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(fn_clbk_rawio_readbyte(starved.get()), -2);
    EXPECT_EQ(failure(), "OSError: no bytes are available for reading");
}

TEST_F(RawIoCallbacks, AViewKeptByPythonCodeIsDetachedFromManagedMemory) {
    PyShRef pipe = value("Pipe()");
    char buffer[4] = {'.', '.', '.', '.'};
    EXPECT_EQ(fn_clbk_rawio_read(pipe.get(), buffer, 4), 2);
    EXPECT_EQ(std::string(buffer, 4), "ok..");
    // The view the file kept now shows nothing instead of memory the managed side reuses.
    PyDict_SetItemString(ns_.get(), "p", pipe.get());
    PyShRef kept = value("(type(p.kept).__name__, bytes(memoryview(p.kept)))");
    EXPECT_EQ(py_str(kept.get()), "('_ShlBufferView', b'')");
    // Managed data written through a view is read-only on the Python side.
    ASSERT_TRUE(py_exec(ns_.get(), "class Grab(io.RawIOBase):\n"
                                   "    def write(self, b):\n"
                                   "        self.readonly = memoryview(b).readonly\n"
                                   "        return len(memoryview(b))\n"
                                   "g = Grab()\n"));
    PyShRef grab = value("g");
    EXPECT_EQ(fn_clbk_rawio_write(grab.get(), "xyz", 3), 3);
    PyShRef readonly = value("g.readonly");
    EXPECT_EQ(readonly.get(), Py_True);
}

TEST_F(RawIoCallbacks, CapabilitiesOfOpenAndClosedFiles) {
    PyShRef file = value("io.BytesIO()");
    EXPECT_EQ(fn_clbk_rawio_readable(file.get()), 1);
    EXPECT_EQ(fn_clbk_rawio_writable(file.get()), 1);
    EXPECT_EQ(fn_clbk_rawio_seekable(file.get()), 1);
    PyShRef pipe = value("Pipe()");
    EXPECT_EQ(fn_clbk_rawio_seekable(pipe.get()), 0);
    EXPECT_EQ(fn_clbk_rawio_writable(pipe.get()), 0);
    fn_clbk_rawio_close(file.get());
    EXPECT_EQ(fn_clbk_rawio_readable(file.get()), 0);
    EXPECT_EQ(PyErr_Occurred(), nullptr);

    PyShRef bad = value("BadClosed()");
    EXPECT_EQ(fn_clbk_rawio_readable(bad.get()), -1);
    PyShRef exc = take_error();
    EXPECT_EQ(describe(exc.get()), "TypeError: An error occurred while checking if the stream is closed");
    PyShRef cause(PyException_GetCause(exc.get()));
    EXPECT_EQ(describe(cause.get()), "OSError: gone");
    EXPECT_EQ(fn_clbk_rawio_length(bad.get()), -1);
    PyErr_Clear();
}

TEST_F(RawIoCallbacks, CloseNeverRaisesAndKeepsAPendingError) {
    ASSERT_TRUE(py_exec(ns_.get(), "sys.unraisablehook = hook\n"));
    PyShRef file = value("BadClose()");
    PyErr_SetString(PyExc_KeyError, "in flight");
    fn_clbk_rawio_close(file.get());
    PyShRef pending = take_error();
    ASSERT_TRUE(py_exec(ns_.get(), "sys.unraisablehook = sys.__unraisablehook__\n"));
    EXPECT_EQ(describe(pending.get()), "KeyError: 'in flight'");
    PyShRef seen = value("seen");
    EXPECT_EQ(py_str(seen.get()), "[('OSError', 'cannot close')]");
}

TEST_F(RawIoCallbacks, TheTableServesTheCallbacksInTheManagedOrder) {
    using ReadFn = int32_t (*)(PyObject*, void*, int32_t);
    using LengthFn = int64_t (*)(PyObject*);
    ASSERT_EQ(m_all_statconceptp_pytocsfx[7], static_cast<const void*>(m_py_rawio_callbacks));
    auto read = reinterpret_cast<ReadFn>(m_py_rawio_callbacks[2]);
    auto length = reinterpret_cast<LengthFn>(m_py_rawio_callbacks[12]);
    PyShRef file = value("io.BytesIO(b'table')");
    char buffer[5];
    EXPECT_EQ(read(file.get(), buffer, 5), 5);
    EXPECT_EQ(std::string(buffer, 5), "table");
    EXPECT_EQ(length(file.get()), 5);
}

}  // namespace
