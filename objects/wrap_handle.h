// Turning a managed handle into a Python object. Every conversion makes a new object (there
// is no identity cache); the object owns the handle from then on. A handle that cannot be
// attached to a new object is freed at once.
#pragma once

#include <Python.h>

#include "marshal/records.h"

// None for a NULL handle; else a new instance of `type` (PySealTpObject layout) holding
// `handle`; NULL with an error (handle freed).
PyObject* fn_conv_clr_sealtp_to_py_sealtp(void* handle, PyTypeObject* type);
// None for a NULL handle; else a new instance of the (Python-derived) `type` whose
// `_qrxsc2p_handle` attribute is a safe handle owning `handle`; NULL with an error.
PyObject* fn_conv_clr_derivltp_to_py_derivltp(void* handle, PyTypeObject* type);
// Tag 2: the Python object the managed value stands for (new reference); else a derived
// instance as above.
PyObject* fn_conv_clr_twinorgntp_to_py_twinorgntp(const VariantArg& value, PyTypeObject* type);
// Tag 2 as above; else a heap type takes the derived conversion and any other type the
// plain wrapper conversion.
PyObject* fn_conv_clr_twinorgntp_to_py_twinorgntp_of_externtp(const VariantArg& value, PyTypeObject* type);
