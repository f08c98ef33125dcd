#include "objects/casting.h"

#include "module/ids.h"
#include "module/pysh.h"
#include "module/pysh_ref.h"
#include "objects/bound_class.h"
#include "objects/handle_lookup.h"
#include "objects/handle_release.h"
#include "objects/pyhold_api.h"
#include "objects/wrap_handle.h"

namespace {

[[gnu::cold, gnu::noinline]] PyObject* refuse_reinterpret(PyObject* obj, PyTypeObject* target) {
    PyErr_Format(PyExc_TypeError, "cannot convert from  '%.100s' to '%.100s'", Py_TYPE(obj)->tp_name,
                 target->tp_name);
    return nullptr;
}

PyObject* no_cast() { return PyShCastOpResult_New(0, nullptr); }

// The handle of a bound argument: 1 with it, 0 when the argument holds none (None included).
int handle_of(PyObject* obj, void** handle) {
    VariantArg found = {};
    if (!fn_conv_py_obj_to_clr_gen_handle(obj, &found) || found.value == nullptr)
        return 0;
    *handle = found.value;
    return 1;
}

// A stub's output handle as a wrapper of the target type; NULL with an error (handle freed).
PyObject* wrap(const PyShCastOps& ops, void* out) {
    if (PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(out);
        return nullptr;
    }
    return PyShBound_ConvClrToPy(out, ops.target, ops.target_kind);
}

}  // namespace

PyObject* PyShCast_TypeOf(const PyShCastOps& ops) {
    if (ops.invalidate())
        return nullptr;
    void* type_handle = nullptr;
    ops.type_of(&type_handle);
    if (PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(type_handle);
        return nullptr;
    }
    PyObject* const names[] = {PyWrpIdUcsO_Module_quorix_pyintro, PyWrpIdUcsO_Type_Type, nullptr};
    PyShRef type(PyShImport_ImportTypeEx(names));
    if (!type) {
        PyShWrp_FreeGcHandlePtr(type_handle);
        return nullptr;
    }
    return fn_conv_clr_sealtp_to_py_sealtp(type_handle, reinterpret_cast<PyTypeObject*>(type.get()));
}

PyObject* PyShCast_CastTo(const PyShCastOps& ops, PyObject* obj) {
    if (ops.invalidate())
        return nullptr;
    void* handle = nullptr;
    if (ops.cast_to == nullptr || !handle_of(obj, &handle))
        return no_cast();
    void* out = nullptr;
    int32_t code = ops.cast_to(handle, &out);
    if (code < 0 || PyErr_Occurred()) {
        PyShWrp_FreeGcHandlePtr(out);
        return PyErr_Occurred() ? nullptr : no_cast();
    }
    if (code == 0) {
        PyShWrp_FreeGcHandlePtr(out);
        return no_cast();
    }
    PyShRef wrapper(wrap(ops, out));
    if (!wrapper)
        return PyErr_Occurred() ? nullptr : PyShCastOpResult_New(code, nullptr);
    return PyShCastOpResult_New(code, wrapper.get());
}

PyObject* PyShCast_CastAs(const PyShCastOps& ops, PyObject* obj) {
    if (ops.invalidate())
        return nullptr;
    void* handle = nullptr;
    if (ops.cast_as == nullptr || !handle_of(obj, &handle))
        Py_RETURN_NONE;
    void* out = nullptr;
    ops.cast_as(handle, &out);
    return wrap(ops, out);
}

PyObject* PyShCast_Reinterpret(const PyShCastOps& ops, PyObject* obj) {
    if (ops.invalidate())
        return nullptr;
    void* handle = nullptr;
    if (ops.reinterpret == nullptr || !handle_of(obj, &handle))
        return refuse_reinterpret(obj, ops.target);
    void* out = nullptr;
    ops.reinterpret(handle, &out);
    return wrap(ops, out);
}

PyObject* PyShCast_IsAssignable(const PyShCastOps& ops, PyObject* obj) {
    if (ops.invalidate())
        return nullptr;
    void* handle = nullptr;
    if (ops.is_assignable == nullptr || !handle_of(obj, &handle))
        Py_RETURN_FALSE;
    int32_t accepted = ops.is_assignable(handle);
    if (PyErr_Occurred())
        return nullptr;
    return PyBool_FromLong(accepted != 0);
}

PyObject* PyShCast_NoCast(PyObject*, PyObject*) { return no_cast(); }

PyObject* PyShCast_AssertExact(PyObject* cls, PyObject* type) {
    return Py_NewRef(cls == type ? Py_Ellipsis : Py_False);
}
