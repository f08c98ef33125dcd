// The class-level casting methods every bound type carries (_type_of, _cast_to, _cast_from,
// _reinterpret_obj, _cast_as, _is_assignable, _qrxsc2p_asserttp). A type describes its
// managed casting stubs once in a PyShCastOps; its generated method entries are thin
// functions that pass it here (static methods receive no class to find it from).
#pragma once

#include <Python.h>
#include <cstdint>

struct PyShCastOps {
    bool (*invalidate)();  // the type's entry check: true with the TypeError raised
    PyTypeObject* target;  // wrapper type of cast results
    int32_t target_kind;   // HandleKind of `target`
    void (*type_of)(void** out);
    // The stubs; NULL where the type binds none (static classes: casting is refused).
    int32_t (*cast_to)(void* obj, void** out);
    int32_t (*cast_as)(void* obj, void** out);
    int32_t (*reinterpret)(void* obj, void** out);
    int32_t (*is_assignable)(void* obj);
};

// The managed Type of the type, as a quorix.pyintro.Type; NULL with an error.
PyObject* PyShCast_TypeOf(const PyShCastOps& ops);
// A cast result (quorix.pyhold): code 0 and no value when the object cannot be cast.
PyObject* PyShCast_CastTo(const PyShCastOps& ops, PyObject* obj);
// The object as the type, or None when it is not one.
PyObject* PyShCast_CastAs(const PyShCastOps& ops, PyObject* obj);
// The object re-wrapped as the type, unchecked; refused with TypeError where unbound.
PyObject* PyShCast_Reinterpret(const PyShCastOps& ops, PyObject* obj);
// True when the managed object can stand for the type; always False where unbound.
PyObject* PyShCast_IsAssignable(const PyShCastOps& ops, PyObject* obj);

// _cast_from of types that cannot be the target of a managed cast: the "no cast" result.
PyObject* PyShCast_NoCast(PyObject* self, PyObject* obj);
// _qrxsc2p_asserttp of enumerations and callback interfaces: Ellipsis when `cls` is exactly
// `type`, else False.
PyObject* PyShCast_AssertExact(PyObject* cls, PyObject* type);
