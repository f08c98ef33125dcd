// _ShlBufferView: a region of managed memory exposed through the buffer protocol only, so
// that Python readinto() and write() work on managed buffers without a copy.
#pragma once

#include <Python.h>

struct PyShlBufferViewObject {
    PyObject_HEAD
    void* data;
    Py_ssize_t length;
    int readonly;
};

// The type object "quorix.folio._wrpgen._interop._ShlBufferView" (not readied here).
PyTypeObject* PyShlBufferView_Type();

// New view over [data, data + length), readied on first use; NULL with an error.
PyObject* fn_create_shlbuffer_view(void* data, long length, int readonly);
// Detaches the view from its memory once the managed buffer may go away: later buffer
// requests see an empty region instead of freed memory.
void fn_detach_shlbuffer_view(PyObject* view);
