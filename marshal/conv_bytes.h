// Byte arrays and buffers. Python buffers go to managed code as a borrowed contiguous view
// (the caller releases it whatever the outcome); managed byte arrays come back as copies.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"

// None (a null managed array: nothing acquired, length -1) or any buffer exporter.
// 1, or 0 with an error. When out->acquired is set the caller must release out->view.
int fn_conv_py_bytes_to_clr_bytes(PyObject* obj, PyBytesArg* out);
// Any buffer exporter into out->view; 1, or 0 with BufferError. out->acquired as above.
int fn_read_py_buffer(PyObject* obj, PyBytesArg* out);
// New bytearray (mutable on purpose) copied from `length` bytes; None for a negative length.
PyObject* fn_conv_clr_bytes_to_py_bytes(const uint8_t* data, int32_t length);

// Size of the view storage the managed side allocates for fn_read_py_buffer (80).
int32_t fn_get_sizeof_py_byffer();
// Zero-fills view storage so that releasing it before use is harmless.
void fn_create_py_byffer(Py_buffer* view);
// Releases an acquired (or zero-filled) view.
void fn_release_py_buffer(Py_buffer* view);
