// Helpers the generated class bindings share: instance creation, handle conversions in both
// directions, results handed back by stubs, and the messages of refused operations.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"
#include "objects/seal_object.h"

// The receiver's handle, as stored inline (NULL for an instance never initialised).
inline void* PyShBound_Handle(PyObject* self) {
    return reinterpret_cast<PySealTpObject*>(self)->handle;
}

// TypeError naming the type of `self`, an instance that no constructor bound; 0.
[[gnu::cold, gnu::noinline]] int PyShBound_FailUnbound(PyObject* self);

// The receiver check of instance entry points: false when `self` holds a managed object, else
// true with a TypeError (an instance made by __new__ alone would reach managed code as null).
inline bool PyShBound_Unbound(PyObject* self) {
    return PyShBound_Handle(self) == nullptr && (PyShBound_FailUnbound(self), true);
}

// Stores what a constructor stub returned into a fresh instance.
inline void PyShBound_SetHandle(PyObject* self, void* handle, int32_t kind) {
    auto* obj = reinterpret_cast<PySealTpObject*>(self);
    obj->handle = handle;
    obj->handle_kind = kind;
}

// Binds a constructed instance to the handle a constructor stub returned; a handle the
// instance held already (a second __init__) is freed first.
void PyShBound_Attach(PyObject* self, void* handle, int32_t kind);

// tp_new of bound types: a new empty instance (handle NULL, kind 0), or NULL.
PyObject* PyShBound_Alloc(PyTypeObject* type);

// Whether the managed object behind a handle can stand for a bound type: 1 yes, 0 no, -1 with
// an error (the type's entry check or the managed test failed).
using PyShAssignableTest = int (*)(void* handle);

// O& conversion of an argument typed as the bound type `type`: None gives NULL; an instance
// of the type or a subtype gives its handle; another wrapper gives its handle when
// `assignable` (may be NULL) accepts it; anything else fails with TypeError
// "can't build <class_name> value from '<type of obj>'". 1, or 0 with the error.
int PyShBound_ConvPyToClr(PyObject* obj, PyTypeObject* type, const char* class_name, PyShAssignableTest assignable,
                          void** out);

// 0 with the "can't build <name> value from '%s'" TypeError for `obj`.
[[gnu::cold, gnu::noinline]] int PyShBound_FailConv(const char* name, PyObject* obj);

// A new wrapper of `type` owning `handle` (kind as given), None for NULL, or NULL (handle freed).
PyObject* PyShBound_ConvClrToPy(void* handle, PyTypeObject* type, int32_t kind);

// A new wrapper owning `handle` (an object handle), None for NULL, or NULL (handle freed). Its
// type is `index_table[index]`, the most derived bound type of the object as the managed side
// found it, or `type` (the result's static type) when the index is out of range (-1: no bound
// type more derived than the static one). Index -2 (`kPyShTwinIndex`) means the managed object
// stands for a Python object, and `handle` is that object (borrowed): it comes back itself.
constexpr int32_t kPyShTwinIndex = -2;
inline PyObject* PyShBound_ConvClrToPyIndexed(void* handle, int32_t index, PyTypeObject* type,
                                              PyTypeObject* const* index_table, int32_t count) {
    if (index == kPyShTwinIndex)
        return Py_NewRef(static_cast<PyObject*>(handle));
    if (static_cast<uint32_t>(index) < static_cast<uint32_t>(count))
        type = index_table[index];
    return PyShBound_ConvClrToPy(handle, type, HandleKind_Object);
}

// A handle of a managed object of no bound type, wrapped as quorix.pyintro.Object; None
// for NULL; NULL with an error (handle freed).
PyObject* PyShBound_WrapAsObject(void* handle);

// Fills the slots every bound class or structure type shares, before it is readied.
// `init` NULL refuses construction ("type has no available constructor").
void PyShBound_DescribeType(PyTypeObject* type, const char* tp_name, bool is_struct, PyMethodDef* methods,
                            PyGetSetDef* getset, newfunc tp_new, initproc init);

// The object result of a string or byte-array stub (a new reference): NULL when the stub
// raised (the reference, if any, dropped), else the object.
PyObject* PyShBound_PassResult(PyObject* result);

// The finished value of a static attribute: a Python object (tag 2, owned) is returned,
// a handle is wrapped as `type` (kind given); NULL with an error.
PyObject* PyShBound_StaticValue(const VariantArg& value, PyTypeObject* type, int32_t kind);

// -1 with AttributeError "'<type>' object does not support deletion of '<name>' property".
[[gnu::cold, gnu::noinline]] int PyShBound_RefuseDelete(PyObject* self, const char* name);
