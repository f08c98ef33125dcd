// Arguments typed as a managed stream: a bound managed stream goes as its handle, a Python
// binary file object as itself (the managed side reads and writes it through callbacks).
#pragma once

#include <Python.h>

#include "marshal/records.h"

// None: tag 0, NULL. A stream wrapper, or another wrapper whose managed object is a stream:
// tag 0 with its handle. An instance of io.RawIOBase, io.BufferedIOBase or
// quorix.pyfund.BytesAsStream: tag 2, borrowed for the call. Anything else: TypeError
// "can't build Stream from '%s'". 1, or 0 with an error.
int fn_conv_py_stream_to_clr_stream(PyObject* obj, VariantArg* out);

// The same for a parameter that may not be null: None is refused with the text above.
int fn_conv_py_stream_to_clr_stream_not_none(PyObject* obj, VariantArg* out);
