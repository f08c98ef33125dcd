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
// Readies the kind's type and marks it as a wrapper type, once (every module that wraps values
// of the kind may be the first): 0, or -1 with an error.
int PyUk_Ready(PyUkKind kind);

// A managed value of the kind: None for NULL, else a new wrapper owning `handle`; NULL with an
// error (handle freed).
PyObject* wrpPye_conv_clr_to_py(PyUkKind kind, void* handle);
// A Python value for a parameter of the kind: None, the kind's wrapper, another wrapper the
// kind's table accepts, or (for the collection kinds and enumerables) a Python object lent for
// the call; else TypeError "can't build <Kind> value from '%s'". 1, or 0 with an error.
int wrpPye_conv_py_to_clr(PyUkKind kind, PyObject* obj, VariantArg* out);

// The same, by name, for the generated bindings (results come back as handles).
#define QRX_UNTYPED_CONVERTERS(code, kind)                                                                \
    inline PyObject* wrpPye_conv_clr_to_py_##code(void* handle) { return wrpPye_conv_clr_to_py(kind, handle); } \
    inline int wrpPye_conv_py_to_clr_##code(PyObject* obj, VariantArg* out) { return wrpPye_conv_py_to_clr(kind, obj, out); }
QRX_UNTYPED_CONVERTERS(idisposable, PyUkKind::Disposable)
QRX_UNTYPED_CONVERTERS(iter, PyUkKind::Iter)
QRX_UNTYPED_CONVERTERS(iterable, PyUkKind::Iterable)
QRX_UNTYPED_CONVERTERS(icol, PyUkKind::ICol)
QRX_UNTYPED_CONVERTERS(ilist, PyUkKind::IList)
QRX_UNTYPED_CONVERTERS(rocolbase, PyUkKind::RoColBase)
QRX_UNTYPED_CONVERTERS(colbase, PyUkKind::ColBase)
QRX_UNTYPED_CONVERTERS(array, PyUkKind::Array)
QRX_UNTYPED_CONVERTERS(arrlist, PyUkKind::ArrList)
#undef QRX_UNTYPED_CONVERTERS
