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
    if (type == base && PyType_HasFeature(base, Py_TPFLAGS_HEAPTYPE))
        Py_DECREF(base);
}

int wrapPyDerivlTp_tp_traverse(PyObject* self, visitproc visit, void* arg) {
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
    PyObject* self = type->tp_alloc(type, 0);
    if (self != nullptr && type == base && PyType_HasFeature(base, Py_TPFLAGS_HEAPTYPE))
        Py_INCREF(base);  // an exact instance of a heap type holds its type, released by tp_dealloc
    return self;
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

void PyShDerivl_DescribeType(PyTypeObject* type, const char* tp_name, PyMethodDef* methods, PyGetSetDef* getset,
                             const PyShDerivlSlots& slots) {
    type->tp_name = tp_name;
    type->tp_basicsize = sizeof(PyDerivlTpObject);
    type->tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC;
    type->tp_dictoffset = offsetof(PyDerivlTpObject, dict);
    type->tp_weaklistoffset = offsetof(PyDerivlTpObject, weaklist);
    type->tp_methods = methods;
    type->tp_getset = getset;
    type->tp_new = slots.tp_new;
    type->tp_init = slots.tp_init;
    type->tp_dealloc = slots.tp_dealloc;
    type->tp_traverse = wrapPyDerivlTp_tp_traverse;
    type->tp_clear = wrapPyDerivlTp_tp_clear;
    type->tp_hash = slots.tp_hash;
    type->tp_richcompare = slots.tp_richcompare;
    type->tp_repr = slots.tp_repr;
    type->tp_alloc = PyType_GenericAlloc;
    type->tp_free = PyObject_GC_Del;
}

int PyShDerivl_RegisterType(PyObject* module, PyTypeObject* type, const char* name) {
    if (PyType_Ready(type) < 0)
        return fail_registration(-1015, type->tp_name);
    Py_INCREF(type);
    if (PyModule_AddObject(module, name, reinterpret_cast<PyObject*>(type)) < 0) {
        Py_DECREF(type);
        return fail_registration(-1014, PyModule_GetName(module), type->tp_name);
    }
    return 0;
}
