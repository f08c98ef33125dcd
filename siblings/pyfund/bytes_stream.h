// BytesAsStream: a readable, writable, seekable in-memory binary stream. Native code that
// serves managed streams from Python objects recognises it by type.
#pragma once

#include <Python.h>

struct PyBytesAsStreamObject {
    PyObject_HEAD
    char* data;              // PyMem storage of `capacity` bytes, or NULL
    Py_ssize_t size;         // bytes of content
    Py_ssize_t capacity;
    Py_ssize_t pos;          // may lie past `size`: a write there zero-fills the gap
    int closed;
    PyObject* weakreflist;
};

extern PyTypeObject PyBytesAsStream_Type;
