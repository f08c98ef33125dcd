// Managed enumerations as Python IntEnum / IntFlag classes, built with the enum module's
// functional form, and the conversions of their members to and from managed integers.
#pragma once

#include <Python.h>
#include <cstdint>

// One member: its Python name and its value as decimal text (any width, either sign).
struct PyShEnumMember {
    const char* name;
    const char* value;
};

// One built-in member added to the class dictionary after creation.
struct PyShEnumExtra {
    PyMethodDef* def;
    bool is_class_method;
};

// New reference to the class `name` (a simple name) with `members` in order, derived from
// IntFlag when `is_flags` else IntEnum, with `extras` installed; NULL with an error.
PyObject* PyShEnum_Build(const char* name, const PyShEnumMember* members, Py_ssize_t count, bool is_flags,
                         const PyShEnumExtra* extras, Py_ssize_t extra_count);

// O& conversion: only instances of `type` (or a subclass) give their value, truncated to the
// managed 32 bits; anything else, a plain int too, raises TypeError
// "can't build <name> value from '%s'". 1, or 0 with the error.
int PyShEnum_ConvPyToClr(PyObject* obj, PyObject* type, const char* name, int32_t* out);

// The member of `type` for `value` (a new reference, or NULL: for IntEnum an unknown value is
// the enum module's ValueError). `is_unsigned` reads the managed 32 bits as unsigned.
PyObject* PyShEnum_ConvClrToPy(PyObject* type, int32_t value, bool is_unsigned);
// The same from a Python int (consumed, also on failure).
PyObject* PyShEnum_FromPyLong(PyObject* type, PyObject* value);
