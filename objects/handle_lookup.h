// Finding the managed handle behind a Python argument. Lookups never raise: a result of 0
// means "no handle", and the caller decides what to report.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// None gives tag 0 and a NULL value (1); anything else as the next function.
int fn_conv_py_obj_to_clr_gen_handle(PyObject* obj, VariantArg* out);
// 1 with the handle and its kind in *out when `obj` is bound to a managed object, else 0
// with no error pending.
int fn_conv_py_obj_to_clr_gen_not_null_handle(PyObject* obj, VariantArg* out);
// The same, restricted to managed reference-type objects; 1 with *handle, else 0.
int fn_conv_py_obj_to_clr_refobj_not_null_handle(PyObject* obj, void** handle);
// Only the instance attribute holding a safe handle (instances of Python subclasses);
// 1 with a non-NULL *handle, else 0 with no error pending.
int fn_get_clr_obj_handle_from_attr(PyObject* obj, void** handle);
