#include "objects/derived_object.h"

#include "host/fork_guard.h"
#include "module/pysh.h"
#include "objects/handle_lookup.h"
#include "objects/wrapper_slots.h"

namespace {

inline PyDerivlTpObject* derivl(PyObject* self) { return reinterpret_cast<PyDerivlTpObject*>(self); }

[[gnu::cold, gnu::noinline]] int fail_not_bound() {
    PyErr_SetString(PyExc_NotImplementedError,
                    "the method cannot be invoked on an object that is not bound to the clr object");
    return -1;
}

// The managed handle of a bound exact instance: 1 with *handle; 0 with the error set.
int bound_handle(PyObject* self, void** handle) {
    if (host_in_forked_child()) {
        PyShlErr_ForkedChild();
        return 0;
    }
    if (!fn_get_clr_obj_handle_from_attr(self, handle))
        return fail_not_bound(), 0;
    return 1;
}

[[gnu::cold, gnu::noinline]] int fail_registration(int code, const char* first, const char* second = nullptr) {
    if (second == nullptr)
        PyShlErr_TypeInitializationInternalError(code, first);
    else
        PyShlErr_TypeInitializationInternalError(code, first, second);
    return -1;
}

}  // namespace

void wrapPyDerivlTp_tp_dealloc(PyObject* self, PyTypeObject* base) {
    PyTypeObject* type = Py_TYPE(self);
    PyObject_GC_UnTrack(self);
    Py_CLEAR(derivl(self)->dict);
    if (derivl(self)->weaklist != nullptr)
        PyObject_ClearWeakRefs(self);
    type->tp_free(self);
    // An instance holds a reference to its heap type: the exact type's goes here, and so does
    // a subclass's, which the interpreter leaves to the dealloc of the first heap base.
    if (PyType_HasFeature(base, Py_TPFLAGS_HEAPTYPE))
        Py_DECREF(type);
}

int wrapPyDerivlTp_tp_traverse(PyObject* self, visitproc visit, void* arg) {
    // the instance's reference to its heap type, which a subclass's traverse leaves to this one
    if (PyType_HasFeature(Py_TYPE(self), Py_TPFLAGS_HEAPTYPE))
        Py_VISIT(Py_TYPE(self));
    Py_VISIT(derivl(self)->dict);
    return 0;
}

int wrapPyDerivlTp_tp_clear(PyObject* self) {
    Py_CLEAR(derivl(self)->dict);
    return 0;
}

Py_hash_t wrapPyDerivlTp_tp_hash(PyObject* self) {
    void* handle = nullptr;
    return bound_handle(self, &handle) ? PyShWrp_HashOf(handle) : -1;
}

PyObject* wrapPyDerivlTp_tp_richcompare(PyObject* self, PyObject* other, int op) {
    if (op != Py_EQ && op != Py_NE)
        Py_RETURN_NOTIMPLEMENTED;
    if (self == other)
        return PyBool_FromLong(op == Py_EQ);
    void* handle = nullptr;
    return bound_handle(self, &handle) ? PyShWrp_RichCompareOf(handle, other, op) : nullptr;
}

PyObject* wrapPyDerivlTp_tp_str(PyObject* self) {
    void* handle = nullptr;
    return bound_handle(self, &handle) ? PyShWrp_StrOf(self, handle) : nullptr;
}

PyObject* PyShDerivl_New(PyTypeObject* type, PyTypeObject* base, bool (*invalidate)()) {
    if (type == base && invalidate())
        return nullptr;
    return type->tp_alloc(type, 0);  // takes the reference to a heap type that tp_dealloc releases
}

int PyShDerivl_Init(PyTypeObject* base, PyObject* self, PyObject* args, PyObject* kwargs) {
    if (Py_TYPE(self) == base) {
        PyErr_Format(PyExc_TypeError, "Can't directly instantiate the '%.100s' abstract class. '%.100s' must be subclassed.",
                     base->tp_name, base->tp_name);
        return -1;
    }
    return PyShRightmostSuper_Init(base, self, args, kwargs);
}

int PyShDerivl_SetDict(PyTypeObject* base, PyObject* self, PyObject* value) {
    if (Py_TYPE(self) == base) {
        PyErr_SetString(PyExc_AttributeError, "the __dict__ attribute is read-only");
        return -1;
    }
    return PyObject_GenericSetDict(self, value, nullptr);
}

int PyShDerivl_Receiver(PyObject* self, PyTypeObject* base, const char* method, void** handle) {
    if (Py_TYPE(self) != base) {
        // reached through a Python subclass: the method it should have defined is missing
        PyErr_Format(PyExc_NotImplementedError, "'%s' abstract method should be implemented in subclasses", method);
        return -1;
    }
    if (host_in_forked_child()) {
        PyShlErr_ForkedChild();
        return -1;
    }
    if (!fn_get_clr_obj_handle_from_attr(self, handle)) {
        PyErr_SetString(PyExc_NotImplementedError,
                        "the method cannot be invoked on an object that is not bound to clr object");
        return -1;
    }
    return 0;
}

PyObject* PyShDerivl_GetType(PyObject* self, PyTypeObject* base, PyObject* (*type_of)()) {
    if (Py_TYPE(self) != base)
        return type_of();
    void* handle = nullptr;
    return bound_handle(self, &handle) ? PyShWrp_GetTypeOf(handle) : nullptr;
}

int PyShDerivl_CreateType(PyObject* module, PyTypeObject** out, const char* tp_name, PyMethodDef* methods,
                          PyGetSetDef* getset, const PyShDerivlSlots& slots, const char* name) {
    PyType_Slot type_slots[] = {
        {Py_tp_new, reinterpret_cast<void*>(slots.tp_new)},
        {Py_tp_init, reinterpret_cast<void*>(slots.tp_init)},
        {Py_tp_dealloc, reinterpret_cast<void*>(slots.tp_dealloc)},
        {Py_tp_traverse, reinterpret_cast<void*>(wrapPyDerivlTp_tp_traverse)},
        {Py_tp_clear, reinterpret_cast<void*>(wrapPyDerivlTp_tp_clear)},
        {Py_tp_hash, reinterpret_cast<void*>(slots.tp_hash)},
        {Py_tp_richcompare, reinterpret_cast<void*>(slots.tp_richcompare)},
        {Py_tp_repr, reinterpret_cast<void*>(slots.tp_repr)},
        {Py_tp_methods, methods},
        {Py_tp_getset, getset},
        {Py_tp_free, reinterpret_cast<void*>(PyObject_GC_Del)},
        {0, nullptr},
    };
    // the name must outlive the type: callers pass a literal
    PyType_Spec spec = {tp_name, sizeof(PyDerivlTpObject), 0,
                        Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC, type_slots};
    PyObject* type = PyType_FromSpecWithBases(&spec, nullptr);
    if (type == nullptr)
        return fail_registration(-1015, tp_name);
    *out = reinterpret_cast<PyTypeObject*>(type);
    (*out)->tp_dictoffset = offsetof(PyDerivlTpObject, dict);
    (*out)->tp_weaklistoffset = offsetof(PyDerivlTpObject, weaklist);
    // the module takes the creation reference; the global stays a borrowed pointer
    if (PyModule_AddObject(module, name, type) < 0) {
        Py_DECREF(type);
        *out = nullptr;
        return fail_registration(-1014, PyModule_GetName(module), tp_name);
    }
    return 0;
}
