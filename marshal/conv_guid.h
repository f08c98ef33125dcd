// uuid.UUID against managed System.Guid (16 bytes in the order of UUID.bytes_le).
#pragma once

#include <Python.h>

#include "marshal/records.h"

// A uuid.UUID (or subclass); 1, or 0 with an error.
int fn_conv_py_uuid_to_clr_guid_value(PyObject* obj, PyGuidArg* out);
int fn_read_py_guid(PyObject* obj, PyGuidArg* out);
// New uuid.UUID(bytes_le=...), or NULL.
PyObject* fn_conv_clr_guid_to_py_uuid(const PyGuidArg* value);
PyObject* fn_write_py_guid(const PyGuidArg* value);
