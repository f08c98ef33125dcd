#include "builtins/stream_wrapper.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "builtins/builtin_tables.h"
#include "host/managed_binding.h"
#include "host/object_host.h"
#include "marshal/conv_scalar.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/bound_args.h"
#include "objects/bound_class.h"
#include "objects/casting.h"
#include "objects/handle_release.h"
#include "objects/host_markattr.h"
#include "objects/host_table.h"
#include "objects/wrap_handle.h"
#include "objects/wrapper_slots.h"

namespace {

const PyHost_ph_Stream& table() {
    return PyHost_ph_Stream::get_instance();
}

constexpr Py_ssize_t kMaxPiece = INT32_MAX;

PyStreamWrapperObject* as_stream(PyObject* self) {
    return reinterpret_cast<PyStreamWrapperObject*>(self);
}

void* handle_of(PyObject* self) {
    return as_stream(self)->base.handle;
}

// ---- refusals (cold)

[[gnu::cold, gnu::noinline]] PyObject* fail_closed() {
    PyErr_SetString(PyExc_ValueError, "I/O operation on closed stream");
    return nullptr;
}

[[gnu::cold, gnu::noinline]] PyObject* fail_buffer(const char* format, PyObject* obj) {
    PyErr_Clear();
    PyErr_Format(PyExc_TypeError, format, obj == Py_None ? "None" : Py_TYPE(obj)->tp_name);
    return nullptr;
}

[[gnu::cold, gnu::noinline]] PyObject* fail_not_seekable(bool raised) {
    const char* text = raised ? "the operation supported only for seekable inner streams. an exception was thrown during "
                                "'CanSeek' check"
                              : "the operation supported only for seekable inner streams. the inner stream is not seekable";
    if (raised)
        PyShlErr_ChainFormat(PyExc_TypeError, "%s", text);
    else
        PyErr_SetString(PyExc_TypeError, text);
    return nullptr;
}

[[gnu::cold, gnu::noinline]] PyObject* fail_too_large() {
    PyErr_SetString(PyExc_OverflowError, "unbounded read returned more bytes than a Python bytes buffer can hold");
    return nullptr;
}

// True (nothing raised) when the wrapper is open.
inline bool is_open(PyObject* self) {
    if (as_stream(self)->closed) {
        fail_closed();
        return false;
    }
    return true;
}

// True when the stream can seek; false with the TypeError of line reading.
bool check_seekable(PyObject* self) {
    int32_t seekable = table().can_seek(handle_of(self));
    if (PyErr_Occurred()) {
        fail_not_seekable(true);
        return false;
    }
    if (!seekable) {
        fail_not_seekable(false);
        return false;
    }
    return true;
}

// The size the bytes readers grow a full buffer to; false with OverflowError at the largest size.
bool grown_size(Py_ssize_t count, Py_ssize_t limit, Py_ssize_t* size) {
    if (count == PY_SSIZE_T_MAX) {
        fail_too_large();
        return false;
    }
    Py_ssize_t addend = count <= 8192 ? 4096 : count <= 65536 ? 2 * count : std::max<Py_ssize_t>(count / 8, 65536);
    Py_ssize_t next = count > PY_SSIZE_T_MAX - addend ? PY_SSIZE_T_MAX : count + addend;
    *size = limit >= 0 && next > limit ? limit : next;
    return true;
}

// One "Read" into bytes [count, count + want): the bytes read, or -1 with an error.
Py_ssize_t read_piece(void* handle, PyObject* bytes, Py_ssize_t count, Py_ssize_t want) {
    int32_t got = table().read(handle, PyBytes_AS_STRING(bytes) + count, static_cast<int32_t>(std::min(want, kMaxPiece)));
    if (PyErr_Occurred())
        return -1;
    return got < 0 ? 0 : got;
}

// The bytes reader: exactly n bytes at most, or (n < 0) everything up to the end. New bytes, or NULL.
PyObject* read_bytes(PyObject* self, Py_ssize_t n) {
    void* handle = handle_of(self);
    Py_ssize_t size = n >= 0 ? n : 1024;
    if (n < 0) {
        // a stream that knows what is left is read in one buffer; the growth below stays for the rest
        const PyHost_ph_Stream& t = table();
        if (t.can_seek(handle) && !PyErr_Occurred()) {
            int64_t left = t.length(handle) - t.position(handle);
            if (!PyErr_Occurred() && left >= 0 && left < PY_SSIZE_T_MAX - 1)
                size = std::max<Py_ssize_t>(static_cast<Py_ssize_t>(left) + 1, 1);
        }
        PyErr_Clear();
    }
    PyShRef bytes(PyBytes_FromStringAndSize(nullptr, size));
    if (!bytes)
        return nullptr;
    Py_ssize_t count = 0;
    for (;;) {
        if (count == size) {
            if (n >= 0)
                break;
            if (!grown_size(count, -1, &size))
                return nullptr;
            PyObject* raw = bytes.release();
            if (_PyBytes_Resize(&raw, size) < 0)
                return nullptr;
            bytes.reset(raw);
        }
        Py_ssize_t got = read_piece(handle, bytes.get(), count, size - count);
        if (got < 0)
            return nullptr;
        if (got == 0)
            break;
        count += got;
        if (n >= 0 && count == n)
            break;
    }
    if (count != size) {
        PyObject* raw = bytes.release();
        if (_PyBytes_Resize(&raw, count) < 0)
            return nullptr;
        bytes.reset(raw);
    }
    return bytes.release();
}

// The line reader: up to and including the first line feed, at most `size` bytes (negative:
// unlimited); the stream is left just after the line. New bytes (empty at the end), or NULL.
PyObject* read_line(PyObject* self, Py_ssize_t size) {
    void* handle = handle_of(self);
    const bool unlimited = size < 0 || size == PY_SSIZE_T_MAX;
    const Py_ssize_t limit = unlimited ? -1 : size;
    Py_ssize_t capacity = unlimited || size > 1023 ? 1024 : size;
    PyShRef bytes(PyBytes_FromStringAndSize(nullptr, capacity));
    if (!bytes)
        return nullptr;
    Py_ssize_t count = 0, line = -1;
    while (line < 0) {
        if (!unlimited && count >= limit) {
            line = limit;
            break;
        }
        if (count == capacity) {
            if (!grown_size(count, limit, &capacity))
                return nullptr;
            PyObject* raw = bytes.release();
            if (_PyBytes_Resize(&raw, capacity) < 0)
                return nullptr;
            bytes.reset(raw);
        }
        Py_ssize_t got = read_piece(handle, bytes.get(), count, capacity - count);
        if (got < 0)
            return nullptr;
        if (got == 0) {
            line = count;
            break;
        }
        const char* data = PyBytes_AS_STRING(bytes.get());
        const void* lf = std::memchr(data + count, '\n', static_cast<size_t>(got));
        count += got;
        if (lf != nullptr)
            line = static_cast<const char*>(lf) - data + 1;
    }
    if (count > line) {
        table().seek(handle, -static_cast<int64_t>(count - line), 1);
        if (PyErr_Occurred())
            return nullptr;
    }
    if (line != capacity) {
        PyObject* raw = bytes.release();
        if (_PyBytes_Resize(&raw, line) < 0)
            return nullptr;
        bytes.reset(raw);
    }
    return bytes.release();
}

// Optional size of read/readline/readlines/truncate-style methods: 1 with *size, or 0 with an error.
int optional_size(PyObject* args, const char* name, Py_ssize_t* size) {
    *size = -1;
    if (fn_check_args_count_out_of_range(PyTuple_GET_SIZE(args), name, 0, 1))
        return 0;
    return fn_conv_py_optional_to_ssize_t(args, size);
}

// Writes a whole buffer-offering object in pieces: the length written, or -1 with an error.
Py_ssize_t write_object(PyObject* self, PyObject* obj) {
    Py_buffer view;
    if (PyObject_GetBuffer(obj, &view, PyBUF_STRIDES) < 0) {
        fail_buffer("write argument must be bytes-like object, not '%s'", obj);
        return -1;
    }
    if (!PyBuffer_IsContiguous(&view, 'A')) {
        PyBuffer_Release(&view);
        fail_buffer("write argument must be contiguous buffer, not '%s'", obj);
        return -1;
    }
    void* handle = handle_of(self);
    const char* data = static_cast<const char*>(view.buf);
    Py_ssize_t left = view.len;
    do {
        Py_ssize_t piece = std::min(left, kMaxPiece);
        table().write(handle, data, static_cast<int32_t>(piece));
        if (PyErr_Occurred()) {
            PyBuffer_Release(&view);
            return -1;
        }
        data += piece;
        left -= piece;
    } while (left > 0);
    Py_ssize_t written = view.len;
    PyBuffer_Release(&view);
    return written;
}

// ---- methods

PyObject* stream_close(PyObject* self, PyObject*) {
    if (as_stream(self)->closed)
        Py_RETURN_NONE;
    table().close(handle_of(self));
    as_stream(self)->closed = 1;
    if (PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* stream_flush(PyObject* self, PyObject*) {
    if (!is_open(self))
        return nullptr;
    table().flush(handle_of(self));
    if (PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

template <int32_t (PyHost_ph_Stream::*Ask)(void*) const>
PyObject* stream_ask(PyObject* self, PyObject*) {
    if (!is_open(self))
        return nullptr;
    int32_t answer = (table().*Ask)(handle_of(self));
    if (PyErr_Occurred())
        return nullptr;
    return PyBool_FromLong(answer);
}

PyObject* stream_tell(PyObject* self, PyObject*) {
    if (!is_open(self))
        return nullptr;
    int64_t position = table().position(handle_of(self));
    if (PyErr_Occurred())
        return nullptr;
    return PyLong_FromLongLong(position);
}

PyObject* stream_seek(PyObject* self, PyObject* args) {
    int64_t offset = 0;
    int whence = 0;
    if (!PyArg_ParseTuple(args, "O&|i", PyShArg_Converter(&fn_conv_py_long_to_clr_int64), &offset, &whence))
        return nullptr;
    if (static_cast<unsigned>(whence) > 2) {
        PyErr_Format(PyExc_ValueError, "invalid whence (%i, should be 0, 1 or 2)", whence);
        return nullptr;
    }
    if (whence == 0 && offset < 0) {
        PyErr_Format(PyExc_ValueError, "negative seek value %zd", static_cast<Py_ssize_t>(offset));
        return nullptr;
    }
    if (!is_open(self))
        return nullptr;
    int64_t position = table().seek(handle_of(self), offset, whence);
    if (PyErr_Occurred())
        return nullptr;
    return PyLong_FromLongLong(position);
}

PyObject* stream_truncate(PyObject* self, PyObject* args) {
    if (fn_check_args_count_out_of_range(PyTuple_GET_SIZE(args), "truncate", 0, 1))
        return nullptr;
    int64_t size = 0;
    int32_t use_position = 1;
    if (PyTuple_GET_SIZE(args) == 1 && PyTuple_GET_ITEM(args, 0) != Py_None) {
        if (!fn_conv_py_long_to_clr_int64(PyTuple_GET_ITEM(args, 0), &size))
            return nullptr;
        use_position = 0;
    }
    if (!is_open(self))
        return nullptr;
    int64_t length = table().set_length(handle_of(self), use_position, size);
    if (PyErr_Occurred())
        return nullptr;
    return PyLong_FromLongLong(length);
}

PyObject* stream_write(PyObject* self, PyObject* obj) {
    if (!is_open(self))
        return nullptr;
    Py_ssize_t written = write_object(self, obj);
    return written < 0 ? nullptr : PyLong_FromSsize_t(written);
}

PyObject* stream_writelines(PyObject* self, PyObject* lines) {
    if (!is_open(self))
        return nullptr;
    PyShRef iterator(PyObject_GetIter(lines));
    if (!iterator)
        return nullptr;
    while (PyShRef item{PyIter_Next(iterator.get())}) {
        if (write_object(self, item.get()) < 0)
            return nullptr;
    }
    if (PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* stream_readline(PyObject* self, PyObject* args) {
    Py_ssize_t size;
    if (!optional_size(args, "readline", &size) || !is_open(self) || !check_seekable(self))
        return nullptr;
    return read_line(self, size);
}

PyObject* stream_iternext(PyObject* self) {
    if (!is_open(self))
        return nullptr;
    PyObject* line = read_line(self, -1);
    if (line != nullptr && PyBytes_GET_SIZE(line) == 0) {
        Py_DECREF(line);
        return nullptr;  // the end: no exception
    }
    return line;
}

PyObject* stream_iter(PyObject* self) {
    if (!is_open(self) || !check_seekable(self))
        return nullptr;
    return Py_NewRef(self);
}

PyObject* stream_readlines(PyObject* self, PyObject* args) {
    Py_ssize_t hint;
    if (!optional_size(args, "readlines", &hint) || !is_open(self) || !check_seekable(self))
        return nullptr;
    PyShRef lines(PyList_New(0));
    if (!lines)
        return nullptr;
    if (hint < 1) {
        PyShRef done(PyObject_CallMethodOneArg(lines.get(), PyWrpIdList_Extend, self));
        return done ? lines.release() : nullptr;
    }
    Py_ssize_t total = 0;
    while (total < hint) {
        PyShRef line(stream_iternext(self));
        if (!line)
            break;
        total += PyBytes_GET_SIZE(line.get());
        if (PyList_Append(lines.get(), line.get()) < 0)
            return nullptr;
    }
    if (PyErr_Occurred())
        return nullptr;
    return lines.release();
}

PyObject* stream_readinto(PyObject* self, PyObject* obj) {
    if (!is_open(self))
        return nullptr;
    Py_buffer view;
    if (PyObject_GetBuffer(obj, &view, PyBUF_STRIDES | PyBUF_WRITABLE) < 0)
        return fail_buffer("readinto argument must be read-write bytes-like object, not '%s'", obj);
    if (!PyBuffer_IsContiguous(&view, 'A')) {
        PyBuffer_Release(&view);
        return fail_buffer("readinto argument must be read-write contiguous buffer, not '%s'", obj);
    }
    void* handle = handle_of(self);
    char* data = static_cast<char*>(view.buf);
    Py_ssize_t total = 0;
    while (total < view.len) {
        Py_ssize_t want = std::min(view.len - total, kMaxPiece);
        int32_t got = table().read(handle, data + total, static_cast<int32_t>(want));
        if (PyErr_Occurred()) {
            PyBuffer_Release(&view);
            return nullptr;
        }
        total += got > 0 ? got : 0;
        if (got < want)
            break;
    }
    PyBuffer_Release(&view);
    return PyLong_FromSsize_t(total);
}

PyObject* stream_read(PyObject* self, PyObject* args) {
    Py_ssize_t size;
    if (!optional_size(args, "read", &size) || !is_open(self))
        return nullptr;
    return read_bytes(self, size > kMaxPiece ? -1 : size);
}

PyObject* stream_readall(PyObject* self, PyObject*) {
    if (!is_open(self))
        return nullptr;
    return read_bytes(self, -1);
}

PyObject* stream_fileno(PyObject*, PyObject*) {
    PyErr_SetString(PyExc_ValueError, "fileno method is not supported");
    return nullptr;
}

PyObject* stream_isatty(PyObject* self, PyObject*) {
    if (!is_open(self))
        return nullptr;
    Py_RETURN_FALSE;
}

PyObject* stream_enter(PyObject* self, PyObject*) {
    return Py_NewRef(self);
}

PyObject* stream_exit(PyObject* self, PyObject*) {
    // disposes whether or not close() ran before: the managed object decides what that means
    int status = ObjectHost::get_instance().dispose(handle_of(self));
    as_stream(self)->closed = 1;
    if (status < 0 || PyErr_Occurred())
        return nullptr;
    Py_RETURN_NONE;
}

PyObject* stream_get_closed(PyObject* self, void*) {
    return PyBool_FromLong(as_stream(self)->closed);
}

PyObject* stream_tp_new(PyTypeObject* type, PyObject*, PyObject*) {
    if (wrpPye_uafn_stream_invalidate())
        return nullptr;
    return PyShBound_Alloc(type);
}

// ---- casting, as every bound type has it: the stream kind's stubs serve the class methods

const PyShCastOps& cast_ops() {
    static const PyShCastOps ops = {
        wrpPye_uafn_stream_invalidate, PyStreamWrapper_Type(), HandleKind_Object,
        [](void** o) { table().btp_TypeOf(o); },
        [](void* h, void** o) { return table().btp_CastTo(h, o); },
        [](void* h, void** o) { return table().btp_CastAs(h, o); },
        [](void* h, void** o) { return table().btp_ReInterpretObj(h, o); },
        [](void* h) { return table().btp_IsAssignable(h); },
    };
    return ops;
}

PyObject* stream_type_of(PyObject*, PyObject*) { return PyShCast_TypeOf(cast_ops()); }
PyObject* stream_cast_to(PyObject*, PyObject* obj) { return PyShCast_CastTo(cast_ops(), obj); }
PyObject* stream_reinterpret_obj(PyObject*, PyObject* obj) { return PyShCast_Reinterpret(cast_ops(), obj); }
PyObject* stream_cast_as(PyObject*, PyObject* obj) { return PyShCast_CastAs(cast_ops(), obj); }
PyObject* stream_is_assignable(PyObject*, PyObject* obj) { return PyShCast_IsAssignable(cast_ops(), obj); }

PyMethodDef stream_methods[] = {
    {"close", stream_close, METH_NOARGS, ""},
    {"flush", stream_flush, METH_NOARGS, ""},
    {"readable", stream_ask<&PyHost_ph_Stream::can_read<void*>>, METH_NOARGS, ""},
    {"seekable", stream_ask<&PyHost_ph_Stream::can_seek<void*>>, METH_NOARGS, ""},
    {"writable", stream_ask<&PyHost_ph_Stream::can_write<void*>>, METH_NOARGS, ""},
    {"tell", stream_tell, METH_NOARGS, ""},
    {"seek", stream_seek, METH_VARARGS, ""},
    {"truncate", stream_truncate, METH_VARARGS, ""},
    {"write", stream_write, METH_O, ""},
    {"writelines", stream_writelines, METH_O, ""},
    {"readline", stream_readline, METH_VARARGS, ""},
    {"readlines", stream_readlines, METH_VARARGS, ""},
    {"readinto", stream_readinto, METH_O, ""},
    {"read", stream_read, METH_VARARGS, ""},
    {"readall", stream_readall, METH_NOARGS, ""},
    {"fileno", stream_fileno, METH_NOARGS, ""},
    {"isatty", stream_isatty, METH_NOARGS, ""},
    {"get_type", wrapClrObject_get_type, METH_NOARGS, ""},
    {"__enter__", stream_enter, METH_NOARGS, ""},
    {"__exit__", stream_exit, METH_VARARGS, ""},
    {"_type_of", stream_type_of, METH_NOARGS | METH_STATIC, ""},
    {"_cast_to", stream_cast_to, METH_O | METH_STATIC, ""},
    {"_cast_from", stream_cast_to, METH_O, ""},
    {"_is_assignable", stream_is_assignable, METH_O | METH_STATIC, ""},
    {"_reinterpret_obj", stream_reinterpret_obj, METH_O | METH_STATIC, ""},
    {"_cast_as", stream_cast_as, METH_O | METH_STATIC, ""},
    {"_qrxsc2p_asserttp", wrapPySealTp_qrxsc2p_asserttp, METH_NOARGS | METH_CLASS, ""},
    {nullptr, nullptr, 0, nullptr},
};

PyGetSetDef stream_getset[] = {
    {"closed", stream_get_closed, nullptr, "", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyTypeObject stream_wrapper_type = {PyVarObject_HEAD_INIT(nullptr, 0)};

bool stream_wrapper_type_init() {
    PyShBound_DescribeType(&stream_wrapper_type, "quorix.folio._wrpgen._interop._StreamWrapper", false, stream_methods,
                           stream_getset, stream_tp_new, nullptr);
    stream_wrapper_type.tp_basicsize = sizeof(PyStreamWrapperObject);
    stream_wrapper_type.tp_iter = stream_iter;
    stream_wrapper_type.tp_iternext = stream_iternext;
    return true;
}

}  // namespace

PyTypeObject* PyStreamWrapper_Type() {
    static const bool initialised = stream_wrapper_type_init();
    (void)initialised;
    return &stream_wrapper_type;
}

int PyStreamWrapper_Ready() {
    PyTypeObject* type = PyStreamWrapper_Type();
    if (PyType_HasFeature(type, Py_TPFLAGS_READY))
        return 0;
    // marked as a wrapper type, so that handle lookups find the stream behind it
    if (PyType_Ready(type) < 0 || !fn_set_obj_type_host_markattr(type) ||
        PyObject_GenericSetAttr(reinterpret_cast<PyObject*>(type), PyWrpIdMarkattr_Handle, Py_Ellipsis) < 0)
        return -1;
    return 0;
}

PyObject* PyStreamWrapper_FromHandle(void* handle) {
    PyTypeObject* type = PyStreamWrapper_Type();
    if (PyStreamWrapper_Ready() < 0) {
        PyShWrp_FreeGcHandlePtr(handle);
        return nullptr;
    }
    // a fresh instance starts open: the allocator zeroes the closed flag
    return fn_conv_clr_sealtp_to_py_sealtp(handle, type);
}

int PyStreamWrapper_IsAssignable(void* handle) {
    if (wrpPye_uafn_stream_invalidate())
        return -1;
    int32_t accepted = table().btp_IsAssignable(handle);
    return PyErr_Occurred() ? -1 : accepted != 0;
}
