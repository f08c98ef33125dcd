// Values whose managed type is not fixed by the signature (System.Object and the like), and
// by-reference parameters passed from Python as one-element lists.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// Classifies `obj` into *out: the value is `obj` itself (borrowed) with the tag of its kind,
// or the managed handle and kind of a wrapper. 1, or 0 with TypeError "unknown variant type"
// (or the error of a failed import).
int fn_conv_py_variant_to_clr_variant(PyObject* obj, VariantArg* out);

// The same for a value a Python implementation gives managed code: an object of no kind the
// classification knows crosses as itself (tag VariantTag_PyRef, borrowed; the managed side
// takes its own reference). 1, or 0 with the error of a failed import.
int fn_conv_py_anyobj_to_clr_variant(PyObject* obj, VariantArg* out);

// A managed System.Object coming back: tag 2 is the Python object the value stands for
// (borrowed; a new reference is returned); tags 0 and 1 are a handle (None when NULL) owned
// from now on by a new quorix.pyintro.Object wrapper. NULL with an error (handle freed).
PyObject* fn_write_py_sysobj(const VariantArg* value);

// Converts one Python value into managed storage of a fixed type: 1, or 0 with an error.
typedef int (*PyParamConverter)(PyObject* obj, void* out);

// A `ref` parameter: the caller's list, the converter of the parameter type, and where the
// converted in-value goes.
struct PyParamByRef {
    PyObject* list;  // borrowed
    PyParamConverter converter;
    void* output;
};

// `obj` must be exactly a list; item 0 is converted into param->output. 1, or 0 with an error.
int fn_conv_py_parbyref_to_clr_parbyref(PyObject* obj, PyParamByRef* param);
// An `out` parameter: `obj` must be exactly a list, recorded in *list. 1, or 0 with TypeError.
int fn_conv_py_orefpar_to_clr_orefpar(PyObject* obj, PyObject** list);
// Stores the out-value (a new reference, always consumed) as item 0 of `list`, or appends it
// to an empty list. 0, or -1 with an error.
int fn_push_parbyref_outvalue(PyObject* list, PyObject* value);
