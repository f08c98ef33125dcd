// The Python types of the built-in kinds whose elements have no fixed type: the disposable,
// iterator and enumerable wrappers and the six collection wrappers of
// quorix.folio._wrpgen._interop. Elements cross as variants: a managed element arrives as a
// ready Python object, a Python value leaves by the variant conversion.
#pragma once

#include <Python.h>

#include "marshal/records.h"

enum class PyUkKind {
    Disposable,
    Iter,
    Iterable,
    ICol,
    IList,
    RoColBase,
    ColBase,
    Array,
    ArrList,
};
constexpr int kPyUkKindCount = 9;

// The type object of a kind (not readied here), and its name in the _interop module.
PyTypeObject* PyUk_Type(PyUkKind kind);
const char* PyUk_Name(PyUkKind kind);

// A managed value of the kind: None for NULL, else a new wrapper owning `handle`; NULL with an
// error (handle freed).
PyObject* wrpPye_conv_clr_to_py(PyUkKind kind, void* handle);
// A Python value for a parameter of the kind: None, the kind's wrapper, another wrapper the
// kind's table accepts, or (for the collection kinds and enumerables) a Python object lent for
// the call; else TypeError "can't build <Kind> value from '%s'". 1, or 0 with an error.
int wrpPye_conv_py_to_clr(PyUkKind kind, PyObject* obj, VariantArg* out);
