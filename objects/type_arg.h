// Managed System.Type arguments from Python: a quorix.pyintro.Type, None, or a class, whose
// managed type is asked of its _type_of (bound classes and enumerations).
#pragma once

#include <Python.h>

// An object argument that may need a temporary: the handle passed, and the object owning it
// when the conversion made one (the Type that _type_of returned), released after the call.
struct PyEphObjArg {
    void* handle;
    PyObject* keep_alive;
};

struct PyShEphObjHolder {
    PyEphObjArg arg = {};
    PyShEphObjHolder() = default;
    PyShEphObjHolder(const PyShEphObjHolder&) = delete;
    PyShEphObjHolder& operator=(const PyShEphObjHolder&) = delete;
    ~PyShEphObjHolder() { Py_XDECREF(arg.keep_alive); }
    void* get() const { return arg.handle; }
};

// O& conversion to a managed Type: 1, or 0 with TypeError "can't build Type value from '%s'"
// (or the import's error). A class whose probe says it is no managed type is refused as well.
int wrpPye_conv_py_to_clr_FFFFFFF_Type(PyObject* obj, PyEphObjArg* out);

// A managed Type as a new quorix.pyintro.Type owning `handle` (None for NULL), or NULL with an
// error (the import's, or the wrapping's) and the handle freed.
PyObject* wrpPye_conv_clr_to_py_FFFFFFF_Type(void* handle);
