// Version tuples (2 to 4 non-negative ints) against managed System.Version.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// None (count -1) or a tuple of 2..4 non-negative ints; 1, or 0 with TypeError / ValueError.
int fn_conv_py_tuple_to_clr_version(PyObject* obj, PySysVersionArg* out);
// None for a negative count, else a new tuple of `count` ints; NULL with an error.
PyObject* fn_write_py_sysversion(const PySysVersionArg* value);
