// _StreamWrapper: a managed stream seen from Python as a binary file. Bytes move through the
// stream kind's method table; buffering, line splitting and argument checks happen here.
#pragma once

#include <Python.h>
#include <cstdint>
#include <string>

#include "objects/seal_object.h"

struct PyStreamWrapperObject {
    PySealTpObject base;
    int32_t closed;  // set by close() and __exit__; every I/O method refuses once set
};

// The type object "quorix.folio._wrpgen._interop._StreamWrapper" (not readied here).
PyTypeObject* PyStreamWrapper_Type();

// Readies the type and marks it as a wrapper type, once: 0, or -1 with an error.
int PyStreamWrapper_Ready();
// A new open wrapper owning `handle`; None for NULL; NULL with an error (handle freed).
PyObject* PyStreamWrapper_FromHandle(void* handle);
// Whether the managed object behind `handle` is a stream: 1, 0, or -1 with an error.
int PyStreamWrapper_IsAssignable(void* handle);
