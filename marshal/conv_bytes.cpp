#include "marshal/conv_bytes.h"

#include <cstring>

#include "marshal/conv_errors.h"

int
fn_read_py_buffer(PyObject* obj, PyBytesArg* out)
{
    out->acquired = 0;
    if (out->view == nullptr) {
        PyErr_BadInternalCall();
        return 0;
    }
    // Strides are requested so that a strided exporter hands out its view and is refused
    // below as not contiguous, instead of failing the request with its own wording.
    if (PyObject_GetBuffer(obj, out->view, PyBUF_STRIDES) < 0) {
        PyErr_Clear();
        return marshal_fail_text(PyExc_BufferError, "can't get internal buffer");
    }
    out->acquired = 1;
    if (!PyBuffer_IsContiguous(out->view, 'C'))
        return marshal_fail_text(PyExc_BufferError, "buffer is not contiguous");
    if (out->view->len > INT32_MAX)
        return marshal_fail_text(PyExc_BufferError, "buffer is too long");
    out->data = static_cast<const uint8_t*>(out->view->buf);
    out->length = out->view->len;
    return 1;
}

int
fn_conv_py_bytes_to_clr_bytes(PyObject* obj, PyBytesArg* out)
{
    if (obj == Py_None) {
        out->acquired = 0;
        out->data = nullptr;
        out->length = -1;
        return 1;
    }
    PyBufferProcs* procs = Py_TYPE(obj)->tp_as_buffer;
    if (procs == nullptr || procs->bf_getbuffer == nullptr)
        return marshal_fail_typename(PyExc_TypeError, "can't build byte[] from '%s'", obj);
    return fn_read_py_buffer(obj, out);
}

PyObject*
fn_conv_clr_bytes_to_py_bytes(const uint8_t* data, int32_t length)
{
    if (length < 0)
        Py_RETURN_NONE;
    if (data == nullptr && length > 0) {
        PyErr_BadInternalCall();
        return nullptr;
    }
    return PyByteArray_FromStringAndSize(reinterpret_cast<const char*>(data), length);
}

int32_t
fn_get_sizeof_py_byffer()
{
    return static_cast<int32_t>(sizeof(Py_buffer));
}

void
fn_create_py_byffer(Py_buffer* view)
{
    memset(view, 0, sizeof *view);
}

void
fn_release_py_buffer(Py_buffer* view)
{
    PyBuffer_Release(view);
}
