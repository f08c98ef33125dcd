// "Rightmost super" for Python classes deriving from a bound type T and from other classes:
// the slots of T forward past T's own base chain, as it appears in the object's MRO, to the
// next class on its right, so cooperative Python bases still get their turn.
#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"

// Position of `type` in `mro`, or -1.
static Py_ssize_t mro_index(PyObject* mro, PyTypeObject* type) {
    Py_ssize_t n = PyTuple_GET_SIZE(mro);
    for (Py_ssize_t i = 0; i < n; ++i) {
        if (PyTuple_GET_ITEM(mro, i) == (PyObject*)type)
            return i;
    }
    return -1;
}

// The class to hand to super(): the last entry of T's own chain that the object's MRO follows
// verbatim right after T, never the final `object`. Borrowed.
static PyTypeObject* rightmost_start(PyTypeObject* type, PyObject* obj) {
    PyObject* obj_mro = Py_TYPE(obj)->tp_mro;
    PyObject* own_mro = type->tp_mro;
    if (obj_mro == NULL || own_mro == NULL || PyTuple_GET_SIZE(obj_mro) < 3)
        return type;
    Py_ssize_t s = mro_index(obj_mro, type);
    if (s < 0)
        return type;
    Py_ssize_t obj_last = PyTuple_GET_SIZE(obj_mro) - 1;
    Py_ssize_t own_last = PyTuple_GET_SIZE(own_mro) - 1;
    if (own_last < 2 || s + 1 >= obj_last || PyTuple_GET_ITEM(own_mro, 1) != PyTuple_GET_ITEM(obj_mro, s + 1))
        return type;
    PyTypeObject* start = type;
    for (Py_ssize_t j = 1; j < own_last && s + j < obj_last; ++j) {
        PyObject* candidate = PyTuple_GET_ITEM(own_mro, j);
        if (candidate != PyTuple_GET_ITEM(obj_mro, s + j))
            break;
        start = (PyTypeObject*)candidate;
    }
    return start;
}

PyObject* super_rightmost_of(PyTypeObject* type, PyObject* obj) {
    PyShRef super_fn(PyShImport_ImportFunction(PyWrpIdModuleName_Builtins, PyWrpIdFuncName_Super));
    // A non-callable `super` comes back with its TypeError already pending.
    if (!super_fn || !PyCallable_Check(super_fn.get()))
        return NULL;
    PyTypeObject* start = rightmost_start(type, obj);
    return PyObject_CallFunctionObjArgs(super_fn.get(), (PyObject*)start, obj, NULL);
}

PyObject* PyShRightmostSuper_Repr(PyTypeObject* type, PyObject* obj) {
    PyShRef next(super_rightmost_of(type, obj));
    if (!next)
        return NULL;
    return PyObject_CallMethodObjArgs(next.get(), PyWrpIdObject_Repr, NULL);
}

Py_hash_t PyShRightmostSuper_Hash(PyTypeObject* type, PyObject* obj) {
    PyShRef next(super_rightmost_of(type, obj));
    if (!next)
        return -1;
    PyShRef hash_fn(PyObject_GetAttr(next.get(), PyWrpIdObject_Hash));
    if (!hash_fn)
        return -1;
    if (hash_fn.get() == Py_None)
        return PyObject_HashNotImplemented(obj);
    PyShRef result(PyObject_CallNoArgs(hash_fn.get()));
    if (!result)
        return -1;
    Py_hash_t hash = PyLong_AsSsize_t(result.get());
    if (hash == -1 && !PyErr_Occurred())
        hash = -2;  // -1 is reserved for errors
    return hash;
}

PyObject* PyShRightmostSuper_RichCompare(PyTypeObject* type, PyObject* obj, PyObject* other, int op) {
    PyObject* const method_names[6] = {PyWrpIdObject_LT, PyWrpIdObject_LE, PyWrpIdObject_EQ,
                                       PyWrpIdObject_NE, PyWrpIdObject_GT, PyWrpIdObject_GE};
    PyShRef next(super_rightmost_of(type, obj));
    if (!next)
        return NULL;
    if (op < Py_LT || op > Py_GE)
        Py_RETURN_NOTIMPLEMENTED;
    return PyObject_CallMethodObjArgs(next.get(), method_names[op], other, NULL);
}

int PyShRightmostSuper_Init(PyTypeObject* type, PyObject* obj, PyObject* args, PyObject* kwargs) {
    PyShRef next(super_rightmost_of(type, obj));
    if (!next)
        return -1;
    PyShRef init_fn(PyObject_GetAttr(next.get(), PyWrpIdObject_Init));
    if (!init_fn)
        return -1;
    PyShRef empty;
    if (args == NULL) {
        empty.reset(PyTuple_New(0));
        if (!empty)
            return -1;
        args = empty.get();
    }
    PyShRef result(PyObject_Call(init_fn.get(), args, kwargs));
    return result ? 0 : -1;
}
