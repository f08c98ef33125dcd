// A Python binary file object serving a managed stream.
#include "builtins/py_callbacks.h"
#include "builtins/buffer_view.h"
#include "marshal/conv_scalar.h"
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"

namespace {

constexpr const char kMsgLengthFailed[] = "While calculating the length of the stream, an error occurred.";

[[gnu::cold, gnu::noinline]] void
chain_type_error(const char* text)
{
    PyShlErr_ChainOrFormat(PyExc_TypeError, text);
}

PyObject*
call_method0(PyObject* obj, PyObject* name)
{
    return PyObject_CallMethodNoArgs(obj, name);
}

// obj.name(a) or obj.name(a, b) with 64-bit integer arguments; new reference or NULL.
PyObject*
call_method_ints(PyObject* obj, PyObject* name, int64_t a)
{
    PyShRef arg(PyLong_FromLongLong(a));
    if (!arg)
        return nullptr;
    return PyObject_CallMethodOneArg(obj, name, arg.get());
}

PyObject*
call_method_ints(PyObject* obj, PyObject* name, int64_t a, int64_t b)
{
    PyShRef first(PyLong_FromLongLong(a));
    if (!first)
        return nullptr;
    PyShRef second(PyLong_FromLongLong(b));
    if (!second)
        return nullptr;
    PyObject* args[] = {obj, first.get(), second.get()};
    return PyObject_VectorcallMethod(name, args, 3 | PY_VECTORCALL_ARGUMENTS_OFFSET, nullptr);
}

// A byte count answered by readinto() or write(): None counts as 0. The count, or -1.
int32_t
count_result(PyObject* result)
{
    if (result == nullptr)
        return -1;
    if (result == Py_None)
        return 0;
    int32_t count = 0;
    return fn_conv_py_long_to_clr_int32(result, &count) ? count : -1;
}

// A position answered by seek() or tell(): the position, or -1.
int64_t
position_result(PyObject* result)
{
    if (result == nullptr)
        return -1;
    int64_t position = 0;
    return fn_conv_py_long_to_clr_int64(result, &position) ? position : -1;
}

// Calls obj.name(view) over managed memory; the view is detached afterwards, so Python code
// that kept it sees an empty buffer rather than memory the managed side has moved on from.
PyObject*
call_with_view(PyObject* obj, PyObject* name, void* data, int32_t count, int readonly)
{
    PyShRef view(fn_create_shlbuffer_view(data, count, readonly));
    if (!view)
        return nullptr;
    PyObject* result = PyObject_CallMethodOneArg(obj, name, view.get());
    fn_detach_shlbuffer_view(view.get());
    return result;
}

// 1 closed, 0 open, -1 with a TypeError chained onto the failure.
int
stream_is_closed(PyObject* obj)
{
    PyShRef closed(PyObject_GetAttr(obj, PyWrpIdRawIo_Closed));
    int answer = closed ? PyObject_IsTrue(closed.get()) : -1;
    if (answer < 0)
        chain_type_error("An error occurred while checking if the stream is closed");
    return answer;
}

// The answer of readable() / writable() / seekable() on an open stream: 1, 0 or -1.
int32_t
ask_capability(PyObject* obj, PyObject* name)
{
    int closed = stream_is_closed(obj);
    if (closed != 0)
        return closed > 0 ? 0 : -1;
    PyShRef answer(call_method0(obj, name));
    if (!answer)
        return -1;
    return PyObject_IsTrue(answer.get());
}

}  // namespace

int32_t
fn_clbk_rawio_read(PyObject* file, void* buffer, int32_t count)
{
    PyShRef result(call_with_view(file, PyWrpIdRawIo_ReadInto, buffer, count, 0));
    return count_result(result.get());
}

int32_t
fn_clbk_rawio_readbyte(PyObject* file)
{
    uint8_t byte = 0;
    PyShRef result(call_with_view(file, PyWrpIdRawIo_ReadInto, &byte, 1, 0));
    if (!result)
        return -2;
    if (result.get() == Py_None) {
        PyErr_SetString(PyExc_OSError, "no bytes are available for reading");
        return -2;
    }
    int32_t count = 0;
    if (!fn_conv_py_long_to_clr_int32(result.get(), &count))
        return -2;
    return count == 0 ? -1 : byte;
}

int32_t
fn_clbk_rawio_write(PyObject* file, const void* buffer, int32_t count)
{
    // The view is read-only, so the const is honoured on the Python side.
    PyShRef result(call_with_view(file, PyWrpIdRawIo_Write, const_cast<void*>(buffer), count, 1));
    return count_result(result.get());
}

int32_t
fn_clbk_rawio_write_byte(PyObject* file, uint8_t value)
{
    return fn_clbk_rawio_write(file, &value, 1);
}

int64_t
fn_clbk_rawio_seek(PyObject* file, int64_t offset, int32_t origin)
{
    PyShRef result(call_method_ints(file, PyWrpIdRawIo_Seek, offset, origin));
    return position_result(result.get());
}

int64_t
fn_clbk_rawio_tell(PyObject* file)
{
    PyShRef result(call_method0(file, PyWrpIdRawIo_Tell));
    return position_result(result.get());
}

int32_t
fn_clbk_rawio_truncate(PyObject* file, int64_t length)
{
    PyShRef truncated(call_method_ints(file, PyWrpIdRawIo_Truncate, length));
    if (!truncated)
        return -1;
    // Managed streams never stand beyond their end after SetLength; Python files may.
    int64_t position = position_result(PyShRef(call_method0(file, PyWrpIdRawIo_Tell)).get());
    if (position > length)
        Py_XDECREF(call_method_ints(file, PyWrpIdRawIo_Seek, length, 0));
    PyErr_Clear();
    return 0;
}

int32_t
fn_clbk_rawio_flush(PyObject* file)
{
    PyShRef result(call_method0(file, PyWrpIdRawIo_Flush));
    return result ? 0 : -1;
}

void
fn_clbk_rawio_close(PyObject* file)
{
    // Runs during managed disposal, possibly while an exception is already on its way.
    PyObject* saved_type;
    PyObject* saved_value;
    PyObject* saved_tb;
    PyErr_Fetch(&saved_type, &saved_value, &saved_tb);
    PyObject* result = call_method0(file, PyWrpIdRawIo_Close);
    if (result == nullptr)
        PyErr_WriteUnraisable(file);
    Py_XDECREF(result);
    PyErr_Restore(saved_type, saved_value, saved_tb);
}

int32_t
fn_clbk_rawio_readable(PyObject* file)
{
    return ask_capability(file, PyWrpIdRawIo_Readable);
}

int32_t
fn_clbk_rawio_writable(PyObject* file)
{
    return ask_capability(file, PyWrpIdRawIo_Writable);
}

int32_t
fn_clbk_rawio_seekable(PyObject* file)
{
    return ask_capability(file, PyWrpIdRawIo_Seekable);
}

int64_t
fn_clbk_rawio_length(PyObject* file)
{
    int closed = stream_is_closed(file);
    if (closed != 0)
        return closed > 0 ? -3 : -1;
    PyShRef seekable(call_method0(file, PyWrpIdRawIo_Seekable));
    int can_seek = seekable ? PyObject_IsTrue(seekable.get()) : -1;
    if (can_seek < 0) {
        chain_type_error(kMsgLengthFailed);
        return -1;
    }
    if (can_seek == 0)
        return -2;
    int64_t current = position_result(PyShRef(call_method_ints(file, PyWrpIdRawIo_Seek, 0, 1)).get());
    if (current < 0 && PyErr_Occurred()) {
        chain_type_error(kMsgLengthFailed);
        return -1;
    }
    int64_t end = position_result(PyShRef(call_method_ints(file, PyWrpIdRawIo_Seek, 0, 2)).get());
    if (end < 0 && PyErr_Occurred()) {
        chain_type_error(kMsgLengthFailed);
        return -1;
    }
    PyShRef back(call_method_ints(file, PyWrpIdRawIo_Seek, current));
    if (!back) {
        chain_type_error(kMsgLengthFailed);
        return -1;
    }
    return end;
}
