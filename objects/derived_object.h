// Managed interfaces that Python classes implement: the object of the interface types and of
// their Python subclasses (an instance dictionary instead of an inline handle), the slots the
// interface types share, and the messages of the operations they refuse.
#pragma once

#include <Python.h>

#include <cstddef>

struct PyDerivlTpObject {
    PyObject_HEAD
    PyObject* dict;      // owned or NULL; holds `_qrxsc2p_handle` among the user's attributes
    PyObject* weaklist;  // weak references, or NULL
};
static_assert(offsetof(PyDerivlTpObject, dict) == 16 && offsetof(PyDerivlTpObject, weaklist) == 24,
              "the dictionary and weak-reference offsets are part of the type contract");

// Layout of the interface types: instances carry a dictionary and weak references.
inline bool PyShDerivl_HasLayout(PyTypeObject* type) {
    return type->tp_dictoffset == offsetof(PyDerivlTpObject, dict);
}

// Shared slots. When `base` is a heap type, tp_dealloc releases the instance's reference to
// its type (the exact type's, or a subclass's that the interpreter leaves to it).
void wrapPyDerivlTp_tp_dealloc(PyObject* self, PyTypeObject* base);
int wrapPyDerivlTp_tp_traverse(PyObject* self, visitproc visit, void* arg);
int wrapPyDerivlTp_tp_clear(PyObject* self);
// Through the handle in `_qrxsc2p_handle`; without one NotImplementedError "the method cannot
// be invoked on an object that is not bound to the clr object" (-1 / NULL).
Py_hash_t wrapPyDerivlTp_tp_hash(PyObject* self);
PyObject* wrapPyDerivlTp_tp_richcompare(PyObject* self, PyObject* other, int op);
PyObject* wrapPyDerivlTp_tp_str(PyObject* self);

// tp_new of an interface type: the entry check only for the exact type, then a new empty
// instance; NULL with an error.
PyObject* PyShDerivl_New(PyTypeObject* type, PyTypeObject* base, bool (*invalidate)());
// tp_init: TypeError "Can't directly instantiate ..." for the exact type (-1); a subclass
// continues with the class to the right of `base` in its MRO.
int PyShDerivl_Init(PyTypeObject* base, PyObject* self, PyObject* args, PyObject* kwargs);
// The `__dict__` setter: AttributeError "the __dict__ attribute is read-only" (-1) on an
// exact instance; the generic setter on a subclass instance.
int PyShDerivl_SetDict(PyTypeObject* base, PyObject* self, PyObject* value);

// The receiver of a forward call of `method` (its Python name): 0 with the managed
// implementation's handle in *handle; -1 with NotImplementedError when `self` is a Python
// subclass that did not override it, or an exact instance bound to nothing.
int PyShDerivl_Receiver(PyObject* self, PyTypeObject* base, const char* method, void** handle);

// get_type of an interface type: a managed implementation's own managed type; for a Python
// implementation, the interface's (what managed code knows it as, through `type_of`); an exact
// instance bound to nothing raises the "not bound to the clr object" NotImplementedError.
PyObject* PyShDerivl_GetType(PyObject* self, PyTypeObject* base, PyObject* (*type_of)());

// The slots generated per interface type.
struct PyShDerivlSlots {
    newfunc tp_new;
    initproc tp_init;
    destructor tp_dealloc;
    hashfunc tp_hash;
    richcmpfunc tp_richcompare;
    reprfunc tp_repr;
};

// Creates an interface type from a PyType_Spec (a heap type: subclassable, collected,
// with a dictionary at byte 16 and weak references at byte 24), stores it in *out and adds it
// to `module` under `name`. 0, or -1 with ImportError (-1015 creating, -1014 adding; *out
// stays NULL). `tp_name` must live as long as the process.
int PyShDerivl_CreateType(PyObject* module, PyTypeObject** out, const char* tp_name, PyMethodDef* methods,
                          PyGetSetDef* getset, const PyShDerivlSlots& slots, const char* name);
