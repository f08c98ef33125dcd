// The type slots every bound class (wrapClrObject_*) and structure (wrapClrStruct_*) shares:
// release of the owned handle, managed hashing, equality and text, and the type query.
#pragma once

#include <Python.h>

void wrapClrObject_tp_dealloc(PyObject* self);
void wrapClrStruct_tp_dealloc(PyObject* self);

// The managed hash code, sign-extended; -1 with an error pending; a managed -1 becomes -2.
Py_hash_t wrapClrObject_tp_hash(PyObject* self);
Py_hash_t wrapClrStruct_tp_hash(PyObject* self);

// == and != through managed equality; NotImplemented for the other operators and for
// operands that are not bound to a managed object. New reference, or NULL.
PyObject* wrapClrObject_tp_richcompare(PyObject* self, PyObject* other, int op);
PyObject* wrapClrStruct_tp_richcompare(PyObject* self, PyObject* other, int op);

// The managed ToString(), or "<T object at 0x...>" when it yields no text; works while an
// exception is in flight (that exception survives).
PyObject* wrapClrObject_tp_str(PyObject* self);
PyObject* wrapClrStruct_tp_str(PyObject* self);

// The same three, and get_type, for a managed object whose handle is held elsewhere than
// inline (the forked-child and unbound checks are the caller's); richcompare takes == and != only.
Py_hash_t PyShWrp_HashOf(void* handle);
PyObject* PyShWrp_RichCompareOf(void* handle, PyObject* other, int op);
PyObject* PyShWrp_StrOf(PyObject* self, void* handle);
PyObject* PyShWrp_GetTypeOf(void* handle);

// METH_NOARGS "get_type": the managed type of the object as a quorix.pyintro.Type.
PyObject* wrapClrObject_get_type(PyObject* self, PyObject* unused);
PyObject* wrapClrStruct_get_type(PyObject* self, PyObject* unused);

// tp_init of types without a public constructor: TypeError, -1.
int wrapClrObject_tp_init_fault(PyObject* self, PyObject* args, PyObject* kwargs);

// METH_CLASS | METH_NOARGS "_qrxsc2p_asserttp": True.
PyObject* wrapPySealTp_qrxsc2p_asserttp(PyObject* cls, PyObject* unused);

// Retired capsule entry points of old satellite modules: NotImplementedError, NULL.
PyObject* wrapClrObject_conv_py_to_clr_capsifc(PyObject* self, PyObject* args);
PyObject* wrapClrObject_conv_clr_to_py_capsifc(PyObject* self, PyObject* args);
