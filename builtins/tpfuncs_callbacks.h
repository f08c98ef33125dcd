// Type services managed code asks of the Python side: the binding objects of sibling types,
// and Python objects of a type known to managed code only by its name vector
// ({module identifier, type identifier, NULL}, as for PyShImport_ImportTypeEx).
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"

// Calls "_qrxsc2p_gettpextrabind" on the sibling type of the type-name vector table at
// `index`; the returned safe handle is stored (owned) in *holder and the managed handle it
// holds is returned. NULL on failure (see fn_gettpextratie for when an error is left).
void* fn_gettpextrabind_of(int32_t index, int32_t quiet, PyObject** holder);
// The same with "_qrxsc2p_gettpextratie" on the type named by `names`. Import and call
// failures return NULL, with the error cleared when `quiet`. A result that is not a safe
// handle: NULL, silently when `quiet`, else TypeError. A safe handle holding NULL: ValueError
// when `quiet`, else NULL with no error (deliberately reversed).
void* fn_gettpextratie(PyObject* const* names, int32_t quiet, PyObject** holder);
// The Python object for a managed object whose Python type is named by `names`: the object a
// twin record stands for (tag 2), or a new wrapper owning the handle. NULL with an error (the
// handle freed).
PyObject* fn_from_obj_and_pytype(PyObject* const* names, const VariantArg* value);
// The member of the enumeration named by `names` for `value` (an int; always consumed); NULL
// with an error.
PyObject* fn_from_enum_and_pytype(PyObject* const* names, PyObject* value);
