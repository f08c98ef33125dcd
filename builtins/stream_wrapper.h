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

// The stream kind's validity: the query (true with `message` when unusable) and the entry
// check (true with the TypeError raised).
bool wrpPye_bltp_stream_is_not_valid(std::string& message);
bool wrpPye_uafn_stream_invalidate();

// Readies the type and marks it as a wrapper type, once: 0, or -1 with an error.
int PyStreamWrapper_Ready();
// A new open wrapper owning `handle`; None for NULL; NULL with an error (handle freed).
PyObject* PyStreamWrapper_FromHandle(void* handle);
// Whether the managed object behind `handle` is a stream: 1, 0, or -1 with an error.
int PyStreamWrapper_IsAssignable(void* handle);
