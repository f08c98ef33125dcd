// BytesAsStream: growable byte storage with a position, behaving like the standard
// library's in-memory binary stream for every method it offers.
#include "siblings/pyfund/bytes_stream.h"

#include <cstddef>
#include <cstring>

#include "module/pysh_ref.h"

static PyBytesAsStreamObject*
as_stream(PyObject* self)
{
    return reinterpret_cast<PyBytesAsStreamObject*>(self);
}

// ---- errors, built out of line

[[gnu::cold, gnu::noinline]] static void
err_closed()
{
    PyErr_SetString(PyExc_ValueError, "I/O operation on closed file.");
}

[[gnu::cold, gnu::noinline]] static void
err_not_writable_buffer(PyObject* arg)
{
    PyErr_Format(PyExc_TypeError, "readinto() argument must be read-write bytes-like object, not %.50s",
                 arg == Py_None ? "None" : Py_TYPE(arg)->tp_name);
}

[[gnu::cold, gnu::noinline]] static void
err_size_type(PyObject* arg)
{
    PyErr_Format(PyExc_TypeError, "argument should be integer or None, not '%.200s'",
                 Py_TYPE(arg)->tp_name);
}

[[gnu::cold, gnu::noinline]] static void
err_overflow(const char* message)
{
    PyErr_SetString(PyExc_OverflowError, message);
}

// 0 while the stream is open, else -1 with a ValueError.
static inline int
check_open(PyBytesAsStreamObject* s)
{
    if (s->closed) {
        err_closed();
        return -1;
    }
    return 0;
}

// ---- storage

// Sets the capacity to exactly `capacity` bytes (content beyond it is dropped); 0 or -1.
static int
stream_set_capacity(PyBytesAsStreamObject* s, Py_ssize_t capacity)
{
    if (capacity == 0) {
        PyMem_Free(s->data);
        s->data = nullptr;
    }
    else {
        char* data = static_cast<char*>(PyMem_Realloc(s->data, static_cast<size_t>(capacity)));
        if (data == nullptr) {
            PyErr_NoMemory();
            return -1;
        }
        s->data = data;
    }
    s->capacity = capacity;
    if (s->size > capacity) {
        s->size = capacity;
    }
    return 0;
}

// Makes room for `needed` bytes of content, over-allocating so that appends stay linear;
// 0 or -1 with MemoryError.
static int
stream_reserve(PyBytesAsStreamObject* s, Py_ssize_t needed)
{
    if (needed <= s->capacity) {
        return 0;
    }
    Py_ssize_t extra = (needed >> 3) + (needed < 9 ? 3 : 6);
    Py_ssize_t capacity = needed <= PY_SSIZE_T_MAX - extra ? needed + extra : needed;
    return stream_set_capacity(s, capacity);
}

// Replaces the content with a copy of `len` bytes and rewinds; 0 or -1.
static int
stream_assign(PyBytesAsStreamObject* s, const void* bytes, Py_ssize_t len)
{
    s->size = 0;
    s->pos = 0;
    if (stream_set_capacity(s, len) < 0) {
        return -1;
    }
    if (len > 0) {
        std::memcpy(s->data, bytes, static_cast<size_t>(len));
    }
    s->size = len;
    return 0;
}

// Writes `len` bytes at the position and advances it; 0 or -1.
static int
stream_write_bytes(PyBytesAsStreamObject* s, const void* bytes, Py_ssize_t len)
{
    if (len == 0) {
        return 0;
    }
    if (s->pos > PY_SSIZE_T_MAX - len) {
        err_overflow("new buffer size too large");
        return -1;
    }
    Py_ssize_t end = s->pos + len;
    if (stream_reserve(s, end) < 0) {
        return -1;
    }
    if (s->pos > s->size) {
        std::memset(s->data + s->size, 0, static_cast<size_t>(s->pos - s->size));
    }
    std::memcpy(s->data + s->pos, bytes, static_cast<size_t>(len));
    s->pos = end;
    if (s->size < end) {
        s->size = end;
    }
    return 0;
}

// Bytes left between the position and the end of the content.
static inline Py_ssize_t
stream_remaining(const PyBytesAsStreamObject* s)
{
    return s->pos < s->size ? s->size - s->pos : 0;
}

// New bytes of the next `len` (<= remaining) bytes, advancing the position; or NULL.
static PyObject*
stream_take(PyBytesAsStreamObject* s, Py_ssize_t len)
{
    if (len == 0) {
        return PyBytes_FromStringAndSize(nullptr, 0);
    }
    PyObject* result = PyBytes_FromStringAndSize(s->data + s->pos, len);
    if (result != nullptr) {
        s->pos += len;
    }
    return result;
}

// Length of the next line (its newline included) within `limit` bytes; limit < 0: no limit.
static Py_ssize_t
stream_line_length(const PyBytesAsStreamObject* s, Py_ssize_t limit)
{
    Py_ssize_t available = stream_remaining(s);
    if (limit < 0 || limit > available) {
        limit = available;
    }
    if (limit == 0) {
        return 0;
    }
    const char* start = s->data + s->pos;
    const void* newline = std::memchr(start, '\n', static_cast<size_t>(limit));
    return newline != nullptr ? static_cast<const char*>(newline) - start + 1 : limit;
}

// ---- argument conversion

// PyArg "O&" converter for an optional size: None gives -1, an index its value; 1 or 0.
static int
convert_optional_size(PyObject* arg, void* out)
{
    Py_ssize_t value = -1;
    if (arg != Py_None) {
        if (!PyIndex_Check(arg)) {
            err_size_type(arg);
            return 0;
        }
        value = PyNumber_AsSsize_t(arg, PyExc_OverflowError);
        if (value == -1 && PyErr_Occurred()) {
            return 0;
        }
    }
    *static_cast<Py_ssize_t*>(out) = value;
    return 1;
}

// ---- construction and lifetime

static PyObject*
stream_tp_new(PyTypeObject* type, PyObject*, PyObject*)
{
    // Zero-filled by the allocator: an open, empty stream even if __init__ never runs.
    return type->tp_alloc(type, 0);
}

static int
stream_tp_init(PyObject* self, PyObject* args, PyObject* kwargs)
{
    static const char* keywords[] = {"initial_bytes", nullptr};
    PyObject* initial = Py_None;
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "|O:BytesAsStream",
                                     const_cast<char**>(keywords), &initial)) {
        return -1;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (initial == Py_None) {
        s->closed = 0;
        return stream_assign(s, nullptr, 0);
    }
    Py_buffer view;
    if (PyObject_GetBuffer(initial, &view, PyBUF_CONTIG_RO) < 0) {
        return -1;
    }
    int rc = stream_assign(s, view.buf, view.len);
    PyBuffer_Release(&view);
    if (rc == 0) {
        s->closed = 0;
    }
    return rc;
}

static void
stream_tp_dealloc(PyObject* self)
{
    PyBytesAsStreamObject* s = as_stream(self);
    if (s->weakreflist != nullptr) {
        PyObject_ClearWeakRefs(self);
    }
    PyMem_Free(s->data);
    s->data = nullptr;
    Py_TYPE(self)->tp_free(self);
}

// ---- reading

static PyObject*
stream_read(PyObject* self, PyObject* args)
{
    Py_ssize_t size = -1;
    if (!PyArg_ParseTuple(args, "|O&:read", convert_optional_size, &size)) {
        return nullptr;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    Py_ssize_t available = stream_remaining(s);
    return stream_take(s, size < 0 || size > available ? available : size);
}

static PyObject*
stream_readline(PyObject* self, PyObject* args)
{
    Py_ssize_t size = -1;
    if (!PyArg_ParseTuple(args, "|O&:readline", convert_optional_size, &size)) {
        return nullptr;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    return stream_take(s, stream_line_length(s, size));
}

static PyObject*
stream_readlines(PyObject* self, PyObject* args)
{
    PyObject* hint_arg = Py_None;
    if (!PyArg_ParseTuple(args, "|O:readlines", &hint_arg)) {
        return nullptr;
    }
    Py_ssize_t hint = -1;
    if (hint_arg != Py_None) {
        if (!PyLong_Check(hint_arg)) {
            PyErr_Format(PyExc_TypeError, "integer argument expected, got '%.200s'",
                         Py_TYPE(hint_arg)->tp_name);
            return nullptr;
        }
        hint = PyLong_AsSsize_t(hint_arg);
        if (hint == -1 && PyErr_Occurred()) {
            return nullptr;
        }
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    PyShRef lines(PyList_New(0));
    if (!lines) {
        return nullptr;
    }
    Py_ssize_t total = 0;
    for (;;) {
        Py_ssize_t len = stream_line_length(s, -1);
        if (len == 0) {
            break;
        }
        PyShRef line(stream_take(s, len));
        if (!line || PyList_Append(lines.get(), line.get()) < 0) {
            return nullptr;
        }
        total += len;
        if (hint > 0 && total >= hint) {
            break;
        }
    }
    return lines.release();
}

static PyObject*
stream_readinto(PyObject* self, PyObject* arg)
{
    Py_buffer view;
    if (PyObject_GetBuffer(arg, &view, PyBUF_WRITABLE) < 0) {
        if (!PyErr_ExceptionMatches(PyExc_TypeError) && !PyErr_ExceptionMatches(PyExc_BufferError)) {
            return nullptr;
        }
        PyErr_Clear();
        err_not_writable_buffer(arg);
        return nullptr;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        PyBuffer_Release(&view);
        return nullptr;
    }
    Py_ssize_t len = stream_remaining(s);
    if (len > view.len) {
        len = view.len;
    }
    if (len > 0) {
        std::memcpy(view.buf, s->data + s->pos, static_cast<size_t>(len));
        s->pos += len;
    }
    PyBuffer_Release(&view);
    return PyLong_FromSsize_t(len);
}

static PyObject*
stream_getvalue(PyObject* self, PyObject*)
{
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    return PyBytes_FromStringAndSize(s->size > 0 ? s->data : nullptr, s->size);
}

// ---- writing

static PyObject*
stream_write(PyObject* self, PyObject* arg)
{
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    Py_buffer view;
    if (PyObject_GetBuffer(arg, &view, PyBUF_CONTIG_RO) < 0) {
        return nullptr;
    }
    Py_ssize_t len = view.len;
    int rc = stream_write_bytes(s, view.buf, len);
    PyBuffer_Release(&view);
    return rc < 0 ? nullptr : PyLong_FromSsize_t(len);
}

static PyObject*
stream_writelines(PyObject* self, PyObject* lines)
{
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    PyShRef iterator(PyObject_GetIter(lines));
    if (!iterator) {
        return nullptr;
    }
    for (;;) {
        PyShRef line(PyIter_Next(iterator.get()));
        if (!line) {
            break;
        }
        PyShRef written(stream_write(self, line.get()));
        if (!written) {
            return nullptr;
        }
    }
    if (PyErr_Occurred()) {
        return nullptr;
    }
    Py_RETURN_NONE;
}

static PyObject*
stream_truncate(PyObject* self, PyObject* args)
{
    PyObject* size_arg = Py_None;
    if (!PyArg_ParseTuple(args, "|O:truncate", &size_arg)) {
        return nullptr;
    }
    Py_ssize_t size = -1;
    if (size_arg != Py_None && !convert_optional_size(size_arg, &size)) {
        return nullptr;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    if (size_arg == Py_None) {
        size = s->pos;
    }
    else if (size < 0) {
        PyErr_Format(PyExc_ValueError, "negative size value %zd", size);
        return nullptr;
    }
    if (size < s->size) {
        s->size = size;
        // Give memory back once most of it is no longer needed.
        if (size < s->capacity / 2 && stream_set_capacity(s, size) < 0) {
            return nullptr;
        }
    }
    return PyLong_FromSsize_t(size);
}

// ---- positioning

static PyObject*
stream_seek(PyObject* self, PyObject* args)
{
    Py_ssize_t offset;
    int whence = 0;
    if (!PyArg_ParseTuple(args, "n|i:seek", &offset, &whence)) {
        return nullptr;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    if (whence == 0) {
        if (offset < 0) {
            PyErr_Format(PyExc_ValueError, "negative seek value %zd", offset);
            return nullptr;
        }
    }
    else if (whence == 1 || whence == 2) {
        Py_ssize_t base = whence == 1 ? s->pos : s->size;
        if (offset > PY_SSIZE_T_MAX - base) {
            err_overflow("new position too large");
            return nullptr;
        }
        offset += base;
        if (offset < 0) {
            offset = 0;
        }
    }
    else {
        PyErr_Format(PyExc_ValueError, "invalid whence (%i, should be 0, 1 or 2)", whence);
        return nullptr;
    }
    s->pos = offset;
    return PyLong_FromSsize_t(offset);
}

static PyObject*
stream_tell(PyObject* self, PyObject*)
{
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    return PyLong_FromSsize_t(s->pos);
}

// ---- state queries and closing

// Shared body of readable(), writable() and seekable(): every capability, while open.
static PyObject*
stream_capable(PyObject* self, PyObject*)
{
    if (check_open(as_stream(self)) < 0) {
        return nullptr;
    }
    Py_RETURN_TRUE;
}

static PyObject*
stream_isatty(PyObject* self, PyObject*)
{
    if (check_open(as_stream(self)) < 0) {
        return nullptr;
    }
    Py_RETURN_FALSE;
}

static PyObject*
stream_flush(PyObject* self, PyObject*)
{
    if (check_open(as_stream(self)) < 0) {
        return nullptr;
    }
    Py_RETURN_NONE;
}

[[gnu::cold, gnu::noinline]] static PyObject*
stream_fileno(PyObject*, PyObject*)
{
    PyShRef io(PyImport_ImportModule("io"));
    if (!io) {
        return nullptr;
    }
    PyShRef unsupported(PyObject_GetAttrString(io.get(), "UnsupportedOperation"));
    if (!unsupported) {
        return nullptr;
    }
    PyErr_SetString(unsupported.get(), "fileno");
    return nullptr;
}

static PyObject*
stream_close(PyObject* self, PyObject*)
{
    PyBytesAsStreamObject* s = as_stream(self);
    s->closed = 1;
    s->size = 0;
    stream_set_capacity(s, 0);  // releasing memory cannot fail
    Py_RETURN_NONE;
}

static PyObject*
stream_get_closed(PyObject* self, void*)
{
    return PyBool_FromLong(as_stream(self)->closed);
}

static PyObject*
stream_enter(PyObject* self, PyObject*)
{
    if (check_open(as_stream(self)) < 0) {
        return nullptr;
    }
    return Py_NewRef(self);
}

static PyObject*
stream_exit(PyObject* self, PyObject*)
{
    // Through the method, so that a subclass's close() runs.
    return PyObject_CallMethod(self, "close", nullptr);
}

static PyObject*
stream_tp_iternext(PyObject* self)
{
    PyBytesAsStreamObject* s = as_stream(self);
    if (check_open(s) < 0) {
        return nullptr;
    }
    Py_ssize_t len = stream_line_length(s, -1);
    return len > 0 ? stream_take(s, len) : nullptr;
}

static PyObject*
stream_sizeof(PyObject* self, PyObject*)
{
    return PyLong_FromSsize_t(Py_TYPE(self)->tp_basicsize + as_stream(self)->capacity);
}

// ---- copying and pickling: (content, position, instance dict or None)

static PyObject*
stream_getstate(PyObject* self, PyObject*)
{
    PyShRef value(stream_getvalue(self, nullptr));
    if (!value) {
        return nullptr;
    }
    // Only instances of subclasses carry a dict.
    PyShRef dict(PyObject_GetAttrString(self, "__dict__"));
    if (!dict) {
        if (!PyErr_ExceptionMatches(PyExc_AttributeError)) {
            return nullptr;
        }
        PyErr_Clear();
        dict = PyShRef::borrow(Py_None);
    }
    return Py_BuildValue("(OnO)", value.get(), as_stream(self)->pos, dict.get());
}

[[gnu::cold, gnu::noinline]] static PyObject*
err_bad_state(PyObject* self, PyObject* state)
{
    PyErr_Format(PyExc_TypeError, "%.200s.__setstate__ argument should be 3-tuple, got %.200s",
                 Py_TYPE(self)->tp_name, Py_TYPE(state)->tp_name);
    return nullptr;
}

static PyObject*
stream_setstate(PyObject* self, PyObject* state)
{
    if (!PyTuple_Check(state) || PyTuple_GET_SIZE(state) != 3) {
        return err_bad_state(self, state);
    }
    PyObject* dict = PyTuple_GET_ITEM(state, 2);
    if (dict != Py_None && !PyDict_Check(dict)) {
        PyErr_Format(PyExc_TypeError, "third item of state should be a dict, got a %.200s",
                     Py_TYPE(dict)->tp_name);
        return nullptr;
    }
    Py_ssize_t pos = PyNumber_AsSsize_t(PyTuple_GET_ITEM(state, 1), PyExc_OverflowError);
    if (pos == -1 && PyErr_Occurred()) {
        return nullptr;
    }
    if (pos < 0) {
        PyErr_SetString(PyExc_ValueError, "position value cannot be negative");
        return nullptr;
    }
    Py_buffer view;
    if (PyObject_GetBuffer(PyTuple_GET_ITEM(state, 0), &view, PyBUF_CONTIG_RO) < 0) {
        return nullptr;
    }
    PyBytesAsStreamObject* s = as_stream(self);
    int rc = stream_assign(s, view.buf, view.len);
    PyBuffer_Release(&view);
    if (rc < 0) {
        return nullptr;
    }
    s->pos = pos;
    s->closed = 0;
    if (dict != Py_None) {
        PyShRef own_dict(PyObject_GenericGetDict(self, nullptr));
        if (!own_dict || PyDict_Update(own_dict.get(), dict) < 0) {
            return nullptr;
        }
    }
    Py_RETURN_NONE;
}

// ---- type object

static PyMethodDef stream_methods[] = {
    {"read", stream_read, METH_VARARGS,
     "read($self, size=-1, /)\n--\n\nRead up to size bytes; all remaining bytes when size is "
     "negative or None."},
    {"read1", stream_read, METH_VARARGS,
     "read1($self, size=-1, /)\n--\n\nThe same as read()."},
    {"readline", stream_readline, METH_VARARGS,
     "readline($self, size=-1, /)\n--\n\nRead up to and including the next newline, at most size bytes."},
    {"readlines", stream_readlines, METH_VARARGS,
     "readlines($self, hint=-1, /)\n--\n\nRead lines until their total size reaches hint (all lines "
     "when hint is not positive)."},
    {"readinto", stream_readinto, METH_O,
     "readinto($self, buffer, /)\n--\n\nCopy bytes into a writable buffer; returns the count."},
    {"readinto1", stream_readinto, METH_O,
     "readinto1($self, buffer, /)\n--\n\nThe same as readinto()."},
    {"write", stream_write, METH_O,
     "write($self, buffer, /)\n--\n\nWrite the bytes at the position, zero-filling any gap past the "
     "end; returns the count."},
    {"writelines", stream_writelines, METH_O,
     "writelines($self, lines, /)\n--\n\nWrite each bytes-like item of an iterable."},
    {"seek", stream_seek, METH_VARARGS,
     "seek($self, offset, whence=0, /)\n--\n\nMove the position relative to the start (0), the "
     "current position (1) or the end (2); returns the new position."},
    {"tell", stream_tell, METH_NOARGS, "tell($self, /)\n--\n\nThe current position."},
    {"truncate", stream_truncate, METH_VARARGS,
     "truncate($self, size=None, /)\n--\n\nCut the content to size bytes (default: the position); the "
     "position is unchanged."},
    {"getvalue", stream_getvalue, METH_NOARGS, "getvalue($self, /)\n--\n\nThe whole content as bytes."},
    {"flush", stream_flush, METH_NOARGS, "flush($self, /)\n--\n\nDoes nothing on an open stream."},
    {"close", stream_close, METH_NOARGS,
     "close($self, /)\n--\n\nRelease the content; further I/O raises ValueError."},
    {"readable", stream_capable, METH_NOARGS, "readable($self, /)\n--\n\nTrue."},
    {"writable", stream_capable, METH_NOARGS, "writable($self, /)\n--\n\nTrue."},
    {"seekable", stream_capable, METH_NOARGS, "seekable($self, /)\n--\n\nTrue."},
    {"isatty", stream_isatty, METH_NOARGS, "isatty($self, /)\n--\n\nFalse."},
    {"fileno", stream_fileno, METH_NOARGS,
     "fileno($self, /)\n--\n\nAlways raises io.UnsupportedOperation: there is no descriptor."},
    {"__enter__", stream_enter, METH_NOARGS, nullptr},
    {"__exit__", stream_exit, METH_VARARGS, nullptr},
    {"__sizeof__", stream_sizeof, METH_NOARGS, nullptr},
    {"__getstate__", stream_getstate, METH_NOARGS, nullptr},
    {"__setstate__", stream_setstate, METH_O, nullptr},
    {nullptr},
};

static PyGetSetDef stream_getset[] = {
    {"closed", stream_get_closed, nullptr, "True once the stream is closed.", nullptr},
    {nullptr},
};

PyDoc_STRVAR(stream_doc,
"BytesAsStream(initial_bytes=b'')\n"
"--\n"
"\n"
"A binary stream over bytes held in memory: readable, writable and seekable.\n"
"\n"
"initial_bytes, any bytes-like object, is copied; the position starts at 0.");

PyTypeObject PyBytesAsStream_Type = {
    PyVarObject_HEAD_INIT(nullptr, 0)
    "quorix.pyfund.BytesAsStream",                // tp_name
    sizeof(PyBytesAsStreamObject),                // tp_basicsize
    0,                                            // tp_itemsize
    stream_tp_dealloc,                            // tp_dealloc
    0,                                            // tp_vectorcall_offset
    nullptr,                                      // tp_getattr
    nullptr,                                      // tp_setattr
    nullptr,                                      // tp_as_async
    nullptr,                                      // tp_repr
    nullptr,                                      // tp_as_number
    nullptr,                                      // tp_as_sequence
    nullptr,                                      // tp_as_mapping
    nullptr,                                      // tp_hash
    nullptr,                                      // tp_call
    nullptr,                                      // tp_str
    nullptr,                                      // tp_getattro
    nullptr,                                      // tp_setattro
    nullptr,                                      // tp_as_buffer
    Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE,     // tp_flags
    stream_doc,                                   // tp_doc
    nullptr,                                      // tp_traverse
    nullptr,                                      // tp_clear
    nullptr,                                      // tp_richcompare
    offsetof(PyBytesAsStreamObject, weakreflist), // tp_weaklistoffset
    PyObject_SelfIter,                            // tp_iter
    stream_tp_iternext,                           // tp_iternext
    stream_methods,                               // tp_methods
    nullptr,                                      // tp_members
    stream_getset,                                // tp_getset
    nullptr,                                      // tp_base
    nullptr,                                      // tp_dict
    nullptr,                                      // tp_descr_get
    nullptr,                                      // tp_descr_set
    0,                                            // tp_dictoffset
    stream_tp_init,                               // tp_init
    nullptr,                                      // tp_alloc
    stream_tp_new,                                // tp_new
};
